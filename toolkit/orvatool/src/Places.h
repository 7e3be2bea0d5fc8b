#pragma once

#include <windows.h>

#include <algorithm>

// Where windows are, and where there is room for them; in pixels of the screen.
namespace win32 {

inline SIZE SizeOf(const RECT& rect) {
    return {rect.right - rect.left, rect.bottom - rect.top};
}

inline RECT RectOf(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return rect;
}

inline MONITORINFO InfoOf(HMONITOR monitor) {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    GetMonitorInfoW(monitor, &info);
    return info;
}

/// The part of a size that there is room for in `area`; an empty one sets no limit.
inline SIZE Within(const RECT& area, SIZE size) {
    if (IsRectEmpty(&area)) return size;
    return {std::min(size.cx, area.right - area.left), std::min(size.cy, area.bottom - area.top)};
}

/// The corner nearest to `wanted` at which `size` lies within `area`; too large a size keeps its caption in view.
inline POINT Within(const RECT& area, POINT wanted, SIZE size) {
    return {std::max(std::min(wanted.x, area.right - size.cx), area.left),
            std::max(std::min(wanted.y, area.bottom - size.cy), area.top)};
}

}  // namespace win32
