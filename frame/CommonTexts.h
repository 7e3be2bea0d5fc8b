#pragma once

#include <orvaspace/ustr.h>

#include "DialogTables.h"

// Wordings that several dialogs use: they are the same everywhere.

inline constexpr TextRow kOkText{IDOK, kSharedTexts, 90001, L"OK"};
inline constexpr TextRow kCancelText{IDCANCEL, kSharedTexts, 90002, L"Cancel"};

constexpr TextRow SearchText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 25912, L"Search"};
}
constexpr TextRow AddText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 25905, L"Add >"};
}
constexpr TextRow EditText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 25907, L"Edit..."};
}
constexpr TextRow RemoveText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 25908, L"Remove"};
}
constexpr TextRow UpText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 25909, L"Up"};
}
constexpr TextRow DownText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 25910, L"Down"};
}

constexpr TextRow SaveText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 20030, L"Save"};
}
constexpr TextRow DeleteText(int ctrlId) {
    return {ctrlId, kLibraryTexts, 20032, L"Delete"};
}

/// What asks for a name.
ustr NamePrompt();

/// The column of a list that names properties.
constexpr ColumnRow PropertyColumn(int width) {
    return {kLibraryTexts, 25913, L"Property", width, LVCFMT_LEFT};
}

/// What stands for a property whose name is not known.
ustr UnknownPropertyText(int propId);
