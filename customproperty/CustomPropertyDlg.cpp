#include "CustomPropertyDlg.h"

#include <commctrl.h>
#include <orvatool/AskValueDlg.h>
#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>

#include <limits>
#include <utility>

#include "CommonTexts.h"
#include "EditCopy.h"
#include "customproperty_ids.h"

namespace {

// Characters that mean something in a format string.
constexpr wchar_t kIllegalInConstant[] = L"{}|";

constexpr TextRow kTexts[] = {
    {kCaption,                        kLibraryTexts, 25901, L"Custom property"     },
    {IDC_CUSTOMPROPERTY_NAME_LBL,     kLibraryTexts, 25902, L"Name"                },
    {IDC_CUSTOMPROPERTY_TREE_LBL,     kLibraryTexts, 25903, L"Available properties"},
    {IDC_CUSTOMPROPERTY_ADD_CONSTANT, kLibraryTexts, 25906, L"Add constant..."     },
    {IDC_CUSTOMPROPERTY_LIST_LBL,     kLibraryTexts, 25904, L"Selected attributes" },
    {IDC_CUSTOMPROPERTY_PREVIEW_LBL,  kLibraryTexts, 25911, L"Preview"             },
};

constexpr TextRow kCommonTexts[] = {
    SearchText(IDC_CUSTOMPROPERTY_SEARCH_LBL),
    AddText(IDC_CUSTOMPROPERTY_ADD),
    EditText(IDC_CUSTOMPROPERTY_EDIT),
    RemoveText(IDC_CUSTOMPROPERTY_REMOVE),
    UpText(IDC_CUSTOMPROPERTY_UP),
    DownText(IDC_CUSTOMPROPERTY_DOWN),
    kOkText,
    kCancelText,
};

constexpr ColumnRow kColumns[] = {
    PropertyColumn(140),
    {kLibraryTexts, 25914, L"Parameters", 80, LVCFMT_LEFT},
};
constexpr int kParametersColumn = 1;

// The tree and the list share the width.
constexpr AnchorRow kAnchors[] = {
    {IDC_CUSTOMPROPERTY_NAME,         0.0, 0.0, 1.0, 0.0},
    {IDC_CUSTOMPROPERTY_SEARCH,       0.0, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_TREE_LBL,     0.0, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_TREE,         0.0, 0.0, 0.5, 1.0},
    {IDC_CUSTOMPROPERTY_ADD,          0.5, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_ADD_CONSTANT, 0.5, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_EDIT,         0.5, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_REMOVE,       0.5, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_UP,           0.5, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_DOWN,         0.5, 0.0, 0.5, 0.0},
    {IDC_CUSTOMPROPERTY_LIST_LBL,     0.5, 0.0, 1.0, 0.0},
    {IDC_CUSTOMPROPERTY_LIST,         0.5, 0.0, 1.0, 1.0},
    {IDC_CUSTOMPROPERTY_PREVIEW_LBL,  0.0, 1.0, 0.0, 1.0},
    {IDC_CUSTOMPROPERTY_PREVIEW,      0.0, 1.0, 1.0, 1.0},
    {IDOK,                            1.0, 1.0, 1.0, 1.0},
    {IDCANCEL,                        1.0, 1.0, 1.0, 1.0},
};

constexpr LibraryDialog::Tables kTables{L"Window/CustomPropertyDialog", kTexts, kCommonTexts, kAnchors, kColumns};

constexpr Rule kNameRule{.maxChars = 255, .required = true};

constexpr FieldRow<CustomProperty::Data> kFields[] = {
    {IDC_CUSTOMPROPERTY_NAME, kField<&CustomProperty::Data::name>, kNameRule},
};

using D = CustomPropertyDlg;
constexpr CommandRow<D> kCommands[] = {
    {IDC_CUSTOMPROPERTY_ADD,          &D::Add,         &D::CanAdd        },
    {IDC_CUSTOMPROPERTY_ADD_CONSTANT, &D::AddConstant, &D::CanAddConstant},
    {IDC_CUSTOMPROPERTY_EDIT,         &D::Edit,        &D::CanEdit       },
    {IDC_CUSTOMPROPERTY_REMOVE,       &D::Remove,      &D::CanRemove     },
    {IDC_CUSTOMPROPERTY_UP,           &D::MoveUp,      &D::CanMoveUp     },
    {IDC_CUSTOMPROPERTY_DOWN,         &D::MoveDown,    &D::CanMoveDown   },
};

constexpr MenuRow kListMenu[] = {
    {IDC_CUSTOMPROPERTY_EDIT}, {IDC_CUSTOMPROPERTY_ADD_CONSTANT}, {IDC_CUSTOMPROPERTY_REMOVE},
    {IDC_CUSTOMPROPERTY_UP},   {IDC_CUSTOMPROPERTY_DOWN},
};
constexpr MenuRow kTreeMenu[] = {{IDC_CUSTOMPROPERTY_ADD}};

static_assert(Distinct(kTexts) && Distinct(kCommonTexts) && Distinct(kAnchors) && Distinct(kFields) &&
              Distinct(kCommands));

bool IsProperty(const TREE_INSERTITEM& row) {
    return row.value >= 1 && row.value <= std::numeric_limits<long>::max();
}

}  // namespace

