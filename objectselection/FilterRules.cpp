#include "FilterRules.h"

#include <commctrl.h>
#include <orvatool/OCDialog.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace {

constexpr UINT_PTR kSubclass = 1;
constexpr int kTipWidth = 400;  // in pixels at 96 DPI; longer sentences are wrapped
constexpr LONG kListStyles = LVS_REPORT | LVS_OWNERDRAWFIXED | LVS_OWNERDATA;

constexpr ColumnRow kColumns[] = {kPropertyColumn, kOperatorColumn, kValueColumn};
enum Column : int { kProperty, kOperator, kValue };

bool IsListView(HWND window) {
    wchar_t name[64] = L"";
    return GetClassNameW(window, name, static_cast<int>(std::size(name))) > 0 && lstrcmpiW(name, WC_LISTVIEWW) == 0;
}

// A list view cannot be given the styles once it is there.
void GiveListStyles(HWND list) {
    const LONG style = GetWindowLongW(list, GWL_STYLE);
    if (!IsListView(list) || (style & (LVS_TYPEMASK | kListStyles)) == kListStyles) return;
    const HWND dlg = GetParent(list);
    RECT rect{};
    GetWindowRect(list, &rect);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&rect), 2);
    const CommonControlsScope controls;
    const HWND better = CreateWindowExW(static_cast<DWORD>(GetWindowLongW(list, GWL_EXSTYLE)), WC_LISTVIEWW, nullptr,
                                        static_cast<DWORD>((style & ~LVS_TYPEMASK) | kListStyles), rect.left, rect.top,
                                        rect.right - rect.left, rect.bottom - rect.top, dlg,
                                        reinterpret_cast<HMENU>(GetWindowLongPtrW(list, GWLP_ID)), nullptr, nullptr);
    if (!better) return;
    SendMessageW(better, WM_SETFONT, static_cast<WPARAM>(SendMessageW(list, WM_GETFONT, 0, 0)), FALSE);
    SetWindowPos(better, list, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    DestroyWindow(list);
}

bool IsEnter(LPARAM message) {
    return message && reinterpret_cast<const MSG*>(message)->wParam == VK_RETURN;
}

POINT PlaceOf(LPARAM mouse) {
    return {static_cast<short>(LOWORD(mouse)), static_cast<short>(HIWORD(mouse))};
}

}  // namespace

FilterRules::~FilterRules() {
    Detach();
}

void FilterRules::Attach(OCDialog* dlg, Lng::AppID app, const ObjectSelection::Dlg::Callback& callback, int listId) {
    Detach();
    dlg_ = dlg;
    app_ = app;
    host_ = HostCallback(callback);
    texts_ = HostTexts(host_);
    const HWND list = listId > 0 ? ::GetDlgItem(dlg->hWnd(), listId) : nullptr;
    if (!list) return;
    GiveListStyles(list);
    if (!list_.attach(dlg->hWnd(), listId)) return;
    SetWindowSubclass(list_.hWnd(), ListProc, kSubclass, reinterpret_cast<DWORD_PTR>(this));
    AddColumns(list_, kColumns);
    list_.stretchColumn(kProperty);
    SendMessageW(list_.hWnd(), LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_LABELTIP, 0);  // it would show cut-off texts only
    ShowRows(-1);
}

void FilterRules::Show(const std::vector<ObjectSelection::Property>& rules) {
    rules_ = rules;
    texts_ = HostTexts(host_);
    ShowRows(-1);
}

void FilterRules::SetLanguage() {
    ApplyColumnTexts(list_, kColumns);
    if (list_.hWnd()) InvalidateRect(list_.hWnd(), nullptr, FALSE);
}

void FilterRules::Add() {
    ObjectSelection::Property rule;
    if (ObjectSelection::Dlg::Edit(app_, dlg_->hWnd(), host_.Get(), rule) != 0) return;
    const int count = static_cast<int>(rules_.size());
    const int selected = list_.selected();
    const int row = selected < 0 || selected > count ? count : selected;
    rules_.insert(rules_.begin() + row, std::move(rule));
    ShowRows(row);
}

void FilterRules::Edit() {
    const int row = EditedRow();
    if (row < 0) return;
    const auto at = static_cast<std::size_t>(row);
    ObjectSelection::Property rule = rules_.at(at);
    if (ObjectSelection::Dlg::Edit(app_, dlg_->hWnd(), host_.Get(), rule) != 0) return;
    if (rules_.size() <= at) return;  // the host has shown others meanwhile
    rules_[at] = std::move(rule);
    ShowRows(row);
}

// Leaves the same as removing the rows one by one from the last to the first, in one pass.
void FilterRules::Delete() {
    const std::vector<int> rows = list_.selection();
    if (rows.empty()) return;
    auto next = rows.begin();
    int row = 0;
    std::erase_if(rules_, [&](const ObjectSelection::Property&) {
        const bool gone = next != rows.end() && *next == row++;
        if (gone) ++next;
        return gone;
    });
    ShowRows(std::min(rows.front(), static_cast<int>(rules_.size()) - 1));
}

bool FilterRules::CanEdit() const {
    return EditedRow() >= 0;
}

bool FilterRules::CanDelete() const {
    return list_.selected() >= 0;
}

