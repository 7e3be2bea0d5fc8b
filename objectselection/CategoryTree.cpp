#include "CategoryTree.h"

#include <orvatool/Gw.h>

#include <algorithm>
#include <utility>

void CategoryTree::Attach(HWND tree) {
    tree_ = tree;
    nodes_.clear();
    items_.clear();
    gwTVaddChecks(tree_);
}

void CategoryTree::Fill(std::vector<Node> nodes) {
    nodes_ = std::move(nodes);
    items_.clear();
    const gwRedrawOff quiet(tree_);
    filling_ = true;
    TreeView_DeleteAllItems(tree_);
    for (const Node& node : nodes_)
        items_[node.id] = Insert(node);
    for (const Node& node : nodes_) {
        if (node.isGroup) TreeView_Expand(tree_, Item(node.id), TVE_EXPAND);
    }
    filling_ = false;
    Select(selected_);
}

void CategoryTree::SetTitle(int id, const ustr& title) {
    Node* const node = Find(id);
    if (!node || node->title == title) return;
    node->title = title;
    TVITEMW item{};
    item.mask = TVIF_HANDLE | TVIF_TEXT;
    item.hItem = Item(id);
    item.pszText = node->title.data();
    if (item.hItem) SendMessageW(tree_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void CategoryTree::SetCount(int id, std::size_t count) {
    Node* const node = Find(id);
    if (!node || node->count == count) return;
    node->count = count;
    Redraw();
}

void CategoryTree::SetEnabled(int id, bool enabled) {
    Node* const node = Find(id);
    if (!node || node->enabled == enabled) return;
    node->enabled = enabled;
    Redraw();
}

void CategoryTree::SetChecked(int id, bool checked) {
    Node* const node = Find(id);
    if (!node || node->isGroup) return;
    node->checked = checked;
    ShowCheck(*node);
}

bool CategoryTree::Has(int id) const {
    return Find(id) != nullptr;
}

bool CategoryTree::IsEnabled(int id) const {
    const Node* const node = Find(id);
    return node && node->enabled;
}

bool CategoryTree::IsChecked(int id) const {
    const Node* const node = Find(id);
    return node && node->checked;
}

void CategoryTree::Select(int id) {
    selected_ = Has(id) ? id : 0;
    const bool outer = std::exchange(filling_, true);
    SendMessageW(tree_, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(Item(selected_)));
    filling_ = outer;
}

int CategoryTree::CheckFromNotify(const NMHDR* header, bool& handled) {
    const bool isKey = header->code == TVN_KEYDOWN;
    const bool isSpace = isKey && reinterpret_cast<const NMTVKEYDOWN*>(header)->wVKey == VK_SPACE;
    const Node* const aimed = Find(isKey ? selected_ : IdOf(gwTVpressedItem(tree_)));
    if (!aimed || aimed->isGroup || !aimed->enabled) {
        handled = isSpace;
        return 0;
    }
    const HTREEITEM item = gwTVCheckFromNotify(header);
    handled = item != nullptr;
    if (!item) return 0;
    Node* const node = Find(IdOf(item));
    node->checked = gwTVgetCheck(tree_, item) == kTreeChecked;
    if (const Node* const group = Find(node->group)) ShowCheck(*group);
    return node->id;
}

bool CategoryTree::SelectFromNotify() {
    if (filling_) return false;
    const int before = std::exchange(selected_, IdOf(TreeView_GetSelection(tree_)));
    return selected_ != before;
}

LRESULT CategoryTree::Draw(NMTVCUSTOMDRAW& draw) const {
    const DWORD stage = draw.nmcd.dwDrawStage;
    if (stage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    const Node* const node = Find(static_cast<int>(draw.nmcd.lItemlParam));
    if (!node) return CDRF_DODEFAULT;
    if (stage == CDDS_ITEMPOSTPAINT && node->count > 0) DrawCount(draw, node->count);
    if (stage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
    const bool selected = (draw.nmcd.uItemState & CDIS_SELECTED) != 0;
    if (!selected && !node->enabled) draw.clrText = GetSysColor(COLOR_GRAYTEXT);
    return CDRF_NOTIFYPOSTPAINT;
}

CategoryTree::Node* CategoryTree::Find(int id) {
    const auto found = std::find_if(nodes_.begin(), nodes_.end(), [id](const Node& node) { return node.id == id; });
    return found == nodes_.end() ? nullptr : &*found;
}

const CategoryTree::Node* CategoryTree::Find(int id) const {
    return const_cast<CategoryTree*>(this)->Find(id);
}

HTREEITEM CategoryTree::Item(int id) const {
    const auto found = items_.find(id);
    return found == items_.end() ? nullptr : found->second;
}

int CategoryTree::IdOf(HTREEITEM item) const {
    return static_cast<int>(gwTVgetData(tree_, item));
}

HTREEITEM CategoryTree::Insert(const Node& node) {
    const HTREEITEM above = Item(node.group);
    TVINSERTSTRUCTW insert{};
    insert.hParent = above ? above : TVI_ROOT;
    insert.hInsertAfter = TVI_LAST;
    TVITEMW& item = insert.item;
    item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_STATE;
    item.pszText = const_cast<wchar_t*>(node.title.c_str());
    item.lParam = node.id;
    item.stateMask = TVIS_STATEIMAGEMASK;
    item.state = node.isGroup ? 0 : INDEXTOSTATEIMAGEMASK(node.checked ? kTreeChecked + 1u : kTreeUnchecked + 1u);
    return reinterpret_cast<HTREEITEM>(SendMessageW(tree_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
}

// A group gets a state when one of its nodes is turned; its box goes again.
void CategoryTree::ShowCheck(const Node& node) {
    if (!node.isGroup) return gwTVsetCheck(tree_, Item(node.id), node.checked ? kTreeChecked : kTreeUnchecked);
    TVITEMW item{};
    item.mask = TVIF_HANDLE | TVIF_STATE;
    item.hItem = Item(node.id);
    item.stateMask = TVIS_STATEIMAGEMASK;
    SendMessageW(tree_, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void CategoryTree::Redraw() const {
    if (tree_) InvalidateRect(tree_, nullptr, TRUE);
}

void CategoryTree::DrawCount(const NMTVCUSTOMDRAW& draw, std::size_t count) const {
    constexpr int kGap = 4;  // between the title and the count
    RECT place{};
    if (!TreeView_GetItemRect(tree_, reinterpret_cast<HTREEITEM>(draw.nmcd.dwItemSpec), &place, TRUE)) return;
    RECT client{};
    GetClientRect(tree_, &client);
    place.left = place.right + kGap;
    place.right = client.right;
    ustr text;
    text.format(L"(%I64u)", static_cast<unsigned __int64>(count));
    const auto font = reinterpret_cast<HFONT>(SendMessageW(tree_, WM_GETFONT, 0, 0));
    const HGDIOBJ oldFont = SelectObject(draw.nmcd.hdc, font);
    const COLORREF color = SetTextColor(draw.nmcd.hdc, GetSysColor(COLOR_GRAYTEXT));
    const int mode = SetBkMode(draw.nmcd.hdc, TRANSPARENT);
    DrawTextW(draw.nmcd.hdc, text.c_str(), -1, &place, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    SetBkMode(draw.nmcd.hdc, mode);
    SetTextColor(draw.nmcd.hdc, color);
    if (oldFont) SelectObject(draw.nmcd.hdc, oldFont);
}
