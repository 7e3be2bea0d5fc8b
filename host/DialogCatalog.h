#pragma once

#include <windows.h>

#include <orvatool/Lng.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/ProjectStore.h"

namespace ochost {

class TourSteps;

/// Receives what a dialog's caller has to tell: the record before and after, and what happened, as lines of text.
class Reporter {
public:
    virtual ~Reporter() = default;
    virtual void Before(const std::wstring& record) = 0;
    virtual void After(const std::wstring& record) = 0;
    virtual void Log(const std::wstring& line) = 0;
    /// Why something failed: complete and meant for the user. Where there is one, it is shown to him, too.
    virtual void Fail(const std::wstring& message) { Log(message); }
    /// The same for what may succeed when it is tried again: whether the user wants that.
    virtual bool FailOrRetry(const std::wstring& message) {
        Log(message);
        return false;
    }
};

/// What a dialog is opened with.
struct DialogContext {
    HWND parent;  ///< may be null
    Lng::AppID app;
    ProjectStore& project;
    Reporter& reporter;
};

enum class Outcome { Confirmed, Cancelled, Failed };

/// A dialog that the host can open. Adding one is a row in its family's table in host/dialogs.
struct DialogEntry {
    const wchar_t* family;
    const wchar_t* name;             ///< on the command line and in the names of pictures
    const wchar_t* title;            ///< in the host's list
    const wchar_t* shows;            ///< one sentence
    Outcome (*run)(DialogContext&);  ///< may throw a Failure
    void (*tour)(TourSteps&);        ///< adds the steps of a user who fills the dialog and confirms it
};

/// Every dialog, family by family.
const std::vector<DialogEntry>& AllDialogs();

/// The dialog of that name; null for none.
const DialogEntry* FindDialog(std::wstring_view name);

/// Opens the dialog and logs what came of it. What it throws is reported as a failure.
Outcome RunDialog(const DialogEntry& dialog, DialogContext& context);

/// Stores with `store` what the user has entered: until it succeeds, or he does not want to try it again. What cannot
/// succeed later either is thrown on.
template <class Store>
Outcome StoreEntered(DialogContext& context, Store store) {
    for (;;) {
        try {
            store();
            return Outcome::Confirmed;
        } catch (const Failure& failure) {
            if (failure.kind == FailureKind::NotFound || failure.kind == FailureKind::BadInput) throw;
            if (!context.reporter.FailOrRetry(failure.message)) return Outcome::Failed;
        }
    }
}

}  // namespace ochost
