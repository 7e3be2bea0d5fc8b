#include "UserNumber.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string>

namespace {

constexpr std::wstring_view kBlanks = L" \t\r\n\u00a0";
constexpr std::wstring_view kPoint = L".";

std::wstring DecimalSeparator() {
    wchar_t separator[8] = L"";
    const int length =
        GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, separator, static_cast<int>(std::size(separator)));
    return length > 1 ? separator : std::wstring(kPoint);
}

std::wstring_view WithoutBlanks(std::wstring_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::wstring_view::npos ? std::wstring_view()
                                            : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

ustr Replaced(std::wstring_view text, std::wstring_view separator, std::wstring_view other) {
    std::wstring result(text);
    if (const std::size_t at = result.find(separator); at != std::wstring::npos)
        result.replace(at, separator.size(), other);
    return ustr(result);
}

std::optional<double> WithPoint(std::wstring_view text) {
    std::wstring_view plain = WithoutBlanks(text);
    if (plain.size() > 1 && plain[0] == L'+' && plain[1] != L'-') plain.remove_prefix(1);
    if (std::any_of(plain.begin(), plain.end(), [](wchar_t c) { return c > 0x7e; })) return std::nullopt;
    std::string digits;
    for (const wchar_t c : plain)
        digits += static_cast<char>(c);
    double number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    return whole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<double> WithSeparator(std::wstring_view text) {
    return WithPoint(Replaced(text, DecimalSeparator(), kPoint));
}

}  // namespace

std::optional<double> UserNumber::Parse(std::wstring_view text) {
    return WithSeparator(text);
}

ustr UserNumber::Stored(std::wstring_view typed) {
    if (WithPoint(typed) || !WithSeparator(typed)) return ustr(typed);
    return Replaced(WithoutBlanks(typed), DecimalSeparator(), kPoint);
}

ustr UserNumber::Shown(std::wstring_view stored) {
    return WithPoint(stored) ? Replaced(stored, kPoint, DecimalSeparator()) : ustr(stored);
}

ustr UserNumber::Shown(double value) {
    char digits[64];
    const auto result = std::to_chars(digits, std::end(digits), value);
    return Shown(std::wstring(digits, result.ptr));
}
