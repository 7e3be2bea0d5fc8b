#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>

struct _GUID;
using GUID = _GUID;

namespace Guid {

/// How a GUID is written. Both are the 36 digits and hyphens; reading accepts exactly the form that is named.
enum Format : int {
    Braced = 1,  ///< {01234567-89ab-cdef-0123-456789abcdef}
    Plain = 2,   ///< 01234567-89ab-cdef-0123-456789abcdef
};

/// Options of ToString, to be combined.
enum Option : int { NoOption = 0, UpperCase = 1, NullAsText = 2 };

/// Gives `guid` a new random value. False, and `guid` stays, when the system has none to give.
ORVATOOL_API bool Generate(GUID& guid);

/// True for the GUID of 16 zero bytes.
ORVATOOL_API bool IsNull(const GUID& guid);

/// The text of `guid`; empty for a format that is none. Without NullAsText the null GUID is the empty text, without
/// UpperCase the digits are small; FromString reads either.
ORVATOOL_API ustr ToString(const GUID& guid, int format = Plain, int options = UpperCase | NullAsText);

/// Reads a text in `format`. False, and `guid` becomes null, for any other text and for null.
ORVATOOL_API bool FromString(GUID& guid, const wchar_t* text, int format = Plain);

}  // namespace Guid
