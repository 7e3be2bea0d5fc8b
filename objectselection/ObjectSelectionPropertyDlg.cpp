#include "ObjectSelectionPropertyDlg.h"

#include <commctrl.h>
#include <orvatool/AskValueDlg.h>
#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "CommonTexts.h"
#include "EditCopy.h"
#include "UserNumber.h"
#include "objectselection_ids.h"

using ObjectSelection::Property;
using ObjectSelection::Dlg::PropertyKind;

namespace {

constexpr std::size_t kFewChoices = 500;  // more than these are not put into a drop-down list
constexpr int kDeepestIndent = 8;

// Rows of the tree that are no entry of the host's list.
constexpr std::int64_t kNoProperty = -1;
constexpr std::int64_t kUnknownProperty = -2;

constexpr TextRow kTexts[] = {
    {kCaption,                     kLibraryTexts, 25951, L"Object selection set property"},
    {IDC_OBJSELPROP_CRITERIA_LBL,  kLibraryTexts, 25952, L"Rules"                        },
    {IDC_OBJSELPROP_INSERT,        kSharedTexts,  60099, L"Insert"                       },
    {IDC_OBJSELPROP_REMOVE,        kSharedTexts,  60100, L"Remove"                       },
    {IDC_OBJSELPROP_CHOOSE,        kLibraryTexts, 25955, L"Choose..."                    },
    {IDC_OBJSELPROP_ANY,           kSharedTexts,  60214, L"OR (Any rule may be true)"    },
    {IDC_OBJSELPROP_ALL,           kSharedTexts,  60215, L"AND (All rules must be true)" },
    {IDC_OBJSELPROP_CASE,          kLibraryTexts, 25954, L"Case sensitive"               },
    {IDC_OBJSELPROP_TOLERANCE_LBL, kLibraryTexts, 25953, L"Tolerance"                    },
    {IDC_OBJSELPROP_PREVIEW_LBL,   kLibraryTexts, 25965, L"Preview"                      },
};

constexpr TextRow kCommonTexts[] = {
    SearchText(IDC_OBJSELPROP_SEARCH_LBL),
    LabelOf(IDC_OBJSELPROP_PROPERTIES_LBL, kPropertyColumn),
    LabelOf(IDC_OBJSELPROP_OPERATOR_LBL, kOperatorColumn),
    LabelOf(IDC_OBJSELPROP_VALUE_LBL, kValueColumn),
    LabelOf(IDC_OBJSELPROP_CHOICE_LBL, kValueColumn),
    kOkText,
    kCancelText,
};

constexpr ColumnRow kColumns[] = {kOperatorColumn, kValueColumn};
enum Column : int { kOperator, kValue };

// The tree and what is beside it share the width; the criteria take the height.
constexpr double kShare = 0.4;
constexpr AnchorRow kAnchors[] = {
    {IDC_OBJSELPROP_SEARCH,         0,      0, kShare, 0},
    {IDC_OBJSELPROP_PROPERTIES_LBL, 0,      0, kShare, 0},
    {IDC_OBJSELPROP_PROPERTIES,     0,      0, kShare, 1},
    {IDC_OBJSELPROP_CRITERIA_LBL,   kShare, 0, kShare, 0},
    {IDC_OBJSELPROP_CRITERIA,       kShare, 0, 1,      1},
    {IDC_OBJSELPROP_INSERT,         1,      0, 1,      0},
    {IDC_OBJSELPROP_REMOVE,         1,      0, 1,      0},
    {IDC_OBJSELPROP_OPERATOR_LBL,   kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_OPERATOR,       kShare, 1, 1,      1},
    {IDC_OBJSELPROP_VALUE_LBL,      kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_VALUE,          kShare, 1, 1,      1},
    {IDC_OBJSELPROP_CHOICE_LBL,     kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_CHOICE,         kShare, 1, 1,      1},
    {IDC_OBJSELPROP_CHOOSE,         1,      1, 1,      1},
    {IDC_OBJSELPROP_ANY,            kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_ALL,            kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_CASE,           kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_TOLERANCE_LBL,  kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_TOLERANCE,      kShare, 1, kShare, 1},
    {IDC_OBJSELPROP_PREVIEW_LBL,    0,      1, 0,      1},
    {IDC_OBJSELPROP_PREVIEW,        0,      1, 1,      1},
    {IDOK,                          1,      1, 1,      1},
    {IDCANCEL,                      1,      1, 1,      1},
};

constexpr FieldRow<Property> kFields[] = {
    {IDC_OBJSELPROP_ALL,  kField<&Property::matchAll>,      kAny},
    {IDC_OBJSELPROP_CASE, kField<&Property::caseSensitive>, kAny},
};

using D = ObjectSelectionPropertyDialog;
constexpr CommandRow<D> kCommands[] = {
    {IDC_OBJSELPROP_INSERT, &D::Insert, &D::CanInsert},
    {IDC_OBJSELPROP_REMOVE, &D::Remove, &D::CanRemove},
    {IDC_OBJSELPROP_CHOOSE, &D::Choose, &D::CanChoose},
};

static_assert(Distinct(kTexts) && Distinct(kCommonTexts) && Distinct(kAnchors) && Distinct(kFields) &&
              Distinct(kCommands));

constexpr MenuRow kListMenu[] = {
    {IDC_OBJSELPROP_INSERT, L"\tIns"},
    {IDC_OBJSELPROP_REMOVE, L""     },
};

constexpr LibraryDialog::Tables kTables{L"Window/ObjectSelectionPropertyDialog", kTexts, kCommonTexts, kAnchors,
                                        kColumns};

// The operations that suit a kind of values, as they are offered.
constexpr short kTextOperations[] = {
    Property::Equal,      Property::NotEqual,       Property::Contains, Property::NotContains,
    Property::BeginsWith, Property::EndsWith,       Property::Less,     Property::LessOrEqual,
    Property::Greater,    Property::GreaterOrEqual, Property::IsEmpty,  Property::IsNotEmpty,
};
constexpr short kNumberOperations[] = {
    Property::Equal,   Property::NotEqual,       Property::Less,    Property::LessOrEqual,
    Property::Greater, Property::GreaterOrEqual, Property::IsEmpty, Property::IsNotEmpty,
};
constexpr short kChoiceOperations[] = {Property::Equal, Property::NotEqual, Property::IsEmpty, Property::IsNotEmpty};

std::span<const short> OperationsOf(PropertyKind kind) {
    if (kind == ObjectSelection::Dlg::NumberValue) return kNumberOperations;
    if (kind == ObjectSelection::Dlg::ChoiceValue) return kChoiceOperations;
    return kTextOperations;
}

// A host may answer anything.
PropertyKind KindOf(std::int64_t answer) {
    const bool known = answer == ObjectSelection::Dlg::NumberValue || answer == ObjectSelection::Dlg::ChoiceValue;
    return known ? static_cast<PropertyKind>(answer) : ObjectSelection::Dlg::TextValue;
}

// An operation that is not offered stays selectable where it is in use.
ValueList OperationList(PropertyKind kind, const Criterion* used) {
    ValueList list;
    const std::span<const short> offered = OperationsOf(kind);
    for (const short operation : offered)
        list.emplace_back(OperationName(operation), operation);
    if (used && std::find(offered.begin(), offered.end(), used->operation) == offered.end())
        list.emplace_back(OperationName(used->operation), used->operation);
    return list;
}

// None for what is no tolerance; an empty text is none at all.
std::optional<double> ToleranceOf(const ustr& text) {
    if (text.empty()) return 0.0;
    const std::optional<double> number = UserNumber::Parse(text);
    return number && *number >= 0 ? number : std::nullopt;
}

}  // namespace

