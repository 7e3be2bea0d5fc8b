#pragma once

#include "Win32.h"

/// Images of check boxes for a tree's state images: 0 is unused, then unchecked, checked and partial. Drawn in the
/// style of `window` at its resolution.
win32::ImageList CreateCheckImages(HWND window);
