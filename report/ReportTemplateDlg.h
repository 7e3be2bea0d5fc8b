#pragma once

#include <occommonui/ReportTemplate.h>
#include <orvatool/ListDrag.h>
#include <orvatool/ListFilterCtrl.h>

#include <map>
#include <unordered_map>
#include <vector>

#include "LibraryDialog.h"
#include "TemplateColumns.h"

/// Edits the template of a report or legend: the parts or objects that it covers, and its columns.
class ReportTemplateDlg : public LibraryDialog {
public:
    using Names = std::map<int, ustr_pre<32>>;

    static constexpr wchar_t kTemplate[] = L"REPORTTEMPLATEEDITDLG";

    /// `definition` is the working copy; it, `context` and `names` (both may be null) must outlive the dialog.
    ReportTemplateDlg(HINSTANCE instance, HWND parent, ReportDefinitionType& definition, Lng::AppID app,
                      ReportType type, const ReportTemplate::Context* context, const Names* names);

    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override;
    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override;
    bool OnAppMessage(unsigned int message, unsigned __int64 wParam, __int64 lParam) override;
    bool OnInitDialog() override;
    bool OnContextMenu(HWND control, POINT screenPoint) override;
    bool OnKeyDown(int virtualKey) override;
    using LibraryDialog::OnKeyDown;
    bool OnEnterPressed() override;
    void OnOk() override;
    void SetLanguage() override;
    void SetDataToCtrls() override;
    int GetDataFromCtrls() override;
    virtual int Run();

    void Add();
    void Edit();
    void Remove();
    void MoveUp();
    void MoveDown();
    bool CanAdd() const;
    bool CanEdit() const;
    bool CanRemove() const;
    bool CanMoveUp() const;
    bool CanMoveDown() const;

private:
    void AttachTree();
    void AttachLists();
    void FillAttributes(std::vector<ListFilterCtrl::Entry>& entries) const;
    bool OnTextChange(unsigned __int64 wParam, __int64 lParam);
    void OnAttributesNotify(const NMHDR& header);
    void OnColumnsNotify(const NMHDR& header);
    void SelectFoundAttribute();
    void ShowUnits();
    ustr NameOf(int propId) const;
    ustr TextOf(int row, int column) const;
    oce_columntype NewColumn(const ListFilterCtrl::Entry& attribute) const;
    int EditedRow() const;
    void Insert(int row);
    void Move(int before);
    void ShowColumns();
    void SelectRows(int first, int count);
    void ColumnsChanged();
    void ChecksChanged();
    void Changed();
    int StoredGroupCount() const;
    std::vector<std::int32_t> StoredGroups() const;
    bool TakeGroups();

    ReportDefinitionType& definition_;
    const ReportType type_;
    const ReportTemplate::Context nothing_;
    const ReportTemplate::Context& context_;
    const Names noNames_;
    const Names& names_;
    std::unordered_map<std::int64_t, const ustr*> offeredNames_;
    TemplateColumns columns_;
    TreeSearch objects_;
    ListFilterCtrl attributes_;
    ListDrag drag_;
    bool checksChanged_ = false;
    bool columnsChanged_ = false;
    bool changed_ = false;
    bool filling_ = false;
};
