#pragma once

#include <occommonui/Export.h>

/// The number of this interface. A caller passes the number it was built against to occommonui_version_nmb and does not
/// use the library when another number comes back.
inline constexpr int kOcCommonUiVersion = 20160101;

/// The load-time handshake, exported under this plain name: kOcCommonUiVersion when `n` is kOcCommonUiVersion,
/// -kOcCommonUiVersion for any other number.
extern "C" OCCOMMONUI_API int occommonui_version_nmb(int n);
