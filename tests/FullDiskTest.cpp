#include <gtest/gtest.h>
#include <occommonui/ReportTemplate.h>
#include <occommonui/UpdateDwgData.h>
#include <orvatool/QBaseDb.h>
#include <orvatool/SimpleReportOuputDlg.h>
#include <ticpp.h>
#include <windows.h>

#include <dlgs.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/ProjectGenerator.h"
#include "host/ProjectStore.h"
#include "support/DialogTest.h"
#include "support/TestFolder.h"
#include "toolkit/orvatool/resources/orvatool_ids.h"

// What is written where there is too little room. Run by full-disk.sh, which gives the disk.

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTooMuch = 2'000'000;  // bytes: more than the disk holds, empty or not
constexpr std::size_t kFewBytes = 8192;      // so that the beginning of a file can be written
constexpr char kOld[] = "the old file";

class FullDisk : public DialogTest {
protected:
    ~FullDisk() override {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void SetUp() override {
        const wchar_t* disk = _wgetenv(L"OC_SMALL_DISK");
        ASSERT_TRUE(disk) << "to be run by full-disk.sh";
        folder_ = (fs::path(disk) / L"levy ä").make_preferred();
        fs::remove_all(folder_);
        fs::create_directory(folder_);
    }

    /// A file on the disk that is to be replaced.
    fs::path OldFile(const wchar_t* name) const {
        fs::path file = folder_ / name;
        WriteBytes(file, kOld);
        return file;
    }

    /// Leaves room for that many bytes on the disk.
    void Fill(std::size_t left) const {
        constexpr int kMostBlocks = 1000;
        const std::string block(4096, 'b');
        const fs::path room = folder_ / L"room";
        WriteBytes(room, std::string(left, 'r'));
        std::ofstream ballast(Ballast(), std::ios::binary);
        int blocks = 0;
        while (blocks < kMostBlocks && ballast.write(block.data(), std::ssize(block)).flush())
            ++blocks;
        if (blocks == kMostBlocks) throw std::runtime_error("this is no small disk");
        fs::remove(room);
    }
    void MakeRoom() const { fs::remove(Ballast()); }

    std::set<fs::path> Files() const {
        std::set<fs::path> files;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_))
            files.insert(entry.path());
        return files;
    }
    void ExpectNothingButOld(const fs::path& file) const {
        EXPECT_TRUE(BytesOf(file) == kOld);
        EXPECT_EQ(Files(), (std::set{file, Ballast()})) << "a temporary is left";
    }

    /// Runs an operation in which the user chooses an existing file, of a type by its index, and lets it be replaced.
    /// Returns what the user is told when it `fails`.
    template <class Save>
    std::wstring SaveOver(const fs::path& file, int type, bool fails, Save save) {
        std::wstring message;
        Step([=](HWND dlg) {
            const HWND types = uidriver::Control(dlg, cmb1);
            SendMessageW(types, CB_SETCURSEL, static_cast<WPARAM>(type), 0);
            SendMessageW(dlg, WM_COMMAND, MAKEWPARAM(cmb1, CBN_SELCHANGE), reinterpret_cast<LPARAM>(types));
            uidriver::ChooseFile(dlg, file.wstring());
        });
        InNewDialog([](HWND question) { uidriver::Click(question, IDYES); });
        if (fails) {
            InNewDialog([&](HWND box) {
                message = uidriver::Text(GetDlgItem(box, 0xFFFF));
                uidriver::Key(VK_RETURN);
            });
        }
        RunSteps(save);
        return message;
    }

    fs::path folder_;

private:
    fs::path Ballast() const { return folder_ / L"ballast"; }
};

// ---- files that are written as a whole ----

TEST_F(FullDisk, ReportTemplatesAreExportedAsAWholeOrNotAtAll) {
    const fs::path file = OldFile(L"mallit ä.xml");
    ReportDefinitionType record;
    record.columnCount = ReportDefinitionType::kMaxColumns;
    std::vector<ReportDefinitionType> records(kTooMuch / sizeof record, record);
    bool exported = true;
    const auto exportFirst = [&](std::size_t count) {
        return [&, count] {
            exported = ReportTemplate::ExportToXml(nullptr, Lng::Electrical, Legend, records.data(),
                                                   static_cast<int>(count), sizeof record);
            return exported;
        };
    };
    Fill(kFewBytes);
    EXPECT_EQ(SaveOver(file, 0, true, exportFirst(records.size())), L"Failed to write XML file.");
    EXPECT_FALSE(exported);
    ExpectNothingButOld(file);
    MakeRoom();
    SaveOver(file, 0, false, exportFirst(1));
    EXPECT_TRUE(exported);
    EXPECT_TRUE(BytesOf(file).starts_with("<?xml"));
}

