#pragma once

#include <occommonui/ObjectSelection.h>
#include <orvatool/TreeInsertList.h>

#include <cstdint>
#include <vector>

#include "HostCallback.h"
#include "LibraryDialog.h"
#include "PropertyChoices.h"
#include "RuleTexts.h"

/// Edits one filter rule: the property that it is about, and the criteria that the property's value must meet.
class ObjectSelectionPropertyDialog : public LibraryDialog {
public:
    static constexpr wchar_t kTemplate[] = L"OBJSELPROPDLG";

    /// `rule` is the working copy; it must outlive the dialog.
    ObjectSelectionPropertyDialog(HINSTANCE instance, HWND parent, ObjectSelection::Property& rule, Lng::AppID app,
                                  ObjectSelection::Dlg::Callback callback);

    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    bool OnContextMenu(HWND control, POINT screenPoint) override;
    bool OnKeyDown(int virtualKey) override;
    using LibraryDialog::OnKeyDown;
    bool OnEnterPressed() override;
    void SetDataToCtrls() override;
    int GetDataFromCtrls() override;

    void Insert();
    void Remove();
    void Choose();
    bool CanInsert() const;
    bool CanRemove() const;
    bool CanChoose() const;

private:
    using PropertyEntry = ObjectSelection::Dlg::PropertyEntry;

    void LoadProperties();
    void AddGroups();
    std::int64_t GivenProperty() const;
    void AttachControls();
    bool OnChange(int ctrlId, int code);
    void Search();
    void PropertySelected();
    void SetUp();
    void LoadChoices();
    bool AddChoice(const ustr& value);
    bool HasFewChoices() const;
    int ValueCtrl() const;
    ustr PropertyName() const;
    ustr ShownValue(const Criterion& criterion) const;
    ustr CellText(int row, int column) const;

    void ShowOffers();
    void FillChoices();
    void ShowRows(int selected);
    void SelectRow(int row);
    void ShowCriterion();
    void EnableCriterion();
    void ShowPreview();
    int EditedRow() const;
    Criterion* Edited() const;
    void GoToValue();
    void TakeOperation();
    void TakeTypedValue();
    void TakeChosenValue();
    void CriterionChanged();
    void OptionsChanged();
    bool PickValue(ustr& value);
    int TakeOptions();
    bool IsComplete(const Criterion& criterion) const;

    ObjectSelection::Property& rule_;
    const ObjectSelection::Property given_;
    HostCallback host_;
    HostTexts texts_;
    std::vector<PropertyEntry> entries_;
    TREE_INSERTLIST properties_;  // the entries below their groups; a row's value is the index of its entry
    std::int64_t selected_;       // the value of the selected row
    ObjectSelection::Dlg::EditorSetup setup_;
    PropertyChoices choices_;  // of a property whose values are chosen
    TreeSearch search_;
    bool filling_ = false;
};
