#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>

/// From now on `module` calls `function` where it calls `name` of `dll`. May be done again.
inline void PatchImport(HMODULE module, const wchar_t* dll, const char* name, const void* function) {
    const auto target = reinterpret_cast<const void*>(GetProcAddress(GetModuleHandleW(dll), name));
    auto* const base = reinterpret_cast<std::byte*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    auto* const first = reinterpret_cast<const void**>(base + table.VirtualAddress);
    auto* const last = first + table.Size / sizeof(void*);
    auto* const slot =
        std::find_if(first, last, [&](const void* entry) { return entry == target || entry == function; });
    if (!target || slot == last) throw std::logic_error(name);
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = function;
    VirtualProtect(slot, sizeof *slot, protection, &protection);
}
