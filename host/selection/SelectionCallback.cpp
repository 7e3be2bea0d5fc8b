#include "host/selection/SelectionCallback.h"

#include <windows.h>

#include <commctrl.h>
#include <orvatool/AskValueDlg.h>
#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <unordered_map>

#include "host/Utf.h"
#include "host/selection/Evaluation.h"
#include "host/selection/ObjectValues.h"
#include "host/selection/SelectionTrees.h"

namespace ochost {
namespace {

using ObjectSelection::PresetEntry;
using ObjectSelection::RecordData;
using ObjectSelection::Dlg::DrawingEntry;
using ObjectSelection::Dlg::EditorSetup;
using ObjectSelection::Dlg::PartTypeFill;
using ObjectSelection::Dlg::PropertyEntry;
using ObjectSelection::Dlg::ValueChoice;
using ObjectSelection::Dlg::ValueEntry;

constexpr std::int32_t kRoomNumber = 31;
// Their values are the same in any case.
constexpr std::int32_t kCodes[] = {1, 14, kRoomNumber, 35, 213};

/// The application that keeps its part types by code.
constexpr Lng::AppID kKeepsCodes = Lng::Schematics;

/// "Location / Coordinates"
std::wstring PathOf(const ProjectIndex& project, const PropertyGroup* group) {
    if (!group) return {};
    const std::wstring above = PathOf(project, project.propertyGroups[group->parent]);
    return above.empty() ? group->name : above + L" / " + group->name;
}

std::vector<ustr>& NamesOf(DrawingEntry& entry, AreaKind kind) {
    switch (kind) {
        case AreaKind::Page:
            return entry.pages;
        case AreaKind::Switchboard:
            return entry.switchboardAreas;
        case AreaKind::Host:
            return entry.hostAreas;
        case AreaKind::Selection:
            break;
    }
    return entry.selectionAreas;
}

const Drawing& FindCurrentDrawing(const ProjectIndex& project, Lng::AppID app) {
    const bool diagram = app == Lng::Schematics || app == Lng::Automation;
    const wchar_t* discipline = app == Lng::Electrical ? L"E" : L"V";
    std::vector<const Drawing*> candidates;
    for (const Drawing& drawing : project.content.drawings) {
        const bool isDiagram = drawing.floor == 0;
        if (isDiagram == diagram && project.disciplines[drawing.discipline]->code == discipline) {
            candidates.push_back(&drawing);
        }
    }
    if (candidates.empty()) throw Failure{FailureKind::NotFound, L"The project has no drawing to work on."};
    return *candidates[diagram ? 0 : candidates.size() / 2];
}

/// "V-A04 Ventilation, 4th floor"
std::wstring TitleOf(const Drawing& drawing) {
    return drawing.fileName.substr(0, drawing.fileName.rfind(L'.')) + L" " + drawing.title;
}

std::wstring InQuotes(const ustr& name) {
    return L"\"" + std::wstring(std::wstring_view(name)) + L"\"";
}

}  // namespace

struct SelectionCallback::Parameters {
    std::uint64_t wParam;
    std::int64_t lParam;

    // What a parameter points to.
    template <class T>
    T& W() const {
        return *reinterpret_cast<T*>(static_cast<std::uintptr_t>(wParam));
    }
    template <class T>
    T& L() const {
        return *reinterpret_cast<T*>(static_cast<std::uintptr_t>(lParam));
    }
    // Windows may be null.
    HWND WWindow() const { return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(wParam)); }
    HWND LWindow() const { return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(lParam)); }
};

// By message.
const SelectionCallback::Handler SelectionCallback::kHandlers[] = {
    &SelectionCallback::LoadConfiguration,
    &SelectionCallback::LockProject,
    &SelectionCallback::UnlockProject,
    &SelectionCallback::ManageDrawings,
    &SelectionCallback::GetLabels,
    &SelectionCallback::GetDrawings,
    &SelectionCallback::SaveConfiguration,
    &SelectionCallback::DeleteConfiguration,
    &SelectionCallback::RenameConfiguration,
    &SelectionCallback::GetCurrentDrawing,
    &SelectionCallback::HasAreas<AreaKind::Selection>,
    &SelectionCallback::HasAreas<AreaKind::Page>,
    &SelectionCallback::HasAreas<AreaKind::Switchboard>,
    &SelectionCallback::HasAreas<AreaKind::Host>,
    &SelectionCallback::GetConfigurations,
    &SelectionCallback::HasRooms,
    &SelectionCallback::GetFloorTree<RoomTree>,
    &SelectionCallback::GetFloorTree<ZoneTree>,
    &SelectionCallback::GetPropertyKind,
    &SelectionCallback::GetProperties,
    &SelectionCallback::GetPropertyName,
    &SelectionCallback::GetValueText,
    &SelectionCallback::GetTree<SystemTree>,
    &SelectionCallback::GetTree<FittingSeriesTree>,
    &SelectionCallback::GetTree<PartTypeTree>,
    &SelectionCallback::GetPropertyValues,
    &SelectionCallback::FillPartTypes,
    &SelectionCallback::ReadPartTypes,
    &SelectionCallback::SetUpEditor,
    &SelectionCallback::ChooseValue,
};

