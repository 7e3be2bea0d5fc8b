#include "Utf.h"

#include <orvaspace/ustr.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace orvaspace {

namespace {

// What may begin a character of several bytes, and which second bytes may follow it: that excludes longer forms than
// needed and values above U+10FFFF. All further bytes are 80 to BF.
struct LeadRow {
    std::uint8_t first, last;
    std::uint8_t length;
    std::uint8_t lowestSecond, highestSecond;
};
constexpr LeadRow kLeads[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF},
    {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF},
    {0xF4, 0xF4, 4, 0x80, 0x8F},
};

const LeadRow* FindLead(std::uint8_t byte) {
    for (const LeadRow& row : kLeads) {
        if (byte >= row.first && byte <= row.last) return &row;
    }
    return nullptr;
}

std::uint8_t ByteAt(std::string_view text, std::size_t at) {
    return static_cast<std::uint8_t>(text[at]);
}

// Calls `take` with each character; a surrogate without its partner is one.
template <class Take>
void ForEachCharacter(std::wstring_view utf16, Take take) {
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t value = utf16[i];
        if (IsHighSurrogate(value) && i + 1 < utf16.size() && IsLowSurrogate(utf16[i + 1])) {
            value = 0x10000 + ((value - 0xD800) << 10) + (utf16[++i] - 0xDC00U);
        }
        take(value);
    }
}

constexpr unsigned Utf8Length(char32_t value) {
    return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

void AppendUtf8(astr& out, char32_t value) {
    constexpr std::uint8_t kLeadMarks[] = {0, 0, 0xC0, 0xE0, 0xF0};
    const unsigned length = Utf8Length(value);
    unsigned shift = 6 * (length - 1);
    out.append(static_cast<char>(kLeadMarks[length] | (value >> shift)));
    while (shift != 0) {
        shift -= 6;
        out.append(static_cast<char>(0x80 | ((value >> shift) & 0x3F)));
    }
}

void AppendUtf16(ustr& out, char32_t value) {
    if (value >= 0x10000) {
        out.append(static_cast<wchar_t>(0xD7C0 + (value >> 10)));
        value = 0xDC00 + (value & 0x3FF);
    }
    out.append(static_cast<wchar_t>(value));
}

// Whether `value` would join the last unit of `text` to a pair that was not written as one.
bool WouldJoin(const ustr& text, char32_t value) {
    return IsLowSurrogate(value) && !text.empty() && IsHighSurrogate(text[text.size() - 1]);
}

// How many of the first bytes are characters of their own: in most texts nearly all.
std::size_t PlainLength(std::string_view utf8) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    std::size_t length = 0;
    for (std::uint64_t word = 0; length + sizeof word <= utf8.size(); length += sizeof word) {
        std::memcpy(&word, utf8.data() + length, sizeof word);
        if (word & kHighBits) break;
    }
    while (length < utf8.size() && ByteAt(utf8, length) < 0x80)
        ++length;
    return length;
}

void AppendPlain(ustr& out, std::string_view plain) {
    const std::size_t size = out.size();
    out.resize(size + plain.size());
    std::copy(plain.begin(), plain.end(), out.data() + size);
}

// True when nothing was replaced.
bool Decode(std::string_view utf8, ustr& out) {
    out.reserve(utf8.size());
    bool wellFormed = true;
    for (;;) {
        const std::size_t plain = PlainLength(utf8);
        AppendPlain(out, utf8.substr(0, plain));
        utf8.remove_prefix(plain);
        if (utf8.empty()) break;
        Utf8Step step = ReadUtf8(utf8);
        if (WouldJoin(out, step.value)) step = {kReplacement, 1, false};
        AppendUtf16(out, step.value);
        wellFormed = wellFormed && step.wellFormed;
        utf8.remove_prefix(step.length);
    }
    return wellFormed;
}

}  // namespace

Utf8Step ReadUtf8(std::string_view utf8) {
    const std::uint8_t first = ByteAt(utf8, 0);
    if (first < 0x80) return {first, 1, true};
    const LeadRow* lead = FindLead(first);
    if (!lead) return {kReplacement, 1, false};
    char32_t value = first & (0x7FU >> lead->length);
    std::uint8_t lowest = lead->lowestSecond, highest = lead->highestSecond;
    for (std::size_t i = 1; i < lead->length; ++i) {
        if (i == utf8.size() || ByteAt(utf8, i) < lowest || ByteAt(utf8, i) > highest) return {kReplacement, i, false};
        value = (value << 6) | (ByteAt(utf8, i) & 0x3FU);
        lowest = 0x80;
        highest = 0xBF;
    }
    return {value, lead->length, true};
}

astr ToUtf8(std::wstring_view utf16) {
    std::size_t size = 0;
    ForEachCharacter(utf16, [&size](char32_t value) { size += Utf8Length(value); });
    astr out;
    out.reserve(size);
    ForEachCharacter(utf16, [&out](char32_t value) { AppendUtf8(out, value); });
    return out;
}

ustr ToWide(std::string_view utf8) {
    ustr out;
    Decode(utf8, out);
    return out;
}

bool TryToWide(std::string_view utf8, ustr& out) {
    ustr wide;
    if (!Decode(utf8, wide)) return false;
    out = std::move(wide);
    return true;
}

}  // namespace orvaspace
