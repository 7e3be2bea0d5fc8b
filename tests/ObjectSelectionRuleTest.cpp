#include <gtest/gtest.h>
#include <occommonui/ObjectSelection.h>
#include <windows.h>

#include <commctrl.h>
#include <orvatool/Gw.h>

#include <cstdint>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "objectselection_ids.h"
#include "support/SelectionTest.h"

namespace {

namespace Dlg = ObjectSelection::Dlg;
using ObjectSelection::Property;
using Criteria = std::vector<Property::Criterion>;
using Messages = std::vector<Dlg::CbMsgId>;

constexpr int kAskTree = 104;  // the tree of the question for a value

HWND Tree(HWND dlg) {
    return uidriver::Control(dlg, IDC_OBJSELPROP_PROPERTIES);
}
HWND List(HWND dlg) {
    return uidriver::Control(dlg, IDC_OBJSELPROP_CRITERIA);
}
Texts Operators(HWND dlg) {
    return uidriver::ListColumn(List(dlg), 0);
}
Texts Values(HWND dlg) {
    return uidriver::ListColumn(List(dlg), 1);
}
std::wstring Preview(HWND dlg) {
    return Shown(dlg, IDC_OBJSELPROP_PREVIEW);
}
std::wstring Selected(HWND dlg) {
    return gwTVgetText(Tree(dlg), TreeView_GetSelection(Tree(dlg))).c_str();
}
/// Picks an entry as the user does who types its beginning.
void PickEntry(HWND dlg, int ctrlId, const wchar_t* text) {
    const HWND combo = uidriver::Control(dlg, ctrlId);
    ASSERT_TRUE(IsWindowVisible(combo) && IsWindowEnabled(combo));
    SetFocus(combo);
    ASSERT_GE(SendMessageW(combo, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text)), 0);
    SendMessageW(dlg, WM_COMMAND, MAKEWPARAM(ctrlId, CBN_SELCHANGE), reinterpret_cast<LPARAM>(combo));
}
/// The user's decimal separator, in a scope.
class DecimalSeparator {
public:
    explicit DecimalSeparator(const wchar_t* separator) {
        GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, before_, 8);
        SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator);
    }
    ~DecimalSeparator() { SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, before_); }
    DecimalSeparator(const DecimalSeparator&) = delete;
    DecimalSeparator& operator=(const DecimalSeparator&) = delete;

private:
    wchar_t before_[8] = L"";
};

Property::Criterion Criterion(short operation, const wchar_t* value) {
    return {operation, value};
}

Property Rule(int propId, Criteria criteria) {
    Property rule;
    rule.propId = propId;
    rule.criteria = std::move(criteria);
    return rule;
}

Property AirFlow() {
    Property rule = Rule(12, {Criterion(Property::Greater, L"100.25"), Criterion(Property::Less, L"200")});
    rule.matchAll = true;
    rule.tolerance = 0.5;
    return rule;
}

template <class T>
T& At(std::int64_t lParam) {
    return *reinterpret_cast<T*>(lParam);
}

class RuleEditorTest : public SelectionTest {
protected:
    RuleEditorTest() : SelectionTest(IDC_OBJSEL_CATEGORIES) {
        host_.On(Dlg::GetProperties, [this](std::uint64_t, std::int64_t lParam) {
            At<std::vector<Dlg::PropertyEntry>>(lParam) = properties_;
            return 0;
        });
        host_.On(Dlg::GetPropertyKind, [this](std::uint64_t index, std::int64_t) {
            return kinds_.contains(index) ? kinds_[index] : Dlg::TextValue;
        });
        host_.On(Dlg::GetPropertyName, [this](std::uint64_t id, std::int64_t lParam) {
            for (const Dlg::PropertyEntry& property : properties_) {
                if (property.id == static_cast<std::int32_t>(id)) At<ustr>(lParam) = property.name;
            }
            return 0;
        });
        host_.On(Dlg::GetValueText, [this](std::uint64_t, std::int64_t lParam) {
            At<Dlg::ValueText>(lParam).text.append(unit_);
            return 0;
        });
        host_.On(Dlg::GetPropertyValues, [this](std::uint64_t, std::int64_t lParam) {
            At<std::vector<Dlg::ValueEntry>>(lParam) = values_;
            return 0;
        });
    }

    void Choose(const wchar_t* property) {
        Step([=](HWND dlg) { ClickInTree(Tree(dlg), property); });
    }
    void ExpectValues(const Texts& texts) {
        Step([=](HWND dlg) { EXPECT_EQ(Values(dlg), texts); });
    }
    int Run() {
        return RunSteps([&] { return Dlg::Edit(Lng::Electrical, parent_, host_.Callback(), rule_); });
    }
    void RunToOk() {
        Press(IDOK);
        EXPECT_EQ(Run(), 0);
    }

