#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvaspace/ustr.h>
#include <orvatool/Export.h>

#include <functional>
#include <memory>
#include <vector>

/// A report-style list view of the toolkit. In its plain form it owns its rows; in its virtual form it asks the owner
/// for what it paints. Either way the control holds no rows of its own, so that the length of the list costs nothing.
///
/// The template gives the control LVS_REPORT | LVS_OWNERDRAWFIXED | LVS_OWNERDATA. The rows are drawn as the system
/// draws them; for that the dialog hands its OnMeasureItem and OnDrawItem on, to this object or by sending
/// WM_MEASUREITEM and WM_DRAWITEM to the list's window, and its OnNotify to onNotify. Keys are looked after without the
/// dialog: Ctrl+A selects all rows, Ctrl+C copies them, the space bar turns check boxes on and off.
///
/// The object must live as long as the window or be destroyed before it; rows, columns and images are then gone.
class ORVATOOL_API OcListView2 {
public:
    using TextOf = std::function<ustr(int row, int column)>;

    OcListView2();
    ~OcListView2();
    OcListView2(const OcListView2&) = delete;
    OcListView2& operator=(const OcListView2&) = delete;

    /// Takes over the control; false when the dialog has none of that id or it lacks the styles above. Rows and columns
    /// it has are removed. The dialog's OnMeasureItem is asked for the height of the rows.
    bool attach(HWND dlg, int ctrlId);
    int ctrlId() const { return ctrlId_; }
    HWND hWnd() const { return list_; }

    /// Adds a column; width in pixels at 96 DPI; format is one of LVCFMT_LEFT, _RIGHT, _CENTER. Returns its index, -1
    /// on failure.
    int addColumn(const ustr& text, int width, int format = LVCFMT_LEFT);
    void setColumnText(int column, const ustr& text);
    /// Keeps `column` so wide that the columns together fill the list, now and whenever the list is resized, but never
    /// narrower than it was made.
    void stretchColumn(int column);

    /// Empties the list; it is then of the plain form.
    void deleteAllItems();
    /// Deletes rows of the plain form; the other rows keep their selection.
    void deleteItem(int row);
    void deleteItems(const std::vector<int>& rows);
    /// Adds a row before row `position` (-1: at the end) and returns its index, -1 in the virtual form. The other rows
    /// keep their selection. `image` is an ImageLib id.
    int addItem(const ustr& text, int image = -1, int position = -1);
    /// Sets a cell of the plain form; a row or column that does not exist is passed over.
    void setItem(int row, int column, const ustr& text, int image = -1);
    ustr getText(int row, int column) const;
    /// The caller's value of a row of the plain form, 0 until it is set. It travels with the row when rows are sorted.
    void setData(int row, LPARAM data);
    LPARAM getData(int row) const;
    int count() const;

    void select(int row, bool only = true);  ///< selects, focuses and scrolls into view
    /// Selects these rows and no others, and focuses one (-1: none), without a notification.
    void selectRows(const std::vector<int>& rows, int focused);
    int selected() const;                ///< the first selected row, -1 for none
    std::vector<int> selection() const;  ///< all selected rows, ascending

    /// Check boxes in the first column, in either form. When the user turns one, the dialog gets the LVN_ITEMCHANGED
    /// that a system check box gives: the old and the new state image (1 unchecked, 2 checked) in uOldState and
    /// uNewState.
    void enableChecks();
    bool isChecked(int row) const;
    void setCheck(int row, bool checked);

    /// Virtual form: `count` rows whose texts are asked for when they are painted, searched or copied. Call again when
    /// the rows changed; selection and checks stay by row number.
    void setVirtual(int count, TextOf textOf);
    bool isVirtual() const { return static_cast<bool>(textOf_); }

    /// Sorts the plain form by a column as a user sorts (empty cells, numbers by value, names) and shows the arrow.
    /// Rows that are equal stay in their order, the selection stays with its rows. In the virtual form only the arrow
    /// is set: the owner sorts.
    void sort(int column, bool descending);
    int sortColumn() const { return sortColumn_; }
    bool sortDescending() const { return sortDescending_; }
    /// Lets the user sort by a click on a column's header; a second click turns the order.
    void enableSortByHeader(bool enable) { sortByHeader_ = enable; }

    /// The selected rows (all when none is selected) as lines of tab separated columns; tabs and line breaks within a
    /// text become blanks.
    ustr copyText() const;

    /// For the dialog's OnNotify: header clicks, check boxes, texts, type-ahead. True when the notification was for
    /// this list and is done with; `result` is then the answer. A header click of the virtual form comes back false
    /// once the arrow is set, so that the owner can sort.
    bool onNotify(const NMHDR* header, LRESULT& result);
    /// For the dialog's OnMeasureItem and OnDrawItem. True when the item is this list's.
    bool onMeasureItem(MEASUREITEMSTRUCT* item) const;
    bool onDrawItem(const DRAWITEMSTRUCT* item) const;

private:
    struct Cell {
        ustr text;
        int image = -1;
    };
    struct Row {
        std::vector<Cell> cells;
        LPARAM data = 0;
        bool checked = false;
    };
    struct Column {
        int width;   // at 96 DPI
        int format;  // LVCFMT_
    };
    struct Images;

    static LRESULT CALLBACK ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                     DWORD_PTR self);
    LRESULT OnListMessage(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT AnswerWithChecks(UINT message, WPARAM wParam, LPARAM lParam);
    bool OnKey(WPARAM key);
    void Detach();
    void Resize();
    void ChangeDpi();
    void Remeasure();
    int RowHeight() const;
    int Scale(int pixels) const;
    int FocusedRow() const;
    int SelectedCount() const;
    bool HasRow(int row) const { return row >= 0 && row < count(); }
    const Cell* CellAt(int row, int column) const;
    void RowsChanged();
    void PassCount();
    std::vector<int> SortedOrder(int column, bool descending) const;
    void ShowSortArrow() const;
    void ToggleChecks(int row);
    void TurnCheck(int row, bool checked);
    RECT CheckRect(const RECT& cell) const;
    RECT CellRect(const RECT& rowRect, int column) const;
    bool IsOnCheck(int row, POINT point) const;
    bool FillDispInfo(NMLVDISPINFOW& info) const;
    void Draw(const DRAWITEMSTRUCT& item) const;
    void DrawCell(HDC dc, int row, int column, RECT rect) const;

    HWND list_ = nullptr;
    int ctrlId_ = 0;
    std::vector<Column> columns_;
    std::vector<Row> rows_;
    std::vector<bool> virtualChecks_;
    int virtualCount_ = 0;
    TextOf textOf_;
    std::unique_ptr<Images> images_;
    unsigned dpi_ = 96;
    int stretched_ = -1;
    bool countPending_ = false;  // the control has not been told the number of rows
    bool selecting_ = false;     // selection is being carried over: nothing changes for the dialog
    bool checks_ = false;
    bool sortByHeader_ = false;
    int sortColumn_ = -1;
    bool sortDescending_ = false;
};
