#include "host/ProjectLock.h"

#include <orvasql/Sqlite.h>
#include <windows.h>

#include <array>
#include <cwchar>
#include <utility>
#include <vector>

#include "host/ProjectTables.h"
#include "host/StoreFailures.h"
#include "host/TableRows.h"

namespace ochost {
namespace {

using orvasql::Database;
using orvasql::Transaction;

// Far behind the end of any file, and behind what SQLite locks.
constexpr DWORD kMarkOffset = 0;
constexpr DWORD kMarkOffsetHigh = 0x40000000;

std::wstring UserName() {
    std::array<wchar_t, 257> name{};
    DWORD size = static_cast<DWORD>(name.size());
    return GetUserNameW(name.data(), &size) ? name.data() : L"?";
}

std::wstring ComputerName() {
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD size = static_cast<DWORD>(name.size());
    return GetComputerNameW(name.data(), &size) ? name.data() : L"?";
}

std::wstring Now() {
    SYSTEMTIME time{};
    GetSystemTime(&time);
    std::array<wchar_t, 32> text{};
    std::swprintf(text.data(), text.size(), L"%04d-%02d-%02d %02d:%02d:%02d", time.wYear, time.wMonth, time.wDay,
                  time.wHour, time.wMinute, time.wSecond);
    return text.data();
}

std::optional<LockHolder> HolderIn(Database& database) {
    std::vector<LockHolder> holders;
    ReadRows(database, kLockTable, holders);
    if (holders.empty()) return std::nullopt;
    return std::move(holders.front());
}

void DeleteHolder(Database& database) {
    database.Execute(std::string("DELETE FROM ") + kLockTable.name);
}

/// Writes this program as the holder; returns the one that was there.
std::optional<LockHolder> ReplaceHolder(Database& database) {
    Transaction transaction(database, Transaction::Kind::Write);
    std::optional<LockHolder> before = HolderIn(database);
    DeleteHolder(database);
    WriteRows(database, kLockTable, LockHolder{UserName(), ComputerName(), std::int64_t{GetCurrentProcessId()}, Now()});
    transaction.Commit();
    return before;
}

Failure HeldBy(const std::wstring& path, const std::optional<LockHolder>& holder) {
    if (!holder) return Fail(FailureKind::Locked, path, L"is being edited by another program. Try again in a moment.");
    const std::wstring who = L"is being edited by " + holder->user + L" on " + holder->computer + L" (process " +
                             std::to_wstring(holder->process) + L") since " + holder->since +
                             L" UTC. Try again when it has been released there.";
    return Fail(FailureKind::Locked, path, who.c_str());
}

}  // namespace

/// A locked byte of the project file, which the system unlocks when the program ends.
class ProjectLock::Mark {
public:
    explicit Mark(const std::wstring& path)
        : file_(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, 0, nullptr)) {
        if (file_ == INVALID_HANDLE_VALUE) throw Explain(GetLastError(), path);
    }
    ~Mark() { CloseHandle(file_); }
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;

    /// False when another program has set it.
    bool Set(const std::wstring& path) {
        OVERLAPPED place{};
        place.Offset = kMarkOffset;
        place.OffsetHigh = kMarkOffsetHigh;
        if (LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place)) return true;
        const DWORD error = GetLastError();
        if (error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING) return false;
        throw Explain(error, path);
    }

private:
    HANDLE file_;
};

ProjectLock ProjectLock::Take(const std::wstring& path, Database& database) {
    auto mark = std::make_unique<Mark>(path);
    if (!mark->Set(path)) throw HeldBy(path, HolderIn(database));
    std::optional<LockHolder> before = ReplaceHolder(database);
    return {std::move(mark), database, std::move(before)};
}

ProjectLock::ProjectLock(std::unique_ptr<Mark> mark, Database& database, std::optional<LockHolder> before)
    : mark_(std::move(mark)), database_(&database), takenOverFrom_(std::move(before)) {
}

ProjectLock::ProjectLock(ProjectLock&&) noexcept = default;

ProjectLock& ProjectLock::operator=(ProjectLock&& other) noexcept {
    std::swap(mark_, other.mark_);
    std::swap(database_, other.database_);
    std::swap(takenOverFrom_, other.takenOverFrom_);
    return *this;
}

ProjectLock::~ProjectLock() {
    if (!mark_) return;
    try {
        DeleteHolder(*database_);
    } catch (const std::exception&) {
        // Without its mark the entry counts for nothing.
    }
}

}  // namespace ochost
