#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "host/driver/UiDriver.h"

namespace uidriver {
namespace {

constexpr std::size_t kLongestText = 4096;
constexpr UINT kSetKeysMessage = WM_USER;          // wParam: the modifiers held from now on
constexpr UINT kReleaseKeysMessage = WM_USER + 1;  // wParam: how often it goes to the end of the queue first
constexpr UINT kNoMessage = WM_USER + 2;           // never posted

enum Modifier : WPARAM { kShift = 1, kControl = 2, kAlt = 4 };

std::string Narrow(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    std::string result(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), static_cast<int>(result.size()), nullptr,
                        nullptr);
    return result;
}

void RequireUsable(HWND window, const std::string& what) {
    if (!IsWindowVisible(window)) throw ActionError(what + " is hidden");
    if (!IsWindowEnabled(window)) throw ActionError(what + " is disabled");
}

HWND UsableControl(HWND dlg, int ctrlId) {
    const HWND control = Control(dlg, ctrlId);
    RequireUsable(control, "control " + std::to_string(ctrlId) + " of \"" + Narrow(Text(dlg)) + "\"");
    return control;
}

HWND FocusWindow() {
    const HWND focus = GetFocus();
    if (!focus) throw ActionError("no window of this thread has the focus");
    return focus;
}

void HoldKeys(WPARAM modifiers) {
    BYTE keys[256] = {};
    GetKeyboardState(keys);
    const auto hold = [&](std::initializer_list<int> codes, bool down) {
        for (const int code : codes)
            keys[code] = static_cast<BYTE>((keys[code] & 0x01) | (down ? 0x80 : 0));
    };
    hold({VK_SHIFT, VK_LSHIFT}, (modifiers & kShift) != 0);
    hold({VK_CONTROL, VK_LCONTROL}, (modifiers & kControl) != 0);
    hold({VK_MENU, VK_LMENU}, (modifiers & kAlt) != 0);
    SetKeyboardState(keys);
}

// The keyboard's state changes between two posted keys, so the change travels through the same queue.
LRESULT CALLBACK KeyboardProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case kSetKeysMessage:
            HoldKeys(wParam);
            return 0;
        case kReleaseKeysMessage:
            // Once more to the end: characters translated from the keys still belong to them.
            if (wParam > 0) PostMessageW(window, message, wParam - 1, 0);
            if (wParam == 0) HoldKeys(0);
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

HWND Keyboard() {
    static const HWND window = [] {
        WNDCLASSW type{};
        type.lpfnWndProc = KeyboardProc;
        type.hInstance = GetModuleHandleW(nullptr);
        type.lpszClassName = L"UiDriverKeyboard";
        RegisterClassW(&type);
        return CreateWindowExW(0, type.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, type.hInstance,
                               nullptr);
    }();
    return window;
}

WPARAM ModifierBits(const std::vector<int>& modifiers) {
    WPARAM bits = 0;
    for (const int key : modifiers) {
        if (key == VK_SHIFT) bits |= kShift;
        if (key == VK_CONTROL) bits |= kControl;
        if (key == VK_MENU) bits |= kAlt;
    }
    return bits;
}

void PostCharacters(HWND window, const std::wstring& text) {
    PostMessageW(Keyboard(), kSetKeysMessage, 0, 0);
    for (const wchar_t c : text)
        PostMessageW(window, WM_CHAR, static_cast<WPARAM>(c), 1);
}

bool IsExtendedKey(int key) {
    return (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT || key == VK_DELETE;
}

LPARAM KeyDetails(int key, bool alt) {
    const UINT scan = MapVirtualKeyW(static_cast<UINT>(key), MAPVK_VK_TO_VSC);
    return static_cast<LPARAM>(1u | (scan << 16) | (IsExtendedKey(key) ? 1u << 24 : 0u) | (alt ? 1u << 29 : 0u));
}

// Handlers may ask where the pointer was (GetMessagePos), so it goes along. What the display reports late about its
// former place would take it back: looking for a message that never comes has such reports dealt with.
void MovePointer(POINT onScreen) {
    constexpr int kAttempts = 10;
    for (int i = 0; i < kAttempts; ++i) {
        SetCursorPos(onScreen.x, onScreen.y);
        MSG none;
        PeekMessageW(&none, Keyboard(), kNoMessage, kNoMessage, PM_NOREMOVE);
        POINT now{};
        if (GetCursorPos(&now) && now.x == onScreen.x && now.y == onScreen.y) return;
    }
}

// A button down and its up lie in the queue together, as the controls' own drag detection expects.
void PostClick(HWND window, POINT at, bool twice) {
    POINT onScreen = at;
    ClientToScreen(window, &onScreen);
    MovePointer(onScreen);
    const LPARAM position = MAKELPARAM(at.x, at.y);
    PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, position);
    PostMessageW(window, WM_LBUTTONUP, 0, position);
    if (!twice) return;
    PostMessageW(window, WM_LBUTTONDBLCLK, MK_LBUTTON, position);
    PostMessageW(window, WM_LBUTTONUP, 0, position);
}

POINT Inside(const RECT& rect) {
    return {rect.left + std::min<LONG>(10, (rect.right - rect.left) / 2), (rect.top + rect.bottom) / 2};
}

// The check box is found by asking the control what lies at the points left of the label.
template <class HitFlags>
POINT FindStateIcon(POINT from, UINT stateIcon, HitFlags flagsAt) {
    for (POINT at = from; at.x >= 0; --at.x) {
        if (flagsAt(at) == stateIcon) return {at.x - 3, at.y};
    }
    throw ActionError("the item has no check box");
}

HTREEITEM NextTreeItem(HWND tree, HTREEITEM item) {
    if (const HTREEITEM child = TreeView_GetChild(tree, item)) return child;
    for (; item; item = TreeView_GetParent(tree, item)) {
        if (const HTREEITEM sibling = TreeView_GetNextSibling(tree, item)) return sibling;
    }
    return nullptr;
}

std::wstring TreeItemText(HWND tree, HTREEITEM item) {
    std::array<wchar_t, kLongestText> buffer{};
    TVITEMW row{};
    row.mask = TVIF_TEXT;
    row.hItem = item;
    row.pszText = buffer.data();
    row.cchTextMax = static_cast<int>(buffer.size());
    SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&row));
    return row.pszText;
}

