#include "DialogFonts.h"

#include "DialogChildren.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

HFONT FontOf(HWND control) {
    return reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
}

win32::Font Resized(HFONT font, unsigned from, unsigned to) {
    LOGFONTW description{};
    if (from == to || !GetObjectW(font, sizeof description, &description)) return {};
    description.lfHeight = MulDiv(description.lfHeight, static_cast<int>(to), static_cast<int>(from));
    description.lfWidth = 0;
    return win32::Font(CreateFontIndirectW(&description));
}

}  // namespace

void DialogFonts::SetDpi(HWND dlg, unsigned oldDpi, unsigned dpi) {
    std::vector<std::pair<HWND, std::size_t>> users;
    for (const HWND control : ChildrenOf(dlg)) {
        if (const HFONT font = FontOf(control)) users.emplace_back(control, IndexOf(font, oldDpi));
    }
    // The controls let go of the fonts so far before those are freed.
    std::vector<win32::Font> retired;
    retired.reserve(entries_.size());
    for (Entry& entry : entries_) {
        retired.push_back(std::exchange(entry.scaled, Resized(entry.original, entry.originalDpi, dpi)));
    }
    for (const auto& [control, index] : users) {
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(entries_[index].inUse()), FALSE);
    }
}

std::size_t DialogFonts::IndexOf(HFONT font, unsigned dpi) {
    const auto found =
        std::find_if(entries_.begin(), entries_.end(), [font](const Entry& entry) { return entry.inUse() == font; });
    if (found != entries_.end()) return static_cast<std::size_t>(found - entries_.begin());
    entries_.push_back({font, dpi, {}});
    return entries_.size() - 1;
}
