#include "host/selection/SampleProject.h"

#include <filesystem>

#include "host/ProjectGenerator.h"
#include "host/selection/DrawingRecords.h"
#include "host/selection/SampleSelections.h"

namespace ochost {

Result<ProjectStore> OpenSampleProject(const std::wstring& path, int scale) {
    std::error_code ignored;
    const bool isNew = !std::filesystem::exists(path, ignored);
    Result<ProjectStore> project = OpenOrGenerateProject(path, scale);
    if (!project) return project;
    if (isNew) {
        if (const Status added = AddSampleSelections(*project); !added) return added.Error();
    }
    if (const Status kept = KeepDrawingRecords(*project); !kept) return kept.Error();
    return project;
}

}  // namespace ochost
