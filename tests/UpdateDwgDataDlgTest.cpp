#include <gtest/gtest.h>
#include <occommonui/UpdateDwgData.h>
#include <orvatool/Gw.h>
#include <windows.h>

#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "project_ids.h"
#include "support/SelectionTest.h"
#include "support/TestFolder.h"

namespace {

using UpdateDwgData::Options;
using UpdateDwgData::PrjDb::OptionsRec;
using Ids = std::set<long>;

namespace PrjDb = UpdateDwgData::PrjDb;

/// Two headings; the items of the second need a selection set. What the rows are to the caller itself is of no concern.
TREE_INSERTLIST2 Items() {
    TREE_INSERTLIST2 list;
    const auto add = [&](int level, std::int64_t data, const wchar_t* text) {
        list.push_back(level, 9000 + static_cast<std::int64_t>(list.size()), Lng::Hpv, -1, ustr(text)).data = data;
    };
    add(0, 0, L"Dimensions");
    add(1, 12, L"Length");
    add(1, 13, L"Height");
    add(1, -105, L"Custom");
    add(0, 0, L"Flow");
    add(1, 20, L"Supply flow");
    add(1, 21, L"Exhaust flow");
    return list;
}

bool IsFlow(std::uint64_t id) {
    return id == 20 || id == 21;
}

const ObjectSelection::Data kShown = SystemInCurrentDrawing(31);
const ObjectSelection::Data kStored = SystemInCurrentDrawing(32);

OptionsRec Set(const wchar_t* name, Ids properties) {
    OptionsRec rec;
    rec.name = name;
    rec.options.properties = std::move(properties);
    rec.options.selection = kStored;
    return rec;
}

/// As they are stored: "1 Name {12,13}" each.
Texts Stored(const QBaseDb& db) {
    std::vector<OptionsRec> recs;
    PrjDb::Read(db, recs);
    Texts texts;
    for (const OptionsRec& rec : recs) {
        std::wstring text = std::to_wstring(rec.id) + L" " + rec.name.c_str() + L" {";
        for (const long id : rec.options.properties)
            text += (text.back() == L'{' ? L"" : L",") + std::to_wstring(id);
        texts.push_back(text + L"}");
    }
    return texts;
}

HWND Tree(HWND dlg) {
    return uidriver::Control(dlg, IDC_UPDATEDWGDATA_ITEMS);
}
HWND Sets(HWND dlg) {
    return uidriver::Control(dlg, IDC_UPDATEDWGDATA_SET);
}

int CheckOf(HWND dlg, const wchar_t* item) {
    return gwTVgetCheck(Tree(dlg), uidriver::FindTreeItem(Tree(dlg), item));
}

Texts Names(HWND dlg) {
    return ComboTexts(dlg, IDC_UPDATEDWGDATA_SET);
}

class UpdateDwgDataDlgTest : public DialogTest {
protected:
    UpdateDwgDataDlgTest() {
        options_.properties = {12};
        options_.selection = kShown;
    }

    void Store(OptionsRec rec) { ASSERT_TRUE(PrjDb::Write(db_, rec)); }
    /// Clicks the item's check box.
    void Check(const wchar_t* text) {
        Step([=](HWND dlg) { ClickInTree(Tree(dlg), text, true); });
    }
    /// Chooses a set with the keyboard.
    void Choose(int row) {
        Step([](HWND dlg) {
            SetFocus(Sets(dlg));
            uidriver::Key(VK_HOME);
        });
        for (int i = 0; i < row; ++i)
            Key(VK_DOWN);
    }
    /// Answers the question for a name.
    void Name(const std::wstring& text) {
        InNewDialog([=](HWND ask) {
            EXPECT_EQ(Shown(ask, kAskText - 1), L"Name:");
            uidriver::SetText(ask, kAskText, text);
        });
        Step([] { uidriver::Click(uidriver::TopDialog(), IDOK); });
    }

    bool Run(const TREE_INSERTLIST2* items) {
        const auto needsSet = [this](UpdateDwgData::Dlg::MsgId message, std::uint64_t id, std::int64_t none) {
            EXPECT_EQ(message, UpdateDwgData::Dlg::NeedsSelectionSet);
            EXPECT_EQ(none, 0);
            asked_.insert(static_cast<long>(id));
            if (itemsFail_) throw std::runtime_error("caller");
            return std::int64_t{IsFlow(id)};
        };
        return RunSteps([&] {
            return UpdateDwgData::OptionsDlg(parent_, Lng::Hpv, options_, items, db_, host_.Callback(), needsSet);
        });
    }
    /// Runs the steps, up to OK or Cancel.
    void RunTo(int button) {
        const TREE_INSERTLIST2 items = Items();
        Press(button);
        EXPECT_EQ(Run(&items), button == IDOK);
    }