TEST_F(FullDisk, AReportIsSavedAsAWholeOrNotAtAll) {
    const std::wstring text(100, L'x');
    SimpleReport report;
    report.AddColumn(L"Text", 100);
    for (std::size_t bytes = 0; bytes < kTooMuch; bytes += text.size())
        report.SetText(report.AddRow(), 0, text.c_str());
    report.SetText(0, 0, L"short");
    const HWND dlg = SimpleReportOuputDlg::Create(nullptr, report, {});
    ASSERT_TRUE(dlg);
    ShowWindow(dlg, SW_SHOW);
    const HWND search = uidriver::Control(dlg, IDC_SIMPLEREPORT_SEARCH);
    const auto save = [dlg] { return SendMessageW(dlg, WM_COMMAND, IDC_SIMPLEREPORT_SAVE, 0); };
    for (const int type : {0, 1}) {
        const fs::path file = OldFile(type == 0 ? L"old.txt" : L"old.xml");
        Fill(kFewBytes);
        SetWindowTextW(search, L"");
        const std::wstring message = SaveOver(file, type, true, save);
        EXPECT_NE(message.find(file.wstring()), std::wstring::npos) << message;
        ExpectNothingButOld(file);
        MakeRoom();
        SetWindowTextW(search, L"short");  // the rows shown are saved
        SaveOver(file, type, false, save);
        EXPECT_NE(BytesOf(file).find("short"), std::string::npos);
        fs::remove(file);
    }
    SendMessageW(dlg, WM_CLOSE, 0, 0);
}

TEST_F(FullDisk, AnXmlDocumentIsSavedAsAWholeOrNotAtAll) {
    const fs::path file = OldFile(L"vanha ä.xml");
    const std::u8string utf8 = file.u8string();
    ticpp::Document doc(std::string(utf8.begin(), utf8.end()));
    doc.InsertEndChild(ticpp::Element("root"));
    doc.FirstChildElement("root")->SetText(std::string(kTooMuch, 'x'));
    Fill(kFewBytes);
    try {
        doc.SaveFile();
        ADD_FAILURE() << "it cannot have been saved";
    } catch (const ticpp::Exception& failure) {
        EXPECT_EQ(failure.m_details.find("\"" + doc.Value() + "\": cannot be written"), 0u) << failure.m_details;
    }
    ExpectNothingButOld(file);
    MakeRoom();
    doc.FirstChildElement("root")->SetText("x");
    doc.SaveFile();
    EXPECT_EQ(BytesOf(file), "<root>x</root>\r\n");
}

// ---- databases ----

namespace PrjDb = UpdateDwgData::PrjDb;

/// A set of so many data items, named by a number.
PrjDb::OptionsRec Set(long items, long id = 0, long number = 0) {
    PrjDb::OptionsRec rec;
    rec.id = id;
    rec.name.format(L"%04ld", number);
    for (long item = 0; item < items; ++item)
        rec.options.properties.insert(item);
    return rec;
}

/// How many data items each set has, in the order of their ids.
std::vector<std::size_t> StoredSizes(const QBaseDb& db) {
    std::vector<PrjDb::OptionsRec> recs;
    EXPECT_TRUE(PrjDb::Read(db, recs));
    std::vector<std::size_t> sizes;
    for (const PrjDb::OptionsRec& rec : recs)
        sizes.push_back(rec.options.properties.size());
    return sizes;
}

class FullDiskProject : public FullDisk {
protected:
    static constexpr std::size_t kSets = 20;

    void SetUp() override {
        FullDisk::SetUp();
        if (HasFatalFailure()) return;
        path_ = (folder_ / L"project.db").wstring();
        db_ = std::make_unique<QBaseDb>(path_.c_str());
        for (std::size_t i = 0; i < kSets; ++i) {
            PrjDb::OptionsRec rec = Set(200);
            ASSERT_TRUE(PrjDb::Write(*db_, rec));
        }
    }
    void TearDown() override { db_.reset(); }

    std::wstring path_;
    std::unique_ptr<QBaseDb> db_;
};

