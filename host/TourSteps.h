#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "host/driver/UiDriver.h"

namespace ochost {

/// What a dialog adds its steps to, to show itself in the tour. The steps act as a user does who knows no control ids:
/// controls are named by kind and by place in the tab order.
class TourSteps {
public:
    /// Takes a picture of a window; `part` is empty for the dialog itself, else names what is shown. False on failure.
    using TakePicture = std::function<bool(HWND window, const std::wstring& part)>;

    TourSteps(uidriver::Script& script, TakePicture takePicture);

    /// Waits for the next dialog and makes it the one that the following steps act on. A dialog closed by a step must
    /// be followed by Return or Open before another step.
    TourSteps& Open();
    /// Acts on the dialog before the one opened last, which has been closed.
    TourSteps& Return();
    /// Types into the n-th control of a class, from 0.
    TourSteps& Type(const wchar_t* className, int n, const std::wstring& text);
    TourSteps& Press(const wchar_t* className, int n);
    TourSteps& DoubleClickInTree(const std::wstring& text);
    TourSteps& ClickInTree(const std::wstring& text);
    TourSteps& Key(int virtualKey);
    TourSteps& Picture(const std::wstring& part = {});
    TourSteps& Confirm();  ///< presses OK

private:
    TourSteps& Add(std::function<void(HWND)> step);

    uidriver::Script& script_;
    TakePicture takePicture_;
    std::vector<HWND> dialogs_;
};

}  // namespace ochost
