#pragma once

#include <orvatool/Win32Types.h>

/// This module's instance: every dialog takes its template from here.
HINSTANCE ModuleInstance();

/// The product's name, for the titles of messages.
const wchar_t* ProductName();
