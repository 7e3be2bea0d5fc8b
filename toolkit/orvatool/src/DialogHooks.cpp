#include "DialogHooks.h"

#include "Win32.h"

#include <algorithm>
#include <vector>

namespace {

using Hook = win32::Unique<HHOOK, UnhookWindowsHookEx>;

struct OpenDialog {
    HWND dlg;
    bool modeless;
    DialogKeys* keys;
};

// The state of the one thread that dialogs run on.
std::vector<OpenDialog> openDialogs;
Hook filterHook;   // there while a dialog is open
Hook messageHook;  // there while a modeless dialog is open

const OpenDialog* Find(HWND window) {
    const auto found = std::find_if(openDialogs.begin(), openDialogs.end(),
                                    [window](const OpenDialog& open) { return open.dlg == window; });
    return found == openDialogs.end() ? nullptr : &*found;
}

HWND ParentOf(HWND window) {
    return GetAncestor(window, GA_PARENT);
}

// Every dialog manager shows its messages to this filter first, whoever runs the loop.
bool OfferKey(const MSG& message) {
    if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return false;
    for (HWND window = message.hwnd; window; window = ParentOf(window)) {
        const OpenDialog* open = Find(window);
        if (open && open->keys->OnKey(static_cast<int>(message.wParam), message.message == WM_SYSKEYDOWN)) return true;
    }
    return false;
}

LRESULT CALLBACK FilterMessage(int code, WPARAM wParam, LPARAM lParam) {
    if (code == MSGF_DIALOGBOX && OfferKey(*reinterpret_cast<const MSG*>(lParam))) return TRUE;
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

// The outermost dialog around a window: its manager moves the focus through all that is nested in it.
const OpenDialog* OutermostDialog(HWND window) {
    const OpenDialog* outermost = nullptr;
    for (; window; window = ParentOf(window)) {
        if (const OpenDialog* open = Find(window)) outermost = open;
    }
    return outermost;
}

// The keys of an open menu are the menu's.
bool InMenu() {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    constexpr DWORD kMenus = GUI_INMENUMODE | GUI_POPUPMENUMODE | GUI_SYSTEMMENUMODE;
    return GetGUIThreadInfo(GetCurrentThreadId(), &info) && (info.flags & kMenus) != 0;
}

void RouteKey(MSG& message) {
    if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST || InMenu()) return;
    const OpenDialog* open = OutermostDialog(message.hwnd);
    if (!open || !open->modeless || !IsDialogMessageW(open->dlg, &message)) return;
    // Dealt with: the host's loop gets a message that means nothing.
    message.message = WM_NULL;
    message.wParam = 0;
    message.lParam = 0;
}

LRESULT CALLBACK RouteMessage(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && (wParam & PM_REMOVE)) RouteKey(*reinterpret_cast<MSG*>(lParam));
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

void Keep(Hook& hook, bool wanted, int kind, HOOKPROC procedure) {
    if (!wanted) {
        hook.reset();
    } else if (!hook) {
        hook.reset(SetWindowsHookExW(kind, procedure, nullptr, GetCurrentThreadId()));
    }
}

void UpdateHooks() {
    const bool anyModeless =
        std::any_of(openDialogs.begin(), openDialogs.end(), [](const OpenDialog& open) { return open.modeless; });
    Keep(filterHook, !openDialogs.empty(), WH_MSGFILTER, FilterMessage);
    Keep(messageHook, anyModeless, WH_GETMESSAGE, RouteMessage);
}

}  // namespace

DialogHook::DialogHook(HWND dlg, bool modeless, DialogKeys& keys) : dlg_(dlg) {
    openDialogs.push_back({dlg, modeless, &keys});
    UpdateHooks();
}

DialogHook::~DialogHook() {
    std::erase_if(openDialogs, [this](const OpenDialog& open) { return open.dlg == dlg_; });
    UpdateHooks();
}
