#pragma once

#if defined(ORVATOOL_BUILD)
#define ORVATOOL_API __declspec(dllexport)
#else
#define ORVATOOL_API __declspec(dllimport)
#endif
