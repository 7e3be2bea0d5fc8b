#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>
#include <orvatool/FileDlgUtil.h>
#include <orvatool/Guid.h>
#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>
#include <orvatool/InterApp.h>
#include <orvatool/Lng.h>
#include <orvatool/MiscUtil.h>
#include <orvatool/String.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/driver/UiDriver.h"
#include "support/DialogTest.h"
#include "support/TestFolder.h"
#include "support/XmlFaults.h"

// How a failed comparison shows a text.
namespace orvaspace {
void PrintTo(const ustr& text, std::ostream* out) {
    *out << '"' << ToUtf8(text).c_str() << '"';
}
}  // namespace orvaspace

namespace {

constexpr wchar_t kTestKey[] = L"Software\\OrvaCAD-Test";

std::wstring ToolkitFolder() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(GetModuleHandleW(L"orvatool.dll"), path, MAX_PATH);
    const std::wstring whole(path);
    return whole.substr(0, whole.rfind(L'\\') + 1);
}

// Every test has a product key of its own and starts in English.
class Services : public testing::Test {
protected:
    void SetUp() override {
        RegDeleteTreeW(HKEY_CURRENT_USER, kTestKey);
        SetProductKey(kTestKey);
        Lng::SetLanguage(L"en");
    }
    void TearDown() override {
        Lng::SetLanguage(L"en");
        SetProductKey(nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, kTestKey);
    }
};

// ---- Texts

class Catalogues : public Services {
protected:
    Catalogues() { WriteBytes(file_, ""); }
    ~Catalogues() override { DeleteFileW(file_.c_str()); }

    static std::string Unit(const std::string& id, const std::string& source, const std::string& target) {
        return "<trans-unit id=\"" + id + "\"><source>" + source + "</source><target>" + target +
               "</target></trans-unit>";
    }
    static std::string Catalogue(const std::string& units) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xliff version=\"1.2\"><file><body>" + units +
               "</body></file></xliff>\n";
    }
    // Makes `content` the catalogue of the language in use.
    void Use(const std::string& content) const {
        WriteBytes(file_, content);
        Lng::SetLanguage(L"xx-test");
    }

    const std::wstring file_ = ToolkitFolder() + L"lang\\xx-test.xlf";
};

TEST_F(Catalogues, AreTranslatedByApplicationAndNumber) {
    Use(Catalogue(Unit("3:1", "Last", "Viimeinen") + Unit("1:5", "Name", "Nimi \xC3\xA4&#13;&#10;&amp;x") +
                  Unit("1:5", "Name", "second") + Unit("1:6", "Old wording", "Uusi") + Unit("1:7", "Name", "") +
                  Unit("x", "Name", "bad") + Unit("1:8x", "Name", "bad") + Unit("-1:-9", "Name", "minus")));
    EXPECT_EQ(Lng::text(Lng::Hpv, 5, L"Name"), L"Nimi ä\r\n&x");
    EXPECT_EQ(Lng::text(Lng::Common, 5, L"Name"), L"Name");
    EXPECT_EQ(Lng::text(Lng::Common, 1, L"Last"), L"Viimeinen");
    EXPECT_EQ(Lng::text(Lng::Hpv, 6, L"New wording"), L"Uusi");
    EXPECT_EQ(Lng::text(Lng::Hpv, 7, L"Name"), L"Name");
    EXPECT_EQ(Lng::text(Lng::Hpv, 8, L"Name"), L"Name");
    EXPECT_EQ(Lng::text(static_cast<Lng::AppID>(-1), -9, L"Name"), L"minus");
    EXPECT_EQ(Lng::text(Lng::Hpv, 9, L"#Sure?"), L"#Sure?");
    EXPECT_EQ(Lng::text(Lng::Hpv, 9, nullptr), L"");
}

TEST_F(Catalogues, ATranslationWithOtherConversionsIsRefused) {
    Use(Catalogue(Unit("1:1", "", "%s of %d") + Unit("1:2", "", "%d / %d %%") + Unit("1:3", "", "%n")));
    EXPECT_EQ(Lng::text(Lng::Hpv, 1, L"%d of %s"), L"%d of %s");
    EXPECT_EQ(Lng::text(Lng::Hpv, 1, L"%s in %d"), L"%s of %d");
    EXPECT_EQ(Lng::text(Lng::Hpv, 2, L"%d of %d"), L"%d / %d %%");
    EXPECT_EQ(Lng::text(Lng::Hpv, 3, L"Plain"), L"Plain");
}

