#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <objidl.h>
#include <occommonui/ReportTemplate.h>
#include <orvasql/Sqlite.h>
#include <orvatool/InterApp.h>
#include <orvatool/Lng.h>
#include <shellapi.h>

#include <gdiplus.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/DialogCatalog.h"
#include "host/HostWindow.h"
#include "host/ProjectGenerator.h"
#include "host/ProjectStore.h"
#include "host/ReportDefinitions.h"
#include "host/TourPage.h"
#include "host/Utf.h"
#include "host/driver/UiDriver.h"
#include "host/host_ids.h"
#include "host/selection/Evaluation.h"
#include "host/selection/SampleProject.h"
#include "host/selection/SelectionCallback.h"
#include "resources/objectselection_ids.h"
#include "resources/project_ids.h"
#include "resources/report_ids.h"
#include "support/FullReport.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr DWORD kPatienceMs = 100'000;

struct ProcessResult {
    DWORD exitCode = 0;
    std::string out;
    std::string error;
};

std::string Content(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

HANDLE OutputFile(const fs::path& file) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
}

/// A folder that is gone with the test, and the program run with its output there.
class HostTest : public testing::Test {
protected:
    HostTest() {
        wchar_t temp[MAX_PATH] = L"";
        GetTempPathW(MAX_PATH, temp);
        folder_ = fs::path(temp) / (L"ochost-test-" + std::to_wstring(GetCurrentProcessId()));
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    ~HostTest() override {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    fs::path In(const wchar_t* name) const { return folder_ / name; }

    /// Starts the program, lets `use` do what a user does meanwhile, and waits for its end. Without output it is like
    /// a program that a user starts from his desktop.
    ProcessResult Start(const std::vector<std::wstring>& arguments,
                        const std::function<void(const PROCESS_INFORMATION&)>& use = nullptr,
                        bool withOutput = true) const {
        const PROCESS_INFORMATION process = Launch(arguments, withOutput);
        if (use) use(process);
        if (WaitForSingleObject(process.hProcess, kPatienceMs) != WAIT_OBJECT_0) TerminateProcess(process.hProcess, 99);
        WaitForSingleObject(process.hProcess, INFINITE);
        ProcessResult result;
        GetExitCodeProcess(process.hProcess, &result.exitCode);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        result.out = Content(In(L"out.txt"));
        result.error = Content(In(L"error.txt"));
        return result;
    }

private:
    PROCESS_INFORMATION Launch(const std::vector<std::wstring>& arguments, bool withOutput) const {
        std::wstring command = L"ochost.exe";
        for (const std::wstring& argument : arguments)
            command += L" \"" + argument + L"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = OutputFile(In(L"out.txt"));
        startup.hStdError = OutputFile(In(L"error.txt"));
        STARTUPINFOW bare{};
        bare.cb = sizeof(bare);
        PROCESS_INFORMATION process{};
        const BOOL started =
            CreateProcessW(nullptr, command.data(), nullptr, nullptr, withOutput, withOutput ? 0 : DETACHED_PROCESS,
                           nullptr, nullptr, withOutput ? &startup : &bare, &process);
        CloseHandle(startup.hStdOutput);
        CloseHandle(startup.hStdError);
        if (!started) throw std::runtime_error("ochost.exe does not start");
        return process;
    }

    fs::path folder_;
};

/// The dialog that the process shows, as soon as it does; null when the process ends or shows none for too long.
HWND ShownDialog(const PROCESS_INFORMATION& process) {
    constexpr int kLooks = 500;
    constexpr DWORD kLookMs = 20;
    for (int i = 0; i < kLooks && WaitForSingleObject(process.hProcess, kLookMs) == WAIT_TIMEOUT; ++i) {
        HWND dlg = nullptr;
        const auto isDialog = [](HWND window, LPARAM result) -> BOOL {
            if (!IsWindowVisible(window)) return TRUE;
            *reinterpret_cast<HWND*>(result) = window;
            return FALSE;
        };
        EnumThreadWindows(process.dwThreadId, isDialog, reinterpret_cast<LPARAM>(&dlg));
        if (dlg) return dlg;
    }
    return nullptr;
}

void CloseShownDialog(const PROCESS_INFORMATION& process) {
    const HWND dlg = ShownDialog(process);
    EXPECT_TRUE(dlg);
    PostMessageW(dlg, WM_CLOSE, 0, 0);
}

std::set<std::string> Pictures(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& file : fs::directory_iterator(folder)) {
        if (file.path().extension() == ".png") names.insert(file.path().filename().string());
    }
    return names;
}

/// How many colours a grid of points of the picture shows; 0 for a file that is no picture.
std::size_t ColoursOf(const fs::path& file) {
    ULONG_PTR token = 0;
    const Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok) return 0;
    std::set<Gdiplus::ARGB> colours;
    {
        Gdiplus::Bitmap picture(file.c_str());
        for (UINT y = 0; y < picture.GetHeight(); y += 7) {
            for (UINT x = 0; x < picture.GetWidth(); x += 3) {
                Gdiplus::Color colour;
                if (picture.GetPixel(static_cast<INT>(x), static_cast<INT>(y), &colour) == Gdiplus::Ok) {
                    colours.insert(colour.GetValue());
                }
            }
        }
    }
    Gdiplus::GdiplusShutdown(token);
    return colours.size();
}