SelectionCallback::SelectionCallback(ProjectStore& project, Lng::AppID app, Reporter& reporter)
    : store_(project),
      app_(app),
      reporter_(reporter),
      project_(project),
      currentDrawing_(FindCurrentDrawing(project_, app)),
      selections_(project, app) {
    static_assert(std::size(kHandlers) == ObjectSelection::Dlg::ChooseValue + 1);
}

ObjectSelection::Dlg::Callback SelectionCallback::Get() {
    return
        [this](Message message, std::uint64_t wParam, std::int64_t lParam) { return Answer(message, wParam, lParam); };
}

std::int64_t SelectionCallback::Answer(Message message, std::uint64_t wParam, std::int64_t lParam) {
    const auto number = static_cast<std::size_t>(message);
    if (number >= std::size(kHandlers)) return 0;
    try {
        return (this->*kHandlers[number])({wParam, lParam});
    } catch (const Failure& failure) {
        reporter_.Fail(failure.message);
        throw;
    }
}

ObjectSelection::Data SelectionCallback::Last() {
    try {
        return selections_.Last();
    } catch (const Failure& failure) {
        if (failure.kind != FailureKind::Damaged) throw;
        reporter_.Log(failure.message);
        return SelectionStore::Default();
    }
}

// ---- configurations and the lock ----

std::int64_t SelectionCallback::LoadConfiguration(const Parameters& parameters) {
    auto& record = parameters.W<RecordData>();
    record = selections_.Load(record.key);
    return 0;
}

std::optional<ProjectLock> SelectionCallback::TakeLock(const Parameters& parameters) {
    Result<ProjectLock> lock = store_.Lock();
    if (!lock) {
        reporter_.Log(lock.Error().message);
        gwerrmsg(parameters.WWindow(), app_, lock.Error().message.c_str());
        return std::nullopt;
    }
    if (const auto& before = lock->TakenOverFrom()) {
        reporter_.Log(L"took over the lock that " + before->user + L" on " + before->computer + L" left behind");
    }
    return *std::move(lock);
}

std::int64_t SelectionCallback::LockProject(const Parameters& parameters) {
    std::optional<ProjectLock> lock = TakeLock(parameters);
    if (!lock) return 1;
    lock_ = std::move(lock);
    reporter_.Log(L"locked the project");
    return 0;
}

std::int64_t SelectionCallback::UnlockProject(const Parameters& /*parameters*/) {
    if (lock_) reporter_.Log(L"released the project");
    lock_.reset();
    return 0;
}

std::int64_t SelectionCallback::SaveConfiguration(const Parameters& parameters) {
    auto& record = parameters.W<RecordData>();
    selections_.Save(record);
    reporter_.Log(L"stored configuration " + ToUtf16(record.key.c_str()) + L" " + InQuotes(record.name));
    return 0;
}

std::int64_t SelectionCallback::DeleteConfiguration(const Parameters& parameters) {
    const astr key(&parameters.W<const char>());
    selections_.Delete(key);
    reporter_.Log(L"deleted configuration " + ToUtf16(key.c_str()));
    return 0;
}

std::int64_t SelectionCallback::RenameConfiguration(const Parameters& parameters) {
    const astr key(&parameters.W<const char>());
    const ustr name(&parameters.L<const wchar_t>());
    selections_.Rename(key, name);
    reporter_.Log(L"renamed configuration " + ToUtf16(key.c_str()) + L" to " + InQuotes(name));
    return 0;
}

std::int64_t SelectionCallback::GetConfigurations(const Parameters& parameters) {
    parameters.W<std::vector<PresetEntry>>() = selections_.Configurations();
    return 0;
}

// ---- drawings ----

std::int64_t SelectionCallback::ManageDrawings(const Parameters& parameters) {
    std::optional<ProjectLock> own;
    if (!lock_ && !(own = TakeLock(parameters))) return 0;
    project_.SetLeftOutDrawings(ValueOf(store_.LeftOutDrawings()));
    Id chosen = CurrentDrawing().id;
    const int row = AskValueDlg::Run(parameters.WWindow(), app_, L"Model drawings", L"Drawing to add or remove:",
                                     ModelDrawingTree(project_), chosen);
    const Drawing* drawing = row < 0 ? nullptr : project_.drawings[chosen];
    if (!drawing) return 0;
    const bool wasModel = project_.IsModelDrawing(chosen);
    Check(store_.SetModelDrawing(chosen, !wasModel));
    project_.SetLeftOutDrawings(ValueOf(store_.LeftOutDrawings()));
    reporter_.Log((wasModel ? L"removed model drawing " : L"added model drawing ") + drawing->fileName);
    return 0;
}

