#include "host/selection/Evaluation.h"

#include <orvatool/NameListTree.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <unordered_set>
#include <utility>

#include "host/Utf.h"
#include "host/selection/ObjectValues.h"

namespace ochost {
namespace {

using ObjectSelection::Data;
using ObjectSelection::DrawingIndex;
using ObjectSelection::NameListInDwg;
using IdSet = std::unordered_set<Id>;

/// A criterion that takes part: the ids of which the object must have one.
struct Criterion {
    Id PlacedObject::*member;
    IdSet ids;

    bool Holds(const PlacedObject& object) const { return ids.contains(object.*member); }
};

struct Rule {
    const ObjectSelection::Property* rule;
    const Property* property;  // null when the project does not have it
};

/// A selection, looked up in the project.
class Query {
public:
    Query(const ProjectIndex& project, const Data& selection, Id currentDrawing) : project_(project) {
        for (const Drawing& drawing : project.content.drawings)
            drawings_.Add(RefOf(project, drawing));
        AddDrawings(selection, currentDrawing);
        Add(&PlacedObject::room, selection.useRooms, selection.rooms);
        AddZones(selection);
        Add(&PlacedObject::system, selection.useSystems, selection.systems);
        Add(&PlacedObject::fittingSeries, selection.useFittingSeries, selection.fittingSeries);
        AddPartTypes(selection);
        AddLayouts(selection.layouts);
        AddAreas(&PlacedObject::selectionArea, AreaKind::Selection, selection.selectionAreas);
        AddAreas(&PlacedObject::page, AreaKind::Page, selection.pages);
        AddAreas(&PlacedObject::switchboardArea, AreaKind::Switchboard, selection.switchboardAreas);
        AddAreas(&PlacedObject::hostArea, AreaKind::Host, selection.hostAreas);
        for (const ObjectSelection::Property& rule : selection.filterRules)
            rules_.push_back({&rule, project.properties[rule.propId]});
    }

    bool Holds(const PlacedObject& object) const {
        return std::all_of(criteria_.begin(), criteria_.end(),
                           [&](const Criterion& criterion) { return criterion.Holds(object); }) &&
               (layouts_.empty() || layouts_.contains({object.drawing, object.layout})) &&
               std::all_of(rules_.begin(), rules_.end(), [&](const Rule& rule) {
                   return rule.property && rule.rule->Matches(ValueOf(project_, object, *rule.property));
               });
    }

private:
    void Add(Id PlacedObject::*member, bool inForce, const std::vector<std::int32_t>& ids) {
        if (inForce && !ids.empty()) criteria_.push_back({member, IdSet(ids.begin(), ids.end())});
    }

    /// The project's id of a drawing; 0 for one that it does not have.
    Id IdOf(const ObjectSelection::DrawingRef& drawing) const {
        const std::size_t number = drawings_.Find(drawing);
        return number == DrawingIndex::kNone ? 0 : drawings_[number].id;
    }

    void AddDrawings(const Data& selection, Id currentDrawing) {
        if (selection.currentDrawing) return criteria_.push_back({&PlacedObject::drawing, {currentDrawing}});
        IdSet ids;
        const auto add = [&](Id drawing) {
            if (project_.IsModelDrawing(drawing)) ids.insert(drawing);
        };
        if (selection.useModelDrawings && !selection.modelDrawings.empty()) {
            for (const ObjectSelection::DrawingRef& drawing : selection.modelDrawings)
                add(IdOf(drawing));
        } else {
            for (const Drawing& drawing : project_.content.drawings)
                add(drawing.id);
        }
        criteria_.push_back({&PlacedObject::drawing, std::move(ids)});
    }

    void AddZones(const Data& selection) {
        if (!selection.useFunctionalZones || selection.functionalZones.empty()) return;
        const IdSet zones(selection.functionalZones.begin(), selection.functionalZones.end());
        IdSet rooms;
        for (const Room& room : project_.content.rooms) {
            if (zones.contains(room.zone)) rooms.insert(room.id);
        }
        criteria_.push_back({&PlacedObject::room, std::move(rooms)});
    }

    /// By id, or by the code of one application.
    void AddPartTypes(const Data& selection) {
        if (!selection.usePartTypes || (selection.partTypes.empty() && selection.partTypesAlt.empty())) return;
        IdSet ids(selection.partTypes.begin(), selection.partTypes.end());
        std::unordered_set<std::wstring> codes;
        for (const astr& code : selection.partTypesAlt)
            codes.insert(ToUtf16(code.c_str()));
        for (const PartType& part : project_.content.partTypes) {
            if (codes.contains(part.code)) ids.insert(part.id);
        }
        criteria_.push_back({&PlacedObject::partType, std::move(ids)});
    }

    /// "All" are those that lie in any.
    void AddAreas(Id PlacedObject::*member, AreaKind kind, const NameListInDwg& names) {
        if (names.IsEmpty()) return;
        std::map<std::pair<Id, std::wstring>, Id> areas;
        for (const DrawingArea& area : project_.content.areas) {
            if (area.kind == kind) areas.emplace(std::pair(area.drawing, area.name), area.id);
        }
        IdSet ids;
        for (const NameListInDwg::Entry& entry : names.entries) {
            const auto found = areas.find({IdOf(entry.drawing), entry.name.c_str()});
            if (found != areas.end()) ids.insert(found->second);
        }
        for (const auto& [name, id] : areas) {
            if (names.all) ids.insert(id);
        }
        criteria_.push_back({member, std::move(ids)});
    }

