#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvaspace/ustr.h>

#include <cstddef>
#include <map>
#include <vector>

/// The tree on the left of a selection: its nodes, each with a check box that says whether it is in force and the
/// number of its items that are checked. Groups have neither. Works without a window too, as a dialog need not have the
/// control.
class CategoryTree {
public:
    struct Node {
        int id = 0;
        int group = 0;  ///< the id of the node above; 0 for none
        ustr title;
        std::size_t count = 0;
        bool isGroup = false;
        bool enabled = false;
        bool checked = false;
    };

    /// `tree` may be null.
    void Attach(HWND tree);
    /// Shows these nodes in place of others; the selected one stays when it is still there. A group stands before what
    /// belongs to it.
    void Fill(std::vector<Node> nodes);

    void SetTitle(int id, const ustr& title);
    void SetCount(int id, std::size_t count);
    void SetEnabled(int id, bool enabled);
    void SetChecked(int id, bool checked);
    bool Has(int id) const;
    bool IsEnabled(int id) const;
    bool IsChecked(int id) const;

    /// The node that the user works on; 0 for none.
    int Selected() const { return selected_; }
    /// Selects none when there is no such node.
    void Select(int id);

    HWND Window() const { return tree_; }
    /// For NM_CLICK, NM_DBLCLK and TVN_KEYDOWN: the node that the user has checked or unchecked; 0 for none. `handled`
    /// is the answer to the notification.
    int CheckFromNotify(const NMHDR* header, bool& handled);
    /// For TVN_SELCHANGED: true when another node was selected.
    bool SelectFromNotify();
    /// The answer to NM_CUSTOMDRAW: disabled nodes are grey, and the counts stand beside the titles.
    LRESULT Draw(NMTVCUSTOMDRAW& draw) const;

private:
    Node* Find(int id);
    const Node* Find(int id) const;
    HTREEITEM Item(int id) const;
    int IdOf(HTREEITEM item) const;
    HTREEITEM Insert(const Node& node);
    void ShowCheck(const Node& node);
    void Redraw() const;
    void DrawCount(const NMTVCUSTOMDRAW& draw, std::size_t count) const;

    HWND tree_ = nullptr;
    std::vector<Node> nodes_;
    std::map<int, HTREEITEM> items_;
    int selected_ = 0;
    bool filling_ = false;
};
