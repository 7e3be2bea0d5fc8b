#pragma once

#include <orvasql/Sqlite.h>

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/ProjectRecords.h"

namespace ochost {

// A member of a record as a cell of a table. What a file cannot have from this program throws as SQLITE_CORRUPT.

/// An id of 0 refers to nothing.
void BindCell(orvasql::Statement& statement, int parameter, Id value);
void BindCell(orvasql::Statement& statement, int parameter, std::int32_t value);
void BindCell(orvasql::Statement& statement, int parameter, std::uint32_t value);
void BindCell(orvasql::Statement& statement, int parameter, double value);
void BindCell(orvasql::Statement& statement, int parameter, const std::wstring& value);
void BindCell(orvasql::Statement& statement, int parameter, AreaKind value);
void BindCell(orvasql::Statement& statement, int parameter, ValueType value);
void BindCell(orvasql::Statement& statement, int parameter, const std::vector<std::wstring>& values);
void BindCell(orvasql::Statement& statement, int parameter, const std::vector<std::int32_t>& values);

[[noreturn]] void RefuseCell(const char* why);

template <std::integral T>
void ReadCell(const orvasql::Statement& statement, int column, T& value) {
    const std::int64_t number = statement.Integer(column);
    if (!std::in_range<T>(number)) RefuseCell("number out of range");
    value = static_cast<T>(number);
}

void ReadCell(const orvasql::Statement& statement, int column, bool& value);
void ReadCell(const orvasql::Statement& statement, int column, float& value);
void ReadCell(const orvasql::Statement& statement, int column, double& value);
void ReadCell(const orvasql::Statement& statement, int column, std::wstring& value);
void ReadCell(const orvasql::Statement& statement, int column, AreaKind& value);
void ReadCell(const orvasql::Statement& statement, int column, ValueType& value);
void ReadCell(const orvasql::Statement& statement, int column, std::vector<std::wstring>& values);
void ReadCell(const orvasql::Statement& statement, int column, std::vector<std::int32_t>& values);

}  // namespace ochost
