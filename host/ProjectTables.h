#pragma once

#include <string>
#include <tuple>
#include <vector>

#include "host/ProjectRecords.h"

namespace ochost {

// The tables of a project file: what the schema, the reading and the writing of a record follow.

template <class R, class M>
struct Column {
    const char* name;
    const char* type;
    M R::*member;
};
template <class R, class M>
Column(const char*, const char*, M R::*) -> Column<R, M>;

enum class Order { ById, ByPosition, Tree };

/// A table of records R; its columns in the order of the file. Except when ordered by id it has a last column
/// "position": the record's place in the display order of its list (in a tree: among its siblings).
template <class R, class... M>
struct Table {
    const char* name;
    Order order;
    std::tuple<Column<R, M>...> columns;

    constexpr Table(const char* tableName, Order listOrder, Column<R, M>... tableColumns)
        : name(tableName), order(listOrder), columns(tableColumns...) {}
};

/// A list that every record of the table `owner` has: a row holds the owner's id, the place in the list, and the
/// columns of its R.
template <class Owner, class R, class... M>
struct ListTable {
    const char* name;
    const char* owner;
    std::vector<R> Owner::*list;
    std::tuple<Column<R, M>...> columns;

    constexpr ListTable(const char* tableName, const char* ownerTable, std::vector<R> Owner::*ownerList,
                        Column<R, M>... tableColumns)
        : name(tableName), owner(ownerTable), list(ownerList), columns(tableColumns...) {}
};

constexpr char kKey[] = "INTEGER PRIMARY KEY";
constexpr char kLastingKey[] = "INTEGER PRIMARY KEY AUTOINCREMENT";
constexpr char kInteger[] = "INTEGER NOT NULL";
constexpr char kReal[] = "REAL NOT NULL";
constexpr char kText[] = "TEXT NOT NULL";
constexpr char kName[] = "TEXT NOT NULL CHECK(name <> '')";
constexpr char kUniqueText[] = "TEXT NOT NULL UNIQUE";
constexpr char kDrawingKey[] = "INTEGER PRIMARY KEY REFERENCES drawing";
constexpr char kInDiscipline[] = "INTEGER NOT NULL REFERENCES discipline";
constexpr char kInDrawing[] = "INTEGER NOT NULL REFERENCES drawing";
constexpr char kInFloor[] = "INTEGER NOT NULL REFERENCES floor";
constexpr char kInFolder[] = "INTEGER NOT NULL REFERENCES folder";
constexpr char kInPartGroup[] = "INTEGER NOT NULL REFERENCES part_group";
constexpr char kInPropertyGroup[] = "INTEGER NOT NULL REFERENCES property_group";
constexpr char kOfPartType[] = "INTEGER NOT NULL REFERENCES part_type";
constexpr char kOfSystem[] = "INTEGER NOT NULL REFERENCES system";
constexpr char kPerhapsInArea[] = "INTEGER REFERENCES drawing_area";
constexpr char kPerhapsInLayout[] = "INTEGER REFERENCES layout";
constexpr char kPerhapsInRoom[] = "INTEGER REFERENCES room";
constexpr char kPerhapsOfSeries[] = "INTEGER REFERENCES fitting_series";
constexpr char kInZone[] = "INTEGER NOT NULL REFERENCES zone";
constexpr char kPerhapsOnFloor[] = "INTEGER REFERENCES floor";
constexpr char kUnderFolder[] = "INTEGER REFERENCES folder";
constexpr char kUnderPartGroup[] = "INTEGER REFERENCES part_group";
constexpr char kUnderPropertyGroup[] = "INTEGER REFERENCES property_group";

constexpr Table kProjectTable{
    "project",
    Order::ById,
    Column{"name",       kName,    &ProjectInfo::name     },
    Column{"number",     kText,    &ProjectInfo::number   },
    Column{"client",     kText,    &ProjectInfo::client   },
    Column{"address",    kText,    &ProjectInfo::address  },
    Column{"designer",   kText,    &ProjectInfo::designer },
    Column{"start_date", kText,    &ProjectInfo::startDate},
    Column{"scale",      kInteger, &ProjectInfo::scale    },
};

constexpr Table kFolderTable{
    "folder",
    Order::Tree,
    Column{"id",     kKey,         &Folder::id    },
    Column{"parent", kUnderFolder, &Folder::parent},
    Column{"name",   kName,        &Folder::name  },
};

constexpr Table kDisciplineTable{
    "discipline",
    Order::ByPosition,
    Column{"id",   kKey,        &Discipline::id  },
    Column{"code", kUniqueText, &Discipline::code},
    Column{"name", kName,       &Discipline::name},
};

constexpr Table kFloorTable{
    "floor",
    Order::ByPosition,
    Column{"id",        kKey,     &Floor::id       },
    Column{"building",  kText,    &Floor::building },
    Column{"code",      kText,    &Floor::code     },
    Column{"name",      kName,    &Floor::name     },
    Column{"elevation", kInteger, &Floor::elevation},
    Column{"height",    kInteger, &Floor::height   },
};

constexpr Table kDrawingTable{
    "drawing",
    Order::ByPosition,
    Column{"id",         kKey,            &Drawing::id        },
    Column{"folder",     kInFolder,       &Drawing::folder    },
    Column{"discipline", kInDiscipline,   &Drawing::discipline},
    Column{"floor",      kPerhapsOnFloor, &Drawing::floor     },
    Column{"file_name",  kUniqueText,     &Drawing::fileName  },
    Column{"title",      kText,           &Drawing::title     },
    Column{"scale",      kInteger,        &Drawing::scale     },
};

constexpr Table kLayoutTable{
    "layout",
    Order::ByPosition,
    Column{"id",      kKey,       &Layout::id     },
    Column{"drawing", kInDrawing, &Layout::drawing},
    Column{"name",    kName,      &Layout::name   },
};

constexpr Table kAreaTable{
    "drawing_area",
    Order::ById,
    Column{"id",      kKey,       &DrawingArea::id     },
    Column{"drawing", kInDrawing, &DrawingArea::drawing},
    Column{"kind",    kInteger,   &DrawingArea::kind   },
    Column{"name",    kName,      &DrawingArea::name   },
};

constexpr Table kLeftOutDrawingTable{
    "left_out_drawing",
    Order::ById,
    Column{"drawing", kDrawingKey, &LeftOutDrawing::drawing},
};

constexpr Table kZoneTable{
    "zone",
    Order::ByPosition,
    Column{"id",     kKey,        &Zone::id    },
    Column{"floor",  kInFloor,    &Zone::floor },
    Column{"number", kUniqueText, &Zone::number},
    Column{"name",   kName,       &Zone::name  },
};

constexpr Table kRoomTable{
    "room",
    Order::ByPosition,
    Column{"id",          kKey,        &Room::id         },
    Column{"floor",       kInFloor,    &Room::floor      },
    Column{"zone",        kInZone,     &Room::zone       },
    Column{"number",      kUniqueText, &Room::number     },
    Column{"name",        kName,       &Room::name       },
    Column{"area",        kReal,       &Room::area       },
    Column{"height",      kInteger,    &Room::height     },
    Column{"temperature", kReal,       &Room::temperature},
    Column{"supply_air",  kReal,       &Room::supplyAir  },
    Column{"extract_air", kReal,       &Room::extractAir },
};

constexpr Table kSystemTable{
    "system",
    Order::ByPosition,
    Column{"id",         kKey,          &System::id        },
    Column{"discipline", kInDiscipline, &System::discipline},
    Column{"code",       kUniqueText,   &System::code      },
    Column{"name",       kName,         &System::name      },
    Column{"medium",     kText,         &System::medium    },
    Column{"colour",     kInteger,      &System::colour    },
};

constexpr Table kPartGroupTable{
    "part_group",
    Order::Tree,
    Column{"id",     kKey,            &PartGroup::id    },
    Column{"parent", kUnderPartGroup, &PartGroup::parent},
    Column{"name",   kName,           &PartGroup::name  },
};

constexpr Table kPartTypeTable{
    "part_type",
    Order::ByPosition,
    Column{"id",           kKey,          &PartType::id          },
    Column{"part_group",   kInPartGroup,  &PartType::group       },
    Column{"discipline",   kInDiscipline, &PartType::discipline  },
    Column{"code",         kUniqueText,   &PartType::code        },
    Column{"name",         kName,         &PartType::name        },
    Column{"manufacturer", kText,         &PartType::manufacturer},
    Column{"size",         kText,         &PartType::size        },
};

constexpr Table kFittingSeriesTable{
    "fitting_series",
    Order::ByPosition,
    Column{"id",           kKey,          &FittingSeries::id          },
    Column{"discipline",   kInDiscipline, &FittingSeries::discipline  },
    Column{"name",         kName,         &FittingSeries::name        },
    Column{"manufacturer", kText,         &FittingSeries::manufacturer},
};

constexpr Table kObjectTable{
    "placed_object",
    Order::ById,
    Column{"id",               kKey,             &PlacedObject::id             },
    Column{"drawing",          kInDrawing,       &PlacedObject::drawing        },
    Column{"layout",           kPerhapsInLayout, &PlacedObject::layout         },
    Column{"room",             kPerhapsInRoom,   &PlacedObject::room           },
    Column{"system",           kOfSystem,        &PlacedObject::system         },
    Column{"part_type",        kOfPartType,      &PlacedObject::partType       },
    Column{"fitting_series",   kPerhapsOfSeries, &PlacedObject::fittingSeries  },
    Column{"selection_area",   kPerhapsInArea,   &PlacedObject::selectionArea  },
    Column{"page",             kPerhapsInArea,   &PlacedObject::page           },
    Column{"switchboard_area", kPerhapsInArea,   &PlacedObject::switchboardArea},
    Column{"host_area",        kPerhapsInArea,   &PlacedObject::hostArea       },
    Column{"number",           kInteger,         &PlacedObject::number         },
    Column{"x",                kInteger,         &PlacedObject::x              },
    Column{"y",                kInteger,         &PlacedObject::y              },
    Column{"z",                kInteger,         &PlacedObject::z              },
    Column{"length",           kInteger,         &PlacedObject::length         },
    Column{"load",             kReal,            &PlacedObject::load           },
    Column{"labels",           kText,            &PlacedObject::labels         },
};

constexpr Table kPropertyGroupTable{
    "property_group",
    Order::Tree,
    Column{"id",     kKey,                &PropertyGroup::id    },
    Column{"parent", kUnderPropertyGroup, &PropertyGroup::parent},
    Column{"name",   kName,               &PropertyGroup::name  },
};

constexpr Table kPropertyTable{
    "property",
    Order::ByPosition,
    Column{"id",             kKey,             &Property::id     },
    Column{"property_group", kInPropertyGroup, &Property::group  },
    Column{"name",           kName,            &Property::name   },
    Column{"unit",           kText,            &Property::unit   },
    Column{"type",           kInteger,         &Property::type   },
    Column{"sample",         kText,            &Property::sample },
    Column{"choices",        kText,            &Property::choices},
};

constexpr Table kCustomPropertyTable{
    "custom_property",
    Order::ById,
    Column{"id",     kLastingKey, &CustomProperty::id    },
    Column{"name",   kName,       &CustomProperty::name  },
    Column{"format", kText,       &CustomProperty::format},
};

constexpr Table kReportTemplateTable{
    "report_template",
    Order::ById,
    Column{"id",          kLastingKey, &ReportTemplate::id         },
    Column{"app",         kInteger,    &ReportTemplate::app        },
    Column{"type",        kInteger,    &ReportTemplate::type       },
    Column{"name",        kName,       &ReportTemplate::name       },
    Column{"description", kText,       &ReportTemplate::description},
    Column{"separator",   kInteger,    &ReportTemplate::separator  },
    Column{"part_groups", kText,       &ReportTemplate::groups     },
};

constexpr ListTable kReportColumnTable{
    "report_column",
    "report_template",
    &ReportTemplate::columns,
    Column{"property",   kInteger, &ReportColumn::property },
    Column{"width",      kReal,    &ReportColumn::width    },
    Column{"align",      kInteger, &ReportColumn::align    },
    Column{"sub_row",    kInteger, &ReportColumn::subRow   },
    Column{"header1",    kText,    &ReportColumn::header1  },
    Column{"header2",    kText,    &ReportColumn::header2  },
    Column{"show_units", kInteger, &ReportColumn::showUnits},
};

constexpr Table kSelectionTable{
    "selection",
    Order::ById,
    Column{"id",   kLastingKey, &StoredSelection::id  },
    Column{"app",  kInteger,    &StoredSelection::app },
    Column{"name", kText,       &StoredSelection::name},
    Column{"data", kText,       &StoredSelection::data},
};

/// No row while nobody has locked the project. A row may be left behind by a program that has ended.
constexpr Table kLockTable{
    "project_lock",
    Order::ById,
    Column{"user",     kText,    &LockHolder::user    },
    Column{"computer", kText,    &LockHolder::computer},
    Column{"process",  kInteger, &LockHolder::process },
    Column{"since",    kText,    &LockHolder::since   },
};

/// Calls f(table, list) for every list of the content, what is referred to before what refers to it.
template <class Content, class F>
void ForEachTable(Content& content, F&& f) {
    f(kProjectTable, content.info);
    f(kFolderTable, content.folders);
    f(kDisciplineTable, content.disciplines);
    f(kFloorTable, content.floors);
    f(kDrawingTable, content.drawings);
    f(kLayoutTable, content.layouts);
    f(kAreaTable, content.areas);
    f(kLeftOutDrawingTable, content.leftOutDrawings);
    f(kZoneTable, content.zones);
    f(kRoomTable, content.rooms);
    f(kSystemTable, content.systems);
    f(kPartGroupTable, content.partGroups);
    f(kPartTypeTable, content.partTypes);
    f(kFittingSeriesTable, content.fittingSeries);
    f(kObjectTable, content.objects);
    f(kPropertyGroupTable, content.propertyGroups);
    f(kPropertyTable, content.properties);
    f(kCustomPropertyTable, content.customProperties);
    f(kReportTemplateTable, content.reportTemplates);
    f(kReportColumnTable, content.reportTemplates);
    f(kSelectionTable, content.selections);
}

}  // namespace ochost
