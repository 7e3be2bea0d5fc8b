// Numbers as text and back, whatever the locale.

#include <charconv>
#include <cmath>

#include "ticpp.h"

namespace ticpp::detail {
namespace {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kSpace = " \t\n\v\f\r";
    const std::size_t begin = text.find_first_not_of(kSpace);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(kSpace) - begin + 1);
}

template <class T>
bool ReadAll(std::string_view text, T* value) {
    text = Trim(text);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    T read{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    if constexpr (std::is_floating_point_v<T>) {
        if (!std::isfinite(read)) return false;
    }
    *value = read;
    return true;
}

template <class T>
std::string Shortest(T value) {
    if constexpr (std::is_floating_point_v<T>) {
        if (!std::isfinite(value)) throw Exception("A number that is infinite or not a number cannot be written");
    }
    char buffer[32];
    const auto [end, error] = std::to_chars(std::begin(buffer), std::end(buffer), value);
    return std::string(buffer, end);
}

}  // namespace

bool ReadNumber(std::string_view text, bool* value) {
    const std::string_view word = Trim(text);
    const bool yes = word == "1" || word == "true";
    if (!yes && word != "0" && word != "false") return false;
    *value = yes;
    return true;
}

bool ReadNumber(std::string_view text, long long* value) {
    return ReadAll(text, value);
}
bool ReadNumber(std::string_view text, unsigned long long* value) {
    return ReadAll(text, value);
}
bool ReadNumber(std::string_view text, float* value) {
    return ReadAll(text, value);
}
bool ReadNumber(std::string_view text, double* value) {
    return ReadAll(text, value);
}

std::string WriteNumber(bool value) {
    return value ? "1" : "0";
}
std::string WriteNumber(long long value) {
    return Shortest(value);
}
std::string WriteNumber(unsigned long long value) {
    return Shortest(value);
}
std::string WriteNumber(float value) {
    return Shortest(value);
}
std::string WriteNumber(double value) {
    return Shortest(value);
}

}  // namespace ticpp::detail
