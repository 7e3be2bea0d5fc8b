#include <gtest/gtest.h>
#include <occommonui/CustomProperty.h>
#include <orvatool/InterApp.h>
#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "customproperty_ids.h"
#include "host/driver/UiDriver.h"

namespace {

using CustomProperty::Data;
using uidriver::Script;

constexpr int kAskText = 101;  // the edit control of the question for a text

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

/// What is shown: mnemonics are a matter of the toolkit.
std::wstring Shown(HWND dlg, int ctrlId) {
    std::wstring text = uidriver::Text(uidriver::Control(dlg, ctrlId));
    std::erase(text, L'&');
    return text;
}

HWND Tree(HWND dlg) {
    return uidriver::Control(dlg, IDC_CUSTOMPROPERTY_TREE);
}
HWND List(HWND dlg) {
    return uidriver::Control(dlg, IDC_CUSTOMPROPERTY_LIST);
}
bool Enabled(HWND dlg, int ctrlId) {
    return IsWindowEnabled(uidriver::Control(dlg, ctrlId)) != FALSE;
}

void SelectInTree(HWND dlg, const wchar_t* text) {
    uidriver::ClickTreeItem(Tree(dlg), uidriver::FindTreeItem(Tree(dlg), text));
}

std::vector<std::wstring> Rows(HWND dlg) {
    return uidriver::ListColumn(List(dlg), 0);
}

using Texts = std::vector<std::wstring>;

class CustomPropertyDlgTest : public testing::Test {
protected:
    void SetUp() override {
        SetProductKey(L"Software\\OrvaCADTest");
        Lng::SetLanguage(L"en");
        parent_ = CreateWindowExW(0, L"Static", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 100, 600, 400, nullptr,
                                  nullptr, nullptr, nullptr);
    }
    void TearDown() override {
        DestroyWindow(parent_);
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\OrvaCADTest");
    }

    /// Adds a step that works on the dialog.
    void Step(std::function<void(HWND)> step) {
        script_.Then([this, step] { step(dlg_); });
    }

    bool Run(const TREE_INSERTLIST* properties) {
        script_.Start();
        const bool result = CustomProperty::Dlg::Options(parent_, Lng::Hpv, properties, data_);
        EXPECT_TRUE(script_.Finished()) << script_.Failure();
        return result;
    }
    bool Run() { return Run(&properties_); }

    /// Catches the dialog; every script begins with it.
    void Open() {
        script_.WithNewDialog([this](HWND dlg) { dlg_ = dlg; });
    }
    void Press(int ctrlId) {
        Step([ctrlId](HWND dlg) { uidriver::Click(dlg, ctrlId); });
    }
    void Key(int key, const std::vector<int>& modifiers = {}) {
        Step([=](HWND) { uidriver::Key(key, modifiers); });
    }

    HWND parent_ = nullptr;
    HWND dlg_ = nullptr;
    Script script_;
    TREE_INSERTLIST properties_ = Properties();
    Data data_ = Record();
};

TEST_F(CustomPropertyDlgTest, ShowsTheRecordAndGivesItBackUnchangedOnOk) {
    Open();
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
    Press(IDOK);
    EXPECT_TRUE(Run());
    EXPECT_TRUE(Same(data_, Record()));
}

TEST_F(CustomPropertyDlgTest, CancelAndCloseLeaveTheRecord) {
    Open();
    Step([](HWND dlg) { uidriver::SetText(dlg, IDC_CUSTOMPROPERTY_NAME, L"Other"); });
    Step([](HWND dlg) { SelectInTree(dlg, L"Height"); });
    Press(IDC_CUSTOMPROPERTY_ADD);
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg).size(), 5u); });
    Key(VK_ESCAPE);
    EXPECT_FALSE(Run());
    EXPECT_TRUE(Same(data_, Record()));
}

