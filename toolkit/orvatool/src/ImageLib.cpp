#include <orvatool/ImageLib.h>

#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <iterator>
#include <map>
#include <vector>

#include "Module.h"
#include "Release.h"
#include "Win32.h"

namespace {

struct ImageRow {
    int id;
    const wchar_t* name;
};

// Every image of the library. The place in this table is the place in the image lists.
constexpr ImageRow kImages[] = {
    {ImageLib::Property,      L"PROPERTY"     },
    {ImageLib::PropertyGroup, L"PROPERTYGROUP"},
    {ImageLib::ConstantText,  L"CONSTANTTEXT" },
    {ImageLib::Product,       L"PRODUCT"      },
};
constexpr int kImageCount = static_cast<int>(std::size(kImages));

int PlaceOf(int id) {
    for (int place = 0; place < kImageCount; ++place) {
        if (kImages[place].id == id) return place;
    }
    return -1;
}

int PlaceOf(const wchar_t* name) {
    if (!name) return -1;
    for (int place = 0; place < kImageCount; ++place) {
        if (_wcsicmp(kImages[place].name, name) == 0) return place;
    }
    return -1;
}

// The icon as a bitmap whose colours are multiplied by their alpha.
win32::Bitmap BitmapOf(HICON icon, int size) {
    ICONINFO info{};
    if (!icon || !GetIconInfo(icon, &info)) return {};
    const win32::Bitmap mask(info.hbmMask);
    const win32::Bitmap colour(info.hbmColor);
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof format.bmiHeader;
    format.bmiHeader.biWidth = size;
    format.bmiHeader.biHeight = -size;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const win32::WindowDc screen(nullptr);
    win32::Bitmap bitmap(CreateDIBSection(screen.get(), &format, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!bitmap || !colour) return {};
    const UINT rows = static_cast<UINT>(size);
    if (GetDIBits(screen.get(), colour.get(), 0, rows, bits, &format, DIB_RGB_COLORS) != size) return {};
    auto* channels = static_cast<std::uint8_t*>(bits);
    for (int pixel = 0; pixel < size * size; ++pixel, channels += 4) {
        for (int i = 0; i < 3; ++i)
            channels[i] = static_cast<std::uint8_t>((channels[i] * channels[3] + 127) / 255);
    }
    return bitmap;
}

// The images at one resolution, each loaded when it is first asked for.
class ImageSet {
public:
    explicit ImageSet(unsigned dpi) : size_(GetSystemMetricsForDpi(SM_CXSMICON, dpi)) {}

    HICON Icon(int place) {
        win32::Icon& icon = icons_[place];
        if (!icon) {
            const wchar_t* resource = MAKEINTRESOURCEW(kImages[place].id);
            icon.reset(static_cast<HICON>(LoadImageW(ToolkitModule(), resource, IMAGE_ICON, size_, size_, 0)));
        }
        return icon.get();
    }

    HBITMAP Bitmap(int place) {
        win32::Bitmap& bitmap = bitmaps_[place];
        if (!bitmap) bitmap = BitmapOf(Icon(place), size_);
        return bitmap.get();
    }

    HIMAGELIST List() {
        if (!list_) list_ = MakeList();
        return list_.get();
    }

private:
    win32::ImageList MakeList() {
        win32::ImageList list(ImageList_Create(size_, size_, ILC_COLOR32 | ILC_MASK, kImageCount, 0));
        for (int place = 0; place < kImageCount && list; ++place) {
            if (ImageList_ReplaceIcon(list.get(), -1, Icon(place)) != place) list.reset();
        }
        return list;
    }

    int size_;
    win32::Icon icons_[kImageCount];
    win32::Bitmap bitmaps_[kImageCount];
    win32::ImageList list_;
};

std::map<unsigned, ImageSet>& Sets() {
    static std::map<unsigned, ImageSet> sets;
    return sets;
}

ImageSet& SetFor(unsigned dpi) {
    const unsigned wanted = dpi ? dpi : GetDpiForSystem();
    return Sets().try_emplace(wanted, wanted).first->second;
}

}  // namespace

void ReleaseImages() {
    Sets().clear();
}

HICON ImageLib::GetIcon(int id, unsigned dpi) {
    const int place = PlaceOf(id);
    return place < 0 ? nullptr : SetFor(dpi).Icon(place);
}

HICON ImageLib::GetIcon(const wchar_t* name, unsigned dpi) {
    const int place = PlaceOf(name);
    return place < 0 ? nullptr : SetFor(dpi).Icon(place);
}

HBITMAP ImageLib::GetBitmap(int id, unsigned dpi) {
    const int place = PlaceOf(id);
    return place < 0 ? nullptr : SetFor(dpi).Bitmap(place);
}

int ImageLib::GetImage(int id, unsigned dpi) {
    const int place = PlaceOf(id);
    return place >= 0 && SetFor(dpi).List() ? place : -1;
}

HIMAGELIST ImageLib::GetImageList(unsigned dpi) {
    return SetFor(dpi).List();
}
