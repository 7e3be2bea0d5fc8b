#include "ReportTemplateDlg.h"

#include <commctrl.h>
#include <orvatool/Gw.h>
#include <orvatool/InterApp.h>

#include <algorithm>
#include <cwctype>
#include <limits>
#include <string_view>

#include "ColumnWidths.h"
#include "CommonTexts.h"
#include "EditCopy.h"
#include "ReportColumnDlg.h"
#include "TemplateGroups.h"
#include "report_ids.h"

namespace {

constexpr UINT kRowsDropped = WM_APP;
constexpr int kUnitGap = 6;  // before a unit, in pixels at 96 DPI

constexpr TextRow kReportCaption{kCaption, kLibraryTexts, 20977, L"Report Template Edit"};
constexpr TextRow kLegendCaption{kCaption, kLibraryTexts, 21034, L"Legend Template Edit"};

constexpr TextRow kTexts[] = {
    {IDC_REPORTTEMPLATE_NAME_LBL,         kLibraryTexts, 20976, L"Template name"              },
    {IDC_REPORTTEMPLATE_DESCRIPTION_LBL,  kLibraryTexts, 5778,  L"Description"                },
    {IDC_REPORTTEMPLATE_OBJECTS_GROUP,    kLibraryTexts, 20034, L"Include these parts/objects"},
    {IDC_REPORTTEMPLATE_ATTRIBUTES_GROUP, kLibraryTexts, 20037, L"Include these attributes"   },
    {IDC_REPORTTEMPLATE_COLUMNS_LBL,      kLibraryTexts, 20038, L"Selected attributes/columns"},
    {IDC_REPORTTEMPLATE_TOTAL_LBL,        kLibraryTexts, 21071, L"Template total width"       },
    {IDC_REPORTTEMPLATE_TOTAL_HINT,       kLibraryTexts, 21072, L"Sum of the column widths"   },
};

constexpr TextRow kCommonTexts[] = {
    SearchText(IDC_REPORTTEMPLATE_OBJECT_SEARCH_LBL),
    SearchText(IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH_LBL),
    AddText(IDC_REPORTTEMPLATE_ADD),
    EditText(IDC_REPORTTEMPLATE_EDIT),
    RemoveText(IDC_REPORTTEMPLATE_REMOVE),
    UpText(IDC_REPORTTEMPLATE_UP),
    DownText(IDC_REPORTTEMPLATE_DOWN),
    kOkText,
    kCancelText,
};

// The same in every language. Of each pair the one that the report's widths have is shown.
struct UnitRow {
    const wchar_t* text;
    int ctrlId;
    bool characters;
};
constexpr UnitRow kUnits[] = {
    {L"mm",   IDC_REPORTTEMPLATE_TOTAL_MM,     false},
    {L"char", IDC_REPORTTEMPLATE_TOTAL_CHAR,   true },
    {L"mm",   IDC_REPORTTEMPLATE_COLUMNS_MM,   false},
    {L"char", IDC_REPORTTEMPLATE_COLUMNS_CHAR, true },
};

constexpr ColumnRow kColumns[] = {
    PropertyColumn(110),
    {kLibraryTexts, 25922, L"Width",  50, LVCFMT_RIGHT},
    {kLibraryTexts, 25923, L"Header", 90, LVCFMT_LEFT },
};
enum Column : int { kPropertyColumn, kWidthColumn, kHeaderColumn };

// The three lists share the width.
constexpr double kThird = 1.0 / 3;
constexpr double kTwoThirds = 2.0 / 3;
constexpr AnchorRow kAnchors[] = {
    {IDC_REPORTTEMPLATE_DESCRIPTION,          0,          0, 1,          0},
    {IDC_REPORTTEMPLATE_OBJECTS_GROUP,        0,          0, kThird,     1},
    {IDC_REPORTTEMPLATE_OBJECT_SEARCH,        0,          0, kThird,     0},
    {IDC_REPORTTEMPLATE_OBJECTS,              0,          0, kThird,     1},
    {IDC_REPORTTEMPLATE_ATTRIBUTES_GROUP,     kThird,     0, 1,          1},
    {IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH_LBL, kThird,     0, kThird,     0},
    {IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH,     kThird,     0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_ATTRIBUTES,           kThird,     0, kTwoThirds, 1},
    {IDC_REPORTTEMPLATE_ADD,                  kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_EDIT,                 kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_REMOVE,               kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_UP,                   kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_DOWN,                 kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_COLUMNS_LBL,          kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_COLUMNS_MM,           kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_COLUMNS_CHAR,         kTwoThirds, 0, kTwoThirds, 0},
    {IDC_REPORTTEMPLATE_COLUMNS,              kTwoThirds, 0, 1,          1},
    {IDC_REPORTTEMPLATE_TOTAL_LBL,            kTwoThirds, 1, kTwoThirds, 1},
    {IDC_REPORTTEMPLATE_TOTAL,                kTwoThirds, 1, kTwoThirds, 1},
    {IDC_REPORTTEMPLATE_TOTAL_MM,             kTwoThirds, 1, kTwoThirds, 1},
    {IDC_REPORTTEMPLATE_TOTAL_CHAR,           kTwoThirds, 1, kTwoThirds, 1},
    {IDC_REPORTTEMPLATE_TOTAL_HINT,           kTwoThirds, 1, kTwoThirds, 1},
    {IDOK,                                    1,          1, 1,          1},
    {IDCANCEL,                                1,          1, 1,          1},
};

constexpr FieldRow<ReportDefinitionType> kFields[] = {
    {IDC_REPORTTEMPLATE_NAME,        kField<&ReportDefinitionType::name>,        kAny},
    {IDC_REPORTTEMPLATE_DESCRIPTION, kField<&ReportDefinitionType::description>, kAny},
};

using D = ReportTemplateDlg;
constexpr CommandRow<D> kCommands[] = {
    {IDC_REPORTTEMPLATE_ADD,    &D::Add,      &D::CanAdd     },
    {IDC_REPORTTEMPLATE_EDIT,   &D::Edit,     &D::CanEdit    },
    {IDC_REPORTTEMPLATE_REMOVE, &D::Remove,   &D::CanRemove  },
    {IDC_REPORTTEMPLATE_UP,     &D::MoveUp,   &D::CanMoveUp  },
    {IDC_REPORTTEMPLATE_DOWN,   &D::MoveDown, &D::CanMoveDown},
};

constexpr MenuRow kAttributesMenu[] = {{IDC_REPORTTEMPLATE_ADD}};
constexpr MenuRow kColumnsMenu[] = {
    {IDC_REPORTTEMPLATE_EDIT},
    {IDC_REPORTTEMPLATE_REMOVE},
    {IDC_REPORTTEMPLATE_UP},
    {IDC_REPORTTEMPLATE_DOWN},
};

static_assert(Distinct(kTexts) && Distinct(kCommonTexts) && Distinct(kUnits) && Distinct(kAnchors) &&
              Distinct(kFields) && Distinct(kCommands));

constexpr LibraryDialog::Tables kTables{L"Window/ReportTemplateDialog", kTexts, kCommonTexts, kAnchors, kColumns};

bool IsBlank(std::wstring_view text) {
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return std::iswspace(c) != 0; });
}

