#include <occommonui/ObjectSelection.h>

#include <utility>

#include "HostCallback.h"

namespace ObjectSelection::Dlg {

PrjLock::PrjLock() = default;

PrjLock::PrjLock(HWND owner, Callback callback) {
    Lock(owner, std::move(callback));
}

PrjLock::PrjLock(const PrjLock&) = default;
PrjLock& PrjLock::operator=(const PrjLock&) = default;

PrjLock::~PrjLock() {
    Unlock();
}

bool PrjLock::Lock(HWND owner, Callback callback) {
    if (locked_) return true;
    callback_ = std::move(callback);
    locked_ = HostCallback(callback_).AskRefusing(LockProject, HostCallback::WParam(owner)) == 0;
    return locked_;
}

void PrjLock::Unlock() {
    if (locked_) HostCallback(std::move(callback_)).Ask(UnlockProject);
    locked_ = false;
    callback_ = nullptr;
}

}  // namespace ObjectSelection::Dlg
