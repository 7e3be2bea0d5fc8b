#include <benchmark/benchmark.h>
#include <occommonui/UpdateDwgData.h>
#include <orvatool/Gw.h>
#include <orvatool/InterApp.h>
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "BareTree.h"
#include "DataItems.h"
#include "PaintAndClose.h"
#include "Paired.h"
#include "TempFolder.h"
#include "host/driver/UiDriver.h"
#include "project_ids.h"

// The selection of objects in the update dialog, with as many rooms and part types as a large project has: until the
// dialog is painted, until another category is, how long a key in a search field keeps the dialog from handling
// messages, and how long checking a heading takes. An argument is the number of rows below each heading.

namespace {

using ObjectSelection::Dlg::CbMsgId;
using Clock = std::chrono::steady_clock;

constexpr std::int64_t kRows = 20'000;
constexpr std::int64_t kProperties = 300;
constexpr std::int64_t kPropertiesPerHeading = 25;

double Milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

void Check(bool done, const char* what) {
    if (done) return;
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

// ---- the project ----

/// Headings with rows below them that begin with one of the words and have the ids from 1 on.
TREE_INSERTLIST Rows(std::int64_t count, std::int64_t perHeading, const wchar_t* heading,
                     const std::vector<const wchar_t*>& words) {
    TREE_INSERTLIST list;
    list.reserve(static_cast<std::size_t>(count + count / perHeading + 1));
    for (std::int64_t i = 0; i < count; ++i) {
        ustr text;
        const auto group = static_cast<int>(i / perHeading);
        if (i % perHeading == 0) list.push_back(0, 0, Lng::Hpv, -1, text.format(L"%s %d", heading, group + 1));
        text.format(L"%s %d-%03d", words[static_cast<std::size_t>(i) % words.size()], group + 1,
                    static_cast<int>(i % perHeading) + 1);
        list.push_back(1, i + 1, Lng::Hpv, -1, text);
    }
    list.finalize();
    return list;
}

class Project {
public:
    explicit Project(std::int64_t perHeading, std::int64_t count = kRows)
        : rooms_(Rows(count, perHeading, L"Floor",
                      {L"Meeting room", L"Office room", L"Corridor", L"Stairs", L"Storage", L"Technical room"})),
          partTypes_(Rows(count, perHeading, L"Catalogue",
                          {L"Circular duct", L"Bend", L"Supply air terminal", L"Gate valve", L"Radiator", L"Damper"})) {
        SetProductKey(L"Software\\OrvaCADBench");
        Lng::SetLanguage(L"en");
        PaintAndCloseDialogs();
    }

    /// Opens the dialog with rooms and part types in force, which shows the rooms at first, and calls `work` once it is
    /// painted.
    void Open(std::function<void(HWND)> work) {
        UpdateDwgData::Options options;
        options.selection.bySelectionSet = options.selection.currentDrawing = true;
        options.selection.useRooms = options.selection.usePartTypes = true;
        bool painted = false;
        WhenPainted([&](HWND dlg) {
            painted = true;
            try {
                work(dlg);
            } catch (const std::exception& failure) {
                Check(false, failure.what());
            }
        });
        UpdateDwgData::OptionsDlg(
            nullptr, Lng::Hpv, options, &items_, database_,
            [this](CbMsgId message, std::uint64_t, std::int64_t lParam) { return Answer(message, lParam); },
            [](UpdateDwgData::Dlg::MsgId, std::uint64_t, std::int64_t) { return 0; });
        Check(painted, "The dialog was not opened");
    }

    const TREE_INSERTLIST& Rooms() const { return rooms_; }

private:
    std::int64_t Answer(CbMsgId message, std::int64_t lParam) const {
        if (message == CbMsgId::GetRooms) *reinterpret_cast<TREE_INSERTLIST*>(lParam) = rooms_;
        if (message == CbMsgId::GetPartTypes) *reinterpret_cast<TREE_INSERTLIST*>(lParam) = partTypes_;
        return message == CbMsgId::HasRooms;
    }

    const TREE_INSERTLIST rooms_;
    const TREE_INSERTLIST partTypes_;
    const TREE_INSERTLIST2 items_ =
        DataItems(Rows(kProperties, kPropertiesPerHeading, L"Property group", {L"Air flow", L"Size", L"Room name"}));
    TempFolder folder_{L"ObjectSelectionBench"};
    const QBaseDb database_{folder_.File(L"project.db").c_str()};
};

// ---- the dialog ----

struct Handled {
    double longest = 0;      // milliseconds that a single message has taken
    Clock::time_point done;  // when the last message had been dealt with
};

// Longer than the time between two pieces of what is done in pieces.
constexpr DWORD kPause = 30;

/// Handles messages until none has come for `pause` milliseconds.
Handled HandleMessages(HWND dlg, DWORD pause = kPause) {
    Handled handled{0, Clock::now()};
    do {
        MSG message{};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            const auto start = Clock::now();
            if (!IsDialogMessageW(dlg, &message)) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
            handled.done = Clock::now();
            handled.longest = std::max(handled.longest, Milliseconds(handled.done - start));
        }
    } while (MsgWaitForMultipleObjects(0, nullptr, FALSE, pause, QS_ALLINPUT) != WAIT_TIMEOUT);
    return handled;
}

/// The visible control of that class, apart from those of the template.
HWND VisibleChild(HWND dlg, const wchar_t* className, std::initializer_list<int> others) {
    for (HWND child = nullptr; (child = FindWindowExW(dlg, child, className, nullptr));) {
        const bool isOther = std::find(others.begin(), others.end(), GetDlgCtrlID(child)) != others.end();
        if (!isOther && IsWindowVisible(child)) return child;
    }
    return nullptr;
}

HWND ItemTree(HWND dlg) {
    return VisibleChild(dlg, WC_TREEVIEWW, {IDC_UPDATEDWGDATA_ITEMS, IDC_UPDATEDWGDATA_CATEGORIES});
}

void ChoosePartTypes(HWND dlg) {
    const HWND categories = uidriver::Control(dlg, IDC_UPDATEDWGDATA_CATEGORIES);
    uidriver::ClickTreeItem(categories, uidriver::FindTreeItem(categories, L"Part types"));
}

// ---- opening ----

/// Counters of what is collected: the median, and the longest.
void Report(benchmark::State& state, const std::string& name, const std::vector<double>& times) {
    state.counters[name + "_ms"] = Median(times);
    state.counters[name + "_max"] = *std::max_element(times.begin(), times.end());
}

// Rows that are put in later, after the dialog is painted, are counted apart.
void Open(benchmark::State& state) {
    Project project(state.range(0));
    std::vector<double> painted;
    std::vector<double> complete;
    std::vector<double> switched;
    for (auto _ : state) {
        const auto start = Clock::now();
        project.Open([&](HWND dlg) {
            painted.push_back(Milliseconds(Clock::now() - start));
            complete.push_back(Milliseconds(HandleMessages(dlg).done - start));
            const HWND rooms = ItemTree(dlg);
            Check(TreeView_GetCount(rooms) > kRows, "There are no rooms");
            const auto click = Clock::now();
            ChoosePartTypes(dlg);
            switched.push_back(Milliseconds(HandleMessages(dlg).done - click));
            Check(ItemTree(dlg) != rooms && TreeView_GetCount(ItemTree(dlg)) > kRows, "There are no part types");
        });
    }
    Report(state, "painted", painted);
    Report(state, "complete", complete);
    Report(state, "switched", switched);
}

// ---- searching ----

/// The longest times that a key of each kind has taken.
struct Gaps {
    double first = 0;  // of a search
    double next = 0;
    double back = 0;     // takes a character away, but not the last
    double cleared = 0;  // the search is gone
    double fast = 0;     // of several keys in the queue
    double idle = 0;     // of all, until everything is done
};

class Search {
public:
    Search(HWND dlg, HWND edit, HWND tree, Gaps& gaps) : dlg_(dlg), tree_(tree), gaps_(gaps) { SetFocus(edit); }

