#include "ColumnWidths.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

// Properties that need room; every other one does with kNarrow.
struct LeastWidth {
    int propId;
    int width;
};

constexpr LeastWidth kLeastWidths[] = {
    {7001, 15},
    {7002, 20},
    {7003, 20},
    {7004, 20},
    {8001, 15},
    {8002, 20},
    {8003, 20},
    {8004, 20},
};
constexpr int kNarrow = 1;

constexpr int kNewMillimetres = 30;
constexpr int kNewCharacters = 10;

}  // namespace

int NarrowestColumn(ReportType type, int propId) {
    if (type == TextBlock) return kNarrow;
    const auto* const least = std::find_if(std::begin(kLeastWidths), std::end(kLeastWidths),
                                           [propId](const LeastWidth& row) { return row.propId == propId; });
    return least == std::end(kLeastWidths) ? kNarrow : least->width;
}

int NewColumnWidth(ReportType type, int propId) {
    return std::max(NarrowestColumn(type, propId), HasWidthsInCharacters(type) ? kNewCharacters : kNewMillimetres);
}

double UsableWidth(float width) {
    return std::isfinite(width) ? static_cast<double>(width) : 0;
}

ustr WidthText(double width) {
    ustr text;
    text.format(L"%.0f", std::round(width) + 0.0);  // never "-0"
    return text;
}
