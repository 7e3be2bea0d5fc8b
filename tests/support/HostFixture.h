#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <utility>

#include "DialogTest.h"
#include "TestFolder.h"
#include "host/DialogCatalog.h"
#include "host/HostWindow.h"
#include "host/ProjectStore.h"
#include "host/host_ids.h"
#include "host/selection/SampleProject.h"

namespace ochost {

/// All that a dialog shows.
inline std::wstring TextsOf(HWND dlg) {
    std::wstring texts;
    const auto add = [](HWND child, LPARAM all) -> BOOL {
        *reinterpret_cast<std::wstring*>(all) += uidriver::Text(child) + L"\n";
        return TRUE;
    };
    EnumChildWindows(dlg, add, reinterpret_cast<LPARAM>(&texts));
    return texts;
}

/// Presses OK in the dialog on top.
inline void PressOk() {
    uidriver::Click(uidriver::TopDialog(), IDOK);
}

/// A host with its window on a project in the test's folder. Steps drive the dialogs that it opens.
class HostFixture : public DialogTest {
protected:
    void Open(Result<ProjectStore> project) {
        ASSERT_TRUE(project);
        window_.reset();
        project_.emplace(*std::move(project));
        window_.emplace(*project_);
        ASSERT_TRUE(window_->Open());
    }
    /// Opens the dialog of that name, which the steps drive to its end.
    Outcome Run(const wchar_t* dialog) {
        return RunSteps([&] {
            const Outcome outcome = window_->Run(*FindDialog(dialog));
            script_->RunToEnd();
            return outcome;
        });
    }
    std::wstring TextOf(int ctrlId) const { return uidriver::Text(uidriver::Control(window_->hWnd(), ctrlId)); }
    bool LogHas(const std::wstring& text) const { return TextOf(IDC_HOST_LOG).find(text) != std::wstring::npos; }

    const TestFolder folder_;
    const std::wstring file_ = folder_.File(L"office.ocproject");
    std::optional<ProjectStore> project_;
    std::optional<HostWindow> window_;
};

}  // namespace ochost
