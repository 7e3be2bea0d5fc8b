#include <gtest/gtest.h>
#include <occommonui/ReportTemplate.h>
#include <orvatool/Gw.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "host/driver/UiDriver.h"
#include "report_ids.h"
#include "support/DialogTest.h"

namespace {

using Ids = std::vector<int>;

constexpr int kSize = static_cast<int>(sizeof(ReportDefinitionType));

TREE_INSERTLIST Objects() {
    constexpr std::tuple<int, int, const wchar_t*> kRows[] = {
        {0, 0,  L"Ventilation"     },
        {1, 10, L"Ducts"           },
        {2, 11, L"Round duct"      },
        {2, 12, L"Rectangular duct"},
        {1, 20, L"Bends"           },
        {2, 21, L"Bend 90°"       },
        {2, 22, L"Bend 45°"       },
        {0, 30, L"Pipes"           },
        {1, 31, L"Steel pipe"      },
        {1, 32, L"Copper pipe"     },
        {0, 0,  L"Favourites"      },
        {1, 11, L"My duct"         },
        {1, 40, L"My damper"       },
    };
    TREE_INSERTLIST list;
    for (const auto& [level, id, text] : kRows)
        list.push_back(level, id, Lng::Hpv, -1, ustr(text));
    return list;
}

ValueList Properties() {
    return {
        {L"Length",       1     },
        {L"Height",       2     },
        {L"Débit d'air", 3     },
        {L"Symbol",       7001  },
        {L"Placed by",    8002  },
        {L"My own",       -105  },
        {L"Not reported", -50   },
        {L"No property",  0     },
        {L"Too large",    40'000},
    };
}

oce_columntype Column(int propId, float width, const wchar_t* header) {
    oce_columntype column;
    column.propId = static_cast<std::int16_t>(propId);
    column.len = width;
    SetFixedText<&oce_columntype::hdr1>(column, header);
    return column;
}

ReportDefinitionType Template() {
    ReportDefinitionType definition;
    definition.id = 77;
    definition.wcSeparator = L';';
    SetFixedText<&ReportDefinitionType::name>(definition, L"Ducts and pipes");
    SetFixedText<&ReportDefinitionType::description>(definition, L"For the contractor");
    for (const int id : {20, 11, 999})
        definition.groups[definition.groupCount++] = id;
    definition.columns[0] = Column(1, 25.4F, L"L");
    definition.columns[1] = Column(2, 30, L"H");
    definition.columns[2] = Column(555, 12.6F, L"X");
    definition.columnCount = 3;
    return definition;
}

template <class Record>
bool Same(const Record& a, const Record& b) {
    using Bytes = std::array<std::byte, sizeof(Record)>;
    return std::bit_cast<Bytes>(a) == std::bit_cast<Bytes>(b);
}

Ids Groups(const ReportDefinitionType& definition) {
    Ids ids;
    for (int i = 0; i < definition.groupCount; ++i)
        ids.push_back(definition.groups[i]);
    return ids;
}

Ids Columns(const ReportDefinitionType& definition) {
    Ids ids;
    for (int i = 0; i < definition.columnCount; ++i)
        ids.push_back(definition.columns[i].propId);
    return ids;
}

HWND Tree(HWND dlg) {
    return uidriver::Control(dlg, IDC_REPORTTEMPLATE_OBJECTS);
}
HWND Attributes(HWND dlg) {
    return uidriver::Control(dlg, IDC_REPORTTEMPLATE_ATTRIBUTES);
}
HWND List(HWND dlg) {
    return uidriver::Control(dlg, IDC_REPORTTEMPLATE_COLUMNS);
}
Texts Rows(HWND dlg) {
    return uidriver::ListColumn(List(dlg), 0);
}

int CheckOf(HWND dlg, const wchar_t* text) {
    return gwTVgetCheck(Tree(dlg), uidriver::FindTreeItem(Tree(dlg), text));
}
void ClickCheck(HWND dlg, const wchar_t* text) {
    ClickInTree(Tree(dlg), text, true);
}

int RowOf(HWND list, const wchar_t* text) {
    const Texts rows = uidriver::ListColumn(list, 0);
    return static_cast<int>(std::find(rows.begin(), rows.end(), text) - rows.begin());
}
void ClickAttribute(HWND dlg, const wchar_t* text, bool twice = false) {
    uidriver::ClickListRow(Attributes(dlg), RowOf(Attributes(dlg), text), false, twice);
}
void SelectRows(HWND list, const Ids& rows) {
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    for (const int row : rows)
        ListView_SetItemState(list, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    SetFocus(list);
}

/// The upper edge of a row, where what is dropped goes before it.
POINT EdgeOf(HWND list, int row) {
    RECT rect{};
    ListView_GetItemRect(list, std::min(row, ListView_GetItemCount(list) - 1), &rect, LVIR_BOUNDS);
    return {rect.left + 40, row < ListView_GetItemCount(list) ? rect.top : rect.bottom};
}

/// Moves the mouse with the button down from a row of `from` to a place in `to`.
void Drag(HWND from, int row, HWND to, POINT place) {
    RECT rect{};
    ListView_GetItemRect(from, row, &rect, LVIR_BOUNDS);
    MapWindowPoints(to, from, &place, 1);
    PostMessageW(from, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(rect.left + 20, rect.top + 5));
    PostMessageW(from, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(rect.left + 40, rect.top + 25));
    PostMessageW(from, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(place.x, place.y));
}
void Drop(HWND from, HWND to, POINT place) {
    MapWindowPoints(to, from, &place, 1);
    PostMessageW(from, WM_LBUTTONUP, 0, MAKELPARAM(place.x, place.y));
}

using Edges = std::array<LONG, 4>;  // left, top, right, bottom

Edges EdgesOf(HWND dlg, int ctrlId) {
    RECT rect{};
    GetWindowRect(uidriver::Control(dlg, ctrlId), &rect);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&rect), 2);
    return {rect.left, rect.top, rect.right, rect.bottom};
}

class ReportTemplateDlgTest : public DialogTest {
protected:
    ReportTemplateDlgTest() {
        context_.objects = Objects();
        context_.properties = Properties();
    }

