#pragma once

#include <windows.h>

#include <commctrl.h>

#include <functional>

/// Runs `run` once, before the tree handles the next key or button that the user presses there; null takes it back. The
/// tree is one that gwTVtrackPresses has been called for.
void BeforeNextInput(HWND tree, std::function<void()> run);

/// The item of a tree with gwTVaddChecks whose check box was clicked, or that the space bar is for; null for none.
HTREEITEM CheckedItem(const NMHDR* header);
