#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Win32Types.h>

namespace InterApp::HPV {

/// Stores place, size, show state and resolution of `window` under `key`, such as "Window/CustomPropertyDialog".
/// `root` is an open registry key or null for the product's key of the current user. False when nothing was stored.
ORVATOOL_API bool Reg_SetWindowPos_(HKEY root, const wchar_t* key, HWND window);

/// Reads what Reg_SetWindowPos_ stored. Where `rect` or `showState` is given, it receives the stored value (screen
/// pixels; one of SW_SHOWNORMAL, SW_SHOWMAXIMIZED). With `apply` and a window, the window is moved there: always onto a
/// monitor that is connected, never larger than its work area, scaled when the resolution differs; a window without a
/// sizing border keeps its own size. False, and nothing changes, when there is no value or it makes no sense.
ORVATOOL_API bool Reg_GetWindowPos_(HKEY root, const wchar_t* key, HWND window, tagRECT* rect, int* showState,
                                    bool apply);

/// Whether a report can show the property of this id: ordinary ones (1 and above) and the user's custom ones (-100 and
/// below).
ORVATOOL_API bool IsAvailableReportAttribute(int propId);

/// The name of user variable `number` (1 and above): the one that the user has given it, the text value
/// "UserVariables\<number>" of the product's key, else "User variable <number>" in the user's language.
ORVATOOL_API ustr Qlg_textUserVarDef_(int number);

}  // namespace InterApp::HPV

/// The product's key below HKEY_CURRENT_USER. Tests name another one; null or empty is the product's own again.
ORVATOOL_API const wchar_t* GetProductKey();
ORVATOOL_API void SetProductKey(const wchar_t* path);
