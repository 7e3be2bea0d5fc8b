#include "OCDialogTest_ids.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>
#include <orvatool/DlgControlAnchorer.h>
#include <orvatool/OCDialog.h>
#include <shlwapi.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/driver/UiDriver.h"
#include "support/DialogTest.h"
#include "support/PatchImport.h"
#include "support/Pump.h"

namespace {

constexpr UINT kStep = WM_APP + 77;
constexpr UINT kAcadKeepFocus = 0x6D01;
constexpr UINT kOwnMessage = WM_USER + 9;

using Log = std::vector<std::string>;

const Log kWholeLife{"OnInitDialog", "SetLanguage", "SetAnchoring", "SetPosition", "SavePosition", "OnDestroy"};

HINSTANCE TestModule() {
    return GetModuleHandleW(nullptr);
}

/// Writes down the virtual calls it gets. `at[name]` runs inside that call. Steps run one after another from the
/// dialog's message loop, each when what the one before has posted is dealt with; after the last the dialog ends.
class LoggedDialog : public OCDialog {
public:
    explicit LoggedDialog(HWND parent = nullptr, HINSTANCE instance = TestModule()) : OCDialog(instance, parent) {}

    Log log;
    std::map<std::string, std::function<void()>> at;
    std::deque<std::function<void()>> steps;
    int result = 0;
    int refused = 0;

    void SetAnchoring() override { Note("SetAnchoring"), OCDialog::SetAnchoring(); }
    bool OnSize(unsigned type, int width, int height) override {
        return Note("OnSize"), OCDialog::OnSize(type, width, height);
    }
    bool OnDrawItem(int id, DRAWITEMSTRUCT* item) override {
        return Note("OnDrawItem"), OCDialog::OnDrawItem(id, item);
    }
    bool OnMeasureItem(int, MEASUREITEMSTRUCT* item) override {
        Note("OnMeasureItem");
        item->itemHeight = 33;
        return true;
    }
    bool OnCommand(unsigned __int64 w, __int64 l) override { return Note("OnCommand"), OCDialog::OnCommand(w, l); }
    bool OnAcadKeepFocus() override { return Note("OnAcadKeepFocus"), keepFocus; }
    bool OnUserMessage(unsigned message, unsigned __int64 w, __int64) override {
        if (message < kOwnMessage) return false;  // the dialog manager's own
        Note("OnUserMessage");
        if (w == 1) SendMessageW(hWnd(), message, 2, 0);  // an answer given meanwhile is not this message's
        SetResult(static_cast<LRESULT>(w) * 100);
        if (w == 1) SendMessageW(hWnd(), message, 3, 0);
        return true;
    }
    bool OnAppMessage(unsigned message, unsigned __int64 w, __int64 l) override {
        if (message == kStep) return Step(w), true;
        return Note("OnAppMessage"), SetResult(l), true;
    }
    bool OnInitDialog() override { return Note("OnInitDialog"), OCDialog::OnInitDialog(); }
    bool OnClose() override { return Note("OnClose"), OCDialog::OnClose(); }
    void OnDestroy() override { Note("OnDestroy"), OCDialog::OnDestroy(); }
    bool OnTimer(unsigned __int64 id, TIMERPROC proc) override { return Note("OnTimer"), OCDialog::OnTimer(id, proc); }
    HBRUSH OnColorEdit(HDC, HWND) override { return brush; }
    bool OnKeyDown(int key) override { return Note("OnKeyDown"), key == swallowed; }
    bool OnKeyDown(unsigned, unsigned, unsigned) override { return false; }
    bool OnEnterPressed() override { return Note("OnEnterPressed"), swallowed == VK_RETURN; }
    void OnOk() override { Note("OnOk"), OCDialog::OnOk(); }
    void OnCancel() override { Note("OnCancel"), OCDialog::OnCancel(); }
    void SetLanguage() override { Note("SetLanguage"), OCDialog::SetLanguage(); }
    void SetPosition() override {
        Note("SetPosition"), OCDialog::SetPosition();
        if (IsModal()) PostMessageW(hWnd(), kStep, 0, 0);
    }
    void SavePosition() override { Note("SavePosition"), OCDialog::SavePosition(); }
    int GetDataFromCtrls() override { return refused; }

    int Run(const wchar_t* name = L"BASICDLG") { return StartModal(name); }
    void Press(int key) { PostMessageW(GetFocus(), WM_KEYDOWN, static_cast<WPARAM>(key), 1); }
    std::ptrdiff_t Count(const std::string& name) const { return std::count(log.begin(), log.end(), name); }
    /// The calls of a dialog's life, without what happens in between.
    Log Life() const {
        Log life;
        std::copy_if(log.begin(), log.end(), std::back_inserter(life), [](const std::string& name) {
            return std::find(kWholeLife.begin(), kWholeLife.end(), name) != kWholeLife.end();
        });
        return life;
    }

