#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>

namespace {

// A crash must fail the run whatever debugger the system offers: say where, then end with a code of our own.
LONG WINAPI ReportCrash(EXCEPTION_POINTERS* exception) {
    const auto* address = exception->ExceptionRecord->ExceptionAddress;
    HMODULE module = nullptr;
    wchar_t name[MAX_PATH] = L"?";
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       static_cast<const wchar_t*>(address), &module);
    GetModuleFileNameW(module, name, MAX_PATH);
    const auto offset = static_cast<const char*>(address) - reinterpret_cast<const char*>(module);
    std::fprintf(stderr, "crash 0x%08lx at %ls + 0x%llx\n", exception->ExceptionRecord->ExceptionCode, name,
                 static_cast<unsigned long long>(offset));
    std::fflush(nullptr);
    TerminateProcess(GetCurrentProcess(), 139);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

extern "C" int wmain(int argc, wchar_t** argv) {
    SetUnhandledExceptionFilter(ReportCrash);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
