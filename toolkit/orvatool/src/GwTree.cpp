#include <orvatool/Gw.h>

#include <uxtheme.h>
#include <vsstyle.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <functional>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "CheckImages.h"
#include "CheckLog.h"
#include "TreeInput.h"

namespace {

constexpr int kStateShift = 12;  // state image numbers are kept in bits 12 to 15 of an item's state

// What is kept for a tree that is watched, up to the end of its window.
struct WatchedTree {
    WNDPROC procedure = nullptr;  // the tree's own
    std::shared_ptr<const win32::ImageList> checkImages;
    LPARAM press = 0;  // where the left button went down last: client coordinates, packed as in a message
    std::function<void()> beforeInput;
    bool logsChecks = false;
    std::vector<std::pair<HTREEITEM, int>> checkLog;
};

// The common controls' own way to subclass looks a window property up for every message, which a tree that is filled
// with thousands of rows feels; hence this table.
std::unordered_map<HWND, WatchedTree> watchedTrees;

HTREEITEM Next(HWND tree, WPARAM relation, HTREEITEM item) {
    return reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

// The item after `item` in tree order, not leaving the subtree of `root`; null for `root` is the whole tree.
HTREEITEM NextBelow(HWND tree, HTREEITEM item, HTREEITEM root) {
    if (const HTREEITEM child = Next(tree, TVGN_CHILD, item)) return child;
    for (; item && item != root; item = Next(tree, TVGN_PARENT, item)) {
        if (const HTREEITEM sibling = Next(tree, TVGN_NEXT, item)) return sibling;
    }
    return nullptr;
}

void CheckBelow(HWND tree, HTREEITEM root, int state) {
    for (HTREEITEM item = NextBelow(tree, root, root); item; item = NextBelow(tree, item, root)) {
        gwTVsetCheck(tree, item, state);
    }
}

int CheckFromChildren(HWND tree, HTREEITEM parent) {
    HTREEITEM child = Next(tree, TVGN_CHILD, parent);
    const int state = gwTVgetCheck(tree, child);
    while (state != kTreePartial && (child = Next(tree, TVGN_NEXT, child))) {
        if (gwTVgetCheck(tree, child) != state) return kTreePartial;
    }
    return state;
}

// The items above `items`, deepest first, each once.
std::vector<HTREEITEM> Ancestors(HWND tree, const std::vector<HTREEITEM>& items) {
    std::unordered_map<HTREEITEM, int> depths;
    std::vector<std::pair<int, HTREEITEM>> found;
    std::vector<HTREEITEM> path;
    for (const HTREEITEM item : items) {
        path.clear();
        HTREEITEM above = Next(tree, TVGN_PARENT, item);
        for (; above && !depths.count(above); above = Next(tree, TVGN_PARENT, above))
            path.push_back(above);
        int depth = above ? depths[above] : 0;
        for (auto at = path.rbegin(); at != path.rend(); ++at) {
            depths[*at] = ++depth;
            found.emplace_back(depth, *at);
        }
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<HTREEITEM> ancestors;
    ancestors.reserve(found.size());
    for (const auto& [depth, item] : found)
        ancestors.push_back(item);
    return ancestors;
}

// Without the items whose state one of the others above them brings along.
std::vector<HTREEITEM> Topmost(HWND tree, const std::vector<HTREEITEM>& items) {
    std::unordered_set<HTREEITEM> spreading;
    for (const HTREEITEM item : items) {
        if (item && gwTVgetCheck(tree, item) != kTreePartial) spreading.insert(item);
    }
    std::unordered_map<HTREEITEM, bool> covered{
        {nullptr, false}
    };  // is it, or an item above it, in `spreading`?
    std::vector<HTREEITEM> topmost;
    std::vector<HTREEITEM> path;
    for (const HTREEITEM item : items) {
        if (!item) continue;
        path.clear();
        HTREEITEM above = Next(tree, TVGN_PARENT, item);
        for (; !covered.count(above); above = Next(tree, TVGN_PARENT, above))
            path.push_back(above);
        bool inside = covered[above];
        for (auto at = path.rbegin(); at != path.rend(); ++at) {
            inside = inside || spreading.count(*at) != 0;
            covered[*at] = inside;
        }
        if (!inside) topmost.push_back(item);
    }
    return topmost;
}

struct Bitmap32 {
    win32::Bitmap bitmap;
    DWORD* pixels = nullptr;
};

Bitmap32 CreateBitmap32(int width, int height) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    Bitmap32 result;
    result.bitmap.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    result.pixels = static_cast<DWORD*>(pixels);
    return result;
}

RECT Centred(int left, SIZE cell, SIZE box) {
    const int width = static_cast<int>(std::min(box.cx, cell.cx));
    const int height = static_cast<int>(std::min(box.cy, cell.cy));
    const int x = left + (static_cast<int>(cell.cx) - width) / 2;
    const int y = (static_cast<int>(cell.cy) - height) / 2;
    return {x, y, x + width, y + height};
}

void DrawCheckBoxes(HDC dc, HTHEME theme, SIZE cell, SIZE box) {
    constexpr int kThemeStates[] = {CBS_UNCHECKEDNORMAL, CBS_CHECKEDNORMAL, CBS_MIXEDNORMAL};
    constexpr UINT kFrameStates[] = {DFCS_BUTTONCHECK, DFCS_BUTTONCHECK | DFCS_CHECKED,
                                     DFCS_BUTTON3STATE | DFCS_CHECKED};
    for (int state = kTreeUnchecked; state <= kTreePartial; ++state) {
        RECT rect = Centred((state + 1) * static_cast<int>(cell.cx), cell, box);
        if (theme) {
            DrawThemeBackground(theme, dc, BP_CHECKBOX, kThemeStates[state], &rect, nullptr);
        } else {
            DrawFrameControl(dc, &rect, DFC_BUTTON, kFrameStates[state] | DFCS_FLAT);
        }
    }
}

// Drawing that knows no transparency leaves it at "all": the box itself is opaque then.
void MakeBoxesOpaque(DWORD* pixels, SIZE cell, SIZE box) {
    const int pitch = static_cast<int>(cell.cx) * 4;
    const std::ptrdiff_t count = std::ptrdiff_t{pitch} * cell.cy;
    const bool blended = std::any_of(pixels, pixels + count, [](DWORD pixel) { return pixel >> 24 != 0; });
    if (blended) return;
    for (int state = kTreeUnchecked; state <= kTreePartial; ++state) {
        const RECT rect = Centred((state + 1) * static_cast<int>(cell.cx), cell, box);
        for (int y = rect.top; y < rect.bottom; ++y) {
            for (int x = rect.left; x < rect.right; ++x)
                pixels[y * pitch + x] |= 0xff000000;
        }
    }
}

// The trees of one resolution share their images, which takes long to draw.
std::shared_ptr<const win32::ImageList> CheckImagesFor(HWND tree, bool anew) {
    static std::unordered_map<unsigned, std::weak_ptr<const win32::ImageList>> imagesByDpi;
    std::weak_ptr<const win32::ImageList>& known = imagesByDpi[win32::DpiOf(tree)];
    std::shared_ptr<const win32::ImageList> images = anew ? nullptr : known.lock();
    if (!images) known = images = std::make_shared<const win32::ImageList>(CreateCheckImages(tree));
    return images;
}

void UseCheckImages(HWND tree, WatchedTree& watched, bool anew) {
    std::shared_ptr<const win32::ImageList> images = CheckImagesFor(tree, anew);
    SendMessageW(tree, TVM_SETIMAGELIST, TVSIL_STATE, reinterpret_cast<LPARAM>(images->get()));
    watched.checkImages = std::move(images);
}

bool HasCheckImages(HWND tree) {
    const auto found = watchedTrees.find(tree);
    return found != watchedTrees.end() && found->second.checkImages != nullptr;
}

int CheckOf(UINT itemState) {
    const int image = static_cast<int>((itemState & TVIS_STATEIMAGEMASK) >> kStateShift);
    return std::clamp(image - 1, static_cast<int>(kTreeUnchecked), static_cast<int>(kTreePartial));
}

void LogCheck(WatchedTree& watched, const TVITEMEXW& item) {
    const bool setsCheck = (item.mask & TVIF_STATE) && (item.stateMask & TVIS_STATEIMAGEMASK);
    if (setsCheck && watched.logsChecks) watched.checkLog.emplace_back(item.hItem, CheckOf(item.state));
}

bool IsInput(UINT message) {
    return message == WM_KEYDOWN || message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK ||
           message == WM_RBUTTONDOWN;
}

// What fails is left to be done later.
void RunBeforeInput(WatchedTree& watched) noexcept {
    try {
        if (const auto run = std::exchange(watched.beforeInput, nullptr)) run();
    } catch (...) {
        return;
    }
}

LRESULT CALLBACK WatchProc(HWND tree, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto found = watchedTrees.find(tree);
    if (found == watchedTrees.end()) return DefWindowProcW(tree, message, wParam, lParam);
    const WNDPROC procedure = found->second.procedure;
    if (message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK) found->second.press = lParam;
    if (IsInput(message)) RunBeforeInput(found->second);
    if (message == TVM_SETITEMW) LogCheck(found->second, *reinterpret_cast<const TVITEMEXW*>(lParam));
    const LRESULT result = CallWindowProcW(procedure, tree, message, wParam, lParam);
    if (message == WM_NCDESTROY) watchedTrees.erase(tree);
    if ((message == WM_DPICHANGED_AFTERPARENT || message == WM_THEMECHANGED) && HasCheckImages(tree))
        UseCheckImages(tree, watchedTrees.at(tree), message == WM_THEMECHANGED);
    return result;
}

WatchedTree& Watch(HWND tree) {
    WatchedTree& watched = watchedTrees[tree];
    if (!watched.procedure) {
        watched.procedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(tree, GWLP_WNDPROC));
        SetWindowLongPtrW(tree, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(WatchProc));
    }
    return watched;
}

// What lies where the button went down last.
TVHITTESTINFO Pressed(HWND tree) {
    TVHITTESTINFO hit{};
    const auto found = watchedTrees.find(tree);
    if (found == watchedTrees.end()) return hit;
    const LPARAM press = found->second.press;
    hit.pt = {static_cast<short>(LOWORD(press)), static_cast<short>(HIWORD(press))};
    SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return hit;
}

}  // namespace

