#pragma once

// The one export macro of this DLL; everything that does not carry it stays inside.
#if defined(OCCOMMONUI_BUILD)
#define OCCOMMONUI_API __declspec(dllexport)
#else
#define OCCOMMONUI_API __declspec(dllimport)
#endif
