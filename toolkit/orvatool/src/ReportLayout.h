#pragma once

#include <orvaspace/ustr.h>

#include <array>
#include <cstddef>
#include <cstdint>

/// How the user has arranged the columns of a report, as the registry keeps it under the report's name.
/// stored: never change, make a new version.
struct ReportLayout {
    static constexpr std::uint32_t kVersion = 1;
    static constexpr std::size_t kMostColumns = 64;  ///< a report of more columns keeps nothing

    std::uint32_t version = kVersion;
    std::uint32_t columnCount = 0;
    std::int32_t sortColumn = -1;  ///< -1: the report's own order
    std::uint32_t descending = 0;
    std::array<std::int32_t, kMostColumns> widths{};  ///< pixels at 96 DPI

    bool operator==(const ReportLayout&) const = default;

    /// Reads the layout of the report of that name. False, and nothing changes, when there is none, or none that makes
    /// sense for a report of as many columns as this layout has.
    bool Read(const ustr& reportName);
    void Write(const ustr& reportName) const;
};
static_assert(sizeof(ReportLayout) == 16 + 4 * ReportLayout::kMostColumns);
