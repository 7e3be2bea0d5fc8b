#include <gtest/gtest.h>
#include <occommonui/WarningReport.h>
#include <orvatool/ImageLib.h>
#include <orvatool/InterApp.h>
#include <orvatool/SimpleReportOuputDlg.h>
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/DialogTest.h"
#include "support/PatchImport.h"
#include "support/TestFolder.h"

namespace {

constexpr UINT kTrayMessage = 33768;

/// What the library asked of the tray, and whether the report was to be seen then.
struct TrayCall {
    DWORD what;
    NOTIFYICONDATAW icon;
    bool reportVisible;
};
std::vector<TrayCall> trayCalls;
BOOL trayAnswer = TRUE;

BOOL WINAPI RecordTray(DWORD what, NOTIFYICONDATAW* icon) {
    EXPECT_TRUE(IsWindow(icon->hWnd));
    trayCalls.push_back({what, *icon, IsWindowVisible(icon->hWnd) != FALSE});
    return trayAnswer;
}

/// The library as a program finds it that has just loaded it: a copy of its file, which has a store of its own.
class FreshLibrary {
public:
    FreshLibrary() {
        wchar_t path[MAX_PATH] = L"";
        GetModuleFileNameW(Original(), path, MAX_PATH);
        const std::wstring copy = folder_.File(L"fresh.dll");
        if (!CopyFileW(path, copy.c_str(), FALSE)) throw std::runtime_error("no copy");
        module_ = LoadLibraryW(copy.c_str());
        if (!module_) throw std::runtime_error("the copy does not load");
        PatchImport(module_, L"shell32.dll", "Shell_NotifyIconW", reinterpret_cast<const void*>(&RecordTray));
    }
    ~FreshLibrary() { FreeLibrary(module_); }
    FreshLibrary(const FreshLibrary&) = delete;
    FreshLibrary& operator=(const FreshLibrary&) = delete;

    /// The copy's own function.
    template <class Function>
    Function* Own(Function* function) const {
        const auto offset = reinterpret_cast<std::byte*>(function) - reinterpret_cast<std::byte*>(Original());
        return reinterpret_cast<Function*>(reinterpret_cast<std::byte*>(module_) + offset);
    }

private:
    static HMODULE Original() { return GetModuleHandleW(L"occommonui.dll"); }

    const TestFolder folder_;
    HMODULE module_ = nullptr;
};

class WarningReportTest : public DialogTest {
protected:
    WarningReportTest() {
        trayCalls.clear();
        trayAnswer = TRUE;
    }

    unsigned __int64 AddCategory(Lng::AppID app, const wchar_t* name) {
        return library_->Own(&WarningReport::AddCategory)(app, ustr(name));
    }
    void Add(Lng::AppID app, unsigned __int64 category, const wchar_t* text, const ObjPosInDwg& pos = {}) {
        library_->Own (&WarningReport::Add)(app, category, ustr(text), pos);
    }
    void Clear(Lng::AppID app) { library_->Own (&WarningReport::Clear)(app); }
    void ShowNotification(HWND parent, Lng::AppID app) {
        library_->Own (&WarningReport::ShowNotification)(parent, app);
    }
    bool ShowReport(Lng::AppID app) { return library_->Own(&WarningReport::ShowReport)(parent_, app); }

    /// Shows the report, which is closed behind the steps; false when there is none.
    void RunReport(Lng::AppID app) {
        Press(IDCANCEL);
        EXPECT_TRUE(RunSteps([&] { return ShowReport(app); }));
    }
    void ExpectReport(Lng::AppID app, const wchar_t* title, const Texts& headings, const std::vector<Texts>& columns) {
        Step([=](HWND dlg) {
            EXPECT_EQ(uidriver::Text(dlg), title);
            EXPECT_EQ(Headings(dlg), headings);
            for (std::size_t i = 0; i < columns.size(); ++i)
                EXPECT_EQ(Column(dlg, static_cast<int>(i)), columns[i]);
        });
        RunReport(app);
    }

    static HWND List(HWND report) { return FindWindowExW(report, nullptr, WC_LISTVIEWW, nullptr); }
    static Texts Column(HWND report, int column) { return uidriver::ListColumn(List(report), column); }
    static Texts Headings(HWND report) {
        Texts headings;
        wchar_t text[100] = L"";
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT;
        column.pszText = text;
        column.cchTextMax = 100;
        while (ListView_GetColumn(List(report), static_cast<int>(headings.size()), &column))
            headings.emplace_back(text);
        return headings;
    }

