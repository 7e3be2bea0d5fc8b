#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ochost {

/// Key of a record within its own table: 1 and up; 0 means "none".
using Id = std::int64_t;

struct ProjectInfo {
    std::wstring name;
    std::wstring number;
    std::wstring client;
    std::wstring address;
    std::wstring designer;
    std::wstring startDate;  ///< ISO 8601, "2024-03-18"
    int scale = 1;           ///< number of buildings the project was generated with

    bool operator==(const ProjectInfo&) const = default;
};

/// Node of a tree. Lists of nodes are in display order: a parent directly before its descendants, level by level
/// deeper.
struct TreeNode {
    Id id = 0;
    Id parent = 0;  ///< 0 at the top
    int level = 0;  ///< 0 at the top; follows from the parents
    std::wstring name;

    bool operator==(const TreeNode&) const = default;
};

using Folder = TreeNode;
using PartGroup = TreeNode;
using PropertyGroup = TreeNode;

struct Discipline {
    Id id = 0;
    std::wstring code;  ///< one or two letters, as in drawing numbers: "V"
    std::wstring name;

    bool operator==(const Discipline&) const = default;
};

struct Floor {
    Id id = 0;
    std::wstring building;  ///< letter of the building: "A"
    std::wstring code;      ///< as in room and drawing numbers: "2", "K" for the basement
    std::wstring name;
    int elevation = 0;  ///< mm above the project's zero level
    int height = 0;     ///< mm from floor to floor

    bool operator==(const Floor&) const = default;
};

struct Drawing {
    Id id = 0;
    Id folder = 0;
    Id discipline = 0;
    Id floor = 0;           ///< 0 for schematics and details
    std::wstring fileName;  ///< without a path: "V-A02.dwg"
    std::wstring title;
    int scale = 50;  ///< 50 means 1:50; 0 when not to scale

    bool operator==(const Drawing&) const = default;
};

struct Layout {
    Id id = 0;
    Id drawing = 0;
    std::wstring name;

    bool operator==(const Layout&) const = default;
};

// stored: never renumber
enum class AreaKind { Selection = 1, Page = 2, Switchboard = 3, Host = 4 };

/// An area of a drawing, or a page of a diagram.
struct DrawingArea {
    Id id = 0;
    Id drawing = 0;
    AreaKind kind = AreaKind::Selection;
    std::wstring name;  ///< unique among those of its kind in its drawing

    bool operator==(const DrawingArea&) const = default;
};

/// A drawing that the user has taken from the model drawings.
struct LeftOutDrawing {
    Id drawing = 0;

    bool operator==(const LeftOutDrawing&) const = default;
};

/// Functional zone: the rooms of a floor that belong together in use.
struct Zone {
    Id id = 0;
    Id floor = 0;
    std::wstring number;
    std::wstring name;

    bool operator==(const Zone&) const = default;
};

struct Room {
    Id id = 0;
    Id floor = 0;
    Id zone = 0;
    std::wstring number;     ///< unique in the project: "A204"
    std::wstring name;       ///< kind of room: "Meeting room"
    double area = 0;         ///< m²
    int height = 0;          ///< mm, clear
    double temperature = 0;  ///< °C, design value in winter
    double supplyAir = 0;    ///< l/s
    double extractAir = 0;   ///< l/s

    bool operator==(const Room&) const = default;
};

struct System {
    Id id = 0;
    Id discipline = 0;
    std::wstring code;  ///< unique in the project: "A-SA01"
    std::wstring name;
    std::wstring medium;
    std::uint32_t colour = 0;  ///< 0xRRGGBB, the colour of its lines

    bool operator==(const System&) const = default;
};

struct PartType {
    Id id = 0;
    Id group = 0;
    Id discipline = 0;
    std::wstring code;  ///< unique in the project: "CDR-125"
    std::wstring name;
    std::wstring manufacturer;
    std::wstring size;  ///< as in a parts list: "125", "400x200", "DN25"

    bool operator==(const PartType&) const = default;
};

/// The series that its code begins with: "CDR" of "CDR-125".
inline std::wstring SeriesOf(const PartType& part) {
    return part.code.substr(0, part.code.find_first_of(L"-."));
}

/// How ducts, pipes or cable routes are joined.
struct FittingSeries {
    Id id = 0;
    Id discipline = 0;
    std::wstring name;
    std::wstring manufacturer;

    bool operator==(const FittingSeries&) const = default;
};