    bool Run(ReportType type, void* record) {
        return RunSteps(
            [&] { return ReportTemplate::Edit(parent_, Lng::Hpv, type, record, kSize, &context_, &names_); });
    }
    void Confirm(ReportType type = BillOfMaterials) {
        Press(IDOK);
        EXPECT_TRUE(Run(type, &definition_));
    }
    void Cancel(ReportType type = BillOfMaterials) {
        Press(IDCANCEL);
        EXPECT_FALSE(Run(type, &definition_));
    }
    /// Drags a row of a list to a place in the list of columns.
    void DragTo(HWND (*from)(HWND), int row, const std::function<POINT(HWND)>& place) {
        Step([=](HWND dlg) { Drag(from(dlg), row, List(dlg), place(List(dlg))); });
        Step([=](HWND dlg) { Drop(from(dlg), List(dlg), place(List(dlg))); });
    }
    static std::function<POINT(HWND)> Before(int row) {
        return [row](HWND list) { return EdgeOf(list, row); };
    }
    void Select(const Ids& rows) {
        Step([=](HWND dlg) { SelectRows(List(dlg), rows); });
    }
    void ExpectRows(const Texts& rows) {
        Step([=](HWND dlg) { EXPECT_EQ(Rows(dlg), rows); });
    }

    ReportTemplate::Context context_;
    ReportDefinitionType definition_ = Template();
    std::map<int, ustr_pre<32>> names_;
};

TEST_F(ReportTemplateDlgTest, ShowsTheTemplateAndOffersOkOnlyAfterAChange) {
    names_[1] = L"Cut length";
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Report Template Edit - OrvaCAD HPV");
        EXPECT_EQ(Shown(dlg, IDC_REPORTTEMPLATE_NAME), L"Ducts and pipes");
        EXPECT_EQ(Shown(dlg, IDC_REPORTTEMPLATE_DESCRIPTION), L"For the contractor");
        EXPECT_EQ(Rows(dlg), (Texts{L"Cut length", L"Height", L"Unknown property 555"}));
        EXPECT_EQ(uidriver::ListColumn(List(dlg), 1), (Texts{L"25", L"30", L"13"}));
        EXPECT_EQ(uidriver::ListColumn(List(dlg), 2), (Texts{L"L", L"H", L"X"}));
        EXPECT_EQ(Shown(dlg, IDC_REPORTTEMPLATE_TOTAL), L"68");
        EXPECT_TRUE(HasFocus(dlg, IDC_REPORTTEMPLATE_NAME));
        EXPECT_FALSE(Enabled(dlg, IDOK));
    });
    Key(VK_RETURN);  // OK is the default button, but there is nothing to confirm
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg);
        SendMessageW(dlg, WM_COMMAND, IDOK, 0);
        EXPECT_TRUE(IsWindowVisible(dlg));
    });
    Cancel();
    EXPECT_TRUE(Same(definition_, Template()));
}

