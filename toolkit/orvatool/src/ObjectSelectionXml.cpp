#include <orvatool/ObjectSelection.h>

#include <orvatool/QBaseDb.h>
#include <ticpp.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace ObjectSelection {
namespace {

// A record as a table of rows, each of which says what an attribute or a child element is called and which member it
// holds. Writing and reading walk the same table. Reading throws when an attribute is missing or is no value of its
// member.

template <class Record>
struct Item {
    void (*write)(ticpp::Element& element, const char* name, const Record& record);
    void (*read)(const ticpp::Element& element, const char* name, Record& record);
};

template <class Record>
struct Row {
    const char* name;
    Item<Record> item;
};

template <class Record, std::size_t n>
void WriteRows(ticpp::Element& element, const Row<Record> (&rows)[n], const Record& record) {
    for (const Row<Record>& row : rows)
        row.item.write(element, row.name, record);
}

template <class Record, std::size_t n>
void ReadRows(const ticpp::Element& element, const Row<Record> (&rows)[n], Record& record) {
    for (const Row<Record>& row : rows)
        row.item.read(element, row.name, record);
}

template <class T>
struct Member;
template <class Record, class T>
struct Member<T Record::*> {
    using Owner = Record;
    using Value = T;
};
template <auto member>
using Owner = typename Member<decltype(member)>::Owner;
template <auto member>
using Value = typename Member<decltype(member)>::Value;
template <auto entries>
using Entry = typename Value<entries>::value_type;

// ---- An attribute: a number, a flag or a text

template <class T>
void WriteValue(ticpp::Element& element, const char* name, const T& value) {
    if constexpr (std::is_convertible_v<const T&, const ustr&>) {
        element.SetAttribute(name, orvaspace::ToUtf8(value));
    } else {
        element.SetAttribute(name, value);
    }
}
template <class T>
void ReadValue(const ticpp::Element& element, const char* name, T& value) {
    if constexpr (std::is_convertible_v<const T&, const ustr&>) {
        value = orvaspace::ToWide(element.GetAttribute(name));
    } else if constexpr (std::is_same_v<T, astr>) {
        value = std::string_view(element.GetAttribute(name));
    } else {
        element.GetAttribute(name, &value);
    }
}
// Holds all of a record that is no more than a value.
template <class T>
constexpr Item<T> kValue{WriteValue<T>, ReadValue<T>};

template <auto member>
void WriteAttribute(ticpp::Element& element, const char* name, const Owner<member>& record) {
    WriteValue(element, name, record.*member);
}
template <auto member>
void ReadAttribute(const ticpp::Element& element, const char* name, Owner<member>& record) {
    ReadValue(element, name, record.*member);
}
template <auto member>
constexpr Item<Owner<member>> kAttribute{WriteAttribute<member>, ReadAttribute<member>};

// ---- A record within another

template <class Record>
constexpr Row<Record> kRows[] = {};  // each record has its own

// In the same element; the name says nothing.
template <auto member>
void WriteInline(ticpp::Element& element, const char* /*name*/, const Owner<member>& record) {
    WriteRows(element, kRows<Value<member>>, record.*member);
}
template <auto member>
void ReadInline(const ticpp::Element& element, const char* /*name*/, Owner<member>& record) {
    ReadRows(element, kRows<Value<member>>, record.*member);
}
template <auto member>
constexpr Item<Owner<member>> kInline{WriteInline<member>, ReadInline<member>};

// A child element of this name for each entry of a vector.
template <auto entries>
void WriteItems(ticpp::Element& element, const char* name, const Owner<entries>& record) {
    const ticpp::Element blank(name);
    for (const Entry<entries>& entry : record.*entries)
        WriteRows(*element.InsertEndChild(blank)->ToElement(), kRows<Entry<entries>>, entry);
}
template <auto entries>
void ReadItems(const ticpp::Element& element, const char* name, Owner<entries>& record) {
    const ticpp::Element* child = element.FirstChildElement(name, false);
    for (; child; child = child->NextSiblingElement(name, false))
        ReadRows(*child, kRows<Entry<entries>>, (record.*entries).emplace_back());
}
template <auto entries>
constexpr Item<Owner<entries>> kItems{WriteItems<entries>, ReadItems<entries>};

// ---- What projects hold. Names never change. A name that is added needs a higher format only when programs that do
// not know it must not read on without it.

constexpr int kFormat = 20261101;

template <>
constexpr Row<std::int32_t> kRows<std::int32_t>[] = {
    {"Id", kValue<std::int32_t>},
};
template <>
constexpr Row<astr> kRows<astr>[] = {
    {"Name", kValue<astr>},
};
template <>
constexpr Row<DrawingRef> kRows<DrawingRef>[] = {
    {"Id",   kAttribute<&DrawingRef::id>  },
    {"Path", kAttribute<&DrawingRef::path>},
};
template <>
constexpr Row<NameListInDwg::Entry> kRows<NameListInDwg::Entry>[] = {
    {"",     kInline<&NameListInDwg::Entry::drawing>},
    {"Name", kAttribute<&NameListInDwg::Entry::name>},
};
template <>
constexpr Row<NameListInDwg> kRows<NameListInDwg>[] = {
    {"All",  kAttribute<&NameListInDwg::all>},
    {"Item", kItems<&NameListInDwg::entries>},
};
template <>
constexpr Row<Property::Criterion> kRows<Property::Criterion>[] = {
    {"Operation", kAttribute<&Property::Criterion::operation>},
    {"Value",     kAttribute<&Property::Criterion::value>    },
};
template <>
constexpr Row<Property> kRows<Property>[] = {
    {"PropId",        kAttribute<&Property::propId>       },
    {"MatchAll",      kAttribute<&Property::matchAll>     },
    {"CaseSensitive", kAttribute<&Property::caseSensitive>},
    {"Tolerance",     kAttribute<&Property::tolerance>    },
    {"Criterion",     kItems<&Property::criteria>         },
};
constexpr Row<Data> kModeRows[] = {
    {"BySelectionSet", kAttribute<&Data::bySelectionSet>},
    {"CurrentDrawing", kAttribute<&Data::currentDrawing>},
};

// A child element with the attribute "Use", where the category has a flag for it, and what is chosen.
struct CategoryRow {
    const char* name;
    const Item<Data>* use;
    Item<Data> chosen;
};
constexpr CategoryRow kCategories[] = {
    {"ModelDrawings",    &kAttribute<&Data::useModelDrawings>,   kItems<&Data::modelDrawings>    },
    {"Rooms",            &kAttribute<&Data::useRooms>,           kItems<&Data::rooms>            },
    {"FunctionalZones",  &kAttribute<&Data::useFunctionalZones>, kItems<&Data::functionalZones>  },
    {"Systems",          &kAttribute<&Data::useSystems>,         kItems<&Data::systems>          },
    {"FittingSeries",    &kAttribute<&Data::useFittingSeries>,   kItems<&Data::fittingSeries>    },
    {"PartTypes",        &kAttribute<&Data::usePartTypes>,       kItems<&Data::partTypes>        },
    {"FilterRules",      nullptr,                                kItems<&Data::filterRules>      },
    {"Layouts",          nullptr,                                kInline<&Data::layouts>         },
    {"SelectionAreas",   nullptr,                                kInline<&Data::selectionAreas>  },
    {"PartTypesAlt",     nullptr,                                kItems<&Data::partTypesAlt>     },
    {"Pages",            nullptr,                                kInline<&Data::pages>           },
    {"SwitchboardAreas", nullptr,                                kInline<&Data::switchboardAreas>},
    {"HostAreas",        nullptr,                                kInline<&Data::hostAreas>       },
};
constexpr char kUse[] = "Use";
constexpr char kChosen[] = "Item";

void Clear(ticpp::Element& element) {
    element.Clear();
    while (const ticpp::Attribute* attribute = element.FirstAttribute(false))
        element.RemoveAttribute(attribute->Name());
}

void Write(ticpp::Element& element, const Data& data) {
    element.SetAttribute("Version", kFormat);
    element.SetAttribute("Format", kFormat);
    WriteRows(element, kModeRows, data);
    for (const CategoryRow& row : kCategories) {
        ticpp::Element& category = *element.InsertEndChild(ticpp::Element(row.name))->ToElement();
        if (row.use) row.use->write(category, kUse, data);
        row.chosen.write(category, kChosen, data);
    }
}

Data Read(const ticpp::Element& element) {
    element.GetAttribute<int>("Version");
    if (element.GetAttribute<int>("Format") > kFormat) throw ticpp::Exception("The format is newer than the program");
    Data data;
    ReadRows(element, kModeRows, data);
    for (const CategoryRow& row : kCategories) {
        const ticpp::Element* category = element.FirstChildElement(row.name, false);
        if (!category) continue;
        if (row.use) row.use->read(*category, kUse, data);
        row.chosen.read(*category, kChosen, data);
    }
    return data;
}

constexpr NameListInDwg Data::*kNameLists[] = {&Data::layouts, &Data::selectionAreas, &Data::pages,
                                               &Data::switchboardAreas, &Data::hostAreas};

// The paths of drawings in the project, each looked up once, all of them in one state of the database.
class DrawingPaths {
public:
    explicit DrawingPaths(const QBaseDb& db) : db_(db) {}

