#include "host/ProjectGenerator.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <span>
#include <unordered_map>
#include <unordered_set>

#include "host/DataText.h"
#include "host/ObjectGenerator.h"
#include "host/Random.h"
#include "host/ReportTemplateData.h"

namespace ochost {
namespace {

struct ValueTypeName {
    const wchar_t* name;
    ValueType type;
};

constexpr ValueTypeName kValueTypes[] = {
    {L"text",    ValueType::Text   },
    {L"integer", ValueType::Integer},
    {L"real",    ValueType::Real   },
    {L"boolean", ValueType::Boolean},
    {L"choice",  ValueType::Choice },
};

/// Grows a tree from paths ("Geometry/Connections") in display order.
class TreeBuilder {
public:
    explicit TreeBuilder(std::vector<TreeNode>& nodes) : nodes_(nodes) {}

    /// The node at the end of the path, with its parents. A branch that was left cannot be taken up again.
    Id Node(const DataRecord& record, const std::vector<std::wstring>& path) {
        size_t level = 0;
        while (level < branch_.size() && level < path.size() && branch_[level].name == path[level])
            ++level;
        branch_.resize(level);
        for (; level < path.size(); ++level)
            Add(record, path[level]);
        if (branch_.empty()) record.Refuse(L"the group is missing");
        return branch_.back().id;
    }

private:
    void Add(const DataRecord& record, const std::wstring& name) {
        const Id parent = branch_.empty() ? 0 : branch_.back().id;
        if (!known_.insert(std::to_wstring(parent) + L"/" + name).second) {
            record.Refuse(L"the records of \"" + name + L"\" do not stand together");
        }
        const int level = static_cast<int>(branch_.size());
        branch_.push_back({std::ssize(nodes_) + 1, parent, level, name});
        nodes_.push_back(branch_.back());
    }