TEST_F(ReportTemplateDlgTest, HasTheLabelsOfItsKindOfReport) {
    for (const ReportType type : {Legend, TextBlock}) {
        Step([type](HWND dlg) {
            const std::pair<int, const wchar_t*> texts[] = {
                {104, L"Template name"              },
                {105, L"Description"                },
                {610, L"Include these parts/objects"},
                {611, L"Include these attributes"   },
                {612, L"Selected attributes/columns"},
                {121, L"Template total width"       },
                {124, L"Sum of the column widths"   },
                {150, L"mm"                         },
                {222, L"mm"                         },
                {151, L"char"                       },
                {225, L"char"                       },
            };
            for (const auto& [id, text] : texts)
                EXPECT_EQ(Shown(dlg, id), text);
            EXPECT_EQ(uidriver::Text(dlg),
                      type == Legend ? L"Legend Template Edit - OrvaCAD HPV" : L"Report Template Edit - OrvaCAD HPV");
            for (const int id : {150, 222})
                EXPECT_EQ(Visible(dlg, id), type == Legend) << id;
            for (const int id : {151, 225})
                EXPECT_EQ(Visible(dlg, id), type == TextBlock) << id;
        });
        Cancel(type);
    }
}

TEST_F(ReportTemplateDlgTest, RefusesOtherSizesAndNoRecordWithoutAWindow) {
    const uidriver::Handles before = uidriver::CountHandles();
    for (const int size : {0, -1, kSize - 1, kSize + 1})
        EXPECT_FALSE(ReportTemplate::Edit(parent_, Lng::Hpv, Legend, &definition_, size, &context_, nullptr));
    EXPECT_FALSE(ReportTemplate::Edit(parent_, Lng::Hpv, Legend, nullptr, kSize, &context_, nullptr));
    EXPECT_EQ(uidriver::CountHandles().windows, before.windows);
    EXPECT_TRUE(Same(definition_, Template()));
}

TEST_F(ReportTemplateDlgTest, CancelLeavesEveryByteWhateverWasChanged) {
    Enter(IDC_REPORTTEMPLATE_NAME, L"Other");
    Enter(IDC_REPORTTEMPLATE_DESCRIPTION, L"Other");
    Step([](HWND dlg) { ClickCheck(dlg, L"Pipes"); });
    Step([](HWND dlg) { ClickAttribute(dlg, L"Symbol", true); });
    Step([](HWND dlg) { EXPECT_TRUE(Enabled(dlg, IDOK)); });
    Key(VK_ESCAPE);
    EXPECT_FALSE(Run(Legend, &definition_));
    EXPECT_TRUE(Same(definition_, Template()));
}

// Callers keep records as bytes: at any address, with anything in the parts that are not in use.
TEST_F(ReportTemplateDlgTest, ANewNameLeavesEveryOtherByte) {
    std::vector<unsigned char> bytes(kSize + 1, 0xA5);
    unsigned char* const record = bytes.data() + 1;
    definition_.groupCount = 0;
    definition_.columnCount = 1;
    std::memcpy(record + 806, &definition_.name, sizeof definition_.name);
    std::memcpy(record + 888, L"Short", 12);  // with garbage behind its NUL
    for (const int offset : {804, 805, 1402, 1403})
        record[offset] = 0;
    record[1402] = 1;
    const std::vector<unsigned char> before = bytes;
    Enter(IDC_REPORTTEMPLATE_NAME, L"New name");
    Press(IDOK);
    EXPECT_TRUE(Run(Legend, record));

    ReportDefinitionType after;
    std::memcpy(&after, record, sizeof after);
    EXPECT_EQ(FixedText<&ReportDefinitionType::name>(after), L"New name");
    std::memcpy(record + 806, before.data() + 1 + 806, sizeof after.name);
    EXPECT_TRUE(bytes == before);
}

TEST_F(ReportTemplateDlgTest, NeedsANameAndAColumnAndHoldsTextsToTheirLengths) {
    Enter(IDC_REPORTTEMPLATE_NAME, L"  ");
    Enter(IDC_REPORTTEMPLATE_DESCRIPTION, std::wstring(300, L'd'));
    Select({0, 1, 2});
    Key(VK_DELETE);
    ExpectRows({});
    ExpectRefused(IDC_REPORTTEMPLATE_NAME);
    Enter(IDC_REPORTTEMPLATE_NAME, std::wstring(50, L'n'));
    ExpectRefused(IDC_REPORTTEMPLATE_COLUMNS);
    Step([](HWND dlg) { ClickAttribute(dlg, L"Height", true); });
    Confirm();
    EXPECT_EQ(FixedText<&ReportDefinitionType::name>(definition_), std::wstring(40, L'n'));
    EXPECT_EQ(FixedText<&ReportDefinitionType::description>(definition_), std::wstring(256, L'd'));
    EXPECT_EQ(Columns(definition_), (Ids{2}));
    for (int i = 1; i < 3; ++i)
        EXPECT_TRUE(Same(definition_.columns[i], oce_columntype())) << "what became free is zero";
}

