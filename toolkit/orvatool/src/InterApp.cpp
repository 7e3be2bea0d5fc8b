#include <orvatool/InterApp.h>
#include <orvatool/Lng.h>

#include <windows.h>

#include <cstdint>
#include <cwchar>
#include <string>

#include "Places.h"
#include "Registry.h"
#include "Win32.h"

namespace {

constexpr wchar_t kProductKey[] = L"Software\\OrvaCAD";

constexpr std::int32_t kFarthest = 100'000;  // pixels; no desktop reaches beyond
constexpr std::uint32_t kLowestDpi = 48;
constexpr std::uint32_t kHighestDpi = 960;

// The value in the registry. stored: never change, make a new version.
struct StoredPosition {
    static constexpr std::uint32_t kVersion = 1;

    std::uint32_t version = kVersion;
    std::int32_t left = 0;  // the window at its normal size, in screen pixels
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
    std::uint32_t showState = SW_SHOWNORMAL;
    std::uint32_t dpi = USER_DEFAULT_SCREEN_DPI;

    bool operator==(const StoredPosition&) const = default;
    RECT Rect() const { return {left, top, right, bottom}; }

    bool MakesSense() const {
        const auto inReach = [](std::int32_t coordinate) {
            return coordinate >= -kFarthest && coordinate <= kFarthest;
        };
        return version == kVersion && inReach(left) && inReach(top) && inReach(right) && inReach(bottom) &&
               left < right && top < bottom && (showState == SW_SHOWNORMAL || showState == SW_SHOWMAXIMIZED) &&
               dpi >= kLowestDpi && dpi <= kHighestDpi;
    }
};
static_assert(sizeof(StoredPosition) == 28);

// Where a window key such as "Window/PageDialog" is kept: the part before the last slash names the registry key.
struct Place {
    HKEY root;
    std::wstring path;
    std::wstring name;

    Place(HKEY givenRoot, const wchar_t* key) : root(givenRoot ? givenRoot : HKEY_CURRENT_USER) {
        const std::wstring whole(key ? key : L"");
        const std::size_t slash = whole.rfind(L'/');
        name = slash == std::wstring::npos ? whole : whole.substr(slash + 1);
        path = slash == std::wstring::npos ? std::wstring() : whole.substr(0, slash);
        std::replace(path.begin(), path.end(), L'/', L'\\');
        if (!givenRoot) path = path.empty() ? GetProductKey() : std::wstring(GetProductKey()) + L"\\" + path;
    }
};

using win32::InfoOf;
using win32::RectOf;
using win32::SizeOf;
using win32::Within;

// The window's rectangle when it is neither maximized nor minimized.
RECT NormalRect(HWND window) {
    if (!IsIconic(window) && !IsZoomed(window)) return RectOf(window);
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    GetWindowPlacement(window, &placement);
    RECT rect = placement.rcNormalPosition;
    // The system gives it relative to the work area, except for tool windows.
    if (!(GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOOLWINDOW)) {
        const MONITORINFO info = InfoOf(MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST));
        OffsetRect(&rect, info.rcWork.left - info.rcMonitor.left, info.rcWork.top - info.rcMonitor.top);
    }
    return rect;
}

// Both leave a window alone that is as wanted: as a rule a dialog opens where it was.
void MoveTo(HWND window, POINT corner) {
    const RECT now = RectOf(window);
    if (now.left == corner.x && now.top == corner.y) return;
    SetWindowPos(window, nullptr, corner.x, corner.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Resize(HWND window, SIZE size) {
    const SIZE now = SizeOf(RectOf(window));
    if (now.cx == size.cx && now.cy == size.cy) return;
    SetWindowPos(window, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Restore(HWND window, const StoredPosition& stored) {
    const RECT rect = stored.Rect();
    const HMONITOR monitor = MonitorFromRect(&rect, MONITOR_DEFAULTTONEAREST);
    const RECT area = InfoOf(monitor).rcWork;
    if (IsRectEmpty(&area)) return;
    const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE);
    // On its monitor first: only there the window has the resolution, and perhaps the size, that it will keep.
    if (MonitorFromWindow(window, MONITOR_DEFAULTTONULL) != monitor) MoveTo(window, {area.left, area.top});
    if (style & WS_THICKFRAME) {
        const SIZE size = SizeOf(rect);
        const int dpi = static_cast<int>(win32::DpiOf(window));
        const int storedDpi = static_cast<int>(stored.dpi);
        Resize(window, Within(area, SIZE{MulDiv(size.cx, dpi, storedDpi), MulDiv(size.cy, dpi, storedDpi)}));
    }
    MoveTo(window, Within(area, {rect.left, rect.top}, SizeOf(RectOf(window))));
    if (stored.showState == SW_SHOWMAXIMIZED && (style & WS_MAXIMIZEBOX)) ShowWindow(window, SW_SHOWMAXIMIZED);
}

std::wstring& ProductKey() {
    static std::wstring key = kProductKey;
    return key;
}

}  // namespace

bool InterApp::HPV::Reg_SetWindowPos_(HKEY root, const wchar_t* key, HWND window) {
    const Place place(root, key);
    if (place.name.empty() || !IsWindow(window)) return false;
    const RECT rect = NormalRect(window);
    StoredPosition stored;
    stored.left = rect.left;
    stored.top = rect.top;
    stored.right = rect.right;
    stored.bottom = rect.bottom;
    stored.showState = IsZoomed(window) ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL;
    stored.dpi = win32::DpiOf(window);
    if (!stored.MakesSense()) return false;
    StoredPosition before;
    if (registry::ReadRecord(place.root, place.path.c_str(), place.name.c_str(), before) && before == stored)
        return true;
    return registry::Write(place.root, place.path.c_str(), place.name.c_str(), REG_BINARY, &stored, sizeof stored);
}

bool InterApp::HPV::Reg_GetWindowPos_(HKEY root, const wchar_t* key, HWND window, RECT* rect, int* showState,
                                      bool apply) {
    const Place place(root, key);
    const bool moves = apply && window;
    if (place.name.empty() || (moves && !IsWindow(window))) return false;
    StoredPosition stored;
    if (!registry::ReadRecord(place.root, place.path.c_str(), place.name.c_str(), stored)) return false;
    if (!stored.MakesSense()) return false;
    if (rect) *rect = stored.Rect();
    if (showState) *showState = static_cast<int>(stored.showState);
    if (moves) Restore(window, stored);
    return true;
}

bool InterApp::HPV::IsAvailableReportAttribute(int propId) {
    constexpr int kFirstCustom = -100;
    return propId >= 1 || propId <= kFirstCustom;
}

ustr InterApp::HPV::Qlg_textUserVarDef_(int number) {
    const std::wstring path = std::wstring(GetProductKey()) + L"\\UserVariables";
    wchar_t name[256];
    if (registry::ReadText(HKEY_CURRENT_USER, path.c_str(), std::to_wstring(number).c_str(), name) && *name)
        return name;
    ustr text;
    text.format(Lng::text(kSharedTexts, 90013, L"User variable %d").c_str(), number);
    return text;
}

const wchar_t* GetProductKey() {
    return ProductKey().c_str();
}

void SetProductKey(const wchar_t* path) {
    ProductKey() = path && *path ? path : kProductKey;
}