    bool keepFocus = true;
    bool quitting = false;  ///< no more steps: WM_QUIT comes when nothing else is left
    int swallowed = 0;
    HBRUSH brush = nullptr;

private:
    void Note(const char* name) {
        log.emplace_back(name);
        const auto action = at.find(name);
        if (action != at.end()) action->second();
    }
    void Step(WPARAM hop) {
        // What a step posts may post in its turn (a key its character), so a step waits for two rounds of the queue.
        if (hop < 2) {
            PostMessageW(hWnd(), kStep, hop + 1, 0);
        } else if (steps.empty()) {
            endDialog(99);
        } else {
            const auto step = std::move(steps.front());
            steps.pop_front();
            step();
            if (hWnd() && !quitting) PostMessageW(hWnd(), kStep, 0, 0);
        }
    }
};

/// A host's top-level window with a child.
class HostWindow {
public:
    HostWindow() { SetActiveWindow(top); }
    ~HostWindow() { DestroyWindow(top); }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    const HWND top = CreateWindowExW(0, L"Static", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 400, 300, nullptr,
                                     nullptr, nullptr, nullptr);
    const HWND child =
        CreateWindowExW(0, L"Edit", L"", WS_CHILD | WS_VISIBLE, 5, 5, 100, 20, top, nullptr, nullptr, nullptr);
};

RECT PlaceOf(const OCDialog& dlg, int id) {
    RECT rect{};
    GetWindowRect(dlg.GetDlgItem(static_cast<short>(id)), &rect);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

std::vector<RECT> Places(const OCDialog& dlg) {
    std::vector<RECT> places;
    for (HWND child = GetWindow(dlg, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        places.push_back(PlaceOf(dlg, GetDlgCtrlID(child)));
    }
    return places;
}

SIZE SizeOf(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void Resize(HWND window, SIZE size) {
    SetWindowPos(window, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Grow(HWND window, int dx, int dy) {
    const SIZE size = SizeOf(window);
    Resize(window, {size.cx + dx, size.cy + dy});
}

}  // namespace

inline bool operator==(const RECT& a, const RECT& b) {
    return EqualRect(&a, &b) != FALSE;
}
inline bool operator==(const SIZE& a, const SIZE& b) {
    return a.cx == b.cx && a.cy == b.cy;
}
inline void PrintTo(const RECT& r, std::ostream* out) {
    *out << r.left << ',' << r.top << ',' << r.right << ',' << r.bottom;
}
inline void PrintTo(const SIZE& s, std::ostream* out) {
    *out << s.cx << 'x' << s.cy;
}

// ---------------------------------------------------------------------------------------------------------- Interface

namespace {

/// The entries of the virtual table that operations take.
template <class... Operations>
std::vector<std::ptrdiff_t> SlotsOf(Operations... operations) {
    struct Representation {
        std::ptrdiff_t offset;  // of the table entry, plus one
        std::ptrdiff_t adjustment;
    };
    constexpr std::ptrdiff_t kEntry = sizeof(void*);
    return {(std::bit_cast<Representation>(operations).offset - 1) / kEntry...};
}

}  // namespace

TEST(OCDialog, VirtualOperationsKeepTheirSlots) {
    using D = OCDialog;
    using U = unsigned int;
    const auto slots = SlotsOf(
        static_cast<int (D::*)(U)>(&D::StartModal), static_cast<int (D::*)(const wchar_t*)>(&D::StartModal),
        static_cast<HWND (D::*)(U, HWND)>(&D::Create), static_cast<HWND (D::*)(const wchar_t*, HWND)>(&D::Create),
        &D::SetAnchoring, &D::endDialog, &D::OnSize, &D::OnSizing, &D::OnMove, &D::OnExitSizeMove, &D::OnHScroll,
        &D::OnVScroll, &D::OnMouseWheel, &D::OnMouseMove, &D::OnDrawItem, &D::OnGetMinMaxInfo, &D::OnSysCommand,
        &D::OnMeasureItem, &D::OnCommand, &D::OnNotify, &D::OnLButtonDown, &D::OnLButtonUp, &D::OnLButtonDblClk,
        &D::OnAcadKeepFocus, &D::OnUserMessage, &D::OnAppMessage, &D::OnInitDialog, &D::OnClose, &D::OnDestroy,
        &D::OnContextMenu, &D::OnColorEdit, &D::OnColorStatic, &D::OnTimer, &D::OnWindowPosChanging, &D::OnMenuSelect,
        static_cast<bool (D::*)(int)>(&D::OnKeyDown), static_cast<bool (D::*)(U, U, U)>(&D::OnKeyDown),
        &D::OnEnterPressed, &D::OnOk, &D::OnCancel, &D::SetLanguage, &D::SetKeys, &D::SetPosition, &D::SavePosition,
        &D::GetPositionRegistryKey, &D::CreateMenuBar, &D::SetDataToCtrls, &D::GetDataFromCtrls);
    // The destructor takes the first two: complete and deleting.
    for (std::size_t i = 0; i < slots.size(); ++i)
        EXPECT_EQ(slots[i], static_cast<std::ptrdiff_t>(i) + 2) << i;
}

// ---------------------------------------------------------------------------------------------------------------- Life

TEST(OCDialog, LifeIsTheSameHoweverAModalDialogEnds) {
    struct Way {
        const char* name;
        std::function<void(LoggedDialog&, HostWindow&)> end;
        int result;
    };
    const Way ways[] = {
        {"OK",                  [](LoggedDialog& d, HostWindow&) { PostMessageW(d, WM_COMMAND, IDOK, 0); },        1                },
        {"Cancel",              [](LoggedDialog& d, HostWindow&) { PostMessageW(d, WM_COMMAND, IDCANCEL, 0); },    2                },
        {"Enter",               [](LoggedDialog& d, HostWindow&) { d.Press(VK_RETURN); },                          1                },
        {"Esc",                 [](LoggedDialog& d, HostWindow&) { d.Press(VK_ESCAPE); },                          2                },
        {"title bar",           [](LoggedDialog& d, HostWindow&) { PostMessageW(d, WM_SYSCOMMAND, SC_CLOSE, 0); }, 2                },
        {"first result counts", [](LoggedDialog& d, HostWindow&) { d.endDialog(5), d.EndDialog(6); },              5                },
        {"window destroyed",    [](LoggedDialog& d, HostWindow&) { DestroyWindow(d); },                            OCDialog::kFailed},
        {"parent destroyed",    [](LoggedDialog&,   HostWindow& host) { DestroyWindow(host.top); },                OCDialog::kFailed},
    };
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        HostWindow host;
        LoggedDialog dlg(host.child);
        dlg.steps = {[&] { way.end(dlg, host); }};
        EXPECT_EQ(dlg.Run(), way.result);
        EXPECT_EQ(dlg.Life(), kWholeLife);
        EXPECT_EQ(dlg.hWnd(), nullptr);
        EXPECT_TRUE(!IsWindow(host.top) || IsWindowEnabled(host.top));
    }
}

TEST(OCDialog, QuitWhileModalReachesTheHostsLoop) {
    HostWindow host;
    LoggedDialog dlg(host.top);
    dlg.steps = {[&] {
        dlg.quitting = true;
        PostQuitMessage(17);
    }};
    EXPECT_EQ(dlg.Run(), OCDialog::kFailed);
    EXPECT_EQ(dlg.Life(), kWholeLife);
    EXPECT_TRUE(IsWindowEnabled(host.top));
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT)
        DispatchMessageW(&message);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 17u);
}

TEST(OCDialog, EndingWhileItOpensStopsTheSequence) {
    LoggedDialog modal;
    modal.at["OnInitDialog"] = [&] { modal.endDialog(7); };
    EXPECT_EQ(modal.Run(), 7);
    EXPECT_EQ(modal.Life(), (Log{"OnInitDialog", "OnDestroy"}));

    LoggedDialog modeless;
    modeless.at["OnInitDialog"] = [&] { modeless.endDialog(7); };
    EXPECT_EQ(modeless.Create(L"BASICDLG", nullptr), nullptr);
    EXPECT_EQ(modeless.Life(), (Log{"OnInitDialog", "OnDestroy"}));
}

TEST(OCDialog, ModelessLifeEndsWithItsWindowOrItsParent) {
    for (const bool byParent : {false, true}) {
        SCOPED_TRACE(byParent);
        HostWindow host;
        LoggedDialog dlg;
        const HWND window = dlg.Create(L"BASICDLG", host.top);
        ASSERT_TRUE(IsWindow(window));
        EXPECT_EQ(dlg.hWnd(), window);
        EXPECT_FALSE(dlg.IsModal());
        EXPECT_TRUE(IsWindowEnabled(host.top));
        EXPECT_FALSE(IsWindowVisible(window));
        EXPECT_EQ(dlg.Create(L"BASICDLG", host.top), nullptr) << "one window at a time";
        DestroyWindow(byParent ? host.top : window);
        EXPECT_EQ(dlg.Life(), kWholeLife);
        EXPECT_EQ(dlg.hWnd(), nullptr);
    }
}

TEST(OCDialog, ObjectsRunAgainAndDestructorsClose) {
    auto dlg = std::make_unique<LoggedDialog>();
    EXPECT_EQ(dlg->Run(), 99);
    const HWND window = dlg->Create(L"BASICDLG", nullptr);
    ASSERT_TRUE(IsWindow(window));
    dlg.reset();
    EXPECT_FALSE(IsWindow(window));
}

TEST(OCDialog, SelfDeletingDialogLeavesNoWindow) {
    struct Deleting : LoggedDialog {
        explicit Deleting(bool& flag) : gone(flag) {}
        ~Deleting() override { gone = true; }
        void OnDestroy() override { delete this; }
        bool& gone;
    };
    for (const UINT message : {UINT{WM_CLOSE}, UINT{WM_DESTROY}}) {
        bool gone = false;
        const HWND window = (new Deleting(gone))->Create(L"BASICDLG", nullptr);
        if (message == WM_CLOSE) {
            SendMessageW(window, WM_CLOSE, 0, 0);
        } else {
            DestroyWindow(window);
        }
        EXPECT_TRUE(gone);
        EXPECT_FALSE(IsWindow(window));
    }
}

TEST(OCDialog, BadInputFails) {
    const auto fails = [](HWND parent, HINSTANCE instance, const wchar_t* name) {
        LoggedDialog dlg(parent, instance);
        EXPECT_EQ(dlg.StartModal(name), OCDialog::kFailed);
        EXPECT_EQ(dlg.Create(name, parent), nullptr);
        EXPECT_TRUE(dlg.log.empty());
    };
    fails(nullptr, TestModule(), L"NOSUCHDLG");
    fails(nullptr, TestModule(), nullptr);
    fails(nullptr, nullptr, L"BASICDLG");
    fails(GoneWindow(), TestModule(), L"BASICDLG");
    LoggedDialog byNumber;
    EXPECT_EQ(byNumber.StartModal(4711u), OCDialog::kFailed);

    // Without a window every operation does nothing.
    LoggedDialog closed;
    closed.endDialog(1);
    closed.ShowWindow(SW_SHOW);
    closed.EnableCtrl(1, true);
    closed.ShowCtrl(1, false);
    closed.SetFocus(1);
    closed.addCtrlAnchor(1, 0.5, 0.5, 1.0, 1.0);
    closed.addCtrlAnchor(1, true, true, true, true);
    closed.SetResize(true, false);
    closed.GetAnchorer().Layout();
    closed.GetAnchorer().SetDpi(144);
    closed.setHeader(Lng::NoApp, 0, L"x", Lng::NoApp);
    EXPECT_EQ(closed.GetDlgItem(1), nullptr);
    EXPECT_TRUE(closed.GetAnchorer().IsEmpty());

    LoggedDialog running;
    int nested = 0;
    running.steps = {[&] { nested = running.Run(); }};
    EXPECT_EQ(running.Run(), 99);
    EXPECT_EQ(nested, OCDialog::kFailed);
}

// --------------------------------------------------------------------------------------------------------------- Owner

TEST(OCDialog, OwnerIsDisabledMeanwhileAndActiveAfterwards) {
    HostWindow host;
    LoggedDialog dlg(host.child);
    bool enabledDuring = true;
    bool enabledAtEnd = false;
    dlg.at["OnInitDialog"] = [&] { enabledDuring = IsWindowEnabled(host.top); };
    dlg.at["OnDestroy"] = [&] { enabledAtEnd = IsWindowEnabled(host.top); };
    EXPECT_EQ(dlg.Run(), 99);
    EXPECT_FALSE(enabledDuring);
    EXPECT_TRUE(enabledAtEnd) << "before the dialog goes, so that activation returns to the owner";
    EXPECT_TRUE(IsWindowEnabled(host.top));
    EXPECT_TRUE(IsWindowEnabled(host.child));
    EXPECT_EQ(GetActiveWindow(), host.top);

    EnableWindow(host.top, FALSE);
    LoggedDialog second(host.top);
    EXPECT_EQ(second.Run(), 99);
    EXPECT_FALSE(IsWindowEnabled(host.top)) << "somebody else disabled it";
}

TEST(OCDialog, NestedDialogsGiveBackTheirOwners) {
    HostWindow host;
    LoggedDialog outer(host.top);
    LoggedDialog* const first = &outer;
    int innerResult = 0;
    outer.steps = {[&, first] {
                       LoggedDialog inner(first->hWnd());
                       inner.steps = {[&] {
                           EXPECT_FALSE(IsWindowEnabled(*first));
                           EXPECT_FALSE(IsWindowEnabled(host.top));
                           inner.OnOk();
                       }};
                       innerResult = inner.Run();
                       EXPECT_TRUE(IsWindowEnabled(*first));
                       EXPECT_FALSE(IsWindowEnabled(host.top));
                       EXPECT_EQ(GetActiveWindow(), first->hWnd());
                   },
                   [&] { outer.OnOk(); }};
    EXPECT_EQ(outer.Run(), 1);
    EXPECT_EQ(innerResult, 1);
    EXPECT_TRUE(IsWindowEnabled(host.top));
}

// ---------------------------------------------------------------------------------------------------------- Exceptions

class OCDialogThrows : public testing::TestWithParam<std::string> {
protected:
    static void Provoke(LoggedDialog& dlg) {
        DRAWITEMSTRUCT draw{};
        NMHDR header{};
        dlg.SetKeys({VK_F2});
        SendMessageW(dlg, WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&draw));
        SendMessageW(dlg, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header));
        SendMessageW(dlg, WM_TIMER, 1, 0);
        SendMessageW(dlg, kOwnMessage, 0, 0);
        SendMessageW(dlg, WM_APP + 50, 0, 0);
        SendMessageW(dlg, WM_SIZE, SIZE_RESTORED, MAKELPARAM(300, 300));
        if (GetParam() == "OnClose" || GetParam() == "OnCancel") SendMessageW(dlg, WM_CLOSE, 0, 0);
        for (const WPARAM key : {WPARAM{VK_F2}, WPARAM{VK_RETURN}}) {
            MSG message{dlg.GetDlgItem(IDC_BASIC_FIRST), WM_KEYDOWN, key, 1, 0, {}};
            if (message.hwnd) IsDialogMessageW(dlg, &message);
        }
    }
    static void ExpectCaught(const LoggedDialog& dlg) {
        const auto thrown = std::find(dlg.log.begin(), dlg.log.end(), GetParam());
        ASSERT_NE(thrown, dlg.log.end()) << "never called";
        const Log after(thrown + 1, dlg.log.end());
        EXPECT_EQ(after, GetParam() == "OnDestroy" ? Log{} : Log{"OnDestroy"});
        EXPECT_EQ(dlg.hWnd(), nullptr);
    }
};

