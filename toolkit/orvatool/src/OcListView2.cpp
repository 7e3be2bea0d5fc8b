#include <orvatool/OcListView2.h>

#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>
#include <orvatool/String.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

#include "Cells.h"
#include "CheckImages.h"
#include "Numbers.h"
#include "VirtualList.h"
#include "Win32.h"

struct OcListView2::Images {
    win32::ImageList checks;
};

namespace {

constexpr UINT_PTR kListSubclass = 1;
constexpr LONG_PTR kStyles = LVS_REPORT | LVS_OWNERDRAWFIXED | LVS_OWNERDATA;
constexpr int kCellPadding = 6;   // left and right of a text; pixels at 96 DPI, as everything here
constexpr int kImagePadding = 2;  // left of a check box or an image
constexpr int kFewRows = 200;
constexpr int kRowPadding = 4;  // above and below a text, together

struct RowColors {
    int text;
    int back;
};

std::vector<int> AllRows(int count) {
    std::vector<int> rows(static_cast<std::size_t>(count));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

// What `rows` has and `others` has not; both ascending.
std::vector<int> Without(const std::vector<int>& rows, const std::vector<int>& others) {
    std::vector<int> result;
    std::set_difference(rows.begin(), rows.end(), others.begin(), others.end(), std::back_inserter(result));
    return result;
}

// High contrast and themes follow, since the system's own colours are used.
RowColors ColorsOf(HWND list, bool selected) {
    if (!IsWindowEnabled(list)) return {COLOR_GRAYTEXT, COLOR_BTNFACE};
    if (!selected) return {COLOR_WINDOWTEXT, COLOR_WINDOW};
    if (GetFocus() == list) return {COLOR_HIGHLIGHTTEXT, COLOR_HIGHLIGHT};
    const bool shown = (GetWindowLongPtrW(list, GWL_STYLE) & LVS_SHOWSELALWAYS) != 0;
    return shown ? RowColors{COLOR_BTNTEXT, COLOR_BTNFACE} : RowColors{COLOR_WINDOWTEXT, COLOR_WINDOW};
}

UINT TextFormat(int columnFormat) {
    constexpr UINT kLine = DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX;
    switch (columnFormat & LVCFMT_JUSTIFYMASK) {
        case LVCFMT_RIGHT:
            return kLine | DT_RIGHT;
        case LVCFMT_CENTER:
            return kLine | DT_CENTER;
        default:
            return kLine | DT_LEFT;
    }
}

}  // namespace

OcListView2::OcListView2() : images_(std::make_unique<Images>()) {
}

OcListView2::~OcListView2() {
    Detach();
}

bool OcListView2::attach(HWND dlg, int ctrlId) {
    Detach();
    const HWND list = GetDlgItem(dlg, ctrlId);
    if (!list || (GetWindowLongPtrW(list, GWL_STYLE) & (LVS_TYPEMASK | kStyles)) != kStyles) return false;
    if (!SetWindowSubclass(list, ListProc, kListSubclass, reinterpret_cast<DWORD_PTR>(this))) return false;
    list_ = list;
    ctrlId_ = ctrlId;
    dpi_ = win32::DpiOf(list);
    columns_.clear();
    sortColumn_ = stretched_ = -1;
    while (SendMessageW(list_, LVM_DELETECOLUMN, 0, 0))
        continue;
    constexpr DWORD kExtended = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP;
    SendMessageW(list_, LVM_SETEXTENDEDLISTVIEWSTYLE, kExtended, kExtended);
    deleteAllItems();
    if (checks_) enableChecks();
    Remeasure();  // the system asked for the height before the dialog could hand the question on
    return true;
}

int OcListView2::addColumn(const ustr& text, int width, int format) {
    ustr shown = text;
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
    column.fmt = format & LVCFMT_JUSTIFYMASK;
    column.cx = Scale(width);
    column.pszText = shown.data();
    column.iSubItem = static_cast<int>(columns_.size());
    const LRESULT index =
        list_ ? SendMessageW(list_, LVM_INSERTCOLUMNW, columns_.size(), reinterpret_cast<LPARAM>(&column)) : -1;
    if (index >= 0) columns_.push_back({width, column.fmt});
    return static_cast<int>(index);
}

// The control lays itself out anew for every text that it is given.
void OcListView2::setColumnText(int column, const ustr& text) {
    if (!list_) return;
    wchar_t present[256] = L"";
    LVCOLUMNW info{};
    info.mask = LVCF_TEXT;
    info.pszText = present;
    info.cchTextMax = static_cast<int>(std::size(present));
    SendMessageW(list_, LVM_GETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&info));
    if (text == info.pszText) return;
    ustr shown = text;
    info.pszText = shown.data();
    SendMessageW(list_, LVM_SETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&info));
}