ObjectSelectionPropertyDialog::ObjectSelectionPropertyDialog(HINSTANCE instance, HWND parent, Property& rule,
                                                             Lng::AppID app, ObjectSelection::Dlg::Callback callback)
    : LibraryDialog(instance, parent, app, kTables),
      rule_(rule),
      given_(rule),
      host_(std::move(callback)),
      texts_(host_),
      selected_(kNoProperty) {
    if (rule_.criteria.empty()) rule_.criteria.emplace_back();
}

bool ObjectSelectionPropertyDialog::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    if (filling_) return LibraryDialog::OnCommand(wParam, lParam);
    return OnChange(LOWORD(wParam), HIWORD(wParam)) || RunCommand(*this, kCommands, wParam) ||
           LibraryDialog::OnCommand(wParam, lParam);
}

// What the user changes in a control, and what follows.
bool ObjectSelectionPropertyDialog::OnChange(int ctrlId, int code) {
    struct Change {
        int ctrlId;
        int code;
        void (ObjectSelectionPropertyDialog::*run)();
    };
    static constexpr Change kChanges[] = {
        {IDC_OBJSELPROP_SEARCH,    EN_CHANGE,     &D::Search         },
        {IDC_OBJSELPROP_OPERATOR,  CBN_SELCHANGE, &D::TakeOperation  },
        {IDC_OBJSELPROP_VALUE,     EN_CHANGE,     &D::TakeTypedValue },
        {IDC_OBJSELPROP_CHOICE,    CBN_SELCHANGE, &D::TakeChosenValue},
        {IDC_OBJSELPROP_ANY,       BN_CLICKED,    &D::OptionsChanged },
        {IDC_OBJSELPROP_ALL,       BN_CLICKED,    &D::OptionsChanged },
        {IDC_OBJSELPROP_CASE,      BN_CLICKED,    &D::OptionsChanged },
        {IDC_OBJSELPROP_TOLERANCE, EN_CHANGE,     &D::OptionsChanged },
    };
    for (const Change& change : kChanges) {
        if (change.ctrlId != ctrlId || change.code != code) continue;
        (this->*change.run)();
        return true;
    }
    return false;
}

