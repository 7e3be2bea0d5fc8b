#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <objidl.h>
#include <orvasql/Sqlite.h>
#include <orvatool/Lng.h>
#include <shellapi.h>

#include <gdiplus.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/ProjectGenerator.h"
#include "host/ReportDefinitions.h"
#include "host/TourPage.h"
#include "host/Utf.h"
#include "host/selection/SelectionStore.h"
#include "resources/objectselection_ids.h"
#include "resources/project_ids.h"
#include "resources/report_ids.h"
#include "support/FullReport.h"
#include "support/HostFixture.h"

namespace ochost {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kPatienceMs = 300'000;

struct ProcessResult {
    DWORD exitCode = 0;
    std::string out;
    std::string error;
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

HANDLE OutputFile(const fs::path& file) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
}

/// Runs the program with its output in the test's folder.
class HostTest : public HostFixture {
protected:
    fs::path In(const wchar_t* name) const { return folder_.File(name); }

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
        result.out = BytesOf(In(L"out.txt"));
        result.error = BytesOf(In(L"error.txt"));
        return result;
    }

private:
    PROCESS_INFORMATION Launch(const std::vector<std::wstring>& arguments, bool withOutput) const {
        std::wstring command = L"ochost.exe";
        for (const std::wstring& argument : arguments)
            command += L" \"" + argument + L"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = withOutput ? STARTF_USESTDHANDLES : 0;
        startup.hStdOutput = OutputFile(In(L"out.txt"));
        startup.hStdError = OutputFile(In(L"error.txt"));
        PROCESS_INFORMATION process{};
        const BOOL started = CreateProcessW(nullptr, command.data(), nullptr, nullptr, withOutput,
                                            withOutput ? 0 : DETACHED_PROCESS, nullptr, nullptr, &startup, &process);
        CloseHandle(startup.hStdOutput);
        CloseHandle(startup.hStdError);
        if (!started) throw std::runtime_error("ochost.exe does not start");
        return process;
    }
};

