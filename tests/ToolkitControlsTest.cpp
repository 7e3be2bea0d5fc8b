#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>
#include <orvatool/AskValueDlg.h>
#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>
#include <orvatool/ListFilterCtrl.h>
#include <orvatool/OCDialog.h>
#include <orvatool/OcListView2.h>
#include <orvatool/TreeInsertList.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/DialogTest.h"
#include "support/ProcessorTime.h"
#include "support/Pump.h"

namespace {

constexpr int kEdit = 101;
constexpr int kList = 102;
constexpr int kTree = 103;
constexpr int kCombo = 104;
constexpr DWORD kListStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS;
constexpr DWORD kTreeStyle = WS_CHILD | WS_VISIBLE | TVS_HASBUTTONS | TVS_LINESATROOT | TVS_SHOWSELALWAYS;

// The processor time that the slowest of the searches takes on a usual machine, in milliseconds, where each counts with
// the best of its rounds: what a search needs the machine can make longer, not shorter.
double SlowestAtBest(const Texts& searches, const std::function<void(const wchar_t*)>& search) {
    constexpr int kRounds = 5;
    std::vector<double> best(searches.size(), std::numeric_limits<double>::infinity());
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < searches.size(); ++i) {
            const double start = ProcessorTime();
            search(searches[i].c_str());
            best[i] = std::min(best[i], ProcessorTime() - start);
        }
    }
    return *std::max_element(best.begin(), best.end()) / Slowness();
}

// A window that stands for a dialog: it has the controls under test and passes on what they report.
class Owner {
public:
    std::function<LRESULT(const NMHDR*)> onNotify;
    std::function<void(WPARAM, LPARAM)> onCommand;

    Owner() { SetWindowSubclass(window_, Procedure, 0, reinterpret_cast<DWORD_PTR>(this)); }
    ~Owner() {
        onNotify = nullptr;
        DestroyWindow(window_);
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    HWND Add(const wchar_t* type, DWORD style, int id, int y = 0, int height = 340) {
        return CreateWindowExW(0, type, L"", style | WS_CHILD | WS_VISIBLE, 0, y, 480, height, window_,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    }
    operator HWND() const { return window_; }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                      DWORD_PTR owner) {
        const auto* const self = reinterpret_cast<const Owner*>(owner);
        if (message == WM_MEASUREITEM || message == WM_DRAWITEM)
            return SendMessageW(GetDlgItem(window, kList), message, wParam, lParam);
        if (message == WM_NOTIFY && self->onNotify) return self->onNotify(reinterpret_cast<const NMHDR*>(lParam));
        if (message == WM_COMMAND && self->onCommand) self->onCommand(wParam, lParam);
        return DefSubclassProc(window, message, wParam, lParam);
    }

    CommonControlsScope controls_;
    HWND window_ = CreateWindowExW(0, L"Static", L"Owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, 500, 400, nullptr,
                                   nullptr, nullptr, nullptr);
};

// --- numbers, texts, combo boxes

/// The message that the work shows, which is answered with that button.
std::wstring MessageOf(const std::function<void()>& work, int button = IDOK) {
    std::wstring message;
    uidriver::Script script;
    script.WithNewDialog([&](HWND box) {
        EXPECT_EQ(uidriver::Text(box), Lng::GetAppName(Lng::Common, false).c_str());
        message = uidriver::Text(GetDlgItem(box, 0xffff));
        PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    });
    script.Start();
    work();
    EXPECT_TRUE(script.Finished()) << script.Failure();
    return message;
}

struct Gw : testing::Test {
    Owner owner;
    HWND edit = owner.Add(L"EDIT", ES_AUTOHSCROLL, kEdit, 0, 20);
};

TEST_F(Gw, ReadsNumbersAsTypedAndRefusesTheRest) {
    wchar_t separator[8] = L"";
    GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, separator, 8);
    const std::wstring local = std::wstring(L"2") + separator + L"5";
    const std::pair<const wchar_t*, std::optional<double>> cases[] = {
        {L"12",         12  },
        {L"  7\t",      7   },
        {L"-3",         -3  },
        {L"+4",         4   },
        {L"1.25",       1.25},
        {local.c_str(), 2.5 },
        {L"",           {}  },
        {L"   ",        {}  },
        {L"12x",        {}  },
        {L"1 2",        {}  },
        {L"nan",        {}  },
        {L"inf",        {}  },
        {L"+-1",        {}  },
        {L"1001",       {}  },
        {L"-11",        {}  },
        {L"1.2.3",      {}  },
        {L"0x5",        {}  },
        {L"1e999",      {}  },
    };
    for (const auto& [typed, number] : cases) {
        SetWindowTextW(edit, typed);
        SetFocus(owner);
        double value = 99;
        bool isRead = false;
        const auto read = [&] { isRead = gwdlgtodouble(owner, Lng::Hpv, kEdit, -10, 1000, value); };
        if (number) {
            read();
        } else {
            EXPECT_EQ(MessageOf(read), L"Enter a number from -10 to 1000.") << typed;
            EXPECT_EQ(GetFocus(), edit);
        }
        EXPECT_EQ(isRead, number.has_value()) << typed;
        EXPECT_EQ(value, number.value_or(99)) << typed;
    }
}

TEST_F(Gw, ReadsWholeNumbersWithinTheirRange) {
    int value = 5;
    for (const wchar_t* typed : {L"1.5", L"99999999999", L"41", L"abc"}) {
        SetWindowTextW(edit, typed);
        EXPECT_EQ(MessageOf([&] { EXPECT_FALSE(gwdlgtoint(owner, Lng::Hpv, kEdit, 1, 40, value)); }),
                  L"Enter a whole number from 1 to 40.");
        EXPECT_EQ(value, 5);
        DWORD from = 9;
        DWORD to = 0;
        SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
        EXPECT_EQ(to - from, std::wstring(typed).size());
    }
    SetWindowTextW(edit, L" 40 ");
    EXPECT_TRUE(gwdlgtoint(owner, Lng::Hpv, kEdit, 1, 40, value));
    EXPECT_EQ(value, 40);
    EXPECT_FALSE(gwdlgtoint(owner, Lng::Hpv, 999, 1, 40, value));
}

