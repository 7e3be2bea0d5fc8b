#pragma once

#include <occommonui/ObjectSelection.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/selection/ProjectIndex.h"

namespace ochost {

// The values that the properties of placed objects have.

ObjectSelection::Dlg::PropertyKind KindOf(const Property& property);

/// The value of an object's property: a number with a point in the property's unit; "1" or "0" for a boolean; empty
/// when the object has none. What the project does not know of an object follows from its id, always the same.
std::wstring ValueOf(const ProjectIndex& project, const PlacedObject& object, const Property& property);

/// The value as users read it: "1.2 kW", "Yes".
std::wstring ValueText(const Property& property, std::wstring_view value);

/// The values to choose from: the property's own, else those that the objects have, in the order of lists; none for
/// numbers.
std::vector<ObjectSelection::Dlg::ValueEntry> ValuesOf(const ProjectIndex& project, const Property& property);

}  // namespace ochost
