#pragma once

#include <occommonui/Export.h>
#include <occommonui/ObjectSelection.h>

/// The options of the command that selects objects.
namespace ObjectSelectionCmd {

/// What is done with the objects found.
enum Result : int {
    SelectInDrawing = 0,
    ShowInReport = 1,
};

/// Lets the user choose criteria and the result. True when the user confirmed; else both are untouched.
OCCOMMONUI_API bool OptionsDlg(HWND parent, Lng::AppID app, ObjectSelection::Dlg::Callback callback,
                               ObjectSelection::Data& data, Result& result);

}  // namespace ObjectSelectionCmd