CustomPropertyDlg::CustomPropertyDlg(HINSTANCE instance, HWND parent, CustomProperty::Data& data, Lng::AppID app,
                                     const TREE_INSERTLIST* properties)
    : LibraryDialog(instance, parent, app, kTables),
      data_(data),
      properties_(properties ? *properties : noProperties_) {
    for (const TREE_INSERTITEM& row : properties_) {
        if (IsProperty(row)) propertyById_.emplace(row.value, &row);
    }
    items_ = CustomProperty::Format::Parse(data_.format);
}

bool CustomPropertyDlg::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    if (filling_) return LibraryDialog::OnCommand(wParam, lParam);
    if (LOWORD(wParam) == IDC_CUSTOMPROPERTY_SEARCH && HIWORD(wParam) == EN_CHANGE) {
        search_.Filter(gwdlgtomemo(hWnd(), IDC_CUSTOMPROPERTY_SEARCH));
        EnableCommands(*this, kCommands);
        return true;
    }
    return RunCommand(*this, kCommands, wParam) || LibraryDialog::OnCommand(wParam, lParam);
}

bool CustomPropertyDlg::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    const auto* header = reinterpret_cast<const NMHDR*>(lParam);
    if (ListAnswers(header)) return true;
    if (filling_) return LibraryDialog::OnNotify(wParam, lParam);
    if (header->idFrom == IDC_CUSTOMPROPERTY_TREE) {
        if (header->code == NM_DBLCLK && gwTVpressedItem(header->hwndFrom)) Add();
        if (header->code == TVN_SELCHANGEDW) EnableCommands(*this, kCommands);
    } else if (header->idFrom == IDC_CUSTOMPROPERTY_LIST) {
        if (header->code == NM_DBLCLK && CanEdit()) Edit();
        if (header->code == LVN_ITEMCHANGED || header->code == LVN_ODSTATECHANGED) EnableCommands(*this, kCommands);
    }
    return LibraryDialog::OnNotify(wParam, lParam);
}

bool CustomPropertyDlg::OnInitDialog() {
    LibraryDialog::OnInitDialog();
    filling_ = true;
    SetKeys({VK_DELETE, VK_F2, VK_UP, VK_DOWN});
    const HWND tree = RequireControl(*this, IDC_CUSTOMPROPERTY_TREE);
    TreeView_SetImageList(tree, ImageLib::GetImageList(GetDpi()), TVSIL_NORMAL);
    const ustr cue = Lng::text(kLibraryTexts, 25915, L"Search properties");
    search_.Attach(tree, &properties_, RequireControl(*this, IDC_CUSTOMPROPERTY_SEARCH), cue.c_str());
    AttachList(IDC_CUSTOMPROPERTY_LIST, 0);
    SetDataToCtrls();
    filling_ = false;
    EnableCommands(*this, kCommands);
    return true;
}

bool CustomPropertyDlg::OnContextMenu(HWND control, POINT screenPoint) {
    if (control == list_.hWnd()) {
        ShowCommandMenu(*this, kListMenu, control, screenPoint);
        return true;
    }
    if (control == GetDlgItem(IDC_CUSTOMPROPERTY_TREE)) {
        ShowCommandMenu(*this, kTreeMenu, control, screenPoint);
        return true;
    }
    return LibraryDialog::OnContextMenu(control, screenPoint);
}

bool CustomPropertyDlg::OnKeyDown(int virtualKey) {
    constexpr ListButtons kListButtons{IDC_CUSTOMPROPERTY_REMOVE, IDC_CUSTOMPROPERTY_EDIT, IDC_CUSTOMPROPERTY_UP,
                                       IDC_CUSTOMPROPERTY_DOWN};
    return RunCommand(*this, kCommands, PressedButton(kListButtons, virtualKey)) ||
           LibraryDialog::OnKeyDown(virtualKey);
}

bool CustomPropertyDlg::OnEnterPressed() {
    const bool searching =
        HasFocus(IDC_CUSTOMPROPERTY_SEARCH) && !gwdlgtomemo(hWnd(), IDC_CUSTOMPROPERTY_SEARCH).empty();
    if ((searching || HasFocus(IDC_CUSTOMPROPERTY_TREE)) && CanAdd()) {
        Add();
        return true;
    }
    if (HasFocus(IDC_CUSTOMPROPERTY_LIST) && CanEdit()) {
        Edit();
        return true;
    }
    return LibraryDialog::OnEnterPressed();
}

void CustomPropertyDlg::SetDataToCtrls() {
    Show(*this, kFields, data_);
    const gwRedrawOff redrawOff(list_.hWnd());
    list_.deleteAllItems();
    for (const Item& item : items_) {
        list_.addItem(TextOf(item));
        ShowRow(list_.count() - 1);
    }
    ShowPreview();
}