void OcListView2::stretchColumn(int column) {
    stretched_ = column >= 0 && column < static_cast<int>(columns_.size()) ? column : -1;
    Resize();
}

void OcListView2::deleteAllItems() {
    textOf_ = nullptr;
    virtualCount_ = 0;
    virtualChecks_.clear();
    rows_.clear();
    RowsChanged();
    if (list_) SelectOnly(list_, -1);
}

void OcListView2::deleteItem(int row) {
    deleteItems({row});
}

void OcListView2::deleteItems(const std::vector<int>& rows) {
    std::vector<bool> gone(rows_.size());
    for (const int row : rows) {
        if (!isVirtual() && HasRow(row)) gone[static_cast<std::size_t>(row)] = true;
    }
    if (std::find(gone.begin(), gone.end(), true) == gone.end()) return;

    std::vector<int> place(rows_.size(), -1);  // where each row goes
    std::size_t kept = 0;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        if (!gone[row]) place[row] = static_cast<int>(kept++);
    }
    std::vector<int> selectedRows;
    for (const int row : selection()) {
        if (place[static_cast<std::size_t>(row)] >= 0) selectedRows.push_back(place[static_cast<std::size_t>(row)]);
    }
    const int focused = FocusedRow();
    std::size_t index = 0;
    std::erase_if(rows_, [&](const Row&) { return gone[index++]; });
    RowsChanged();
    selectRows(selectedRows, focused < 0 ? -1 : place[static_cast<std::size_t>(focused)]);
}

int OcListView2::addItem(const ustr& text, int image, int position) {
    if (isVirtual()) return -1;
    const int row = position < 0 || position > count() ? count() : position;
    const bool shifts = row < count();
    const bool selects = shifts && SelectedCount() > 0;
    std::vector<int> selectedRows = selects ? selection() : std::vector<int>();
    int focused = selects ? FocusedRow() : -1;
    Row added;
    added.cells.push_back({text, image});
    rows_.insert(rows_.begin() + row, std::move(added));
    RowsChanged();
    if (selects) {
        for (int& other : selectedRows)
            other += other >= row;
        focused += focused >= row;
        selectRows(selectedRows, focused);
    }
    return row;
}

void OcListView2::setItem(int row, int column, const ustr& text, int image) {
    if (isVirtual() || !HasRow(row) || column < 0 || column >= static_cast<int>(columns_.size())) return;
    std::vector<Cell>& cells = rows_[static_cast<std::size_t>(row)].cells;
    if (cells.size() <= static_cast<std::size_t>(column)) cells.resize(static_cast<std::size_t>(column) + 1);
    cells[static_cast<std::size_t>(column)] = {text, image};
    if (list_ && !countPending_) {
        SendMessageW(list_, LVM_REDRAWITEMS, static_cast<WPARAM>(row), row);
    }
}

ustr OcListView2::getText(int row, int column) const {
    if (!HasRow(row)) return ustr();
    if (textOf_) return textOf_(row, column);
    const Cell* const cell = CellAt(row, column);
    return cell ? cell->text : ustr();
}

void OcListView2::setData(int row, LPARAM data) {
    if (!isVirtual() && HasRow(row)) rows_[static_cast<std::size_t>(row)].data = data;
}

LPARAM OcListView2::getData(int row) const {
    return !isVirtual() && HasRow(row) ? rows_[static_cast<std::size_t>(row)].data : 0;
}

int OcListView2::count() const {
    return isVirtual() ? virtualCount_ : static_cast<int>(rows_.size());
}

