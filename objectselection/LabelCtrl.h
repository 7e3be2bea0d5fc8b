#pragma once

#include <orvatool/LabelManager.h>
#include <orvatool/OCDialog.h>

/// Shows labels in a control of a dialog, when it has it. They cannot be changed there.
class LabelCtrl {
public:
    void Attach(OCDialog* dlg, int ctrlId);
    void SetLabels(const LabelManager::Labels& labels);
    /// True when the command came from the labels' control.
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) const;

private:
    HWND control_ = nullptr;
};