TEST_P(OCDialogThrows, ModalEndsWithFailure) {
    HostWindow host;
    LoggedDialog dlg(host.top);
    dlg.at[GetParam()] = [] { throw std::runtime_error("from an override"); };
    dlg.steps = {[&] { Provoke(dlg); }};
    EXPECT_EQ(dlg.Run(), OCDialog::kFailed);
    ExpectCaught(dlg);
    EXPECT_TRUE(IsWindowEnabled(host.top));
}

TEST_P(OCDialogThrows, ModelessIsDestroyed) {
    LoggedDialog dlg;
    dlg.at[GetParam()] = [] { throw 42; };
    const HWND window = dlg.Create(L"BASICDLG", nullptr);
    if (window) Provoke(dlg);
    ExpectCaught(dlg);
    EXPECT_FALSE(IsWindow(window));
}

INSTANTIATE_TEST_SUITE_P(Overrides, OCDialogThrows,
                         testing::Values("OnInitDialog", "SetLanguage", "SetAnchoring", "SetPosition", "OnCommand",
                                         "OnOk", "OnDrawItem", "OnSize", "OnTimer", "OnUserMessage", "OnAppMessage",
                                         "OnKeyDown", "OnEnterPressed", "OnClose", "OnCancel", "SavePosition",
                                         "OnDestroy"),
                         [](const auto& test) { return test.param; });

