#pragma once

#include <occommonui/ObjectSelection.h>
#include <orvaspace/ustr.h>
#include <orvatool/Lng.h>

#include <cstddef>

// What a selection can be narrowed by: the categories, in the order in which they are offered. The node id of a
// category is the dialog's largest control id and its place here; that of the first is the id of the items tree.

enum Category : std::size_t {
    kModelDrawings,
    kRooms,
    kFunctionalZones,
    kSystems,
    kFittingSeries,
    kPartTypes,
    kLayouts,
    kSelectionAreas,
    kPages,
    kSwitchboardAreas,
    kHostAreas,
    kCategoryCount,
};

/// Nodes of the category tree that are no categories, by their distance from the dialog's largest control id.
inline constexpr int kProjectGroup = 11;  ///< above the project-wide categories
inline constexpr int kFilterGroup = 12;   ///< above the data filter; always enabled
/// The controls of the search field, after the nodes.
inline constexpr int kSearchLabel = 13;
inline constexpr int kSearchEdit = 14;

enum class CategoryKind {
    OfDrawings,   ///< depends on the source, and is filled anew when that changes
    ProjectWide,  ///< stands in the group of its kind
};

/// The query of a category that is there in every project.
inline constexpr auto kNoQuery = static_cast<ObjectSelection::Dlg::CbMsgId>(-1);

struct CategoryRow {
    Category category;
    Lng::AppID app;
    int textId;
    const wchar_t* title;
    CategoryKind kind;
    ObjectSelection::Dlg::Flag hiddenBy;
    ObjectSelection::Dlg::CbMsgId query;  ///< what tells whether the project has any
};
extern const CategoryRow kCategoryTable[kCategoryCount];

ustr TitleOf(const CategoryRow& row);
ustr FilterTitle();
ustr ProjectGroupTitle();
ustr FilterGroupTitle();

/// What stands for an item of a selection that the host does not list, and the heading above such items.
ustr UnknownItemText(int id);
ustr UnknownDrawingText(const ObjectSelection::DrawingRef& drawing);
ustr MissingHeading();

/// The bits that every flag mask of an application gets.
int DefaultFlagMask(Lng::AppID app);
