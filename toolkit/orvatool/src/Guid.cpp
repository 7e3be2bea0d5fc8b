#include <orvatool/Guid.h>

#include <windows.h>

#include <objbase.h>

#include <string_view>

namespace {

constexpr std::size_t kPlainLength = 36;

// Where the digits of each byte stand in the plain form, in the order of the text.
constexpr std::size_t kBytePlaces[] = {0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};
constexpr std::size_t kHyphenPlaces[] = {8, 13, 18, 23};

int DigitValue(wchar_t digit) {
    if (digit >= L'0' && digit <= L'9') return digit - L'0';
    if (digit >= L'a' && digit <= L'f') return digit - L'a' + 10;
    if (digit >= L'A' && digit <= L'F') return digit - L'A' + 10;
    return -1;
}

// The bytes in the order in which they are written: the first three fields are numbers, so their high byte leads.
void ToTextOrder(const GUID& guid, unsigned char (&bytes)[16]) {
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(guid.Data1 >> (24 - 8 * i));
    for (int i = 0; i < 2; ++i)
        bytes[4 + i] = static_cast<unsigned char>(guid.Data2 >> (8 - 8 * i));
    for (int i = 0; i < 2; ++i)
        bytes[6 + i] = static_cast<unsigned char>(guid.Data3 >> (8 - 8 * i));
    for (int i = 0; i < 8; ++i)
        bytes[8 + i] = guid.Data4[i];
}

GUID FromTextOrder(const unsigned char (&bytes)[16]) {
    GUID guid{};
    for (int i = 0; i < 4; ++i)
        guid.Data1 = guid.Data1 << 8 | bytes[i];
    guid.Data2 = static_cast<unsigned short>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<unsigned short>(bytes[6] << 8 | bytes[7]);
    for (int i = 0; i < 8; ++i)
        guid.Data4[i] = bytes[8 + i];
    return guid;
}

bool ReadPlain(std::wstring_view text, GUID& guid) {
    if (text.size() != kPlainLength) return false;
    for (const std::size_t place : kHyphenPlaces) {
        if (text[place] != L'-') return false;
    }
    unsigned char bytes[16];
    for (int i = 0; i < 16; ++i) {
        const int high = DigitValue(text[kBytePlaces[i]]);
        const int low = DigitValue(text[kBytePlaces[i] + 1]);
        if (high < 0 || low < 0) return false;
        bytes[i] = static_cast<unsigned char>(high << 4 | low);
    }
    guid = FromTextOrder(bytes);
    return true;
}

// Takes the braces off; an empty text when they are not both there.
std::wstring_view WithoutBraces(std::wstring_view text) {
    if (text.size() != kPlainLength + 2 || text.front() != L'{' || text.back() != L'}') return {};
    return text.substr(1, kPlainLength);
}

}  // namespace

bool Guid::Generate(GUID& guid) {
    GUID fresh;
    if (FAILED(CoCreateGuid(&fresh))) return false;
    guid = fresh;
    return true;
}

bool Guid::IsNull(const GUID& guid) {
    return guid == GUID{};
}

ustr Guid::ToString(const GUID& guid, int format, int options) {
    if (format != Braced && format != Plain) return {};
    if (!(options & NullAsText) && IsNull(guid)) return {};
    const wchar_t* digits = options & UpperCase ? L"0123456789ABCDEF" : L"0123456789abcdef";
    unsigned char bytes[16];
    ToTextOrder(guid, bytes);
    wchar_t text[kPlainLength + 1] = {};
    for (const std::size_t place : kHyphenPlaces)
        text[place] = L'-';
    for (int i = 0; i < 16; ++i) {
        text[kBytePlaces[i]] = digits[bytes[i] >> 4];
        text[kBytePlaces[i] + 1] = digits[bytes[i] & 15];
    }
    ustr result(text);
    if (format == Braced) result.format(L"{%s}", text);
    return result;
}

bool Guid::FromString(GUID& guid, const wchar_t* text, int format) {
    guid = {};
    if (!text || (format != Braced && format != Plain)) return false;
    const std::wstring_view whole(text);
    return ReadPlain(format == Braced ? WithoutBraces(whole) : whole, guid);
}
