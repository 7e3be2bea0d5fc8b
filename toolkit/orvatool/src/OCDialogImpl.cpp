#include "OCDialogImpl.h"

#include "DialogChildren.h"
#include "Mnemonics.h"
#include "Places.h"
#include "Win32.h"

#include <uxtheme.h>
#include <vsstyle.h>
#include <windowsx.h>

#include <algorithm>
#include <utility>

namespace {

using Handler = INT_PTR (*)(OCDialog& dlg, WPARAM wParam, LPARAM lParam);

struct Route {
    UINT message;
    LRESULT answer;  ///< of a handler that deals with the message and sets no other
    Handler handler;
};

// The CAD host asks its modeless dialogs whether they want to keep the keyboard.
constexpr UINT kAcadKeepFocus = 0x6D01;
constexpr UINT kLastAppMessage = 0xBFFF;

// The side of the size grip, at 96 DPI: the margin that templates leave beside the last button.
constexpr int kGripSize = 11;

template <class Pointer, class Param>
Pointer As(Param param) {
    return reinterpret_cast<Pointer>(param);
}

POINT PointOf(LPARAM lParam) {
    return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
}
int IdOf(WPARAM wParam) {
    return static_cast<int>(wParam);
}
UINT FlagsOf(WPARAM wParam) {
    return static_cast<UINT>(wParam);
}
short WheelOf(WPARAM wParam) {
    return GET_WHEEL_DELTA_WPARAM(wParam);
}
INT_PTR BrushOf(HBRUSH brush) {
    return reinterpret_cast<INT_PTR>(brush);
}

// The message that an override gets and how its parameters travel.
using D = OCDialog&;
using W = WPARAM;
using L = LPARAM;
using R = INT_PTR;
constexpr Route kRoutes[] = {
    {WM_COMMAND,           0,    [](D d, W w, L l) -> R { return d.OnCommand(w, l); }                                  },
    {WM_NOTIFY,            0,    [](D d, W w, L l) -> R { return d.OnNotify(w, l); }                                   },
    {WM_DRAWITEM,          TRUE, [](D d, W w, L l) -> R { return d.OnDrawItem(IdOf(w), As<DRAWITEMSTRUCT*>(l)); }      },
    {WM_MEASUREITEM,       TRUE, [](D d, W w, L l) -> R { return d.OnMeasureItem(IdOf(w), As<MEASUREITEMSTRUCT*>(l)); }},
    {WM_CTLCOLOREDIT,      0,    [](D d, W w, L l) { return BrushOf(d.OnColorEdit(As<HDC>(w), As<HWND>(l))); }         },
    {WM_CTLCOLORSTATIC,    0,    [](D d, W w, L l) { return BrushOf(d.OnColorStatic(As<HDC>(w), As<HWND>(l))); }       },
    {WM_SIZE,              0,    [](D d, W w, L l) -> R { return d.OnSize(FlagsOf(w), LOWORD(l), HIWORD(l)); }         },
    {WM_SIZING,            TRUE, [](D d, W w, L l) -> R { return d.OnSizing(FlagsOf(w), As<RECT*>(l)); }               },
    {WM_MOVE,              0,    [](D d, W,   L l) -> R { return d.OnMove(GET_X_LPARAM(l), GET_Y_LPARAM(l)); }         },
    {WM_EXITSIZEMOVE,      0,    [](D d, W,   L) -> R { return d.OnExitSizeMove(); }                                   },
    {WM_GETMINMAXINFO,     0,    [](D d, W,   L l) -> R { return d.OnGetMinMaxInfo(As<MINMAXINFO*>(l)); }              },
    {WM_WINDOWPOSCHANGING, 0,    [](D d, W,   L l) -> R { return d.OnWindowPosChanging(As<WINDOWPOS*>(l)); }           },
    {WM_HSCROLL,           0,    [](D d, W w, L l) -> R { return d.OnHScroll(As<HWND>(l), LOWORD(w), HIWORD(w)); }     },
    {WM_VSCROLL,           0,    [](D d, W w, L l) -> R { return d.OnVScroll(As<HWND>(l), LOWORD(w), HIWORD(w)); }     },
    {WM_MOUSEWHEEL,        0,    [](D d, W w, L l) -> R { return d.OnMouseWheel(LOWORD(w), WheelOf(w), PointOf(l)); }  },
    {WM_MOUSEMOVE,         0,    [](D d, W w, L l) -> R { return d.OnMouseMove(FlagsOf(w), PointOf(l)); }              },
    {WM_LBUTTONDOWN,       0,    [](D d, W w, L l) -> R { return d.OnLButtonDown(w, l); }                              },
    {WM_LBUTTONUP,         0,    [](D d, W w, L l) -> R { return d.OnLButtonUp(w, l); }                                },
    {WM_LBUTTONDBLCLK,     0,    [](D d, W w, L l) -> R { return d.OnLButtonDblClk(w, l); }                            },
    {WM_CONTEXTMENU,       0,    [](D d, W w, L l) -> R { return d.OnContextMenu(As<HWND>(w), PointOf(l)); }           },
    {WM_MENUSELECT,        0,    [](D d, W w, L l) -> R { return d.OnMenuSelect(LOWORD(w), HIWORD(w), As<HMENU>(l)); } },
    {WM_KEYDOWN,           0,    [](D d, W w, L l) -> R { return d.OnKeyDown(FlagsOf(w), LOWORD(l), HIWORD(l)); }      },
    {WM_SYSCOMMAND,        0,    [](D d, W w, L l) -> R { return d.OnSysCommand(w, l); }                               },
    {WM_TIMER,             0,    [](D d, W w, L l) -> R { return d.OnTimer(w, As<TIMERPROC>(l)); }                     },
    {WM_CLOSE,             0,    [](D d, W,   L) -> R { return d.OnClose(); }                                          },
};

const Route* RouteOf(UINT message) {
    const auto* const route = std::find_if(std::begin(kRoutes), std::end(kRoutes),
                                           [message](const Route& r) { return r.message == message; });
    return route == std::end(kRoutes) ? nullptr : route;
}

// A dialog scales itself; the system must not do it a second time. Older systems have neither.
void DisableSystemScaling(HWND window) {
    constexpr int kDisableAll = 1;
    using Function = BOOL(WINAPI*)(HWND, int, int);
    static const auto setBehavior =
        reinterpret_cast<Function>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "SetDialogDpiChangeBehavior"));
    if (setBehavior) setBehavior(window, kDisableAll, kDisableAll);
}

