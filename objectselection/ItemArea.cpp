#include "ItemArea.h"

#include <commctrl.h>
#include <orvatool/Gw.h>

#include "CommonTexts.h"

namespace {

// In dialog units.
constexpr int kSearchHeight = 14;
constexpr int kSearchGap = 4;
constexpr int kLeastHeightToSearch = 70;

RECT PlaceIn(HWND dlg, HWND control) {
    RECT place{};
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

int DialogUnits(HWND dlg, int vertical) {
    RECT rect{0, 0, 0, vertical};
    MapDialogRect(dlg, &rect);
    return static_cast<int>(rect.bottom);
}

void PutBefore(HWND window, HWND next) {
    const HWND before = GetWindow(next, GW_HWNDPREV);
    SetWindowPos(window, before ? before : HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void RemoveStyle(HWND window, LONG_PTR flag) {
    const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE);
    if (style & flag) SetWindowLongPtrW(window, GWL_STYLE, style & ~flag);
}

}  // namespace

void ItemArea::Attach(OCDialog* dlg, HWND tree, int labelId, int editId) {
    dlg_ = dlg;
    trees_.clear();
    shown_ = edit_ = nullptr;
    if (!tree) return;
    trees_.push_back(tree);
    AddSearch(labelId, editId);
    RemoveStyle(tree, TVS_CHECKBOXES);  // the toolkit's check boxes know a third state
    gwTVaddChecks(tree);
    ShowWindow(tree, false);
}

HWND ItemArea::AddTree(int id) {
    if (trees_.empty()) return nullptr;
    const HWND pattern = trees_.front();
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(pattern, GWL_STYLE)) & ~DWORD{WS_VISIBLE};
    const auto exStyle = static_cast<DWORD>(GetWindowLongPtrW(pattern, GWL_EXSTYLE));
    const HWND tree = Create(WC_TREEVIEWW, style, exStyle, PlaceIn(dlg_->hWnd(), pattern), id);
    if (!tree) return nullptr;
    SetWindowPos(tree, trees_.back(), 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    gwTVaddChecks(tree);
    trees_.push_back(tree);
    return tree;
}

void ItemArea::Show(HWND tree, TreeSearch* search, const ustr& searchText) {
    const bool searched = tree && search && edit_;
    if (searched) {
        const TextRow cue = SearchText(0);
        search->SetEdit(edit_, Lng::text(cue.app, cue.textId, cue.text).c_str());
        SetWindowTextW(edit_, searchText.c_str());
    }
    shown_ = tree;
    // Tips are a window of their own: a template whose tree has none opens faster, and they come with the first look.
    if (tree) RemoveStyle(tree, TVS_NOTOOLTIPS);
    for (const HWND other : trees_)
        ShowWindow(other, other == tree);
    ShowWindow(edit_, searched);
}

void ItemArea::Enable(HWND tree, bool enable) {
    dlg_->EnableCtrl(GetDlgCtrlID(tree), enable);
    if (edit_ && tree == shown_) dlg_->EnableCtrl(GetDlgCtrlID(edit_), enable);
}

bool ItemArea::Contains(POINT screenPoint) const {
    RECT place{};
    return !trees_.empty() && GetWindowRect(trees_.front(), &place) && PtInRect(&place, screenPoint);
}

// The field needs a label before it for its name, but no room for that: what it is for is written in it.
void ItemArea::AddSearch(int labelId, int editId) {
    const HWND tree = trees_.front();
    RECT place = PlaceIn(dlg_->hWnd(), tree);
    if (place.bottom - place.top < DialogUnits(dlg_->hWnd(), kLeastHeightToSearch)) return;
    RECT field = place;
    field.bottom = field.top + DialogUnits(dlg_->hWnd(), kSearchHeight);
    const HWND label = Create(WC_STATICW, WS_CHILD | SS_NOPREFIX, 0, {}, labelId);
    edit_ = Create(WC_EDITW, WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE, field, editId);
    if (!edit_) return;
    PutBefore(label, tree);
    PutBefore(edit_, tree);
    const TextRow text = SearchText(labelId);
    dlg_->setItemText(text.app, text.ctrlId, text.textId, text.text);
    place.top = field.bottom + DialogUnits(dlg_->hWnd(), kSearchGap);
    SetWindowPos(tree, nullptr, static_cast<int>(place.left), static_cast<int>(place.top),
                 static_cast<int>(place.right - place.left), static_cast<int>(place.bottom - place.top),
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

HWND ItemArea::Create(const wchar_t* type, DWORD style, DWORD exStyle, const RECT& place, int id) const {
    const HWND window =
        CreateWindowExW(exStyle, type, L"", style, static_cast<int>(place.left), static_cast<int>(place.top),
                        static_cast<int>(place.right - place.left), static_cast<int>(place.bottom - place.top),
                        dlg_->hWnd(), reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), nullptr, nullptr);
    SendMessageW(window, WM_SETFONT, static_cast<WPARAM>(SendMessageW(trees_.front(), WM_GETFONT, 0, 0)), FALSE);
    return window;
}

void ItemArea::ShowWindow(HWND window, bool show) const {
    const bool shown = window && (GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0;
    if (window && shown != show) dlg_->ShowCtrl(GetDlgCtrlID(window), show);
}
