#pragma once

#include <occommonui/UpdateDwgData.h>

#include <cstdint>
#include <set>
#include <vector>

#include "LibraryDialog.h"

namespace UpdateDwgData {

/// Edits the options of updating drawings, and manages the sets of them that the project keeps.
class UpdateDwgDataDlg : public LibraryDialog {
public:
    static constexpr wchar_t kTemplate[] = L"UPDATEDWGDATADLG";

    /// `options` is the working copy and must outlive the dialog; `items` may be null.
    UpdateDwgDataDlg(HINSTANCE instance, HWND parent, Options& options, Lng::AppID app, const TREE_INSERTLIST2* items,
                     const QBaseDb& database, ObjectSelection::Dlg::Callback selectionCallback,
                     Dlg::Callback itemCallback);

    void SetAnchoring() override;
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    int GetDataFromCtrls() override;

    void Save();
    void SaveAs();
    void Delete();
    void Rename();
    bool CanSave() const;
    bool IsSetSelected() const;

private:
    void AttachItems();
    void FillSets();
    void LoadSet();
    long SelectedSet() const;
    bool ReadSelectedSet(PrjDb::OptionsRec& rec);
    void InsertSet(int at, const PrjDb::OptionsRec& rec);
    void RemoveSelectedSet();
    bool AskName(PrjDb::OptionsRec& rec);
    void ShowFailure();
    std::vector<int> ChecksOf(const std::set<long>& properties) const;
    std::set<long> CheckedItems() const;
    void ChecksChanged();
    bool NeedsSelectionSet(const TREE_INSERTITEM& row) const;

    Options& options_;
    QBaseDb database_;
    const Dlg::Callback itemCallback_;
    TREE_INSERTLIST items_;    // the value of a row is the data of the caller's
    std::vector<int> checks_;  // by row, as they were last looked at
    TreeSearch search_;
    ObjectSelection::Dlg::Ctrl selection_;
};

}  // namespace UpdateDwgData
