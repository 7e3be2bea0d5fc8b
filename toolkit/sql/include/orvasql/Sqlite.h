#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace orvasql {

/// A failed call of SQLite.
class SqlError : public std::exception {
public:
    SqlError(int code, std::string text) : code_(code), text_(std::move(text)) {}

    int Code() const { return code_; }  ///< primary result code (SQLITE_BUSY ...)
    const char* what() const noexcept override { return text_.c_str(); }

private:
    int code_;
    std::string text_;
};

enum class OpenMode {
    Immutable,  ///< a file that nobody can write: it is read without locks and without files beside it
    ReadOnly,
    ReadWrite,
    Create,
};

/// A connection; all its statements must be gone before it. Every failed call throws SqlError.
class Database {
public:
    /// Opens a file; creates it only when asked to. An existing file is not changed by being opened. A call waits up
    /// to `busyTimeout` for what another connection has locked.
    Database(const std::wstring& path, OpenMode mode, std::chrono::milliseconds busyTimeout);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void Execute(const std::string& sql);
    /// The first column of the first row: 0 when there is none.
    std::int64_t IntegerOf(const std::string& sql);
    std::wstring TextOf(const std::string& sql);

    std::int64_t LastInsertId() const;
    int ChangedRows() const;
    /// Whether a transaction is open. Some failures (disk full) end it without being asked.
    bool InTransaction() const;

    sqlite3* Handle() const { return handle_; }

private:
    sqlite3* handle_ = nullptr;
};

/// A prepared statement. Parameters are numbered from 1, columns from 0.
class Statement {
public:
    Statement(Database& database, const std::string& sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void BindNull(int parameter);
    void Bind(int parameter, std::int64_t value);
    void Bind(int parameter, double value);
    void Bind(int parameter, std::wstring_view value);
    // Not copied: what is bound must be there until the statement is reset. Text is UTF-8.
    void BindView(int parameter, std::string_view value);
    void BindView(int parameter, std::span<const std::byte> value);

    bool Step();            ///< true: a row is there to be read
    void Run();             ///< to the end; ready for the next values afterwards
    void Reset() noexcept;  ///< ready for the next values, wherever it stands; the row is gone

    std::int64_t Integer(int column) const;  ///< 0 for NULL
    double Real(int column) const;
    std::wstring Text(int column) const;
    /// Views into the row, gone with the next step.
    std::string_view Utf8(int column) const;
    std::span<const std::byte> Blob(int column) const;

private:
    void Check(int code) const;

    sqlite3* database_;
    sqlite3_stmt* handle_ = nullptr;
};

/// Rolled back unless committed.
class Transaction {
public:
    enum class Kind { Read, Write };

    Transaction(Database& database, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit();

private:
    Database& database_;
    bool open_ = true;
};

}  // namespace orvasql
