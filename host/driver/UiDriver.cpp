#include "host/driver/UiDriver.h"

#include <algorithm>
#include <deque>
#include <map>

namespace uidriver {
namespace {

constexpr UINT kTickMs = 10;
constexpr ULONGLONG kPatienceMs = 60'000;

bool IsOpen(HWND window) {
    return IsOfClass(window, L"#32770") && IsWindowVisible(window);
}

bool Contains(const std::vector<HWND>& windows, HWND window) {
    return std::find(windows.begin(), windows.end(), window) != windows.end();
}

std::vector<HWND> Without(std::vector<HWND> windows, const std::vector<HWND>& others) {
    std::erase_if(windows, [&](HWND window) { return Contains(others, window); });
    return windows;
}

}  // namespace

struct Script::State {
    struct Step {
        std::string what;              // what `ready` waits for
        std::function<bool()> ready;   // none: ready at once
        std::function<void()> action;  // none: the step was only a wait
    };

    std::deque<Step> steps;
    std::size_t stepNumber = 1;
    ULONGLONG waitingSince = 0;  // 0: the first step in line has not been looked at
    std::vector<HWND> openAtStart;
    std::vector<HWND> openBeforeAction;  // known before the preceding action
    std::vector<HWND> left;              // open at the end
    bool ended = false;
    bool questionsTurn = false;
    std::string failure;
    UINT_PTR timer = 0;

    // Scripts by their timers; the copy of the pointer keeps a script alive that a step destroys.
    static std::map<UINT_PTR, std::shared_ptr<State>>& Running() {
        static std::map<UINT_PTR, std::shared_ptr<State>> running;
        return running;
    }

    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR id, DWORD) {
        const auto found = Running().find(id);
        if (found == Running().end()) return;
        const std::shared_ptr<State> state = found->second;
        try {
            state->Tick();
        } catch (const std::exception& error) {
            state->Fail(error.what());
        } catch (...) {
            state->Fail("an exception of unknown kind");
        }
    }

    void Stop() {
        if (timer == 0) return;
        KillTimer(nullptr, timer);
        Running().erase(timer);
        timer = 0;
    }

    void Fail(const std::string& why) {
        if (failure.empty()) failure = "step " + std::to_string(stepNumber) + ": " + why;
    }

    void Tick() {
        if (!failure.empty()) return CancelTopDialog();
        if (steps.empty()) return WatchWhatIsLeft();
        if (!IsFirstReady()) return;
        // A step may block in a modal loop while the next ones run, so it leaves the queue first.
        const std::function<void()> action = std::move(steps.front().action);
        steps.pop_front();
        waitingSince = 0;
        if (action) {
            openBeforeAction = OpenDialogs();
            action();
        }
        ++stepNumber;
    }

    bool IsFirstReady() {
        const Step& step = steps.front();
        if (waitingSince == 0) waitingSince = GetTickCount64();
        if (!step.ready || step.ready()) return true;
        if (GetTickCount64() - waitingSince > kPatienceMs) Fail("waited in vain for " + step.what);
        return false;
    }

    void WatchWhatIsLeft() {
        if (!ended) {
            ended = true;
            waitingSince = GetTickCount64();
            left = Without(OpenDialogs(), openAtStart);
        }
        std::erase_if(left, [](HWND dlg) { return !IsOpen(dlg); });
        if (left.empty()) return Stop();
        if (GetTickCount64() - waitingSince > kPatienceMs) Fail("a dialog is still open after the last step");
    }

    void CancelTopDialog() {
        EndMenu();
        const HWND dlg = TopDialog();
        if (!dlg || Contains(openAtStart, dlg)) return;
        // A question with Yes and No alone knows no Cancel.
        PostMessageW(dlg, WM_COMMAND, questionsTurn ? IDNO : IDCANCEL, 0);
        questionsTurn = !questionsTurn;
    }
};

Script::Script() : state_(std::make_shared<State>()) {
}

Script::~Script() {
    state_->Stop();
}

Script& Script::Then(std::function<void()> step) {
    state_->steps.push_back({{}, nullptr, std::move(step)});
    return *this;
}

Script& Script::WaitFor(std::string what, std::function<bool()> condition) {
    state_->steps.push_back({std::move(what), std::move(condition), nullptr});
    return *this;
}

Script& Script::WithNewDialog(std::function<void(HWND)> step) {
    const auto isNew = [state = state_.get()] {
        const HWND dlg = TopDialog();
        return dlg && !Contains(state->openBeforeAction, dlg);
    };
    const auto action = [step = std::move(step)] {
        const HWND dlg = TopDialog();
        RedrawWindow(dlg, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        step(dlg);
    };
    state_->steps.push_back({"a new dialog", isNew, action});
    return *this;
}

void Script::Start() {
    state_->openAtStart = state_->openBeforeAction = OpenDialogs();
    state_->timer = SetTimer(nullptr, 0, kTickMs, State::OnTimer);
    if (state_->timer == 0) return state_->Fail("no timer");
    State::Running()[state_->timer] = state_;
}

void Script::RunToEnd() const {
    MSG message;
    while (!Finished() && Failure().empty() && GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool Script::Finished() const {
    return state_->steps.empty() && state_->failure.empty();
}

const std::string& Script::Failure() const {
    return state_->failure;
}

HWND TopDialog() {
    const auto onTop = [](HWND window) { return IsOpen(window) && IsWindowEnabled(window); };
    if (const HWND active = GetActiveWindow(); active && onTop(active)) return active;
    const std::vector<HWND> open = OpenDialogs();
    const auto found = std::find_if(open.begin(), open.end(), onTop);
    return found == open.end() ? nullptr : *found;
}

std::vector<HWND> OpenDialogs() {
    std::vector<HWND> dialogs;
    const auto collect = [](HWND window, LPARAM result) -> BOOL {
        if (IsOpen(window)) reinterpret_cast<std::vector<HWND>*>(result)->push_back(window);
        return TRUE;
    };
    EnumThreadWindows(GetCurrentThreadId(), collect, reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

}  // namespace uidriver
