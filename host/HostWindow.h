#pragma once

#include <orvatool/OCDialog.h>
#include <orvatool/TreeInsertList.h>

#include <string>
#include <vector>

#include "host/Console.h"

namespace ochost {

/// The host's main window: the dialogs by family, the record that the last one worked on before and after, and the log.
class HostWindow : public OCDialog, private UserReporter {
public:
    /// `project` must outlive the window.
    explicit HostWindow(ProjectStore& project);
    ~HostWindow() override;

    /// Creates and shows the window; false on failure.
    bool Open();
    /// Handles messages until the user closes the window.
    void RunUntilClosed();
    /// Opens a dialog as if the user had chosen it.
    Outcome Run(const DialogEntry& dialog);

    void SetAnchoring() override;
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    bool OnKeyDown(int virtualKey) override;
    using OCDialog::OnKeyDown;
    void OnOk() override;
    void SetLanguage() override;
    void SetPosition() override;
    void SavePosition() override;
    ustr GetPositionRegistryKey() const override;

private:
    void Before(const std::wstring& record) override;
    void After(const std::wstring& record) override;
    void Log(const std::wstring& line) override;

    void FillDialogs();
    void FillLanguages();
    void SwitchLanguage();
    void ShowSelected();
    void ShowStatus();
    void Select(const DialogEntry& dialog);
    const DialogEntry* Selected() const;

    /// How much the project has of what the window tells.
    struct Size {
        int drawings;
        int rooms;
        int systems;
        int partTypes;
        int properties;
        int customProperties;
    };

    ProjectStore& project_;
    Size size_;
    TREE_INSERTLIST dialogs_;
    TreeSearch search_;
    std::vector<std::wstring> languages_;
};

}  // namespace ochost
