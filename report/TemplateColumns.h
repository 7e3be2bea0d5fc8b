#pragma once

#include <occommonui/ReportDefinitionType.h>

#include <vector>

/// The columns of a template while they are edited.
class TemplateColumns {
public:
    /// Takes the columns in use.
    explicit TemplateColumns(const ReportDefinitionType& definition);
    /// Writes them back. Those behind the ones in use before and now stay as they were; any that have become free are
    /// zero.
    void Store(ReportDefinitionType& definition) const;

    int Count() const { return static_cast<int>(columns_.size()); }
    /// How many more there can be.
    int Room() const { return ReportDefinitionType::kMaxColumns - Count(); }
    const oce_columntype& operator[](int row) const { return columns_[static_cast<std::size_t>(row)]; }
    double TotalWidth() const;

    /// Replaces a column; false when it is the same, byte by byte.
    bool Replace(int row, const oce_columntype& column);
    /// Adds no more columns than there is room for, before `row`. Returns how many.
    int Insert(int row, const std::vector<oce_columntype>& columns);
    /// `rows` are ascending, here and below.
    void Remove(const std::vector<int>& rows);
    /// Brings the columns together, in their order, before column `before` (the number of columns: at the end).
    /// Returns the first one's new place, -1 when all stays as it was.
    int Move(const std::vector<int>& rows, int before);

private:
    std::vector<oce_columntype> columns_;
};
