#include <orvatool/TreeInsertList.h>

#include <orvatool/Gw.h>
#include <orvatool/String.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "CheckLog.h"
#include "SearchEdit.h"
#include "TreeInput.h"
#include "TreeRows.h"

struct TreeSearch::Matches {
    std::vector<bool> found;   // rows that match
    std::vector<bool> wanted;  // and the rows above them
    std::vector<bool> open;    // rows above one that holds a word itself
    std::size_t opening = 0;   // how many rows ask for their branch to be open
    std::size_t first = kNoRow;
};

namespace {

constexpr std::size_t kMaxWords = 64;  // a bit each
constexpr std::size_t kMaxOpening = 1000;
// Changes up to this part of the shown rows are made singly; for more the tree is built anew, which is faster then.
constexpr std::size_t kFewOf = 16;
// Rows that are put in at a time; some 10 ms.
constexpr std::size_t kPiece = 2000;
// After as many have been taken out, which takes longer, there is time for what can be seen only.
constexpr std::size_t kShortPiece = 400;
// To change the checks of more rows takes longer than to build the tree anew.
constexpr std::size_t kFewChecks = 1000;
// To open or close a branch costs a tree as much as to take out or put in so many rows.
constexpr std::size_t kRowsPerBranch = 100;

const TREE_INSERTLIST kNoRows;

UINT ItemState(HWND tree, HTREEITEM item, UINT mask) {
    const LRESULT state =
        SendMessageW(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(mask));
    return static_cast<UINT>(state) & mask;
}

bool HasChecks(HWND tree) {
    return SendMessageW(tree, TVM_GETIMAGELIST, TVSIL_STATE, 0) != 0;
}

bool HasImages(const TREE_INSERTLIST& list) {
    return std::any_of(list.begin(), list.end(), [](const TREE_INSERTITEM& row) { return row.image >= 0; });
}

std::uint64_t WordsIn(std::wstring_view folded, const std::vector<ustr>& words) {
    std::uint64_t found = 0;
    for (std::size_t word = 0; word < words.size(); ++word) {
        if (folded.find(words[word]) != std::wstring_view::npos) found |= std::uint64_t{1} << word;
    }
    return found;
}

// A word of a search that begins a word of the text; a letter in the middle would say little about a heading.
std::uint64_t WordsBegunIn(std::wstring_view folded, const std::vector<ustr>& words) {
    std::uint64_t found = 0;
    for (std::size_t word = 0; word < words.size(); ++word) {
        for (std::size_t at = folded.find(words[word]); at != folded.npos; at = folded.find(words[word], at + 1)) {
            if (at == 0 || !IsCharAlphaNumericW(folded[at - 1])) found |= std::uint64_t{1} << word;
        }
    }
    return found;
}

std::vector<std::size_t> ParentsOf(const TREE_INSERTLIST& list, std::size_t none) {
    std::vector<std::size_t> parents;
    parents.reserve(list.size());
    std::vector<std::size_t> path;  // the row that rows of each level go below, but for the roots
    for (std::size_t row = 0; row < list.size(); ++row) {
        const auto level = static_cast<std::size_t>(std::max(list[row].level, 0));
        path.resize(std::min(level, path.size()));
        parents.push_back(path.empty() ? none : path.back());
        path.push_back(row);
    }
    return parents;
}

}  // namespace

TreeSearch::~TreeSearch() {
    Await(false);
}

void TreeSearch::Attach(HWND tree, const TREE_INSERTLIST* list, HWND edit, const wchar_t* cue,
                        const std::vector<int>& checks) {
    Await(false);
    tree_ = tree;
    list_ = list ? list : &kNoRows;
    folded_.Assign(*list_, [](const TREE_INSERTITEM& row) -> const ustr& { return row.text; });
    parents_ = ParentsOf(*list_, kNoRow);
    items_.assign(list_->size(), nullptr);
    checks_ = checks;
    checks_.resize(list_->size(), kTreeUnchecked);
    ParentsFromChildren(checks_);
    expanded_ = PartlyChecked();
    selected_ = firstMatch_ = kNoRow;
    filtered_ = false;
    if (edit) SetEdit(edit, cue);
    gwTVtrackPresses(tree);
    StartCheckLog(tree);
    Rebuild(std::vector<bool>(list_->size(), true), expanded_);
}

