#pragma once

#include <orvatool/TreeInsertList.h>
#include <orvatool/ValueList.h>

#include "host/ProjectStore.h"

namespace ochost {

// The project's lists in the forms in which dialogs take them.

/// The properties below their groups; the value of a property's row is its id, that of a group's row 0.
Result<TREE_INSERTLIST> PropertyTree(const ProjectStore& project);

/// Added to the id of a part type, so that it differs from the ids of part groups.
inline constexpr Id kFirstPartType = 100'000;

/// The part types below their groups, as reports select them: the value of a group's row is its id, that of a part
/// type's row kFirstPartType plus its id.
Result<TREE_INSERTLIST> ReportObjectTree(const ProjectStore& project);

/// The properties and the custom properties, by name and by the id that a report's column has for them.
Result<ValueList> ReportProperties(const ProjectStore& project);

/// The drawings below their folders; the value of a drawing's row is its id, that of a folder's row 0.
Result<TREE_INSERTLIST> DrawingTree(const ProjectStore& project);

}  // namespace ochost
