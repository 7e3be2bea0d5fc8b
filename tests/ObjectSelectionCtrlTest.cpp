#include <gtest/gtest.h>
#include <occommonui/ObjectSelection.h>
#include <orvatool/Gw.h>
#include <orvatool/OCDialog.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ObjectSelectionCtrlTest_ids.h"
#include "support/SelectionTest.h"

namespace {

using namespace ObjectSelection::Dlg;
using ObjectSelection::Data;
using ObjectSelection::DrawingRef;
using ObjectSelection::NameListInDwg;
using ObjectSelection::RecordData;
using Ids = std::vector<std::int32_t>;
using Messages = std::vector<CbMsgId>;

/// A dialog that embeds a selection, with the whole of it or the short form.
class SelectionDlg : public OCDialog {
public:
    enum Form { Whole, Short, Bare };
    struct Setup {
        Form form = Whole;
        Lng::AppID app = Lng::Hpv;
        Ctrl::Mode mode = Ctrl::NoName;
        int flagMask = 0;
        std::function<void(Ctrl&)> anchor;
    };

    SelectionDlg(HWND parent, Setup setup, ObjectSelection::Dlg::Callback callback)
        : OCDialog(GetModuleHandleW(nullptr), parent), setup_(std::move(setup)) {
        if (setup_.form == Short) {
            ctrl.Attach(this, setup_.app, setup_.flagMask, std::move(callback), IDC_SELECTION_MANUAL,
                        IDC_SELECTION_CURRENT, IDC_SELECTION_SELECTED, IDC_SELECTION_GROUP, IDC_SELECTION_CATEGORIES,
                        IDC_SELECTION_ITEMS, IDC_SELECTION_FILTER, IDC_SELECTION_NO_DATA);
            return;
        }
        const auto id = [this](int ctrlId) { return setup_.form == Bare ? -1 : ctrlId; };
        ctrl.Attach(this, setup_.app, setup_.mode, setup_.flagMask, std::move(callback), id(IDC_SELECTION_MANUAL),
                    id(IDC_SELECTION_CURRENT), id(IDC_SELECTION_SELECTED), id(IDC_SELECTION_GROUP),
                    id(IDC_SELECTION_CATEGORIES), id(IDC_SELECTION_ITEMS), id(IDC_SELECTION_FILTER),
                    id(IDC_SELECTION_NO_DATA), id(IDC_SELECTION_CONFIGURATION_LBL), id(IDC_SELECTION_CONFIGURATION),
                    id(IDC_SELECTION_SAVE), id(IDC_SELECTION_SAVE_AS), id(IDC_SELECTION_DELETE),
                    id(IDC_SELECTION_RENAME), id(IDC_SELECTION_NAME_LBL), id(IDC_SELECTION_NAME));
    }

    int Run() { return StartModal(setup_.form == Bare ? L"BAREDLG" : L"WHOLEDLG"); }
    bool OnInitDialog() override {
        OCDialog::OnInitDialog();
        EXPECT_TRUE(ctrl.OnInitDialog());
        return true;
    }
    void SetAnchoring() override {
        OCDialog::SetAnchoring();
        if (setup_.anchor) setup_.anchor(ctrl);
    }
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override {
        return ctrl.OnCommand(wParam, lParam) || OCDialog::OnCommand(wParam, lParam);
    }
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override {
        return ctrl.OnNotify(wParam, lParam) || OCDialog::OnNotify(wParam, lParam);
    }
    int GetDataFromCtrls() override { return ctrl.Ctrls2Data(); }
    void OnOk() override {
        if (TakeData()) OCDialog::OnOk();
    }

    Ctrl ctrl;

private:
    const Setup setup_;
};

constexpr int kLargestId = IDC_SELECTION_LABELS;  // of the template

// Where the node of a category stands after the largest id.
enum Place { Rooms = 1, Zones, Systems, Series, PartTypes, Layouts, Areas, Pages, Boards, HostAreas, Project, Filters };

Data SelectedDrawings() {
    Data data;
    data.bySelectionSet = data.useModelDrawings = true;
    data.modelDrawings = {SelectionHost::Drawings()[0].drawing};
    return data;
}

NameListInDwg NamesInFirstDrawing(const std::vector<const wchar_t*>& names) {
    NameListInDwg list;
    for (const wchar_t* const name : names)
        list.entries.push_back({SelectionHost::Drawings()[0].drawing, name});
    return list;
}

/// Every category in force, with items that the host lists and some that it does not.
Data FullData() {
    Data data = SelectedDrawings();
    data.modelDrawings.push_back({77, L"C:\\Old\\Gone.dwg"});
    data.useRooms = data.useFunctionalZones = data.useSystems = data.useFittingSeries = data.usePartTypes = true;
    data.rooms = {12, 99, 11, 12};
    data.functionalZones = {22};
    data.systems = {32, -4, 31};
    data.fittingSeries = {41};
    data.partTypes = {52};
    data.layouts = NamesInFirstDrawing({L"A3", L"Old layout"});
    data.selectionAreas.all = true;
    data.filterRules.resize(1);
    data.filterRules[0].propId = 5;
    data.filterRules[0].criteria = {
        {ObjectSelection::Property::Equal, L"1"}
    };
    return data;
}

Texts TreeTexts(HWND tree) {
    Texts texts;
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = gwTVnext(tree, item))
        texts.emplace_back(gwTVgetText(tree, item).c_str());
    return texts;
}

/// The texts of the items without items below them that are checked.
Texts CheckedTexts(HWND tree) {
    Texts texts;
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = gwTVnext(tree, item)) {
        if (!TreeView_GetChild(tree, item) && gwTVgetCheck(tree, item) == kTreeChecked)
            texts.emplace_back(gwTVgetText(tree, item).c_str());
    }
    return texts;
}

class ObjectSelectionCtrlTest : public SelectionTest {
protected:
    ObjectSelectionCtrlTest() : SelectionTest(IDC_SELECTION_CATEGORIES) { record_.data = CurrentDrawing(); }

    void Command(int id) {
        Step([=](HWND dlg) { PostMessageW(dlg, WM_COMMAND, static_cast<WPARAM>(id), 0); });
    }
    void AddDrawing(const DrawingRef& drawing, const wchar_t* title) {
        host_.drawings.emplace_back();
        host_.drawings.back().drawing = drawing;
        host_.drawings.back().title = title;
    }

    std::uint64_t LastWParam(CbMsgId message) const {
        const auto& asked = host_.asked;
        const auto last =
            std::find_if(asked.rbegin(), asked.rend(), [=](const auto& a) { return a.message == message; });
        return last == asked.rend() ? ~std::uint64_t{0} : last->wParam;
    }

