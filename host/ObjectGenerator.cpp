#include "host/ObjectGenerator.h"

#include <algorithm>
#include <cmath>
#include <cwctype>
#include <map>
#include <unordered_map>
#include <utility>

#include "host/DataText.h"

namespace ochost {
namespace {

using IdsByName = std::unordered_map<std::wstring, std::vector<Id>>;

template <class R>
const R& ById(const std::vector<R>& records, Id id) {
    return records[static_cast<std::size_t>(id - 1)];
}

/// "A-SA" of "A-SA01".
std::wstring KindOf(const System& system) {
    std::wstring kind = system.code;
    while (!kind.empty() && std::iswdigit(kind.back()))
        kind.pop_back();
    return kind;
}

/// How many words the texts share, such as "offices" and "south".
int SharedWords(const std::wstring& text, const std::wstring& other) {
    const auto wordsOf = [](std::wstring words) {
        for (wchar_t& c : words)
            c = std::iswalpha(c) ? static_cast<wchar_t>(std::towlower(c)) : L' ';
        return L" " + words + L" ";
    };
    const std::wstring words = wordsOf(text);
    const std::wstring others = wordsOf(other);
    int shared = 0;
    for (std::size_t from = 1, to; (to = words.find(L' ', from)) != std::wstring::npos; from = to + 1) {
        const std::wstring word = words.substr(from - 1, to - from + 2);
        if (word.size() > 5 && others.find(word) != std::wstring::npos) ++shared;
    }
    return shared;
}

/// A line of the placements.
struct Placement {
    explicit Placement(const DataRecord& record) : source(record) {}

    DataRecord source;
    std::vector<std::wstring> rooms;  // empty: in the diagrams
    Id discipline = 0;                // of the drawing
    std::vector<Id> parts;
    std::wstring system;
    Id series = 0;
    double areaOfOne = 0;  // m²; 0 when there is one a room
    int above = 0;         // mm
    int length = 0;
    std::vector<std::wstring> labels;
};

class ObjectGenerator {
public:
    ObjectGenerator(const TextSource& texts, Random& random, ProjectContent& project)
        : texts_(texts), random_(random), project_(project) {
        for (const Discipline& discipline : project.disciplines)
            disciplines_[discipline.code].push_back(discipline.id);
        for (const FittingSeries& series : project.fittingSeries)
            series_[series.name].push_back(series.id);
        for (const PartType& part : project.partTypes)
            parts_[SeriesOf(part)].push_back(part.id);
        for (const System& system : project.systems)
            systems_[KindOf(system)].push_back(system.id);
        for (const DrawingArea& area : project.areas)
            areas_[{area.drawing, area.kind}].push_back(area.id);
        for (const Layout& layout : project.layouts)
            layouts_[layout.drawing].push_back(layout.id);
        IndexRooms();
        IndexDrawings();
    }

    void Run() {
        for (const DataRecord& record : ReadData(texts_, "placements", 9)) {
            const Placement placement = ToPlacement(record);
            if (placement.rooms.empty()) PlaceInDiagrams(placement);
            for (const std::wstring& kind : placement.rooms)
                PlaceInRooms(placement, kind);
        }
    }

private:
    void IndexRooms() {
        std::map<Id, int> places;
        for (const Room& room : project_.rooms) {
            rooms_[room.name].push_back(room.id);
            placeOnFloor_.push_back(places[room.floor]++);
        }
    }

    void IndexDrawings() {
        for (const Drawing& drawing : project_.drawings) {
            if (drawing.floor != 0) plans_.emplace(std::pair(drawing.floor, drawing.discipline), drawing.id);
            if (areas_.contains({drawing.id, AreaKind::Page})) diagrams_[drawing.discipline].push_back(drawing.id);
        }
    }

    static const std::vector<Id>& Find(const IdsByName& ids, const DataRecord& record, std::size_t field,
                                       const wchar_t* what) {
        const auto found = ids.find(record.Text(field));
        if (found == ids.end())
            record.Refuse(std::wstring(L"there is no ") + what + L" \"" + record.Text(field) + L"\"");
        return found->second;
    }

    Placement ToPlacement(const DataRecord& record) const {
        Placement made{record};
        made.rooms = record.List(0);
        for (const std::wstring& room : made.rooms) {
            if (!rooms_.contains(room)) record.Refuse(L"there is no room \"" + room + L"\"");
        }
        made.discipline = Find(disciplines_, record, 1, L"discipline").front();
        made.parts = Find(parts_, record, 2, L"part");
        made.system = record.Text(3);
        if (!systems_.contains(L"A-" + made.system)) record.Refuse(L"there is no system \"" + made.system + L"\"");
        if (!record.Text(4).empty()) made.series = Find(series_, record, 4, L"fitting series").front();
        made.areaOfOne = record.Real(5);
        made.above = record.Integer(6);
        made.length = record.Integer(7);
        made.labels = record.List(8);
        return made;
    }

    void PlaceInRooms(const Placement& placement, const std::wstring& kind) {
        for (const Id id : rooms_[kind]) {
            const Room& room = ById(project_.rooms, id);
            const auto plan = plans_.find({room.floor, placement.discipline});
            if (plan == plans_.end()) continue;
            const double share = placement.areaOfOne > 0 ? room.area / placement.areaOfOne : 1;
            const int count = std::max(1, static_cast<int>(std::lround(share)));
            for (int i = 0; i < count; ++i)
                PlaceInRoom(placement, room, plan->second, count);
        }
    }