std::vector<ochost::CustomProperty> CustomPropertiesIn(const fs::path& project) {
    const auto store = ochost::ProjectStore::Open(project.wstring());
    if (!store) return {};
    const auto properties = store->CustomProperties();
    return properties ? *properties : std::vector<ochost::CustomProperty>();
}

TEST_F(HostTest, HelpNamesEveryOptionAndDialog) {
    const ProcessResult help = Start({L"--help"});
    EXPECT_EQ(help.exitCode, 0u);
    EXPECT_EQ(help.error, "");
    for (const char* option : {"--project", "--scale", "--dialog", "--language", "--tour", "--help"}) {
        EXPECT_TRUE(Contains(help.out, option)) << option;
    }
    for (const ochost::DialogEntry& dialog : ochost::AllDialogs()) {
        EXPECT_TRUE(Contains(help.out, ochost::ToUtf8(dialog.name))) << dialog.name;
    }
}

TEST_F(HostTest, RefusesWhatItDoesNotUnderstandAndSaysWhy) {
    const struct {
        std::vector<std::wstring> arguments;
        const char* reason;
    } cases[] = {
        {{L"--nonsense"},                                  "--nonsense"             },
        {{L"stray"},                                       "stray"                  },
        {{L"--project"},                                   "--project needs a value"},
        {{L"--scale", L"0"},                               "--scale needs a number" },
        {{L"--scale", L"2x"},                              "--scale needs a number" },
        {{L"--dialog", L"no-such-dialog"},                 "no-such-dialog"         },
        {{L"--language", L"xx"},                           "xx"                     },
        {{L"--tour", L"a", L"--dialog", L"askvalue-text"}, "exclude"                },
    };
    for (const auto& refused : cases) {
        std::vector<std::wstring> arguments = refused.arguments;
        arguments.insert(arguments.begin(), {L"--project", In(L"untouched").wstring()});
        const ProcessResult run = Start(arguments);
        EXPECT_EQ(run.exitCode, 2u) << refused.reason;
        EXPECT_TRUE(Contains(run.error, refused.reason)) << run.error;
        EXPECT_TRUE(Contains(run.error, "usage:")) << run.error;
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(fs::exists(In(L"untouched")));
    }
}

TEST_F(HostTest, ReportsAProjectItCannotUseAndLeavesItAlone) {
    const std::wstring file = In(L"office.ocproject").wstring();
    { ASSERT_TRUE(ochost::OpenSampleProject(file, 1)); }
    const std::string whole = Content(file);
    const std::pair<const char*, const char*> cases[] = {
        {"PRAGMA foreign_keys = OFF; UPDATE drawing SET discipline = 99", "is damaged"        },
        {"PRAGMA user_version = 4",                                       "by a newer version"},
        {nullptr,                                                         "cannot be written" },
    };
    for (const auto& [fault, told] : cases) {
        std::ofstream(fs::path(file), std::ios::binary) << whole;
        if (fault) orvasql::Database(file, orvasql::OpenMode::ReadWrite, {}).Execute(fault);
        if (!fault) SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY);
        const std::string before = Content(file);
        const ProcessResult run = Start({L"--project", file, L"--dialog", L"update-dwg"});
        EXPECT_EQ(run.exitCode, 1u);
        EXPECT_TRUE(Contains(run.error, "office.ocproject") && Contains(run.error, told)) << run.error;
        EXPECT_EQ(Content(file), before) << told;
    }
    Start({L"--project", file}, CloseShownDialog, false);
    SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(HostTest, ReportsAFileThatIsNoProject) {
    std::ofstream(In(L"notes.txt")) << "not a project";
    const ProcessResult run = Start({L"--project", In(L"notes.txt").wstring(), L"--tour", In(L"tour").wstring()});
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_TRUE(Contains(run.error, "notes.txt")) << run.error;
    EXPECT_EQ(Content(In(L"notes.txt")), "not a project");

    const ProcessResult blocked = Start({L"--tour", In(L"notes.txt").wstring()});
    EXPECT_EQ(blocked.exitCode, 1u);
    EXPECT_TRUE(Contains(blocked.error, "notes.txt")) << blocked.error;
}

TEST_F(HostTest, OpensItsWindowOrOneDialogUntilTheUserClosesIt) {
    const std::wstring project = In(L"office.ocproject").wstring();
    const ProcessResult window = Start({L"--project", project}, CloseShownDialog);
    EXPECT_EQ(window.exitCode, 0u) << window.error;
    EXPECT_TRUE(Contains(window.out, "office.ocproject")) << window.out;

    const ProcessResult alone = Start({L"--project", project, L"--dialog", L"customproperty-new"}, CloseShownDialog);
    EXPECT_EQ(alone.exitCode, 0u) << alone.error;
    EXPECT_TRUE(Contains(alone.out, "customproperty-new: cancelled")) << alone.out;
}