    std::vector<TreeNode>& nodes_;
    std::vector<TreeNode> branch_;
    std::unordered_set<std::wstring> known_;
};

/// A, B ... Z, AA, AB ...
std::wstring BuildingLetter(int index) {
    const std::wstring last(1, static_cast<wchar_t>(L'A' + index % 26));
    return index < 26 ? last : BuildingLetter(index / 26 - 1) + last;
}

std::wstring TwoDigits(int number) {
    return (number < 10 ? L"0" : L"") + std::to_wstring(number);
}

std::wstring Replaced(std::wstring text, std::wstring_view what, std::wstring_view by) {
    const size_t at = text.find(what);
    return at == std::wstring::npos ? text : text.replace(at, what.size(), by);
}

bool Contains(const std::vector<std::wstring>& list, const std::wstring& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

template <class R>
Id NextId(const std::vector<R>& records) {
    return std::ssize(records) + 1;
}

struct ZoneKind {
    std::wstring code;
    std::wstring name;
    std::vector<std::wstring> floors;
};

/// A line of the room programme.
struct RoomKind {
    explicit RoomKind(const DataRecord& record)
        : source(record),
          name(record.Text(0)),
          floors(record.List(1)),
          zones(record.List(2)),
          count(record.Integer(3)),
          areaFrom(Tenths(record, 4)),
          areaTo(Tenths(record, 5)),
          height(record.Integer(6)),
          temperature(record.Real(7)),
          supplyAir(record.Real(8)),
          extractAir(record.Real(9)) {
        if (zones.empty() || count < 0 || areaFrom > areaTo) record.Refuse(L"zones, number or area are wrong");
    }

    static int Tenths(const DataRecord& record, size_t field) {
        return static_cast<int>(std::lround(record.Real(field) * 10));
    }

    /// How many of the floor's rooms of this kind lie in the zone: spread evenly, the first zones take the rest.
    int CountIn(const std::wstring& zone) const {
        const auto place = static_cast<int>(std::find(zones.begin(), zones.end(), zone) - zones.begin());
        const int zoneCount = static_cast<int>(zones.size());
        if (place == zoneCount) return 0;
        return count / zoneCount + (place < count % zoneCount ? 1 : 0);
    }

    DataRecord source;
    std::wstring name;
    std::vector<std::wstring> floors;
    std::vector<std::wstring> zones;
    int count;
    int areaFrom;  // tenths of m²
    int areaTo;
    int height;
    double temperature;
    double supplyAir;  // l/s per m²
    double extractAir;
};

class Generator {
public:
    Generator(int scale, const TextSource& texts) : scale_(scale), texts_(texts) {}

    ProjectContent Run() {
        AddProject();
        AddDisciplines();
        AddFloors();
        AddDrawings();
        AddRooms();
        AddSystems();
        AddPartTypes();
        AddFittingSeries();
        PlaceObjects(texts_, random_, content_);
        AddProperties();
        AddCustomProperties();
        content_.reportTemplates = ReadReportTemplates(texts_, content_);
        return std::move(content_);
    }

private:
    std::vector<DataRecord> Read(std::string_view file, size_t fields) const { return ReadData(texts_, file, fields); }

    Id DisciplineOf(const DataRecord& record, size_t field) const {
        const std::wstring code = record.Text(field);
        for (const Discipline& discipline : content_.disciplines) {
            if (discipline.code == code) return discipline.id;
        }
        record.Refuse(L"there is no discipline \"" + code + L"\"");
    }

    void CheckFloors(const DataRecord& record, const std::vector<std::wstring>& codes) const {
        for (const std::wstring& code : codes) {
            if (!floorCodes_.contains(code)) record.Refuse(L"there is no floor \"" + code + L"\"");
        }
    }

    void AddProject() {
        const DataRecord record = Read("project", 6).front();
        content_.info = {record.Text(0), record.Text(1), record.Text(2), record.Text(3),
                         record.Text(4), record.Text(5), scale_};
    }

    void AddDisciplines() {
        for (const DataRecord& record : Read("disciplines", 2)) {
            content_.disciplines.push_back({NextId(content_.disciplines), record.Text(0), record.Text(1)});
        }
    }

    void AddFloors() {
        const auto records = Read("floors", 4);
        for (int building = 0; building < scale_; ++building) {
            for (const DataRecord& record : records) {
                content_.floors.push_back({NextId(content_.floors), BuildingLetter(building), record.Text(0),
                                           record.Text(1), record.Integer(2), record.Integer(3)});
                floorCodes_.insert(record.Text(0));
            }
        }
    }

    void AddDrawings() {
        TreeBuilder folders(content_.folders);
        const auto records = Read("drawings", 11);
        const size_t floorsEach = content_.floors.size() / static_cast<size_t>(scale_);
        for (int building = 0; building < scale_; ++building) {
            const auto floors =
                std::span(content_.floors).subspan(static_cast<size_t>(building) * floorsEach, floorsEach);
            for (const DataRecord& record : records) {
                AddDrawingSeries(folders, record, floors);
            }
        }
    }

    void AddDrawingSeries(TreeBuilder& folders, const DataRecord& record, std::span<const Floor> buildingFloors) {
        Floor none;
        none.building = buildingFloors.front().building;
        std::vector<std::wstring> path = record.List(0, '/');
        for (std::wstring& name : path) {
            name = Replaced(name, L"{building}", none.building);
        }
        const Id folder = folders.Node(record, path);
        const std::vector<std::wstring> codes = record.List(5);
        CheckFloors(record, codes);
        if (codes.empty()) AddDrawing(folder, record, none);
        for (const Floor& floor : buildingFloors) {
            if (Contains(codes, floor.code)) AddDrawing(folder, record, floor);
        }
    }

    void AddDrawing(Id folder, const DataRecord& record, const Floor& floor) {
        const Id id = NextId(content_.drawings);
        const std::wstring floorCode = (floor.code.size() < 2 ? L"0" : L"") + floor.code;
        std::wstring fileName = Replaced(record.Text(2), L"{building}", floor.building);
        fileName = Replaced(std::move(fileName), L"{floor}", floorCode);
        content_.drawings.push_back({id, folder, DisciplineOf(record, 1), floor.id, std::move(fileName),
                                     Replaced(record.Text(3), L"{name}", floor.name), record.Integer(4)});
        for (const std::wstring& name : record.List(6)) {
            content_.layouts.push_back({NextId(content_.layouts), id, name});
        }
        constexpr AreaKind kKinds[] = {AreaKind::Selection, AreaKind::Page, AreaKind::Switchboard, AreaKind::Host};
        size_t field = 7;
        for (const AreaKind kind : kKinds) {
            for (std::wstring& name : record.List(field++)) {
                name = Replaced(Replaced(std::move(name), L"{building}", floor.building), L"{floor}", floorCode);
                content_.areas.push_back({NextId(content_.areas), id, kind, std::move(name)});
            }
        }
    }

    void AddRooms() {
        std::vector<ZoneKind> zones;
        for (const DataRecord& record : Read("zones", 3)) {
            zones.push_back({record.Text(0), record.Text(1), record.List(2)});
            CheckFloors(record, zones.back().floors);
        }
        std::vector<RoomKind> rooms;
        for (const DataRecord& record : Read("rooms", 10)) {
            CheckRoomKind(rooms.emplace_back(record), zones);
        }
        for (const Floor& floor : content_.floors) {
            int number = 0;
            for (const ZoneKind& zone : zones) {
                if (Contains(zone.floors, floor.code)) AddZone(floor, zone, rooms, number);
            }
        }
    }

    /// Each of its zones must be on each of its floors, or rooms would be left out.
    void CheckRoomKind(const RoomKind& room, const std::vector<ZoneKind>& zones) const {
        CheckFloors(room.source, room.floors);
        for (const std::wstring& code : room.zones) {
            const auto zone = std::find_if(zones.begin(), zones.end(), [&](const auto& z) { return z.code == code; });
            for (const std::wstring& floor : room.floors) {
                if (zone != zones.end() && Contains(zone->floors, floor)) continue;
                room.source.Refuse(L"zone \"" + code + L"\" is not on floor \"" + floor + L"\"");
            }
        }
    }

    void AddZone(const Floor& floor, const ZoneKind& kind, const std::vector<RoomKind>& kinds, int& number) {
        std::vector<const RoomKind*> rooms;
        for (const RoomKind& room : kinds) {
            if (Contains(room.floors, floor.code)) {
                rooms.insert(rooms.end(), static_cast<size_t>(room.CountIn(kind.code)), &room);
            }
        }
        const Id zone = NextId(content_.zones);
        const std::wstring prefix = floor.building + floor.code;
        content_.zones.push_back({zone, floor.id, prefix + L"-" + kind.code, kind.name});
        random_.Shuffle(rooms);
        for (const RoomKind* room : rooms) {
            AddRoom(floor, zone, *room, prefix + TwoDigits(++number));
        }
    }

    void AddRoom(const Floor& floor, Id zone, const RoomKind& kind, const std::wstring& number) {
        const double area = random_.Between(kind.areaFrom, kind.areaTo) / 10.0;
        content_.rooms.push_back({NextId(content_.rooms), floor.id, zone, number, kind.name, area, kind.height,
                                  kind.temperature, std::round(area * kind.supplyAir),
                                  std::round(area * kind.extractAir)});
    }

    void AddSystems() {
        for (const DataRecord& record : Read("systems", 6)) {
            std::vector<std::wstring> areas = record.List(5);
            if (areas.empty()) areas.emplace_back();
            for (int building = 0; building < scale_; ++building) {
                const std::wstring prefix = BuildingLetter(building) + L"-" + record.Text(1);
                int number = 0;
                for (const std::wstring& area : areas) {
                    content_.systems.push_back({NextId(content_.systems), DisciplineOf(record, 0),
                                                prefix + TwoDigits(++number), Replaced(record.Text(2), L"{}", area),
                                                record.Text(3), record.Colour(4)});
                }
            }
        }
    }

    void AddPartTypes() {
        std::unordered_map<std::wstring, std::vector<std::wstring>> sizes;
        for (const DataRecord& record : Read("sizes", 2))
            sizes.emplace(record.Text(0), record.List(1));
        sizes.emplace(L"", std::vector<std::wstring>(1));
        const auto manufacturers = Read("manufacturers", 2);
        TreeBuilder groups(content_.partGroups);
        size_t series = 0;
        for (const DataRecord& record : Read("parts", 5)) {
            const auto found = sizes.find(record.Text(4));
            if (found == sizes.end()) record.Refuse(L"there are no sizes \"" + record.Text(4) + L"\"");
            const auto makers = MakersOf(record, manufacturers);
            const Id group = groups.Node(record, record.List(0, '/'));
            for (int range = 0; range < scale_; ++range) {
                const auto maker = (series + static_cast<size_t>(range)) % makers.size();
                AddPartSeries(group, record, found->second, makers[maker], range);
            }
            ++series;
        }
    }

    static std::vector<std::wstring> MakersOf(const DataRecord& part, const std::vector<DataRecord>& manufacturers) {
        std::vector<std::wstring> makers;
        for (const DataRecord& record : manufacturers) {
            if (Contains(record.List(1), part.Text(1))) makers.push_back(record.Text(0));
        }
        if (makers.empty()) part.Refuse(L"no manufacturer has this discipline");
        return makers;
    }

    void AddPartSeries(Id group, const DataRecord& record, const std::vector<std::wstring>& sizes,
                       const std::wstring& manufacturer, int range) {
        const Id discipline = DisciplineOf(record, 1);
        const std::wstring suffix = range == 0 ? L"" : L"." + std::to_wstring(range + 1);
        for (const std::wstring& size : sizes) {
            std::wstring code = record.Text(2) + (size.empty() ? L"" : L"-") + size + suffix;
            std::erase(code, L' ');
            content_.partTypes.push_back({NextId(content_.partTypes), group, discipline, std::move(code),
                                          record.Text(3) + (size.empty() ? L"" : L" ") + size, manufacturer, size});
        }
    }

    void AddFittingSeries() {
        for (const DataRecord& record : Read("fitting_series", 3)) {
            content_.fittingSeries.push_back(
                {NextId(content_.fittingSeries), DisciplineOf(record, 1), record.Text(0), record.Text(2)});
        }
    }

    void AddProperties() {
        TreeBuilder groups(content_.propertyGroups);
        for (const DataRecord& record : Read("properties", 7)) {
            content_.properties.push_back({record.Integer(0), groups.Node(record, record.List(1, '/')), record.Text(2),
                                           record.Text(3), TypeOf(record, 4), record.Text(5), record.List(6)});
        }
    }

    static ValueType TypeOf(const DataRecord& record, size_t field) {
        const std::wstring name = record.Text(field);
        for (const ValueTypeName& row : kValueTypes) {
            if (name == row.name) return row.type;
        }
        record.Refuse(L"there is no type \"" + name + L"\"");
    }

    void AddCustomProperties() {
        for (const DataRecord& record : Read("custom_properties", 2)) {
            const auto id = static_cast<std::int32_t>(NextId(content_.customProperties));
            content_.customProperties.push_back({id, record.Text(0), record.Text(1)});
        }
    }

    int scale_;
    const TextSource& texts_;
    ProjectContent content_;
    std::unordered_set<std::wstring> floorCodes_;
    Random random_;
};

}  // namespace

Result<ProjectContent> GenerateProject(int scale, const TextSource& texts) {
    if (scale < 1 || scale > kMaxScale) {
        return Failure{FailureKind::BadInput, L"The scale must be from 1 to " + std::to_wstring(kMaxScale) + L"."};
    }
    try {
        return Generator(scale, texts).Run();
    } catch (const Failure& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return Failure{FailureKind::System, L"There is not enough memory for a project of this scale."};
    }
}

Result<ProjectStore> OpenOrGenerateProject(const std::wstring& path, int scale,
                                           const ProjectStore::Completion& complete) {
    Result<ProjectStore> store = ProjectStore::Open(path);
    if (store || store.Error().kind != FailureKind::NotFound) return store;
    Result<ProjectContent> content = GenerateProject(scale);
    if (!content) return content.Error();
    return ProjectStore::Create(path, *content, complete);
}

}  // namespace ochost