    void PlaceInRoom(const Placement& placement, const Room& room, Id drawing, int count) {
        const Floor& floor = ById(project_.floors, room.floor);
        const int place = placeOnFloor_[static_cast<std::size_t>(room.id - 1)];
        PlacedObject& object = Place(placement, drawing, SystemFor(placement, floor.building, room), room.zone);
        object.room = room.id;
        object.x = place % 12 * 6'000 + random_.Between(400, 5'600);
        object.y = place / 12 * 5'000 + random_.Between(400, 4'600);
        object.z = floor.elevation + placement.above;
        object.load = LoadOf(placement, room) / count;
    }

    void PlaceInDiagrams(const Placement& placement) {
        const std::vector<Id>& diagrams = diagrams_[placement.discipline];
        if (diagrams.empty()) placement.source.Refuse(L"the discipline has no drawing with pages");
        const auto buildings = static_cast<std::size_t>(project_.info.scale);
        for (std::size_t building = 0; building < buildings; ++building) {
            // Drawings and floors come building by building.
            const std::wstring& letter = project_.floors[building * (project_.floors.size() / buildings)].building;
            for (const Id system : systems_[letter + L"-" + placement.system]) {
                PlacedObject& object =
                    Place(placement, diagrams[building * (diagrams.size() / buildings)], system, system);
                object.x = random_.Between(0, 40) * 500;
                object.y = random_.Between(0, 20) * 500;
                object.load = random_.Between(10, 400);
            }
        }
    }

    /// `spot` decides which of the drawing's areas the object is in: those of a spot are in the same.
    PlacedObject& Place(const Placement& placement, Id drawing, Id system, Id spot) {
        PlacedObject object;
        object.id = std::ssize(project_.objects) + 1;
        object.drawing = drawing;
        const std::vector<Id>& layouts = layouts_[drawing];
        if (random_.Between(1, 16) == 1 && !layouts.empty()) object.layout = layouts.front();
        object.system = system;
        object.partType =
            placement.parts[static_cast<std::size_t>(random_.Between(0, static_cast<int>(placement.parts.size()) - 1))];
        object.fittingSeries = placement.series;
        object.selectionArea = AreaFor(drawing, AreaKind::Selection, spot);
        object.page = AreaFor(drawing, AreaKind::Page, spot);
        object.switchboardArea = AreaFor(drawing, AreaKind::Switchboard, spot);
        object.hostArea = AreaFor(drawing, AreaKind::Host, spot);
        object.number = ++numbers_[system];
        object.length = placement.length;
        object.labels = placement.labels;
        return project_.objects.emplace_back(std::move(object));
    }

    Id AreaFor(Id drawing, AreaKind kind, Id spot) const {
        const auto found = areas_.find({drawing, kind});
        if (found == areas_.end()) return 0;
        return found->second[static_cast<std::size_t>(spot) % found->second.size()];
    }

    /// Of the building's systems of the kind the one that serves the room's zone by name.
    Id SystemFor(const Placement& placement, const std::wstring& building, const Room& room) {
        Id& system = serving_[{placement.system, room.zone}];
        if (system != 0) return system;
        const std::vector<Id>& systems = systems_[building + L"-" + placement.system];
        system = systems[static_cast<std::size_t>(room.zone) % systems.size()];
        int mostWords = 0;
        for (const Id candidate : systems) {
            const int words = SharedWords(ById(project_.zones, room.zone).name, ById(project_.systems, candidate).name);
            if (words > mostWords) system = candidate;
            mostWords = std::max(words, mostWords);
        }
        return system;
    }

    /// What the room needs of it altogether.
    double LoadOf(const Placement& placement, const Room& room) {
        const std::wstring& discipline = ById(project_.disciplines, placement.discipline).code;
        if (discipline == L"V") return placement.system == L"SA" ? room.supplyAir : room.extractAir;
        if (discipline == L"H") return std::round(room.area * random_.Between(30, 45));
        if (discipline == L"W") return random_.Between(1, 4) / 10.0;
        return std::round(room.area * random_.Between(4, 12));
    }

    const TextSource& texts_;
    Random& random_;
    ProjectContent& project_;
    IdsByName disciplines_;
    IdsByName series_;
    IdsByName parts_;                                           // by series
    IdsByName systems_;                                         // by building and kind
    IdsByName rooms_;                                           // by kind
    std::map<std::pair<Id, AreaKind>, std::vector<Id>> areas_;  // by drawing
    std::map<std::pair<Id, Id>, Id> plans_;                     // by floor and discipline
    std::map<Id, std::vector<Id>> diagrams_;                    // by discipline
    std::map<Id, std::vector<Id>> layouts_;                     // by drawing
    std::map<std::pair<std::wstring, Id>, Id> serving_;         // systems by kind and zone
    std::map<Id, int> numbers_;                                 // used so far, by system
    std::vector<int> placeOnFloor_;                             // by room
};

}  // namespace

void PlaceObjects(const TextSource& texts, Random& random, ProjectContent& project) {
    ObjectGenerator(texts, random, project).Run();
}

}  // namespace ochost