void AddStyle(HWND window, int index, LONG_PTR style) {
    SetWindowLongPtrW(window, index, GetWindowLongPtrW(window, index) | style);
}

// From now on the dialog does not paint under its controls. A group box does not paint its inside, so it is left out of
// that.
void AvoidFlicker(HWND window) {
    AddStyle(window, GWL_STYLE, WS_CLIPCHILDREN);
    for (const HWND control : ChildrenOf(window)) {
        if (IsGroupBox(control)) AddStyle(control, GWL_EXSTYLE, WS_EX_TRANSPARENT);
    }
}

// Column widths are in pixels and nobody else's business.
void ScaleColumns(HWND window, unsigned from, unsigned to) {
    for (const HWND list : ChildrenOf(window)) {
        if (!HasClass(list, WC_LISTVIEWW)) continue;
        const auto header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
        const int columns = header ? static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0)) : 0;
        for (int column = 0; column < columns; ++column) {
            const auto width = static_cast<int>(SendMessageW(list, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0));
            SendMessageW(list, LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column),
                         MulDiv(width, static_cast<int>(to), static_cast<int>(from)));
        }
    }
}

// The client area of a dialog as its template gives it, in dialog units.
SIZE SizeInTemplate(HINSTANCE instance, const wchar_t* resource) {
    // Both forms of a template begin with a header of fixed length; in the longer the style is not the first field.
    struct Extended {
        WORD version, signature;
        DWORD helpId, exStyle, style;
        WORD items;
        short x, y, cx, cy;
    };
    const HRSRC found = FindResourceW(instance, resource, RT_DIALOG);
    const HGLOBAL loaded = found ? LoadResource(instance, found) : nullptr;
    if (!loaded || SizeofResource(instance, found) < sizeof(Extended)) return {};
    const auto& extended = *static_cast<const Extended*>(LockResource(loaded));
    if (extended.signature == 0xFFFF) return {extended.cx, extended.cy};
    const auto& plain = *static_cast<const DLGTEMPLATE*>(LockResource(loaded));
    return {plain.cx, plain.cy};
}

// Of the monitor that has most of the window.
RECT WorkArea(HWND window) {
    return win32::InfoOf(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST)).rcWork;
}

RECT ClientRect(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    return client;
}

}  // namespace

