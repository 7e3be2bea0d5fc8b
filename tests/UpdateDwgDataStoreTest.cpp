#include <gtest/gtest.h>
#include <occommonui/UpdateDwgData.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/KilledChild.h"
#include "support/TestFolder.h"
#include "support/XmlFaults.h"

namespace UpdateDwgData::PrjDb {
namespace {

constexpr long kLastId = 32766;

bool Same(const Options& a, const Options& b) {
    return a.properties == b.properties && a.selection == b.selection && a.flagMask == b.flagMask;
}

bool IsDefault(const Options& options) {
    return Same(options, Options());
}

OptionsRec Named(const wchar_t* name, std::set<long> properties = {}, long id = 0) {
    OptionsRec rec;
    rec.id = id;
    rec.name = name;
    rec.options.properties = std::move(properties);
    return rec;
}

/// Something in every part that is stored.
OptionsRec Full() {
    OptionsRec rec;
    rec.name = L"M\u00e4\u00e4r\u00e4 <&\"'> \U0001F600\t\u4e2d";
    rec.options.properties = {std::numeric_limits<long>::min(), -101, 0, 7, std::numeric_limits<long>::max()};
    ObjectSelection::Data& selection = rec.options.selection;
    selection.bySelectionSet = selection.useModelDrawings = selection.useRooms = true;
    selection.modelDrawings.push_back({.id = 0, .path = L"C:\\Ty\u00f6t\\\U0001F600 & 'a' <b>.dwg"});
    selection.rooms = {5, 3, 4};
    ObjectSelection::Property rule;
    rule.propId = 12;
    rule.tolerance = 0.1;
    rule.criteria = {
        {.operation = ObjectSelection::Property::Less, .value = L"1.5"}
    };
    selection.filterRules = {rule};
    selection.layouts.entries.push_back({.drawing = selection.modelDrawings[0], .name = L"Layout \"1\""});
    selection.partTypesAlt = {"a & b"};
    return rec;
}

/// Puts a record of any kind into the database.
void Store(QBaseDb& db, const char* objId, const wchar_t* name, const wchar_t* xml) {
    QBaseDb::Rec* record = db.createRec("UP", objId);
    ASSERT_TRUE(record);
    db.insertWsz(record, 1501, name);
    db.insertWsz(record, 1589, xml);
    EXPECT_EQ(db.saveRec(record), 0);
    db.releaseRec(record);
}

/// A field of a record: the XML text, if no other.
std::wstring Field(const QBaseDb& db, const char* objId, int field = 1589) {
    ustr text;
    QBaseDb::Rec* record = db.findRec("UP", objId);
    EXPECT_TRUE(record && db.copyWsz(record, field, text));
    db.releaseRec(record);
    return text.c_str();
}

std::optional<OptionsRec> ReadId(const QBaseDb& db, long id) {
    OptionsRec rec;
    rec.id = id;
    return Read(db, rec) ? std::optional(rec) : std::nullopt;
}

std::vector<OptionsRec> ReadAll(const QBaseDb& db) {
    std::vector<OptionsRec> recs;
    EXPECT_TRUE(Read(db, recs));
    return recs;
}

std::vector<long> StoredIds(const QBaseDb& db) {
    std::vector<long> ids;
    for (const OptionsRec& rec : ReadAll(db))
        ids.push_back(rec.id);
    return ids;
}

/// Takes every id, all of them with the same options.
void Fill(QBaseDb& db) {
    QBaseDb::QuickMode scope(db, 1, 1);
    OptionsRec rec = Named(L"Taken", {1});
    for (rec.id = 1; rec.id <= kLastId; ++rec.id)
        ASSERT_TRUE(Write(db, rec)) << rec.id;
    ASSERT_TRUE(scope.End());
}

class UpdateDwgDataStore : public testing::Test {
protected:
    void Put(OptionsRec rec) { ASSERT_TRUE(Write(*db_, rec)); }
    /// Closes the file and opens it again.
    QBaseDb& Reopen() {
        db_.reset();
        db_ = std::make_unique<QBaseDb>(path_.c_str());
        return *db_;
    }