TEST_F(Gw, WritesNumbersWithoutNeedlessZeros) {
    const auto written = [&](double value, int decimals) {
        gwdoubletodlg(owner, kEdit, value, decimals);
        std::wstring text = gwdlgtomemo(owner, kEdit).c_str();
        std::replace(text.begin(), text.end(), L',', L'.');
        return text;
    };
    EXPECT_EQ(written(1.5, 3), L"1.5");
    EXPECT_EQ(written(100, 2), L"100");
    EXPECT_EQ(written(-0.001, 2), L"0");
    EXPECT_EQ(written(2.346, 2), L"2.35");
    gwinttodlg(owner, kEdit, -9007199254740993);
    EXPECT_EQ(gwdlgtomemo(owner, kEdit), L"-9007199254740993");
}

TEST_F(Gw, CutsTextsWithoutPartingASurrogatePair) {
    gwmemotodlg(owner, kEdit, L"ab\U0001F600cd", 3, 0);
    EXPECT_EQ(gwdlgtomemo(owner, kEdit), L"ab");
    EXPECT_EQ(SendMessageW(edit, EM_GETLIMITTEXT, 0, 0), 3);
    gwmemotodlg(owner, kEdit, L"ab\U0001F600cd", 0, 0);
    EXPECT_EQ(gwdlgtomemo(owner, kEdit), L"ab\U0001F600cd");
    EXPECT_EQ(gwdlgtomemo(owner, kEdit, 4), L"ab\U0001F600");
    gwmemotodlg(owner, kEdit, nullptr, 5, 0);
    EXPECT_EQ(gwdlgtomemo(owner, kEdit), L"");
    gwmemotodlg(owner, 999, L"x", 5, 0);
    EXPECT_EQ(gwdlgtomemo(nullptr, kEdit), L"");
}

TEST_F(Gw, FillsCombosInTheGivenOrderAndTellsTheChosenValue) {
    owner.Add(WC_COMBOBOXW, CBS_DROPDOWNLIST | CBS_SORT | WS_VSCROLL, kCombo, 0, 200);
    const ValueList metals{
        {L"Zinc",   30       },
        {L"Iron",   1LL << 40},
        {L"Copper", 7        }
    };
    gwfillcombo(owner, kCombo, metals, 1LL << 40);
    EXPECT_EQ(ComboTexts(owner, kCombo), (Texts{L"Zinc", L"Iron", L"Copper"}));
    std::int64_t value = 0;
    EXPECT_TRUE(gwcombovalue(owner, kCombo, value));
    EXPECT_EQ(value, 1LL << 40);
    gwfillcombo(owner, kCombo, metals, 31);
    EXPECT_FALSE(gwcombovalue(owner, kCombo, value));
    EXPECT_EQ(value, 1LL << 40);
}

TEST_F(Gw, RedrawComesBackAtTheEndOfTheOutermostScopeAndHiddenStaysHidden) {
    const HWND label = owner.Add(L"STATIC", 0, 105, 0, 20);  // leaves WM_SETREDRAW to the system
    {
        const gwRedrawOff outer(label);
        { const gwRedrawOff inner(label); }
        EXPECT_FALSE(IsWindowVisible(label));
    }
    EXPECT_TRUE(IsWindowVisible(label));
    ShowWindow(label, SW_HIDE);
    { const gwRedrawOff quiet(label); }
    EXPECT_FALSE(IsWindowVisible(label));
}

TEST_F(Gw, AsksYesOrNo) {
    bool yes = false;
    for (const int answer : {IDYES, IDNO}) {
        EXPECT_EQ(MessageOf([&] { yes = gwyesnomsg(nullptr, Lng::Hpv, L"#Really?"); }, answer), L"#Really?");
        EXPECT_EQ(yes, answer == IDYES);
    }
}

// --- check boxes of trees

struct Trees : testing::Test {
    Owner owner;
    HWND tree = owner.Add(WC_TREEVIEWW, kTreeStyle, kTree);

    HTREEITEM Insert(HTREEITEM parent, const std::wstring& text) {
        TVINSERTSTRUCTW insert{parent, TVI_LAST, {}};
        insert.item.mask = TVIF_TEXT;
        insert.item.pszText = const_cast<wchar_t*>(text.c_str());
        return TreeView_InsertItem(tree, &insert);
    }
    HTREEITEM Find(const wchar_t* text) const { return uidriver::FindTreeItem(tree, text); }
    int Check(const wchar_t* text) const { return gwTVgetCheck(tree, Find(text)); }
    void Click(const wchar_t* text, bool onCheckBox = true, bool twice = false) const {
        uidriver::ClickTreeItem(tree, Find(text), onCheckBox, twice);
        Pump();
    }

    // Every item in tree order, indented by its level; "+" marks an open branch.
    std::wstring Shown() const {
        std::wstring shown;
        for (HTREEITEM item = TreeView_GetRoot(tree); item; item = gwTVnext(tree, item)) {
            for (HTREEITEM up = TreeView_GetParent(tree, item); up; up = TreeView_GetParent(tree, up))
                shown += L'.';
            shown += gwTVgetText(tree, item).c_str();
            if (TreeView_GetItemState(tree, item, TVIS_EXPANDED) & TVIS_EXPANDED) shown += L'+';
            shown += L' ';
        }
        return shown;
    }
};

