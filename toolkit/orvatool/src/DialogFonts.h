#pragma once

#include "Win32.h"

#include <vector>

/// The fonts of a dialog's controls at the resolution that the dialog is laid out for. Fonts that it made are its own.
class DialogFonts {
public:
    /// Gives every control of `dlg` its font, which now is for `oldDpi`, in the size for `dpi`. Back at the resolution
    /// that a font was made for, the control has that very font again.
    void SetDpi(HWND dlg, unsigned oldDpi, unsigned dpi);

private:
    struct Entry {
        HFONT original;
        unsigned originalDpi;
        win32::Font scaled;  ///< null: the original is in use
        HFONT inUse() const { return scaled ? scaled.get() : original; }
    };

    std::size_t IndexOf(HFONT font, unsigned dpi);

    std::vector<Entry> entries_;
};