std::int64_t SelectionCallback::GetDrawings(const Parameters& parameters) {
    auto& entries = parameters.L<std::vector<DrawingEntry>>();
    const bool forChoice = parameters.wParam == 1;
    entries = ModelDrawings(!forChoice);
    if (forChoice) return 0;
    std::unordered_map<Id, DrawingEntry*> byId;
    for (DrawingEntry& entry : entries) {
        byId.emplace(entry.drawing.id, &entry);
        entry.layouts.emplace_back(kModelSpace);
    }
    for (const Layout& layout : project_.content.layouts) {
        if (const auto entry = byId.find(layout.drawing); entry != byId.end()) {
            entry->second->layouts.emplace_back(layout.name);
        }
    }
    for (const DrawingArea& area : project_.content.areas) {
        if (const auto entry = byId.find(area.drawing); entry != byId.end()) {
            NamesOf(*entry->second, area.kind).emplace_back(area.name);
        }
    }
    return 0;
}

/// The user may ask for names in the current drawing whether it is a model drawing or not.
std::vector<DrawingEntry> SelectionCallback::ModelDrawings(bool withCurrent) const {
    std::vector<DrawingEntry> entries;
    for (const Drawing& drawing : project_.content.drawings) {
        const bool isWanted = withCurrent && drawing.id == currentDrawing_.id;
        if (!isWanted && !project_.IsModelDrawing(drawing.id)) continue;
        DrawingEntry& entry = entries.emplace_back();
        entry.drawing = RefOf(project_, drawing);
        entry.title = std::wstring_view(TitleOf(drawing));
    }
    return entries;
}

std::int64_t SelectionCallback::GetCurrentDrawing(const Parameters& parameters) {
    parameters.L<ustr_pre<260>>() = RefOf(project_, CurrentDrawing()).path;
    return 0;
}

template <AreaKind kind>
std::int64_t SelectionCallback::HasAreas(const Parameters& /*parameters*/) {
    const auto& areas = project_.content.areas;
    return std::any_of(areas.begin(), areas.end(), [](const DrawingArea& area) { return area.kind == kind; });
}

std::int64_t SelectionCallback::GetLabels(const Parameters& parameters) {
    std::set<std::wstring> used;
    for (const PlacedObject& object : project_.content.objects)
        used.insert(object.labels.begin(), object.labels.end());
    auto& labels = parameters.W<LabelManager::Labels>();
    for (const std::wstring& label : used)
        labels.Add(ustr(label));
    return 0;
}

// ---- what objects are selected by ----

std::int64_t SelectionCallback::HasRooms(const Parameters& /*parameters*/) {
    return !project_.content.rooms.empty();
}

template <TREE_INSERTLIST (*tree)(const ProjectIndex&, Id)>
std::int64_t SelectionCallback::GetFloorTree(const Parameters& parameters) {
    auto& rows = parameters.L<TREE_INSERTLIST>();
    rows.clear();
    const Id floor = parameters.wParam == 1 ? CurrentDrawing().floor : 0;
    const bool isDiagram = parameters.wParam == 1 && floor == 0;
    if (!isDiagram) rows = tree(project_, floor);
    return 0;
}

template <TREE_INSERTLIST (*tree)(const ProjectIndex&, Lng::AppID)>
std::int64_t SelectionCallback::GetTree(const Parameters& parameters) {
    parameters.L<TREE_INSERTLIST>() = tree(project_, app_);
    return 0;
}

std::int64_t SelectionCallback::FillPartTypes(const Parameters& parameters) {
    if (app_ != kKeepsCodes) return 0;
    partTypesFilled_ = false;
    const HWND tree = parameters.WWindow();
    const gwRedrawOff quiet(tree);
    TreeView_DeleteAllItems(tree);
    if (!TreeView_GetImageList(tree, TVSIL_STATE)) gwTVaddChecks(tree);
    TREE_INSERTLIST rows = PartTypeTree(project_, app_);
    const auto& codes = parameters.L<const PartTypeFill>().data->partTypesAlt;
    std::set<astr> missing(codes.begin(), codes.end());
    std::vector<std::size_t> chosen;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const PartType* part = project_.partTypes[rows[row].value];
        if (part && missing.erase(orvaspace::ToUtf8(part->code)) > 0) chosen.push_back(row);
    }
    missingCodes_.assign(missing.begin(), missing.end());
    AddMissingCodes(rows, chosen);

    const std::vector<HTREEITEM> items = FillTree(tree, rows).items;
    std::vector<HTREEITEM> checked;
    for (const std::size_t row : chosen) {
        gwTVsetCheck(tree, items[row], kTreeChecked);
        checked.push_back(items[row]);
    }
    gwTVUpdate3StateCheckForItems(tree, checked);
    partTypesFilled_ = true;
    return 1;
}