TEST_F(CustomPropertyDlgTest, AnEmptyNameKeepsTheDialogOpenWithTheFocusOnTheName) {
    Open();
    Step([](HWND dlg) { uidriver::SetText(dlg, IDC_CUSTOMPROPERTY_NAME, L""); });
    Step([](HWND dlg) { SetFocus(Tree(dlg)); });
    Press(IDOK);
    Step([](HWND dlg) {
        EXPECT_TRUE(IsWindowVisible(dlg));
        EXPECT_EQ(uidriver::TopDialog(), dlg);
        EXPECT_EQ(GetFocus(), uidriver::Control(dlg, IDC_CUSTOMPROPERTY_NAME));
    });
    Step([](HWND dlg) { uidriver::SetText(dlg, IDC_CUSTOMPROPERTY_NAME, L"New name"); });
    Press(IDOK);
    EXPECT_TRUE(Run());
    EXPECT_EQ(data_.name, L"New name");
    EXPECT_EQ(data_.format, Record().format);
}

TEST_F(CustomPropertyDlgTest, AddsPropertiesByButtonDoubleClickAndEnterBehindTheSelectedRow) {
    data_.format = L"";
    Open();
    Step([](HWND dlg) { SelectInTree(dlg, L"Height"); });
    Press(IDC_CUSTOMPROPERTY_ADD);
    Step([](HWND dlg) {
        const HTREEITEM item = uidriver::FindTreeItem(Tree(dlg), L"Length");
        uidriver::ClickTreeItem(Tree(dlg), item, false, true);
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
    Step([](HWND dlg) { SelectInTree(dlg, L"Débit d'air"); });
    Key(VK_RETURN);
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg) << "Enter in the tree must not press OK";
        EXPECT_EQ(Rows(dlg), (Texts{L"Height", L"Débit d'air", L"Length"}));
    });
    Press(IDOK);
    EXPECT_TRUE(Run());
    EXPECT_EQ(data_.format, L"{13}{20}{12}");
}

TEST_F(CustomPropertyDlgTest, HeadingsAndCustomPropertiesCannotBeAdded) {
    Open();
    for (const wchar_t* text : {L"Flow", L"Another custom property"}) {
        Step([text](HWND dlg) { SelectInTree(dlg, text); });
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
    Open();
    Step([](HWND dlg) { uidriver::SetText(dlg, IDC_CUSTOMPROPERTY_SEARCH, L"DEBIT"); });
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::FindTreeItem(Tree(dlg), L"Length"), nullptr);
        EXPECT_NE(uidriver::FindTreeItem(Tree(dlg), L"Débit d'air"), nullptr);
    });
    Key(VK_RETURN);
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg), (Texts{L"Débit d'air"})); });
    Step([](HWND dlg) { uidriver::SetText(dlg, IDC_CUSTOMPROPERTY_SEARCH, L""); });
    Step([](HWND dlg) { EXPECT_NE(uidriver::FindTreeItem(Tree(dlg), L"Length"), nullptr); });
    Press(IDOK);
    EXPECT_TRUE(Run());
    EXPECT_EQ(data_.format, L"{20}");
}

TEST_F(CustomPropertyDlgTest, OrdersAndRemovesByButtonsAndKeys) {
    Open();
    Step([](HWND dlg) {
        for (const int id : {IDC_CUSTOMPROPERTY_UP, IDC_CUSTOMPROPERTY_DOWN, IDC_CUSTOMPROPERTY_REMOVE}) {
            EXPECT_FALSE(Enabled(dlg, id)) << "nothing is selected yet";
        }
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
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg), (Texts{L"L = ", L"Length"})); });
    Step([](HWND dlg) { EXPECT_EQ(Shown(dlg, IDC_CUSTOMPROPERTY_PREVIEW), L"L = Length"); });
    Press(IDOK);
    EXPECT_TRUE(Run());
    EXPECT_EQ(data_.format, L"L = {12|mm}");
}

TEST_F(CustomPropertyDlgTest, DeleteInTheNameDeletesText) {
    Open();
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 1); });
    Step([](HWND dlg) {
        SetFocus(uidriver::Control(dlg, IDC_CUSTOMPROPERTY_NAME));
        SendDlgItemMessageW(dlg, IDC_CUSTOMPROPERTY_NAME, EM_SETSEL, 0, 1);
    });
    Key(VK_DELETE);
    Press(IDOK);
    EXPECT_TRUE(Run());
    EXPECT_EQ(data_.name, L"ize");
    EXPECT_EQ(data_.format, Record().format);
}

