#include "SimpleReportDlg.h"

#include <windows.h>

#include <commctrl.h>

#include <orvatool/FileDlgUtil.h>
#include <orvatool/Gw.h>
#include <orvatool/InterApp.h>

#include <algorithm>
#include <chrono>
#include <cwchar>
#include <iterator>
#include <utility>

#include "../resources/orvatool_ids.h"
#include "Cells.h"
#include "Module.h"
#include "SearchEdit.h"
#include "SimpleReportFile.h"
#include "Win32.h"

namespace {

constexpr wchar_t kPositionKey[] = L"Window/SimpleReportOuputDlg";

// Work that takes longer goes on in steps, between which the user can go on as well.
constexpr UINT_PTR kWorkTimer = 1;
constexpr std::chrono::milliseconds kStep{40};
constexpr std::chrono::hours kToTheEnd{1};
constexpr std::size_t kMarkedAtOnce = 200;  // rows that the list is told are selected

constexpr int kButtons[] = {IDC_SIMPLEREPORT_ZOOM, IDC_SIMPLEREPORT_COPY, IDC_SIMPLEREPORT_SAVE, IDCANCEL};

using Menu = win32::Unique<HMENU, DestroyMenu>;

// A file name that the title proposes.
ustr ProposedName(std::wstring_view title) {
    ustr name;
    for (const wchar_t c : title)
        name.append(c < L' ' || std::wcschr(L"\\/:*?\"<>|", c) ? L'_' : c);
    return name;
}

void AddType(FileDlgUtil::CFilterSpecList& types, ustr label, const wchar_t* pattern) {
    types.Add(label.append(L" (").append(pattern).append(L")"), pattern);
}

// What the system has to say about an error.
ustr SystemMessage(DWORD error) {
    wchar_t text[512] = L"";
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                   static_cast<DWORD>(std::size(text)), nullptr);
    return text;
}

// Whether rows were selected or deselected: the focus may move alone.
bool ChangesSelection(const NMHDR& header) {
    if (header.code != LVN_ITEMCHANGED) return header.code == LVN_ODSTATECHANGED;
    const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
    return ((change.uOldState ^ change.uNewState) & LVIS_SELECTED) != 0;
}

bool IsPressed(int virtualKey) {
    return GetKeyState(virtualKey) < 0;
}

}  // namespace

SimpleReportDlg::SimpleReportDlg(HWND parent, const SimpleReport& report, const DialogCallback& callback)
    : OCDialog(ToolkitModule(), parent), report_(report), callback_(callback), view_(report_), shown_(view_.Rows()) {
}

HWND SimpleReportDlg::CreateModeless(HWND parent, const SimpleReport& report, const DialogCallback& callback) {
    const auto dlg = std::make_shared<SimpleReportDlg>(parent, report, callback);
    dlg->self_ = dlg;
    const HWND window = dlg->Create(kTemplate, parent);
    if (!window) dlg->self_.reset();
    return window;
}

SimpleReportOuputDlg::ZoomTo& SimpleReportDlg::ZoomHandler() {
    static SimpleReportOuputDlg::ZoomTo handler;
    return handler;
}

void SimpleReportDlg::SetAnchoring() {
    OCDialog::SetAnchoring();
    addCtrlAnchor(IDC_SIMPLEREPORT_SEARCH, false, false, true, false);
    addCtrlAnchor(IDC_SIMPLEREPORT_LIST, false, false, true, true);
    addCtrlAnchor(IDC_SIMPLEREPORT_COUNT, false, true, true, true);
    for (const int button : kButtons)
        addCtrlAnchor(button, true, true, true, true);
}

bool SimpleReportDlg::OnDrawItem(int ctrlId, DRAWITEMSTRUCT* item) {
    return list_.onDrawItem(item) || OCDialog::OnDrawItem(ctrlId, item);
}

bool SimpleReportDlg::OnMeasureItem(int ctrlId, MEASUREITEMSTRUCT* item) {
    return list_.onMeasureItem(item) || OCDialog::OnMeasureItem(ctrlId, item);
}

bool SimpleReportDlg::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    const auto keep = self_;  // what is run here may close the window
    switch (LOWORD(wParam)) {
        case IDC_SIMPLEREPORT_SEARCH:
            if (HIWORD(wParam) == EN_CHANGE) Search();
            return true;
        case IDC_SIMPLEREPORT_ZOOM:
            Zoom();
            return true;
        case IDC_SIMPLEREPORT_COPY:
            Copy();
            return true;
        case IDC_SIMPLEREPORT_SAVE:
            Save();
            return true;
        case IDC_SIMPLEREPORT_SELECT_ALL:
            SelectAll();
            return true;
        default:
            return OCDialog::OnCommand(wParam, lParam);
    }
}