    HWND Tree(int place) const {
        return uidriver::Control(dlg_, place == 0 ? IDC_SELECTION_ITEMS : kLargestId + place);
    }
    HWND SearchField() const { return uidriver::Control(dlg_, kLargestId + 14); }
    int NodeCheck(const wchar_t* category) const {
        const HTREEITEM item = uidriver::FindTreeItem(Categories(), category);
        return item ? gwTVgetCheck(Categories(), item) : -1;
    }
    std::wstring SelectedNode() const { return gwTVgetText(Categories(), TreeView_GetSelection(Categories())).c_str(); }
    void ExpectItems(int place, const Texts& texts) {
        Step([=, this] { EXPECT_EQ(TreeTexts(Tree(place)), texts); });
    }
    void ExpectChecked(int place, const Texts& texts) {
        Step([=, this] { EXPECT_EQ(CheckedTexts(Tree(place)), texts); });
    }

    /// Runs the steps in the dialog with `record_`, which becomes what was read, and confirms.
    void RunToOk() {
        SelectionDlg dialog(parent_, setup_, host_.Callback());
        ctrl_ = &dialog.ctrl;
        dialog.ctrl.SetData(record_);
        Press(IDOK);
        EXPECT_EQ(RunSteps([&] { return dialog.Run(); }), IDOK);
        dialog.ctrl.GetData(record_);
    }

    Ctrl* ctrl_ = nullptr;
    SelectionDlg::Setup setup_;
    RecordData record_;
};

TEST_F(ObjectSelectionCtrlTest, AttachingAsksWhatTheProjectHasAndAddsTheBitsOfTheApplication) {
    constexpr int kGiven = kLockForDrawings | kAcceptEmpty | kNoLayouts;
    const std::pair<int, int> kMasks[] = {
        {1, 0x640000},
        {2, 0x40400 },
        {3, 0x640400},
        {6, 0x62C400},
        {7, 0x62CC00}
    };
    for (const auto& [app, mask] : kMasks) {
        for (const SelectionDlg::Form form : {SelectionDlg::Whole, SelectionDlg::Short}) {
            SelectionHost host;
            SelectionDlg dialog(parent_, {form, static_cast<Lng::AppID>(app), Ctrl::NoName, kGiven, {}},
                                host.Callback());
            EXPECT_EQ(dialog.ctrl.GetFlagMask(), kGiven | mask) << app;
            EXPECT_EQ(
                host.asked,
                (std::vector<SelectionHost::Asked>{
                    {HasSelectionAreas,   0, 0},
                    {HasPages,            0, 0},
                    {HasSwitchboardAreas, 0, 0},
                    {HasHostAreas,        0, 0}
            }));
            dialog.ctrl.SetFlagMask(5);
            EXPECT_EQ(dialog.ctrl.GetFlagMask(), 5);
        }
    }
    Ctrl unattached;
    EXPECT_THROW(unattached.Attach(nullptr, Lng::Hpv, 0, nullptr, 1, 2, 3, 4, 5, 6, 7, 8), std::bad_function_call);
}

TEST_F(ObjectSelectionCtrlTest, EachApplicationOffersItsCategories) {
    const std::map<Lng::AppID, Texts> kOffered = {
        std::pair(Lng::Hpv, Texts{L"Model drawings", L"Rooms", L"Functional zones", L"Layouts", L"Selection areas",
                                  L"Systems and products", L"Systems", L"Fitting series", L"Part types", L"Properties",
                                  L"Data filter"}),
        std::pair(Lng::Electrical,
                  Texts{L"Model drawings", L"Rooms", L"Functional zones", L"Layouts", L"Selection areas",
                        L"Switchboard areas", L"Host areas", L"Systems and products", L"Systems", L"Part types",
                        L"Properties", L"Data filter"}),
        std::pair(Lng::Automation, Texts{L"Model drawings", L"Layouts", L"Pages", L"Systems and products",
                                         L"Part types", L"Properties", L"Data filter"})};
    for (const auto& [app, texts] : kOffered) {
        setup_.app = app;
        Step([expected = texts, this] {
            EXPECT_EQ(TreeTexts(Categories()), expected);
            EXPECT_EQ(Shown(dlg_, IDC_SELECTION_GROUP), L"Object selection set");
            EXPECT_EQ(Shown(dlg_, IDC_SELECTION_SELECTED), L"Selected drawings");
        });
        RunToOk();
    }
}

TEST_F(ObjectSelectionCtrlTest, WhatIsShownIsReadBackAsItWas) {
    for (const bool current : {false, true}) {
        record_.data = FullData();
        record_.data.currentDrawing = current;
        const Data before = record_.data;
        Step([=, this] {
            EXPECT_EQ(IsChecked(dlg_, IDC_SELECTION_CURRENT), current);
            for (const wchar_t* const node : {L"Rooms", L"Systems", L"Layouts", L"Selection areas", L"Data filter"})
                EXPECT_EQ(NodeCheck(node), kTreeChecked);
        });
        for (const wchar_t* const node : {L"Rooms", L"Functional zones", L"Systems", L"Fitting series", L"Part types",
                                          L"Layouts", L"Selection areas", L"Data filter"})
            Pick(node);
        RunToOk();
        EXPECT_EQ(record_.data, before) << "trees that were looked at change nothing either";
    }
    record_.data = Data();
    Step([this] { EXPECT_TRUE(IsChecked(dlg_, IDC_SELECTION_MANUAL)); });
    RunToOk();
    EXPECT_EQ(record_.data, Data());
}