    /// Raises a balloon with one warning and gives the report behind it.
    HWND Raise(const wchar_t* category = L"Size") {
        Add(Lng::Electrical, AddCategory(Lng::Electrical, category), L"Too large");
        const std::size_t before = trayCalls.size();
        ShowNotification(parent_, Lng::Electrical);
        EXPECT_EQ(trayCalls.size(), before + 1);
        return trayCalls.back().icon.hWnd;
    }

    /// As the tray tells of an event.
    static LRESULT Tell(HWND report, UINT code) { return SendMessageW(report, kTrayMessage, 0, MAKELPARAM(code, 7)); }

    static std::vector<DWORD> TrayLog() {
        std::vector<DWORD> log;
        for (const TrayCall& call : trayCalls)
            log.push_back(call.what);
        return log;
    }

    std::unique_ptr<FreshLibrary> library_ = std::make_unique<FreshLibrary>();
};

TEST_F(WarningReportTest, CategoriesAreNumberedByTheirFirstUseInEachApplication) {
    EXPECT_EQ(AddCategory(Lng::Hpv, L"Size"), 0u);
    EXPECT_EQ(AddCategory(Lng::Hpv, L"Flow"), 1u);
    EXPECT_EQ(AddCategory(Lng::Electrical, L"Flow"), 0u);
    EXPECT_EQ(AddCategory(Lng::Hpv, L"size"), 2u);
    EXPECT_EQ(AddCategory(Lng::Hpv, L""), 3u);
    EXPECT_EQ(AddCategory(Lng::Hpv, L"Size"), 0u);
    EXPECT_EQ(AddCategory(Lng::Hpv, L""), 3u);
    Clear(Lng::Hpv);
    EXPECT_EQ(AddCategory(Lng::Hpv, L"Flow"), 0u);
    EXPECT_EQ(AddCategory(Lng::Electrical, L"Size"), 1u);
}

TEST_F(WarningReportTest, ListsTheWarningsByCategoryAndWithinEachAsTheyWereAdded) {
    AddCategory(Lng::Electrical, L"Size");
    AddCategory(Lng::Electrical, L"Flow");
    Add(Lng::Electrical, 1, L"first of flow");
    Add(Lng::Electrical, 0, L"of size");
    Add(Lng::Electrical, 2, L"of no category yet");
    Add(Lng::Electrical, UINT64_MAX, L"of no category");
    Add(Lng::Electrical, 1, L"second of flow");
    Add(Lng::Hpv, AddCategory(Lng::Hpv, L"Other"), L"of another application");
    for (int time = 0; time < 2; ++time) {  // showing keeps the list
        ExpectReport(Lng::Electrical, L"Warnings - OrvaCAD Electrical",
                     {
                         L"Category", L"Warning"
        },
                     {{L"Size", L"Flow", L"Flow"}, {L"of size", L"first of flow", L"second of flow"}});
    }
    AddCategory(Lng::Electrical, L"Late");
    Step([](HWND dlg) {
        EXPECT_EQ(Column(dlg, 1), (Texts{L"of size", L"first of flow", L"second of flow", L"of no category yet"}));
    });
    RunReport(Lng::Electrical);
}

TEST_F(WarningReportTest, ARowLeadsToTheWarningsObject) {
    ObjPosInDwg first;
    first.drawing = L"C:\\Office.dwg";
    first.handle = 0x1A2B;
    ObjPosInDwg second;
    second.hasPoint = true;
    second.x = 1.5;
    AddCategory(Lng::Electrical, L"Size");
    Add(Lng::Electrical, AddCategory(Lng::Electrical, L"Flow"), L"Too slow", second);
    Add(Lng::Electrical, 0, L"Too large", first);
    std::vector<ObjPosInDwg> shown;
    SimpleReportOuputDlg::SetZoomTo([&](HWND, const ObjPosInDwg& pos) {
        shown.push_back(pos);
        return true;
    });
    for (const int row : {0, 1})
        Step([row](HWND dlg) { uidriver::ClickListRow(List(dlg), row, false, true); });
    RunReport(Lng::Electrical);
    EXPECT_EQ(shown, (std::vector<ObjPosInDwg>{first, second}));
    SimpleReportOuputDlg::SetZoomTo({});
}

TEST_F(WarningReportTest, AnOpenReportKeepsItsRowsWhateverBecomesOfTheList) {
    Add(Lng::Electrical, AddCategory(Lng::Electrical, L"Size"), L"Too large");
    Step([this](HWND dlg) {
        Clear(Lng::Electrical);
        Add(Lng::Electrical, AddCategory(Lng::Electrical, L"Flow"), L"Too slow");
        ShowNotification(dlg, Lng::Electrical);
        EXPECT_EQ(Column(dlg, 0), (Texts{L"Size"}));
    });
    RunReport(Lng::Electrical);
}

TEST_F(WarningReportTest, TheFirstReportDecidesWhetherTheApplicationIsNamed) {
    for (const Lng::AppID app : {Lng::NoApp, Lng::Electrical})
        Add(app, AddCategory(app, L"Size"), L"Too large");
    const Texts named{L"Application name", L"Category", L"Warning"};
    ExpectReport(Lng::NoApp, L"Warnings", named, {{L""}, {L"Size"}, {L"Too large"}});
    ExpectReport(Lng::Electrical, L"Warnings - OrvaCAD Electrical", named,
                 {{L"OrvaCAD Electrical"}, {L"Size"}, {L"Too large"}});

    library_ = nullptr;
    library_ = std::make_unique<FreshLibrary>();
    for (const Lng::AppID app : {Lng::Electrical, Lng::NoApp}) {
        Add(app, AddCategory(app, L"Size"), L"Too large");
        Step([](HWND dlg) { EXPECT_EQ(Headings(dlg), (Texts{L"Category", L"Warning"})); });
        RunReport(app);
    }
}

TEST_F(WarningReportTest, NothingIsShownWithoutWarnings) {
    AddCategory(Lng::Hpv, L"Size");
    Add(Lng::Building, 0, L"of no category");
    Add(Lng::Schematics, AddCategory(Lng::Schematics, L"Size"), L"Too large");
    Clear(Lng::Schematics);
    script_->Start();  // would run in the report's loop
    for (const Lng::AppID app : {Lng::Electrical, Lng::Hpv, Lng::Building, Lng::Schematics, Lng::AppID{-1}}) {
        EXPECT_FALSE(ShowReport(app)) << app;
        ShowNotification(parent_, app);
    }
    EXPECT_FALSE(script_->Finished());
    EXPECT_TRUE(trayCalls.empty());
}

TEST_F(WarningReportTest, NothingIsShownToAParentThatIsGone) {
    Add(Lng::Hpv, AddCategory(Lng::Hpv, L"Size"), L"Too large");
    DestroyWindow(parent_);
    EXPECT_FALSE(ShowReport(Lng::Hpv));
    ShowNotification(parent_, Lng::Hpv);
    EXPECT_TRUE(trayCalls.empty());
}

TEST_F(WarningReportTest, ABalloonTellsOfTheCategoriesWhileTheReportIsHidden) {
    AddCategory(Lng::Electrical, L"Flow");
    AddCategory(Lng::Electrical, L"Height");
    const HWND report = Raise(L"Size");
    ASSERT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD}));
    const NOTIFYICONDATAW& icon = trayCalls[0].icon;
    EXPECT_EQ(icon.cbSize, sizeof icon);
    EXPECT_EQ(icon.uID, 0u);
    EXPECT_EQ(icon.uFlags, 23u);
    EXPECT_EQ(icon.uCallbackMessage, kTrayMessage);
    EXPECT_EQ(icon.hIcon, ImageLib::GetIcon(1000));
    EXPECT_STREQ(icon.szTip, L"OrvaCAD warning");
    EXPECT_STREQ(icon.szInfo, L"Flow, Height, Size");
    EXPECT_STREQ(icon.szInfoTitle, L"OrvaCAD warning");
    EXPECT_EQ(icon.uVersion, 4u);
    EXPECT_EQ(icon.dwInfoFlags, 36u);
    ICONINFO balloon{};
    ASSERT_TRUE(GetIconInfo(icon.hBalloonIcon, &balloon));
    BITMAP bitmap{};
    GetObjectW(balloon.hbmColor, sizeof bitmap, &bitmap);
    EXPECT_EQ(bitmap.bmWidth, GetSystemMetrics(SM_CXICON)) << "the system takes a large icon of this size only";
    DeleteObject(balloon.hbmColor);
    DeleteObject(balloon.hbmMask);

    EXPECT_TRUE(IsWindow(report));
    EXPECT_FALSE(IsWindowVisible(report));
    EXPECT_EQ(GetWindow(report, GW_OWNER), parent_);
    EXPECT_EQ(Column(report, 1), (Texts{L"Too large"}));
}