int CustomPropertyDlg::GetDataFromCtrls() {
    if (const int refused = Take(*this, kFields, data_)) return refused;
    data_.format = CustomProperty::Format::Build(items_);
    return 0;
}

void CustomPropertyDlg::Add() {
    if (const TREE_INSERTITEM* property = SelectedProperty()) Insert(Item(static_cast<long>(property->value), ustr()));
}

void CustomPropertyDlg::AddConstant() {
    ustr text;
    if (AskConstant(text)) Insert(Item(0, text));
}

void CustomPropertyDlg::Edit() {
    const int row = list_.selected();
    Item& item = items_[static_cast<std::size_t>(row)];
    ustr text = item.text;
    if (!AskConstant(text)) return;
    item.text = text;
    ShowRow(row);
    ItemsChanged();
}

void CustomPropertyDlg::Remove() {
    const int row = list_.selected();
    items_.erase(items_.begin() + row);
    list_.deleteItem(row);
    if (!items_.empty()) list_.select(row < list_.count() ? row : row - 1);
    ItemsChanged();
}

void CustomPropertyDlg::MoveUp() {
    Swap(list_.selected(), list_.selected() - 1);
}

void CustomPropertyDlg::MoveDown() {
    Swap(list_.selected(), list_.selected() + 1);
}

bool CustomPropertyDlg::CanAdd() const {
    return SelectedProperty() != nullptr;
}

bool CustomPropertyDlg::CanAddConstant() const {
    return true;
}

bool CustomPropertyDlg::CanEdit() const {
    const int row = list_.selected();
    return row >= 0 && items_[static_cast<std::size_t>(row)].IsText();
}

bool CustomPropertyDlg::CanRemove() const {
    return list_.selected() >= 0;
}

bool CustomPropertyDlg::CanMoveUp() const {
    return list_.selected() > 0;
}

bool CustomPropertyDlg::CanMoveDown() const {
    const int row = list_.selected();
    return row >= 0 && row + 1 < list_.count();
}

const TREE_INSERTITEM* CustomPropertyDlg::SelectedProperty() const {
    const TREE_INSERTITEM* row = search_.Row(TreeView_GetSelection(::GetDlgItem(hWnd(), IDC_CUSTOMPROPERTY_TREE)));
    return row && IsProperty(*row) ? row : nullptr;
}

const TREE_INSERTITEM* CustomPropertyDlg::Property(long id) const {
    const auto found = propertyById_.find(id);
    return found == propertyById_.end() ? nullptr : found->second;
}

ustr CustomPropertyDlg::TextOf(const Item& item) const {
    if (item.IsText()) return item.text;
    if (const TREE_INSERTITEM* property = Property(item.id)) return property->text;
    return UnknownPropertyText(static_cast<int>(item.id));
}

bool CustomPropertyDlg::AskConstant(ustr& text) {
    const ustr title = Lng::text(kLibraryTexts, 11412, L"Constant text");
    const ustr prompt = Lng::text(kLibraryTexts, 11414, L"Text:");
    while (AskValueDlg::Run(hWnd(), app_, title, prompt, text) >= 0) {
        if (std::wstring_view(text).find_first_of(kIllegalInConstant) == std::wstring_view::npos) return true;
        ustr message = Lng::text(kSharedTexts, 62043, L"The following characters are illegal");
        message.append(L":\r\n").append(kIllegalInConstant);
        gwerrmsg(hWnd(), app_, message.c_str());
    }
    return false;
}

void CustomPropertyDlg::Insert(Item item) {
    const int selected = list_.selected();
    const int row = selected < 0 ? list_.count() : selected + 1;
    const auto at = items_.insert(items_.begin() + row, std::move(item));
    list_.addItem(TextOf(*at), ImageLib::NoImage, row);
    ShowRow(row);
    list_.select(row);
    ItemsChanged();
}

void CustomPropertyDlg::Swap(int row, int other) {
    std::swap(items_[static_cast<std::size_t>(row)], items_[static_cast<std::size_t>(other)]);
    ShowRow(row);
    ShowRow(other);
    list_.select(other);
    ItemsChanged();
}

void CustomPropertyDlg::ShowRow(int row) {
    const Item& item = items_[static_cast<std::size_t>(row)];
    list_.setItem(row, 0, TextOf(item), item.IsText() ? ImageLib::ConstantText : ImageLib::Property);
    // The bar only parts the parameters from the id.
    list_.setItem(row, kParametersColumn,
                  item.IsText() || item.text.empty() ? ustr() : item.text.slice(1, item.text.size()));
}

void CustomPropertyDlg::ShowPreview() {
    ustr preview;
    for (const Item& item : items_)
        preview.append(TextOf(item));
    gwmemotodlg(hWnd(), IDC_CUSTOMPROPERTY_PREVIEW, preview.c_str(), 0, 0);
}

void CustomPropertyDlg::ItemsChanged() {
    ShowPreview();
    EnableCommands(*this, kCommands);
}

bool CustomProperty::Dlg::Options(HWND parent, Lng::AppID app, const TREE_INSERTLIST* properties, Data& data) {
    return EditCopy<CustomPropertyDlg>(data, parent, app, properties);
}
