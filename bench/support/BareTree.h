#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvatool/ImageLib.h>
#include <orvatool/TreeInsertList.h>

/// The baseline of every figure about trees: a list of two levels filled into a tree by bare messages, redraw off. Each
/// row has a state image where `stateOf` is given.
inline void FillTreeBareWithStates(HWND tree, const TREE_INSERTLIST& rows, UINT (*stateOf)(const TREE_INSERTITEM&)) {
    SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
    HTREEITEM group = nullptr;
    for (const TREE_INSERTITEM& row : rows) {
        TVINSERTSTRUCTW insert{};
        insert.hParent = row.level ? group : TVI_ROOT;
        insert.hInsertAfter = TVI_LAST;
        insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
        insert.item.pszText = const_cast<wchar_t*>(row.text.c_str());
        insert.item.lParam = row.value;
        insert.item.iImage = insert.item.iSelectedImage = row.image < 0 ? 0 : ImageLib::GetImage(row.image);
        if (stateOf) {
            insert.item.mask |= TVIF_STATE;
            insert.item.stateMask = TVIS_STATEIMAGEMASK;
            insert.item.state = INDEXTOSTATEIMAGEMASK(stateOf(row));
        }
        const HTREEITEM item = TreeView_InsertItem(tree, &insert);
        if (!row.level) group = item;
    }
    SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
}

inline void FillTreeBare(HWND tree, const TREE_INSERTLIST& rows) {
    FillTreeBareWithStates(tree, rows, nullptr);
}