void TreeSearch::SetEdit(HWND edit, const wchar_t* cue) {
    AttachSearchEdit(edit, tree_, cue);
}

void TreeSearch::Filter(const ustr& text) {
    if (!list_) return;
    const gwRedrawOff quiet(tree_);
    const Matches matches = Find(text);
    if (matches.open.empty()) return Restore();
    const std::size_t selected = SelectedRow();
    if (!filtered_) {
        RememberExpansion();
        selected_ = selected;
        firstMatch_ = kNoRow;
        filtered_ = true;
    }
    Show(matches.wanted, matches.opening > kMaxOpening ? expanded_ : matches.open);
    const bool stays = selected != kNoRow && matches.found[selected];
    if (!stays) firstMatch_ = matches.first;
    SelectRow(stays ? selected : matches.first);
}

const TREE_INSERTITEM* TreeSearch::Row(HTREEITEM item) const {
    const std::size_t row = RowOf(item);
    return row == kNoRow ? nullptr : &(*list_)[row];
}

bool TreeSearch::Select(std::int64_t value) {
    for (std::size_t row = 0; row < items_.size(); ++row) {
        const bool toCome = row >= next_ && wanted_[row];
        if ((*list_)[row].value != value || (!items_[row] && !toCome)) continue;
        SelectRow(row);
        return true;
    }
    return false;
}

void TreeSearch::Expand(std::size_t row) {
    if (row >= items_.size()) return;
    expanded_[row] = true;
    if (row >= next_) open_[row] = true;
    if (!items_[row]) return;
    const gwRedrawOff quiet(tree_);
    const LRESULT first = SendMessageW(tree_, TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0);
    SendMessageW(tree_, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(items_[row]));
    SendMessageW(tree_, TVM_SELECTITEM, TVGN_FIRSTVISIBLE, first);
}

void TreeSearch::ExpandPartlyChecked() {
    const gwRedrawOff quiet(tree_);
    const std::vector<bool> partly = PartlyChecked();
    for (std::size_t row = 0; row < partly.size(); ++row) {
        if (partly[row]) Expand(row);
    }
}

std::vector<int> TreeSearch::GetChecks() const {
    LearnChecks();
    return checks_;
}

void TreeSearch::SetChecks(const std::vector<int>& states) {
    if (!TryShowChecks(states)) RebuildAsIs();
}

// False when so many change that the tree has to be built anew to show them.
bool TreeSearch::TryShowChecks(const std::vector<int>& states) {
    const std::vector<int> before = GetChecks();
    checks_ = states;
    checks_.resize(items_.size(), kTreeUnchecked);
    ParentsFromChildren(checks_);
    std::vector<std::size_t> changed;
    for (std::size_t row = 0; row < next_; ++row) {
        if (items_[row] && checks_[row] != before[row]) changed.push_back(row);
    }
    if (changed.size() > kFewChecks) return false;
    const gwRedrawOff quiet(tree_);
    for (const std::size_t row : changed)
        gwTVsetCheck(tree_, items_[row], checks_[row]);
    return true;
}

std::vector<int> TreeSearch::Turned(HTREEITEM item) const {
    std::vector<int> states = GetChecks();
    const std::size_t turned = FindRow(item);
    if (turned == kNoRow) return states;
    const std::size_t end = EndOf(turned);
    // What is not shown may keep a branch from ever being checked as a whole.
    bool allOn = true;
    for (std::size_t row = turned; row < end; ++row)
        allOn = allOn && (!wanted_[row] || HasRowsBelow(row) || states[row] == kTreeChecked);
    const int state = allOn ? kTreeUnchecked : kTreeChecked;
    for (std::size_t row = turned; row < end; ++row) {
        if (wanted_[row]) states[row] = state;
    }
    return states;
}

