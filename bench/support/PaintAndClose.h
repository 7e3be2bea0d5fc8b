#pragma once

#include <windows.h>

#include <functional>
#include <utility>

namespace paintandclose {

inline constexpr UINT kPaintAndClose = WM_APP + 1;
inline HWND watcher = nullptr;
inline std::function<void(HWND)> whenPainted;
inline bool working = false;  // what is done with a dialog may activate it again

inline LRESULT CALLBACK WatchProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kPaintAndClose) return DefWindowProcW(window, message, wParam, lParam);
    const HWND dlg = reinterpret_cast<HWND>(wParam);
    working = true;
    ShowWindow(dlg, SW_SHOW);  // not every system has shown a dialog by the time of its first message
    RedrawWindow(dlg, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    if (const auto work = std::exchange(whenPainted, {})) work(dlg);
    working = false;
    PostMessageW(dlg, WM_COMMAND, IDCANCEL, 0);
    return 0;
}

inline LRESULT CALLBACK ActivationHook(int code, WPARAM wParam, LPARAM lParam) {
    wchar_t name[32];
    if (code == HCBT_ACTIVATE && !working && GetClassNameW(reinterpret_cast<HWND>(wParam), name, 32) &&
        !lstrcmpW(name, L"#32770")) {
        PostMessageW(watcher, kPaintAndClose, wParam, 0);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

}  // namespace paintandclose

/// From now on every dialog of this thread that becomes active is shown and painted at once and closed by Cancel,
/// whoever runs it.
inline void PaintAndCloseDialogs() {
    if (paintandclose::watcher) return;
    const HWND watcher = CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(watcher, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(paintandclose::WatchProcedure));
    paintandclose::watcher = watcher;
    SetWindowsHookExW(WH_CBT, paintandclose::ActivationHook, nullptr, GetCurrentThreadId());
}

/// What is done with the next of these dialogs between painting and closing it. It may handle messages; it must not
/// throw.
inline void WhenPainted(std::function<void(HWND)> work) {
    paintandclose::whenPainted = std::move(work);
}
