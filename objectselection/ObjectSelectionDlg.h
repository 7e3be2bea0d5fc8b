#pragma once

#include <occommonui/ObjectSelection.h>

#include "LibraryDialog.h"

/// The caption of the dialogs that are a selection.
inline constexpr TextRow kObjectSelectionCaption{kCaption, kSharedTexts, 42486, L"Object selection"};

/// The selection control as a dialog of its own.
class ObjectSelectionDialog : public LibraryDialog {
public:
    using RecordData = ObjectSelection::RecordData;
    using Ctrl = ObjectSelection::Dlg::Ctrl;

    /// `mode` says how the selection is named, and with that which template is shown. `record` is the working copy; it
    /// must outlive the dialog.
    ObjectSelectionDialog(HINSTANCE instance, HWND parent, RecordData& record, Ctrl::Mode mode, Lng::AppID app,
                          ObjectSelection::Dlg::Callback callback, int flagMask);

    void SetAnchoring() override;
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    int GetDataFromCtrls() override;
    int Run();

private:
    RecordData& record_;
    const Ctrl::Mode mode_;
    Ctrl selection_;
};