    const TestFolder folder_;
    const std::wstring file_ = folder_.File(L"project.db");
    QBaseDb db_{file_.c_str()};
    SelectionHost host_;
    Options options_;
    Ids asked_;
    bool itemsFail_ = false;
};

TEST_F(UpdateDwgDataDlgTest, OkGivesTheOptionsBackAsTheyWereShown) {
    Store(Set(L"Second name", {13}));
    Store(Set(L"A name", {13}));
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Update Drawing Data - OrvaCAD HPV");
        EXPECT_EQ(Shown(dlg, 100), L"Range");
        EXPECT_EQ(Shown(dlg, 101), L"Selection set");
        EXPECT_EQ(Shown(dlg, 140), L"Save");
        EXPECT_EQ(Shown(dlg, 141), L"Save as...");
        EXPECT_EQ(Shown(dlg, 142), L"Delete");
        EXPECT_EQ(Shown(dlg, 143), L"Rename...");
        EXPECT_EQ(Names(dlg), (Texts{L"Second name", L"A name"})) << "in the database's order";
        EXPECT_EQ(SendMessageW(Sets(dlg), CB_GETCURSEL, 0, 0), CB_ERR);
        EXPECT_EQ(CheckOf(dlg, L"Length"), kTreeChecked);
        EXPECT_EQ(CheckOf(dlg, L"Dimensions"), kTreePartial);
        EXPECT_EQ(CheckOf(dlg, L"Height"), kTreeUnchecked);
    });
    RunTo(IDOK);
    EXPECT_EQ(options_.properties, Ids{12});
    EXPECT_EQ(options_.selection, kShown);
    EXPECT_TRUE(options_.flagMask & ObjectSelection::Dlg::kNoPages) << "the control's own";
    EXPECT_TRUE(asked_.empty()) << "nothing was checked or unchecked";
}

TEST_F(UpdateDwgDataDlgTest, CancelLeavesTheOptionsButNotTheSets) {
    Check(L"Custom");
    Check(L"Supply flow");
    Press(IDC_UPDATEDWGDATA_SAVE_AS);
    Name(L"Kept");
    RunTo(IDCANCEL);
    EXPECT_EQ(options_.properties, Ids{12});
    EXPECT_EQ(options_.selection, kShown);
    EXPECT_EQ(options_.flagMask, 0u);
    EXPECT_EQ(Stored(db_), Texts{L"1 Kept {-105,12,20}"});
}

TEST_F(UpdateDwgDataDlgTest, WithoutACheckedItemNothingIsConfirmedOrSaved) {
    Store(Set(L"Set", {13}));
    Check(L"Length");
    for (const int button : {IDOK, IDC_UPDATEDWGDATA_SAVE, IDC_UPDATEDWGDATA_SAVE_AS}) {
        Step([](HWND dlg) { SetFocus(Sets(dlg)); });
        ExpectRefused(IDC_UPDATEDWGDATA_ITEMS, button);
    }
    Check(L"Dimensions");
    RunTo(IDOK);
    EXPECT_EQ(options_.properties, (Ids{-105, 12, 13})) << "a heading stands for what is below it";
    EXPECT_EQ(Stored(db_), Texts{L"1 Set {13}"});
}

TEST_F(UpdateDwgDataDlgTest, ItemsThatNeedASelectionSetRuleManualSelectionOut) {
    options_.selection = ObjectSelection::Data();
    Step([](HWND dlg) { EXPECT_TRUE(IsChecked(dlg, IDC_UPDATEDWGDATA_MANUAL)); });
    Check(L"Height");
    Step([](HWND dlg) { EXPECT_TRUE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)) << "a length can be picked by hand"; });
    Check(L"Supply flow");
    const auto expectForced = [](HWND dlg) {
        EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL));
        EXPECT_FALSE(IsChecked(dlg, IDC_UPDATEDWGDATA_MANUAL));
        EXPECT_TRUE(IsChecked(dlg, IDC_UPDATEDWGDATA_CURRENT));
    };
    Step(expectForced);
    Check(L"Exhaust flow");
    Check(L"Supply flow");
    Step(expectForced);
    Check(L"Flow");  // partial: turns both on
    Step(expectForced);
    Check(L"Flow");
    Step([](HWND dlg) { EXPECT_TRUE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)) << "none is left"; });
    Check(L"Flow");
    Step(expectForced);
    RunTo(IDOK);
    EXPECT_EQ(options_.properties, (Ids{12, 13, 20, 21}));
    EXPECT_TRUE(options_.flagMask & ObjectSelection::Dlg::kNoManualSelection);
    EXPECT_TRUE(options_.selection.bySelectionSet);
    EXPECT_EQ(asked_, (Ids{12, 13, 20, 21}));
}