TEST_F(ObjectSelectionCtrlTest, TreesAreFilledWhenTheyAreFirstShown) {
    const Messages kItems = {GetDrawings,      GetCurrentDrawing, GetRooms,      GetFunctionalZones, GetSystems,
                             GetFittingSeries, GetPartTypes,      FillPartTypes, GetLabels};
    record_.data.useRooms = true;
    setup_.flagMask = kAcceptEmpty;
    Step([=, this] {
        EXPECT_EQ(SelectedNode(), L"Rooms") << "what is in force comes first";
        EXPECT_EQ(host_.Order(kItems), (Messages{GetLabels, GetRooms}));
        EXPECT_EQ(LastWParam(GetRooms), 1u);
        EXPECT_TRUE(TreeView_GetToolTips(Tree(Rooms)));
        EXPECT_FALSE(TreeView_GetToolTips(Tree(Systems))) << "it has not been shown yet";
        host_.asked.clear();
    });
    for (const wchar_t* const node : {L"Systems", L"Fitting series", L"Part types", L"Layouts", L"Systems", L"Rooms"})
        Pick(node);
    Step([=, this] {
        const Messages order = host_.Order(kItems);
        EXPECT_EQ(order, (Messages{GetSystems, GetFittingSeries, FillPartTypes, GetPartTypes, GetDrawings,
                                   GetCurrentDrawing}));
        for (const auto& asked : host_.asked) {
            std::uint64_t wParam = 0;
            if (asked.message == FillPartTypes) wParam = reinterpret_cast<std::uintptr_t>(Tree(PartTypes));
            if (asked.message == GetPartTypes) wParam = 0x640000 | kAcceptEmpty;
            EXPECT_EQ(asked.wParam, wParam) << asked.message;
        }
        host_.asked.clear();
    });
    Press(IDC_SELECTION_SELECTED);
    Pick(L"Rooms");
    Step([=, this] {
        EXPECT_EQ(host_.Order(kItems), (Messages{GetDrawings, GetCurrentDrawing, GetRooms}));
        EXPECT_EQ(LastWParam(GetRooms), 0u) << "another source, other rooms";
        host_.asked.clear();
    });
    Press(IDC_SELECTION_CURRENT);
    Step([this] {
        ASSERT_EQ(host_.Count(GetRooms), 1);
        EXPECT_EQ(LastWParam(GetRooms), 1u);
    });
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, UsersChooseItemsWithParentsAndChildren) {
    Pick(L"Systems");
    Step([this] {
        EXPECT_TRUE(IsWindowVisible(Tree(Systems)));
        EXPECT_FALSE(IsWindowEnabled(Tree(Systems))) << "not in force";
    });
    Pick(L"Systems", true);
    Turn(L"Supply air");
    ExpectChecked(Systems, {L"TK01", L"TK02"});
    Turn(L"TK01");
    Pick(L"Rooms", true);
    Step([this] { EXPECT_EQ(SelectedNode(), L"Rooms") << "to turn a category on is to work on it"; });
    Turn(L"Kitchen");
    Turn(L"Hall");
    RunToOk();
    EXPECT_EQ(record_.data.systems, Ids{32});
    EXPECT_EQ(record_.data.rooms, (Ids{11, 12}));
    EXPECT_TRUE(record_.data.useSystems && record_.data.useRooms);
    EXPECT_FALSE(record_.data.usePartTypes);

    Pick(L"Rooms", true);
    Pick(L"Systems");
    Step([this] { SetFocus(Categories()); });
    Key(VK_SPACE);
    RunToOk();
    EXPECT_FALSE(record_.data.useSystems || record_.data.useRooms);
    EXPECT_EQ(record_.data.systems, Ids{32}) << "out of force, but kept";
}

TEST_F(ObjectSelectionCtrlTest, SelectedDrawingsBringTheirTreeWithAllDrawings) {
    Press(IDC_SELECTION_SELECTED);
    Step([this] {
        EXPECT_EQ(SelectedNode(), L"Model drawings");
        EXPECT_EQ(NodeCheck(L"Model drawings"), kTreeChecked);
        EXPECT_EQ(CheckedTexts(Tree(0)), (Texts{L"First floor", L"Cellar"}));
        EXPECT_EQ(LastWParam(GetDrawings), 1u);
    });
    Turn(L"Cellar");
    Press(IDC_SELECTION_CURRENT);
    Step([this] {
        EXPECT_FALSE(IsWindowVisible(Tree(0)));
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_NO_DATA), L"Not used with \"Current drawing\"");
    });
    Press(IDC_SELECTION_SELECTED);
    ExpectChecked(0, {L"First floor"});  // a choice is not overruled
    RunToOk();
    EXPECT_EQ(record_.data.modelDrawings, SelectedDrawings().modelDrawings);
    EXPECT_TRUE(record_.data.bySelectionSet && record_.data.useModelDrawings && !record_.data.currentDrawing);

    Command(411);
    Step([this] { uidriver::SetText(dlg_, GetDlgCtrlID(SearchField()), L"First"); });
    Press(IDC_SELECTION_CURRENT);
    Press(IDC_SELECTION_SELECTED);
    RunToOk();
    EXPECT_EQ(record_.data.modelDrawings.size(), 2u) << "shown by the search or not";
}

TEST_F(ObjectSelectionCtrlTest, WhatIsHiddenOrForbiddenIsNotSelected) {
    setup_.flagMask = kNoModelDrawings;
    record_.data = SelectedDrawings();
    Step([this] {
        EXPECT_EQ(SelectedNode(), L"Rooms");
        TreeView_SelectItem(Categories(), uidriver::FindTreeItem(Categories(), L"Systems"));
        ctrl_->Data2Ctrls();
        EXPECT_EQ(SelectedNode(), L"Systems");
        ctrl_->SetFlagMask(kNoModelDrawings | kNoSystems);
        ctrl_->Data2Ctrls();
        EXPECT_EQ(SelectedNode(), L"Rooms");
        EXPECT_EQ(TreeTexts(ShownTree()).size(), 3u);
    });
    Press(IDC_SELECTION_CURRENT);
    RunToOk();

    setup_.flagMask = kCurrentDrawingOnly;
    record_.data = CurrentDrawing();
    Step([this] { ctrl_->EnableDisableCtrls(Ctrl::PartTypesOnly); });
    Press(IDC_SELECTION_SELECTED);
    RunToOk();
    EXPECT_EQ(record_.data, CurrentDrawing());
}