bool ObjectSelectionPropertyDialog::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    const auto* header = reinterpret_cast<const NMHDR*>(lParam);
    if (ListAnswers(header)) return true;
    if (filling_) return LibraryDialog::OnNotify(wParam, lParam);
    if (header->idFrom == IDC_OBJSELPROP_PROPERTIES) {
        if (header->code == TVN_SELCHANGEDW || header->code == NM_CLICK) search_.KeepSelected();
        if (header->code == TVN_SELCHANGEDW) PropertySelected();
        if (header->code == NM_DBLCLK && gwTVpressedItem(header->hwndFrom) && selected_ != kNoProperty) GoToValue();
    } else if (header->idFrom == IDC_OBJSELPROP_CRITERIA) {
        if (header->code == LVN_ITEMCHANGED || header->code == LVN_ODSTATECHANGED) ShowCriterion();
        if (header->code == NM_DBLCLK && EditedRow() >= 0) GoToValue();
    }
    return LibraryDialog::OnNotify(wParam, lParam);
}

bool ObjectSelectionPropertyDialog::OnInitDialog() {
    LibraryDialog::OnInitDialog();
    filling_ = true;
    SetKeys({VK_INSERT, VK_DELETE, VK_F2});
    LoadProperties();
    AttachControls();
    SetDataToCtrls();
    filling_ = false;
    if (selected_ == kNoProperty) return true;
    GoToValue();
    return false;
}

bool ObjectSelectionPropertyDialog::OnContextMenu(HWND control, POINT screenPoint) {
    if (control != list_.hWnd()) return LibraryDialog::OnContextMenu(control, screenPoint);
    ShowCommandMenu(*this, kListMenu, control, screenPoint);
    return true;
}