TEST_F(HostTest, TourPicturesEveryDialogAndKeepsTheProject) {
    const fs::path tour = In(L"tour");
    const fs::path project = In(L"office.ocproject");
    std::set<std::string> expected;
    std::size_t stored = 0;
    for (const wchar_t* language : {L"en", L"qps-ploc"}) {
        const ProcessResult run =
            Start({L"--tour", tour.wstring(), L"--project", project.wstring(), L"--language", language});
        ASSERT_EQ(run.exitCode, 0u) << run.out << run.error;
        // The project is made once; each tour composes one new custom property in it.
        const auto properties = CustomPropertiesIn(project);
        EXPECT_TRUE(stored == 0 ? properties.size() > 1 : properties.size() == stored + 1) << properties.size();
        ASSERT_FALSE(properties.empty());
        EXPECT_EQ(properties.back().format, L"{31} – {32}");
        stored = properties.size();
    }

    const std::set<std::string> pictures = Pictures(tour);
    const std::string page = Content(tour / "index.html");
    for (const std::string& picture : pictures) {
        EXPECT_GT(ColoursOf(tour / picture), 3u) << picture;
        EXPECT_TRUE(Contains(page, "src=\"" + picture + "\"")) << picture;
    }
    std::vector<std::wstring> names{ochost::kHostPicture};
    for (const ochost::DialogEntry& dialog : ochost::AllDialogs())
        names.emplace_back(dialog.name);
    for (const std::wstring& name : names) {
        for (const char* language : {".en.", ".qps-ploc."}) {
            const std::string start = ochost::ToUtf8(name) + language;
            const auto found = std::find_if(pictures.begin(), pictures.end(),
                                            [&](const std::string& picture) { return picture.starts_with(start); });
            EXPECT_NE(found, pictures.end()) << start;
        }
    }
}

/// The texts of the rows that the window's tree shows, families included.
std::vector<std::wstring> ShownDialogs(HWND window) {
    const HWND tree = uidriver::Control(window, IDC_HOST_DIALOGS);
    std::vector<std::wstring> texts;
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = TreeView_GetNextVisible(tree, item)) {
        wchar_t text[100] = L"";
        TVITEMW row{};
        row.mask = TVIF_TEXT;
        row.hItem = item;
        row.pszText = text;
        row.cchTextMax = static_cast<int>(std::size(text));
        SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&row));
        texts.emplace_back(text);
    }
    return texts;
}

class HostWindowTest : public HostTest {
protected:
    HostWindowTest() : project_(*ochost::OpenSampleProject(In(L"office.ocproject").wstring(), 1)) {
        SetProductKey(kSettings);
        Lng::SetLanguage(L"en");
        window_ = std::make_unique<ochost::HostWindow>(project_);
    }
    ~HostWindowTest() override {
        window_.reset();
        RegDeleteTreeW(HKEY_CURRENT_USER, kSettings);
    }

    /// Opens the window, runs the script and closes the window.
    void Drive(uidriver::Script& script) {
        ASSERT_TRUE(window_->Open());
        script.Then([this] { PostMessageW(window_->hWnd(), WM_CLOSE, 0, 0); });
        script.Start();
        window_->RunUntilClosed();
        EXPECT_TRUE(script.Finished()) << script.Failure();
    }
    /// Opens the window and in it the dialog of that name, which the script drives to its end.
    ochost::Outcome Run(const wchar_t* dialog, uidriver::Script& script) {
        EXPECT_TRUE(window_->hWnd() || window_->Open());
        script.Start();
        const ochost::Outcome outcome = window_->Run(*ochost::FindDialog(dialog));
        script.RunToEnd();
        EXPECT_TRUE(script.Finished()) << script.Failure();
        return outcome;
    }
    bool LogHas(const std::wstring& text) const { return TextOf(IDC_HOST_LOG).find(text) != std::wstring::npos; }
    std::wstring TextOf(int ctrlId) const { return uidriver::Text(uidriver::Control(window_->hWnd(), ctrlId)); }

    static constexpr wchar_t kSettings[] = L"Software\\OrvaCAD\\HostTest";
    ochost::ProjectStore project_;
    std::unique_ptr<ochost::HostWindow> window_;
};

TEST_F(HostWindowTest, FindsADialogAndRunsItOnEnter) {
    uidriver::Script script;
    std::vector<std::wstring> all;
    HWND ask = nullptr;
    script
        .Then([&] {
            all = ShownDialogs(window_->hWnd());
            uidriver::SetText(window_->hWnd(), IDC_HOST_SEARCH, L"ENTRY lis");
        })
        .Then([&] {
            EXPECT_EQ(ShownDialogs(window_->hWnd()), (std::vector<std::wstring>{L"Toolkit", L"Ask for a list entry"}));
            uidriver::Key(VK_RETURN);
        })
        .WithNewDialog([&](HWND dlg) {
            ask = dlg;
            EXPECT_FALSE(IsWindowEnabled(window_->hWnd()));
            EXPECT_TRUE(TextOf(IDC_HOST_BEFORE).starts_with(L"value = "));
            EXPECT_EQ(TextOf(IDC_HOST_AFTER), L"");
            uidriver::Key(VK_RETURN);
        })
        .WaitFor("the dialog to close", [&] { return !IsWindow(ask); })
        .Then([&] {
            EXPECT_EQ(TextOf(IDC_HOST_AFTER), TextOf(IDC_HOST_BEFORE));
            EXPECT_NE(TextOf(IDC_HOST_LOG).find(L"askvalue-list: confirmed"), std::wstring::npos);
            uidriver::Key(VK_ESCAPE);
        })
        .Then([&] {
            EXPECT_EQ(TextOf(IDC_HOST_SEARCH), L"");
            EXPECT_EQ(ShownDialogs(window_->hWnd()), all);
            EXPECT_GT(all.size(), ochost::AllDialogs().size());
        });
    Drive(script);
}

