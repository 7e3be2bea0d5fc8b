#include "QBaseConnection.h"

#include <orvatool/Lng.h>

#include <sqlite3.h>
#include <windows.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

using orvasql::OpenMode;
using Status = QBaseDb::Status;

// stored: never renumber
constexpr std::int64_t kVersion = 1;

// As many as can be read without a noticeable wait. Among more a damaged one is found when it is used.
constexpr std::int64_t kMostCheckedRecords = 2000;

constexpr char kCreate[] =
    "CREATE TABLE qbase_version(version INTEGER NOT NULL);"
    "CREATE TABLE qbase_record(type TEXT NOT NULL, obj_id TEXT NOT NULL, fields BLOB NOT NULL,"
    " PRIMARY KEY(type, obj_id));";

// In the order of Sql.
constexpr const char* kStatements[] = {
    "SELECT version FROM qbase_version",
    "SELECT 1 FROM qbase_record WHERE type = ? AND obj_id = ?",
    "SELECT fields FROM qbase_record WHERE type = ? AND obj_id = ?",
    "INSERT INTO qbase_record VALUES(?1, ?2, ?3) ON CONFLICT(type, obj_id) DO UPDATE SET fields = ?3",
    "DELETE FROM qbase_record WHERE type = ? AND obj_id = ?",
};

// ---- what is said to the user ----

struct StatusText {
    Status status;
    Lng::AppID app;
    int id;
    const wchar_t* text;  // with the path, and for Failed the cause
};
constexpr StatusText kFailed = {Status::Failed, kSharedTexts, 90036, L"\"%s\" cannot be used: %s"};
constexpr StatusText kTexts[] = {
    {Status::ReadOnly,   kSharedTexts, 90030,
     L"\"%s\" cannot be written. Remove its read-only attribute, or use a folder where you may write."              },
    {Status::NotFound,   kSharedTexts, 90031, L"\"%s\" was not found and cannot be created there. Check the folder."},
    {Status::NoDatabase, kSharedTexts, 90032, L"\"%s\" is not a project database."                                  },
    {Status::Damaged,    kSharedTexts, 90033, L"\"%s\" is damaged. Restore it from a backup."                       },
    {Status::Newer,      kSharedTexts, 90034,
     L"\"%s\" was saved by a newer version of this program. Open it with that version."                             },
    {Status::Locked,     kSharedTexts, 90035,
     L"\"%s\" is in use by another program. Close it there, or try again in a moment."                              },
};

ustr TextOf(Status status, const std::wstring& path, const ustr& cause) {
    const auto* row = std::ranges::find(kTexts, status, &StatusText::status);
    const StatusText& found = row != std::end(kTexts) ? *row : kFailed;
    ustr text;
    text.format(Lng::text(found.app, found.id, found.text).c_str(), path.c_str(), cause.c_str());
    return text;
}

ustr SystemText(std::uint32_t error) {
    wchar_t text[512] = L"";
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                                  static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && text[length - 1] <= L' ')
        --length;
    return {text, length};
}

Status StatusOf(int code) {
    switch (code) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return Status::Locked;
        case SQLITE_READONLY:
            return Status::ReadOnly;
        case SQLITE_NOTADB:
            return Status::NoDatabase;
        case SQLITE_CORRUPT:
        case SQLITE_ERROR:  // our own statements fit our own tables
            return Status::Damaged;
        default:
            return Status::Failed;
    }
}

std::wstring FullPath(const wchar_t* path) {
    const DWORD size = GetFullPathNameW(path, 0, nullptr, nullptr);
    if (size == 0) return path;
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(path, size, full.data(), nullptr));
    return full;
}

// 0, or the system's error.
std::uint32_t TryFile(const std::wstring& path, DWORD access, DWORD disposition) {
    const HANDLE file = CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(file);
    return 0;
}

}  // namespace

// ---- opening ----

QBaseDb::Connection::Connection(const wchar_t* path, std::chrono::milliseconds busyTimeout)
    : path_(FullPath(path ? path : L"")) {
    if (Guard([&] { Open(busyTimeout); }) == 0) return;
    status_ = lastFailure_;
    for (auto& statement : statements_)
        statement.reset();
    database_.reset();
}

void QBaseDb::Connection::Open(std::chrono::milliseconds busyTimeout) {
    const OpenMode mode = PossibleMode();
    const bool canWrite = mode == OpenMode::ReadWrite;
    database_.emplace(path_, mode, busyTimeout);
    if (canWrite && database_->IntegerOf("PRAGMA page_count") == 0) {
        // Ours alone: new, or left empty by a process that was stopped before it had filled the new file.
        database_->Execute("PRAGMA journal_mode = WAL");
        orvasql::Transaction transaction(*database_, Access::Write);
        CheckVersion();
        CreateTables();  // unless another process was faster
        transaction.Commit();
    } else {
        CheckTables();
    }
    status_ = canWrite ? Status::Open : Status::ReadOnly;
    if (!canWrite) errorText_ = TextOf(status_, path_, ustr());
}