bool ObjectSelectionPropertyDialog::OnKeyDown(int virtualKey) {
    if (GetFocus() != list_.hWnd() || !KeyIsAlone()) return LibraryDialog::OnKeyDown(virtualKey);
    if (virtualKey == VK_INSERT) {
        Insert();
    } else if (virtualKey == VK_DELETE) {
        if (CanRemove()) Remove();
    } else if (virtualKey == VK_F2) {
        GoToValue();
    } else {
        return LibraryDialog::OnKeyDown(virtualKey);
    }
    return true;
}

// A search is not confirmed by OK: Enter takes what it has found.
bool ObjectSelectionPropertyDialog::OnEnterPressed() {
    const HWND focus = GetFocus();
    const int ctrlId = GetDlgCtrlID(focus);
    const bool searching = ctrlId == IDC_OBJSELPROP_SEARCH && GetWindowTextLengthW(focus) > 0;
    const bool inList = searching || ctrlId == IDC_OBJSELPROP_PROPERTIES || ctrlId == IDC_OBJSELPROP_CRITERIA;
    if (!inList) return LibraryDialog::OnEnterPressed();
    search_.KeepSelected();
    if (selected_ != kNoProperty) GoToValue();
    return true;
}

void ObjectSelectionPropertyDialog::SetDataToCtrls() {
    selected_ = GivenProperty();
    if (selected_ != kNoProperty) search_.Select(selected_);
    Show(*this, kFields, rule_);
    gwsetcheck(hWnd(), IDC_OBJSELPROP_ANY, !rule_.matchAll);
    gwmemotodlg(hWnd(), IDC_OBJSELPROP_TOLERANCE, UserNumber::Shown(rule_.tolerance).c_str(), 0, 0);
    SetUp();
    ShowOffers();
    ShowRows(0);
}

int ObjectSelectionPropertyDialog::GetDataFromCtrls() {
    if (selected_ == kNoProperty) return IDC_OBJSELPROP_PROPERTIES;
    if (rule_.criteria.empty()) return IDC_OBJSELPROP_CRITERIA;
    const auto complete = [this](const Criterion& criterion) { return IsComplete(criterion); };
    const auto refused = std::find_if_not(rule_.criteria.begin(), rule_.criteria.end(), complete);
    if (refused != rule_.criteria.end()) {
        SelectRow(static_cast<int>(refused - rule_.criteria.begin()));
        return ValueCtrl();
    }
    if (setup_.kind == ObjectSelection::Dlg::NumberValue) {
        for (Criterion& criterion : rule_.criteria)
            criterion.value = UserNumber::Stored(criterion.value);
    }
    return TakeOptions();
}

void ObjectSelectionPropertyDialog::Insert() {
    const std::vector<int> rows = list_.selection();
    const int row = rows.empty() ? static_cast<int>(rule_.criteria.size()) : rows.back() + 1;
    rule_.criteria.emplace(rule_.criteria.begin() + row);
    ShowRows(row);
    GoToValue();
}

void ObjectSelectionPropertyDialog::Remove() {
    const std::vector<int> rows = list_.selection();
    auto next = rows.begin();
    int row = 0;
    std::erase_if(rule_.criteria, [&](const Criterion&) {
        const bool gone = next != rows.end() && *next == row++;
        if (gone) ++next;
        return gone;
    });
    ShowRows(std::min(rows.front(), static_cast<int>(rule_.criteria.size()) - 1));
}

// The host may offer a choice of its own.
void ObjectSelectionPropertyDialog::Choose() {
    const int row = EditedRow();
    ObjectSelection::Dlg::ValueChoice choice{rule_.propId, rule_.criteria[static_cast<std::size_t>(row)].value};
    const bool done = host_.AskFor(choice, ObjectSelection::Dlg::ChooseValue, HostCallback::WParam(&choice),
                                   HostCallback::LParam(hWnd())) != 0;
    if (!done && !PickValue(choice.value)) return;
    if (EditedRow() != row) return;  // the user went elsewhere while the host asked
    rule_.criteria[static_cast<std::size_t>(row)].value = choice.value;
    if (!choices_.IsEmpty() && AddChoice(choice.value)) ShowOffers();
    ShowCriterion();
    CriterionChanged();
}

