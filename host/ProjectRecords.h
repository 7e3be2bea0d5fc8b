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

/// Everything a project file holds, each list in display order.
struct ProjectContent {
    ProjectInfo info;
    std::vector<Folder> folders;
    std::vector<Discipline> disciplines;
    std::vector<Floor> floors;
    std::vector<Drawing> drawings;
    std::vector<Layout> layouts;
    std::vector<Zone> zones;
    std::vector<Room> rooms;
    std::vector<System> systems;
    std::vector<PartGroup> partGroups;
    std::vector<PartType> partTypes;
    std::vector<PropertyGroup> propertyGroups;
    std::vector<Property> properties;
    std::vector<CustomProperty> customProperties;

    bool operator==(const ProjectContent&) const = default;
};

}  // namespace ochost