bool SimpleReportDlg::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    const auto* const header = reinterpret_cast<const NMHDR*>(lParam);
    LRESULT result = 0;
    if (list_.onNotify(header, result)) {
        SetResult(result);
        return true;
    }
    if (header->hwndFrom != list_.hWnd()) return OCDialog::OnNotify(wParam, lParam);
    if (ChangesSelection(*header) && !marking_) {
        hiddenSelected_.clear();  // the user selects anew
        waiting_.clear();
        SelectionChanged();
    }
    if (header->code == LVN_COLUMNCLICK) ChangeOrder(reinterpret_cast<const NMLISTVIEW*>(lParam)->iSubItem);
    if (header->code == NM_DBLCLK && reinterpret_cast<const NMITEMACTIVATE*>(lParam)->iItem >= 0) RequestZoom();
    return OCDialog::OnNotify(wParam, lParam);
}

bool SimpleReportDlg::OnAppMessage(unsigned int message, unsigned __int64 wParam, __int64 lParam) {
    const auto keep = self_;
    if (!callback_) return OCDialog::OnAppMessage(message, wParam, lParam);
    std::int64_t result = 0;
    try {
        result = callback_(this, message, wParam, lParam);
    } catch (...) {
        result = 0;  // as agreed with who gave it
    }
    SetResult(result);
    return true;
}

// A window that is created hidden leaves the focus where it is.
bool SimpleReportDlg::OnInitDialog() {
    OCDialog::OnInitDialog();
    SetKeys({VK_ESCAPE, 'C', 'F', 'S'});
    FillList();
    const ustr cue = Lng::text(kSharedTexts, 90015, L"Words in any column");
    AttachSearchEdit(SearchEdit(), list_.hWnd(), cue.c_str());
    ShowCtrl(IDC_SIMPLEREPORT_ZOOM, static_cast<bool>(ZoomHandler()));
    SelectionChanged();
    return IsModal();
}

void SimpleReportDlg::OnDestroy() {
    const auto keep = std::move(self_);
    OCDialog::OnDestroy();
}

bool SimpleReportDlg::OnContextMenu(HWND control, POINT screenPoint) {
    if (control != list_.hWnd()) return OCDialog::OnContextMenu(control, screenPoint);
    const Menu menu(CreatePopupMenu());
    const auto add = [&menu](int command, const ustr& text, bool enabled) {
        AppendMenuW(menu.get(), MF_STRING | (enabled ? MF_ENABLED : MF_GRAYED), static_cast<UINT_PTR>(command),
                    text.c_str());
    };
    for (const int button : kButtons) {
        const HWND window = GetDlgItem(static_cast<short>(button));
        if (button == IDCANCEL || !(GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE)) continue;
        if (button == IDC_SIMPLEREPORT_SAVE) {
            add(IDC_SIMPLEREPORT_SELECT_ALL, Lng::text(kSharedTexts, 90024, L"Select all"), !shown_.empty());
        }
        add(button, gwdlgtomemo(hWnd(), button), IsWindowEnabled(window) != FALSE);
    }
    const POINT place = MenuPoint(screenPoint);
    TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_RIGHTBUTTON, place.x, place.y, 0, hWnd(), nullptr);
    return true;
}

bool SimpleReportDlg::OnTimer(unsigned __int64 id, TIMERPROC procedure) {
    if (id != kWorkTimer) return OCDialog::OnTimer(id, procedure);
    Work(kStep);
    return true;
}

bool SimpleReportDlg::OnKeyDown(int virtualKey) {
    if (IsPressed(VK_MENU)) return false;
    if (virtualKey == VK_ESCAPE) {
        if (GetWindowTextLengthW(SearchEdit()) == 0) return false;
        SetWindowTextW(SearchEdit(), L"");
        return true;
    }
    if (!IsPressed(VK_CONTROL)) return false;
    if (virtualKey == 'F') {
        SetFocus(IDC_SIMPLEREPORT_SEARCH);
        return true;
    }
    if (virtualKey == 'S') {
        PostMessageW(hWnd(), WM_COMMAND, IDC_SIMPLEREPORT_SAVE, 0);
        return true;
    }
    // An empty search field has nothing to copy of its own.
    const bool inSearch = HasFocus(IDC_SIMPLEREPORT_SEARCH) && GetWindowTextLengthW(SearchEdit()) == 0;
    if (virtualKey != 'C' || !(inSearch || HasFocus(IDC_SIMPLEREPORT_LIST)) || shown_.empty()) return false;
    Copy();
    return true;
}