TEST_F(ObjectSelectionCtrlTest, WhatIsChosenWhileTheHostFillsAnotherTreeIsShown) {
    host_.On(GetSystems, [this](std::uint64_t, std::int64_t lParam) -> std::int64_t {
        *reinterpret_cast<TREE_INSERTLIST*>(lParam) = host_.systems;
        TreeView_SelectItem(Categories(), uidriver::FindTreeItem(Categories(), L"Rooms"));
        return 0;
    });
    Pick(L"Systems");
    Step([this] {
        EXPECT_EQ(SelectedNode(), L"Rooms");
        EXPECT_EQ(ShownTree(), Tree(Rooms));
    });
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, ASelectionWithoutPlacesIsRefused) {
    const auto check = [this](const char* what, const Data& data, int flagMask, bool valid) {
        ctrl_->SetFlagMask(flagMask);
        ctrl_->SetData(data, nullptr);
        EXPECT_TRUE(ctrl_->Data2Ctrls());
        EXPECT_EQ(ctrl_->Ctrls2Data(), valid ? 0 : IDC_SELECTION_CURRENT) << what;
    };
    Step([=] {
        Data data = SelectedDrawings();
        check("a model drawing", data, 0, true);
        data.modelDrawings.clear();
        check("no model drawing", data, 0, false);
        data = SelectedDrawings();
        data.useModelDrawings = false;
        check("model drawings out of force", data, 0, false);
        check("none, accepted", data, kAcceptEmpty, true);
        data.rooms = data.functionalZones = {1};
        check("rooms and zones out of force", data, 0, false);
        data.useRooms = true;
        check("a room", data, 0, true);
        data.rooms.clear();
        check("no room", data, 0, false);
        data.useFunctionalZones = true;
        check("a zone", data, 0, true);
        data.functionalZones.clear();
        check("no zone", data, 0, false);
        check("no zone, accepted", data, kAcceptEmpty, true);
    });
    RunToOk();

    record_.data = SelectedDrawings();
    record_.data.modelDrawings.clear();
    Press(IDOK);
    Step([this] {
        const HWND current = uidriver::Control(dlg_, IDC_SELECTION_CURRENT);
        EXPECT_EQ(GetFocus(), current);
        // What a button says that is not checked when it gets the focus again.
        SendMessageW(dlg_, WM_COMMAND, IDC_SELECTION_CURRENT, reinterpret_cast<LPARAM>(current));
        EXPECT_TRUE(IsDlgButtonChecked(dlg_, IDC_SELECTION_SELECTED)) << "the focus alone is no click";
    });
    Press(IDC_SELECTION_CURRENT);
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, PaperSpaceAndFlagsForceTheSource) {
    struct Case {
        int flagMask;
        bool paperSpace;
        Data data;
        int checked;
    };
    const std::vector<Case> kCases = {
        Case{0,                   true,  Data(),             IDC_SELECTION_CURRENT },
        Case{0,                   true,  SelectedDrawings(), IDC_SELECTION_SELECTED},
        Case{kCurrentDrawingOnly, false, SelectedDrawings(), IDC_SELECTION_CURRENT },
        Case{kCurrentDrawingOnly, false, Data(),             IDC_SELECTION_MANUAL  },
        Case{kNoManualSelection,  false, Data(),             IDC_SELECTION_CURRENT },
        Case{kNoManualSelection,  false, SelectedDrawings(), IDC_SELECTION_CURRENT }
    };
    Step([&, this] {
        for (const Case& c : kCases) {
            ctrl_->SetFlagMask(c.flagMask);
            ctrl_->SetPaperSpace(c.paperSpace);
            ctrl_->SetData(c.data, nullptr);
            ctrl_->Data2Ctrls();
            for (const int id : {IDC_SELECTION_MANUAL, IDC_SELECTION_CURRENT, IDC_SELECTION_SELECTED})
                EXPECT_EQ(IsChecked(dlg_, id), id == c.checked);
            EXPECT_EQ(Enabled(dlg_, IDC_SELECTION_MANUAL), !c.paperSpace && !(c.flagMask & kNoManualSelection));
            EXPECT_EQ(Enabled(dlg_, IDC_SELECTION_SELECTED), !(c.flagMask & kCurrentDrawingOnly));
            Data read;
            EXPECT_EQ(ctrl_->Ctrls2Data(), 0);
            ctrl_->GetData(read);
            EXPECT_EQ(read.bySelectionSet, c.checked != IDC_SELECTION_MANUAL);
            EXPECT_EQ(read.currentDrawing, c.checked == IDC_SELECTION_CURRENT);
            EXPECT_EQ(read.useModelDrawings, c.checked == IDC_SELECTION_SELECTED);
        }
        ctrl_->SetFlagMask(0);
        ctrl_->SetPaperSpace(false);
        ctrl_->SetData(Data(), nullptr);
        ctrl_->Data2Ctrls();
        ctrl_->SetPaperSpace(true);
        ctrl_->EnableDisableCtrls(Ctrl::EnableAll);
        EXPECT_TRUE(IsChecked(dlg_, IDC_SELECTION_CURRENT)) << "a source that is no longer allowed is left";
    });
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, CategoriesAreGreyWithTheirReason) {
    record_.data = Data();
    host_.Answers(HasRooms, 0);
    host_.Answers(HasSelectionAreas, 0);
    const auto expectReason = [this](const wchar_t* reason) {
        Step([=](HWND dlg) { EXPECT_EQ(Shown(dlg, IDC_SELECTION_NO_DATA), reason); });
    };
    Step([this] { EXPECT_EQ(SelectedNode(), L"Systems") << "the first that can be used"; });
    Pick(L"Rooms");
    expectReason(L"Not used with \"Manual selection\"");
    Pick(L"Rooms", true);
    Step([this] { EXPECT_EQ(NodeCheck(L"Rooms"), kTreeUnchecked); });
    Press(IDC_SELECTION_CURRENT);
    expectReason(L"The project has none");
    Pick(L"Selection areas");
    expectReason(L"The project has none");
    Pick(L"Properties");
    expectReason(L"No data for this node");
    Step([=, this] {
        EXPECT_EQ(host_.Count(GetRooms), 0);
        EXPECT_EQ(ShownTree(), nullptr);
    });
    Pick(L"Data filter");
    Step([this] {
        EXPECT_TRUE(Visible(dlg_, IDC_SELECTION_FILTER));
        EXPECT_FALSE(Visible(dlg_, IDC_SELECTION_NO_DATA));
        EXPECT_FALSE(Enabled(dlg_, IDC_SELECTION_FILTER)) << "not in force";
    });
    Pick(L"Data filter", true);
    Step([this] { EXPECT_TRUE(Enabled(dlg_, IDC_SELECTION_FILTER)); });
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, TheWholeOrAllButThePartTypesIsDisabled) {
    const auto enabled = [this] {
        Ids ids;
        for (int id = IDC_SELECTION_MANUAL; id <= IDC_SELECTION_NAME; ++id) {
            if (Enabled(dlg_, id)) ids.push_back(id);
        }
        for (int place = Rooms; place <= HostAreas; ++place) {
            if (IsWindowEnabled(Tree(place))) ids.push_back(-place);
        }
        return ids;
    };
    Step([=, this] {
        ctrl_->EnableDisableCtrls(Ctrl::DisableAll);
        const auto refill = [this] { SendMessageW(dlg_, WM_COMMAND, 401, 0); };
        refill();
        EXPECT_EQ(enabled(), Ids());
        ctrl_->EnableDisableCtrls(Ctrl::PartTypesOnly);
        refill();
        EXPECT_EQ(enabled(), (Ids{IDC_SELECTION_MANUAL, IDC_SELECTION_CURRENT, IDC_SELECTION_SELECTED, -PartTypes}));
        EXPECT_EQ(SelectedNode(), L"Part types");
    });
    Turn(L"Bend");
    Step([this] {
        ctrl_->SetPaperSpace(true);
        ctrl_->EnableDisableCtrls(Ctrl::PartTypesOnly);
        EXPECT_FALSE(Enabled(dlg_, IDC_SELECTION_MANUAL));
        ctrl_->EnableDisableCtrls(Ctrl::EnableAll);
        EXPECT_TRUE(Enabled(dlg_, IDC_SELECTION_CATEGORIES));
        EXPECT_TRUE(IsWindowEnabled(Tree(PartTypes)));
        EXPECT_TRUE(Enabled(dlg_, IDC_SELECTION_DELETE)) << "without configurations it is the dialog's";
    });
    RunToOk();
    EXPECT_EQ(record_.data.partTypes, Ids{52});
    EXPECT_TRUE(record_.data.usePartTypes);
}

TEST_F(ObjectSelectionCtrlTest, AbsentControlsAreNeverTouched) {
    setup_.form = SelectionDlg::Bare;
    setup_.mode = Ctrl::Configurations;
    record_.data = FullData();
    const RecordData before = record_;
    Step([this] {
        ctrl_->SetAnchoring(true, true, true, true);
        ctrl_->EnableDisableCtrls(Ctrl::DisableAll);
        const HWND text = GetDlgItem(dlg_, 0xFFFF) ? GetDlgItem(dlg_, 0xFFFF) : GetDlgItem(dlg_, -1);
        EXPECT_EQ(uidriver::Text(text), L"Apart");
        EXPECT_TRUE(IsWindowEnabled(text));
        EXPECT_FALSE(ctrl_->OnCommand(MAKEWPARAM(0xFFFF, BN_CLICKED), 0));
    });
    RunToOk();
    EXPECT_EQ(record_, before);

    setup_ = {};
    setup_.form = SelectionDlg::Short;
    record_.data = CurrentDrawing();
    Pick(L"Systems", true);
    Turn(L"TK02");
    Step([](HWND dlg) { EXPECT_EQ(Shown(dlg, IDC_SELECTION_SAVE) + Shown(dlg, IDC_SELECTION_NAME_LBL), L""); });
    RunToOk();
    EXPECT_EQ(record_.data.systems, Ids{32});
}

