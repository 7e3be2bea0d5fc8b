#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Lng.h>
#include <orvatool/ObjPosInDwg.h>

#include <memory>
#include <vector>

/// A table of texts to be shown by SimpleReportOuputDlg: a title, columns, and rows that may say where an object lies.
///
/// A copy shares the rows with the original until one of them changes, so that a window can keep what it shows at no
/// cost. An operation that needs memory and gets none throws std::bad_alloc.
class ORVATOOL_API SimpleReport {
public:
    struct Column {
        ustr text;
        int width = 0;   ///< pixels at 96 DPI
        int format = 0;  ///< LVCFMT_LEFT (0), LVCFMT_RIGHT or LVCFMT_CENTER
    };

    /// `name` is what the user's settings of the report (column widths, sorting) are kept under, such as "Warnings";
    /// null or empty: they are not kept.
    explicit SimpleReport(const wchar_t* name = nullptr);
    SimpleReport(const SimpleReport&);
    SimpleReport(SimpleReport&&) noexcept;
    SimpleReport& operator=(const SimpleReport&);
    SimpleReport& operator=(SimpleReport&&) noexcept;
    ~SimpleReport();

    const ustr& Name() const { return name_; }
    /// The caption, in the user's language.
    void SetTitle(const ustr& title) { title_ = title; }
    const ustr& Title() const { return title_; }
    /// The application that the caption names.
    void SetAppID(Lng::AppID app) { app_ = app; }
    Lng::AppID AppID() const { return app_; }

    /// Adds a column and removes all rows. Returns its index.
    int AddColumn(const ustr& text, int width, int format = 0);
    const std::vector<Column>& Columns() const { return columns_; }

    /// Adds a row without texts and returns its index.
    int AddRow(const ObjPosInDwg& pos = {});
    /// A row or column that does not exist is passed over, or gives an empty text or place.
    void SetText(int row, int column, const ustr& text);
    const ustr& Text(int row, int column) const;
    const ObjPosInDwg& Pos(int row) const;
    int RowCount() const;
    void ReserveRows(int count);
    void ClearRows();

private:
    struct Rows;
    Rows& OwnRows();

    ustr name_;
    ustr title_;
    Lng::AppID app_ = Lng::NoApp;
    std::vector<Column> columns_;
    std::shared_ptr<Rows> rows_;
};
