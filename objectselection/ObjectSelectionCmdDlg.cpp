#include "ObjectSelectionCmdDlg.h"

#include <orvatool/Gw.h>

#include <utility>

#include "CommonTexts.h"
#include "EditCopy.h"
#include "ObjectSelectionDlg.h"
#include "objectselection_ids.h"

namespace {

constexpr TextRow kTexts[] = {
    kObjectSelectionCaption,
    {IDC_OBJSELCMD_RESULT_GROUP, kSharedTexts, 60173, L"Selection result"             },
    {IDC_OBJSELCMD_SELECT,       kSharedTexts, 60174, L"Select objects in the drawing"},
    {IDC_OBJSELCMD_REPORT,       kSharedTexts, 60175, L"Show selected items in report"},
    kOkText,
    kCancelText,
};

constexpr AnchorRow kAnchors[] = {
    {IDC_OBJSELCMD_RESULT_GROUP, 0, 1, 1, 1},
    {IDC_OBJSELCMD_SELECT,       0, 1, 0, 1},
    {IDC_OBJSELCMD_REPORT,       0, 1, 0, 1},
    {IDOK,                       1, 1, 1, 1},
    {IDCANCEL,                   1, 1, 1, 1},
};

static_assert(Distinct(kTexts) && Distinct(kAnchors));

constexpr LibraryDialog::Tables kTables{L"Window/ObjectSelectionCmdDialog", kTexts, {}, kAnchors};

}  // namespace

ObjectSelectionCmdDialog::ObjectSelectionCmdDialog(HINSTANCE instance, HWND parent, ObjectSelectionCmdOptions& options,
                                                   Lng::AppID app, ObjectSelection::Dlg::Callback callback)
    : LibraryDialog(instance, parent, app, kTables), options_(options) {
    selection_.Attach(this, app, 0, std::move(callback), IDC_OBJSEL_MANUAL, IDC_OBJSEL_CURRENT, IDC_OBJSEL_SELECTED,
                      IDC_OBJSEL_SET_GROUP, IDC_OBJSEL_CATEGORIES, IDC_OBJSEL_ITEMS, IDC_OBJSEL_FILTER,
                      IDC_OBJSEL_NO_DATA);
    selection_.SetData(options.data, nullptr);
}

void ObjectSelectionCmdDialog::SetAnchoring() {
    LibraryDialog::SetAnchoring();
    selection_.SetAnchoring(true, true, true, true);
}

bool ObjectSelectionCmdDialog::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    return selection_.OnCommand(wParam, lParam) || LibraryDialog::OnCommand(wParam, lParam);
}

bool ObjectSelectionCmdDialog::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    return selection_.OnNotify(wParam, lParam) || LibraryDialog::OnNotify(wParam, lParam);
}

bool ObjectSelectionCmdDialog::OnInitDialog() {
    LibraryDialog::OnInitDialog();
    const bool select = options_.result == ObjectSelectionCmd::SelectInDrawing;
    gwsetcheck(hWnd(), IDC_OBJSELCMD_SELECT, select);
    gwsetcheck(hWnd(), IDC_OBJSELCMD_REPORT, !select);
    return selection_.OnInitDialog();
}

int ObjectSelectionCmdDialog::GetDataFromCtrls() {
    if (const int refused = selection_.Ctrls2Data()) return refused;
    selection_.GetData(options_.data);
    const bool select = gwgetcheck(hWnd(), IDC_OBJSELCMD_SELECT);
    options_.result = select ? ObjectSelectionCmd::SelectInDrawing : ObjectSelectionCmd::ShowInReport;
    return 0;
}

bool ObjectSelectionCmd::OptionsDlg(HWND parent, Lng::AppID app, ObjectSelection::Dlg::Callback callback,
                                    ObjectSelection::Data& data, Result& result) {
    try {
        ObjectSelectionCmdOptions options{data, result};
        if (!EditCopy<ObjectSelectionCmdDialog>(options, parent, app, std::move(callback))) return false;
        data = std::move(options.data);
        result = options.result;
        return true;
    } catch (...) {
        return false;
    }
}
