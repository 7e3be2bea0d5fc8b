#pragma once

#include <windows.h>

#include <commctrl.h>
#include <objbase.h>

#include <utility>

// Owners of Win32 handles for the toolkit's own sources.
namespace win32 {

/// Owns one handle and closes it with `Close`; null is "none". Movable, not copyable.
template <class Handle, auto Close>
class Unique {
public:
    Unique() = default;
    explicit Unique(Handle handle) : handle_(handle) {}
    Unique(Unique&& other) noexcept : handle_(other.release()) {}
    Unique& operator=(Unique&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~Unique() { reset(); }

    Handle get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }
    Handle release() { return std::exchange(handle_, nullptr); }
    void reset(Handle handle = nullptr) {
        const Handle old = std::exchange(handle_, handle);
        if (old && old != handle) Close(old);
    }
    /// For functions that return a handle through a pointer.
    Handle* put() {
        reset();
        return &handle_;
    }

private:
    Handle handle_ = nullptr;
};

using Icon = Unique<HICON, DestroyIcon>;
using MemoryDc = Unique<HDC, DeleteDC>;
using ImageList = Unique<HIMAGELIST, ImageList_Destroy>;
using GlobalMemory = Unique<HGLOBAL, GlobalFree>;
using Find = Unique<HANDLE, FindClose>;  ///< wrap only what is not INVALID_HANDLE_VALUE

template <class Handle>
void CloseGdiObject(Handle handle) {
    DeleteObject(handle);
}
template <class Interface>
void ReleaseInterface(Interface* object) {
    object->Release();
}

/// A font, bitmap, pen, brush or region.
template <class Handle>
using GdiObject = Unique<Handle, CloseGdiObject<Handle>>;
using Bitmap = GdiObject<HBITMAP>;
using Font = GdiObject<HFONT>;

/// A COM interface.
template <class Interface>
using Com = Unique<Interface*, ReleaseInterface<Interface>>;
/// Memory that a COM function has handed out.
template <class T>
using CoMemory = Unique<T*, CoTaskMemFree>;

/// The drawing context of a window's client area (null: the screen) in a scope.
class WindowDc {
public:
    explicit WindowDc(HWND window) : window_(window), dc_(GetDC(window)) {}
    ~WindowDc() {
        if (dc_) ReleaseDC(window_, dc_);
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    HDC get() const { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

/// A GDI object selected into a drawing context in a scope.
class Selected {
public:
    Selected(HDC dc, HGDIOBJ object) : dc_(dc), old_(SelectObject(dc, object)) {}
    ~Selected() {
        if (old_) SelectObject(dc_, old_);
    }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

private:
    HDC dc_;
    HGDIOBJ old_;
};

/// The resolution of a window's monitor, the system's for null.
inline unsigned DpiOf(HWND window) {
    const UINT dpi = window ? GetDpiForWindow(window) : 0;
    return dpi ? dpi : GetDpiForSystem();
}

/// `pixels` given for 96 DPI, at `dpi`.
inline int Scale(int pixels, unsigned dpi) {
    return MulDiv(pixels, static_cast<int>(dpi), USER_DEFAULT_SCREEN_DPI);
}

}  // namespace win32
