#pragma once

#include <windows.h>

/// The host's message loop, until nothing is left; `asks` when the host calls IsDialogMessage for its dialog itself.
inline void Pump(HWND asks = nullptr) {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (asks && IsDialogMessageW(asks, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}