TEST_F(Catalogues, ConversionsAreComparedByTheArgumentsTheyTake) {
    const std::tuple<const wchar_t*, const wchar_t*, bool> kCases[] = {
        {L"",           L"plain 100%%", true },
        {L"%d",         L"%5i",         true },
        {L"%.2f m",     L"%-8.3f",      true },
        {L"%s %d",      L"%d %s",       false},
        {L"%d",         L"%d %d",       false},
        {L"%d",         L"%lld",        false},
        {L"%I64d",      L"%I64d",       true },
        {L"%I64d",      L"%I32d",       false},
        {L"%*d",        L"%d",          false},
        {L"%.*f",       L"%*f",         true },
        {L"%x",         L"%d",          false},
        {L"%%d",        L"%d",          false},
        {L"50 % of it", L"50 %",        false},
        {L"%",          L"",            true },
    };
    for (const auto& [format, other, same] : kCases) {
        EXPECT_EQ(Lng::SameConversions(format, other), same) << format << " / " << other;
        EXPECT_EQ(Lng::SameConversions(other, format), same);
    }
    EXPECT_FALSE(Lng::SameConversions(nullptr, L""));
}

TEST_F(Catalogues, ACorruptCatalogueMeansTheDefaults) {
    const std::string whole = Catalogue(Unit("1:5", "Name", "Nimi"));
    for (const std::string& truncated : Truncated(whole)) {
        Use(truncated);
        EXPECT_EQ(Lng::text(Lng::Hpv, 5, L"Name"), L"Name") << truncated.size();
    }
    Use(whole);
    EXPECT_EQ(Lng::text(Lng::Hpv, 5, L"Name"), L"Nimi");
    for (const std::string& content : {Nested("a", 200'000), std::string(1000, '\0'), std::string("\xFF\xFE<\0x", 5),
                                       std::string("<xliff><file/></xliff>"), Catalogue("<trans-unit/>")}) {
        Use(content);
        EXPECT_EQ(Lng::text(Lng::Hpv, 5, L"Name"), L"Name");
    }
}

TEST_F(Catalogues, TheLanguageSwitchesAtRunTime) {
    EXPECT_EQ(Lng::text(Lng::Hpv, 25903, L"Available properties"), L"Available properties");
    const std::array<const wchar_t*, 3> kCases[] = {
        {L"fi",           L"fi", L"Käytettävissä olevat ominaisuudet"},
        {L"SV-se",        L"sv", L"Tillgängliga egenskaper"            },
        {L"de",           L"de", L"Verfügbare Eigenschaften"           },
        {L"tlh",          L"en", L"Available properties"                },
        {L"..\\lang\\fi", L"en", L"Available properties"                },
    };
    for (const auto& [wanted, used, text] : kCases) {
        Lng::SetLanguage(wanted);
        EXPECT_EQ(Lng::GetLanguage(), used);
        EXPECT_EQ(Lng::text(Lng::Hpv, 25903, L"Available properties"), text);
    }
    const std::vector<ustr> languages = Lng::GetLanguages();
    EXPECT_EQ(languages.front(), L"en");
    EXPECT_TRUE(std::is_sorted(languages.begin() + 1, languages.end()));
    for (const wchar_t* tag : {L"de", L"fi", L"sv", L"xx-test"}) {
        EXPECT_EQ(std::count(languages.begin(), languages.end(), tag), 1) << tag;
    }
}

TEST_F(Catalogues, TheUsersSettingIsKept) {
    Lng::SetLanguage(nullptr);
    const ustr systems = Lng::GetLanguage();
    ASSERT_TRUE(Lng::SetUserLanguage(L"sv"));
    Lng::SetLanguage(L"de");
    Lng::SetLanguage(L"");
    EXPECT_EQ(Lng::GetLanguage(), L"sv");
    ASSERT_TRUE(Lng::SetUserLanguage(nullptr));
    EXPECT_EQ(Lng::GetLanguage(), systems);
    EXPECT_TRUE(Lng::SetUserLanguage(nullptr));

    const std::wstring endless(5000, L'f');
    EXPECT_FALSE(Lng::SetUserLanguage(endless.c_str()));
    const DWORD bytes = static_cast<DWORD>(endless.size() * sizeof(wchar_t));
    for (const DWORD type : {DWORD{REG_BINARY}, DWORD{REG_SZ}}) {
        RegSetKeyValueW(HKEY_CURRENT_USER, kTestKey, L"Language", type, endless.data(), bytes);
        Lng::SetLanguage(nullptr);
        EXPECT_EQ(Lng::GetLanguage(), systems);
    }
}

TEST_F(Catalogues, ReleasedCataloguesAreReadAgain) {
    Use(Catalogue(Unit("1:5", "Name", "Nimi")));
    EXPECT_EQ(Lng::text(Lng::Hpv, 5, L"Name"), L"Nimi");
    WriteBytes(file_, Catalogue(Unit("1:5", "Name", "Toinen")));
    EXPECT_EQ(Lng::text(Lng::Hpv, 5, L"Name"), L"Nimi");
    gwrelease();
    EXPECT_EQ(Lng::GetLanguage(), L"xx-test");
    EXPECT_EQ(Lng::text(Lng::Hpv, 5, L"Name"), L"Toinen");
}

TEST_F(Catalogues, ThePseudoLanguageShowsWhatIsTranslated) {
    Lng::SetLanguage(Lng::kPseudoLanguage);
    EXPECT_EQ(Lng::GetLanguage(), Lng::kPseudoLanguage);
    EXPECT_EQ(Lng::text(Lng::Hpv, 1, L"Name"), L"[Ñámé~~]");
    EXPECT_EQ(Lng::text(Lng::Hpv, 25902, L"&Name && Co"), L"[&Námé && Çó~~~~]") << "a mnemonic stays a key";
    EXPECT_EQ(Lng::text(Lng::Hpv, 1, L"#Remove?"), L"#Remove?");
    EXPECT_EQ(Lng::text(Lng::Hpv, 1, L""), L"");
    for (const wchar_t* format : {L"%d", L"From %5.2f to %-*ls (%%)", L"%I64d%s", L"%c&"}) {
        const ustr pseudo = Lng::text(Lng::Hpv, 1, format);
        EXPECT_TRUE(Lng::SameConversions(format, pseudo.c_str())) << pseudo.c_str();
        EXPECT_GE(3 * pseudo.size(), 4 * std::wcslen(format));
    }
    const std::wstring sentence(std::wstring(200, L'n'));
    EXPECT_NE(std::wstring(Lng::text(Lng::Hpv, 1, sentence.c_str()).c_str()).find(L"~ ~"), std::wstring::npos)
        << "a long filler must be able to wrap";
}

TEST_F(Catalogues, CaptionsNameTheApplication) {
    EXPECT_EQ(Lng::makeDlgHeader(Lng::Hpv, 1, L"Page", Lng::Electrical), L"Page - OrvaCAD Electrical");
    EXPECT_EQ(Lng::makeDlgHeader(Lng::Hpv, 1, L"Page", Lng::NoApp), L"Page");
    EXPECT_EQ(Lng::makeDlgHeader(Lng::Hpv, 1, L"Page", static_cast<Lng::AppID>(99)), L"Page");
    std::set<std::wstring> names;
    for (const Lng::AppID app :
         {Lng::Hpv, Lng::Electrical, Lng::Common, Lng::Building, Lng::Schematics, Lng::Automation}) {
        const std::wstring name(Lng::GetAppName(app, false).c_str());
        EXPECT_TRUE(name.starts_with(L"OrvaCAD"));
        EXPECT_TRUE(name.ends_with(Lng::GetAppName(app, true).c_str()));
        EXPECT_TRUE(names.insert(name).second);
        EXPECT_TRUE(names.insert(Lng::GetAppTag(app).c_str()).second);
    }
    EXPECT_EQ(Lng::GetAppName(Lng::Electrical, true), L"Electrical");
    EXPECT_EQ(Lng::GetAppTag(Lng::NoApp), L"");
}

TEST_F(Catalogues, AreSetToWindows) {
    const HWND window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 90, 90, nullptr, nullptr, nullptr, nullptr);
    const HMENU id = reinterpret_cast<HMENU>(static_cast<INT_PTR>(7));
    const HWND control = CreateWindowExW(0, L"STATIC", L"Old", WS_CHILD, 0, 0, 9, 9, window, id, nullptr, nullptr);
    Lng::setdlgitemtext(Lng::Hpv, window, 7, 25902, L"Name", false);
    EXPECT_EQ(uidriver::Text(control), L"Name");
    Lng::setdlgitemtext(window, 7, L": x", true);
    EXPECT_EQ(uidriver::Text(control), L"Name: x");
    Lng::setdlgheader(Lng::Hpv, window, 1, L"Page", Lng::Common);
    EXPECT_EQ(uidriver::Text(window), L"Page - OrvaCAD");
    Lng::setdlgitemtext(window, 8, L"none", false);
    Lng::setdlgitemtext(nullptr, 7, L"none", false);
    Lng::setdlgheader(Lng::Hpv, nullptr, 1, L"none", Lng::Common);
    DestroyWindow(window);
}