    std::vector<Dlg::PropertyEntry> properties_{
        {1,  L"Layer",        L""            },
        {12, L"Air flow",     L"Flow"        },
        {13, L"Débit d'eau", L"Flow"        },
        {20, L"Product",      L"Product data"},
        {21, L"Pressure",     L"Flow"        },
        {30, L"System",       L"Product data"},
    };
    std::map<std::uint64_t, std::int64_t> kinds_{
        {1, Dlg::NumberValue},
        {2, Dlg::NumberValue},
        {5, Dlg::ChoiceValue}
    };
    std::vector<Dlg::ValueEntry> values_{
        {L"S1",  L"Supply 1", 0},
        {L"S1a", L"Branch",   1},
        {L"E1",  L"",         0}
    };
    std::wstring unit_;
    Property rule_ = AirFlow();
};

TEST_F(RuleEditorTest, ShowsTheRuleAndGivesItBackUnchangedOnOk) {
    unit_ = L" l/s";
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Object selection set property - OrvaCAD Electrical");
        EXPECT_EQ(Selected(dlg), L"Air flow");
        EXPECT_EQ(Operators(dlg), (Texts{L"Greater than", L"Less than"}));
        EXPECT_EQ(Values(dlg), (Texts{L"100.25 l/s", L"200 l/s"}));
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_VALUE), L"100.25");
        EXPECT_TRUE(HasFocus(dlg, IDC_OBJSELPROP_VALUE));
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_ANY), L"OR (Any rule may be true)");
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_ALL), L"AND (All rules must be true)");
        EXPECT_FALSE(IsChecked(dlg, IDC_OBJSELPROP_ANY));
        EXPECT_TRUE(IsChecked(dlg, IDC_OBJSELPROP_ALL));
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_TOLERANCE), L"0.5");
        EXPECT_EQ(Preview(dlg), L"Air flow: greater than 100.25 l/s and less than 200 l/s (tolerance 0.5)");
    });
    RunToOk();
    EXPECT_EQ(rule_, AirFlow());
    const Messages first = {Dlg::GetProperties, Dlg::GetPropertyKind, Dlg::SetUpEditor};
    ASSERT_EQ(host_.Order(first), first);
    EXPECT_EQ(host_.asked[1].wParam, 1u) << "the index in the list";
}

TEST_F(RuleEditorTest, ANewRuleIsMadeFromTheKeyboard) {
    rule_ = Property();
    Step([](HWND dlg) {
        EXPECT_TRUE(HasFocus(dlg, IDC_OBJSELPROP_SEARCH));
        EXPECT_EQ(Operators(dlg), (Texts{L"Equal to"})) << "a first criterion stands ready";
        EXPECT_EQ(Preview(dlg), L"");
        EXPECT_FALSE(Enabled(dlg, IDC_OBJSELPROP_CHOOSE)) << "of no property";
        uidriver::Type(L"debit");
    });
    Step([](HWND dlg) {
        EXPECT_EQ(Selected(dlg), L"Débit d'eau");
        EXPECT_TRUE(Visible(dlg, IDC_OBJSELPROP_TOLERANCE)) << "it is a number";
    });
    Key(VK_RETURN);
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg) << "Enter takes what the search has found";
        EXPECT_TRUE(HasFocus(dlg, IDC_OBJSELPROP_VALUE));
        uidriver::Type(L"12.5");
    });
    Step([](HWND dlg) {
        EXPECT_EQ(Values(dlg), (Texts{L"12.5"}));
        EXPECT_EQ(Preview(dlg), L"Débit d'eau: equal to 12.5");
    });
    Key(VK_RETURN);
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(rule_, Rule(13, {Criterion(Property::Equal, L"12.5")}));
}

TEST_F(RuleEditorTest, CancelAndFailureLeaveTheRule) {
    Enter(IDC_OBJSELPROP_VALUE, L"7");
    Choose(L"Layer");
    Press(IDC_OBJSELPROP_INSERT);
    Key(VK_ESCAPE);
    EXPECT_EQ(Run(), -1);
    EXPECT_EQ(rule_, AirFlow());

    EXPECT_EQ(Dlg::Edit(Lng::Hpv, nullptr, nullptr, rule_), -1) << "no host";
    EXPECT_EQ(Dlg::Edit(Lng::Hpv, GoneWindow(), host_.Callback(), rule_), -1);
    EXPECT_EQ(rule_, AirFlow());
}

