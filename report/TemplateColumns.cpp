#include "TemplateColumns.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <numeric>
#include <utility>

#include "ColumnWidths.h"

namespace {

int CountOf(const ReportDefinitionType& definition) {
    return std::clamp<int>(definition.columnCount, 0, ReportDefinitionType::kMaxColumns);
}

auto Bytes(const oce_columntype& column) {
    return std::bit_cast<std::array<std::byte, sizeof column>>(column);
}

}  // namespace

TemplateColumns::TemplateColumns(const ReportDefinitionType& definition)
    : columns_(definition.columns, definition.columns + CountOf(definition)) {
}

void TemplateColumns::Store(ReportDefinitionType& definition) const {
    const auto free = std::copy(columns_.begin(), columns_.end(), definition.columns);
    if (Count() < CountOf(definition)) std::fill(free, definition.columns + CountOf(definition), oce_columntype());
    definition.columnCount = static_cast<std::int16_t>(Count());
}

double TemplateColumns::TotalWidth() const {
    return std::accumulate(columns_.begin(), columns_.end(), 0.0,
                           [](double sum, const oce_columntype& column) { return sum + UsableWidth(column.len); });
}

bool TemplateColumns::Replace(int row, const oce_columntype& column) {
    oce_columntype& present = columns_[static_cast<std::size_t>(row)];
    if (Bytes(present) == Bytes(column)) return false;
    present = column;
    return true;
}

int TemplateColumns::Insert(int row, const std::vector<oce_columntype>& columns) {
    const int count = std::min(Room(), static_cast<int>(columns.size()));
    columns_.insert(columns_.begin() + row, columns.begin(), columns.begin() + count);
    return count;
}

void TemplateColumns::Remove(const std::vector<int>& rows) {
    for (auto row = rows.rbegin(); row != rows.rend(); ++row)
        columns_.erase(columns_.begin() + *row);
}

int TemplateColumns::Move(const std::vector<int>& rows, int before) {
    std::vector<int> order(columns_.size());
    std::iota(order.begin(), order.end(), 0);
    const auto moves = [&](int row) { return std::binary_search(rows.begin(), rows.end(), row); };
    const auto middle = order.begin() + before;
    const auto first = std::stable_partition(order.begin(), middle, [&](int row) { return !moves(row); });
    std::stable_partition(middle, order.end(), moves);
    if (std::is_sorted(order.begin(), order.end())) return -1;

    std::vector<oce_columntype> moved;
    moved.reserve(columns_.size());
    for (const int row : order)
        moved.push_back(columns_[static_cast<std::size_t>(row)]);
    columns_ = std::move(moved);
    return static_cast<int>(first - order.begin());
}
