#pragma once

#include <gtest/gtest.h>
#include <occommonui/ReportFilter.h>

#include <cstring>
#include <string>
#include <string_view>
#include <tuple>

// Report records with no member at its default, and what makes two records the same.

inline oce_columntype FullColumn(std::int16_t propId, bool showUnits) {
    oce_columntype column;
    column.propId = propId;
    column.len = 12.7F;
    column.align = 200;
    column.nSubRow = 255;
    SetFixedText<&oce_columntype::hdr1>(column, L"M\u00e4\u00e4r\u00e4 \"1\"");
    SetFixedText<&oce_columntype::hdr2>(column, L"<&> \U0001F600\t");
    column.showUnits = showUnits;
    return column;
}

/// With one or two groups and as many columns.
inline ReportDefinitionType FullDefinition(int items = 2) {
    ReportDefinitionType definition;
    definition.id = -7;
    definition.groups[0] = 2147483647;
    if (items == 2) definition.groups[1] = -2147483647 - 1;
    definition.groupCount = static_cast<std::int16_t>(items);
    SetFixedText<&ReportDefinitionType::name>(definition, L"Pumput & 'venttiilit'");
    SetFixedText<&ReportDefinitionType::description>(definition, L"\u4e2d\u6587");
    definition.columns[0] = FullColumn(-32768, true);
    if (items == 2) definition.columns[1] = FullColumn(32767, false);
    definition.columnCount = static_cast<std::int16_t>(items);
    definition.wcSeparator = L'\xFFFF';
    return definition;
}

inline ReportFilter FullFilter() {
    ReportFilter filter;
    filter.RecordVersion = 1;
    filter.RecordStamp = 2;
    filter.AppID = Lng::Schematics;
    filter.ReportType = TextBlock;
    filter.ReportOutputType = ReportFilter::TextFile;
    filter.Reserved = 3;
    filter.Scale = 0.1F;
    filter.SymbolScale = 0.1;
    filter.Alignment = 8;
    SetFixedText<&ReportFilter::Textstyle>(filter, L"ISO & \u00e4");
    filter.TextHeight = 1e-20F;
    SetFixedText<&ReportFilter::Blocklayername>(filter, L"");
    filter.OnlyProductsFromProject = true;
    filter.SecondFlag = true;
    filter.Options = {.CheckDuplicates = true, .dxMin = 0.25F, .dyMin = -1.0F, .dzMin = 3e10F};
    filter.First = 0x123456789ABCDEF0;
    filter.Second = -1;
    filter.ReportDefinitionType = FullDefinition();
    filter.ReportOutputFile = L"C:\\Ty\u00f6t\\\U0001F600.txt";
    return filter;
}

/// A filter that could not be read.
inline ReportFilter Reset() {
    ReportFilter filter = FullFilter();
    filter.reset(false);
    return filter;
}

/// Its document.
template <class Record>
std::string TextOf(const Record& record) {
    std::string text;
    EXPECT_TRUE(record.ToXml(text));
    return text;
}

inline bool Same(const ReportDefinitionType& a, const ReportDefinitionType& b) {
    const auto bytes = [](const ReportDefinitionType& d) {
        return std::string_view(reinterpret_cast<const char*>(&d), sizeof d);
    };
    return bytes(a) == bytes(b);
}

inline bool Same(const ReportOptions& a, const ReportOptions& b) {
    const auto all = [](const ReportOptions& o) { return std::tie(o.CheckDuplicates, o.dxMin, o.dyMin, o.dzMin); };
    return all(a) == all(b);
}

/// Whether two filters agree in what is stored.
inline bool SameStored(const ReportFilter& a, const ReportFilter& b) {
    const auto scalars = [](const ReportFilter& f) {
        return std::tie(f.AppID, f.ReportType, f.ReportOutputType, f.Scale, f.SymbolScale, f.Alignment, f.TextHeight,
                        f.OnlyProductsFromProject, f.ReportOutputFile);
    };
    return scalars(a) == scalars(b) && std::memcmp(a.Textstyle, b.Textstyle, sizeof a.Textstyle) == 0 &&
           std::memcmp(a.Blocklayername, b.Blocklayername, sizeof a.Blocklayername) == 0 &&
           Same(a.Options, b.Options) && Same(a.ReportDefinitionType, b.ReportDefinitionType);
}

inline bool Same(const ReportFilter& a, const ReportFilter& b) {
    const auto others = [](const ReportFilter& f) {
        return std::tie(f.RecordVersion, f.RecordStamp, f.Reserved, f.SecondFlag, f.First, f.Second);
    };
    return others(a) == others(b) && SameStored(a, b);
}