TEST_F(RuleEditorTest, OkRefusesWhatIsMissingOrWrongOneAfterTheOther) {
    rule_ = Property();
    ExpectRefused(IDC_OBJSELPROP_PROPERTIES);
    Choose(L"Flow");
    ExpectRefused(IDC_OBJSELPROP_PROPERTIES);  // a heading
    Choose(L"Pressure");
    ExpectRefused(IDC_OBJSELPROP_VALUE);
    Press(IDC_OBJSELPROP_REMOVE);
    ExpectRefused(IDC_OBJSELPROP_CRITERIA);
    Press(IDC_OBJSELPROP_INSERT);
    Step([](HWND) { uidriver::Type(L"high"); });
    Choose(L"Air flow");
    ExpectRefused(IDC_OBJSELPROP_VALUE);  // no number
    Enter(IDC_OBJSELPROP_VALUE, L"5");
    for (const wchar_t* tolerance : {L"-1", L"x", L"1e999"}) {
        Enter(IDC_OBJSELPROP_TOLERANCE, tolerance);
        ExpectRefused(IDC_OBJSELPROP_TOLERANCE);
    }
    Enter(IDC_OBJSELPROP_TOLERANCE, L" .25");
    RunToOk();
    EXPECT_EQ(rule_.propId, 12);
    EXPECT_EQ(rule_.tolerance, 0.25);
    EXPECT_EQ(rule_.criteria, Criteria{Criterion(Property::Equal, L"5")});
}

TEST_F(RuleEditorTest, OkGoesToTheRowThatIsRefused) {
    rule_.criteria[1].value = L"much";
    ExpectRefused(IDC_OBJSELPROP_VALUE);
    Step([](HWND dlg) {
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_VALUE), L"much");
        PickEntry(dlg, IDC_OBJSELPROP_OPERATOR, L"Is not empty");
    });
    Step([](HWND dlg) {
        EXPECT_FALSE(Enabled(dlg, IDC_OBJSELPROP_VALUE)) << "the operation needs none";
        EXPECT_FALSE(Enabled(dlg, IDC_OBJSELPROP_CHOOSE));
        EXPECT_EQ(Values(dlg), (Texts{L"100.25", L""}));
    });
    RunToOk();
    EXPECT_EQ(rule_.criteria[1].operation, Property::IsNotEmpty);
}

TEST_F(RuleEditorTest, CriteriaAreInsertedAndRemovedByButtonKeyAndMenu) {
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 0); });
    Key(VK_INSERT);
    Step([](HWND dlg) {
        EXPECT_TRUE(HasFocus(dlg, IDC_OBJSELPROP_VALUE));
        uidriver::Type(L"1");
    });
    ExpectValues({L"100.25", L"1", L"200"});
    Step([](HWND dlg) { SetFocus(List(dlg)); });
    InMenu([this] { return List(dlg_); }, {L"Insert\tIns", L"Remove"},
           [] {
               uidriver::Key(VK_DOWN);
               uidriver::Key(VK_RETURN);
           });
    ExpectValues({L"100.25", L"1", L"", L"200"});
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 1); });
    Key(VK_DOWN, {VK_SHIFT});
    Step([](HWND dlg) {
        EXPECT_EQ(ListView_GetSelectedCount(List(dlg)), 2u);
        EXPECT_FALSE(Enabled(dlg, IDC_OBJSELPROP_VALUE)) << "of several rows none is edited";
    });
    Key(VK_DELETE);
    Step([](HWND dlg) {
        EXPECT_EQ(Values(dlg), (Texts{L"100.25", L"200"}));
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_VALUE), L"200") << "the next row is selected";
    });
    Press(IDC_OBJSELPROP_REMOVE);
    Step([](HWND dlg) { SetFocus(List(dlg)); });
    Key(VK_F2);
    Step([](HWND dlg) { SendDlgItemMessageW(dlg, IDC_OBJSELPROP_VALUE, EM_SETSEL, 0, 1); });
    Key(VK_DELETE);  // in the value: of its text
    Press(IDC_OBJSELPROP_ANY);
    RunToOk();
    EXPECT_EQ(rule_.criteria, Criteria{Criterion(Property::Greater, L"00.25")});
    EXPECT_FALSE(rule_.matchAll);
}