// Says whose window is being created: messages arrive before the one that brings a parameter of ours.
class OCDialog::Impl::Creation {
public:
    explicit Creation(Impl& impl) : impl_(impl), outer_(std::exchange(current_, &impl)) { impl.run_.creating = true; }
    ~Creation() {
        impl_.run_.creating = false;
        current_ = outer_;
    }
    Creation(const Creation&) = delete;
    Creation& operator=(const Creation&) = delete;

    static Impl* Take() { return std::exchange(current_, nullptr); }

private:
    static inline Impl* current_ = nullptr;
    Impl& impl_;
    Impl* outer_;
};

int OCDialog::Impl::RunModal(const wchar_t* resource) {
    const auto keep = shared_from_this();
    if (!Begin(resource, true)) return kFailed;
    const CommonControlsScope commonControls;
    const Creation creation(*this);
    const HWND owner = parent_ ? GetAncestor(parent_, GA_ROOT) : nullptr;
    const bool ownerEnabled = !owner || IsWindowEnabled(owner);
    DialogBoxParamW(instance_, resource, owner, Procedure, 0);
    // Who disabled the owner before enables it again; not every system leaves it to them.
    if (!ownerEnabled && IsWindow(owner)) EnableWindow(owner, FALSE);
    return run_.result;
}

HWND OCDialog::Impl::CreateModeless(const wchar_t* resource, HWND parent) {
    const auto keep = shared_from_this();
    if (run_.creating || window_) return nullptr;
    if (parent) parent_ = parent;
    if (!Begin(resource, false)) return nullptr;
    const CommonControlsScope commonControls;
    const Creation creation(*this);
    CreateDialogParamW(instance_, resource, parent_, Procedure, 0);
    return window_;
}

bool OCDialog::Impl::Begin(const wchar_t* resource, bool modal) {
    if (run_.creating || window_ || !resource || !instance_ || (parent_ && !IsWindow(parent_))) return false;
    run_ = {};
    run_.modal = modal;
    run_.templateSize = SizeInTemplate(instance_, resource);
    return true;
}

void OCDialog::Impl::End(int result) {
    if (!window_ || run_.ended || run_.destroying) return;
    run_.ended = true;
    run_.result = result;
    if (run_.modal) {
        ::EndDialog(window_, result);
    } else {
        DestroyWindow(window_);
    }
}

void OCDialog::Impl::Detach() noexcept {
    owner_ = nullptr;
    if (!window_ || run_.destroying) return;
    if (run_.modal) ::EndDialog(window_, kFailed);
    DestroyWindow(window_);
}

unsigned OCDialog::Impl::Dpi() const {
    return window_ ? dpi_ : win32::DpiOf(parent_);
}

void OCDialog::Impl::SetResize(bool horizontal, bool vertical) {
    horizontal_ = horizontal;
    vertical_ = vertical;
    if (window_) RefreshGrip();
}

void OCDialog::Impl::LimitSize(MINMAXINFO& info) const {
    if (!window_ || !(GetWindowLongW(window_, GWL_STYLE) & WS_THICKFRAME)) return;
    SIZE least = anchorer_.MinimumWindowSize();
    const SIZE room = win32::Within(WorkArea(window_), least);
    if (horizontal_) least.cx = room.cx;
    if (vertical_) least.cy = room.cy;
    info.ptMinTrackSize = {least.cx, least.cy};
    if (!horizontal_) info.ptMaxTrackSize.x = info.ptMaxSize.x = least.cx;
    if (!vertical_) info.ptMaxTrackSize.y = info.ptMaxSize.y = least.cy;
}

// The menu takes its height from the controls, so the window grows by it.
void OCDialog::Impl::CreateMenuBar() {
    if (!window_ || GetMenu(window_)) return;
    const LONG height = ClientRect(window_).bottom;
    owner_->CreateMenuBar();
    if (!Alive() || !GetMenu(window_)) return;
    RECT window{};
    GetWindowRect(window_, &window);
    SetWindowPos(window_, nullptr, 0, 0, window.right - window.left,
                 window.bottom - window.top + height - ClientRect(window_).bottom,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    AttachAnchorer();
}

void OCDialog::Impl::LeaveControl(HWND control) {
    const HWND focus = GetFocus();
    if (focus && (focus == control || IsChild(control, focus))) SendMessageW(window_, WM_NEXTDLGCTL, 0, FALSE);
}

bool OCDialog::Impl::OnKey(int virtualKey, bool alt) noexcept {
    const auto keep = shared_from_this();
    try {
        if (Alive() && keys_.contains(virtualKey) && owner_->OnKeyDown(virtualKey)) return true;
        return Alive() && virtualKey == VK_RETURN && !alt && owner_->OnEnterPressed();
    } catch (...) {
        Fail();
        return true;
    }
}

INT_PTR CALLBACK OCDialog::Impl::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    Impl* const impl = Of(window);
    if (!impl) return FALSE;
    const auto keep = impl->shared_from_this();
    try {
        return impl->Dispatch(message, wParam, lParam);
    } catch (...) {
        impl->Fail();
        return FALSE;
    }
}

