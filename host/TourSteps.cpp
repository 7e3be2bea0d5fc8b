#include "host/TourSteps.h"

#include <commctrl.h>
#include <orvatool/Gw.h>

#include <algorithm>
#include <utility>

#include "host/Utf.h"

namespace ochost {
namespace {

HWND FindControl(HWND dlg, const wchar_t* className, int n) {
    for (HWND child = GetWindow(dlg, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsWindowVisible(child) && uidriver::IsOfClass(child, className) && n-- == 0) return child;
    }
    throw uidriver::ActionError("\"" + ToUtf8(uidriver::Text(dlg)) + "\" has too few controls of the class " +
                                ToUtf8(className));
}

/// The dialog of this thread that is not shown; null for none.
HWND HiddenDialog() {
    HWND found = nullptr;
    const auto look = [](HWND window, LPARAM result) -> BOOL {
        if (IsWindowVisible(window) || !uidriver::IsOfClass(window, L"#32770")) return TRUE;
        *reinterpret_cast<HWND*>(result) = window;
        return FALSE;
    };
    EnumThreadWindows(GetCurrentThreadId(), look, reinterpret_cast<LPARAM>(&found));
    return found;
}

HTREEITEM TreeItem(HWND tree, const std::wstring& text) {
    const HTREEITEM item = uidriver::FindTreeItem(tree, text);
    if (!item) throw uidriver::ActionError("the tree has no \"" + ToUtf8(text) + "\"");
    return item;
}

HTREEITEM TreeRow(HWND tree, int row) {
    HTREEITEM item = TreeView_GetRoot(tree);
    while (item && row-- > 0)
        item = gwTVnext(tree, item);
    if (!item) throw uidriver::ActionError("the tree has too few rows");
    return item;
}

void Check(HWND tree, HTREEITEM item) {
    if (gwTVgetCheck(tree, item) != kTreeChecked) uidriver::ClickTreeItem(tree, item, true);
}

}  // namespace

TourSteps::TourSteps(uidriver::Script& script, std::wstring folder, TakePicture takePicture)
    : script_(script), folder_(std::move(folder)), takePicture_(std::move(takePicture)) {
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
    return Add([=](HWND dlg) {
        const HWND tree = FindControl(dlg, WC_TREEVIEWW, 0);
        uidriver::ClickTreeItem(tree, TreeItem(tree, text), false, true);
    });
}

TourSteps& TourSteps::ClickInTree(const std::wstring& text, int n) {
    return Add([=](HWND dlg) {
        const HWND tree = FindControl(dlg, WC_TREEVIEWW, n);
        uidriver::ClickTreeItem(tree, TreeItem(tree, text));
    });
}

TourSteps& TourSteps::CheckInTree(const std::wstring& text, int n) {
    return Add([=](HWND dlg) {
        const HWND tree = FindControl(dlg, WC_TREEVIEWW, n);
        Check(tree, TreeItem(tree, text));
    });
}

TourSteps& TourSteps::ClickTreeRow(int row, int n) {
    return Add([=](HWND dlg) {
        const HWND tree = FindControl(dlg, WC_TREEVIEWW, n);
        uidriver::ClickTreeItem(tree, TreeRow(tree, row));
    });
}

TourSteps& TourSteps::CheckTreeRow(int row, int n) {
    return Add([=](HWND dlg) {
        const HWND tree = FindControl(dlg, WC_TREEVIEWW, n);
        Check(tree, TreeRow(tree, row));
    });
}

TourSteps& TourSteps::Choose(int n, const std::wstring& text) {
    return Add([=](HWND dlg) {
        const HWND combo = FindControl(dlg, WC_COMBOBOXW, n);
        const LRESULT wanted =
            SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text.c_str()));
        if (wanted == CB_ERR) throw uidriver::ActionError("the list has no \"" + ToUtf8(text) + "\"");
        SetFocus(combo);
        for (LRESULT at = SendMessageW(combo, CB_GETCURSEL, 0, 0); at != wanted; at += at < wanted ? 1 : -1)
            uidriver::Key(at < wanted ? VK_DOWN : VK_UP);
    });
}

TourSteps& TourSteps::Focus(const wchar_t* className, int n) {
    return Add([=](HWND dlg) { SetFocus(FindControl(dlg, className, n)); });
}

TourSteps& TourSteps::DoubleClickInList(int n, const std::wstring& text) {
    return Add([=](HWND dlg) {
        const HWND list = FindControl(dlg, WC_LISTVIEWW, n);
        const std::vector<std::wstring> rows = uidriver::ListColumn(list, 0);
        const auto row = std::find(rows.begin(), rows.end(), text);
        if (row == rows.end()) throw uidriver::ActionError("the list has no \"" + ToUtf8(text) + "\"");
        uidriver::ClickListRow(list, static_cast<int>(row - rows.begin()), false, true);
    });
}

TourSteps& TourSteps::ChooseFile(const std::wstring& path) {
    return Add([=](HWND dlg) { uidriver::ChooseFile(dlg, path); });
}

TourSteps& TourSteps::PostToHidden(UINT message, WPARAM wParam, LPARAM lParam) {
    script_.WaitFor("a hidden dialog", [] { return HiddenDialog() != nullptr; });
    script_.Then([=] { PostMessageW(HiddenDialog(), message, wParam, lParam); });
    return *this;
}

TourSteps& TourSteps::Key(int virtualKey) {
    return Add([=](HWND) { uidriver::Key(virtualKey); });
}

TourSteps& TourSteps::Keys(int virtualKey, int times) {
    for (int i = 0; i < times; ++i)
        Key(virtualKey);
    return *this;
}

TourSteps& TourSteps::Picture(const std::wstring& part) {
    return Add([this, part](HWND dlg) {
        if (!takePicture_(dlg, part)) throw uidriver::ActionError("no picture could be taken or written");
    });
}

TourSteps& TourSteps::Confirm() {
    return Add([](HWND dlg) { uidriver::Click(dlg, IDOK); });
}

TourSteps& TourSteps::Cancel() {
    return Add([](HWND dlg) { uidriver::Click(dlg, IDCANCEL); });
}

}  // namespace ochost
