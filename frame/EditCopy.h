#pragma once

#include <windows.h>

#include <cstring>
#include <type_traits>
#include <utility>

#include "Module.h"

/// Runs a dialog modally with its template, kTemplate, by its own run operation where it has one.
template <class Dlg>
int RunModal(Dlg& dialog) {
    if constexpr (requires { dialog.Run(); }) {
        return dialog.Run();
    } else {
        return dialog.StartModal(Dlg::kTemplate);
    }
}

/// Every export that edits a record: runs `Dlg` on a copy and writes the copy back when the user confirmed. `Dlg` is
/// constructed from (instance, parent, copy, arguments...) and names its template kTemplate. False, with the caller's
/// record untouched, on Cancel and on any failure.
template <class Dlg, class Record, class... Args>
bool EditCopy(Record& record, HWND parent, Args&&... args) noexcept {
    try {
        Record copy = record;
        Dlg dialog(ModuleInstance(), parent, copy, std::forward<Args>(args)...);
        if (RunModal(dialog) != IDOK) return false;
        record = std::move(copy);
        return true;
    } catch (...) {
        return false;
    }
}

/// The same for a record that the caller has as bytes, at any address.
template <class Dlg, class Record, class... Args>
bool EditBytes(void* bytes, HWND parent, Args&&... args) noexcept {
    static_assert(std::is_trivially_copyable_v<Record>);
    Record record;
    std::memcpy(&record, bytes, sizeof record);
    if (!EditCopy<Dlg>(record, parent, std::forward<Args>(args)...)) return false;
    std::memcpy(bytes, &record, sizeof record);
    return true;
}