TEST_F(CustomPropertyDlgTest, RefusesIllegalConstantsAndAsksAgainWithTheTextAsEntered) {
    data_.format = L"{12}";
    Open();
    Press(IDC_CUSTOMPROPERTY_ADD_CONSTANT);
    script_.WithNewDialog([](HWND ask) {
        EXPECT_EQ(Shown(ask, kAskText - 1), L"Text:");
        EXPECT_EQ(uidriver::Text(ask).rfind(L"Constant text", 0), 0u);
        uidriver::SetText(ask, kAskText, L"a|b");
    });
    script_.Then([] { uidriver::Click(uidriver::TopDialog(), IDOK); });
    script_.WithNewDialog([](HWND message) {
        EXPECT_EQ(uidriver::Text(message), L"OrvaCAD");
        EXPECT_EQ(uidriver::Text(GetDlgItem(message, 0xFFFF)), L"The following characters are illegal:\r\n{}|");
        uidriver::Key(VK_RETURN);
    });
    script_.WithNewDialog([](HWND ask) {
        EXPECT_EQ(Shown(ask, kAskText), L"a|b");
        uidriver::SetText(ask, kAskText, L" mm");
    });
    script_.Then([] { uidriver::Click(uidriver::TopDialog(), IDOK); });
    Step([](HWND dlg) { EXPECT_EQ(Rows(dlg), (Texts{L"Length", L" mm"})); });
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 1); });
    Key(VK_F2);
    script_.WithNewDialog([](HWND ask) {
        EXPECT_EQ(Shown(ask, kAskText), L" mm");
        uidriver::SetText(ask, kAskText, L" m");
    });
    script_.Then([] { uidriver::Click(uidriver::TopDialog(), IDOK); });
    Press(IDC_CUSTOMPROPERTY_ADD_CONSTANT);
    script_.WithNewDialog([](HWND ask) { uidriver::Click(ask, IDCANCEL); });
    Press(IDOK);
    EXPECT_TRUE(Run());
    EXPECT_EQ(data_.format, L"{12} m");
}

TEST_F(CustomPropertyDlgTest, OpensWithoutPropertiesAndFailsWithoutAParentThatLives) {
    Open();
    Step([](HWND dlg) {
        EXPECT_EQ(TreeView_GetCount(Tree(dlg)), 0u);
        EXPECT_EQ(Rows(dlg).size(), 4u) << "unknown references are kept";
    });
    Press(IDOK);
    EXPECT_TRUE(Run(nullptr));
    EXPECT_TRUE(Same(data_, Record()));

    const HWND gone = CreateWindowExW(0, L"Static", L"", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    DestroyWindow(gone);
    EXPECT_FALSE(CustomProperty::Dlg::Options(gone, Lng::Hpv, &properties_, data_));
    EXPECT_TRUE(Same(data_, Record()));
}

TEST_F(CustomPropertyDlgTest, ReopensWhereTheUserLeftIt) {
    RECT left{};
    Open();
    Step([&](HWND dlg) {
        SetWindowPos(dlg, nullptr, 60, 70, 900, 640, SWP_NOZORDER);
        GetWindowRect(dlg, &left);
    });
    Press(IDCANCEL);
    EXPECT_FALSE(Run());

    Script again;
    again.WithNewDialog([&](HWND dlg) {
        RECT now{};
        GetWindowRect(dlg, &now);
        EXPECT_TRUE(EqualRect(&now, &left)) << now.left << ' ' << now.top << ' ' << now.right << ' ' << now.bottom;
        uidriver::Click(dlg, IDCANCEL);
    });
    again.Start();
    EXPECT_FALSE(CustomProperty::Dlg::Options(parent_, Lng::Hpv, &properties_, data_));
    EXPECT_TRUE(again.Finished()) << again.Failure();
}

}  // namespace
