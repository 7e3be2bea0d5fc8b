#include <gtest/gtest.h>
#include <occommonui/ReportTemplate.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "support/DialogTest.h"
#include "support/PatchImport.h"
#include "support/TestFolder.h"

namespace {

namespace fs = std::filesystem;

constexpr int kSize = sizeof(ReportDefinitionType);
constexpr wchar_t kReadFailed[] = L"Failed to read XML file.";
constexpr wchar_t kWriteFailed[] = L"Failed to write XML file.";
constexpr wchar_t kNoneOfThisKind[] = L"The file has no templates of this kind.";

// Two groups and one column, with texts that need escapes and more than ASCII.
ReportDefinitionType Small() {
    ReportDefinitionType record;
    record.id = 12;
    record.groupCount = 2;
    record.groups[0] = 3;
    record.groups[1] = -4;
    SetFixedText<&ReportDefinitionType::name>(record, L"Pääluettelo");
    SetFixedText<&ReportDefinitionType::description>(record, L"a < \"b\" & c");
    record.wcSeparator = L';';
    record.columnCount = 1;
    oce_columntype& column = record.columns[0];
    column.propId = 7001;
    column.len = 22.5F;
    column.align = 2;
    column.nSubRow = 1;
    SetFixedText<&oce_columntype::hdr1>(column, L"Code");
    column.showUnits = true;
    return record;
}

constexpr char kSmallContent[] =
    " id=\"12\" wcSeparator=\"59\" name=\"P\xC3\xA4\xC3\xA4luettelo\" description=\"a &lt; &quot;b&quot; &amp; c\">\r\n"
    "        <Groups>\r\n"
    "            <Group id=\"3\" />\r\n"
    "            <Group id=\"-4\" />\r\n"
    "        </Groups>\r\n"
    "        <Columns>\r\n"
    "            <Column propId=\"7001\" len=\"22.5\" align=\"2\" nSubRow=\"1\" hdr1=\"Code\" hdr2=\"\" "
    "showUnits=\"1\" />\r\n"
    "        </Columns>\r\n"
    "    </SymbolLegendTemplate>\r\n";

// No field is at its default, every text and list is as long as it can be.
ReportDefinitionType Full(int seed) {
    ReportDefinitionType record;
    record.id = 1000 + seed;
    record.groupCount = ReportDefinitionType::kMaxGroups;
    for (int i = 0; i < record.groupCount; ++i)
        record.groups[i] = seed * 1000 - i * i - 1;
    SetFixedText<&ReportDefinitionType::name>(record, std::wstring(40, static_cast<wchar_t>(L'a' + seed)));
    SetFixedText<&ReportDefinitionType::description>(record, std::wstring(256, static_cast<wchar_t>(0x4E00 + seed)));
    record.wcSeparator = L'|';
    record.columnCount = ReportDefinitionType::kMaxColumns;
    for (int i = 0; i < record.columnCount; ++i) {
        oce_columntype& column = record.columns[i];
        column.propId = static_cast<std::int16_t>(i - 100 + seed * 1000);
        column.len = 0.1F + static_cast<float>(i);
        column.align = static_cast<std::uint8_t>(255 - i);
        column.nSubRow = static_cast<std::uint8_t>(1 + i);
        SetFixedText<&oce_columntype::hdr1>(column, std::wstring(28, static_cast<wchar_t>(L'!' + i)));
        SetFixedText<&oce_columntype::hdr2>(column, std::wstring(28, static_cast<wchar_t>(0xC0 + i)));
        column.showUnits = true;
    }
    return record;
}

// The records as a caller's buffer, at an odd address.
class Buffer {
public:
    explicit Buffer(const std::vector<ReportDefinitionType>& records) : bytes_(1 + records.size() * kSize) {
        for (std::size_t i = 0; i < records.size(); ++i)
            std::memcpy(bytes_.data() + 1 + i * kSize, &records[i], kSize);
    }
    void* Data() { return bytes_.data() + 1; }
    int Count() const { return static_cast<int>(bytes_.size() / kSize); }
    bool operator==(const Buffer&) const = default;

private:
    std::vector<std::byte> bytes_;
};

ReportDefinitionType Numbered(int id) {
    ReportDefinitionType record;
    record.id = id;
    return record;
}

// An element of a template without groups and columns.
std::string Element(const char* app, const char* type, int id) {
    return std::string("<SymbolLegendTemplate appId='") + app + "' typeId='" + type + "' id='" + std::to_string(id) +
           "' wcSeparator='0' name='' description=''/>";
}

std::string Document(const std::string& elements) {
    return "<?xml version=\"1.0\" ?><SymbolLegendTemplates>" + elements + "</SymbolLegendTemplates>";
}

class ReportTemplateXmlTest : public DialogTest {
protected:
    // The user types the file's name.
    void ChooseFile() {
        Step([this](HWND dlg) { uidriver::ChooseFile(dlg, file_); });
    }
    // A message of the product that says so, under a cursor that no longer tells to wait.
    void Confirm(const wchar_t* message) {
        InNewDialog([message](HWND box) {
            EXPECT_EQ(uidriver::Text(box), L"OrvaCAD");
            EXPECT_EQ(uidriver::Text(GetDlgItem(box, 0xFFFF)), message);
            EXPECT_NE(GetCursor(), LoadCursorW(nullptr, IDC_WAIT));
            uidriver::Key(VK_RETURN);
        });
    }

