#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/FoldedTexts.h>
#include <orvatool/Lng.h>
#include <orvatool/Win32Types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

/// One row of a tree list. Level 0 is a root; a row one level deeper than the row before it is its child.
struct TREE_INSERTITEM {
    int level = 0;
    std::int64_t value = 0;  ///< the caller's id; the data (lParam) of the tree item
    Lng::AppID app = Lng::NoApp;
    int image = -1;  ///< ImageLib id, -1 for none
    ustr_pre<32> text;
};

/// A row with item data.
struct TREE_INSERTITEM2 : TREE_INSERTITEM {
    std::int64_t data = 0;
};

/// A tree as a flat list of rows in pre-order, filled into a tree control in one pass. Rows deeper than one level below
/// their predecessor are raised to that level by finalize().
template <class Item>
class BasicTreeInsertList {
public:
    using const_iterator = typename std::vector<Item>::const_iterator;

    /// Adds a row with this text, which is a ustr: a literal would make it the default text of the other form.
    Item& push_back(int level, std::int64_t value, Lng::AppID app, int image, const ustr& text) {
        Item& item = rows_.emplace_back();
        item.level = level;
        item.value = value;
        item.app = app;
        item.image = image;
        item.text = text;
        finalized_ = false;
        return item;
    }

    /// Adds a row with a text of the catalogue and no image.
    Item& push_back(int level, std::int64_t value, Lng::AppID app, int textId, const wchar_t* defaultText) {
        return push_back(level, value, app, -1, Lng::text(app, textId, defaultText));
    }

    Item& push_back(const Item& item) {
        finalized_ = false;
        return rows_.emplace_back(item);
    }

    /// Adds a row before row `index`; at the end when there are not so many.
    Item& insert(std::size_t index, const Item& item) {
        finalized_ = false;
        return *rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(index < size() ? index : size()), item);
    }

    /// Makes the levels a proper tree. Filling a tree does it when the caller has not.
    void finalize() {
        int deepest = 0;
        for (Item& item : rows_) {
            if (item.level < 0) item.level = 0;
            if (item.level > deepest) item.level = deepest;
            deepest = item.level + 1;
        }
        finalized_ = true;
    }
    bool isFinalized() const { return finalized_; }

    void clear() {
        rows_.clear();
        finalized_ = true;
    }
    void reserve(std::size_t count) { rows_.reserve(count); }
    std::size_t size() const { return rows_.size(); }
    bool empty() const { return rows_.empty(); }
    /// A level that is changed here must fit the rows around it, or finalize() is called again.
    Item& operator[](std::size_t index) { return rows_[index]; }
    const Item& operator[](std::size_t index) const { return rows_[index]; }
    const_iterator begin() const { return rows_.begin(); }
    const_iterator end() const { return rows_.end(); }

private:
    std::vector<Item> rows_;
    bool finalized_ = true;
};

using TreeInsertList = BasicTreeInsertList<TREE_INSERTITEM>;
using TREE_INSERTLIST = TreeInsertList;
using TREE_INSERTLIST2 = BasicTreeInsertList<TREE_INSERTITEM2>;

/// What filling a tree did. `items[i]` is the tree item of row i, null when the row was left out.
struct TreeFill {
    std::vector<HTREEITEM> items;
};

/// Adds the rows of `list` to `tree` below `parent` (null: as roots), in one pass with redraw off. A list that is not
/// finalized is read as finalize() would leave it. Rows with images give a tree without an image list that of ImageLib;
/// in a tree with gwTVaddChecks the rows are unchecked. `wanted` (one flag a row, or null for all) leaves out rows; a
/// row that is wanted needs its ancestors wanted too.
ORVATOOL_API TreeFill FillTree(HWND tree, const TREE_INSERTLIST& list, HTREEITEM parent = nullptr,
                               const std::vector<bool>* wanted = nullptr);
ORVATOOL_API TreeFill FillTree(HWND tree, const TREE_INSERTLIST2& list, HTREEITEM parent = nullptr,
                               const std::vector<bool>* wanted = nullptr);

/// Narrows a tree that shows a TREE_INSERTLIST to the rows that match a search text, as the user types: a row is shown
/// when its text holds every word of the search, in any case and with or without accents; a word may begin a word of a
/// text above it instead. All rows below a row that matches are shown, and the rows above it. The branches of the rows
/// that hold a word themselves are open, unless there are more than 1,000
/// of them: then the branches that the user had open. Clearing the search brings back those branches and the item that
/// was selected. No more than 64 words are looked at.
///
/// In a tree with check boxes a row keeps its state while it is not shown. A row with rows below it has the state that
/// follows from all of them, so that one that was turned on while a search hid some of its rows ends as partial.
///
/// Thousands of rows are put into the tree in pieces: the first at once, the others while there is no input to answer,
/// and all of them as soon as the user presses a key or a button there. So the checks of a tree that may be long are
/// turned by the functions here.
class ORVATOOL_API TreeSearch {
public:
    TreeSearch() = default;
    ~TreeSearch();
    TreeSearch(const TreeSearch&) = delete;
    TreeSearch& operator=(const TreeSearch&) = delete;

