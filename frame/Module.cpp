#include "Module.h"

#include <windows.h>

#include <orvatool/Gw.h>

namespace {

HINSTANCE instance = nullptr;
const wchar_t* productName = L"";

}  // namespace

HINSTANCE ModuleInstance() {
    return instance;
}

const wchar_t* ProductName() {
    return productName;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        instance = module;
        productName = L"OrvaCAD";
    } else if (reason == DLL_PROCESS_DETACH) {
        gwrelease();
    }
    return TRUE;
}
