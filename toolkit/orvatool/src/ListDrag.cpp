#include <orvatool/ListDrag.h>

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>

#include "Win32.h"

namespace {

constexpr UINT_PTR kSubclass = 0x4C44;
constexpr UINT_PTR kScrollTimer = 0x4C44;
constexpr UINT kScrollMilliseconds = 80;  // a row each
constexpr int kReach = 2;                 // rows above and below the list from where a drop still counts
constexpr int kMarkHeight = 6;            // pixels at 96 DPI, even; the line between the ends is a third of it

int Ask(HWND list, UINT message, WPARAM wParam = 0) {
    return static_cast<int>(SendMessageW(list, message, wParam, 0));
}

RECT RowRect(HWND list, int row) {
    RECT rect{LVIR_BOUNDS, 0, 0, 0};
    SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rect));
    return rect;
}

bool IsKey(const MSG* message, WPARAM key) {
    return message && message->message == WM_KEYDOWN && message->wParam == key;
}

}  // namespace

ListDrag::~ListDrag() {
    End();
}

void ListDrag::Attach(HWND target, UINT message) {
    End();
    target_ = target;
    message_ = message;
}

void ListDrag::Begin(HWND source) {
    End();
    const auto self = reinterpret_cast<DWORD_PTR>(this);
    if (!SetWindowSubclass(source, ListProc, kSubclass, self)) return;
    SetWindowSubclass(target_, ListProc, kSubclass, self);
    source_ = source;
    GetCursorPos(&mouse_);
    SetCapture(source);
    SetTimer(source, kScrollTimer, kScrollMilliseconds, nullptr);
}

LRESULT CALLBACK ListDrag::ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR self) {
    auto& drag = *reinterpret_cast<ListDrag*>(self);
    if (message == WM_NCDESTROY) {
        drag.End();
    } else if (list == drag.source_ && message != WM_PAINT) {
        return drag.OnSourceMessage(message, wParam, lParam);
    }
    const LRESULT result = DefSubclassProc(list, message, wParam, lParam);
    if (list == drag.target_ && message == WM_PAINT) drag.DrawMark();
    return result;
}

LRESULT ListDrag::OnSourceMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND source = source_;
    switch (message) {
        case WM_MOUSEMOVE:
            mouse_ = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
            ClientToScreen(source, &mouse_);
            Track();
            return 0;
        case WM_TIMER:
            if (wParam != kScrollTimer) break;
            Scroll();
            return 0;
        case WM_LBUTTONUP:
            return Drop(wParam, lParam);
        case WM_GETDLGCODE:  // the dialog manager leaves Esc to a control that asks for this very message
            if (IsKey(reinterpret_cast<const MSG*>(lParam), VK_ESCAPE)) return DLGC_WANTMESSAGE;
            break;
        case WM_KEYDOWN:
            if (wParam == VK_ESCAPE) End();
            return 0;
        case WM_RBUTTONDOWN:
        case WM_CAPTURECHANGED:
            End();
            break;
        default:
            break;
    }
    return DefSubclassProc(source, message, wParam, lParam);
}

void ListDrag::Track() {
    POINT point = mouse_;
    ScreenToClient(target_, &point);
    ShowMark(PlaceAt(point));
    SetCursor(LoadCursorW(nullptr, place_ == kNowhere ? IDC_NO : IDC_ARROW));
}

void ListDrag::Scroll() {
    POINT point = mouse_;
    ScreenToClient(target_, &point);
    if (PlaceAt(point) == kNowhere) return;
    const RECT rows = Rows();
    const int edge = RowHeight() / 2;
    const int first = Ask(target_, LVM_GETTOPINDEX);
    int wanted = first;
    if (point.y < rows.top + edge) wanted = first - 1;
    if (point.y >= rows.bottom - edge) wanted = first + Ask(target_, LVM_GETCOUNTPERPAGE);
    if (wanted == first || wanted < 0 || wanted >= Ask(target_, LVM_GETITEMCOUNT)) return;
    ShowMark(kNowhere);  // what is scrolled must not take the mark along
    UpdateWindow(target_);
    SendMessageW(target_, LVM_ENSUREVISIBLE, static_cast<WPARAM>(wanted), FALSE);
    Track();
}

