#include "host/TourSteps.h"

#include <commctrl.h>

#include <string_view>
#include <utility>

#include "host/Utf.h"

namespace ochost {
namespace {

bool IsOfClass(HWND window, std::wstring_view className) {
    wchar_t name[64] = L"";
    GetClassNameW(window, name, static_cast<int>(std::size(name)));
    return CompareStringOrdinal(name, -1, className.data(), static_cast<int>(className.size()), TRUE) == CSTR_EQUAL;
}

HWND FindControl(HWND dlg, const wchar_t* className, int n) {
    for (HWND child = GetWindow(dlg, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsWindowVisible(child) && IsOfClass(child, className) && n-- == 0) return child;
    }
    throw uidriver::ActionError("\"" + ToUtf8(uidriver::Text(dlg)) + "\" has too few controls of the class " +
                                ToUtf8(className));
}

void ClickTree(HWND dlg, const std::wstring& text, bool twice) {
    const HWND tree = FindControl(dlg, WC_TREEVIEWW, 0);
    const HTREEITEM item = uidriver::FindTreeItem(tree, text);
    if (!item) throw uidriver::ActionError("the tree has no \"" + ToUtf8(text) + "\"");
    uidriver::ClickTreeItem(tree, item, false, twice);
}

}  // namespace

TourSteps::TourSteps(uidriver::Script& script, TakePicture takePicture)
    : script_(script), takePicture_(std::move(takePicture)) {
}

TourSteps& TourSteps::Add(std::function<void(HWND)> step) {
    script_.Then([this, step = std::move(step)] { step(dialogs_.back()); });
    return *this;
}

TourSteps& TourSteps::Open() {
    script_.WithNewDialog([this](HWND dlg) { dialogs_.push_back(dlg); });
    return *this;
}

TourSteps& TourSteps::Return() {
    script_.WaitFor("the dialog to close", [this] { return !IsWindow(dialogs_.back()); });
    script_.Then([this] { dialogs_.pop_back(); });
    return *this;
}

TourSteps& TourSteps::Type(const wchar_t* className, int n, const std::wstring& text) {
    return Add([=](HWND dlg) { uidriver::SetText(dlg, GetDlgCtrlID(FindControl(dlg, className, n)), text); });
}

TourSteps& TourSteps::Press(const wchar_t* className, int n) {
    return Add([=](HWND dlg) { uidriver::Click(dlg, GetDlgCtrlID(FindControl(dlg, className, n))); });
}

TourSteps& TourSteps::DoubleClickInTree(const std::wstring& text) {
    return Add([=](HWND dlg) { ClickTree(dlg, text, true); });
}

TourSteps& TourSteps::ClickInTree(const std::wstring& text) {
    return Add([=](HWND dlg) { ClickTree(dlg, text, false); });
}

TourSteps& TourSteps::Key(int virtualKey) {
    return Add([=](HWND) { uidriver::Key(virtualKey); });
}

TourSteps& TourSteps::Picture(const std::wstring& part) {
    return Add([this, part](HWND dlg) {
        if (!takePicture_(dlg, part)) throw uidriver::ActionError("no picture could be taken or written");
    });
}

TourSteps& TourSteps::Confirm() {
    return Add([](HWND dlg) { uidriver::Click(dlg, IDOK); });
}

}  // namespace ochost
