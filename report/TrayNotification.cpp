#include "TrayNotification.h"

#include <windows.h>

#include <occommonui/FixedText.h>
#include <orvatool/ImageLib.h>
#include <shellapi.h>

#include <utility>

namespace {

// One icon for each owner.
NOTIFYICONDATAW IconOf(HWND owner) {
    NOTIFYICONDATAW icon{};
    icon.cbSize = sizeof icon;
    icon.hWnd = owner;
    icon.uID = 0;
    return icon;
}

}  // namespace

bool TrayNotification::Show(HWND owner, const ustr& title, const ustr& text) {
    NOTIFYICONDATAW icon = IconOf(owner);
    icon.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP | NIF_INFO;
    icon.uCallbackMessage = kMessage;
    icon.hIcon = ImageLib::GetIcon(ImageLib::Product);
    SetFixedText<&NOTIFYICONDATAW::szTip>(icon, title);
    SetFixedText<&NOTIFYICONDATAW::szInfo>(icon, text);
    SetFixedText<&NOTIFYICONDATAW::szInfoTitle>(icon, title);
    icon.uVersion = NOTIFYICON_VERSION_4;
    icon.dwInfoFlags = NIIF_USER | NIIF_LARGE_ICON;
    // The system refuses a large icon of another size than its own, which is that of a small one at twice its DPI.
    icon.hBalloonIcon = ImageLib::GetIcon(ImageLib::Product, 2 * GetDpiForSystem());
    if (!Shell_NotifyIconW(NIM_ADD, &icon)) return false;
    owner_ = owner;
    return true;
}

void TrayNotification::Remove() {
    if (!owner_) return;
    NOTIFYICONDATAW icon = IconOf(std::exchange(owner_, nullptr));
    Shell_NotifyIconW(NIM_DELETE, &icon);
}
