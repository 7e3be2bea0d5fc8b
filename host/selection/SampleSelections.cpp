#include "host/selection/SampleSelections.h"

#include <occommonui/UpdateDwgData.h>

#include <algorithm>
#include <cwctype>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/DataText.h"
#include "host/DataWords.h"
#include "host/selection/Evaluation.h"
#include "host/selection/ProjectIndex.h"
#include "host/selection/SelectionStore.h"

namespace ochost {
namespace {

using Names = std::vector<std::wstring>;
using Rule = ObjectSelection::Property;

constexpr Word kOperations[] = {
    {L"equal",          Rule::Equal         },
    {L"less",           Rule::Less          },
    {L"greaterOrEqual", Rule::GreaterOrEqual},
    {L"greater",        Rule::Greater       },
    {L"contains",       Rule::Contains      },
    {L"begins",         Rule::BeginsWith    },
};

// The fields of a selection.
enum Field : std::size_t {
    kName,
    kApp,
    kDrawings,
    kRooms,
    kFloors,
    kZones,
    kSystems,
    kSeries,
    kGroups,
    kRules,
    kCount
};

bool Has(const Names& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// "SA" of "A-SA01", "M" of "A2-M".
std::wstring KindOf(const std::wstring& code) {
    std::wstring kind = code.substr(code.find(L'-') + 1);
    while (!kind.empty() && std::iswdigit(kind.back()))
        kind.pop_back();
    return kind;
}

/// The id of a property that the project has, from the beginning of the text.
std::int32_t PropertyIn(const std::wstring& text, const ProjectIndex& project, const DataRecord& record) {
    const auto id = static_cast<std::int32_t>(std::wcstol(text.c_str(), nullptr, 10));
    if (!project.properties[id]) record.Refuse(L"there is no property of \"" + text + L"\"");
    return id;
}

class SelectionReader {
public:
    SelectionReader(const ProjectIndex& project, const DataRecord& record) : project_(project), record_(record) {}

    ObjectSelection::Data Read() const {
        ObjectSelection::Data data;
        data.bySelectionSet = true;
        ReadDrawings(data);
        ReadRooms(data);
        data.useFunctionalZones = ReadIds(kZones, data.functionalZones, project_.content.zones,
                                          [](const Zone& zone) { return KindOf(zone.number); });
        data.useSystems = ReadIds(kSystems, data.systems, project_.content.systems,
                                  [](const System& system) { return KindOf(system.code); });
        data.useFittingSeries = ReadIds(kSeries, data.fittingSeries, project_.content.fittingSeries,
                                        [](const FittingSeries& series) { return series.name; });
        ReadPartTypes(data);
        for (const std::wstring& rule : record_.List(kRules))
            data.filterRules.push_back(ToRule(rule));
        return data;
    }

private:
    /// Adds the ids of the records of which `nameOf` gives one of the names in the field; whether there are names.
    template <class R, class NameOf>
    bool ReadIds(Field field, std::vector<std::int32_t>& ids, const std::vector<R>& records, NameOf nameOf) const {
        const Names names = record_.List(field);
        for (const R& record : records) {
            if (Has(names, nameOf(record))) ids.push_back(static_cast<std::int32_t>(record.id));
        }
        return IsNamed(field, ids.empty());
    }

    /// Whether there are names in the field, of which some must have been found.
    bool IsNamed(Field field, bool noneFound) const {
        const bool named = !record_.Text(field).empty();
        if (named && noneFound) record_.Refuse(L"there is none of \"" + record_.Text(field) + L"\"");
        return named;
    }

    void ReadDrawings(ObjectSelection::Data& data) const {
        const Names disciplines = record_.List(kDrawings);
        for (const Drawing& drawing : project_.content.drawings) {
            if (Has(disciplines, project_.disciplines[drawing.discipline]->code)) {
                data.modelDrawings.push_back(RefOf(project_, drawing));
            }
        }
        data.useModelDrawings = IsNamed(kDrawings, data.modelDrawings.empty());
    }

    void ReadRooms(ObjectSelection::Data& data) const {
        const Names kinds = record_.List(kRooms);
        const Names floors = record_.List(kFloors);
        if (kinds.empty() && floors.empty()) return;
        for (const Room& room : project_.content.rooms) {
            if ((kinds.empty() || Has(kinds, room.name)) &&
                (floors.empty() || Has(floors, project_.floors[room.floor]->code))) {
                data.rooms.push_back(static_cast<std::int32_t>(room.id));
            }
        }
        data.useRooms = IsNamed(kinds.empty() ? kFloors : kRooms, data.rooms.empty());
    }

    std::set<Id> Groups() const {
        const Names wanted = record_.List(kGroups);
        std::set<Id> groups;
        std::map<Id, std::wstring> paths;
        for (const PartGroup& group : project_.content.partGroups) {
            const std::wstring path = group.parent == 0 ? group.name : paths[group.parent] + L"/" + group.name;
            if (groups.contains(group.parent) || Has(wanted, path)) groups.insert(group.id);
            paths.emplace(group.id, path);
        }
        IsNamed(kGroups, groups.empty());
        return groups;
    }

    void ReadPartTypes(ObjectSelection::Data& data) const {
        const std::set<Id> groups = Groups();
        const bool byName = NumberOf(record_, kApp, kApplications) == Lng::Schematics;
        data.usePartTypes = !groups.empty();
        for (const PartType& part : project_.content.partTypes) {
            if (!groups.contains(part.group)) continue;
            if (byName) data.partTypesAlt.push_back(orvaspace::ToUtf8(part.code));
            if (!byName) data.partTypes.push_back(static_cast<std::int32_t>(part.id));
        }
    }

    /// "99 greater 20"
    Rule ToRule(const std::wstring& text) const {
        const std::size_t first = std::min(text.find(L' '), text.size());
        const std::size_t second = std::min(text.find(L' ', first + 1), text.size());
        const std::wstring operation = text.substr(first, second - first);
        const auto word = std::find_if(std::begin(kOperations), std::end(kOperations),
                                       [&](const Word& row) { return operation == std::wstring(L" ") + row.name; });
        if (word == std::end(kOperations)) record_.Refuse(L"\"" + text + L"\" is no rule");
        Rule rule;
        rule.propId = PropertyIn(text, project_, record_);
        Rule::Criterion& criterion = rule.criteria.emplace_back();
        criterion.operation = static_cast<short>(word->number);
        criterion.value = std::wstring_view(text).substr(std::min(second + 1, text.size()));
        return rule;
    }

    const ProjectIndex& project_;
    const DataRecord& record_;
};

using DataByName = std::map<std::wstring, ObjectSelection::Data>;

DataByName AddConfigurations(ProjectStore& project, const ProjectIndex& index, const TextSource& texts) {
    DataByName added;
    for (const DataRecord& record : ReadData(texts, "selections", kCount)) {
        ObjectSelection::RecordData configuration;
        configuration.name = std::wstring_view(record.Text(kName));
        configuration.data = SelectionReader(index, record).Read();
        SelectionStore(project, static_cast<Lng::AppID>(NumberOf(record, kApp, kApplications))).Save(configuration);
        added.emplace(record.Text(kName), std::move(configuration.data));
    }
    return added;
}

void AddUpdateSets(const ProjectStore& project, const ProjectIndex& index, const DataByName& selections,
                   const TextSource& texts) {
    QBaseDb database(project.Path().c_str());
    for (const DataRecord& record : ReadData(texts, "update_sets", 3)) {
        UpdateDwgData::PrjDb::OptionsRec set;
        set.name = std::wstring_view(record.Text(0));
        for (const std::wstring& id : record.List(1))
            set.options.properties.insert(PropertyIn(id, index, record));
        if (const std::wstring name = record.Text(2); !name.empty()) {
            const auto selection = selections.find(name);
            if (selection == selections.end()) record.Refuse(L"there is no selection \"" + name + L"\"");
            set.options.selection = selection->second;
        }
        if (!UpdateDwgData::PrjDb::Write(database, set)) {
            throw Failure{FailureKind::System, std::wstring(std::wstring_view(database.GetErrorText()))};
        }
    }
}

}  // namespace

Status AddSampleSelections(ProjectStore& project, const TextSource& texts) try {
    const ProjectIndex index(project);
    AddUpdateSets(project, index, AddConfigurations(project, index, texts), texts);
    return Done{};
} catch (const Failure& failure) {
    return failure;
}

}  // namespace ochost
