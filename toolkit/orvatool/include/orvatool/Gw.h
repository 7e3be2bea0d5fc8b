#pragma once

#include <windows.h>

#include <commctrl.h>
#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Lng.h>
#include <orvatool/ValueList.h>

#include <cstdint>
#include <vector>

// Plain control functions. A control that does not exist is passed over: setters do nothing, getters give the empty
// value. None of them sends the dialog a notification that it does not also get from the user's own action.

/// Puts `text` (null = empty) into an edit control, cut to `maxChars`, and limits typing to `maxChars`; 0 = no limit.
/// `flags` is reserved: 0.
ORVATOOL_API void gwmemotodlg(HWND dlg, int ctrlId, const wchar_t* text, int maxChars, int flags);

/// The text of a control, cut to `maxChars` UTF-16 units (0 = all) without parting a surrogate pair.
ORVATOOL_API ustr gwdlgtomemo(HWND dlg, int ctrlId, int maxChars = 0);

/// Writes a number: integers as they are, doubles with at most `decimals` decimals and the user's decimal separator.
ORVATOOL_API void gwinttodlg(HWND dlg, int ctrlId, std::int64_t value);
ORVATOOL_API void gwdoubletodlg(HWND dlg, int ctrlId, double value, int decimals);

/// Reads a number from `minimum` to `maximum`, with blanks around it or not, with the user's decimal separator or a
/// point. Anything else is reported in a message that names the range, the control gets the focus with its text
/// selected, `value` stays and the result is false. Without such a control false, in silence.
ORVATOOL_API bool gwdlgtoint(HWND dlg, Lng::AppID app, int ctrlId, int minimum, int maximum, int& value);
ORVATOOL_API bool gwdlgtodouble(HWND dlg, Lng::AppID app, int ctrlId, double minimum, double maximum, double& value);

ORVATOOL_API void gwenablectl(HWND dlg, int ctrlId, bool enable);
ORVATOOL_API void gwshowctl(HWND dlg, int ctrlId, bool show);
ORVATOOL_API void gwsetcheck(HWND dlg, int ctrlId, bool checked);
ORVATOOL_API bool gwgetcheck(HWND dlg, int ctrlId);

/// Fills a combo box with `values` and selects the entry of `selected` (none when there is no such value).
ORVATOOL_API void gwfillcombo(HWND dlg, int ctrlId, const ValueList& values, std::int64_t selected);
/// The value of the selected entry; false, and `value` stays, when none is selected.
ORVATOOL_API bool gwcombovalue(HWND dlg, int ctrlId, std::int64_t& value);

/// Check states of tree items.
enum TreeCheck : int { kTreeUnchecked = 0, kTreeChecked = 1, kTreePartial = 2 };

/// Gives a tree view (without TVS_CHECKBOXES) check boxes of three states, drawn at the tree's resolution and redrawn
/// when that changes; the items it has are unchecked. The images belong to the tree and go with it. Clicks and the
/// space bar are the owner's to handle: see gwTVCheckFromNotify.
ORVATOOL_API void gwTVaddChecks(HWND tree);
/// One of TreeCheck; unchecked for an item without a check box.
ORVATOOL_API int gwTVgetCheck(HWND tree, HTREEITEM item);
/// Sets the one item; parents and children stay.
ORVATOOL_API void gwTVsetCheck(HWND tree, HTREEITEM item, int state);
/// Gives every item below `items` the state of its item (an item that is partial leaves them), and every item above
/// them the state that follows from its children (all checked, all unchecked, else partial). Linear in the items
/// touched: the children of an item above are looked through once for all of `items`.
ORVATOOL_API void gwTVUpdate3StateCheckForItems(HWND tree, const std::vector<HTREEITEM>& items);
/// For the owner's NM_CLICK, NM_DBLCLK (the second click of two) and TVN_KEYDOWN of a tree with gwTVaddChecks: when the
/// user clicked a check box or pressed the space bar, turns that item on or off (partial turns on), with parents and
/// children, and returns it; else null. The owner answers TRUE to a notification that changed a check, which keeps the
/// double click from opening the branch and the space out of the type-ahead.
ORVATOOL_API HTREEITEM gwTVCheckFromNotify(const NMHDR* header);

/// Makes `tree` remember where the left button goes down, for gwTVpressedItem. gwTVaddChecks and TreeSearch do it.
ORVATOOL_API void gwTVtrackPresses(HWND tree);
/// For NM_CLICK and NM_DBLCLK, which do not say: the item whose check box, image or text was pressed, null for the
/// space around the items.
ORVATOOL_API HTREEITEM gwTVpressedItem(HWND tree);

/// The data (lParam) of the item; 0 for null.
ORVATOOL_API std::int64_t gwTVgetData(HWND tree, HTREEITEM item);
ORVATOOL_API ustr gwTVgetText(HWND tree, HTREEITEM item);
/// The item after `item` in tree order, whether its parents are open or not; null after the last.
ORVATOOL_API HTREEITEM gwTVnext(HWND tree, HTREEITEM item);

/// A yes/no question titled with the product's name; true for yes, which is the default button. `app` is the
/// application that asks. A parent that is null or no window leaves the box without an owner.
ORVATOOL_API bool gwyesnomsg(HWND parent, Lng::AppID app, const wchar_t* question);
/// A message titled with the product's name, for information or for something that went wrong.
ORVATOOL_API void gwmsg(HWND parent, Lng::AppID app, const wchar_t* message);
ORVATOOL_API void gwerrmsg(HWND parent, Lng::AppID app, const wchar_t* message);

/// Redraw of a window off in a scope; on and repainted at the end of the outermost scope.
class ORVATOOL_API gwRedrawOff {
public:
    explicit gwRedrawOff(HWND window);
    ~gwRedrawOff();
    gwRedrawOff(const gwRedrawOff&) = delete;
    gwRedrawOff& operator=(const gwRedrawOff&) = delete;

private:
    HWND window_;
    bool outermost_;
    bool visible_;
};

/// The wait cursor in a scope, and the cursor that was there before after it.
class ORVATOOL_API gwWaitCursor {
public:
    gwWaitCursor();
    ~gwWaitCursor();
    gwWaitCursor(const gwWaitCursor&) = delete;
    gwWaitCursor& operator=(const gwWaitCursor&) = delete;

private:
    HCURSOR previous_;
};

/// Puts text on the clipboard; false when it is taken by another program.
ORVATOOL_API bool gwcopytext(HWND owner, const ustr& text);

/// Frees what the toolkit keeps for a module: images, fonts, catalogues. Called once at the module's unload; what is
/// asked for afterwards is loaded anew.
ORVATOOL_API void gwrelease();
/// How often gwrelease has been called in this process.
ORVATOOL_API int gwreleasecount();