// What the system allows. Creates a file that is not there, empty.
OpenMode QBaseDb::Connection::PossibleMode() const {
    const DWORD attributes = GetFileAttributesW(path_.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && attributes & FILE_ATTRIBUTE_DIRECTORY) Fail(Status::NoDatabase, SQLITE_NOTADB);
    const bool marked = exists && attributes & FILE_ATTRIBUTE_READONLY;
    std::uint32_t error = marked ? ERROR_ACCESS_DENIED : TryFile(path_, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    if (error == 0) return OpenMode::ReadWrite;
    if (!exists && error != ERROR_SHARING_VIOLATION) Fail(Status::NotFound, SQLITE_CANTOPEN);
    if (error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT) {
        error = TryFile(path_, GENERIC_READ, OPEN_EXISTING);
    }
    if (error != 0) FailBySystem(error);
    // A log tells that some process has the file open, or was stopped with it open.
    const bool hasLog = GetFileAttributesW((path_ + L"-wal").c_str()) != INVALID_FILE_ATTRIBUTES;
    return marked && !hasLog ? OpenMode::Immutable : OpenMode::ReadOnly;
}

void QBaseDb::Connection::FailBySystem(std::uint32_t error) const {
    const bool shared = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
    if (shared) Fail(Status::Locked, SQLITE_BUSY);
    Fail(Status::Failed, SQLITE_CANTOPEN, SystemText(error));
}

void QBaseDb::Connection::CheckTables() {
    orvasql::Transaction transaction(*database_, Access::Read);
    CheckVersion();
    if (hasTables_ && !RecordsAreWhole()) Fail(Status::Damaged, SQLITE_CORRUPT);
    transaction.Commit();
}

bool QBaseDb::Connection::RecordsAreWhole() {
    // Reads the index as a whole, which throws where it is damaged.
    const std::int64_t count = database_->IntegerOf("SELECT count(*) FROM qbase_record");
    return count > kMostCheckedRecords || database_->TextOf("PRAGMA quick_check('qbase_record')") == L"ok";
}

// Also what makes a transaction see one state from its beginning on.
void QBaseDb::Connection::CheckVersion() {
    if (!hasTables_) {
        hasTables_ = database_->IntegerOf("SELECT count(*) FROM sqlite_master WHERE name = 'qbase_version'") != 0;
    }
    if (!hasTables_) return;
    const InUse statement = Prepared(Sql::Version);
    const std::int64_t version = statement->Step() ? statement->Integer(0) : 0;
    if (version > kVersion) Fail(Status::Newer, SQLITE_READONLY);
    if (version < kVersion) Fail(Status::Damaged, SQLITE_CORRUPT);
}

void QBaseDb::Connection::CreateTables() {
    if (hasTables_) return;
    database_->Execute(kCreate);
    database_->Execute("INSERT INTO qbase_version VALUES(" + std::to_string(kVersion) + ")");
    hasTables_ = true;
}

// ---- scopes ----

bool QBaseDb::Connection::Enter(Access access) {
    if (depth_++ == 0) {
        access_ = access;
        sound_ = database_ && Guard([&] { Begin(access); }) == 0;
        if (!sound_) transaction_.reset();
    } else if (sound_ && access == Access::Write && access_ == Access::Read) {
        Guard([&] { Fail(Status::Failed, SQLITE_MISUSE, L"changes within a scope of reading."); });
        return false;
    }
    return sound_;
}

void QBaseDb::Connection::Begin(Access access) {
    if (access == Access::Write && status_ == Status::ReadOnly) Fail(Status::ReadOnly, SQLITE_READONLY);
    transaction_.emplace(*database_, access);
    CheckVersion();
}

bool QBaseDb::Connection::Leave() {
    return --depth_ > 0 ? sound_ : Finish();
}

bool QBaseDb::Connection::Finish() {
    const bool done = sound_ && Guard([&] { transaction_->Commit(); }) == 0;
    transaction_.reset();           // takes back what is not committed
    if (!done) hasTables_ = false;  // not known
    return done;
}

void QBaseDb::Connection::AfterFailure(Access access) {
    // SQLite may have ended the transaction by itself: what came now would be one of its own.
    if (access == Access::Write || !database_->InTransaction()) Spoil();
}

QBaseDb::Connection::InUse QBaseDb::Connection::Prepared(Sql sql) {
    const auto index = static_cast<std::size_t>(sql);
    std::optional<orvasql::Statement>& statement = statements_[index];
    if (!statement) statement.emplace(*database_, kStatements[index]);
    return InUse(*statement);
}

// ---- failures ----

void QBaseDb::Connection::Fail(Status status, int code, const ustr& cause) const {
    throw Failure{status, code, cause};
}

int QBaseDb::Connection::Keep(const Failure& failure) noexcept {
    try {
        errorText_ = TextOf(failure.status, path_, failure.cause);
    } catch (const std::exception&) {
        return KeepNoMemory();
    }
    lastFailure_ = failure.status;
    return errorCode_ = failure.code;
}

int QBaseDb::Connection::Keep(const orvasql::SqlError& error) noexcept {
    try {
        return Keep(Failure{StatusOf(error.Code()), error.Code(), orvaspace::ToWide(error.what())});
    } catch (const std::exception&) {
        return KeepNoMemory();
    }
}

int QBaseDb::Connection::KeepNoMemory() noexcept {
    errorText_.clear();  // a text about it would need some
    lastFailure_ = Status::Failed;
    return errorCode_ = SQLITE_NOMEM;
}
