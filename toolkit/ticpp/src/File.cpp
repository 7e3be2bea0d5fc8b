#include "File.h"

#include <windows.h>

#include <algorithm>

#include "ticpp.h"

namespace ticpp::detail {
namespace {

constexpr int kTemporaryNames = 100;  // how many are tried before giving up

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

class File {
public:
    explicit File(HANDLE handle) : handle_(handle) {}
    ~File() { Close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    HANDLE Get() const { return handle_; }
    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    void Close() {
        if (*this) CloseHandle(handle_);
        handle_ = INVALID_HANDLE_VALUE;
    }

private:
    HANDLE handle_;
};

// A new file beside the target, which goes again unless it has taken the target's place.
class Temporary {
public:
    explicit Temporary(const std::wstring& target);
    ~Temporary() {
        file_.Close();
        if (!path_.empty()) DeleteFileW(path_.c_str());
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    bool Created() const { return static_cast<bool>(file_); }
    bool Write(std::string_view bytes);
    bool Replace(const std::wstring& target);

private:
    std::wstring path_;
    File file_;
};

HANDLE CreateBeside(const std::wstring& target, std::wstring* path) {
    for (int i = 0; i < kTemporaryNames; ++i) {
        *path = target + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(i) + L".tmp";
        HANDLE file = CreateFileW(path->c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) return file;
        if (GetLastError() != ERROR_FILE_EXISTS) break;
    }
    path->clear();
    return INVALID_HANDLE_VALUE;
}

Temporary::Temporary(const std::wstring& target) : file_(CreateBeside(target, &path_)) {
}

bool Temporary::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto part = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1u << 24u));
        if (!::WriteFile(file_.Get(), bytes.data(), part, &written, nullptr) || written == 0) return false;
        bytes.remove_prefix(written);
    }
    return FlushFileBuffers(file_.Get()) != 0;
}

bool Temporary::Replace(const std::wstring& target) {
    file_.Close();
    if (!MoveFileExW(path_.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return false;
    path_.clear();
    return true;
}

}  // namespace

std::string ReadFile(std::string_view name) {
    File file(CreateFileW(WidePath(name).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                          nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) Fail(name, "cannot be opened", GetLastError());
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.Get(), &size)) Fail(name, "cannot be read", GetLastError());
    if (size.QuadPart > static_cast<LONGLONG>(kMaxBytes)) Fail(name, "is too large", ERROR_FILE_TOO_LARGE);
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr)) {
        Fail(name, "cannot be read", GetLastError());
    }
    bytes.resize(read);
    return bytes;
}

void WriteFile(std::string_view name, std::string_view bytes) {
    const std::wstring target = WidePath(name);
    Temporary temporary(target);
    if (!temporary.Created()) Fail(name, "cannot be created", GetLastError());
    if (!temporary.Write(bytes)) Fail(name, "cannot be written", GetLastError());
    if (!temporary.Replace(target)) Fail(name, "cannot be replaced", GetLastError());
}

}  // namespace ticpp::detail
