#include "SearchEdit.h"

#include <commctrl.h>

#include <algorithm>
#include <cwchar>

#include "VirtualList.h"

namespace {

constexpr UINT_PTR kSearchSubclass = 1;

bool IsTree(HWND window) {
    wchar_t name[64] = L"";
    GetClassNameW(window, name, ARRAYSIZE(name));
    return _wcsicmp(name, WC_TREEVIEWW) == 0;
}

void MoveInList(HWND list, int steps) {
    const auto count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    if (count == 0) return;
    const int row = NextSelected(list, -1);
    SelectOnly(list, row < 0 ? 0 : std::clamp(row + steps, 0, count - 1));
}

HTREEITEM NextItem(HWND tree, WPARAM relation, HTREEITEM item) {
    return reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

void MoveInTree(HWND tree, int steps) {
    HTREEITEM item = NextItem(tree, TVGN_CARET, nullptr);
    if (!item) {
        item = NextItem(tree, TVGN_ROOT, nullptr);
        steps = 0;
    }
    for (; steps != 0; steps += steps < 0 ? 1 : -1) {
        const HTREEITEM next = NextItem(tree, steps < 0 ? TVGN_PREVIOUSVISIBLE : TVGN_NEXTVISIBLE, item);
        if (!next) break;
        item = next;
    }
    if (!item) return;
    SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    SendMessageW(tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
}

int StepsOf(WPARAM key, HWND target, bool tree) {
    const auto page = static_cast<int>(SendMessageW(target, tree ? TVM_GETVISIBLECOUNT : LVM_GETCOUNTPERPAGE, 0, 0));
    switch (key) {
        case VK_UP:
            return -1;
        case VK_DOWN:
            return 1;
        case VK_PRIOR:
            return -std::max(page - 1, 1);
        case VK_NEXT:
            return std::max(page - 1, 1);
        default:
            return 0;
    }
}

bool HasChecks(HWND window) {
    return IsTree(window) && SendMessageW(window, TVM_GETIMAGELIST, TVSIL_STATE, 0) != 0;
}

// During a search Esc ends it, and Enter turns the check of what it has found: neither is the dialog's then.
bool IsOwnKey(HWND edit, HWND target, WPARAM key) {
    return GetWindowTextLengthW(edit) > 0 && (key == VK_ESCAPE || (key == VK_RETURN && HasChecks(target)));
}

bool OnKey(HWND edit, HWND target, WPARAM key) {
    const bool tree = IsTree(target);
    if (IsOwnKey(edit, target, key)) {
        if (key == VK_ESCAPE) {
            SetWindowTextW(edit, L"");
        } else {
            SendMessageW(target, WM_KEYDOWN, VK_SPACE, 0);
        }
        return true;
    }
    const int steps = StepsOf(key, target, tree);
    if (steps == 0) return false;
    tree ? MoveInTree(target, steps) : MoveInList(target, steps);
    return true;
}

LRESULT CALLBACK EditProc(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR data) {
    switch (message) {
        case WM_GETDLGCODE: {
            // The dialog manager leaves a key to a control that asks for this very message.
            const auto* const asked = reinterpret_cast<const MSG*>(lParam);
            const bool isKey = asked && asked->message == WM_KEYDOWN;
            if (isKey && IsOwnKey(edit, reinterpret_cast<HWND>(data), asked->wParam)) return DLGC_WANTMESSAGE;
            break;
        }
        case WM_KEYDOWN:
            if (OnKey(edit, reinterpret_cast<HWND>(data), wParam)) return 0;
            break;
        case WM_CHAR:
            if (wParam == VK_ESCAPE || wParam == VK_RETURN) return 0;
            break;
        case WM_NCDESTROY:
            RemoveWindowSubclass(edit, EditProc, id);
            break;
        default:
            break;
    }
    return DefSubclassProc(edit, message, wParam, lParam);
}

}  // namespace

void AttachSearchEdit(HWND edit, HWND target, const wchar_t* cue) {
    if (cue) SendMessageW(edit, EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(cue));
    SetWindowSubclass(edit, EditProc, kSearchSubclass, reinterpret_cast<DWORD_PTR>(target));
}
