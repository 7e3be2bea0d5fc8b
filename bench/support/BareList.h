#pragma once

#include <windows.h>

#include <commctrl.h>

#include <initializer_list>

// The baseline of every figure about lists: columns and drawn rows by bare messages.

/// Gives a list columns of these widths.
inline void AddColumnsBare(HWND list, std::initializer_list<int> widths) {
    int column = 0;
    for (const int width : widths) {
        LVCOLUMNW info{};
        info.mask = LVCF_WIDTH | LVCF_TEXT;
        info.cx = width;
        info.pszText = const_cast<wchar_t*>(L"Column");
        ListView_InsertColumn(list, column++, &info);
    }
}

/// Draws a row that has the text at each of these places, and answers WM_DRAWITEM.
inline INT_PTR DrawRowBare(const DRAWITEMSTRUCT& item, const wchar_t* text, std::initializer_list<int> places) {
    RECT rect = item.rcItem;
    FillRect(item.hDC, &rect, GetSysColorBrush(COLOR_WINDOW));
    for (const int left : places) {
        rect.left = left;
        DrawTextW(item.hDC, text, -1, &rect, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
    return TRUE;
}
