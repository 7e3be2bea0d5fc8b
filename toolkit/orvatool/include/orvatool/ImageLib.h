#pragma once

#include <orvatool/Export.h>
#include <orvatool/Win32Types.h>

/// The product's images, from the toolkit's own resources. What is returned belongs to the library and lives until
/// gwrelease(); asking again gives the same handle. An unknown id or name gives null or -1.
namespace ImageLib {

/// Image ids. Numbers are shared with the callers and the resource script. An image's name is its enumerator's, in any
/// case.
enum Image : int {
    NoImage = -1,
    Property = 900,
    PropertyGroup = 901,
    ConstantText = 902,
    Product = 1000,
};

/// The icon at the size of small icons at `dpi` (0: the system's).
ORVATOOL_API HICON GetIcon(int id, unsigned dpi = 0);
ORVATOOL_API HICON GetIcon(const wchar_t* name, unsigned dpi = 0);

/// The image as a 32-bit premultiplied bitmap of small-icon size.
ORVATOOL_API HBITMAP GetBitmap(int id, unsigned dpi = 0);

/// Index of the image in GetImageList(dpi), -1 for none.
ORVATOOL_API int GetImage(int id, unsigned dpi = 0);

/// The list of all images at `dpi`, for tree and list views; shared, so set LVS_SHAREIMAGELISTS on list views.
ORVATOOL_API HIMAGELIST GetImageList(unsigned dpi = 0);

}  // namespace ImageLib
