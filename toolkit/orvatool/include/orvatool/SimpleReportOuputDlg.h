#pragma once

#include <orvatool/Export.h>
#include <orvatool/Lng.h>
#include <orvatool/OCDialog.h>
#include <orvatool/SimpleReport.h>

#include <functional>

/// Shows a SimpleReport: a list that the user can search, sort by any column, copy from, save as text or for Excel, and
/// zoom from to the objects in the drawing. The place of the window, the widths of the columns and the order are the
/// user's and remembered. The window keeps the report as it is when it is opened.
class ORVATOOL_API SimpleReportOuputDlg {
public:
    /// Shows the report until the user closes it. `callback`, which may be empty, gets the dialog's WM_APP messages
    /// (0x8000 to 0xBFFF), whose sender receives what it answers. False when the window could not be shown.
    static bool Run(HWND parent, const SimpleReport& report, const DialogCallback& callback);

    /// Creates the window modeless and hidden and returns it, null on failure. It deletes itself when it is closed. A
    /// callback that throws answers 0.
    static HWND Create(HWND parent, const SimpleReport& report, const DialogCallback& callback);

    /// Shows an object to the user; false when it could not be found, which the user is then told.
    using ZoomTo = std::function<bool(HWND report, const ObjPosInDwg& pos)>;
    /// Who zooms, for all reports of the process: the CAD program. Without one reports offer no zooming.
    static void SetZoomTo(ZoomTo zoomTo);
};
