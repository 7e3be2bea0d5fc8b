#include "ReportLayout.h"

#include <orvatool/InterApp.h>

#include <windows.h>

#include <algorithm>
#include <string>

#include "Registry.h"

namespace {

constexpr std::int32_t kNarrowest = 8;  // there is still a border to take hold of
constexpr std::int32_t kWidest = 10'000;

std::wstring Path() {
    return std::wstring(GetProductKey()) + L"\\Window\\SimpleReportOuputDlg";
}

bool MakesSense(const ReportLayout& layout) {
    const auto isWidth = [](std::int32_t width) { return width >= 0 && width <= kWidest; };
    return layout.version == ReportLayout::kVersion && layout.columnCount <= ReportLayout::kMostColumns &&
           layout.sortColumn >= -1 && layout.sortColumn < static_cast<std::int32_t>(layout.columnCount) &&
           std::all_of(layout.widths.begin(), layout.widths.end(), isWidth);
}

}  // namespace

bool ReportLayout::Read(const ustr& reportName) {
    ReportLayout stored;
    if (reportName.empty() || !registry::ReadRecord(HKEY_CURRENT_USER, Path().c_str(), reportName.c_str(), stored)) {
        return false;
    }
    if (!MakesSense(stored) || stored.columnCount != columnCount) return false;
    *this = stored;
    for (std::uint32_t column = 0; column < columnCount; ++column)
        widths[column] = std::max(widths[column], kNarrowest);
    return true;
}

void ReportLayout::Write(const ustr& reportName) const {
    if (reportName.empty() || !MakesSense(*this)) return;
    registry::Write(HKEY_CURRENT_USER, Path().c_str(), reportName.c_str(), REG_BINARY, this, sizeof *this);
}
