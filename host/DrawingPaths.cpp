#include "host/DrawingPaths.h"

#include <filesystem>

namespace ochost {

namespace fs = std::filesystem;

DrawingPaths::DrawingPaths(const std::wstring& projectPath, const std::vector<Folder>& folders)
    : projectFolder_(fs::path(projectPath).parent_path().wstring()) {
    // Parents come first.
    for (const Folder& folder : folders) {
        const auto parent = folders_.find(folder.parent);
        const fs::path above = parent == folders_.end() ? projectFolder_ : parent->second;
        folders_.emplace(folder.id, (above / folder.name).wstring());
    }
}

std::wstring DrawingPaths::Of(const Drawing& drawing) const {
    const auto folder = folders_.find(drawing.folder);
    return (fs::path(folder == folders_.end() ? projectFolder_ : folder->second) / drawing.fileName).wstring();
}

}  // namespace ochost