TEST_F(ReportTemplateDlgTest, ChecksAGroupWithAllBelowItAndStoresTheTopmost) {
    Step([](HWND dlg) {
        for (const wchar_t* text : {L"Bends", L"Bend 90°", L"Bend 45°", L"Round duct", L"My duct"})
            EXPECT_EQ(CheckOf(dlg, text), kTreeChecked);
        for (const wchar_t* text : {L"Ventilation", L"Ducts", L"Favourites"})
            EXPECT_EQ(CheckOf(dlg, text), kTreePartial);
        for (const wchar_t* text : {L"Pipes", L"Copper pipe", L"Rectangular duct", L"My damper"})
            EXPECT_EQ(CheckOf(dlg, text), kTreeUnchecked);
        ClickCheck(dlg, L"Pipes");
    });
    Step([](HWND dlg) {
        EXPECT_EQ(CheckOf(dlg, L"Copper pipe"), kTreeChecked);
        EXPECT_TRUE(Enabled(dlg, IDOK));
        ClickCheck(dlg, L"Bend 45°");
    });
    Step([](HWND dlg) { EXPECT_EQ(CheckOf(dlg, L"Bends"), kTreePartial); });
    Confirm();
    EXPECT_EQ(Groups(definition_), (Ids{11, 21, 30, 999})) << "in tree order, and behind them the unknown one";
    EXPECT_EQ(Columns(definition_), Columns(Template()));

    definition_ = Template();
    Step([](HWND dlg) { ClickCheck(dlg, L"Bends"); });
    Confirm();
    EXPECT_EQ(Groups(definition_), (Ids{11, 999}));
    EXPECT_EQ(definition_.groups[2], 0) << "what became free is zero";
}

TEST_F(ReportTemplateDlgTest, SearchingTheTreeKeepsTheChecksOfWhatItHides) {
    Enter(IDC_REPORTTEMPLATE_OBJECT_SEARCH, L"copper");
    Step([](HWND dlg) { EXPECT_EQ(uidriver::FindTreeItem(Tree(dlg), L"Ducts"), nullptr); });
    Key(VK_DOWN);
    Key(VK_RETURN);  // checks what was found
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg);
        EXPECT_EQ(CheckOf(dlg, L"Copper pipe"), kTreeChecked);
        EXPECT_EQ(CheckOf(dlg, L"Pipes"), kTreePartial) << "for the pipe that is hidden";
    });
    Key(VK_ESCAPE);  // the search, not the dialog
    Step([](HWND dlg) {
        EXPECT_EQ(CheckOf(dlg, L"Pipes"), kTreePartial);
        EXPECT_EQ(CheckOf(dlg, L"Bends"), kTreeChecked);
        TreeView_SelectItem(Tree(dlg), uidriver::FindTreeItem(Tree(dlg), L"Favourites"));
        SetFocus(Tree(dlg));
    });
    Key(VK_SPACE);
    Confirm();
    EXPECT_EQ(Groups(definition_), (Ids{11, 20, 32, 40, 999})) << "a heading stands for the groups below it";
}

TEST_F(ReportTemplateDlgTest, RefusesMoreThan200Groups) {
    context_.objects.clear();
    context_.objects.push_back(0, 5000, Lng::Hpv, -1, ustr(L"Everything"));
    context_.objects.push_back(1, 0, Lng::Hpv, -1, ustr(L"Heading"));
    for (int i = 1; i <= 200; ++i)
        context_.objects.push_back(2, i, Lng::Hpv, -1, ustr(L"Part"));
    context_.objects.push_back(1, 201, Lng::Hpv, -1, ustr(L"Last part"));
    Step([](HWND dlg) { ClickCheck(dlg, L"Heading"); });
    Press(IDOK);  // 200, and 3 that the tree does not have
    ExpectMessage(L"A template can include at most 200 parts or groups.\nCheck whole groups, or fewer parts.");
    Step([](HWND dlg) { EXPECT_TRUE(HasFocus(dlg, IDC_REPORTTEMPLATE_OBJECTS)); });
    Step([](HWND dlg) { ClickCheck(dlg, L"Everything"); });
    Confirm();
    EXPECT_EQ(Groups(definition_), (Ids{5000, 999}));
}

