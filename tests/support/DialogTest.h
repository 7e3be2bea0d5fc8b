#pragma once

#include <gtest/gtest.h>
#include <orvatool/InterApp.h>
#include <orvatool/Lng.h>
#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "host/driver/UiDriver.h"

using Texts = std::vector<std::wstring>;

/// What is shown: mnemonics are a matter of the toolkit.
inline std::wstring Shown(HWND dlg, int ctrlId) {
    std::wstring text = uidriver::Text(uidriver::Control(dlg, ctrlId));
    std::erase(text, L'&');
    return text;
}
inline bool Enabled(HWND dlg, int ctrlId) {
    return IsWindowEnabled(uidriver::Control(dlg, ctrlId)) != FALSE;
}
inline bool Visible(HWND dlg, int ctrlId) {
    return IsWindowVisible(uidriver::Control(dlg, ctrlId)) != FALSE;
}
inline bool HasFocus(HWND dlg, int ctrlId) {
    return GetFocus() == uidriver::Control(dlg, ctrlId);
}
inline bool IsChecked(HWND dlg, int ctrlId) {
    return SendMessageW(uidriver::Control(dlg, ctrlId), BM_GETCHECK, 0, 0) == BST_CHECKED;
}
inline Texts ComboTexts(HWND dlg, int ctrlId) {
    const HWND combo = uidriver::Control(dlg, ctrlId);
    Texts texts(static_cast<std::size_t>(SendMessageW(combo, CB_GETCOUNT, 0, 0)));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i].resize(static_cast<std::size_t>(SendMessageW(combo, CB_GETLBTEXTLEN, i, 0)));
        SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(texts[i].data()));
    }
    return texts;
}
/// Clicks the first item of that text, or its check box.
inline void ClickInTree(HWND tree, const std::wstring& text, bool onCheckBox = false) {
    uidriver::ClickTreeItem(tree, uidriver::FindTreeItem(tree, text), onCheckBox);
}

/// A window that is no more.
inline HWND GoneWindow() {
    const HWND window = CreateWindowExW(0, L"Static", L"", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    DestroyWindow(window);
    return window;
}

/// A dialog that is used as a user does: a test notes the steps, then opens the dialog, in which they run.
class DialogTest : public testing::Test {
protected:
    static constexpr int kAskText = 101;  ///< the edit control of a question for a text; its label is the one before

    DialogTest() {
        SetProductKey(kProductKey);
        Lng::SetLanguage(L"en");
        NewScript();
    }
    ~DialogTest() override {
        DestroyWindow(parent_);
        RegDeleteTreeW(HKEY_CURRENT_USER, kProductKey);
    }

    /// Adds a step, which may take the dialog.
    template <class Work>
    void Step(Work work) {
        if constexpr (std::is_invocable_v<const Work&, HWND>) {
            script_->Then([this, work] { work(dlg_); });
        } else {
            script_->Then(work);
        }
    }
    void Press(int ctrlId) {
        Step([=](HWND dlg) { uidriver::Click(dlg, ctrlId); });
    }
    void Key(int key, const std::vector<int>& modifiers = {}) {
        Step([=] { uidriver::Key(key, modifiers); });
    }
    void Enter(int ctrlId, const std::wstring& text) {
        Step([=](HWND dlg) { uidriver::SetText(dlg, ctrlId, text); });
    }
    /// Presses OK and expects to stay, with the focus on what is wrong.
    void ExpectRefused(int ctrlId, int button = IDOK) {
        Press(button);
        Step([=](HWND dlg) {
            EXPECT_EQ(uidriver::TopDialog(), dlg);
            EXPECT_TRUE(HasFocus(dlg, ctrlId)) << ctrlId << " but " << GetDlgCtrlID(GetFocus());
        });
    }
    /// Runs in the dialog that opens next, which is another one.
    void InNewDialog(std::function<void(HWND)> step) { script_->WithNewDialog(std::move(step)); }
    /// Answers a question for a text that proposes `proposal`; null cancels it.
    void AnswerText(const std::wstring& proposal, const wchar_t* text) {
        InNewDialog([=](HWND ask) {
            EXPECT_EQ(Shown(ask, kAskText), proposal);
            if (text) uidriver::SetText(ask, kAskText, text);
        });
        Step([=] { uidriver::Click(uidriver::TopDialog(), text ? IDOK : IDCANCEL); });
    }
    void ExpectMessage(const std::wstring& text, int button = IDOK) {
        InNewDialog([=](HWND message) {
            EXPECT_EQ(uidriver::Text(GetDlgItem(message, 0xFFFF)), text);
            uidriver::Click(message, button);
        });
    }

    /// Opens the dialog, in which the steps run. Then a test may go on with the steps for another one.
    template <class Open>
    auto RunSteps(Open open) {
        script_->Start();
        const auto result = open();
        EXPECT_TRUE(script_->Finished()) << script_->Failure();
        NewScript();
        return result;
    }
    /// Moves and sizes the one dialog and expects the other there.
    template <class Open, class OpenAgain>
    void ExpectOpensWhereItWasLeft(Open open, OpenAgain again) {
        RECT left{};
        RECT now{};
        Step([&](HWND dlg) {
            SetWindowPos(dlg, nullptr, 60, 70, 900, 640, SWP_NOZORDER);
            GetWindowRect(dlg, &left);
        });
        Press(IDCANCEL);
        RunSteps(open);
        Step([&](HWND dlg) { GetWindowRect(dlg, &now); });
        Press(IDCANCEL);
        RunSteps(again);
        EXPECT_TRUE(EqualRect(&now, &left)) << now.left << ' ' << now.top << ' ' << now.right << ' ' << now.bottom;
    }

    HWND parent_ = CreateWindowExW(0, L"Static", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 100, 600, 400, nullptr,
                                   nullptr, nullptr, nullptr);
    HWND dlg_ = nullptr;
    std::unique_ptr<uidriver::Script> script_;

private:
    static constexpr wchar_t kProductKey[] = L"Software\\OrvaCADTest";

    void NewScript() {
        script_ = std::make_unique<uidriver::Script>();
        script_->WithNewDialog([this](HWND dlg) { dlg_ = dlg; });
    }
};
