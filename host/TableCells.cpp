#include "host/TableCells.h"

#include <sqlite3.h>

#include <cmath>
#include <cwchar>
#include <limits>

namespace ochost {
namespace {

std::wstring Joined(const std::vector<std::wstring>& values) {
    std::wstring joined;
    for (const std::wstring& value : values) {
        if (&value != values.data()) joined += L'|';
        joined += value;
    }
    return joined;
}

std::vector<std::wstring> Parted(const std::wstring& joined) {
    std::vector<std::wstring> values;
    if (joined.empty()) return values;
    for (size_t from = 0; from != std::wstring::npos;) {
        const size_t bar = joined.find(L'|', from);
        values.push_back(joined.substr(from, bar == std::wstring::npos ? bar : bar - from));
        from = bar == std::wstring::npos ? bar : bar + 1;
    }
    return values;
}

std::int32_t ToNumber(const std::wstring& text) {
    wchar_t* end = nullptr;
    const std::int64_t number = std::wcstoll(text.c_str(), &end, 10);
    if (text.empty() || *end || !std::in_range<std::int32_t>(number)) RefuseCell("not a list of numbers");
    return static_cast<std::int32_t>(number);
}

/// Reads one of the enumerators from the first to the last.
template <class Kind>
void ReadKind(const orvasql::Statement& statement, int column, Kind first, Kind last, Kind& value) {
    const std::int64_t number = statement.Integer(column);
    if (number < static_cast<int>(first) || number > static_cast<int>(last)) RefuseCell("unknown kind");
    value = static_cast<Kind>(number);
}

}  // namespace

void RefuseCell(const char* why) {
    throw orvasql::SqlError(SQLITE_CORRUPT, why);
}

void BindCell(orvasql::Statement& statement, int parameter, Id value) {
    value != 0 ? statement.Bind(parameter, value) : statement.BindNull(parameter);
}

void BindCell(orvasql::Statement& statement, int parameter, std::int32_t value) {
    statement.Bind(parameter, std::int64_t{value});
}

void BindCell(orvasql::Statement& statement, int parameter, std::uint32_t value) {
    statement.Bind(parameter, std::int64_t{value});
}

void BindCell(orvasql::Statement& statement, int parameter, double value) {
    statement.Bind(parameter, value);
}

void BindCell(orvasql::Statement& statement, int parameter, const std::wstring& value) {
    statement.Bind(parameter, value);
}

void BindCell(orvasql::Statement& statement, int parameter, AreaKind value) {
    statement.Bind(parameter, static_cast<std::int64_t>(value));
}

void BindCell(orvasql::Statement& statement, int parameter, ValueType value) {
    statement.Bind(parameter, static_cast<std::int64_t>(value));
}

void BindCell(orvasql::Statement& statement, int parameter, const std::vector<std::wstring>& values) {
    statement.Bind(parameter, Joined(values));
}

void BindCell(orvasql::Statement& statement, int parameter, const std::vector<std::int32_t>& values) {
    std::vector<std::wstring> texts;
    texts.reserve(values.size());
    for (const std::int32_t value : values)
        texts.push_back(std::to_wstring(value));
    statement.Bind(parameter, Joined(texts));
}

void ReadCell(const orvasql::Statement& statement, int column, bool& value) {
    value = statement.Integer(column) != 0;
}

void ReadCell(const orvasql::Statement& statement, int column, float& value) {
    const double number = statement.Real(column);
    if (std::abs(number) > std::numeric_limits<float>::max()) RefuseCell("number out of range");
    value = static_cast<float>(number);
}

void ReadCell(const orvasql::Statement& statement, int column, double& value) {
    value = statement.Real(column);
}

void ReadCell(const orvasql::Statement& statement, int column, std::wstring& value) {
    value = statement.Text(column);
}

void ReadCell(const orvasql::Statement& statement, int column, AreaKind& value) {
    ReadKind(statement, column, AreaKind::Selection, AreaKind::Host, value);
}

void ReadCell(const orvasql::Statement& statement, int column, ValueType& value) {
    ReadKind(statement, column, ValueType::Text, ValueType::Choice, value);
}

void ReadCell(const orvasql::Statement& statement, int column, std::vector<std::wstring>& values) {
    values = Parted(statement.Text(column));
}

void ReadCell(const orvasql::Statement& statement, int column, std::vector<std::int32_t>& values) {
    values.clear();
    for (const std::wstring& text : Parted(statement.Text(column)))
        values.push_back(ToNumber(text));
}

}  // namespace ochost
