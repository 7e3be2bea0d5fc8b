#include <orvatool/DlgControlAnchorer.h>

#include "DialogChildren.h"
#include "Places.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

struct Move {
    HWND control;
    RECT from;
    RECT to;
    UINT flags;
};

int ScaleTo(long value, unsigned from, unsigned to) {
    return MulDiv(static_cast<int>(value), static_cast<int>(to), static_cast<int>(from));
}

RECT ScaleTo(const RECT& rect, unsigned from, unsigned to) {
    return {ScaleTo(rect.left, from, to), ScaleTo(rect.top, from, to), ScaleTo(rect.right, from, to),
            ScaleTo(rect.bottom, from, to)};
}

using win32::SizeOf;

bool SameSize(const RECT& a, const RECT& b) {
    return a.right - a.left == b.right - b.left && a.bottom - a.top == b.bottom - b.top;
}

SIZE ClientSize(HWND dlg) {
    RECT client{};
    GetClientRect(dlg, &client);
    return SizeOf(client);
}

RECT RectInDialog(HWND dlg, HWND control) {
    RECT rect{};
    GetWindowRect(control, &rect);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

long Share(double fraction, long growth) {
    return std::lround(fraction * static_cast<double>(growth));
}

LONG StyleOf(HWND control) {
    return GetWindowLongW(control, GWL_STYLE);
}

bool IsDropDown(HWND control) {
    return HasClass(control, L"ComboBoxEx32") ||
           (HasClass(control, L"ComboBox") && (StyleOf(control) & CBS_DROPDOWNLIST) != CBS_SIMPLE);
}

// Such a control fits its height to its font, whatever height it is given.
bool ChoosesItsHeight(HWND control) {
    return IsDropDown(control) || (HasClass(control, L"ListBox") && !(StyleOf(control) & LBS_NOINTEGRALHEIGHT));
}

bool SamePlace(HWND control, const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right &&
           (a.bottom == b.bottom || ChoosesItsHeight(control));
}

void AddMove(std::vector<Move>& moves, HWND dlg, HWND control, RECT to) {
    const RECT now = RectInDialog(dlg, control);
    // Its list shows as many items as it is set to, whatever the height.
    if (IsDropDown(control)) to.bottom = to.top + now.bottom - now.top;
    to.right = std::max(to.left, to.right);
    to.bottom = std::max(to.top, to.bottom);
    UINT flags = SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER;
    if (now.left == to.left && now.top == to.top) flags |= SWP_NOMOVE;
    if (SameSize(now, to)) flags |= SWP_NOSIZE;
    if ((flags & SWP_NOMOVE) && (flags & SWP_NOSIZE)) return;
    if (IsGroupBox(control)) flags |= SWP_NOCOPYBITS;
    moves.push_back({control, now, to, flags});
}

bool MoveTogether(const std::vector<Move>& moves) {
    HDWP pass = BeginDeferWindowPos(static_cast<int>(moves.size()));
    for (const Move& m : moves) {
        if (!pass) return false;
        const SIZE size = SizeOf(m.to);
        pass = DeferWindowPos(pass, m.control, nullptr, m.to.left, m.to.top, size.cx, size.cy, m.flags);
    }
    return pass && EndDeferWindowPos(pass);
}

void MoveEach(const std::vector<Move>& moves) {
    for (const Move& m : moves) {
        const SIZE size = SizeOf(m.to);
        SetWindowPos(m.control, nullptr, m.to.left, m.to.top, size.cx, size.cy, m.flags);
    }
}

// A group box paints only its border; its inside, where an old border may be left, is the dialog's to paint.
void RepaintUnder(HWND dlg, const Move& groupBox) {
    InvalidateRect(dlg, &groupBox.from, TRUE);
    InvalidateRect(dlg, &groupBox.to, TRUE);
    InvalidateRect(groupBox.control, nullptr, TRUE);
}

// Not every system moves all at once: where another control goes, the image of the one that was there may be gone
// before it is taken along.
bool LosesItsImage(const Move& move, const std::vector<Move>& moves) {
    if (move.flags & SWP_NOMOVE) return false;
    return std::any_of(moves.begin(), moves.end(), [&](const Move& other) {
        RECT common{};
        return &other != &move && !IsGroupBox(other.control) && IntersectRect(&common, &move.from, &other.to);
    });
}

void MoveAll(HWND dlg, std::vector<Move> moves) {
    if (moves.empty()) return;
    for (Move& move : moves) {
        if (LosesItsImage(move, moves)) move.flags |= SWP_NOCOPYBITS;
    }
    if (!MoveTogether(moves)) MoveEach(moves);
    for (const Move& m : moves) {
        if (IsGroupBox(m.control)) RepaintUnder(dlg, m);
    }
}

}  // namespace

