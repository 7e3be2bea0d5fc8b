#pragma once

#include <windows.h>

// Values of the registry. `path` is the key below `root`; any failure, a value of another type among them, is false.
namespace registry {

/// Reads a text of less than N characters.
template <DWORD N>
bool ReadText(HKEY root, const wchar_t* path, const wchar_t* name, wchar_t (&text)[N]) {
    DWORD size = sizeof text;
    return RegGetValueW(root, path, name, RRF_RT_REG_SZ, nullptr, text, &size) == ERROR_SUCCESS;
}

/// Reads a binary value of exactly the record's size.
template <class Record>
bool ReadRecord(HKEY root, const wchar_t* path, const wchar_t* name, Record& record) {
    Record read;
    DWORD size = sizeof read;
    const bool ok = RegGetValueW(root, path, name, RRF_RT_REG_BINARY, nullptr, &read, &size) == ERROR_SUCCESS;
    if (!ok || size != sizeof read) return false;
    record = read;
    return true;
}

/// Writes a value; the key is made when there is none.
inline bool Write(HKEY root, const wchar_t* path, const wchar_t* name, DWORD type, const void* data, DWORD size) {
    return RegSetKeyValueW(root, path, name, type, data, size) == ERROR_SUCCESS;
}

/// Removes a value. There being none is as good.
inline bool Remove(HKEY root, const wchar_t* path, const wchar_t* name) {
    const LSTATUS status = RegDeleteKeyValueW(root, path, name);
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

}  // namespace registry