TEST_F(RuleEditorTest, OffersTheOperationsAndOptionsOfTheKindOfValues) {
    const Texts numbers{L"Equal to",     L"Not equal to",
                        L"Less than",    L"Less than or equal to",
                        L"Greater than", L"Greater than or equal to",
                        L"Is empty",     L"Is not empty"};
    Step([=](HWND dlg) {
        EXPECT_EQ(ComboTexts(dlg, IDC_OBJSELPROP_OPERATOR), numbers);
        EXPECT_TRUE(Visible(dlg, IDC_OBJSELPROP_TOLERANCE));
        EXPECT_FALSE(Visible(dlg, IDC_OBJSELPROP_CASE));
    });
    Choose(L"Layer");
    Step([](HWND dlg) {
        EXPECT_EQ(ComboTexts(dlg, IDC_OBJSELPROP_OPERATOR).size(), 12u);
        EXPECT_FALSE(Visible(dlg, IDC_OBJSELPROP_TOLERANCE));
        EXPECT_TRUE(Visible(dlg, IDC_OBJSELPROP_CASE));
        EXPECT_EQ(Preview(dlg), L"Layer: greater than 100.25 and less than 200") << "the tolerance was of numbers";
        PickEntry(dlg, IDC_OBJSELPROP_OPERATOR, L"Contains");
    });
    Press(IDC_OBJSELPROP_CASE);
    Choose(L"System");
    Step([](HWND dlg) {
        EXPECT_EQ(ComboTexts(dlg, IDC_OBJSELPROP_OPERATOR),
                  (Texts{L"Equal to", L"Not equal to", L"Is empty", L"Is not empty", L"Contains"}))
            << "what is in use stays";
        EXPECT_TRUE(Visible(dlg, IDC_OBJSELPROP_CHOICE));
        EXPECT_FALSE(Visible(dlg, IDC_OBJSELPROP_VALUE));
        EXPECT_FALSE(Visible(dlg, IDC_OBJSELPROP_CASE));
    });
    Choose(L"Layer");
    RunToOk();
    EXPECT_EQ(rule_.propId, 1);
    EXPECT_TRUE(rule_.caseSensitive);
    EXPECT_EQ(rule_.tolerance, 0);
    EXPECT_EQ(rule_.criteria[0].operation, Property::Contains);
}

TEST_F(RuleEditorTest, AChoiceIsShownByItsTextAndStoredByItsValue) {
    rule_.propId = 30;
    rule_.criteria = {Criterion(Property::Equal, L"S1a"), Criterion(Property::Equal, L"old")};
    Step([](HWND dlg) {
        EXPECT_EQ(Values(dlg), (Texts{L"Branch", L"old"}));
        EXPECT_EQ(ComboTexts(dlg, IDC_OBJSELPROP_CHOICE), (Texts{L"Supply 1", L"  Branch", L"E1", L"old"}));
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_CHOICE), L"  Branch");
        EXPECT_EQ(Preview(dlg), L"System: equal to Branch and equal to old (tolerance 0.5)");
        PickEntry(dlg, IDC_OBJSELPROP_CHOICE, L"E1");
    });
    RunToOk();
    EXPECT_EQ(rule_.criteria, (Criteria{Criterion(Property::Equal, L"E1"), Criterion(Property::Equal, L"old")}));
    EXPECT_EQ(rule_.tolerance, 0.5) << "what is not offered stays as it is";

    rule_ = AirFlow();
    Enter(IDC_OBJSELPROP_SEARCH, L"system");
    Step([](HWND dlg) {
        EXPECT_EQ(ComboTexts(dlg, IDC_OBJSELPROP_CHOICE), (Texts{L"Supply 1", L"  Branch", L"E1"}))
            << "values of another property are none of this one";
    });
    Press(IDOK);
    Step([](HWND dlg) { EXPECT_EQ(uidriver::TopDialog(), dlg); });
    Press(IDCANCEL);
    EXPECT_EQ(RunSteps([this] { return Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), rule_); }), -1);
}

TEST_F(RuleEditorTest, OfManyChoicesTheValueIsChosenInATree) {
    values_.clear();
    for (int i = 0; i < 2000; ++i)
        values_.push_back({std::to_wstring(i).c_str(), (L"System " + std::to_wstring(i)).c_str(), i});
    rule_.propId = 30;
    rule_.criteria = {Criterion(Property::Equal, L"1999")};
    Step([](HWND dlg) {
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_VALUE), L"System 1999");
        EXPECT_TRUE(GetWindowLongW(uidriver::Control(dlg, IDC_OBJSELPROP_VALUE), GWL_STYLE) & ES_READONLY);
    });
    Press(IDC_OBJSELPROP_CHOOSE);
    InNewDialog([](HWND ask) {
        EXPECT_EQ(uidriver::Text(ask), L"System - OrvaCAD Electrical");
        const HWND tree = uidriver::Control(ask, kAskTree);
        TreeView_SelectItem(tree, uidriver::FindTreeItem(tree, L"System 3"));
        uidriver::Click(ask, IDOK);
    });
    Step([](HWND dlg) { EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_VALUE), L"System 3"); });
    RunToOk();
    EXPECT_EQ(rule_.criteria[0].value, L"3");
}