void OcListView2::select(int row, bool only) {
    if (!list_ || !HasRow(row)) return;
    if (only) return SelectOnly(list_, row);
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    SendMessageW(list_, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
}

// The control is told what changes. To change all rows it may go through all of them.
void OcListView2::selectRows(const std::vector<int>& rows, int focused) {
    if (!list_) return;
    selecting_ = true;
    const gwRedrawOff quiet(list_);
    const auto set = [this](int row, UINT state, UINT mask) {
        LVITEMW item{};
        item.state = state;
        item.stateMask = mask;
        SendMessageW(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    };
    std::vector<int> after = rows;
    std::sort(after.begin(), after.end());
    const bool anew = SelectedCount() > kFewRows && static_cast<int>(after.size()) < count();
    if (anew) set(-1, 0, LVIS_SELECTED);
    std::vector<int> before = anew ? std::vector<int>() : selection();
    for (const int row : Without(before, after))
        set(row, 0, LVIS_SELECTED);
    if (after != before && static_cast<int>(after.size()) == count()) {
        set(-1, LVIS_SELECTED, LVIS_SELECTED);
        before = after;
    }
    for (const int row : Without(after, before))
        set(row, LVIS_SELECTED, LVIS_SELECTED);
    const int focusedBefore = FocusedRow();
    if (focused >= 0) {
        set(focused, LVIS_FOCUSED, LVIS_FOCUSED);
    } else if (focusedBefore >= 0) {
        set(focusedBefore, 0, LVIS_FOCUSED);
    }
    selecting_ = false;
}

int OcListView2::SelectedCount() const {
    return list_ ? static_cast<int>(SendMessageW(list_, LVM_GETSELECTEDCOUNT, 0, 0)) : 0;
}

int OcListView2::selected() const {
    return list_ ? NextSelected(list_, -1) : -1;
}

std::vector<int> OcListView2::selection() const {
    // Counted, as the control looks through all rows to find that there is no other.
    const int selectedCount = SelectedCount();
    if (selectedCount == count()) return AllRows(count());
    std::vector<int> rows;
    rows.reserve(static_cast<std::size_t>(selectedCount));
    for (int row = -1; static_cast<int>(rows.size()) < selectedCount && (row = NextSelected(list_, row)) >= 0;)
        rows.push_back(row);
    return rows;
}

void OcListView2::enableChecks() {
    checks_ = true;
    if (!list_) return;
    images_->checks = CreateCheckImages(list_);
    // Who asks the control for the state of a check box (a screen reader) is answered from the rows.
    SendMessageW(list_, LVM_SETCALLBACKMASK, LVIS_STATEIMAGEMASK, 0);
    InvalidateRect(list_, nullptr, FALSE);
}

bool OcListView2::isChecked(int row) const {
    if (!HasRow(row)) return false;
    const auto index = static_cast<std::size_t>(row);
    return isVirtual() ? virtualChecks_[index] : rows_[index].checked;
}

void OcListView2::setCheck(int row, bool checked) {
    if (!HasRow(row)) return;
    const auto index = static_cast<std::size_t>(row);
    if (isVirtual()) {
        virtualChecks_[index] = checked;
    } else {
        rows_[index].checked = checked;
    }
    if (list_ && !countPending_) {
        SendMessageW(list_, LVM_REDRAWITEMS, static_cast<WPARAM>(row), row);
    }
}

void OcListView2::setVirtual(int count, TextOf textOf) {
    rows_.clear();
    textOf_ = std::move(textOf);
    virtualCount_ = textOf_ ? std::max(count, 0) : 0;
    virtualChecks_.resize(static_cast<std::size_t>(virtualCount_));
    RowsChanged();
}

void OcListView2::sort(int column, bool descending) {
    sortColumn_ = column;
    sortDescending_ = descending;
    ShowSortArrow();
    if (isVirtual() || column < 0) return;

    const std::vector<int> order = SortedOrder(column, descending);
    std::vector<int> place(order.size());
    std::vector<Row> sorted;
    sorted.reserve(order.size());
    for (std::size_t row = 0; row < order.size(); ++row) {
        place[static_cast<std::size_t>(order[row])] = static_cast<int>(row);
        sorted.push_back(std::move(rows_[static_cast<std::size_t>(order[row])]));
    }
    std::vector<int> selectedRows = selection();
    for (int& row : selectedRows)
        row = place[static_cast<std::size_t>(row)];
    const int focused = FocusedRow();
    rows_ = std::move(sorted);
    selectRows(selectedRows, focused < 0 ? -1 : place[static_cast<std::size_t>(focused)]);
    if (list_) InvalidateRect(list_, nullptr, FALSE);
}

ustr OcListView2::copyText() const {
    std::vector<int> rows = selection();
    if (rows.empty()) rows = AllRows(count());
    ustr text;
    for (const int row : rows) {
        if (!text.empty()) text.append(L"\r\n");
        for (int column = 0; column < static_cast<int>(columns_.size()); ++column) {
            if (column > 0) text.append(L'\t');
            AppendCell(text, getText(row, column));
        }
    }
    return text;
}

bool OcListView2::onNotify(const NMHDR* header, LRESULT& result) {
    if (!header || !list_ || header->hwndFrom != list_) return false;
    result = 0;
    switch (header->code) {
        case LVN_GETDISPINFOW:
            return FillDispInfo(*reinterpret_cast<NMLVDISPINFOW*>(const_cast<NMHDR*>(header)));
        case LVN_ODFINDITEMW:
            result = FindRow(*reinterpret_cast<const NMLVFINDITEMW*>(header), count(),
                             [this](int row) { return getText(row, 0); });
            return true;
        case LVN_COLUMNCLICK: {
            if (!sortByHeader_) return false;
            const int column = reinterpret_cast<const NMLISTVIEW*>(header)->iSubItem;
            sort(column, column == sortColumn_ && !sortDescending_);
            return !isVirtual();
        }
        case NM_CLICK:
        case NM_DBLCLK: {
            LVHITTESTINFO hit{};
            hit.pt = reinterpret_cast<const NMITEMACTIVATE*>(header)->ptAction;
            const LRESULT row = SendMessageW(list_, LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&hit));
            if (row < 0 || hit.flags != LVHT_ONITEMSTATEICON) return false;
            TurnCheck(static_cast<int>(row), !isChecked(static_cast<int>(row)));
            return true;
        }
        default:
            return selecting_;
    }
}

bool OcListView2::onMeasureItem(MEASUREITEMSTRUCT* item) const {
    if (!item || !list_ || item->CtlType != ODT_LISTVIEW || static_cast<int>(item->CtlID) != ctrlId_) return false;
    item->itemHeight = static_cast<UINT>(RowHeight());
    return true;
}

bool OcListView2::onDrawItem(const DRAWITEMSTRUCT* item) const {
    if (!item || !list_ || item->hwndItem != list_) return false;
    Draw(*item);
    return true;
}

LRESULT CALLBACK OcListView2::ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                       DWORD_PTR self) {
    auto* const view = reinterpret_cast<OcListView2*>(self);
    if (message == WM_NCDESTROY) {
        view->Detach();
        return DefSubclassProc(list, message, wParam, lParam);
    }
    try {
        return view->OnListMessage(message, wParam, lParam);
    } catch (...) {  // out of memory, or the owner's texts failed: the row stays unpainted
        return DefSubclassProc(list, message, wParam, lParam);
    }
}