struct TreeChecks : Trees {
    TreeChecks() {
        const HTREEITEM ducts = Insert(nullptr, L"Ducts");
        Insert(ducts, L"Round");
        const HTREEITEM flat = Insert(ducts, L"Flat");
        Insert(flat, L"Wide");
        Insert(flat, L"Narrow");
        Insert(nullptr, L"Pipes");
        gwTVaddChecks(tree);
        TreeView_Expand(tree, ducts, TVE_EXPAND);
        TreeView_Expand(tree, flat, TVE_EXPAND);
        owner.onNotify = [](const NMHDR* header) -> LRESULT { return gwTVCheckFromNotify(header) != nullptr; };
    }
    std::vector<int> All() const {
        return {Check(L"Ducts"), Check(L"Round"), Check(L"Flat"), Check(L"Wide"), Check(L"Narrow"), Check(L"Pipes")};
    }
};

TEST_F(TreeChecks, ClickTurnsAnItemWithAllBelowAndAbove) {
    const std::vector<int> none(6, 0);
    EXPECT_EQ(All(), none);
    Click(L"Wide");
    EXPECT_EQ(All(), (std::vector<int>{2, 0, 2, 1, 0, 0}));
    Click(L"Flat");  // partial turns on
    EXPECT_EQ(All(), (std::vector<int>{2, 0, 1, 1, 1, 0}));
    Click(L"Round");
    EXPECT_EQ(All(), (std::vector<int>{1, 1, 1, 1, 1, 0}));
    Click(L"Ducts");
    EXPECT_EQ(All(), none);
    Click(L"Ducts", true, true);  // two clicks: on and off, and the branch stays open
    EXPECT_EQ(All(), none);
    EXPECT_TRUE(TreeView_GetItemState(tree, Find(L"Ducts"), TVIS_EXPANDED) & TVIS_EXPANDED);
    Click(L"Pipes", false);  // on the label
    EXPECT_EQ(All(), none);
}

TEST_F(TreeChecks, SpaceTurnsTheSelectedItem) {
    TreeView_SelectItem(tree, Find(L"Flat"));
    SetFocus(tree);
    for (const int key : {VK_SPACE, VK_DOWN}) {
        EXPECT_EQ(TreeView_GetSelection(tree), Find(L"Flat"));
        uidriver::Key(key);
        Pump();
        EXPECT_EQ(All(), (std::vector<int>{2, 0, 1, 1, 1, 0}));
    }
}

TEST_F(TreeChecks, ABatchOfNestedItemsFollowsTheTopmost) {
    gwTVsetCheck(tree, Find(L"Flat"), kTreeChecked);
    gwTVsetCheck(tree, Find(L"Wide"), kTreeUnchecked);
    gwTVUpdate3StateCheckForItems(tree, {Find(L"Wide"), Find(L"Flat"), nullptr});
    EXPECT_EQ(All(), (std::vector<int>{2, 0, 1, 1, 1, 0}));
    gwTVsetCheck(tree, Find(L"Wide"), kTreeUnchecked);
    gwTVsetCheck(tree, Find(L"Flat"), kTreePartial);  // says nothing about what is below it
    gwTVUpdate3StateCheckForItems(tree, {Find(L"Flat"), Find(L"Wide")});
    EXPECT_EQ(All(), (std::vector<int>{2, 0, 2, 0, 1, 0}));
}

int messages = 0;
LRESULT CALLBACK CountMessages(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    ++messages;
    return DefSubclassProc(window, message, wParam, lParam);
}

TEST_F(Trees, CascadeIsLinearInTheItemsTouched) {
    constexpr int kCount = 1000;
    const auto perItem = [&](bool chain) {
        TreeView_DeleteAllItems(tree);
        const gwRedrawOff quiet(tree);
        std::vector<HTREEITEM> items{Insert(nullptr, L"Root")};
        const HTREEITEM root = items[0];
        for (int i = 0; i < kCount; ++i)
            items.push_back(Insert(chain ? items.back() : root, L"x"));
        for (const HTREEITEM item : items)
            gwTVsetCheck(tree, item, kTreeChecked);
        if (!chain) items.erase(items.begin());
        SetWindowSubclass(tree, CountMessages, 9, 0);
        messages = 0;
        gwTVUpdate3StateCheckForItems(tree, items);
        RemoveWindowSubclass(tree, CountMessages, 9);
        EXPECT_EQ(gwTVgetCheck(tree, root), kTreeChecked);
        return messages / kCount;
    };
    gwTVaddChecks(tree);
    EXPECT_LE(perItem(false), 10);
    EXPECT_LE(perItem(true), 10);
}

TEST_F(Trees, CheckImagesGoWithTheTree) {
    const auto once = [&] {
        const HWND other = owner.Add(WC_TREEVIEWW, kTreeStyle, 200);
        gwTVaddChecks(other);
        gwTVaddChecks(other);
        EXPECT_NE(SendMessageW(other, TVM_GETIMAGELIST, TVSIL_STATE, 0), 0);
        DestroyWindow(other);
    };
    once();
    const int before = uidriver::CountHandles().gdi;
    for (int i = 0; i < 20; ++i)
        once();
    EXPECT_EQ(uidriver::CountHandles().gdi, before);
}

// --- tree lists

TREE_INSERTLIST SampleTree() {
    TREE_INSERTLIST list;
    list.push_back(0, 100, Lng::Hpv, ImageLib::PropertyGroup, ustr(L"Pipes"));
    list.push_back(1, 101, Lng::Hpv, ImageLib::Property, ustr(L"Diameter"));
    list.push_back(1, 102, Lng::Hpv, -1, L"Length");
    list.push_back(0, 200, Lng::Hpv, -1, L"Ducts");
    list.push_back(1, 201, Lng::Hpv, -1, L"Größe");
    list.push_back(2, 202, Lng::Hpv, -1, L"Pipe length");
    list.push_back(0, 1LL << 40, Lng::Hpv, -1, L"Rooms");
    list.finalize();
    return list;
}

