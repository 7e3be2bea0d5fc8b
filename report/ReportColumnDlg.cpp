#include "ReportColumnDlg.h"

#include <occommonui/ReportTemplate.h>
#include <orvatool/Gw.h>

#include <cstddef>
#include <cstring>
#include <string_view>

#include "ColumnWidths.h"
#include "CommonTexts.h"
#include "EditCopy.h"
#include "report_ids.h"

namespace {

constexpr TextRow kWidthText{IDC_REPORTCOLUMN_WIDTH_LBL, kLibraryTexts, 20973, L"Length (mm)"};

constexpr TextRow kTexts[] = {
    {kCaption,                      kLibraryTexts, 20971, L"Edit attribute"},
    {IDC_REPORTCOLUMN_PROPERTY_LBL, kLibraryTexts, 20972, L"Property"      },
    {IDC_REPORTCOLUMN_HEADER1_LBL,  kLibraryTexts, 20974, L"Header 1"      },
    {IDC_REPORTCOLUMN_HEADER2_LBL,  kLibraryTexts, 20975, L"Header 2"      },
    {IDC_REPORTCOLUMN_UNITS,        kSharedTexts,  62047, L"Show units"    },
};

constexpr TextRow kCommonTexts[] = {kWidthText, kOkText, kCancelText};

constexpr FieldRow<oce_columntype> kFields[] = {
    {IDC_REPORTCOLUMN_HEADER1, kField<&oce_columntype::hdr1>,      kAny},
    {IDC_REPORTCOLUMN_HEADER2, kField<&oce_columntype::hdr2>,      kAny},
    {IDC_REPORTCOLUMN_UNITS,   kField<&oce_columntype::showUnits>, kAny},
};

static_assert(Distinct(kTexts) && Distinct(kCommonTexts) && Distinct(kFields));

constexpr LibraryDialog::Tables kTables{L"Window/ReportColumnDialog", kTexts, kCommonTexts, {}};

// The catalogues have one text for both units, and its unit is millimetres.
ustr WidthTextInCharacters() {
    constexpr std::wstring_view kMillimetres = L"(mm)";
    ustr text = Lng::text(kWidthText.app, kWidthText.textId, L"Length (char)");
    const std::size_t at = std::wstring_view(text).find(kMillimetres);
    if (at == std::wstring_view::npos) return text;
    return text.slice(0, at) + L"(char)" + text.slice(at + kMillimetres.size());
}

// Of a record of unknown origin the byte may be more than 0 and 1, which no bool can be.
void NormalizeShowUnits(oce_columntype& column) {
    unsigned char byte = 0;
    std::memcpy(&byte, &column.showUnits, sizeof byte);
    column.showUnits = byte != 0;
}

}  // namespace

ReportColumnDlg::ReportColumnDlg(HINSTANCE instance, HWND parent, oce_columntype& column, const wchar_t* propertyName,
                                 ReportType type)
    : LibraryDialog(instance, parent, kSharedTexts, kTables),
      column_(column),
      propertyName_(propertyName),
      type_(type) {
    NormalizeShowUnits(column_);
}

bool ReportColumnDlg::OnInitDialog() {
    LibraryDialog::OnInitDialog();
    SetDataToCtrls();
    SetFocus(IDC_REPORTCOLUMN_WIDTH);
    return false;
}

void ReportColumnDlg::SetLanguage() {
    LibraryDialog::SetLanguage();
    if (HasWidthsInCharacters(type_))
        Lng::setdlgitemtext(hWnd(), IDC_REPORTCOLUMN_WIDTH_LBL, WidthTextInCharacters(), false);
}

void ReportColumnDlg::SetDataToCtrls() {
    const ustr name = propertyName_ ? ustr(propertyName_) : UnknownPropertyText(column_.propId);
    gwmemotodlg(hWnd(), IDC_REPORTCOLUMN_PROPERTY, name.c_str(), 0, 0);
    gwmemotodlg(hWnd(), IDC_REPORTCOLUMN_WIDTH, WidthText(UsableWidth(column_.len)).c_str(), 0, 0);
    Show(*this, kFields, column_);
}

int ReportColumnDlg::GetDataFromCtrls() {
    const int narrowest = NarrowestColumn(type_, column_.propId);
    int width = 0;
    if (!gwdlgtoint(hWnd(), kSharedTexts, IDC_REPORTCOLUMN_WIDTH, narrowest, kWidestColumn, width))
        return IDC_REPORTCOLUMN_WIDTH;
    column_.len = static_cast<float>(width);
    return Take(*this, kFields, column_);
}

bool ReportTemplate::EditColumn(HWND parent, void* column, const wchar_t* propertyName, ReportType type) {
    return column && EditBytes<ReportColumnDlg, oce_columntype>(column, parent, propertyName, type);
}