    const TestFolder folder_;
    const std::wstring path_ = folder_.File(L"project.db");
    std::unique_ptr<QBaseDb> db_ = std::make_unique<QBaseDb>(path_.c_str());
};

// ---- ids ----

TEST(UpdateDwgDataObjId, HasAtLeastSixDigits) {
    EXPECT_EQ(BuildObjId(1), "000001");
    EXPECT_EQ(BuildObjId(32766), "032766");
    EXPECT_EQ(BuildObjId(1234567), "1234567");
    EXPECT_EQ(BuildObjId(std::numeric_limits<long>::max()), "2147483647");
    EXPECT_EQ(BuildObjId(0), "000000");
    EXPECT_EQ(BuildObjId(-7), "-000007");
    EXPECT_EQ(BuildObjId(std::numeric_limits<long>::min()), "-2147483648");
}

TEST_F(UpdateDwgDataStore, ANewSetGetsTheLowestFreeId) {
    EXPECT_EQ(FindNextFreeId(*db_), 1);
    for (const long expected : {1, 2, 3}) {
        OptionsRec rec = Named(L"New");
        rec.id = 1 - expected;  // 0 or less: none
        EXPECT_TRUE(Write(*db_, rec));
        EXPECT_EQ(rec.id, expected);
    }
    EXPECT_TRUE(Delete(*db_, 1));
    EXPECT_EQ(FindNextFreeId(*db_), 1);
    Put(Named(L"Again"));
    EXPECT_EQ(FindNextFreeId(Reopen()), 4);
}

TEST_F(UpdateDwgDataStore, AnIdOfTheCallersIsUsedAsItIs) {
    for (const long id : {40000L, 5L, std::numeric_limits<long>::max()}) {
        OptionsRec rec = Named(L"Mine", {id}, id);
        EXPECT_TRUE(Write(*db_, rec));
        EXPECT_EQ(rec.id, id);
        EXPECT_EQ(ReadId(*db_, id)->options.properties, std::set{id});
    }
    Put(Named(L"Other", {8}, 5));
    EXPECT_EQ(ReadId(*db_, 5)->name, L"Other") << "in place of the one that was there";
    EXPECT_EQ(StoredIds(*db_), (std::vector<long>{5, 40000, 2147483647}));
    EXPECT_EQ(FindNextFreeId(*db_), 1);
}

TEST_F(UpdateDwgDataStore, AFullTableTakesNoNewSet) {
    Fill(*db_);
    EXPECT_EQ(FindNextFreeId(*db_), 0);
    for (const long id : {0, -3}) {
        OptionsRec rec = Named(L"One too many", {}, id);
        EXPECT_FALSE(Write(*db_, rec));
        EXPECT_EQ(rec.id, id);
    }
    Put(Named(L"Changed", {}, kLastId));
    EXPECT_EQ(ReadAll(*db_).size(), static_cast<std::size_t>(kLastId));
    EXPECT_TRUE(Delete(*db_, kLastId));
    EXPECT_EQ(FindNextFreeId(*db_), kLastId);
}

// ---- reading ----

TEST_F(UpdateDwgDataStore, GivesBackEverythingButTheFlagMask) {
    OptionsRec full = Full();
    full.options.flagMask = 0x80000;
    Put(full);
    Put(OptionsRec());

    const std::vector<OptionsRec> recs = ReadAll(Reopen());
    ASSERT_EQ(recs.size(), 2u);
    EXPECT_EQ(recs[0].id, 1);
    EXPECT_EQ(recs[0].name, Full().name);
    EXPECT_TRUE(Same(recs[0].options, Full().options)) << "and the mask is 0";
    EXPECT_EQ(recs[1].id, 2);
    EXPECT_TRUE(recs[1].name.empty());
    EXPECT_TRUE(IsDefault(recs[1].options));
}

TEST_F(UpdateDwgDataStore, IsReadByIdOrByTheExactName) {
    for (const OptionsRec& rec :
         {Named(L"twice", {1}), Named(L"Twice", {2}), Named(L"Twice", {3}), Named(L"Twice ", {4})})
        Put(rec);

    OptionsRec byName = Named(L"Twice", {}, -5);
    EXPECT_TRUE(Read(*db_, byName));
    EXPECT_EQ(byName.options.properties, std::set{2L}) << "the first of that name";
    EXPECT_EQ(byName.id, -5);

    OptionsRec byId = Named(L"twice", {}, 4);
    EXPECT_TRUE(Read(*db_, byId));
    EXPECT_EQ(byId.options.properties, std::set{4L}) << "the id counts when there is one";
    EXPECT_EQ(byId.name, L"Twice ");
}

TEST_F(UpdateDwgDataStore, ARecordThatIsNotThereLeavesTheCallersAsItWas) {
    Put(Named(L"Stored", {1}));
    const std::vector<OptionsRec> missing = {Named(L"Stored", {9}, 2), Named(L"STORED", {9}), Named(L"Store", {9}),
                                             Named(L"", {9}), Named(L"", {9}, -1)};
    for (const OptionsRec& before : missing) {
        OptionsRec rec = before;
        EXPECT_FALSE(Read(*db_, rec)) << before.name.c_str();
        EXPECT_EQ(rec.id, before.id);
        EXPECT_EQ(rec.name, before.name);
        EXPECT_EQ(rec.options.properties, std::set{9L});
    }
}

TEST_F(UpdateDwgDataStore, AllAreAppendedInTheOrderOfTheirObjectIds) {
    for (const long id : {77L, 10L, 2L, 1234567L, 100L})
        Put(Named(L"Some", {}, id));
    const std::wstring xml = Field(*db_, "000002");
    Store(*db_, "000000000312", L"Only ten characters of an id count", xml.c_str());
    Store(*db_, "12 monkeys", L"Only the number counts", xml.c_str());
    EXPECT_EQ(StoredIds(*db_), (std::vector<long>{3, 2, 10, 77, 100, 12, 1234567}));
    std::vector<OptionsRec> recs = {Named(L"Before", {}, 9)};
    EXPECT_TRUE(Read(*db_, recs));
    EXPECT_EQ(recs.size(), 8u);
    EXPECT_EQ(recs[0].id, 9) << "what the list held stays";
}

// ---- the XML text ----

TEST_F(UpdateDwgDataStore, WritesThePropertiesInAscendingOrder) {
    Put(Named(L"Set", {5, 3}));
    EXPECT_EQ(Field(*db_, "000001", 1501), L"Set");
    const std::wstring xml = Field(*db_, "000001");
    const std::wstring start =
        L"<UpdateDwgDataType Version=\"20161101\" Format=\"20161101\">"
        L"<Properties><Property id=\"3\" /><Property id=\"5\" /></Properties>"
        L"<ObjectSelection ";
    EXPECT_EQ(xml.substr(0, start.size()), start);
    EXPECT_TRUE(xml.ends_with(L"</UpdateDwgDataType>"));
    EXPECT_EQ(std::ranges::count(xml, L'\n'), 0);

    Put(OptionsRec());
    EXPECT_NE(Field(*db_, "000002").find(L"<Properties /><ObjectSelection "), std::wstring::npos);
}

constexpr wchar_t kNow[] = L"Version='20161101' Format='20161101'";
constexpr wchar_t kThree[] = L"<Properties><Property id='3'/></Properties>";

std::wstring Xml(const std::wstring& attributes, const std::wstring& content) {
    return L"<UpdateDwgDataType " + attributes + L">" + content + L"</UpdateDwgDataType>";
}

TEST_F(UpdateDwgDataStore, ReadsWhatOtherProgramsMayHaveWritten) {
    const auto expectRead = [&](const std::set<long>& properties, const std::wstring& xml) {
        SCOPED_TRACE(std::filesystem::path(xml).string());
        Store(*db_, "000001", L"Other", xml.c_str());
        OptionsRec rec = Named(L"", {9}, 1);
        rec.options.flagMask = 4;
        rec.options.selection.useRooms = true;
        EXPECT_TRUE(Read(*db_, rec));
        EXPECT_TRUE(Same(rec.options, Named(L"", properties).options)) << "and the rest as in new options";
    };
    expectRead({3}, Xml(kNow, kThree));
    expectRead({}, Xml(kNow, L""));
    expectRead({3}, Xml(L"Format='-1' Version='0'", kThree));
    expectRead({3}, Xml(L"Version='20991231' Format='20161101'", kThree));
    expectRead({3}, L"<?xml version='1.0' encoding='UTF-8'?>" + Xml(kNow, kThree));
    expectRead({3, 5}, Xml(kNow, L"<Properties><Property id='5'/><X id='9'/><Property id='3'/></Properties>"));
}

TEST_F(UpdateDwgDataStore, WhatCannotBeReadAsAWholeIsNotReadAtAll) {
    const std::wstring texts[] = {
        Xml(L"Version='20161101' Format='20161102'", kThree),
        Xml(L"Format='20161101'", kThree),
        Xml(L"Version='20161101'", kThree),
        Xml(L"Version='1' Format='x'", kThree),
        Xml(kNow, L"<Properties><Property id='3'/><Property/></Properties>"),
        Xml(kNow, L"<Properties><Property id='3'/><Property id='2147483648'/></Properties>"),
        Xml(kNow, std::wstring(kThree) + L"<ObjectSelection/>"),
        Xml(kNow, orvaspace::ToWide(Nested("Properties", 100'000)).c_str()),
        L"Version Format",
        L"",
    };
    Put(Named(L"Good", {1}, 2));
    for (const std::wstring& xml : texts) {
        SCOPED_TRACE(std::filesystem::path(xml).string());
        Store(*db_, "000001", L"Bad", xml.empty() ? nullptr : xml.c_str());
        for (OptionsRec rec : {Named(L"", {9}, 1), Named(L"Bad", {9})}) {
            EXPECT_FALSE(Read(*db_, rec));
            EXPECT_TRUE(IsDefault(rec.options));
        }
        EXPECT_EQ(StoredIds(*db_), std::vector<long>{2});
        EXPECT_EQ(FindNextFreeId(*db_), 3) << "it still has its id";
    }
}

TEST_F(UpdateDwgDataStore, LongTextsAreKeptWhole) {
    OptionsRec rec = Full();
    rec.name.clear();
    for (int i = 0; i < 600; ++i)
        rec.name.append(static_cast<wchar_t>(L'a' + i % 26));
    for (long id = 0; id < 30'000; ++id)
        rec.options.properties.insert(id * 3);
    Put(rec);
    OptionsRec read = Named((rec.name.c_str() + std::wstring(L"x")).c_str());
    Put(read);
    EXPECT_TRUE(Read(Reopen(), read));
    EXPECT_TRUE(IsDefault(read.options)) << "the end of a name counts too";
    read.name = rec.name;
    EXPECT_TRUE(Read(*db_, read));
    EXPECT_EQ(read.name, rec.name);
    EXPECT_TRUE(Same(read.options, rec.options));
}

TEST_F(UpdateDwgDataStore, TextThatWasCutOrChangedIsReadAsAWholeOrNotAtAll) {
    const QBaseDb::QuickMode scope(*db_, 1, 1);
    Put(Full());
    const std::string sound(orvaspace::ToUtf8(Field(*db_, "000001")).c_str());
    OptionsRec read;
    const auto isRead = [&](const std::string& xml) {
        Store(*db_, "000002", L"Changed", orvaspace::ToWide(xml).c_str());
        read = Named(L"", {9}, 2);
        return Read(*db_, read);
    };
    for (const std::string& xml : Truncated(sound)) {
        ASSERT_FALSE(isRead(xml)) << xml;
        ASSERT_TRUE(IsDefault(read.options)) << xml;
    }
    XmlMutator mutate(20161101, {"20161101", "20161102"});
    int readable = 0;
    for (int round = 0; round < 50'000; ++round) {
        const std::string xml = mutate(sound);
        if (!isRead(xml)) {
            ASSERT_TRUE(IsDefault(read.options)) << xml;
            continue;
        }
        ++readable;
        for (astr& name : read.options.selection.partTypesAlt)
            name = orvaspace::ToUtf8(orvaspace::ToWide(name));  // bytes that are no characters do not go through UTF-16
        OptionsRec again = read;
        ASSERT_TRUE(Write(*db_, again) && Read(*db_, again));
        ASSERT_TRUE(Same(again.options, read.options)) << xml;
    }
    EXPECT_GT(readable, 500) << "else the changes are too rough to find anything";
}

// ---- deleting ----

TEST_F(UpdateDwgDataStore, DeletingStopsAtTheFirstThatIsNotThere) {
    for (int i = 0; i < 6; ++i)
        Put(Named(L"Some"));
    EXPECT_FALSE(Delete(*db_, {5, 2, 7, 1}));
    EXPECT_EQ(StoredIds(Reopen()), (std::vector<long>{1, 3, 4, 6})) << "those before it are gone, those after it stay";
    EXPECT_FALSE(Delete(*db_, 2));
    EXPECT_FALSE(Delete(*db_, 0));
    EXPECT_TRUE(Delete(*db_, {6, 1}));
    EXPECT_TRUE(Delete(*db_, std::vector<long>()));
    EXPECT_FALSE(Delete(*db_, {3, 3})) << "the second time it is gone";
    EXPECT_EQ(StoredIds(*db_), std::vector<long>{4});
}

// ---- the file ----

TEST_F(UpdateDwgDataStore, EachHandleSeesWhatTheOthersHaveStored) {
    QBaseDb other(path_.c_str());
    Put(Named(L"First", {1}));
    OptionsRec second = Named(L"Second", {2});
    EXPECT_TRUE(Write(other, second));
    EXPECT_EQ(second.id, 2);
    EXPECT_EQ(ReadId(*db_, 2)->name, L"Second");
    EXPECT_TRUE(Delete(*db_, 1));
    EXPECT_FALSE(ReadId(other, 1));

    QBaseDb::QuickMode before(other, 0, 1);
    EXPECT_EQ(StoredIds(other), std::vector<long>{2});
    Put(Named(L"Third"));
    EXPECT_EQ(StoredIds(other), std::vector<long>{2}) << "a scope shows one state";
    before.End();
    EXPECT_EQ(StoredIds(other), (std::vector<long>{1, 2}));
}

TEST_F(UpdateDwgDataStore, WhatCannotBeStoredTakesItsIdBack) {
    const auto expectRefused = [](QBaseDb& db) {
        OptionsRec rec = Named(L"Refused", {1}, -2);
        EXPECT_FALSE(Write(db, rec));
        EXPECT_EQ(rec.id, -2);
        EXPECT_FALSE(Delete(db, 1));
        EXPECT_FALSE(Delete(db, std::vector{1L}));
    };
    Put(Named(L"Stored"));
    {
        const QBaseDb::QuickMode reading(*db_, 0, 1);
        expectRefused(*db_);
    }
    db_.reset();
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY);
    expectRefused(Reopen());
    EXPECT_EQ(StoredIds(*db_), std::vector<long>{1});
    EXPECT_EQ(FindNextFreeId(*db_), 2);

    QBaseDb none(folder_.File(L"none\\x.db").c_str());
    expectRefused(none);
    EXPECT_EQ(FindNextFreeId(none), 0);
    EXPECT_TRUE(StoredIds(none).empty());
    EXPECT_FALSE(ReadId(none, 1));
}

// ---- several processes, and such as end at any moment ----

constexpr long kRotating = 8;

/// The set of a number: sets of consecutive numbers take turns in the ids from 1 to kRotating.
OptionsRec NumberedSet(long number) {
    OptionsRec rec;
    rec.id = number % kRotating + 1;
    rec.name.format(L"%ld", number);
    for (long i = 0; i <= number * 37 % 300; ++i)
        rec.options.properties.insert(number + i);
    rec.options.selection.rooms = {number};
    return rec;
}

/// The number of the latest set. All sets that were stored must be there, whole and nothing else.
long CheckNumberedSets(const QBaseDb& db) {
    long last = 0;
    const std::vector<OptionsRec> recs = ReadAll(db);
    for (const OptionsRec& rec : recs)
        last = std::max(last, std::wcstol(rec.name.c_str(), nullptr, 10));
    EXPECT_EQ(static_cast<long>(recs.size()), std::min(last, kRotating));
    for (const OptionsRec& rec : recs) {
        const OptionsRec expected = NumberedSet(last - (last + 1 - rec.id) % kRotating);
        EXPECT_EQ(rec.name, expected.name) << rec.id;
        EXPECT_TRUE(Same(rec.options, expected.options)) << rec.id;
    }
    return last;
}

/// Run by a child: stores sets without end, each with the next number.
TEST(UpdateDwgDataChild, DISABLED_StoresNumberedSets) {
    QBaseDb db(KilledChild::Argument().c_str());
    for (long number = CheckNumberedSets(db) + 1; !testing::Test::HasFailure(); ++number) {
        OptionsRec rec = NumberedSet(number);
        ASSERT_TRUE(Write(db, rec));
        KilledChild::Report(number);
    }
}

/// Kills the child while it starts, or when it has stored the set of this number and perhaps some more.
void KillAtRandom(KilledChild& child, long next, std::mt19937& random) {
    if (random() % 4 == 0) {
        EXPECT_FALSE(child.HasEnded(random() % 100)) << "it goes on until it is killed";
    } else {
        next += static_cast<long>(random() % 10);
        EXPECT_TRUE(child.HasReported(next)) << "it goes on until it is killed";
    }
    for (unsigned spin = random() % 50'000; spin > 0; --spin)
        YieldProcessor();
    child.Kill();
}

TEST_F(UpdateDwgDataStore, WhatAKilledProcessReportedAsStoredIsThere) {
    std::mt19937 random(500);
    long last = 0;
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        db_.reset();
        if (round % 25 == 0) {
            folder_.Clear();
            last = 0;
        }
        KilledChild child(L"UpdateDwgDataChild.DISABLED_StoresNumberedSets", path_);
        KillAtRandom(child, last + 1, random);
        const long reported = std::max(last, child.Reported());
        ASSERT_EQ(Reopen().GetStatus(), QBaseDb::Status::Open);
        last = CheckNumberedSets(*db_);
        EXPECT_TRUE(last == reported || last == reported + 1) << reported << " were reported, the latest is " << last;
    }
}

constexpr long kSetsOfEach = 200;

/// Run by a child: stores as many new sets as stated.
TEST(UpdateDwgDataChild, DISABLED_StoresNewSets) {
    QBaseDb db(KilledChild::Argument().c_str());
    KilledChild::Report(1);  // ready
    for (long i = 1; i <= kSetsOfEach; ++i) {
        OptionsRec rec = Named(L"New", {i});
        ASSERT_TRUE(Write(db, rec)) << std::filesystem::path(db.GetErrorText().c_str()).string();
    }
}

TEST_F(UpdateDwgDataStore, TwoProcessesThatStoreAtOnceLoseNothing) {
    QBaseDb::QuickMode hold(*db_, 1, 1);  // until both are ready
    KilledChild first(L"UpdateDwgDataChild.DISABLED_StoresNewSets", path_);
    KilledChild second(L"UpdateDwgDataChild.DISABLED_StoresNewSets", path_);
    ASSERT_TRUE(first.HasReported(1) && second.HasReported(1));
    hold.End();
    EXPECT_TRUE(first.Passed());
    EXPECT_TRUE(second.Passed());
    std::vector<int> stored(kSetsOfEach + 1);
    const std::vector<OptionsRec> recs = ReadAll(*db_);
    for (const OptionsRec& rec : recs)
        ++stored[static_cast<std::size_t>(*rec.options.properties.begin())];
    EXPECT_EQ(recs.size(), 2u * kSetsOfEach);
    EXPECT_EQ(std::count(stored.begin() + 1, stored.end(), 2), kSetsOfEach) << "each set of each process";
    EXPECT_EQ(recs.back().id, 2 * kSetsOfEach);
}

}  // namespace
}  // namespace UpdateDwgData::PrjDb
