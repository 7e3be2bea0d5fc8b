#include <gtest/gtest.h>
#include <occommonui/CustomProperty.h>
#include <windows.h>

#include <string>
#include <vector>

#include "customproperty_ids.h"
#include "support/DialogTest.h"

namespace {

using CustomProperty::Data;

TREE_INSERTLIST Properties() {
    TREE_INSERTLIST list;
    list.push_back(0, 0, Lng::Hpv, -1, ustr(L"Geometry"));
    list.push_back(1, 12, Lng::Hpv, -1, ustr(L"Length"));
    list.push_back(1, 13, Lng::Hpv, -1, ustr(L"Height"));
    list.push_back(0, 0, Lng::Hpv, -1, ustr(L"Flow"));
    list.push_back(1, 20, Lng::Hpv, -1, ustr(L"Débit d'air"));
    list.push_back(1, -105, Lng::Hpv, -1, ustr(L"Another custom property"));
    return list;
}

Data Record() {
    Data data;
    data.id = 5;
    data.name = L"Size";
    data.format = L"L = {12|mm}, {77|x}";
    return data;
}

bool Same(const Data& a, const Data& b) {
    return a.id == b.id && a.name == b.name && a.format == b.format;
}

HWND Tree(HWND dlg) {
    return uidriver::Control(dlg, IDC_CUSTOMPROPERTY_TREE);
}
HWND List(HWND dlg) {
    return uidriver::Control(dlg, IDC_CUSTOMPROPERTY_LIST);
}
Texts Rows(HWND dlg) {
    return uidriver::ListColumn(List(dlg), 0);
}

class CustomPropertyDlgTest : public DialogTest {
protected:
    bool Open(const TREE_INSERTLIST* properties) {
        return CustomProperty::Dlg::Options(parent_, Lng::Hpv, properties, data_);
    }
    bool Run() {
        return RunSteps([this] { return Open(&properties_); });
    }
    /// Presses OK behind the steps.
    void Confirm() {
        Press(IDOK);
        EXPECT_TRUE(Run());
    }

    TREE_INSERTLIST properties_ = Properties();
    Data data_ = Record();
};

TEST_F(CustomPropertyDlgTest, ShowsTheRecordAndGivesItBackUnchangedOnOk) {
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Custom property - OrvaCAD HPV");
        EXPECT_EQ(Shown(dlg, IDC_CUSTOMPROPERTY_NAME), L"Size");
        EXPECT_EQ(Shown(dlg, IDC_CUSTOMPROPERTY_LIST_LBL), L"Selected attributes");
        EXPECT_EQ(Shown(dlg, IDC_CUSTOMPROPERTY_ADD_CONSTANT), L"Add constant...");
        EXPECT_EQ(Rows(dlg), (Texts{L"L = ", L"Length", L", ", L"Unknown property 77"}));
        EXPECT_EQ(uidriver::ListColumn(List(dlg), 1), (Texts{L"", L"mm", L"", L"x"}));
        EXPECT_EQ(Shown(dlg, IDC_CUSTOMPROPERTY_PREVIEW), L"L = Length, Unknown property 77");
        EXPECT_EQ(GetFocus(), uidriver::Control(dlg, IDC_CUSTOMPROPERTY_NAME));
    });
    Confirm();
    EXPECT_TRUE(Same(data_, Record()));
}

TEST_F(CustomPropertyDlgTest, CancelAndCloseLeaveTheRecord) {
    Enter(IDC_CUSTOMPROPERTY_NAME, L"Other");
    Step([](HWND dlg) { ClickInTree(Tree(dlg), L"Height"); });
    Press(IDC_CUSTOMPROPERTY_ADD);
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg).size(), 5u); });
    Key(VK_ESCAPE);
    EXPECT_FALSE(Run());
    EXPECT_TRUE(Same(data_, Record()));
}

