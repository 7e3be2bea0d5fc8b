#pragma once

#include <windows.h>

/// Makes `edit` the search field of `target`, a list view or tree view: Up, Down, Page Up and Page Down move the
/// target's selection while the field keeps the focus, and Esc empties a field with text before it cancels the dialog.
/// `cue` is the grey text of the empty field, null for none.
void AttachSearchEdit(HWND edit, HWND target, const wchar_t* cue);
