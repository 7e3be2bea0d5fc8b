#pragma once

#include <orvatool/Lng.h>
#include <orvatool/ObjectSelection.h>
#include <orvatool/SimpleReport.h>

#include <vector>

#include "host/selection/ProjectIndex.h"

namespace ochost {

/// The drawing as selections refer to it.
ObjectSelection::DrawingRef RefOf(const ProjectIndex& project, const Drawing& drawing);

/// The objects of the project that the selection asks for, in the project's order, in a time that grows with the
/// objects and not with the selection. `currentDrawing` is the id of the drawing that the user works on.
///
/// The objects are those of the current drawing, or of the model drawings that the selection names (naming none: of
/// all). All other criteria in force must hold: one that names nothing always does, one that names only what the
/// project does not have never does. A manual selection selects nothing: the user picks the objects.
std::vector<const PlacedObject*> SelectedObjects(const ProjectIndex& project, const ObjectSelection::Data& selection,
                                                 Id currentDrawing);

/// The name under which layouts have model space.
inline constexpr wchar_t kModelSpace[] = L"Model";

/// How many objects of the project were selected, and the first of them, one a line; that the user picks them for a
/// manual selection.
std::wstring ToText(const ProjectIndex& project, const ObjectSelection::Data& selection,
                    const std::vector<const PlacedObject*>& objects);

/// The objects as a report to search and to zoom from.
SimpleReport ReportOf(const ProjectIndex& project, const std::vector<const PlacedObject*>& objects, Lng::AppID app);

}  // namespace ochost
