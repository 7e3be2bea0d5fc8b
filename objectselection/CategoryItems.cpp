#include "CategoryItems.h"

#include <windows.h>

#include <commctrl.h>
#include <orvatool/Gw.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "CheckedKeys.h"
#include "DrawingRows.h"

namespace {

using ObjectSelection::Data;
using ObjectSelection::DrawingRef;
using ObjectSelection::NameListInDwg;
using ObjectSelection::Dlg::CbMsgId;
using ObjectSelection::Dlg::DrawingEntry;
using ObjectSelection::Dlg::PartTypeFill;

template <class Item>
std::size_t CountOf(const std::vector<Item>& list) {
    return list.size();
}
std::size_t CountOf(const NameListInDwg& list) {
    return list.entries.size();
}

template <class Item>
bool HasAny(const std::vector<Item>& list) {
    return !list.empty();
}
bool HasAny(const NameListInDwg& list) {
    return !list.IsEmpty();
}

// A list of the selection, with the flag that says whether it is in force. One without a flag (null) is in force while
// it is not empty.
template <class List>
struct Field {
    bool Data::*use;
    List Data::*list;
};

template <class List>
class ListItems : public CategoryItems {
public:
    explicit ListItems(const Field<List>& field) : field_(field) {}

    bool IsInForce(const Data& data) const override {
        return field_.use ? data.*field_.use : HasAny(data.*field_.list);
    }
    void SetInForce(Data& data, bool inForce) override {
        if (field_.use) data.*field_.use = inForce;
        if (inForce && HasAny(dropped_)) data.*field_.list = std::exchange(dropped_, {});
    }
    void Drop(Data& data) override {
        if (field_.use || !HasAny(data.*field_.list)) return;
        dropped_ = std::exchange(data.*field_.list, {});
    }
    void Forget() override { dropped_ = {}; }
    std::size_t Count(const Data& data, bool touched) const override {
        return CountOf(touched ? Checked(ListOf(data)) : ListOf(data));
    }
    void Read(const ItemSource& /*source*/, Data& data, bool touched) override {
        if (!touched) return;
        data.*field_.list = Checked(ListOf(data));
        Forget();
    }

protected:
    const List& ListOf(const Data& data) const { return HasAny(dropped_) ? dropped_ : data.*field_.list; }
    /// `before` with what the user has changed.
    virtual List Checked(const List& before) const = 0;

private:
    const Field<List> field_;
    List dropped_;  // from the selection, as long as it is out of force
};

// Shows rows of which those from `missing` on are not the host's.
void ShowRows(HWND tree, const TREE_INSERTLIST& rows, const std::vector<int>& states, std::size_t missing,
              TreeSearch& search) {
    const gwRedrawOff quiet(tree);
    search.Attach(tree, &rows, nullptr, nullptr, states);
    search.Expand(missing);
}

void AddRow(TREE_INSERTLIST& rows, int level, std::int64_t value, const ustr& text) {
    rows.push_back(level, value, Lng::NoApp, -1, text);
}

ustr TextOfMissing(std::int32_t id) {
    return UnknownItemText(id);
}
ustr TextOfMissing(const astr& name) {
    return orvaspace::ToWide(name);
}
std::int64_t ValueOfMissing(std::int32_t id) {
    return id;
}
std::int64_t ValueOfMissing(const astr& /*name*/) {
    return 1;  // any id: the text counts
}

// Ids that no row can have are kept, but not shown.
bool CanBeShown(std::int32_t id) {
    return id >= 1;
}
bool CanBeShown(const astr& /*name*/) {
    return true;
}

template <class Key>
void AddMissing(TREE_INSERTLIST& rows, const std::vector<Key>& keys) {
    const auto listed = KeySet<Key>::Of(rows);
    std::vector<Key> missing;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(missing),
                 [&](const Key& key) { return CanBeShown(key) && !listed.Contains(key); });
    if (missing.empty()) return;
    AddRow(rows, 0, 0, MissingHeading());
    const KeySet<Key> once(missing);
    std::vector<bool> added(once.size(), false);
    for (const Key& key : missing) {
        const std::size_t at = once.Find(key);
        if (!added[at]) AddRow(rows, 1, ValueOfMissing(key), TextOfMissing(key));
        added[at] = true;
    }
}

