#pragma once

#include <orvaspace/ustr.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

// Texts in records of a fixed layout: a field is an array of UTF-16 units that always holds a terminating NUL. Such a
// record may be packed, and a field may then lie at an odd address: it must not be read through a pointer to wchar_t.
// These functions copy instead. A field is named by its member: FixedText<&oce_columntype::hdr1>(column).

namespace fixedtext {

template <class Member>
struct FieldOf;
template <class Record, std::size_t n>
struct FieldOf<wchar_t (Record::*)[n]> {
    using Owner = Record;
    static constexpr std::size_t kSize = n;
};

}  // namespace fixedtext

/// The longest text that the field holds.
template <auto member>
inline constexpr std::size_t kFixedTextLimit = fixedtext::FieldOf<decltype(member)>::kSize - 1;

/// The text of the field. A field that lacks its NUL, as bytes of unknown origin may, is read to its limit.
template <auto member>
ustr FixedText(const typename fixedtext::FieldOf<decltype(member)>::Owner& record) {
    wchar_t units[kFixedTextLimit<member> + 1];
    std::memcpy(units, &(record.*member), sizeof units);
    return {units, static_cast<std::size_t>(std::find(units, units + kFixedTextLimit<member>, L'\0') - units)};
}

/// Puts the text into the field, up to its first NUL. One that is longer than the field's limit is cut there; of a
/// surrogate pair that does not fit as a whole nothing is kept. The rest of the field is zero, so that equal texts are
/// equal bytes.
template <auto member>
void SetFixedText(typename fixedtext::FieldOf<decltype(member)>::Owner& record, std::wstring_view text) {
    ustr kept(text.substr(0, std::min(text.find(L'\0'), kFixedTextLimit<member> + 1)));
    kept.truncate(kFixedTextLimit<member>);
    wchar_t units[kFixedTextLimit<member> + 1] = {};
    std::copy(kept.begin(), kept.end(), units);
    std::memcpy(&(record.*member), units, sizeof units);
}