bool IsOffered(std::int64_t propId) {
    using Id = std::numeric_limits<decltype(oce_columntype::propId)>;
    return propId >= Id::min() && propId <= Id::max() &&
           InterApp::HPV::IsAvailableReportAttribute(static_cast<int>(propId));
}

bool SelectionChanged(const NMHDR& header) {
    return header.code == LVN_ITEMCHANGED || header.code == LVN_ODSTATECHANGED;
}

bool RowDoubleClicked(const NMHDR& header) {
    return header.code == NM_DBLCLK && reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0;
}

RECT RectIn(HWND dlg, HWND control) {
    RECT rect{};
    GetWindowRect(control, &rect);
    MapWindowPoints(nullptr, dlg, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

// Two labels that read as one line, however long the first is in a language.
void PlaceBehind(HWND label, int textWidth, HWND unit) {
    const HWND dlg = GetParent(label);
    const RECT rect = RectIn(dlg, label);
    const LONG width = std::min<LONG>(rect.right - rect.left, textWidth);
    constexpr UINT kFlags = SWP_NOZORDER | SWP_NOACTIVATE;
    SetWindowPos(label, nullptr, 0, 0, width, rect.bottom - rect.top, kFlags | SWP_NOMOVE);
    SetWindowPos(unit, nullptr, rect.left + width, rect.top, 0, 0, kFlags | SWP_NOSIZE);
}

}  // namespace

ReportTemplateDlg::ReportTemplateDlg(HINSTANCE instance, HWND parent, ReportDefinitionType& definition, Lng::AppID app,
                                     ReportType type, const ReportTemplate::Context* context, const Names* names)
    : LibraryDialog(instance, parent, app, kTables),
      definition_(definition),
      type_(type),
      context_(context ? *context : nothing_),
      names_(names ? *names : noNames_),
      columns_(definition) {
    for (const auto& [name, propId] : context_.properties)
        offeredNames_.emplace(propId, &name);
}

bool ReportTemplateDlg::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    if (filling_) return LibraryDialog::OnCommand(wParam, lParam);
    if (HIWORD(wParam) == EN_CHANGE && OnTextChange(wParam, lParam)) return true;
    return RunCommand(*this, kCommands, wParam) || LibraryDialog::OnCommand(wParam, lParam);
}

