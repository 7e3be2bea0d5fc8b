#include <orvatool/TreeInsertList.h>

#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>

#include <algorithm>

#include "TreeRows.h"
#include "Win32.h"

namespace {

// `parents[level]` is what rows of that level go below. A row that was left out takes the rows below it along.
template <class List>
TreeFill Fill(HWND tree, const List& list, HTREEITEM parent, const std::vector<bool>* wanted) {
    TreeFill fill;
    fill.items.resize(list.size());
    if (!IsWindow(tree)) return fill;
    const gwRedrawOff quiet(tree);
    TreeRowInserter inserter(tree,
                             std::any_of(list.begin(), list.end(), [](const auto& row) { return row.image >= 0; }));
    std::vector<HTREEITEM> parents{parent ? parent : TVI_ROOT};
    for (std::size_t row = 0; row < list.size(); ++row) {
        const auto level = static_cast<std::size_t>(std::max(list[row].level, 0));
        parents.resize(std::min(level + 1, parents.size()));
        const bool shown = parents.back() && (!wanted || (row < wanted->size() && (*wanted)[row]));
        if (shown) fill.items[row] = inserter.Insert(parents.back(), TVI_LAST, list[row], kTreeUnchecked, false);
        parents.push_back(fill.items[row]);
    }
    return fill;
}

}  // namespace

TreeRowInserter::TreeRowInserter(HWND tree, bool images)
    : tree_(tree), dpi_(win32::DpiOf(tree)), checks_(SendMessageW(tree, TVM_GETIMAGELIST, TVSIL_STATE, 0) != 0) {
    TVITEMW& item = insert_.item;
    item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_STATE;
    item.stateMask = TVIS_STATEIMAGEMASK | TVIS_EXPANDED | TVIS_EXPANDEDONCE;
    if (!images) return;
    item.mask |= TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    if (SendMessageW(tree, TVM_GETIMAGELIST, TVSIL_NORMAL, 0)) return;
    const HIMAGELIST list = ImageLib::GetImageList(dpi_);
    SendMessageW(tree, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(list));
}

HTREEITEM TreeRowInserter::Insert(HTREEITEM parent, HTREEITEM after, const TREE_INSERTITEM& row, int check, bool open) {
    insert_.hParent = parent;
    insert_.hInsertAfter = after;
    TVITEMW& item = insert_.item;
    item.pszText = const_cast<wchar_t*>(row.text.c_str());
    item.lParam = static_cast<LPARAM>(row.value);
    if (item.mask & TVIF_IMAGE) item.iImage = item.iSelectedImage = ImageIndex(row.image);
    item.state = checks_ ? INDEXTOSTATEIMAGEMASK(static_cast<UINT>(check + 1)) : 0;
    if (open) item.state |= TVIS_EXPANDED | TVIS_EXPANDEDONCE;
    return reinterpret_cast<HTREEITEM>(SendMessageW(tree_, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert_)));
}

int TreeRowInserter::ImageIndex(int id) {
    if (id < 0) return I_IMAGENONE;
    for (const auto& [known, index] : images_) {
        if (known == id) return index;
    }
    const int index = ImageLib::GetImage(id, dpi_);
    return images_.emplace_back(id, index < 0 ? I_IMAGENONE : index).second;
}

TreeFill FillTree(HWND tree, const TREE_INSERTLIST& list, HTREEITEM parent, const std::vector<bool>* wanted) {
    return Fill(tree, list, parent, wanted);
}

TreeFill FillTree(HWND tree, const TREE_INSERTLIST2& list, HTREEITEM parent, const std::vector<bool>* wanted) {
    return Fill(tree, list, parent, wanted);
}