bool ObjectSelectionPropertyDialog::CanInsert() const {
    return true;
}

bool ObjectSelectionPropertyDialog::CanRemove() const {
    return list_.selected() >= 0;
}

bool ObjectSelectionPropertyDialog::CanChoose() const {
    const int row = EditedRow();
    return selected_ != kNoProperty && row >= 0 && NeedsValue(rule_.criteria[static_cast<std::size_t>(row)].operation);
}

void ObjectSelectionPropertyDialog::LoadProperties() {
    host_.AskFor(entries_, ObjectSelection::Dlg::GetProperties, 0, HostCallback::LParam(&entries_));
    for (PropertyEntry& entry : entries_) {
        if (entry.name.empty()) entry.name = UnknownPropertyText(entry.id);
    }
    if (GivenProperty() == kUnknownProperty) {
        properties_.push_back(0, kUnknownProperty, Lng::NoApp, ImageLib::Property, UnknownPropertyText(given_.propId));
    }
    AddGroups();
}

// In the order in which the host names them first.
void ObjectSelectionPropertyDialog::AddGroups() {
    std::vector<std::vector<std::size_t>> groups;
    std::unordered_map<ustr, std::size_t> groupOf;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const auto [group, isNew] = groupOf.try_emplace(entries_[i].group, groups.size());
        if (isNew) groups.emplace_back();
        groups[group->second].push_back(i);
    }
    for (const std::vector<std::size_t>& members : groups) {
        const ustr& heading = entries_[members.front()].group;
        if (!heading.empty()) properties_.push_back(0, kNoProperty, Lng::NoApp, ImageLib::PropertyGroup, heading);
        for (const std::size_t i : members) {
            properties_.push_back(heading.empty() ? 0 : 1, static_cast<std::int64_t>(i), Lng::NoApp, ImageLib::Property,
                                  entries_[i].name);
        }
    }
}

std::int64_t ObjectSelectionPropertyDialog::GivenProperty() const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [this](const PropertyEntry& entry) { return entry.id == given_.propId; });
    if (found != entries_.end()) return found - entries_.begin();
    return given_.propId == 0 ? kNoProperty : kUnknownProperty;
}

void ObjectSelectionPropertyDialog::AttachControls() {
    const HWND tree = RequireControl(*this, IDC_OBJSELPROP_PROPERTIES);
    TreeView_SetImageList(tree, ImageLib::GetImageList(GetDpi()), TVSIL_NORMAL);
    const ustr cue = Lng::text(kLibraryTexts, 25956, L"Search properties");
    search_.SetHeading(kNoProperty);
    search_.Attach(tree, &properties_, RequireControl(*this, IDC_OBJSELPROP_SEARCH), cue.c_str());
    AttachList(IDC_OBJSELPROP_CRITERIA, kValue);
}

// While the tree is narrowed the selection may come and go; what it ends at counts.
void ObjectSelectionPropertyDialog::Search() {
    filling_ = true;
    search_.Filter(gwdlgtomemo(hWnd(), IDC_OBJSELPROP_SEARCH));
    filling_ = false;
    PropertySelected();
}

void ObjectSelectionPropertyDialog::PropertySelected() {
    const HWND tree = RequireControl(*this, IDC_OBJSELPROP_PROPERTIES);
    const TREE_INSERTITEM* const row = search_.Row(TreeView_GetSelection(tree));
    const std::int64_t selected = row ? row->value : kNoProperty;
    if (selected == selected_) return;
    selected_ = selected;
    if (selected_ != kNoProperty) {
        rule_.propId = selected_ == kUnknownProperty ? given_.propId : entries_[static_cast<std::size_t>(selected_)].id;
        SetUp();
    }
    ShowOffers();
}

