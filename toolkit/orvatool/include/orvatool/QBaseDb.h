#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>

#include <cstddef>
#include <memory>

/// The project database: records, each of a two-letter type, with an object id of its own within the type and numbered
/// fields of text. It is an SQLite file; its tables (qbase_...) may share the file with those of the program that owns
/// the project, and come into such a file with the first record that is saved.
///
/// A QBaseDb is a handle: copies share the connection. Several processes may use one file. What a write scope
/// (QuickMode) changes is in the file as a whole or not at all, whatever happens to the process. User-interface thread
/// only. Nothing throws; std::bad_alloc counts as a failure of the operation.
///
/// Types and object ids are UTF-8. Texts are UTF-16 of any length and come back unit by unit as they were. Error codes
/// are SQLite's primary result codes (SQLITE_BUSY, SQLITE_NOTFOUND ...).
class ORVATOOL_API QBaseDb {
    class Connection;

public:
    class Rec;

    enum class Status {
        Open,
        ReadOnly,  ///< open, but records can only be read
        NotFound,  ///< the file is not there and cannot be created
        NoDatabase,
        Damaged,
        Newer,   ///< written by a newer version of this class
        Locked,  ///< another process keeps it to itself
        Failed,
    };

    static constexpr unsigned kBusyTimeout = 5000;

    /// Opens the file, or creates it; an existing database is not changed by that. A file that cannot be opened gives a
    /// handle on which every operation fails. `busyTimeout` is how long an operation waits for another process to
    /// finish (ms).
    explicit QBaseDb(const wchar_t* path, unsigned busyTimeout = kBusyTimeout);
    QBaseDb(const QBaseDb&);
    QBaseDb(QBaseDb&&) noexcept;
    QBaseDb& operator=(const QBaseDb&);
    QBaseDb& operator=(QBaseDb&&) noexcept;
    ~QBaseDb();

    /// How opening went.
    Status GetStatus() const;
    /// What failed last and what to do about it, for the user; empty when nothing has.
    ustr GetErrorText() const;

    /// A scope in which many operations are one: a read scope sees one state of the database, a write scope is one
    /// transaction. Outside of scopes each operation is one of its own. Scopes nest; the outermost counts, and a write
    /// scope within a read scope fails. A failed write operation spoils the scope: nothing works in it any more, and
    /// its end takes everything back and fails. To delete what is not there is no such failure; that existRec cannot
    /// tell is one. Nothing works in a scope that could not be entered either.
    class ORVATOOL_API QuickMode {
    public:
        /// `write` is 1 for a write scope, else 0; `mode` is reserved: 1.
        QuickMode(const QBaseDb& db, int write, int mode);
        /// Ends the scope as End does.
        ~QuickMode();
        QuickMode(const QuickMode&) = delete;
        QuickMode& operator=(const QuickMode&) = delete;

        /// Whether the scope could be entered. A write scope waits some seconds for another process to finish.
        bool IsOpen() const { return open_; }
        /// Ends the scope. For the outermost write scope: whether everything is now in the file; for an inner one:
        /// whether it still can be.
        bool End();

    private:
        std::shared_ptr<Connection> connection_;
        bool open_ = false;
    };

    /// False also when it cannot be told; then the scope is spoiled, so that no id is taken that may be in use.
    bool existRec(const char* type, const char* objId) const;
    /// The record, null when there is none or it cannot be read. Whoever gets a record releases it.
    Rec* findRec(const char* type, const char* objId) const;
    /// A new, empty record that is in the database once it is saved, in place of the one with this id. Null when the
    /// database is not open for writing, or an argument is null or empty.
    Rec* createRec(const char* type, const char* objId);
    /// A copy of a record, to be released too.
    Rec* copyRec(const Rec* rec) const;
    /// Puts the record into the database with exactly the fields it has now. 0, or an error code.
    int saveRec(Rec* rec);
    /// Frees a record; null is passed over. Releasing does not save.
    void releaseRec(Rec* rec) const;
    /// 0 when the record was deleted, else an error code; there being none is an error.
    int deleteRec(const char* type, const char* objId);

    /// Copies the record's object id, cut to `size` - 1 characters. Returns the length of the whole id.
    std::size_t getID(const Rec* rec, char* id, std::size_t size) const;
    /// Copies a field's text, cut to `size` bytes with its NUL and never through a surrogate pair. Returns the bytes
    /// that the whole text takes with its NUL; 0, and the empty text, when the record has no such field.
    std::size_t copyWsz(const Rec* rec, int field, wchar_t* text, std::size_t size) const;
    /// The whole text of a field; false, and empty, when the record has no such field.
    bool copyWsz(const Rec* rec, int field, ustr& text) const;
    /// Sets a field of the record in memory; a null text removes it. False for a null record or a field below 0.
    bool insertWsz(Rec* rec, int field, const wchar_t* text) const;

    /// Walks the records of a type in the order of their object ids (by character):
    ///     for (it.start(); !it.done(); it.next()) use(it.get());
    /// A walk sees one state of the database, to which only what this handle changes on the way is added. It reads as
    /// it goes and keeps that state until it is done, started again or destroyed; outside of a scope a change on the
    /// way fails when another process has changed the file in the meantime: walk within a write scope then.
    class ORVATOOL_API ConstIterator {
    public:
        ConstIterator(const QBaseDb& db, const char* type);
        ~ConstIterator();
        ConstIterator(const ConstIterator&) = delete;
        ConstIterator& operator=(const ConstIterator&) = delete;

        void start();
        bool done() const;
        /// The record, which belongs to the iterator and is gone after the next step; null at the end.
        const Rec* get() const;
        void next();

    private:
        struct Walk;
        std::unique_ptr<Walk> walk_;
    };

private:
    std::shared_ptr<Connection> connection_;
};
