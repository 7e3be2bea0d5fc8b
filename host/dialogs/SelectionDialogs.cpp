#include <windows.h>

#include <commctrl.h>
#include <occommonui/ObjectSelection.h>
#include <occommonui/ObjectSelectionCmd.h>
#include <orvatool/SimpleReportOuputDlg.h>

#include "host/TourSteps.h"
#include "host/Utf.h"
#include "host/dialogs/Choose.h"
#include "host/dialogs/Families.h"
#include "host/selection/Evaluation.h"
#include "host/selection/SelectionCallback.h"
#include "host/selection/SelectionText.h"

namespace ochost {
namespace {

namespace Dlg = ObjectSelection::Dlg;

/// Managing the drawings is for one user at a time.
constexpr int kFlags = Dlg::kLockForDrawings;

/// Shows the record with what it selects: how many objects, and which.
std::vector<const PlacedObject*> ShowResult(DialogContext& context, const SelectionCallback& callback,
                                            const std::wstring& record, const ObjectSelection::Data& data) {
    auto objects = SelectedObjects(callback.Project(), data, callback.CurrentDrawing().id);
    const std::wstring result = ToText(callback.Project(), data, objects);
    context.reporter.After(record + L"\r\n" + result);
    context.reporter.Log(result.substr(0, result.find(L'\r')));
    return objects;
}

/// Edits the criteria that the application used last with `edit`, which answers whether the user confirmed, and gives
/// the objects that they select to `use`.
template <class Edit, class Use>
Outcome EditLast(DialogContext& context, SelectionCallback& callback, Edit edit, Use use) {
    ObjectSelection::Data data = callback.Last();
    context.reporter.Before(ToText(data));
    if (!edit(data)) return Outcome::Cancelled;
    const Outcome stored = StoreEntered(context, [&] { callback.Store().SetLast(data); });
    if (stored == Outcome::Confirmed) use(ShowResult(context, callback, ToText(data), data));
    return stored;
}

template <Lng::AppID app, int flags>
Outcome EditCriteria(DialogContext& context) {
    SelectionCallback callback(context.project, app, context.reporter);
    const auto edit = [&](ObjectSelection::Data& data) {
        return Dlg::Edit(app, context.parent, callback.Get(), data, flags) == 0;
    };
    return EditLast(context, callback, edit, [](const auto&) {});
}

/// The configuration that the user chooses; without a key for none.
ObjectSelection::RecordData ChooseConfiguration(DialogContext& context, SelectionCallback& callback) {
    const auto configurations = callback.Store().Configurations();
    const auto* chosen = ChooseRecord(context, L"Edit selection", L"Selection:", configurations);
    return chosen ? callback.Store().Load(chosen->key) : ObjectSelection::RecordData();
}

Outcome EditRecord(DialogContext& context) {
    SelectionCallback callback(context.project, context.app, context.reporter);
    ObjectSelection::RecordData record = ChooseConfiguration(context, callback);
    if (record.key.empty()) return Outcome::Cancelled;
    context.reporter.Before(ToText(record));
    if (Dlg::Edit(context.app, context.parent, callback.Get(), record, kFlags) != 0) return Outcome::Cancelled;
    return StoreEntered(context, [&] {
        callback.Store().Save(record);
        ShowResult(context, callback, ToText(record), record.data);
    });
}

/// Edits the first filter rule of the criteria used last, or a new one.
Outcome EditRule(DialogContext& context) {
    SelectionCallback callback(context.project, context.app, context.reporter);
    const auto edit = [&](ObjectSelection::Data& data) {
        ObjectSelection::Property rule;
        if (!data.filterRules.empty()) rule = data.filterRules.front();
        if (Dlg::Edit(context.app, context.parent, callback.Get(), rule) != 0) return false;
        if (data.filterRules.empty()) data.filterRules.emplace_back();
        data.filterRules.front() = std::move(rule);
        return true;
    };
    return EditLast(context, callback, edit, [](const auto&) {});
}

Outcome RunCommand(DialogContext& context) {
    SelectionCallback callback(context.project, context.app, context.reporter);
    ObjectSelectionCmd::Result result = ObjectSelectionCmd::ShowInReport;
    const auto edit = [&](ObjectSelection::Data& data) {
        return ObjectSelectionCmd::OptionsDlg(context.parent, context.app, callback.Get(), data, result);
    };
    return EditLast(context, callback, edit, [&](const auto& objects) {
        if (result == ObjectSelectionCmd::SelectInDrawing) return;
        if (!SimpleReportOuputDlg::Run(context.parent, ReportOf(callback.Project(), objects, context.app), {})) {
            throw Failure{FailureKind::System, L"The report could not be shown."};
        }
    });
}

// ---- tour ----

// Places in the tab order.
constexpr int kSelectedDrawings = 2;  // radio button
constexpr int kCategoryTree = 0, kItemTree = 1;
constexpr int kSearch = 0;
constexpr int kFilterList = 0;

// Rows of the category tree, for the first application.
constexpr int kRooms = 1, kPartTypes = 8, kDataFilter = 10;
// For the applications with pages.
constexpr int kPages = 2, kPartTypesOfDiagrams = 5;
// For electrical design.
constexpr int kSwitchboardAreas = 5;

/// Opens a branch of the items.
TourSteps& ShowBranch(TourSteps& steps, const wchar_t* text) {
    return steps.ClickInTree(text, kItemTree).Key(VK_RIGHT);
}

/// Shows a category and puts it in force.
TourSteps& UseCategory(TourSteps& steps, int row) {
    return steps.ClickTreeRow(row, kCategoryTree).CheckTreeRow(row, kCategoryTree);
}

// In the rule editor.
constexpr int kProperties = 0, kOperator = 0, kValue = 1, kTolerance = 2;
constexpr int kInsert = 0, kAll = 4;

/// Fills in the selected criterion. `operation` is the place in the list of operations.
TourSteps& FillCriterion(TourSteps& steps, int operation, const wchar_t* value) {
    return steps.Focus(WC_COMBOBOXW, kOperator).Key(VK_HOME).Keys(VK_DOWN, operation).Type(WC_EDITW, kValue, value);
}

/// The operations of numbers.
constexpr int kLess = 2, kGreater = 4;

/// A property, two limits that must both hold, and a tolerance.
void FillNewRule(TourSteps& steps) {
    steps.Type(WC_EDITW, kSearch, L"air flow").ClickInTree(L"Air flow", kProperties);
    FillCriterion(steps, kGreater, L"20").Press(WC_BUTTONW, kInsert);
    FillCriterion(steps, kLess, L"60").Press(WC_BUTTONW, kAll).Type(WC_EDITW, kTolerance, L"1");
}

void TourEdit(TourSteps& steps) {
    steps.Open().Press(WC_BUTTONW, kSelectedDrawings).Picture(L"drawings");
    UseCategory(steps, kRooms).CheckInTree(L"4th floor", kItemTree);
    ShowBranch(steps, L"4th floor").Picture(L"rooms");
    UseCategory(steps, kPartTypes)
        .Type(WC_EDITW, kSearch, L"diffuser 160")
        .CheckInTree(L"Air terminals", kItemTree)
        .Picture(L"search")
        .Type(WC_EDITW, kSearch, L"");
    UseCategory(steps, kDataFilter).Focus(WC_LISTVIEWW, kFilterList).Key(VK_INSERT).Open();
    FillNewRule(steps);
    steps.Confirm().Return().Picture().Confirm();
}

void TourElectrical(TourSteps& steps) {
    steps.Open();
    UseCategory(steps, kSwitchboardAreas).CheckInTree(L"SB-A04.2", kItemTree).Picture().Confirm();
}

void TourAutomation(TourSteps& steps) {
    steps.Open();
    UseCategory(steps, kPages).CheckInTree(L"3", kItemTree).Picture().Confirm();
}

void TourSchematics(TourSteps& steps) {
    steps.Open();
    UseCategory(steps, kPages).CheckInTree(L"3", kItemTree).Picture(L"pages");
    UseCategory(steps, kPartTypesOfDiagrams).CheckInTree(L"Fans", kItemTree);
    ShowBranch(steps, L"Ventilation").Picture().Confirm();
}

void TourConfigurations(TourSteps& steps) {
    constexpr int kConfigurations = 0;
    steps.Open().Choose(kConfigurations, L"Large ducts").ClickTreeRow(kPartTypes, kCategoryTree).Picture().Confirm();
}

void TourRecord(TourSteps& steps) {
    steps.Open().Picture(L"choose").Confirm().Open().ClickTreeRow(kRooms, kCategoryTree).Picture().Confirm();
}

void TourRule(TourSteps& steps) {
    steps.Open();
    FillNewRule(steps);
    steps.Picture().Confirm();
}

void TourCommand(TourSteps& steps) {
    steps.Open().Picture().Confirm().Open().Picture(L"report").Cancel();
}

constexpr wchar_t kFamily[] = L"Object selection";
constexpr auto kEditHpv = EditCriteria<Lng::Hpv, kFlags>;
constexpr auto kEditElectrical = EditCriteria<Lng::Electrical, kFlags>;
constexpr auto kEditSchematics = EditCriteria<Lng::Schematics, kFlags>;
constexpr auto kEditAutomation = EditCriteria<Lng::Automation, kFlags>;
constexpr auto kEditWithConfigurations = EditCriteria<Lng::Hpv, kFlags | Dlg::kConfigurations>;

constexpr DialogEntry kDialogs[] = {
    {kFamily, L"selection-edit",            L"Edit selection",
     L"Chooses the objects of a command by drawings, rooms, systems, part types and filter rules.",                                 kEditHpv,                TourEdit      },
    {kFamily, L"selection-edit-electrical", L"Edit selection (Electrical)",
     L"The same for electrical design, with switchboard and host areas.",                                                           kEditElectrical,         TourElectrical},
    {kFamily, L"selection-edit-schematics", L"Edit selection (Schematics)",
     L"The same for schematics, with pages, and part types that the host lists itself.",                                            kEditSchematics,
     TourSchematics                                                                                                                                                        },
    {kFamily, L"selection-edit-automation", L"Edit selection (Automation)",   L"The same for automation, with pages.",
     kEditAutomation,                                                                                                                                        TourAutomation},
    {kFamily, L"selection-configurations",  L"Selection with configurations",
     L"Chooses objects with the project's stored configurations, while the project is locked.",                                     kEditWithConfigurations,
     TourConfigurations                                                                                                                                                    },
    {kFamily, L"selection-record",          L"Named selection",               L"Edits one of the project's stored configurations.", EditRecord,
     TourRecord                                                                                                                                                            },
    {kFamily, L"selection-rule",            L"Filter rule",                   L"Edits a rule that compares a property's value.",    EditRule,                TourRule      },
    {kFamily, L"selection-command",         L"Select objects",
     L"Selects objects in the drawing, or shows them in a report to zoom from.",                                                    RunCommand,              TourCommand   },
};

}  // namespace

std::span<const DialogEntry> SelectionDialogs() {
    return kDialogs;
}

}  // namespace ochost
