#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "host/ProjectRecords.h"

namespace ochost {

/// Where the drawings of a project lie: below the folder of the project's file, as the project arranges them.
class DrawingPaths {
public:
    DrawingPaths(const std::wstring& projectPath, const std::vector<Folder>& folders);

    /// The drawing's full path.
    std::wstring Of(const Drawing& drawing) const;

private:
    const std::wstring projectFolder_;
    std::unordered_map<Id, std::wstring> folders_;
};

}  // namespace ochost
