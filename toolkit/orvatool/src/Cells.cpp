#include "Cells.h"

#include <orvatool/String.h>

#include <bit>
#include <cstdint>
#include <optional>

#include "Numbers.h"

namespace {

enum CellKind : char { kNumber = 1, kName = 2 };  // an empty cell has no key

// The bytes of a number, highest first, so that negative ones come first and the others follow by value.
void AppendNumberKey(std::string& key, double number) {
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63u;
    const auto bits = std::bit_cast<std::uint64_t>(number + 0.0);  // there is one zero only
    const std::uint64_t ordered = bits & kSign ? ~bits : bits | kSign;
    for (unsigned shift = 64; shift > 0; shift -= 8)
        key.push_back(static_cast<char>(ordered >> (shift - 8)));
}

}  // namespace

void AppendCell(ustr& text, std::wstring_view cell) {
    for (const wchar_t c : cell)
        text.append(c == L'\t' || c == L'\r' || c == L'\n' ? L' ' : c);
}

std::string CellSortKey(std::wstring_view cell, std::wstring_view decimalSeparator) {
    std::string key;
    if (cell.empty()) return key;
    if (const std::optional<double> number = NumberOf(cell, decimalSeparator)) {
        key.push_back(kNumber);
        AppendNumberKey(key, *number);
    } else {
        key.push_back(kName);
        key.append(String::SortKeyForUser(cell));
    }
    return key;
}
