#pragma once

#include <orvaspace/ustr.h>

#include <optional>
#include <string_view>

/// Numbers as users write them, with their own decimal separator or a point, and as records hold them, with a point.
namespace UserNumber {

/// The number that a text is, written in either way and with blanks around it or not. None for anything else.
std::optional<double> Parse(std::wstring_view text);

/// What the user typed, as a record holds it. What is no number stays as it is.
ustr Stored(std::wstring_view typed);

/// A record's number as the user writes it. What is no number stays as it is.
ustr Shown(std::wstring_view stored);
ustr Shown(double value);

}  // namespace UserNumber
