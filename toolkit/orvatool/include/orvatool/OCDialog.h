#pragma once

#include <windows.h>

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Lng.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>

class DlgControlAnchorer;
class OCDialog;

/// Called by a dialog of the toolkit for its own messages.
using DialogCallback = std::function<std::int64_t(OCDialog*, std::uint32_t, std::uint64_t, std::int64_t)>;

/// Base of every dialog: runs a template of a module modally or modeless and turns its messages into virtual calls.
///
/// A dialog calls, in this order: OnInitDialog, SetLanguage, SetAnchoring, SetPosition; then commands and
/// notifications; at its end SavePosition, OnDestroy. Overrides of these call the base first.
///
/// Handlers return true when they dealt with the message; the system's own handling follows when they return false.
/// A handler that must answer a value sets it with SetResult and returns true. An exception that leaves an override
/// ends the dialog with kFailed; none reaches the system.
///
/// After such an exception OnDestroy is the only override still called. Before OnInitDialog only OnMeasureItem is, as
/// owner-drawn controls ask for it when they are created. SavePosition is left out when SetPosition was not reached.
///
/// The object must outlive its window; the destructor destroys a window that is still open, without further virtual
/// calls. A modeless dialog on the heap may delete itself as the last act of OnDestroy. An object can be run again once
/// its window is gone. User-interface thread only.
class ORVATOOL_API OCDialog {
public:
    /// Result of a dialog that could not be created or that failed. (An enumerator, since no DLL need export it.)
    enum : int { kFailed = -1 };

    /// `instance` is the module that holds the template; `parent` may be null.
    OCDialog(HINSTANCE instance, HWND parent);
    OCDialog(const OCDialog&) = delete;
    OCDialog& operator=(const OCDialog&) = delete;

    // The order of the virtual operations is an interface: modules built against it call them by their slots.

    virtual ~OCDialog();
    /// Runs the template modally: the parent's top-level window is disabled meanwhile. Returns the result given to
    /// endDialog (1 = OK). kFailed when there is no such template, the parent's window is gone, a dialog of this object
    /// runs already, or the dialog ended in another way (an exception, WM_QUIT, its window destroyed from outside).
    virtual int StartModal(unsigned int resourceId);
    virtual int StartModal(const wchar_t* resourceName);
    /// Creates the dialog modeless and returns its window, null on failure; a null `parent` means the constructor's.
    /// It is not shown unless the template says so. Keys work although the host runs the message loop.
    virtual HWND Create(unsigned int resourceId, HWND parent);
    virtual HWND Create(const wchar_t* resourceName, HWND parent);
    /// Registers the anchors; the base removes those there are.
    virtual void SetAnchoring();
    /// Ends the dialog: closes a modal one with `result`, destroys a modeless one. The first call counts.
    virtual void endDialog(int result);
    /// The base lays out the anchored controls, except when the dialog was minimized.
    virtual bool OnSize(unsigned int type, int width, int height);
    virtual bool OnSizing(unsigned int edge, RECT* rect);
    virtual bool OnMove(int x, int y);
    virtual bool OnExitSizeMove();
    virtual bool OnHScroll(HWND control, unsigned int code, int position);
    virtual bool OnVScroll(HWND control, unsigned int code, int position);
    virtual bool OnMouseWheel(unsigned int keys, short delta, const POINT& screenPoint);
    virtual bool OnMouseMove(unsigned int keys, const POINT& clientPoint);
    virtual bool OnDrawItem(int ctrlId, DRAWITEMSTRUCT* item);
    /// The base keeps a resizable dialog at least as large as its template, within the directions of SetResize.
    virtual bool OnGetMinMaxInfo(MINMAXINFO* info);
    virtual bool OnSysCommand(unsigned __int64 wParam, __int64 lParam);
    virtual bool OnMeasureItem(int ctrlId, MEASUREITEMSTRUCT* item);
    /// The base turns IDOK and IDCANCEL into OnOk and OnCancel.
    virtual bool OnCommand(unsigned __int64 wParam, __int64 lParam);
    virtual bool OnNotify(unsigned __int64 wParam, __int64 lParam);
    virtual bool OnLButtonDown(unsigned __int64 wParam, __int64 lParam);
    virtual bool OnLButtonUp(unsigned __int64 wParam, __int64 lParam);
    virtual bool OnLButtonDblClk(unsigned __int64 wParam, __int64 lParam);
    /// The CAD host asks whether a modeless dialog keeps the keyboard; the base says yes.
    virtual bool OnAcadKeepFocus();
    virtual bool OnUserMessage(unsigned int message, unsigned __int64 wParam,
                               __int64 lParam);                                                ///< WM_USER up to WM_APP
    virtual bool OnAppMessage(unsigned int message, unsigned __int64 wParam, __int64 lParam);  ///< from WM_APP on
    /// Fills the controls. True leaves the initial focus to the system (first control in tab order), false says that
    /// the override has set it.
    virtual bool OnInitDialog();
    virtual bool OnClose();  ///< title bar X, Alt+F4; the base turns it into OnCancel
    virtual void OnDestroy();
    virtual bool OnContextMenu(HWND control, POINT screenPoint);
    virtual HBRUSH OnColorEdit(HDC dc, HWND control);    ///< null: the system's colours
    virtual HBRUSH OnColorStatic(HDC dc, HWND control);  ///< null: the system's colours
    virtual bool OnTimer(unsigned __int64 id, TIMERPROC procedure);
    virtual bool OnWindowPosChanging(WINDOWPOS* position);
    virtual bool OnMenuSelect(int item, unsigned int flags, HMENU menu);
    /// A key named by SetKeys was pressed anywhere in the dialog (with Alt too), before its control sees it; true
    /// swallows it.
    virtual bool OnKeyDown(int virtualKey);
    /// A key was pressed that reached the dialog window itself.
    virtual bool OnKeyDown(unsigned int virtualKey, unsigned int repeatCount, unsigned int flags);
    /// Enter was pressed; true keeps it from the default button.
    virtual bool OnEnterPressed();
    /// The base ends the dialog with result 1. Overrides validate first: `if (!TakeData()) return;`.
    virtual void OnOk();
    /// The base ends the dialog with result 2.
    virtual void OnCancel();
    virtual void SetLanguage();
    virtual void SetKeys(const std::set<int>& virtualKeys);
    /// Restores the place the user left the dialog at; the base does nothing.
    virtual void SetPosition();
    virtual void SavePosition();
    /// The key under which the position is stored; the base has none.
    virtual ustr GetPositionRegistryKey() const;
    /// Called by the base's OnInitDialog; an override gives the window a menu, and the window grows by its height.
    virtual void CreateMenuBar();
    virtual void SetDataToCtrls();
    /// Reads the controls into the data: 0, or the id of the first control whose content is refused.
    virtual int GetDataFromCtrls();