// ---- Window positions

class Positions : public Services {
protected:
    // The stored form, as other versions of the product read it.
    struct Stored {
        std::uint32_t version = 1;
        std::int32_t left = 100, top = 120, right = 500, bottom = 420;
        std::uint32_t showState = SW_SHOWNORMAL;
        std::uint32_t dpi = 96;
    };

    Positions() { SystemParametersInfoW(SPI_GETWORKAREA, 0, &area_, 0); }
    ~Positions() override { DestroyWindow(window_); }

    HWND Open(DWORD style, int left = 10, int top = 20, int width = 300, int height = 200) {
        DestroyWindow(window_);
        window_ =
            CreateWindowExW(0, L"STATIC", L"", style, left, top, width, height, nullptr, nullptr, nullptr, nullptr);
        return window_;
    }
    static void Store(const void* data, DWORD size, DWORD type = REG_BINARY) {
        RegSetKeyValueW(HKEY_CURRENT_USER, (std::wstring(kTestKey) + L"\\Window").c_str(), L"Dlg", type, data, size);
    }
    static void Store(const Stored& stored) { Store(&stored, sizeof stored); }
    static bool Save(HWND window) { return InterApp::HPV::Reg_SetWindowPos_(nullptr, L"Window/Dlg", window); }
    static bool Read(HWND window, RECT* rect, int* showState, bool apply = false) {
        return InterApp::HPV::Reg_GetWindowPos_(nullptr, L"Window/Dlg", window, rect, showState, apply);
    }
    static bool Restore(HWND window) { return Read(window, nullptr, nullptr, true); }
    static RECT Rect(HWND window) {
        RECT rect{};
        GetWindowRect(window, &rect);
        return rect;
    }
    static int Width(const RECT& rect) { return rect.right - rect.left; }
    static int Height(const RECT& rect) { return rect.bottom - rect.top; }
    static constexpr DWORD kSizable = WS_POPUP | WS_CAPTION | WS_THICKFRAME | WS_MAXIMIZEBOX | WS_MINIMIZEBOX;
    static constexpr DWORD kFixed = WS_POPUP | WS_CAPTION;
    HWND window_ = nullptr;
    RECT area_{};
};

