#include "UpdateDwgDataDlg.h"

#include <commctrl.h>
#include <orvatool/AskValueDlg.h>
#include <orvatool/Gw.h>
#include <orvatool/ValueList.h>
#include <windowsx.h>

#include <limits>
#include <utility>

#include "CommonTexts.h"
#include "EditCopy.h"
#include "project_ids.h"

namespace UpdateDwgData {
namespace {

constexpr std::size_t kMaxNameChars = 100;
constexpr std::int64_t kNoSet = std::numeric_limits<std::int64_t>::min();

constexpr TextRow kTexts[] = {
    {kCaption,                      kLibraryTexts, 20443, L"Update Drawing Data"},
    {IDC_UPDATEDWGDATA_SET_LBL,     kLibraryTexts, 37603, L"Selection set"      },
    {IDC_UPDATEDWGDATA_SAVE_AS,     kLibraryTexts, 20031, L"Save as..."         },
    {IDC_UPDATEDWGDATA_RENAME,      kLibraryTexts, 20033, L"Rename..."          },
    {IDC_UPDATEDWGDATA_RANGE_GROUP, kLibraryTexts, 20446, L"Range"              },
    {IDC_UPDATEDWGDATA_ITEMS,       kLibraryTexts, 25973, L"Data items"         },
};

constexpr TextRow kCommonTexts[] = {
    SearchText(IDC_UPDATEDWGDATA_SEARCH_LBL),
    SaveText(IDC_UPDATEDWGDATA_SAVE),
    DeleteText(IDC_UPDATEDWGDATA_DELETE),
    kOkText,
    kCancelText,
};

constexpr AnchorRow kAnchors[] = {
    {IDC_UPDATEDWGDATA_SET,         0, 0, 1, 0},
    {IDC_UPDATEDWGDATA_SAVE,        1, 0, 1, 0},
    {IDC_UPDATEDWGDATA_SAVE_AS,     1, 0, 1, 0},
    {IDC_UPDATEDWGDATA_DELETE,      1, 0, 1, 0},
    {IDC_UPDATEDWGDATA_RENAME,      1, 0, 1, 0},
    {IDC_UPDATEDWGDATA_ITEMS,       0, 0, 0, 1},
    {IDC_UPDATEDWGDATA_RANGE_GROUP, 0, 0, 1, 0},
    {IDOK,                          1, 1, 1, 1},
    {IDCANCEL,                      1, 1, 1, 1},
};

using D = UpdateDwgDataDlg;
constexpr CommandRow<D> kCommands[] = {
    {IDC_UPDATEDWGDATA_SAVE,    &D::Save,   &D::CanSave      },
    {IDC_UPDATEDWGDATA_SAVE_AS, &D::SaveAs, &D::CanSave      },
    {IDC_UPDATEDWGDATA_DELETE,  &D::Delete, &D::IsSetSelected},
    {IDC_UPDATEDWGDATA_RENAME,  &D::Rename, &D::IsSetSelected},
};

static_assert(Distinct(kTexts) && Distinct(kCommonTexts) && Distinct(kAnchors) && Distinct(kCommands));

constexpr LibraryDialog::Tables kTables{L"Window/UpdateDwgDataDlg", kTexts, kCommonTexts, kAnchors};

bool IsDataItem(const TREE_INSERTITEM& row) {
    using Id = std::numeric_limits<long>;
    return row.value != 0 && row.value >= Id::min() && row.value <= Id::max();
}

TREE_INSERTLIST ByData(const TREE_INSERTLIST2* items) {
    TREE_INSERTLIST rows;
    if (!items) return rows;
    rows.reserve(items->size());
    for (const TREE_INSERTITEM2& item : *items)
        rows.push_back(item).value = item.data;
    return rows;
}

}  // namespace

UpdateDwgDataDlg::UpdateDwgDataDlg(HINSTANCE instance, HWND parent, Options& options, Lng::AppID app,
                                   const TREE_INSERTLIST2* items, const QBaseDb& database,
                                   ObjectSelection::Dlg::Callback selectionCallback, Dlg::Callback itemCallback)
    : LibraryDialog(instance, parent, app, kTables),
      options_(options),
      database_(database),
      itemCallback_(std::move(itemCallback)),
      items_(ByData(items)) {
    selection_.Attach(this, app, static_cast<int>(options.flagMask), std::move(selectionCallback),
                      IDC_UPDATEDWGDATA_MANUAL, IDC_UPDATEDWGDATA_CURRENT, IDC_UPDATEDWGDATA_SELECTED,
                      IDC_UPDATEDWGDATA_SELECTION_GROUP, IDC_UPDATEDWGDATA_CATEGORIES, IDC_UPDATEDWGDATA_OBJECTS,
                      IDC_UPDATEDWGDATA_FILTER, IDC_UPDATEDWGDATA_NO_DATA);
    selection_.SetData(options.selection, nullptr);
}

void UpdateDwgDataDlg::SetAnchoring() {
    LibraryDialog::SetAnchoring();
    selection_.SetAnchoring(true, true, true, true);
}

bool UpdateDwgDataDlg::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    if (selection_.OnCommand(wParam, lParam)) return true;
    if (LOWORD(wParam) == IDC_UPDATEDWGDATA_SEARCH && HIWORD(wParam) == EN_CHANGE) {
        search_.Filter(gwdlgtomemo(hWnd(), IDC_UPDATEDWGDATA_SEARCH));
        return true;
    }
    if (LOWORD(wParam) == IDC_UPDATEDWGDATA_SET && HIWORD(wParam) == CBN_SELCHANGE) {
        LoadSet();
        EnableCommands(*this, kCommands);
        return true;
    }
    return RunCommand(*this, kCommands, wParam) || LibraryDialog::OnCommand(wParam, lParam);
}

