#pragma once

#include <optional>
#include <string>
#include <string_view>

// Numbers as users write them.

/// The user's decimal separator.
std::wstring DecimalSeparator();

/// The number that `text` is: blanks around it or not, with `separator` or a point. None for anything else.
std::optional<double> NumberOf(std::wstring_view text, std::wstring_view separator);