bool ReportTemplateDlg::OnTextChange(unsigned __int64 wParam, __int64 lParam) {
    switch (LOWORD(wParam)) {
        case IDC_REPORTTEMPLATE_NAME:
        case IDC_REPORTTEMPLATE_DESCRIPTION:
            Changed();
            return true;
        case IDC_REPORTTEMPLATE_OBJECT_SEARCH:
            objects_.Filter(gwdlgtomemo(hWnd(), IDC_REPORTTEMPLATE_OBJECT_SEARCH));
            return true;
        default:
            if (!attributes_.OnCommand(wParam, lParam)) return false;
            SelectFoundAttribute();
            return true;
    }
}

bool ReportTemplateDlg::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    const NMHDR& header = *reinterpret_cast<const NMHDR*>(lParam);
    LRESULT result = 0;
    if (list_.onNotify(&header, result) || attributes_.OnNotify(&header, result)) {
        SetResult(result);
        return true;
    }
    if (filling_) return LibraryDialog::OnNotify(wParam, lParam);
    if (header.idFrom == IDC_REPORTTEMPLATE_OBJECTS && objects_.CheckFromNotify(&header)) {
        ChecksChanged();
        SetResult(TRUE);
        return true;
    }
    if (header.idFrom == IDC_REPORTTEMPLATE_ATTRIBUTES) OnAttributesNotify(header);
    if (header.idFrom == IDC_REPORTTEMPLATE_COLUMNS) OnColumnsNotify(header);
    return LibraryDialog::OnNotify(wParam, lParam);
}

void ReportTemplateDlg::OnAttributesNotify(const NMHDR& header) {
    if (RowDoubleClicked(header) && CanAdd()) Add();
    if (header.code == LVN_BEGINDRAG && CanAdd()) drag_.Begin(header.hwndFrom);
    if (SelectionChanged(header)) EnableCommands(*this, kCommands);
}

void ReportTemplateDlg::OnColumnsNotify(const NMHDR& header) {
    if (RowDoubleClicked(header) && CanEdit()) Edit();
    if (header.code == LVN_BEGINDRAG) drag_.Begin(header.hwndFrom);
    if (SelectionChanged(header)) EnableCommands(*this, kCommands);
}

bool ReportTemplateDlg::OnAppMessage(unsigned int message, unsigned __int64 wParam, __int64 lParam) {
    if (message != kRowsDropped) return LibraryDialog::OnAppMessage(message, wParam, lParam);
    const int row = static_cast<int>(lParam);
    if (wParam == IDC_REPORTTEMPLATE_ATTRIBUTES) {
        Insert(row);
    } else {
        Move(row);
    }
    return true;
}

bool ReportTemplateDlg::OnInitDialog() {
    LibraryDialog::OnInitDialog();
    filling_ = true;
    SetKeys({VK_DELETE, VK_F2, VK_UP, VK_DOWN});
    AttachTree();
    AttachLists();
    SetDataToCtrls();
    filling_ = false;
    EnableCommands(*this, kCommands);
    return true;
}

void ReportTemplateDlg::AttachTree() {
    const HWND tree = RequireControl(*this, IDC_REPORTTEMPLATE_OBJECTS);
    const ustr cue = Lng::text(kLibraryTexts, 25919, L"Search parts/objects");
    gwTVaddChecks(tree);
    objects_.Attach(tree, &context_.objects, RequireControl(*this, IDC_REPORTTEMPLATE_OBJECT_SEARCH), cue.c_str(),
                    TemplateGroups::Checks(context_.objects, StoredGroups()));
}

