#pragma once

#include <windows.h>

/// Gets the keys that are pressed in a dialog, before the control with the focus does.
class DialogKeys {
public:
    /// A key went down; `alt` when it is one of the system keys (Alt held, or F10). True swallows it.
    virtual bool OnKey(int virtualKey, bool alt) noexcept = 0;

protected:
    ~DialogKeys() = default;
};

/// Keeps a dialog's keyboard working while the object lives: its keys go to a DialogKeys first, and for a modeless
/// dialog the keys of the dialog manager (Tab, Enter, Esc, mnemonics) work in a message loop that knows nothing of it.
class DialogHook {
public:
    /// `keys` must outlive this object.
    DialogHook(HWND dlg, bool modeless, DialogKeys& keys);
    ~DialogHook();
    DialogHook(const DialogHook&) = delete;
    DialogHook& operator=(const DialogHook&) = delete;

private:
    HWND dlg_;
};