TEST_F(WarningReportTest, ABalloonsTextIsCutBetweenCharacters) {
    const std::wstring text = std::wstring(254, L'x') + L"\U0001F525";
    AddCategory(Lng::Electrical, text.c_str());
    Raise();
    EXPECT_EQ(trayCalls.back().icon.szInfo, std::wstring(254, L'x'));
    Clear(Lng::Electrical);
    Raise(text.substr(1).c_str());
    EXPECT_EQ(trayCalls.back().icon.szInfo, text.substr(1)) << "255 characters fit";
}

TEST_F(WarningReportTest, AClickOnTheBalloonRemovesTheIconAndThenShowsTheReport) {
    const HWND report = Raise();
    EXPECT_EQ(Tell(report, 1026), 0) << "the balloon is shown";
    EXPECT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD}));
    EXPECT_EQ(Tell(report, 1029), 0);
    ASSERT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD, NIM_DELETE}));
    EXPECT_EQ(trayCalls[1].icon.hWnd, report);
    EXPECT_EQ(trayCalls[1].icon.uID, 0u);
    EXPECT_FALSE(trayCalls[1].reportVisible);
    EXPECT_TRUE(IsWindowVisible(report));

    Raise();
    EXPECT_TRUE(IsWindowVisible(report)) << "another balloon leaves the open report";
    SendMessageW(report, WM_COMMAND, IDCANCEL, 0);
    EXPECT_FALSE(IsWindow(report));
    EXPECT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD, NIM_DELETE, NIM_ADD}));
}