// ------------------------------------------------------------------------------------------------------------ Keyboard

class OCDialogModeless : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        dlg_.Create(L"BASICDLG", host_.top);
        dlg_.ShowWindow(SW_SHOW);
        dlg_.SetFocus(IDC_BASIC_FIRST);
        Run();
    }
    void Run() { Pump(GetParam() ? dlg_.hWnd() : nullptr); }
    void Press(int key) {
        dlg_.Press(key);
        Run();
    }

    HostWindow host_;
    LoggedDialog dlg_;
};

TEST_P(OCDialogModeless, KeysWorkOnceInTheHostsLoop) {
    Press(VK_TAB);
    EXPECT_EQ(GetFocus(), dlg_.GetDlgItem(IDC_BASIC_SECOND));

    PostMessageW(GetFocus(), WM_KEYDOWN, 'A', 1);
    Run();
    EXPECT_EQ(uidriver::Text(GetFocus()), L"a");

    PostMessageW(GetFocus(), WM_SYSCHAR, 'c', 1 << 29);
    Run();
    EXPECT_EQ(IsDlgButtonChecked(dlg_, IDC_BASIC_CHECK), BST_CHECKED + 0u);

    dlg_.SetKeys({VK_F2});
    Press(VK_F2);
    EXPECT_EQ(dlg_.Count("OnKeyDown"), 1);

    dlg_.SetFocus(IDC_BASIC_FIRST);
    Press(VK_RETURN);
    EXPECT_EQ(dlg_.Count("OnEnterPressed"), 1);
    EXPECT_EQ(dlg_.Count("OnOk"), 1);
    EXPECT_EQ(dlg_.Life(), kWholeLife);
}

TEST_P(OCDialogModeless, EscCancelsButKeysOfTheHostStayWithTheHost) {
    ::SetFocus(host_.child);
    PostMessageW(host_.child, WM_KEYDOWN, VK_ESCAPE, 1);
    PostMessageW(host_.child, WM_CHAR, 'x', 1);
    Run();
    EXPECT_EQ(dlg_.Count("OnCancel"), 0);
    EXPECT_EQ(uidriver::Text(host_.child), L"x");

    dlg_.SetFocus(IDC_BASIC_FIRST);
    Press(VK_ESCAPE);
    EXPECT_EQ(dlg_.Count("OnCancel"), 1);
    EXPECT_EQ(dlg_.Life(), kWholeLife);
}

INSTANTIATE_TEST_SUITE_P(HostLoop, OCDialogModeless, testing::Bool(),
                         [](const auto& test) { return test.param ? "AsksIsDialogMessage" : "Plain"; });