TEST_F(ReportTemplateDlgTest, AddsByButtonDoubleClickAndEnterBehindTheSelectedRows) {
    names_[1] = L"Länge";
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::ListColumn(Attributes(dlg), 0),
                  (Texts{L"Länge", L"Height", L"Débit d'air", L"Symbol", L"Placed by", L"My own"}));
        EXPECT_FALSE(Enabled(dlg, IDC_REPORTTEMPLATE_ADD)) << "nothing is selected";
        ClickAttribute(dlg, L"Symbol", true);
    });
    ExpectRows({L"Länge", L"Height", L"Unknown property 555", L"Symbol"});
    Select({0});
    Step([](HWND dlg) { SelectRows(Attributes(dlg), {2, 4}); });
    Press(IDC_REPORTTEMPLATE_ADD);
    ExpectRows({L"Länge", L"Débit d'air", L"Placed by", L"Height", L"Unknown property 555", L"Symbol"});
    Step([](HWND dlg) { ClickAttribute(dlg, L"My own"); });
    Key(VK_RETURN);
    Enter(IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH, L"lang");
    Key(VK_RETURN);
    Enter(IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH, L"no such");
    Key(VK_RETURN);  // finds nothing, and is no OK
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg).size(), 8u); });
    Confirm();
    EXPECT_EQ(Columns(definition_), (Ids{1, 3, 8002, -105, 1, 2, 555, 7001}));
}

TEST_F(ReportTemplateDlgTest, ANewColumnHasItsPropertysNameAndAUsableWidth) {
    names_[7001] = L"A name that is longer than a header";
    for (const auto& [type, width] : {std::pair(Legend, 30.0F), std::pair(TextBlock, 10.0F)}) {
        definition_ = Template();
        Step([](HWND dlg) { ClickAttribute(dlg, L"A name that is longer than a header", true); });
        Confirm(type);
        const oce_columntype expected = Column(7001, width, L"A name that is longer than a");
        EXPECT_TRUE(Same(definition_.columns[3], expected));
    }
}

TEST_F(ReportTemplateDlgTest, Holds200ColumnsAndNoMore) {
    for (int i = 0; i < 198; ++i)
        definition_.columns[i] = Column(1, 1, L"");
    definition_.columnCount = 198;
    Step([](HWND dlg) { SelectRows(Attributes(dlg), {1, 2, 3}); });
    Press(IDC_REPORTTEMPLATE_ADD);
    Step([](HWND dlg) { ClickAttribute(dlg, L"Symbol", true); });
    Step([](HWND dlg) {
        EXPECT_EQ(Rows(dlg).size(), 200u);
        EXPECT_FALSE(Enabled(dlg, IDC_REPORTTEMPLATE_ADD));
    });
    Select({0});
    Press(IDC_REPORTTEMPLATE_REMOVE);
    Step([](HWND dlg) { EXPECT_TRUE(Enabled(dlg, IDC_REPORTTEMPLATE_ADD)); });
    Confirm();
    EXPECT_EQ(int{definition_.columnCount}, 199);
    EXPECT_EQ(int{definition_.columns[198].propId}, 3);
}

