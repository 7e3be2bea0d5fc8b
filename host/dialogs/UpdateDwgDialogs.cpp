#include <windows.h>

#include <commctrl.h>
#include <occommonui/UpdateDwgData.h>

#include "host/ProjectTrees.h"
#include "host/RecordText.h"
#include "host/TourSteps.h"
#include "host/dialogs/Families.h"
#include "host/selection/Evaluation.h"
#include "host/selection/SelectionCallback.h"
#include "host/selection/SelectionText.h"

namespace ochost {
namespace {

std::wstring TextOf(const UpdateDwgData::Options& options) {
    std::wstring ids;
    for (const long id : options.properties)
        ids += (ids.empty() ? L"" : L", ") + std::to_wstring(id);
    return RecordText().Line(L"properties", ids).Line(L"flagMask", std::int64_t{options.flagMask}).Text() +
           ToText(options.selection);
}

/// The properties below their groups; the data of a property is its id.
TREE_INSERTLIST2 Items(const ProjectStore& project) {
    TREE_INSERTLIST2 items;
    for (const TREE_INSERTITEM& row : ValueOf(PropertyTree(project))) {
        TREE_INSERTITEM2 item;
        static_cast<TREE_INSERTITEM&>(item) = row;
        item.data = row.value;
        items.push_back(item);
    }
    items.finalize();
    return items;
}

/// What comes from the rooms and the drawings is known of objects only that the project selects.
bool NeedsSelectionSet(const ProjectIndex& project, std::int64_t id) {
    const Property* property = project.properties[id];
    const PropertyGroup* group = property ? project.propertyGroups[property->group] : nullptr;
    while (group && group->parent != 0)
        group = project.propertyGroups[group->parent];
    return group && group->name == L"Location";
}

/// The project's database, in which the dialog keeps its sets.
QBaseDb OpenDatabase(const ProjectStore& project) {
    QBaseDb database(project.Path().c_str());
    if (database.GetStatus() == QBaseDb::Status::Open) return database;
    throw Failure{FailureKind::System, std::wstring(std::wstring_view(database.GetErrorText()))};
}

Outcome UpdateDrawings(DialogContext& context) {
    SelectionCallback callback(context.project, context.app, context.reporter);
    const QBaseDb database = OpenDatabase(context.project);
    const TREE_INSERTLIST2 items = Items(context.project);
    const auto answer = [&](UpdateDwgData::Dlg::MsgId message, std::uint64_t wParam, std::int64_t) -> std::int64_t {
        return message == UpdateDwgData::Dlg::NeedsSelectionSet &&
               NeedsSelectionSet(callback.Project(), static_cast<std::int64_t>(wParam));
    };
    UpdateDwgData::Options options;
    options.selection = callback.Last();
    context.reporter.Before(TextOf(options));
    if (!UpdateDwgData::OptionsDlg(context.parent, context.app, options, &items, database, callback.Get(), answer)) {
        return Outcome::Cancelled;
    }
    const auto objects = SelectedObjects(callback.Project(), options.selection, callback.CurrentDrawing().id);
    context.reporter.After(TextOf(options) + L"\r\n" + ToText(callback.Project(), options.selection, objects));
    context.reporter.Log(L"updated " + std::to_wstring(options.properties.size()) + L" properties of " +
                         (options.selection.bySelectionSet ? std::to_wstring(objects.size()) + L" objects"
                                                           : L"the objects that the user picks"));
    return Outcome::Confirmed;
}

void TourUpdate(TourSteps& steps) {
    steps.Open().Choose(0, L"Air flows and sizes").Picture().Confirm();
}

constexpr DialogEntry kDialogs[] = {
    {L"Project data", L"update-dwg", L"Update drawing data",
     L"Chooses which properties are updated in which objects, with the project's stored sets.", UpdateDrawings,
     TourUpdate},
};

}  // namespace

std::span<const DialogEntry> UpdateDwgDialogs() {
    return kDialogs;
}

}  // namespace ochost