TEST(OCDialog, NamedKeysComeBeforeTheControls) {
    LoggedDialog dlg;
    dlg.SetKeys({VK_DELETE, VK_F2});
    const auto type = [&](int key) {
        return [&dlg, key] {
            dlg.SetFocus(IDC_BASIC_FIRST);
            dlg.Press(key);
        };
    };
    dlg.at["OnInitDialog"] = [&] { SetDlgItemTextW(dlg, IDC_BASIC_FIRST, L"text"); };
    dlg.swallowed = VK_DELETE;
    dlg.steps = {type(VK_DELETE),
                 [&] {
                     EXPECT_EQ(dlg.Count("OnKeyDown"), 1);
                     EXPECT_EQ(uidriver::Text(dlg.GetDlgItem(IDC_BASIC_FIRST)), L"text") << "swallowed";
                     dlg.swallowed = VK_RETURN;
                 },
                 type(VK_DELETE),
                 [&] {
                     EXPECT_EQ(dlg.Count("OnKeyDown"), 2);
                     EXPECT_EQ(uidriver::Text(dlg.GetDlgItem(IDC_BASIC_FIRST)), L"") << "passed on";
                 },
                 type(VK_F5),
                 [&] { EXPECT_EQ(dlg.Count("OnKeyDown"), 2) << "not named"; },
                 [&] { PostMessageW(GetFocus(), WM_SYSKEYDOWN, VK_F2, 1 << 29); },
                 [&] { EXPECT_EQ(dlg.Count("OnKeyDown"), 3) << "with Alt"; },
                 type(VK_RETURN),
                 [&] {
                     EXPECT_EQ(dlg.Count("OnEnterPressed"), 1);
                     EXPECT_EQ(dlg.Count("OnOk"), 0) << "swallowed";
                     LoggedDialog inner(dlg.hWnd());
                     inner.steps = {[&] { inner.Press(VK_F2); }, [&] { inner.Press(VK_RETURN); }};
                     EXPECT_EQ(inner.Run(), 1);
                     EXPECT_EQ(dlg.Count("OnKeyDown"), 3) << "another dialog's key";
                     EXPECT_EQ(dlg.Count("OnEnterPressed"), 1);
                 }};
    EXPECT_EQ(dlg.Run(), 99);
}

TEST(OCDialog, KeysOfAnEmbeddedPageGoOutwards) {
    for (const bool modal : {true, false}) {
        SCOPED_TRACE(modal);
        LoggedDialog outer;
        LoggedDialog page;
        outer.SetKeys({VK_F2});
        page.SetKeys({VK_F2});
        const auto open = [&] { ASSERT_TRUE(page.Create(L"PAGEDLG", outer)); };
        const auto press = [&](int key) {
            return [&, key] {
                page.SetFocus(IDC_PAGE_TEXT);
                page.Press(key);
            };
        };
        const std::deque<std::function<void()>> steps{open, press(VK_F2), press(VK_RETURN)};
        if (modal) {
            outer.steps = steps;
            EXPECT_EQ(outer.Run(), 1);
        } else {
            ASSERT_TRUE(outer.Create(L"BASICDLG", nullptr));
            outer.ShowWindow(SW_SHOW);
            for (const auto& step : steps)
                step(), Pump();
        }
        EXPECT_EQ(page.Count("OnKeyDown"), 1);
        EXPECT_EQ(outer.Count("OnKeyDown"), 1) << "the page did not want it";
        EXPECT_EQ(page.Count("OnOk"), 0);
        EXPECT_EQ(outer.Count("OnOk"), 1) << "Enter presses the outer dialog's default button";
        EXPECT_EQ(page.Life(), kWholeLife);
    }
}

// ------------------------------------------------------------------------------------------------------------ Messages

TEST(OCDialog, MessagesReachTheirOperationsAndAnswer) {
    LoggedDialog dlg;
    dlg.brush = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
    ASSERT_TRUE(dlg.Create(L"BASICDLG", nullptr));
    const auto send = [&](UINT message, WPARAM w = 0, LPARAM l = 0) {
        dlg.log.clear();
        return SendMessageW(dlg, message, w, l);
    };
    EXPECT_EQ(send(kOwnMessage, 7), 700);
    EXPECT_EQ(dlg.log, Log{"OnUserMessage"});
    EXPECT_EQ(send(0x7FFF, 5), 500);
    EXPECT_EQ(dlg.log, Log{"OnUserMessage"});
    for (const UINT message : {0x8000u, 33768u, 0xBFFFu}) {
        EXPECT_EQ(send(message, 0, 1234), 1234);
        EXPECT_EQ(dlg.log, Log{"OnAppMessage"});
    }
    EXPECT_EQ(send(0xC000), 0);
    EXPECT_TRUE(dlg.log.empty()) << "registered messages belong to nobody";
    EXPECT_EQ(send(kOwnMessage, 1), 100) << "an answer survives other messages handled meanwhile";
    EXPECT_EQ(dlg.log.size(), 3u);
    for (const bool keep : {true, false}) {
        dlg.keepFocus = keep;
        EXPECT_EQ(send(kAcadKeepFocus), keep);
        EXPECT_EQ(dlg.log, Log{"OnAcadKeepFocus"}) << "asked by the CAD host about the keyboard";
    }

    const auto edit = reinterpret_cast<LPARAM>(dlg.GetDlgItem(IDC_BASIC_FIRST));
    HDC dc = GetDC(dlg);
    EXPECT_EQ(send(WM_CTLCOLOREDIT, reinterpret_cast<WPARAM>(dc), edit), reinterpret_cast<LRESULT>(dlg.brush));
    dlg.brush = nullptr;
    EXPECT_NE(send(WM_CTLCOLOREDIT, reinterpret_cast<WPARAM>(dc), edit), 0) << "the system's brush";
    ReleaseDC(dlg, dc);
}

TEST(OCDialog, MeasuresOwnerDrawnControlsWhileTheyAreCreated) {
    LoggedDialog dlg;
    ASSERT_TRUE(dlg.Create(L"OWNERDRAWNLISTDLG", nullptr));
    EXPECT_EQ(SendDlgItemMessageW(dlg, IDC_OWNERDRAWN_LIST, LB_GETITEMHEIGHT, 0, 0), 33);
    ASSERT_FALSE(dlg.log.empty());
    EXPECT_EQ(dlg.log.front(), "OnMeasureItem");
}

namespace {

int beeps = 0;
BOOL WINAPI CountBeep(UINT) {
    return ++beeps, TRUE;
}

}  // namespace

