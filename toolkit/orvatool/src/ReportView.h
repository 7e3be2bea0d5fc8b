#pragma once

#include <orvatool/FoldedTexts.h>
#include <orvatool/SimpleReport.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "ColumnRanks.h"

/// Which rows of a report are shown, and in which order: those that a search finds, sorted by a column. The work is
/// done in short steps, so that a long report holds nobody up.
class ReportView {
public:
    enum class Task { None, Search, Sort };

    /// `report` must outlive this and stay as it is. All rows are shown, in their own order.
    explicit ReportView(const SimpleReport& report);

    /// Shows the rows in which each word occurs in some column.
    void SetSearch(std::wstring_view text);
    bool IsSearching() const { return !words_.empty(); }
    /// Sorts by a column; -1: the report's own order.
    void SetOrder(int column, bool descending);
    int OrderColumn() const { return column_; }
    bool Descending() const { return descending_; }

    /// What there is still to do before Rows() is what was asked for.
    Task Pending() const;
    /// Works for about so long, a few milliseconds at least. True when nothing is left to do.
    bool Work(std::chrono::milliseconds budget);
    /// The rows as they were when there was last nothing left to do.
    const std::vector<int>& Rows() const { return rows_; }

private:
    std::wstring_view Folded(int row);
    void SearchSome();
    void Arrange();
    ColumnRanks& Ranks();

    const SimpleReport& report_;
    std::vector<ustr> words_;
    std::vector<ustr> foundWords_;  // what found_ is the result of
    std::vector<int> found_;        // in the report's order
    std::vector<int> finding_;      // those of found_ that have the words, as far as it has been looked through
    std::size_t looked_ = 0;
    std::vector<FoldedTexts> folded_;  // a number of rows each, made when they are first looked at
    int column_ = -1;
    bool descending_ = false;
    bool arranged_ = true;
    std::vector<std::unique_ptr<ColumnRanks>> ranks_;  // by column, null until it is first sorted by
    std::vector<int> rows_;
};