TEST_F(ReportTemplateDlgTest, MovesAndRemovesBlocksByButtonsAndKeys) {
    definition_.columns[3] = Column(3, 10, L"");
    definition_.columnCount = 4;
    Step([](HWND dlg) {
        for (const int id :
             {IDC_REPORTTEMPLATE_EDIT, IDC_REPORTTEMPLATE_REMOVE, IDC_REPORTTEMPLATE_UP, IDC_REPORTTEMPLATE_DOWN})
            EXPECT_FALSE(Enabled(dlg, id)) << "nothing is selected";
    });
    Select({2, 3});
    Press(IDC_REPORTTEMPLATE_UP);
    ExpectRows({L"Length", L"Unknown property 555", L"Débit d'air", L"Height"});
    Step([](HWND dlg) { SetFocus(List(dlg)); });
    Key(VK_UP, {VK_MENU});
    ExpectRows({L"Unknown property 555", L"Débit d'air", L"Length", L"Height"});
    Step([](HWND dlg) {
        EXPECT_FALSE(Enabled(dlg, IDC_REPORTTEMPLATE_UP));
        EXPECT_EQ(ListView_GetSelectedCount(List(dlg)), 2u) << "the block stays selected";
    });
    Key(VK_DOWN, {VK_MENU});
    Press(IDC_REPORTTEMPLATE_DOWN);
    ExpectRows({L"Length", L"Height", L"Unknown property 555", L"Débit d'air"});
    Select({0, 3});
    Press(IDC_REPORTTEMPLATE_DOWN);  // brings them together
    ExpectRows({L"Height", L"Unknown property 555", L"Length", L"Débit d'air"});
    Select({1});
    Key(VK_DELETE);
    ExpectRows({L"Height", L"Length", L"Débit d'air"});
    Key('A', {VK_CONTROL});
    Step([](HWND dlg) {
        EXPECT_FALSE(Enabled(dlg, IDC_REPORTTEMPLATE_UP));
        EXPECT_FALSE(Enabled(dlg, IDC_REPORTTEMPLATE_DOWN));
        SetFocus(uidriver::Control(dlg, IDC_REPORTTEMPLATE_NAME));
        SendDlgItemMessageW(dlg, IDC_REPORTTEMPLATE_NAME, EM_SETSEL, 0, 1);
    });
    Key(VK_DELETE);  // a letter
    Confirm();
    EXPECT_EQ(FixedText<&ReportDefinitionType::name>(definition_), L"ucts and pipes");
    EXPECT_EQ(Columns(definition_), (Ids{2, 1, 3}));
}

TEST_F(ReportTemplateDlgTest, DraggingOrdersTheColumnsAndAddsAttributesAtTheirPlace) {
    DragTo(List, 2, Before(0));
    ExpectRows({L"Unknown property 555", L"Length", L"Height"});
    DragTo(List, 0, Before(3));
    ExpectRows({L"Length", L"Height", L"Unknown property 555"});
    Step([](HWND dlg) { Drag(List(dlg), 0, List(dlg), EdgeOf(List(dlg), 2)); });
    Key(VK_ESCAPE);  // breaks the drag off, and nothing else
    Step([](HWND dlg) { Drop(List(dlg), List(dlg), EdgeOf(List(dlg), 2)); });
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg);
        EXPECT_EQ(GetCapture(), nullptr);
    });
    DragTo(List, 0, [](HWND) { return POINT{-200, 50}; });  // beside the list
    DragTo(Attributes, 3, Before(1));
    ExpectRows({L"Length", L"Symbol", L"Height", L"Unknown property 555"});
    Select({0, 1, 2, 3});
    Press(IDC_REPORTTEMPLATE_REMOVE);
    DragTo(Attributes, 2, [](HWND) { return POINT{40, 60}; });  // into the empty list
    Confirm();
    EXPECT_EQ(Columns(definition_), (Ids{3}));
}

TEST_F(ReportTemplateDlgTest, DraggingToAnEdgeScrollsTheList) {
    for (int i = 0; i < 100; ++i)
        definition_.columns[i] = Column(i < 1 ? 7001 : 2, 1, L"");
    definition_.columnCount = 100;
    POINT bottom{};
    Step([&](HWND dlg) {
        RECT client{};
        GetClientRect(List(dlg), &client);
        bottom = {40, client.bottom - 2};
        Drag(List(dlg), 0, List(dlg), bottom);
    });
    script_->WaitFor("the list to scroll", [this] { return ListView_GetTopIndex(List(dlg_)) >= 2; });
    Step([&](HWND dlg) { Drop(List(dlg), List(dlg), bottom); });
    Step([](HWND dlg) {
        const int row = RowOf(List(dlg), L"Symbol");
        EXPECT_NEAR(row, ListView_GetTopIndex(List(dlg)) + ListView_GetCountPerPage(List(dlg)) - 1, 1);
    });
    Cancel();
}

