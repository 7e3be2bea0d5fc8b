#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvatool/TreeInsertList.h>

#include <utility>
#include <vector>

/// Inserts rows into a tree view, one message a row and nothing copied. `images` says whether any row has one.
class TreeRowInserter {
public:
    TreeRowInserter(HWND tree, bool images);

    /// `check` is one of TreeCheck, looked at in a tree with check boxes only; `open` opens the branch for rows still
    /// to come. Null when the tree refused the item.
    HTREEITEM Insert(HTREEITEM parent, HTREEITEM after, const TREE_INSERTITEM& row, int check, bool open);

private:
    int ImageIndex(int id);

    HWND tree_;
    unsigned dpi_;
    bool checks_;
    TVINSERTSTRUCTW insert_{};
    std::vector<std::pair<int, int>> images_;  // ImageLib id and index in its list, of those met so far
};
