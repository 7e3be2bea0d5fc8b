#pragma once

#include <orvatool/OCDialog.h>
#include <orvatool/OcListView2.h>
#include <orvatool/SimpleReport.h>
#include <orvatool/SimpleReportOuputDlg.h>

#include <chrono>
#include <memory>
#include <vector>

#include "ReportLayout.h"
#include "ReportView.h"

/// The window that shows a SimpleReport.
class SimpleReportDlg : public OCDialog {
public:
    static constexpr wchar_t kTemplate[] = L"SIMPLEREPORTDLG";

    SimpleReportDlg(HWND parent, const SimpleReport& report, const DialogCallback& callback);

    /// Null on failure. The dialog belongs to its window.
    static HWND CreateModeless(HWND parent, const SimpleReport& report, const DialogCallback& callback);
    /// Who zooms, for all reports.
    static SimpleReportOuputDlg::ZoomTo& ZoomHandler();

    void SetAnchoring() override;
    bool OnDrawItem(int ctrlId, DRAWITEMSTRUCT* item) override;
    bool OnMeasureItem(int ctrlId, MEASUREITEMSTRUCT* item) override;
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnAppMessage(unsigned int message, unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    void OnDestroy() override;
    bool OnContextMenu(HWND control, POINT screenPoint) override;
    bool OnTimer(unsigned __int64 id, TIMERPROC procedure) override;
    bool OnKeyDown(int virtualKey) override;
    using OCDialog::OnKeyDown;
    bool OnEnterPressed() override;
    void SetLanguage() override;
    void SetPosition() override;
    void SavePosition() override;
    ustr GetPositionRegistryKey() const override;

private:
    void FillList();
    bool HasFocus(int ctrlId) const;
    HWND SearchEdit() const;

    void Search();
    void ChangeOrder(int column);
    void Work(std::chrono::milliseconds budget);
    void FinishWork();
    bool IsBusy() const;
    void ShowRows();
    void MarkRows(std::chrono::milliseconds budget);
    void ShowSelection(const std::vector<int>& rows, int focused);
    void ShowCount();
    std::vector<int> SelectedRows() const;
    int FocusedRow() const;
    int ZoomRow() const;
    void SelectionChanged();

    void RequestZoom();
    void Zoom();
    void Copy();
    void Save();
    void SelectAll();
    POINT MenuPoint(POINT screenPoint) const;
    int WidthOf(int column) const;

    const SimpleReport report_;
    const DialogCallback callback_;
    ReportView view_;
    OcListView2 list_;
    std::vector<int> shown_;           // the rows of the report that the list has
    std::vector<int> hiddenSelected_;  // rows that the search hides and that are selected when it shows them again
    std::vector<int> waiting_;         // places of rows that are selected and not yet marked so in the list, last first
    bool marking_ = false;             // it is not the user who selects
    ReportLayout layout_;              // as it was opened
    ustr_pre<260> path_;               // of the file saved last
    std::shared_ptr<SimpleReportDlg> self_;  // of a modeless dialog, until its window goes
};
