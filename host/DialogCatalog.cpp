#include "host/DialogCatalog.h"

#include <algorithm>
#include <exception>

#include "host/Utf.h"
#include "host/dialogs/Families.h"

namespace ochost {
namespace {

constexpr std::span<const DialogEntry> (*kFamilies[])() = {
    CustomPropertyDialogs, ReportDialogs, SelectionDialogs, UpdateDwgDialogs, ToolkitDialogs,
};

const wchar_t* Name(Outcome outcome) {
    switch (outcome) {
        case Outcome::Confirmed:
            return L"confirmed";
        case Outcome::Cancelled:
            return L"cancelled";
        case Outcome::Failed:
            break;
    }
    return L"failed";
}

Outcome Run(const DialogEntry& dialog, DialogContext& context) {
    try {
        return dialog.run(context);
    } catch (const Failure& failure) {
        context.reporter.Fail(failure.message);
    } catch (const std::exception& error) {
        context.reporter.Fail(ToUtf16(error.what()));
    }
    return Outcome::Failed;
}

}  // namespace

const std::vector<DialogEntry>& AllDialogs() {
    static const std::vector<DialogEntry> dialogs = [] {
        std::vector<DialogEntry> all;
        for (const auto family : kFamilies) {
            const std::span<const DialogEntry> rows = family();
            all.insert(all.end(), rows.begin(), rows.end());
        }
        return all;
    }();
    return dialogs;
}

const DialogEntry* FindDialog(std::wstring_view name) {
    const auto& dialogs = AllDialogs();
    const auto found =
        std::find_if(dialogs.begin(), dialogs.end(), [&](const DialogEntry& dialog) { return dialog.name == name; });
    return found == dialogs.end() ? nullptr : &*found;
}

Outcome RunDialog(const DialogEntry& dialog, DialogContext& context) {
    context.reporter.Log(std::wstring(dialog.name) + L": open");
    context.reporter.After(L"");
    const Outcome outcome = Run(dialog, context);
    context.reporter.Log(std::wstring(dialog.name) + L": " + Name(outcome));
    return outcome;
}

}  // namespace ochost