    // Brings the path up to date; one that the project does not have stays.
    void Update(DrawingRef& drawing) {
        if (drawing.id <= 0) return;
        const auto [place, isNew] = paths_.try_emplace(drawing.id);
        if (isNew) place->second = Find(drawing.id);
        if (!place->second.empty()) drawing.path = place->second;
    }

private:
    ustr Find(std::int32_t id) {
        if (!scope_) scope_.emplace(db_, 0, 1);
        char objId[16];
        std::snprintf(objId, sizeof objId, "%06d", static_cast<int>(id));
        const auto release = [this](QBaseDb::Rec* rec) { db_.releaseRec(rec); };
        const std::unique_ptr<QBaseDb::Rec, decltype(release)> rec(db_.findRec(kDrawingRecord, objId), release);
        ustr path;
        if (rec) db_.copyWsz(rec.get(), kDrawingPath, path);
        return path;
    }

    const QBaseDb& db_;
    std::optional<QBaseDb::QuickMode> scope_;
    std::unordered_map<std::int32_t, ustr> paths_;
};

void UpdatePaths(const QBaseDb& db, Data& data) {
    DrawingPaths paths(db);
    for (DrawingRef& drawing : data.modelDrawings)
        paths.Update(drawing);
    for (const auto names : kNameLists) {
        for (NameListInDwg::Entry& entry : (data.*names).entries)
            paths.Update(entry.drawing);
    }
}

}  // namespace

bool Data::ToXml(ticpp::Element& element) const {
    try {
        Clear(element);
        Write(element, *this);
        return true;
    } catch (...) {
        return false;
    }
}

bool Data::FromXml(const QBaseDb& db, const ticpp::Element& element) {
    try {
        Data read = Read(element);
        UpdatePaths(db, read);
        *this = std::move(read);
        return true;
    } catch (...) {
        *this = Data();
        return false;
    }
}

}  // namespace ObjectSelection
