#pragma once

#include <occommonui/ObjectSelection.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "host/DialogCatalog.h"
#include "host/selection/ProjectIndex.h"
#include "host/selection/SelectionStore.h"

namespace ochost {

/// What the host answers to the object selection's dialogs, from the project.
///
/// What the project cannot give or store is reported and thrown as a Failure; a refused lock is told to the user.
class SelectionCallback {
public:
    /// For dialogs of `app`. Project and reporter must outlive the object. Throws the Failure when the project cannot
    /// be read or has no drawing to work on.
    SelectionCallback(ProjectStore& project, Lng::AppID app, Reporter& reporter);
    SelectionCallback(const SelectionCallback&) = delete;
    SelectionCallback& operator=(const SelectionCallback&) = delete;

    /// The callback for a dialog, which must not outlive the object.
    ObjectSelection::Dlg::Callback Get();

    const ProjectIndex& Project() const { return project_; }
    SelectionStore& Store() { return selections_; }
    /// The criteria used last, to begin a dialog with: the default, and a line in the log, when they cannot be read.
    ObjectSelection::Data Last();
    /// The drawing that the user works on: of the middle floor, or the first diagram for applications that draw those.
    const Drawing& CurrentDrawing() const { return currentDrawing_; }

private:
    using Message = ObjectSelection::Dlg::CbMsgId;
    struct Parameters;
    using Handler = std::int64_t (SelectionCallback::*)(const Parameters&);
    static const Handler kHandlers[];

    std::int64_t Answer(Message message, std::uint64_t wParam, std::int64_t lParam);

    std::int64_t LoadConfiguration(const Parameters& parameters);
    std::int64_t LockProject(const Parameters& parameters);
    std::int64_t UnlockProject(const Parameters& parameters);
    std::int64_t ManageDrawings(const Parameters& parameters);
    std::int64_t GetLabels(const Parameters& parameters);
    std::int64_t GetDrawings(const Parameters& parameters);
    std::int64_t SaveConfiguration(const Parameters& parameters);
    std::int64_t DeleteConfiguration(const Parameters& parameters);
    std::int64_t RenameConfiguration(const Parameters& parameters);
    std::int64_t GetCurrentDrawing(const Parameters& parameters);
    template <AreaKind kind>
    std::int64_t HasAreas(const Parameters& parameters);
    std::int64_t GetConfigurations(const Parameters& parameters);
    std::int64_t HasRooms(const Parameters& parameters);
    template <TREE_INSERTLIST (*tree)(const ProjectIndex&, Id)>
    std::int64_t GetFloorTree(const Parameters& parameters);
    std::int64_t GetPropertyKind(const Parameters& parameters);
    std::int64_t GetProperties(const Parameters& parameters);
    std::int64_t GetPropertyName(const Parameters& parameters);
    std::int64_t GetValueText(const Parameters& parameters);
    template <TREE_INSERTLIST (*tree)(const ProjectIndex&, Lng::AppID)>
    std::int64_t GetTree(const Parameters& parameters);
    std::int64_t GetPropertyValues(const Parameters& parameters);
    std::int64_t FillPartTypes(const Parameters& parameters);
    std::int64_t ReadPartTypes(const Parameters& parameters);
    std::int64_t SetUpEditor(const Parameters& parameters);
    std::int64_t ChooseValue(const Parameters& parameters);

    /// The project's lock; nothing when it is refused, which the user has been told.
    std::optional<ProjectLock> TakeLock(const Parameters& parameters);
    std::vector<ObjectSelection::Dlg::DrawingEntry> ModelDrawings(bool withCurrent) const;
    void AddMissingCodes(TREE_INSERTLIST& rows, std::vector<std::size_t>& chosen) const;
    /// The property of that id; null for one that the project does not have.
    const Property* PropertyOf(std::uint64_t id) const;

    ProjectStore& store_;
    const Lng::AppID app_;
    Reporter& reporter_;
    ProjectIndex project_;
    const Drawing& currentDrawing_;
    SelectionStore selections_;
    std::optional<ProjectLock> lock_;
    bool partTypesFilled_ = false;    // the tree of part types has what FillPartTypes has put there
    std::vector<astr> missingCodes_;  // in the tree of part types, with the values -1, -2 ...
};

}  // namespace ochost