TEST_F(WarningReportTest, AnyOtherEventRemovesTheIconOnceAndLeavesTheReportHidden) {
    for (const UINT code : {1027u, 1028u, 512u, 517u, 0u}) {
        trayCalls.clear();
        const HWND report = Raise();
        for (const UINT message : {kTrayMessage - 1, kTrayMessage + 1, UINT{WM_APP}})  // not the tray's
            EXPECT_EQ(SendMessageW(report, message, 0, 1029), 0);
        EXPECT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD}));
        EXPECT_EQ(Tell(report, code), 0);
        EXPECT_EQ(Tell(report, code), 0);
        EXPECT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD, NIM_DELETE})) << code;
        EXPECT_FALSE(IsWindowVisible(report));
    }
}

TEST_F(WarningReportTest, TheNextBalloonTakesTheReportsWithItThatNothingOpensAnyMore) {
    const HWND timedOut = Raise();
    const HWND waiting = Raise();
    const HWND opened = Raise();
    Tell(timedOut, 1028);
    Tell(opened, 1029);
    EXPECT_TRUE(IsWindow(timedOut));
    Raise();
    EXPECT_FALSE(IsWindow(timedOut));
    EXPECT_TRUE(IsWindow(waiting));
    EXPECT_TRUE(IsWindow(opened));
}

TEST_F(WarningReportTest, AReportThatGoesWithItsParentTakesItsIconWithIt) {
    const HWND report = Raise();
    DestroyWindow(parent_);
    EXPECT_FALSE(IsWindow(report));
    EXPECT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD, NIM_DELETE}));
    EXPECT_EQ(trayCalls[1].icon.hWnd, report);
}

TEST_F(WarningReportTest, WithoutATrayTheReportIsShownAtOnce) {
    trayAnswer = FALSE;
    const HWND report = Raise();
    EXPECT_TRUE(IsWindowVisible(report));
    SendMessageW(report, WM_COMMAND, IDCANCEL, 0);
    EXPECT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD})) << "no icon, so none is removed";
}

TEST_F(WarningReportTest, UnloadingTheLibraryEndsItsReports) {
    const HWND waiting = Raise();
    const HWND opened = Raise();
    Tell(opened, 1029);
    library_.reset();
    EXPECT_FALSE(IsWindow(waiting));
    EXPECT_FALSE(IsWindow(opened));
    EXPECT_EQ(TrayLog(), (std::vector<DWORD>{NIM_ADD, NIM_ADD, NIM_DELETE, NIM_DELETE}));
    DestroyWindow(parent_);  // would call what has been unloaded
}

}  // namespace