    bool Run(decltype(&ReportTemplate::ExportToXml) operation, Buffer& records, Lng::AppID app = Lng::Electrical,
             ReportType type = BillOfMaterials) {
        return RunSteps([&] { return operation(nullptr, app, type, records.Data(), records.Count(), kSize); });
    }
    // Has the user choose the file and what is in it read.
    bool Import(Buffer& records, Lng::AppID app = Lng::Electrical, ReportType type = BillOfMaterials,
                const wchar_t* message = nullptr) {
        ChooseFile();
        if (message) Confirm(message);
        return Run(ReportTemplate::ImportFromXml, records, app, type);
    }
    void Export(Buffer& records, Lng::AppID app = Lng::Electrical, ReportType type = BillOfMaterials) {
        ChooseFile();
        EXPECT_TRUE(Run(ReportTemplate::ExportToXml, records, app, type));
    }

    // The file is refused with this message, and the records are as they were.
    void ExpectRefused(const std::string& content, const wchar_t* message) {
        WriteBytes(file_, content);
        const Buffer before({Full(1), Full(2), Full(3)});
        Buffer records = before;
        EXPECT_FALSE(Import(records, Lng::Electrical, BillOfMaterials, message)) << content;
        EXPECT_TRUE(records == before) << content;
    }
    std::ptrdiff_t FilesInFolder() const { return std::distance(fs::directory_iterator(folder_.Path()), {}); }

