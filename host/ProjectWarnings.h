#pragma once

#include <orvatool/Lng.h>

#include "host/ProjectStore.h"

namespace ochost {

/// How many warnings RaiseWarnings raises, and in how many categories.
inline constexpr int kWarningCount = 500;
inline constexpr int kWarningCategoryCount = 6;

/// Raises warnings for `app` as a check of the project's drawings would, in place of those that it has: about parts in
/// rooms, with their drawings, handles and points. The same project gives the same warnings.
/// A project without rooms, drawings or parts of some discipline has nothing to warn about (BadInput).
Status RaiseWarnings(const ProjectStore& project, Lng::AppID app);

}  // namespace ochost
