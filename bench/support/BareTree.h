#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvatool/ImageLib.h>
#include <orvatool/TreeInsertList.h>

#include <cstddef>
#include <vector>

/// The baseline of every figure about trees: a list filled into a tree by bare messages, redraw off. Each row has a
/// state image where `stateOf` is given.
inline void FillTreeBareWithStates(HWND tree, const TREE_INSERTLIST& rows, UINT (*stateOf)(const TREE_INSERTITEM&)) {
    SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
    std::vector<HTREEITEM> parents{TVI_ROOT};
    for (const TREE_INSERTITEM& row : rows) {
        parents.resize(static_cast<std::size_t>(row.level) + 1);
        TVINSERTSTRUCTW insert{};
        insert.hParent = parents.back();
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
        parents.push_back(TreeView_InsertItem(tree, &insert));
    }
    SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
}

inline void FillTreeBare(HWND tree, const TREE_INSERTLIST& rows) {
    FillTreeBareWithStates(tree, rows, nullptr);
}

/// State images: none, unchecked, checked, partial. The caller destroys them.
inline HIMAGELIST CreateCheckImagesBare() {
    constexpr int kSide = 16;
    constexpr UINT kStates[] = {0, DFCS_BUTTONCHECK, DFCS_BUTTONCHECK | DFCS_CHECKED, DFCS_BUTTON3STATE | DFCS_CHECKED};
    const HDC screen = GetDC(nullptr);
    const HDC dc = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, kSide * 4, kSide);
    const HGDIOBJ before = SelectObject(dc, bitmap);
    for (int i = 1; i < 4; ++i) {
        RECT box{i * kSide + 1, 1, i * kSide + 14, 14};
        DrawFrameControl(dc, &box, DFC_BUTTON, kStates[i]);
    }
    SelectObject(dc, before);
    const HIMAGELIST images = ImageList_Create(kSide, kSide, ILC_COLOR32, 4, 0);
    ImageList_Add(images, bitmap, nullptr);
    DeleteObject(bitmap);
    DeleteDC(dc);
    ReleaseDC(nullptr, screen);
    return images;
}
