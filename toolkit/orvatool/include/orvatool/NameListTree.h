#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/ObjectSelection.h>
#include <orvatool/TreeInsertList.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ObjectSelection {

/// Drawings by number, found by reference (DrawingRef::IsSame) in the same time however many there are.
class ORVATOOL_API DrawingIndex {
public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    /// Adds a drawing unless there is one that is the same; its number either way, from 0.
    std::size_t Add(const DrawingRef& drawing);
    /// The drawing's number; kNone when it is not there.
    std::size_t Find(const DrawingRef& drawing) const;
    const DrawingRef& operator[](std::size_t number) const { return drawings_[number]; }
    std::size_t size() const { return drawings_.size(); }

private:
    std::vector<DrawingRef> drawings_;
    std::unordered_map<std::int32_t, std::size_t> byId_;
    std::unordered_map<ustr, std::size_t> byPath_;
    std::unordered_map<ustr, std::size_t> byPathWithoutId_;
};

/// A tree with check boxes that shows drawings and the names in them. The check boxes are the owner's to add
/// (gwTVaddChecks) and to turn (gwTVCheckFromNotify).
class ORVATOOL_API NameListInDwg::Tree {
public:
    /// A drawing with its names below it, or a heading (no names) such as a folder. Level 0 is a root.
    struct Branch {
        int level = 0;
        ustr_pre<32> text;
        DrawingRef drawing;
        std::vector<ustr> names;
        bool shown = true;  ///< else the names keep their state unseen
    };
    /// What names of the list are shown as whose drawing or name no branch has.
    struct Missing {
        ustr heading;
        std::function<ustr(const DrawingRef&)> textOf;
    };

    Tree();
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// Fills the tree in place of what it holds; the names of `list` are checked. Those that no branch has stand at the
    /// end, below a heading of their own, so that they stay until the user unchecks them.
    void Fill(HWND tree, const std::vector<Branch>& branches, const NameListInDwg& list, const Missing& missing);

    /// Makes `list`, which is the one that the tree was filled for, the checked names: those it has keep their order,
    /// and those of branches that are not shown stay. "All" stays while all are checked.
    void GetChecked(NameListInDwg& list) const;

    TreeSearch& Search() { return search_; }
    /// How many names the branches had, shown or not.
    std::size_t NameCount() const { return names_.size(); }
    const TREE_INSERTLIST& Rows() const { return rows_; }

private:
    static constexpr std::size_t kNone = DrawingIndex::kNone;
    struct States;

    std::size_t Number(const DrawingRef& drawing, const ustr& name) const;
    std::size_t AddName(const DrawingRef& drawing, const ustr& name);
    void AddDrawings(const std::vector<Branch>& branches, const NameListInDwg& list);
    void AddRow(int level, const ustr& text, std::size_t number);
    void AddBranch(const Branch& branch);
    void AddMissing(const NameListInDwg& list, const Missing& missing);
    std::vector<int> StatesFor(const NameListInDwg& list) const;
    States GetStates() const;

    TREE_INSERTLIST rows_;  // the value of a name is its number and 1; of another row 0
    TreeSearch search_;
    DrawingIndex drawings_;
    std::vector<Entry> names_;  // by number
    std::map<std::pair<std::size_t, ustr>, std::size_t> numbers_;
};

}  // namespace ObjectSelection
