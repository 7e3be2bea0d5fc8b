#pragma once

#include <string_view>

namespace ochost {

// The output of a program of the window subsystem: to the file or pipe that it was started with, else to the console
// that it was started from, else nowhere. Each call writes a line.
void PrintOut(std::wstring_view line);
void PrintError(std::wstring_view line);

}  // namespace ochost
