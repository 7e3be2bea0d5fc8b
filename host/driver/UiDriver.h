#pragma once

#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// Drives dialogs inside this process as a user would: steps run from a timer, one a tick, so they go on inside every
/// nested modal loop (dialogs, message boxes, menus). Used by the guided tour and by the tests.
///
/// What a step posts (clicks, keys, characters) has been dealt with before the next step runs. Actions that a user
/// could not take (a control that is missing, hidden or disabled) throw, which fails the script.
namespace uidriver {

/// Why an action was not possible.
class ActionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Script {
public:
    Script();
    ~Script();
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    /// Adds a step. An exception that leaves a step fails the script.
    Script& Then(std::function<void()> step);
    /// Adds a wait until `condition` holds; fails the script, with `what`, when it does not within twenty seconds.
    Script& WaitFor(std::string what, std::function<bool()> condition);
    /// Waits until a dialog of this thread is on top that was not open before the preceding step (for the first step:
    /// before Start), then calls `step` with it. The dialog's controls have been filled and painted.
    Script& WithNewDialog(std::function<void(HWND)> step);

    /// Starts the timer. Call just before opening the dialog. When the script fails, every dialog opened since then is
    /// cancelled so that the opening call returns. So is a dialog still open twenty seconds after the last step.
    void Start();
    /// Handles messages until the steps have run or failed: for what goes on after the opening call has returned.
    void RunToEnd() const;
    bool Finished() const;               ///< all steps have run, and none failed
    const std::string& Failure() const;  ///< why the script failed; empty while it has not

private:
    struct State;
    std::shared_ptr<State> state_;
};

/// The dialog (or message box) of this thread that is on top and enabled; null for none.
HWND TopDialog();
/// All visible top-level dialogs of this thread.
std::vector<HWND> OpenDialogs();

/// In any case of letters.
bool IsOfClass(HWND window, std::wstring_view className);
std::wstring Text(HWND window);
/// The control of that id; throws when it is missing.
HWND Control(HWND dlg, int ctrlId);
/// Presses a button, check box or radio button. Never blocks, whatever the button opens.
void Click(HWND dlg, int ctrlId);
/// Gives an edit control or the edit field of a combo box the focus, selects what it holds and types over it.
void SetText(HWND dlg, int ctrlId, const std::wstring& text);
/// Types into the window with the focus.
void Type(const std::wstring& text);
/// Presses a key in the window with the focus, with modifiers (VK_CONTROL, VK_SHIFT, VK_MENU) held.
void Key(int virtualKey, const std::vector<int>& modifiers = {});
/// Alt + letter.
void Mnemonic(HWND dlg, wchar_t letter);
void ClickTreeItem(HWND tree, HTREEITEM item, bool onCheckBox = false, bool twice = false);
void ClickListRow(HWND list, int row, bool onCheckBox = false, bool twice = false);
void ClickListHeader(HWND list, int column);
/// The first item of that text in tree order, whether its parents are open or not; null for none.
HTREEITEM FindTreeItem(HWND tree, const std::wstring& text);
/// The texts of a report list's column, top to bottom.
std::vector<std::wstring> ListColumn(HWND list, int column);

/// Types the path into a file dialog of the system and presses its button.
void ChooseFile(HWND dlg, const std::wstring& path);

/// Handles in use by this process, for leak checks: GDI objects, menus, windows.
struct Handles {
    int gdi = 0;
    int menus = 0;
    int windows = 0;
};
Handles CountHandles();

/// Writes what `window` shows (frame and children) as a PNG file. False when it cannot be grabbed or written.
bool SavePng(HWND window, const std::wstring& file);

}  // namespace uidriver