TEST_F(Positions, AreRestoredWhereTheyWereStored) {
    ASSERT_TRUE(Save(Open(kSizable, 60, 70, 410, 320)));
    const RECT stored = Rect(window_);
    EXPECT_TRUE(Restore(Open(kSizable)));
    const RECT restored = Rect(window_);
    EXPECT_TRUE(EqualRect(&restored, &stored));
    RECT read{};
    int showState = 0;
    MoveWindow(window_, 5, 6, 200, 100, FALSE);
    EXPECT_TRUE(Read(window_, &read, &showState));
    EXPECT_TRUE(EqualRect(&read, &stored));
    EXPECT_EQ(showState, SW_SHOWNORMAL);
    EXPECT_EQ(Rect(window_).left, 5) << "moved without apply";
    EXPECT_FALSE(InterApp::HPV::Reg_GetWindowPos_(nullptr, L"Window/Other", window_, &read, nullptr, true));
}

TEST_F(Positions, AreKeptBelowAKeyOfTheCaller) {
    HKEY root = nullptr;
    ASSERT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, kTestKey, &root), ERROR_SUCCESS);
    for (const wchar_t* key : {L"Plain", L"A/B/C"}) {
        EXPECT_TRUE(InterApp::HPV::Reg_SetWindowPos_(root, key, Open(kSizable)));
        EXPECT_TRUE(InterApp::HPV::Reg_GetWindowPos_(root, key, nullptr, nullptr, nullptr, true));
        EXPECT_FALSE(InterApp::HPV::Reg_GetWindowPos_(root, L"B", nullptr, nullptr, nullptr, true));
    }
    RegCloseKey(root);
    DWORD size = 0;
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, (std::wstring(kTestKey) + L"\\A\\B").c_str(), L"C", RRF_RT_REG_BINARY,
                           nullptr, nullptr, &size),
              ERROR_SUCCESS);
}

TEST_F(Positions, TheShowStateComesBack) {
    Open(kSizable, 60, 70, 410, 320);
    const RECT normal = Rect(window_);
    for (const int state : {SW_SHOWMAXIMIZED, SW_SHOWMINIMIZED}) {
        ShowWindow(window_, state);
        ASSERT_TRUE(Save(window_));
        RECT rect{};
        int stored = 0;
        EXPECT_TRUE(Read(nullptr, &rect, &stored));
        EXPECT_TRUE(EqualRect(&rect, &normal)) << state;
        EXPECT_EQ(stored, state == SW_SHOWMAXIMIZED ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL);
        ShowWindow(window_, SW_RESTORE);
    }
    Store(Stored{.showState = SW_SHOWMAXIMIZED});
    EXPECT_TRUE(Restore(Open(kSizable)));
    EXPECT_TRUE(IsZoomed(window_));
    EXPECT_TRUE(Restore(Open(kFixed)));
    EXPECT_FALSE(IsZoomed(window_));
}

TEST_F(Positions, AlwaysComeBackOntoAMonitor) {
    const RECT kPlaces[] = {
        {-5000, 100,   -4600, 400  },
        {9000,  9000,  9400,  9300 },
        {100,   -3000, 500,   -2700},
        {-50,   -60,   350,   240  },
        {-500,  -500,  9000,  9000 },
    };
    for (const RECT& place : kPlaces) {
        Store(Stored{1, place.left, place.top, place.right, place.bottom, SW_SHOWNORMAL, GetDpiForSystem()});
        for (const DWORD style : {kSizable, kFixed}) {
            EXPECT_TRUE(Restore(Open(style)));
            const RECT rect = Rect(window_);
            RECT inside{};
            EXPECT_TRUE(IntersectRect(&inside, &rect, &area_) && EqualRect(&inside, &rect));
            EXPECT_EQ(Width(rect), style == kFixed ? 300 : std::min(Width(place), Width(area_)));
        }
    }
}

