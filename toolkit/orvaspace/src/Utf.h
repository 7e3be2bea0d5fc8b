#pragma once

#include <cstddef>
#include <string_view>

namespace orvaspace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xDC00;
}

/// One step of reading UTF-8. A lone surrogate as three bytes is well formed here.
struct Utf8Step {
    char32_t value;      ///< the character, or kReplacement
    std::size_t length;  ///< how many bytes it takes; 1 or more
    bool wellFormed;
};

/// Reads the start of `utf8`, which is not empty. Bytes that are no character are taken up to the first that cannot
/// continue the one begun.
Utf8Step ReadUtf8(std::string_view utf8);

}  // namespace orvaspace