win32::ImageList CreateCheckImages(HWND window) {
    const unsigned dpi = win32::DpiOf(window);
    const SIZE cell{GetSystemMetricsForDpi(SM_CXSMICON, dpi), GetSystemMetricsForDpi(SM_CYSMICON, dpi)};
    const int width = static_cast<int>(cell.cx);
    const int height = static_cast<int>(cell.cy);
    SIZE box{win32::Scale(13, dpi), win32::Scale(13, dpi)};
    Bitmap32 strip = CreateBitmap32(width * 4, height);
    win32::MemoryDc dc(CreateCompatibleDC(nullptr));
    win32::ImageList images(ImageList_Create(width, height, ILC_COLOR32, 4, 0));
    if (!strip.bitmap || !dc || !images) return {};
    {
        const win32::Selected target(dc.get(), strip.bitmap.get());
        using Theme = win32::Unique<HTHEME, CloseThemeData>;
        // Opened for the tree itself it would become, under Wine, what the tree draws its frame and expanders with.
        const Theme theme(OpenThemeData(GetParent(window), VSCLASS_BUTTON));
        if (theme) GetThemePartSize(theme.get(), dc.get(), BP_CHECKBOX, CBS_UNCHECKEDNORMAL, nullptr, TS_DRAW, &box);
        DrawCheckBoxes(dc.get(), theme.get(), cell, box);
        GdiFlush();
    }
    MakeBoxesOpaque(strip.pixels, cell, box);
    ImageList_Add(images.get(), strip.bitmap.get(), nullptr);
    return images;
}