bool SimpleReportDlg::OnEnterPressed() {
    const bool searching = HasFocus(IDC_SIMPLEREPORT_SEARCH);
    if (!searching && !HasFocus(IDC_SIMPLEREPORT_LIST)) return OCDialog::OnEnterPressed();
    if (ZoomRow() >= 0) {
        RequestZoom();
        return true;
    }
    if (!searching || GetWindowTextLengthW(SearchEdit()) == 0) return OCDialog::OnEnterPressed();
    if (list_.selected() < 0) list_.select(0);
    SetFocus(IDC_SIMPLEREPORT_LIST);
    return true;
}

void SimpleReportDlg::SetLanguage() {
    OCDialog::SetLanguage();
    ustr caption = report_.Title();
    const ustr name = Lng::GetAppName(report_.AppID(), false);
    if (!name.empty()) caption.append(L" - ").append(name);
    SetWindowTextW(hWnd(), caption.c_str());
    SetWindowTextW(list_.hWnd(), report_.Title().c_str());  // its accessible name
    setItemText(kSharedTexts, IDC_SIMPLEREPORT_SEARCH_LBL, 90014, L"Search");
    setItemText(kSharedTexts, IDC_SIMPLEREPORT_ZOOM, 90016, L"Zoom to object");
    setItemText(kSharedTexts, IDC_SIMPLEREPORT_COPY, 90017, L"Copy");
    setItemText(kSharedTexts, IDC_SIMPLEREPORT_SAVE, 90018, L"Save as...");
    setItemText(kSharedTexts, IDCANCEL, 90019, L"Close");
    ShowCount();
}

void SimpleReportDlg::SetPosition() {
    InterApp::HPV::Reg_GetWindowPos_(nullptr, kPositionKey, hWnd(), nullptr, nullptr, true);
}

void SimpleReportDlg::SavePosition() {
    InterApp::HPV::Reg_SetWindowPos_(nullptr, kPositionKey, hWnd());
    ReportLayout layout = layout_;
    for (std::uint32_t column = 0; column < layout.columnCount; ++column)
        layout.widths[column] = WidthOf(static_cast<int>(column));
    layout.sortColumn = view_.OrderColumn();
    layout.descending = view_.OrderColumn() >= 0 && view_.Descending();
    if (layout != layout_) layout.Write(report_.Name());
}

ustr SimpleReportDlg::GetPositionRegistryKey() const {
    return kPositionKey;
}

// With the columns as the user has left them.
void SimpleReportDlg::FillList() {
    list_.attach(hWnd(), IDC_SIMPLEREPORT_LIST);
    const std::vector<SimpleReport::Column>& columns = report_.Columns();
    const bool keeps = columns.size() <= ReportLayout::kMostColumns;
    layout_.columnCount = keeps ? static_cast<std::uint32_t>(columns.size()) : 0;
    for (std::uint32_t column = 0; column < layout_.columnCount; ++column)
        layout_.widths[column] = columns[column].width;
    layout_.Read(report_.Name());
    for (std::size_t column = 0; column < columns.size(); ++column) {
        const int width = keeps ? layout_.widths[column] : columns[column].width;
        list_.addColumn(columns[column].text, width, columns[column].format);
    }
    ShowRows();
    if (layout_.sortColumn < 0) return;
    view_.SetOrder(layout_.sortColumn, layout_.descending != 0);
    list_.sort(view_.OrderColumn(), view_.Descending());
    Work(kStep);
}

bool SimpleReportDlg::HasFocus(int ctrlId) const {
    return GetFocus() && GetFocus() == GetDlgItem(static_cast<short>(ctrlId));
}

HWND SimpleReportDlg::SearchEdit() const {
    return GetDlgItem(IDC_SIMPLEREPORT_SEARCH);
}

void SimpleReportDlg::Search() {
    view_.SetSearch(gwdlgtomemo(hWnd(), IDC_SIMPLEREPORT_SEARCH));
    Work(kStep);
}

// Up, down, and back to the report's own order.
void SimpleReportDlg::ChangeOrder(int column) {
    if (column != view_.OrderColumn()) {
        view_.SetOrder(column, false);
    } else if (!view_.Descending()) {
        view_.SetOrder(column, true);
    } else {
        view_.SetOrder(-1, false);
    }
    list_.sort(view_.OrderColumn(), view_.Descending());
    Work(kStep);
}

