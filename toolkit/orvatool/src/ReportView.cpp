#include "ReportView.h"

#include <orvatool/String.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

constexpr int kRowsPerStep = 256;

std::vector<int> AllRows(const SimpleReport& report) {
    std::vector<int> rows(static_cast<std::size_t>(report.RowCount()));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

// Whether what has the words has the earlier ones too.
bool Narrows(const std::vector<ustr>& words, const std::vector<ustr>& earlier) {
    const auto occurs = [&words](const ustr& part) {
        return std::any_of(words.begin(), words.end(), [&part](const ustr& word) {
            return std::wstring_view(word).find(std::wstring_view(part)) != std::wstring_view::npos;
        });
    };
    return std::all_of(earlier.begin(), earlier.end(), occurs);
}

}  // namespace

ReportView::ReportView(const SimpleReport& report)
    : report_(report),
      found_(AllRows(report)),
      folded_(found_.size() / kRowsPerStep + 1),
      ranks_(report.Columns().size()),
      rows_(found_) {
}

void ReportView::SetSearch(std::wstring_view text) {
    std::vector<ustr> words = String::SearchWords(text);
    if (words == words_) return;
    words_ = std::move(words);
    if (!Narrows(words_, foundWords_)) {
        found_ = AllRows(report_);
        foundWords_.clear();
    }
    finding_.clear();
    looked_ = 0;
    arranged_ = false;
}

void ReportView::SetOrder(int column, bool descending) {
    column_ = column >= 0 && column < static_cast<int>(ranks_.size()) ? column : -1;
    descending_ = descending;
    arranged_ = false;
}

ReportView::Task ReportView::Pending() const {
    if (words_ != foundWords_) return Task::Search;
    return arranged_ ? Task::None : Task::Sort;
}

bool ReportView::Work(std::chrono::milliseconds budget) {
    const auto end = std::chrono::steady_clock::now() + budget;
    while (Pending() != Task::None) {
        if (Pending() == Task::Search) {
            SearchSome();
        } else if (column_ >= 0 && !Ranks().Done()) {
            Ranks().Advance();
        } else {
            Arrange();
        }
        if (std::chrono::steady_clock::now() >= end) break;
    }
    return Pending() == Task::None;
}

// The texts of a row, parted by what occurs in no word.
std::wstring_view ReportView::Folded(int row) {
    const int block = row / kRowsPerStep;
    FoldedTexts& texts = folded_[static_cast<std::size_t>(block)];
    if (texts.size() == 0) {
        const int first = block * kRowsPerStep;
        std::vector<int> rows(static_cast<std::size_t>(std::min(kRowsPerStep, report_.RowCount() - first)));
        std::iota(rows.begin(), rows.end(), first);
        ustr whole;
        texts.Assign(rows, [&](int each) -> const ustr& {
            whole.clear();
            for (int column = 0; column < static_cast<int>(ranks_.size()); ++column)
                whole.append(report_.Text(each, column)).append(L'\t');
            return whole;
        });
    }
    return texts[static_cast<std::size_t>(row % kRowsPerStep)];
}

void ReportView::SearchSome() {
    const std::size_t end = std::min(looked_ + kRowsPerStep, found_.size());
    for (; looked_ < end; ++looked_) {
        if (String::MatchesFolded(Folded(found_[looked_]), words_)) finding_.push_back(found_[looked_]);
    }
    if (looked_ < found_.size()) return;
    found_ = std::move(finding_);
    finding_.clear();
    foundWords_ = words_;
}

void ReportView::Arrange() {
    rows_ = column_ < 0 ? found_ : Ranks().Sorted(found_, descending_);
    arranged_ = true;
}

ColumnRanks& ReportView::Ranks() {
    std::unique_ptr<ColumnRanks>& ranks = ranks_[static_cast<std::size_t>(column_)];
    if (!ranks) ranks = std::make_unique<ColumnRanks>(report_, column_);
    return *ranks;
}