TEST_F(Trees, FillingRaisesRowsThatAreTooDeep) {
    TREE_INSERTLIST2 list;
    list.push_back(3, 1, Lng::Hpv, -1, L"a");
    list.push_back(5, 2, Lng::Hpv, -1, L"b");
    list.push_back(5, 3, Lng::Hpv, -1, L"c");
    list.push_back(-2, 4, Lng::Hpv, -1, L"d");
    TREE_INSERTITEM2 last = list[0];
    last.text = L"e";
    last.level = 1;
    list.insert(99, last);
    EXPECT_FALSE(list.isFinalized());
    FillTree(tree, list);
    const std::wstring raw = Shown();
    EXPECT_EQ(raw, L"a .b ..c d .e ");
    list.finalize();
    TreeView_DeleteAllItems(tree);
    FillTree(tree, list);
    EXPECT_EQ(Shown(), raw);
}

TEST_F(Trees, FillingPlacesRowsBelowAParentAndLeavesOutTheUnwanted) {
    const TREE_INSERTLIST list = SampleTree();
    const HTREEITEM parent = Insert(nullptr, L"Top");
    const std::vector<bool> wanted{true, false, true, false, true, true};  // too short: the rest is not wanted
    const TreeFill fill = FillTree(tree, list, parent, &wanted);
    EXPECT_EQ(Shown(), L"Top .Pipes ..Length ");
    EXPECT_EQ(fill.items[1], nullptr);
    EXPECT_EQ(fill.items[5], nullptr);
    EXPECT_EQ(gwTVgetData(tree, fill.items[2]), 102);
    const auto imageOf = [&](HTREEITEM item) {
        TVITEMW info{};
        info.mask = TVIF_IMAGE;
        info.hItem = item;
        TreeView_GetItem(tree, &info);
        return info.iImage;
    };
    EXPECT_EQ(imageOf(fill.items[0]), ImageLib::GetImage(ImageLib::PropertyGroup));
    EXPECT_EQ(imageOf(fill.items[2]), I_IMAGENONE);
    EXPECT_NE(SendMessageW(tree, TVM_GETIMAGELIST, TVSIL_NORMAL, 0), 0);
    EXPECT_EQ(FillTree(nullptr, list).items.size(), list.size());
    TreeView_DeleteAllItems(tree);
    EXPECT_EQ(gwTVgetData(tree, FillTree(tree, list).items.back()), 1LL << 40);
}

struct TreeSearching : Trees {
    TREE_INSERTLIST list = SampleTree();
    TreeSearch search;
    std::wstring Selected() const { return gwTVgetText(tree, TreeView_GetSelection(tree)).c_str(); }
};

TEST_F(TreeSearching, ShowsTheRowsThatMatchWithThoseAboveAndRestores) {
    search.Attach(tree, &list);
    TreeView_Expand(tree, Find(L"Ducts"), TVE_EXPAND);
    TreeView_SelectItem(tree, Find(L"Rooms"));
    const std::wstring before = Shown();

    search.Filter(L"LENGTH");
    EXPECT_EQ(Shown(), L"Pipes+ .Length Ducts+ .Größe+ ..Pipe length ");
    EXPECT_EQ(Selected(), L"Length");  // the first match in place of the row that is gone
    search.Filter(L"length grosse");   // the words may lie on different levels
    EXPECT_EQ(Shown(), L"Ducts+ .Größe+ ..Pipe length ");
    search.Filter(L"pipes");  // what is below a match matches, and stays closed
    EXPECT_EQ(Shown(), L"Pipes .Diameter .Length ");
    search.Filter(L"length ss");  // a text above helps where the word begins one of its words, not inside
    EXPECT_EQ(Shown(), L"");
    search.Filter(L"no such row");
    EXPECT_EQ(Shown(), L"");
    search.Filter(L"  ");
    EXPECT_EQ(Shown(), before);
    EXPECT_EQ(Selected(), L"Rooms");
}

TEST_F(TreeSearching, KeepsWhatTheUserSelectedAmongTheMatches) {
    search.Attach(tree, &list);
    search.Filter(L"length");
    TreeView_SelectItem(tree, Find(L"Pipe length"));
    search.Filter(L"pipe le");
    EXPECT_EQ(Selected(), L"Pipe length");
    search.Filter(L"");
    EXPECT_EQ(Selected(), L"Pipe length");
    EXPECT_EQ(search.Row(TreeView_GetSelection(tree))->value, 202);
    TreeView_SelectItem(tree, Find(L"Ducts"));
    search.Filter(L"ducts le");
    EXPECT_EQ(Selected(), L"Pipe length") << "a heading alone is none";
    EXPECT_EQ(search.Row(nullptr), nullptr);
}

TEST_F(TreeSearching, ChecksOfHiddenRowsAreKept) {
    gwTVaddChecks(tree);
    search.Attach(tree, &list);
    search.SetChecks({0, 1, 0, 0, 0, 0, 1});
    EXPECT_EQ(search.GetChecks(), (std::vector<int>{2, 1, 0, 0, 0, 0, 1}));
    search.Filter(L"length");
    EXPECT_EQ(Check(L"Pipes"), kTreePartial);  // because of a row that is not shown
    gwTVsetCheck(tree, Find(L"Length"), kTreeChecked);
    gwTVsetCheck(tree, Find(L"Ducts"), kTreeChecked);
    gwTVUpdate3StateCheckForItems(tree, {Find(L"Length"), Find(L"Ducts")});
    EXPECT_EQ(search.GetChecks(), (std::vector<int>{1, 1, 1, 1, 1, 1, 1}));
    search.Filter(L"");
    EXPECT_EQ(Check(L"Diameter"), kTreeChecked);
    EXPECT_EQ(Check(L"Pipes"), kTreeChecked);
}

