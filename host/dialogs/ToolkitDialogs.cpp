#include <windows.h>

#include <commctrl.h>
#include <orvatool/AskValueDlg.h>

#include "host/ProjectTrees.h"
#include "host/RecordText.h"
#include "host/TourSteps.h"
#include "host/dialogs/Families.h"

namespace ochost {
namespace {

template <class Value>
void ShowValue(void (Reporter::*show)(const std::wstring&), DialogContext& context, const Value& value) {
    (context.reporter.*show)(RecordText().Line(L"value", value).Text());
}

/// Asks for a value; `choices` are what AskValueDlg takes between the prompt and the value.
template <class Value, class... Choices>
Outcome Ask(DialogContext& context, const wchar_t* title, const wchar_t* prompt, Value value,
            const Choices&... choices) {
    ShowValue(&Reporter::Before, context, value);
    const int answer = AskValueDlg::Run(context.parent, context.app, title, prompt, choices..., value);
    if (answer < 0) return Outcome::Cancelled;
    context.reporter.Log(L"AskValueDlg::Run: " + std::to_wstring(answer));
    ShowValue(&Reporter::After, context, value);
    return Outcome::Confirmed;
}

Outcome AskText(DialogContext& context) {
    return Ask(context, L"Project", L"Client:", ustr(ValueOf(context.project.Info()).client));
}

Outcome AskRoom(DialogContext& context) {
    const auto rooms = ValueOf(context.project.Rooms());
    ValueList choices;
    for (const Room& room : rooms)
        choices.emplace_back(room.number + L" " + room.name, room.id);
    return Ask(context, L"Rooms", L"Room:", rooms.empty() ? Id{} : rooms.front().id, choices);
}

Outcome AskDrawing(DialogContext& context) {
    return Ask(context, L"Drawings", L"Drawing:", Id{}, ValueOf(DrawingTree(context.project)));
}

void TourText(TourSteps& steps) {
    steps.Open().Type(WC_EDITW, 0, L"Kiinteistö Oy Åkerlundinkulma").Picture().Confirm();
}

void TourRoom(TourSteps& steps) {
    steps.Open().Type(WC_EDITW, 0, L"meeting").Picture().Confirm();
}

void TourDrawing(TourSteps& steps) {
    steps.Open().ClickInTree(L"V-A02.dwg").Picture().Confirm();
}

constexpr DialogEntry kDialogs[] = {
    {L"Toolkit", L"askvalue-text", L"Ask for a text",       L"Asks for the name of the project's client.",        AskText, TourText   },
    {L"Toolkit", L"askvalue-list", L"Ask for a list entry", L"Asks for one of the project's rooms.",              AskRoom, TourRoom   },
    {L"Toolkit", L"askvalue-tree", L"Ask for a tree entry", L"Asks for one of the project's drawings by folder.",
     AskDrawing,                                                                                                           TourDrawing},
};

}  // namespace

std::span<const DialogEntry> ToolkitDialogs() {
    return kDialogs;
}

}  // namespace ochost
