#include <orvasql/Sqlite.h>

#include <sqlite3.h>
#include <windows.h>

namespace orvasql {
namespace {

static_assert(sizeof(wchar_t) == 2, "texts pass to SQLite as UTF-16");

// What SQLite wants paths in. What is not valid becomes U+FFFD, which no file has.
std::string ToUtf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}

// The path, with what goes to SQLite beside it.
std::string FileUri(const std::string& path, const char* query) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string uri = "file:///";
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            uri += {'%', kDigits[c >> 4], kDigits[c & 0xF]};
        } else {
            uri += c == '\\' ? '/' : c;
        }
    }
    return uri + '?' + query;
}

int Open(const std::string& path, OpenMode mode, sqlite3** handle) {
    switch (mode) {
        case OpenMode::Immutable:
            return sqlite3_open_v2(FileUri(path, "immutable=1").c_str(), handle, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI,
                                   nullptr);
        case OpenMode::ReadOnly:
            return sqlite3_open_v2(path.c_str(), handle, SQLITE_OPEN_READONLY, nullptr);
        case OpenMode::ReadWrite:
            return sqlite3_open_v2(path.c_str(), handle, SQLITE_OPEN_READWRITE, nullptr);
        case OpenMode::Create:
            break;
    }
    return sqlite3_open_v2(path.c_str(), handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
}

}  // namespace

Database::Database(const std::wstring& path, OpenMode mode, std::chrono::milliseconds busyTimeout) {
    const int code = Open(ToUtf8(path), mode, &handle_);
    if (code != SQLITE_OK) {
        SqlError error(code & 0xFF, handle_ ? sqlite3_errmsg(handle_) : sqlite3_errstr(code));
        sqlite3_close(handle_);
        throw error;
    }
    sqlite3_busy_timeout(handle_, static_cast<int>(busyTimeout.count()));
    // A file may come from anywhere: nothing in its schema may do more than hold data.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_ENABLE_FKEY, 1, nullptr);
}

Database::~Database() {
    sqlite3_close(handle_);
}

void Database::Execute(const std::string& sql) {
    const int code = sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) throw SqlError(code & 0xFF, sqlite3_errmsg(handle_));
}

std::int64_t Database::IntegerOf(const std::string& sql) {
    Statement statement(*this, sql);
    return statement.Step() ? statement.Integer(0) : 0;
}

std::wstring Database::TextOf(const std::string& sql) {
    Statement statement(*this, sql);
    return statement.Step() ? statement.Text(0) : std::wstring();
}

std::int64_t Database::LastInsertId() const {
    return sqlite3_last_insert_rowid(handle_);
}

int Database::ChangedRows() const {
    return sqlite3_changes(handle_);
}

bool Database::InTransaction() const {
    return sqlite3_get_autocommit(handle_) == 0;
}

Statement::Statement(Database& database, const std::string& sql) : database_(database.Handle()) {
    Check(sqlite3_prepare_v2(database_, sql.c_str(), static_cast<int>(sql.size()), &handle_, nullptr));
}

Statement::~Statement() {
    sqlite3_finalize(handle_);
}

void Statement::BindNull(int parameter) {
    Check(sqlite3_bind_null(handle_, parameter));
}

void Statement::Bind(int parameter, std::int64_t value) {
    Check(sqlite3_bind_int64(handle_, parameter, value));
}

void Statement::Bind(int parameter, double value) {
    Check(sqlite3_bind_double(handle_, parameter, value));
}

void Statement::Bind(int parameter, std::wstring_view value) {
    // A null pointer would bind NULL.
    const wchar_t* text = value.empty() ? L"" : value.data();
    Check(sqlite3_bind_text64(handle_, parameter, reinterpret_cast<const char*>(text), value.size() * sizeof(wchar_t),
                              SQLITE_TRANSIENT, SQLITE_UTF16));
}

void Statement::BindView(int parameter, std::string_view value) {
    const char* text = value.empty() ? "" : value.data();
    Check(sqlite3_bind_text64(handle_, parameter, text, value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::BindView(int parameter, std::span<const std::byte> value) {
    const void* bytes = value.empty() ? "" : static_cast<const void*>(value.data());
    Check(sqlite3_bind_blob64(handle_, parameter, bytes, value.size(), SQLITE_STATIC));
}

bool Statement::Step() {
    const int code = sqlite3_step(handle_);
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) Check(code);
    return false;
}

void Statement::Run() {
    while (Step()) {
    }
    Check(sqlite3_reset(handle_));
}

void Statement::Reset() noexcept {
    sqlite3_reset(handle_);  // what it returns is the failure of the last step, which is known
}

std::int64_t Statement::Integer(int column) const {
    return sqlite3_column_int64(handle_, column);
}

double Statement::Real(int column) const {
    return sqlite3_column_double(handle_, column);
}

std::wstring Statement::Text(int column) const {
    const auto* text = static_cast<const wchar_t*>(sqlite3_column_text16(handle_, column));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes16(handle_, column)) / sizeof(wchar_t);
    return text ? std::wstring(text, length) : std::wstring();
}

std::string_view Statement::Utf8(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(handle_, column));
    return text ? std::string_view(text, length) : std::string_view();
}

std::span<const std::byte> Statement::Blob(int column) const {
    const auto* bytes = static_cast<const std::byte*>(sqlite3_column_blob(handle_, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(handle_, column));
    return bytes ? std::span(bytes, size) : std::span<const std::byte>();
}

void Statement::Check(int code) const {
    if (code != SQLITE_OK) throw SqlError(code & 0xFF, sqlite3_errmsg(database_));
}

Transaction::Transaction(Database& database, Kind kind) : database_(database) {
    // A writer takes its lock at once: waiting for it later, with a read lock held, could never end.
    database_.Execute(kind == Kind::Write ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction() {
    if (!open_) return;
    // After some failures (disk full) SQLite has rolled back by itself and says so: there is nothing left to do.
    sqlite3_exec(database_.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::Commit() {
    database_.Execute("COMMIT");
    open_ = false;
}

}  // namespace orvasql
