#include <orvatool/SimpleReportOuputDlg.h>

#include <windows.h>

#include <utility>

#include "SimpleReportDlg.h"

bool SimpleReportOuputDlg::Run(HWND parent, const SimpleReport& report, const DialogCallback& callback) {
    try {
        SimpleReportDlg dlg(parent, report, callback);
        return dlg.StartModal(SimpleReportDlg::kTemplate) != OCDialog::kFailed;
    } catch (...) {
        return false;
    }
}

HWND SimpleReportOuputDlg::Create(HWND parent, const SimpleReport& report, const DialogCallback& callback) {
    try {
        return SimpleReportDlg::CreateModeless(parent, report, callback);
    } catch (...) {
        return nullptr;
    }
}

void SimpleReportOuputDlg::SetZoomTo(ZoomTo zoomTo) {
    SimpleReportDlg::ZoomHandler() = std::move(zoomTo);
}