TEST(OCDialog, RefusedControlBeepsOnceAndHasTheFocus) {
    PatchImport(GetModuleHandleW(L"orvatool.dll"), L"user32.dll", "MessageBeep",
                reinterpret_cast<const void*>(&CountBeep));
    LoggedDialog dlg;
    dlg.steps = {[&] {
        SetDlgItemTextW(dlg, IDC_BASIC_SECOND, L"wrong");
        dlg.refused = IDC_BASIC_SECOND;
        beeps = 0;
        EXPECT_FALSE(dlg.TakeData());
        EXPECT_EQ(beeps, 1);
        EXPECT_EQ(GetFocus(), dlg.GetDlgItem(IDC_BASIC_SECOND));
        EXPECT_EQ(SendMessageW(GetFocus(), EM_GETSEL, 0, 0), MAKELONG(0, 5)) << "ready to be typed over";
        dlg.refused = 0;
        EXPECT_TRUE(dlg.TakeData());
        EXPECT_EQ(beeps, 1);
    }};
    EXPECT_EQ(dlg.Run(), 99);
}

TEST(OCDialog, FocusNeverStaysOnADisabledOrHiddenControl) {
    LoggedDialog dlg;
    dlg.steps = {[&] {
        dlg.SetFocus(IDC_BASIC_FIRST);
        dlg.EnableCtrl(IDC_BASIC_FIRST, false);
        EXPECT_EQ(GetFocus(), dlg.GetDlgItem(IDC_BASIC_SECOND));
        dlg.ShowCtrl(IDC_BASIC_SECOND, false);
        EXPECT_EQ(GetFocus(), dlg.GetDlgItem(IDC_BASIC_CHECK));
        dlg.EnableCtrl(IDC_BASIC_FIRST, true);
        dlg.ShowCtrl(IDC_BASIC_SECOND, true);
        EXPECT_EQ(GetFocus(), dlg.GetDlgItem(IDC_BASIC_CHECK)) << "others' changes leave the focus alone";
        dlg.SetFocus(IDCANCEL);
        EXPECT_EQ(LOWORD(SendMessageW(dlg, DM_GETDEFID, 0, 0)), IDOK);
        EXPECT_TRUE(SendMessageW(dlg.GetDlgItem(IDCANCEL), WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON);
    }};
    EXPECT_EQ(dlg.Run(), 99);
}

// ----------------------------------------------------------------------------------------------------------- Anchoring

namespace {

constexpr double kThird = 0.3333333333333333;
constexpr double kTwoThirds = 0.6666666666666666;

class ResizableDialog : public LoggedDialog {
public:
    ResizableDialog() {
        at["OnInitDialog"] = [this] {
            LVCOLUMNW column{};
            column.mask = LVCF_WIDTH;
            column.cx = 80;
            SendDlgItemMessageW(hWnd(), IDC_RESIZABLE_LIST, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
        };
    }
    void SetAnchoring() override {
        LoggedDialog::SetAnchoring();
        addCtrlAnchor(IDC_RESIZABLE_GROUP, false, false, true, true);
        addCtrlAnchor(IDC_RESIZABLE_LIST, 0.0, 0.0, 1.0, 1.0);
        addCtrlAnchor(IDC_RESIZABLE_COMBO, 0.0, 0.0, 1.0, 1.0);
        addCtrlAnchor(IDC_RESIZABLE_LEFT, 0.0, 1.0, kThird, 1.0);
        addCtrlAnchor(IDC_RESIZABLE_MIDDLE, kThird, 1.0, kTwoThirds, 1.0);
        addCtrlAnchor(IDC_RESIZABLE_RIGHT, kTwoThirds, 1.0, 1.0, 1.0);
        addCtrlAnchor(IDOK, 1.0, 1.0, 1.0, 1.0);
        addCtrlAnchor(IDCANCEL, true, true, true, true);
    }
    HWND Open() { return Create(L"RESIZABLEDLG", nullptr); }
};

void ChangeDpi(const OCDialog& dlg, int from, int to) {
    RECT rect{};
    GetWindowRect(dlg, &rect);
    rect.right = rect.left + MulDiv(rect.right - rect.left, to, from);
    rect.bottom = rect.top + MulDiv(rect.bottom - rect.top, to, from);
    SendMessageW(dlg, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(to, to)), reinterpret_cast<LPARAM>(&rect));
}

/// What the client area of a window shows.
std::vector<std::uint32_t> Pixels(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    BITMAPINFO format{};
    format.bmiHeader = {sizeof format.bmiHeader, client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HDC source = GetDC(window);
    HDC target = CreateCompatibleDC(source);
    HBITMAP bitmap = CreateDIBSection(target, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(target, bitmap);
    BitBlt(target, 0, 0, client.right, client.bottom, source, 0, 0, SRCCOPY);
    GdiFlush();
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(client.right * client.bottom));
    std::memcpy(pixels.data(), bits, pixels.size() * sizeof pixels[0]);
    DeleteObject(SelectObject(target, old));
    DeleteDC(target);
    ReleaseDC(window, source);
    return pixels;
}

RECT Moved(const RECT& start, int left, int top, int right, int bottom) {
    return {start.left + left, start.top + top, start.right + right, start.bottom + bottom};
}

}  // namespace

TEST(DlgControlAnchorer, EdgesTakeTheirFractionOfTheGrowth) {
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Open());
    std::map<int, RECT> start;
    for (const int id : {IDC_RESIZABLE_GROUP, IDC_RESIZABLE_LIST, IDC_RESIZABLE_COMBO, IDC_RESIZABLE_LEFT,
                         IDC_RESIZABLE_MIDDLE, IDC_RESIZABLE_RIGHT, IDC_RESIZABLE_LISTBOX, IDOK}) {
        start[id] = PlaceOf(dlg, id);
    }
    Grow(dlg, 100, 60);
    const auto expect = [&](int id, int left, int top, int right, int bottom) {
        EXPECT_EQ(PlaceOf(dlg, id), Moved(start[id], left, top, right, bottom)) << id;
    };
    expect(IDC_RESIZABLE_GROUP, 0, 0, 100, 60);
    expect(IDC_RESIZABLE_LIST, 0, 0, 100, 60);
    expect(IDC_RESIZABLE_COMBO, 0, 0, 100, 0);  // a drop-down keeps its height
    expect(IDC_RESIZABLE_LEFT, 0, 60, 33, 60);
    expect(IDC_RESIZABLE_MIDDLE, 33, 60, 67, 60);
    expect(IDC_RESIZABLE_RIGHT, 67, 60, 100, 60);
    expect(IDC_RESIZABLE_LISTBOX, 0, 0, 0, 0);
    expect(IDOK, 100, 60, 100, 60);

    // A control that joins late is where it belongs for the present size; so is one that changes its anchor.
    dlg.addCtrlAnchor(IDC_RESIZABLE_LISTBOX, 1.0, 0.0, 1.0, 0.0);
    dlg.addCtrlAnchor(IDOK, 0.0, 0.0, 0.0, 0.0);
    Grow(dlg, 10, 10);
    expect(IDC_RESIZABLE_LISTBOX, 10, 0, 10, 0);
    expect(IDOK, 100, 60, 100, 60);
    dlg.RemoveAnchoring();
    Grow(dlg, 30, 30);
    expect(IDC_RESIZABLE_GROUP, 0, 0, 110, 70);
    EXPECT_FALSE(dlg.GetAnchorer().Add(9999, {}));
}

TEST(DlgControlAnchorer, DoesNotDrift) {
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Open());
    const std::vector<RECT> start = Places(dlg);
    const SIZE size = SizeOf(dlg);
    RECT dropped{};
    SendDlgItemMessageW(dlg, IDC_RESIZABLE_COMBO, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&dropped));
    std::mt19937 random(1);
    for (int i = 0; i < 1000; ++i) {
        Resize(dlg, {size.cx + static_cast<int>(random() % 700), size.cy + static_cast<int>(random() % 500)});
    }
    SendMessageW(dlg, WM_SIZE, SIZE_MINIMIZED, 0);
    Resize(dlg, size);
    EXPECT_EQ(Places(dlg), start);
    RECT after{};
    SendDlgItemMessageW(dlg, IDC_RESIZABLE_COMBO, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&after));
    EXPECT_EQ(after.bottom - after.top, dropped.bottom - dropped.top);
}

