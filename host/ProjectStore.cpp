#include "host/ProjectStore.h"

#include <sqlite3.h>
#include <windows.h>

#include <limits>
#include <new>
#include <string_view>

#include "host/ProjectTables.h"
#include "host/Sqlite.h"
#include "host/Utf.h"

namespace ochost {
namespace {

// stored: never renumber
constexpr std::int64_t kApplicationId = 0x4F434870;  // "OCHp"
constexpr std::int64_t kSchemaVersion = 1;

// ---- messages ----

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

std::wstring SystemText(DWORD error) {
    wchar_t text[256] = L"";
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                                  static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && text[length - 1] <= L' ')
        --length;
    return length > 0 ? std::wstring(text, length) : L"system error " + std::to_wstring(error);
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

Failure Explain(const SqlError& error, const std::wstring& path) {
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

/// Runs f, which returns a T or a Result<T>, and turns what it throws into the failure.
template <class T, class F>
Result<T> Guarded(const std::wstring& path, F&& f) {
    try {
        return f();
    } catch (const Failure& failure) {
        return failure;
    } catch (const SqlError& error) {
        return Explain(error, path);
    } catch (const std::bad_alloc&) {
        return FailedCall(path, L"there is not enough memory.");
    }
}

// ---- cells ----

std::int32_t ToInt32(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (value < Limits::min() || value > Limits::max()) throw SqlError(SQLITE_CORRUPT, "number out of range");
    return static_cast<std::int32_t>(value);
}

// An id of 0 refers to nothing.
void BindCell(Statement& statement, int parameter, Id value) {
    value != 0 ? statement.Bind(parameter, value) : statement.BindNull(parameter);
}

void BindCell(Statement& statement, int parameter, std::int32_t value) {
    statement.Bind(parameter, std::int64_t{value});
}

void BindCell(Statement& statement, int parameter, std::uint32_t value) {
    statement.Bind(parameter, std::int64_t{value});
}

void BindCell(Statement& statement, int parameter, double value) {
    statement.Bind(parameter, value);
}

void BindCell(Statement& statement, int parameter, const std::wstring& value) {
    statement.Bind(parameter, value);
}

void BindCell(Statement& statement, int parameter, ValueType value) {
    statement.Bind(parameter, static_cast<std::int64_t>(value));
}

void BindCell(Statement& statement, int parameter, const std::vector<std::wstring>& values) {
    std::wstring joined;
    for (const std::wstring& value : values) {
        if (!joined.empty()) joined += L'|';
        joined += value;
    }
    statement.Bind(parameter, joined);
}

void ReadCell(const Statement& statement, int column, Id& value) {
    value = statement.Integer(column);
}

void ReadCell(const Statement& statement, int column, std::int32_t& value) {
    value = ToInt32(statement.Integer(column));
}

void ReadCell(const Statement& statement, int column, std::uint32_t& value) {
    value = static_cast<std::uint32_t>(statement.Integer(column));
}

void ReadCell(const Statement& statement, int column, double& value) {
    value = statement.Real(column);
}

void ReadCell(const Statement& statement, int column, std::wstring& value) {
    value = statement.Text(column);
}

void ReadCell(const Statement& statement, int column, ValueType& value) {
    const std::int64_t number = statement.Integer(column);
    if (number < static_cast<int>(ValueType::Text) || number > static_cast<int>(ValueType::Choice)) {
        throw SqlError(SQLITE_CORRUPT, "unknown value type");
    }
    value = static_cast<ValueType>(number);
}

void ReadCell(const Statement& statement, int column, std::vector<std::wstring>& values) {
    const std::wstring joined = statement.Text(column);
    if (joined.empty()) return;
    for (size_t from = 0; from != std::wstring::npos;) {
        const size_t bar = joined.find(L'|', from);
        values.push_back(joined.substr(from, bar == std::wstring::npos ? bar : bar - from));
        from = bar == std::wstring::npos ? bar : bar + 1;
    }
}

// ---- tables ----

template <class R, class... M, class F>
void ForEachColumn(const Table<R, M...>& table, F&& f) {
    std::apply([&](const auto&... column) { (f(column), ...); }, table.columns);
}

template <class T>
std::string ColumnNames(const T& table) {
    std::string names;
    ForEachColumn(table, [&](const auto& column) { names.append(names.empty() ? "" : ", ").append(column.name); });
    return names;
}

template <class T>
std::string CreateSql(const T& table) {
    std::string definitions;
    ForEachColumn(table, [&](const auto& column) {
        definitions.append(definitions.empty() ? "" : ", ").append(column.name).append(" ").append(column.type);
    });
    if (table.order != Order::ById) definitions += ", position INTEGER NOT NULL";
    const std::string name = table.name;
    std::string sql = "CREATE TABLE " + name + "(" + definitions + ") STRICT";
    if (table.order == Order::Tree) sql += "; CREATE INDEX " + name + "_parent ON " + name + "(parent)";
    return sql;
}

template <class T>
std::string InsertSql(const T& table) {
    std::string names = ColumnNames(table);
    std::string parameters;
    ForEachColumn(table, [&](const auto&) { parameters += parameters.empty() ? "?" : ", ?"; });
    if (table.order != Order::ById) {
        names += ", position";
        parameters += ", ?";
    }
    return "INSERT INTO " + std::string(table.name) + "(" + names + ") VALUES(" + parameters + ")";
}

/// A tree comes depth first, each node followed by its level.
std::string TreeSql(std::string_view table) {
    std::string sql =
        "WITH RECURSIVE tree AS ("
        "SELECT id, parent, name, 0 AS level, position FROM $ WHERE parent IS NULL "
        "UNION ALL "
        "SELECT child.id, child.parent, child.name, tree.level + 1, child.position "
        "FROM tree JOIN $ AS child ON child.parent = tree.id "
        "ORDER BY level DESC, position) "
        "SELECT id, parent, name, level FROM tree";
    for (size_t at; (at = sql.find('$')) != std::string::npos;) {
        sql.replace(at, 1, table);
    }
    return sql;
}

template <class T>
std::string SelectSql(const T& table) {
    if (table.order == Order::Tree) return TreeSql(table.name);
    return "SELECT " + ColumnNames(table) + " FROM " + table.name +
           (table.order == Order::ByPosition ? " ORDER BY position, id" : " ORDER BY rowid");
}

template <class R, class... M>
void WriteRows(Database& database, const Table<R, M...>& table, const std::vector<R>& records) {
    Statement insert(database, InsertSql(table));
    std::int64_t position = 0;
    for (const R& record : records) {
        int parameter = 0;
        ForEachColumn(table, [&](const auto& column) { BindCell(insert, ++parameter, record.*column.member); });
        if (table.order != Order::ById) insert.Bind(++parameter, ++position);
        insert.Run();
    }
}

template <class R, class... M>
void WriteRows(Database& database, const Table<R, M...>& table, const R& record) {
    WriteRows(database, table, std::vector<R>{record});
}

template <class R, class... M>
void ReadRows(Database& database, const Table<R, M...>& table, std::vector<R>& records) {
    Statement select(database, SelectSql(table));
    while (select.Step()) {
        R& record = records.emplace_back();
        int index = 0;
        ForEachColumn(table, [&](const auto& column) { ReadCell(select, index++, record.*column.member); });
        if constexpr (std::is_same_v<R, TreeNode>) ReadCell(select, index, record.level);
    }
}

template <class R, class... M>
void ReadRows(Database& database, const Table<R, M...>& table, R& record) {
    std::vector<R> records;
    ReadRows(database, table, records);
    if (records.size() != 1) throw SqlError(SQLITE_CORRUPT, "not one record");
    record = std::move(records.front());
}

template <class List, class T>
Result<List> ReadTable(const std::wstring& path, Database& database, const T& table) {
    return Guarded<List>(path, [&] {
        List list;
        ReadRows(database, table, list);
        return list;
    });
}

// ---- files ----

std::wstring FullPath(const std::wstring& path) {
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (size == 0) return path;
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    return full;
}

/// Refuses a path that holds no file or one that may not be written, without touching it.
void CheckAccess(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) throw Explain(GetLastError(), path);
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) throw Fail(FailureKind::NotAProject, path, L"is a folder.");
    if (attributes & FILE_ATTRIBUTE_READONLY) throw ReadOnlyFile(path);
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) throw Explain(GetLastError(), path);
    CloseHandle(file);
}