TEST_F(Positions, SizesFollowTheResolutionUnlessTheyAreFixed) {
    const unsigned dpi = GetDpiForSystem();
    for (const unsigned storedDpi : {dpi, dpi * 2, dpi / 2}) {
        Store(Stored{.dpi = storedDpi});
        EXPECT_TRUE(Restore(Open(kSizable)));
        EXPECT_EQ(Width(Rect(window_)), MulDiv(400, static_cast<int>(dpi), static_cast<int>(storedDpi)));
        EXPECT_EQ(Height(Rect(window_)), MulDiv(300, static_cast<int>(dpi), static_cast<int>(storedDpi)));
        EXPECT_TRUE(Restore(Open(kFixed)));
        const RECT rect = Rect(window_);
        const RECT expected{100, 120, 400, 320};
        EXPECT_TRUE(EqualRect(&rect, &expected));
    }
}

TEST_F(Positions, ANonsenseValueIsIgnored) {
    const Stored kNonsense[] = {
        {.version = 2},        {.right = 100},         {.bottom = 119},           {.left = INT32_MIN},
        {.bottom = INT32_MAX}, {.showState = SW_HIDE}, {.showState = 0xFFFFFFFF}, {.dpi = 0},
        {.dpi = 0x80000000},
    };
    Open(kSizable);
    const RECT before = Rect(window_);
    const auto expectIgnored = [&](std::size_t i) {
        RECT rect{1, 2, 3, 4};
        int showState = -7;
        EXPECT_FALSE(Read(window_, &rect, &showState, true)) << i;
        EXPECT_EQ(rect.left, 1);
        EXPECT_EQ(showState, -7);
        const RECT after = Rect(window_);
        EXPECT_TRUE(EqualRect(&before, &after)) << i;
    };
    for (std::size_t i = 0; i < std::size(kNonsense); ++i) {
        Store(kNonsense[i]);
        expectIgnored(i);
    }
    const Stored good[2] = {};
    for (const DWORD size : {0ul, 1ul, 24ul, 27ul, 29ul, 36ul}) {
        Store(good, size);
        expectIgnored(size);
    }
    Store(L"a text of this many chars", sizeof(Stored), REG_SZ);
    expectIgnored(100);
}

TEST_F(Positions, BadArgumentsAreRefused) {
    using namespace InterApp::HPV;
    Store(Stored{});
    Open(kSizable);
    const HWND gone = window_;
    DestroyWindow(gone);
    window_ = nullptr;
    for (const HWND window : {static_cast<HWND>(nullptr), gone}) {
        EXPECT_FALSE(Reg_SetWindowPos_(nullptr, L"Window/New", window));
    }
    EXPECT_FALSE(Restore(gone));
    Open(kSizable);
    for (const wchar_t* key : {static_cast<const wchar_t*>(nullptr), L"", L"Window/", L"/"}) {
        EXPECT_FALSE(Reg_SetWindowPos_(nullptr, key, window_));
        EXPECT_FALSE(Reg_GetWindowPos_(nullptr, key, window_, nullptr, nullptr, true));
    }
}

// ---- Entries of other modules

TEST_F(Services, UserVariablesHaveTheNameThatTheUserGave) {
    EXPECT_EQ(InterApp::HPV::Qlg_textUserVarDef_(3), L"User variable 3");
    const wchar_t name[] = L"Insulation class";
    RegSetKeyValueW(HKEY_CURRENT_USER, (std::wstring(kTestKey) + L"\\UserVariables").c_str(), L"3", REG_SZ, name,
                    sizeof name);
    EXPECT_EQ(InterApp::HPV::Qlg_textUserVarDef_(3), name);
    EXPECT_EQ(InterApp::HPV::Qlg_textUserVarDef_(4), L"User variable 4");
}

TEST_F(Services, EntriesAreLookedForInLoadedModulesOnly) {
    const auto kernel = GetModuleHandleW(L"kernel32.dll");
    EXPECT_EQ(MiscUtil::GetProcAddress(L"kernel32.dll", "GetTickCount"),
              reinterpret_cast<void*>(::GetProcAddress(kernel, "GetTickCount")));
    EXPECT_EQ(MiscUtil::GetProcAddress(L"kernel32.dll", "NoSuchEntry"), nullptr);
    ASSERT_EQ(GetModuleHandleW(L"msxml3.dll"), nullptr);
    EXPECT_EQ(MiscUtil::GetProcAddress(L"msxml3.dll", "DllGetClassObject"), nullptr);
    EXPECT_EQ(GetModuleHandleW(L"msxml3.dll"), nullptr) << "the look-up loaded the module";
    EXPECT_EQ(MiscUtil::GetProcAddress(nullptr, "GetTickCount"), nullptr);
    EXPECT_EQ(MiscUtil::GetProcAddress(L"", "main"), nullptr);
    EXPECT_EQ(MiscUtil::GetProcAddress(L"kernel32.dll", nullptr), nullptr);
}