void TreeSearch::TurnChecks(int (*turn)(int state)) {
    std::vector<int> states = GetChecks();
    for (std::size_t row = 0; row < states.size(); ++row) {
        if (wanted_[row] && !HasRowsBelow(row)) states[row] = turn(states[row]);
    }
    SetChecks(states);
}

// A tree must not lose its items while it tells of one of them.
bool TreeSearch::CheckFromNotify(const NMHDR* header) {
    const HTREEITEM item = header && header->hwndFrom == tree_ ? CheckedItem(header) : nullptr;
    if (!item) return false;
    if (!TryShowChecks(Turned(item))) {
        outdated_ = true;
        Await(true);
    }
    return true;
}

// Of the rows that are shown: those that are not have the state that they had.
void TreeSearch::LearnChecks() const {
    constexpr std::size_t kFew = 8;  // for more the table of rows pays
    const auto log = TakeCheckLog(tree_);
    for (const auto& [item, state] : log) {
        const std::size_t row = log.size() > kFew ? RowOf(item) : FindRow(item);
        if (row != kNoRow) checks_[row] = state;
    }
    ParentsFromChildren(checks_);
}

// Without a word to look for, `open` is empty.
TreeSearch::Matches TreeSearch::Find(const ustr& text) const {
    std::vector<ustr> words = String::SearchWords(text);
    words.resize(std::min(words.size(), kMaxWords));
    const std::size_t count = items_.size();
    Matches matches;
    matches.wanted.assign(count, words.empty());
    if (words.empty()) return matches;

    const std::uint64_t all = ~std::uint64_t{0} >> (kMaxWords - words.size());
    std::vector<std::uint64_t> above(count);  // words that the rows below need not hold
    std::vector<bool> holds(count);           // matches, and has a word itself
    for (std::size_t row = 0; row < count; ++row) {
        const std::uint64_t own = WordsIn(folded_[row], words);
        const std::uint64_t fromAbove = parents_[row] == kNoRow ? 0 : above[parents_[row]];
        matches.wanted[row] = (own | fromAbove) == all;
        above[row] = matches.wanted[row] ? all : fromAbove | WordsBegunIn(folded_[row], words);
        holds[row] = matches.wanted[row] && own != 0;
        const bool selectable = matches.wanted[row] && (*list_)[row].value != heading_;
        if (selectable && matches.first == kNoRow) matches.first = row;
    }
    matches.found = matches.wanted;
    matches.open.assign(count, false);
    for (std::size_t row = count; row-- > 0;) {
        const std::size_t parent = parents_[row];
        if (parent == kNoRow) continue;
        if (matches.wanted[row]) matches.wanted[parent] = true;
        if (holds[row] || matches.open[row]) matches.open[parent] = true;
        matches.opening += holds[row];
    }
    return matches;
}

// The search is cleared.
void TreeSearch::Restore() {
    if (!filtered_) return;
    const std::size_t selected = SelectedRow();
    const bool chosen = selected != kNoRow && selected != firstMatch_;
    Show(std::vector<bool>(items_.size(), true), expanded_);
    SelectRow(chosen ? selected : selected_);
    filtered_ = false;
}

void TreeSearch::Show(const std::vector<bool>& wanted, const std::vector<bool>& open) {
    LearnChecks();
    if (AreFew(wanted, open)) {
        next_ = items_.size();
        wanted_ = wanted;
        Await(false);
        Change(wanted);
        Open(open);
    } else {
        Rebuild(wanted, open);
    }
    rows_.clear();  // whoever was told of changes in between may have asked for rows
    if (HasChecks(tree_)) PutParentChecks();
}

bool TreeSearch::AreFew(const std::vector<bool>& wanted, const std::vector<bool>& open) const {
    if (outdated_) return false;
    std::size_t kept = 0;
    std::size_t changes = 0;
    for (std::size_t row = 0; row < items_.size(); ++row) {
        const bool shown = items_[row] != nullptr;
        kept += shown && wanted[row];
        const bool goesWithParent = !wanted[row] && parents_[row] != kNoRow && !wanted[parents_[row]];
        changes += shown != wanted[row] && !goesWithParent;
        if (wanted[row] && IsOpen(row) != open[row]) changes += kRowsPerBranch;
    }
    return changes * kFewOf <= kept;
}

