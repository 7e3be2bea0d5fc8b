#include "Module.h"
#include "Win32.h"

#include <orvatool/OCDialog.h>

namespace {

constexpr WORD kManifest = 2;

// Made at first use; freed when the toolkit is unloaded.
HANDLE CommonControlsContext() {
    static const win32::Unique<HANDLE, ReleaseActCtx> context([] {
        ACTCTXW request{};
        request.cbSize = sizeof request;
        request.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
        request.hModule = ToolkitModule();
        request.lpResourceName = MAKEINTRESOURCEW(kManifest);
        const HANDLE made = CreateActCtxW(&request);
        return made == INVALID_HANDLE_VALUE ? nullptr : made;
    }());
    return context.get();
}

// The classes that templates name, registered while version 6 is active.
void RegisterControls() {
    static const BOOL registered = [] {
        const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES | ICC_LINK_CLASS |
                                                               ICC_DATE_CLASSES | ICC_USEREX_CLASSES};
        return InitCommonControlsEx(&classes);
    }();
    static_cast<void>(registered);
}

}  // namespace

CommonControlsScope::CommonControlsScope() {
    const HANDLE context = CommonControlsContext();
    if (!context || !ActivateActCtx(context, &cookie_)) cookie_ = 0;
    RegisterControls();
}

CommonControlsScope::~CommonControlsScope() {
    // By force, because code that ran in the scope may have left a context of its own active.
    if (cookie_) DeactivateActCtx(DEACTIVATE_ACTCTX_FLAG_FORCE_EARLY_DEACTIVATION, cookie_);
}
