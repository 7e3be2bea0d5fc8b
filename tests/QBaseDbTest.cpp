#include <orvatool/QBaseDb.h>

#include <gtest/gtest.h>
#include <orvasql/Sqlite.h>
#include <sqlite3.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/KilledChild.h"
#include "support/TestFolder.h"

namespace {

using namespace std::chrono_literals;
using orvasql::Database;
using orvasql::OpenMode;
using Status = QBaseDb::Status;
using Scope = QBaseDb::QuickMode;

constexpr char kType[] = "UP";
constexpr int kName = 1501;
constexpr int kText = 1589;
constexpr int kReading = 0;
constexpr int kWriting = 1;

// ---- records in short ----

struct Release {
    const QBaseDb* db;
    void operator()(QBaseDb::Rec* rec) const { db->releaseRec(rec); }
};
using OwnedRec = std::unique_ptr<QBaseDb::Rec, Release>;

OwnedRec Find(const QBaseDb& db, const char* objId, const char* type = kType) {
    return {db.findRec(type, objId), Release{&db}};
}

OwnedRec Create(QBaseDb& db, const char* objId, const char* type = kType) {
    return {db.createRec(type, objId), Release{&db}};
}

bool ErrorNames(const QBaseDb& db, const std::wstring& what) {
    return std::wstring(db.GetErrorText().c_str()).find(what) != std::wstring::npos;
}

std::optional<std::wstring> FieldOf(const QBaseDb& db, const QBaseDb::Rec* rec, int field) {
    ustr text;
    if (!db.copyWsz(rec, field, text)) return std::nullopt;
    return std::wstring(text.c_str(), text.size());
}

std::optional<std::wstring> NameOf(const QBaseDb& db, const char* objId, const char* type = kType) {
    return FieldOf(db, Find(db, objId, type).get(), kName);
}

/// Stores a record with a name. 0 or the error code.
int Put(QBaseDb& db, const char* objId, const wchar_t* name, const char* type = kType) {
    const OwnedRec rec = Create(db, objId, type);
    if (!rec) return -1;
    db.insertWsz(rec.get(), kName, name);
    return db.saveRec(rec.get());
}

std::vector<std::string> IdsOf(const QBaseDb& db, const char* type = kType) {
    std::vector<std::string> ids;
    QBaseDb::ConstIterator it(db, type);
    for (it.start(); !it.done(); it.next()) {
        std::array<char, 64> id{};
        db.getID(it.get(), id.data(), id.size());
        ids.emplace_back(id.data());
    }
    return ids;
}

class QBaseDbTest : public testing::Test {
protected:
    /// Opening gives that status and a text that names the file; nothing works, and the file stays as it is.
    void ExpectRefused(Status status) {
        const std::string before = BytesOf(path_);
        {
            QBaseDb db(path_.c_str(), 0);
            EXPECT_EQ(db.GetStatus(), status);
            EXPECT_TRUE(ErrorNames(db, path_));
            const Scope scope(db, kWriting, 1);
            EXPECT_FALSE(scope.IsOpen());
            EXPECT_FALSE(db.existRec(kType, "1"));
            EXPECT_FALSE(Find(db, "1"));
            EXPECT_FALSE(Create(db, "1"));
            EXPECT_NE(db.deleteRec(kType, "1"), 0);
            EXPECT_TRUE(IdsOf(db).empty());
        }
        EXPECT_EQ(BytesOf(path_), before);
    }

    /// A closed database that holds the records 000 to 299.
    void WriteThreeHundred() {
        QBaseDb db(path_.c_str());
        Scope scope(db, kWriting, 1);
        for (int i = 0; i < 300; ++i) {
            ASSERT_EQ(Put(db, astr().format("%03d", i).c_str(), std::wstring(200, L'n').c_str()), 0);
        }
        ASSERT_TRUE(scope.End());
    }

    /// What another program does to the file.
    void Change(const std::string& statements) const { Database(path_, OpenMode::Create, 0ms).Execute(statements); }

