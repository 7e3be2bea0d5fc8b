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
    const bool held = std::exchange(locked_, false);
    const HostCallback host(std::exchange(callback_, nullptr));
    if (held) host.Ask(UnlockProject);
}

}  // namespace ObjectSelection::Dlg