TEST_F(HostWindowTest, NothingIsOpenedForAFamily) {
    uidriver::Script script;
    script
        .Then([&] {
            const HWND tree = uidriver::Control(window_->hWnd(), IDC_HOST_DIALOGS);
            uidriver::ClickTreeItem(tree, uidriver::FindTreeItem(tree, L"Toolkit"));
        })
        .Then([&] { EXPECT_FALSE(IsWindowEnabled(uidriver::Control(window_->hWnd(), IDOK))); });
    Drive(script);
}

TEST_F(HostWindowTest, ChangesItsLanguageWhileItIsOpen) {
    uidriver::Script script;
    script
        .Then([&] {
            EXPECT_EQ(TextOf(IDOK), L"Open dialog");
            SetFocus(uidriver::Control(window_->hWnd(), IDC_HOST_LANGUAGE));
            uidriver::Key(VK_END);
        })
        .Then([&] {
            EXPECT_EQ(Lng::GetLanguage(), Lng::kPseudoLanguage);
            EXPECT_NE(TextOf(IDOK), L"Open dialog");
        });
    Drive(script);
    // It is the user's own setting from now on.
    Lng::SetLanguage(nullptr);
    EXPECT_EQ(Lng::GetLanguage(), Lng::kPseudoLanguage);
}

// ---- reports ----

TEST(ReportDefinitions, KeepEverythingBothWays) {
    const ReportDefinitionType full = FullDefinition();
    const ochost::ReportTemplate record = ochost::ToRecord(full, Lng::Schematics, TextBlock);
    EXPECT_EQ(record.app, Lng::Schematics);
    EXPECT_EQ(record.type, TextBlock);
    EXPECT_TRUE(Same(ochost::ToDefinition(record), full));
    const auto project = ochost::GenerateProject(1);
    for (const ochost::ReportTemplate& sample : project->reportTemplates) {
        EXPECT_TRUE(ochost::ToRecord(ochost::ToDefinition(sample), sample.app, sample.type) == sample) << sample.id;
    }
}

TEST(ReportDefinitions, WhatExceedsTheirLimitsIsCut) {
    ochost::ReportTemplate large;
    large.name = std::wstring(50, L'n');
    large.groups.resize(201, 7);
    large.columns.resize(201);
    large.columns[199].property = 199;
    const ReportDefinitionType definition = ochost::ToDefinition(large);
    EXPECT_EQ(FixedText<&ReportDefinitionType::name>(definition), std::wstring(40, L'n'));
    EXPECT_EQ(definition.groupCount, 200);
    EXPECT_EQ(definition.columnCount, 200);
    EXPECT_TRUE(definition.hasPropId(199));
}

void PressOk() {
    uidriver::Click(uidriver::TopDialog(), IDOK);
}

class ReportDialogs : public HostWindowTest {
protected:
    std::vector<ochost::ReportTemplate> Templates() const { return *project_.ReportTemplates(); }
    std::wstring ExchangeFile() const { return In(L"templates.xml").wstring(); }

    /// Confirms the question that comes next.
    static void Confirm(uidriver::Script& script) {
        script.WithNewDialog([](HWND question) { uidriver::Click(question, IDOK); });
    }
    /// Exports or imports the kind that is proposed: the bills of materials of the first application.
    ochost::Outcome Exchange(const wchar_t* dialog) {
        uidriver::Script script;
        Confirm(script);
        script.WithNewDialog([&](HWND files) { uidriver::ChooseFile(files, ExchangeFile()); });
        return Run(dialog, script);
    }
};

TEST_F(ReportDialogs, ATemplateIsEditedAndStored) {
    auto expected = Templates();
    uidriver::Script script;
    Confirm(script);
    script
        .WithNewDialog([&](HWND dlg) {
            EXPECT_EQ(uidriver::Text(uidriver::Control(dlg, IDC_REPORTTEMPLATE_NAME)), expected.front().name);
            uidriver::SetText(dlg, IDC_REPORTTEMPLATE_NAME, L"Ducts by system");
        })
        .Then(PressOk);
    EXPECT_EQ(Run(L"report-template-edit", script), ochost::Outcome::Confirmed);
    expected.front().name = L"Ducts by system";
    EXPECT_TRUE(Templates() == expected);
    EXPECT_NE(TextOf(IDC_HOST_BEFORE).find(L"Duct list"), std::wstring::npos);
    EXPECT_NE(TextOf(IDC_HOST_AFTER).find(L"Ducts by system"), std::wstring::npos);
}

TEST_F(ReportDialogs, TheTemplateDialogOffersTheProjectsPartsAndProperties) {
    uidriver::Script script;
    Confirm(script);
    script.WithNewDialog([&](HWND dlg) {
        const HWND tree = uidriver::Control(dlg, IDC_REPORTTEMPLATE_OBJECTS);
        EXPECT_EQ(static_cast<std::size_t>(TreeView_GetCount(tree)),
                  project_.PartGroups()->size() + project_.PartTypes()->size());
        const auto offered = uidriver::ListColumn(uidriver::Control(dlg, IDC_REPORTTEMPLATE_ATTRIBUTES), 0);
        EXPECT_EQ(offered.size(), project_.Properties()->size() + project_.CustomProperties()->size());
        const auto columns = uidriver::ListColumn(uidriver::Control(dlg, IDC_REPORTTEMPLATE_COLUMNS), 0);
        EXPECT_EQ(columns.size(), Templates().front().columns.size());
        EXPECT_EQ(columns.front(), L"System code");
        uidriver::Click(dlg, IDCANCEL);
    });
    const auto before = Templates();
    EXPECT_EQ(Run(L"report-template-edit", script), ochost::Outcome::Cancelled);
    EXPECT_TRUE(Templates() == before);
}

