#pragma once

#include <orvasql/Sqlite.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/ProjectTables.h"
#include "host/TableCells.h"

namespace ochost {

// Creates, writes and reads the tables that ProjectTables.h describes.

template <class T, class F>
void ForEachColumn(const T& table, F&& f) {
    std::apply([&](const auto&... column) { (f(column), ...); }, table.columns);
}

template <class T>
std::string ColumnNames(const T& table) {
    std::string names;
    ForEachColumn(table, [&](const auto& column) { names.append(names.empty() ? "" : ", ").append(column.name); });
    return names;
}

template <class T>
std::string ColumnDefinitions(const T& table) {
    std::string definitions;
    ForEachColumn(table, [&](const auto& column) {
        definitions.append(definitions.empty() ? "" : ", ").append(column.name).append(" ").append(column.type);
    });
    return definitions;
}

template <class R, class... M>
std::string CreateSql(const Table<R, M...>& table) {
    std::string definitions = ColumnDefinitions(table);
    if (table.order != Order::ById) definitions += ", position INTEGER NOT NULL";
    const std::string name = table.name;
    std::string sql = "CREATE TABLE " + name + "(" + definitions + ") STRICT";
    if (table.order == Order::Tree) sql += "; CREATE INDEX " + name + "_parent ON " + name + "(parent)";
    return sql;
}

inline std::string InsertSql(std::string_view table, const std::string& columns) {
    std::string parameters = "?";
    for (const char c : columns) {
        if (c == ',') parameters += ", ?";
    }
    return "INSERT INTO " + std::string(table) + "(" + columns + ") VALUES(" + parameters + ")";
}

/// A tree comes depth first, each node followed by its level.
inline std::string TreeSql(std::string_view table) {
    std::string sql =
        "WITH RECURSIVE tree AS ("
        "SELECT id, parent, name, 0 AS level, position FROM $ WHERE parent IS NULL "
        "UNION ALL "
        "SELECT child.id, child.parent, child.name, tree.level + 1, child.position "
        "FROM tree JOIN $ AS child ON child.parent = tree.id "
        "ORDER BY level DESC, position) "
        "SELECT id, parent, name, level FROM tree";
    for (size_t at; (at = sql.find('$')) != std::string::npos;) {
        sql.replace(at, 1, table);
    }
    return sql;
}

template <class T>
std::string SelectSql(const T& table) {
    if (table.order == Order::Tree) return TreeSql(table.name);
    return "SELECT " + ColumnNames(table) + " FROM " + table.name +
           (table.order == Order::ByPosition ? " ORDER BY position, id" : " ORDER BY rowid");
}

/// Binds the record's cells to the parameters from this one on; returns the parameter after them.
template <class T, class R>
int BindCells(orvasql::Statement& statement, int parameter, const T& table, const R& record) {
    ForEachColumn(table, [&](const auto& column) { BindCell(statement, parameter++, record.*column.member); });
    return parameter;
}

/// Reads the record's cells from this column on; returns the column after them.
template <class T, class R>
int ReadCells(const orvasql::Statement& statement, int column, const T& table, R& record) {
    ForEachColumn(table, [&](const auto& cell) { ReadCell(statement, column++, record.*cell.member); });
    return column;
}

template <class R, class... M>
void WriteRows(orvasql::Database& database, const Table<R, M...>& table, const std::vector<R>& records) {
    const bool hasPosition = table.order != Order::ById;
    orvasql::Statement insert(database, InsertSql(table.name, ColumnNames(table) + (hasPosition ? ", position" : "")));
    std::int64_t position = 0;
    for (const R& record : records) {
        const int next = BindCells(insert, 1, table, record);
        if (hasPosition) insert.Bind(next, ++position);
        insert.Run();
    }
}

template <class R, class... M>
void WriteRows(orvasql::Database& database, const Table<R, M...>& table, const R& record) {
    WriteRows(database, table, std::vector<R>{record});
}

template <class R, class... M>
void ReadRows(orvasql::Database& database, const Table<R, M...>& table, std::vector<R>& records) {
    orvasql::Statement select(database, SelectSql(table));
    while (select.Step()) {
        R& record = records.emplace_back();
        const int next = ReadCells(select, 0, table, record);
        if constexpr (std::is_same_v<R, TreeNode>) ReadCell(select, next, record.level);
    }
}

template <class R, class... M>
void ReadRows(orvasql::Database& database, const Table<R, M...>& table, R& record) {
    std::vector<R> records;
    ReadRows(database, table, records);
    if (records.size() != 1) RefuseCell("not one record");
    record = std::move(records.front());
}

// ---- lists within records ----

template <class Owner, class R, class... M>
std::string CreateSql(const ListTable<Owner, R, M...>& table) {
    // The key stands first: PRAGMA quick_check of SQLite 3.40 finds NULLs in such a table when it does not.
    const std::string owner = table.owner;
    return "CREATE TABLE " + std::string(table.name) + "(" + owner + " INTEGER NOT NULL REFERENCES " + owner +
           ", position INTEGER NOT NULL, " + ColumnDefinitions(table) + ", PRIMARY KEY(" + owner +
           ", position)) STRICT, WITHOUT ROWID";
}

/// Writes the lists of these owners, which have none in the file.
template <class Owner, class R, class... M>
void WriteRows(orvasql::Database& database, const ListTable<Owner, R, M...>& table, const std::vector<Owner>& owners) {
    orvasql::Statement insert(database, InsertSql(table.name, table.owner + (", position, " + ColumnNames(table))));
    for (const Owner& owner : owners) {
        std::int64_t position = 0;
        for (const R& record : owner.*table.list) {
            insert.Bind(1, std::int64_t{owner.id});
            insert.Bind(2, ++position);
            BindCells(insert, 3, table, record);
            insert.Run();
        }
    }
}

/// Reads the list of each owner; `owners` are all that the file has, by id.
template <class Owner, class R, class... M>
void ReadRows(orvasql::Database& database, const ListTable<Owner, R, M...>& table, std::vector<Owner>& owners) {
    const std::string owner = table.owner;
    orvasql::Statement select(database, "SELECT " + owner + ", " + ColumnNames(table) + " FROM " + table.name +
                                            " ORDER BY " + owner + ", position");
    auto at = owners.begin();
    while (select.Step()) {
        const std::int64_t id = select.Integer(0);
        at = std::find_if(at, owners.end(), [&](const Owner& candidate) { return candidate.id == id; });
        if (at == owners.end()) RefuseCell("a list without its record");
        ReadCells(select, 1, table, ((*at).*table.list).emplace_back());
    }
}

}  // namespace ochost
