#pragma once

#include <orvatool/Gw.h>

#include <cstdint>
#include <functional>
#include <string>

#include "DialogTest.h"
#include "SelectionHost.h"

/// A selection of the current drawing.
inline ObjectSelection::Data CurrentDrawing() {
    ObjectSelection::Data data;
    data.bySelectionSet = data.currentDrawing = true;
    return data;
}

/// A system in the current drawing.
inline ObjectSelection::Data SystemInCurrentDrawing(std::int32_t system) {
    ObjectSelection::Data data = CurrentDrawing();
    data.useSystems = true;
    data.systems = {system};
    return data;
}

/// The entries of the menu that is open, without mnemonics; "-" for a separator, "* " before what is checked, "# "
/// before what is grey.
inline Texts OpenMenuEntries() {
    const HWND window = FindWindowW(L"#32768", nullptr);
    const auto menu = reinterpret_cast<HMENU>(SendMessageW(window, MN_GETHMENU, 0, 0));
    Texts entries;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[128] = L"";
        GetMenuStringW(menu, static_cast<UINT>(i), text, 128, MF_BYPOSITION);
        const UINT state = GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION);
        const std::wstring mark = state & MF_CHECKED ? L"* " : state & MF_GRAYED ? L"# " : L"";
        entries.push_back(state & MF_SEPARATOR ? L"-" : mark + text);
        std::erase(entries.back(), L'&');
    }
    return entries;
}

/// A dialog with an object selection, of a host with a small project.
class SelectionTest : public DialogTest {
protected:
    explicit SelectionTest(int categoriesId) : categoriesId_(categoriesId) {}

    HWND Categories() const { return uidriver::Control(dlg_, categoriesId_); }
    /// The tree of items that is shown; null for none.
    HWND ShownTree() const {
        HWND tree = nullptr;
        do {
            tree = FindWindowExW(dlg_, tree, WC_TREEVIEWW, nullptr);
        } while (tree && (tree == Categories() || !IsWindowVisible(tree)));
        return tree;
    }

    /// Selects the category, or turns it on or off.
    void Pick(const wchar_t* category, bool onCheckBox = false) {
        Step([=, this] { ClickInTree(Categories(), category, onCheckBox); });
    }
    /// Turns the check box of an item of the tree that is shown.
    void Turn(const wchar_t* text) {
        Step([=, this] { ClickInTree(ShownTree(), text, true); });
    }

    /// Asks for the context menu of a control, expects it to offer this, and runs `use` in it.
    void InMenu(
        std::function<HWND()> control, const Texts& entries, std::function<void()> use = [] { EndMenu(); }) {
        Step([=](HWND dlg) {
            PostMessageW(dlg, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(control()), MAKELPARAM(-1, -1));
        });
        script_->WaitFor("the menu", [] { return FindWindowW(L"#32768", nullptr) != nullptr; });
        Step([=] {
            EXPECT_EQ(OpenMenuEntries(), entries);
            use();
        });
    }

    SelectionHost host_;

private:
    const int categoriesId_;
};