    /// Every object is in a layout or in model space.
    void AddLayouts(const NameListInDwg& names) {
        if (names.all || names.entries.empty()) return;
        std::map<std::pair<Id, std::wstring>, Id> layouts;
        for (const Layout& layout : project_.content.layouts)
            layouts.emplace(std::pair(layout.drawing, layout.name), layout.id);
        constexpr Id kNoLayout = -1;
        layouts_.emplace(0, kNoLayout);
        for (const NameListInDwg::Entry& entry : names.entries) {
            const Id drawing = IdOf(entry.drawing);
            const auto found = layouts.find({drawing, entry.name.c_str()});
            if (found != layouts.end()) layouts_.emplace(drawing, found->second);
            if (entry.name == kModelSpace) layouts_.emplace(drawing, 0);
        }
    }

    const ProjectIndex& project_;
    DrawingIndex drawings_;
    std::vector<Criterion> criteria_;
    std::set<std::pair<Id, Id>> layouts_;  // drawing and layout; empty: any
    std::vector<Rule> rules_;
};

template <class R>
ustr CodeAndName(const R* record) {
    return record ? ustr(record->code + L" " + record->name) : ustr();
}

ustr NumberAndName(const Room* room) {
    return room ? ustr(room->number + L" " + room->name) : ustr();
}

/// What the report tells of an object, by column.
std::array<ustr, 5> CellsOf(const ProjectIndex& project, const PlacedObject& object) {
    const Drawing* drawing = project.drawings[object.drawing];
    const Layout* layout = project.layouts[object.layout];
    return {CodeAndName(project.partTypes[object.partType]), CodeAndName(project.systems[object.system]),
            NumberAndName(project.rooms[object.room]), drawing ? ustr(drawing->fileName) : ustr(),
            layout ? ustr(layout->name) : ustr(kModelSpace)};
}

std::wstring LineOf(const ProjectIndex& project, const PlacedObject& object) {
    std::wstring line;
    for (const ustr& cell : CellsOf(project, object)) {
        if (cell.empty()) continue;
        if (!line.empty()) line += L", ";
        line += cell.c_str();
    }
    return line;
}

ObjPosInDwg PlaceOf(const ProjectIndex& project, const PlacedObject& object) {
    constexpr std::uint64_t kFirstHandle = 0x2A00;
    ObjPosInDwg place;
    if (const Drawing* drawing = project.drawings[object.drawing]) place.drawing = RefOf(project, *drawing).path;
    place.handle = kFirstHandle + static_cast<std::uint64_t>(object.id);
    place.x = object.x;
    place.y = object.y;
    place.z = object.z;
    place.hasPoint = true;
    return place;
}

}  // namespace

ObjectSelection::DrawingRef RefOf(const ProjectIndex& project, const Drawing& drawing) {
    ObjectSelection::DrawingRef ref;
    ref.id = static_cast<std::int32_t>(drawing.id);
    ref.path = std::wstring_view(project.paths.Of(drawing));
    return ref;
}

std::vector<const PlacedObject*> SelectedObjects(const ProjectIndex& project, const Data& selection,
                                                 Id currentDrawing) {
    std::vector<const PlacedObject*> selected;
    if (!selection.bySelectionSet) return selected;
    const Query query(project, selection, currentDrawing);
    for (const PlacedObject& object : project.content.objects) {
        if (query.Holds(object)) selected.push_back(&object);
    }
    return selected;
}

std::wstring ToText(const ProjectIndex& project, const Data& selection,
                    const std::vector<const PlacedObject*>& objects) {
    constexpr std::size_t kMost = 100;
    if (!selection.bySelectionSet) return L"the user picks the objects in the drawing\r\n";
    std::wstring text = L"selected " + std::to_wstring(objects.size()) + L" of " +
                        std::to_wstring(project.content.objects.size()) + L" objects\r\n";
    for (std::size_t i = 0; i < std::min(objects.size(), kMost); ++i)
        text += L"    " + LineOf(project, *objects[i]) + L"\r\n";
    if (objects.size() > kMost) text += L"    and " + std::to_wstring(objects.size() - kMost) + L" more\r\n";
    return text;
}

SimpleReport ReportOf(const ProjectIndex& project, const std::vector<const PlacedObject*>& objects, Lng::AppID app) {
    SimpleReport report(L"SelectedObjects");
    report.SetAppID(app);
    report.SetTitle(Lng::text(kSharedTexts, 95011, L"Selected objects"));
    report.AddColumn(Lng::text(kSharedTexts, 95012, L"Part type"), 230);
    report.AddColumn(Lng::text(kSharedTexts, 95013, L"System"), 210);
    report.AddColumn(Lng::text(kSharedTexts, 95014, L"Room"), 150);
    report.AddColumn(Lng::text(kSharedTexts, 95015, L"Drawing"), 100);
    report.AddColumn(Lng::text(kSharedTexts, 95016, L"Layout"), 90);
    report.ReserveRows(static_cast<int>(objects.size()));
    for (const PlacedObject* object : objects) {
        const int row = report.AddRow(PlaceOf(project, *object));
        int column = 0;
        for (const ustr& cell : CellsOf(project, *object))
            report.SetText(row, column++, cell);
    }
    return report;
}

}  // namespace ochost
