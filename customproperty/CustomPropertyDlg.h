#pragma once

#include <occommonui/CustomProperty.h>
#include <orvatool/TreeInsertList.h>

#include <unordered_map>
#include <vector>

#include "LibraryDialog.h"

/// Edits a custom property: its name, and its format as a list of properties and constant texts.
class CustomPropertyDlg : public LibraryDialog {
public:
    static constexpr wchar_t kTemplate[] = L"CUSTOMPROPERTYDLG";

    /// `data` is the working copy; it and `properties` (may be null) must outlive the dialog.
    CustomPropertyDlg(HINSTANCE instance, HWND parent, CustomProperty::Data& data, Lng::AppID app,
                      const TREE_INSERTLIST* properties);

    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    bool OnContextMenu(HWND control, POINT screenPoint) override;
    bool OnKeyDown(int virtualKey) override;
    using LibraryDialog::OnKeyDown;
    bool OnEnterPressed() override;
    void SetDataToCtrls() override;
    int GetDataFromCtrls() override;

    void Add();
    void AddConstant();
    void Edit();
    void Remove();
    void MoveUp();
    void MoveDown();
    bool CanAdd() const;
    bool CanAddConstant() const;
    bool CanEdit() const;
    bool CanRemove() const;
    bool CanMoveUp() const;
    bool CanMoveDown() const;

private:
    using Item = CustomProperty::Format::Item;

    const TREE_INSERTITEM* SelectedProperty() const;
    const TREE_INSERTITEM* Property(long id) const;
    ustr TextOf(const Item& item) const;
    bool AskConstant(ustr& text);
    void Insert(Item item);
    void Swap(int row, int other);
    void ShowRow(int row);
    void ShowPreview();
    void ItemsChanged();

    CustomProperty::Data& data_;
    const TREE_INSERTLIST noProperties_;
    const TREE_INSERTLIST& properties_;
    std::unordered_map<std::int64_t, const TREE_INSERTITEM*> propertyById_;
    std::vector<Item> items_;
    TreeSearch search_;
    bool filling_ = false;
};