TEST_F(UpdateDwgDataDlgTest, ACallerThatFailsNeedsNoSelectionSet) {
    itemsFail_ = true;
    Check(L"Supply flow");
    Step([](HWND dlg) { EXPECT_TRUE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)); });
    RunTo(IDOK);
    EXPECT_EQ(options_.properties, (Ids{12, 20}));
}

TEST_F(UpdateDwgDataDlgTest, ChoosingASetLoadsItWithoutItsFlagMask) {
    Store(Set(L"Flows", {20, 21, 777}));
    Store(Set(L"Lengths", {12, 13}));
    Check(L"Supply flow");
    Step([](HWND dlg) { EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)); });
    Choose(0);
    Step([](HWND dlg) {
        EXPECT_EQ(CheckOf(dlg, L"Flow"), kTreeChecked);
        EXPECT_EQ(CheckOf(dlg, L"Length"), kTreeUnchecked);
        EXPECT_TRUE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)) << "the flag is not stored";
    });
    Check(L"Exhaust flow");
    Check(L"Exhaust flow");
    Step([](HWND dlg) { EXPECT_TRUE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)) << "one was checked all the time"; });
    RunTo(IDOK);
    EXPECT_EQ(options_.properties, (Ids{20, 21})) << "what the tree does not have is gone";
    EXPECT_EQ(options_.selection, kStored);
    EXPECT_EQ(options_.flagMask, 0u);
}

TEST_F(UpdateDwgDataDlgTest, SavesUnderTheSelectedSetElseAsksForAName) {
    Store(Set(L"First", {13}));
    Press(IDC_UPDATEDWGDATA_SAVE);
    InNewDialog([](HWND ask) {
        EXPECT_EQ(Shown(ask, kAskText), L"");
        EXPECT_EQ(SendDlgItemMessageW(ask, kAskText, EM_GETLIMITTEXT, 0, 0), 100);
        uidriver::Click(ask, IDCANCEL);
    });
    Step([this](HWND dlg) {
        EXPECT_EQ(Names(dlg), Texts{L"First"});
        EXPECT_EQ(Stored(db_), Texts{L"1 First {13}"});
    });
    Press(IDC_UPDATEDWGDATA_SAVE);
    Name(L"Second");
    Step([this](HWND dlg) {
        EXPECT_EQ(Names(dlg), (Texts{L"First", L"Second"}));
        EXPECT_EQ(Shown(dlg, IDC_UPDATEDWGDATA_SET), L"Second");
        EXPECT_EQ(Stored(db_), (Texts{L"1 First {13}", L"2 Second {12}"}));
    });
    Check(L"Custom");
    Press(IDC_UPDATEDWGDATA_SAVE);
    Step([this](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg);
        EXPECT_EQ(Stored(db_), (Texts{L"1 First {13}", L"2 Second {-105,12}"}));
    });
    Press(IDC_UPDATEDWGDATA_SAVE_AS);
    Name(L"Second");
    RunTo(IDCANCEL);
    EXPECT_EQ(Stored(db_).back(), L"3 Second {-105,12}") << "a name may be used twice";
}