void StartCheckLog(HWND tree) {
    const auto found = watchedTrees.find(tree);
    if (found == watchedTrees.end()) return;
    found->second.logsChecks = true;
    found->second.checkLog.clear();
}

std::vector<std::pair<HTREEITEM, int>> TakeCheckLog(HWND tree) {
    const auto found = watchedTrees.find(tree);
    return found == watchedTrees.end() ? decltype(found->second.checkLog)() : std::exchange(found->second.checkLog, {});
}

void BeforeNextInput(HWND tree, std::function<void()> run) {
    const auto found = watchedTrees.find(tree);
    if (found != watchedTrees.end()) found->second.beforeInput = std::move(run);
}

HTREEITEM CheckedItem(const NMHDR* header) {
    if (!HasCheckImages(header->hwndFrom)) return nullptr;
    switch (header->code) {
        case NM_CLICK:
        case NM_DBLCLK: {
            const TVHITTESTINFO hit = Pressed(header->hwndFrom);
            return hit.flags & TVHT_ONITEMSTATEICON ? hit.hItem : nullptr;
        }
        case TVN_KEYDOWN:
            if (reinterpret_cast<const NMTVKEYDOWN*>(header)->wVKey != VK_SPACE) return nullptr;
            return Next(header->hwndFrom, TVGN_CARET, nullptr);
        default:
            return nullptr;
    }
}

