#pragma once

#include <occommonui/ObjectSelection.h>
#include <orvatool/NameListTree.h>
#include <orvatool/TreeInsertList.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Categories.h"
#include "HostCallback.h"

/// What the items of a category depend on.
struct ItemSource {
    const HostCallback& host;
    int flagMask = 0;
    bool currentDrawing = false;  ///< only the current drawing counts
};

/// The items of one category: asks the host for them, shows them in a tree with check boxes, and puts those that are
/// checked into a selection.
class CategoryItems {
public:
    using Data = ObjectSelection::Data;

    CategoryItems() = default;
    CategoryItems(const CategoryItems&) = delete;
    CategoryItems& operator=(const CategoryItems&) = delete;
    virtual ~CategoryItems() = default;

    virtual bool IsInForce(const Data& data) const = 0;
    /// Sets the selection's flag, where the category has one.
    virtual void SetInForce(Data& data, bool inForce) = 0;
    /// For a category out of force: one without a flag is empty then. What it had is shown, and kept for when it comes
    /// back into force.
    virtual void Drop(Data& data) = 0;
    /// Nothing is kept any longer: another selection is shown.
    virtual void Forget() = 0;
    /// How many items are checked: in the tree once the user has `touched` it, else in the selection.
    virtual std::size_t Count(const Data& data, bool touched) const = 0;
    /// Fills the tree in place of what it holds. Items of the selection that the host does not list stand at the end.
    virtual void Fill(HWND tree, const ItemSource& source, const Data& data) = 0;
    /// Puts what is checked into the selection for which the tree was filled. A tree that the user has not `touched`
    /// leaves it as it is.
    virtual void Read(const ItemSource& source, Data& data, bool touched) = 0;
    /// Whether there is anything to choose from.
    virtual bool HasItems() const = 0;
    /// Null when the host has filled the tree itself.
    virtual TreeSearch* Search() = 0;
};

/// `app` decides how part types are kept.
std::unique_ptr<CategoryItems> MakeItems(Category category, Lng::AppID app);