TEST_F(UpdateDwgDataDlgTest, RenamesAndDeletesTheSelectedSet) {
    Store(Set(L"First", {12}));
    Store(Set(L"Second", {13}));
    Store(Set(L"Third", {20}));
    Step([](HWND dlg) {
        EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_RENAME));
        EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_DELETE));
    });
    Choose(1);
    Check(L"Custom");  // which is not what is renamed
    Press(IDC_UPDATEDWGDATA_RENAME);
    InNewDialog([](HWND ask) {
        EXPECT_EQ(uidriver::Text(ask), L"Configuration Name - OrvaCAD HPV");
        EXPECT_EQ(Shown(ask, kAskText), L"Second");
        EXPECT_EQ(SendDlgItemMessageW(ask, kAskText, EM_GETLIMITTEXT, 0, 0), 100);
        uidriver::SetText(ask, kAskText, L"100 %d \"ducts\"");
    });
    Step([] { uidriver::Click(uidriver::TopDialog(), IDOK); });
    Step([this](HWND dlg) {
        EXPECT_EQ(Names(dlg), (Texts{L"First", L"100 %d \"ducts\"", L"Third"}));
        EXPECT_EQ(Shown(dlg, IDC_UPDATEDWGDATA_SET), L"100 %d \"ducts\"");
        EXPECT_EQ(Stored(db_)[1], L"2 100 %d \"ducts\" {13}");
    });
    Press(IDC_UPDATEDWGDATA_DELETE);
    const std::wstring question = L"Do you really want to delete selection set \"100 %d \"ducts\"\"";
    ExpectMessage(question, IDNO);
    Step([](HWND dlg) { EXPECT_EQ(Names(dlg).size(), 3u); });
    Press(IDC_UPDATEDWGDATA_DELETE);
    ExpectMessage(question, IDYES);
    Step([this](HWND dlg) {
        EXPECT_EQ(Names(dlg), (Texts{L"First", L"Third"}));
        EXPECT_EQ(SendMessageW(Sets(dlg), CB_GETCURSEL, 0, 0), CB_ERR);
        EXPECT_EQ(Stored(db_), (Texts{L"1 First {12}", L"3 Third {20}"}));
        EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_DELETE));
        EXPECT_EQ(CheckOf(dlg, L"Custom"), kTreeChecked) << "what is shown stays";
    });
    Press(IDC_UPDATEDWGDATA_SAVE_AS);
    Name(L"Fourth");
    RunTo(IDCANCEL);
    EXPECT_EQ(Stored(db_)[1], L"2 Fourth {-105,13}") << "the id is free again";
}

TEST_F(UpdateDwgDataDlgTest, WhatAnotherHandleDoesToTheSetsMeanwhileIsMet) {
    Store(Set(L"First", {12}));
    Store(Set(L"Second", {13}));
    Store(Set(L"Third", {20}));
    QBaseDb other(file_.c_str());
    Step([&](HWND) {
        PrjDb::Delete(other, 2);
        OptionsRec third = Set(L"Renamed", {21});
        third.id = 3;
        PrjDb::Write(other, third);
    });
    Step([](HWND dlg) {
        SetFocus(Sets(dlg));
        uidriver::Type(L"T");
    });
    Step([](HWND dlg) { EXPECT_EQ(CheckOf(dlg, L"Exhaust flow"), kTreeChecked) << "what is stored now is loaded"; });
    Press(IDC_UPDATEDWGDATA_RENAME);
    AnswerText(L"Renamed", nullptr);
    Step([](HWND dlg) {
        SetFocus(Sets(dlg));
        uidriver::Key(VK_UP);
    });
    ExpectMessage(L"Selection set \"Second\" is no longer in the project.", IDOK);
    Step([](HWND dlg) {
        EXPECT_EQ(Names(dlg), (Texts{L"First", L"Third"}));
        EXPECT_EQ(CheckOf(dlg, L"Exhaust flow"), kTreeChecked) << "what is shown stays";
    });
    Step([](HWND) { uidriver::Type(L"F"); });
    Step([&](HWND dlg) {
        PrjDb::Delete(other, 1);
        uidriver::Click(dlg, IDC_UPDATEDWGDATA_DELETE);
    });
    ExpectMessage(L"Do you really want to delete selection set \"First\"", IDYES);
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg) << "without a word";
        EXPECT_EQ(Names(dlg), Texts{L"Third"});
        SetFocus(Sets(dlg));
        uidriver::Type(L"T");
    });
    Press(IDC_UPDATEDWGDATA_DELETE);
    ExpectMessage(L"Do you really want to delete selection set \"Renamed\"", IDNO);  // what would be lost
    RunTo(IDCANCEL);
}

TEST_F(UpdateDwgDataDlgTest, ASetThatCannotBeReadStaysListed) {
    Store(Set(L"First", {12}));
    Store(Set(L"Second", {13}));
    Step([&](HWND) {
        QBaseDb other(file_.c_str());
        QBaseDb::Rec* const rec = other.findRec("UP", "000001");
        EXPECT_TRUE(other.insertWsz(rec, 1589, L"<UpdateDwgDataType Version=\"1\" Format=\"20161102\"/>"));
        EXPECT_EQ(other.saveRec(rec), 0);
        other.releaseRec(rec);
    });
    for (const int button : {0, IDC_UPDATEDWGDATA_RENAME}) {
        if (button == 0) Choose(0);
        if (button != 0) Press(button);
        ExpectMessage(L"The selection set cannot be read or stored.", IDOK);
        Step([](HWND dlg) { EXPECT_EQ(Names(dlg), (Texts{L"First", L"Second"})); });
    }
    RunTo(IDCANCEL);
}

