#include <orvatool/QBaseDb.h>

#include <sqlite3.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "QBaseConnection.h"
#include "QBaseRecord.h"

namespace {

constexpr char kWalk[] = "SELECT obj_id, fields FROM qbase_record WHERE type = ? ORDER BY obj_id";

bool IsGiven(const char* text) {
    return text && *text;
}

bool IsHighSurrogate(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(wchar_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// What of the text fits into `units`.
std::wstring_view Cut(std::wstring_view text, std::size_t units) {
    if (text.size() <= units) return text;
    if (units > 0 && IsHighSurrogate(text[units - 1]) && IsLowSurrogate(text[units])) --units;
    return text.substr(0, units);
}

template <class C>
void CopyWithNul(std::basic_string_view<C> text, C* out) {
    std::copy(text.begin(), text.end(), out);
    out[text.size()] = C();
}

// The stored fields; throws when they are damaged.
void TakeFields(const orvasql::Statement& row, int column, PackedFields& fields) {
    if (!fields.Assign(row.Blob(column))) throw orvasql::SqlError(SQLITE_CORRUPT, "a record's fields");
}

// What `make` gives; null when there is no memory for it.
template <class Make>
auto OrNull(const Make& make) -> decltype(make()) {
    try {
        return make();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// Runs `operation`; false when there is no memory for it, or no text can be that long.
template <class Operation>
bool Succeeds(const Operation& operation) {
    try {
        operation();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

// ---- the handle ----

QBaseDb::QBaseDb(const wchar_t* path, unsigned busyTimeout)
    : connection_(OrNull([&] { return std::make_shared<Connection>(path, std::chrono::milliseconds(busyTimeout)); })) {
}

QBaseDb::QBaseDb(const QBaseDb&) = default;
QBaseDb::QBaseDb(QBaseDb&&) noexcept = default;
QBaseDb& QBaseDb::operator=(const QBaseDb&) = default;
QBaseDb& QBaseDb::operator=(QBaseDb&&) noexcept = default;
QBaseDb::~QBaseDb() = default;

QBaseDb::Status QBaseDb::GetStatus() const {
    return connection_ ? connection_->OpeningStatus() : Status::Failed;
}

ustr QBaseDb::GetErrorText() const {
    try {
        return connection_ ? connection_->ErrorText() : ustr();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

// ---- scopes ----

QBaseDb::QuickMode::QuickMode(const QBaseDb& db, int write, int /*mode*/) : connection_(db.connection_) {
    open_ = connection_ && connection_->Enter(write == 1 ? Connection::Access::Write : Connection::Access::Read);
}

QBaseDb::QuickMode::~QuickMode() {
    End();
}

bool QBaseDb::QuickMode::End() {
    const bool done = connection_ && connection_->Leave() && open_;
    connection_.reset();
    open_ = false;
    return done;
}

// ---- records ----

bool QBaseDb::existRec(const char* type, const char* objId) const {
    if (!connection_ || !IsGiven(type) || !IsGiven(objId)) return false;
    bool found = false;
    const int code = connection_->Run(Connection::Access::Read, [&] {
        if (!connection_->HasTables()) return;
        const auto exists = connection_->Prepared(Connection::Sql::Exists);
        exists->BindView(1, type);
        exists->BindView(2, objId);
        found = exists->Step();
    });
    if (code != 0) connection_->Spoil();  // whoever is told "no" takes the id
    return found;
}

QBaseDb::Rec* QBaseDb::findRec(const char* type, const char* objId) const {
    if (!connection_ || !IsGiven(type) || !IsGiven(objId)) return nullptr;
    std::unique_ptr<Rec> rec;
    const int code = connection_->Run(Connection::Access::Read, [&] {
        if (!connection_->HasTables()) return;
        const auto find = connection_->Prepared(Connection::Sql::Find);
        find->BindView(1, type);
        find->BindView(2, objId);
        if (!find->Step()) return;
        rec = std::make_unique<Rec>(Rec{type, objId, {}});
        TakeFields(*find, 0, rec->fields);
    });
    return code == 0 ? rec.release() : nullptr;
}

QBaseDb::Rec* QBaseDb::createRec(const char* type, const char* objId) {
    if (GetStatus() != Status::Open || !IsGiven(type) || !IsGiven(objId)) return nullptr;
    return OrNull([&] { return new Rec{type, objId, {}}; });
}

QBaseDb::Rec* QBaseDb::copyRec(const Rec* rec) const {
    return rec ? OrNull([&] { return new Rec(*rec); }) : nullptr;
}

int QBaseDb::saveRec(Rec* rec) {
    if (!connection_ || !rec) return SQLITE_MISUSE;
    return connection_->Run(Connection::Access::Write, [&] {
        connection_->CreateTables();
        const auto save = connection_->Prepared(Connection::Sql::Save);
        save->BindView(1, rec->type);
        save->BindView(2, rec->objId);
        save->BindView(3, rec->fields.Bytes());
        save->Step();
    });
}

void QBaseDb::releaseRec(Rec* rec) const {
    delete rec;
}

int QBaseDb::deleteRec(const char* type, const char* objId) {
    if (!connection_ || !IsGiven(type) || !IsGiven(objId)) return SQLITE_MISUSE;
    int found = 0;
    const int code = connection_->Run(Connection::Access::Write, [&] {
        if (!connection_->HasTables()) return;
        const auto remove = connection_->Prepared(Connection::Sql::Delete);
        remove->BindView(1, type);
        remove->BindView(2, objId);
        remove->Step();
        found = connection_->Db().ChangedRows();
    });
    return code != 0 || found > 0 ? code : SQLITE_NOTFOUND;
}

// ---- fields ----

std::size_t QBaseDb::getID(const Rec* rec, char* id, std::size_t size) const {
    const std::string_view whole = rec ? std::string_view(rec->objId) : std::string_view();
    if (id && size > 0) CopyWithNul(whole.substr(0, size - 1), id);
    return whole.size();
}

std::size_t QBaseDb::copyWsz(const Rec* rec, int field, wchar_t* text, std::size_t size) const {
    ustr whole;
    const bool found = copyWsz(rec, field, whole);
    const std::size_t units = size / sizeof(wchar_t);
    if (text && units > 0) CopyWithNul(Cut(whole, units - 1), text);
    return found ? (whole.size() + 1) * sizeof(wchar_t) : 0;
}

bool QBaseDb::copyWsz(const Rec* rec, int field, ustr& text) const {
    text.clear();
    const auto found = rec ? rec->fields.Find(field) : std::nullopt;
    return found && Succeeds([&] { text = orvaspace::ToWide(*found); });
}

bool QBaseDb::insertWsz(Rec* rec, int field, const wchar_t* text) const {
    if (!rec || field < 0) return false;
    return Succeeds([&] {
        if (text) {
            rec->fields.Set(field, orvaspace::ToUtf8(text));
        } else {
            rec->fields.Set(field, std::nullopt);
        }
    });
}

// ---- walking ----

struct QBaseDb::ConstIterator::Walk {
    explicit Walk(std::shared_ptr<Connection> of) : connection(std::move(of)) {}

    void Advance() {
        if (rows->Step()) {
            rec.objId = rows->Utf8(0);
            rec.fields.Assign(rows->Blob(1));  // none when they are damaged: the walk goes on
        } else {
            rows.reset();
        }
    }

    std::shared_ptr<Connection> connection;
    Rec rec;
    std::optional<orvasql::Statement> rows;  // while on a record
};

QBaseDb::ConstIterator::ConstIterator(const QBaseDb& db, const char* type)
    : walk_(OrNull([&] {
          auto walk = db.connection_ && IsGiven(type) ? std::make_unique<Walk>(db.connection_) : nullptr;
          if (walk) walk->rec.type = type;
          return walk;
      })) {
}

QBaseDb::ConstIterator::~ConstIterator() = default;

void QBaseDb::ConstIterator::start() {
    if (!walk_) return;
    walk_->rows.reset();
    const int code = walk_->connection->Run(Connection::Access::Read, [&] {
        if (!walk_->connection->HasTables()) return;
        walk_->rows.emplace(walk_->connection->Db(), kWalk);
        walk_->rows->BindView(1, walk_->rec.type);
        walk_->Advance();
    });
    if (code != 0) walk_->rows.reset();
}

bool QBaseDb::ConstIterator::done() const {
    return !walk_ || !walk_->rows;
}

const QBaseDb::Rec* QBaseDb::ConstIterator::get() const {
    return done() ? nullptr : &walk_->rec;
}

void QBaseDb::ConstIterator::next() {
    if (done()) return;
    if (walk_->connection->Guard([&] { walk_->Advance(); }) != 0) walk_->rows.reset();
}