OCDialog::Impl* OCDialog::Impl::Of(HWND window) {
    if (auto* const impl = reinterpret_cast<Impl*>(GetWindowLongPtrW(window, DWLP_USER))) return impl;
    Impl* const impl = Creation::Take();
    if (impl) {
        impl->window_ = window;
        impl->self_ = impl->shared_from_this();
        SetWindowLongPtrW(window, DWLP_USER, reinterpret_cast<LONG_PTR>(impl));
    }
    return impl;
}

// The messages that are the window's own business; the others are the overrides'.
INT_PTR OCDialog::Impl::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            return Initialize();
        case WM_DESTROY:
            Destroying();
            return FALSE;
        case WM_NCDESTROY:
            hook_.reset();
            SetWindowLongPtrW(std::exchange(window_, nullptr), DWLP_USER, 0);
            self_.reset();
            return FALSE;
        case WM_DPICHANGED:
            ChangeDpi(LOWORD(wParam), As<RECT*>(lParam));
            return TRUE;
        case WM_DPICHANGED_AFTERPARENT:
            ChangeDpi(win32::DpiOf(window_), nullptr);
            return TRUE;
        case WM_PAINT:
            PaintGrip();
            Painted();
            return TRUE;
        case WM_NCHITTEST:
            return HitTest(lParam);
        case WM_SIZE:
            RefreshGrip();
            break;
        default:
            break;
    }
    return Accepts(message) ? Deliver(message, wParam, lParam) : FALSE;
}

bool OCDialog::Impl::Accepts(UINT message) const {
    if (!owner_ || run_.failed || run_.destroying) return false;
    return run_.initializing || message == WM_MEASUREITEM;
}

// An answer is kept until its message is done with, as others may be handled meanwhile.
INT_PTR OCDialog::Impl::Deliver(UINT message, WPARAM wParam, LPARAM lParam) {
    const Route* const route = RouteOf(message);
    const LRESULT outer = std::exchange(answer_, route ? route->answer : 0);
    const INT_PTR handled = route ? route->handler(*owner_, wParam, lParam) : DeliverByRange(message, wParam, lParam);
    const LRESULT answer = std::exchange(answer_, outer);
    if (handled && window_) SetWindowLongPtrW(window_, DWLP_MSGRESULT, answer);
    return handled;
}

bool OCDialog::Impl::DeliverByRange(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kAcadKeepFocus) {
        answer_ = owner_->OnAcadKeepFocus();
        return true;
    }
    if (message < WM_USER || message > kLastAppMessage) return false;
    return message < WM_APP ? owner_->OnUserMessage(message, wParam, lParam)
                            : owner_->OnAppMessage(message, wParam, lParam);
}

INT_PTR OCDialog::Impl::Initialize() {
    Prepare();
    run_.initializing = true;
    const bool systemFocus = owner_->OnInitDialog();
    if (Alive()) owner_->SetLanguage();
    if (Alive()) AssignMnemonics(window_);
    if (Alive()) owner_->SetAnchoring();
    if (Alive()) anchorer_.Layout();
    if (Alive()) {
        run_.ready = true;
        owner_->SetPosition();
    }
    if (Alive() && IsResizable()) FitMonitor();
    return systemFocus;
}

void OCDialog::Impl::Prepare() {
    dpi_ = win32::DpiOf(window_);
    DisableSystemScaling(window_);
    AttachAnchorer();
    hook_.emplace(window_, !run_.modal, *this);
}

// The system has cut a window that is larger than the screen, but its controls are where the template has them.
void OCDialog::Impl::AttachAnchorer() {
    RECT size{0, 0, run_.templateSize.cx, run_.templateSize.cy};
    MapDialogRect(window_, &size);
    anchorer_.Attach(window_, dpi_, {size.right, size.bottom});
}

