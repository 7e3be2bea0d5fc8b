#pragma once

#include "host/ProjectGenerator.h"

namespace ochost {

/// Adds the selections of the data file "selections" to the project as configurations, and those of "update_sets" as
/// sets of update options. A text that does not fit the project fails as BadInput, with file and line.
Status AddSampleSelections(ProjectStore& project, const TextSource& texts = EmbeddedText);

}  // namespace ochost
