#include "host/selection/ProjectIndex.h"

namespace ochost {

ProjectIndex::ProjectIndex(const ProjectStore& project)
    : content(ValueOf(project.Content())), paths(project.Path(), content.folders) {
    SetLeftOutDrawings(content.leftOutDrawings);
}

void ProjectIndex::SetLeftOutDrawings(const std::vector<LeftOutDrawing>& leftOut) {
    leftOut_.clear();
    for (const LeftOutDrawing& row : leftOut)
        leftOut_.insert(row.drawing);
}

}  // namespace ochost
