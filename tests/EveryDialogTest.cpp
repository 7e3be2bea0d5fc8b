#include <gtest/gtest.h>
#include <occommonui/occommonui.h>
#include <orvatool/AskValueDlg.h>
#include <orvatool/InterApp.h>
#include <orvatool/SimpleReportOuputDlg.h>
#include <windows.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "support/SelectionTest.h"

// What every dialog gives its user, checked on each of them. A new dialog is one row here.

namespace {

TREE_INSERTLIST Rows() {
    TREE_INSERTLIST list;
    for (int group = 0; group < 3; ++group) {
        list.push_back(0, 0, Lng::Hpv, -1, ustr(L"Group"));
        for (int i = 1; i <= 20; ++i)
            list.push_back(1, group * 20 + i, Lng::Hpv, -1, ustr(L"Property"));
    }
    return list;
}

void CustomPropertyOptions(HWND parent) {
    const TREE_INSERTLIST properties = Rows();
    CustomProperty::Data data;
    data.name = L"Name";
    data.format = L"a {1|mm} b {2}";
    CustomProperty::Dlg::Options(parent, Lng::Hpv, &properties, data);
}

/// What follows the texts of a question.
template <class... Arguments>
void Ask(HWND parent, Arguments&&... arguments) {
    AskValueDlg::Run(parent, Lng::Hpv, Lng::text(kLibraryTexts, 11412, L"Constant text"),
                     Lng::text(kLibraryTexts, 11414, L"Text:"), arguments...);
}

void AskText(HWND parent) {
    ustr value = L"value";
    Ask(parent, value);
}

void AskChoice(HWND parent) {
    ValueList choices;
    for (int i = 0; i < 40; ++i)
        choices.emplace_back(L"Choice", i);
    std::int64_t value = 3;
    Ask(parent, choices, value);
}

void AskTree(HWND parent) {
    const TREE_INSERTLIST choices = Rows();
    std::int64_t value = 3;
    Ask(parent, choices, value);
}

template <ReportType type>
void EditTemplate(HWND parent) {
    ReportTemplate::Context context;
    context.objects = Rows();
    for (int i = 1; i <= 40; ++i)
        context.properties.emplace_back(L"Property", i);
    ReportDefinitionType definition;
    SetFixedText<&ReportDefinitionType::name>(definition, L"Ducts");
    for (std::int16_t i = 0; i < 12; ++i) {
        definition.columns[i].propId = static_cast<std::int16_t>(i + 1);
        definition.columns[i].len = 20;
    }
    definition.columnCount = 12;
    ReportTemplate::Edit(parent, Lng::Hpv, type, &definition, sizeof definition, &context, nullptr);
}

void EditColumn(HWND parent) {
    oce_columntype column;
    column.propId = 7001;
    column.len = 15;
    ReportTemplate::EditColumn(parent, &column, L"Property", Legend);
}

void ShowSimpleReport(HWND parent) {
    SimpleReport report(L"EveryDialog");
    report.SetTitle(Lng::text(kSharedTexts, 60258, L"Warnings"));
    report.SetAppID(Lng::Hpv);
    report.AddColumn(Lng::text(kSharedTexts, 60259, L"Category"), 200);
    report.AddColumn(Lng::text(kSharedTexts, 42954, L"Warning"), 600);
    for (int i = 0; i < 50; ++i) {
        const int row = report.AddRow();
        report.SetText(row, 0, L"Category");
        report.SetText(row, 1, L"The object has no size.");
    }
    SimpleReportOuputDlg::Run(parent, report, {});
}

ObjectSelection::Property FlowRule() {
    ObjectSelection::Property rule;
    rule.propId = 1;
    rule.criteria = {
        {ObjectSelection::Property::Greater, L"100"},
        {ObjectSelection::Property::Less,    L"200"}
    };
    return rule;
}

ObjectSelection::RecordData Selection() {
    ObjectSelection::RecordData record;
    record.name = L"Selection";
    record.data = CurrentDrawing();
    record.data.useRooms = true;
    record.data.rooms = {11};
    record.data.filterRules = {FlowRule()};
    return record;
}

template <int flags>
void EditSelection(HWND parent) {
    SelectionHost host;
    ObjectSelection::Data data = Selection().data;
    ObjectSelection::Dlg::Edit(Lng::Hpv, parent, host.Callback(), data, flags);
}

void EditSelectionRecord(HWND parent) {
    SelectionHost host;
    ObjectSelection::RecordData record = Selection();
    ObjectSelection::Dlg::Edit(Lng::Hpv, parent, host.Callback(), record, 0);
}

void EditRule(HWND parent) {
    SelectionHost host;
    host.On(ObjectSelection::Dlg::GetProperties, [](std::uint64_t, std::int64_t lParam) -> std::int64_t {
        auto& properties = *reinterpret_cast<std::vector<ObjectSelection::Dlg::PropertyEntry>*>(lParam);
        properties = {
            {1, L"Air flow", L"Flow"},
            {2, L"Name",     L""    }
        };
        return 0;
    });
    ObjectSelection::Property rule = FlowRule();
    ObjectSelection::Dlg::Edit(Lng::Hpv, parent, host.Callback(), rule);
}

void SelectionCommand(HWND parent) {
    SelectionHost host;
    ObjectSelection::Data data = Selection().data;
    ObjectSelectionCmd::Result result{};
    ObjectSelectionCmd::OptionsDlg(parent, Lng::Hpv, host.Callback(), data, result);
}

void UpdateDrawings(HWND parent) {
    SelectionHost host;
    const QBaseDb database(L"every-dialog.db");
    TREE_INSERTLIST2 items;
    for (int i = 1; i <= 40; ++i)
        items.push_back(0, i, Lng::Hpv, -1, ustr(L"Property")).data = i;
    UpdateDwgData::Options options;
    options.properties = {1};
    options.selection = Selection().data;
    UpdateDwgData::OptionsDlg(parent, Lng::Hpv, options, &items, database, host.Callback(),
                              [](UpdateDwgData::Dlg::MsgId, std::uint64_t, std::int64_t) { return std::int64_t{0}; });
}

struct DialogCase {
    const char* name;
    void (*open)(HWND parent);
    std::set<int> fixedTexts;  ///< controls whose text is the same in every language
    int defaultButton;
};

const DialogCase kDialogs[] = {
    {"CustomPropertyOptions", CustomPropertyOptions,                                {},         IDOK    },
    {"AskText",               AskText,                                              {},         IDOK    },
    {"AskChoice",             AskChoice,                                            {},         IDOK    },
    {"AskTree",               AskTree,                                              {},         IDOK    },
    {"ReportTemplate",        EditTemplate<BillOfMaterials>,                        {150, 222}, IDOK    },
    {"LegendTemplate",        EditTemplate<Legend>,                                 {150, 222}, IDOK    },
    {"TextTemplate",          EditTemplate<TextBlock>,                              {151, 225}, IDOK    },
    {"ReportColumn",          EditColumn,                                           {},         IDOK    },
    {"SimpleReport",          ShowSimpleReport,                                     {},         IDCANCEL},
    {"Selection",             EditSelection<0>,                                     {},         IDOK    },
    {"SelectionPresets",      EditSelection<ObjectSelection::Dlg::kConfigurations>, {},         IDOK    },
    {"SelectionRecord",       EditSelectionRecord,                                  {},         IDOK    },
    {"SelectionRule",         EditRule,                                             {},         IDOK    },
    {"SelectionCommand",      SelectionCommand,                                     {},         IDOK    },
    {"UpdateDrawings",        UpdateDrawings,                                       {},         IDOK    },
};

bool IsClass(HWND window, const wchar_t* name) {
    wchar_t actual[64];
    return GetClassNameW(window, actual, 64) > 0 && lstrcmpiW(actual, name) == 0;
}

std::vector<HWND> Children(HWND dlg) {
    std::vector<HWND> result;
    for (HWND child = GetWindow(dlg, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        result.push_back(child);
    return result;
}

std::vector<HWND> VisibleChildren(HWND dlg) {
    std::vector<HWND> result = Children(dlg);
    std::erase_if(result, [](HWND child) { return !IsWindowVisible(child); });
    return result;
}

bool HasCaption(HWND child) {
    return IsClass(child, L"Button") || IsClass(child, L"Static");
}

bool IsGroupBox(HWND child) {
    return IsClass(child, L"Button") && (GetWindowLongPtrW(child, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
}

bool TakesInput(HWND child) {
    return !HasCaption(child) && (GetWindowLongPtrW(child, GWL_STYLE) & WS_TABSTOP) != 0;
}

// A button, or the label of a control that takes input.
bool WantsMnemonic(HWND child) {
    if (IsClass(child, L"Button")) return !IsGroupBox(child);
    const HWND next = GetWindow(child, GW_HWNDNEXT);
    return IsClass(child, L"Static") && next && TakesInput(next);
}

std::string Describe(HWND child) {
    const std::wstring text = uidriver::Text(child);
    return "control " + std::to_string(GetDlgCtrlID(child)) + " \"" + std::string(text.begin(), text.end()) + "\"";
}

SIZE TextSize(HWND child) {
    const HDC dc = GetDC(child);
    const HGDIOBJ old = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(child, WM_GETFONT, 0, 0)));
    RECT rect{};
    DrawTextW(dc, uidriver::Text(child).c_str(), -1, &rect, DT_CALCRECT);
    SelectObject(dc, old);
    ReleaseDC(child, dc);
    return {rect.right, rect.bottom};
}

/// Pixels that a button keeps free around its text.
int Padding(HWND child) {
    if (!IsClass(child, L"Button")) return 0;
    const auto type = GetWindowLongPtrW(child, GWL_STYLE) & BS_TYPEMASK;
    const bool push = type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON;
    return MulDiv(push ? 8 : 18, static_cast<int>(GetDpiForWindow(child)), 96);
}

void ExpectNothingClipped(HWND dlg) {
    for (const HWND child : VisibleChildren(dlg)) {
        if (!HasCaption(child)) continue;
        RECT client{};
        GetClientRect(child, &client);
        EXPECT_LE(TextSize(child).cx + Padding(child), client.right) << Describe(child);
        EXPECT_LE(TextSize(child).cy, client.bottom + 1) << Describe(child);
    }
}

void ExpectNothingOverlaps(HWND dlg) {
    RECT client{};
    GetClientRect(dlg, &client);
    std::vector<std::pair<HWND, RECT>> rects;
    for (const HWND child : VisibleChildren(dlg)) {
        if (IsClass(child, L"ScrollBar")) continue;  // the size grip lies in its corner
        if (IsGroupBox(child)) continue;             // it lies around others
        RECT rect{};
        GetWindowRect(child, &rect);
        MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&rect), 2);
        EXPECT_TRUE(rect.left >= 0 && rect.top >= 0 && rect.right <= client.right && rect.bottom <= client.bottom)
            << Describe(child);
        for (const auto& [other, otherRect] : rects) {
            RECT common{};
            EXPECT_FALSE(IntersectRect(&common, &rect, &otherRect)) << Describe(child) << " over " << Describe(other);
        }
        rects.emplace_back(child, rect);
    }
}

void ExpectMnemonicsUnique(HWND dlg) {
    std::set<wchar_t> letters;
    for (const HWND child : VisibleChildren(dlg)) {
        const std::wstring text = uidriver::Text(child);
        const std::size_t at = text.find(L'&');
        const int id = GetDlgCtrlID(child);
        if (!WantsMnemonic(child) || text.empty()) continue;
        if (id == IDOK || id == IDCANCEL) {
            EXPECT_EQ(at, std::wstring::npos) << Describe(child);
        } else {
            ASSERT_NE(at, std::wstring::npos) << Describe(child);
            EXPECT_TRUE(letters.insert(static_cast<wchar_t>(towupper(text[at + 1]))).second) << Describe(child);
        }
    }
}

// The system takes an input control's name from the label directly before it, a list's or tree's also from its text.
void ExpectNamed(HWND dlg) {
    HWND before = nullptr;
    for (const HWND child : Children(dlg)) {
        if (TakesInput(child) && IsWindowVisible(child)) {
            const bool labelled = before && IsClass(before, L"Static") && !uidriver::Text(before).empty();
            const bool namesItself = !IsClass(child, L"Edit") && !uidriver::Text(child).empty();
            EXPECT_TRUE(labelled || namesItself) << Describe(child);
        }
        before = child;
    }
}

void ExpectTabReachesEverything(HWND dlg) {
    std::set<HWND> reached;
    HWND at = GetNextDlgTabItem(dlg, nullptr, FALSE);
    for (std::size_t i = 0; i < Children(dlg).size() + 1 && at; ++i) {
        reached.insert(at);
        at = GetNextDlgTabItem(dlg, at, FALSE);
    }
    for (const HWND child : VisibleChildren(dlg)) {
        const bool stop = (GetWindowLongPtrW(child, GWL_STYLE) & WS_TABSTOP) != 0 && IsWindowEnabled(child);
        EXPECT_TRUE(!stop || reached.contains(child)) << Describe(child);
    }
}

void ChangeDpi(HWND dlg, int dpi) {
    RECT rect{};
    GetWindowRect(dlg, &rect);
    const int now = static_cast<int>(GetDpiForWindow(dlg));
    rect.right = rect.left + MulDiv(rect.right - rect.left, dpi, now);
    rect.bottom = rect.top + MulDiv(rect.bottom - rect.top, dpi, now);
    SendMessageW(dlg, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(dpi, dpi)), reinterpret_cast<LPARAM>(&rect));
}