TEST_F(CustomPropertyDlgTest, AnEmptyNameKeepsTheDialogOpenWithTheFocusOnTheName) {
    Enter(IDC_CUSTOMPROPERTY_NAME, L"");
    Step([](HWND dlg) { SetFocus(Tree(dlg)); });
    ExpectRefused(IDC_CUSTOMPROPERTY_NAME);
    Enter(IDC_CUSTOMPROPERTY_NAME, L"New name");
    Confirm();
    EXPECT_EQ(data_.name, L"New name");
    EXPECT_EQ(data_.format, Record().format);
}

TEST_F(CustomPropertyDlgTest, AddsPropertiesByButtonDoubleClickAndEnterBehindTheSelectedRow) {
    data_.format = L"";
    Step([](HWND dlg) { ClickInTree(Tree(dlg), L"Height"); });
    Press(IDC_CUSTOMPROPERTY_ADD);
    Step([](HWND dlg) {
        uidriver::ClickTreeItem(Tree(dlg), uidriver::FindTreeItem(Tree(dlg), L"Length"), false, true);
    });
    Step([](HWND dlg) {
        EXPECT_EQ(Rows(dlg), (Texts{L"Height", L"Length"}));
        RECT client{};
        GetClientRect(Tree(dlg), &client);
        const LPARAM below = MAKELPARAM(client.right / 2, client.bottom - 5);
        PostMessageW(Tree(dlg), WM_LBUTTONDBLCLK, MK_LBUTTON, below);
        PostMessageW(Tree(dlg), WM_LBUTTONUP, 0, below);
    });
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg).size(), 2u) << "the space below the items adds nothing"; });
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 0); });
    Step([](HWND dlg) { ClickInTree(Tree(dlg), L"Débit d'air"); });
    Key(VK_RETURN);
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg) << "Enter in the tree must not press OK";
        EXPECT_EQ(Rows(dlg), (Texts{L"Height", L"Débit d'air", L"Length"}));
    });
    Confirm();
    EXPECT_EQ(data_.format, L"{13}{20}{12}");
}

TEST_F(CustomPropertyDlgTest, HeadingsAndCustomPropertiesCannotBeAdded) {
    for (const wchar_t* text : {L"Flow", L"Another custom property"}) {
        Step([text](HWND dlg) { ClickInTree(Tree(dlg), text); });
        Step([](HWND dlg) {
            EXPECT_FALSE(Enabled(dlg, IDC_CUSTOMPROPERTY_ADD));
            SendMessageW(dlg, WM_COMMAND, IDC_CUSTOMPROPERTY_ADD, 0);
            EXPECT_EQ(Rows(dlg).size(), 4u);
        });
    }
    Key(VK_RETURN);  // adds nothing here, so it presses OK
    EXPECT_TRUE(Run());
    EXPECT_TRUE(Same(data_, Record()));
}

TEST_F(CustomPropertyDlgTest, SearchNarrowsTheTreeAndEnterAddsTheMatch) {
    data_.format = L"";
    Enter(IDC_CUSTOMPROPERTY_SEARCH, L"DEBIT");
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::FindTreeItem(Tree(dlg), L"Length"), nullptr);
        EXPECT_NE(uidriver::FindTreeItem(Tree(dlg), L"Débit d'air"), nullptr);
    });
    Key(VK_RETURN);
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg), (Texts{L"Débit d'air"})); });
    Enter(IDC_CUSTOMPROPERTY_SEARCH, L"");
    Step([](HWND dlg) { EXPECT_NE(uidriver::FindTreeItem(Tree(dlg), L"Length"), nullptr); });
    Confirm();
    EXPECT_EQ(data_.format, L"{20}");
}