struct KeyList {
    CbMsgId message;
    std::uint64_t (*wParam)(const ItemSource& source);
};

std::uint64_t Nothing(const ItemSource& /*source*/) {
    return 0;
}
std::uint64_t CurrentDrawingOnly(const ItemSource& source) {
    return source.currentDrawing ? 1 : 0;
}
std::uint64_t FlagMaskOf(const ItemSource& source) {
    return static_cast<std::uint64_t>(source.flagMask);
}

// Items that the host lists as rows of a tree.
template <class Key>
class KeyItems : public ListItems<std::vector<Key>> {
public:
    KeyItems(const Field<std::vector<Key>>& field, const KeyList& from)
        : ListItems<std::vector<Key>>(field), from_(from) {}

    void Fill(HWND tree, const ItemSource& source, const Data& data) override {
        TREE_INSERTLIST rows;
        source.host.AskFor(rows, from_.message, from_.wParam(source), HostCallback::LParam(&rows));
        rows.finalize();
        const std::size_t listed = rows.size();
        AddMissing(rows, this->ListOf(data));
        rows_ = std::move(rows);
        ShowRows(tree, rows_, StatesOf(rows_, this->ListOf(data)), listed, search_);
    }
    bool HasItems() const override { return !rows_.empty(); }
    TreeSearch* Search() override { return &search_; }

protected:
    /// Empties the tree, in which rows may still be to come.
    void Clear(HWND tree) {
        rows_.clear();
        search_.Attach(tree, &rows_);
    }
    std::vector<Key> Checked(const std::vector<Key>& before) const override {
        return CheckedKeys(rows_, search_.GetChecks(), before);
    }

private:
    const KeyList from_;
    TREE_INSERTLIST rows_;
    TreeSearch search_;
};

// The rows of a tree that the host has filled.
TREE_INSERTLIST RowsOf(HWND tree, std::vector<int>& states) {
    TREE_INSERTLIST rows;
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = gwTVnext(tree, item)) {
        AddRow(rows, 0, gwTVgetData(tree, item), gwTVgetText(tree, item));
        states.push_back(gwTVgetCheck(tree, item));
    }
    return rows;
}

// The host may fill the tree of part types itself, and read it back.
template <class Key>
class PartTypeItems : public KeyItems<Key> {
    using Base = KeyItems<Key>;

public:
    using Base::Base;

    void Fill(HWND tree, const ItemSource& source, const Data& data) override {
        tree_ = tree;
        const gwRedrawOff quiet(tree);
        Base::Clear(tree);
        const PartTypeFill fill{&data, source.flagMask};
        filledByHost_ =
            source.host.Ask(CbMsgId::FillPartTypes, HostCallback::WParam(tree), HostCallback::LParam(&fill)) != 0;
        if (!filledByHost_) Base::Fill(tree, source, data);
    }
    void Read(const ItemSource& source, Data& data, bool touched) override {
        const bool read = source.host.AskFor(data, CbMsgId::ReadPartTypes, HostCallback::WParam(tree_),
                                             HostCallback::LParam(&data)) != 0;
        if (!read) Base::Read(source, data, touched);
    }
    bool HasItems() const override { return filledByHost_ ? TreeView_GetCount(tree_) > 0 : Base::HasItems(); }
    TreeSearch* Search() override { return filledByHost_ ? nullptr : Base::Search(); }

protected:
    std::vector<Key> Checked(const std::vector<Key>& before) const override {
        if (!filledByHost_) return Base::Checked(before);
        std::vector<int> states;
        const TREE_INSERTLIST rows = RowsOf(tree_, states);
        return CheckedKeys(rows, states, before);
    }

private:
    HWND tree_ = nullptr;
    bool filledByHost_ = false;
};

struct Drawings {
    std::vector<DrawingEntry> entries;
    std::vector<DrawingRow> rows;
};

// What the drawings are wanted for: the names of a kind in them, or (null) themselves.
using Names = std::vector<ustr> DrawingEntry::*;