TEST_F(RuleEditorTest, TheHostMayChooseTheValueItself) {
    host_.On(Dlg::ChooseValue, [this](std::uint64_t wParam, std::int64_t lParam) {
        auto& choice = *reinterpret_cast<Dlg::ValueChoice*>(wParam);
        EXPECT_EQ(reinterpret_cast<HWND>(lParam), dlg_);
        EXPECT_EQ(choice.propId, 12);
        EXPECT_EQ(choice.value, L"100.25");
        choice.value = L"300";
        return 1;
    });
    Press(IDC_OBJSELPROP_CHOOSE);
    ExpectValues({L"300", L"200"});
    RunToOk();
    EXPECT_EQ(host_.Count(Dlg::GetPropertyValues), 0);
    EXPECT_EQ(rule_.criteria[0].value, L"300");
}

TEST_F(RuleEditorTest, WithoutValuesToChooseFromTheUserIsToldToTypeOne) {
    values_.clear();
    rule_.propId = 30;
    Step([](HWND dlg) { EXPECT_TRUE(Visible(dlg, IDC_OBJSELPROP_VALUE)); });
    Press(IDC_OBJSELPROP_CHOOSE);
    ExpectMessage(L"The project has no values of this property to choose from.\nType the value instead.");
    Enter(IDC_OBJSELPROP_VALUE, L"typed");
    RunToOk();
    EXPECT_EQ(rule_.criteria[0].value, L"typed");
}

TEST_F(RuleEditorTest, NumbersAreShownWithTheUsersSeparatorAndStoredWithAPoint) {
    const DecimalSeparator comma(L",");
    Step([](HWND dlg) {
        EXPECT_EQ(Values(dlg), (Texts{L"100,25", L"200"}));
        EXPECT_EQ(Shown(dlg, IDC_OBJSELPROP_TOLERANCE), L"0,5");
        EXPECT_EQ(Preview(dlg), L"Air flow: greater than 100,25 and less than 200 (tolerance 0,5)");
    });
    Enter(IDC_OBJSELPROP_VALUE, L" 1,5 ");
    Enter(IDC_OBJSELPROP_TOLERANCE, L"0,125");
    Step([](HWND dlg) { uidriver::ClickListRow(List(dlg), 1); });
    Enter(IDC_OBJSELPROP_VALUE, L"1.000,5");
    ExpectRefused(IDC_OBJSELPROP_VALUE);
    Enter(IDC_OBJSELPROP_VALUE, L"2.5");
    RunToOk();
    EXPECT_EQ(rule_.criteria, (Criteria{Criterion(Property::Greater, L"1.5"), Criterion(Property::Less, L"2.5")}));
    EXPECT_EQ(rule_.tolerance, 0.125);
}

TEST_F(RuleEditorTest, WhatIsUnknownIsNamedAndKept) {
    rule_.propId = 77;
    rule_.caseSensitive = true;
    rule_.criteria = {Criterion(99, L"a\tb"), Criterion(-5, L"c")};
    const Property before = rule_;
    Step([](HWND dlg) {
        EXPECT_EQ(Selected(dlg), L"Unknown property 77");
        EXPECT_EQ(Operators(dlg), (Texts{L"Unknown operation 99", L"Unknown operation -5"}));
        EXPECT_EQ(Preview(dlg),
                  L"Unknown property 77: unknown operation 99 a\tb and unknown operation -5 c (tolerance 0.5) (case "
                  L"sensitive)");
    });
    Choose(L"Layer");
    Choose(L"Unknown property 77");
    RunToOk();
    EXPECT_EQ(rule_, before);
    EXPECT_EQ(host_.Count(Dlg::GetPropertyKind), 1) << "the host knows indices of its own list only";
}