bool UpdateDwgDataDlg::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    const NMHDR& header = *reinterpret_cast<const NMHDR*>(lParam);
    if (header.idFrom == IDC_UPDATEDWGDATA_ITEMS && search_.CheckFromNotify(&header)) {
        ChecksChanged();
        SetResult(TRUE);
        return true;
    }
    return selection_.OnNotify(wParam, lParam) || LibraryDialog::OnNotify(wParam, lParam);
}

bool UpdateDwgDataDlg::OnInitDialog() {
    LibraryDialog::OnInitDialog();
    AttachItems();
    FillSets();
    EnableCommands(*this, kCommands);
    return selection_.OnInitDialog();
}

int UpdateDwgDataDlg::GetDataFromCtrls() {
    options_.properties = CheckedItems();
    if (options_.properties.empty()) return IDC_UPDATEDWGDATA_ITEMS;
    if (const int refused = selection_.Ctrls2Data()) return refused;
    selection_.GetData(options_.selection);
    options_.flagMask = static_cast<std::uint32_t>(selection_.GetFlagMask());
    return 0;
}

void UpdateDwgDataDlg::Save() {
    if (!IsSetSelected()) return SaveAs();
    if (!TakeData()) return;
    PrjDb::OptionsRec rec;
    rec.id = SelectedSet();
    rec.name = gwdlgtomemo(hWnd(), IDC_UPDATEDWGDATA_SET);
    rec.options = options_;
    if (!PrjDb::Write(database_, rec)) ShowFailure();
}

void UpdateDwgDataDlg::SaveAs() {
    if (!TakeData()) return;
    PrjDb::OptionsRec rec;
    if (!AskName(rec)) return;
    rec.options = options_;
    // A set for which there is no room is listed without an id; the commands pass it over.
    PrjDb::Write(database_, rec);
    InsertSet(-1, rec);
}

// The user is asked about the set that is stored now: its id may have been given to another one.
void UpdateDwgDataDlg::Delete() {
    PrjDb::OptionsRec rec;
    rec.id = SelectedSet();
    const bool read = PrjDb::Read(database_, rec);
    const ustr name = read ? rec.name : gwdlgtomemo(hWnd(), IDC_UPDATEDWGDATA_SET);
    ustr question;
    question.format(Lng::text(kSharedTexts, 60160, L"Do you really want to delete selection set \"%s\"").c_str(),
                    name.c_str());
    if (!gwyesnomsg(hWnd(), app_, question.c_str())) return;
    if (!PrjDb::Delete(database_, rec.id) && !PrjDb::IsGone(database_, rec.id)) return ShowFailure();
    RemoveSelectedSet();
}

