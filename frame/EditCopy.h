#pragma once

#include <windows.h>

#include <utility>

#include "Module.h"

/// Every export that edits a record: runs `Dlg` on a copy and writes the copy back when the user confirmed. `Dlg` is
/// constructed from (instance, parent, copy, arguments...) and names its template kTemplate. False, with the caller's
/// record untouched, on Cancel and on any failure.
template <class Dlg, class Record, class... Args>
bool EditCopy(Record& record, HWND parent, Args&&... args) noexcept {
    try {
        Record copy = record;
        Dlg dialog(ModuleInstance(), parent, copy, std::forward<Args>(args)...);
        if (dialog.StartModal(Dlg::kTemplate) != IDOK) return false;
        record = std::move(copy);
        return true;
    } catch (...) {
        return false;
    }
}