/// What the project does not have stays until the user unchecks it.
void SelectionCallback::AddMissingCodes(TREE_INSERTLIST& rows, std::vector<std::size_t>& chosen) const {
    if (missingCodes_.empty()) return;
    rows.push_back(0, 0, Lng::NoApp, ImageLib::NoImage, Lng::text(kLibraryTexts, 25945, L"Not found"));
    std::int64_t value = 0;
    for (const astr& code : missingCodes_) {
        chosen.push_back(rows.size());
        rows.push_back(1, --value, Lng::NoApp, ImageLib::NoImage, ustr(ToUtf16(code.c_str())));
    }
    rows.finalize();
}

std::int64_t SelectionCallback::ReadPartTypes(const Parameters& parameters) {
    if (!partTypesFilled_) return 0;
    const HWND tree = parameters.WWindow();
    auto& codes = parameters.L<ObjectSelection::Data>().partTypesAlt;
    codes.clear();
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = gwTVnext(tree, item)) {
        if (gwTVgetCheck(tree, item) != kTreeChecked) continue;
        const std::int64_t value = gwTVgetData(tree, item);
        if (value < 0) codes.push_back(missingCodes_[static_cast<std::size_t>(-1 - value)]);
        if (const PartType* part = project_.partTypes[value]) codes.push_back(orvaspace::ToUtf8(part->code));
    }
    return 1;
}

// ---- properties ----

const Property* SelectionCallback::PropertyOf(std::uint64_t id) const {
    return project_.properties[static_cast<std::int32_t>(id)];
}

std::int64_t SelectionCallback::GetProperties(const Parameters& parameters) {
    auto& entries = parameters.L<std::vector<PropertyEntry>>();
    entries.clear();
    for (const Property& property : project_.content.properties) {
        PropertyEntry& entry = entries.emplace_back();
        entry.id = property.id;
        entry.name = std::wstring_view(property.name);
        entry.group = std::wstring_view(PathOf(project_, project_.propertyGroups[property.group]));
    }
    return 0;
}

std::int64_t SelectionCallback::GetPropertyKind(const Parameters& parameters) {
    const auto& properties = project_.content.properties;
    return parameters.wParam < properties.size() ? std::int64_t{KindOf(properties[parameters.wParam])} : 0;
}

std::int64_t SelectionCallback::GetPropertyName(const Parameters& parameters) {
    if (const Property* property = PropertyOf(parameters.wParam)) {
        parameters.L<ustr>() = std::wstring_view(property->name);
    }
    return 0;
}

std::int64_t SelectionCallback::GetValueText(const Parameters& parameters) {
    auto& value = parameters.L<ObjectSelection::Dlg::ValueText>();
    const Property* property = PropertyOf(parameters.wParam);
    if (property && value.value) value.text = std::wstring_view(ValueText(*property, value.value));
    return 0;
}

std::int64_t SelectionCallback::GetPropertyValues(const Parameters& parameters) {
    auto& values = parameters.L<std::vector<ValueEntry>>();
    values.clear();
    if (const Property* property = PropertyOf(parameters.wParam)) values = ValuesOf(project_, *property);
    return 0;
}

/// Counts are exact, and codes the same in any case.
std::int64_t SelectionCallback::SetUpEditor(const Parameters& parameters) {
    auto& setup = parameters.W<EditorSetup>();
    const std::int32_t id = parameters.L<const ObjectSelection::Property>().propId;
    const Property* property = project_.properties[id];
    if (!property) return 0;
    if (property->type == ValueType::Integer && property->unit.empty()) setup.offerTolerance = false;
    if (std::find(std::begin(kCodes), std::end(kCodes), id) != std::end(kCodes)) setup.offerCaseSensitive = false;
    return 0;
}

/// Rooms are chosen by floor.
std::int64_t SelectionCallback::ChooseValue(const Parameters& parameters) {
    auto& choice = parameters.W<ValueChoice>();
    if (choice.propId != kRoomNumber) return 0;
    const auto& rooms = project_.content.rooms;
    const auto proposed =
        std::find_if(rooms.begin(), rooms.end(), [&](const Room& room) { return choice.value == room.number; });
    Id chosen = proposed == rooms.end() ? 0 : proposed->id;
    if (AskValueDlg::Run(parameters.LWindow(), app_, L"Room number", L"Room:", RoomTree(project_), chosen) < 0)
        return 1;
    if (const Room* room = project_.rooms[chosen]) choice.value = std::wstring_view(room->number);
    return 1;
}

}  // namespace ochost