TEST_F(ReportDialogs, ANewTemplateIsOfTheKindThatWasChosen) {
    const auto before = Templates();
    uidriver::Script script;
    script.WithNewDialog([](HWND) { uidriver::Type(L"automation export"); })
        .Then(PressOk)
        .WithNewDialog([](HWND dlg) { uidriver::SetText(dlg, IDC_REPORTTEMPLATE_NAME, L"Points"); })
        .Then([] {
            const HWND list = uidriver::Control(uidriver::TopDialog(), IDC_REPORTTEMPLATE_ATTRIBUTES);
            uidriver::ClickListRow(list, 0, false, true);
        })
        .Then(PressOk);
    EXPECT_EQ(Run(L"report-template-new", script), ochost::Outcome::Confirmed);
    const auto after = Templates();
    ASSERT_EQ(after.size(), before.size() + 1);
    EXPECT_EQ(after.back().app, Lng::Automation);
    EXPECT_EQ(after.back().type, ExportReport);
    EXPECT_EQ(after.back().name, L"Points");
    ASSERT_EQ(after.back().columns.size(), 1u);
    EXPECT_EQ(after.back().columns.front().property, 1);
}

TEST_F(ReportDialogs, AColumnIsEditedAndStored) {
    auto expected = Templates();
    uidriver::Script script;
    Confirm(script);
    Confirm(script);
    script
        .WithNewDialog([](HWND dlg) {
            EXPECT_EQ(uidriver::Text(uidriver::Control(dlg, IDC_REPORTCOLUMN_PROPERTY)), L"System code");
            uidriver::SetText(dlg, IDC_REPORTCOLUMN_WIDTH, L"31");
        })
        .Then(PressOk);
    EXPECT_EQ(Run(L"report-column", script), ochost::Outcome::Confirmed);
    expected.front().columns.front().width = 31;
    EXPECT_TRUE(Templates() == expected);
    EXPECT_NE(TextOf(IDC_HOST_AFTER).find(L"width 31,"), std::wstring::npos);
}

TEST_F(ReportDialogs, ExportedTemplatesAreImportedAsNewOnes) {
    auto expected = Templates();
    const auto isBill = [](const auto& record) { return record.app == Lng::Hpv && record.type == BillOfMaterials; };
    const auto bills = static_cast<std::size_t>(std::count_if(expected.begin(), expected.end(), isBill));
    EXPECT_EQ(Exchange(L"report-template-export"), ochost::Outcome::Confirmed);
    EXPECT_TRUE(Templates() == expected);
    EXPECT_TRUE(LogHas(L"exported " + std::to_wstring(bills)));

    EXPECT_EQ(Exchange(L"report-template-import"), ochost::Outcome::Confirmed);
    auto stored = Templates();
    ASSERT_EQ(stored.size(), expected.size() + bills);
    const auto copies = expected;
    std::copy_if(copies.begin(), copies.end(), std::back_inserter(expected), isBill);
    for (std::size_t i = 0; i < stored.size(); ++i)
        expected[i].id = static_cast<std::int32_t>(i + 1);
    EXPECT_TRUE(stored == expected);
    EXPECT_TRUE(LogHas(L"imported " + std::to_wstring(bills)));
}

TEST_F(ReportDialogs, AFileThatIsNoneIsNotImported) {
    std::ofstream(In(L"templates.xml")) << "<SymbolLegendTemplates><SymbolLegendTemplate appId='1' typeId='1'/>";
    const auto before = Templates();
    uidriver::Script script;
    Confirm(script);
    script.WithNewDialog([&](HWND files) { uidriver::ChooseFile(files, ExchangeFile()); })
        .WithNewDialog([](HWND message) { uidriver::Click(message, IDOK); });
    EXPECT_EQ(Run(L"report-template-import", script), ochost::Outcome::Cancelled);
    EXPECT_TRUE(Templates() == before);
}

/// The list of a report, which is its only one.
HWND ListOf(HWND report) {
    return FindWindowExW(report, nullptr, WC_LISTVIEWW, nullptr);
}

TEST_F(ReportDialogs, TheWarningReportShowsAllAndZoomsToTheirObjects) {
    uidriver::Script script;
    script
        .WithNewDialog([](HWND report) {
            EXPECT_EQ(ListView_GetItemCount(ListOf(report)), 500);
            const auto categories = uidriver::ListColumn(ListOf(report), 0);
            EXPECT_EQ(std::set(categories.begin(), categories.end()).size(), 6u);
            uidriver::ClickListRow(ListOf(report), 1, false, true);
        })
        .WaitFor("the zoom", [&] { return LogHas(L"zoom to"); })
        .Then([] { uidriver::Click(uidriver::TopDialog(), IDCANCEL); });
    EXPECT_EQ(Run(L"warning-report", script), ochost::Outcome::Confirmed);
    EXPECT_TRUE(LogHas(In(L"Building A\\Ventilation\\").wstring())) << "the drawing's path";
    EXPECT_TRUE(LogHas(L".dwg, object 2A06, point 4980.0 2820.0 2600.0"));
}