    const TestFolder folder_;
    const std::wstring file_ = folder_.File(L"mallit ä.xml");
};

TEST_F(ReportTemplateXmlTest, WritesTheTemplatesToTheLetter) {
    Buffer records({Small(), Small()});
    Export(records);
    const std::string element = std::string("    <SymbolLegendTemplate appId=\"2\" typeId=\"1\"") + kSmallContent;
    EXPECT_EQ(BytesOf(file_), "<?xml version=\"1.0\" ?>\r\n<SymbolLegendTemplates>\r\n" + element + element +
                                  "</SymbolLegendTemplates>\r\n");
    EXPECT_EQ(FilesInFolder(), 1) << "nothing else is left";
}

std::vector<HCURSOR> cursors;
HCURSOR WINAPI RecordCursor(HCURSOR cursor) {
    cursors.push_back(cursor);
    return SetCursor(cursor);
}

TEST_F(ReportTemplateXmlTest, TheCursorTellsToWaitWhileAFileIsWrittenOrRead) {
    PatchImport(GetModuleHandleW(L"orvatool.dll"), L"user32.dll", "SetCursor",
                reinterpret_cast<const void*>(&RecordCursor));
    const HCURSOR wait = LoadCursorW(nullptr, IDC_WAIT);
    Buffer records({Small()});
    for (const auto& operation : {ReportTemplate::ExportToXml, ReportTemplate::ImportFromXml}) {
        cursors.clear();
        ChooseFile();
        EXPECT_TRUE(Run(operation, records));
        ASSERT_EQ(cursors.size(), 2u);
        EXPECT_EQ(cursors.front(), wait);
        EXPECT_NE(cursors.back(), wait);
    }
}

TEST_F(ReportTemplateXmlTest, EveryFieldComesBack) {
    const Buffer written({Full(1), Full(2)});
    Buffer records = written;
    Export(records, Lng::Schematics, TextBlock);
    records = Buffer({Small(), Small()});
    EXPECT_TRUE(Import(records, Lng::Schematics, TextBlock));
    EXPECT_TRUE(records == written);
}

TEST_F(ReportTemplateXmlTest, AnEmptySetIsWrittenAndHasNothingToRead) {
    ChooseFile();
    EXPECT_TRUE(RunSteps([] { return ReportTemplate::ExportToXml(nullptr, Lng::Hpv, Legend, nullptr, 0, kSize); }));
    ExpectRefused(BytesOf(file_), kNoneOfThisKind);
}

TEST_F(ReportTemplateXmlTest, TakesTheCallersTemplatesInTheOrderOfTheFileAndLeavesTheRestOfTheRecords) {
    const std::string damagedOfAnother = "<SymbolLegendTemplate appId='1' typeId='1' id='none'/>";
    const std::string another = "<Other/>" + damagedOfAnother + Element("2", "0", 7);
    WriteBytes(file_, Document(another + Element("2", "1", 8) + Element("2", "3", 9) + Element("2", "1", 5) + another));
    Buffer four({Full(1), Full(2), Full(3), Full(4)});
    EXPECT_TRUE(Import(four));
    EXPECT_TRUE(four == Buffer({Numbered(8), Numbered(5), Full(3), Full(4)}));
    Buffer one({Full(1)});
    EXPECT_TRUE(Import(one)) << "no more are taken than there is room for";
    EXPECT_TRUE(one == Buffer({Numbered(8)}));
    EXPECT_TRUE(Import(one, Lng::Electrical, TextBlock));
    EXPECT_TRUE(one == Buffer({Numbered(9)}));
    EXPECT_FALSE(Import(one, Lng::Building, TextBlock, kNoneOfThisKind));
    EXPECT_TRUE(one == Buffer({Numbered(9)}));
}

TEST_F(ReportTemplateXmlTest, TakesAllOrNothing) {
    const std::string good = Element("2", "1", 8);
    for (const std::string& damaged : {
             std::string("<SymbolLegendTemplate appId='2' typeId='1' id='9'/>"),
             std::string("<SymbolLegendTemplate appId='2' typeId='1' id='9' wcSeparator='x' name='' description=''/>"),
             Element("", "1", 9),
             Element("2", "one", 9),
             std::string("<SymbolLegendTemplate appId='2' id='9' wcSeparator='0' name='' description=''/>"),
         }) {
        ExpectRefused(Document(good + damaged), kReadFailed);
    }
    ExpectRefused("<Templates>" + good + "</Templates>", kReadFailed);
    ExpectRefused("<Other/>" + Document(good).substr(22), kReadFailed);
    ExpectRefused("", kReadFailed);
}

TEST_F(ReportTemplateXmlTest, AFileThatWasCutIsRefused) {
    Buffer records({Small(), Small()});
    Export(records);
    const std::string whole = BytesOf(file_);
    const std::size_t last = whole.rfind('>');
    for (std::size_t size = 1; size <= last; size += 37)
        ExpectRefused(whole.substr(0, size), kReadFailed);
    ExpectRefused(whole.substr(0, last), kReadFailed);
}

TEST_F(ReportTemplateXmlTest, AFileThatCannotBeReplacedStaysAndTheUserIsTold) {
    WriteBytes(file_, "<old/>");
    SetFileAttributesW(file_.c_str(), FILE_ATTRIBUTE_READONLY);
    Buffer records({Small()});
    ChooseFile();
    InNewDialog([](HWND question) { uidriver::Click(question, IDYES); });
    Confirm(kWriteFailed);
    EXPECT_FALSE(Run(ReportTemplate::ExportToXml, records));
    EXPECT_EQ(BytesOf(file_), "<old/>");
    EXPECT_EQ(FilesInFolder(), 1);
    EXPECT_TRUE(records == Buffer({Small()}));
}

TEST_F(ReportTemplateXmlTest, CancelWritesAndReadsNothing) {
    Buffer records({Small()});
    for (const auto& operation : {ReportTemplate::ExportToXml, ReportTemplate::ImportFromXml}) {
        Press(IDCANCEL);
        EXPECT_FALSE(Run(operation, records));
    }
    EXPECT_EQ(FilesInFolder(), 0);
    EXPECT_TRUE(records == Buffer({Small()}));
}

TEST_F(ReportTemplateXmlTest, UnusableArgumentsAskNothing) {
    Buffer records({Small()});
    script_->Start();  // would run in the dialog's loop
    for (const auto& operation : {ReportTemplate::ExportToXml, ReportTemplate::ImportFromXml}) {
        for (const int size : {kSize - 1, kSize + 1, 0, -kSize})
            EXPECT_FALSE(operation(nullptr, Lng::Hpv, Legend, records.Data(), 1, size)) << size;
        EXPECT_FALSE(operation(nullptr, Lng::Hpv, Legend, nullptr, 1, kSize));
        EXPECT_FALSE(operation(nullptr, Lng::Hpv, Legend, records.Data(), -1, kSize));
    }
    EXPECT_FALSE(ReportTemplate::ImportFromXml(nullptr, Lng::Hpv, Legend, records.Data(), 0, kSize));
    EXPECT_FALSE(script_->Finished());
    EXPECT_TRUE(records == Buffer({Small()}));
}

TEST(ReportTemplate, InstanceAttributesAreThoseOfTheEightThousands) {
    for (const int id : {8000, 8001, 8999})
        EXPECT_TRUE(ReportTemplate::IsInstanceAttr(id)) << id;
    for (const int id : {7999, 9000, 0, 1, 7001, -8000, 73536})
        EXPECT_FALSE(ReportTemplate::IsInstanceAttr(id)) << id;
}

}  // namespace