/// An object that stands in a drawing. Ids of 0 mean "none".
struct PlacedObject {
    Id id = 0;
    Id drawing = 0;
    Id layout = 0;  ///< 0 in model space
    Id room = 0;
    Id system = 0;
    Id partType = 0;
    Id fittingSeries = 0;
    Id selectionArea = 0;  ///< this and the following are a DrawingArea each, of its kind
    Id page = 0;
    Id switchboardArea = 0;
    Id hostArea = 0;
    int number = 0;  ///< within its system, from 1
    int x = 0;       ///< mm, the insertion point
    int y = 0;
    int z = 0;
    int length = 0;   ///< mm; 0 when it has none
    double load = 0;  ///< by design: l/s of air or water, W of heat, cold or electricity
    std::vector<std::wstring> labels;

    bool operator==(const PlacedObject&) const = default;
};

// stored: never renumber
enum class ValueType { Text = 1, Integer = 2, Real = 3, Boolean = 4, Choice = 5 };

struct Property {
    std::int32_t id = 0;  ///< what a custom property's format refers to; permanent
    Id group = 0;
    std::wstring name;
    std::wstring unit;  ///< empty when the value has none
    ValueType type = ValueType::Text;
    std::wstring sample;                ///< a typical value as shown to the user, with its unit: "1.2 kW"
    std::vector<std::wstring> choices;  ///< allowed values of a Choice, none otherwise

    bool operator==(const Property&) const = default;
};

/// A property composed from constant texts and other properties.
struct CustomProperty {
    std::int32_t id = 0;  ///< never used again after a delete
    std::wstring name;
    std::wstring format;  ///< "Text {12|mm} more {7}" with ids of properties

    bool operator==(const CustomProperty&) const = default;
};

/// What a report's column has for it in place of a Property's id.
inline std::int32_t ColumnIdOf(const CustomProperty& property) {
    return -100 - property.id;
}

/// A column of a report. Its members are as wide as what reports are defined with.
struct ReportColumn {
    std::int16_t property = 0;  ///< a Property's id, or ColumnIdOf a CustomProperty
    float width = 0;            ///< mm; characters in a text list
    std::uint8_t align = 0;     ///< 0 left, 1 centre, 2 right
    std::uint8_t subRow = 0;    ///< 0 is the first line of a row
    std::wstring header1;
    std::wstring header2;
    bool showUnits = false;

    bool operator==(const ReportColumn&) const = default;
};

/// What a kind of report shows, and of which parts.
struct ReportTemplate {
    std::int32_t id = 0;    ///< never used again
    std::int32_t app = 0;   ///< the application that it belongs to, a Lng::AppID
    std::int32_t type = 0;  ///< a ReportType
    std::wstring name;
    std::wstring description;
    std::uint16_t separator = 0;       ///< UTF-16 character between values, 0 for none
    std::vector<std::int32_t> groups;  ///< part groups and part types included, see ReportObjectTree
    std::vector<ReportColumn> columns;

    bool operator==(const ReportTemplate&) const = default;
};

/// Criteria by which objects are selected, as an application stored them.
struct StoredSelection {
    std::int32_t id = 0;   ///< never used again
    std::int32_t app = 0;  ///< the application, a Lng::AppID
    std::wstring name;     ///< empty: the criteria that the application used last, else a configuration
    std::wstring data;     ///< XML

    bool operator==(const StoredSelection&) const = default;
};

/// Who has locked a project for editing.
struct LockHolder {
    std::wstring user;
    std::wstring computer;
    std::int64_t process = 0;
    std::wstring since;  ///< ISO 8601, UTC: "2024-03-18 09:15:00"

    bool operator==(const LockHolder&) const = default;
};

/// Everything a project file holds, each list in display order.
struct ProjectContent {
    ProjectInfo info;
    std::vector<Folder> folders;
    std::vector<Discipline> disciplines;
    std::vector<Floor> floors;
    std::vector<Drawing> drawings;
    std::vector<Layout> layouts;
    std::vector<DrawingArea> areas;
    std::vector<LeftOutDrawing> leftOutDrawings;
    std::vector<Zone> zones;
    std::vector<Room> rooms;
    std::vector<System> systems;
    std::vector<PartGroup> partGroups;
    std::vector<PartType> partTypes;
    std::vector<FittingSeries> fittingSeries;
    std::vector<PlacedObject> objects;
    std::vector<PropertyGroup> propertyGroups;
    std::vector<Property> properties;
    std::vector<CustomProperty> customProperties;
    std::vector<ReportTemplate> reportTemplates;
    std::vector<StoredSelection> selections;

    bool operator==(const ProjectContent&) const = default;
};

}  // namespace ochost
