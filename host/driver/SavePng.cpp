#include <windows.h>

#include <objidl.h>

#include <gdiplus.h>

#include "host/driver/UiDriver.h"

namespace uidriver {
namespace {

constexpr CLSID kPngEncoder{
    0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}
};

class GdiplusSession {
public:
    GdiplusSession() { ok_ = Gdiplus::GdiplusStartup(&token_, &input_, nullptr) == Gdiplus::Ok; }
    ~GdiplusSession() {
        if (ok_) Gdiplus::GdiplusShutdown(token_);
    }
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;

    explicit operator bool() const { return ok_; }

private:
    Gdiplus::GdiplusStartupInput input_;
    ULONG_PTR token_ = 0;
    bool ok_ = false;
};

/// A 32-bit image in memory that can be drawn to.
class Canvas {
public:
    explicit Canvas(SIZE size) : dc_(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof(BITMAPINFOHEADER), size.cx, -size.cy, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits_, nullptr, 0);
        previous_ = bitmap_ ? SelectObject(dc_, bitmap_) : nullptr;
    }
    ~Canvas() {
        if (previous_) SelectObject(dc_, previous_);
        if (bitmap_) DeleteObject(bitmap_);
        DeleteDC(dc_);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    explicit operator bool() const { return bitmap_ != nullptr; }
    HDC Dc() const { return dc_; }
    BYTE* Bits() const { return static_cast<BYTE*>(bits_); }

private:
    HDC dc_;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ previous_ = nullptr;
    void* bits_ = nullptr;
};

// The window's own picture, whatever lies above it on the screen.
bool Grab(HWND window, SIZE size, const Canvas& canvas) {
    const HDC source = GetWindowDC(window);
    if (!source) return false;
    const bool copied = BitBlt(canvas.Dc(), 0, 0, size.cx, size.cy, source, 0, 0, SRCCOPY) != FALSE;
    ReleaseDC(window, source);
    GdiFlush();
    return copied;
}

}  // namespace

bool SavePng(HWND window, const std::wstring& file) {
    RECT frame{};
    if (!GetWindowRect(window, &frame) || IsRectEmpty(&frame)) return false;
    RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);

    const SIZE size{frame.right - frame.left, frame.bottom - frame.top};
    const Canvas canvas(size);
    if (!canvas || !Grab(window, size, canvas)) return false;

    const GdiplusSession session;
    if (!session) return false;
    // The format without alpha: what GDI draws leaves it undefined.
    Gdiplus::Bitmap image(size.cx, size.cy, size.cx * 4, PixelFormat32bppRGB, canvas.Bits());
    return image.Save(file.c_str(), &kPngEncoder, nullptr) == Gdiplus::Ok;
}

}  // namespace uidriver