TEST_F(TreeSearching, SingleChangesAndBuildingAnewShowTheSame) {
    list.clear();
    for (int group = 0; group < 40; ++group) {
        list.push_back(0, group, Lng::Hpv, -1, (L"Group " + std::to_wstring(group)).c_str());
        for (int row = 0; row < 20; ++row) {
            const std::wstring text = (row % 7 == 0 && group % 9 == 0 ? L"odd " : L"even ") + std::to_wstring(row);
            list.push_back(1, row, Lng::Hpv, -1, text.c_str());
        }
    }
    list.push_back(0, 99, Lng::Hpv, -1, L"even last");
    search.Attach(tree, &list);
    const std::wstring all = Shown();
    search.Filter(L"even");  // takes a few rows out
    const std::wstring narrowed = Shown();
    search.Filter(L"");  // puts them in again
    EXPECT_EQ(Shown(), all);
    search.Filter(L"odd");  // built anew
    search.Filter(L"even");
    EXPECT_EQ(Shown(), narrowed);
    EXPECT_NE(narrowed, all);
}

// --- list views

struct Lists : testing::Test {
    Owner owner;
    HWND window = owner.Add(WC_LISTVIEWW, kListStyle | LVS_OWNERDRAWFIXED, kList);
    OcListView2 list;
    std::vector<NMLISTVIEW> changes;

    Lists() {
        owner.onNotify = [this](const NMHDR* header) -> LRESULT {
            LRESULT result = 0;
            if (list.onNotify(header, result)) return result;
            if (header->code == LVN_ITEMCHANGED) changes.push_back(*reinterpret_cast<const NMLISTVIEW*>(header));
            return 0;
        };
        EXPECT_TRUE(list.attach(owner, kList));
        list.addColumn(L"Name", 200);
        list.addColumn(L"Size", 80, LVCFMT_RIGHT);
    }
    void Add(const wchar_t* name, const wchar_t* size, LPARAM data = 0) {
        const int row = list.addItem(name);
        list.setItem(row, 1, size);
        list.setData(row, data);
    }
    std::wstring Names() const {
        std::wstring names;
        for (const std::wstring& name : uidriver::ListColumn(window, 0))
            names += name + L' ';
        return names;
    }
    void Key(int key, const std::vector<int>& modifiers = {}) const {
        SetFocus(window);
        uidriver::Key(key, modifiers);
        Pump();
    }
    RECT Row(int row) const {
        RECT rect{LVIR_BOUNDS, 0, 0, 0};
        EXPECT_TRUE(SendMessageW(window, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rect)));
        return rect;
    }
};

TEST_F(Lists, RefusesAControlWithoutTheStyles) {
    OcListView2 other;
    owner.Add(WC_LISTVIEWW, kListStyle, 300);
    EXPECT_FALSE(other.attach(owner, 300));
    EXPECT_FALSE(other.attach(owner, 999));
    EXPECT_EQ(other.addItem(L"kept without a window"), 0);
    EXPECT_EQ(other.selected(), -1);
}

TEST_F(Lists, RowsHaveTheHeightOfTheirFont) {
    Add(L"a", L"1");
    const auto height = [this] { return Row(0).bottom - Row(0).top; };
    EXPECT_GE(height(), 17);
    EXPECT_LE(height(), 30);
    const HFONT big = CreateFontW(-60, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, L"Tahoma");
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(big), TRUE);
    EXPECT_GE(height(), 60);
    SendMessageW(window, WM_SETFONT, 0, FALSE);
    DeleteObject(big);
}

TEST_F(Lists, SortsNumbersByValueAndKeepsEqualRowsAndTheSelection) {
    Add(L"c", L"10", 1);
    Add(L"a", L"9", 2);
    Add(L"b", L"10", 3);
    Add(L"d", L"", 4);
    Add(L"e", L"-1", 5);
    Add(L"f", L"x2", 6);
    Add(L"g", L"X10", 7);
    list.enableSortByHeader(true);
    list.select(1);
    list.select(5, false);
    changes.clear();
    uidriver::ClickListHeader(window, 1);
    Pump();
    EXPECT_EQ(Names(), L"d e a c b f g ");
    EXPECT_EQ(list.selection(), (std::vector<int>{2, 5}));
    EXPECT_EQ(list.getData(2), 2);
    EXPECT_TRUE(changes.empty());  // the same rows are selected
    uidriver::ClickListHeader(window, 1);
    Pump();
    EXPECT_EQ(Names(), L"g f c b a e d ");
    EXPECT_TRUE(list.sortDescending());
    HDITEMW item{};
    item.mask = HDI_FORMAT;
    SendMessageW(ListView_GetHeader(window), HDM_GETITEMW, 1, reinterpret_cast<LPARAM>(&item));
    EXPECT_TRUE(item.fmt & HDF_SORTDOWN);
}

TEST_F(Lists, InsertingAndDeletingKeepTheOtherRowsSelection) {
    for (const wchar_t* name : {L"a", L"b", L"c", L"d", L"e"})
        list.addItem(name);
    list.select(1);
    list.select(3, false);
    EXPECT_EQ(list.addItem(L"x", -1, 2), 2);
    EXPECT_EQ(list.selection(), (std::vector<int>{1, 4}));
    list.deleteItems({0, 4, 4, -1, 77});
    EXPECT_EQ(Names(), L"b x c e ");
    EXPECT_EQ(list.selection(), (std::vector<int>{0}));
    list.deleteItem(0);
    EXPECT_EQ(list.selected(), -1);
    list.deleteAllItems();
    EXPECT_EQ(SendMessageW(window, LVM_GETITEMCOUNT, 0, 0), 0);
}

TEST_F(Lists, SelectsAllAndGivesRowsAsText) {
    Add(L"a\tb", L"1");
    Add(L"c", L"2\r\n3");
    Add(L"d", L"4");
    Key('A', {VK_CONTROL});
    EXPECT_EQ(list.selection().size(), 3u);
    EXPECT_EQ(list.copyText(), L"a b\t1\r\nc\t2  3\r\nd\t4");
}

