#include "host/ProjectStore.h"

#include <orvasql/Sqlite.h>
#include <sqlite3.h>
#include <windows.h>

#include <utility>

#include "host/ProjectTables.h"
#include "host/StoreFailures.h"
#include "host/TableRows.h"

namespace ochost {
namespace {

using orvasql::Database;
using orvasql::OpenMode;
using orvasql::Statement;
using orvasql::Transaction;

// stored: never renumber
constexpr std::int64_t kApplicationId = 0x4F434870;  // "OCHp"
// 2 brought the report templates, 3 what object selections need
constexpr std::int64_t kSchemaVersion = 3;
constexpr std::int64_t kFirstSchemaVersion = 1;

std::int64_t SchemaVersion(Database& database) {
    return database.IntegerOf("PRAGMA user_version");
}

void RefuseNewer(Database& database, const std::wstring& path) {
    if (SchemaVersion(database) <= kSchemaVersion) return;
    throw Fail(FailureKind::Newer, path,
               L"was saved by a newer version of this program and was not changed. Open it with that version.");
}

bool IsMarkedReadOnly(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_READONLY;
}

/// Refuses what has befallen the file since it was opened.
void CheckStillOurs(Database& database, const std::wstring& path, Transaction::Kind kind) {
    RefuseNewer(database, path);
    if (kind == Transaction::Kind::Write && IsMarkedReadOnly(path)) throw ReadOnlyFile(path);
}

/// Runs f, which returns a T, as one transaction.
template <class T, class F>
Result<T> InTransaction(const std::wstring& path, Database& database, Transaction::Kind kind, F&& f) {
    return Guarded<T>(path, [&] {
        Transaction transaction(database, kind);
        CheckStillOurs(database, path, kind);
        T result = f();
        transaction.Commit();
        return result;
    });
}

/// Reads the list that `tables` hold: a table, and those of the lists within its records.
template <class List, class... Tables>
Result<List> ReadTables(const std::wstring& path, Database& database, const Tables&... tables) {
    return InTransaction<List>(path, database, Transaction::Kind::Read, [&] {
        List list;
        (ReadRows(database, tables, list), ...);
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
    RefuseNewer(database, path);
    if (SchemaVersion(database) < kFirstSchemaVersion || database.TextOf("PRAGMA quick_check(1)") != L"ok" ||
        database.IntegerOf("SELECT count(*) FROM pragma_foreign_key_check") != 0) {
        throw DamagedFile(path);
    }
}

void SetSchemaVersion(Database& database) {
    database.Execute("PRAGMA user_version = " + std::to_string(kSchemaVersion));
}

template <class... Tables>
void CreateTables(Database& database, const Tables&... tables) {
    (database.Execute(CreateSql(tables)), ...);
}

/// Adds what files of older versions lack, also when another program does the same at this moment.
void Upgrade(Database& database, const std::wstring& path) {
    if (SchemaVersion(database) == kSchemaVersion) return;
    Transaction transaction(database, Transaction::Kind::Write);
    RefuseNewer(database, path);
    const std::int64_t version = SchemaVersion(database);
    if (version < 2) CreateTables(database, kReportTemplateTable, kReportColumnTable);
    if (version < 3) {
        CreateTables(database, kAreaTable, kLeftOutDrawingTable, kFittingSeriesTable, kObjectTable, kSelectionTable,
                     kLockTable);
    }
    SetSchemaVersion(database);
    transaction.Commit();
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

    /// Everything must be in the file itself, without a log.
    void MoveIntoPlace() {
        if (GetFileAttributesW((path_ + L"-wal").c_str()) != INVALID_FILE_ATTRIBUTES) {
            throw FailedCall(finalPath_, L"it could not be completed.");
        }
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
    Database database(path, OpenMode::Create, ProjectStore::kBusyTimeout);
    {
        Transaction transaction(database, Transaction::Kind::Write);
        database.Execute("PRAGMA application_id = " + std::to_string(kApplicationId));
        SetSchemaVersion(database);
        ForEachTable(content, [&](const auto& table, const auto&) { CreateTables(database, table); });
        CreateTables(database, kLockTable);
        ForEachTable(content, [&](const auto& table, const auto& list) { WriteRows(database, table, list); });
        transaction.Commit();
    }
    // Last, so that the rows are written once. The mode stays with the file.
    database.Execute("PRAGMA journal_mode = WAL");
}

std::int32_t ToInt32(std::int64_t id) {
    if (!std::in_range<std::int32_t>(id)) RefuseCell("number out of range");
    return static_cast<std::int32_t>(id);
}

// What messages call a record.
constexpr wchar_t kProperty[] = L"property";
constexpr wchar_t kReportTemplate[] = L"report template";
constexpr wchar_t kSelection[] = L"selection";

void CheckName(const std::wstring& name, const std::wstring& what) {
    if (name.empty()) throw Failure{FailureKind::BadInput, L"Give the " + what + L" a name."};
}

/// The first of the ids that no record of the table has or had. Needs the write lock.
std::int32_t NextLastingId(Database& database, const std::string& table) {
    return ToInt32(database.IntegerOf("SELECT seq FROM sqlite_sequence WHERE name = '" + table + "'") + 1);
}

void WriteTemplates(Database& database, const std::vector<ReportTemplate>& templates) {
    WriteRows(database, kReportTemplateTable, templates);
    WriteRows(database, kReportColumnTable, templates);
}

void DeleteRows(Database& database, const std::string& table, const std::string& column, std::int64_t id) {
    Statement remove(database, "DELETE FROM " + table + " WHERE " + column + " = ?");
    remove.Bind(1, id);
    remove.Run();
}

/// Deletes a record, which must be there.
void DeleteRecord(Database& database, const std::string& table, std::int64_t id, const std::wstring& what) {
    DeleteRows(database, table, "id", id);
    if (database.ChangedRows() == 0) throw RemovedRecord(what);
}

}  // namespace

Result<ProjectStore> ProjectStore::Open(const std::wstring& path, std::chrono::milliseconds busyTimeout) {
    return Guarded<ProjectStore>(path, [&] {
        std::wstring full = FullPath(path);
        CheckAccess(full);
        auto database = std::make_unique<Database>(full, OpenMode::ReadWrite, busyTimeout);
        CheckContent(*database, full);
        Upgrade(*database, full);
        return ProjectStore(std::move(full), std::move(database));
    });
}

Result<ProjectStore> ProjectStore::Create(const std::wstring& path, const ProjectContent& content,
                                          const Completion& complete) {
    return Guarded<ProjectStore>(path, [&]() -> Result<ProjectStore> {
        const std::wstring full = FullPath(path);
        if (GetFileAttributesW(full.c_str()) != INVALID_FILE_ATTRIBUTES) return Explain(ERROR_FILE_EXISTS, full);
        NewFile file(full);
        WriteContent(file.Path(), content);
        if (complete) {
            ProjectStore unfinished = ValueOf(Open(file.Path()));
            Check(complete(unfinished));
        }
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
    return ReadTables<ProjectInfo>(path_, *database_, kProjectTable);
}

Result<std::vector<Folder>> ProjectStore::Folders() const {
    return ReadTables<std::vector<Folder>>(path_, *database_, kFolderTable);
}

Result<std::vector<Discipline>> ProjectStore::Disciplines() const {
    return ReadTables<std::vector<Discipline>>(path_, *database_, kDisciplineTable);
}

Result<std::vector<Floor>> ProjectStore::Floors() const {
    return ReadTables<std::vector<Floor>>(path_, *database_, kFloorTable);
}

Result<std::vector<Drawing>> ProjectStore::Drawings() const {
    return ReadTables<std::vector<Drawing>>(path_, *database_, kDrawingTable);
}

Result<std::vector<Layout>> ProjectStore::Layouts() const {
    return ReadTables<std::vector<Layout>>(path_, *database_, kLayoutTable);
}

Result<std::vector<DrawingArea>> ProjectStore::Areas() const {
    return ReadTables<std::vector<DrawingArea>>(path_, *database_, kAreaTable);
}

Result<std::vector<LeftOutDrawing>> ProjectStore::LeftOutDrawings() const {
    return ReadTables<std::vector<LeftOutDrawing>>(path_, *database_, kLeftOutDrawingTable);
}

Result<std::vector<Zone>> ProjectStore::Zones() const {
    return ReadTables<std::vector<Zone>>(path_, *database_, kZoneTable);
}

Result<std::vector<Room>> ProjectStore::Rooms() const {
    return ReadTables<std::vector<Room>>(path_, *database_, kRoomTable);
}

Result<std::vector<System>> ProjectStore::Systems() const {
    return ReadTables<std::vector<System>>(path_, *database_, kSystemTable);
}

Result<std::vector<PartGroup>> ProjectStore::PartGroups() const {
    return ReadTables<std::vector<PartGroup>>(path_, *database_, kPartGroupTable);
}

Result<std::vector<PartType>> ProjectStore::PartTypes() const {
    return ReadTables<std::vector<PartType>>(path_, *database_, kPartTypeTable);
}

Result<std::vector<FittingSeries>> ProjectStore::AllFittingSeries() const {
    return ReadTables<std::vector<FittingSeries>>(path_, *database_, kFittingSeriesTable);
}

Result<std::vector<PlacedObject>> ProjectStore::Objects() const {
    return ReadTables<std::vector<PlacedObject>>(path_, *database_, kObjectTable);
}

Result<std::vector<PropertyGroup>> ProjectStore::PropertyGroups() const {
    return ReadTables<std::vector<PropertyGroup>>(path_, *database_, kPropertyGroupTable);
}

Result<std::vector<Property>> ProjectStore::Properties() const {
    return ReadTables<std::vector<Property>>(path_, *database_, kPropertyTable);
}

Result<std::vector<CustomProperty>> ProjectStore::CustomProperties() const {
    return ReadTables<std::vector<CustomProperty>>(path_, *database_, kCustomPropertyTable);
}

Result<std::vector<ReportTemplate>> ProjectStore::ReportTemplates() const {
    return ReadTables<std::vector<ReportTemplate>>(path_, *database_, kReportTemplateTable, kReportColumnTable);
}

Result<std::vector<StoredSelection>> ProjectStore::Selections() const {
    return ReadTables<std::vector<StoredSelection>>(path_, *database_, kSelectionTable);
}

Result<ProjectContent> ProjectStore::Content() const {
    return InTransaction<ProjectContent>(path_, *database_, Transaction::Kind::Read, [&] {
        ProjectContent content;
        ForEachTable(content, [&](const auto& table, auto& list) { ReadRows(*database_, table, list); });
        return content;
    });
}

Result<CustomProperty> ProjectStore::CreateCustomProperty(CustomProperty property) {
    return InTransaction<CustomProperty>(path_, *database_, Transaction::Kind::Write, [&] {
        CheckName(property.name, kProperty);
        property.id = NextLastingId(*database_, kCustomPropertyTable.name);
        WriteRows(*database_, kCustomPropertyTable, property);
        return std::move(property);
    });
}

Status ProjectStore::UpdateCustomProperty(const CustomProperty& property) {
    return InTransaction<Done>(path_, *database_, Transaction::Kind::Write, [&] {
        CheckName(property.name, kProperty);
        DeleteRecord(*database_, kCustomPropertyTable.name, property.id, kProperty);
        WriteRows(*database_, kCustomPropertyTable, property);
        return Done{};
    });
}

Status ProjectStore::DeleteCustomProperty(std::int32_t id) {
    return InTransaction<Done>(path_, *database_, Transaction::Kind::Write, [&] {
        DeleteRecord(*database_, kCustomPropertyTable.name, id, kProperty);
        return Done{};
    });
}

Result<std::vector<ReportTemplate>> ProjectStore::CreateReportTemplates(std::vector<ReportTemplate> templates) {
    return InTransaction<std::vector<ReportTemplate>>(path_, *database_, Transaction::Kind::Write, [&] {
        for (const ReportTemplate& reportTemplate : templates)
            CheckName(reportTemplate.name, kReportTemplate);
        std::int64_t id = NextLastingId(*database_, kReportTemplateTable.name);
        for (ReportTemplate& reportTemplate : templates)
            reportTemplate.id = ToInt32(id++);
        WriteTemplates(*database_, templates);
        return std::move(templates);
    });
}

Status ProjectStore::UpdateReportTemplate(const ReportTemplate& reportTemplate) {
    return InTransaction<Done>(path_, *database_, Transaction::Kind::Write, [&] {
        CheckName(reportTemplate.name, kReportTemplate);
        DeleteRows(*database_, kReportColumnTable.name, kReportColumnTable.owner, reportTemplate.id);
        DeleteRecord(*database_, kReportTemplateTable.name, reportTemplate.id, kReportTemplate);
        WriteTemplates(*database_, {reportTemplate});
        return Done{};
    });
}

Status ProjectStore::SetModelDrawing(Id drawing, bool isModel) {
    return InTransaction<Done>(path_, *database_, Transaction::Kind::Write, [&] {
        DeleteRows(*database_, kLeftOutDrawingTable.name, "drawing", drawing);
        if (!isModel) WriteRows(*database_, kLeftOutDrawingTable, LeftOutDrawing{drawing});
        return Done{};
    });
}

Result<StoredSelection> ProjectStore::CreateSelection(StoredSelection selection) {
    return InTransaction<StoredSelection>(path_, *database_, Transaction::Kind::Write, [&] {
        selection.id = NextLastingId(*database_, kSelectionTable.name);
        WriteRows(*database_, kSelectionTable, selection);
        return std::move(selection);
    });
}

Status ProjectStore::UpdateSelection(const StoredSelection& selection) {
    return InTransaction<Done>(path_, *database_, Transaction::Kind::Write, [&] {
        DeleteRecord(*database_, kSelectionTable.name, selection.id, kSelection);
        WriteRows(*database_, kSelectionTable, selection);
        return Done{};
    });
}

Status ProjectStore::DeleteSelection(std::int32_t id) {
    return InTransaction<Done>(path_, *database_, Transaction::Kind::Write, [&] {
        DeleteRecord(*database_, kSelectionTable.name, id, kSelection);
        return Done{};
    });
}

Result<ProjectLock> ProjectStore::Lock() {
    return Guarded<ProjectLock>(path_, [&] {
        CheckStillOurs(*database_, path_, Transaction::Kind::Write);
        return ProjectLock::Take(path_, *database_);
    });
}

}  // namespace ochost
