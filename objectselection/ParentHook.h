#pragma once

#include <windows.h>

#include <functional>

/// Lets a control see the messages of its dialog, so that it depends on the dialog for no more than it must.
class ParentHook {
public:
    /// True when the message is dealt with, with its answer in `result`; false when nothing at all was done.
    using Handler = std::function<bool(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result)>;

    ParentHook() = default;
    ~ParentHook();
    ParentHook(const ParentHook&) = delete;
    ParentHook& operator=(const ParentHook&) = delete;

    /// Until the dialog's end, or this object's.
    void Attach(HWND dlg, Handler handler);

private:
    static LRESULT CALLBACK Procedure(HWND dlg, UINT message, WPARAM wParam, LPARAM lParam);
    bool Handle(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) const noexcept;
    void Detach();

    HWND dlg_ = nullptr;
    Handler handler_;
};
