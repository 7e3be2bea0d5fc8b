#include <gtest/gtest.h>
#include <occommonui/CustomProperty.h>
#include <orvatool/AskValueDlg.h>
#include <orvatool/InterApp.h>
#include <windows.h>

#include <array>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "host/driver/UiDriver.h"

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

struct DialogCase {
    const char* name;
    void (*open)(HWND parent);
};

const DialogCase kDialogs[] = {
    {"CustomPropertyOptions",
     [](HWND parent) {
         const TREE_INSERTLIST properties = Rows();
         CustomProperty::Data data;
         data.name = L"Name";
         data.format = L"a {1|mm} b {2}";
         CustomProperty::Dlg::Options(parent, Lng::Hpv, &properties, data);
     }},
    {"AskText",
     [](HWND parent) {
         ustr value = L"value";
         AskValueDlg::Run(parent, Lng::Hpv, Lng::text(kLibraryTexts, 11412, L"Constant text"),
                          Lng::text(kLibraryTexts, 11414, L"Text:"), value);
     }},
    {"AskChoice",
     [](HWND parent) {
         ValueList choices;
         for (int i = 0; i < 40; ++i)
             choices.emplace_back(L"Choice", i);
         std::int64_t value = 3;
         AskValueDlg::Run(parent, Lng::Hpv, Lng::text(kLibraryTexts, 11412, L"Constant text"),
                          Lng::text(kLibraryTexts, 11414, L"Text:"), choices, value);
     }},
    {"AskTree",
     [](HWND parent) {
         const TREE_INSERTLIST choices = Rows();
         std::int64_t value = 3;
         AskValueDlg::Run(parent, Lng::Hpv, Lng::text(kLibraryTexts, 11412, L"Constant text"),
                          Lng::text(kLibraryTexts, 11414, L"Text:"), choices, value);
     }},
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
        if (!HasCaption(child) || text.empty()) continue;
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
        const bool takesInput = !HasCaption(child) && (GetWindowLongPtrW(child, GWL_STYLE) & WS_TABSTOP) != 0;
        if (takesInput && IsWindowVisible(child)) {
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

class EveryDialogTest : public testing::TestWithParam<DialogCase> {
protected:
    void SetUp() override { SetProductKey(L"Software\\OrvaCADTest"); }
    void TearDown() override {
        Lng::SetLanguage(L"en");
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\OrvaCADTest");
    }

    void WithDialog(const std::function<void(HWND)>& look) {
        uidriver::Script script;
        script.WithNewDialog([&](HWND dlg) {
            look(dlg);
            uidriver::Click(dlg, IDCANCEL);
        });
        script.Start();
        GetParam().open(nullptr);
        EXPECT_TRUE(script.Finished()) << script.Failure();
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
        std::erase_if(captioned, [](HWND child) { return !HasCaption(child) || uidriver::Text(child).empty(); });
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
        EXPECT_EQ(LOWORD(SendMessageW(dlg, DM_GETDEFID, 0, 0)), IDOK);
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

// The system keeps some things that it made once (parts of the theme, for example), whenever that was; a leak grows in
// every batch of openings.
TEST_P(EveryDialogTest, LeavesNoHandlesBehind) {
    const auto grown = [this] {
        const uidriver::Handles before = uidriver::CountHandles();
        for (int i = 0; i < 100; ++i)
            WithDialog([](HWND) {});
        const uidriver::Handles after = uidriver::CountHandles();
        return std::array{after.gdi - before.gdi, after.menus - before.menus, after.windows - before.windows};
    };
    constexpr std::array none{0, 0, 0};
    grown();
    EXPECT_TRUE(grown() == none || grown() == none);
}

INSTANTIATE_TEST_SUITE_P(All, EveryDialogTest, testing::ValuesIn(kDialogs),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