LRESULT OcListView2::OnListMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (countPending_) PassCount();
    switch (message) {
        case WM_MEASUREITEM:
            return onMeasureItem(reinterpret_cast<MEASUREITEMSTRUCT*>(lParam));
        case WM_DRAWITEM:
            return onDrawItem(reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        case WM_KEYDOWN:
            if (OnKey(wParam)) return 0;
            break;
        case WM_CHAR:  // of keys that OnKey took: not for the type-ahead
            if (wParam < L' ' || (wParam == L' ' && checks_)) return 0;
            break;
        default:
            break;
    }
    if (checks_ && message >= LVM_FIRST) return AnswerWithChecks(message, wParam, lParam);
    const LRESULT result = DefSubclassProc(list_, message, wParam, lParam);
    if (message == WM_SIZE) Resize();
    if (message == WM_SETFONT) Remeasure();
    if (message == WM_DPICHANGED_AFTERPARENT) ChangeDpi();
    if (message == WM_THEMECHANGED && checks_) enableChecks();
    return result;
}

// The control does not know that there are check boxes: whoever asks where things are is told.
LRESULT OcListView2::AnswerWithChecks(UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const rect = reinterpret_cast<RECT*>(lParam);
    const bool ofLabel = message == LVM_GETITEMRECT && rect && rect->left == LVIR_LABEL;
    const LRESULT result = DefSubclassProc(list_, message, wParam, lParam);
    if (ofLabel && result) rect->left = std::max(rect->left, CheckRect(CellRect(*rect, 0)).right);
    if ((message == LVM_HITTEST || message == LVM_SUBITEMHITTEST) && result >= 0) {
        LVHITTESTINFO& hit = *reinterpret_cast<LVHITTESTINFO*>(lParam);
        if (IsOnCheck(static_cast<int>(result), hit.pt)) hit.flags = LVHT_ONITEMSTATEICON;
    }
    return result;
}