// On a small screen what lies beyond its edge, such as OK, could not be reached.
void OCDialog::Impl::FitMonitor() {
    const RECT area = WorkArea(window_);
    const RECT now = win32::RectOf(window_);
    const SIZE size = win32::Within(area, win32::SizeOf(now));
    if (size.cx == now.right - now.left && size.cy == now.bottom - now.top) return;
    const POINT corner = win32::Within(area, {now.left, now.top}, size);
    SetWindowPos(window_, nullptr, corner.x, corner.y, size.cx, size.cy, SWP_NOZORDER | SWP_NOACTIVATE);
}

void OCDialog::Impl::Destroying() {
    const bool closedFromOutside = run_.modal && !run_.ended;
    run_.destroying = true;
    if (closedFromOutside) {
        // Enables the owner, and wakes the loop to find its window gone.
        ::EndDialog(window_, kFailed);
        PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
    }
    try {
        if (owner_ && run_.ready && !run_.failed) owner_->SavePosition();
    } catch (...) {
        Fail();
    }
    if (owner_ && run_.initializing) owner_->OnDestroy();
}

void OCDialog::Impl::Fail() noexcept {
    run_.failed = true;
    run_.result = kFailed;
    if (!window_ || run_.destroying) return;
    if (run_.modal) {
        ::EndDialog(window_, kFailed);
    } else {
        DestroyWindow(window_);
    }
}

void OCDialog::Impl::ChangeDpi(unsigned dpi, const RECT* suggested) {
    if (!run_.initializing || !dpi || dpi == dpi_) return;
    const unsigned old = std::exchange(dpi_, dpi);
    const RECT before = ClientRect(window_);
    fonts_.SetDpi(window_, old, dpi);
    ScaleColumns(window_, old, dpi);
    anchorer_.SetDpi(dpi);
    if (suggested) {
        SetWindowPos(window_, nullptr, suggested->left, suggested->top, suggested->right - suggested->left,
                     suggested->bottom - suggested->top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    // Overrides of OnSize fit what they draw or measure, also when the size happens to stay.
    const RECT after = ClientRect(window_);
    if (EqualRect(&before, &after))
        SendMessageW(window_, WM_SIZE, SIZE_RESTORED, MAKELPARAM(after.right, after.bottom));
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

bool OCDialog::Impl::IsResizable() const {
    const auto style = static_cast<DWORD>(GetWindowLongW(window_, GWL_STYLE));
    return (style & WS_THICKFRAME) && !(style & (WS_CHILD | WS_MAXIMIZE | WS_MINIMIZE)) && horizontal_ && vertical_;
}

RECT OCDialog::Impl::GripRect() const {
    RECT grip = ClientRect(window_);
    if (!IsResizable()) return {};
    const int side = win32::Scale(kGripSize, dpi_);
    grip.left = grip.right - side;
    grip.top = grip.bottom - side;
    return grip;
}

void OCDialog::Impl::RefreshGrip() {
    InvalidateRect(window_, &grip_, TRUE);
    grip_ = GripRect();
    InvalidateRect(window_, &grip_, TRUE);
}

void OCDialog::Impl::PaintGrip() {
    PAINTSTRUCT paint{};
    if (!BeginPaint(window_, &paint)) return;
    grip_ = GripRect();  // a dialog that keeps its template's size gets no WM_SIZE
    if (!IsRectEmpty(&grip_)) {
        const win32::Unique<HTHEME, CloseThemeData> theme(OpenThemeData(window_, VSCLASS_STATUS));
        if (theme) {
            DrawThemeBackground(theme.get(), paint.hdc, SP_GRIPPER, 0, &grip_, nullptr);
        } else {
            DrawFrameControl(paint.hdc, &grip_, DFC_SCROLL, DFCS_SCROLLSIZEGRIP);
        }
    }
    EndPaint(window_, &paint);
}

// At first to paint all is faster than to spare the controls, and nothing flickers yet.
void OCDialog::Impl::Painted() {
    const bool isFirst = !std::exchange(run_.painted, true);
    if (isFirst && (GetWindowLongW(window_, GWL_STYLE) & WS_THICKFRAME)) AvoidFlicker(window_);
}

INT_PTR OCDialog::Impl::HitTest(LPARAM screenPoint) {
    POINT point = PointOf(screenPoint);
    ScreenToClient(window_, &point);
    const RECT grip = GripRect();
    if (!PtInRect(&grip, point)) return FALSE;
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, HTBOTTOMRIGHT);
    return TRUE;
}
