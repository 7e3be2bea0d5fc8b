#include <orvatool/Gw.h>

#include <orvatool/OCDialog.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <cwchar>
#include <optional>
#include <string>
#include <string_view>

#include "Numbers.h"
#include "Release.h"
#include "Win32.h"

namespace {

constexpr wchar_t kRedrawProperty[] = L"OrvaTool.RedrawOff";
constexpr wchar_t kBlanks[] = L" \t\r\n\u00a0";

int releaseCount = 0;

ustr TextOf(HWND window) {
    ustr text;
    text.resize(static_cast<std::size_t>(GetWindowTextLengthW(window)));
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

void CutTo(int maxChars, ustr& text) {
    if (maxChars > 0) text.truncate(static_cast<std::size_t>(maxChars));
}

// The number of a text in the form that from_chars reads: no blanks around it, no plus sign, a point. Empty for a text
// that holds anything outside ASCII.
std::string PlainNumber(std::wstring_view typed, std::wstring_view separator) {
    const std::size_t first = typed.find_first_not_of(kBlanks);
    if (first == std::wstring_view::npos) return {};
    std::wstring text(typed.substr(first, typed.find_last_not_of(kBlanks) + 1 - first));
    if (const std::size_t at = text.find(separator); at != std::wstring::npos) text.replace(at, separator.size(), L".");
    if (text.size() > 1 && text[0] == L'+' && text[1] != L'-') text.erase(0, 1);
    if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c > 0x7e; })) return {};
    std::string plain(text.size(), '\0');
    std::transform(text.begin(), text.end(), plain.begin(), [](wchar_t c) { return static_cast<char>(c); });
    return plain;
}

template <class Number, class... Format>
std::optional<Number> Parse(const std::string& text, Format... format) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, number, format...);
    if (text.empty() || error != std::errc() || at != end) return std::nullopt;
    return number;
}

// With `decimals` below 0 as many as the number needs.
ustr NumberText(double value, int decimals) {
    char digits[512];
    const auto result =
        decimals < 0 ? std::to_chars(digits, std::end(digits), value, std::chars_format::fixed)
                     : std::to_chars(digits, std::end(digits), value, std::chars_format::fixed, std::min(decimals, 17));
    std::string_view plain(digits, static_cast<std::size_t>(result.ptr - digits));
    if (plain.find('.') != std::string_view::npos) {
        plain = plain.substr(0, plain.find_last_not_of('0') + 1);
        if (plain.back() == '.') plain.remove_suffix(1);
    }
    if (plain == "-0") plain = "0";
    std::wstring text(plain.begin(), plain.end());
    if (const std::size_t at = text.find(L'.'); at != std::wstring::npos) text.replace(at, 1, DecimalSeparator());
    return ustr(text);
}

bool RefuseNumber(HWND dlg, Lng::AppID app, HWND control, const ustr& message) {
    gwerrmsg(dlg, app, message.c_str());
    SendMessageW(dlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    if (GetFocus() != control) SetFocus(control);
    SendMessageW(control, EM_SETSEL, 0, -1);
    return false;
}

int ShowMessage(HWND parent, const wchar_t* message, UINT flags) {
    const CommonControlsScope controls;
    const ustr title = Lng::GetAppName(Lng::Common, false);
    return MessageBoxW(IsWindow(parent) ? parent : nullptr, message ? message : L"", title.c_str(), flags);
}

}  // namespace

std::wstring DecimalSeparator() {
    wchar_t separator[8] = L"";
    const int length = GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, separator, ARRAYSIZE(separator));
    return length > 1 ? separator : L".";
}