TEST_F(Lists, ClickAndSpaceTurnCheckBoxes) {
    list.enableChecks();
    for (const wchar_t* name : {L"a", L"b", L"c"})
        list.addItem(name);
    Pump();
    changes.clear();
    uidriver::ClickListRow(window, 1, true);
    Pump();
    EXPECT_TRUE(list.isChecked(1));
    EXPECT_EQ(ListView_GetCheckState(window, 1), 1u);
    const auto turned = [](const NMLISTVIEW& change) {
        return change.iItem == 1 && change.uOldState == 0x1000 && change.uNewState == 0x2000;
    };
    EXPECT_EQ(std::count_if(changes.begin(), changes.end(), turned), 1);
    uidriver::ClickListRow(window, 1);  // beside the box
    Pump();
    EXPECT_TRUE(list.isChecked(1));
    list.select(0);
    list.select(1, false);
    Key(VK_SPACE);  // the other selected rows follow the focused one
    EXPECT_FALSE(list.isChecked(0));
    EXPECT_FALSE(list.isChecked(1));
    Key(VK_SPACE);
    EXPECT_TRUE(list.isChecked(0));
    EXPECT_FALSE(list.isChecked(2));
    list.sort(0, true);
    EXPECT_TRUE(list.isChecked(2));
}

TEST_F(Lists, VirtualRowsAreAskedForOnlyWhenTheyAreSeen) {
    int asked = 0;
    const auto textOf = [&](int row, int column) {
        ++asked;
        return ustr((std::to_wstring(row) + (column ? L" mm" : L" row")).c_str());
    };
    list.setVirtual(100000, textOf);
    UpdateWindow(window);
    EXPECT_GT(asked, 0);
    EXPECT_LT(asked, 200);
    EXPECT_EQ(SendMessageW(window, LVM_GETITEMCOUNT, 0, 0), 100000);
    EXPECT_EQ(list.addItem(L"x"), -1);
    list.enableChecks();
    list.setCheck(99999, true);
    list.select(99999);
    EXPECT_EQ(list.copyText(), L"99999 row\t99999 mm");
    list.setVirtual(10, textOf);
    EXPECT_FALSE(list.isChecked(99999));
    EXPECT_EQ(list.selected(), -1);
}

TEST_F(Lists, TypeAheadFindsARowWhateverItsCaseAndAccents) {
    for (const wchar_t* name : {L"Alpha", L"Beta", L"Ärmel", L"Gamma"})
        list.addItem(name);
    list.select(0);
    SetFocus(window);
    uidriver::Type(L"arm");
    Pump();
    EXPECT_EQ(list.selected(), 2);
}