bool OcListView2::OnKey(WPARAM key) {
    const bool control = GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
    if (control && key == L'A' && !(GetWindowLongPtrW(list_, GWL_STYLE) & LVS_SINGLESEL)) {
        LVITEMW item{};
        item.state = item.stateMask = LVIS_SELECTED;
        SendMessageW(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
        return true;
    }
    if (control && (key == L'C' || key == VK_INSERT)) return gwcopytext(list_, copyText());
    if (key == VK_SPACE && checks_ && FocusedRow() >= 0) {
        ToggleChecks(FocusedRow());
        return true;
    }
    return false;
}

void OcListView2::Detach() {
    if (list_) RemoveWindowSubclass(list_, ListProc, kListSubclass);
    list_ = nullptr;
    images_->checks.reset();
}

// The stretched column takes what the others leave.
void OcListView2::Resize() {
    if (!list_ || stretched_ < 0) return;
    RECT client{};
    GetClientRect(list_, &client);
    int room = client.right;
    for (int column = 0; column < static_cast<int>(columns_.size()); ++column) {
        if (column == stretched_) continue;
        room -= static_cast<int>(SendMessageW(list_, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0));
    }
    const int width = std::max(room, Scale(columns_[static_cast<std::size_t>(stretched_)].width));
    const auto column = static_cast<WPARAM>(stretched_);
    if (SendMessageW(list_, LVM_GETCOLUMNWIDTH, column, 0) == width) return;
    SendMessageW(list_, LVM_SETCOLUMNWIDTH, column, width);
}

void OcListView2::ChangeDpi() {
    const unsigned dpi = win32::DpiOf(list_);
    if (dpi == dpi_) return;
    for (std::size_t column = 0; column < columns_.size(); ++column) {
        const auto width = static_cast<int>(SendMessageW(list_, LVM_GETCOLUMNWIDTH, column, 0));
        const int scaled = MulDiv(width, static_cast<int>(dpi), static_cast<int>(dpi_));
        SendMessageW(list_, LVM_SETCOLUMNWIDTH, column, scaled);
    }
    dpi_ = dpi;
    if (checks_) enableChecks();
    Remeasure();
    Resize();
}

// A list view asks for the height of its rows when it learns of a new size.
void OcListView2::Remeasure() {
    RECT rect{};
    GetWindowRect(list_, &rect);
    WINDOWPOS position{};
    position.hwnd = list_;
    position.cx = rect.right - rect.left;
    position.cy = rect.bottom - rect.top;
    position.flags = SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER;
    SendMessageW(list_, WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&position));
}

int OcListView2::RowHeight() const {
    const win32::WindowDc dc(list_);
    const auto font = reinterpret_cast<HFONT>(SendMessageW(list_, WM_GETFONT, 0, 0));
    const win32::Selected chosen(dc.get(), font ? font : GetStockObject(SYSTEM_FONT));
    TEXTMETRICW metrics{};
    GetTextMetricsW(dc.get(), &metrics);
    const int image = GetSystemMetricsForDpi(SM_CYSMICON, dpi_);
    return std::max(static_cast<int>(metrics.tmHeight) + Scale(kRowPadding), image + 1);
}