void ObjectSelectionPropertyDialog::SetUp() {
    const PropertyKind kind =
        selected_ < 0 ? ObjectSelection::Dlg::TextValue
                      : KindOf(host_.Ask(ObjectSelection::Dlg::GetPropertyKind, static_cast<std::uint64_t>(selected_)));
    setup_ = {hWnd(), kind, kind == ObjectSelection::Dlg::NumberValue, kind == ObjectSelection::Dlg::TextValue};
    host_.AskFor(setup_, ObjectSelection::Dlg::SetUpEditor, HostCallback::WParam(&setup_),
                 HostCallback::LParam(&rule_));
    setup_.kind = KindOf(setup_.kind);
    LoadChoices();
}

// Values that the rule came with stay possible where the host does not list them; those of another property do not.
// Without any value to choose from, values are typed.
void ObjectSelectionPropertyDialog::LoadChoices() {
    choices_ = PropertyChoices();
    if (setup_.kind != ObjectSelection::Dlg::ChoiceValue) return;
    choices_ = PropertyChoices::Ask(host_, rule_.propId);
    if (choices_.IsEmpty() || rule_.propId != given_.propId) return;
    for (const Criterion& criterion : given_.criteria)
        AddChoice(criterion.value);
}

bool ObjectSelectionPropertyDialog::AddChoice(const ustr& value) {
    return !value.empty() && choices_.IndexOf(value) < 0 &&
           choices_.Add(value, texts_.ValueText(rule_.propId, Criterion{Property::Equal, value}));
}

bool ObjectSelectionPropertyDialog::HasFewChoices() const {
    return !choices_.IsEmpty() && choices_.Entries().size() <= kFewChoices;
}

int ObjectSelectionPropertyDialog::ValueCtrl() const {
    return HasFewChoices() ? IDC_OBJSELPROP_CHOICE : IDC_OBJSELPROP_VALUE;
}

ustr ObjectSelectionPropertyDialog::PropertyName() const {
    if (selected_ < 0) return UnknownPropertyText(rule_.propId);
    return entries_[static_cast<std::size_t>(selected_)].name;
}

ustr ObjectSelectionPropertyDialog::ShownValue(const Criterion& criterion) const {
    if (criterion.value.empty() || !NeedsValue(criterion.operation)) return ustr();
    if (const ustr* const choice = choices_.TextOf(criterion.value)) return *choice;
    ustr text = texts_.ValueText(rule_.propId, criterion);
    const bool isNumber = setup_.kind == ObjectSelection::Dlg::NumberValue;
    return isNumber && text == criterion.value ? UserNumber::Shown(text) : text;
}

ustr ObjectSelectionPropertyDialog::CellText(int row, int column) const {
    const Criterion& criterion = rule_.criteria[static_cast<std::size_t>(row)];
    return column == kOperator ? OperationName(criterion.operation) : ShownValue(criterion);
}

// What does not apply to the property's values is not there.
void ObjectSelectionPropertyDialog::ShowOffers() {
    const bool few = HasFewChoices();
    ShowCtrl(IDC_OBJSELPROP_VALUE_LBL, !few);
    ShowCtrl(IDC_OBJSELPROP_VALUE, !few);
    ShowCtrl(IDC_OBJSELPROP_CHOICE_LBL, few);
    ShowCtrl(IDC_OBJSELPROP_CHOICE, few);
    ShowCtrl(IDC_OBJSELPROP_CASE, setup_.offerCaseSensitive);
    ShowCtrl(IDC_OBJSELPROP_TOLERANCE_LBL, setup_.offerTolerance);
    ShowCtrl(IDC_OBJSELPROP_TOLERANCE, setup_.offerTolerance);
    // Of more choices than a drop-down list is good for the value is shown and chosen in a dialog.
    SendDlgItemMessageW(hWnd(), IDC_OBJSELPROP_VALUE, EM_SETREADONLY, !few && !choices_.IsEmpty(), 0);
    FillChoices();
    ShowCriterion();
    InvalidateRect(list_.hWnd(), nullptr, FALSE);
    OptionsChanged();
}