TEST_F(CustomPropertyDlgTest, OrdersAndRemovesByButtonsAndKeys) {
    Step([](HWND dlg) {
        for (const int id : {IDC_CUSTOMPROPERTY_UP, IDC_CUSTOMPROPERTY_DOWN, IDC_CUSTOMPROPERTY_REMOVE})
            EXPECT_FALSE(Enabled(dlg, id)) << "nothing is selected yet";
    });
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 3); });
    Step([](HWND dlg) {
        EXPECT_TRUE(Enabled(dlg, IDC_CUSTOMPROPERTY_UP));
        EXPECT_FALSE(Enabled(dlg, IDC_CUSTOMPROPERTY_DOWN));
        EXPECT_FALSE(Enabled(dlg, IDC_CUSTOMPROPERTY_EDIT)) << "a property is no constant";
    });
    Key(VK_UP, {VK_MENU});
    Press(IDC_CUSTOMPROPERTY_UP);
    Step([](HWND dlg) {
        EXPECT_EQ(Rows(dlg), (Texts{L"L = ", L"Unknown property 77", L"Length", L", "}));
        SetFocus(List(dlg));
    });
    Key(VK_DOWN, {VK_MENU});
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg), (Texts{L"L = ", L"Length", L"Unknown property 77", L", "})); });
    Key(VK_DELETE);
    Press(IDC_CUSTOMPROPERTY_REMOVE);
    Step([](HWND dlg) {
        EXPECT_EQ(Rows(dlg), (Texts{L"L = ", L"Length"}));
        EXPECT_EQ(Shown(dlg, IDC_CUSTOMPROPERTY_PREVIEW), L"L = Length");
    });
    Confirm();
    EXPECT_EQ(data_.format, L"L = {12|mm}");
}

TEST_F(CustomPropertyDlgTest, DeleteInTheNameDeletesText) {
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 1); });
    Step([](HWND dlg) {
        SetFocus(uidriver::Control(dlg, IDC_CUSTOMPROPERTY_NAME));
        SendDlgItemMessageW(dlg, IDC_CUSTOMPROPERTY_NAME, EM_SETSEL, 0, 1);
    });
    Key(VK_DELETE);
    Confirm();
    EXPECT_EQ(data_.name, L"ize");
    EXPECT_EQ(data_.format, Record().format);
}

TEST_F(CustomPropertyDlgTest, RefusesIllegalConstantsAndAsksAgainWithTheTextAsEntered) {
    data_.format = L"{12}";
    Press(IDC_CUSTOMPROPERTY_ADD_CONSTANT);
    InNewDialog([](HWND ask) {
        EXPECT_EQ(Shown(ask, kAskText - 1), L"Text:");
        EXPECT_TRUE(uidriver::Text(ask).starts_with(L"Constant text"));
        uidriver::SetText(ask, kAskText, L"a|b");
    });
    Step([] { uidriver::Click(uidriver::TopDialog(), IDOK); });
    InNewDialog([](HWND message) {
        EXPECT_EQ(uidriver::Text(message), L"OrvaCAD");
        EXPECT_EQ(uidriver::Text(GetDlgItem(message, 0xFFFF)), L"The following characters are illegal:\r\n{}|");
        uidriver::Key(VK_RETURN);
    });
    AnswerText(L"a|b", L" mm");
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg), (Texts{L"Length", L" mm"})); });
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 1); });
    Key(VK_F2);
    AnswerText(L" mm", L" m");
    Press(IDC_CUSTOMPROPERTY_ADD_CONSTANT);
    AnswerText(L"", nullptr);
    Confirm();
    EXPECT_EQ(data_.format, L"{12} m");
}

TEST_F(CustomPropertyDlgTest, OpensWithoutPropertiesAndFailsWithoutAParentThatLives) {
    Step([](HWND dlg) {
        EXPECT_EQ(TreeView_GetCount(Tree(dlg)), 0u);
        EXPECT_EQ(Rows(dlg).size(), 4u) << "unknown references are kept";
    });
    Press(IDOK);
    EXPECT_TRUE(RunSteps([this] { return Open(nullptr); }));
    EXPECT_TRUE(Same(data_, Record()));

    EXPECT_FALSE(CustomProperty::Dlg::Options(GoneWindow(), Lng::Hpv, &properties_, data_));
    EXPECT_TRUE(Same(data_, Record()));
}

TEST_F(CustomPropertyDlgTest, ReopensWhereTheUserLeftIt) {
    const auto open = [this] { return Open(&properties_); };
    ExpectOpensWhereItWasLeft(open, open);
}

}  // namespace