int OcListView2::Scale(int pixels) const {
    return win32::Scale(pixels, dpi_);
}

int OcListView2::FocusedRow() const {
    return list_ ? static_cast<int>(SendMessageW(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED)) : -1;
}

const OcListView2::Cell* OcListView2::CellAt(int row, int column) const {
    if (isVirtual() || !HasRow(row) || column < 0) return nullptr;
    const std::vector<Cell>& cells = rows_[static_cast<std::size_t>(row)].cells;
    return static_cast<std::size_t>(column) < cells.size() ? &cells[static_cast<std::size_t>(column)] : nullptr;
}

// The control learns of the new number when it next gets a message (there is one to paint at the latest), so that a
// thousand rows added one by one cost it one change.
void OcListView2::RowsChanged() {
    if (!list_ || countPending_) return;
    countPending_ = true;
    InvalidateRect(list_, nullptr, FALSE);
}

void OcListView2::PassCount() {
    countPending_ = false;
    const int before = static_cast<int>(DefSubclassProc(list_, LVM_GETITEMCOUNT, 0, 0));
    DefSubclassProc(list_, LVM_SETITEMCOUNT, static_cast<WPARAM>(count()), LVSICF_NOSCROLL);
    if (before != count()) Resize();  // a scroll bar may have come or gone
}

std::vector<int> OcListView2::SortedOrder(int column, bool descending) const {
    const std::wstring separator = DecimalSeparator();
    std::vector<std::string> keys(rows_.size());
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        if (const Cell* const cell = CellAt(static_cast<int>(row), column))
            keys[row] = CellSortKey(cell->text, separator);
    }
    const auto before = [&](int left, int right) {
        return keys[static_cast<std::size_t>(descending ? right : left)] <
               keys[static_cast<std::size_t>(descending ? left : right)];
    };
    std::vector<int> order = AllRows(count());
    std::stable_sort(order.begin(), order.end(), before);
    return order;
}

void OcListView2::ShowSortArrow() const {
    if (!list_) return;
    const auto header = reinterpret_cast<HWND>(SendMessageW(list_, LVM_GETHEADER, 0, 0));
    for (int column = 0; column < static_cast<int>(columns_.size()); ++column) {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&item));
        item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        if (column == sortColumn_) item.fmt |= sortDescending_ ? HDF_SORTDOWN : HDF_SORTUP;
        SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&item));
    }
}

// Turns the box of `row`; the other selected rows follow it when it is one of them.
void OcListView2::ToggleChecks(int row) {
    const bool checked = !isChecked(row);
    const std::vector<int> rows = selection();
    if (!std::binary_search(rows.begin(), rows.end(), row)) return TurnCheck(row, checked);
    for (const int each : rows) {
        if (isChecked(each) != checked) TurnCheck(each, checked);
    }
}

// As the user's own act, which the dialog is told of.
void OcListView2::TurnCheck(int row, bool checked) {
    setCheck(row, checked);
    NMLISTVIEW change{};
    change.hdr = {list_, static_cast<UINT_PTR>(ctrlId_), LVN_ITEMCHANGED};
    change.iItem = row;
    change.uChanged = LVIF_STATE;
    change.uOldState = INDEXTOSTATEIMAGEMASK(checked ? 1u : 2u);
    change.uNewState = INDEXTOSTATEIMAGEMASK(checked ? 2u : 1u);
    SendMessageW(GetParent(list_), WM_NOTIFY, static_cast<WPARAM>(ctrlId_), reinterpret_cast<LPARAM>(&change));
}

RECT OcListView2::CheckRect(const RECT& cell) const {
    int width = 0;
    int height = 0;
    ImageList_GetIconSize(images_->checks.get(), &width, &height);
    const int left = static_cast<int>(cell.left) + Scale(kImagePadding);
    const int top = static_cast<int>(cell.top + cell.bottom - height) / 2;
    return {left, top, left + width, top + height};
}

