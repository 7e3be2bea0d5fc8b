#pragma once

#include <windows.h>

#include <orvatool/OCDialog.h>
#include <orvatool/TreeInsertList.h>

#include <vector>

/// The place of a selection's item trees: one tree for each category, of which one is shown at a time, below a search
/// field that serves them all. It is the place of the dialog's own tree, which is the first and the pattern of the
/// others. Without that tree there is nothing.
class ItemArea {
public:
    /// Gives the upper end of the place to the search field, if there is room.
    void Attach(OCDialog* dlg, HWND tree, int labelId, int editId);
    /// Makes a further tree; null without a pattern.
    HWND AddTree(int id);

    /// Shows this tree and no other (null: none); the search field when there is something to search in.
    void Show(HWND tree, TreeSearch* search, const ustr& searchText);
    HWND Shown() const { return shown_; }
    const std::vector<HWND>& Trees() const { return trees_; }
    HWND SearchField() const { return edit_; }
    void Enable(HWND tree, bool enable);
    /// Whether a place on the screen lies here.
    bool Contains(POINT screenPoint) const;

private:
    void AddSearch(int labelId, int editId);
    HWND Create(const wchar_t* type, DWORD style, DWORD exStyle, const RECT& place, int id) const;
    void ShowWindow(HWND window, bool show) const;

    OCDialog* dlg_ = nullptr;
    std::vector<HWND> trees_;
    HWND edit_ = nullptr;
    HWND shown_ = nullptr;
};