// Takes out and puts in single rows.
void TreeSearch::Change(const std::vector<bool>& wanted) {
    rows_.clear();
    TreeRowInserter inserter(tree_, HasImages(*list_));
    std::vector<HTREEITEM> last(items_.size() + 1, TVI_FIRST);  // the last row met below each row, and of the roots
    for (std::size_t row = 0; row < items_.size(); ++row) {
        const std::size_t parent = parents_[row];
        HTREEITEM& before = last[parent == kNoRow ? items_.size() : parent];
        if (wanted[row]) {
            const HTREEITEM above = parent == kNoRow ? TVI_ROOT : items_[parent];
            if (!items_[row] && above) items_[row] = inserter.Insert(above, before, (*list_)[row], checks_[row], false);
            if (items_[row]) before = items_[row];
        } else if (items_[row]) {
            const bool goesWithParent = parent != kNoRow && !wanted[parent];
            if (!goesWithParent) SendMessageW(tree_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(items_[row]));
            items_[row] = nullptr;
        }
    }
}

void TreeSearch::Rebuild(const std::vector<bool>& wanted, const std::vector<bool>& open) {
    const gwRedrawOff quiet(tree_);
    const std::size_t taken =
        items_.size() - static_cast<std::size_t>(std::count(items_.begin(), items_.end(), nullptr));
    SendMessageW(tree_, TVM_SELECTITEM, TVGN_CARET, 0);
    SendMessageW(tree_, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    items_.assign(items_.size(), nullptr);
    wanted_ = wanted;
    open_ = open;
    next_ = 0;
    outdated_ = false;
    PutIn(taken > kPiece ? kShortPiece : kPiece);
}

// The user sees the same as before.
void TreeSearch::RebuildAsIs() {
    const gwRedrawOff quiet(tree_);
    const std::size_t selected = SelectedRow();
    const auto first = FindRow(reinterpret_cast<HTREEITEM>(SendMessageW(tree_, TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE, 0)));
    std::vector<bool> open = open_;
    for (std::size_t row = 0; row < next_; ++row)
        open[row] = IsOpen(row);
    Rebuild(std::vector<bool>(wanted_), open);
    SelectRow(selected);
    BringIn(first);
    if (first != kNoRow)
        SendMessageW(tree_, TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(items_[first]));
}

// The next rows, at most `count`.
void TreeSearch::PutIn(std::size_t count) {
    const gwRedrawOff quiet(tree_);
    rows_.clear();
    TreeRowInserter inserter(tree_, HasImages(*list_));
    for (; next_ < items_.size() && count > 0; ++next_) {
        const HTREEITEM parent = parents_[next_] == kNoRow ? TVI_ROOT : items_[parents_[next_]];
        if (!wanted_[next_] || !parent) continue;
        items_[next_] = inserter.Insert(parent, TVI_LAST, (*list_)[next_], checks_[next_], open_[next_]);
        --count;
    }
    Await(next_ < items_.size());
}

// Timers come after all input and painting.
void TreeSearch::Await(bool more) {
    if (std::exchange(awaiting_, more) == more) return;
    if (more) {
        SetTimer(tree_, reinterpret_cast<UINT_PTR>(this), USER_TIMER_MINIMUM,
                 [](HWND, UINT, UINT_PTR self, DWORD) { reinterpret_cast<TreeSearch*>(self)->OnIdle(); });
        BeforeNextInput(tree_, [this] { Complete(); });
    } else {
        KillTimer(tree_, reinterpret_cast<UINT_PTR>(this));
        BeforeNextInput(tree_, nullptr);
    }
}

void TreeSearch::Complete() {
    if (outdated_) RebuildAsIs();
    if (next_ < items_.size()) PutIn(items_.size());
}

void TreeSearch::BringIn(std::size_t row) {
    while (row != kNoRow && row >= next_)
        PutIn(kPiece);
}

void TreeSearch::OnIdle() noexcept {
    try {
        if (outdated_) return RebuildAsIs();
        PutIn(kPiece);
    } catch (...) {  // out of memory: the next input tries again
        KillTimer(tree_, reinterpret_cast<UINT_PTR>(this));
    }
}

void TreeSearch::Open(const std::vector<bool>& open) {
    for (std::size_t row = 0; row < items_.size(); ++row) {
        if (!items_[row] || IsOpen(row) == open[row]) continue;
        SendMessageW(tree_, TVM_EXPAND, open[row] ? TVE_EXPAND : TVE_COLLAPSE, reinterpret_cast<LPARAM>(items_[row]));
    }
}

void TreeSearch::SelectRow(std::size_t row) {
    BringIn(row);
    const HTREEITEM item = row == kNoRow ? nullptr : items_[row];
    SendMessageW(tree_, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    if (item) SendMessageW(tree_, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
}

// None where they would be too many to be seen at a glance.
std::vector<bool> TreeSearch::PartlyChecked() const {
    std::vector<bool> partly;
    for (const int state : checks_)
        partly.push_back(state == kTreePartial);
    const auto count = static_cast<std::size_t>(std::count(partly.begin(), partly.end(), true));
    if (count > kMaxOpening) partly.assign(partly.size(), false);
    return partly;
}

std::size_t TreeSearch::RowOf(HTREEITEM item) const {
    if (!item) return kNoRow;
    if (rows_.empty()) {
        for (std::size_t row = 0; row < items_.size(); ++row) {
            if (items_[row]) rows_.emplace(items_[row], row);
        }
    }
    const auto found = rows_.find(item);
    return found == rows_.end() ? kNoRow : found->second;
}

// For one item: not worth filling the table.
std::size_t TreeSearch::FindRow(HTREEITEM item) const {
    const auto found = item ? std::find(items_.begin(), items_.end(), item) : items_.end();
    return found == items_.end() ? kNoRow : static_cast<std::size_t>(found - items_.begin());
}

std::size_t TreeSearch::SelectedRow() const {
    return FindRow(reinterpret_cast<HTREEITEM>(SendMessageW(tree_, TVM_GETNEXTITEM, TVGN_CARET, 0)));
}

// Rows are in pre-order: what follows a row is its child or nothing below it.
bool TreeSearch::HasRowsBelow(std::size_t row) const {
    return row + 1 < parents_.size() && parents_[row + 1] == row;
}

// After the last row below it.
std::size_t TreeSearch::EndOf(std::size_t row) const {
    std::size_t end = row + 1;
    while (end < parents_.size() && parents_[end] != kNoRow && parents_[end] >= row)
        ++end;
    return end;
}

bool TreeSearch::IsOpen(std::size_t row) const {
    return items_[row] && HasRowsBelow(row) && ItemState(tree_, items_[row], TVIS_EXPANDED) != 0;
}

void TreeSearch::RememberExpansion() {
    for (std::size_t row = 0; row < next_; ++row)
        expanded_[row] = IsOpen(row);
}

void TreeSearch::ParentsFromChildren(std::vector<int>& states) const {
    constexpr int kUnknown = -1;
    std::vector<int> fromChildren(states.size(), kUnknown);
    for (std::size_t row = states.size(); row-- > 0;) {
        if (fromChildren[row] != kUnknown) states[row] = fromChildren[row];
        if (parents_[row] == kNoRow) continue;
        int& above = fromChildren[parents_[row]];
        if (above == kUnknown) above = states[row];
        if (above != states[row]) above = kTreePartial;
    }
}

// Rows below them may have been changed while others were hidden.
void TreeSearch::PutParentChecks() const {
    for (std::size_t row = 0; row < items_.size(); ++row) {
        if (items_[row] && HasRowsBelow(row)) gwTVsetCheck(tree_, items_[row], checks_[row]);
    }
}
