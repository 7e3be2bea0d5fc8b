#include <occommonui/ObjectSelection.h>

#include <utility>

#include "CtrlImpl.h"

namespace ObjectSelection::Dlg {

Ctrl::Ctrl() : impl_(std::make_unique<Impl>()) {
}

Ctrl::~Ctrl() = default;

Ctrl& Ctrl::operator=(const Ctrl& other) {
    if (this != &other) impl_ = std::make_unique<Impl>(other.impl_->GetState());
    return *this;
}

void Ctrl::Attach(OCDialog* dlg, Lng::AppID app, Mode mode, int flagMask, Callback callback, int manualId,
                  int currentId, int selectedId, int groupId, int categoriesId, int itemsId, int filterId, int noDataId,
                  int configurationLabelId, int configurationId, int saveId, int saveAsId, int deleteId, int renameId,
                  int nameLabelId, int nameId) {
    Impl::State state;
    state.dlg = dlg;
    state.app = app;
    state.mode = mode;
    state.flagMask = flagMask;
    state.host = HostCallback(std::move(callback));
    state.ids = {manualId, currentId, selectedId,           groupId,         categoriesId, itemsId,
                 filterId, noDataId,  configurationLabelId, configurationId, saveId,       saveAsId,
                 deleteId, renameId,  nameLabelId,          nameId};
    impl_->Attach(std::move(state));
}

void Ctrl::Attach(OCDialog* dlg, Lng::AppID app, int flagMask, Callback callback, int manualId, int currentId,
                  int selectedId, int groupId, int categoriesId, int itemsId, int filterId, int noDataId) {
    Attach(dlg, app, NoName, flagMask, std::move(callback), manualId, currentId, selectedId, groupId, categoriesId,
           itemsId, filterId, noDataId, 0, 0, 0, 0, 0, 0, 0, 0);
}

bool Ctrl::OnInitDialog() {
    return impl_->OnInitDialog();
}

bool Ctrl::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    return impl_->OnCommand(wParam, lParam);
}

bool Ctrl::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    return impl_->OnNotify(wParam, lParam);
}

bool Ctrl::Data2Ctrls() {
    return impl_->Data2Ctrls();
}

int Ctrl::Ctrls2Data() {
    return impl_->Ctrls2Data();
}

void Ctrl::EnableDisableCtrls(EnableMode mode) {
    impl_->EnableDisableCtrls(mode);
}

void Ctrl::SetData(const RecordData& record) {
    impl_->GetState().record = record;
}

void Ctrl::SetData(const char* key, const wchar_t* name, const Data* data) {
    RecordData& record = impl_->GetState().record;
    if (key) record.key = key;
    if (name) record.name = name;
    if (data) record.data = *data;
}

void Ctrl::SetData(const Data& data, const char* key) {
    SetData(key ? key : "", nullptr, &data);
}

void Ctrl::GetData(Data& data) const {
    data = impl_->GetState().record.data;
}

void Ctrl::GetData(RecordData& record) const {
    record = impl_->GetState().record;
}

int Ctrl::GetFlagMask() const {
    return impl_->GetState().flagMask;
}

void Ctrl::SetFlagMask(int flagMask) {
    impl_->GetState().flagMask = flagMask;
}

void Ctrl::SetPaperSpace(bool paperSpace) {
    impl_->GetState().paperSpace = paperSpace;
}

void Ctrl::SetAnchoring(double left, double top, double right, double bottom) {
    impl_->SetAnchoring(left, top, right, bottom);
}

void Ctrl::SetAnchoring(bool left, bool top, bool right, bool bottom) {
    SetAnchoring(left ? 0.0 : 1.0, top ? 0.0 : 1.0, right ? 1.0 : 0.0, bottom ? 1.0 : 0.0);
}

void Ctrl::SetLanguage() {
    impl_->SetLanguage();
}

}  // namespace ObjectSelection::Dlg
