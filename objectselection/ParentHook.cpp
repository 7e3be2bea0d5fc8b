#include "ParentHook.h"

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

struct HookedDialog {
    WNDPROC procedure = nullptr;  // the dialog's own
    std::vector<ParentHook*> hooks;
};

// The common controls' own way to subclass looks a window property up for every message, which a dialog with trees of
// thousands of rows feels; hence this table.
std::unordered_map<HWND, HookedDialog> hookedDialogs;

}  // namespace

ParentHook::~ParentHook() {
    Detach();
}

void ParentHook::Attach(HWND dlg, Handler handler) {
    Detach();
    handler_ = std::move(handler);
    dlg_ = dlg;
    HookedDialog& hooked = hookedDialogs[dlg];
    hooked.hooks.push_back(this);
    if (hooked.procedure) return;
    hooked.procedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(dlg, GWLP_WNDPROC));
    SetWindowLongPtrW(dlg, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure));
}

LRESULT CALLBACK ParentHook::Procedure(HWND dlg, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto found = hookedDialogs.find(dlg);
    if (found == hookedDialogs.end()) return DefDlgProcW(dlg, message, wParam, lParam);
    const WNDPROC procedure = found->second.procedure;
    if (message == WM_NCDESTROY) {
        for (ParentHook* const hook : found->second.hooks)
            hook->dlg_ = nullptr;
        hookedDialogs.erase(found);
        return CallWindowProcW(procedure, dlg, message, wParam, lParam);
    }
    for (const ParentHook* const hook : found->second.hooks) {
        LRESULT result = 0;
        if (hook->Handle(message, wParam, lParam, result)) return result;
    }
    return CallWindowProcW(procedure, dlg, message, wParam, lParam);
}

// What fails is left to the dialog.
bool ParentHook::Handle(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) const noexcept {
    try {
        return handler_(message, wParam, lParam, result);
    } catch (...) {
        return false;
    }
}

// Where another subclass came on top the procedure stays, and passes on.
void ParentHook::Detach() {
    const auto found = hookedDialogs.find(std::exchange(dlg_, nullptr));
    if (found == hookedDialogs.end()) return;
    std::erase(found->second.hooks, this);
    const bool onTop = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(found->first, GWLP_WNDPROC)) == Procedure;
    if (!found->second.hooks.empty() || !onTop) return;
    SetWindowLongPtrW(found->first, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(found->second.procedure));
    hookedDialogs.erase(found);
}