void UpdateDwgDataDlg::Rename() {
    PrjDb::OptionsRec rec;
    if (!ReadSelectedSet(rec) || !AskName(rec)) return;
    if (!PrjDb::Write(database_, rec)) return ShowFailure();
    const HWND sets = RequireControl(*this, IDC_UPDATEDWGDATA_SET);
    const int at = ComboBox_GetCurSel(sets);
    ComboBox_DeleteString(sets, at);
    InsertSet(at, rec);
}

bool UpdateDwgDataDlg::CanSave() const {
    return true;
}

bool UpdateDwgDataDlg::IsSetSelected() const {
    return SelectedSet() > 0;
}

void UpdateDwgDataDlg::AttachItems() {
    const HWND tree = RequireControl(*this, IDC_UPDATEDWGDATA_ITEMS);
    const ustr cue = Lng::text(kLibraryTexts, 25974, L"Search data items");
    gwTVaddChecks(tree);
    search_.Attach(tree, &items_, RequireControl(*this, IDC_UPDATEDWGDATA_SEARCH), cue.c_str(),
                   ChecksOf(options_.properties));
    checks_ = search_.GetChecks();
}

void UpdateDwgDataDlg::FillSets() {
    RequireControl(*this, IDC_UPDATEDWGDATA_SET);
    std::vector<PrjDb::OptionsRec> recs;
    PrjDb::Read(database_, recs);
    ValueList sets;
    sets.reserve(recs.size());
    for (const PrjDb::OptionsRec& rec : recs)
        sets.emplace_back(rec.name, rec.id);
    gwfillcombo(hWnd(), IDC_UPDATEDWGDATA_SET, sets, kNoSet);
}

void UpdateDwgDataDlg::LoadSet() {
    PrjDb::OptionsRec rec;
    if (!IsSetSelected() || !ReadSelectedSet(rec)) return;
    search_.SetChecks(ChecksOf(rec.options.properties));
    checks_ = search_.GetChecks();
    search_.ExpandPartlyChecked();
    selection_.SetFlagMask(static_cast<int>(rec.options.flagMask));
    selection_.SetData(rec.options.selection, nullptr);
    selection_.Data2Ctrls();
}

// The id of the selected set; 0 for none, and for one that could not be stored.
long UpdateDwgDataDlg::SelectedSet() const {
    std::int64_t id = 0;
    return gwcombovalue(hWnd(), IDC_UPDATEDWGDATA_SET, id) ? static_cast<long>(id) : 0;
}

// False when another user has taken the set away meanwhile; then it is no longer listed.
bool UpdateDwgDataDlg::ReadSelectedSet(PrjDb::OptionsRec& rec) {
    rec.id = SelectedSet();
    if (PrjDb::Read(database_, rec)) return true;
    if (!PrjDb::IsGone(database_, rec.id)) {
        ShowFailure();
        return false;
    }
    ustr message;
    message.format(Lng::text(kLibraryTexts, 25975, L"Selection set \"%s\" is no longer in the project.").c_str(),
                   gwdlgtomemo(hWnd(), IDC_UPDATEDWGDATA_SET).c_str());
    RemoveSelectedSet();
    gwmsg(hWnd(), app_, message.c_str());
    return false;
}

// Lists a set, at the end for -1, and selects it.
void UpdateDwgDataDlg::InsertSet(int at, const PrjDb::OptionsRec& rec) {
    const HWND sets = RequireControl(*this, IDC_UPDATEDWGDATA_SET);
    const int inserted = ComboBox_InsertString(sets, at, rec.name.c_str());
    ComboBox_SetItemData(sets, inserted, rec.id);
    ComboBox_SetCurSel(sets, inserted);
    EnableCommands(*this, kCommands);
}

