#include "Mnemonics.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace {

struct Caption {
    HWND control;
    std::wstring text;
    std::vector<std::size_t> places;  ///< where a mnemonic may stand, best first
};

wchar_t Upper(wchar_t c) {
    return static_cast<wchar_t>(
        reinterpret_cast<std::uintptr_t>(CharUpperW(reinterpret_cast<wchar_t*>(std::uintptr_t{c}))));
}

std::wstring WindowText(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

bool IsClass(HWND window, const wchar_t* name) {
    wchar_t actual[64];
    return GetClassNameW(window, actual, 64) > 0 && lstrcmpiW(actual, name) == 0;
}

bool Labels(HWND label) {
    if ((GetWindowLongPtrW(label, GWL_STYLE) & SS_NOPREFIX) != 0) return false;
    const HWND next = GetWindow(label, GW_HWNDNEXT);
    return next && !IsClass(next, L"Static") && !IsClass(next, L"Button") &&
           (GetWindowLongPtrW(next, GWL_STYLE) & WS_TABSTOP) != 0;
}

bool TakesMnemonic(HWND control) {
    const int id = GetDlgCtrlID(control);
    if (id == IDOK || id == IDCANCEL || id == IDCLOSE) return false;
    if (IsClass(control, L"Static")) return Labels(control);
    return IsClass(control, L"Button") && (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) != BS_GROUPBOX;
}

/// The letter behind the text's own "&", 0 for none.
wchar_t OwnMnemonic(const std::wstring& text) {
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != L'&') continue;
        if (text[i + 1] != L'&') return Upper(text[i + 1]);
        ++i;
    }
    return 0;
}

std::vector<std::size_t> Places(const std::wstring& text) {
    std::vector<std::size_t> starts;
    std::vector<std::size_t> inside;
    bool inWord = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool letter = IsCharAlphaNumericW(text[i]) != FALSE;
        if (letter) (inWord ? inside : starts).push_back(i);
        inWord = letter;
    }
    starts.insert(starts.end(), inside.begin(), inside.end());
    // A mark below the text's end is easily overlooked.
    const auto last = std::find(starts.begin(), starts.end(), text.size() - 1);
    if (last != starts.end()) std::rotate(last, last + 1, starts.end());
    return starts;
}

/// Finds each caption a letter of its own, moving captions that already have one where that lets one more have its own.
class Assignment {
public:
    explicit Assignment(std::vector<Caption>& captions) : captions_(captions) {}

    void Reserve(wchar_t letter) { owner_[letter] = kReserved; }

    bool Assign(int caption) {
        tried_.clear();
        return Augment(caption);
    }

    void Apply() const {
        for (const auto& [letter, caption] : owner_) {
            if (caption == kReserved) continue;
            Caption& c = captions_[static_cast<std::size_t>(caption)];
            const auto place = std::find_if(c.places.begin(), c.places.end(),
                                            [&, l = letter](std::size_t at) { return Upper(c.text[at]) == l; });
            SetWindowTextW(c.control, std::wstring(c.text).insert(*place, 1, L'&').c_str());
        }
    }

private:
    static constexpr int kReserved = -1;

    bool Augment(int caption) {
        const Caption& c = captions_[static_cast<std::size_t>(caption)];
        for (const std::size_t at : c.places) {
            if (owner_.emplace(Upper(c.text[at]), caption).second) return true;
        }
        for (const std::size_t at : c.places) {
            const wchar_t letter = Upper(c.text[at]);
            if (std::find(tried_.begin(), tried_.end(), letter) != tried_.end()) continue;
            tried_.push_back(letter);
            const int owner = owner_[letter];
            if (owner != kReserved && Augment(owner)) {
                owner_[letter] = caption;
                return true;
            }
        }
        return false;
    }

    std::vector<Caption>& captions_;
    std::map<wchar_t, int> owner_;
    std::vector<wchar_t> tried_;
};

}  // namespace

void AssignMnemonics(HWND dlg) {
    std::vector<Caption> captions;
    std::vector<wchar_t> taken;
    for (HWND control = GetWindow(dlg, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT)) {
        if (!TakesMnemonic(control)) continue;
        std::wstring text = WindowText(control);
        if (const wchar_t own = OwnMnemonic(text)) {
            taken.push_back(own);
        } else if (std::vector<std::size_t> places = Places(text); !places.empty()) {
            captions.push_back({control, std::move(text), std::move(places)});
        }
    }
    Assignment assignment(captions);
    for (const wchar_t letter : taken)
        assignment.Reserve(letter);
    for (int i = 0; i < static_cast<int>(captions.size()); ++i)
        assignment.Assign(i);
    assignment.Apply();
}
