#include <occommonui/UpdateDwgData.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>
#include <utility>

#include "UpdateDwgDataXml.h"

namespace UpdateDwgData::PrjDb {
namespace {

// stored: never change
constexpr char kType[] = "UP";
constexpr int kName = 1501;
constexpr int kOptions = 1589;

constexpr long kLastId = 32766;
constexpr std::size_t kObjIdSize = 11;  // what is read of an id: ten characters

// Has room for every number, so that looking for a free one needs no memory.
astr_pre<11> ObjIdOf(long id) {
    char objId[12];
    std::snprintf(objId, sizeof objId, "%.6ld", id);
    return objId;
}

class Scope : public QBaseDb::QuickMode {
public:
    enum Kind { Read = 0, Write = 1 };
    Scope(const QBaseDb& db, Kind kind) : QuickMode(db, kind, 1) {}
};

struct Release {
    const QBaseDb* db;
    void operator()(QBaseDb::Rec* record) const { db->releaseRec(record); }
};
using OwnedRec = std::unique_ptr<QBaseDb::Rec, Release>;

// Runs `operation`; false when it throws.
template <class Operation>
bool Succeeds(Operation operation) {
    try {
        return operation();
    } catch (...) {
        return false;
    }
}

bool ReadFields(const QBaseDb& db, const QBaseDb::Rec* record, OptionsRec& rec) {
    ustr xml;
    db.copyWsz(record, kName, rec.name);
    db.copyWsz(record, kOptions, xml);
    return FromXml(db, xml, rec.options);
}

bool ReadById(const QBaseDb& db, OptionsRec& rec) {
    const OwnedRec record(db.findRec(kType, ObjIdOf(rec.id).c_str()), Release{&db});
    return record && ReadFields(db, record.get(), rec);
}

bool ReadByName(const QBaseDb& db, OptionsRec& rec) {
    ustr name;
    QBaseDb::ConstIterator it(db, kType);
    for (it.start(); !it.done(); it.next()) {
        if (db.copyWsz(it.get(), kName, name) && name == rec.name) return ReadFields(db, it.get(), rec);
    }
    return false;
}

void ReadAll(const QBaseDb& db, std::vector<OptionsRec>& recs) {
    const Scope scope(db, Scope::Read);
    QBaseDb::ConstIterator it(db, kType);
    for (it.start(); !it.done(); it.next()) {
        std::array<char, kObjIdSize> objId{};
        db.getID(it.get(), objId.data(), objId.size());
        OptionsRec rec;
        rec.id = std::strtol(objId.data(), nullptr, 10);
        if (ReadFields(db, it.get(), rec)) recs.push_back(std::move(rec));
    }
}

bool Save(QBaseDb& db, long id, const OptionsRec& rec) {
    const OwnedRec record(db.createRec(kType, ObjIdOf(id).c_str()), Release{&db});
    return record && db.insertWsz(record.get(), kName, rec.name.c_str()) &&
           db.insertWsz(record.get(), kOptions, ToXml(rec.options).c_str()) && db.saveRec(record.get()) == 0;
}

long FirstFreeId(const QBaseDb& db) {
    for (long id = 1; id <= kLastId; ++id) {
        if (!db.existRec(kType, ObjIdOf(id).c_str())) return id;
    }
    return 0;
}

bool DeleteInOrder(QBaseDb& db, std::span<const long> ids) {
    return Succeeds([&] {
        Scope scope(db, Scope::Write);
        if (!scope.IsOpen()) return false;
        const bool all =
            std::ranges::all_of(ids, [&](long id) { return db.deleteRec(kType, ObjIdOf(id).c_str()) == 0; });
        return scope.End() && all;
    });
}

}  // namespace

astr BuildObjId(long id) {
    try {
        return std::string_view(ObjIdOf(id));
    } catch (...) {
        return {};
    }
}

long FindNextFreeId(QBaseDb& db) {
    Scope scope(db, Scope::Read);
    if (!scope.IsOpen()) return 0;
    const long id = FirstFreeId(db);
    return scope.End() ? id : 0;
}

bool Read(const QBaseDb& db, OptionsRec& rec) {
    if (rec.id < 1 && rec.name.empty()) return false;
    return Succeeds([&] {
        const Scope scope(db, Scope::Read);
        return rec.id >= 1 ? ReadById(db, rec) : ReadByName(db, rec);
    });
}

bool Read(const QBaseDb& db, std::vector<OptionsRec>& recs) {
    Succeeds([&] {
        ReadAll(db, recs);
        return true;
    });
    return true;
}

bool Write(QBaseDb& db, OptionsRec& rec) {
    return Succeeds([&] {
        Scope scope(db, Scope::Write);
        if (!scope.IsOpen()) return false;
        const long id = rec.id < 1 ? FindNextFreeId(db) : rec.id;
        if (id < 1 || !Save(db, id, rec) || !scope.End()) return false;
        rec.id = id;
        return true;
    });
}

bool IsGone(const QBaseDb& db, long id) {
    return Succeeds([&] {
        Scope scope(db, Scope::Read);
        const bool there = db.existRec(kType, ObjIdOf(id).c_str());
        return scope.IsOpen() && scope.End() && !there;
    });
}

bool Delete(QBaseDb& db, long id) {
    return DeleteInOrder(db, {&id, 1});
}

bool Delete(QBaseDb& db, std::vector<long> ids) {
    return DeleteInOrder(db, ids);
}

}  // namespace UpdateDwgData::PrjDb