TEST_F(ReportTemplateDlgTest, EditsTheFocusedColumnAndAddsUpAnew) {
    Select({1});
    Press(IDC_REPORTTEMPLATE_EDIT);
    InNewDialog([](HWND column) { uidriver::Click(column, IDOK); });
    Step([](HWND dlg) { EXPECT_FALSE(Enabled(dlg, IDOK)) << "it is still the same"; });
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 1, false, true); });
    InNewDialog([](HWND column) {
        EXPECT_EQ(Shown(column, IDC_REPORTCOLUMN_PROPERTY), L"Height");
        uidriver::SetText(column, IDC_REPORTCOLUMN_WIDTH, L"100");
    });
    Key(VK_RETURN);
    Step([](HWND dlg) { EXPECT_EQ(Shown(dlg, IDC_REPORTTEMPLATE_TOTAL), L"138"); });
    Select({1, 2});  // the focus is on the last
    Key(VK_F2);
    InNewDialog([](HWND column) {
        EXPECT_EQ(Shown(column, IDC_REPORTCOLUMN_PROPERTY), L"Unknown property 555");
        uidriver::SetText(column, IDC_REPORTCOLUMN_HEADER2, L"Y");
    });
    Key(VK_RETURN);
    Step([](HWND dlg) { EXPECT_EQ(uidriver::ListColumn(List(dlg), 2), (Texts{L"L", L"H", L"X Y"})); });
    Key(VK_RETURN);
    InNewDialog([](HWND) { uidriver::Key(VK_ESCAPE); });
    Confirm();
    ReportDefinitionType expected = Template();
    expected.columns[1].len = 100;
    expected.columns[2].len = 13;
    SetFixedText<&oce_columntype::hdr2>(expected.columns[2], L"Y");
    EXPECT_TRUE(Same(definition_, expected));
}

TEST_F(ReportTemplateDlgTest, BearsRecordsThatHoldAnything) {
    definition_.columns[0].len = std::numeric_limits<float>::quiet_NaN();
    definition_.columns[1].len = -0.25F;
    definition_.columns[2].len = std::numeric_limits<float>::infinity();
    definition_.groupCount = -5;
    std::memset(&definition_.columns[0].showUnits, 0x7F, 1);
    const ReportDefinitionType before = definition_;
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::ListColumn(List(dlg), 1), (Texts{L"0", L"0", L"0"}));
        EXPECT_EQ(Shown(dlg, IDC_REPORTTEMPLATE_TOTAL), L"0");
    });
    Select({0});
    Press(IDC_REPORTTEMPLATE_EDIT);
    InNewDialog([](HWND column) {
        EXPECT_EQ(IsDlgButtonChecked(column, IDC_REPORTCOLUMN_UNITS), BST_CHECKED);
        uidriver::Click(column, IDCANCEL);
    });
    Cancel();
    EXPECT_TRUE(Same(definition_, before));

    definition_.columnCount = 32'767;
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg).size(), 200u); });
    Press(IDCANCEL);
    EXPECT_FALSE(RunSteps(
        [&] { return ReportTemplate::Edit(parent_, Lng::Hpv, Legend, &definition_, kSize, nullptr, nullptr); }));
}

TEST_F(ReportTemplateDlgTest, TheListsOfferTheirCommandsAsAMenu) {
    Select({1});
    Step([](HWND dlg) { PostMessageW(List(dlg), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(List(dlg)), -1); });
    script_->WaitFor("the menu", [] { return FindWindowW(L"#32768", nullptr) != nullptr; });
    Step([](HWND dlg) {
        for (int i = 0; i < 2; ++i)  // Remove
            PostMessageW(dlg, WM_KEYDOWN, VK_DOWN, 1);
        PostMessageW(dlg, WM_KEYDOWN, VK_RETURN, 1);
    });
    ExpectRows({L"Length", L"Unknown property 555"});
    Cancel();
}

TEST_F(ReportTemplateDlgTest, GrowsByItsAnchorsAndReopensAsItWasLeft) {
    constexpr double a = 1.0 / 3;
    constexpr double b = 2.0 / 3;
    const std::pair<Ids, std::array<double, 4>> anchors[] = {
        {{107},                     {0, 0, 1, 0}},
        {{610, 110},                {0, 0, a, 1}},
        {{611},                     {a, 0, 1, 1}},
        {{106},                     {a, 0, b, 0}},
        {{111},                     {a, 0, b, 1}},
        {{222, 225, 304, 308, 612}, {b, 0, b, 0}},
        {{114},                     {b, 0, 1, 1}},
        {{150, 151, 121, 122, 124}, {b, 1, b, 1}},
        {{IDOK, IDCANCEL},          {1, 1, 1, 1}},
    };
    constexpr int kGrowth[] = {240, 90, 240, 90};
    std::map<int, Edges> start;
    Step([&](HWND dlg) {
        for (const auto& [ids, edges] : anchors) {
            for (const int id : ids)
                start[id] = EdgesOf(dlg, id);
        }
        RECT rect{};
        GetWindowRect(dlg, &rect);
        SetWindowPos(dlg, nullptr, 0, 0, rect.right - rect.left + kGrowth[0], rect.bottom - rect.top + kGrowth[1],
                     SWP_NOZORDER);
    });
    for (int time = 0; time < 2; ++time) {
        Step([&](HWND dlg) {
            for (const auto& [ids, edges] : anchors) {
                for (const int id : ids) {
                    for (std::size_t i = 0; i < 4; ++i)
                        EXPECT_NEAR(EdgesOf(dlg, id)[i] - start[id][i], edges[i] * kGrowth[i], 0.5) << id;
                }
            }
        });
        Cancel();
    }
}

