#include "Categories.h"

using ObjectSelection::DrawingRef;
using enum ObjectSelection::Dlg::CbMsgId;
using enum ObjectSelection::Dlg::Flag;

namespace {

constexpr CategoryKind kOfDrawings = CategoryKind::OfDrawings;
constexpr CategoryKind kProjectWide = CategoryKind::ProjectWide;

}  // namespace

const CategoryRow kCategoryTable[kCategoryCount] = {
    {kModelDrawings,    kLibraryTexts,   36668, L"Model drawings",    kOfDrawings,  kNoModelDrawings,    kNoQuery         },
    {kRooms,            kLibraryTexts,   36669, L"Rooms",             kOfDrawings,  kNoRooms,            kNoQuery         },
    {kFunctionalZones,  kLibraryTexts,   36670, L"Functional zones",  kOfDrawings,  kNoFunctionalZones,  kNoQuery         },
    {kSystems,          kLibraryTexts,   36672, L"Systems",           kProjectWide, kNoSystems,          kNoQuery         },
    {kFittingSeries,    kLibraryTexts,   36867, L"Fitting series",    kProjectWide, kNoFittingSeries,    kNoQuery         },
    {kPartTypes,        kLibraryTexts,   36673, L"Part types",        kProjectWide, kNoPartTypes,        kNoQuery         },
    {kLayouts,          kSharedTexts,    60015, L"Layouts",           kOfDrawings,  kNoLayouts,          kNoQuery         },
    {kSelectionAreas,   kSharedTexts,    62002, L"Selection areas",   kOfDrawings,  kNoSelectionAreas,   HasSelectionAreas},
    {kPages,            kSharedTexts,    60009, L"Pages",             kOfDrawings,  kNoPages,            HasPages         },
    {kSwitchboardAreas, Lng::Electrical, 2132,  L"Switchboard areas", kOfDrawings,  kNoSwitchboardAreas,
     HasSwitchboardAreas                                                                                                  },
    {kHostAreas,        Lng::Electrical, 37088, L"Host areas",        kOfDrawings,  kNoHostAreas,        HasHostAreas     },
};

ustr TitleOf(const CategoryRow& row) {
    return Lng::text(row.app, row.textId, row.title);
}

ustr FilterTitle() {
    return Lng::text(kLibraryTexts, 25941, L"Data filter");
}

ustr ProjectGroupTitle() {
    return Lng::text(kLibraryTexts, 25942, L"Systems and products");
}

ustr FilterGroupTitle() {
    return Lng::text(kLibraryTexts, 25943, L"Properties");
}

ustr UnknownItemText(int id) {
    ustr text;
    return text.format(Lng::text(kLibraryTexts, 25944, L"Unknown item %d").c_str(), id);
}

ustr UnknownDrawingText(const DrawingRef& drawing) {
    return drawing.path.empty() ? UnknownItemText(drawing.id) : ustr(drawing.path);
}

ustr MissingHeading() {
    return Lng::text(kLibraryTexts, 25945, L"Not found");
}

int DefaultFlagMask(Lng::AppID app) {
    int mask = 0;
    if (app != Lng::Hpv) mask |= kNoFittingSeries;
    if (app == Lng::Schematics || app == Lng::Automation) {
        mask |= kNoSwitchboardAreas | kNoHostAreas;
    } else {
        mask |= kNoPages;
        if (app != Lng::Electrical) mask |= kNoSwitchboardAreas | kNoHostAreas;
    }
    if (app == Lng::Schematics) mask |= kNoRooms | kNoFunctionalZones | kNoSelectionAreas;
    if (app == Lng::Automation) mask |= kNoRooms | kNoFunctionalZones | kNoSelectionAreas | kNoSystems;
    return mask;
}
