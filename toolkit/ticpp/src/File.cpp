#include "File.h"

#include <orvaspace/File.h>
#include <windows.h>

#include "ticpp.h"

namespace ticpp::detail {
namespace {

[[noreturn]] void Fail(std::string_view name, const char* what, DWORD error) {
    throw Exception("\"" + std::string(name) + "\": " + what + " (error " + std::to_string(error) + ")");
}

std::wstring WidePath(std::string_view name) {
    const int length = static_cast<int>(name.size());
    const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, name.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, name.data(), length, wide.data(), size);
    if (wide.empty() || wide.find(L'\0') != std::wstring::npos) Fail(name, "is no file name", ERROR_INVALID_NAME);
    return wide;
}

const char* WhatFailed(orvaspace::FileStep step) {
    switch (step) {
        case orvaspace::FileStep::Open:
            return "cannot be opened";
        case orvaspace::FileStep::Read:
            return "cannot be read";
        case orvaspace::FileStep::Create:
            return "cannot be created";
        case orvaspace::FileStep::Write:
            return "cannot be written";
        case orvaspace::FileStep::Replace:
            break;
    }
    return "cannot be replaced";
}

}  // namespace

std::string ReadFile(std::string_view name) {
    std::string bytes;
    orvaspace::FileStep failed{};
    const std::uint32_t error = orvaspace::ReadWholeFile(WidePath(name).c_str(), kMaxBytes, bytes, &failed);
    if (error) Fail(name, error == ERROR_FILE_TOO_LARGE ? "is too large" : WhatFailed(failed), error);
    return bytes;
}

void WriteFile(std::string_view name, std::string_view bytes) {
    orvaspace::FileStep failed{};
    const std::uint32_t error = orvaspace::WriteWholeFile(WidePath(name).c_str(), bytes, &failed);
    if (error) Fail(name, WhatFailed(failed), error);
}

}  // namespace ticpp::detail
