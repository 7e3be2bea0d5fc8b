#pragma once

#include <windows.h>

#include <cwchar>
#include <iterator>
#include <vector>

/// The controls of a dialog (its direct children), in z-order.
inline std::vector<HWND> ChildrenOf(HWND dlg) {
    std::vector<HWND> children;
    for (HWND child = GetWindow(dlg, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        children.push_back(child);
    return children;
}

/// True when the window is of that class, in any case.
inline bool HasClass(HWND window, const wchar_t* name) {
    wchar_t actual[64] = L"";
    GetClassNameW(window, actual, static_cast<int>(std::size(actual)));
    return _wcsicmp(actual, name) == 0;
}

inline bool IsGroupBox(HWND control) {
    return HasClass(control, L"Button") && (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
}