TEST(DlgControlAnchorer, StartsFromTheTemplateAlsoWhenTheDialogOpensLarger) {
    ResizableDialog plain;
    ASSERT_TRUE(plain.Open());
    ResizableDialog larger;
    const SIZE size = SizeOf(plain);
    larger.at["SetLanguage"] = [&] { Grow(larger, 80, 40); };
    ASSERT_TRUE(larger.Open());
    EXPECT_EQ(PlaceOf(larger, IDOK), Moved(PlaceOf(plain, IDOK), 80, 40, 80, 40));
    Resize(larger, size);
    EXPECT_EQ(Places(larger), Places(plain));
}

TEST(DlgControlAnchorer, ResizingLeavesNoTracesOnTheScreen) {
    const auto show = [](ResizableDialog& dlg) {
        dlg.ShowCtrl(IDC_RESIZABLE_LISTBOX, false);  // lies in the way of others
        dlg.ShowCtrl(IDC_RESIZABLE_LIST, false);     // its header does not repaint itself everywhere
        dlg.ShowWindow(SW_SHOW);
        Pump();
    };
    ResizableDialog resized;
    ASSERT_TRUE(resized.Open());
    show(resized);
    for (const int delta : {60, 40, -70}) {
        Grow(resized, delta, delta / 2);
        Pump();
    }
    const std::vector<std::uint32_t> after = Pixels(resized);
    resized.ShowWindow(SW_HIDE);
    ResizableDialog fresh;
    ASSERT_TRUE(fresh.Open());
    Grow(fresh, 30, 15);
    show(fresh);
    const std::vector<std::uint32_t> expected = Pixels(fresh);
    EXPECT_FALSE(std::all_of(expected.begin(), expected.end(), [&](auto p) { return p == expected[0]; }));
    EXPECT_TRUE(after == expected);
}

TEST(OCDialog, TemplateSizeIsTheMinimum) {
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Open());
    dlg.ShowWindow(SW_SHOWNOACTIVATE);
    const SIZE size = SizeOf(dlg);
    Resize(dlg, {50, 50});
    EXPECT_EQ(SizeOf(dlg), size);
    Grow(dlg, 40, 30);
    EXPECT_EQ(SizeOf(dlg), (SIZE{size.cx + 40, size.cy + 30}));
    dlg.SetResize(false, true);
    Grow(dlg, 40, 30);
    EXPECT_EQ(SizeOf(dlg), (SIZE{size.cx, size.cy + 60})) << "the width is fixed";
}

TEST(OCDialog, NoneIsLargerThanItsMonitor) {
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Create(L"LARGEDLG", nullptr));
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    ASSERT_TRUE(GetMonitorInfoW(MonitorFromWindow(dlg, MONITOR_DEFAULTTONEAREST), &monitor));
    const auto reachable = [&](HWND window) {
        RECT rect{};
        RECT common{};
        GetWindowRect(window, &rect);
        return IntersectRect(&common, &rect, &monitor.rcWork) && EqualRect(&common, &rect);
    };
    EXPECT_TRUE(reachable(dlg));
    EXPECT_TRUE(reachable(dlg.GetDlgItem(IDOK)));
    Resize(dlg, {50, 50});
    EXPECT_TRUE(reachable(dlg.GetDlgItem(IDOK))) << "no smaller than it need be";
    dlg.SetResize(false, true);
    Grow(dlg, 0, -10);
    EXPECT_GT(SizeOf(dlg).cx, monitor.rcWork.right) << "the width is fixed";
}

TEST(OCDialog, CornerIsASizeGripUnderNoButton) {
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Open());
    const auto hitAt = [&](int fromRight, int fromBottom) {
        RECT client{};
        GetClientRect(dlg, &client);
        POINT point{client.right - fromRight, client.bottom - fromBottom};
        ClientToScreen(dlg, &point);
        return SendMessageW(dlg, WM_NCHITTEST, 0, MAKELPARAM(point.x, point.y));
    };
    EXPECT_EQ(hitAt(3, 3), HTBOTTOMRIGHT);
    EXPECT_EQ(hitAt(40, 3), HTCLIENT);
    RECT client{};
    GetClientRect(dlg, &client);
    const RECT cancel = PlaceOf(dlg, IDCANCEL);
    EXPECT_EQ(hitAt(client.right - cancel.right + 1, client.bottom - cancel.bottom + 1), HTCLIENT);
    dlg.SetResize(false, true);
    EXPECT_EQ(hitAt(3, 3), HTCLIENT);
}

