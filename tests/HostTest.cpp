#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <objidl.h>
#include <orvatool/InterApp.h>
#include <orvatool/Lng.h>

#include <gdiplus.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/DialogCatalog.h"
#include "host/HostWindow.h"
#include "host/ProjectGenerator.h"
#include "host/ProjectStore.h"
#include "host/TourPage.h"
#include "host/Utf.h"
#include "host/driver/UiDriver.h"
#include "host/host_ids.h"

namespace {

namespace fs = std::filesystem;

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

    /// Starts the program, lets `use` do what a user does meanwhile, and waits for its end.
    ProcessResult Start(const std::vector<std::wstring>& arguments,
                        void (*use)(const PROCESS_INFORMATION&) = nullptr) const {
        const PROCESS_INFORMATION process = Launch(arguments);
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
    PROCESS_INFORMATION Launch(const std::vector<std::wstring>& arguments) const {
        std::wstring command = L"ochost.exe";
        for (const std::wstring& argument : arguments)
            command += L" \"" + argument + L"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = OutputFile(In(L"out.txt"));
        startup.hStdError = OutputFile(In(L"error.txt"));
        PROCESS_INFORMATION process{};
        const BOOL started =
            CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process);
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
/// picture.
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

TEST_F(HostTest, ReportsAProjectItCannotUse) {
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
    HostWindowTest() : project_(*ochost::OpenOrGenerateProject(In(L"office.ocproject").wstring(), 1)) {
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

}  // namespace
