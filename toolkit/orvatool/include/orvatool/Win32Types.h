#pragma once

// The handle types that signatures name, for headers that must not pull in windows.h. The definitions are those of a
// STRICT build of windows.h and agree with it.
struct HWND__;
struct HINSTANCE__;
struct HKEY__;
struct HICON__;
struct HBITMAP__;
struct HMENU__;
struct HDC__;
struct HFONT__;
struct HBRUSH__;
struct _TREEITEM;
struct _IMAGELIST;
using HWND = HWND__*;
using HINSTANCE = HINSTANCE__*;
using HKEY = HKEY__*;
using HICON = HICON__*;
using HBITMAP = HBITMAP__*;
using HMENU = HMENU__*;
using HDC = HDC__*;
using HFONT = HFONT__*;
using HBRUSH = HBRUSH__*;
using HTREEITEM = _TREEITEM*;
using HIMAGELIST = _IMAGELIST*;
struct tagNMHDR;
struct tagRECT;
struct tagPOINT;
