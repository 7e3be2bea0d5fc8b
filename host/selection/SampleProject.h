#pragma once

#include <string>

#include "host/ProjectStore.h"

namespace ochost {

/// Opens the project as the dialogs work on it: generates it when it does not exist, with configurations of object
/// selections and sets of update options, and keeps its drawing records in step.
Result<ProjectStore> OpenSampleProject(const std::wstring& path, int scale);

}  // namespace ochost