class EveryDialogTest : public DialogTest, public testing::WithParamInterface<DialogCase> {
protected:
    void WithDialog(const std::function<void(HWND)>& look) {
        Step(look);
        Press(IDCANCEL);
        RunSteps([] {
            GetParam().open(nullptr);
            return true;
        });
    }
};

TEST_P(EveryDialogTest, ReadsWellInEveryLanguage) {
    for (const wchar_t* language : {L"en", L"fi", L"sv", L"de", Lng::kPseudoLanguage}) {
        SCOPED_TRACE(testing::Message() << "language " << std::string(language, language + std::wcslen(language)));
        Lng::SetLanguage(language);
        WithDialog([&](HWND dlg) {
            ExpectNothingClipped(dlg);
            ExpectNothingOverlaps(dlg);
            ExpectMnemonicsUnique(dlg);
        });
    }
}

TEST_P(EveryDialogTest, TakesEveryTextFromTheLanguage) {
    Lng::SetLanguage(Lng::kPseudoLanguage);
    WithDialog([](HWND dlg) {
        std::vector<HWND> captioned = VisibleChildren(dlg);
        std::erase_if(captioned, [](HWND child) {
            return !HasCaption(child) || uidriver::Text(child).empty() ||
                   GetParam().fixedTexts.contains(GetDlgCtrlID(child));
        });
        captioned.push_back(dlg);
        for (const HWND window : captioned)
            EXPECT_EQ(uidriver::Text(window).front(), L'[') << Describe(window);
    });
}