TEST_F(ObjectSelectionCtrlTest, ANameThatDoesNotFitIsNotLost) {
    setup_.mode = Ctrl::NameEdit;
    record_.name = std::wstring(300, L'n').c_str();
    const RecordData before = record_;
    Step([this] { EXPECT_EQ(Shown(dlg_, IDC_SELECTION_NAME), std::wstring(255, L'n')); });
    RunToOk();
    EXPECT_EQ(record_, before);
}

TEST_F(ObjectSelectionCtrlTest, ConfigurationsAreSavedChosenRenamedAndDeleted) {
    const auto combo = [this] { return uidriver::Control(dlg_, IDC_SELECTION_CONFIGURATION); };
    setup_.mode = Ctrl::Configurations;
    Step([=, this] {
        EXPECT_FALSE(Enabled(dlg_, IDC_SELECTION_DELETE));
        EXPECT_FALSE(Enabled(dlg_, IDC_SELECTION_RENAME));
    });
    Press(IDC_SELECTION_SAVE);  // never saved: asks
    AnswerText(L"", nullptr);
    Step([this] { EXPECT_EQ(host_.Count(SaveConfiguration), 0); });
    Press(IDC_SELECTION_SAVE);
    AnswerText(L"", L"First");
    Step([=, this] {
        ASSERT_EQ(host_.configurations.size(), 1u);
        EXPECT_EQ(host_.configurations[0].name, L"First");
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"First");
        EXPECT_EQ(SendMessageW(combo(), CB_GETITEMDATA, 0, 0), 0);
        EXPECT_TRUE(Enabled(dlg_, IDC_SELECTION_RENAME));
    });
    Pick(L"Systems", true);
    Turn(L"TK01");
    Press(IDC_SELECTION_SAVE);  // has a key: just saves
    Step([this] { EXPECT_EQ(host_.configurations[0].data.systems, Ids{31}); });
    Pick(L"Systems", true);
    Press(IDC_SELECTION_SAVE_AS);
    AnswerText(L"First", L"Second");
    Press(IDC_SELECTION_RENAME);
    AnswerText(L"Second", L"Other");
    Step([=, this] {
        ASSERT_EQ(host_.configurations.size(), 2u);
        EXPECT_EQ(host_.configurations[1].name, L"Other");
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"Other");
        EXPECT_FALSE(host_.configurations[1].data.useSystems);
        host_.Throws(RenameConfiguration);
    });
    Press(IDC_SELECTION_RENAME);
    AnswerText(L"Other", L"Refused");
    Pick(L"Rooms", true);
    Step([=, this] {
        RecordData now;
        ctrl_->GetData(now);
        EXPECT_EQ(now.name, L"Other");
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"Other");
        host_.Throws(LoadConfiguration);
        SetFocus(combo());
    });
    Key(VK_UP);
    Step([this] {
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"Other") << "what was not loaded is not chosen";
        EXPECT_EQ(NodeCheck(L"Rooms"), kTreeChecked) << "and takes the place of nothing";
        host_.answers.clear();
        host_.asked.clear();
    });
    Key(VK_UP);
    Step([=, this] {
        EXPECT_EQ(host_.Count(LoadConfiguration), 1);
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"First");
        EXPECT_EQ(NodeCheck(L"Systems"), kTreeChecked);
        host_.Answers(DeleteConfiguration, 3);
    });
    Press(IDC_SELECTION_DELETE);
    Step([=, this] {
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"First") << "refused";
        host_.answers.clear();
    });
    Press(IDC_SELECTION_DELETE);
    Step([=, this] {
        ASSERT_EQ(host_.configurations.size(), 1u);
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"");
        EXPECT_EQ(ComboTexts(dlg_, IDC_SELECTION_CONFIGURATION), Texts{L"Other"});
        EXPECT_FALSE(Enabled(dlg_, IDC_SELECTION_DELETE));
        PostMessageW(dlg_, WM_COMMAND, IDC_SELECTION_RENAME, 0);  // without a key nothing happens
    });
    Step([this] {
        EXPECT_EQ(uidriver::TopDialog(), dlg_);
        RecordData now;
        ctrl_->GetData(now);
        EXPECT_TRUE(now.key.empty() && now.name.empty());
        host_.On(SaveConfiguration, [](std::uint64_t, std::int64_t) { return 0; });  // gives no key
    });
    Press(IDC_SELECTION_SAVE);
    AnswerText(L"", L"Lost");
    Step([this] {
        EXPECT_EQ(ComboTexts(dlg_, IDC_SELECTION_CONFIGURATION), Texts{L"Other"})
            << "what was not stored is not offered";
    });
    Step([=] { SetFocus(combo()); });
    Key(VK_DOWN);
    RunToOk();
    EXPECT_EQ(record_.name, L"Other");

    record_ = {};
    record_.data = CurrentDrawing();
    Step([this] {
        EXPECT_EQ(Shown(dlg_, IDC_SELECTION_CONFIGURATION), L"Other") << "the next selection opens with it";
    });
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, ItemsThatAreGoneStayUntilTheyAreUnchecked) {
    record_.data = FullData();
    const DrawingRef gone = record_.data.modelDrawings.back();
    Pick(L"Rooms");
    ExpectItems(Rooms, {L"Floor", L"Hall", L"Kitchen", L"Not found", L"Unknown item 99"});
    ExpectChecked(Rooms, {L"Hall", L"Kitchen", L"Unknown item 99"});
    Turn(L"Hall");
    Pick(L"Model drawings");
    ExpectChecked(0, {L"First floor", L"C:\\Old\\Gone.dwg"});
    Turn(L"Cellar");
    Pick(L"Layouts");
    Turn(L"A1");
    Pick(L"Systems");
    Turn(L"TK01");
    RunToOk();
    EXPECT_EQ(record_.data.rooms, (Ids{12, 99, 12})) << "the others in their order";
    EXPECT_EQ(record_.data.modelDrawings,
              (std::vector<DrawingRef>{host_.drawings[0].drawing, gone, host_.drawings[1].drawing}));
    EXPECT_EQ(record_.data.layouts, NamesInFirstDrawing({L"A3", L"Old layout", L"A1"}));
    EXPECT_EQ(record_.data.systems, (Ids{32, -4})) << "an id that no row can have stays too";

    Pick(L"Rooms");
    Turn(L"Unknown item 99");
    Pick(L"Layouts");
    Turn(L"Old layout");
    Pick(L"Selection areas");
    Turn(L"North");
    RunToOk();
    EXPECT_EQ(record_.data.rooms, (Ids{12, 12}));
    EXPECT_EQ(record_.data.layouts, NamesInFirstDrawing({L"A3", L"A1"}));
    EXPECT_EQ(record_.data.selectionAreas, NameListInDwg()) << "no longer all";
}