// The list ends its part of the drag first.
LRESULT ListDrag::Drop(WPARAM wParam, LPARAM lParam) {
    mouse_ = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    const HWND source = source_;
    ClientToScreen(source, &mouse_);
    POINT point = mouse_;
    ScreenToClient(target_, &point);
    const int place = PlaceAt(point);
    End();
    const LRESULT result = DefSubclassProc(source, WM_LBUTTONUP, wParam, lParam);
    if (place != kNowhere) SendMessageW(GetParent(target_), message_, static_cast<WPARAM>(GetDlgCtrlID(source)), place);
    return result;
}

void ListDrag::End() {
    if (!source_) return;
    ShowMark(kNowhere);
    const HWND source = source_;
    source_ = nullptr;
    KillTimer(source, kScrollTimer);
    RemoveWindowSubclass(source, ListProc, kSubclass);
    RemoveWindowSubclass(target_, ListProc, kSubclass);
    if (GetCapture() == source) ReleaseCapture();
}

// Where rows are, in client coordinates: below the header.
RECT ListDrag::Rows() const {
    RECT rows{};
    GetClientRect(target_, &rows);
    const auto header = reinterpret_cast<HWND>(SendMessageW(target_, LVM_GETHEADER, 0, 0));
    RECT heading{};
    if (header && IsWindowVisible(header)) GetClientRect(header, &heading);
    rows.top += heading.bottom;
    return rows;
}

int ListDrag::RowHeight() const {
    const RECT rect = RowRect(target_, Ask(target_, LVM_GETTOPINDEX));
    return std::max(1, static_cast<int>(rect.bottom - rect.top));
}

int ListDrag::PlaceAt(POINT point) const {
    RECT reach = Rows();
    const int top = reach.top;
    const int height = RowHeight();
    const int count = Ask(target_, LVM_GETITEMCOUNT);
    const int first = Ask(target_, LVM_GETTOPINDEX);
    const int last = std::min(count, first + Ask(target_, LVM_GETCOUNTPERPAGE));
    InflateRect(&reach, 0, kReach * height);
    if (!PtInRect(&reach, point)) return kNowhere;
    const int below = std::max(0, static_cast<int>(point.y) - top + height / 2) / height;
    return std::clamp(first + below, first, last);
}

void ListDrag::ShowMark(int place) {
    if (place == place_) return;
    for (const int each : {place_, place}) {
        place_ = each;
        if (each == kNowhere) continue;
        const RECT mark = MarkRect();
        InvalidateRect(target_, &mark, FALSE);
    }
}

// The mark lies on the line between two rows, and inside the list at its ends.
RECT ListDrag::MarkRect() const {
    RECT mark = Rows();
    const int half = win32::Scale(kMarkHeight, win32::DpiOf(target_)) / 2;
    const int rows = place_ - Ask(target_, LVM_GETTOPINDEX);
    const int line = static_cast<int>(mark.top) + (Ask(target_, LVM_GETITEMCOUNT) > 0 ? rows * RowHeight() : 0);
    mark.top = std::clamp(line, static_cast<int>(mark.top) + half, static_cast<int>(mark.bottom) - half) - half;
    mark.bottom = mark.top + 2 * half;
    return mark;
}

void ListDrag::DrawMark() const {
    if (!source_ || place_ == kNowhere) return;
    const win32::WindowDc dc(target_);
    const HBRUSH brush = GetSysColorBrush(COLOR_WINDOWTEXT);
    const RECT mark = MarkRect();
    const LONG third = (mark.bottom - mark.top) / 3;
    const RECT parts[] = {
        {mark.left,          mark.top,         mark.left + third, mark.bottom        },
        {mark.right - third, mark.top,         mark.right,        mark.bottom        },
        {mark.left,          mark.top + third, mark.right,        mark.bottom - third},
    };
    for (const RECT& part : parts)
        FillRect(dc.get(), &part, brush);
}