void ObjectSelectionPropertyDialog::FillChoices() {
    ValueList list;
    if (HasFewChoices()) {
        for (const PropertyChoices::Entry& entry : choices_.Entries()) {
            const auto indent = static_cast<std::size_t>(std::clamp(entry.level, 0, kDeepestIndent)) * 2;
            list.emplace_back(std::wstring(indent, L' ').append(entry.text), static_cast<std::int64_t>(list.size()));
        }
    }
    gwfillcombo(hWnd(), IDC_OBJSELPROP_CHOICE, list, -1);
}

void ObjectSelectionPropertyDialog::ShowRows(int selected) {
    const bool wasFilling = std::exchange(filling_, true);
    list_.selectRows({}, -1);
    list_.setVirtual(static_cast<int>(rule_.criteria.size()),
                     [this](int row, int column) { return CellText(row, column); });
    filling_ = wasFilling;
    SelectRow(selected);
}

void ObjectSelectionPropertyDialog::SelectRow(int row) {
    const bool wasFilling = std::exchange(filling_, true);
    list_.select(row);
    filling_ = wasFilling;
    ShowCriterion();
    ShowPreview();
}

void ObjectSelectionPropertyDialog::ShowCriterion() {
    const bool wasFilling = std::exchange(filling_, true);
    const Criterion* const criterion = Edited();
    gwfillcombo(hWnd(), IDC_OBJSELPROP_OPERATOR, OperationList(setup_.kind, criterion),
                criterion ? criterion->operation : -1);
    const ustr value(criterion ? criterion->value.c_str() : L"");
    SendDlgItemMessageW(hWnd(), IDC_OBJSELPROP_CHOICE, CB_SETCURSEL, static_cast<WPARAM>(choices_.IndexOf(value)), 0);
    const bool isNumber = setup_.kind == ObjectSelection::Dlg::NumberValue;
    const ustr* const choice = choices_.TextOf(value);
    const ustr text = choice ? *choice : isNumber ? UserNumber::Shown(value) : value;
    gwmemotodlg(hWnd(), IDC_OBJSELPROP_VALUE, text.c_str(), 0, 0);
    filling_ = wasFilling;
    EnableCriterion();
}

void ObjectSelectionPropertyDialog::EnableCriterion() {
    const Criterion* const criterion = Edited();
    const bool hasValue = criterion && NeedsValue(criterion->operation);
    EnableCtrl(IDC_OBJSELPROP_OPERATOR, criterion != nullptr);
    EnableCtrl(IDC_OBJSELPROP_VALUE, hasValue);
    EnableCtrl(IDC_OBJSELPROP_CHOICE, hasValue);
    EnableCommands(*this, kCommands);
}

void ObjectSelectionPropertyDialog::ShowPreview() {
    ustr sentence;
    if (selected_ != kNoProperty) {
        sentence = RuleSentence(PropertyName(), rule_, [this](const Criterion& criterion) {
            const ustr value = ShownValue(criterion);
            return value.empty() ? ustr(L"...") : value;
        });
    }
    SetDlgItemTextW(hWnd(), IDC_OBJSELPROP_PREVIEW, sentence.c_str());
}

// -1 while none or several are selected.
int ObjectSelectionPropertyDialog::EditedRow() const {
    return list_.hWnd() && ListView_GetSelectedCount(list_.hWnd()) == 1 ? list_.selected() : -1;
}

Criterion* ObjectSelectionPropertyDialog::Edited() const {
    const int row = EditedRow();
    return row < 0 ? nullptr : &rule_.criteria[static_cast<std::size_t>(row)];
}

void ObjectSelectionPropertyDialog::GoToValue() {
    if (!Edited() && !rule_.criteria.empty()) SelectRow(std::max(list_.selected(), 0));
    const Criterion* const criterion = Edited();
    if (!criterion) return SetFocus(IDC_OBJSELPROP_INSERT);
    SetFocus(NeedsValue(criterion->operation) ? ValueCtrl() : IDC_OBJSELPROP_OPERATOR);
}

