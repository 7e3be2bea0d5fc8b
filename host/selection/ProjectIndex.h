#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/DrawingPaths.h"
#include "host/ProjectStore.h"

namespace ochost {

/// The records of a list by id. The list must stay as it is.
template <class R>
class RecordIndex {
public:
    explicit RecordIndex(const std::vector<R>& records) {
        records_.reserve(records.size());
        for (const R& record : records)
            records_.emplace(record.id, &record);
    }

    /// Null for an id of 0, or that the project does not have.
    const R* operator[](Id id) const {
        const auto found = records_.find(id);
        return found == records_.end() ? nullptr : found->second;
    }

private:
    std::unordered_map<Id, const R*> records_;
};

/// A project as it was at one moment, to look things up in.
class ProjectIndex {
public:
    /// Throws the Failure when the project cannot be read.
    explicit ProjectIndex(const ProjectStore& project);
    ProjectIndex(const ProjectIndex&) = delete;
    ProjectIndex& operator=(const ProjectIndex&) = delete;

    const ProjectContent content;
    const RecordIndex<Discipline> disciplines{content.disciplines};
    const RecordIndex<Floor> floors{content.floors};
    const RecordIndex<Drawing> drawings{content.drawings};
    const RecordIndex<Layout> layouts{content.layouts};
    const RecordIndex<DrawingArea> areas{content.areas};
    const RecordIndex<Zone> zones{content.zones};
    const RecordIndex<Room> rooms{content.rooms};
    const RecordIndex<System> systems{content.systems};
    const RecordIndex<PartGroup> partGroups{content.partGroups};
    const RecordIndex<PartType> partTypes{content.partTypes};
    const RecordIndex<PropertyGroup> propertyGroups{content.propertyGroups};
    const RecordIndex<Property> properties{content.properties};
    const DrawingPaths paths;

    bool IsModelDrawing(Id drawing) const { return !leftOut_.contains(drawing); }
    /// Follows a change of the model drawings: what of the project changes while it is looked at.
    void SetLeftOutDrawings(const std::vector<LeftOutDrawing>& leftOut);

private:
    std::unordered_set<Id> leftOut_;
};

}  // namespace ochost