TEST_F(ObjectSelectionCtrlTest, NamesAndRulesOutOfForceAreDroppedWhenReadButComeBackLater) {
    record_.data = FullData();
    record_.data.selectionAreas = {};
    const Data before = record_.data;
    const auto turnBoth = [this] {
        Pick(L"Layouts", true);
        Pick(L"Data filter", true);
    };
    const auto changeSource = [this] {
        Press(IDC_SELECTION_CURRENT);
        Press(IDC_SELECTION_SELECTED);
    };
    const auto read = [this] {
        Step([this] {
            Data data;
            EXPECT_EQ(ctrl_->Ctrls2Data(), 0) << "as for saving a configuration";
            ctrl_->GetData(data);
            EXPECT_TRUE(data.layouts.IsEmpty() && data.filterRules.empty());
        });
    };
    turnBoth();
    changeSource();
    read();  // while their tree is not filled
    Pick(L"Layouts");
    ExpectChecked(Layouts, {L"A3", L"Old layout"});
    read();
    changeSource();
    turnBoth();
    RunToOk();
    EXPECT_EQ(record_.data, before);

    turnBoth();
    Pick(L"Selection areas", true);
    Turn(L"North");
    RunToOk();
    EXPECT_TRUE(record_.data.layouts.IsEmpty() && record_.data.filterRules.empty());
    EXPECT_EQ(record_.data.selectionAreas, NamesInFirstDrawing({L"North"}));
}

TEST_F(ObjectSelectionCtrlTest, WhatIsNotOfferedIsNeitherSelectedNorRead) {
    setup_.flagMask = kNoModelDrawings | kNoRooms;
    record_.data = SelectedDrawings();
    record_.data.useRooms = true;
    record_.data.rooms = {12};
    const Data before = record_.data;
    Step([this] {
        EXPECT_EQ(SelectedNode(), L"Functional zones");
        ctrl_->SetFlagMask(0);  // which shows nothing yet
    });
    RunToOk();
    EXPECT_EQ(record_.data, before);
}

TEST_F(ObjectSelectionCtrlTest, DrawingsThatAreTheSameInMoreThanOneWayKeepTheirNames) {
    AddDrawing({0, L"C:\\Project\\New.dwg"}, L"Without id");
    host_.drawings.back().layouts = {L"Listed"};
    const DrawingRef now = {5, L"C:\\Project\\New.dwg"};
    const DrawingRef once = {5, L"C:\\Project\\Old.dwg"};
    record_.data.layouts.entries = {
        {now,  L"Listed"},
        {now,  L"First" },
        {once, L"Second"}
    };
    ExpectChecked(Layouts, {L"Listed", L"First", L"Second"});
    Turn(L"First");
    RunToOk();
    EXPECT_EQ(record_.data.layouts.entries, (std::vector<NameListInDwg::Entry>{
                                                {now,  L"Listed"},
                                                {once, L"Second"}
    }));
}

