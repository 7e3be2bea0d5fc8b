#pragma once

#include <windows.h>

/// The toolkit's own module, for its templates, images and manifest.
HINSTANCE ToolkitModule();
