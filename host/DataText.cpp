#include "host/DataText.h"

#include <windows.h>

#include <charconv>

#include "host/Utf.h"

namespace ochost {
namespace {

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    size_t from = 0;
    for (size_t to; (to = text.find(separator, from)) != std::string_view::npos; from = to + 1) {
        parts.push_back(text.substr(from, to - from));
    }
    parts.push_back(text.substr(from));
    return parts;
}

template <class T, class... Format>
bool ReadNumber(std::string_view text, T& value, Format... format) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, format...);
    return error == std::errc() && stop == end;
}

}  // namespace

DataRecord::DataRecord(std::string_view file, int line, std::string_view text)
    : file_(file), line_(line), fields_(Split(text, '\t')) {
}

std::wstring DataRecord::Text(size_t field) const {
    return ToUtf16(fields_[field]);
}

int DataRecord::Integer(size_t field) const {
    int value = 0;
    if (!ReadNumber(fields_[field], value)) Refuse(L"\"" + Text(field) + L"\" is not a whole number");
    return value;
}

double DataRecord::Real(size_t field) const {
    double value = 0;
    if (!ReadNumber(fields_[field], value)) Refuse(L"\"" + Text(field) + L"\" is not a number");
    return value;
}

std::uint32_t DataRecord::Colour(size_t field) const {
    std::uint32_t value = 0;
    if (fields_[field].size() != 6 || !ReadNumber(fields_[field], value, 16)) {
        Refuse(L"\"" + Text(field) + L"\" is not a colour (RRGGBB)");
    }
    return value;
}

std::vector<std::wstring> DataRecord::List(size_t field, char separator) const {
    std::vector<std::wstring> values;
    if (fields_[field].empty()) return values;
    for (std::string_view value : Split(fields_[field], separator))
        values.push_back(ToUtf16(value));
    return values;
}

void DataRecord::Refuse(const std::wstring& what) const {
    throw Failure{FailureKind::BadInput,
                  L"Sample data \"" + ToUtf16(file_) + L"\", line " + std::to_wstring(line_) + L": " + what + L"."};
}

std::vector<DataRecord> ReadData(const TextSource& texts, std::string_view file, size_t fields) {
    std::vector<DataRecord> records;
    int number = 0;
    for (std::string_view line : Split(texts(file), '\n')) {
        ++number;
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty() || line.front() == '#') continue;
        const DataRecord& record = records.emplace_back(file, number, line);
        if (record.Size() != fields) record.Refuse(L"there are not " + std::to_wstring(fields) + L" fields");
    }
    if (records.empty()) {
        throw Failure{FailureKind::BadInput, L"Sample data \"" + ToUtf16(file) + L"\" is missing."};
    }
    return records;
}

std::string_view EmbeddedText(std::string_view name) {
    const HRSRC resource = FindResourceW(nullptr, ToUtf16(name).c_str(), RT_RCDATA);
    const HGLOBAL loaded = resource ? LoadResource(nullptr, resource) : nullptr;
    if (!loaded) return {};
    return {static_cast<const char*>(LockResource(loaded)), SizeofResource(nullptr, resource)};
}

}  // namespace ochost