TEST(OCDialog, MenuBarTakesNoRoomFromTheControls) {
    struct WithMenu : ResizableDialog {
        void CreateMenuBar() override {
            HMENU menu = CreateMenu();
            AppendMenuW(menu, MF_STRING, 1000, L"File");
            SetMenu(hWnd(), menu);
        }
    };
    ResizableDialog plain;
    WithMenu dlg;
    ASSERT_TRUE(plain.Open());
    ASSERT_TRUE(dlg.Open());
    RECT expected{};
    RECT client{};
    GetClientRect(plain, &expected);
    GetClientRect(dlg, &client);
    EXPECT_EQ(client, expected);
    EXPECT_EQ(Places(dlg), Places(plain));
    const SIZE size = SizeOf(dlg);
    Resize(dlg, {50, 50});
    EXPECT_EQ(SizeOf(dlg), size) << "the menu counts in the minimum";
}

// ---------------------------------------------------------------------------------------------------- DPI and controls

namespace {

HFONT FontOf(const OCDialog& dlg, int id) {
    return reinterpret_cast<HFONT>(SendDlgItemMessageW(dlg, id, WM_GETFONT, 0, 0));
}

int HeightOf(HFONT font) {
    LOGFONTW description{};
    GetObjectW(font, sizeof description, &description);
    return description.lfHeight;
}

int ColumnWidth(const OCDialog& dlg) {
    return static_cast<int>(SendDlgItemMessageW(dlg, IDC_RESIZABLE_LIST, LVM_GETCOLUMNWIDTH, 0, 0));
}

}  // namespace

TEST(OCDialog, FollowsTheMonitorsResolutionAndBack) {
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Open());
    const int base = static_cast<int>(dlg.GetDpi());
    const std::vector<RECT> start = Places(dlg);
    const SIZE size = SizeOf(dlg);
    const HFONT font = FontOf(dlg, IDOK);
    for (int round = 0; round < 3; ++round) {
        for (const int dpi : {base * 3 / 2, base * 5 / 4, base * 2}) {
            ChangeDpi(dlg, static_cast<int>(dlg.GetDpi()), dpi);
            EXPECT_EQ(dlg.GetDpi(), static_cast<unsigned>(dpi));
            EXPECT_EQ(HeightOf(FontOf(dlg, IDOK)), MulDiv(HeightOf(font), dpi, base));
            EXPECT_EQ(FontOf(dlg, IDOK), FontOf(dlg, IDC_RESIZABLE_LIST)) << "one font for all that shared one";
            EXPECT_NEAR(ColumnWidth(dlg), MulDiv(80, dpi, base), 1);
            EXPECT_EQ(PlaceOf(dlg, IDC_RESIZABLE_LISTBOX).left, MulDiv(start[6].left, dpi, base)) << "not anchored";
            const RECT list = PlaceOf(dlg, IDC_RESIZABLE_LIST);
            EXPECT_NEAR(list.right - list.left, MulDiv(start[2].right - start[2].left, dpi, base), 8);
        }
        RECT rect{0, 0, size.cx, size.cy};
        SendMessageW(dlg, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(base, base)), reinterpret_cast<LPARAM>(&rect));
        EXPECT_EQ(Places(dlg), start);
        EXPECT_EQ(FontOf(dlg, IDOK), font);
        EXPECT_EQ(ColumnWidth(dlg), 80);
    }
}

TEST(OCDialog, MinimumSizeFollowsTheResolution) {
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Open());
    const SIZE size = SizeOf(dlg);
    const int base = static_cast<int>(dlg.GetDpi());
    ChangeDpi(dlg, base, base * 2);
    Resize(dlg, {50, 50});
    EXPECT_GE(SizeOf(dlg).cx, size.cx * 2 - 40);
    EXPECT_LE(SizeOf(dlg).cx, size.cx * 2);
}

TEST(CommonControls, DialogsHaveVersionSixInAHostWithout) {
    const auto isVersionSix = [](HWND control) {
        HMODULE module = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const wchar_t*>(GetWindowLongPtrW(control, GWLP_WNDPROC)), &module);
        wchar_t path[MAX_PATH] = L"";
        GetModuleFileNameW(module, path, MAX_PATH);
        return StrStrIW(path, L"common-controls_6595b64144ccf1df_6.") != nullptr;
    };
    ResizableDialog dlg;
    ASSERT_TRUE(dlg.Open());
    EXPECT_TRUE(isVersionSix(dlg.GetDlgItem(IDC_RESIZABLE_LIST)));
    EXPECT_TRUE(isVersionSix(dlg.GetDlgItem(IDOK))) << "buttons are the library's, too";
    // The host's own windows are as before.
    const HWND own = CreateWindowExW(0, L"Button", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(own);
    EXPECT_FALSE(isVersionSix(own));
    DestroyWindow(own);
}

TEST(OCDialog, OpeningLeaksNothing) {
    const auto open = [] {
        ResizableDialog dlg;
        dlg.Open();
        const int base = static_cast<int>(dlg.GetDpi());
        ChangeDpi(dlg, base, base * 3 / 2);
        ChangeDpi(dlg, base * 3 / 2, base * 2);
    };
    const auto run = [] {
        LoggedDialog modal;
        modal.Run();
        LoggedDialog failing;
        failing.at["SetLanguage"] = [] { throw std::runtime_error("while it opens"); };
        failing.Run();
    };
    for (int i = 0; i < 5; ++i)
        open(), run();
    const uidriver::Handles before = uidriver::CountHandles();
    for (int i = 0; i < 200; ++i)
        open(), run();
    const uidriver::Handles after = uidriver::CountHandles();
    EXPECT_EQ(after.gdi, before.gdi);
    EXPECT_EQ(after.menus, before.menus);
    EXPECT_EQ(after.windows, before.windows);
}
