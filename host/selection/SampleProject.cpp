#include "host/selection/SampleProject.h"

#include "host/ProjectGenerator.h"
#include "host/selection/DrawingRecords.h"
#include "host/selection/SampleSelections.h"

namespace ochost {

Result<ProjectStore> OpenSampleProject(const std::wstring& path, int scale) {
    Result<ProjectStore> project =
        OpenOrGenerateProject(path, scale, [](ProjectStore& made) { return AddSampleSelections(made); });
    if (!project) return project;
    if (const Status kept = KeepDrawingRecords(*project); !kept) return kept.Error();
    return project;
}

}  // namespace ochost
