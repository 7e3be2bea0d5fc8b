#include "CtrlImpl.h"

#include <commctrl.h>
#include <orvatool/DlgControlAnchorer.h>
#include <orvatool/Gw.h>

#include <algorithm>
#include <utility>

#include "CommonTexts.h"

namespace ObjectSelection::Dlg {
namespace {

constexpr int kLabelsId = 1000;
constexpr int kNameLimit = 255;  // of the name edit
constexpr int kNoId = 0xFFFF;    // of controls that nobody asks for
constexpr int kNoItems = -1;     // the node id of the model drawings in a dialog without an items tree

struct SlotText {
    Slot slot;
    Lng::AppID app;
    int textId;
    const wchar_t* text;
};
constexpr SlotText OfCommon(Slot slot, const TextRow& row) {
    return {slot, row.app, row.textId, row.text};
}
// Other dialogs have these with dots behind them; the catalogues have one text for both.
constexpr wchar_t kSaveAsText[] = L"Save as";
constexpr wchar_t kRenameText[] = L"Rename";
constexpr SlotText kTexts[] = {
    {kGroup,              kLibraryTexts, 36659, L"Object selection set" },
    {kConfigurationLabel, kLibraryTexts, 20027, L"Configuration"        },
    OfCommon(kSave, SaveText(0)),
    {kSaveAs,             kLibraryTexts, 20031, kSaveAsText             },
    OfCommon(kDelete, DeleteText(0)),
    {kRename,             kLibraryTexts, 20033, kRenameText             },
    {kNameLabel,          kLibraryTexts, 36660, L"Name"                 },
    {kManual,             kLibraryTexts, 36661, L"Manual selection"     },
    {kCurrent,            kLibraryTexts, 36667, L"Current drawing"      },
    {kSelected,           kLibraryTexts, 7416,  L"Selected drawings"    },
    {kNoData,             kLibraryTexts, 33130, L"No data for this node"},
};

// Which edges of the selection the edges of a control are.
enum Edge { kLeft, kTop, kRight, kBottom };
struct SlotAnchor {
    Slot slot;
    Edge left;
    Edge top;
    Edge right;
    Edge bottom;
};
constexpr SlotAnchor kAnchors[] = {
    {kGroup,              kLeft,  kTop, kRight, kBottom},
    {kManual,             kLeft,  kTop, kLeft,  kTop   },
    {kCurrent,            kLeft,  kTop, kLeft,  kTop   },
    {kSelected,           kLeft,  kTop, kLeft,  kTop   },
    {kCategories,         kLeft,  kTop, kLeft,  kBottom},
    {kFilter,             kLeft,  kTop, kRight, kBottom},
    {kNoData,             kLeft,  kTop, kRight, kBottom},
    {kConfigurationLabel, kLeft,  kTop, kRight, kTop   },
    {kConfiguration,      kLeft,  kTop, kRight, kTop   },
    {kSave,               kRight, kTop, kRight, kTop   },
    {kSaveAs,             kRight, kTop, kRight, kTop   },
    {kDelete,             kRight, kTop, kRight, kTop   },
    {kRename,             kRight, kTop, kRight, kTop   },
};

// Sets a flag in a scope.
class Showing {
public:
    explicit Showing(bool& flag) : flag_(flag), outer_(std::exchange(flag, true)) {}
    ~Showing() { flag_ = outer_; }
    Showing(const Showing&) = delete;
    Showing& operator=(const Showing&) = delete;

private:
    bool& flag_;
    const bool outer_;
};

// A short tree is seen at a glance when it is open.
void OpenIfShort(HWND tree) {
    constexpr unsigned kShort = 100;
    if (TreeView_GetCount(tree) > kShort) return;
    const gwRedrawOff quiet(tree);
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = gwTVnext(tree, item))
        TreeView_Expand(tree, item, TVE_EXPAND);
    TreeView_SelectSetFirstVisible(tree, TreeView_GetRoot(tree));
}

int LargestChildId(HWND dlg) {
    int largest = 0;
    for (HWND child = GetWindow(dlg, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const int id = GetDlgCtrlID(child);
        if (id != kNoId) largest = std::max(largest, id);
    }
    return largest;
}

ustr Shortened(const ustr& name) {
    ustr text = name;
    text.truncate(kNameLimit);
    return text;
}

}  // namespace

void Ctrl::Impl::Attach(State state) {
    state_ = std::move(state);
    state_.flagMask |= DefaultFlagMask(state_.app);
    for (const CategoryRow& row : kCategoryTable) {
        const bool asks = row.query != kNoQuery;
        state_.available[row.category] = asks ? state_.host.Ask(row.query) : 1;
    }
}

bool Ctrl::Impl::OnInitDialog() {
    if (!Window()) return true;
    const Showing showing(showing_);
    initialized_ = true;
    FindControls();
    labels_.Attach(state_.dlg, kLabelsId);
    largestId_ = LargestChildId(Window());
    area_.Attach(state_.dlg, Control(kItems), largestId_ + kSearchLabel, largestId_ + kSearchEdit);
    categories_.Attach(Control(kCategories));
    CreateNodes();
    hook_.Attach(Window(), [this](UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
        return OnParentMessage(message, wParam, lParam, result);
    });
    if (Control(kFilter)) {
        filter_.Attach(state_.dlg, state_.app, state_.host.Get(), state_.ids[kFilter]);
        controls_[kFilter] = ::GetDlgItem(Window(), state_.ids[kFilter]);  // which may have replaced the list
    }
    ShowLabels();
    RemoveOwnAnchors();
    SetLanguage();
    Data2Ctrls();
    if (state_.mode == Configurations) {
        SelectRemembered();
        EnableAllowed();
    }
    return true;
}

bool Ctrl::Impl::Data2Ctrls() {
    if (!initialized_ || !Window()) return false;
    const Showing showing(showing_);
    if (state_.mode == NameEdit) ShowName();
    if (state_.mode == Configurations) RefillConfigurations();
    ForceSource();
    filter_.Show(state_.record.data.filterRules);
    for (Node& node : nodes_) {
        Invalidate(node);
        node.items->Forget();
    }
    FillCategoryTree();
    CheckSource(SourceOfRecord());
    ReadCriteria();
    const Node& drawings = nodes_[kModelDrawings];
    if (GetSource() == Source::Selected && IsOffered(drawings)) categories_.Select(drawings.id);
    EnableDisableCtrls(EnableAll);
    if (!categories_.Selected()) {
        SelectFirst();
        ShowSelected();
        EnableSelected();
    }
    return true;
}

int Ctrl::Impl::Ctrls2Data() {
    if (!initialized_ || !Window()) return 0;
    const bool named = state_.mode != NameEdit || ReadName();
    if (state_.mode == Configurations) RememberSelected();
    ReadCriteria();
    DropUnused();
    return named ? Validate() : state_.ids[kName];
}

void Ctrl::Impl::EnableDisableCtrls(EnableMode mode) {
    if (!initialized_ || !Window()) return;
    enabled_ = mode;
    switch (mode) {
        case DisableAll:
            EnableControls(false);
            break;
        case PartTypesOnly:
            EnablePartTypes();
            break;
        case EnableAll:
            EnableEverything();
            break;
    }
}

void Ctrl::Impl::SetAnchoring(double left, double top, double right, double bottom) {
    if (!initialized_ || !Window()) return;
    const double edges[] = {left, top, right, bottom};
    for (const SlotAnchor& row : kAnchors) {
        if (!Control(row.slot)) continue;
        state_.dlg->addCtrlAnchor(state_.ids[row.slot], edges[row.left], edges[row.top], edges[row.right],
                                  edges[row.bottom]);
    }
    for (const HWND tree : area_.Trees())
        state_.dlg->addCtrlAnchor(GetDlgCtrlID(tree), left, top, right, bottom);
    if (area_.SearchField()) state_.dlg->addCtrlAnchor(GetDlgCtrlID(area_.SearchField()), left, top, right, top);
}

void Ctrl::Impl::SetLanguage() {
    if (!initialized_ || !Window()) return;
    for (const SlotText& row : kTexts) {
        if (Control(row.slot)) state_.dlg->setItemText(row.app, state_.ids[row.slot], row.textId, row.text);
    }
    filter_.SetLanguage();
    NameWindows();
    ShowSelected();
}

void Ctrl::Impl::FindControls() {
    for (std::size_t slot = 0; slot < kSlotCount; ++slot) {
        const int id = state_.ids[slot];
        controls_[slot] = id > 0 ? ::GetDlgItem(Window(), id) : nullptr;
    }
}

void Ctrl::Impl::CreateNodes() {
    for (const CategoryRow& row : kCategoryTable) {
        Node& node = nodes_[row.category] = {};
        const bool first = row.category == kModelDrawings;
        node.row = &row;
        node.id =
            first ? (Control(kItems) ? state_.ids[kItems] : kNoItems) : largestId_ + static_cast<int>(row.category);
        node.tree = first ? Control(kItems) : area_.AddTree(node.id);
        node.items = MakeItems(row.category, state_.app);
    }
}

void Ctrl::Impl::RemoveOwnAnchors() {
    DlgControlAnchorer& anchorer = state_.dlg->GetAnchorer();
    for (std::size_t slot = 0; slot < kSlotCount; ++slot) {
        if (controls_[slot]) anchorer.Remove(state_.ids[slot]);
    }
    for (const HWND tree : area_.Trees())
        anchorer.Remove(GetDlgCtrlID(tree));
}

void Ctrl::Impl::ShowLabels() {
    LabelManager::Labels labels;
    state_.host.AskFor(labels, GetLabels, HostCallback::WParam(&labels), 0);
    labels_.SetLabels(labels);
}

// What lists and trees are called by programs that read the screen; they show it nowhere.
void Ctrl::Impl::NameWindows() {
    if (const HWND tree = Control(kCategories)) SetWindowTextW(tree, CaptionOf(kGroup).c_str());
    if (const HWND list = Control(kFilter)) SetWindowTextW(list, FilterTitle().c_str());
    for (const Node& node : nodes_) {
        if (node.tree) SetWindowTextW(node.tree, TitleOf(*node.row).c_str());
        categories_.SetTitle(node.id, TitleOf(*node.row));
    }
    categories_.SetTitle(state_.ids[kFilter], FilterTitle());
    categories_.SetTitle(largestId_ + kProjectGroup, ProjectGroupTitle());
    categories_.SetTitle(largestId_ + kFilterGroup, FilterGroupTitle());
}

void Ctrl::Impl::FillCategoryTree() {
    const Data& data = state_.record.data;
    std::vector<CategoryTree::Node> shown;
    std::vector<CategoryTree::Node> ofProject;
    const int projectGroup = largestId_ + kProjectGroup;
    const int filterGroup = largestId_ + kFilterGroup;
    for (const Node& node : nodes_) {
        if (Has(node.row->hiddenBy)) continue;
        const bool grouped = node.row->kind == CategoryKind::ProjectWide;
        const int group = grouped ? projectGroup : 0;
        (grouped ? ofProject : shown)
            .push_back({node.id, group, TitleOf(*node.row), node.items->Count(data, false), false, false,
                        node.items->IsInForce(data)});
    }
    if (!ofProject.empty()) shown.push_back({projectGroup, 0, ProjectGroupTitle(), 0, true, false, false});
    shown.insert(shown.end(), ofProject.begin(), ofProject.end());
    if (Control(kFilter)) {
        shown.push_back({filterGroup, 0, FilterGroupTitle(), 0, true, true, false});
        const std::vector<Property>& rules = data.filterRules;
        shown.push_back({state_.ids[kFilter], filterGroup, FilterTitle(), rules.size(), false, true, !rules.empty()});
    }
    categories_.Fill(std::move(shown));
}

void Ctrl::Impl::ShowCount(const Node& node) {
    categories_.SetCount(node.id, node.items->Count(state_.record.data, node.filled && node.touched));
}

void Ctrl::Impl::ShowFilterCount() {
    categories_.SetCount(state_.ids[kFilter], filter_.Rules().size());
}

// A dialog need not have all of the buttons; while none of them is checked the record's source stands.
Ctrl::Impl::Source Ctrl::Impl::GetSource() const {
    if (IsChecked(kManual)) return Source::Manual;
    if (IsChecked(kCurrent)) return Source::Current;
    if (IsChecked(kSelected)) return Source::Selected;
    return SourceOfRecord();
}

Ctrl::Impl::Source Ctrl::Impl::SourceOfRecord() const {
    const Data& data = state_.record.data;
    if (!data.bySelectionSet && !Has(kNoManualSelection)) return Source::Manual;
    return data.currentDrawing ? Source::Current : Source::Selected;
}

bool Ctrl::Impl::IsChecked(Slot slot) const {
    return SendMessageW(Control(slot), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void Ctrl::Impl::CheckSource(Source source) {
    const auto check = [this](Slot slot, bool checked) {
        if (IsChecked(slot) == checked) return;
        SendMessageW(Control(slot), BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
    };
    check(kManual, source == Source::Manual);
    check(kCurrent, source == Source::Current);
    check(kSelected, source == Source::Selected);
}

void Ctrl::Impl::ForceSource() {
    Data& data = state_.record.data;
    if (state_.paperSpace && !data.bySelectionSet) data.bySelectionSet = data.currentDrawing = true;
    if (Has(kCurrentDrawingOnly) || Has(kNoManualSelection)) {
        data.currentDrawing = true;
        data.useModelDrawings = false;
    }
}

// The current drawing is the one source that is always allowed.
void Ctrl::Impl::LeaveForbiddenSource() {
    const Source source = GetSource();
    const bool noManual = Has(kNoManualSelection) || state_.paperSpace;
    const bool forbidden =
        (source == Source::Manual && noManual) || (source == Source::Selected && Has(kCurrentDrawingOnly));
    if (!forbidden) return;
    CheckSource(Source::Current);
    ReadCriteria();
    InvalidateOfDrawings();
}

bool Ctrl::Impl::IsAvailable(const Node& node) const {
    const Source source = GetSource();
    switch (node.row->category) {
        case kModelDrawings:
            return source == Source::Selected && !Has(kCurrentDrawingOnly);
        case kRooms:
        case kFunctionalZones:
            return source != Source::Manual && state_.host.Ask(HasRooms) != 0;
        default:
            break;
    }
    const bool needsDrawing = node.row->kind == CategoryKind::OfDrawings;
    return !needsDrawing || (source != Source::Manual && state_.available[node.row->category] != 0);
}

ustr Ctrl::Impl::WhyNotAvailable(const Node& node) const {
    const Source source = GetSource();
    const bool bySource = source == Source::Manual || node.row->category == kModelDrawings;
    if (!bySource) return Lng::text(kLibraryTexts, 25950, L"The project has none");
    ustr text;
    const ustr caption = CaptionOf(source == Source::Manual ? kManual : kCurrent);
    return text.format(Lng::text(kLibraryTexts, 25949, L"Not used with \"%s\"").c_str(), caption.c_str());
}

ustr Ctrl::Impl::CaptionOf(Slot slot) const {
    const auto* const row =
        std::find_if(std::begin(kTexts), std::end(kTexts), [slot](const SlotText& text) { return text.slot == slot; });
    return row == std::end(kTexts) ? ustr() : Lng::text(kLibraryTexts, row->textId, row->text);
}

Ctrl::Impl::Node* Ctrl::Impl::Find(int id) {
    const auto found = std::find_if(nodes_.begin(), nodes_.end(), [id](const Node& node) { return node.id == id; });
    return id > 0 && found != nodes_.end() && IsOffered(*found) ? &*found : nullptr;
}

Ctrl::Impl::Node* Ctrl::Impl::NodeOf(HWND tree) {
    const auto found =
        std::find_if(nodes_.begin(), nodes_.end(), [tree](const Node& node) { return node.tree == tree; });
    return tree && found != nodes_.end() ? &*found : nullptr;
}

ItemSource Ctrl::Impl::SourceOfItems() const {
    return {state_.host, state_.flagMask, GetSource() == Source::Current};
}

void Ctrl::Impl::Fill(Node& node) {
    const gwWaitCursor wait;
    node.items->Fill(node.tree, SourceOfItems(), state_.record.data);
    node.filled = true;
    node.touched = false;
    if (TreeSearch* const search = node.items->Search()) {
        OpenIfShort(node.tree);
        if (!node.search.empty()) search->Filter(node.search);
    }
    ShowCount(node);
}

// The record has what the tree had.
void Ctrl::Impl::Invalidate(Node& node) {
    node.filled = node.touched = false;
}

void Ctrl::Impl::InvalidateOfDrawings() {
    for (Node& node : nodes_) {
        if (node.row->kind == CategoryKind::OfDrawings && node.row->category != kModelDrawings) Invalidate(node);
    }
}

// At first the user sees what is in force, or could be.
void Ctrl::Impl::SelectFirst() {
    const auto first = [this](bool inForce) {
        for (const Node& node : nodes_) {
            if (categories_.IsEnabled(node.id) && categories_.IsChecked(node.id) == inForce) return node.id;
        }
        return 0;
    };
    const int inForce = first(true);
    categories_.Select(inForce ? inForce : first(false));
}

void Ctrl::Impl::ShowSelected() {
    Node* const node = Selected();
    const bool available = node && node->tree && categories_.IsEnabled(node->id);
    if (available && !node->filled) {
        Fill(*node);
        // A host may pump messages while it fills: then the user has chosen another one, which is shown already.
        if (!Window() || Selected() != node) return;
    }
    const Showing showing(showing_);
    const bool hasItems = available && (node->items->HasItems() || !Control(kNoData));
    if (hasItems) {
        area_.Show(node->tree, node->items->Search(), node->search);
    } else {
        area_.Show(nullptr, nullptr, ustr());
    }
    const bool filter = Control(kFilter) && categories_.Selected() == state_.ids[kFilter];
    if (Control(kFilter)) state_.dlg->ShowCtrl(state_.ids[kFilter], filter);
    if (Control(kNoData)) {
        ShowNoData(node);
        state_.dlg->ShowCtrl(state_.ids[kNoData], !filter && !hasItems);
    }
}

void Ctrl::Impl::ShowNoData(const Node* node) {
    const bool disabled = node && !categories_.IsEnabled(node->id);
    const ustr text = disabled ? WhyNotAvailable(*node) : CaptionOf(kNoData);
    Lng::setdlgitemtext(Window(), state_.ids[kNoData], text, false);
}

void Ctrl::Impl::EnableSelected() {
    const int id = categories_.Selected();
    const bool group = id == largestId_ + kProjectGroup || id == largestId_ + kFilterGroup;
    const bool enable = enabled_ == EnableAll ? group || categories_.IsChecked(id)
                                              : enabled_ == PartTypesOnly && id == nodes_[kPartTypes].id;
    if (const Node* const node = Selected(); node && node->tree) area_.Enable(node->tree, enable);
    if (Control(kFilter) && id == state_.ids[kFilter]) EnableControl(kFilter, enable);
}

void Ctrl::Impl::ItemsTouched(Node& node) {
    node.touched = true;
    // Only in a mode in which the category tree is disabled can items be chosen of a category that is not in force.
    categories_.SetChecked(node.id, true);
    ShowCount(node);
}

void Ctrl::Impl::ReadCriteria() {
    Data& data = state_.record.data;
    const Source source = GetSource();
    data.bySelectionSet = source != Source::Manual;
    ReadNodes();
    data.currentDrawing = source == Source::Current;
}

void Ctrl::Impl::ReadNodes() {
    Data& data = state_.record.data;
    const ItemSource source = SourceOfItems();
    for (const Node& node : nodes_) {
        if (!IsOffered(node)) continue;
        if (node.filled) node.items->Read(source, data, node.touched);
        node.items->SetInForce(data, categories_.IsChecked(node.id));
    }
    if (Control(kFilter)) data.filterRules = filter_.Rules();
}

// Categories without a flag in the record are out of force when they are empty there. Until the record is read they are
// not emptied, and even then they come back into force with what they had.
void Ctrl::Impl::DropUnused() {
    Data& data = state_.record.data;
    for (Node& node : nodes_) {
        if (IsOffered(node) && !categories_.IsChecked(node.id)) node.items->Drop(data);
    }
    if (Control(kFilter) && !categories_.IsChecked(state_.ids[kFilter])) data.filterRules.clear();
}

void Ctrl::Impl::ShowName() {
    if (Control(kName)) gwmemotodlg(Window(), state_.ids[kName], state_.record.name.c_str(), kNameLimit, 0);
}

// A longer name that the user has left alone stays.
bool Ctrl::Impl::ReadName() {
    if (!Control(kName)) return true;
    const ustr name = gwdlgtomemo(Window(), state_.ids[kName], kNameLimit);
    if (name != Shortened(state_.record.name)) state_.record.name = name;
    return !name.empty();
}

int Ctrl::Impl::Validate() const {
    const Data& data = state_.record.data;
    if (!data.bySelectionSet || data.currentDrawing) return 0;
    if (data.useModelDrawings && !data.modelDrawings.empty()) return 0;
    if (data.useRooms && !data.rooms.empty()) return 0;
    const bool hasZones = data.useFunctionalZones && !data.functionalZones.empty();
    return hasZones || Has(kAcceptEmpty) ? 0 : state_.ids[kCurrent];
}

void Ctrl::Impl::EnableEverything() {
    LeaveForbiddenSource();
    EnableControls(true);
    EnableAllowed();
    bool anyOfProject = false;
    for (const Node& node : nodes_) {
        if (!IsOffered(node)) continue;
        const bool available = IsAvailable(node);
        categories_.SetEnabled(node.id, available);
        anyOfProject = anyOfProject || (available && node.row->kind == CategoryKind::ProjectWide);
    }
    categories_.SetEnabled(largestId_ + kProjectGroup, anyOfProject);
    ShowSelected();
    EnableSelected();
}

void Ctrl::Impl::EnableAllowed() {
    const bool hasConfiguration = SelectedConfiguration() >= 0;
    if (state_.mode == Configurations) {
        EnableControl(kDelete, hasConfiguration);
        EnableControl(kRename, hasConfiguration);
    }
    EnableControl(kManual, !state_.paperSpace && !Has(kNoManualSelection));
    EnableControl(kSelected, !Has(kCurrentDrawingOnly));
}

// The part types themselves can be chosen, whether they are in force yet or not.
void Ctrl::Impl::EnablePartTypes() {
    const Node& partTypes = nodes_[kPartTypes];
    categories_.Select(partTypes.id);
    ShowSelected();
    EnableControls(false);
    if (partTypes.tree) area_.Enable(partTypes.tree, true);
    EnableControl(kManual, !state_.paperSpace);
    EnableControl(kCurrent, true);
    EnableControl(kSelected, true);
}

void Ctrl::Impl::EnableControls(bool enable) {
    for (std::size_t slot = 0; slot < kSlotCount; ++slot)
        EnableControl(static_cast<Slot>(slot), enable);
    for (const HWND tree : area_.Trees())
        area_.Enable(tree, enable);
}

void Ctrl::Impl::EnableControl(Slot slot, bool enable) {
    if (Control(slot)) state_.dlg->EnableCtrl(state_.ids[slot], enable);
}

}  // namespace ObjectSelection::Dlg
