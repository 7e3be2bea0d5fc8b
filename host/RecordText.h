#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ochost {

/// A record as text, one member a line.
class RecordText {
public:
    RecordText& Line(const wchar_t* member, std::wstring_view value) {
        text_.append(member).append(L" = \"").append(value).append(L"\"\r\n");
        return *this;
    }
    RecordText& Line(const wchar_t* member, std::int64_t value) {
        text_.append(member).append(L" = ").append(std::to_wstring(value)).append(L"\r\n");
        return *this;
    }
    const std::wstring& Text() const { return text_; }

private:
    std::wstring text_;
};

}  // namespace ochost