void ReportTemplateDlg::AttachLists() {
    RequireControl(*this, IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH);
    RequireControl(*this, IDC_REPORTTEMPLATE_ATTRIBUTES);
    const ustr cue = Lng::text(kLibraryTexts, 25921, L"Search attributes");
    const auto fill = [](void* self, std::vector<ListFilterCtrl::Entry>& entries) {
        static_cast<const ReportTemplateDlg*>(self)->FillAttributes(entries);
    };
    attributes_.Attach(hWnd(), IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH, IDC_REPORTTEMPLATE_ATTRIBUTES, fill, nullptr, this,
                       cue.c_str());
    attributes_.Fill();
    AttachList(IDC_REPORTTEMPLATE_COLUMNS, kPropertyColumn);
    drag_.Attach(RequireControl(*this, IDC_REPORTTEMPLATE_COLUMNS), kRowsDropped);
}

void ReportTemplateDlg::FillAttributes(std::vector<ListFilterCtrl::Entry>& entries) const {
    for (const auto& [name, propId] : context_.properties) {
        if (IsOffered(propId)) entries.push_back({NameOf(static_cast<int>(propId)), propId});
    }
}

bool ReportTemplateDlg::OnContextMenu(HWND control, POINT screenPoint) {
    if (control == list_.hWnd()) {
        ShowCommandMenu(*this, kColumnsMenu, control, screenPoint);
        return true;
    }
    if (control == attributes_.ListWindow()) {
        ShowCommandMenu(*this, kAttributesMenu, control, screenPoint);
        return true;
    }
    return LibraryDialog::OnContextMenu(control, screenPoint);
}

bool ReportTemplateDlg::OnKeyDown(int virtualKey) {
    constexpr ListButtons kListButtons{IDC_REPORTTEMPLATE_REMOVE, IDC_REPORTTEMPLATE_EDIT, IDC_REPORTTEMPLATE_UP,
                                       IDC_REPORTTEMPLATE_DOWN};
    return RunCommand(*this, kCommands, PressedButton(kListButtons, virtualKey)) ||
           LibraryDialog::OnKeyDown(virtualKey);
}

// A search is not confirmed by OK: Enter takes what it has found.
bool ReportTemplateDlg::OnEnterPressed() {
    const HWND focus = GetFocus();
    const int ctrlId = GetDlgCtrlID(focus);
    if (ctrlId == IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH && GetWindowTextLengthW(focus) > 0) {
        if (CanAdd()) Add();
        SendMessageW(focus, EM_SETSEL, 0, -1);
    } else if (ctrlId == IDC_REPORTTEMPLATE_ATTRIBUTES && attributes_.Selected()) {
        if (CanAdd()) Add();
    } else if (ctrlId == IDC_REPORTTEMPLATE_COLUMNS && CanEdit()) {
        Edit();
    } else {
        return LibraryDialog::OnEnterPressed();
    }
    return true;
}

void ReportTemplateDlg::OnOk() {
    if (changed_) LibraryDialog::OnOk();
}

void ReportTemplateDlg::SetLanguage() {
    LibraryDialog::SetLanguage();
    ApplyTexts(*this, {type_ == Legend ? &kLegendCaption : &kReportCaption, 1}, app_);
    ShowUnits();
    // The group boxes name what they are around.
    SetDlgItemTextW(hWnd(), IDC_REPORTTEMPLATE_OBJECTS, gwdlgtomemo(hWnd(), IDC_REPORTTEMPLATE_OBJECTS_GROUP).c_str());
    SetDlgItemTextW(hWnd(), IDC_REPORTTEMPLATE_ATTRIBUTES,
                    gwdlgtomemo(hWnd(), IDC_REPORTTEMPLATE_ATTRIBUTES_GROUP).c_str());
}