// Wine counts no handles for a process; its own handles are small numbers that can be tried one by one.
int CountGdiObjects() {
    if (const DWORD known = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) return static_cast<int>(known);
    int count = 0;
    for (std::uintptr_t i = 1; i <= 0xFFFF; ++i)
        count += GetObjectType(reinterpret_cast<HGDIOBJ>(i)) != 0;
    return count;
}

int CountMenus() {
    int count = 0;
    for (std::uintptr_t i = 2; i <= 0xFFFF; i += 2)
        count += IsMenu(reinterpret_cast<HMENU>(i)) != FALSE;
    return count;
}

int CountWindows() {
    int count = 0;
    const auto countTree = [](HWND top, LPARAM result) -> BOOL {
        const auto countOne = [](HWND, LPARAM total) -> BOOL {
            ++*reinterpret_cast<int*>(total);
            return TRUE;
        };
        countOne(top, result);
        EnumChildWindows(top, countOne, result);
        return TRUE;
    };
    EnumThreadWindows(GetCurrentThreadId(), countTree, reinterpret_cast<LPARAM>(&count));
    return count;
}

}  // namespace

bool IsOfClass(HWND window, std::wstring_view className) {
    wchar_t name[64] = L"";
    const int length = GetClassNameW(window, name, static_cast<int>(std::size(name)));
    return CompareStringOrdinal(name, length, className.data(), static_cast<int>(className.size()), TRUE) == CSTR_EQUAL;
}

