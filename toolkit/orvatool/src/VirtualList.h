#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvatool/String.h>

#include <algorithm>
#include <string_view>

// What list views that hold no rows of their own (LVS_OWNERDATA) have in common.

/// Selects and focuses `row` and nothing else, and brings it into view; -1 selects nothing.
inline void SelectOnly(HWND list, int row) {
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
    if (row < 0) return;
    item.state = item.stateMask;
    SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    SendMessageW(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
}

/// The selected row after `row`; -1 for none.
inline int NextSelected(HWND list, int row) {
    return static_cast<int>(SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
}

/// Puts `text` into the buffer of an LVN_GETDISPINFO, cut to its size.
inline void AnswerText(LVITEMW& item, std::wstring_view text) {
    if (!(item.mask & LVIF_TEXT) || !item.pszText || item.cchTextMax <= 0) return;
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(item.cchTextMax) - 1);
    *std::copy_n(text.data(), length, item.pszText) = L'\0';
}

/// The answer to LVN_ODFINDITEM, the list's type-ahead: the first row from the asked one on, round the end, whose text
/// begins with what was typed, in any case and with or without accents; -1 for none.
template <class TextOf>
int FindRow(const NMLVFINDITEMW& find, int count, TextOf textOf) {
    if (!(find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) || !find.lvfi.psz) return -1;
    const bool partial = (find.lvfi.flags & LVFI_PARTIAL) != 0;
    const ustr folded = String::Fold(find.lvfi.psz);
    const std::wstring_view wanted = folded;
    const int start = std::max(find.iStart, 0);
    for (int step = 0; step < count; ++step) {
        const int row = (start + step) % count;
        const ustr text = String::Fold(textOf(row));
        const std::wstring_view view = text;
        if (partial ? view.substr(0, wanted.size()) == wanted : view == wanted) return row;
    }
    return -1;
}
