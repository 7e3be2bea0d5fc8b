#pragma once

#include <string>
#include <vector>

#include "host/Result.h"

namespace ochost {

/// What the user asked for on the command line; a text is empty when it was not given.
struct Options {
    bool help = false;
    std::wstring project;   ///< project file
    std::wstring dialog;    ///< name of the one dialog to open
    std::wstring language;  ///< language tag
    std::wstring tour;      ///< folder that receives the pictures
    int scale = 0;          ///< number of buildings; 0 when it was not given
};

/// Reads the arguments (without the program's name). An argument that is not understood fails as BadInput.
Result<Options> ParseCommandLine(const std::vector<std::wstring>& arguments);

/// How the program is called, with the options and the names of the dialogs.
std::wstring Usage();

}  // namespace ochost
