#pragma once

#include <orvasql/Sqlite.h>

#include <new>
#include <string>

#include "host/Result.h"

namespace ochost {

// What users are told when a project file, or a record in it, cannot be used.

Failure Fail(FailureKind kind, const std::wstring& path, const wchar_t* what);
Failure DamagedFile(const std::wstring& path);
Failure LockedFile(const std::wstring& path);
Failure ReadOnlyFile(const std::wstring& path);
Failure FailedCall(const std::wstring& path, const std::wstring& cause);
/// `what` names the kind of record.
Failure RemovedRecord(const std::wstring& what);
/// Of an error of the system, or of SQLite.
Failure Explain(unsigned long error, const std::wstring& path);
Failure Explain(const orvasql::SqlError& error, const std::wstring& path);

/// Runs f, which returns a T or a Result<T>, and turns what it throws into the failure.
template <class T, class F>
Result<T> Guarded(const std::wstring& path, F&& f) {
    try {
        return f();
    } catch (const Failure& failure) {
        return failure;
    } catch (const orvasql::SqlError& error) {
        return Explain(error, path);
    } catch (const std::bad_alloc&) {
        return FailedCall(path, L"there is not enough memory.");
    }
}

}  // namespace ochost