// ---- GUIDs

constexpr GUID kSomeGuid = {
    0x01234567, 0x89AB, 0xCDEF, {0xF0, 0x1E, 0x2D, 0x3C, 0x4B, 0x5A, 0x69, 0x78}
};

TEST(Guids, AreWrittenInTheNamedForm) {
    EXPECT_EQ(Guid::ToString(kSomeGuid), L"01234567-89AB-CDEF-F01E-2D3C4B5A6978");
    EXPECT_EQ(Guid::ToString(kSomeGuid, Guid::Plain, Guid::NoOption), L"01234567-89ab-cdef-f01e-2d3c4b5a6978");
    EXPECT_EQ(Guid::ToString(kSomeGuid, Guid::Braced, 3), L"{01234567-89AB-CDEF-F01E-2D3C4B5A6978}");
    EXPECT_EQ(Guid::ToString(GUID{}, 2, 3), L"00000000-0000-0000-0000-000000000000");
    EXPECT_EQ(Guid::ToString(GUID{}, Guid::Braced, Guid::UpperCase), L"");
    EXPECT_EQ(Guid::ToString(kSomeGuid, 3), L"");
}

TEST(Guids, ComeBackFromTheirText) {
    std::set<std::wstring> texts;
    for (int i = 0; i < 1000; ++i) {
        GUID guid{};
        ASSERT_TRUE(Guid::Generate(guid));
        for (const int format : {Guid::Plain, Guid::Braced}) {
            GUID back{};
            EXPECT_TRUE(Guid::FromString(back, Guid::ToString(guid, format, i & 3).c_str(), format));
            EXPECT_EQ(back, guid);
        }
        EXPECT_TRUE(texts.insert(Guid::ToString(guid).c_str()).second) << "generated twice";
    }
    GUID null = kSomeGuid;
    EXPECT_TRUE(Guid::FromString(null, L"00000000-0000-0000-0000-000000000000"));
    EXPECT_TRUE(Guid::IsNull(null));
    EXPECT_FALSE(Guid::IsNull(kSomeGuid));
}

TEST(Guids, AnyOtherTextIsRefused) {
    const std::pair<const wchar_t*, int> kCases[] = {
        {nullptr,                                      Guid::Plain },
        {L"",                                          Guid::Plain },
        {L"{}",                                        Guid::Braced},
        {L"{01234567-89ab-cdef-f01e-2d3c4b5a6978}",    Guid::Plain },
        {L"01234567-89ab-cdef-f01e-2d3c4b5a6978",      Guid::Braced},
        {L"(01234567-89ab-cdef-f01e-2d3c4b5a6978}",    Guid::Braced},
        {L"01234567-89ab-cdef-f01e-2d3c4b5a697",       Guid::Plain },
        {L"01234567-89ab-cdef-f01e-2d3c4b5a69780",     Guid::Plain },
        {L" 01234567-89ab-cdef-f01e-2d3c4b5a697",      Guid::Plain },
        {L"01234567_89ab-cdef-f01e-2d3c4b5a6978",      Guid::Plain },
        {L"0123456789ab-cdef-f01e-2d3c-4b5a6978",      Guid::Plain },
        {L"g1234567-89ab-cdef-f01e-2d3c4b5a6978",      Guid::Plain },
        {L"-1234567-89ab-cdef-f01e-2d3c4b5a6978",      Guid::Plain },
        {L"01234567-89ab-cdef-f01e-2d3c4b5a697\xFF18", Guid::Plain },
        {L"01234567-89ab-cdef-f01e-2d3c4b5a6978",      0           },
    };
    for (const auto& [text, format] : kCases) {
        GUID guid = kSomeGuid;
        EXPECT_FALSE(Guid::FromString(guid, text, format)) << text;
        EXPECT_TRUE(Guid::IsNull(guid));
    }
}

// ---- Texts as lists and in searches

TEST(Strings, SplittingKeepsEmptyParts) {
    const std::pair<const wchar_t*, std::vector<ustr>> kCases[] = {
        {L"",       {}                         },
        {L"a",      {L"a"}                     },
        {L"|",      {L"", L""}                 },
        {L"5||a",   {L"5", L"", L"a"}          },
        {L"|a|b||", {L"", L"a", L"b", L"", L""}},
    };
    for (const auto& [text, expected] : kCases) {
        std::vector<ustr> parts{L"old"};
        String::ArrayFromString(text, parts, L'|');
        EXPECT_EQ(parts, expected) << text;
        EXPECT_EQ(String::ArrayToString(parts, L"|"), text);
    }
    std::vector<ustr> self{L"a|b"};
    String::ArrayFromString(self[0], self, L'|');
    EXPECT_EQ(self, (std::vector<ustr>{L"a", L"b"}));
    EXPECT_EQ(String::ArrayToString({L"a", L"b"}), L"a, b");
}