// What can be done at once is done at once.
void SimpleReportDlg::Work(std::chrono::milliseconds budget) {
    if (view_.Pending() == ReportView::Task::None) {
        MarkRows(budget);
    } else if (view_.Work(budget)) {
        ShowRows();
    }
    if (IsBusy()) {
        SetTimer(hWnd(), kWorkTimer, USER_TIMER_MINIMUM, nullptr);
    } else {
        KillTimer(hWnd(), kWorkTimer);
    }
    ShowCount();
}

void SimpleReportDlg::FinishWork() {
    while (IsBusy())
        Work(kToTheEnd);
}

bool SimpleReportDlg::IsBusy() const {
    return view_.Pending() != ReportView::Task::None || !waiting_.empty();
}

void SimpleReportDlg::ShowRows() {
    const std::vector<int> selected = SelectedRows();
    const int focused = FocusedRow();
    shown_ = view_.Rows();
    const gwRedrawOff redrawOff(list_.hWnd());
    list_.setVirtual(static_cast<int>(shown_.size()), [this](int row, int column) {
        ustr text;
        AppendCell(text, report_.Text(shown_[static_cast<std::size_t>(row)], column));
        return text;
    });
    ShowSelection(selected, focused);
    SelectionChanged();
}

void SimpleReportDlg::ShowSelection(const std::vector<int>& rows, int focused) {
    std::vector<int> placeOf(static_cast<std::size_t>(report_.RowCount()), -1);
    for (std::size_t place = 0; place < shown_.size(); ++place)
        placeOf[static_cast<std::size_t>(shown_[place])] = static_cast<int>(place);
    std::vector<int> places;
    hiddenSelected_.clear();
    waiting_.clear();
    for (const int row : rows) {
        const int place = placeOf[static_cast<std::size_t>(row)];
        place < 0 ? hiddenSelected_.push_back(row) : places.push_back(place);
    }
    const int focusedPlace = focused < 0 ? -1 : placeOf[static_cast<std::size_t>(focused)];
    std::sort(places.begin(), places.end());
    const int first = places.empty() ? 0 : places.front();
    if (places.size() > kMarkedAtOnce && places.size() < shown_.size()) {
        waiting_.assign(places.rbegin(), places.rend() - kMarkedAtOnce);
        places.resize(kMarkedAtOnce);
    }
    list_.selectRows(places, focusedPlace);
    SendMessageW(list_.hWnd(), LVM_ENSUREVISIBLE, static_cast<WPARAM>(first), FALSE);
}

// The control takes its time for rows that lie here and there.
void SimpleReportDlg::MarkRows(std::chrono::milliseconds budget) {
    const auto end = std::chrono::steady_clock::now() + budget;
    marking_ = true;
    while (!waiting_.empty() && std::chrono::steady_clock::now() < end) {
        ListView_SetItemState(list_.hWnd(), waiting_.back(), LVIS_SELECTED, LVIS_SELECTED);
        waiting_.pop_back();
    }
    marking_ = false;
}

void SimpleReportDlg::ShowCount() {
    const auto shown = static_cast<int>(shown_.size());
    ustr text;
    switch (view_.Pending()) {
        case ReportView::Task::Search:
            text = Lng::text(kSharedTexts, 90020, L"Searching…");
            break;
        case ReportView::Task::Sort:
            text = Lng::text(kSharedTexts, 90021, L"Sorting…");
            break;
        case ReportView::Task::None:
            if (view_.IsSearching()) {
                text.format(Lng::text(kSharedTexts, 90022, L"%d of %d rows").c_str(), shown, report_.RowCount());
            } else if (shown == 1) {
                text = Lng::text(kSharedTexts, 90025, L"1 row");
            } else {
                text.format(Lng::text(kSharedTexts, 90023, L"%d rows").c_str(), shown);
            }
            break;
    }
    Lng::setdlgitemtext(hWnd(), IDC_SIMPLEREPORT_COUNT, text, false);
}

// Rows of the report, also those that the list does not have or know of.
std::vector<int> SimpleReportDlg::SelectedRows() const {
    std::vector<int> rows = hiddenSelected_;
    for (const int place : waiting_)
        rows.push_back(shown_[static_cast<std::size_t>(place)]);
    for (const int place : list_.selection())
        rows.push_back(shown_[static_cast<std::size_t>(place)]);
    return rows;
}

