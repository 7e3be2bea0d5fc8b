#pragma once

#include <string>
#include <string_view>

#include "host/DialogCatalog.h"

namespace ochost {

/// Writes a line to the standard output or error stream; to the console that the program was started from when it was
/// given none. False when there is neither: then nothing is written.
bool PrintOut(std::wstring_view line);
bool PrintError(std::wstring_view line);

/// Shows the user what failed, above the window that he works in, until he has confirmed it.
void ShowError(const std::wstring& message);

/// What also shows the user why something failed.
class UserReporter : public Reporter {
public:
    void Fail(const std::wstring& message) override;
    bool FailOrRetry(const std::wstring& message) override;
};

}  // namespace ochost
