#pragma once

#include <orvatool/ObjectSelection.h>

#include <string>

namespace ochost {

/// A selection as text, one member a line; lists that are empty are left out.
std::wstring ToText(const ObjectSelection::Data& data);
std::wstring ToText(const ObjectSelection::RecordData& record);

}  // namespace ochost
