#include <occommonui/ReportDefinitionType.h>

#include <algorithm>

bool ReportDefinitionType::hasPropId(short propId) const {
    const int used = std::clamp<int>(columnCount, 0, kMaxColumns);
    return std::any_of(columns, columns + used,
                       [propId](const oce_columntype& column) { return column.propId == propId; });
}