int SimpleReportDlg::FocusedRow() const {
    const auto place =
        static_cast<int>(SendMessageW(list_.hWnd(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
    return place < 0 ? -1 : shown_[static_cast<std::size_t>(place)];
}

// The row that zooming would go to, -1 for none.
int SimpleReportDlg::ZoomRow() const {
    if (!ZoomHandler() || SendMessageW(list_.hWnd(), LVM_GETSELECTEDCOUNT, 0, 0) != 1) return -1;
    const int row = shown_[static_cast<std::size_t>(list_.selected())];
    return report_.Pos(row).IsSet() ? row : -1;
}

void SimpleReportDlg::SelectionChanged() {
    EnableCtrl(IDC_SIMPLEREPORT_ZOOM, ZoomRow() >= 0);
    EnableCtrl(IDC_SIMPLEREPORT_COPY, !shown_.empty());
}

// Later, when the control that the request comes from has done with its message: zooming may close the window.
void SimpleReportDlg::RequestZoom() {
    if (ZoomRow() >= 0) PostMessageW(hWnd(), WM_COMMAND, IDC_SIMPLEREPORT_ZOOM, 0);
}

void SimpleReportDlg::Zoom() {
    const int row = ZoomRow();
    if (row < 0) return;
    const SimpleReportOuputDlg::ZoomTo zoomTo = ZoomHandler();  // which may be replaced meanwhile
    bool found = false;
    try {
        found = zoomTo(hWnd(), report_.Pos(row));
    } catch (...) {
        found = false;
    }
    if (found || !hWnd()) return;
    const ustr message = Lng::text(kSharedTexts, 90026,
                                   L"The object cannot be shown. It may have been deleted from the drawing, or the "
                                   L"drawing may have been moved or renamed.");
    gwmsg(hWnd(), report_.AppID(), message.c_str());
}

void SimpleReportDlg::Copy() {
    bool copied = false;
    {
        const gwWaitCursor wait;
        FinishWork();
        copied = gwcopytext(hWnd(), list_.copyText());
    }
    if (copied) return;
    const ustr message = Lng::text(kSharedTexts, 90027,
                                   L"The rows could not be copied, since another program is using the clipboard. Try "
                                   L"again in a moment.");
    gwerrmsg(hWnd(), report_.AppID(), message.c_str());
}

void SimpleReportDlg::Save() {
    FileDlgUtil::CFilterSpecList types;
    AddType(types, Lng::text(kSharedTexts, 60051, L"Text file (tab delimited)"), L"*.txt");
    AddType(types, Lng::text(kSharedTexts, 60056, L"Excel file") + L" (xml)", L"*.xml");
    types.SetDefaultExt(L"txt");
    ustr_pre<260> path = path_.empty() ? ustr_pre<260>(ProposedName(report_.Title())) : path_;
    if (!FileDlgUtil::SelectFile(hWnd(), FileDlgUtil::Mode::Save, nullptr, types, path) || !hWnd()) return;
    std::uint32_t error = 0;
    {
        const gwWaitCursor wait;
        FinishWork();
        error = WriteReport(path.c_str(), report_, shown_);
    }
    path_ = path;
    if (!error) return;
    ustr message;
    message.format(Lng::text(kSharedTexts, 90028,
                             L"The report could not be saved as\n%s\n\n%s\nClose the file if another program has "
                             L"it open, or save the report in another folder or under another name.")
                       .c_str(),
                   path.c_str(), SystemMessage(error).c_str());
    gwerrmsg(hWnd(), report_.AppID(), message.c_str());
}

void SimpleReportDlg::SelectAll() {
    ListView_SetItemState(list_.hWnd(), -1, LVIS_SELECTED, LVIS_SELECTED);
    SetFocus(IDC_SIMPLEREPORT_LIST);
}

// Where the menu of the keyboard opens: below the focused row.
POINT SimpleReportDlg::MenuPoint(POINT screenPoint) const {
    if (screenPoint.x != -1 || screenPoint.y != -1) return screenPoint;
    const LRESULT place = SendMessageW(list_.hWnd(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED);
    RECT row{LVIR_BOUNDS, 0, 0, 0};
    RECT client{};
    GetClientRect(list_.hWnd(), &client);
    POINT point{0, 0};
    if (place >= 0 &&
        SendMessageW(list_.hWnd(), LVM_GETITEMRECT, static_cast<WPARAM>(place), reinterpret_cast<LPARAM>(&row)))
        point = {std::clamp(row.left, client.left, client.right), std::clamp(row.bottom, client.top, client.bottom)};
    ClientToScreen(list_.hWnd(), &point);
    return point;
}

// Of a column, at 96 DPI.
int SimpleReportDlg::WidthOf(int column) const {
    const auto width = static_cast<int>(SendMessageW(list_.hWnd(), LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0));
    return MulDiv(width, USER_DEFAULT_SCREEN_DPI, static_cast<int>(GetDpi()));
}
