#pragma once

#include <string>
#include <vector>

#include "host/Result.h"

namespace ochost {

struct TourOptions {
    std::wstring folder;                  ///< receives the pictures and index.html; made when it does not exist
    std::wstring project;                 ///< the project to work on; empty: a new one for each language, in the folder
    int scale = 1;                        ///< of a new project
    std::vector<std::wstring> languages;  ///< in this order
};

/// Opens every dialog in every language at the resolution of this process, fills it as a user would, confirms it, and
/// takes pictures. The user's own settings are neither used nor changed. Ends at the first failure.
Status RunTour(const TourOptions& options);

}  // namespace ochost