TEST_F(Lists, DrawsSelectionInTheSystemsColours) {
    list.addItem(L"");
    list.addItem(L"");
    list.select(1);
    const auto colorOf = [&](int row) {
        InvalidateRect(window, nullptr, TRUE);
        UpdateWindow(window);
        const RECT rect = Row(row);
        const HDC dc = GetDC(window);
        const COLORREF color = GetPixel(dc, rect.left + 150, (rect.top + rect.bottom) / 2);
        ReleaseDC(window, dc);
        return color;
    };
    SetFocus(window);
    EXPECT_EQ(colorOf(0), GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(colorOf(1), GetSysColor(COLOR_HIGHLIGHT));
    SetFocus(owner);
    EXPECT_EQ(colorOf(1), GetSysColor(COLOR_BTNFACE));
}

TEST_F(Lists, StretchedColumnFillsTheListAtEverySize) {
    list.stretchColumn(0);
    for (const int width : {480, 300, 420}) {
        SetWindowPos(window, nullptr, 0, 0, width, 200, SWP_NOMOVE | SWP_NOZORDER);
        RECT client{};
        GetClientRect(window, &client);
        EXPECT_EQ(ListView_GetColumnWidth(window, 0) + ListView_GetColumnWidth(window, 1), client.right);
    }
    SetWindowPos(window, nullptr, 0, 0, 100, 200, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_EQ(ListView_GetColumnWidth(window, 0), MulDiv(200, static_cast<int>(GetDpiForWindow(window)), 96));
}

// --- filtered lists

struct Filtered : testing::Test {
    Owner owner;
    HWND edit = owner.Add(L"EDIT", WS_TABSTOP, kEdit, 0, 20);
    HWND list = owner.Add(WC_LISTVIEWW, kListStyle | LVS_SINGLESEL, kList, 30, 300);
    ListFilterCtrl filter;
    std::vector<ListFilterCtrl::Entry> entries;

    void Start(std::vector<std::wstring> texts, ListFilterCtrl::MatchCallback match = nullptr) {
        for (const std::wstring& text : texts)
            entries.push_back({text.c_str(), static_cast<int>(entries.size())});
        owner.onCommand = [this](WPARAM wParam, LPARAM lParam) { filter.OnCommand(wParam, lParam); };
        owner.onNotify = [this](const NMHDR* header) {
            LRESULT result = 0;
            filter.OnNotify(header, result);
            return result;
        };
        ASSERT_TRUE(filter.Attach(owner, kEdit, kList, Fill, match, this, L"Search"));
        filter.Fill();
    }
    static void Fill(void* context, std::vector<ListFilterCtrl::Entry>& entries) {
        entries = static_cast<Filtered*>(context)->entries;
    }
    std::wstring Search(const wchar_t* text) {
        SetWindowTextW(edit, text);
        std::wstring shown;
        for (const std::wstring& row : uidriver::ListColumn(list, 0))
            shown += row + L'|';
        return shown;
    }
};

TEST_F(Filtered, ShowsEntriesThatHoldEveryWordInAnyOrderCaseAndAccent) {
    Start({L"Round duct", L"Flat duct", L"Lämpö round\nx", L"", L"Straße"});
    EXPECT_EQ(Search(L""), L"Round duct|Flat duct|Lämpö round\nx||Straße|");
    EXPECT_EQ(Search(L"DUCT r"), L"Round duct|");
    EXPECT_EQ(Search(L"lampo"), L"Lämpö round\nx|");
    EXPECT_EQ(Search(L"LÄMPÖ Ro"), L"Lämpö round\nx|");
    EXPECT_EQ(Search(L"strasse"), L"Straße|");
    EXPECT_EQ(Search(L"duct"), L"Round duct|Flat duct|");  // another search, not a narrower one
    EXPECT_EQ(Search(L"duct zz"), L"");
    EXPECT_EQ(Search(L"  "), L"Round duct|Flat duct|Lämpö round\nx||Straße|");
}

TEST_F(Filtered, SelectionStaysByValueAndEnterCanTakeTheFirstMatch) {
    Start({L"aa", L"ab", L"bb"});
    EXPECT_EQ(filter.Selected(), nullptr);
    EXPECT_TRUE(filter.Select(1));
    Search(L"b");
    ASSERT_NE(filter.Selected(), nullptr);
    EXPECT_EQ(filter.Selected()->value, 1);
    Search(L"bb");
    EXPECT_EQ(filter.Selected()->value, 2);
    entries.erase(entries.begin());
    filter.Fill();
    EXPECT_EQ(filter.ShownCount(), 1u);
    EXPECT_EQ(filter.Selected()->value, 2);
    EXPECT_FALSE(filter.Select(0));
}

TEST_F(Filtered, ArrowsInTheEditMoveTheSelectionAndEscClearsTheSearch) {
    Start({L"aa", L"ab", L"bb"});
    SetFocus(edit);
    const auto key = [&](int code) {
        uidriver::Key(code);
        Pump();
        return filter.Selected() ? filter.Selected()->value : -1;
    };
    EXPECT_EQ(key(VK_DOWN), 0);
    EXPECT_EQ(key(VK_DOWN), 1);
    EXPECT_EQ(key(VK_UP), 0);
    EXPECT_EQ(key(VK_UP), 0);
    EXPECT_EQ(key(VK_NEXT), 2);
    EXPECT_EQ(GetFocus(), edit);
    MSG escape{};
    escape.message = WM_KEYDOWN;
    escape.wParam = VK_ESCAPE;
    const auto wantsEscape = [&] {
        return SendMessageW(edit, WM_GETDLGCODE, VK_ESCAPE, reinterpret_cast<LPARAM>(&escape)) & DLGC_WANTMESSAGE;
    };
    Search(L"bb");
    EXPECT_TRUE(wantsEscape());
    key(VK_ESCAPE);
    EXPECT_EQ(filter.ShownCount(), 3u);
    EXPECT_FALSE(wantsEscape());  // the dialog's now
}

TEST_F(Filtered, TheCallersOwnRuleIsAskedForEveryEntry) {
    Start({L"1", L"22", L"333"}, [](void*, const ListFilterCtrl::Entry& entry, std::wstring_view search) {
        return entry.text.size() >= search.size();
    });
    EXPECT_EQ(Search(L"xx"), L"22|333|");
    EXPECT_EQ(Search(L"xxx"), L"333|");
    EXPECT_EQ(Search(L"x"), L"1|22|333|");
}

TEST_F(Filtered, AHundredThousandEntriesFollowTheTyping) {
    std::vector<std::wstring> texts;
    for (int i = 0; i < 100000; ++i)
        texts.push_back(L"Supply air terminal Ä" + std::to_wstring(i * 7919 % 100000));
    Start(std::move(texts));
    const Texts typed{L"a", L"ai", L"air", L"air a", L"air a1", L"air a12", L"air a123", L"air a1234", L"a9999", L""};
    std::vector<std::size_t> shown;
    const double slowest = SlowestAtBest(typed, [&](const wchar_t* text) {
        SetWindowTextW(edit, text);
        shown.push_back(filter.ShownCount());
    });
    EXPECT_EQ(shown[7], 11u) << "1234 and ten numbers of one more digit";
    EXPECT_EQ(shown[8], 11u);
    EXPECT_EQ(shown[9], 100000u);
    EXPECT_LT(slowest, 200);  // a build without checks takes a quarter
}

TEST_F(TreeSearching, TwentyThousandRowsFollowTheTyping) {
    list.clear();
    for (int i = 0; i < 20000; ++i) {
        list.push_back(i % 20 ? 1 : 0, i, Lng::Hpv, -1, (L"Property " + std::to_wstring(i)).c_str());
    }
    search.Attach(tree, &list);
    const double slowest = SlowestAtBest({L"p", L"pr", L"pro 1", L"pro 12", L"pro 123", L"pro 1", L"pro", L""},
                                         [&](const wchar_t* text) { search.Filter(text); });
    EXPECT_EQ(std::wstring(Shown(), 0, 24), L"Property 0 .Property 1 .");  // so many matches leave the branches closed
    EXPECT_LT(slowest, 400);                                               // a build without checks takes a quarter
}

TEST_F(TreeSearching, LongListsComeInPieces) {
    list.clear();
    for (int i = 0; i < 10'000; ++i)
        list.push_back(i % 5'000 ? 1 : 0, i + 1, Lng::Hpv, -1, (L"Row " + std::to_wstring(i)).c_str());
    gwTVaddChecks(tree);
    const auto isWhole = [this] { return TreeView_GetCount(tree) == list.size(); };
    const auto waitForAll = [&] {
        MSG message{};
        while (!isWhole() && GetMessageW(&message, nullptr, 0, 0))
            DispatchMessageW(&message);
    };
    const auto begin = [&] {
        TreeView_SelectItem(tree, nullptr);
        search.Filter(L"none");
        search.Filter(L"");
        EXPECT_FALSE(isWhole());
    };
    search.Attach(tree, &list);
    EXPECT_FALSE(isWhole());
    SendMessageW(tree, WM_KEYDOWN, VK_DOWN, 0);
    EXPECT_TRUE(isWhole()) << "the user has turned to the tree";
    begin();
    search.Filter(L"9998");  // while rows are to come
    EXPECT_EQ(Shown(), L"Row 5000+ .Row 9998 ");
    begin();
    EXPECT_TRUE(search.Select(9'999));
    EXPECT_EQ(Selected(), L"Row 9998");
    begin();
    waitForAll();

    // Many checks at once, where the rows are seen.
    TreeView_SelectItem(tree, Find(L"Row 5000"));
    TreeView_Expand(tree, Find(L"Row 5000"), TVE_EXPAND);
    TreeView_SelectSetFirstVisible(tree, Find(L"Row 5100"));
    std::vector<int> checks = search.GetChecks();
    std::fill(checks.begin() + 5'000, checks.end(), static_cast<int>(kTreeChecked));
    search.SetChecks(checks);
    EXPECT_EQ(Selected(), L"Row 5000");
    EXPECT_STREQ(gwTVgetText(tree, TreeView_GetFirstVisible(tree)).c_str(), L"Row 5100");
    waitForAll();
    EXPECT_EQ(Check(L"Row 9999"), kTreeChecked) << "a row that came later";
    EXPECT_EQ(Check(L"Row 4999"), kTreeUnchecked);
    begin();
    DestroyWindow(tree);
}

// --- asking for a value

class Asking : public DialogTest {
protected:
    static constexpr int kAskFilter = 102;
    static constexpr int kAskList = 103;
    static constexpr int kAskTree = 104;

    /// Asks for one of the choices. The row, or -1.
    template <class Choices>
    int Ask(Lng::AppID app, const Choices& choices, std::int64_t& value) {
        return RunSteps([&] { return AskValueDlg::Run(parent_, app, L"Title", L"&Prompt:", choices, value); });
    }
};

TEST_F(Asking, ForATextProposesSelectsAndCuts) {
    ustr value = L"proposal";
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), std::wstring(L"Constant text - ") + Lng::GetAppName(Lng::Hpv, false).c_str());
        EXPECT_TRUE(HasFocus(dlg, kAskText));
        EXPECT_EQ(uidriver::Text(GetFocus()), L"proposal");
        uidriver::Type(L"a longer text");  // in place of the proposal, which is selected
    });
    Key(VK_RETURN);
    EXPECT_EQ(RunSteps([&] { return AskValueDlg::Run(parent_, Lng::Hpv, L"Constant text", L"Text:", value, 8); }), 0);
    EXPECT_EQ(value, L"a longer");

    Enter(kAskText, L"changed");
    Key(VK_ESCAPE);
    EXPECT_EQ(RunSteps([&] { return AskValueDlg::Run(parent_, Lng::NoApp, L"Title", L"Text:", value); }), -1);
    EXPECT_EQ(value, L"a longer");
}

TEST_F(Asking, ForAChoiceOfAShortList) {
    const ValueList choices{
        {L"Red",   5},
        {L"Green", 6},
        {L"Blue",  5}
    };
    std::int64_t value = 77;  // none of them
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Title");
        EXPECT_FALSE(Visible(dlg, kAskFilter));
        EXPECT_TRUE(HasFocus(dlg, kAskList));
        EXPECT_FALSE(Enabled(dlg, IDOK));
        uidriver::ClickListRow(uidriver::Control(dlg, kAskList), 1);
    });
    Step([](HWND dlg) {
        EXPECT_TRUE(Enabled(dlg, IDOK));
        uidriver::ClickListRow(uidriver::Control(dlg, kAskList), 2, false, true);
    });
    EXPECT_EQ(Ask(Lng::NoApp, choices, value), 2);
    EXPECT_EQ(value, 5);
}

TEST_F(Asking, ForAChoiceOfALongListBySearching) {
    ValueList choices;
    for (int i = 0; i < 500; ++i)
        choices.emplace_back((L"Entry " + std::to_wstring(i)).c_str(), i * 10);
    std::int64_t value = 420;
    Step([](HWND dlg) {
        EXPECT_TRUE(HasFocus(dlg, kAskFilter));
        EXPECT_EQ(ListView_GetNextItem(uidriver::Control(dlg, kAskList), -1, LVNI_SELECTED), 42);
        uidriver::Type(L"33");
    });
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::ListColumn(uidriver::Control(dlg, kAskList), 0).size(), 14u);
        EXPECT_TRUE(Enabled(dlg, IDOK));
    });
    Key(VK_DOWN);
    Key(VK_RETURN);
    EXPECT_EQ(Ask(Lng::NoApp, choices, value), 133);
    EXPECT_EQ(value, 1330);
}