void UpdateDwgDataDlg::RemoveSelectedSet() {
    const HWND sets = RequireControl(*this, IDC_UPDATEDWGDATA_SET);
    ComboBox_DeleteString(sets, ComboBox_GetCurSel(sets));
    ComboBox_SetCurSel(sets, -1);
    EnableCommands(*this, kCommands);
}

bool UpdateDwgDataDlg::AskName(PrjDb::OptionsRec& rec) {
    const ustr title = Lng::text(kLibraryTexts, 24355, L"Configuration Name");
    return AskValueDlg::Run(hWnd(), app_, title, NamePrompt(), rec.name, kMaxNameChars) >= 0;
}

void UpdateDwgDataDlg::ShowFailure() {
    const ustr why = database_.GetErrorText();
    gwerrmsg(
        hWnd(), app_,
        (why.empty() ? Lng::text(kLibraryTexts, 25976, L"The selection set cannot be read or stored.") : why).c_str());
}

std::vector<int> UpdateDwgDataDlg::ChecksOf(const std::set<long>& properties) const {
    constexpr int kNone = std::numeric_limits<int>::max();
    int checked = kNone;  // the level of the chosen item that the row is, or is below
    std::vector<int> states;
    states.reserve(items_.size());
    for (const TREE_INSERTITEM& row : items_) {
        const bool chosen = IsDataItem(row) && properties.contains(static_cast<long>(row.value));
        if (row.level <= checked) checked = chosen ? row.level : kNone;
        states.push_back(checked == kNone ? kTreeUnchecked : kTreeChecked);
    }
    return states;
}

std::set<long> UpdateDwgDataDlg::CheckedItems() const {
    const std::vector<int> states = search_.GetChecks();
    std::set<long> checked;
    for (std::size_t row = 0; row < items_.size(); ++row) {
        if (states[row] == kTreeChecked && IsDataItem(items_[row]))
            checked.insert(static_cast<long>(items_[row].value));
    }
    return checked;
}

// The first item checked that needs a selection set rules manual selection out, and the last one unchecked lets it in.
void UpdateDwgDataDlg::ChecksChanged() {
    const std::vector<int> before = std::exchange(checks_, search_.GetChecks());
    bool concerned = false;
    for (std::size_t row = 0; row < items_.size() && !concerned; ++row) {
        const bool turned = (before[row] == kTreeChecked) != (checks_[row] == kTreeChecked);
        concerned = turned && NeedsSelectionSet(items_[row]);
    }
    if (!concerned) return;
    int had = 0;
    int has = 0;
    for (std::size_t row = 0; row < items_.size(); ++row) {
        const bool was = before[row] == kTreeChecked;
        const bool is = checks_[row] == kTreeChecked;
        if ((!was && !is) || !NeedsSelectionSet(items_[row])) continue;
        had += was;
        has += is;
    }
    if (had == has) return;
    int flagMask = selection_.GetFlagMask();
    if (has == 0) flagMask &= ~ObjectSelection::Dlg::kNoManualSelection;
    if (had == 0) flagMask |= ObjectSelection::Dlg::kNoManualSelection;
    selection_.SetFlagMask(flagMask);
    selection_.EnableDisableCtrls(ObjectSelection::Dlg::Ctrl::EnableAll);
}

bool UpdateDwgDataDlg::NeedsSelectionSet(const TREE_INSERTITEM& row) const {
    if (!itemCallback_ || !IsDataItem(row)) return false;
    try {
        return itemCallback_(Dlg::NeedsSelectionSet, static_cast<std::uint64_t>(row.value), 0) != 0;
    } catch (...) {
        return false;  // as agreed with the caller
    }
}

bool OptionsDlg(HWND parent, Lng::AppID app, Options& options, const TREE_INSERTLIST2* items, const QBaseDb& database,
                ObjectSelection::Dlg::Callback selectionCallback, Dlg::Callback itemCallback) {
    return EditCopy<UpdateDwgDataDlg>(options, parent, app, items, database, std::move(selectionCallback),
                                      std::move(itemCallback));
}

}  // namespace UpdateDwgData
