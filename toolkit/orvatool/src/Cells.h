#pragma once

#include <orvaspace/ustr.h>

#include <string>
#include <string_view>

// Cells of lists and reports.

/// Adds a cell's text without what separates cells and rows: tabs and line breaks become blanks.
void AppendCell(ustr& text, std::wstring_view cell);

/// Bytes in whose order (std::string's) cells are sorted as a user sorts: empty cells first, then numbers by value,
/// then names. `decimalSeparator` is the user's.
std::string CellSortKey(std::wstring_view cell, std::wstring_view decimalSeparator);
