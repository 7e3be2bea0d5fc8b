#include <windows.h>

#include <commctrl.h>
#include <occommonui/CustomProperty.h>

#include "host/ProjectTrees.h"
#include "host/RecordText.h"
#include "host/TourSteps.h"
#include "host/dialogs/Choose.h"
#include "host/dialogs/Families.h"

namespace ochost {
namespace {

::CustomProperty::Data ToData(const CustomProperty& property) {
    ::CustomProperty::Data data;
    data.id = property.id;
    data.name = property.name;
    data.format = property.format;
    return data;
}

CustomProperty ToRecord(const ::CustomProperty::Data& data) {
    return {static_cast<std::int32_t>(data.id), data.name.c_str(), data.format.c_str()};
}

std::wstring ToText(const ::CustomProperty::Data& data) {
    RecordText text;
    text.Line(L"id", data.id).Line(L"PropId()", data.PropId()).Line(L"name", data.name).Line(L"format", data.format);
    for (const ::CustomProperty::Format::Item& item : ::CustomProperty::Format::Parse(data.format)) {
        text.Line(item.IsText() ? L"    text" : L"    reference", ::CustomProperty::Format::Build({item}));
    }
    return text.Text();
}

/// Edits `data` and gives it to `store`, which returns the record as the project now has it or throws the Failure.
template <class Store>
Outcome Edit(DialogContext& context, ::CustomProperty::Data data, Store store) {
    const TREE_INSERTLIST properties = ValueOf(PropertyTree(context.project));
    context.reporter.Before(ToText(data));
    if (!::CustomProperty::Dlg::Options(context.parent, context.app, &properties, data)) return Outcome::Cancelled;
    return StoreEntered(context, [&] {
        const CustomProperty stored = store(ToRecord(data));
        context.reporter.After(ToText(ToData(stored)));
        context.reporter.Log(L"stored custom property " + std::to_wstring(stored.id) + L" \"" + stored.name + L"\"");
    });
}

Outcome New(DialogContext& context) {
    return Edit(context, {}, [&](const CustomProperty& property) {
        return ValueOf(context.project.CreateCustomProperty(property));
    });
}

Outcome EditExisting(DialogContext& context) {
    const auto properties = ValueOf(context.project.CustomProperties());
    const CustomProperty* chosen = ChooseRecord(context, L"Edit custom property", L"Custom property:", properties);
    if (!chosen) return Outcome::Cancelled;
    return Edit(context, ToData(*chosen), [&](const CustomProperty& property) {
        Check(context.project.UpdateCustomProperty(property));
        return property;
    });
}

void TourNew(TourSteps& steps) {
    constexpr int kName = 0, kSearch = 1;
    constexpr int kAddConstant = 1;
    steps.Open()
        .Type(WC_EDITW, kName, L"Door sign")
        .Type(WC_EDITW, kSearch, L"room n")
        .Picture(L"search")
        .DoubleClickInTree(L"Room number")
        .Press(WC_BUTTONW, kAddConstant)
        .Open()
        .Type(WC_EDITW, 0, L" – ")
        .Picture(L"constant")
        .Confirm()
        .Return()
        .DoubleClickInTree(L"Room name")
        .Type(WC_EDITW, kSearch, L"")
        .ClickInTree(L"Room area")
        .Picture()
        .Confirm();
}

void TourEdit(TourSteps& steps) {
    constexpr int kUp = 4;
    steps.Open()
        .Picture(L"choose")
        .Confirm()
        .Open()
        .DoubleClickInTree(L"Type code")
        .Press(WC_BUTTONW, kUp)
        .Picture()
        .Confirm();
}

constexpr DialogEntry kDialogs[] = {
    {L"Custom properties", L"customproperty-new",  L"New custom property",
     L"Composes a new custom property from the project's properties and from constant texts.", New,          TourNew },
    {L"Custom properties", L"customproperty-edit", L"Edit custom property",
     L"Edits one of the project's custom properties.",                                         EditExisting, TourEdit},
};

}  // namespace

std::span<const DialogEntry> CustomPropertyDialogs() {
    return kDialogs;
}

}  // namespace ochost
