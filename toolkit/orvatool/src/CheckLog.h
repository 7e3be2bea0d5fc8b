#pragma once

#include <windows.h>

#include <commctrl.h>

#include <utility>
#include <vector>

// What becomes of the check states of a tree, whoever sets them: asking a tree of thousands of items for the state of
// each takes long.

/// From now on keeps the states that are set. The tree is one that gwTVtrackPresses has been called for.
void StartCheckLog(HWND tree);
/// The items and states (TreeCheck) set since the start or the last call, in order.
std::vector<std::pair<HTREEITEM, int>> TakeCheckLog(HWND tree);
