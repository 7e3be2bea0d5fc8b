#include "host/ReportDefinitions.h"

#include <algorithm>
#include <string_view>

namespace ochost {
namespace {

oce_columntype ToColumn(const ReportColumn& record) {
    oce_columntype column;
    column.propId = record.property;
    column.len = record.width;
    column.align = record.align;
    column.nSubRow = record.subRow;
    SetFixedText<&oce_columntype::hdr1>(column, record.header1);
    SetFixedText<&oce_columntype::hdr2>(column, record.header2);
    column.showUnits = record.showUnits;
    return column;
}

ReportColumn ToRecord(const oce_columntype& column) {
    ReportColumn record;
    record.property = column.propId;
    record.width = column.len;
    record.align = column.align;
    record.subRow = column.nSubRow;
    record.header1 = std::wstring_view(FixedText<&oce_columntype::hdr1>(column));
    record.header2 = std::wstring_view(FixedText<&oce_columntype::hdr2>(column));
    record.showUnits = column.showUnits;
    return record;
}

template <class T>
std::int16_t CountOf(const std::vector<T>& list, int limit) {
    return static_cast<std::int16_t>(std::min(std::ssize(list), std::ptrdiff_t{limit}));
}

}  // namespace

ReportDefinitionType ToDefinition(const ReportTemplate& record) {
    ReportDefinitionType definition;
    definition.id = record.id;
    SetFixedText<&ReportDefinitionType::name>(definition, record.name);
    SetFixedText<&ReportDefinitionType::description>(definition, record.description);
    definition.wcSeparator = record.separator;
    definition.groupCount = CountOf(record.groups, ReportDefinitionType::kMaxGroups);
    for (std::int16_t i = 0; i < definition.groupCount; ++i)
        definition.groups[i] = record.groups[static_cast<std::size_t>(i)];
    definition.columnCount = CountOf(record.columns, ReportDefinitionType::kMaxColumns);
    std::transform(record.columns.begin(), record.columns.begin() + definition.columnCount, definition.columns,
                   ToColumn);
    return definition;
}

ReportTemplate ToRecord(const ReportDefinitionType& definition, std::int32_t app, std::int32_t type) {
    ReportTemplate record;
    record.id = definition.id;
    record.app = app;
    record.type = type;
    record.name = std::wstring_view(FixedText<&ReportDefinitionType::name>(definition));
    record.description = std::wstring_view(FixedText<&ReportDefinitionType::description>(definition));
    record.separator = definition.wcSeparator;
    for (std::int16_t i = 0; i < definition.groupCount; ++i) {
        const std::int32_t group = definition.groups[i];  // no reference: it may lie at any address
        record.groups.push_back(group);
    }
    for (std::int16_t i = 0; i < definition.columnCount; ++i)
        record.columns.push_back(ToRecord(definition.columns[i]));
    return record;
}

}  // namespace ochost
