#include "CtrlImpl.h"

#include <commctrl.h>
#include <orvatool/Gw.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "DrawingRows.h"

namespace ObjectSelection::Dlg {
namespace {

enum MenuId {
    kCurrentFolderOnly = 400,
    kAsFolders = 401,
    kManageDrawings = 402,
    kEditRule = 403,
    kAddRule = 404,
    kDeleteRules = 405,
    kCheckAll = 410,
    kCheckNone = 411,
    kInvertChecks = 412,
};

struct DestroyMenuFn {
    void operator()(HMENU menu) const { DestroyMenu(menu); }
};
using Menu = std::unique_ptr<HMENU__, DestroyMenuFn>;

void AddEntry(const Menu& menu, MenuId id, const ustr& text, UINT flags = 0) {
    AppendMenuW(menu.get(), MF_STRING | flags, static_cast<UINT_PTR>(id), text.c_str());
}

void AddSeparator(const Menu& menu) {
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
}

UINT CheckedIf(bool checked) {
    return checked ? MF_CHECKED : MF_UNCHECKED;
}

UINT EnabledIf(bool enabled) {
    return enabled ? MF_ENABLED : MF_GRAYED;
}

// The keyboard gives no place: then the menu opens at the control.
void Track(const Menu& menu, HWND dlg, HWND at, POINT screenPoint) {
    if (screenPoint.x == -1 && screenPoint.y == -1) {
        screenPoint = {0, 0};
        ClientToScreen(at, &screenPoint);
    }
    TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_RIGHTBUTTON, static_cast<int>(screenPoint.x),
                   static_cast<int>(screenPoint.y), 0, dlg, nullptr);
}

// The items without others below them.
void TurnLeaves(HWND tree, int (*turn)(int state)) {
    const gwRedrawOff quiet(tree);
    std::vector<HTREEITEM> leaves;
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = gwTVnext(tree, item)) {
        if (!TreeView_GetChild(tree, item)) leaves.push_back(item);
    }
    for (const HTREEITEM item : leaves)
        gwTVsetCheck(tree, item, turn(gwTVgetCheck(tree, item)));
    gwTVUpdate3StateCheckForItems(tree, leaves);
}

bool MayTurnCheck(UINT code) {
    return code == NM_CLICK || code == NM_DBLCLK || code == TVN_KEYDOWN;
}

}  // namespace

const Ctrl::Impl::CommandRow Ctrl::Impl::kCommands[] = {
    {kManual,        BN_CLICKED,    &Impl::ClickManual        },
    {kCurrent,       BN_CLICKED,    &Impl::ClickCurrent       },
    {kSelected,      BN_CLICKED,    &Impl::ClickSelected      },
    {kConfiguration, CBN_SELCHANGE, &Impl::ChooseConfiguration},
    {kSave,          BN_CLICKED,    &Impl::Save               },
    {kSaveAs,        BN_CLICKED,    &Impl::SaveAs             },
    {kDelete,        BN_CLICKED,    &Impl::RemoveConfiguration},
    {kRename,        BN_CLICKED,    &Impl::Rename             },
};

const Ctrl::Impl::MenuRow Ctrl::Impl::kMenuCommands[] = {
    {kCurrentFolderOnly, &Impl::ToggleCurrentFolder},
    {kAsFolders,         &Impl::ToggleFolders      },
    {kManageDrawings,    &Impl::ManageDrawings     },
    {kEditRule,          &Impl::EditRule           },
    {kAddRule,           &Impl::AddRule            },
    {kDeleteRules,       &Impl::DeleteRules        },
    {kCheckAll,          &Impl::CheckAll           },
    {kCheckNone,         &Impl::CheckNone          },
    {kInvertChecks,      &Impl::InvertChecks       },
};

bool Ctrl::Impl::OnCommand(WPARAM wParam, LPARAM lParam) {
    if (!initialized_ || !Window()) return false;
    if (labels_.OnCommand(wParam, lParam)) return true;
    const int id = LOWORD(wParam);
    const int code = HIWORD(wParam);
    if (area_.SearchField() && id == largestId_ + kSearchEdit) {
        if (code == EN_CHANGE && !showing_) SearchChanged();
        return true;
    }
    for (const CommandRow& row : kCommands) {
        if (!Control(row.slot) || id != state_.ids[row.slot] || code != row.code) continue;
        if (!showing_ && !IsOnlyFocused(row.slot)) (this->*row.run)();
        return true;
    }
    if (lParam != 0 || code > 1) return false;  // of a control
    for (const MenuRow& row : kMenuCommands) {
        if (id != row.id) continue;
        (this->*row.run)();
        return true;
    }
    return false;
}