std::optional<double> NumberOf(std::wstring_view text, std::wstring_view separator) {
    const auto number = Parse<double>(PlainNumber(text, separator), std::chars_format::general);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

void gwmemotodlg(HWND dlg, int ctrlId, const wchar_t* text, int maxChars, int /*flags*/) {
    const HWND control = GetDlgItem(dlg, ctrlId);
    if (!control) return;
    ustr shown(text);
    CutTo(maxChars, shown);
    SendMessageW(control, EM_SETLIMITTEXT, static_cast<WPARAM>(std::max(maxChars, 0)), 0);
    SetWindowTextW(control, shown.c_str());
}

ustr gwdlgtomemo(HWND dlg, int ctrlId, int maxChars) {
    const HWND control = GetDlgItem(dlg, ctrlId);
    if (!control) return ustr();
    ustr text = TextOf(control);
    CutTo(maxChars, text);
    return text;
}

void gwinttodlg(HWND dlg, int ctrlId, std::int64_t value) {
    SetDlgItemTextW(dlg, ctrlId, std::to_wstring(value).c_str());
}

void gwdoubletodlg(HWND dlg, int ctrlId, double value, int decimals) {
    SetDlgItemTextW(dlg, ctrlId, NumberText(value, std::max(decimals, 0)).c_str());
}

bool gwdlgtoint(HWND dlg, Lng::AppID app, int ctrlId, int minimum, int maximum, int& value) {
    const HWND control = GetDlgItem(dlg, ctrlId);
    if (!control) return false;
    const auto number = Parse<int>(PlainNumber(TextOf(control), L"."));
    if (number && *number >= minimum && *number <= maximum) {
        value = *number;
        return true;
    }
    ustr message;
    message.format(Lng::text(kSharedTexts, 90003, L"Enter a whole number from %d to %d.").c_str(), minimum, maximum);
    return RefuseNumber(dlg, app, control, message);
}

bool gwdlgtodouble(HWND dlg, Lng::AppID app, int ctrlId, double minimum, double maximum, double& value) {
    const HWND control = GetDlgItem(dlg, ctrlId);
    if (!control) return false;
    const auto number = NumberOf(TextOf(control), DecimalSeparator());
    if (number && *number >= minimum && *number <= maximum) {
        value = *number;
        return true;
    }
    ustr message;
    message.format(Lng::text(kSharedTexts, 90004, L"Enter a number from %s to %s.").c_str(),
                   NumberText(minimum, -1).c_str(), NumberText(maximum, -1).c_str());
    return RefuseNumber(dlg, app, control, message);
}

void gwenablectl(HWND dlg, int ctrlId, bool enable) {
    if (const HWND control = GetDlgItem(dlg, ctrlId)) EnableWindow(control, enable);
}

void gwshowctl(HWND dlg, int ctrlId, bool show) {
    if (const HWND control = GetDlgItem(dlg, ctrlId)) ShowWindow(control, show ? SW_SHOWNA : SW_HIDE);
}

void gwsetcheck(HWND dlg, int ctrlId, bool checked) {
    CheckDlgButton(dlg, ctrlId, checked ? BST_CHECKED : BST_UNCHECKED);
}

bool gwgetcheck(HWND dlg, int ctrlId) {
    return IsDlgButtonChecked(dlg, ctrlId) == BST_CHECKED;
}

void gwfillcombo(HWND dlg, int ctrlId, const ValueList& values, std::int64_t selected) {
    const HWND combo = GetDlgItem(dlg, ctrlId);
    if (!combo) return;
    const gwRedrawOff quiet(combo);
    SendMessageW(combo, CB_RESETCONTENT, 0, 0);
    LRESULT chosen = CB_ERR;
    for (const auto& [name, value] : values) {
        // Inserting keeps the order of the values, where adding would sort a box that is made so.
        const LRESULT at =
            SendMessageW(combo, CB_INSERTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(name.c_str()));
        if (at < 0) return;
        SendMessageW(combo, CB_SETITEMDATA, static_cast<WPARAM>(at), static_cast<LPARAM>(value));
        if (value == selected && chosen == CB_ERR) chosen = at;
    }
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(chosen), 0);
}

bool gwcombovalue(HWND dlg, int ctrlId, std::int64_t& value) {
    const HWND combo = GetDlgItem(dlg, ctrlId);
    const LRESULT at = combo ? SendMessageW(combo, CB_GETCURSEL, 0, 0) : CB_ERR;
    if (at == CB_ERR) return false;
    value = SendMessageW(combo, CB_GETITEMDATA, static_cast<WPARAM>(at), 0);
    return true;
}

bool gwyesnomsg(HWND parent, Lng::AppID /*app*/, const wchar_t* question) {
    return ShowMessage(parent, question, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

void gwmsg(HWND parent, Lng::AppID /*app*/, const wchar_t* message) {
    ShowMessage(parent, message, MB_OK | MB_ICONINFORMATION);
}

void gwerrmsg(HWND parent, Lng::AppID /*app*/, const wchar_t* message) {
    ShowMessage(parent, message, MB_OK | MB_ICONWARNING);
}

gwRedrawOff::gwRedrawOff(HWND window)
    : window_(window),
      outermost_(!GetPropW(window, kRedrawProperty)),
      visible_((GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0) {
    if (!outermost_) return;
    SetPropW(window, kRedrawProperty, window);
    SendMessageW(window, WM_SETREDRAW, FALSE, 0);
    // A control that keeps WM_SETREDRAW to itself may go on drawing its scroll bars at every change.
    if (visible_) DefWindowProcW(window, WM_SETREDRAW, FALSE, 0);
}

gwRedrawOff::~gwRedrawOff() {
    if (!outermost_ || !IsWindow(window_)) return;
    RemovePropW(window_, kRedrawProperty);
    if (visible_) DefWindowProcW(window_, WM_SETREDRAW, TRUE, 0);
    SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    // Windows that leave WM_SETREDRAW to the system are visible after it even when they were hidden.
    if (!visible_) ShowWindow(window_, SW_HIDE);
    // While its dialog is being filled it will be painted in any case.
    if (IsWindowVisible(window_))
        RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

gwWaitCursor::gwWaitCursor() : previous_(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {
}

gwWaitCursor::~gwWaitCursor() {
    SetCursor(previous_);
}

bool gwcopytext(HWND owner, const ustr& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    win32::GlobalMemory memory(GlobalAlloc(GMEM_MOVEABLE, bytes));
    void* const target = memory ? GlobalLock(memory.get()) : nullptr;
    if (!target) return false;
    std::memcpy(target, text.c_str(), bytes);
    GlobalUnlock(memory.get());
    if (!OpenClipboard(owner)) return false;
    const bool put = EmptyClipboard() && SetClipboardData(CF_UNICODETEXT, memory.get());
    CloseClipboard();
    if (put) memory.release();  // the clipboard's from now on
    return put;
}

void gwrelease() {
    ++releaseCount;
    ReleaseImages();
    ReleaseCatalogues();
}

int gwreleasecount() {
    return releaseCount;
}
