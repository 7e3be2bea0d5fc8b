#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/ProjectRecords.h"

namespace orvasql {
class Database;
}

namespace ochost {

/// The project's lock for editing, held while the object lives. The project says who holds it. The system knows whether
/// the holder still runs: the lock of a program that has ended in whatever way is free.
class ProjectLock {
public:
    /// Takes the lock; throws the Failure of Locked, with who has it, when it is held.
    static ProjectLock Take(const std::wstring& path, orvasql::Database& database);

    ProjectLock(ProjectLock&&) noexcept;
    ProjectLock& operator=(ProjectLock&&) noexcept;
    ~ProjectLock();

    /// Who had ended without releasing the lock before it was taken.
    const std::optional<LockHolder>& TakenOverFrom() const { return takenOverFrom_; }

private:
    class Mark;

    ProjectLock(std::unique_ptr<Mark> mark, orvasql::Database& database, std::optional<LockHolder> before);

    std::unique_ptr<Mark> mark_;
    orvasql::Database* database_;
    std::optional<LockHolder> takenOverFrom_;
};

}  // namespace ochost