    /// Types the text, takes it back, types it again without a pause and clears the field.
    void Run(const std::wstring& text) {
        const auto all = TreeView_GetCount(tree_);
        for (std::size_t i = 0; i < text.size(); ++i)
            Press(i == 0 ? gaps_.first : gaps_.next, [&] { uidriver::Type(text.substr(i, 1)); });
        Check(TreeView_GetCount(tree_) < all, "Nothing is searched");
        for (std::size_t left = text.size(); left > 0; --left)
            Press(left > 1 ? gaps_.back : gaps_.cleared, [] { uidriver::Key(VK_BACK); });
        Press(gaps_.fast, [&] { uidriver::Type(text); });
        Press(gaps_.cleared, [] { uidriver::Key(VK_ESCAPE); });
        Check(TreeView_GetCount(tree_) == all, "The search is not cleared");
    }

private:
    template <class Key>
    void Press(double& longest, Key key) {
        const auto start = Clock::now();
        key();
        const Handled handled = HandleMessages(dlg_);
        longest = std::max(longest, handled.longest);
        gaps_.idle = std::max(gaps_.idle, Milliseconds(handled.done - start));
    }

    HWND dlg_;
    HWND tree_;
    Gaps& gaps_;
};

enum Tree { kRooms, kPartTypes, kDataItems };

void SearchIn(Tree tree, HWND dlg, const std::wstring& text, Gaps& gaps) {
    if (tree == kPartTypes) ChoosePartTypes(dlg);
    HandleMessages(dlg);
    if (tree == kDataItems) {
        Search(dlg, uidriver::Control(dlg, IDC_UPDATEDWGDATA_SEARCH), uidriver::Control(dlg, IDC_UPDATEDWGDATA_ITEMS),
               gaps)
            .Run(text);
    } else {
        Search(dlg, VisibleChild(dlg, WC_EDITW, {IDC_UPDATEDWGDATA_SEARCH}), ItemTree(dlg), gaps).Run(text);
    }
}

// Not an average: the longest times of any key.
template <Tree tree>
void Keystrokes(benchmark::State& state) {
    Project project(state.range(0));
    Gaps gaps;
    for (auto _ : state) {
        for (const wchar_t* text : {L"room 1", L"duct", L"17-01", L"xyz"})
            project.Open([&](HWND dlg) { SearchIn(tree, dlg, text, gaps); });
    }
    state.counters["first_ms"] = gaps.first;
    state.counters["next_ms"] = gaps.next;
    state.counters["back_ms"] = gaps.back;
    state.counters["cleared_ms"] = gaps.cleared;
    state.counters["fast_ms"] = gaps.fast;
    state.counters["idle_ms"] = gaps.idle;
}

// ---- checking ----

HTREEITEM FirstBelow(HWND tree) {
    return TreeView_GetChild(tree, TreeView_GetRoot(tree));
}

/// The next state of the rows below the first, set by bare messages.
void TurnChecksBare(HWND tree) {
    const UINT state = TreeView_GetItemState(tree, FirstBelow(tree), TVIS_STATEIMAGEMASK) ^ INDEXTOSTATEIMAGEMASK(3);
    for (HTREEITEM item = FirstBelow(tree); item; item = TreeView_GetNextSibling(tree, item))
        TreeView_SetItemState(tree, item, state, TVIS_STATEIMAGEMASK);
    TreeView_SetItemState(tree, TreeView_GetRoot(tree), state, TVIS_STATEIMAGEMASK);
}

/// The rooms in a tree of its own in the dialog, filled by bare messages.
HWND CreateTreeBare(HWND dlg, const TREE_INSERTLIST& rows) {
    const HWND tree = CreateWindowExW(0, WC_TREEVIEWW, L"", WS_CHILD | WS_VISIBLE | TVS_HASBUTTONS | TVS_LINESATROOT, 0,
                                      0, 300, 300, dlg, nullptr, nullptr, nullptr);
    TreeView_SetImageList(tree, TreeView_GetImageList(ItemTree(dlg), TVSIL_STATE), TVSIL_STATE);
    FillTreeBareWithStates(tree, rows, [](const TREE_INSERTITEM&) -> UINT { return 1; });
    return tree;
}

/// Handles messages until `isDone`.
template <class Condition>
void HandleMessagesUntil(HWND dlg, Condition isDone, const char* what) {
    constexpr ULONGLONG kPatienceMs = 5000;
    const ULONGLONG start = GetTickCount64();
    while (!isDone() && GetTickCount64() - start < kPatienceMs)
        HandleMessages(dlg, 0);
    Check(isDone(), what);
}

/// How many messages a window has been sent. A subclass of the common controls would look itself up for each.
class MessageCount {
public:
    explicit MessageCount(HWND window) : window_(window), next_(Procedure(window)) {
        instance_ = this;
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Count));
    }
    ~MessageCount() { SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(next_)); }
    MessageCount(const MessageCount&) = delete;
    MessageCount& operator=(const MessageCount&) = delete;

    void Restart() { count_ = 0; }
    std::int64_t Get() const { return count_; }