void ObjectSelectionPropertyDialog::TakeOperation() {
    std::int64_t operation = 0;
    Criterion* const criterion = Edited();
    if (!criterion || !gwcombovalue(hWnd(), IDC_OBJSELPROP_OPERATOR, operation)) return;
    criterion->operation = static_cast<short>(operation);
    CriterionChanged();
}

void ObjectSelectionPropertyDialog::TakeTypedValue() {
    Criterion* const criterion = Edited();
    if (!criterion) return;
    const ustr text = gwdlgtomemo(hWnd(), IDC_OBJSELPROP_VALUE);
    criterion->value = setup_.kind == ObjectSelection::Dlg::NumberValue ? UserNumber::Stored(text) : text;
    CriterionChanged();
}

void ObjectSelectionPropertyDialog::TakeChosenValue() {
    std::int64_t index = 0;
    Criterion* const criterion = Edited();
    if (!criterion || !gwcombovalue(hWnd(), IDC_OBJSELPROP_CHOICE, index)) return;
    criterion->value = choices_.Entries()[static_cast<std::size_t>(index)].value;
    CriterionChanged();
}

void ObjectSelectionPropertyDialog::CriterionChanged() {
    const int row = EditedRow();
    ListView_RedrawItems(list_.hWnd(), row, row);
    EnableCriterion();
    ShowPreview();
}

void ObjectSelectionPropertyDialog::OptionsChanged() {
    TakeOptions();
    ShowPreview();
}

bool ObjectSelectionPropertyDialog::PickValue(ustr& value) {
    const PropertyChoices choices = choices_.IsEmpty() ? PropertyChoices::Ask(host_, rule_.propId) : choices_;
    if (choices.IsEmpty()) {
        const ustr message = Lng::text(kLibraryTexts, 25964,
                                       L"The project has no values of this property to choose from.\n"
                                       L"Type the value instead.");
        gwmsg(hWnd(), app_, message.c_str());
        return false;
    }
    TREE_INSERTLIST rows;
    for (const PropertyChoices::Entry& entry : choices.Entries())
        rows.push_back(entry.level, static_cast<std::int64_t>(rows.size()), Lng::NoApp, ImageLib::NoImage, entry.text);
    const ustr prompt = Lng::text(kValueColumn.app, kValueColumn.textId, kValueColumn.text);
    std::int64_t chosen = choices.IndexOf(value);
    const int row = AskValueDlg::Run(hWnd(), app_, PropertyName(), prompt, rows, chosen);
    if (row < 0) return false;
    value = choices.Entries()[static_cast<std::size_t>(row)].value;
    return true;
}

// What the property does not offer stays as it was given with the rule, and is none for another property.
int ObjectSelectionPropertyDialog::TakeOptions() {
    Take(*this, kFields, rule_);
    const bool sameProperty = rule_.propId == given_.propId;
    if (!setup_.offerCaseSensitive) rule_.caseSensitive = sameProperty && given_.caseSensitive;
    if (!setup_.offerTolerance) {
        rule_.tolerance = sameProperty ? given_.tolerance : 0;
        return 0;
    }
    const std::optional<double> tolerance = ToleranceOf(gwdlgtomemo(hWnd(), IDC_OBJSELPROP_TOLERANCE));
    if (!tolerance) return IDC_OBJSELPROP_TOLERANCE;
    rule_.tolerance = *tolerance;
    return 0;
}

bool ObjectSelectionPropertyDialog::IsComplete(const Criterion& criterion) const {
    if (!NeedsValue(criterion.operation)) return true;
    if (setup_.kind == ObjectSelection::Dlg::NumberValue) return UserNumber::Parse(criterion.value).has_value();
    return choices_.IsEmpty() ? !criterion.value.empty() : choices_.IndexOf(criterion.value) >= 0;
}

int ObjectSelection::Dlg::Edit(Lng::AppID app, HWND parent, Callback callback, Property& rule) {
    return EditCopy<ObjectSelectionPropertyDialog>(rule, parent, app, std::move(callback)) ? 0 : -1;
}
