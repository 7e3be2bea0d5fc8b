#pragma once

#include <orvatool/TreeInsertList.h>

#include "host/ProjectStore.h"

namespace ochost {

// The project's lists in the forms in which dialogs take them.

/// The properties below their groups; the value of a property's row is its id, that of a group's row 0.
Result<TREE_INSERTLIST> PropertyTree(const ProjectStore& project);

/// The drawings below their folders; the value of a drawing's row is its id, that of a folder's row 0.
Result<TREE_INSERTLIST> DrawingTree(const ProjectStore& project);

}  // namespace ochost
