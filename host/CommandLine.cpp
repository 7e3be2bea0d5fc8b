#include "host/CommandLine.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

#include "host/DialogCatalog.h"
#include "host/ProjectGenerator.h"

namespace ochost {
namespace {

Failure Refused(const std::wstring& why) {
    return {FailureKind::BadInput, why};
}

Status SetScale(Options& options, const std::wstring& value) {
    wchar_t* end = nullptr;
    const long scale = std::wcstol(value.c_str(), &end, 10);
    if (value.empty() || *end || scale < 1 || scale > kMaxScale) {
        return Refused(L"--scale needs a number from 1 to " + std::to_wstring(kMaxScale) + L", not \"" + value + L"\"");
    }
    options.scale = static_cast<int>(scale);
    return Done{};
}

template <std::wstring Options::*member>
Status SetText(Options& options, const std::wstring& value) {
    options.*member = value;
    return Done{};
}

Status SetHelp(Options& options, const std::wstring&) {
    options.help = true;
    return Done{};
}

struct OptionRow {
    const wchar_t* name;
    const wchar_t* value;  // what follows the name; null: nothing does
    const wchar_t* meaning;
    Status (*set)(Options&, const std::wstring& value);
};

static_assert(kMaxScale == 200);  // as the help tells
constexpr OptionRow kOptions[] = {
    {L"--project",  L"FILE", L"works on this project; it is made when it does not exist",       SetText<&Options::project>},
    {L"--scale",    L"N",    L"makes a new project N times as large (1 to 200)",                SetScale                  },
    {L"--dialog",   L"NAME", L"opens this dialog alone",                                        SetText<&Options::dialog> },
    {L"--language", L"TAG",  L"language of the texts (en, fi, ...); the user's own by default",
     SetText<&Options::language>                                                                                          },
    {L"--tour",     L"DIR",  L"opens and fills every dialog and puts pictures of them in DIR",  SetText<&Options::tour>   },
    {L"--help",     nullptr, L"shows this text",                                                SetHelp                   },
};

std::wstring Padded(std::wstring text, std::size_t width) {
    text.resize(std::max(width, text.size() + 2), L' ');
    return L"  " + text;
}

std::wstring Line(const std::wstring& left, const wchar_t* right) {
    return Padded(left, 26) + right + L"\r\n";
}

}  // namespace

Result<Options> ParseCommandLine(const std::vector<std::wstring>& arguments) {
    Options options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const auto row = std::find_if(std::begin(kOptions), std::end(kOptions),
                                      [&](const OptionRow& option) { return *argument == option.name; });
        if (row == std::end(kOptions)) return Refused(L"unknown argument \"" + *argument + L"\"");
        std::wstring value;
        if (row->value) {
            if (++argument == arguments.end() || argument->empty()) {
                return Refused(std::wstring(row->name) + L" needs a value: " + row->value);
            }
            value = *argument;
        }
        if (const Status set = row->set(options, value); !set) return set.Error();
    }
    if (!options.tour.empty() && !options.dialog.empty()) return Refused(L"--tour and --dialog exclude each other");
    return options;
}

std::wstring Usage() {
    std::wstring text = L"The sample host of the OrvaCAD dialogs.\r\n\r\nusage: ochost [option ...]\r\n\r\n";
    for (const OptionRow& row : kOptions) {
        text += Line(row.value ? std::wstring(row.name) + L" " + row.value : row.name, row.meaning);
    }
    text += L"\r\nThe dialogs:\r\n";
    for (const DialogEntry& dialog : AllDialogs())
        text += Line(dialog.name, dialog.shows);
    text.resize(text.size() - 2);
    return text;
}

}  // namespace ochost