void CheckContent(Database& database, const std::wstring& path) {
    if (database.IntegerOf("PRAGMA application_id") != kApplicationId) {
        throw Fail(FailureKind::NotAProject, path, L"is not a project file.");
    }
    const std::int64_t version = database.IntegerOf("PRAGMA user_version");
    if (version > kSchemaVersion) {
        throw Fail(FailureKind::Newer, path,
                   L"was saved by a newer version of this program and was not changed. Open it with that version.");
    }
    if (version != kSchemaVersion || database.TextOf("PRAGMA quick_check(1)") != L"ok") throw DamagedFile(path);
}

/// Removes a database file and what SQLite may have left beside it; false with the system's error set when one stays.
bool RemoveDatabase(const std::wstring& path, bool companionsOnly = false) {
    for (const wchar_t* suffix : {L"", L"-journal", L"-wal", L"-shm"}) {
        if (companionsOnly && !*suffix) continue;
        if (!DeleteFileW((path + suffix).c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) return false;
    }
    return true;
}

/// A file being built, gone again unless it is given its final name.
class NewFile {
public:
    explicit NewFile(const std::wstring& finalPath) : finalPath_(finalPath), path_(finalPath + L".new") {
        // What an interrupted run left behind.
        if (!RemoveDatabase(path_)) throw Explain(GetLastError(), finalPath_);
    }
    ~NewFile() { RemoveDatabase(path_); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const std::wstring& Path() const { return path_; }

    void MoveIntoPlace() {
        // SQLite would replay the log of an earlier file of this name into the new one.
        constexpr bool kCompanionsOnly = true;
        if (!RemoveDatabase(finalPath_, kCompanionsOnly)) throw Explain(GetLastError(), finalPath_);
        if (!MoveFileExW(path_.c_str(), finalPath_.c_str(), MOVEFILE_WRITE_THROUGH)) {
            throw Explain(GetLastError(), finalPath_);
        }
    }

private:
    std::wstring finalPath_;
    std::wstring path_;
};

void WriteContent(const std::wstring& path, const ProjectContent& content) {
    Database database(path, true, ProjectStore::kBusyTimeout);
    {
        Transaction transaction(database, Transaction::Kind::Write);
        database.Execute("PRAGMA application_id = " + std::to_string(kApplicationId));
        database.Execute("PRAGMA user_version = " + std::to_string(kSchemaVersion));
        ForEachTable(content, [&](const auto& table, const auto&) { database.Execute(CreateSql(table)); });
        ForEachTable(content, [&](const auto& table, const auto& list) { WriteRows(database, table, list); });
        transaction.Commit();
    }
    // Last, so that the rows are written once. The mode stays with the file.
    database.Execute("PRAGMA journal_mode = WAL");
}

void CheckName(const CustomProperty& property) {
    if (property.name.empty()) throw Failure{FailureKind::BadInput, L"Give the property a name."};
}

void CheckFound(Database& database) {
    if (database.ChangedRows() == 0) {
        throw Failure{FailureKind::NotFound, L"The property was removed in the meantime. Refresh the list."};
    }
}

}  // namespace

Result<ProjectStore> ProjectStore::Open(const std::wstring& path, std::chrono::milliseconds busyTimeout) {
    return Guarded<ProjectStore>(path, [&] {
        std::wstring full = FullPath(path);
        CheckAccess(full);
        auto database = std::make_unique<Database>(full, false, busyTimeout);
        CheckContent(*database, full);
        return ProjectStore(std::move(full), std::move(database));
    });
}

Result<ProjectStore> ProjectStore::Create(const std::wstring& path, const ProjectContent& content) {
    return Guarded<ProjectStore>(path, [&]() -> Result<ProjectStore> {
        const std::wstring full = FullPath(path);
        if (GetFileAttributesW(full.c_str()) != INVALID_FILE_ATTRIBUTES) return Explain(ERROR_FILE_EXISTS, full);
        NewFile file(full);
        WriteContent(file.Path(), content);
        file.MoveIntoPlace();
        return Open(full);
    });
}

ProjectStore::ProjectStore(std::wstring path, std::unique_ptr<Database> database)
    : path_(std::move(path)), database_(std::move(database)) {
}

ProjectStore::ProjectStore(ProjectStore&&) noexcept = default;
ProjectStore& ProjectStore::operator=(ProjectStore&&) noexcept = default;
ProjectStore::~ProjectStore() = default;

Result<ProjectInfo> ProjectStore::Info() const {
    return ReadTable<ProjectInfo>(path_, *database_, kProjectTable);
}

Result<std::vector<Folder>> ProjectStore::Folders() const {
    return ReadTable<std::vector<Folder>>(path_, *database_, kFolderTable);
}

Result<std::vector<Discipline>> ProjectStore::Disciplines() const {
    return ReadTable<std::vector<Discipline>>(path_, *database_, kDisciplineTable);
}

Result<std::vector<Floor>> ProjectStore::Floors() const {
    return ReadTable<std::vector<Floor>>(path_, *database_, kFloorTable);
}

Result<std::vector<Drawing>> ProjectStore::Drawings() const {
    return ReadTable<std::vector<Drawing>>(path_, *database_, kDrawingTable);
}

Result<std::vector<Layout>> ProjectStore::Layouts() const {
    return ReadTable<std::vector<Layout>>(path_, *database_, kLayoutTable);
}

Result<std::vector<Zone>> ProjectStore::Zones() const {
    return ReadTable<std::vector<Zone>>(path_, *database_, kZoneTable);
}

Result<std::vector<Room>> ProjectStore::Rooms() const {
    return ReadTable<std::vector<Room>>(path_, *database_, kRoomTable);
}

Result<std::vector<System>> ProjectStore::Systems() const {
    return ReadTable<std::vector<System>>(path_, *database_, kSystemTable);
}

Result<std::vector<PartGroup>> ProjectStore::PartGroups() const {
    return ReadTable<std::vector<PartGroup>>(path_, *database_, kPartGroupTable);
}

Result<std::vector<PartType>> ProjectStore::PartTypes() const {
    return ReadTable<std::vector<PartType>>(path_, *database_, kPartTypeTable);
}

Result<std::vector<PropertyGroup>> ProjectStore::PropertyGroups() const {
    return ReadTable<std::vector<PropertyGroup>>(path_, *database_, kPropertyGroupTable);
}

Result<std::vector<Property>> ProjectStore::Properties() const {
    return ReadTable<std::vector<Property>>(path_, *database_, kPropertyTable);
}

Result<std::vector<CustomProperty>> ProjectStore::CustomProperties() const {
    return ReadTable<std::vector<CustomProperty>>(path_, *database_, kCustomPropertyTable);
}

Result<ProjectContent> ProjectStore::Content() const {
    return Guarded<ProjectContent>(path_, [&] {
        ProjectContent content;
        Transaction transaction(*database_, Transaction::Kind::Read);
        ForEachTable(content, [&](const auto& table, auto& list) { ReadRows(*database_, table, list); });
        transaction.Commit();
        return content;
    });
}

Result<CustomProperty> ProjectStore::CreateCustomProperty(CustomProperty property) {
    return Guarded<CustomProperty>(path_, [&] {
        CheckName(property);
        Transaction transaction(*database_, Transaction::Kind::Write);
        Statement insert(*database_, "INSERT INTO custom_property(name, format) VALUES(?, ?)");
        insert.Bind(1, property.name);
        insert.Bind(2, property.format);
        insert.Run();
        property.id = ToInt32(database_->LastInsertId());
        transaction.Commit();
        return std::move(property);
    });
}

Status ProjectStore::UpdateCustomProperty(const CustomProperty& property) {
    return Guarded<Done>(path_, [&] {
        CheckName(property);
        Transaction transaction(*database_, Transaction::Kind::Write);
        Statement update(*database_, "UPDATE custom_property SET name = ?, format = ? WHERE id = ?");
        update.Bind(1, property.name);
        update.Bind(2, property.format);
        update.Bind(3, std::int64_t{property.id});
        update.Run();
        CheckFound(*database_);
        transaction.Commit();
        return Done{};
    });
}

Status ProjectStore::DeleteCustomProperty(std::int32_t id) {
    return Guarded<Done>(path_, [&] {
        Transaction transaction(*database_, Transaction::Kind::Write);
        Statement remove(*database_, "DELETE FROM custom_property WHERE id = ?");
        remove.Bind(1, std::int64_t{id});
        remove.Run();
        CheckFound(*database_);
        transaction.Commit();
        return Done{};
    });
}

}  // namespace ochost
