#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "host/ProjectRecords.h"
#include "host/Result.h"

namespace ochost {

class Database;

/// An open project file (SQLite, write-ahead log). Paths are UTF-16, relative ones from the current directory.
///
/// A file is used only when it is whole, ours and of a version known here; a refused file is left untouched. Nothing
/// throws: a failure comes back with a message for the user. One thread at a time; several programs may have the same
/// file open, a change waits for theirs up to the busy timeout and then fails as Locked.
class ProjectStore {
public:
    static constexpr std::chrono::milliseconds kBusyTimeout{2000};

    /// Opens an existing project. Failures: NotFound, NotAProject, Damaged, Newer, Locked, ReadOnly, System.
    static Result<ProjectStore> Open(const std::wstring& path, std::chrono::milliseconds busyTimeout = kBusyTimeout);

    /// Writes a new project and opens it. The file is built beside the path (".new" appended) and renamed when it is
    /// complete, so that it appears whole or not at all. An existing file is never replaced (AlreadyExists).
    static Result<ProjectStore> Create(const std::wstring& path, const ProjectContent& content);

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
    Result<std::vector<Zone>> Zones() const;
    Result<std::vector<Room>> Rooms() const;
    Result<std::vector<System>> Systems() const;
    Result<std::vector<PartGroup>> PartGroups() const;
    Result<std::vector<PartType>> PartTypes() const;
    Result<std::vector<PropertyGroup>> PropertyGroups() const;
    Result<std::vector<Property>> Properties() const;
    Result<std::vector<CustomProperty>> CustomProperties() const;

    /// All of the above, read as of one moment.
    Result<ProjectContent> Content() const;

    // Each is one transaction: it has happened durably or not at all. The name must not be empty (BadInput).

    /// Stores a new property under a new id and returns it with that id; the given id is not used.
    Result<CustomProperty> CreateCustomProperty(CustomProperty property);
    /// Stores name and format of the property with the given id; NotFound when there is none.
    Status UpdateCustomProperty(const CustomProperty& property);
    /// NotFound when there is none.
    Status DeleteCustomProperty(std::int32_t id);

private:
    ProjectStore(std::wstring path, std::unique_ptr<Database> database);

    std::wstring path_;
    std::unique_ptr<Database> database_;
};

}  // namespace ochost