// A radio button that gets the focus says that it is clicked. An automatic one that really is has checked itself
// before.
bool Ctrl::Impl::IsOnlyFocused(Slot slot) const {
    if (slot != kManual && slot != kCurrent && slot != kSelected) return false;
    return (GetWindowLongW(Control(slot), GWL_STYLE) & BS_TYPEMASK) == BS_AUTORADIOBUTTON && !IsChecked(slot);
}

bool Ctrl::Impl::OnNotify(WPARAM /*wParam*/, LPARAM lParam) {
    const auto* const header = reinterpret_cast<const NMHDR*>(lParam);
    if (!initialized_ || !Window() || !header->hwndFrom) return false;
    if (header->hwndFrom == filter_.ListWindow()) {
        const bool handled = filter_.OnNotify(header);
        ShowFilterCount();
        return handled;
    }
    if (header->hwndFrom == categories_.Window()) return OnCategoryNotify(header, lParam);
    Node* const node = NodeOf(header->hwndFrom);
    return node && OnItemsNotify(*node, header);
}

void Ctrl::Impl::ClickSource(Source source) {
    CheckSource(source);
    ReadCriteria();
    InvalidateOfDrawings();
    Node& drawings = nodes_[kModelDrawings];
    const bool choose = source == Source::Selected && !Has(kCurrentDrawingOnly) && IsOffered(drawings) && drawings.tree;
    if (choose) {
        categories_.SetChecked(drawings.id, true);
        categories_.Select(drawings.id);
    }
    EnableDisableCtrls(EnableAll);
    if (choose && drawings.filled && drawings.items->Count(state_.record.data, true) == 0) CheckEvery(drawings);
}

// Whether a search shows them or not.
void Ctrl::Impl::CheckEvery(Node& node) {
    TreeSearch& search = *node.items->Search();
    search.SetChecks(std::vector<int>(search.GetChecks().size(), kTreeChecked));
    ItemsTouched(node);
}

void Ctrl::Impl::SearchChanged() {
    Node* const node = Selected();
    TreeSearch* const search = node && node->filled ? node->items->Search() : nullptr;
    if (!search) return;
    node->search = gwdlgtomemo(Window(), largestId_ + kSearchEdit);
    search->Filter(node->search);
}

void Ctrl::Impl::ToggleCurrentFolder() {
    SharedDrawingView().currentFolderOnly = !SharedDrawingView().currentFolderOnly;
    RefillSelected();
}

void Ctrl::Impl::ToggleFolders() {
    SharedDrawingView().asFolders = !SharedDrawingView().asFolders;
    RefillSelected();
}

bool Ctrl::Impl::HasDrawingManager() const {
    return state_.app == Lng::Hpv || state_.app == Lng::Electrical;
}

void Ctrl::Impl::ManageDrawings() {
    if (!HasDrawingManager()) return;
    PrjLock lock;
    if (Has(kLockForDrawings) && !lock.Lock(Window(), state_.host.Get())) return;
    state_.host.Ask(CbMsgId::ManageDrawings, HostCallback::WParam(Window()));
    ShowLabels();
    lock.Unlock();
    if (Window()) RefillSelected();
}

void Ctrl::Impl::AddRule() {
    if (!Control(kFilter)) return;
    filter_.Add();
    ShowFilterCount();
}

void Ctrl::Impl::EditRule() {
    if (filter_.CanEdit()) filter_.Edit();
}

void Ctrl::Impl::DeleteRules() {
    if (filter_.CanDelete()) filter_.Delete();
    ShowFilterCount();
}

void Ctrl::Impl::CheckAll() {
    TurnChecks([](int) -> int { return kTreeChecked; });
}

void Ctrl::Impl::CheckNone() {
    TurnChecks([](int) -> int { return kTreeUnchecked; });
}

void Ctrl::Impl::InvertChecks() {
    TurnChecks([](int state) -> int { return state == kTreeChecked ? kTreeUnchecked : kTreeChecked; });
}

// Of the items that a search shows only.
void Ctrl::Impl::TurnChecks(int (*turn)(int state)) {
    Node* const node = Selected();
    if (!node || !node->filled || !IsWindowEnabled(node->tree)) return;
    if (TreeSearch* const search = node->items->Search()) {
        search->TurnChecks(turn);
    } else {
        TurnLeaves(node->tree, turn);
    }
    ItemsTouched(*node);
}

// The other trees of drawings follow when they are shown.
void Ctrl::Impl::RefillSelected() {
    ReadCriteria();
    InvalidateOfDrawings();
    Invalidate(nodes_[kModelDrawings]);
    if (Node* const node = Selected()) Invalidate(*node);
    ShowSelected();
    EnableSelected();
}

