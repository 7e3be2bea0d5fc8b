#pragma once

#include <string>
#include <string_view>

namespace ochost {

// Conversions between UTF-8 and UTF-16; what is not valid becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
std::wstring ToUtf16(std::string_view text);

}  // namespace ochost
