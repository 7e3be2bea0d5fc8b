#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/ProjectLock.h"
#include "host/ProjectRecords.h"
#include "host/Result.h"

namespace orvasql {
class Database;
}

namespace ochost {

/// An open project file (SQLite, write-ahead log). Paths are UTF-16, relative ones from the current directory.
///
/// A file is used only when it is whole, ours and of a version known here; a refused file is left untouched. One of an
/// older version gets, as it is opened, what has come since then (no data; its own stay as they are). Nothing
/// throws: a failure comes back with a message for the user. One thread at a time; several programs may have the same
/// file open, a change waits for theirs up to the busy timeout and then fails as Locked. A file that a newer version
/// takes over meanwhile is neither read nor changed any more (Newer), and one that is marked read-only is not changed.
class ProjectStore {
public:
    static constexpr std::chrono::milliseconds kBusyTimeout{2000};

    /// Opens an existing project. Failures: NotFound, NotAProject, Damaged, Newer, Locked, ReadOnly, System.
    static Result<ProjectStore> Open(const std::wstring& path, std::chrono::milliseconds busyTimeout = kBusyTimeout);

    /// Adds to a new project what its content does not hold.
    using Completion = std::function<Status(ProjectStore& project)>;

    /// Writes a new project and opens it. The file is built beside the path (".new" appended) and renamed when it is
    /// complete and `complete` has succeeded, so that it appears whole or not at all. An existing file is never
    /// replaced (AlreadyExists).
    static Result<ProjectStore> Create(const std::wstring& path, const ProjectContent& content,
                                       const Completion& complete = {});

    ProjectStore(ProjectStore&&) noexcept;
    ProjectStore& operator=(ProjectStore&&) noexcept;
    ~ProjectStore();

    const std::wstring& Path() const { return path_; }

    Result<ProjectInfo> Info() const;

    // Lists in display order; trees with each node's level.
    Result<std::vector<Folder>> Folders() const;
    Result<std::vector<Discipline>> Disciplines() const;
    Result<std::vector<Floor>> Floors() const;
    Result<std::vector<Drawing>> Drawings() const;
    Result<std::vector<Layout>> Layouts() const;
    Result<std::vector<DrawingArea>> Areas() const;
    Result<std::vector<LeftOutDrawing>> LeftOutDrawings() const;
    Result<std::vector<Zone>> Zones() const;
    Result<std::vector<Room>> Rooms() const;
    Result<std::vector<System>> Systems() const;
    Result<std::vector<PartGroup>> PartGroups() const;
    Result<std::vector<PartType>> PartTypes() const;
    Result<std::vector<FittingSeries>> AllFittingSeries() const;
    Result<std::vector<PlacedObject>> Objects() const;
    Result<std::vector<PropertyGroup>> PropertyGroups() const;
    Result<std::vector<Property>> Properties() const;
    Result<std::vector<CustomProperty>> CustomProperties() const;
    Result<std::vector<ReportTemplate>> ReportTemplates() const;
    Result<std::vector<StoredSelection>> Selections() const;

    /// All of the above, read as of one moment.
    Result<ProjectContent> Content() const;

    // Each is one transaction: it has happened durably or not at all. The name of a property or template must not be
    // empty (BadInput).

    /// Stores a new property under a new id and returns it with that id; the given id is not used.
    Result<CustomProperty> CreateCustomProperty(CustomProperty property);
    /// Stores name and format of the property with the given id; NotFound when there is none.
    Status UpdateCustomProperty(const CustomProperty& property);
    /// NotFound when there is none.
    Status DeleteCustomProperty(std::int32_t id);

    /// Stores new templates, all of them or none, under new ids and returns them with those; the given ids are not
    /// used.
    Result<std::vector<ReportTemplate>> CreateReportTemplates(std::vector<ReportTemplate> templates);
    /// Stores the template of that id in place of what it was; NotFound when there is none.
    Status UpdateReportTemplate(const ReportTemplate& reportTemplate);

    /// Whether the drawing is one of the model drawings. BadInput when one that there is not shall be left out.
    Status SetModelDrawing(Id drawing, bool isModel);

    /// Stores a new selection under a new id and returns it with that id; the given id is not used.
    Result<StoredSelection> CreateSelection(StoredSelection selection);
    /// Stores the selection of that id in place of what it was; NotFound when there is none.
    Status UpdateSelection(const StoredSelection& selection);
    /// NotFound when there is none.
    Status DeleteSelection(std::int32_t id);

    /// Locks the project for editing; the lock must not outlive the store. Locked, with who has it, while another
    /// ProjectStore of this or another running program holds it.
    Result<ProjectLock> Lock();

private:
    ProjectStore(std::wstring path, std::unique_ptr<orvasql::Database> database);

    std::wstring path_;
    std::unique_ptr<orvasql::Database> database_;
};

}  // namespace ochost
