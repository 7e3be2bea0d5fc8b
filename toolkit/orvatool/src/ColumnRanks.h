#pragma once

#include <orvatool/SimpleReport.h>

#include <cstdint>
#include <memory>
#include <vector>

/// The order of a report's rows by one column, as a user sorts. It is found out in short steps; then sorting costs no
/// more than going through the rows.
class ColumnRanks {
public:
    /// `report` must outlive this and stay as it is.
    ColumnRanks(const SimpleReport& report, int column);
    ~ColumnRanks();

    bool Done() const { return work_ == nullptr; }
    /// Does the next step: some milliseconds at most in a report of 100,000 rows.
    void Advance();

    /// `rows` sorted, once all is done. Rows that are equal stay in their order.
    std::vector<int> Sorted(const std::vector<int>& rows, bool descending) const;

private:
    struct Work;

    void TakeRows();
    void SortRun();
    void MergeRuns();
    void Finish();

    const SimpleReport& report_;
    const int column_;
    std::unique_ptr<Work> work_;
    std::vector<std::uint32_t> ranks_;  // of each row; until all is done, its text among the distinct ones
    std::uint32_t count_ = 0;           // of different ranks
};