HWND HiddenDialog() {
    HWND found = nullptr;
    const auto look = [](HWND window, LPARAM result) -> BOOL {
        wchar_t name[16] = L"";
        GetClassNameW(window, name, static_cast<int>(std::size(name)));
        if (IsWindowVisible(window) || std::wstring_view(name) != L"#32770") return TRUE;
        *reinterpret_cast<HWND*>(result) = window;
        return FALSE;
    };
    EnumThreadWindows(GetCurrentThreadId(), look, reinterpret_cast<LPARAM>(&found));
    return found;
}

TEST_F(ReportDialogs, AClickOnTheBalloonShowsTheWarnings) {
    constexpr UINT kTrayMessage = 33768;
    uidriver::Script script;
    HWND report = nullptr;
    script.WaitFor("the hidden report", [&] { return (report = HiddenDialog()) != nullptr; })
        .Then([&] { PostMessageW(report, kTrayMessage, 0, MAKELPARAM(NIN_BALLOONUSERCLICK, 0)); })
        .WithNewDialog([&](HWND shown) {
            EXPECT_EQ(shown, report);
            EXPECT_EQ(ListView_GetItemCount(ListOf(shown)), 500);
            EXPECT_TRUE(IsWindowEnabled(window_->hWnd())) << "the host goes on";
            uidriver::Click(shown, IDCANCEL);
        })
        .WaitFor("the report to close", [&] { return !IsWindow(report); });
    EXPECT_EQ(Run(L"warning-notification", script), ochost::Outcome::Confirmed);
}

TEST_F(ReportDialogs, TheBalloonNeedsAWindowToReturnTo) {
    const ProcessResult alone =
        Start({L"--project", In(L"alone.ocproject").wstring(), L"--dialog", L"warning-notification"}, CloseShownDialog);
    EXPECT_EQ(alone.exitCode, 1u);
    EXPECT_TRUE(Contains(alone.out, "needs the host's window")) << alone.out << alone.error;
}

// ---- object selections ----

class Silence : public ochost::Reporter {
    void Before(const std::wstring&) override {}
    void After(const std::wstring&) override {}
    void Log(const std::wstring&) override {}
};

class SelectionDialogs : public HostWindowTest {
protected:
    ObjectSelection::Data Last() { return ochost::SelectionStore(project_, Lng::Hpv).Last(); }
    std::vector<ochost::StoredSelection> Selections() const { return *project_.Selections(); }

    static HWND Categories(HWND dlg) { return uidriver::Control(dlg, IDC_OBJSEL_CATEGORIES); }
    /// Turns a category on and shows its items.
    static void UseCategory(const wchar_t* category) {
        const HWND tree = Categories(uidriver::TopDialog());
        const HTREEITEM item = uidriver::FindTreeItem(tree, category);
        ASSERT_TRUE(item);
        uidriver::ClickTreeItem(tree, item);
        uidriver::ClickTreeItem(tree, item, true);
    }
    /// The tree of items that is shown.
    static HWND Items(HWND dlg) {
        HWND tree = nullptr;
        while ((tree = FindWindowExW(dlg, tree, WC_TREEVIEWW, nullptr)) != nullptr) {
            if (tree != Categories(dlg) && IsWindowVisible(tree)) return tree;
        }
        throw uidriver::ActionError("no items are shown");
    }
    static void CheckItem(const wchar_t* text) {
        const HWND tree = Items(uidriver::TopDialog());
        uidriver::ClickTreeItem(tree, uidriver::FindTreeItem(tree, text), true);
    }
    static void ChooseInCombo(int ctrlId, const wchar_t* text) {
        const HWND combo = uidriver::Control(uidriver::TopDialog(), ctrlId);
        const LRESULT wanted =
            SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text));
        ASSERT_GE(wanted, 0);
        SetFocus(combo);
        for (LRESULT at = SendMessageW(combo, CB_GETCURSEL, 0, 0); at < wanted; ++at)
            uidriver::Key(VK_DOWN);
    }
    std::vector<std::int32_t> RoomsOfFloor(const wchar_t* code) const {
        std::vector<std::int32_t> ids;
        const auto floors = *project_.Floors();
        const auto rooms = *project_.Rooms();
        for (const ochost::Room& room : rooms) {
            if (floors[static_cast<std::size_t>(room.floor - 1)].code == code) {
                ids.push_back(static_cast<std::int32_t>(room.id));
            }
        }
        return ids;
    }
};

TEST_F(SelectionDialogs, CriteriaThatTheUserChoosesAreStoredAndEvaluated) {
    uidriver::Script script;
    script.WithNewDialog([](HWND dlg) { uidriver::Click(dlg, IDC_OBJSEL_SELECTED); })
        .Then([] { UseCategory(L"Rooms"); })
        .Then([] { CheckItem(L"4th floor"); })
        .Then(PressOk);
    EXPECT_EQ(Run(L"selection-edit", script), ochost::Outcome::Confirmed);
    const ObjectSelection::Data data = Last();
    EXPECT_TRUE(data.bySelectionSet && data.useRooms && !data.currentDrawing);
    EXPECT_EQ(data.modelDrawings.size(), project_.Drawings()->size()) << "all, since none was chosen";
    auto rooms = data.rooms;
    std::sort(rooms.begin(), rooms.end());
    EXPECT_EQ(rooms, RoomsOfFloor(L"4"));
    EXPECT_TRUE(LogHas(L" objects"));
    EXPECT_NE(TextOf(IDC_HOST_AFTER).find(L"rooms = "), std::wstring::npos);
    EXPECT_NE(TextOf(IDC_HOST_AFTER).find(L" of 7178 objects\r\n    "), std::wstring::npos) << "and which they are";
}

