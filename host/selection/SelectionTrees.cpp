#include "host/selection/SelectionTrees.h"

#include <orvatool/ImageLib.h>

#include <algorithm>
#include <map>
#include <vector>

namespace ochost {
namespace {

void AddRow(TREE_INSERTLIST& tree, int level, Id value, const std::wstring& text) {
    tree.push_back(level, value, Lng::NoApp, ImageLib::NoImage, ustr(text));
}

std::wstring TextOf(const Room& room) {
    return room.number + L" " + room.name;
}
std::wstring TextOf(const Zone& zone) {
    return zone.number + L" " + zone.name;
}
std::wstring TextOf(const System& system) {
    return system.code + L" " + system.name;
}
std::wstring TextOf(const FittingSeries& series) {
    return series.name;
}
std::wstring TextOf(const PartType& part) {
    return part.code + L" " + part.name;
}

/// The records by what a member of theirs refers to, in their order.
template <class R>
std::map<Id, std::vector<const R*>> By(const std::vector<R>& records, Id R::*member) {
    std::map<Id, std::vector<const R*>> groups;
    for (const R& record : records)
        groups[record.*member].push_back(&record);
    return groups;
}

template <class R>
void AddRows(TREE_INSERTLIST& tree, int level, const std::vector<const R*>& records) {
    for (const R* record : records)
        AddRow(tree, level, record->id, TextOf(*record));
}

template <class R>
TREE_INSERTLIST FloorTree(const ProjectIndex& project, const std::vector<R>& records, Id onlyFloor) {
    const auto byFloor = By(records, &R::floor);
    const bool severalBuildings = project.content.info.scale > 1;
    std::wstring building;
    TREE_INSERTLIST tree;
    for (const Floor& floor : project.content.floors) {
        const auto onFloor = byFloor.find(floor.id);
        if (onFloor == byFloor.end() || (onlyFloor != 0 && floor.id != onlyFloor)) continue;
        if (severalBuildings && building != floor.building) AddRow(tree, 0, 0, floor.building);
        building = floor.building;
        const int level = severalBuildings ? 1 : 0;
        AddRow(tree, level, 0, floor.name);
        AddRows(tree, level + 1, onFloor->second);
    }
    tree.finalize();
    return tree;
}

bool IsOf(const Discipline& discipline, Lng::AppID app) {
    const bool electrical = discipline.code == L"E";
    if (app == Lng::Electrical) return electrical;
    return app != Lng::Hpv || !electrical;
}

template <class R>
TREE_INSERTLIST DisciplineTree(const ProjectIndex& project, const std::vector<R>& records, Lng::AppID app) {
    const auto byDiscipline = By(records, &R::discipline);
    TREE_INSERTLIST tree;
    for (const Discipline& discipline : project.content.disciplines) {
        const auto found = byDiscipline.find(discipline.id);
        if (found == byDiscipline.end() || !IsOf(discipline, app)) continue;
        AddRow(tree, 0, 0, discipline.name);
        AddRows(tree, 1, found->second);
    }
    tree.finalize();
    return tree;
}

/// Takes out the headings that have nothing below them.
TREE_INSERTLIST WithoutEmptyGroups(const TREE_INSERTLIST& tree) {
    std::vector<bool> kept(tree.size());
    int wantedLevel = 0;  // what stands one level above a row that is kept
    for (std::size_t i = tree.size(); i-- > 0;) {
        kept[i] = tree[i].value != 0 || tree[i].level < wantedLevel;
        if (kept[i]) wantedLevel = tree[i].level;
    }
    TREE_INSERTLIST pruned;
    for (std::size_t i = 0; i < tree.size(); ++i) {
        if (kept[i]) pruned.push_back(tree[i]);
    }
    pruned.finalize();
    return pruned;
}

}  // namespace

TREE_INSERTLIST RoomTree(const ProjectIndex& project, Id floor) {
    return FloorTree(project, project.content.rooms, floor);
}

TREE_INSERTLIST ZoneTree(const ProjectIndex& project, Id floor) {
    return FloorTree(project, project.content.zones, floor);
}

TREE_INSERTLIST SystemTree(const ProjectIndex& project, Lng::AppID app) {
    return DisciplineTree(project, project.content.systems, app);
}

TREE_INSERTLIST FittingSeriesTree(const ProjectIndex& project, Lng::AppID app) {
    return DisciplineTree(project, project.content.fittingSeries, app);
}

TREE_INSERTLIST ModelDrawingTree(const ProjectIndex& project) {
    auto byFolder = By(project.content.drawings, &Drawing::folder);
    TREE_INSERTLIST tree;
    for (const bool inModel : {true, false}) {
        AddRow(tree, 0, 0, inModel ? L"In the model" : L"Not in the model");
        for (const Folder& folder : project.content.folders) {
            AddRow(tree, 1 + folder.level, 0, folder.name);
            for (const Drawing* drawing : byFolder[folder.id]) {
                if (project.IsModelDrawing(drawing->id) != inModel) continue;
                AddRow(tree, 2 + folder.level, drawing->id, drawing->fileName);
            }
        }
    }
    return WithoutEmptyGroups(tree);
}

TREE_INSERTLIST PartTypeTree(const ProjectIndex& project, Lng::AppID app) {
    std::map<Id, std::vector<const PartType*>> byGroup;
    for (const PartType& part : project.content.partTypes) {
        const Discipline* discipline = project.disciplines[part.discipline];
        if (discipline && IsOf(*discipline, app)) byGroup[part.group].push_back(&part);
    }
    TREE_INSERTLIST tree;
    for (const PartGroup& group : project.content.partGroups) {
        AddRow(tree, group.level, 0, group.name);
        AddRows(tree, group.level + 1, byGroup[group.id]);
    }
    return WithoutEmptyGroups(tree);
}

}  // namespace ochost