Drawings AskDrawings(const HostCallback& host, Names names) {
    Drawings drawings;
    host.AskFor(drawings.entries, CbMsgId::GetDrawings, names ? 0 : 1, HostCallback::LParam(&drawings.entries));
    if (names) std::erase_if(drawings.entries, [names](const DrawingEntry& entry) { return (entry.*names).empty(); });
    ustr_pre<260> current;
    host.AskFor(current, CbMsgId::GetCurrentDrawing, 0, HostCallback::LParam(&current));
    drawings.rows = ArrangeDrawings(drawings.entries, current, SharedDrawingView());
    return drawings;
}

// Model drawings. Their keys are their numbers and 1.
class DrawingItems : public ListItems<std::vector<DrawingRef>> {
public:
    using ListItems::ListItems;

    void Fill(HWND tree, const ItemSource& source, const Data& data) override {
        const Drawings drawings = AskDrawings(source.host, nullptr);
        hasDrawings_ = !drawings.entries.empty();
        rows_.clear();
        index_ = {};
        for (const DrawingEntry& entry : drawings.entries)
            index_.Add(entry.drawing);
        for (const DrawingRow& row : drawings.rows)
            AddRow(rows_, row.level, row.drawing == row.kFolder ? 0 : KeyOf(drawings.entries[row.drawing].drawing),
                   row.text);
        rows_.finalize();
        const std::size_t listed = rows_.size();
        AddMissing(ListOf(data));
        ShowRows(tree, rows_, StatesOf(rows_, KeysOf(ListOf(data))), listed, search_);
    }
    bool HasItems() const override { return hasDrawings_ || !rows_.empty(); }
    TreeSearch* Search() override { return &search_; }

protected:
    std::vector<DrawingRef> Checked(const std::vector<DrawingRef>& before) const override {
        const std::vector<std::int32_t> keys = KeysOf(before);
        std::unordered_map<std::int32_t, const DrawingRef*> known;
        for (std::size_t i = 0; i < before.size(); ++i)
            known.emplace(keys[i], &before[i]);
        const std::vector<std::int32_t> checked = CheckedKeys(rows_, search_.GetChecks(), keys);
        std::vector<DrawingRef> drawings;
        drawings.reserve(checked.size());
        for (const std::int32_t key : checked) {
            const auto found = known.find(key);
            drawings.push_back(found != known.end() ? *found->second : index_[static_cast<std::size_t>(key) - 1]);
        }
        return drawings;
    }

private:
    std::int32_t KeyOf(const DrawingRef& drawing) const { return static_cast<std::int32_t>(index_.Find(drawing)) + 1; }
    std::vector<std::int32_t> KeysOf(const std::vector<DrawingRef>& drawings) const {
        std::vector<std::int32_t> keys;
        keys.reserve(drawings.size());
        for (const DrawingRef& drawing : drawings)
            keys.push_back(KeyOf(drawing));
        return keys;
    }
    void AddMissing(const std::vector<DrawingRef>& drawings) {
        bool first = true;
        for (const DrawingRef& drawing : drawings) {
            if (index_.Find(drawing) != index_.kNone) continue;
            index_.Add(drawing);
            if (std::exchange(first, false)) AddRow(rows_, 0, 0, MissingHeading());
            AddRow(rows_, 1, KeyOf(drawing), UnknownDrawingText(drawing));
        }
    }

    TREE_INSERTLIST rows_;
    TreeSearch search_;
    ObjectSelection::DrawingIndex index_;
    bool hasDrawings_ = false;  // shown or not
};

// The layouts, areas or pages of all drawings.
class NameItems : public ListItems<NameListInDwg> {
public:
    NameItems(NameListInDwg Data::*list, Names names) : ListItems({nullptr, list}), names_(names) {}

