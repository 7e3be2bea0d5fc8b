#include "host/StoreFailures.h"

#include <sqlite3.h>
#include <windows.h>

#include <iterator>

#include "host/Utf.h"

namespace ochost {
namespace {

std::wstring SystemText(DWORD error) {
    wchar_t text[256] = L"";
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                                  static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && text[length - 1] <= L' ')
        --length;
    return length > 0 ? std::wstring(text, length) : L"system error " + std::to_wstring(error);
}

}  // namespace

Failure Fail(FailureKind kind, const std::wstring& path, const wchar_t* what) {
    return {kind, L"\"" + path + L"\" " + what};
}

Failure DamagedFile(const std::wstring& path) {
    return Fail(FailureKind::Damaged, path, L"is damaged and was not opened. Restore it from a backup.");
}

Failure LockedFile(const std::wstring& path) {
    return Fail(FailureKind::Locked, path, L"is in use by another program. Close it there, or try again in a moment.");
}

Failure ReadOnlyFile(const std::wstring& path) {
    return Fail(FailureKind::ReadOnly, path,
                L"cannot be written. Remove the read-only attribute, or use a folder where you may write.");
}

Failure FailedCall(const std::wstring& path, const std::wstring& cause) {
    return Fail(FailureKind::System, path, (L"cannot be used: " + cause).c_str());
}

Failure RemovedRecord(const std::wstring& what) {
    return {FailureKind::NotFound, L"The " + what + L" was removed in the meantime. Refresh the list."};
}

Failure Explain(DWORD error, const std::wstring& path) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_INVALID_NAME:
            return Fail(FailureKind::NotFound, path, L"was not found.");
        case ERROR_PATH_NOT_FOUND:
            return Fail(FailureKind::NotFound, path, L"was not found: its folder does not exist.");
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return Fail(FailureKind::AlreadyExists, path, L"exists already. Choose another name.");
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return LockedFile(path);
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
            return ReadOnlyFile(path);
        default:
            return FailedCall(path, SystemText(error));
    }
}

Failure Explain(const orvasql::SqlError& error, const std::wstring& path) {
    switch (error.Code()) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return LockedFile(path);
        case SQLITE_READONLY:
            return ReadOnlyFile(path);
        case SQLITE_NOTADB:
            return Fail(FailureKind::NotAProject, path, L"is not a project file.");
        case SQLITE_CORRUPT:
        case SQLITE_ERROR:  // our own statements fit our own schema
            return DamagedFile(path);
        case SQLITE_CONSTRAINT:
            return Fail(FailureKind::BadInput, path, (L"cannot hold this: " + ToUtf16(error.what())).c_str());
        default:
            return FailedCall(path, ToUtf16(error.what()));
    }
}

}  // namespace ochost