std::wstring Text(HWND window) {
    std::wstring text(static_cast<std::size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    const LRESULT length = SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

HWND Control(HWND dlg, int ctrlId) {
    const HWND control = GetDlgItem(dlg, ctrlId);
    if (!control) throw ActionError("\"" + Narrow(Text(dlg)) + "\" has no control " + std::to_string(ctrlId));
    return control;
}

void Click(HWND dlg, int ctrlId) {
    PostMessageW(UsableControl(dlg, ctrlId), BM_CLICK, 0, 0);
}

void SetText(HWND dlg, int ctrlId, const std::wstring& text) {
    HWND edit = UsableControl(dlg, ctrlId);
    COMBOBOXINFO combo{};
    combo.cbSize = sizeof(combo);
    if (IsOfClass(edit, WC_COMBOBOXW) && GetComboBoxInfo(edit, &combo)) edit = combo.hwndItem;
    SendMessageW(dlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(edit), TRUE);
    SendMessageW(edit, EM_SETSEL, 0, -1);
    if (text.empty()) return Key(VK_DELETE);
    PostCharacters(edit, text);
}

void Type(const std::wstring& text) {
    PostCharacters(FocusWindow(), text);
}

void Key(int virtualKey, const std::vector<int>& modifiers) {
    const HWND window = FocusWindow();
    const WPARAM held = ModifierBits(modifiers);
    const bool alt = (held & kAlt) != 0 && (held & kControl) == 0;
    const LPARAM details = KeyDetails(virtualKey, alt);
    constexpr LPARAM kReleased = static_cast<LPARAM>(0xC0000000u);
    PostMessageW(Keyboard(), kSetKeysMessage, held, 0);
    PostMessageW(window, alt ? WM_SYSKEYDOWN : WM_KEYDOWN, static_cast<WPARAM>(virtualKey), details);
    PostMessageW(window, alt ? WM_SYSKEYUP : WM_KEYUP, static_cast<WPARAM>(virtualKey), details | kReleased);
    if (held) PostMessageW(Keyboard(), kReleaseKeysMessage, 1, 0);
}

void Mnemonic(HWND dlg, wchar_t letter) {
    const HWND focus = GetFocus();
    const HWND window = focus && IsChild(dlg, focus) ? focus : dlg;
    PostMessageW(Keyboard(), kSetKeysMessage, kAlt, 0);
    PostMessageW(window, WM_SYSCHAR, static_cast<WPARAM>(letter), static_cast<LPARAM>(1u << 29 | 1u));
    PostMessageW(Keyboard(), kReleaseKeysMessage, 0, 0);
}

void ClickTreeItem(HWND tree, HTREEITEM item, bool onCheckBox, bool twice) {
    if (!item) throw ActionError("no such tree item");
    RequireUsable(tree, "the tree");
    TreeView_EnsureVisible(tree, item);
    RECT label{};
    TreeView_GetItemRect(tree, item, &label, TRUE);
    const auto flagsAt = [&](POINT at) {
        TVHITTESTINFO hit{};
        hit.pt = at;
        TreeView_HitTest(tree, &hit);
        return hit.flags;
    };
    const POINT at = Inside(label);
    PostClick(tree, onCheckBox ? FindStateIcon(at, TVHT_ONITEMSTATEICON, flagsAt) : at, twice);
}

void ClickListRow(HWND list, int row, bool onCheckBox, bool twice) {
    if (row < 0 || row >= ListView_GetItemCount(list)) throw ActionError("no list row " + std::to_string(row));
    RequireUsable(list, "the list");
    ListView_EnsureVisible(list, row, FALSE);
    RECT label{};
    ListView_GetItemRect(list, row, &label, LVIR_LABEL);
    const auto flagsAt = [&](POINT at) {
        LVHITTESTINFO hit{};
        hit.pt = at;
        ListView_HitTest(list, &hit);
        return hit.flags;
    };
    const POINT at = Inside(label);
    PostClick(list, onCheckBox ? FindStateIcon(at, LVHT_ONITEMSTATEICON, flagsAt) : at, twice);
}

void ClickListHeader(HWND list, int column) {
    const HWND header = ListView_GetHeader(list);
    RECT cell{};
    if (!header || !Header_GetItemRect(header, column, &cell))
        throw ActionError("no list column " + std::to_string(column));
    PostClick(header, {(cell.left + cell.right) / 2, (cell.top + cell.bottom) / 2}, false);
}

HTREEITEM FindTreeItem(HWND tree, const std::wstring& text) {
    HTREEITEM item = TreeView_GetRoot(tree);
    while (item && TreeItemText(tree, item) != text)
        item = NextTreeItem(tree, item);
    return item;
}

std::vector<std::wstring> ListColumn(HWND list, int column) {
    std::vector<std::wstring> texts;
    std::array<wchar_t, kLongestText> buffer{};
    for (int row = 0; row < ListView_GetItemCount(list); ++row) {
        buffer[0] = L'\0';
        ListView_GetItemText(list, row, column, buffer.data(), static_cast<int>(buffer.size()));
        texts.emplace_back(buffer.data());
    }
    return texts;
}

void ChooseFile(HWND dlg, const std::wstring& path) {
    HWND edit = nullptr;
    const auto look = [](HWND child, LPARAM result) -> BOOL {
        if (!IsWindowVisible(child) || !IsOfClass(child, WC_EDITW)) return TRUE;
        *reinterpret_cast<HWND*>(result) = child;
        return FALSE;
    };
    EnumChildWindows(dlg, look, reinterpret_cast<LPARAM>(&edit));
    if (!edit) throw ActionError("\"" + Narrow(Text(dlg)) + "\" has no field for a file's name");
    SetWindowTextW(edit, path.c_str());
    PostMessageW(dlg, WM_COMMAND, IDOK, 0);
}

Handles CountHandles() {
    return {CountGdiObjects(), CountMenus(), CountWindows()};
}

}  // namespace uidriver