TEST_F(UpdateDwgDataDlgTest, ADatabaseThatCannotBeWrittenIsReportedAndTheSetsStay) {
    Store(Set(L"Set", {12}));
    db_ = QBaseDb(file_.c_str(), 0);
    QBaseDb other(file_.c_str());
    const QBaseDb::QuickMode busy(other, 1, 1);
    ASSERT_TRUE(busy.IsOpen());
    const auto expectFailure = [this] {
        InNewDialog([this](HWND message) {
            EXPECT_FALSE(db_.GetErrorText().empty());
            EXPECT_EQ(uidriver::Text(GetDlgItem(message, 0xFFFF)), db_.GetErrorText().c_str());
            uidriver::Click(message, IDOK);
        });
        Step([](HWND dlg) { EXPECT_EQ(Names(dlg), Texts{L"Set"}); });
    };
    Choose(0);
    Check(L"Custom");
    Press(IDC_UPDATEDWGDATA_SAVE);
    expectFailure();
    Press(IDC_UPDATEDWGDATA_RENAME);
    Name(L"Other");
    expectFailure();
    Press(IDC_UPDATEDWGDATA_DELETE);
    ExpectMessage(L"Do you really want to delete selection set \"Set\"", IDYES);
    expectFailure();
    RunTo(IDCANCEL);
    EXPECT_EQ(Stored(db_), Texts{L"1 Set {12}"});
}

TEST_F(UpdateDwgDataDlgTest, WhenTheTableIsFullANewSetIsListedThatIsNone) {
    constexpr long kLastId = 32766;
    {
        QBaseDb::QuickMode scope(db_, 1, 1);
        OptionsRec rec = Set(L"Taken", {12});
        for (rec.id = 1; rec.id <= kLastId; ++rec.id)
            ASSERT_TRUE(PrjDb::Write(db_, rec));
        ASSERT_TRUE(scope.End());
    }
    Press(IDC_UPDATEDWGDATA_SAVE_AS);
    Name(L"New");
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg) << "not a word";
        EXPECT_EQ(SendMessageW(Sets(dlg), CB_GETCOUNT, 0, 0), kLastId + 1);
        EXPECT_EQ(Shown(dlg, IDC_UPDATEDWGDATA_SET), L"New");
        EXPECT_EQ(SendMessageW(Sets(dlg), CB_GETITEMDATA, kLastId, 0), 0);
        EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_RENAME));
        EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_DELETE));
    });
    Press(IDC_UPDATEDWGDATA_SAVE);
    AnswerText(L"", nullptr);  // saved as another one
    RunTo(IDCANCEL);
    std::vector<OptionsRec> recs;
    PrjDb::Read(db_, recs);
    EXPECT_EQ(recs.size(), static_cast<std::size_t>(kLastId));
}

TEST_F(UpdateDwgDataDlgTest, SearchNarrowsTheItemsAndEnterChecksTheMatch) {
    Enter(IDC_UPDATEDWGDATA_SEARCH, L"exh");
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::FindTreeItem(Tree(dlg), L"Length"), nullptr);
        uidriver::Key(VK_RETURN);
    });
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg);
        EXPECT_EQ(CheckOf(dlg, L"Exhaust flow"), kTreeChecked);
        EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)) << "as by a click";
    });
    RunTo(IDOK);
    EXPECT_EQ(options_.properties, (Ids{12, 21})) << "with what the search hid";
}

TEST_F(UpdateDwgDataDlgTest, AnItemWithItemsBelowItIsCheckedWithThem) {
    TREE_INSERTLIST2 items = Items();
    items[0].data = 11;
    options_.properties = {11, 20};
    Step([](HWND dlg) { EXPECT_EQ(CheckOf(dlg, L"Flow"), kTreePartial); });
    Press(IDOK);
    EXPECT_TRUE(Run(&items));
    EXPECT_EQ(options_.properties, (Ids{-105, 11, 12, 13, 20}));
}

TEST_F(UpdateDwgDataDlgTest, WithoutItemsItOpensAndWithoutAHostItFails) {
    Press(IDOK);
    Step([](HWND dlg) { EXPECT_EQ(uidriver::TopDialog(), dlg) << "nothing can be checked"; });
    Press(IDCANCEL);
    EXPECT_FALSE(Run(nullptr));
    EXPECT_FALSE(UpdateDwgData::OptionsDlg(parent_, Lng::Hpv, options_, nullptr, db_, nullptr, nullptr));
    EXPECT_EQ(options_.properties, Ids{12});
}

}  // namespace
