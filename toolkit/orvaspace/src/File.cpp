#include <orvaspace/File.h>

#include <windows.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace orvaspace {
namespace {

constexpr int kTemporaryNames = 100;  // how many are tried before giving up

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

// Not every system refuses to replace such a file.
bool IsReadOnly(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

// The error of the call that has just failed, never 0.
std::uint32_t Failed(FileStep step, FileStep* failed, DWORD error = GetLastError()) {
    if (failed) *failed = step;
    return error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

}  // namespace

std::uint32_t WriteWholeFile(const wchar_t* path, std::string_view bytes, FileStep* failed) {
    const std::wstring target(path);
    if (IsReadOnly(target)) return Failed(FileStep::Replace, failed, ERROR_ACCESS_DENIED);
    Temporary temporary(target);
    if (!temporary.Created()) return Failed(FileStep::Create, failed);
    if (!temporary.Write(bytes)) return Failed(FileStep::Write, failed);
    if (!temporary.Replace(target)) return Failed(FileStep::Replace, failed);
    return ERROR_SUCCESS;
}

std::uint32_t ReadWholeFile(const wchar_t* path, std::size_t limit, std::string& bytes, FileStep* failed) {
    const File file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) return Failed(FileStep::Open, failed);
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.Get(), &size)) return Failed(FileStep::Read, failed);
    const std::size_t most = std::min<std::size_t>(limit, std::numeric_limits<DWORD>::max());
    if (static_cast<std::size_t>(size.QuadPart) > most) return Failed(FileStep::Read, failed, ERROR_FILE_TOO_LARGE);
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(file.Get(), content.data(), static_cast<DWORD>(content.size()), &read, nullptr)) {
        return Failed(FileStep::Read, failed);
    }
    content.resize(read);
    bytes = std::move(content);
    return ERROR_SUCCESS;
}

}  // namespace orvaspace