    /// Fills the tree with all rows in place of what it holds. `list` must outlive this object and stay as it is;
    /// attach again when it changed. `edit` is the search field, if there is one: Up, Down, Page Up and Page Down in it
    /// move the tree's selection, Esc empties a search before it cancels the dialog; `cue` is its grey text while it is
    /// empty. Its EN_CHANGE is the owner's, to call Filter. `checks` are states as for SetChecks; without them all rows
    /// are unchecked. Branches that are checked in part are open.
    void Attach(HWND tree, const TREE_INSERTLIST* list, HWND edit = nullptr, const wchar_t* cue = nullptr,
                const std::vector<int>& checks = {});
    /// Makes `edit` the search field, see Attach. One field can serve several trees, one at a time.
    void SetEdit(HWND edit, const wchar_t* cue = nullptr);
    /// Rows of this value are headings, which a search does not select by itself.
    void SetHeading(std::int64_t value) { heading_ = value; }
    /// Shows what matches `text`. Gives the first match in tree order the selection when the selected row is gone. A
    /// row that the user selected among the matches stays selected when the search is cleared.
    void Filter(const ustr& text);
    /// The selected row counts as selected by the user, even if the search has selected it.
    void KeepSelected() { firstMatch_ = kNoRow; }
    /// The row of a tree item, null for none.
    const TREE_INSERTITEM* Row(HTREEITEM item) const;
    /// Selects and shows the first row of this value; false when none is shown.
    bool Select(std::int64_t value);
    /// Opens the branch of a row; what is seen first stays where it is.
    void Expand(std::size_t row);
    /// Opens the branches that are partly checked, unless they are too many to be seen at a glance.
    void ExpandPartlyChecked();

    /// The check states of all rows (TreeCheck), shown or not.
    std::vector<int> GetChecks() const;
    /// Sets them; rows with rows below them follow from those.
    void SetChecks(const std::vector<int>& states);
    /// Gives each row that is shown, and has none below it, the state that `turn` makes of its own.
    void TurnChecks(int (*turn)(int state));
    /// For a click or a key that the tree tells its owner of: turns the check that it is for. False when it is for
    /// none.
    bool CheckFromNotify(const tagNMHDR* header);

private:
    static constexpr std::size_t kNoRow = static_cast<std::size_t>(-1);
    struct Matches;

    Matches Find(const ustr& text) const;
    void Restore();
    void Show(const std::vector<bool>& wanted, const std::vector<bool>& open);
    bool AreFew(const std::vector<bool>& wanted, const std::vector<bool>& open) const;
    void Change(const std::vector<bool>& wanted);
    void Rebuild(const std::vector<bool>& wanted, const std::vector<bool>& open);
    void RebuildAsIs();
    bool TryShowChecks(const std::vector<int>& states);
    std::vector<int> Turned(HTREEITEM item) const;
    void PutIn(std::size_t count);
    void Complete();
    void BringIn(std::size_t row);
    void Await(bool more);
    void OnIdle() noexcept;
    void Open(const std::vector<bool>& open);
    void SelectRow(std::size_t row);
    void LearnChecks() const;
    std::vector<bool> PartlyChecked() const;
    std::size_t RowOf(HTREEITEM item) const;
    std::size_t FindRow(HTREEITEM item) const;
    std::size_t SelectedRow() const;
    bool HasRowsBelow(std::size_t row) const;
    std::size_t EndOf(std::size_t row) const;
    bool IsOpen(std::size_t row) const;
    void RememberExpansion();
    void ParentsFromChildren(std::vector<int>& states) const;
    void PutParentChecks() const;

    HWND tree_ = nullptr;
    const TREE_INSERTLIST* list_ = nullptr;
    FoldedTexts folded_;
    std::vector<std::size_t> parents_;                         // by row; kNoRow for roots
    std::vector<HTREEITEM> items_;                             // by row; null while it is not shown
    mutable std::unordered_map<HTREEITEM, std::size_t> rows_;  // of the shown items; empty until it is asked for
    std::size_t next_ = 0;                                     // rows from here on are still to come
    std::vector<bool> wanted_;                                 // by row: is to be shown
    std::vector<bool> open_;                                   // by row: is to be open
    bool awaiting_ = false;                                    // a piece is due, or all of them
    bool outdated_ = false;                                    // the tree does not show the checks
    std::vector<bool> expanded_;                               // by row: open when there was no search
    mutable std::vector<int> checks_;                          // by row, but for what the tree was told since
    std::size_t selected_ = kNoRow;                            // when there was no search
    std::optional<std::int64_t> heading_;
    std::size_t firstMatch_ = kNoRow;  // that got the selection without the user's doing
    bool filtered_ = false;
};
