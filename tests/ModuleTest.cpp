#include <gtest/gtest.h>
#include <occommonui/occommonui.h>
#include <orvatool/Gw.h>
#include <windows.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>

namespace {

constexpr wchar_t kModule[] = L"occommonui.dll";

// What the decorated names of a family's operations hold.
constexpr const char* kFamilies[] = {
    "14CustomProperty", "20ReportDefinitionType", "13ReportOptions",   "12ReportFilter",       "14ReportTemplate",
    "13WarningReport",  "13UpdateDwgData",        "15ObjectSelection", "18ObjectSelectionCmd",
};

using Handshake = int (*)(int);

std::set<std::string> ExportedNames(HMODULE module) {
    const auto* base = reinterpret_cast<const unsigned char*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const auto& entry = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + entry.VirtualAddress);
    const auto* names = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    std::set<std::string> result;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        result.emplace(reinterpret_cast<const char*>(base + names[i]));
    return result;
}

// This program does not import the library, so that loading it is what the test does.
TEST(Module, ShakesHandsByItsPlainNameAndReleasesTheToolkitOnceAtUnload) {
    ASSERT_EQ(GetModuleHandleW(kModule), nullptr);
    const HMODULE module = LoadLibraryW(kModule);
    ASSERT_NE(module, nullptr);
    const auto handshake = reinterpret_cast<Handshake>(GetProcAddress(module, "occommonui_version_nmb"));
    ASSERT_NE(handshake, nullptr);
    EXPECT_EQ(handshake(20160101), 20160101);
    for (const int other : {0, -20160101, 20160102, 1})
        EXPECT_EQ(handshake(other), -20160101) << other;

    const int releases = gwreleasecount();
    ASSERT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandleW(kModule), nullptr);
    EXPECT_EQ(gwreleasecount(), releases + 1);
}

TEST(Module, ExportsItsInterfaceAndNothingElseAndHasItsTemplates) {
    const HMODULE module = LoadLibraryW(kModule);
    ASSERT_NE(module, nullptr);
    const std::set<std::string> names = ExportedNames(module);
    const auto isOwn = [](const std::string& name) {
        const auto has = [&](const char* family) { return name.find(family) != std::string::npos; };
        return name == "occommonui_version_nmb" || std::any_of(std::begin(kFamilies), std::end(kFamilies), has);
    };
    for (const std::string& name : names)
        EXPECT_TRUE(isOwn(name)) << name;
    // By the piece of the decorated name that says which operation it is.
    for (const char* piece :
         {"Format5Parse", "Format5Build", "Format4ItemC1Ev", "Format4ItemC1EOS1_", "Format4ItemaSERKS1_",
          "Format4ItemD1", "Item6IsText", "4DataC1ERKS0_", "4DataaSEOS0_", "4DataD1", "4Data6PropId", "12IsMyProperty",
          "4FindE", "13FindBestMatch", "3Dlg7Options",
          // Reports.
          "20ReportDefinitionType9hasPropIdEs", "20ReportDefinitionType5ToXmlERN5ticpp7Element",
          "20ReportDefinitionType5ToXmlERNSt7__cxx1112basic_stringIcS",
          "20ReportDefinitionType5ToXmlERNSt7__cxx1112basic_stringIwS",
          "20ReportDefinitionType7FromXmlERKN5ticpp7Element", "20ReportDefinitionType7FromXmlEPKc",
          "20ReportDefinitionType7FromXmlEPKw", "13ReportOptions5ToXmlERN5ticpp7Element",
          "13ReportOptions7FromXmlERKN5ticpp7Element", "12ReportFilterC1Ev", "12ReportFilterC1ERKS_",
          "12ReportFilterC1EOS_", "12ReportFilteraSERKS_", "12ReportFilteraSEOS_", "12ReportFilterD1Ev",
          "12ReportFilter5resetEb", "12ReportFilter5ToXmlERN5ticpp7Element",
          "12ReportFilter5ToXmlERNSt7__cxx1112basic_stringIcS", "12ReportFilter5ToXmlERNSt7__cxx1112basic_stringIwS",
          "12ReportFilter7FromXmlERKN5ticpp7Element", "12ReportFilter7FromXmlEPKc", "12ReportFilter7FromXmlEPKw",
          "12ReportFilter20ReportOutputTypeNameE", "12ReportFilter29ReportOutputTypeFileExtensionE",
          "12ReportFilter22IsTextReportOutputTypeE", "12ReportFilter21GetReportConfBaseNameE",
          "12ReportFilter19GetOutputTypeValuesE", "12ReportFilter13AlignmentNameEb", "14ReportTemplate4EditE",
          "14ReportTemplate10EditColumnE", "14ReportTemplate11ExportToXmlE", "14ReportTemplate13ImportFromXmlE",
          "14ReportTemplate14IsInstanceAttrEi", "14ReportTemplate7ContextC1ERKS0_", "13WarningReport11AddCategoryE",
          "13WarningReport3AddE", "13WarningReport5ClearE", "13WarningReport10ShowReportE",
          "13WarningReport16ShowNotificationE",
          // Object selection and drawing updates.
          "3Dlg7PrjLock4LockEP", "3Dlg7PrjLock6UnlockEv", "3Dlg7PrjLockC1ERKS1_", "3Dlg7PrjLockaSERKS1_",
          "3Dlg7PrjLockD1Ev", "3Dlg4CtrlC1Ev", "3Dlg4CtrlaSERKS1_", "3Dlg4Ctrl6AttachE", "3Dlg4Ctrl12OnInitDialogEv",
          "3Dlg4Ctrl9OnCommandEyx", "3Dlg4Ctrl8OnNotifyEyx", "3Dlg4Ctrl10Data2CtrlsEv", "3Dlg4Ctrl10Ctrls2DataEv",
          "3Dlg4Ctrl18EnableDisableCtrlsE", "3Dlg4Ctrl7SetDataE", "3Dlg4Ctrl7GetDataE", "3Dlg4Ctrl11GetFlagMaskEv",
          "3Dlg4Ctrl11SetFlagMaskEi", "3Dlg4Ctrl13SetPaperSpaceEb", "3Dlg4Ctrl12SetAnchoringEdddd",
          "3Dlg4Ctrl12SetAnchoringEbbbb", "3Dlg4Ctrl11SetLanguageEv", "15ObjectSelection3Dlg4EditE",
          "18ObjectSelectionCmd10OptionsDlgE", "13UpdateDwgData10OptionsDlgE", "5PrjDb10BuildObjIdE",
          "5PrjDb14FindNextFreeIdE", "5PrjDb4ReadE", "5PrjDb5WriteE", "5PrjDb6DeleteE"}) {
        const auto has = [piece](const std::string& name) { return name.find(piece) != std::string::npos; };
        EXPECT_TRUE(std::any_of(names.begin(), names.end(), has)) << piece;
    }
    // In the language of the resources.
    for (const wchar_t* name :
         {L"CUSTOMPROPERTYDLG", L"REPORTTEMPLATEEDITDLG", L"REPORTCOLUMNEDITDLG", L"OBJSELDATADLG",
          L"OBJSELDATAWITHPRESETSDLG", L"OBJSELRECORDDATA", L"OBJSELPROPDLG", L"OBJSELCMDDLG", L"UPDATEDWGDATADLG"}) {
        EXPECT_NE(FindResourceExW(module, RT_DIALOG, name, 1035), nullptr) << name;
    }
    FreeLibrary(module);
}

}  // namespace
