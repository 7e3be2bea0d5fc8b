#include <windows.h>

#include <shellapi.h>

#include <occommonui/Version.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Console.h"
#include "host/HostWindow.h"
#include "host/ProjectGenerator.h"
#include "host/Tour.h"
#include "host/Utf.h"
#include "host/Zoom.h"
#include "host/selection/SampleProject.h"

namespace ochost {
namespace {

constexpr int kUsageError = 2;

/// Reports to the console what a dialog without a host window does.
class ConsoleReporter : public UserReporter {
public:
    void Before(const std::wstring& record) override { PrintOut(L"before:\r\n" + record); }
    void After(const std::wstring& record) override {
        if (!record.empty()) PrintOut(L"after:\r\n" + record);
    }
    void Log(const std::wstring& line) override { PrintOut(line); }
};

/// For one who has started the program without a console, in a box.
void Complain(const std::wstring& message) {
    if (!PrintError(message)) ShowError(message);
}

std::vector<std::wstring> Arguments() {
    int count = 0;
    wchar_t** texts = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!texts) return {};
    std::vector<std::wstring> arguments(texts + std::min(count, 1), texts + count);
    LocalFree(texts);
    return arguments;
}

/// The sample project lies beside the program; each scale has its own.
std::wstring DefaultProject(int scale) {
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring name = scale == 1 ? L"sample.ocproject" : L"sample-" + std::to_wstring(scale) + L".ocproject";
    return std::filesystem::path(program).replace_filename(name).wstring();
}

Result<ProjectStore> OpenProject(const Options& options) {
    const int scale = std::max(options.scale, 1);
    auto project = OpenSampleProject(options.project.empty() ? DefaultProject(scale) : options.project, scale);
    if (!project || options.scale == 0) return project;
    const auto info = project->Info();
    if (!info) return info.Error();
    if (info->scale == options.scale) return project;
    return Failure{FailureKind::BadInput, project->Path() + L" was made with --scale " + std::to_wstring(info->scale)};
}

Status OpenDialogAlone(const DialogEntry& dialog, ProjectStore& project) {
    ConsoleReporter reporter;
    DialogContext context{nullptr, Lng::Hpv, project, reporter};
    LogZooms(&reporter);
    const Outcome outcome = RunDialog(dialog, context);
    LogZooms(nullptr);
    if (outcome != Outcome::Failed) return Done{};
    return Failure{FailureKind::System, std::wstring(dialog.name) + L" failed"};
}

Status OpenWindow(ProjectStore& project) {
    HostWindow window(project);
    if (!window.Open()) return Failure{FailureKind::System, L"The window did not open"};
    window.RunUntilClosed();
    return Done{};
}

Status Tour(const Options& options) {
    TourOptions tour{options.tour, options.project, std::max(options.scale, 1), {}};
    if (!options.language.empty()) tour.languages.push_back(options.language);
    if (options.language.empty()) {
        for (const ustr& language : Lng::GetLanguages())
            tour.languages.emplace_back(std::wstring_view(language));
    }
    return RunTour(tour);
}

Status Run(const Options& options) {
    if (!options.language.empty()) Lng::SetLanguage(options.language.c_str());
    if (!options.tour.empty()) return Tour(options);
    auto project = OpenProject(options);
    if (!project) return project.Error();
    const DialogEntry* dialog = FindDialog(options.dialog);
    return dialog ? OpenDialogAlone(*dialog, *project) : OpenWindow(*project);
}

/// What the command line names must exist.
Status CheckNames(const Options& options) {
    if (!options.dialog.empty() && !FindDialog(options.dialog)) {
        return Failure{FailureKind::BadInput, L"there is no dialog \"" + options.dialog + L"\""};
    }
    const std::vector<ustr> known = Lng::GetLanguages();
    const bool isKnown = options.language == Lng::kPseudoLanguage ||
                         std::find(known.begin(), known.end(), ustr(options.language)) != known.end();
    if (options.language.empty() || isKnown) return Done{};
    return Failure{FailureKind::BadInput, L"there is no language \"" + options.language + L"\""};
}

int UsageError(const Failure& failure) {
    Complain(L"ochost: " + failure.message + L"\r\n\r\n" + Usage());
    return kUsageError;
}

int Main() {
    const auto options = ParseCommandLine(Arguments());
    if (!options) return UsageError(options.Error());
    if (options->help) {
        PrintOut(Usage());
        return EXIT_SUCCESS;
    }
    if (const Status names = CheckNames(*options); !names) return UsageError(names.Error());
    if (occommonui_version_nmb(kOcCommonUiVersion) != kOcCommonUiVersion) {
        Complain(L"ochost: occommonui.dll has another version than this program was built for");
        return EXIT_FAILURE;
    }
    const Status status = Run(*options);
    if (status) return EXIT_SUCCESS;
    Complain(L"ochost: " + status.Error().message);
    return EXIT_FAILURE;
}

}  // namespace
}  // namespace ochost

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
    try {
        return ochost::Main();
    } catch (const std::exception& error) {
        ochost::Complain(L"ochost: " + ochost::ToUtf16(error.what()));
    }
    return EXIT_FAILURE;
}