void gwTVaddChecks(HWND tree) {
    if (!IsWindow(tree) || HasCheckImages(tree)) return;
    UseCheckImages(tree, Watch(tree), false);
    const gwRedrawOff quiet(tree);
    const HTREEITEM first = Next(tree, TVGN_ROOT, nullptr);
    for (HTREEITEM item = first; item; item = gwTVnext(tree, item))
        gwTVsetCheck(tree, item, kTreeUnchecked);
}

int gwTVgetCheck(HWND tree, HTREEITEM item) {
    if (!item) return kTreeUnchecked;
    const auto state =
        static_cast<UINT>(SendMessageW(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), TVIS_STATEIMAGEMASK));
    return CheckOf(state);
}

void gwTVsetCheck(HWND tree, HTREEITEM item, int state) {
    if (!item) return;
    TVITEMW info{};
    info.mask = TVIF_HANDLE | TVIF_STATE;
    info.hItem = item;
    info.stateMask = TVIS_STATEIMAGEMASK;
    info.state = INDEXTOSTATEIMAGEMASK(static_cast<UINT>(std::clamp(state, 0, 2) + 1));
    SendMessageW(tree, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&info));
}

void gwTVUpdate3StateCheckForItems(HWND tree, const std::vector<HTREEITEM>& items) {
    const gwRedrawOff quiet(tree);
    const std::vector<HTREEITEM> topmost = Topmost(tree, items);
    for (const HTREEITEM item : topmost) {
        const int state = gwTVgetCheck(tree, item);
        if (state != kTreePartial) CheckBelow(tree, item, state);
    }
    for (const HTREEITEM item : Ancestors(tree, topmost))
        gwTVsetCheck(tree, item, CheckFromChildren(tree, item));
}

HTREEITEM gwTVCheckFromNotify(const NMHDR* header) {
    const HTREEITEM item = header ? CheckedItem(header) : nullptr;
    if (!item) return nullptr;
    const bool checked = gwTVgetCheck(header->hwndFrom, item) == kTreeChecked;
    gwTVsetCheck(header->hwndFrom, item, checked ? kTreeUnchecked : kTreeChecked);
    gwTVUpdate3StateCheckForItems(header->hwndFrom, {item});
    return item;
}

void gwTVtrackPresses(HWND tree) {
    if (IsWindow(tree)) Watch(tree);
}

HTREEITEM gwTVpressedItem(HWND tree) {
    const TVHITTESTINFO hit = Pressed(tree);
    return hit.flags & TVHT_ONITEM ? hit.hItem : nullptr;
}

std::int64_t gwTVgetData(HWND tree, HTREEITEM item) {
    TVITEMW info{};
    info.mask = TVIF_HANDLE | TVIF_PARAM;
    info.hItem = item;
    return item && SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info)) ? info.lParam : 0;
}

ustr gwTVgetText(HWND tree, HTREEITEM item) {
    ustr text;
    for (std::size_t room = 256; item; room *= 4) {
        text.resize(room);
        TVITEMW info{};
        info.mask = TVIF_HANDLE | TVIF_TEXT;
        info.hItem = item;
        info.pszText = text.data();
        info.cchTextMax = static_cast<int>(room);
        if (!SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info))) return ustr();
        text.resize(std::wcslen(info.pszText));
        if (text.size() + 1 < room) break;
    }
    return text;
}

HTREEITEM gwTVnext(HWND tree, HTREEITEM item) {
    return item ? NextBelow(tree, item, nullptr) : nullptr;
}