TEST(Strings, FoldingDropsCaseAndAccents) {
    const std::pair<const wchar_t*, const wchar_t*> kCases[] = {
        {L"Supply AIR 12",         L"supply air 12"    },
        {L"ÄÖÅäöå Éçñü", L"aoaaoa ecnu"      },
        {L"e\u0301A\u0308",        L"ea"               },
        {L"Ø1 Łódź Đ ı İ",  L"o1 lodz d i i"    },
        {L"Straße ŒUVRE Æ",     L"strasse oeuvre ae"},
        {L"ΆΛΦΑς",            L"αλφασ"       },
        {L"ЁЖЙ",                L"ежи"           },
        {L"Ấ",                   L"a"                },
        {L"m³/h W/m²",           L"m3/h w/m2"        },
        {L"\u00B5",                L"\u03BC"           },
        {L"漢\U0001F600\x1",      L"漢\U0001F600\x1" },
    };
    for (const auto& [text, folded] : kCases)
        EXPECT_EQ(String::Fold(text), folded) << text;
    for (wchar_t c = 1; c < 0xFFFF; ++c) {
        const ustr once = String::Fold(std::wstring_view(&c, 1));
        EXPECT_EQ(String::Fold(once), once) << static_cast<int>(c);
    }
}

TEST(Strings, ASearchFindsEveryWordInAnyOrder) {
    const auto matches = [](const wchar_t* text, const wchar_t* search) {
        return String::MatchesFolded(String::Fold(text), String::SearchWords(search));
    };
    EXPECT_TRUE(matches(L"Tuloilman määrä", L"  MAARA\ttulo "));
    EXPECT_TRUE(matches(L"Tuloilman määrä", L""));
    EXPECT_TRUE(matches(L"", L" "));
    EXPECT_FALSE(matches(L"Tuloilman määrä", L"maara poisto"));
    EXPECT_TRUE(String::SearchWords(L" \t\u00A0").empty());
}

TEST(Strings, NamesSortAsAUserSortsThem) {
    const wchar_t* const kSorted[] = {L"",        L"1",         L"2",        L"10",       L"room 2",
                                      L"Room 10", L"room 10 b", L"room 10a", L"Zone 1-2", L"zone 1-10"};
    for (std::size_t i = 0; i < std::size(kSorted); ++i) {
        for (std::size_t k = 0; k < std::size(kSorted); ++k) {
            const int expected = i < k ? -1 : i > k;
            EXPECT_EQ(String::CompareForUser(kSorted[i], kSorted[k]), expected) << kSorted[i] << " / " << kSorted[k];
        }
    }
    EXPECT_EQ(String::CompareForUser(L"ROOM 007", L"room 7"), 0);
    EXPECT_EQ(String::CompareForUser(L"x99999999999999999999998", L"x99999999999999999999999"), -1);
}

// A sort needs an order without contradictions, whatever the names.
TEST(Strings, TheOrderOfNamesIsConsistent) {
    constexpr wchar_t kLetters[] = L"aAbäÖ01239² -.\u0301";
    std::mt19937 random(7);
    std::vector<std::wstring> names(60);
    for (std::wstring& name : names) {
        for (std::size_t size = random() % 6; size > 0; --size)
            name += kLetters[random() % (std::size(kLetters) - 1)];
    }
    for (const auto& a : names) {
        for (const auto& b : names) {
            const int order = String::CompareForUser(a, b);
            EXPECT_EQ(String::CompareForUser(b, a), -order);
            for (const auto& c : names) {
                if (order <= 0 && String::CompareForUser(b, c) <= 0) {
                    EXPECT_LE(String::CompareForUser(a, c), 0) << a << " / " << b << " / " << c;
                }
            }
        }
    }
}

// ---- File dialogs

TEST_F(Services, FileTypesAreListedInOrder) {
    FileDlgUtil::CFilterSpecList types;
    EXPECT_TRUE(types.IsEmpty());
    types.Add(L"XML", L"*.xml");
    types.Add(L"Text", L"*.txt;*.csv");
    types.SetDefaultExt(L"*.xml");
    types.Finalize(false);
    EXPECT_EQ(std::distance(types.begin(), types.end()), 2);
    types.Finalize(true);
    types.Finalize(true);
    const std::vector<FileDlgUtil::CFilterSpecList::Entry> expected = {
        {L"XML",             L"*.xml"      },
        {L"Text",            L"*.txt;*.csv"},
        {L"All files (*.*)", L"*.*"        }
    };
    EXPECT_TRUE(std::equal(types.begin(), types.end(), expected.begin(), expected.end()));
    EXPECT_EQ(types.GetDefaultExt(), L"*.xml");
}

class FileDialogs : public DialogTest {
protected:
    bool Select(bool save) {
        return RunSteps([&] { return MiscUtil::SelectXmlFile(nullptr, Lng::Electrical, save, path_); });
    }

    const TestFolder folder_;
    ustr_pre<260> path_{folder_.File(L"old.xml")};
};

