#include "ColumnRanks.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Cells.h"
#include "Numbers.h"

namespace {

constexpr std::size_t kRowsPerStep = 256;
constexpr std::size_t kRun = 1024;  // texts that are sorted in one step

}  // namespace

// The distinct texts of the column. Each has its key made once; their order is sorted run by run, then runs are merged.
struct ColumnRanks::Work {
    std::wstring separator = DecimalSeparator();
    std::unordered_map<std::wstring_view, std::uint32_t> texts;
    std::vector<std::string> keys;
    std::vector<std::uint32_t> order;
    std::size_t sorted = 0;    // so many are in sorted runs
    std::size_t width = kRun;  // of the sorted runs
    std::size_t merged = 0;    // so many are in runs of twice the width

    bool Before(std::uint32_t a, std::uint32_t b) const { return keys[a] < keys[b]; }
    auto At(std::size_t place) { return order.begin() + static_cast<std::ptrdiff_t>(std::min(place, order.size())); }
};

ColumnRanks::ColumnRanks(const SimpleReport& report, int column)
    : report_(report), column_(column), work_(std::make_unique<Work>()) {
}

ColumnRanks::~ColumnRanks() = default;

void ColumnRanks::Advance() {
    if (Done()) return;
    if (ranks_.size() < static_cast<std::size_t>(report_.RowCount())) return TakeRows();
    if (work_->sorted < work_->order.size()) return SortRun();
    if (work_->width < work_->order.size()) return MergeRuns();
    Finish();
}

void ColumnRanks::TakeRows() {
    const auto count = static_cast<std::size_t>(report_.RowCount());
    const std::size_t end = std::min(ranks_.size() + kRowsPerStep, count);
    ranks_.reserve(count);
    while (ranks_.size() < end) {
        const ustr& text = report_.Text(static_cast<int>(ranks_.size()), column_);
        const auto next = static_cast<std::uint32_t>(work_->keys.size());
        const auto [place, isNew] = work_->texts.try_emplace(text, next);
        if (isNew) {
            work_->keys.push_back(CellSortKey(text, work_->separator));
            work_->order.push_back(next);
        }
        ranks_.push_back(place->second);
    }
}

void ColumnRanks::SortRun() {
    Work& work = *work_;
    const auto before = [&work](std::uint32_t a, std::uint32_t b) { return work.Before(a, b); };
    std::sort(work.At(work.sorted), work.At(work.sorted + kRun), before);
    work.sorted += kRun;
}

void ColumnRanks::MergeRuns() {
    Work& work = *work_;
    const auto before = [&work](std::uint32_t a, std::uint32_t b) { return work.Before(a, b); };
    std::inplace_merge(work.At(work.merged), work.At(work.merged + work.width), work.At(work.merged + 2 * work.width),
                       before);
    work.merged += 2 * work.width;
    if (work.merged < work.order.size()) return;
    work.merged = 0;
    work.width *= 2;
}

// Texts that differ may count as equal.
void ColumnRanks::Finish() {
    const Work& work = *work_;
    std::vector<std::uint32_t> rankOf(work.order.size());
    for (std::size_t i = 0; i < work.order.size(); ++i) {
        if (i > 0 && work.Before(work.order[i - 1], work.order[i])) ++count_;
        rankOf[work.order[i]] = count_;
    }
    ++count_;
    for (std::uint32_t& rank : ranks_)
        rank = rankOf[rank];
    work_.reset();
}

std::vector<int> ColumnRanks::Sorted(const std::vector<int>& rows, bool descending) const {
    const auto slot = [&](int row) {
        const std::uint32_t rank = ranks_[static_cast<std::size_t>(row)];
        return descending ? count_ - 1 - rank : rank;
    };
    std::vector<std::size_t> places(std::size_t{count_} + 1);
    for (const int row : rows)
        ++places[slot(row) + 1];
    std::partial_sum(places.begin(), places.end(), places.begin());
    std::vector<int> sorted(rows.size());
    for (const int row : rows)
        sorted[places[slot(row)]++] = row;
    return sorted;
}