TEST_F(ObjectSelectionCtrlTest, TheHostMayFillAndReadThePartTypes) {
    record_.data.usePartTypes = true;
    record_.data.partTypes = {7};
    host_.On(FillPartTypes, [](std::uint64_t tree, std::int64_t lParam) -> std::int64_t {
        const auto& fill = *reinterpret_cast<const PartTypeFill*>(lParam);
        EXPECT_EQ(fill.data->partTypes, Ids{7});
        EXPECT_EQ(fill.flagMask, 0x640000);
        TREE_INSERTLIST rows;
        rows.push_back(0, 0, Lng::Hpv, -1, ustr(L"Host's own"));
        rows.push_back(1, 61, Lng::Hpv, -1, ustr(L"Valve"));
        rows.push_back(1, 62, Lng::Hpv, -1, ustr(L"Damper"));
        FillTree(reinterpret_cast<HWND>(tree), rows);
        return 1;
    });
    Step([this] {
        EXPECT_EQ(TreeTexts(Tree(PartTypes)), (Texts{L"Host's own", L"Valve", L"Damper"}));
        EXPECT_FALSE(IsWindowVisible(SearchField())) << "only the host knows what its rows are";
    });
    Turn(L"Damper");
    RunToOk();
    EXPECT_EQ(host_.Count(GetPartTypes), 0);
    EXPECT_EQ(record_.data.partTypes, (Ids{7, 62}));

    host_.On(ReadPartTypes, [](std::uint64_t tree, std::int64_t lParam) -> std::int64_t {
        EXPECT_TRUE(IsWindow(reinterpret_cast<HWND>(tree)));
        reinterpret_cast<Data*>(lParam)->partTypes = {1000};
        return 1;
    });
    host_.Answers(FillPartTypes, 0);
    for (int id = 100; id < 10'100; ++id)
        host_.partTypes.push_back(0, id, Lng::Hpv, -1, ustr(L"More"));
    Step([this] {
        EXPECT_EQ(TreeTexts(Tree(PartTypes)).front(), L"Ducts");
        SendMessageW(dlg_, WM_COMMAND, 401, 0);
        host_.On(FillPartTypes, [](std::uint64_t tree, std::int64_t) -> std::int64_t {
            TREE_INSERTLIST rows;
            rows.push_back(0, 61, Lng::Hpv, -1, ustr(L"Valve"));
            FillTree(reinterpret_cast<HWND>(tree), rows);
            return 1;
        });
        SendMessageW(dlg_, WM_COMMAND, 401, 0);
    });
    Turn(L"Valve");
    ExpectItems(PartTypes, {L"Valve"});  // and none of those that were still to come
    RunToOk();
    EXPECT_EQ(record_.data.partTypes, Ids{1000});
}

TEST_F(ObjectSelectionCtrlTest, SchematicsKeepPartTypesByName) {
    setup_.app = Lng::Schematics;
    record_.data.usePartTypes = true;
    record_.data.partTypes = {51};
    record_.data.partTypesAlt = {"Bend", "Gone \xC3\xA4"};
    ExpectChecked(PartTypes, {L"Bend", L"Gone ä"});
    Turn(L"Round duct");
    Turn(L"Bend");
    RunToOk();
    EXPECT_EQ(record_.data.partTypesAlt, (std::vector<astr>{"Gone \xC3\xA4", "Round duct"}));
    EXPECT_EQ(record_.data.partTypes, Ids{51}) << "are another application's";
}

TEST_F(ObjectSelectionCtrlTest, DrawingsAreShownByFolderForAllSelections) {
    AddDrawing({3, L"c:/project/floor2.dwg"}, L"");
    host_.drawings.back().layouts = {L"A1"};
    AddDrawing({4, L"C:\\Project\\Cellar\\floor2.dwg"}, L"");
    record_.data = SelectedDrawings();
    record_.data.modelDrawings[0] = {0, L"C:\\PROJECT\\CELLAR\\cellar.dwg"};
    const Data before = record_.data;
    // The same names are told apart.
    ExpectItems(0, {L"First floor", L"Cellar", L"floor2.dwg (c:/project)", L"floor2.dwg (C:\\Project\\Cellar)"});
    ExpectChecked(0, {L"Cellar"});  // by path, in any case
    Command(401);
    ExpectItems(0, {L"Project", L"First floor", L"floor2.dwg", L"Cellar", L"Cellar", L"floor2.dwg"});
    Turn(L"First floor");
    Command(400);
    ExpectItems(0, {L"Project", L"First floor", L"floor2.dwg"});
    Turn(L"First floor");
    Pick(L"Layouts");
    ExpectItems(Layouts, {L"Project", L"First floor", L"A1", L"A3", L"floor2.dwg", L"A1"});
    RunToOk();
    EXPECT_EQ(record_.data, before) << "what is not shown stays";

    Step([this] { EXPECT_EQ(TreeTexts(Tree(0)).front(), L"Project") << "the next selection shows them so too"; });
    Command(400);
    Command(401);
    Step([this] { EXPECT_EQ(TreeTexts(Tree(0)).size(), 4u); });
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, ManagingDrawingsTakesTheLockAndShowsWhatIsNew) {
    const Messages kManaging = {LockProject, UnlockProject, ManageDrawings, GetLabels, GetDrawings};
    const auto labels = [this] { return Shown(dlg_, IDC_SELECTION_LABELS); };
    setup_.flagMask = kLockForDrawings;
    record_.data = SelectedDrawings();
    host_.On(GetLabels, [](std::uint64_t wParam, std::int64_t) -> std::int64_t {
        *reinterpret_cast<LabelManager::Labels*>(wParam) = LabelManager::Labels(L"North,South");
        return 0;
    });
    host_.On(ManageDrawings, [this](std::uint64_t wParam, std::int64_t) -> std::int64_t {
        EXPECT_EQ(reinterpret_cast<HWND>(wParam), dlg_);
        AddDrawing({5, L"C:\\Project\\New.dwg"}, L"New");
        return 0;
    });
    Step([=, this] {
        EXPECT_EQ(labels(), L"North, South");
        EXPECT_TRUE(GetWindowLongW(uidriver::Control(dlg_, IDC_SELECTION_LABELS), GWL_STYLE) & ES_READONLY);
        host_.asked.clear();
        host_.Answers(LockProject, 1);
    });
    Command(402);
    Step([=, this] {
        EXPECT_EQ(host_.Order(kManaging), Messages{LockProject});
        EXPECT_EQ(reinterpret_cast<HWND>(host_.asked.back().wParam), dlg_);
        host_.answers.pop_back();
        host_.asked.clear();
    });
    Command(402);
    Step([=, this] {
        EXPECT_EQ(host_.Order(kManaging),
                  (Messages{LockProject, ManageDrawings, GetLabels, UnlockProject, GetDrawings}));
        EXPECT_EQ(CheckedTexts(Tree(0)), Texts{L"First floor"});
        EXPECT_NE(uidriver::FindTreeItem(Tree(0), L"New"), nullptr);
    });
    RunToOk();

    setup_ = {};
    setup_.app = Lng::Common;
    host_.asked.clear();
    Command(402);
    RunToOk();
    EXPECT_EQ(host_.Count(ManageDrawings), 0) << "offered by two applications only";
}

TEST_F(ObjectSelectionCtrlTest, MenusOfferTheCommandsWhereverTheMouseOrTheKeyboardAsks) {
    const Texts kItems = {L"Show drawings from current folder only",
                          L"Show as folder tree",
                          L"-",
                          L"Add/remove model drawings...",
                          L"-",
                          L"Select all",
                          L"Select none",
                          L"Invert"};
    record_.data = SelectedDrawings();
    InMenu([this] { return Tree(0); }, kItems);
    InMenu([this] { return Categories(); }, kItems);
    Pick(L"Data filter", true);
    InMenu([this] { return uidriver::Control(dlg_, IDC_SELECTION_FILTER); },
           {L"# Edit...", L"-", L"Add...", L"-", L"# Delete"});
    RunToOk();
}

TEST_F(ObjectSelectionCtrlTest, ASearchNarrowsATreeAndAllMeansWhatItShows) {
    record_.data.useSystems = true;
    Step([this] { uidriver::SetText(dlg_, GetDlgCtrlID(SearchField()), L"02"); });
    ExpectItems(Systems, {L"Supply air", L"TK02"});
    Turn(L"Supply air");
    ExpectChecked(Systems, {L"TK02"});
    Turn(L"Supply air");
    ExpectChecked(Systems, {});
    Step([this] { SetFocus(SearchField()); });
    Key(VK_RETURN);
    ExpectChecked(Systems, {L"TK02"});  // and the dialog is not confirmed
    Command(411);
    ExpectChecked(Systems, {});
    Command(410);
    Pick(L"Part types");
    Step([this] {
        EXPECT_EQ(uidriver::Text(SearchField()), L"") << "each tree has its own";
        EXPECT_FALSE(IsWindowEnabled(SearchField()));
    });
    Pick(L"Systems");
    Step([this] {
        EXPECT_EQ(uidriver::Text(SearchField()), L"02");
        uidriver::SetText(dlg_, GetDlgCtrlID(SearchField()), L"");
    });
    ExpectChecked(Systems, {L"TK02"});
    Command(412);
    ExpectChecked(Systems, {L"TK01"});
    RunToOk();
    EXPECT_EQ(record_.data.systems, Ids{31});
    Command(411);
    RunToOk();
    EXPECT_EQ(record_.data.systems, Ids());
    EXPECT_TRUE(record_.data.useSystems);
}

TEST_F(ObjectSelectionCtrlTest, AHostThatThrowsOrTalksNonsenseDoesNoHarm) {
    setup_.mode = Ctrl::Configurations;
    record_.data = FullData();
    const RecordData before = record_;
    for (int message = LoadConfiguration; message <= ChooseValue; ++message) {
        // What was filled before does not count.
        host_.On(static_cast<CbMsgId>(message), [=](std::uint64_t, std::int64_t lParam) -> std::int64_t {
            if (message == GetRooms) *reinterpret_cast<TREE_INSERTLIST*>(lParam) = SelectionHost().rooms;
            throw std::runtime_error("host");
        });
    }
    for (const wchar_t* const node : {L"Rooms", L"Systems", L"Part types", L"Layouts"})
        Pick(node);
    Command(402);
    Press(IDC_SELECTION_SAVE_AS);
    AnswerText(L"", L"New");
    RunToOk();
    EXPECT_EQ(record_, before);

    host_ = {};
    host_.On(GetRooms, [](std::uint64_t, std::int64_t lParam) -> std::int64_t {
        auto& rows = *reinterpret_cast<TREE_INSERTLIST*>(lParam);
        for (const std::int64_t value : {11LL, 11LL, 0LL, -3LL, 5'000'000'000LL, 12LL})
            rows.push_back(value == 12 ? -5 : 9, value, Lng::Hpv, -1, ustr(L"Row"));
        return -1;
    });
    for (const CbMsgId message : {HasRooms, HasSelectionAreas, ReadPartTypes, ManageDrawings})
        host_.Answers(message, -7);
    host_.drawings.push_back(host_.drawings[0]);
    host_.drawings.emplace_back();
    for (const wchar_t* const node : {L"Layouts", L"Rooms"})
        Pick(node);
    Command(411);
    RunToOk();
    EXPECT_EQ(record_.data.rooms, Ids());
    EXPECT_EQ(record_.data.layouts, before.data.layouts);
}

TEST_F(ObjectSelectionCtrlTest, ManyRoomsAreFilledSearchedCheckedAndRead) {
    const auto fill = [this](int count) {
        host_.rooms.clear();
        host_.rooms.push_back(0, 0, Lng::Hpv, -1, ustr(L"Floor"));
        for (int id = 1; id <= count; ++id)
            host_.rooms.push_back(1, id, Lng::Hpv, -1, ustr(std::to_wstring(id).c_str()));
        record_.data = CurrentDrawing();
        record_.data.useRooms = true;
    };
    fill(100'000);
    Step([this] { uidriver::SetText(dlg_, GetDlgCtrlID(SearchField()), L"99999"); });
    Turn(L"99999");
    RunToOk();
    EXPECT_EQ(record_.data.rooms, Ids{99'999});

    fill(20'000);
    record_.data.rooms.assign(10'000, 0);
    std::iota(record_.data.rooms.begin(), record_.data.rooms.end(), 15'000);
    Turn(L"Floor");
    RunToOk();
    EXPECT_EQ(record_.data.rooms.size(), 24'999u) << "with those that the host does not list";
    EXPECT_EQ(record_.data.rooms.front(), 15'000) << "those it had come first";
}

TEST_F(ObjectSelectionCtrlTest, FollowsTheDialogByItsAnchors) {
    using Edges = std::array<long, 4>;
    const auto edgesOf = [](HWND window) -> Edges {
        RECT rect{};
        GetWindowRect(window, &rect);
        return {rect.left, rect.top, rect.right, rect.bottom};
    };
    const auto expectMoved = [=, this](const std::map<int, Edges>& expected) {
        Step([=](HWND dlg) {
            std::map<int, Edges> moved;
            for (const auto& control : expected)
                moved[control.first] = edgesOf(uidriver::Control(dlg, control.first));
            const Edges window = edgesOf(dlg);
            SetWindowPos(dlg, nullptr, 0, 0, window[2] - window[0] + 100, window[3] - window[1] + 60,
                         SWP_NOMOVE | SWP_NOZORDER);
            for (auto& [ctrlId, edges] : moved) {
                const Edges now = edgesOf(uidriver::Control(dlg, ctrlId));
                std::transform(now.begin(), now.end(), edges.begin(), edges.begin(), std::minus());
            }
            EXPECT_EQ(moved, expected);
        });
        RunToOk();
    };
    setup_.anchor = [](Ctrl& ctrl) { ctrl.SetAnchoring(true, true, true, true); };
    expectMoved({
        {IDC_SELECTION_GROUP,         {0, 0, 100, 60} },
        {IDC_SELECTION_SELECTED,      {0, 0, 0, 0}    },
        {IDC_SELECTION_CATEGORIES,    {0, 0, 0, 60}   },
        {IDC_SELECTION_ITEMS,         {0, 0, 100, 60} },
        {kLargestId + HostAreas,      {0, 0, 100, 60} },
        {kLargestId + 14,             {0, 0, 100, 0}  },
        {IDC_SELECTION_FILTER,        {0, 0, 100, 60} },
        {IDC_SELECTION_NO_DATA,       {0, 0, 100, 60} },
        {IDC_SELECTION_CONFIGURATION, {0, 0, 100, 0}  },
        {IDC_SELECTION_SAVE,          {100, 0, 100, 0}},
        {IDC_SELECTION_RENAME,        {100, 0, 100, 0}},
        {IDC_SELECTION_NAME,          {0, 0, 0, 0}    }
    });
    setup_.anchor = [](Ctrl& ctrl) { ctrl.SetAnchoring(0.25, 0.5, 0.75, 1.0); };
    expectMoved({
        {IDC_SELECTION_GROUP,      {25, 30, 75, 60}},
        {IDC_SELECTION_MANUAL,     {25, 30, 25, 30}},
        {IDC_SELECTION_CATEGORIES, {25, 30, 25, 60}},
        {kLargestId + Rooms,       {25, 30, 75, 60}},
        {IDC_SELECTION_DELETE,     {75, 30, 75, 30}}
    });
    setup_.anchor = [](Ctrl& ctrl) { ctrl.SetAnchoring(false, false, false, false); };
    expectMoved({
        {IDC_SELECTION_GROUP, {100, 60, 0, 0}},
        {IDC_SELECTION_SAVE,  {0, 60, 0, 60} }
    });
}

TEST_F(ObjectSelectionCtrlTest, TheDialogCanBeRunAgain) {
    SelectionDlg dialog(parent_, setup_, host_.Callback());
    dialog.ctrl.SetData(CurrentDrawing(), nullptr);
    for (const wchar_t* const item : {L"TK01", L"TK02"}) {
        Pick(L"Systems", item == std::wstring(L"TK01"));
        Pick(L"Systems");
        Turn(item);
        Press(IDOK);
        EXPECT_EQ(RunSteps([&] { return dialog.Run(); }), IDOK);
    }
    Data data;
    dialog.ctrl.GetData(data);
    EXPECT_EQ(data.systems, (Ids{31, 32}));
    EXPECT_EQ(host_.Count(GetSystems), 2) << "once for each time";
}

TEST_F(ObjectSelectionCtrlTest, CopiesTakeTheStateOverAndShareNothing) {
    SelectionDlg dialog(parent_, setup_, host_.Callback());
    dialog.ctrl.SetData("key", L"name", nullptr);
    Ctrl copy;
    copy = dialog.ctrl;
    const Data data = CurrentDrawing();
    copy.SetData(data, nullptr);
    RecordData record;
    copy.GetData(record);
    EXPECT_TRUE(record.key.empty());
    EXPECT_EQ(record.name, L"name");
    EXPECT_EQ(record.data, data);
    EXPECT_EQ(copy.GetFlagMask(), dialog.ctrl.GetFlagMask());
    dialog.ctrl.SetData(nullptr, nullptr, nullptr);
    dialog.ctrl.GetData(record);
    EXPECT_EQ(record.key, "key");
    EXPECT_EQ(record.data, Data());
    EXPECT_FALSE(copy.Data2Ctrls()) << "there is no window yet";
}

}  // namespace