TEST_F(Asking, WithNothingFoundThereIsNothingToChoose) {
    const ValueList choices(20, {L"x", 0});
    std::int64_t value = 3;
    Enter(kAskFilter, L"y");
    Step([](HWND dlg) { EXPECT_FALSE(Enabled(dlg, IDOK)); });
    Key(VK_RETURN);
    Key(VK_ESCAPE);  // clears the search
    Step([](HWND dlg) { EXPECT_EQ(Shown(dlg, kAskFilter), L""); });
    Key(VK_ESCAPE);
    EXPECT_EQ(Ask(Lng::NoApp, choices, value), -1);
    EXPECT_EQ(value, 3);
}

TEST_F(Asking, ForARowOfATree) {
    TREE_INSERTLIST choices = SampleTree();
    for (int i = 0; i < 20; ++i)
        choices.push_back(1, 1000 + i, Lng::Hpv, -1, L"Room");
    std::int64_t value = 201;
    Step([](HWND dlg) {
        const HWND tree = uidriver::Control(dlg, kAskTree);
        EXPECT_EQ(gwTVgetText(tree, TreeView_GetSelection(tree)), L"Größe");
        uidriver::Type(L"pipe len");
    });
    Step([](HWND dlg) {
        const HWND tree = uidriver::Control(dlg, kAskTree);
        EXPECT_EQ(uidriver::FindTreeItem(tree, L"Diameter"), nullptr);
        uidriver::ClickTreeItem(tree, uidriver::FindTreeItem(tree, L"Pipe length"), false, true);
    });
    EXPECT_EQ(Ask(Lng::Hpv, choices, value), 5);
    EXPECT_EQ(value, 202);
}

}  // namespace