TEST_F(RuleEditorTest, TheHostMayAlterWhatIsOffered) {
    std::vector<HWND> dialogs;
    host_.On(Dlg::SetUpEditor, [&](std::uint64_t wParam, std::int64_t lParam) {
        auto& setup = *reinterpret_cast<Dlg::EditorSetup*>(wParam);
        dialogs.push_back(setup.dialog);
        EXPECT_EQ(setup.offerTolerance, At<const Property>(lParam).propId == 12);
        setup.kind = Dlg::NumberValue;
        setup.offerTolerance = setup.offerCaseSensitive = true;
        return 0;
    });
    Choose(L"Layer");
    Step([](HWND dlg) {
        EXPECT_TRUE(Visible(dlg, IDC_OBJSELPROP_TOLERANCE));
        EXPECT_TRUE(Visible(dlg, IDC_OBJSELPROP_CASE));
        EXPECT_EQ(ComboTexts(dlg, IDC_OBJSELPROP_OPERATOR).size(), 8u);
    });
    Press(IDC_OBJSELPROP_CASE);
    RunToOk();
    EXPECT_EQ(dialogs, (std::vector<HWND>{dlg_, dlg_}));
    EXPECT_EQ(rule_.tolerance, 0.5);
    EXPECT_TRUE(rule_.caseSensitive);
}

TEST_F(RuleEditorTest, ASearchMovesToWhatItFindsAndEscGoesBack) {
    Enter(IDC_OBJSELPROP_SEARCH, L"layer");
    Step([](HWND dlg) { EXPECT_EQ(Preview(dlg), L"Layer: greater than 100.25 and less than 200"); });
    Enter(IDC_OBJSELPROP_SEARCH, L"no such property");
    Step([](HWND dlg) { EXPECT_EQ(Preview(dlg), L""); });
    Key(VK_ESCAPE);
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::TopDialog(), dlg) << "Esc empties the search first";
        EXPECT_EQ(Selected(dlg), L"Air flow");
    });
    RunToOk();
    EXPECT_EQ(rule_, AirFlow());

    Enter(IDC_OBJSELPROP_SEARCH, L"layer");
    Step([](HWND dlg) { SetFocus(uidriver::Control(dlg, IDC_OBJSELPROP_SEARCH)); });
    Key(VK_RETURN);
    Enter(IDC_OBJSELPROP_SEARCH, L"");
    Step([](HWND dlg) { EXPECT_EQ(Selected(dlg), L"Layer") << "Enter has taken it"; });
    RunToOk();
    EXPECT_NE(rule_.propId, AirFlow().propId);

    rule_ = AirFlow();
    rule_.propId = 0;
    Enter(IDC_OBJSELPROP_SEARCH, L"flow");
    Step([](HWND dlg) { EXPECT_EQ(Selected(dlg), L"Air flow") << "not its heading"; });
    RunToOk();
    EXPECT_EQ(rule_, AirFlow());
}

TEST_F(RuleEditorTest, AHostThatFailsIsOneThatAnswersNothing) {
    const Dlg::Callback host = host_.Callback();
    const auto fillsAndThrows = [=](Dlg::CbMsgId message, std::uint64_t wParam, std::int64_t lParam) -> std::int64_t {
        host(message, wParam, lParam);
        throw std::runtime_error("the host fails");
    };
    Step([](HWND dlg) {
        EXPECT_EQ(Selected(dlg), L"Unknown property 12");
        EXPECT_EQ(TreeView_GetCount(Tree(dlg)), 1u);
        EXPECT_EQ(Values(dlg), (Texts{L"100.25", L"200"}));
    });
    Press(IDC_OBJSELPROP_CHOOSE);
    InNewDialog([](HWND) { uidriver::Key(VK_RETURN); });
    Press(IDOK);
    EXPECT_EQ(RunSteps([&] { return Dlg::Edit(Lng::Hpv, parent_, fillsAndThrows, rule_); }), 0);
    EXPECT_EQ(rule_, AirFlow());
}

