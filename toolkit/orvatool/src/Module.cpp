#include "Module.h"

namespace {
HINSTANCE module = nullptr;
}

HINSTANCE ToolkitModule() {
    return module;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        module = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