    void Fill(HWND tree, const ItemSource& source, const Data& data) override {
        const Drawings drawings = AskDrawings(source.host, names_);
        hasDrawings_ = !drawings.entries.empty();
        tree_.Fill(tree, Branches(drawings), ListOf(data), {MissingHeading(), UnknownDrawingText});
    }
    bool HasItems() const override { return hasDrawings_ || !tree_.Rows().empty(); }
    TreeSearch* Search() override { return &tree_.Search(); }
    std::size_t Count(const Data& data, bool touched) const override {
        return ListOf(data).all && (!touched || Checked(ListOf(data)).all) ? tree_.NameCount()
                                                                           : ListItems::Count(data, touched);
    }

protected:
    NameListInDwg Checked(const NameListInDwg& before) const override {
        NameListInDwg list = before;
        tree_.GetChecked(list);
        return list;
    }

private:
    std::vector<NameListInDwg::Tree::Branch> Branches(const Drawings& drawings) const {
        std::vector<NameListInDwg::Tree::Branch> branches;
        std::vector<bool> shown(drawings.entries.size(), false);
        for (const DrawingRow& row : drawings.rows) {
            if (row.drawing == row.kFolder) {
                branches.push_back({row.level, row.text, {}, {}, true});
                continue;
            }
            shown[row.drawing] = true;
            const DrawingEntry& entry = drawings.entries[row.drawing];
            branches.push_back({row.level, row.text, entry.drawing, entry.*names_, true});
        }
        for (std::size_t i = 0; i < shown.size(); ++i) {
            const DrawingEntry& entry = drawings.entries[i];
            if (!shown[i]) branches.push_back({0, ustr(), entry.drawing, entry.*names_, false});
        }
        return branches;
    }

    const Names names_;
    NameListInDwg::Tree tree_;
    bool hasDrawings_ = false;  // shown or not
};

template <class Items, class... Args>
std::unique_ptr<CategoryItems> Make(Args&&... args) {
    return std::make_unique<Items>(std::forward<Args>(args)...);
}

using Ids = Field<std::vector<std::int32_t>>;
using IdItems = KeyItems<std::int32_t>;

std::unique_ptr<CategoryItems> MakePartTypes(Lng::AppID app) {
    const KeyList from{CbMsgId::GetPartTypes, FlagMaskOf};
    if (app == Lng::Schematics)
        return Make<PartTypeItems<astr>>(Field<std::vector<astr>>{&Data::usePartTypes, &Data::partTypesAlt}, from);
    return Make<PartTypeItems<std::int32_t>>(Ids{&Data::usePartTypes, &Data::partTypes}, from);
}

}  // namespace

std::unique_ptr<CategoryItems> MakeItems(Category category, Lng::AppID app) {
    switch (category) {
        case kModelDrawings:
            return Make<DrawingItems>(Field<std::vector<DrawingRef>>{&Data::useModelDrawings, &Data::modelDrawings});
        case kRooms:
            return Make<IdItems>(Ids{&Data::useRooms, &Data::rooms}, KeyList{CbMsgId::GetRooms, CurrentDrawingOnly});
        case kFunctionalZones:
            return Make<IdItems>(Ids{&Data::useFunctionalZones, &Data::functionalZones},
                                 KeyList{CbMsgId::GetFunctionalZones, CurrentDrawingOnly});
        case kSystems:
            return Make<IdItems>(Ids{&Data::useSystems, &Data::systems}, KeyList{CbMsgId::GetSystems, Nothing});
        case kFittingSeries:
            return Make<IdItems>(Ids{&Data::useFittingSeries, &Data::fittingSeries},
                                 KeyList{CbMsgId::GetFittingSeries, Nothing});
        case kPartTypes:
            return MakePartTypes(app);
        case kLayouts:
            return Make<NameItems>(&Data::layouts, &DrawingEntry::layouts);
        case kSelectionAreas:
            return Make<NameItems>(&Data::selectionAreas, &DrawingEntry::selectionAreas);
        case kPages:
            return Make<NameItems>(&Data::pages, &DrawingEntry::pages);
        case kSwitchboardAreas:
            return Make<NameItems>(&Data::switchboardAreas, &DrawingEntry::switchboardAreas);
        case kHostAreas:
            return Make<NameItems>(&Data::hostAreas, &DrawingEntry::hostAreas);
        case kCategoryCount:
            break;
    }
    return nullptr;
}
