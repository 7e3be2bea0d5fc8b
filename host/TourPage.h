#pragma once

#include <string>

#include "host/Result.h"

namespace ochost {

/// What the pictures of the host itself are named after.
inline constexpr wchar_t kHostPicture[] = L"host";

/// Name of the file (without folder) that holds the picture of a dialog, or of a part of it, in a language at a
/// resolution: "customproperty-new.search.fi.144.png".
std::wstring PictureName(const std::wstring& dialog, const std::wstring& part, const std::wstring& language,
                         unsigned dpi);

/// Writes index.html into the folder: all pictures found there, dialog by dialog, so that runs at several resolutions
/// add up. The page needs nothing but the pictures beside it.
Status WriteTourPage(const std::wstring& folder);

}  // namespace ochost