void DlgControlAnchorer::Attach(HWND dlg, unsigned dpi, SIZE leastClient) {
    const SIZE window = SizeOf(win32::RectOf(dlg));
    const SIZE client = ClientSize(dlg);
    dlg_ = dlg;
    startClient_ = {std::max(client.cx, leastClient.cx), std::max(client.cy, leastClient.cy)};
    startWindow_ = {window.cx + startClient_.cx - client.cx, window.cy + startClient_.cy - client.cy};
    laidOut_ = startClient_;
    startDpi_ = dpi_ = dpi ? dpi : USER_DEFAULT_SCREEN_DPI;
    anchored_.clear();
    loose_.clear();
}

bool DlgControlAnchorer::Add(int ctrlId, const CtrlAnchor& anchor) {
    const HWND control = dlg_ ? GetDlgItem(dlg_, ctrlId) : nullptr;
    if (!control) return false;
    Remove(ctrlId);
    const SIZE growth = Growth(laidOut_);
    RECT start = RectInDialog(dlg_, control);
    start.left -= Share(anchor.left, growth.cx);
    start.top -= Share(anchor.top, growth.cy);
    start.right -= Share(anchor.right, growth.cx);
    start.bottom -= Share(anchor.bottom, growth.cy);
    anchored_.push_back({control, start, dpi_, anchor});
    return true;
}

void DlgControlAnchorer::Remove(int ctrlId) {
    const HWND control = dlg_ ? GetDlgItem(dlg_, ctrlId) : nullptr;
    if (control) std::erase_if(anchored_, [control](const Anchored& item) { return item.control == control; });
}

void DlgControlAnchorer::Layout() {
    if (anchored_.empty() || !IsWindow(dlg_) || IsIconic(dlg_)) return;
    const SIZE client = ClientSize(dlg_);
    if (client.cx != laidOut_.cx || client.cy != laidOut_.cy) Arrange(client);
}

void DlgControlAnchorer::Arrange(SIZE client) {
    laidOut_ = client;
    const SIZE growth = Growth(laidOut_);
    std::vector<Move> moves;
    moves.reserve(anchored_.size());
    for (const Anchored& item : anchored_) {
        if (GetParent(item.control) == dlg_) AddMove(moves, dlg_, item.control, Place(item, growth));
    }
    MoveAll(dlg_, std::move(moves));
}

void DlgControlAnchorer::SetDpi(unsigned dpi) {
    if (!IsWindow(dlg_) || !dpi || dpi == dpi_) return;
    const unsigned oldDpi = std::exchange(dpi_, dpi);
    const std::map<HWND, Loose> known = std::exchange(loose_, {});
    std::vector<Move> moves;
    for (const HWND control : ChildrenOf(dlg_)) {
        if (IsAnchored(control)) continue;
        const RECT now = RectInDialog(dlg_, control);
        const auto found = known.find(control);
        const bool unmoved = found != known.end() && SamePlace(control, found->second.placed, now);
        Loose& item = loose_[control];
        item = unmoved ? found->second : Loose{now, oldDpi, now};
        AddMove(moves, dlg_, control, ScaleTo(item.start, item.dpi, dpi));
    }
    MoveAll(dlg_, std::move(moves));
    for (auto& [control, item] : loose_)
        item.placed = RectInDialog(dlg_, control);
    if (!IsIconic(dlg_)) Arrange(ClientSize(dlg_));
}

SIZE DlgControlAnchorer::MinimumWindowSize() const {
    if (dpi_ == startDpi_ || !dlg_) return startWindow_;
    RECT window{0, 0, ScaleTo(startClient_.cx, startDpi_, dpi_), ScaleTo(startClient_.cy, startDpi_, dpi_)};
    AdjustWindowRectExForDpi(&window, static_cast<DWORD>(StyleOf(dlg_)), GetMenu(dlg_) != nullptr,
                             static_cast<DWORD>(GetWindowLongW(dlg_, GWL_EXSTYLE)), dpi_);
    return SizeOf(window);
}

SIZE DlgControlAnchorer::Growth(SIZE client) const {
    return {client.cx - ScaleTo(startClient_.cx, startDpi_, dpi_),
            client.cy - ScaleTo(startClient_.cy, startDpi_, dpi_)};
}

RECT DlgControlAnchorer::Place(const Anchored& item, SIZE growth) const {
    RECT place = ScaleTo(item.start, item.dpi, dpi_);
    place.left += Share(item.anchor.left, growth.cx);
    place.top += Share(item.anchor.top, growth.cy);
    place.right += Share(item.anchor.right, growth.cx);
    place.bottom += Share(item.anchor.bottom, growth.cy);
    return place;
}

bool DlgControlAnchorer::IsAnchored(HWND control) const {
    return std::any_of(anchored_.begin(), anchored_.end(),
                       [control](const Anchored& item) { return item.control == control; });
}
