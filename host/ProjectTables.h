#pragma once

#include <string>
#include <tuple>
#include <type_traits>

#include "host/ProjectRecords.h"
#include "host/Sqlite.h"

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

constexpr char kKey[] = "INTEGER PRIMARY KEY";
constexpr char kLastingKey[] = "INTEGER PRIMARY KEY AUTOINCREMENT";
constexpr char kInteger[] = "INTEGER NOT NULL";
constexpr char kReal[] = "REAL NOT NULL";
constexpr char kText[] = "TEXT NOT NULL";
constexpr char kName[] = "TEXT NOT NULL CHECK(name <> '')";
constexpr char kUniqueText[] = "TEXT NOT NULL UNIQUE";
constexpr char kInDiscipline[] = "INTEGER NOT NULL REFERENCES discipline";
constexpr char kInDrawing[] = "INTEGER NOT NULL REFERENCES drawing";
constexpr char kInFloor[] = "INTEGER NOT NULL REFERENCES floor";
constexpr char kInFolder[] = "INTEGER NOT NULL REFERENCES folder";
constexpr char kInPartGroup[] = "INTEGER NOT NULL REFERENCES part_group";
constexpr char kInPropertyGroup[] = "INTEGER NOT NULL REFERENCES property_group";
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
    Column{"scale",      kInteger, &ProjectInfo::scale    }
};

constexpr Table kFolderTable{
    "folder", Order::Tree, Column{"id",     kKey,         &Folder::id    },
      Column{"parent", kUnderFolder, &Folder::parent},
    Column{"name",   kName,        &Folder::name  }
};

constexpr Table kDisciplineTable{
    "discipline", Order::ByPosition, Column{"id",   kKey,        &Discipline::id  },
    Column{"code", kUniqueText, &Discipline::code},
      Column{"name", kName,       &Discipline::name}
};

constexpr Table kFloorTable{
    "floor",
    Order::ByPosition,
    Column{"id",        kKey,     &Floor::id       },
    Column{"building",  kText,    &Floor::building },
    Column{"code",      kText,    &Floor::code     },
    Column{"name",      kName,    &Floor::name     },
    Column{"elevation", kInteger, &Floor::elevation},
    Column{"height",    kInteger, &Floor::height   }
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
    Column{"scale",      kInteger,        &Drawing::scale     }
};

constexpr Table kLayoutTable{
    "layout", Order::ByPosition, Column{"id",      kKey,       &Layout::id     },
      Column{"drawing", kInDrawing, &Layout::drawing},
    Column{"name",    kName,      &Layout::name   }
};

constexpr Table kZoneTable{
    "zone",
    Order::ByPosition,
    Column{"id",     kKey,        &Zone::id    },
    Column{"floor",  kInFloor,    &Zone::floor },
    Column{"number", kUniqueText, &Zone::number},
    Column{"name",   kName,       &Zone::name  }
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
    Column{"extract_air", kReal,       &Room::extractAir }
};

constexpr Table kSystemTable{
    "system",
    Order::ByPosition,
    Column{"id",         kKey,          &System::id        },
    Column{"discipline", kInDiscipline, &System::discipline},
    Column{"code",       kUniqueText,   &System::code      },
    Column{"name",       kName,         &System::name      },
    Column{"medium",     kText,         &System::medium    },
    Column{"colour",     kInteger,      &System::colour    }
};

constexpr Table kPartGroupTable{
    "part_group", Order::Tree, Column{"id",     kKey,            &PartGroup::id    },
    Column{"parent", kUnderPartGroup, &PartGroup::parent},
      Column{"name",   kName,           &PartGroup::name  }
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
    Column{"size",         kText,         &PartType::size        }
};

constexpr Table kPropertyGroupTable{
    "property_group", Order::Tree, Column{"id",     kKey,                &PropertyGroup::id    },
    Column{"parent", kUnderPropertyGroup, &PropertyGroup::parent},
      Column{"name",   kName,               &PropertyGroup::name  }
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
    Column{"choices",        kText,            &Property::choices}
};

constexpr Table kCustomPropertyTable{
    "custom_property", Order::ById, Column{"id",     kLastingKey, &CustomProperty::id    },
    Column{"name",   kName,       &CustomProperty::name  },
      Column{"format", kText,       &CustomProperty::format}
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
    f(kZoneTable, content.zones);
    f(kRoomTable, content.rooms);
    f(kSystemTable, content.systems);
    f(kPartGroupTable, content.partGroups);
    f(kPartTypeTable, content.partTypes);
    f(kPropertyGroupTable, content.propertyGroups);
    f(kPropertyTable, content.properties);
    f(kCustomPropertyTable, content.customProperties);
}

}  // namespace ochost