void ReportTemplateDlg::ShowUnits() {
    for (const UnitRow& unit : kUnits) {
        SetWindowTextW(RequireControl(*this, unit.ctrlId), unit.text);
        ShowCtrl(unit.ctrlId, unit.characters == HasWidthsInCharacters(type_));
    }
    const HWND label = RequireControl(*this, IDC_REPORTTEMPLATE_COLUMNS_LBL);
    const ustr text = gwdlgtomemo(hWnd(), IDC_REPORTTEMPLATE_COLUMNS_LBL);
    const int width = ListView_GetStringWidth(list_.hWnd(), text.c_str()) + Scale(kUnitGap);
    PlaceBehind(label, width, RequireControl(*this, IDC_REPORTTEMPLATE_COLUMNS_MM));
    PlaceBehind(label, width, RequireControl(*this, IDC_REPORTTEMPLATE_COLUMNS_CHAR));
}

void ReportTemplateDlg::SetDataToCtrls() {
    Show(*this, kFields, definition_);
    ShowColumns();
}

// What the user did not touch stays as it is, byte by byte.
int ReportTemplateDlg::GetDataFromCtrls() {
    if (IsBlank(gwdlgtomemo(hWnd(), IDC_REPORTTEMPLATE_NAME))) return IDC_REPORTTEMPLATE_NAME;
    if (const int refused = Take(*this, kFields, definition_)) return refused;
    if (columns_.Count() == 0) return IDC_REPORTTEMPLATE_COLUMNS;
    if (checksChanged_ && !TakeGroups()) return IDC_REPORTTEMPLATE_OBJECTS;
    if (columnsChanged_) columns_.Store(definition_);
    return 0;
}

int ReportTemplateDlg::Run() {
    return StartModal(kTemplate);
}

void ReportTemplateDlg::Add() {
    const std::vector<int> rows = list_.selection();
    Insert(rows.empty() ? columns_.Count() : rows.back() + 1);
}

void ReportTemplateDlg::Edit() {
    const int row = EditedRow();
    oce_columntype column = columns_[row];
    const ustr name = NameOf(column.propId);
    if (!EditCopy<ReportColumnDlg>(column, hWnd(), name.c_str(), type_) || !columns_.Replace(row, column)) return;
    ShowColumns();
    ColumnsChanged();
}

void ReportTemplateDlg::Remove() {
    const std::vector<int> rows = list_.selection();
    columns_.Remove(rows);
    ShowColumns();
    if (columns_.Count() > 0) SelectRows(std::min(rows.front(), columns_.Count() - 1), 1);
    ColumnsChanged();
}

void ReportTemplateDlg::MoveUp() {
    Move(std::max(list_.selection().front() - 1, 0));
}

void ReportTemplateDlg::MoveDown() {
    Move(std::min(list_.selection().back() + 2, columns_.Count()));
}

bool ReportTemplateDlg::CanAdd() const {
    return columns_.Room() > 0 && attributes_.Selected() != nullptr;
}

bool ReportTemplateDlg::CanEdit() const {
    return EditedRow() >= 0;
}

bool ReportTemplateDlg::CanRemove() const {
    return list_.selected() >= 0;
}

bool ReportTemplateDlg::CanMoveUp() const {
    const std::vector<int> rows = list_.selection();
    return !rows.empty() && rows.back() >= static_cast<int>(rows.size());
}

bool ReportTemplateDlg::CanMoveDown() const {
    const std::vector<int> rows = list_.selection();
    return !rows.empty() && rows.front() < columns_.Count() - static_cast<int>(rows.size());
}

void ReportTemplateDlg::SelectFoundAttribute() {
    const bool searching = !gwdlgtomemo(hWnd(), IDC_REPORTTEMPLATE_ATTRIBUTE_SEARCH).empty();
    const ListFilterCtrl::Entry* const first = attributes_.Shown(0);
    if (searching && first && !attributes_.Selected()) attributes_.Select(first->value);
    EnableCommands(*this, kCommands);
}

ustr ReportTemplateDlg::NameOf(int propId) const {
    const auto given = names_.find(propId);
    if (given != names_.end() && !given->second.empty()) return given->second;
    const auto offered = offeredNames_.find(propId);
    return offered == offeredNames_.end() ? UnknownPropertyText(propId) : *offered->second;
}

ustr ReportTemplateDlg::TextOf(int row, int column) const {
    const oce_columntype& shown = columns_[row];
    if (column == kPropertyColumn) return NameOf(shown.propId);
    if (column == kWidthColumn) return WidthText(UsableWidth(shown.len));
    ustr header = FixedText<&oce_columntype::hdr1>(shown);
    const ustr second = FixedText<&oce_columntype::hdr2>(shown);
    if (!header.empty() && !second.empty()) header.append(L' ');
    return header.append(second);
}