    const TestFolder folder_;
    const std::wstring path_ = folder_.File(L"project.db");
};

// ---- records ----

TEST_F(QBaseDbTest, RecordsComeBackAsTheyWereSaved) {
    {
        QBaseDb db(path_.c_str());
        ASSERT_EQ(db.GetStatus(), Status::Open) << db.GetErrorText().c_str();
        EXPECT_TRUE(db.GetErrorText().empty());
        const OwnedRec rec = Create(db, "000001");
        EXPECT_TRUE(db.insertWsz(rec.get(), kText, L"later number, first set"));
        EXPECT_TRUE(db.insertWsz(rec.get(), kName, L"Pääkerros дом \U0001F3E0"));
        EXPECT_TRUE(db.insertWsz(rec.get(), 0, L""));
        EXPECT_TRUE(db.insertWsz(rec.get(), 7, L"removed"));
        EXPECT_TRUE(db.insertWsz(rec.get(), 7, nullptr));
        EXPECT_FALSE(db.insertWsz(rec.get(), -1, L"no number"));
        EXPECT_FALSE(db.insertWsz(nullptr, 1, L"no record"));
        EXPECT_FALSE(db.existRec(kType, "000001")) << "nothing is stored before it is saved";
        EXPECT_EQ(db.saveRec(rec.get()), 0);
        EXPECT_EQ(Put(db, "000001", L"same id", "XX"), 0);
        EXPECT_EQ(Put(db, "empty", nullptr), 0);
    }
    const QBaseDb db(path_.c_str());
    const OwnedRec rec = Find(db, "000001");
    ASSERT_TRUE(rec);
    EXPECT_EQ(FieldOf(db, rec.get(), kText), L"later number, first set");
    EXPECT_EQ(FieldOf(db, rec.get(), kName), L"Pääkerros дом \U0001F3E0");
    EXPECT_EQ(FieldOf(db, rec.get(), 0), L"");
    EXPECT_EQ(FieldOf(db, rec.get(), 7), std::nullopt);
    EXPECT_EQ(FieldOf(db, rec.get(), -1), std::nullopt);
    EXPECT_EQ(NameOf(db, "000001", "XX"), L"same id") << "an id is the record's own within its type";
    EXPECT_TRUE(db.existRec(kType, "empty"));
    EXPECT_EQ(NameOf(db, "empty"), std::nullopt);
    EXPECT_FALSE(Find(db, "000002"));
    EXPECT_FALSE(db.existRec("ZZ", "000001"));
}

TEST_F(QBaseDbTest, SavingReplacesTheRecordWithExactlyTheFieldsItHasAndDeletingRemovesIt) {
    QBaseDb db(path_.c_str());
    const OwnedRec old = Create(db, "1");
    db.insertWsz(old.get(), kName, L"old");
    db.insertWsz(old.get(), kText, L"only in the old one");
    EXPECT_EQ(db.saveRec(old.get()), 0);
    EXPECT_EQ(Put(db, "1", L"new"), 0);
    EXPECT_EQ(NameOf(db, "1"), L"new");
    EXPECT_EQ(FieldOf(db, Find(db, "1").get(), kText), std::nullopt);

    const OwnedRec found = Find(db, "1");
    const OwnedRec copy(db.copyRec(found.get()), Release{&db});
    db.insertWsz(copy.get(), kName, L"a longer name in the copy");
    EXPECT_EQ(FieldOf(db, found.get(), kName), L"new");
    EXPECT_EQ(db.saveRec(copy.get()), 0);
    EXPECT_EQ(NameOf(db, "1"), L"a longer name in the copy");
    EXPECT_EQ(db.deleteRec(kType, "1"), 0);
    EXPECT_FALSE(db.existRec(kType, "1"));
    EXPECT_EQ(db.deleteRec(kType, "1"), SQLITE_NOTFOUND);
}

TEST_F(QBaseDbTest, NullAndEmptyArgumentsAreRefused) {
    QBaseDb db(path_.c_str());
    for (const char* bad : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_FALSE(Create(db, bad));
        EXPECT_FALSE(Create(db, "1", bad));
        EXPECT_FALSE(Find(db, bad));
        EXPECT_FALSE(db.existRec(bad, "1"));
        EXPECT_NE(db.deleteRec(kType, bad), 0);
        EXPECT_TRUE(IdsOf(db, bad).empty());
    }
    EXPECT_NE(db.saveRec(nullptr), 0);
    EXPECT_EQ(db.copyRec(nullptr), nullptr);
    db.releaseRec(nullptr);
    EXPECT_EQ(QBaseDb(nullptr).GetStatus(), Status::NotFound);
    QBaseDb moved(std::move(db));
    EXPECT_EQ(Put(moved, "1", L"one"), 0);
    EXPECT_FALSE(Scope(db, kWriting, 1).IsOpen()) << "a handle that was moved from";
    EXPECT_NE(db.deleteRec(kType, "1"), 0);
    EXPECT_TRUE(IdsOf(db).empty());
}

TEST_F(QBaseDbTest, RecordsAreWalkedInTheOrderOfTheirIdsByCharacter) {
    QBaseDb db(path_.c_str());
    for (const char* id : {"b", "1000000", "000010", "\xC3\xA4", "B", "000009", "a", "aa"}) {
        EXPECT_EQ(Put(db, id, L"name"), 0);
    }
    EXPECT_EQ(Put(db, "other", L"name", "UQ"), 0);
    EXPECT_EQ(IdsOf(db), (std::vector<std::string>{"000009", "000010", "1000000", "B", "a", "aa", "b", "\xC3\xA4"}));
    EXPECT_TRUE(IdsOf(db, "up").empty());
}

TEST_F(QBaseDbTest, AWalkCanStartAgainAndChangeWhatItPasses) {
    QBaseDb db(path_.c_str());
    for (const char* id : {"1", "2", "3", "4"})
        EXPECT_EQ(Put(db, id, L"old"), 0);
    QBaseDb::ConstIterator it(db, kType);
    EXPECT_TRUE(it.done()) << "before start";
    EXPECT_EQ(it.get(), nullptr);
    int old = 0;
    for (it.start(); !it.done(); it.next(), ++old) {
        EXPECT_EQ(FieldOf(db, it.get(), kName), L"old");
        std::array<char, 8> id{};
        db.getID(it.get(), id.data(), id.size());
        EXPECT_EQ(id[0] % 2 ? db.deleteRec(kType, id.data()) : Put(db, id.data(), L"new"), 0);
    }
    EXPECT_EQ(old, 4);
    it.next();
    EXPECT_EQ(it.get(), nullptr) << "beyond the end";
    it.start();
    EXPECT_EQ(FieldOf(db, it.get(), kName), L"new");
    EXPECT_EQ(IdsOf(db), (std::vector<std::string>{"2", "4"}));
}

TEST_F(QBaseDbTest, IdsAndTextsAreCutToTheBuffer) {
    QBaseDb db(path_.c_str());
    const OwnedRec rec = Create(db, "1234567890");
    std::array<char, 6> id{};
    id.fill('x');
    EXPECT_EQ(db.getID(rec.get(), id.data(), 5), 10u);
    EXPECT_EQ(std::string(id.data()), "1234");
    EXPECT_EQ(id[5], 'x');
    EXPECT_EQ(db.getID(rec.get(), nullptr, 0), 10u);
    EXPECT_EQ(db.getID(nullptr, id.data(), id.size()), 0u);
    EXPECT_STREQ(id.data(), "");

    db.insertWsz(rec.get(), kName, L"abc\U0001F3E0d");
    std::array<wchar_t, 8> text{};
    const auto copy = [&](std::size_t bytes) {
        text.fill(L'x');
        EXPECT_EQ(db.copyWsz(rec.get(), kName, text.data(), bytes), 7 * sizeof(wchar_t));
        EXPECT_EQ(text[std::max<std::size_t>(bytes / 2, 1)], L'x') << "nothing is written beyond the size";
        return std::wstring(text.data());
    };
    EXPECT_EQ(copy(14), L"abc\U0001F3E0d");
    EXPECT_EQ(copy(13), L"abc\U0001F3E0");
    EXPECT_EQ(copy(12), L"abc\U0001F3E0");
    EXPECT_EQ(copy(10), L"abc") << "no half of a character";
    EXPECT_EQ(copy(2), L"");
    text.fill(L'x');
    EXPECT_EQ(db.copyWsz(rec.get(), kName, text.data(), 1), 14u);
    EXPECT_EQ(text[0], L'x') << "no room for the NUL";
    EXPECT_EQ(db.copyWsz(rec.get(), kName, nullptr, 0), 14u);
    EXPECT_EQ(db.copyWsz(rec.get(), kText, text.data(), 16), 0u);
    EXPECT_EQ(text[0], L'\0');
    ustr whole = L"before";
    EXPECT_FALSE(db.copyWsz(nullptr, kName, whole));
    EXPECT_TRUE(whole.empty());
}

TEST_F(QBaseDbTest, TextsAreKeptUnitByUnitWhateverTheirLength) {
    std::wstring text(3'000'000, L'\0');
    std::mt19937 random(1);  // every unit but NUL, surrogates without partners among them
    for (wchar_t& unit : text)
        unit = static_cast<wchar_t>(1 + random() % 0xFFFF);
    {
        QBaseDb db(path_.c_str());
        const OwnedRec rec = Create(db, "1");
        db.insertWsz(rec.get(), kText, text.c_str());
        db.insertWsz(rec.get(), kName, L"\xDC00\xD800");
        EXPECT_EQ(db.saveRec(rec.get()), 0);
    }
    const QBaseDb db(path_.c_str());
    EXPECT_TRUE(FieldOf(db, Find(db, "1").get(), kText) == text);
    EXPECT_EQ(NameOf(db, "1"), L"\xDC00\xD800");
}

// ---- scopes ----

TEST_F(QBaseDbTest, AWriteScopeIsOneTransactionHoweverManyAreNested) {
    QBaseDb db(path_.c_str());
    const QBaseDb other(path_.c_str());
    {
        const Scope outer(db, kWriting, 1);
        EXPECT_TRUE(outer.IsOpen());
        EXPECT_EQ(Put(db, "1", L"one"), 0);
        {
            QBaseDb copy = db;
            Scope inner(copy, kReading, 1);
            EXPECT_TRUE(inner.IsOpen());
            EXPECT_TRUE(copy.existRec(kType, "1"));
            EXPECT_EQ(Put(copy, "3", L"three"), 0) << "the outermost scope is one of writing";
            EXPECT_TRUE(inner.End());
            EXPECT_FALSE(inner.End()) << "a scope ends once";
        }
        Scope inner(db, kWriting, 1);
        EXPECT_EQ(Put(db, "2", L"two"), 0);
        EXPECT_TRUE(inner.End());
        EXPECT_TRUE(IdsOf(other).empty()) << "nothing is there before the outermost ends";
    }
    EXPECT_EQ(IdsOf(other).size(), 3u);
}

TEST_F(QBaseDbTest, AFailedWriteSpoilsItsScope) {
    QBaseDb db(path_.c_str());
    EXPECT_EQ(Put(db, "1", L"one"), 0);
    Change("CREATE UNIQUE INDEX refuse ON qbase_record(fields)");
    Scope scope(db, kWriting, 1);
    EXPECT_EQ(db.deleteRec(kType, "9"), SQLITE_NOTFOUND) << "which spoils nothing";
    EXPECT_EQ(Put(db, "2", L"two"), 0);
    {
        Scope inner(db, kWriting, 1);
        EXPECT_EQ(Put(db, "3", L"one"), SQLITE_CONSTRAINT);
        EXPECT_FALSE(db.GetErrorText().empty());
        EXPECT_FALSE(inner.End());
    }
    EXPECT_EQ(Put(db, "4", L"four"), SQLITE_CONSTRAINT) << "the scope is spoiled";
    EXPECT_FALSE(Scope(db, kWriting, 1).IsOpen());
    EXPECT_FALSE(scope.End());
    EXPECT_EQ(IdsOf(db), std::vector<std::string>{"1"});
    EXPECT_EQ(Put(db, "4", L"four"), 0) << "the next scope is a new one";
}

TEST_F(QBaseDbTest, AScopeIsSpoiledWhenItCannotBeToldWhetherARecordExists) {
    QBaseDb db(path_.c_str());
    EXPECT_EQ(Put(db, "1", L"one"), 0);
    Change("ALTER TABLE qbase_record RENAME TO away");
    for (const int kind : {kReading, kWriting}) {
        Scope scope(db, kind, 1);
        EXPECT_TRUE(scope.IsOpen());
        EXPECT_FALSE(db.existRec(kType, "1"));
        EXPECT_FALSE(scope.End()) << "else its id would be taken for a free one";
    }
    Change("ALTER TABLE away RENAME TO qbase_record");
    Scope scope(db, kReading, 1);
    EXPECT_TRUE(db.existRec(kType, "1"));
    EXPECT_TRUE(scope.End());
}

TEST_F(QBaseDbTest, AReadScopeSeesOneStateAndDoesNotWrite) {
    QBaseDb db(path_.c_str());
    QBaseDb other(path_.c_str(), 0);
    {
        Scope scope(db, kReading, 1);
        EXPECT_EQ(Put(other, "1", L"one"), 0) << "readers do not stop writers";
        EXPECT_FALSE(db.existRec(kType, "1"));
        EXPECT_TRUE(IdsOf(db).empty());
        EXPECT_FALSE(Scope(db, kWriting, 1).IsOpen());
        EXPECT_NE(Put(db, "2", L"two"), 0);
        EXPECT_TRUE(scope.End()) << "a refused write does not spoil reading";
    }
    EXPECT_EQ(IdsOf(db), std::vector<std::string>{"1"});
}

TEST_F(QBaseDbTest, AWalkSeesOneStateAndCannotWriteOverAnothersChange) {
    QBaseDb db(path_.c_str(), 0);
    QBaseDb other(path_.c_str(), 0);
    EXPECT_EQ(Put(db, "1", L"one"), 0);
    EXPECT_EQ(Put(db, "2", L"two"), 0);
    {
        QBaseDb::ConstIterator it(db, kType);
        it.start();
        EXPECT_EQ(other.deleteRec(kType, "2"), 0);
        EXPECT_EQ(db.deleteRec(kType, "1"), SQLITE_BUSY);
        it.next();
        EXPECT_FALSE(it.done());
    }
    EXPECT_EQ(db.deleteRec(kType, "1"), 0) << "the walk is over";
}

TEST_F(QBaseDbTest, AScopeThatCannotBeCommittedLeavesNothingNotEvenTheTables) {
    Database other(path_, OpenMode::Create, 0ms);
    other.Execute("CREATE TABLE project(name)");  // without a write-ahead log readers stop writers
    QBaseDb db(path_.c_str(), 0);
    {
        const orvasql::Transaction reading(other, orvasql::Transaction::Kind::Read);
        EXPECT_EQ(other.IntegerOf("SELECT count(*) FROM project"), 0);
        Scope scope(db, kWriting, 1);
        EXPECT_EQ(Put(db, "1", L"one"), 0);
        EXPECT_FALSE(scope.End());
        EXPECT_EQ(Put(db, "1", L"one"), SQLITE_BUSY) << "on its own";
    }
    EXPECT_FALSE(db.existRec(kType, "1"));
    EXPECT_EQ(other.IntegerOf("SELECT count(*) FROM sqlite_master"), 1);
    EXPECT_EQ(Put(db, "2", L"two"), 0);
    EXPECT_EQ(IdsOf(db), std::vector<std::string>{"2"});
}

// ---- sharing the file ----

TEST_F(QBaseDbTest, TheFileOfAnotherProgramKeepsWhatIsItsOwn) {
    const auto own = [&] {
        Database file(path_, OpenMode::ReadWrite, 0ms);
        return std::array{file.IntegerOf("PRAGMA application_id"), file.IntegerOf("PRAGMA user_version"),
                          file.IntegerOf("SELECT count(*) FROM project")};
    };
    for (const char* mode : {"WAL", "DELETE"}) {
        SCOPED_TRACE(mode);
        DeleteFileW(path_.c_str());
        Change(std::string("PRAGMA journal_mode = ") + mode +
               "; PRAGMA application_id = 77; PRAGMA user_version = 3;"
               "CREATE TABLE project(name); INSERT INTO project VALUES('Own')");
        const std::string before = BytesOf(path_);
        {
            const QBaseDb db(path_.c_str());
            EXPECT_EQ(db.GetStatus(), Status::Open);
            EXPECT_FALSE(db.existRec(kType, "1"));
            EXPECT_TRUE(IdsOf(db).empty());
            EXPECT_FALSE(Find(db, "1"));
            const QBaseDb empty(path_.c_str());
            EXPECT_TRUE(Scope(empty, kWriting, 1).End());
        }
        EXPECT_EQ(BytesOf(path_), before) << "opening and reading change nothing";
        QBaseDb first(path_.c_str());
        QBaseDb second(path_.c_str());
        EXPECT_EQ(first.deleteRec(kType, "1"), SQLITE_NOTFOUND);
        EXPECT_EQ(Put(first, "1", L"one"), 0);
        EXPECT_EQ(Put(second, "2", L"two"), 0) << "the tables came after this one was opened";
        EXPECT_EQ(IdsOf(first).size(), 2u);
        EXPECT_EQ(own(), (std::array<std::int64_t, 3>{77, 3, 1}));
    }
}

// ---- files that are refused ----

TEST_F(QBaseDbTest, RefusesWhatIsNoDatabase) {
    for (const std::string& bytes : {std::string("text"), std::string(5000, 'x')}) {
        WriteBytes(path_, bytes);
        ExpectRefused(Status::NoDatabase);
    }
    EXPECT_EQ(QBaseDb(folder_.Path().c_str()).GetStatus(), Status::NoDatabase);
    EXPECT_EQ(QBaseDb(L"").GetStatus(), Status::NotFound);
    EXPECT_EQ(QBaseDb(folder_.File(L"none\\x.db").c_str()).GetStatus(), Status::NotFound);

    WriteBytes(path_, "");
    QBaseDb db(path_.c_str());
    EXPECT_EQ(Put(db, "1", L"one"), 0) << "an empty file is a new one";
}

TEST_F(QBaseDbTest, RefusesADamagedFile) {
    WriteThreeHundred();
    const std::string whole = BytesOf(path_);
    constexpr std::size_t kPage = 4096;
    ASSERT_GT(whole.size(), 20 * kPage);
    for (std::size_t page = 1; page < whole.size() / kPage; ++page) {
        SCOPED_TRACE(page);
        WriteBytes(path_, std::string(whole).replace(page * kPage, kPage, kPage, '\xA5'));
        ExpectRefused(Status::Damaged);
        WriteBytes(path_, whole.substr(0, page * kPage + 77));
        ExpectRefused(Status::Damaged);
    }
}

TEST_F(QBaseDbTest, ARecordWhoseFieldsAreDamagedIsNotRead) {
    QBaseDb db(path_.c_str());
    for (const char* blob : {"x'01'", "x'0100000001000000'", "x'010000000000'", "x'FFFFFFFF00000000'",
                             "x'05000000000000000500000000000000'", "'text'"}) {
        SCOPED_TRACE(blob);
        EXPECT_EQ(Put(db, "1", L"one"), 0);
        EXPECT_EQ(Put(db, "2", L"two"), 0);
        Change(std::string("UPDATE qbase_record SET fields = ") + blob + " WHERE obj_id = '1'");
        EXPECT_FALSE(Find(db, "1"));
        EXPECT_TRUE(ErrorNames(db, L"damaged"));
        EXPECT_EQ(IdsOf(db).size(), 2u) << "a walk does not end there";
        EXPECT_EQ(NameOf(db, "2"), L"two");
    }
}

TEST_F(QBaseDbTest, RefusesANewerFile) {
    QBaseDb before(path_.c_str());
    EXPECT_EQ(Put(before, "1", L"one"), 0);
    Change("UPDATE qbase_version SET version = 2");
    EXPECT_NE(Put(before, "1", L"changed"), 0) << "also one that was open when the newer version came";
    EXPECT_FALSE(before.existRec(kType, "1"));
    before = QBaseDb(L"");
    ExpectRefused(Status::Newer);
    Change("DELETE FROM qbase_version");
    ExpectRefused(Status::Damaged);
}

TEST_F(QBaseDbTest, AReadOnlyFileIsReadAndLeftAlone) {
    WriteThreeHundred();
    const std::string before = BytesOf(path_);
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY);
    QBaseDb db(path_.c_str());
    EXPECT_EQ(db.GetStatus(), Status::ReadOnly);
    EXPECT_TRUE(ErrorNames(db, path_));
    EXPECT_EQ(IdsOf(db).size(), 300u);
    const OwnedRec rec = Find(db, "000");
    EXPECT_TRUE(rec);
    EXPECT_EQ(db.saveRec(rec.get()), SQLITE_READONLY);
    EXPECT_EQ(db.deleteRec(kType, "000"), SQLITE_READONLY);
    EXPECT_FALSE(Create(db, "999"));
    EXPECT_FALSE(Scope(db, kWriting, 1).IsOpen());
    EXPECT_TRUE(Scope(db, kReading, 1).IsOpen());
    EXPECT_EQ(BytesOf(path_), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 1) << "no files beside it";
}