TEST_F(SelectionDialogs, ADrawingThatIsNoModelDrawingIsSelectedFromAsTheCurrentOneOnly) {
    Silence silence;
    ochost::SelectionCallback callback(project_, Lng::Hpv, silence);
    const ochost::Drawing& current = callback.CurrentDrawing();
    const auto isSelected = [&](const ObjectSelection::Data& data) {
        const ochost::ProjectIndex index(project_);
        const auto objects = ochost::SelectedObjects(index, data, current.id);
        return std::any_of(objects.begin(), objects.end(),
                           [&](const auto* object) { return object->drawing == current.id; });
    };
    ObjectSelection::Data all;
    all.bySelectionSet = true;
    ObjectSelection::Data named = all;
    named.useModelDrawings = true;
    named.modelDrawings = {ochost::RefOf(callback.Project(), current)};
    ObjectSelection::Data asCurrent = all;
    asCurrent.currentDrawing = true;
    EXPECT_TRUE(isSelected(all) && isSelected(named) && isSelected(asCurrent));
    ASSERT_TRUE(project_.SetModelDrawing(current.id, false));
    EXPECT_FALSE(isSelected(all) || isSelected(named));
    EXPECT_TRUE(isSelected(asCurrent));
}

TEST_F(SelectionDialogs, PartTypesThatTheProjectNoLongerHasStayChosen) {
    ochost::SelectionStore store(project_, Lng::Schematics);
    ObjectSelection::Data data = store.Last();
    data.usePartTypes = true;
    data.partTypesAlt = {"CDR-125", "GONE-1"};
    store.SetLast(data);
    uidriver::Script script;
    script
        .WithNewDialog([](HWND dlg) {
            uidriver::ClickTreeItem(Categories(dlg), uidriver::FindTreeItem(Categories(dlg), L"Part types"));
        })
        .Then([] { EXPECT_TRUE(uidriver::FindTreeItem(Items(uidriver::TopDialog()), L"GONE-1")); })
        .Then(PressOk);
    EXPECT_EQ(Run(L"selection-edit-schematics", script), ochost::Outcome::Confirmed);
    EXPECT_EQ(store.Last().partTypesAlt, data.partTypesAlt);
}

TEST_F(SelectionDialogs, CancelStoresNothing) {
    const auto before = Selections();
    for (const wchar_t* dialog : {L"selection-edit", L"selection-edit-schematics", L"selection-configurations",
                                  L"selection-rule", L"selection-command", L"update-dwg"}) {
        uidriver::Script script;
        script.WithNewDialog([](HWND dlg) { uidriver::Click(dlg, IDCANCEL); });
        EXPECT_EQ(Run(dialog, script), ochost::Outcome::Cancelled) << ochost::ToUtf8(dialog);
    }
    EXPECT_TRUE(Selections() == before);
    EXPECT_TRUE(LogHas(L"locked the project"));
    EXPECT_TRUE(project_.Lock()) << "it was released";
}

TEST_F(SelectionDialogs, AConfigurationIsLoadedAndSavedUnderANewName) {
    const auto before = Selections();
    uidriver::Script script;
    script.WithNewDialog([](HWND) { ChooseInCombo(IDC_OBJSEL_CONFIGURATION, L"Large ducts"); })
        .Then([] { uidriver::Click(uidriver::TopDialog(), IDC_OBJSEL_SAVE_AS); })
        .WithNewDialog([](HWND) { uidriver::Type(L"Larger ducts"); })
        .Then(PressOk)
        .WaitFor("the name to be taken", [] { return IsWindow(GetDlgItem(uidriver::TopDialog(), IDC_OBJSEL_SAVE)); })
        .Then(PressOk);
    EXPECT_EQ(Run(L"selection-configurations", script), ochost::Outcome::Confirmed);
    auto after = Selections();
    ASSERT_EQ(after.size(), before.size() + 2) << "the copy, and the criteria used last";
    const auto original =
        std::find_if(after.begin(), after.end(), [](const auto& s) { return s.name == L"Large ducts"; });
    EXPECT_EQ(after[before.size()].name, L"Larger ducts");
    EXPECT_EQ(after[before.size()].data, original->data);
    EXPECT_EQ(after.back().data, original->data);
}

