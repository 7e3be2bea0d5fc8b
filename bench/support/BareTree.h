#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvatool/ImageLib.h>
#include <orvatool/TreeInsertList.h>

/// The baseline of every figure about trees: a list of two levels filled into a tree by bare messages, redraw off.
inline void FillTreeBare(HWND tree, const TREE_INSERTLIST& rows) {
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
        const HTREEITEM item = TreeView_InsertItem(tree, &insert);
        if (!row.level) group = item;
    }
    SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
}