    /// Ends the dialog like endDialog.
    void EndDialog(int result);

    HWND hWnd() const;
    operator HWND() const { return hWnd(); }
    HWND GetParentWindow() const;
    HINSTANCE GetInstance() const;
    bool IsModal() const;
    /// The resolution the dialog is laid out for.
    unsigned GetDpi() const;
    /// `pixels` given for 96 DPI, at the dialog's resolution.
    int Scale(int pixels) const;

    // Without a window, or for a control that it does not have, the operations below do nothing.

    void ShowWindow(int showCommand);
    HWND GetDlgItem(short ctrlId) const;
    /// Disabling or hiding the control that has the focus moves the focus on to the next one.
    void EnableCtrl(int ctrlId, bool enable);
    void ShowCtrl(int ctrlId, bool show);
    /// Moves the focus as Tab does: a text is selected, the default button follows.
    void SetFocus(int ctrlId);

    /// Which directions the border may resize; both unless called. A template without WS_THICKFRAME is never resized.
    /// A dialog that resizes in both has a size grip in its corner.
    void SetResize(bool horizontal, bool vertical);
    /// Edges that follow the dialog's growth, as fractions of it (0.0 to 1.0).
    void addCtrlAnchor(int ctrlId, double left, double top, double right, double bottom);
    /// Edges that follow it wholly or not at all.
    void addCtrlAnchor(int ctrlId, bool left, bool top, bool right, bool bottom);
    /// Forgets the anchors; the controls stay where they are.
    void RemoveAnchoring();
    DlgControlAnchorer& GetAnchorer();

    void setHeader(Lng::AppID app, int textId, const wchar_t* defaultText, Lng::AppID titleApp);
    void setItemText(Lng::AppID app, int ctrlId, int textId, const wchar_t* defaultText, bool append = false);

    /// The value that the message being handled answers to its sender; the handler then returns true.
    void SetResult(LRESULT result);

    /// GetDataFromCtrls; a refused control makes one beep and gets the focus. True when all was accepted.
    bool TakeData();
    /// One beep and the focus to `ctrlId`.
    void Refuse(int ctrlId);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

/// Activates Common Controls version 6 for the windows created in its scope, whatever manifest the host has.
class ORVATOOL_API CommonControlsScope {
public:
    CommonControlsScope();
    ~CommonControlsScope();
    CommonControlsScope(const CommonControlsScope&) = delete;
    CommonControlsScope& operator=(const CommonControlsScope&) = delete;

private:
    ULONG_PTR cookie_ = 0;
};
