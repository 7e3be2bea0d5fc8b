#include <benchmark/benchmark.h>
#include <occommonui/UpdateDwgData.h>
#include <orvasql/Sqlite.h>
#include <sqlite3.h>
#include <ticpp.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "TempFolder.h"

// A full table of sets against bare prepared statements on the same file: every set read from a table that has a column
// for each field, and every id looked up among the records.

namespace {

using UpdateDwgData::Options;
using UpdateDwgData::PrjDb::OptionsRec;

constexpr long kLastId = 32766;

void Check(bool done) {
    if (done) return;
    std::fprintf(stderr, "The project cannot be used\n");
    std::exit(1);
}

OptionsRec Set(long id) {
    OptionsRec rec;
    rec.id = id;
    rec.name.format(L"Ventilation, floor %ld", id);
    for (long property = 0; property < 20; ++property)
        rec.options.properties.insert(100 + 7 * property);
    rec.options.selection.bySelectionSet = true;
    rec.options.selection.rooms = {1, 2, 3};
    return rec;
}

// A project in which every id is taken, with the same sets in a table of their own.
class Project {
public:
    Project() {
        bare_.Execute("CREATE TABLE bare_set(id INTEGER PRIMARY KEY, name TEXT, xml TEXT)");
        QBaseDb::QuickMode scope(db_, 1, 1);
        for (long id = 1; id <= kLastId; ++id) {
            OptionsRec rec = Set(id);
            Check(Write(db_, rec));
        }
        Check(scope.End());
        FillBareTable();
    }

    QBaseDb& Db() { return db_; }
    orvasql::Database& Bare() { return bare_; }

private:
    void FillBareTable() {
        orvasql::Transaction transaction(bare_, orvasql::Transaction::Kind::Write);
        orvasql::Statement insert(bare_, "INSERT INTO bare_set(id, name, xml) VALUES(?, ?, ?)");
        QBaseDb::ConstIterator it(db_, "UP");
        std::int64_t id = 0;
        ustr text;
        for (it.start(); !it.done(); it.next()) {
            insert.Bind(1, ++id);
            for (const auto& [parameter, field] : {std::pair(2, 1501), std::pair(3, 1589)}) {
                Check(db_.copyWsz(it.get(), field, text));
                insert.Bind(parameter, std::wstring_view(text));
            }
            insert.Run();
        }
        Check(id == kLastId);
        transaction.Commit();
    }

    TempFolder folder_{L"UpdateDwgDataBench"};
    QBaseDb db_{folder_.File(L"project.db").c_str()};
    orvasql::Database bare_{folder_.File(L"project.db"), orvasql::OpenMode::ReadWrite, std::chrono::milliseconds(0)};
};

Project& TheProject() {
    static Project project;
    return project;
}

class BareStatement {
public:
    BareStatement(orvasql::Database& database, const char* sql) : transaction_(database, Kind::Read) {
        Check(sqlite3_prepare_v2(database.Handle(), sql, -1, &statement_, nullptr) == SQLITE_OK);
    }
    ~BareStatement() { sqlite3_finalize(statement_); }
    BareStatement(const BareStatement&) = delete;
    BareStatement& operator=(const BareStatement&) = delete;

    operator sqlite3_stmt*() const { return statement_; }

private:
    using Kind = orvasql::Transaction::Kind;
    orvasql::Transaction transaction_;
    sqlite3_stmt* statement_ = nullptr;
};

// ---- all sets ----

void ReadOurs(benchmark::State& state) {
    const QBaseDb& db = TheProject().Db();
    for (auto _ : state) {
        std::vector<OptionsRec> recs;
        Read(db, recs);
        Check(recs.size() == kLastId);
    }
}

void ParseBare(const char* xml, Options& options) {
    ticpp::Document document;
    document.Parse(xml);
    const ticpp::Element* root = document.FirstChildElement();
    Check(root->GetAttribute<int>("Version") > 0 && root->GetAttribute<int>("Format") <= 20161101);
    const ticpp::Element* property = root->FirstChildElement("Properties")->FirstChildElement("Property", false);
    for (; property; property = property->NextSiblingElement("Property", false))
        options.properties.insert(property->GetAttribute<long>("id"));
    Check(options.selection.FromXml(TheProject().Db(), *root->FirstChildElement("ObjectSelection")));
}

void ReadBare(benchmark::State& state) {
    orvasql::Database& database = TheProject().Bare();
    for (auto _ : state) {
        std::vector<OptionsRec> recs;
        const BareStatement select(database, "SELECT id, name, xml FROM bare_set ORDER BY id");
        while (sqlite3_step(select) == SQLITE_ROW) {
            OptionsRec& rec = recs.emplace_back();
            rec.id = sqlite3_column_int(select, 0);
            rec.name = static_cast<const wchar_t*>(sqlite3_column_text16(select, 1));
            ParseBare(reinterpret_cast<const char*>(sqlite3_column_text(select, 2)), rec.options);
        }
        Check(recs.size() == kLastId);
    }
}

// ---- a free id ----

void FindNextFreeIdOurs(benchmark::State& state) {
    QBaseDb& db = TheProject().Db();
    for (auto _ : state)
        Check(UpdateDwgData::PrjDb::FindNextFreeId(db) == 0);
}

void FindNextFreeIdBare(benchmark::State& state) {
    orvasql::Database& database = TheProject().Bare();
    for (auto _ : state) {
        const BareStatement exists(database, "SELECT 1 FROM qbase_record WHERE type = ? AND obj_id = ?");
        sqlite3_bind_text(exists, 1, "UP", 2, SQLITE_STATIC);
        for (int id = 1; id <= kLastId; ++id) {
            char objId[16];
            const int length = std::snprintf(objId, sizeof objId, "%06d", id);
            sqlite3_bind_text(exists, 2, objId, length, SQLITE_STATIC);
            Check(sqlite3_step(exists) == SQLITE_ROW);
            sqlite3_reset(exists);
        }
    }
}

BENCHMARK(ReadOurs)->Name("Read/ours")->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(5);
BENCHMARK(ReadBare)->Name("Read/bare")->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(5);
BENCHMARK(FindNextFreeIdOurs)->Name("FindNextFreeId/ours")->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(FindNextFreeIdBare)->Name("FindNextFreeId/bare")->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
