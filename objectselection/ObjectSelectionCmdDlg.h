#pragma once

#include <occommonui/ObjectSelectionCmd.h>

#include "LibraryDialog.h"

/// What the user chooses for the command that selects objects.
struct ObjectSelectionCmdOptions {
    ObjectSelection::Data data;
    ObjectSelectionCmd::Result result = ObjectSelectionCmd::SelectInDrawing;
};

/// Edits the options of the command that selects objects: which ones, and what is done with them.
class ObjectSelectionCmdDialog : public LibraryDialog {
public:
    static constexpr wchar_t kTemplate[] = L"OBJSELCMDDLG";

    /// `options` is the working copy; it must outlive the dialog.
    ObjectSelectionCmdDialog(HINSTANCE instance, HWND parent, ObjectSelectionCmdOptions& options, Lng::AppID app,
                             ObjectSelection::Dlg::Callback callback);

    void SetAnchoring() override;
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    int GetDataFromCtrls() override;

private:
    ObjectSelectionCmdOptions& options_;
    ObjectSelection::Dlg::Ctrl selection_;
};
