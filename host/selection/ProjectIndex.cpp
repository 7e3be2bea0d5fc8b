#include "host/selection/ProjectIndex.h"

namespace ochost {

ProjectIndex::ProjectIndex(const ProjectStore& project)
    : content(ValueOf(project.Content())), paths(project.Path(), content.folders) {
}

}  // namespace ochost
