#pragma once

#include <span>

#include "host/DialogCatalog.h"

namespace ochost {

// One function a family, in a file of its own; host/DialogCatalog.cpp lists them in display order.
std::span<const DialogEntry> CustomPropertyDialogs();
std::span<const DialogEntry> ReportDialogs();
std::span<const DialogEntry> SelectionDialogs();
std::span<const DialogEntry> ToolkitDialogs();
std::span<const DialogEntry> UpdateDwgDialogs();

}  // namespace ochost
