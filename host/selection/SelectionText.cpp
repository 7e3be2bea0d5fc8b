#include "host/selection/SelectionText.h"

#include "host/RecordText.h"
#include "host/Utf.h"

namespace ochost {
namespace {

std::wstring ToText(std::int32_t id) {
    return std::to_wstring(id);
}

std::wstring ToText(const astr& name) {
    return ToUtf16(name.c_str());
}

std::wstring ToText(const ObjectSelection::DrawingRef& drawing) {
    return drawing.id != 0 ? std::to_wstring(drawing.id) : std::wstring(std::wstring_view(drawing.path));
}

std::wstring ToText(const ObjectSelection::NameListInDwg::Entry& entry) {
    return ToText(entry.drawing) + L" " + entry.name.c_str();
}

template <class Item>
std::wstring ToText(const std::vector<Item>& items) {
    std::wstring text;
    for (const Item& item : items) {
        if (!text.empty()) text += L", ";
        text += ToText(item);
    }
    return text;
}

std::wstring ToText(const ObjectSelection::Property& rule) {
    std::wstring text = L"property " + std::to_wstring(rule.propId);
    for (const ObjectSelection::Property::Criterion& criterion : rule.criteria) {
        if (&criterion != rule.criteria.data()) text += rule.matchAll ? L" and" : L" or";
        text += L" " +
                std::wstring(std::wstring_view(ObjectSelection::Property::GetOperationTypeName(criterion.operation))) +
                L" '" + criterion.value.c_str() + L"'";
    }
    if (rule.tolerance > 0) text += L", tolerance " + std::to_wstring(rule.tolerance);
    return rule.caseSensitive ? text + L", case sensitive" : text;
}

template <class Item>
void AddList(RecordText& text, const wchar_t* member, bool inForce, const std::vector<Item>& items) {
    if (inForce || !items.empty()) text.Line(member, (inForce ? L"" : L"(not in force) ") + ToText(items));
}

void AddList(RecordText& text, const wchar_t* member, const ObjectSelection::NameListInDwg& names) {
    if (!names.IsEmpty()) text.Line(member, (names.all ? L"all; " : L"") + ToText(names.entries));
}

void AddData(RecordText& text, const ObjectSelection::Data& data) {
    text.Line(L"bySelectionSet", std::int64_t{data.bySelectionSet})
        .Line(L"currentDrawing", std::int64_t{data.currentDrawing});
    AddList(text, L"modelDrawings", data.useModelDrawings, data.modelDrawings);
    AddList(text, L"rooms", data.useRooms, data.rooms);
    AddList(text, L"functionalZones", data.useFunctionalZones, data.functionalZones);
    AddList(text, L"systems", data.useSystems, data.systems);
    AddList(text, L"fittingSeries", data.useFittingSeries, data.fittingSeries);
    AddList(text, L"partTypes", data.usePartTypes, data.partTypes);
    AddList(text, L"partTypesAlt", data.usePartTypes && !data.partTypesAlt.empty(), data.partTypesAlt);
    for (const ObjectSelection::Property& rule : data.filterRules)
        text.Line(L"    filterRule", ToText(rule));
    AddList(text, L"layouts", data.layouts);
    AddList(text, L"selectionAreas", data.selectionAreas);
    AddList(text, L"pages", data.pages);
    AddList(text, L"switchboardAreas", data.switchboardAreas);
    AddList(text, L"hostAreas", data.hostAreas);
}

}  // namespace

std::wstring ToText(const ObjectSelection::Data& data) {
    RecordText text;
    AddData(text, data);
    return text.Text();
}

std::wstring ToText(const ObjectSelection::RecordData& record) {
    RecordText text;
    text.Line(L"key", ToText(record.key)).Line(L"name", record.name);
    AddData(text, record.data);
    return text.Text();
}

}  // namespace ochost
