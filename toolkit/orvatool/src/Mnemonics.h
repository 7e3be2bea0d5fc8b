#pragma once

#include <windows.h>

/// Gives every button, check box, radio button and label of `dlg` that has no "&" of its own a letter that no other one
/// has: the first letter of a word where possible. OK, Cancel and Close need none (Enter and Esc press them); labels
/// count when they stand directly before the control they name. Translators thus never have to agree on letters.
void AssignMnemonics(HWND dlg);
