#include "host/selection/DrawingRecords.h"

#include <orvatool/ObjectSelection.h>
#include <orvatool/QBaseDb.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "host/selection/ProjectIndex.h"

namespace ochost {
namespace {

using ObjectSelection::kDrawingPath;
using ObjectSelection::kDrawingRecord;

using PathsById = std::map<std::string, std::wstring>;

PathsById PathsOf(const ProjectStore& project) {
    const DrawingPaths drawingPaths(project.Path(), ValueOf(project.Folders()));
    PathsById paths;
    for (const Drawing& drawing : ValueOf(project.Drawings())) {
        std::array<char, 24> id{};
        std::snprintf(id.data(), id.size(), "%06lld", static_cast<long long>(drawing.id));
        paths.emplace(id.data(), drawingPaths.Of(drawing));
    }
    return paths;
}

PathsById PathsIn(const QBaseDb& database) {
    PathsById paths;
    QBaseDb::ConstIterator it(database, kDrawingRecord);
    for (it.start(); !it.done(); it.next()) {
        std::array<char, 24> id{};
        ustr path;
        database.getID(it.get(), id.data(), id.size());
        database.copyWsz(it.get(), kDrawingPath, path);
        paths.emplace(id.data(), path.c_str());
    }
    return paths;
}

bool Write(QBaseDb& database, const std::string& id, const std::wstring& path) {
    const auto release = [&](QBaseDb::Rec* record) { database.releaseRec(record); };
    const std::unique_ptr<QBaseDb::Rec, decltype(release)> record(database.createRec(kDrawingRecord, id.c_str()),
                                                                  release);
    return record && database.insertWsz(record.get(), kDrawingPath, path.c_str()) &&
           database.saveRec(record.get()) == 0;
}

/// All or nothing.
bool Replace(QBaseDb& database, const PathsById& before, const PathsById& after) {
    QBaseDb::QuickMode scope(database, 1, 1);
    for (const auto& [id, path] : before) {
        if (!after.contains(id)) database.deleteRec(kDrawingRecord, id.c_str());
    }
    for (const auto& [id, path] : after) {
        const auto known = before.find(id);
        if ((known == before.end() || known->second != path) && !Write(database, id, path)) return false;
    }
    return scope.End();
}

}  // namespace

Status KeepDrawingRecords(const ProjectStore& project) try {
    const PathsById after = PathsOf(project);
    QBaseDb database(project.Path().c_str());
    const PathsById before = PathsIn(database);
    if (before == after || Replace(database, before, after)) return Done{};
    return Failure{FailureKind::System, std::wstring(std::wstring_view(database.GetErrorText()))};
} catch (const Failure& failure) {
    return failure;
}

}  // namespace ochost
