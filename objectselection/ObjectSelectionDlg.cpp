#include "ObjectSelectionDlg.h"

#include <utility>

#include "CommonTexts.h"
#include "EditCopy.h"
#include "objectselection_ids.h"

namespace {

using ObjectSelection::Dlg::Ctrl;

constexpr TextRow kTexts[] = {kObjectSelectionCaption, kOkText, kCancelText};

constexpr AnchorRow kAnchors[] = {
    {IDOK,     1, 1, 1, 1},
    {IDCANCEL, 1, 1, 1, 1},
};
constexpr AnchorRow kNameAnchors[] = {
    {IDC_OBJSEL_NAME, 0, 0, 1, 0},
};

static_assert(Distinct(kTexts) && Distinct(kAnchors) && Distinct(kNameAnchors));

constexpr LibraryDialog::Tables kTables{L"Window/ObjectSelectionDialog", kTexts, {}, kAnchors};

const wchar_t* TemplateOf(Ctrl::Mode mode) {
    switch (mode) {
        case Ctrl::NameEdit:
            return L"OBJSELRECORDDATA";
        case Ctrl::Configurations:
            return L"OBJSELDATAWITHPRESETSDLG";
        case Ctrl::NoName:
            break;
    }
    return L"OBJSELDATADLG";
}

}  // namespace

ObjectSelectionDialog::ObjectSelectionDialog(HINSTANCE instance, HWND parent, RecordData& record, Ctrl::Mode mode,
                                             Lng::AppID app, ObjectSelection::Dlg::Callback callback, int flagMask)
    : LibraryDialog(instance, parent, app, kTables), record_(record), mode_(mode) {
    selection_.Attach(this, app, mode, flagMask, std::move(callback), IDC_OBJSEL_MANUAL, IDC_OBJSEL_CURRENT,
                      IDC_OBJSEL_SELECTED, IDC_OBJSEL_SET_GROUP, IDC_OBJSEL_CATEGORIES, IDC_OBJSEL_ITEMS,
                      IDC_OBJSEL_FILTER, IDC_OBJSEL_NO_DATA, IDC_OBJSEL_CONFIGURATION_LBL, IDC_OBJSEL_CONFIGURATION,
                      IDC_OBJSEL_SAVE, IDC_OBJSEL_SAVE_AS, IDC_OBJSEL_DELETE, IDC_OBJSEL_RENAME, IDC_OBJSEL_NAME_LBL,
                      IDC_OBJSEL_NAME);
    selection_.SetData(record);
}

void ObjectSelectionDialog::SetAnchoring() {
    LibraryDialog::SetAnchoring();
    if (mode_ == Ctrl::NameEdit) ApplyAnchors(*this, kNameAnchors);
    selection_.SetAnchoring(true, true, true, true);
}

bool ObjectSelectionDialog::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    return selection_.OnCommand(wParam, lParam) || LibraryDialog::OnCommand(wParam, lParam);
}

bool ObjectSelectionDialog::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    return selection_.OnNotify(wParam, lParam) || LibraryDialog::OnNotify(wParam, lParam);
}

bool ObjectSelectionDialog::OnInitDialog() {
    LibraryDialog::OnInitDialog();
    return selection_.OnInitDialog();
}

int ObjectSelectionDialog::GetDataFromCtrls() {
    if (const int refused = selection_.Ctrls2Data()) return refused;
    selection_.GetData(record_);
    return 0;
}

int ObjectSelectionDialog::Run() {
    return StartModal(TemplateOf(mode_));
}

namespace ObjectSelection::Dlg {

int Edit(Lng::AppID app, HWND parent, Callback callback, Data& data, int flags) {
    try {
        const bool configurations = (flags & kConfigurations) != 0;
        PrjLock lock;
        if (configurations) {
            if (!lock.Lock(parent, callback)) return -1;
            flags &= ~kLockForDrawings;  // managing the drawings is covered
        }
        RecordData record;
        record.data = data;
        if (!EditCopy<ObjectSelectionDialog>(record, parent, configurations ? Ctrl::Configurations : Ctrl::NoName, app,
                                             std::move(callback), flags))
            return -1;
        data = std::move(record.data);
        return 0;
    } catch (...) {
        return -1;
    }
}

int Edit(Lng::AppID app, HWND parent, Callback callback, RecordData& record, int flags) {
    return EditCopy<ObjectSelectionDialog>(record, parent, Ctrl::NameEdit, app, std::move(callback), flags) ? 0 : -1;
}

}  // namespace ObjectSelection::Dlg