private:
    static WNDPROC Procedure(HWND window) { return reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC)); }
    static LRESULT CALLBACK Count(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        ++instance_->count_;
        return CallWindowProcW(instance_->next_, window, message, wParam, lParam);
    }

    static inline MessageCount* instance_ = nullptr;
    HWND window_;
    WNDPROC next_;
    std::int64_t count_ = 0;
};

// The check box of the one heading is clicked, until the checks below it are seen ("shown") and until the tree has all
// rows again; against setting the state of each row below it. The messages for a row tell how the work grows: a tree
// may need longer for each the more rows it has.
void CheckHeading(benchmark::State& state) {
    const std::int64_t count = state.range(0);
    std::vector<double> shown;
    std::int64_t messages = 0;
    Project project(count, count);
    project.Open([&](HWND dlg) {
        const HWND tree = ItemTree(dlg);
        const HWND bareTree = CreateTreeBare(dlg, project.Rooms());
        HandleMessages(dlg);
        MessageCount sent(tree);
        const auto click = [&] {
            const int before = gwTVgetCheck(tree, FirstBelow(tree));
            const auto isShown = [&] { return gwTVgetCheck(tree, FirstBelow(tree)) != before; };
            const auto isWhole = [&] { return TreeView_GetCount(tree) > count; };
            sent.Restart();
            const auto start = Clock::now();
            uidriver::ClickTreeItem(tree, TreeView_GetRoot(tree), true);
            HandleMessagesUntil(dlg, isShown, "The rooms are not checked");
            shown.push_back(Milliseconds(Clock::now() - start));
            HandleMessagesUntil(dlg, isWhole, "There are not all rooms");
            messages = sent.Get();
        };
        const auto turn = [&] {
            TurnChecksBare(bareTree);
            HandleMessages(dlg, 0);
        };
        RunPaired(state, click, turn);
    });
    Report(state, "shown", shown);
    state.counters["messages_per_row"] = static_cast<double>(messages) / static_cast<double>(count);
    state.counters["us_per_row"] = 1000 * state.counters["ours_ms"].value / static_cast<double>(count);
}

void Shapes(benchmark::internal::Benchmark* bench) {
    bench->Arg(100)->Arg(kRows)->Unit(benchmark::kMillisecond)->Repetitions(1);
}

BENCHMARK(Open)->Name("OpenLargeSelection")->Apply(Shapes)->Iterations(11);
BENCHMARK(Keystrokes<kRooms>)->Name("SearchKey/rooms")->Apply(Shapes)->Iterations(2);
BENCHMARK(Keystrokes<kPartTypes>)->Name("SearchKey/parttypes")->Apply(Shapes)->Iterations(2);
BENCHMARK(Keystrokes<kDataItems>)
    ->Name("SearchKey/dataitems")
    ->Arg(100)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2)
    ->Repetitions(1);
BENCHMARK(CheckHeading)
    ->Name("CheckHeading")
    ->Arg(5'000)
    ->Arg(10'000)
    ->Arg(20'000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10)
    ->Repetitions(1);

}  // namespace
