#include "host/selection/SelectionStore.h"

#include <ticpp.h>

#include <charconv>

#include "host/StoreFailures.h"
#include "host/Utf.h"
#include "host/selection/ProjectIndex.h"

namespace ochost {
namespace {

// in the file: never change
constexpr char kRoot[] = "ObjectSelection";

astr KeyOf(const StoredSelection& selection) {
    return astr(std::string_view(std::to_string(selection.id)));
}

/// 0 for what is no key.
std::int32_t IdOf(const astr& key) {
    std::int32_t id = 0;
    std::from_chars(key.begin(), key.end(), id);
    return id;
}

}  // namespace

std::wstring ToXml(const ObjectSelection::Data& data) {
    ticpp::Element element(kRoot);
    if (!data.ToXml(element)) throw Failure{FailureKind::BadInput, L"The selection cannot be stored."};
    return ToUtf16(element.AsXml({}, {}));
}

SelectionStore::SelectionStore(ProjectStore& project, Lng::AppID app) : project_(project), app_(app) {
}

std::vector<ObjectSelection::PresetEntry> SelectionStore::Configurations() const {
    std::vector<ObjectSelection::PresetEntry> entries;
    for (const StoredSelection& selection : ValueOf(project_.Selections())) {
        if (selection.app == app_ && !selection.name.empty())
            entries.push_back({KeyOf(selection), ustr(selection.name)});
    }
    return entries;
}

ObjectSelection::RecordData SelectionStore::Load(const astr& key) const {
    const StoredSelection stored = Find(key);
    ObjectSelection::RecordData record;
    record.key = key;
    record.name = std::wstring_view(stored.name);
    record.data = FromXml(stored.data);
    return record;
}

void SelectionStore::Save(ObjectSelection::RecordData& record) {
    StoredSelection stored{IdOf(record.key), app_, record.name.c_str(), ToXml(record.data)};
    if (stored.id != 0) return Check(project_.UpdateSelection(stored));
    record.key = KeyOf(ValueOf(project_.CreateSelection(std::move(stored))));
}

void SelectionStore::Rename(const astr& key, const ustr& name) {
    StoredSelection stored = Find(key);
    stored.name = name.c_str();
    Check(project_.UpdateSelection(stored));
}

void SelectionStore::Delete(const astr& key) {
    Check(project_.DeleteSelection(Find(key).id));
}

ObjectSelection::Data SelectionStore::Default() {
    ObjectSelection::Data data;
    data.bySelectionSet = true;
    data.currentDrawing = true;
    return data;
}

ObjectSelection::Data SelectionStore::Last() const {
    const StoredSelection stored = FindLast();
    return stored.id != 0 ? FromXml(stored.data) : Default();
}

void SelectionStore::SetLast(const ObjectSelection::Data& data) {
    StoredSelection stored = FindLast();
    stored.data = ToXml(data);
    if (stored.id != 0) return Check(project_.UpdateSelection(stored));
    stored.app = app_;
    ValueOf(project_.CreateSelection(std::move(stored)));
}

StoredSelection SelectionStore::Find(const astr& key) const {
    for (StoredSelection& selection : ValueOf(project_.Selections())) {
        if (selection.app == app_ && !selection.name.empty() && KeyOf(selection) == key) return std::move(selection);
    }
    throw RemovedRecord(L"configuration");
}

/// With an id of 0 when there is none.
StoredSelection SelectionStore::FindLast() const {
    for (StoredSelection& selection : ValueOf(project_.Selections())) {
        if (selection.app == app_ && selection.name.empty()) return std::move(selection);
    }
    return {};
}

ObjectSelection::Data SelectionStore::FromXml(const std::wstring& xml) const {
    ObjectSelection::Data data;
    try {
        ticpp::Document document;
        document.Parse(ToUtf8(xml));
        if (data.FromXml(QBaseDb(project_.Path().c_str()), *document.FirstChildElement())) return data;
    } catch (const ticpp::Exception&) {
        // Answered like a selection of a newer format.
    }
    throw Failure{FailureKind::Damaged, L"The selection cannot be read. It may be of a newer version."};
}

}  // namespace ochost
