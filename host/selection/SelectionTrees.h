#pragma once

#include <orvatool/Lng.h>
#include <orvatool/TreeInsertList.h>

#include "host/selection/ProjectIndex.h"

namespace ochost {

// What objects can be selected by, as trees. The value of a row is its record's id, that of a heading 0.

/// The rooms by floor, of one floor alone when `floor` is not 0; buildings have headings when there are several.
TREE_INSERTLIST RoomTree(const ProjectIndex& project, Id floor = 0);
TREE_INSERTLIST ZoneTree(const ProjectIndex& project, Id floor = 0);

// By discipline, as far as they are the application's.
TREE_INSERTLIST SystemTree(const ProjectIndex& project, Lng::AppID app);
TREE_INSERTLIST FittingSeriesTree(const ProjectIndex& project, Lng::AppID app);

/// The drawings by folder: first those that are in the model, then those that are not.
TREE_INSERTLIST ModelDrawingTree(const ProjectIndex& project);

/// The part types of the application by group; groups without any are left out.
TREE_INSERTLIST PartTypeTree(const ProjectIndex& project, Lng::AppID app);

}  // namespace ochost