oce_columntype ReportTemplateDlg::NewColumn(const ListFilterCtrl::Entry& attribute) const {
    oce_columntype column;
    column.propId = static_cast<std::int16_t>(attribute.value);
    column.len = static_cast<float>(NewColumnWidth(type_, column.propId));
    SetFixedText<&oce_columntype::hdr1>(column, attribute.text);
    return column;
}

// The row with the focus, when it is one of those selected.
int ReportTemplateDlg::EditedRow() const {
    const int focused = ListView_GetNextItem(list_.hWnd(), -1, LVNI_FOCUSED | LVNI_SELECTED);
    return focused >= 0 ? focused : list_.selected();
}

void ReportTemplateDlg::Insert(int row) {
    std::vector<oce_columntype> added;
    for (const ListFilterCtrl::Entry* const attribute : attributes_.Selection())
        added.push_back(NewColumn(*attribute));
    const int count = columns_.Insert(row, added);
    ShowColumns();
    SelectRows(row, count);
    ColumnsChanged();
}

void ReportTemplateDlg::Move(int before) {
    const std::vector<int> rows = list_.selection();
    const int first = columns_.Move(rows, before);
    if (first < 0) return;
    ShowColumns();
    SelectRows(first, static_cast<int>(rows.size()));
    ColumnsChanged();
}

void ReportTemplateDlg::ShowColumns() {
    list_.setVirtual(columns_.Count(), [this](int row, int column) { return TextOf(row, column); });
    SetDlgItemTextW(hWnd(), IDC_REPORTTEMPLATE_TOTAL, WidthText(columns_.TotalWidth()).c_str());
}

void ReportTemplateDlg::SelectRows(int first, int count) {
    filling_ = true;
    const gwRedrawOff quiet(list_.hWnd());
    for (int row = first + count; row-- > first;)
        list_.select(row, row == first + count - 1);
    filling_ = false;
}

void ReportTemplateDlg::ColumnsChanged() {
    columnsChanged_ = true;
    EnableCommands(*this, kCommands);
    Changed();
}

void ReportTemplateDlg::ChecksChanged() {
    checksChanged_ = true;
    Changed();
}

void ReportTemplateDlg::Changed() {
    changed_ = true;
    EnableCtrl(IDOK, true);
}

int ReportTemplateDlg::StoredGroupCount() const {
    return std::clamp<int>(definition_.groupCount, 0, ReportDefinitionType::kMaxGroups);
}

std::vector<std::int32_t> ReportTemplateDlg::StoredGroups() const {
    std::vector<std::int32_t> groups;
    groups.reserve(static_cast<std::size_t>(StoredGroupCount()));
    for (int i = 0; i < StoredGroupCount(); ++i)
        groups.push_back(definition_.groups[i]);
    return groups;
}

bool ReportTemplateDlg::TakeGroups() {
    std::vector<std::int32_t> groups = TemplateGroups::Checked(context_.objects, objects_.GetChecks(), StoredGroups());
    if (groups.size() > ReportDefinitionType::kMaxGroups) {
        ustr message;
        message.format(Lng::text(kLibraryTexts, 25920,
                                 L"A template can include at most %d parts or groups.\n"
                                 L"Check whole groups, or fewer parts.")
                           .c_str(),
                       ReportDefinitionType::kMaxGroups);
        gwerrmsg(hWnd(), app_, message.c_str());
        return false;
    }
    const std::size_t used = groups.size();
    groups.resize(std::max(used, static_cast<std::size_t>(StoredGroupCount())));  // what has become free is zero
    for (std::size_t i = 0; i < groups.size(); ++i)
        definition_.groups[i] = groups[i];
    definition_.groupCount = static_cast<std::int16_t>(used);
    return true;
}

bool ReportTemplate::Edit(HWND parent, Lng::AppID app, ReportType type, void* definition, int size, void* context,
                          std::map<int, ustr_pre<32>>* names) {
    if (!definition || size != sizeof(ReportDefinitionType)) return false;
    return EditBytes<ReportTemplateDlg, ReportDefinitionType>(definition, parent, app, type,
                                                              static_cast<const Context*>(context), names);
}
