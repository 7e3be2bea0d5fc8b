#include <orvatool/NameListTree.h>

#include <windows.h>

#include <commctrl.h>
#include <orvatool/Gw.h>

#include <algorithm>

namespace ObjectSelection {
namespace {

ustr Upper(const ustr& path) {
    ustr upper = path;
    CharUpperBuffW(upper.data(), static_cast<DWORD>(upper.size()));
    return upper;
}

std::size_t NumberIn(const std::unordered_map<ustr, std::size_t>& numbers, const ustr& path) {
    const auto found = numbers.find(Upper(path));
    return found == numbers.end() ? DrawingIndex::kNone : found->second;
}

}  // namespace

std::size_t DrawingIndex::Add(const DrawingRef& drawing) {
    if (const std::size_t known = Find(drawing); known != kNone) return known;
    const std::size_t number = drawings_.size();
    drawings_.push_back(drawing);
    const ustr path = Upper(drawing.path);
    if (drawing.id != 0) byId_.emplace(drawing.id, number);
    if (drawing.id == 0) byPathWithoutId_.emplace(path, number);
    if (!path.empty()) byPath_.emplace(path, number);
    return number;
}

// A path counts only where one of the two has no id.
std::size_t DrawingIndex::Find(const DrawingRef& drawing) const {
    if (drawing.id == 0) return NumberIn(drawing.path.empty() ? byPathWithoutId_ : byPath_, drawing.path);
    const auto found = byId_.find(drawing.id);
    if (found != byId_.end()) return found->second;
    return drawing.path.empty() ? kNone : NumberIn(byPathWithoutId_, drawing.path);
}

// By number of a name: whether it has a row, and whether one of its rows is checked.
struct NameListInDwg::Tree::States {
    std::vector<bool> shown;
    std::vector<bool> checked;
    bool all = true;  // no row is unchecked
};

NameListInDwg::Tree::Tree() = default;
NameListInDwg::Tree::~Tree() = default;

void NameListInDwg::Tree::Fill(HWND tree, const std::vector<Branch>& branches, const NameListInDwg& list,
                               const Missing& missing) {
    rows_.clear();
    drawings_ = {};
    names_.clear();
    numbers_.clear();
    AddDrawings(branches, list);
    for (const Branch& branch : branches)
        AddBranch(branch);
    rows_.finalize();
    const std::size_t listed = rows_.size();
    AddMissing(list, missing);
    const gwRedrawOff quiet(tree);
    search_.Attach(tree, &rows_, nullptr, nullptr, StatesFor(list));
    search_.Expand(listed);
}

void NameListInDwg::Tree::GetChecked(NameListInDwg& list) const {
    const States states = GetStates();
    if (list.all && states.all) return;
    NameListInDwg result;
    std::vector<bool> taken(names_.size(), false);
    const auto take = [&](std::size_t number, const Entry& entry) {
        if (!taken[number]) result.entries.push_back(entry);
        taken[number] = true;
    };
    for (const Entry& entry : list.entries) {
        const std::size_t number = Number(entry.drawing, entry.name);
        if (number == kNone) {
            result.entries.push_back(entry);
        } else if (!states.shown[number] || states.checked[number]) {
            take(number, entry);
        }
    }
    for (std::size_t number = 0; number < names_.size(); ++number) {
        if (states.checked[number] || (list.all && !states.shown[number])) take(number, names_[number]);
    }
    list = std::move(result);
}

std::size_t NameListInDwg::Tree::Number(const DrawingRef& drawing, const ustr& name) const {
    const std::size_t place = drawings_.Find(drawing);
    if (place == kNone) return kNone;
    const auto found = numbers_.find({place, name});
    return found == numbers_.end() ? kNone : found->second;
}

std::size_t NameListInDwg::Tree::AddName(const DrawingRef& drawing, const ustr& name) {
    const auto [at, added] = numbers_.try_emplace({drawings_.Add(drawing), name}, names_.size());
    if (added) names_.push_back({drawing, name});
    return at->second;
}

// Before any name is numbered: a drawing that is added may change which one another is the same as.
void NameListInDwg::Tree::AddDrawings(const std::vector<Branch>& branches, const NameListInDwg& list) {
    for (const Branch& branch : branches) {
        if (!branch.names.empty()) drawings_.Add(branch.drawing);
    }
    for (const Entry& entry : list.entries)
        drawings_.Add(entry.drawing);
}

void NameListInDwg::Tree::AddRow(int level, const ustr& text, std::size_t number) {
    rows_.push_back(level, number == kNone ? 0 : static_cast<std::int64_t>(number) + 1, Lng::NoApp, -1, text);
}

void NameListInDwg::Tree::AddBranch(const Branch& branch) {
    if (branch.shown) AddRow(branch.level, branch.text, kNone);
    for (const ustr& name : branch.names) {
        const std::size_t number = AddName(branch.drawing, name);
        if (branch.shown) AddRow(branch.level + 1, name, number);
    }
}

void NameListInDwg::Tree::AddMissing(const NameListInDwg& list, const Missing& missing) {
    DrawingIndex drawings;
    std::vector<std::vector<const Entry*>> unlisted;  // by drawing
    for (const Entry& entry : list.entries) {
        if (Number(entry.drawing, entry.name) != kNone) continue;
        const std::size_t drawing = drawings.Add(entry.drawing);
        unlisted.resize(drawings.size());
        unlisted[drawing].push_back(&entry);
    }
    if (unlisted.empty()) return;
    AddRow(0, missing.heading, kNone);
    for (std::size_t drawing = 0; drawing < unlisted.size(); ++drawing) {
        AddRow(1, missing.textOf(drawings[drawing]), kNone);
        for (const Entry* const entry : unlisted[drawing])
            AddRow(2, entry->name, AddName(entry->drawing, entry->name));
    }
}

std::vector<int> NameListInDwg::Tree::StatesFor(const NameListInDwg& list) const {
    std::vector<bool> checked(names_.size(), list.all);
    for (const Entry& entry : list.entries)
        checked[Number(entry.drawing, entry.name)] = true;
    std::vector<int> states;
    states.reserve(rows_.size());
    for (const TREE_INSERTITEM& row : rows_) {
        const bool on = row.value > 0 && checked[static_cast<std::size_t>(row.value - 1)];
        states.push_back(on ? kTreeChecked : kTreeUnchecked);
    }
    return states;
}

NameListInDwg::Tree::States NameListInDwg::Tree::GetStates() const {
    States states;
    states.shown.resize(names_.size());
    states.checked.resize(names_.size());
    const std::vector<int> checks = search_.GetChecks();
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        if (rows_[row].value <= 0) continue;
        const auto number = static_cast<std::size_t>(rows_[row].value - 1);
        states.shown[number] = true;
        if (checks[row] == kTreeChecked) states.checked[number] = true;
        if (checks[row] != kTreeChecked) states.all = false;
    }
    return states;
}

}  // namespace ObjectSelection
