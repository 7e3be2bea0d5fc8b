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

    /// `folder` is the tour's.
    TourSteps(uidriver::Script& script, std::wstring folder, TakePicture takePicture);

    /// Where a tour can put its files.
    const std::wstring& Folder() const { return folder_; }

    /// Waits for the next dialog and makes it the one that the following steps act on. A dialog closed by a step must
    /// be followed by Return or Open before another step.
    TourSteps& Open();
    /// Acts on the dialog before the one opened last, which has been closed.
    TourSteps& Return();
    /// Types into the n-th control of a class, from 0.
    TourSteps& Type(const wchar_t* className, int n, const std::wstring& text);
    TourSteps& Press(const wchar_t* className, int n);
    TourSteps& DoubleClickInTree(const std::wstring& text);
    // In the n-th tree, the first unless it is said.
    TourSteps& ClickInTree(const std::wstring& text, int n = 0);
    TourSteps& CheckInTree(const std::wstring& text, int n = 0);  ///< clicks the check box unless it is on
    // The same by place in tree order, from 0, for rows whose texts are in the user's language.
    TourSteps& ClickTreeRow(int row, int n = 0);
    TourSteps& CheckTreeRow(int row, int n = 0);
    /// Goes to this entry of the n-th drop-down list with the arrow keys.
    TourSteps& Choose(int n, const std::wstring& text);
    /// Puts the focus on the n-th control of a class.
    TourSteps& Focus(const wchar_t* className, int n);
    /// Double-clicks the row of the n-th list with this text.
    TourSteps& DoubleClickInList(int n, const std::wstring& text);
    /// Chooses a file in a file dialog of the system.
    TourSteps& ChooseFile(const std::wstring& path);
    /// Posts a message to the hidden dialog, as the system does to one that waits behind its icon at the tray.
    TourSteps& PostToHidden(UINT message, WPARAM wParam, LPARAM lParam);
    TourSteps& Key(int virtualKey);
    TourSteps& Keys(int virtualKey, int times);
    TourSteps& Picture(const std::wstring& part = {});
    TourSteps& Confirm();  ///< presses OK
    TourSteps& Cancel();   ///< presses Cancel or Close

private:
    TourSteps& Add(std::function<void(HWND)> step);

    uidriver::Script& script_;
    const std::wstring folder_;
    TakePicture takePicture_;
    std::vector<HWND> dialogs_;
};

}  // namespace ochost