TEST_F(SelectionDialogs, AProjectThatAnotherHostEditsIsRefusedAndSaysWhoDoes) {
    const auto arguments = {L"--project"s, project_.Path(), L"--dialog"s, L"selection-configurations"s};
    const ProcessResult other = Start(arguments, [&](const PROCESS_INFORMATION& process) {
        ASSERT_TRUE(ShownDialog(process));
        uidriver::Script script;
        script.WithNewDialog([](HWND) { uidriver::Key(VK_RETURN); });
        EXPECT_EQ(Run(L"selection-configurations", script), ochost::Outcome::Cancelled);
        EXPECT_TRUE(LogHas(L"is being edited by"));
        EXPECT_TRUE(LogHas(L"process " + std::to_wstring(process.dwProcessId)));
        CloseShownDialog(process);
    });
    EXPECT_EQ(other.exitCode, 0u) << other.error;
    uidriver::Script script;
    script.WithNewDialog([](HWND dlg) { uidriver::Click(dlg, IDCANCEL); });
    EXPECT_EQ(Run(L"selection-configurations", script), ochost::Outcome::Cancelled);
    EXPECT_TRUE(LogHas(L"locked the project")) << "it was released";
}

TEST_F(SelectionDialogs, ANamedSelectionIsEditedInPlace) {
    auto expected = Selections();
    uidriver::Script script;
    script.WithNewDialog([](HWND question) { uidriver::Click(question, IDOK); })
        .WithNewDialog([](HWND dlg) { uidriver::SetText(dlg, IDC_OBJSEL_NAME, L"Meetings"); })
        .Then(PressOk);
    EXPECT_EQ(Run(L"selection-record", script), ochost::Outcome::Confirmed);
    expected.front().name = L"Meetings";
    EXPECT_TRUE(Selections() == expected) << "its criteria as they were";
}

TEST_F(SelectionDialogs, ARuleIsEditedAndJoinsTheCriteria) {
    uidriver::Script script;
    script
        .WithNewDialog([](HWND dlg) {
            const HWND tree = uidriver::Control(dlg, IDC_OBJSELPROP_PROPERTIES);
            uidriver::ClickTreeItem(tree, uidriver::FindTreeItem(tree, L"Air flow"));
        })
        .Then([] { uidriver::SetText(uidriver::TopDialog(), IDC_OBJSELPROP_VALUE, L"45"); })
        .Then(PressOk);
    EXPECT_EQ(Run(L"selection-rule", script), ochost::Outcome::Confirmed);
    const ObjectSelection::Data data = Last();
    ASSERT_EQ(data.filterRules.size(), 1u);
    EXPECT_EQ(data.filterRules[0].propId, 99);
    ASSERT_EQ(data.filterRules[0].criteria.size(), 1u);
    EXPECT_EQ(data.filterRules[0].criteria[0].value, L"45");
}

TEST_F(SelectionDialogs, TheCommandShowsTheObjectsOfTheCurrentDrawingInAReport) {
    const auto drawings = *project_.Drawings();
    std::int64_t expected = 0;
    const auto objects = *project_.Objects();
    for (const ochost::PlacedObject& object : objects)
        expected += drawings[static_cast<std::size_t>(object.drawing - 1)].fileName == L"V-A04.dwg";
    uidriver::Script script;
    script.WithNewDialog([](HWND) { PressOk(); })
        .WithNewDialog([&](HWND report) {
            EXPECT_EQ(ListView_GetItemCount(ListOf(report)), expected);
            uidriver::ClickListRow(ListOf(report), 0, false, true);
        })
        .WaitFor("the zoom", [&] { return LogHas(L"zoom to"); })
        .Then([] { uidriver::Click(uidriver::TopDialog(), IDCANCEL); });
    EXPECT_EQ(Run(L"selection-command", script), ochost::Outcome::Confirmed);
    EXPECT_TRUE(LogHas(L"selected " + std::to_wstring(expected) + L" of "));
    EXPECT_TRUE(LogHas(L"V-A04.dwg, object "));

    uidriver::Script select;
    select.WithNewDialog([](HWND dlg) { uidriver::Click(dlg, IDC_OBJSELCMD_SELECT); }).Then(PressOk);
    EXPECT_EQ(Run(L"selection-command", select), ochost::Outcome::Confirmed) << "without a report";
}

TEST_F(SelectionDialogs, AStoredSetOfUpdateOptionsIsChosenAndApplied) {
    uidriver::Script script;
    script.WithNewDialog([](HWND) { ChooseInCombo(IDC_UPDATEDWGDATA_SET, L"Air flows and sizes"); }).Then(PressOk);
    EXPECT_EQ(Run(L"update-dwg", script), ochost::Outcome::Confirmed);
    EXPECT_TRUE(LogHas(L"updated 6 properties of "));
    EXPECT_NE(TextOf(IDC_HOST_AFTER).find(L"properties = \"55, 56, 58, 99, 103, 107\""), std::wstring::npos);
}

TEST_F(SelectionDialogs, WhatComesFromRoomsIsNotUpdatedInObjectsPickedByHand) {
    uidriver::Script script;
    script
        .WithNewDialog([](HWND dlg) {
            EXPECT_TRUE(IsWindowEnabled(uidriver::Control(dlg, IDC_UPDATEDWGDATA_MANUAL)));
            const HWND tree = uidriver::Control(dlg, IDC_UPDATEDWGDATA_ITEMS);
            uidriver::ClickTreeItem(tree, uidriver::FindTreeItem(tree, L"Room number"), true);
        })
        .Then([] { EXPECT_FALSE(IsWindowEnabled(uidriver::Control(uidriver::TopDialog(), IDC_UPDATEDWGDATA_MANUAL))); })
        .Then(PressOk);
    EXPECT_EQ(Run(L"update-dwg", script), ochost::Outcome::Confirmed);
    EXPECT_TRUE(LogHas(L"updated 1 properties of "));
}

}  // namespace
