#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Win32Types.h>

/// An icon at the system tray that comes up with a balloon. It is there from Show until Remove, which the destructor
/// calls; its owner window must live as long.
class TrayNotification {
public:
    /// The message that the owner gets when something happens to the icon; the low word of lParam says what.
    static constexpr unsigned kMessage = 33768;

    TrayNotification() = default;
    ~TrayNotification() { Remove(); }
    TrayNotification(const TrayNotification&) = delete;
    TrayNotification& operator=(const TrayNotification&) = delete;

    /// Shows the product's icon with a balloon. `title` is the icon's tip too; texts that are longer than the system
    /// holds are cut. False when the system has no tray to show it at.
    bool Show(HWND owner, const ustr& title, const ustr& text);
    void Remove();
    bool IsShown() const { return owner_ != nullptr; }

private:
    HWND owner_ = nullptr;
};