// Columns may have been moved by the user and scrolled: the header knows.
RECT OcListView2::CellRect(const RECT& rowRect, int column) const {
    const auto header = reinterpret_cast<HWND>(SendMessageW(list_, LVM_GETHEADER, 0, 0));
    RECT rect{};
    SendMessageW(header, HDM_GETITEMRECT, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&rect));
    return {rowRect.left + rect.left, rowRect.top, rowRect.left + rect.right, rowRect.bottom};
}

bool OcListView2::IsOnCheck(int row, POINT point) const {
    RECT rect{LVIR_BOUNDS, 0, 0, 0};
    if (!SendMessageW(list_, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rect))) return false;
    const RECT box = CheckRect(CellRect(rect, 0));
    return PtInRect(&box, point) != FALSE;
}

bool OcListView2::FillDispInfo(NMLVDISPINFOW& info) const {
    LVITEMW& item = info.item;
    if (item.mask & LVIF_TEXT) AnswerText(item, getText(item.iItem, item.iSubItem));
    if ((item.mask & LVIF_STATE) && checks_) {
        item.state &= ~static_cast<UINT>(LVIS_STATEIMAGEMASK);
        item.state |= INDEXTOSTATEIMAGEMASK(isChecked(item.iItem) ? 2u : 1u);
    }
    return true;
}

void OcListView2::Draw(const DRAWITEMSTRUCT& item) const {
    const auto row = static_cast<int>(item.itemID);
    if (!HasRow(row)) return;
    const RowColors colors = ColorsOf(list_, (item.itemState & ODS_SELECTED) != 0);
    FillRect(item.hDC, &item.rcItem, GetSysColorBrush(colors.back));
    const auto font = reinterpret_cast<HFONT>(SendMessageW(list_, WM_GETFONT, 0, 0));
    const win32::Selected chosen(item.hDC, font ? font : GetCurrentObject(item.hDC, OBJ_FONT));
    const COLORREF oldColor = SetTextColor(item.hDC, GetSysColor(colors.text));
    const int oldMode = SetBkMode(item.hDC, TRANSPARENT);
    for (int column = 0; column < static_cast<int>(columns_.size()); ++column) {
        const RECT cell = CellRect(item.rcItem, column);
        if (RectVisible(item.hDC, &cell)) DrawCell(item.hDC, row, column, cell);
    }
    SetBkMode(item.hDC, oldMode);
    SetTextColor(item.hDC, oldColor);
    const bool cues = !(SendMessageW(list_, WM_QUERYUISTATE, 0, 0) & UISF_HIDEFOCUS);
    if ((item.itemState & ODS_FOCUS) && cues && GetFocus() == list_) DrawFocusRect(item.hDC, &item.rcItem);
}

void OcListView2::DrawCell(HDC dc, int row, int column, RECT rect) const {
    int textLeft = static_cast<int>(rect.left) + Scale(kCellPadding);
    if (column == 0 && checks_) {
        const RECT box = CheckRect(rect);
        ImageList_Draw(images_->checks.get(), isChecked(row) ? 2 : 1, dc, static_cast<int>(box.left),
                       static_cast<int>(box.top), ILD_TRANSPARENT);
        rect.left = box.right;
        textLeft = static_cast<int>(rect.left) + Scale(kImagePadding);
    }
    const Cell* const cell = CellAt(row, column);
    const int image = cell && cell->image >= 0 ? ImageLib::GetImage(cell->image, dpi_) : -1;
    if (image >= 0) {
        const int size = GetSystemMetricsForDpi(SM_CXSMICON, dpi_);
        const int left = static_cast<int>(rect.left) + Scale(kImagePadding);
        const int top = static_cast<int>(rect.top + rect.bottom - size) / 2;
        ImageList_Draw(ImageLib::GetImageList(dpi_), image, dc, left, top, ILD_TRANSPARENT);
        textLeft = left + size + Scale(kImagePadding);
    }
    rect.left = textLeft;
    rect.right -= Scale(kCellPadding);
    if (rect.left >= rect.right) return;
    const ustr text = getText(row, column);
    const UINT format = TextFormat(columns_[static_cast<std::size_t>(column)].format);
    DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &rect, format);
}