class ReportColumnDlgTest : public DialogTest {
protected:
    bool Run(ReportType type = BillOfMaterials, const wchar_t* name = L"Symbol") {
        return RunSteps([&] { return ReportTemplate::EditColumn(parent_, &column_, name, type); });
    }

    oce_columntype column_ = Column(7001, 15.4F, L"First");
};

TEST_F(ReportColumnDlgTest, ShowsTheColumnAndStoresWhatWasEntered) {
    column_.align = 2;
    column_.nSubRow = 3;
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Edit attribute - OrvaCAD");
        const std::pair<int, const wchar_t*> texts[] = {
            {101, L"Property"   },
            {102, L"Symbol"     },
            {103, L"15"         },
            {104, L"Length (mm)"},
            {105, L"First"      },
            {106, L"Header 1"   },
            {107, L""           },
            {108, L"Header 2"   },
            {200, L"Show units" },
        };
        for (const auto& [id, text] : texts)
            EXPECT_EQ(Shown(dlg, id), text);
        EXPECT_TRUE(HasFocus(dlg, IDC_REPORTCOLUMN_WIDTH));
    });
    Enter(IDC_REPORTCOLUMN_WIDTH, L" 30000 ");
    Enter(IDC_REPORTCOLUMN_HEADER1, std::wstring(30, L'a'));
    Enter(IDC_REPORTCOLUMN_HEADER2, L"Second");
    Press(IDC_REPORTCOLUMN_UNITS);
    Press(IDOK);
    EXPECT_TRUE(Run());
    oce_columntype expected = Column(7001, 30000, std::wstring(28, L'a').c_str());
    SetFixedText<&oce_columntype::hdr2>(expected, L"Second");
    expected.align = 2;
    expected.nSubRow = 3;
    expected.showUnits = true;
    EXPECT_TRUE(Same(column_, expected));
}

TEST_F(ReportColumnDlgTest, HasALeastWidthByPropertyAndKindOfReport) {
    const std::tuple<ReportType, int, int> cases[] = {
        {Legend,          7001, 15},
        {BillOfMaterials, 8001, 15},
        {Legend,          7002, 20},
        {BillOfMaterials, 7003, 20},
        {ExportReport,    7004, 20},
        {Legend,          8002, 20},
        {BillOfMaterials, 8003, 20},
        {ExportReport,    8004, 20},
        {Legend,          7005, 1 },
        {TextBlock,       7002, 1 },
    };
    for (const auto& [type, propId, least] : cases) {
        SCOPED_TRACE(testing::Message() << propId << " in " << type);
        column_ = Column(propId, 5, L"");
        for (const int refused : {least - 1, 30001}) {
            Enter(IDC_REPORTCOLUMN_WIDTH, std::to_wstring(refused));
            Press(IDOK);
            ExpectMessage(L"Enter a whole number from " + std::to_wstring(least) + L" to 30000.");
            Step([this, before = column_](HWND dlg) {
                EXPECT_TRUE(HasFocus(dlg, IDC_REPORTCOLUMN_WIDTH));
                EXPECT_TRUE(Same(column_, before));
            });
        }
        Enter(IDC_REPORTCOLUMN_WIDTH, std::to_wstring(least));
        Press(IDOK);
        EXPECT_TRUE(Run(type));
        EXPECT_EQ(static_cast<int>(column_.len), least);
    }
}

TEST_F(ReportColumnDlgTest, CancelAndNoColumnChangeNothingAndTheCallerNeedNotNameTheProperty) {
    const oce_columntype before = column_;
    Step([](HWND dlg) {
        EXPECT_EQ(Shown(dlg, IDC_REPORTCOLUMN_PROPERTY), L"Unknown property 7001");
        EXPECT_EQ(Shown(dlg, IDC_REPORTCOLUMN_WIDTH_LBL), L"Length (char)");
    });
    Enter(IDC_REPORTCOLUMN_WIDTH, L"99");
    Enter(IDC_REPORTCOLUMN_HEADER1, L"Other");
    Key(VK_ESCAPE);
    EXPECT_FALSE(Run(TextBlock, nullptr));
    EXPECT_TRUE(Same(column_, before));
    EXPECT_FALSE(ReportTemplate::EditColumn(parent_, nullptr, L"Symbol", Legend));
}

}  // namespace
