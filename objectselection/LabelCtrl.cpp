#include "LabelCtrl.h"

void LabelCtrl::Attach(OCDialog* dlg, int ctrlId) {
    control_ = ::GetDlgItem(dlg->hWnd(), ctrlId);
    SendMessageW(control_, EM_SETREADONLY, TRUE, 0);
}

void LabelCtrl::SetLabels(const LabelManager::Labels& labels) {
    if (control_) SetWindowTextW(control_, labels.ToString().c_str());
}

bool LabelCtrl::OnCommand(unsigned __int64 /*wParam*/, __int64 lParam) const {
    return control_ && reinterpret_cast<HWND>(lParam) == control_;
}
