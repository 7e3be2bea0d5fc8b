#include "host/Console.h"

#include <windows.h>

#include <orvatool/Gw.h>

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

bool Print(DWORD which, std::wstring_view line) {
    const HANDLE stream = Stream(which);
    if (!IsUsable(stream)) return false;
    const std::wstring text = std::wstring(line) + L"\r\n";
    DWORD written = 0;
    if (DWORD mode = 0; GetConsoleMode(stream, &mode)) {
        return WriteConsoleW(stream, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
    }
    const std::string bytes = ToUtf8(text);
    return WriteFile(stream, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0;
}

}  // namespace

bool PrintOut(std::wstring_view line) {
    return Print(STD_OUTPUT_HANDLE, line);
}

bool PrintError(std::wstring_view line) {
    return Print(STD_ERROR_HANDLE, line);
}

void ShowError(const std::wstring& message) {
    gwerrmsg(GetActiveWindow(), kSharedTexts, message.c_str());
}

void UserReporter::Fail(const std::wstring& message) {
    Log(message);
    ShowError(message);
}

bool UserReporter::FailOrRetry(const std::wstring& message) {
    Log(message);
    return gwyesnomsg(GetActiveWindow(), kSharedTexts, (message + L"\r\n\r\nTry again?").c_str());
}

}  // namespace ochost
