#pragma once

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/Lng.h>
#include <orvatool/Win32Types.h>

namespace MiscUtil {

/// The address of `entry` in `module` (a file name such as "OCCommon_r24x64.arx") if that module is loaded already,
/// else null, as for null arguments. Never loads a module.
ORVATOOL_API void* GetProcAddress(const wchar_t* module, const char* entry);

/// Asks for an XML file, to open or (with `save`) to write; asks before an existing file is overwritten. True when the
/// user chose one: `path` receives it, with the extension ".xml" when none was typed; its former content is the
/// proposal. False leaves `path` as it was.
ORVATOOL_API bool SelectXmlFile(HWND parent, Lng::AppID app, bool save, ustr_pre<260>& path);

}  // namespace MiscUtil