TEST_F(FullDiskProject, ASetThatDoesNotFitLeavesTheOthers) {
    std::vector<std::size_t> stored(kSets, 200);
    Fill(kFewBytes);
    PrjDb::OptionsRec large = Set(100'000);
    EXPECT_FALSE(PrjDb::Write(*db_, large));
    EXPECT_EQ(large.id, 0);
    EXPECT_NE(std::wstring(db_->GetErrorText().c_str()).find(path_), std::wstring::npos);
    EXPECT_EQ(StoredSizes(*db_), stored);
    {
        QBaseDb::QuickMode scope(*db_, 1, 1);
        EXPECT_TRUE(PrjDb::Delete(*db_, 1));
        large.id = 2;
        PrjDb::Write(*db_, large);  // which may not fail before the end
        EXPECT_FALSE(scope.End());
    }
    EXPECT_EQ(StoredSizes(*db_), stored);

    MakeRoom();
    PrjDb::OptionsRec small = Set(1);
    EXPECT_TRUE(PrjDb::Write(*db_, small));
    EXPECT_TRUE(PrjDb::Delete(*db_, 1));
    db_.reset();
    stored.erase(stored.begin());
    stored.push_back(1);
    EXPECT_EQ(StoredSizes(QBaseDb(path_.c_str())), stored);
}

TEST_F(FullDiskProject, WhenNotAByteIsLeftNothingIsChangedOrDeleted) {
    constexpr long kMostChanges = 1000;
    Fill(0);
    long last = 0;  // the latest change that was stored
    const auto change = [&] {
        PrjDb::OptionsRec rec = Set(200, 1, last + 1);
        return PrjDb::Write(*db_, rec);
    };
    while (last < kMostChanges && change())
        ++last;
    ASSERT_LT(last, kMostChanges);
    EXPECT_FALSE(PrjDb::Delete(*db_, 1));
    EXPECT_FALSE(PrjDb::Delete(*db_, {2, 3}));
    EXPECT_NE(db_->deleteRec("UP", "000004"), 0);
    const std::vector<std::size_t> stored = StoredSizes(*db_);
    EXPECT_EQ(stored.size(), kSets);

    db_.reset();
    { const QBaseDb opened(path_.c_str()); }  // which may fail, and takes nothing away
    MakeRoom();
    db_ = std::make_unique<QBaseDb>(path_.c_str());
    EXPECT_EQ(StoredSizes(*db_), stored);
    PrjDb::OptionsRec first = Set(0, 1);
    EXPECT_TRUE(PrjDb::Read(*db_, first));
    EXPECT_EQ(first.name, Set(0, 1, last).name);
    EXPECT_TRUE(PrjDb::Delete(*db_, {1, 2, 3, 4}));
    EXPECT_TRUE(change());
}

TEST_F(FullDisk, ASampleProjectKeepsWhatItHasAndANewOneLeavesNothing) {
    using namespace ochost;
    const std::wstring path = (folder_ / L"old.ocproject").wstring();
    const std::wstring other = (folder_ / L"new.ocproject").wstring();
    ProjectContent content;
    content.info.name = L"Small";
    auto store = std::make_unique<ProjectStore>(ValueOf(ProjectStore::Create(path, content)));
    const StoredSelection old{1, 1, L"Old", std::wstring(100'000, L'o')};
    ASSERT_TRUE(store->CreateSelection(old));
    const std::set<fs::path> files = Files();
    Fill(kFewBytes);

    const auto created = store->CreateSelection({0, 1, L"Large", std::wstring(kTooMuch, L'x')});
    ASSERT_FALSE(created);
    EXPECT_EQ(created.Error().kind, FailureKind::System);
    EXPECT_NE(created.Error().message.find(path), std::wstring::npos);
    const auto updated = store->UpdateSelection({1, 1, L"Changed", std::wstring(kTooMuch, L'x')});
    EXPECT_FALSE(updated);
    EXPECT_TRUE(*store->Selections() == std::vector{old});

    const auto project = ProjectStore::Create(other, *GenerateProject(1));
    ASSERT_FALSE(project);
    EXPECT_EQ(project.Error().kind, FailureKind::System);
    EXPECT_NE(project.Error().message.find(other), std::wstring::npos);
    MakeRoom();
    EXPECT_EQ(Files(), files);

    EXPECT_TRUE(store->CreateSelection({0, 1, L"Small", L""}));
    store.reset();
    EXPECT_TRUE(*ValueOf(ProjectStore::Open(path)).Selections() == (std::vector<StoredSelection>{
                                                                       old, {2, 1, L"Small", L""}
    }));
    EXPECT_TRUE(ProjectStore::Create(other, content));
}

}  // namespace
