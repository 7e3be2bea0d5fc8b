#include "Scan.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>

#include "ticpp.h"

namespace ticpp::detail {
namespace {

bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsNameStart(char c) {
    return IsLetter(c) || c == '_' || static_cast<unsigned char>(c) >= 127;
}
bool IsNameChar(char c) {
    return IsNameStart(c) || IsDigit(c) || c == '-' || c == '.' || c == ':';
}
bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

constexpr std::uint32_t kLastCharacter = 0x10FFFF;

class Scan {
public:
    explicit Scan(const char* text) : start_(text), p_(text) {}

    void Document();

private:
    bool At(const char* prefix) const { return std::strncmp(p_, prefix, std::strlen(prefix)) == 0; }
    bool AtAnyCase(const char* prefix) const { return _strnicmp(p_, prefix, std::strlen(prefix)) == 0; }

    void SkipSpace();
    void SkipPast(const char* end, int from = 0);
    void Markup();
    void StartTag();
    void EndTag();
    void AttributePair();
    void QuotedValue();
    void DeclarationTag();
    void CharacterReference();
    [[noreturn]] void Fail(const char* what) const;

    const char* start_;
    const char* p_;
    int depth_ = 0;
};

void Scan::Document() {
    while (*p_) {
        if (*p_ == '<') {
            Markup();
        } else if (depth_ == 0 && !IsSpace(*p_)) {
            Fail("text outside the elements");
        } else if (*p_ == '&') {
            CharacterReference();
        } else {
            ++p_;
        }
    }
    if (depth_ > 0) Fail("an element is not closed");
}

void Scan::Markup() {
    if (AtAnyCase("<?xml")) return DeclarationTag();
    if (At("<!--")) return SkipPast("-->", 4);
    if (At("<![CDATA[")) return SkipPast("]]>", 9);
    if (At("</")) return EndTag();
    if (IsNameStart(p_[1])) return StartTag();
    SkipPast(">");
}

void Scan::StartTag() {
    if (++depth_ > kMaxDepth) Fail("elements are nested too deep");
    ++p_;
    while (IsNameChar(*p_))
        ++p_;
    for (int attributes = 0;; ++attributes) {
        SkipSpace();
        if (*p_ == '>') {
            ++p_;
            return;
        }
        if (*p_ == '/') {
            if (p_[1] != '>') Fail("\"/\" in a tag");
            p_ += 2;
            --depth_;
            return;
        }
        if (attributes == kMaxAttributes) Fail("an element has too many attributes");
        AttributePair();
    }
}

void Scan::EndTag() {
    if (depth_-- == 0) Fail("an end tag without its start");
    SkipPast(">");
}

void Scan::AttributePair() {
    if (!IsNameStart(*p_)) Fail("the name of an attribute is expected");
    while (IsNameChar(*p_))
        ++p_;
    SkipSpace();
    if (*p_ != '=') Fail("\"=\" is expected");
    ++p_;
    SkipSpace();
    if (*p_ == '"' || *p_ == '\'') return QuotedValue();
    while (*p_ && !IsSpace(*p_) && *p_ != '/' && *p_ != '>') {
        if (*p_ == '"' || *p_ == '\'') Fail("a quotation mark in a value");
        ++p_;
    }
}

void Scan::QuotedValue() {
    const char quote = *p_++;
    while (*p_ && *p_ != quote) {
        if (*p_ == '&') {
            CharacterReference();
        } else {
            ++p_;
        }
    }
    if (!*p_) Fail("a value is not closed");
    ++p_;
}

// The parser heeds quotation marks only in the three values that it knows.
void Scan::DeclarationTag() {
    p_ += 5;
    while (*p_ != '>') {
        SkipSpace();
        if (!*p_) Fail("a declaration is not closed");
        if (AtAnyCase("version") || AtAnyCase("encoding") || AtAnyCase("standalone")) {
            AttributePair();
        } else {
            while (*p_ && *p_ != '>' && !IsSpace(*p_))
                ++p_;
        }
    }
    ++p_;
}

// The parser looks for the semicolon from here on and for the number backwards from that, so a number that is none
// could span anything.
void Scan::CharacterReference() {
    ++p_;
    if (*p_ != '#') return;
    ++p_;
    const bool hexadecimal = *p_ == 'x';
    if (hexadecimal) ++p_;
    const char* digits = p_;
    while (hexadecimal ? IsHexDigit(*p_) : IsDigit(*p_))
        ++p_;
    if (p_ == digits || *p_ != ';') Fail("a character reference is malformed");
    std::uint32_t code = 0;
    const auto [end, error] = std::from_chars(digits, p_, code, hexadecimal ? 16 : 10);
    if (error != std::errc() || code > kLastCharacter) Fail("a character reference names no character");
    ++p_;
}

void Scan::SkipSpace() {
    while (IsSpace(*p_))
        ++p_;
}

void Scan::SkipPast(const char* end, int from) {
    const char* found = std::strstr(p_ + from, end);
    if (!found) Fail("a tag, comment or CDATA section is not closed");
    p_ = found + std::strlen(end);
}

void Scan::Fail(const char* what) const {
    throw Exception("line " + std::to_string(1 + std::count(start_, p_, '\n')) + ": " + what);
}

}  // namespace

void CheckDocument(const char* text) {
    Scan(text).Document();
}

bool IsUtf8(const char* text) {
    for (auto p = reinterpret_cast<const unsigned char*>(text); *p; ++p) {
        if (*p < 0x80) continue;
        if (*p < 0xC2 || *p > 0xF4) return false;
        const int following = *p < 0xE0 ? 1 : *p < 0xF0 ? 2 : 3;
        for (int i = 0; i < following; ++i) {
            if ((*++p & 0xC0) != 0x80) return false;
        }
    }
    return true;
}

}  // namespace ticpp::detail