TEST_F(FileDialogs, ProposeTheCallersNameAndAddTheExtension) {
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Save as an XML file - OrvaCAD Electrical");
        PostMessageW(dlg, WM_COMMAND, IDOK, 0);
    });
    EXPECT_TRUE(Select(true));
    EXPECT_EQ(path_, folder_.File(L"old.xml"));
    Step([](HWND dlg) { uidriver::ChooseFile(dlg, L"uusi tiedosto"); });
    EXPECT_TRUE(Select(true));
    EXPECT_EQ(path_, folder_.File(L"uusi tiedosto.xml"));
}

TEST_F(FileDialogs, ReplacingAFileIsAskedFor) {
    WriteBytes(path_.c_str(), "<old/>");
    Step([](HWND dlg) { uidriver::ChooseFile(dlg, L"old.xml"); });
    InNewDialog([](HWND question) { uidriver::Click(question, IDNO); });
    script_->WaitFor("the question is gone", [&] { return uidriver::TopDialog() == dlg_; });
    Step([](HWND dlg) { PostMessageW(dlg, WM_COMMAND, IDCANCEL, 0); });
    EXPECT_FALSE(Select(true));
    EXPECT_EQ(path_, folder_.File(L"old.xml"));
}

TEST_F(FileDialogs, AnExistingFileIsOpened) {
    WriteBytes(path_.c_str(), "<old/>");
    path_ = folder_.File(L"");
    Step([](HWND dlg) { uidriver::ChooseFile(dlg, L"old.xml"); });
    EXPECT_TRUE(Select(false));
    EXPECT_EQ(path_, folder_.File(L"old.xml"));
}

// ---- Images

constexpr int kImages[] = {ImageLib::Property, ImageLib::PropertyGroup, ImageLib::ConstantText, ImageLib::Product};

TEST_F(Services, ImagesComeInTheSizeOfTheResolution) {
    for (const unsigned dpi : {96u, 120u, 144u, 192u}) {
        const int size = GetSystemMetricsForDpi(SM_CXSMICON, dpi);
        int width = 0;
        int height = 0;
        ASSERT_TRUE(ImageList_GetIconSize(ImageLib::GetImageList(dpi), &width, &height));
        EXPECT_EQ(width, size);
        EXPECT_EQ(height, size);
        std::set<int> places;
        for (const int id : kImages) {
            const int place = ImageLib::GetImage(id, dpi);
            EXPECT_TRUE(place >= 0 && place < ImageList_GetImageCount(ImageLib::GetImageList(dpi)));
            EXPECT_TRUE(places.insert(place).second);
            EXPECT_NE(ImageLib::GetIcon(id, dpi), nullptr);
            EXPECT_EQ(ImageLib::GetIcon(id, dpi), ImageLib::GetIcon(id, dpi));
        }
    }
    EXPECT_EQ(ImageLib::GetIcon(L"Property", 96), ImageLib::GetIcon(ImageLib::Property, 96));
    EXPECT_EQ(ImageLib::GetIcon(4711), nullptr);
    EXPECT_EQ(ImageLib::GetIcon(L"none"), nullptr);
    EXPECT_EQ(ImageLib::GetIcon(static_cast<const wchar_t*>(nullptr)), nullptr);
    EXPECT_EQ(ImageLib::GetBitmap(ImageLib::NoImage), nullptr);
    EXPECT_EQ(ImageLib::GetImage(ImageLib::NoImage), -1);
}

TEST_F(Services, BitmapsArePremultiplied) {
    for (const int id : kImages) {
        DIBSECTION dib{};
        ASSERT_EQ(GetObjectW(ImageLib::GetBitmap(id, 96), sizeof dib, &dib), static_cast<int>(sizeof dib));
        ASSERT_EQ(dib.dsBm.bmBitsPixel, 32);
        const auto* channel = static_cast<const std::uint8_t*>(dib.dsBm.bmBits);
        int solid = 0;
        int partly = 0;
        for (int i = 0; i < dib.dsBm.bmWidth * dib.dsBm.bmHeight; ++i, channel += 4) {
            EXPECT_LE(std::max({channel[0], channel[1], channel[2]}), channel[3]);
            solid += channel[3] == 255;
            partly += channel[3] > 0 && channel[3] < 255;
        }
        EXPECT_GT(solid, 50) << id;
        EXPECT_GT(partly, 0) << id;
    }
}

TEST_F(Services, ReleasingFreesTheImages) {
    gwrelease();
    const int before = uidriver::CountHandles().gdi;
    for (const unsigned dpi : {96u, 144u}) {
        ImageLib::GetBitmap(ImageLib::Product, dpi);
        ImageLib::GetImageList(dpi);
    }
    EXPECT_GT(uidriver::CountHandles().gdi, before);
    gwrelease();
    EXPECT_EQ(uidriver::CountHandles().gdi, before);
    EXPECT_NE(ImageLib::GetIcon(ImageLib::Product), nullptr);
    gwrelease();
}

}  // namespace
