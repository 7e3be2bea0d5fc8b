#pragma once

#include <orvatool/Lng.h>
#include <orvatool/ObjectSelection.h>
#include <orvatool/QBaseDb.h>

#include <string>
#include <vector>

#include "host/ProjectStore.h"

namespace ochost {

/// The selections that a project keeps for an application: named configurations, and the criteria used last. What
/// cannot be done is thrown as a Failure.
class SelectionStore {
public:
    /// `project` must outlive the object.
    SelectionStore(ProjectStore& project, Lng::AppID app);

    std::vector<ObjectSelection::PresetEntry> Configurations() const;
    /// The configuration of that key.
    ObjectSelection::RecordData Load(const astr& key) const;
    /// Stores a configuration; one without a key is new and gets its key.
    void Save(ObjectSelection::RecordData& record);
    void Rename(const astr& key, const ustr& name);
    void Delete(const astr& key);

    /// What an application starts with: a selection of the current drawing.
    static ObjectSelection::Data Default();
    /// The criteria used last; the default when there are none.
    ObjectSelection::Data Last() const;
    void SetLast(const ObjectSelection::Data& data);

private:
    StoredSelection Find(const astr& key) const;
    StoredSelection FindLast() const;
    ObjectSelection::Data FromXml(const std::wstring& xml) const;

    ProjectStore& project_;
    const Lng::AppID app_;
};

/// The selection as XML text.
std::wstring ToXml(const ObjectSelection::Data& data);

}  // namespace ochost