TEST_F(RuleEditorTest, BearsWithNonsenseAndVeryLongLists) {
    properties_.clear();
    for (int i = 0; i < 20'000; ++i)
        properties_.push_back({i % 100, i % 7 ? L"Same name" : L"", i % 3 ? L"Group" : L""});
    for (std::uint64_t i = 0; i < 20'000; ++i)
        kinds_[i] = i % 2 ? INT64_MIN : 3;
    host_.On(Dlg::SetUpEditor, [](std::uint64_t wParam, std::int64_t) {
        reinterpret_cast<Dlg::EditorSetup*>(wParam)->kind = static_cast<Dlg::PropertyKind>(-9);
        return 0;
    });
    rule_.criteria.assign(20'000, {Property::Contains, L"x"});
    const Property before = rule_;
    Step([](HWND dlg) {
        SendMessageW(Tree(dlg), WM_KEYDOWN, VK_SHIFT, 0);  // rows that are still to come do so at once
        EXPECT_EQ(TreeView_GetCount(Tree(dlg)), 20'001u);
        EXPECT_EQ(ListView_GetItemCount(List(dlg)), 20'000);
        EXPECT_EQ(ComboTexts(dlg, IDC_OBJSELPROP_OPERATOR).size(), 12u);
        EXPECT_NE(Preview(dlg).find(L" ... (20000 in all)"), std::wstring::npos) << "told in short";
    });
    RunToOk();
    EXPECT_EQ(rule_, before);
}

TEST_F(RuleEditorTest, ReopensWhereTheUserLeftIt) {
    const auto open = [this] { return Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), rule_); };
    ExpectOpensWhereItWasLeft(open, open);
}

// ---- The list of rules, in the dialog of a selection

HWND Rules(HWND dlg) {
    return uidriver::Control(dlg, IDC_OBJSEL_FILTER);
}

/// The text of the tip that a list shows when the mouse rests on a row.
std::wstring TipOf(HWND list, int row) {
    RECT rect{};
    ListView_GetItemRect(list, row, &rect, LVIR_BOUNDS);
    SendMessageW(list, WM_MOUSEMOVE, 0, MAKELPARAM(rect.left + 40, (rect.top + rect.bottom) / 2));
    struct Question {
        HWND list;
        wchar_t text[512];
    } question{list, L""};
    const auto ask = [](HWND window, LPARAM parameter) -> BOOL {
        Question& asked = *reinterpret_cast<Question*>(parameter);
        TTTOOLINFOW tool{};
        tool.cbSize = TTTOOLINFOW_V2_SIZE;
        tool.hwnd = asked.list;
        tool.uId = reinterpret_cast<UINT_PTR>(asked.list);
        tool.lpszText = asked.text;
        wchar_t name[64] = L"";
        GetClassNameW(window, name, 64);
        if (lstrcmpiW(name, TOOLTIPS_CLASSW) == 0)
            SendMessageW(window, TTM_GETTEXTW, 512, reinterpret_cast<LPARAM>(&tool));
        return asked.text[0] == L'\0';
    };
    EnumThreadWindows(GetCurrentThreadId(), ask, reinterpret_cast<LPARAM>(&question));
    return question.text;
}

class FilterRulesTest : public RuleEditorTest {
protected:
    FilterRulesTest() {
        data_.filterRules = {Rule(12, {Criterion(Property::Greater, L"100"), Criterion(Property::Less, L"200")}),
                             Rule(1, {Criterion(Property::Contains, L"DUCT")}),
                             Rule(77, {Criterion(Property::IsEmpty, L"")})};
        Pick(L"Data filter");
    }
    /// Runs the steps in the dialog of the selection, up to this button.
    void RunSelection(int button = IDOK) {
        Press(button);
        const auto open = [&] { return Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), data_, 0); };
        EXPECT_EQ(RunSteps(open), button == IDOK ? 0 : -1);
    }
    void ExpectRows(const Texts& texts) {
        Step([texts](HWND dlg) { EXPECT_EQ(uidriver::ListColumn(Rules(dlg), 0), texts); });
    }
    void ClickRow(int row) {
        Step([row](HWND dlg) { uidriver::ClickListRow(Rules(dlg), row); });
    }
    /// In the rule editor that has opened: chooses a property, gives a value and confirms.
    void EditRule(const wchar_t* property, const wchar_t* value) {
        InNewDialog([=](HWND editor) { ClickInTree(Tree(editor), property); });
        Step([=] { uidriver::SetText(uidriver::TopDialog(), IDC_OBJSELPROP_VALUE, value); });
        Step([] { uidriver::Click(uidriver::TopDialog(), IDOK); });
    }

    ObjectSelection::Data data_ = CurrentDrawing();
};

TEST_F(FilterRulesTest, ShowsPropertyOperatorAndValueOfEachRuleAndTellsItInATip) {
    unit_ = L" mm";
    data_.filterRules[0].matchAll = true;
    data_.filterRules[1].caseSensitive = true;
    Step([](HWND dlg) {
        ASSERT_TRUE(IsWindowVisible(Rules(dlg)));
        EXPECT_EQ(uidriver::ListColumn(Rules(dlg), 0), (Texts{L"Air flow", L"Layer", L"Unknown property 77"}));
        EXPECT_EQ(uidriver::ListColumn(Rules(dlg), 1), (Texts{L"Multiple filter rules", L"Contains", L"Is empty"}));
        EXPECT_EQ(uidriver::ListColumn(Rules(dlg), 2), (Texts{L"", L"DUCT mm", L""}));
        RedrawWindow(Rules(dlg), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        EXPECT_EQ(TipOf(Rules(dlg), 0), L"Air flow: greater than 100 mm and less than 200 mm");
        EXPECT_EQ(TipOf(Rules(dlg), 1), L"Layer: contains DUCT mm (case sensitive)");
        EXPECT_EQ(TipOf(Rules(dlg), 2), L"Unknown property 77: is empty");
    });
    const ObjectSelection::Data before = data_;
    RunSelection();
    EXPECT_EQ(data_, before);
    EXPECT_EQ(host_.Count(Dlg::GetPropertyName), 3) << "once a property";
}

TEST_F(FilterRulesTest, AddsAtTheSelectedRowOrAtTheEnd) {
    Step([](HWND dlg) { SetFocus(Rules(dlg)); });
    Key(VK_INSERT);
    EditRule(L"Product", L"P1");
    ExpectRows({L"Air flow", L"Layer", L"Unknown property 77", L"Product"});
    ClickRow(1);
    Key(VK_INSERT);
    EditRule(L"Pressure", L"5");
    ExpectRows({L"Air flow", L"Pressure", L"Layer", L"Unknown property 77", L"Product"});
    Step([](HWND dlg) { EXPECT_EQ(ListView_GetNextItem(Rules(dlg), -1, LVNI_SELECTED), 1) << "the new one"; });
    Key(VK_INSERT);
    InNewDialog([](HWND editor) { uidriver::Click(editor, IDCANCEL); });
    RunSelection();
    ASSERT_EQ(data_.filterRules.size(), 5u);
    EXPECT_EQ(data_.filterRules[1], Rule(21, {Criterion(Property::Equal, L"5")}));
    EXPECT_EQ(data_.filterRules[4], Rule(20, {Criterion(Property::Equal, L"P1")}));
}

TEST_F(FilterRulesTest, EditsByDoubleClickEnterAndF2) {
    Step([](HWND dlg) { uidriver::ClickListRow(Rules(dlg), 1, false, true); });
    EditRule(L"Layer", L"PIPE");
    Key(VK_RETURN);
    EditRule(L"Pressure", L"PIPE");
    ExpectRows({L"Air flow", L"Pressure", L"Unknown property 77"});
    Key(VK_F2);
    InNewDialog([](HWND editor) {
        EXPECT_EQ(Operators(editor), (Texts{L"Contains"}));
        uidriver::Click(editor, IDCANCEL);
    });
    RunSelection();
    EXPECT_EQ(data_.filterRules[1], Rule(21, {Criterion(Property::Contains, L"PIPE")}));
}

TEST_F(FilterRulesTest, DeletesEverySelectedRow) {
    const std::vector<Property> rules = data_.filterRules;
    for (int i = 0; i < 3; ++i)
        data_.filterRules.insert(data_.filterRules.end(), rules.begin(), rules.end());
    ClickRow(1);
    Key(VK_DOWN, {VK_SHIFT});
    Step([](HWND dlg) { ListView_SetItemState(Rules(dlg), 10, LVIS_SELECTED, LVIS_SELECTED); });
    Key(VK_DELETE);
    ExpectRows({L"Air flow", L"Air flow", L"Layer", L"Unknown property 77", L"Air flow", L"Layer",
                L"Unknown property 77", L"Air flow", L"Unknown property 77"});
    Step([](HWND dlg) { EXPECT_EQ(ListView_GetNextItem(Rules(dlg), -1, LVNI_SELECTED), 1); });
    Key('A', {VK_CONTROL});
    Key(VK_DELETE);
    ExpectRows({});
    Key(VK_DELETE);
    RunSelection();
    EXPECT_TRUE(data_.filterRules.empty());
}

TEST_F(FilterRulesTest, AsksTheHostForTheRowsThatAreSeenOnly) {
    data_.filterRules.clear();
    for (int id = 0; id < 100'000; ++id)
        data_.filterRules.push_back(Rule(id, {Criterion(Property::Contains, L"x")}));
    Step([](HWND dlg) { EXPECT_EQ(ListView_GetItemCount(Rules(dlg)), 100'000); });
    Key(VK_END);
    RunSelection(IDCANCEL);
    EXPECT_GT(host_.Count(Dlg::GetPropertyName), 0);
    EXPECT_LT(host_.Count(Dlg::GetPropertyName), 200);
    EXPECT_LT(host_.Count(Dlg::GetValueText), 2000);
}

}  // namespace
