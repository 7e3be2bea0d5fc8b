#pragma once

#include <orvasql/Sqlite.h>
#include <orvatool/QBaseDb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>

/// The open file behind the handles, with its scopes. What its functions and operations throw stays within Guard.
class QBaseDb::Connection {
public:
    using Access = orvasql::Transaction::Kind;
    enum class Sql { Version, Exists, Find, Save, Delete };

    /// A statement that is kept prepared, while it is in use: ready for its next user when this goes.
    class InUse {
    public:
        explicit InUse(orvasql::Statement& statement) : statement_(statement) {}
        ~InUse() { statement_.Reset(); }
        InUse(const InUse&) = delete;
        InUse& operator=(const InUse&) = delete;
        orvasql::Statement* operator->() const { return &statement_; }
        orvasql::Statement& operator*() const { return statement_; }

    private:
        orvasql::Statement& statement_;
    };

    Connection(const wchar_t* path, std::chrono::milliseconds busyTimeout);

    Status OpeningStatus() const { return status_; }
    const ustr& ErrorText() const { return errorText_; }

    /// Enters a scope, which must be left whether it could be entered or not. False when nothing can be done in it.
    bool Enter(Access access);
    /// False when the scope is spoiled or, for the outermost, its changes are not in the file.
    bool Leave();
    /// Nothing works in the present scope any more.
    void Spoil() { sound_ = false; }

    /// Runs `operation` in a scope of its own or the present one. 0, or the code of what it threw or of why it could
    /// not be run.
    template <class Operation>
    int Run(Access access, const Operation& operation) {
        if (!Enter(access)) {
            Leave();
            return errorCode_;
        }
        const int code = Guard(operation);
        if (code != 0) AfterFailure(access);
        return Leave() || code != 0 ? code : errorCode_;
    }
    /// Runs `operation`. 0, or the code of what it threw; the text for the user is then kept.
    template <class Operation>
    int Guard(const Operation& operation) {
        try {
            operation();
            return 0;
        } catch (const Failure& failure) {
            return Keep(failure);
        } catch (const orvasql::SqlError& error) {
            return Keep(error);
        } catch (const std::exception&) {
            return KeepNoMemory();
        }
    }

    // For operations, which may throw.

    /// Without its tables a file has no records.
    bool HasTables() const { return hasTables_; }
    void CreateTables();
    InUse Prepared(Sql sql);
    orvasql::Database& Db() { return *database_; }
    /// Throws a failure with the text for this path.
    [[noreturn]] void Fail(Status status, int code, const ustr& cause = ustr()) const;

private:
    struct Failure {
        Status status = Status::Failed;
        int code = 0;
        ustr cause;
    };

    void Open(std::chrono::milliseconds busyTimeout);
    orvasql::OpenMode PossibleMode() const;
    [[noreturn]] void FailBySystem(std::uint32_t error) const;
    void CheckTables();
    bool RecordsAreWhole();
    void CheckVersion();
    void Begin(Access access);
    bool Finish();
    void AfterFailure(Access access);
    // Each keeps what is to be told and returns the code.
    int Keep(const Failure& failure) noexcept;
    int Keep(const orvasql::SqlError& error) noexcept;
    int KeepNoMemory() noexcept;

    std::wstring path_;
    Status status_ = Status::Failed;
    Status lastFailure_ = Status::Failed;
    int errorCode_ = 0;
    ustr errorText_;

    std::optional<orvasql::Database> database_;
    std::array<std::optional<orvasql::Statement>, 5> statements_;
    bool hasTables_ = false;  // as the present transaction sees it

    std::optional<orvasql::Transaction> transaction_;
    int depth_ = 0;  // of scopes
    Access access_ = Access::Read;
    bool sound_ = false;  // the outermost scope was entered and nothing in it has failed
};