bool Ctrl::Impl::OnCategoryNotify(const NMHDR* header, LPARAM lParam) {
    if (header->code == NM_CUSTOMDRAW) {
        state_.dlg->SetResult(categories_.Draw(*reinterpret_cast<NMTVCUSTOMDRAW*>(lParam)));
        return true;
    }
    if (header->code == TVN_SELCHANGEDW && categories_.SelectFromNotify()) {
        ShowSelected();
        EnableSelected();
        return true;
    }
    if (!MayTurnCheck(header->code)) return false;
    bool handled = false;
    if (const int id = categories_.CheckFromNotify(header, handled)) {
        categories_.Select(id);
        ShowSelected();
        EnableSelected();
    }
    if (handled) state_.dlg->SetResult(TRUE);
    return handled;
}

bool Ctrl::Impl::OnItemsNotify(Node& node, const NMHDR* header) {
    if (!MayTurnCheck(header->code)) return false;
    TreeSearch* const search = node.items->Search();
    const bool turned = search ? search->CheckFromNotify(header) : gwTVCheckFromNotify(header) != nullptr;
    if (!turned) return false;
    ItemsTouched(node);
    state_.dlg->SetResult(TRUE);
    return true;
}

// A tree tells of each of its thousands of items when it is filled anew. Only a host that has filled it may want to
// know.
bool Ctrl::Impl::IsOfNoInterest(const NMHDR& header) {
    if (header.code != TVN_DELETEITEMW) return false;
    const Node* const node = NodeOf(header.hwndFrom);
    return node && node->items->Search();
}

bool Ctrl::Impl::OnParentMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    result = TRUE;
    switch (message) {
        case WM_NOTIFY:
            return IsOfNoInterest(*reinterpret_cast<const NMHDR*>(lParam));
        case WM_MEASUREITEM: {
            auto* const item = reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
            const bool ours = item->CtlType == ODT_LISTVIEW && static_cast<int>(item->CtlID) == state_.ids[kFilter];
            return ours && filter_.OnMeasureItem(item);
        }
        case WM_DRAWITEM:
            return filter_.OnDrawItem(reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        case WM_CONTEXTMENU:
            result = 0;
            return OnContextMenu(reinterpret_cast<HWND>(wParam),
                                 {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))});
        default:
            return false;
    }
}

// Above a tree that is empty or disabled the dialog itself is asked for the menu; with the keyboard the tree of
// categories is, as nothing else has the focus then.
bool Ctrl::Impl::OnContextMenu(HWND from, POINT screenPoint) {
    if (enabled_ == DisableAll) return false;
    if (from && from == filter_.ListWindow()) {
        ShowFilterMenu(screenPoint);
        return true;
    }
    const Node* const node = Selected();
    const bool there = from == area_.Shown() || from == categories_.Window() || area_.Contains(screenPoint);
    if (!from || !node || !there || !categories_.IsEnabled(node->id)) return false;
    ShowItemsMenu(from, screenPoint);
    return true;
}

void Ctrl::Impl::ShowItemsMenu(HWND from, POINT screenPoint) const {
    const Menu menu(CreatePopupMenu());
    const DrawingView& view = SharedDrawingView();
    AddEntry(menu, kCurrentFolderOnly, Lng::text(kLibraryTexts, 37578, L"Show drawings from current folder only"),
             CheckedIf(view.currentFolderOnly));
    AddEntry(menu, kAsFolders, Lng::text(kLibraryTexts, 36686, L"Show as folder tree"), CheckedIf(view.asFolders));
    if (HasDrawingManager()) {
        AddSeparator(menu);
        AddEntry(menu, kManageDrawings, Lng::text(kLibraryTexts, 37574, L"Add/remove model drawings..."));
    }
    AddSeparator(menu);
    const UINT turnable = EnabledIf(area_.Shown() && IsWindowEnabled(area_.Shown()));
    AddEntry(menu, kCheckAll, Lng::text(kLibraryTexts, 25946, L"Select all"), turnable);
    AddEntry(menu, kCheckNone, Lng::text(kLibraryTexts, 25947, L"Select none"), turnable);
    AddEntry(menu, kInvertChecks, Lng::text(kLibraryTexts, 25948, L"Invert"), turnable);
    Track(menu, Window(), from, screenPoint);
}

void Ctrl::Impl::ShowFilterMenu(POINT screenPoint) const {
    const Menu menu(CreatePopupMenu());
    AddEntry(menu, kEditRule, Lng::text(kLibraryTexts, 37930, L"Edit..."), EnabledIf(filter_.CanEdit()));
    AddSeparator(menu);
    AddEntry(menu, kAddRule, Lng::text(kLibraryTexts, 37931, L"Add..."));
    AddSeparator(menu);
    AddEntry(menu, kDeleteRules, Lng::text(kLibraryTexts, 37928, L"Delete"), EnabledIf(filter_.CanDelete()));
    SetMenuDefaultItem(menu.get(), kEditRule, FALSE);
    Track(menu, Window(), filter_.ListWindow(), screenPoint);
}

}  // namespace ObjectSelection::Dlg