/// The dialog that the process shows, as soon as it does; null when the process ends or shows none for too long.
HWND ShownDialog(const PROCESS_INFORMATION& process) {
    constexpr DWORD kLookMs = 20;
    for (DWORD waited = 0; waited < kPatienceMs && WaitForSingleObject(process.hProcess, kLookMs) == WAIT_TIMEOUT;
         waited += kLookMs) {
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

TEST_F(HostTest, HelpNamesEveryOptionAndDialog) {
    const ProcessResult help = Start({L"--help"});
    EXPECT_EQ(help.exitCode, 0u);
    EXPECT_EQ(help.error, "");
    for (const char* option : {"--project", "--scale", "--dialog", "--language", "--tour", "--help"}) {
        EXPECT_TRUE(Contains(help.out, option)) << option;
    }
    for (const DialogEntry& dialog : AllDialogs()) {
        EXPECT_TRUE(Contains(help.out, ToUtf8(dialog.name))) << dialog.name;
    }
}

TEST_F(HostTest, RefusesWhatItDoesNotUnderstandAndSaysWhy) {
    const std::pair<std::vector<std::wstring>, const char*> cases[] = {
        {{L"--nonsense"},                                  "--nonsense"             },
        {{L"stray"},                                       "stray"                  },
        {{L"--project"},                                   "--project needs a value"},
        {{L"--scale", L"0"},                               "--scale needs a number" },
        {{L"--scale", L"2x"},                              "--scale needs a number" },
        {{L"--dialog", L"no-such-dialog"},                 "no-such-dialog"         },
        {{L"--language", L"xx"},                           "xx"                     },
        {{L"--tour", L"a", L"--dialog", L"askvalue-text"}, "exclude"                },
    };
    for (auto [arguments, reason] : cases) {
        arguments.insert(arguments.begin(), {L"--project", In(L"untouched")});
        const ProcessResult run = Start(arguments);
        EXPECT_EQ(run.exitCode, 2u) << reason;
        EXPECT_TRUE(Contains(run.error, reason)) << run.error;
        EXPECT_TRUE(Contains(run.error, "usage:")) << run.error;
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(fs::exists(In(L"untouched")));
    }
}

TEST_F(HostTest, ReportsAProjectItCannotUseAndLeavesItAlone) {
    { ASSERT_TRUE(OpenSampleProject(file_, 1)); }
    const std::string whole = BytesOf(file_);
    const std::pair<const char*, const char*> cases[] = {
        {"PRAGMA foreign_keys = OFF; UPDATE drawing SET discipline = 99", "is damaged"        },
        {"PRAGMA user_version = 4",                                       "by a newer version"},
        {nullptr,                                                         "cannot be written" },
    };
    for (const auto& [fault, told] : cases) {
        WriteBytes(file_, whole);
        if (fault) orvasql::Database(file_, orvasql::OpenMode::ReadWrite, {}).Execute(fault);
        if (!fault) SetFileAttributesW(file_.c_str(), FILE_ATTRIBUTE_READONLY);
        const std::string before = BytesOf(file_);
        const ProcessResult run = Start({L"--project", file_, L"--dialog", L"update-dwg"});
        EXPECT_EQ(run.exitCode, 1u);
        EXPECT_TRUE(Contains(run.error, "office.ocproject") && Contains(run.error, told)) << run.error;
        EXPECT_EQ(BytesOf(file_), before) << told;
    }
    Start({L"--project", file_}, CloseShownDialog, false);
}

TEST_F(HostTest, ReportsAFileThatIsNoProjectOrNoFolder) {
    const std::wstring notes = In(L"notes.txt");
    WriteBytes(notes, "not a project");
    for (const auto& arguments : {
             std::vector<std::wstring>{L"--project", notes, L"--tour", In(L"tour")},
             std::vector<std::wstring>{L"--tour", notes     }
    }) {
        const ProcessResult run = Start(arguments);
        EXPECT_EQ(run.exitCode, 1u);
        EXPECT_TRUE(Contains(run.error, "notes.txt")) << run.error;
        EXPECT_EQ(BytesOf(notes), "not a project");
    }
}

TEST_F(HostTest, OpensItsWindowOrOneDialogUntilTheUserClosesIt) {
    const ProcessResult window = Start({L"--project", file_}, CloseShownDialog);
    EXPECT_EQ(window.exitCode, 0u) << window.error;
    EXPECT_TRUE(Contains(window.out, "office.ocproject")) << window.out;

    const ProcessResult alone = Start({L"--project", file_, L"--dialog", L"customproperty-new"}, CloseShownDialog);
    EXPECT_EQ(alone.exitCode, 0u) << alone.error;
    EXPECT_TRUE(Contains(alone.out, "customproperty-new: cancelled")) << alone.out;
}

TEST_F(HostTest, TourPicturesEveryDialogAndKeepsTheProject) {
    const fs::path tour = In(L"tour");
    std::size_t stored = 0;
    for (const wchar_t* language : {L"en", L"qps-ploc"}) {
        const ProcessResult run = Start({L"--tour", tour, L"--project", file_, L"--language", language});
        ASSERT_EQ(run.exitCode, 0u) << run.out << run.error;
        // The project is made once; each tour composes one new custom property in it.
        const auto properties = *ValueOf(ProjectStore::Open(file_)).CustomProperties();
        EXPECT_TRUE(stored == 0 ? properties.size() > 1 : properties.size() == stored + 1) << properties.size();
        ASSERT_FALSE(properties.empty());
        EXPECT_EQ(properties.back().format, L"{31} – {32}");
        stored = properties.size();
    }

    const std::set<std::string> pictures = Pictures(tour);
    const std::string page = BytesOf(tour / "index.html");
    for (const std::string& picture : pictures) {
        EXPECT_GT(ColoursOf(tour / picture), 3u) << picture;
        EXPECT_TRUE(Contains(page, "src=\"" + picture + "\"")) << picture;
    }
    std::vector<std::wstring> names{kHostPicture};
    for (const DialogEntry& dialog : AllDialogs())
        names.emplace_back(dialog.name);
    for (const std::wstring& name : names) {
        for (const char* language : {".en.", ".qps-ploc."}) {
            const std::string start = ToUtf8(name) + language;
            const auto found = std::find_if(pictures.begin(), pictures.end(),
                                            [&](const std::string& picture) { return picture.starts_with(start); });
            EXPECT_NE(found, pictures.end()) << start;
        }
    }
}

/// The texts of the rows that the window's tree shows, families included.
Texts ShownDialogs(HWND window) {
    const HWND tree = uidriver::Control(window, IDC_HOST_DIALOGS);
    Texts texts;
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
    void SetUp() override { Open(OpenSampleProject(file_, 1)); }

    /// Runs the script in the window, which is closed then.
    void Drive(uidriver::Script& script) {
        script.Start();
        script.RunToEnd();
        EXPECT_TRUE(script.Finished()) << script.Failure();
        PostMessageW(window_->hWnd(), WM_CLOSE, 0, 0);
        window_->RunUntilClosed();
    }
    HWND ControlOf(int ctrlId) const { return uidriver::Control(window_->hWnd(), ctrlId); }
    bool AfterHas(const std::wstring& text) const { return TextOf(IDC_HOST_AFTER).find(text) != std::wstring::npos; }
};

TEST_F(HostWindowTest, FindsADialogAndRunsItOnEnter) {
    uidriver::Script script;
    Texts all;
    HWND ask = nullptr;
    script
        .Then([&] {
            all = ShownDialogs(window_->hWnd());
            uidriver::SetText(window_->hWnd(), IDC_HOST_SEARCH, L"ENTRY lis");
        })
        .Then([&] {
            EXPECT_EQ(ShownDialogs(window_->hWnd()), (Texts{L"Toolkit", L"Ask for a list entry"}));
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
            EXPECT_TRUE(LogHas(L"askvalue-list: confirmed"));
            uidriver::Key(VK_ESCAPE);
        })
        .Then([&] {
            EXPECT_EQ(TextOf(IDC_HOST_SEARCH), L"");
            EXPECT_EQ(ShownDialogs(window_->hWnd()), all);
            EXPECT_GT(all.size(), AllDialogs().size());
            ClickInTree(ControlOf(IDC_HOST_DIALOGS), L"Toolkit");
        })
        .Then([&] { EXPECT_FALSE(Enabled(window_->hWnd(), IDOK)) << "nothing is opened for a family"; });
    Drive(script);
}

TEST_F(HostWindowTest, ChangesItsLanguageWhileItIsOpen) {
    uidriver::Script script;
    script
        .Then([&] {
            EXPECT_EQ(TextOf(IDOK), L"Open dialog");
            SetFocus(ControlOf(IDC_HOST_LANGUAGE));
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
    const ReportTemplate record = ToRecord(full, Lng::Schematics, TextBlock);
    EXPECT_EQ(record.app, Lng::Schematics);
    EXPECT_EQ(record.type, TextBlock);
    EXPECT_TRUE(Same(ToDefinition(record), full));
    const auto project = GenerateProject(1);
    for (const ReportTemplate& sample : project->reportTemplates) {
        EXPECT_TRUE(ToRecord(ToDefinition(sample), sample.app, sample.type) == sample) << sample.id;
    }
}

TEST(ReportDefinitions, WhatExceedsTheirLimitsIsCut) {
    ReportTemplate large;
    large.name = std::wstring(50, L'n');
    large.groups.resize(201, 7);
    large.columns.resize(201);
    large.columns[199].property = 199;
    const ReportDefinitionType definition = ToDefinition(large);
    EXPECT_EQ(FixedText<&ReportDefinitionType::name>(definition), std::wstring(40, L'n'));
    EXPECT_EQ(definition.groupCount, 200);
    EXPECT_EQ(definition.columnCount, 200);
    EXPECT_TRUE(definition.hasPropId(199));
}

class ReportDialogs : public HostWindowTest {
protected:
    std::vector<ReportTemplate> Templates() const { return *project_->ReportTemplates(); }

    /// Confirms the kind that is proposed, the bills of materials of the first application, and types a file's name.
    void ChooseFile() {
        Press(IDOK);
        InNewDialog([this](HWND files) { uidriver::ChooseFile(files, In(L"templates.xml")); });
    }
    /// The list of a report, which is its only one.
    static HWND ListOf(HWND report) { return FindWindowExW(report, nullptr, WC_LISTVIEWW, nullptr); }
};

TEST_F(ReportDialogs, ATemplateAndAColumnOfItAreEditedAndStored) {
    auto expected = Templates();
    Press(IDOK);  // the question for the template
    InNewDialog([&](HWND dlg) {
        EXPECT_EQ(Shown(dlg, IDC_REPORTTEMPLATE_NAME), expected.front().name);
        uidriver::SetText(dlg, IDC_REPORTTEMPLATE_NAME, L"Ducts by system");
    });
    Step(PressOk);
    EXPECT_EQ(Run(L"report-template-edit"), Outcome::Confirmed);
    expected.front().name = L"Ducts by system";
    EXPECT_TRUE(Templates() == expected);
    EXPECT_NE(TextOf(IDC_HOST_BEFORE).find(L"Duct list"), std::wstring::npos);
    EXPECT_TRUE(AfterHas(L"Ducts by system"));

    Press(IDOK);
    InNewDialog([](HWND question) { uidriver::Click(question, IDOK); });
    InNewDialog([](HWND dlg) {
        EXPECT_EQ(Shown(dlg, IDC_REPORTCOLUMN_PROPERTY), L"System code");
        uidriver::SetText(dlg, IDC_REPORTCOLUMN_WIDTH, L"31");
    });
    Step(PressOk);
    EXPECT_EQ(Run(L"report-column"), Outcome::Confirmed);
    expected.front().columns.front().width = 31;
    EXPECT_TRUE(Templates() == expected);
    EXPECT_TRUE(AfterHas(L"width 31,"));
}

TEST_F(ReportDialogs, TheTemplateDialogOffersTheProjectsPartsAndProperties) {
    const auto before = Templates();
    Press(IDOK);
    InNewDialog([&](HWND dlg) {
        const HWND tree = uidriver::Control(dlg, IDC_REPORTTEMPLATE_OBJECTS);
        EXPECT_EQ(TreeView_GetCount(tree), project_->PartGroups()->size() + project_->PartTypes()->size());
        const auto offered = uidriver::ListColumn(uidriver::Control(dlg, IDC_REPORTTEMPLATE_ATTRIBUTES), 0);
        EXPECT_EQ(offered.size(), project_->Properties()->size() + project_->CustomProperties()->size());
        const auto columns = uidriver::ListColumn(uidriver::Control(dlg, IDC_REPORTTEMPLATE_COLUMNS), 0);
        EXPECT_EQ(columns.size(), before.front().columns.size());
        EXPECT_EQ(columns.front(), L"System code");
        uidriver::Click(dlg, IDCANCEL);
    });
    EXPECT_EQ(Run(L"report-template-edit"), Outcome::Cancelled);
    EXPECT_TRUE(Templates() == before);
}

TEST_F(ReportDialogs, ANewTemplateIsOfTheKindThatWasChosen) {
    auto before = Templates();
    Step([] { uidriver::Type(L"automation export"); });
    Step(PressOk);
    InNewDialog([](HWND dlg) { uidriver::SetText(dlg, IDC_REPORTTEMPLATE_NAME, L"Points"); });
    Step([] {
        const HWND list = uidriver::Control(uidriver::TopDialog(), IDC_REPORTTEMPLATE_ATTRIBUTES);
        uidriver::ClickListRow(list, 0, false, true);
    });
    Step(PressOk);
    EXPECT_EQ(Run(L"report-template-new"), Outcome::Confirmed);
    const auto after = Templates();
    ASSERT_EQ(after.size(), before.size() + 1);
    EXPECT_EQ(after.back().app, Lng::Automation);
    EXPECT_EQ(after.back().type, ExportReport);
    EXPECT_EQ(after.back().name, L"Points");
    ASSERT_EQ(after.back().columns.size(), 1u);
    EXPECT_EQ(after.back().columns.front().property, 1);
}

TEST_F(ReportDialogs, ExportedTemplatesAreImportedAsNewOnes) {
    auto expected = Templates();
    const auto isBill = [](const auto& record) { return record.app == Lng::Hpv && record.type == BillOfMaterials; };
    const auto bills = static_cast<std::size_t>(std::count_if(expected.begin(), expected.end(), isBill));
    ChooseFile();
    EXPECT_EQ(Run(L"report-template-export"), Outcome::Confirmed);
    EXPECT_TRUE(Templates() == expected);
    EXPECT_TRUE(LogHas(L"exported " + std::to_wstring(bills)));

    ChooseFile();
    EXPECT_EQ(Run(L"report-template-import"), Outcome::Confirmed);
    auto stored = Templates();
    ASSERT_EQ(stored.size(), expected.size() + bills);
    const auto copies = expected;
    std::copy_if(copies.begin(), copies.end(), std::back_inserter(expected), isBill);
    for (std::size_t i = 0; i < stored.size(); ++i)
        expected[i].id = static_cast<std::int32_t>(i + 1);
    EXPECT_TRUE(stored == expected);
    EXPECT_TRUE(LogHas(L"imported " + std::to_wstring(bills)));

    WriteBytes(In(L"templates.xml"), "<SymbolLegendTemplates><SymbolLegendTemplate appId='1' typeId='1'/>");
    ChooseFile();
    InNewDialog([](HWND message) { uidriver::Click(message, IDOK); });
    EXPECT_EQ(Run(L"report-template-import"), Outcome::Cancelled);
    EXPECT_TRUE(Templates() == expected) << "a file that is none";
}

TEST_F(ReportDialogs, TheWarningReportShowsAllAndZoomsToTheirObjects) {
    Step([](HWND report) {
        EXPECT_EQ(ListView_GetItemCount(ListOf(report)), 500);
        const auto categories = uidriver::ListColumn(ListOf(report), 0);
        EXPECT_EQ(std::set(categories.begin(), categories.end()).size(), 6u);
        uidriver::ClickListRow(ListOf(report), 1, false, true);
    });
    script_->WaitFor("the zoom", [&] { return LogHas(L"zoom to"); });
    Press(IDCANCEL);
    EXPECT_EQ(Run(L"warning-report"), Outcome::Confirmed);
    EXPECT_TRUE(LogHas(In(L"Building A\\Ventilation\\"))) << "the drawing's path";
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
    HWND report = nullptr;
    script_ = std::make_unique<uidriver::Script>();  // no dialog is shown at first
    script_->WaitFor("the hidden report", [&] { return (report = HiddenDialog()) != nullptr; })
        .Then([&] { PostMessageW(report, kTrayMessage, 0, MAKELPARAM(NIN_BALLOONUSERCLICK, 0)); })
        .WithNewDialog([&](HWND shown) {
            EXPECT_EQ(shown, report);
            EXPECT_EQ(ListView_GetItemCount(ListOf(shown)), 500);
            EXPECT_TRUE(IsWindowEnabled(window_->hWnd())) << "the host goes on";
            uidriver::Click(shown, IDCANCEL);
        })
        .WaitFor("the report to close", [&] { return !IsWindow(report); });
    EXPECT_EQ(Run(L"warning-notification"), Outcome::Confirmed);
}

TEST_F(ReportDialogs, TheBalloonNeedsAWindowToReturnTo) {
    const ProcessResult alone =
        Start({L"--project", In(L"alone.ocproject"), L"--dialog", L"warning-notification"}, CloseShownDialog);
    EXPECT_EQ(alone.exitCode, 1u);
    EXPECT_TRUE(Contains(alone.out, "needs the host's window")) << alone.out << alone.error;
}

// ---- object selections ----

class SelectionDialogs : public ReportDialogs {
protected:
    ObjectSelection::Data Last() { return SelectionStore(*project_, Lng::Hpv).Last(); }
    std::vector<StoredSelection> Selections() const { return *project_->Selections(); }

    static HWND Categories() { return uidriver::Control(uidriver::TopDialog(), IDC_OBJSEL_CATEGORIES); }
    /// The tree of items that is shown.
    static HWND Items() {
        HWND tree = nullptr;
        while ((tree = FindWindowExW(uidriver::TopDialog(), tree, WC_TREEVIEWW, nullptr)) != nullptr) {
            if (tree != Categories() && IsWindowVisible(tree)) return tree;
        }
        throw uidriver::ActionError("no items are shown");
    }
    static void ChooseInCombo(HWND dlg, int ctrlId, const wchar_t* text) {
        const HWND combo = uidriver::Control(dlg, ctrlId);
        const LRESULT wanted =
            SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text));
        ASSERT_GE(wanted, 0);
        SetFocus(combo);
        for (LRESULT at = SendMessageW(combo, CB_GETCURSEL, 0, 0); at < wanted; ++at)
            uidriver::Key(VK_DOWN);
    }
    std::vector<std::int32_t> RoomsOfFloor(const wchar_t* code) const {
        std::vector<std::int32_t> ids;
        const auto floors = *project_->Floors();
        const auto rooms = *project_->Rooms();
        for (const Room& room : rooms) {
            if (floors[static_cast<std::size_t>(room.floor - 1)].code == code) {
                ids.push_back(static_cast<std::int32_t>(room.id));
            }
        }
        return ids;
    }
};

TEST_F(SelectionDialogs, CriteriaThatTheUserChoosesAreStoredAndEvaluated) {
    Press(IDC_OBJSEL_SELECTED);
    Step([] {
        ClickInTree(Categories(), L"Rooms");
        ClickInTree(Categories(), L"Rooms", true);
    });
    Step([] { ClickInTree(Items(), L"4th floor", true); });
    Step(PressOk);
    EXPECT_EQ(Run(L"selection-edit"), Outcome::Confirmed);
    const ObjectSelection::Data data = Last();
    EXPECT_TRUE(data.bySelectionSet && data.useRooms && !data.currentDrawing);
    EXPECT_EQ(data.modelDrawings.size(), project_->Drawings()->size()) << "all, since none was chosen";
    auto rooms = data.rooms;
    std::sort(rooms.begin(), rooms.end());
    EXPECT_EQ(rooms, RoomsOfFloor(L"4"));
    EXPECT_TRUE(LogHas(L" objects"));
    EXPECT_TRUE(AfterHas(L"rooms = "));
    EXPECT_TRUE(AfterHas(L" of 7178 objects\r\n    ")) << "and which they are";
}

TEST_F(SelectionDialogs, CancelStoresNothing) {
    const auto before = Selections();
    for (const wchar_t* dialog : {L"selection-edit", L"selection-edit-schematics", L"selection-configurations",
                                  L"selection-rule", L"selection-command", L"update-dwg"}) {
        Press(IDCANCEL);
        EXPECT_EQ(Run(dialog), Outcome::Cancelled) << dialog;
    }
    EXPECT_TRUE(Selections() == before);
    EXPECT_TRUE(LogHas(L"locked the project"));
    EXPECT_TRUE(project_->Lock()) << "it was released";
}

TEST_F(SelectionDialogs, AConfigurationIsLoadedAndSavedUnderANewName) {
    const auto before = Selections();
    Step([](HWND dlg) { ChooseInCombo(dlg, IDC_OBJSEL_CONFIGURATION, L"Large ducts"); });
    Press(IDC_OBJSEL_SAVE_AS);
    InNewDialog([](HWND) { uidriver::Type(L"Larger ducts"); });
    Step(PressOk);
    script_->WaitFor("the name to be taken", [this] { return uidriver::TopDialog() == dlg_; });
    Step(PressOk);
    EXPECT_EQ(Run(L"selection-configurations"), Outcome::Confirmed);
    auto after = Selections();
    ASSERT_EQ(after.size(), before.size() + 2) << "the copy, and the criteria used last";
    const auto original =
        std::find_if(after.begin(), after.end(), [](const auto& s) { return s.name == L"Large ducts"; });
    EXPECT_EQ(after[before.size()].name, L"Larger ducts");
    EXPECT_EQ(after[before.size()].data, original->data);
    EXPECT_EQ(after.back().data, original->data);
}

TEST_F(SelectionDialogs, AProjectThatAnotherHostEditsIsRefusedAndSaysWhoDoes) {
    const std::vector<std::wstring> arguments{L"--project", file_, L"--dialog", L"selection-configurations"};
    const ProcessResult other = Start(arguments, [&](const PROCESS_INFORMATION& process) {
        ASSERT_TRUE(ShownDialog(process));
        Press(IDOK);
        EXPECT_EQ(Run(L"selection-configurations"), Outcome::Cancelled);
        EXPECT_TRUE(LogHas(L"is being edited by"));
        EXPECT_TRUE(LogHas(L"process " + std::to_wstring(process.dwProcessId)));
        CloseShownDialog(process);
    });
    EXPECT_EQ(other.exitCode, 0u) << other.error;
    Press(IDCANCEL);
    EXPECT_EQ(Run(L"selection-configurations"), Outcome::Cancelled);
    EXPECT_TRUE(LogHas(L"locked the project")) << "it was released";
}

TEST_F(SelectionDialogs, ANamedSelectionIsEditedInPlace) {
    auto expected = Selections();
    Press(IDOK);
    InNewDialog([](HWND dlg) { uidriver::SetText(dlg, IDC_OBJSEL_NAME, L"Meetings"); });
    Step(PressOk);
    EXPECT_EQ(Run(L"selection-record"), Outcome::Confirmed);
    expected.front().name = L"Meetings";
    EXPECT_TRUE(Selections() == expected) << "its criteria as they were";
}

TEST_F(SelectionDialogs, ARuleIsEditedAndJoinsTheCriteria) {
    Step([](HWND dlg) { ClickInTree(uidriver::Control(dlg, IDC_OBJSELPROP_PROPERTIES), L"Air flow"); });
    Enter(IDC_OBJSELPROP_VALUE, L"45");
    Press(IDOK);
    EXPECT_EQ(Run(L"selection-rule"), Outcome::Confirmed);
    const ObjectSelection::Data data = Last();
    ASSERT_EQ(data.filterRules.size(), 1u);
    EXPECT_EQ(data.filterRules[0].propId, 99);
    ASSERT_EQ(data.filterRules[0].criteria.size(), 1u);
    EXPECT_EQ(data.filterRules[0].criteria[0].value, L"45");
}

TEST_F(SelectionDialogs, TheCommandShowsTheObjectsOfTheCurrentDrawingInAReport) {
    const auto drawings = *project_->Drawings();
    const auto objects = *project_->Objects();
    const auto expected = std::count_if(objects.begin(), objects.end(), [&](const PlacedObject& object) {
        return drawings[static_cast<std::size_t>(object.drawing - 1)].fileName == L"V-A04.dwg";
    });
    Press(IDOK);
    InNewDialog([&](HWND report) {
        EXPECT_EQ(ListView_GetItemCount(ListOf(report)), expected);
        uidriver::ClickListRow(ListOf(report), 0, false, true);
    });
    script_->WaitFor("the zoom", [&] { return LogHas(L"zoom to"); });
    Step([] { uidriver::Click(uidriver::TopDialog(), IDCANCEL); });
    EXPECT_EQ(Run(L"selection-command"), Outcome::Confirmed);
    EXPECT_TRUE(LogHas(L"selected " + std::to_wstring(expected) + L" of "));
    EXPECT_TRUE(LogHas(L"V-A04.dwg, object "));

    Press(IDC_OBJSELCMD_SELECT);
    Press(IDOK);
    EXPECT_EQ(Run(L"selection-command"), Outcome::Confirmed) << "without a report";
}

TEST_F(SelectionDialogs, AStoredSetOfUpdateOptionsIsChosenAndApplied) {
    Step([](HWND dlg) { ChooseInCombo(dlg, IDC_UPDATEDWGDATA_SET, L"Air flows and sizes"); });
    Press(IDOK);
    EXPECT_EQ(Run(L"update-dwg"), Outcome::Confirmed);
    EXPECT_TRUE(LogHas(L"updated 6 properties of "));
    EXPECT_TRUE(AfterHas(L"properties = \"55, 56, 58, 99, 103, 107\""));
}

TEST_F(SelectionDialogs, WhatComesFromRoomsIsNotUpdatedInObjectsPickedByHand) {
    Step([](HWND dlg) {
        EXPECT_TRUE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL));
        ClickInTree(uidriver::Control(dlg, IDC_UPDATEDWGDATA_ITEMS), L"Room number", true);
    });
    Step([](HWND dlg) { EXPECT_FALSE(Enabled(dlg, IDC_UPDATEDWGDATA_MANUAL)); });
    Press(IDOK);
    EXPECT_EQ(Run(L"update-dwg"), Outcome::Confirmed);
    EXPECT_TRUE(LogHas(L"updated 1 properties of "));
}

}  // namespace
}  // namespace ochost