TEST_F(QBaseDbTest, AReadOnlyFileIsReadWithWhatOnlyItsLogHolds) {
    QBaseDb writer(path_.c_str());
    EXPECT_EQ(Put(writer, "1", L"one"), 0);
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY);
    const QBaseDb db(path_.c_str());
    EXPECT_EQ(db.GetStatus(), Status::ReadOnly);
    EXPECT_EQ(NameOf(db, "1"), L"one");
    EXPECT_EQ(Put(writer, "1", L"changed"), 0);
    EXPECT_EQ(NameOf(db, "1"), L"changed");
}

TEST_F(QBaseDbTest, RefusesAFileThatAnotherKeepsToItself) {
    WriteThreeHundred();
    const HANDLE exclusive = CreateFileW(path_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(QBaseDb(path_.c_str(), 0).GetStatus(), Status::Locked);
    CloseHandle(exclusive);
    {
        Database other(path_, OpenMode::ReadWrite, 0ms);
        other.Execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; COMMIT");
        EXPECT_EQ(QBaseDb(path_.c_str(), 0).GetStatus(), Status::Locked);
    }
    EXPECT_EQ(QBaseDb(path_.c_str(), 0).GetStatus(), Status::Open);
}

TEST_F(QBaseDbTest, AWriterThatWaitedInVainFailsAsAWhole) {
    QBaseDb db(path_.c_str(), 0);
    EXPECT_EQ(Put(db, "1", L"one"), 0);
    Database other(path_, OpenMode::ReadWrite, 0ms);
    {
        const orvasql::Transaction writing(other, orvasql::Transaction::Kind::Write);
        EXPECT_EQ(db.deleteRec(kType, "1"), SQLITE_BUSY);
        EXPECT_TRUE(ErrorNames(db, L"in use"));
        EXPECT_TRUE(db.existRec(kType, "1")) << "reading goes on";
    }
    std::optional<orvasql::Transaction> writing(std::in_place, other, orvasql::Transaction::Kind::Write);
    Scope scope(db, kWriting, 1);
    EXPECT_FALSE(scope.IsOpen());
    writing.reset();
    EXPECT_EQ(Put(db, "2", L"two"), SQLITE_BUSY) << "half of the scope is not done";
    EXPECT_FALSE(scope.End());
    EXPECT_EQ(Put(db, "2", L"two"), 0);
}

// ---- several processes, some of which are killed ----

constexpr int kRecordsOfSet = 5;
constexpr int kSetsKept = 20;
constexpr char kLast[] = "last";

std::wstring TextOfSet(int set) {
    const auto length = static_cast<std::size_t>(set) * 7919 % 9000;
    return std::to_wstring(set) + L' ' + std::wstring(length, static_cast<wchar_t>(L'a' + set % 26));
}

astr IdOfSet(int set, int record) {
    return astr().format("%06d-%d", set, record);
}

/// Writes the set, takes the oldest out and notes the number, all in one scope.
bool WriteSet(QBaseDb& db, const char* type, int set) {
    Scope scope(db, kWriting, 1);
    for (int i = 0; i < kRecordsOfSet; ++i) {
        Put(db, IdOfSet(set, i).c_str(), TextOfSet(set).c_str(), type);
        if (set > kSetsKept) db.deleteRec(type, IdOfSet(set - kSetsKept, i).c_str());
    }
    Put(db, kLast, std::to_wstring(set).c_str(), type);
    return scope.End();
}

/// The last set of the database, which has it and the ones before it and nothing else.
int ExpectWholeSets(const QBaseDb& db, const char* type) {
    const auto name = NameOf(db, kLast, type);
    const int last = name ? std::stoi(*name) : 0;
    std::vector<std::string> expected;
    for (int set = std::max(1, last - kSetsKept + 1); set <= last; ++set) {
        for (int i = 0; i < kRecordsOfSet; ++i) {
            const astr id = IdOfSet(set, i);
            expected.emplace_back(id.c_str());
            EXPECT_EQ(NameOf(db, id.c_str(), type), TextOfSet(set));
        }
    }
    if (last > 0) expected.emplace_back(kLast);
    EXPECT_EQ(IdsOf(db, type), expected);
    return last;
}

/// A child that writes sets of a type up to a number, each of which it reports when it is in the file.
KilledChild Writer(const wchar_t* type, int upTo, const std::wstring& path) {
    return {L"QBaseDbChild.DISABLED_WritesSets", std::wstring(type) + L" " + std::to_wstring(upTo) + L" " + path};
}

TEST(QBaseDbChild, DISABLED_WritesSets) {
    std::wistringstream argument(KilledChild::Argument());
    std::wstring wideType, path;
    int upTo = 0;
    std::getline(argument >> wideType >> upTo >> std::ws, path);
    const std::string type(wideType.begin(), wideType.end());
    QBaseDb db(path.c_str());
    const auto last = NameOf(db, kLast, type.c_str());
    for (int set = last ? std::stoi(*last) + 1 : 1; set <= upTo; ++set) {
        ASSERT_TRUE(WriteSet(db, type.c_str(), set)) << set;
        KilledChild::Report(set);
    }
}

TEST_F(QBaseDbTest, WhatWasCommittedSurvivesAKillAndNothingIsHalf) {
    constexpr int kKills = 100;
    constexpr int kEndless = 1'000'000;
    std::mt19937 random(1);
    std::optional<QBaseDb> held;
    int inFile = 0;
    for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
        SCOPED_TRACE(kill);
        // Some are killed as they make a file of their own, the others as they go on with what is there.
        const bool fresh = kill % 4 == 0;
        const std::wstring path = fresh ? path_ + std::to_wstring(kill) : path_;
        const int before = fresh ? 0 : inFile;
        KilledChild writer = Writer(L"UP", kEndless, path);
        if (fresh) {
            while (!std::filesystem::exists(path) && !writer.HasEnded())
                SwitchToThread();
        } else {
            EXPECT_TRUE(writer.HasReported(before + 1));
        }
        EXPECT_FALSE(writer.HasEnded(random() % (fresh ? 6 : 30))) << "it goes on until it is killed";
        writer.Kill();
        QBaseDb db(path.c_str());
        ASSERT_EQ(db.GetStatus(), Status::Open);
        const int last = ExpectWholeSets(db, kType);
        EXPECT_GE(last, std::max(before, static_cast<int>(writer.Reported())));
        EXPECT_EQ(Database(path, OpenMode::ReadWrite, 0ms).TextOf("PRAGMA integrity_check"), L"ok");
        EXPECT_TRUE(WriteSet(db, kType, last + 1));
        inFile = fresh ? inFile : last + 1;
        // The log stays for the next writer where this process keeps the file open.
        held.reset();
        if (!fresh && kill % 3 == 0) held = db;
    }
    EXPECT_GT(inFile, kKills);
}

TEST_F(QBaseDbTest, ProcessesThatWriteAtOnceWaitForEachOther) {
    constexpr int kSets = 150;
    const KilledChild first = Writer(L"AA", kSets, path_);  // which of them makes the file is a matter of chance
    const KilledChild second = Writer(L"BB", kSets, path_);
    EXPECT_TRUE(first.Passed());
    EXPECT_TRUE(second.Passed());
    const QBaseDb db(path_.c_str());
    EXPECT_EQ(ExpectWholeSets(db, "AA"), kSets);
    EXPECT_EQ(ExpectWholeSets(db, "BB"), kSets);
}

}  // namespace
