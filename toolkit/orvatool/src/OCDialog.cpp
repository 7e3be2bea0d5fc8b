#include "OCDialogImpl.h"
#include "Win32.h"

namespace {

const wchar_t* NameOf(unsigned int resourceId) {
    return MAKEINTRESOURCEW(resourceId);
}

}  // namespace

OCDialog::OCDialog(HINSTANCE instance, HWND parent) : impl_(std::make_shared<Impl>(*this, instance, parent)) {
}

OCDialog::~OCDialog() {
    impl_->Detach();
}

int OCDialog::StartModal(unsigned int resourceId) {
    return impl_->RunModal(NameOf(resourceId));
}
int OCDialog::StartModal(const wchar_t* resourceName) {
    return impl_->RunModal(resourceName);
}

HWND OCDialog::Create(unsigned int resourceId, HWND parent) {
    return impl_->CreateModeless(NameOf(resourceId), parent);
}
HWND OCDialog::Create(const wchar_t* resourceName, HWND parent) {
    return impl_->CreateModeless(resourceName, parent);
}

void OCDialog::SetAnchoring() {
    RemoveAnchoring();
}

void OCDialog::endDialog(int result) {
    impl_->End(result);
}

bool OCDialog::OnSize(unsigned int type, int, int) {
    if (type != SIZE_MINIMIZED) impl_->Anchorer().Layout();
    return false;
}

bool OCDialog::OnSizing(unsigned int, RECT*) {
    return false;
}
bool OCDialog::OnMove(int, int) {
    return false;
}
bool OCDialog::OnExitSizeMove() {
    return false;
}
bool OCDialog::OnHScroll(HWND, unsigned int, int) {
    return false;
}
bool OCDialog::OnVScroll(HWND, unsigned int, int) {
    return false;
}
bool OCDialog::OnMouseWheel(unsigned int, short, const POINT&) {
    return false;
}
bool OCDialog::OnMouseMove(unsigned int, const POINT&) {
    return false;
}
bool OCDialog::OnDrawItem(int, DRAWITEMSTRUCT*) {
    return false;
}

bool OCDialog::OnGetMinMaxInfo(MINMAXINFO* info) {
    if (info) impl_->LimitSize(*info);
    return false;
}

bool OCDialog::OnSysCommand(unsigned __int64, __int64) {
    return false;
}
bool OCDialog::OnMeasureItem(int, MEASUREITEMSTRUCT*) {
    return false;
}

bool OCDialog::OnCommand(unsigned __int64 wParam, __int64) {
    if (HIWORD(wParam) > 1) return false;  // neither a button (0, as Enter and Esc) nor an accelerator (1)
    switch (LOWORD(wParam)) {
        case IDOK:
            OnOk();
            return true;
        case IDCANCEL:
            OnCancel();
            return true;
        default:
            return false;
    }
}

bool OCDialog::OnNotify(unsigned __int64, __int64) {
    return false;
}
bool OCDialog::OnLButtonDown(unsigned __int64, __int64) {
    return false;
}
bool OCDialog::OnLButtonUp(unsigned __int64, __int64) {
    return false;
}
bool OCDialog::OnLButtonDblClk(unsigned __int64, __int64) {
    return false;
}
bool OCDialog::OnAcadKeepFocus() {
    return true;
}
bool OCDialog::OnUserMessage(unsigned int, unsigned __int64, __int64) {
    return false;
}
bool OCDialog::OnAppMessage(unsigned int, unsigned __int64, __int64) {
    return false;
}

bool OCDialog::OnInitDialog() {
    impl_->CreateMenuBar();
    return true;
}

bool OCDialog::OnClose() {
    OnCancel();
    return true;
}

