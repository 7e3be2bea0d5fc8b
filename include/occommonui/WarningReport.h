#pragma once

#include <occommonui/Export.h>
#include <orvaspace/ustr.h>
#include <orvatool/Lng.h>
#include <orvatool/ObjPosInDwg.h>
#include <orvatool/Win32Types.h>

/// Warnings that a command collects while it works and shows together at its end. Each application has its own list,
/// which lives until it is cleared: showing it does not. User-interface thread only.
namespace WarningReport {

/// The index of the category of this name in the application's list; a new name is added at the end. When memory runs
/// out, an index that no category has.
OCCOMMONUI_API unsigned __int64 AddCategory(Lng::AppID app, const ustr& name);

/// Adds a warning of a category, with the place of the object that it is about. A warning whose category does not exist
/// when the report is built is in no row. When memory runs out the warning is lost.
OCCOMMONUI_API void Add(Lng::AppID app, unsigned __int64 category, const ustr& text, const ObjPosInDwg& pos);

/// Forgets the application's categories and warnings. A report that is open keeps what it shows.
OCCOMMONUI_API void Clear(Lng::AppID app);

/// Shows the warnings, by category and within each in the order in which they were added, until the user closes the
/// report. False when there are none or the report cannot be shown.
OCCOMMONUI_API bool ShowReport(HWND parent, Lng::AppID app);

/// Tells of the warnings with a balloon at the system tray; a click on it shows the report, modeless. After any other
/// end of the balloon that report can no longer be opened. Without a tray the report is shown at once. Nothing is shown
/// when there are no warnings.
OCCOMMONUI_API void ShowNotification(HWND parent, Lng::AppID app);

}  // namespace WarningReport
