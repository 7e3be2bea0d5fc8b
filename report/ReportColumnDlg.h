#pragma once

#include <occommonui/ReportDefinitionType.h>

#include "LibraryDialog.h"

/// Edits a column of a report: its width, headers, and whether it shows units.
class ReportColumnDlg : public LibraryDialog {
public:
    static constexpr wchar_t kTemplate[] = L"REPORTCOLUMNEDITDLG";

    /// `column` is the working copy; it and `propertyName` (may be null) must outlive the dialog.
    ReportColumnDlg(HINSTANCE instance, HWND parent, oce_columntype& column, const wchar_t* propertyName,
                    ReportType type);

    bool OnInitDialog() override;
    void SetLanguage() override;
    void SetDataToCtrls() override;
    int GetDataFromCtrls() override;

private:
    oce_columntype& column_;
    const wchar_t* const propertyName_;
    const ReportType type_;
};