bool FilterRules::OnNotify(const NMHDR* header) {
    LRESULT result = 0;
    if (list_.onNotify(header, result)) {
        dlg_->SetResult(result);
        return true;
    }
    if (!header || !list_.hWnd() || header->hwndFrom != list_.hWnd()) return false;
    switch (header->code) {
        case NM_DBLCLK:
            if (reinterpret_cast<const NMITEMACTIVATE*>(header)->iItem >= 0) Edit();
            return true;
        case NM_RETURN:
            Edit();
            return true;
        case LVN_KEYDOWN:
            return OnKey(reinterpret_cast<const NMLVKEYDOWN*>(header)->wVKey);
        default:
            return false;
    }
}

bool FilterRules::OnMeasureItem(MEASUREITEMSTRUCT* item) const {
    return list_.onMeasureItem(item);
}

bool FilterRules::OnDrawItem(const DRAWITEMSTRUCT* item) const {
    if (!item || !list_.hWnd() || item->hwndItem != list_.hWnd()) return false;
    SendMessageW(list_.hWnd(), WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(item));  // it bears with texts that fail
    return true;
}

LRESULT CALLBACK FilterRules::ListProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                       DWORD_PTR self) {
    auto* const rules = reinterpret_cast<FilterRules*>(self);
    if (message == WM_MOUSEMOVE) rules->FollowMouse(PlaceOf(lParam));
    if (message == WM_NOTIFY && rules->AnswerTip(reinterpret_cast<NMHDR*>(lParam))) return 0;
    if (message == WM_NCDESTROY) RemoveWindowSubclass(window, ListProc, kSubclass);
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    // Enter is the list's and not the default button's while there is a rule to edit.
    const bool keepsEnter = message == WM_GETDLGCODE && IsEnter(lParam) && rules->CanEdit();
    return keepsEnter ? result | DLGC_WANTMESSAGE : result;
}

void FilterRules::Detach() {
    if (list_.hWnd()) {
        RemoveWindowSubclass(list_.hWnd(), ListProc, kSubclass);
        DestroyWindow(tip_);
    }
    tip_ = nullptr;
}

void FilterRules::AddTip() {
    const HWND list = list_.hWnd();
    const CommonControlsScope controls;
    tip_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                           CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, list, nullptr, nullptr, nullptr);
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS | TTF_TRANSPARENT;
    tool.hwnd = list;
    tool.uId = reinterpret_cast<UINT_PTR>(list);
    tool.lpszText = LPSTR_TEXTCALLBACKW;
    SendMessageW(tip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(tip_, TTM_SETMAXTIPWIDTH, 0, dlg_->Scale(kTipWidth));
}

void FilterRules::FollowMouse(POINT place) {
    LVHITTESTINFO hit{};
    hit.pt = place;
    const int row = static_cast<int>(SendMessageW(list_.hWnd(), LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    if (row == tipRow_) return;
    if (!tip_) AddTip();
    tipRow_ = row;
    SendMessageW(tip_, TTM_POP, 0, 0);
}

bool FilterRules::AnswerTip(NMHDR* header) {
    if (header->hwndFrom != tip_ || header->code != TTN_GETDISPINFOW) return false;
    try {
        tipText_ = Sentence(tipRow_);
    } catch (...) {  // out of memory: no tip
        tipText_.clear();
    }
    reinterpret_cast<NMTTDISPINFOW*>(header)->lpszText = tipText_.data();
    return true;
}

bool FilterRules::OnKey(int virtualKey) {
    if (!KeyIsAlone()) return false;
    if (virtualKey == VK_INSERT) {
        Add();
    } else if (virtualKey == VK_F2) {
        Edit();
    } else if (virtualKey == VK_DELETE) {
        Delete();
    } else {
        return false;
    }
    return true;
}

// The row with the focus, when it is one of those selected.
int FilterRules::EditedRow() const {
    if (!list_.hWnd()) return -1;
    const int focused = ListView_GetNextItem(list_.hWnd(), -1, LVNI_FOCUSED | LVNI_SELECTED);
    return focused >= 0 ? focused : list_.selected();
}

void FilterRules::ShowRows(int selected) {
    const gwRedrawOff quiet(list_.hWnd());
    list_.selectRows({}, -1);
    list_.setVirtual(static_cast<int>(rules_.size()), [this](int row, int column) { return TextOf(row, column); });
    list_.select(selected);
    tipRow_ = -1;
}

ustr FilterRules::TextOf(int row, int column) {
    const ObjectSelection::Property& rule = rules_[static_cast<std::size_t>(row)];
    if (column == kProperty) return texts_.PropertyName(rule.propId);
    if (rule.criteria.empty()) return ustr();
    if (rule.criteria.size() > 1)
        return column == kOperator ? Lng::text(kSharedTexts, 60216, L"Multiple filter rules") : ustr();
    const Criterion& criterion = rule.criteria.front();
    return column == kOperator ? OperationName(criterion.operation) : texts_.ValueText(rule.propId, criterion);
}

ustr FilterRules::Sentence(int row) {
    if (row < 0 || row >= static_cast<int>(rules_.size())) return ustr();
    const ObjectSelection::Property& rule = rules_[static_cast<std::size_t>(row)];
    const auto valueText = [&](const Criterion& criterion) { return texts_.ValueText(rule.propId, criterion); };
    return RuleSentence(texts_.PropertyName(rule.propId), rule, valueText);
}