TEST_P(EveryDialogTest, IsUsableFromTheKeyboard) {
    WithDialog([](HWND dlg) {
        ExpectTabReachesEverything(dlg);
        ExpectNamed(dlg);
        EXPECT_TRUE(GetFocus() && IsChild(dlg, GetFocus()));
        EXPECT_EQ(LOWORD(SendMessageW(dlg, DM_GETDEFID, 0, 0)), GetParam().defaultButton);
    });
}

TEST_P(EveryDialogTest, GrowsShrinksAndChangesResolution) {
    WithDialog([](HWND dlg) {
        RECT start{};
        GetWindowRect(dlg, &start);
        const bool resizable = (GetWindowLongPtrW(dlg, GWL_STYLE) & WS_THICKFRAME) != 0;
        if (resizable) {
            SetWindowPos(dlg, nullptr, 0, 0, start.right - start.left + 250, start.bottom - start.top + 180,
                         SWP_NOMOVE | SWP_NOZORDER);
            ExpectNothingOverlaps(dlg);
            SetWindowPos(dlg, nullptr, 0, 0, 10, 10, SWP_NOMOVE | SWP_NOZORDER);
            RECT small{};
            GetWindowRect(dlg, &small);
            EXPECT_EQ(small.right - small.left, start.right - start.left);
            EXPECT_EQ(small.bottom - small.top, start.bottom - start.top);
        }
        for (const int dpi : {144, 192, 96}) {
            SCOPED_TRACE(dpi);
            ChangeDpi(dlg, dpi);
            ExpectNothingOverlaps(dlg);
        }
        ExpectNothingClipped(dlg);
    });
}

// The system keeps some drawing objects that it made once (parts of the theme, for example), whenever that was; a leak
// of them grows in every batch of openings. Of menus and windows it keeps none.
TEST_P(EveryDialogTest, LeavesNoHandlesBehind) {
    const auto keepsAll = [this](int openings) {
        const uidriver::Handles before = uidriver::CountHandles();
        for (int i = 0; i < openings; ++i)
            WithDialog([](HWND) {});
        const uidriver::Handles after = uidriver::CountHandles();
        EXPECT_EQ(after.menus, before.menus);
        EXPECT_EQ(after.windows, before.windows);
        return after.gdi == before.gdi;
    };
    keepsAll(5);
    EXPECT_TRUE(keepsAll(100) || keepsAll(100));
}

INSTANTIATE_TEST_SUITE_P(All, EveryDialogTest, testing::ValuesIn(kDialogs),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
