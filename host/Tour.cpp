#include "host/Tour.h"

#include <windows.h>

#include <orvatool/InterApp.h>
#include <orvatool/Lng.h>

#include <filesystem>
#include <system_error>

#include "host/Console.h"
#include "host/HostWindow.h"
#include "host/TourPage.h"
#include "host/TourSteps.h"
#include "host/Utf.h"
#include "host/driver/UiDriver.h"
#include "host/selection/SampleProject.h"

namespace ochost {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kTourSettings[] = L"Software\\OrvaCAD\\SampleHostTour";
constexpr wchar_t kTourProject[] = L"tour.ocproject";

Failure Failed(const std::wstring& what) {
    return {FailureKind::System, L"The tour failed: " + what};
}

/// Windows appear at their first places and sizes, in every run.
void UseFreshSettings() {
    RegDeleteTreeW(HKEY_CURRENT_USER, kTourSettings);
    SetProductKey(kTourSettings);
}

Result<ProjectStore> OpenProject(const TourOptions& options) {
    if (!options.project.empty()) return OpenSampleProject(options.project, options.scale);
    const fs::path file = fs::path(options.folder) / kTourProject;
    for (const wchar_t* suffix : {L"", L"-wal", L"-shm"}) {
        std::error_code ignored;
        fs::remove(fs::path(file).concat(suffix), ignored);
    }
    return OpenSampleProject(file.wstring(), options.scale);
}

/// The tour of one language.
class LanguageTour {
public:
    LanguageTour(const TourOptions& options, std::wstring language, ProjectStore& project)
        : options_(options), language_(std::move(language)), window_(project) {}

    Status Run() {
        if (!window_.Open()) return Failed(L"the host window did not open");
        for (const DialogEntry& dialog : AllDialogs()) {
            if (const Status shown = Show(dialog); !shown) return shown.Error();
            const bool isFirst = &dialog == &AllDialogs().front();
            if (isFirst && !TakePicture(kHostPicture, window_.hWnd(), {})) return Failed(L"no picture of the host");
        }
        PrintOut(language_ + L": " + std::to_wstring(pictures_) + L" pictures");
        return Done{};
    }

private:
    Status Show(const DialogEntry& dialog) {
        uidriver::Script script;
        TourSteps steps(script, fs::absolute(options_.folder).wstring(),
                        [&](HWND window, const std::wstring& part) { return TakePicture(dialog.name, window, part); });
        dialog.tour(steps);
        script.Start();
        const Outcome outcome = window_.Run(dialog);
        script.RunToEnd();
        const std::wstring where = std::wstring(dialog.name) + L" in " + language_ + L": ";
        if (!script.Failure().empty()) return Failed(where + ToUtf16(script.Failure()));
        if (!script.Finished()) return Failed(where + L"the dialog closed before its time");
        if (outcome != Outcome::Confirmed) return Failed(where + L"the dialog was not confirmed");
        return Done{};
    }

    bool TakePicture(const std::wstring& dialog, HWND window, const std::wstring& part) {
        const fs::path file = fs::path(options_.folder) / PictureName(dialog, part, language_, window_.GetDpi());
        ++pictures_;
        return uidriver::SavePng(window, file.wstring());
    }

    const TourOptions& options_;
    const std::wstring language_;
    HostWindow window_;
    int pictures_ = 0;
};

}  // namespace

Status RunTour(const TourOptions& options) {
    std::error_code error;
    fs::create_directories(options.folder, error);
    if (!fs::is_directory(options.folder, error)) return Failed(L"the folder " + options.folder + L" cannot be made");
    UseFreshSettings();
    for (const std::wstring& language : options.languages) {
        Lng::SetLanguage(language.c_str());
        Result<ProjectStore> project = OpenProject(options);
        if (!project) return project.Error();
        if (const Status toured = LanguageTour(options, language, *project).Run(); !toured) return toured.Error();
    }
    return WriteTourPage(options.folder);
}

}  // namespace ochost
