#include "LibraryDialog.h"

#include <orvatool/InterApp.h>

LibraryDialog::LibraryDialog(HINSTANCE instance, HWND parent, Lng::AppID app, const Tables& tables)
    : OCDialog(instance, parent), app_(app), tables_(tables) {
}

void LibraryDialog::SetAnchoring() {
    OCDialog::SetAnchoring();
    ApplyAnchors(*this, tables_.anchors);
}

bool LibraryDialog::OnDrawItem(int ctrlId, DRAWITEMSTRUCT* item) {
    return list_.onDrawItem(item) || OCDialog::OnDrawItem(ctrlId, item);
}

bool LibraryDialog::OnMeasureItem(int ctrlId, MEASUREITEMSTRUCT* item) {
    if (list_.hWnd() && ctrlId == list_.ctrlId())
        SendMessageW(list_.hWnd(), WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(item));
    return OCDialog::OnMeasureItem(ctrlId, item);
}

void LibraryDialog::OnOk() {
    if (TakeData()) OCDialog::OnOk();
}

void LibraryDialog::SetLanguage() {
    OCDialog::SetLanguage();
    ApplyTexts(*this, tables_.texts, app_);
    ApplyTexts(*this, tables_.commonTexts, app_);
    ApplyColumnTexts(list_, tables_.columns);
}

void LibraryDialog::SetPosition() {
    InterApp::HPV::Reg_GetWindowPos_(nullptr, GetPositionRegistryKey().c_str(), hWnd(), nullptr, nullptr, true);
}

void LibraryDialog::SavePosition() {
    InterApp::HPV::Reg_SetWindowPos_(nullptr, GetPositionRegistryKey().c_str(), hWnd());
}

ustr LibraryDialog::GetPositionRegistryKey() const {
    return tables_.positionKey;
}

void LibraryDialog::AttachList(int ctrlId, int stretched) {
    RequireControl(*this, ctrlId);
    list_.attach(hWnd(), ctrlId);
    AddColumns(list_, tables_.columns);
    list_.stretchColumn(stretched);
}

bool LibraryDialog::ListAnswers(const NMHDR* header) {
    LRESULT result = 0;
    if (!list_.onNotify(header, result)) return false;
    SetResult(result);
    return true;
}

bool LibraryDialog::HasFocus(int ctrlId) const {
    return GetFocus() == ::GetDlgItem(hWnd(), ctrlId);
}

unsigned LibraryDialog::PressedButton(const ListButtons& buttons, int virtualKey) const {
    if (GetFocus() != list_.hWnd()) return 0;
    const bool alt = GetKeyState(VK_MENU) < 0;
    if (!alt && virtualKey == VK_DELETE) return buttons.remove;
    if (!alt && virtualKey == VK_F2) return buttons.edit;
    if (alt && virtualKey == VK_UP) return buttons.up;
    if (alt && virtualKey == VK_DOWN) return buttons.down;
    return 0;
}
