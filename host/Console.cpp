#include "host/Console.h"

#include <windows.h>

#include <string>

#include "host/Utf.h"

namespace ochost {
namespace {

bool IsUsable(HANDLE stream) {
    return stream && stream != INVALID_HANDLE_VALUE;
}

HANDLE Stream(DWORD which) {
    if (const HANDLE given = GetStdHandle(which); IsUsable(given)) return given;
    [[maybe_unused]] static const BOOL attached = AttachConsole(ATTACH_PARENT_PROCESS);
    return GetStdHandle(which);
}

void Print(DWORD which, std::wstring_view line) {
    const HANDLE stream = Stream(which);
    if (!IsUsable(stream)) return;
    const std::wstring text = std::wstring(line) + L"\r\n";
    DWORD written = 0;
    if (DWORD mode = 0; GetConsoleMode(stream, &mode)) {
        WriteConsoleW(stream, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    const std::string bytes = ToUtf8(text);
    WriteFile(stream, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

}  // namespace

void PrintOut(std::wstring_view line) {
    Print(STD_OUTPUT_HANDLE, line);
}

void PrintError(std::wstring_view line) {
    Print(STD_ERROR_HANDLE, line);
}

}  // namespace ochost