void OCDialog::OnDestroy() {
}
bool OCDialog::OnContextMenu(HWND, POINT) {
    return false;
}
HBRUSH OCDialog::OnColorEdit(HDC, HWND) {
    return nullptr;
}
HBRUSH OCDialog::OnColorStatic(HDC, HWND) {
    return nullptr;
}
bool OCDialog::OnTimer(unsigned __int64, TIMERPROC) {
    return false;
}
bool OCDialog::OnWindowPosChanging(WINDOWPOS*) {
    return false;
}
bool OCDialog::OnMenuSelect(int, unsigned int, HMENU) {
    return false;
}
bool OCDialog::OnKeyDown(int) {
    return false;
}
bool OCDialog::OnKeyDown(unsigned int, unsigned int, unsigned int) {
    return false;
}
bool OCDialog::OnEnterPressed() {
    return false;
}
void OCDialog::OnOk() {
    endDialog(IDOK);
}
void OCDialog::OnCancel() {
    endDialog(IDCANCEL);
}
void OCDialog::SetLanguage() {
}
void OCDialog::SetKeys(const std::set<int>& virtualKeys) {
    impl_->SetKeys(virtualKeys);
}
void OCDialog::SetPosition() {
}
void OCDialog::SavePosition() {
}
ustr OCDialog::GetPositionRegistryKey() const {
    return {};
}
void OCDialog::CreateMenuBar() {
}
void OCDialog::SetDataToCtrls() {
}
int OCDialog::GetDataFromCtrls() {
    return 0;
}

void OCDialog::EndDialog(int result) {
    endDialog(result);
}

HWND OCDialog::hWnd() const {
    return impl_->Window();
}
HWND OCDialog::GetParentWindow() const {
    return impl_->Parent();
}
HINSTANCE OCDialog::GetInstance() const {
    return impl_->Instance();
}
bool OCDialog::IsModal() const {
    return impl_->IsModal();
}
unsigned OCDialog::GetDpi() const {
    return impl_->Dpi();
}
int OCDialog::Scale(int pixels) const {
    return win32::Scale(pixels, GetDpi());
}

void OCDialog::ShowWindow(int showCommand) {
    if (hWnd()) ::ShowWindow(hWnd(), showCommand);
}

HWND OCDialog::GetDlgItem(short ctrlId) const {
    return impl_->Control(ctrlId);
}

void OCDialog::EnableCtrl(int ctrlId, bool enable) {
    const HWND control = impl_->Control(ctrlId);
    if (!control || (IsWindowEnabled(control) != FALSE) == enable) return;
    if (!enable) impl_->LeaveControl(control);
    EnableWindow(control, enable);
}

void OCDialog::ShowCtrl(int ctrlId, bool show) {
    const HWND control = impl_->Control(ctrlId);
    if (!control) return;
    if (!show) impl_->LeaveControl(control);
    ::ShowWindow(control, show ? SW_SHOWNA : SW_HIDE);
}

void OCDialog::SetFocus(int ctrlId) {
    if (const HWND control = impl_->Control(ctrlId)) {
        SendMessageW(hWnd(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    }
}

void OCDialog::SetResize(bool horizontal, bool vertical) {
    impl_->SetResize(horizontal, vertical);
}

void OCDialog::addCtrlAnchor(int ctrlId, double left, double top, double right, double bottom) {
    if (hWnd()) GetAnchorer().Add(ctrlId, {left, top, right, bottom});
}

void OCDialog::addCtrlAnchor(int ctrlId, bool left, bool top, bool right, bool bottom) {
    addCtrlAnchor(ctrlId, left ? 1.0 : 0.0, top ? 1.0 : 0.0, right ? 1.0 : 0.0, bottom ? 1.0 : 0.0);
}

void OCDialog::RemoveAnchoring() {
    GetAnchorer().Clear();
}
DlgControlAnchorer& OCDialog::GetAnchorer() {
    return impl_->Anchorer();
}

void OCDialog::setHeader(Lng::AppID app, int textId, const wchar_t* defaultText, Lng::AppID titleApp) {
    if (hWnd()) Lng::setdlgheader(app, hWnd(), textId, defaultText, titleApp);
}

void OCDialog::setItemText(Lng::AppID app, int ctrlId, int textId, const wchar_t* defaultText, bool append) {
    if (hWnd()) Lng::setdlgitemtext(app, hWnd(), ctrlId, textId, defaultText, append);
}

void OCDialog::SetResult(LRESULT result) {
    impl_->SetAnswer(result);
}

bool OCDialog::TakeData() {
    const int refused = GetDataFromCtrls();
    if (refused) Refuse(refused);
    return refused == 0;
}

void OCDialog::Refuse(int ctrlId) {
    MessageBeep(0);
    // A radio button takes the focus for a click, which would change what was refused.
    SendDlgItemMessageW(hWnd(), ctrlId, BM_SETDONTCLICK, TRUE, 0);
    SetFocus(ctrlId);
    SendDlgItemMessageW(hWnd(), ctrlId, BM_SETDONTCLICK, FALSE, 0);
}
