#pragma once

#include <windows.h>

#include <orvatool/OCDialog.h>
#include <orvatool/OcListView2.h>

#include <span>

#include "DialogTables.h"

/// What is the same for every dialog of the library but for the tables: texts, anchors, the remembered position, an
/// owner-drawn list, and that OK reads the controls and stays open when one of them is refused.
class LibraryDialog : public OCDialog {
public:
    struct Tables {
        const wchar_t* positionKey;
        std::span<const TextRow> texts;        ///< the dialog's own
        std::span<const TextRow> commonTexts;  ///< those that others have too
        std::span<const AnchorRow> anchors;
        std::span<const ColumnRow> columns = {};  ///< of the owner-drawn list
    };

    /// The caption names `app`. `tables` must outlive the dialog.
    LibraryDialog(HINSTANCE instance, HWND parent, Lng::AppID app, const Tables& tables);

    void SetAnchoring() override;
    bool OnDrawItem(int ctrlId, DRAWITEMSTRUCT* item) override;
    bool OnMeasureItem(int ctrlId, MEASUREITEMSTRUCT* item) override;
    void OnOk() override;
    void SetLanguage() override;
    void SetPosition() override;
    void SavePosition() override;
    ustr GetPositionRegistryKey() const override;

protected:
    /// Takes over the list control and gives it the columns; column `stretched` takes the width that is left.
    void AttachList(int ctrlId, int stretched);
    /// For OnNotify: true when the notification is the list's own to answer.
    bool ListAnswers(const NMHDR* header);
    bool HasFocus(int ctrlId) const;

    /// The buttons that the list's keys press: Delete, F2, Alt+Up and Alt+Down.
    struct ListButtons {
        unsigned remove;
        unsigned edit;
        unsigned up;
        unsigned down;
    };
    /// For OnKeyDown: the one that the key presses now, as WM_COMMAND has it; 0 for none.
    unsigned PressedButton(const ListButtons& buttons, int virtualKey) const;

    const Lng::AppID app_;
    OcListView2 list_;

private:
    const Tables& tables_;
};
