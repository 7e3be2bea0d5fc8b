#include "host/ProjectStore.h"

#include <gtest/gtest.h>
#include <orvasql/Sqlite.h>
#include <windows.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <map>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "host/ProjectGenerator.h"
#include "support/KilledChild.h"
#include "support/ProcessorTime.h"
#include "support/TestFolder.h"

namespace ochost {
namespace {

using namespace std::chrono_literals;
using orvasql::Database;
using orvasql::OpenMode;
using orvasql::Transaction;

const ProjectContent& SampleContent() {
    static const ProjectContent content = *GenerateProject(1);
    return content;
}

class ProjectStoreTest : public testing::Test {
protected:
    ProjectStore CreateSample() const { return ValueOf(ProjectStore::Create(path_, SampleContent())); }
    ProjectStore Open(std::chrono::milliseconds busyTimeout = ProjectStore::kBusyTimeout) const {
        return ValueOf(ProjectStore::Open(path_, busyTimeout));
    }
    void Execute(const char* sql) const { Database(path_, OpenMode::ReadWrite, 0ms).Execute(sql); }
    /// Opening is refused as stated, with a message that names the file, and changes nothing.
    void ExpectRefused(FailureKind kind) {
        const std::string before = BytesOf(path_);
        auto store = ProjectStore::Open(path_, 0ms);
        ASSERT_FALSE(store);
        EXPECT_EQ(store.Error().kind, kind);
        EXPECT_NE(store.Error().message.find(path_), std::wstring::npos);
        EXPECT_EQ(BytesOf(path_), before);
    }

    const TestFolder folder_;
    const std::wstring path_ = folder_.File(L"sample.ocproject");
};

// ---- the generated project ----

TEST(ProjectGenerator, MakesARealisticBuilding) {
    const ProjectContent& content = SampleContent();
    EXPECT_EQ(content.drawings.size(), 40u);
    EXPECT_EQ(content.rooms.size(), 600u);
    EXPECT_EQ(content.systems.size(), 80u);
    EXPECT_EQ(content.partTypes.size(), 900u);
    EXPECT_EQ(content.properties.size(), 258u);
    EXPECT_NEAR(static_cast<double>(content.customProperties.size()), 12, 2);
    for (const Drawing& drawing : content.drawings) {
        EXPECT_EQ(drawing.fileName.find(L'{'), std::wstring::npos) << "an unfilled name";
    }
    for (const Room& room : content.rooms) {
        EXPECT_TRUE(room.area >= 1 && room.area < 1000) << room.area;
        EXPECT_EQ(room.number.front(), L'A');
    }
    std::set<int> ids;
    for (const Property& property : content.properties) {
        ids.insert(property.id);
        EXPECT_FALSE(property.sample.empty()) << property.id;
        EXPECT_EQ(property.type == ValueType::Choice, !property.choices.empty()) << property.id;
    }
    for (const CustomProperty& custom : content.customProperties) {
        size_t at = custom.format.find(L'{');
        EXPECT_NE(at, std::wstring::npos) << "no reference";
        for (; at != std::wstring::npos; at = custom.format.find(L'{', at + 1))
            EXPECT_TRUE(ids.contains(std::stoi(custom.format.substr(at + 1))));
    }
}

TEST(ProjectGenerator, TreesHaveEachParentBeforeItsChildrenOneLevelUp) {
    for (const auto* tree : {&SampleContent().folders, &SampleContent().partGroups, &SampleContent().propertyGroups}) {
        std::map<Id, int> levels{
            {0, -1}
        };
        int deepest = 0;
        for (const TreeNode& node : *tree) {
            ASSERT_TRUE(levels.contains(node.parent));
            EXPECT_EQ(node.level, levels[node.parent] + 1);
            EXPECT_TRUE(levels.emplace(node.id, node.level).second);
            deepest = std::max(deepest, node.level);
        }
        EXPECT_TRUE(deepest == 1 || deepest == 2);
    }
}

TEST(ProjectGenerator, ReportTemplatesAreOfEveryKindAndFitTheirFields) {
    const std::vector<ReportTemplate>& templates = SampleContent().reportTemplates;
    EXPECT_GE(templates.size(), 12u);
    std::set<int> apps;
    std::set<int> types;
    for (const ReportTemplate& made : templates) {
        SCOPED_TRACE(made.name);
        apps.insert(made.app);
        types.insert(made.type);
        EXPECT_TRUE(!made.name.empty() && made.name.size() <= 40);
        EXPECT_TRUE(!made.description.empty() && made.description.size() <= 256);
        EXPECT_TRUE(!made.groups.empty() && !made.columns.empty());
        for (const ReportColumn& column : made.columns) {
            const bool isMainSymbol = column.property == 7001 || column.property == 8001;
            const float least = column.property < 7000 || made.type == 3 ? 1.0F : isMainSymbol ? 15.0F : 20.0F;
            EXPECT_TRUE(column.width >= least && column.width <= 100) << column.property;
            EXPECT_TRUE(column.header1.size() <= 28 && column.header2.size() <= 28) << column.property;
        }
    }
    EXPECT_EQ(apps, (std::set<int>{1, 2, 6, 7}));
    EXPECT_EQ(types, (std::set<int>{0, 1, 2, 3}));
}

template <class R>
std::map<Id, const R*> ById(const std::vector<R>& records) {
    std::map<Id, const R*> index;
    for (const R& record : records)
        index.emplace(record.id, &record);
    return index;
}

TEST(ProjectGenerator, ObjectsStandWhereTheyCanBe) {
    const ProjectContent& content = SampleContent();
    EXPECT_TRUE(content.objects.size() > 3'000 && content.objects.size() < 9'000) << content.objects.size();
    const auto rooms = ById(content.rooms);
    const auto drawings = ById(content.drawings);
    const auto layouts = ById(content.layouts);
    const auto areas = ById(content.areas);
    std::set<std::pair<Id, int>> numbers;
    std::map<AreaKind, int> used;
    for (const PlacedObject& object : content.objects) {
        const Drawing& drawing = *drawings.at(object.drawing);
        EXPECT_EQ(object.room != 0 ? rooms.at(object.room)->floor : 0, drawing.floor) << object.id;
        EXPECT_TRUE(object.layout == 0 || layouts.at(object.layout)->drawing == object.drawing);
        EXPECT_TRUE(numbers.emplace(object.system, object.number).second) << "a number of its own in the system";
        const std::pair<Id, AreaKind> places[] = {
            {object.selectionArea,   AreaKind::Selection  },
            {object.page,            AreaKind::Page       },
            {object.switchboardArea, AreaKind::Switchboard},
            {object.hostArea,        AreaKind::Host       },
        };
        for (const auto& [id, kind] : places) {
            if (id == 0) continue;
            EXPECT_EQ(areas.at(id)->drawing, object.drawing);
            EXPECT_EQ(areas.at(id)->kind, kind);
            ++used[kind];
        }
    }
    EXPECT_EQ(used.size(), 4u);
}

TEST(ProjectGenerator, ARoomIsServedByTheSystemOfItsZone) {
    const ProjectContent& content = SampleContent();
    const auto rooms = ById(content.rooms);
    const auto zones = ById(content.zones);
    const auto systems = ById(content.systems);
    int checked = 0;
    for (const PlacedObject& object : content.objects) {
        if (object.room == 0 || zones.at(rooms.at(object.room)->zone)->name != L"Offices north") continue;
        const std::wstring& name = systems.at(object.system)->name;
        if (!name.starts_with(L"Supply air")) continue;
        EXPECT_EQ(name, L"Supply air, offices north");
        ++checked;
    }
    EXPECT_GT(checked, 50);
}

TEST(ProjectGenerator, ScaleMultipliesWhatGrowsWithTheBuilding) {
    const auto three = GenerateProject(3);
    ASSERT_TRUE(three);
    const ProjectContent& one = SampleContent();
    EXPECT_EQ(three->info.scale, 3);
    EXPECT_EQ(three->drawings.size(), 3 * one.drawings.size());
    EXPECT_EQ(three->rooms.size(), 3 * one.rooms.size());
    EXPECT_EQ(three->systems.size(), 3 * one.systems.size());
    EXPECT_EQ(three->partTypes.size(), 3 * one.partTypes.size());
    EXPECT_EQ(three->areas.size(), 3 * one.areas.size());
    EXPECT_GT(three->objects.size(), 5 * one.objects.size() / 2);
    EXPECT_EQ(three->properties, one.properties);
    EXPECT_EQ(three->rooms.back().number.front(), L'C');

    for (int scale : {-1, 0, kMaxScale + 1}) {
        const auto refused = GenerateProject(scale);
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.Error().kind, FailureKind::BadInput);
    }
}

TEST(ProjectGenerator, NamesFileAndLineOfABadText) {
    struct {
        const char* file;
        const char* text;
        const wchar_t* message;
    } const cases[] = {
        {"floors",            "K\tBasement\t0\t3\n1\tOne\n",                             L"\"floors\", line 2"         },
        {"floors",            "# name\n\nK\tBasement\tlow\t3",                           L"\"floors\", line 3: \"low\""},
        {"zones",             "C\tCore\tX",                                              L"no floor \"X\""             },
        {"rooms",             "Hall\tK\tL\t1\t5\t6\t2700\t20\t1\t1",                     L"zone \"L\""                 },
        {"systems",           "V\tSA\tSupply\tAir\t12\t",                                L"not a colour"               },
        {"systems",           "Q\tSA\tSupply\tAir\t112233\t",                            L"no discipline \"Q\""        },
        {"parts",             "A/B\tV\tX\tPart\tno-such",                                L"no sizes"                   },
        {"parts",             "A/B\tV\tX\tPart\t\nC\tV\tY\tPart\t\nA/B\tV\tZ\tPart\t\n", L"stand together"             },
        {"parts",             "\tV\tX\tPart\t",                                          L"group is missing"           },
        {"properties",        "1\tA\tName\t\tnumber\t1\t",                               L"no type \"number\""         },
        {"fitting_series",    "Pressed\tQ\tMaker",                                       L"no discipline \"Q\""        },
        {"placements",        "Ballroom\tV\tSDC\tSA\t\t0\t0\t0\t",                       L"no room \"Ballroom\""       },
        {"placements",        "\tV\tNOPART\tSA\t\t0\t0\t0\t",                            L"no part \"NOPART\""         },
        {"placements",        "\tV\tSDC\tXX\t\t0\t0\t0\t",                               L"no system \"XX\""           },
        {"placements",        "\tV\tSDC\tSA\tGlued\t0\t0\t0\t",                          L"no fitting series"          },
        {"placements",        "\tC\tSDC\tSA\t\t0\t0\t0\t",                               L"no drawing with pages"      },
        {"custom_properties", "",                                                        L"is missing"                 },
        {"report_templates",  "Ducts\thpv\tlist\t\t\t",                                  L"\"list\" is unknown"        },
        {"report_templates",  "Ducts\thpv\tbill\t\tCars\t",                              L"no part group \"Cars\""     },
        {"report_templates",  "Ducts\thpv\tbill\t--\t\t",                                L"one character"              },
        {"report_columns",    "Duct list\t999\t20\tleft\t0\t\t\tno",                     L"no property 999"            },
        {"report_columns",    "No list\t1\t20\tleft\t0\t\t\tno",                         L"template \"No list\""       },
    };
    for (const auto& row : cases) {
        const auto content = GenerateProject(1, [&](std::string_view name) {
            return name == row.file ? std::string_view(row.text) : EmbeddedText(name);
        });
        ASSERT_FALSE(content) << row.text;
        EXPECT_EQ(content.Error().kind, FailureKind::BadInput);
        EXPECT_NE(content.Error().message.find(row.message), std::wstring::npos) << content.Error().message;
    }
}

// ---- the file ----

TEST_F(ProjectStoreTest, GivesBackWhatWasStoredInDisplayOrder) {
    auto store = CreateSample();
    EXPECT_TRUE(*store.Content() == SampleContent());
    EXPECT_EQ(*store.Info(), SampleContent().info);
    EXPECT_EQ(*store.Folders(), SampleContent().folders);
    EXPECT_EQ(*store.PropertyGroups(), SampleContent().propertyGroups);
}

TEST_F(ProjectStoreTest, TheSameScaleGivesTheSameFile) {
    const std::wstring second = path_ + L"2";
    { ASSERT_TRUE(OpenOrGenerateProject(path_, 2)); }
    { ASSERT_TRUE(OpenOrGenerateProject(second, 2)); }
    EXPECT_EQ(BytesOf(path_), BytesOf(second));
}

TEST_F(ProjectStoreTest, ALargeProjectTakesAFewSeconds) {
    const double start = ProcessorTime();
    auto store = OpenOrGenerateProject(path_, 34);
    const double seconds = (ProcessorTime() - start) / 1000 / Slowness();
    ASSERT_TRUE(store);
    EXPECT_GE(store->Rooms()->size(), 20'000u);
    EXPECT_GE(store->PartTypes()->size(), 20'000u);
    EXPECT_LT(seconds, 10);
}

TEST_F(ProjectStoreTest, AnExistingFileIsOpenedAndNeverReplaced) {
    ASSERT_TRUE(OpenOrGenerateProject(path_, 1)->CreateCustomProperty({0, L"Mine", L"{1}"}));
    EXPECT_EQ(OpenOrGenerateProject(path_, 2)->CustomProperties()->back().name, L"Mine");

    auto created = ProjectStore::Create(path_, SampleContent());
    ASSERT_FALSE(created);
    EXPECT_EQ(created.Error().kind, FailureKind::AlreadyExists);
    EXPECT_EQ(Open().CustomProperties()->back().name, L"Mine");
}

TEST_F(ProjectStoreTest, CustomPropertiesAreCreatedUpdatedAndDeletedDurably) {
    std::int32_t id = 0;
    {
        auto store = CreateSample();
        const auto created = store.CreateCustomProperty({1, L"Kanavan nimiö ÄÖ", L"Ø{54|mm} x"});
        ASSERT_TRUE(created);
        id = created->id;
        EXPECT_EQ(id, std::ssize(SampleContent().customProperties) + 1);
        ASSERT_TRUE(store.UpdateCustomProperty({1, L"Renamed", L""}));
    }
    auto store = Open();
    const auto stored = *store.CustomProperties();
    EXPECT_EQ(stored.front(), (CustomProperty{1, L"Renamed", L""}));
    EXPECT_EQ(stored.back(), (CustomProperty{id, L"Kanavan nimiö ÄÖ", L"Ø{54|mm} x"}));

    ASSERT_TRUE(store.DeleteCustomProperty(id));
    EXPECT_EQ(store.CustomProperties()->size(), SampleContent().customProperties.size());
    EXPECT_EQ(store.CreateCustomProperty({0, L"Next", L""})->id, id + 1) << "an id is not used again";

    EXPECT_EQ(store.DeleteCustomProperty(id).Error().kind, FailureKind::NotFound);
    EXPECT_EQ(store.UpdateCustomProperty({id, L"Gone", L""}).Error().kind, FailureKind::NotFound);
    EXPECT_EQ(store.UpdateCustomProperty({1, L"", L""}).Error().kind, FailureKind::BadInput);
    EXPECT_EQ(store.CreateCustomProperty({0, L"", L""}).Error().kind, FailureKind::BadInput);
}

ReportTemplate FullTemplate() {
    ReportTemplate made{
        0, 6, 3, L"Kaavioluettelo ÄÖ", L"Venttiilit", L'€', {2,   100'001, -5},
              {  }
    };
    made.columns.push_back({-101, 12.7F, 2, 1, L"Koko", L"mm", true});
    made.columns.push_back({32'767, 0.1F, 255, 255, L"", L"", false});
    return made;
}

TEST_F(ProjectStoreTest, ReportTemplatesAreCreatedAndUpdatedDurably) {
    const auto sampleCount = static_cast<std::int32_t>(SampleContent().reportTemplates.size());
    ReportTemplate changed = SampleContent().reportTemplates.front();
    ReportTemplate first = FullTemplate();
    ReportTemplate second = FullTemplate();
    {
        auto store = CreateSample();
        second.columns.clear();
        second.groups.clear();
        const auto created = store.CreateReportTemplates({first, second});
        ASSERT_TRUE(created);
        first.id = sampleCount + 1;
        second.id = sampleCount + 2;
        EXPECT_TRUE(*created == (std::vector{first, second}));
        std::swap(changed.columns.front(), changed.columns.back());
        changed.columns.pop_back();
        changed.name = L"Changed";
        ASSERT_TRUE(store.UpdateReportTemplate(changed));
    }
    std::vector<ReportTemplate> expected = SampleContent().reportTemplates;
    expected.front() = changed;
    expected.insert(expected.end(), {first, second});
    auto store = Open();
    EXPECT_TRUE(*store.ReportTemplates() == expected);

    changed.id = 999;
    EXPECT_EQ(store.UpdateReportTemplate(changed).Error().kind, FailureKind::NotFound);
    first.name.clear();
    EXPECT_EQ(store.UpdateReportTemplate(first).Error().kind, FailureKind::BadInput);
    EXPECT_TRUE(*store.ReportTemplates() == expected);
}

TEST_F(ProjectStoreTest, ReportTemplatesAreImportedAsAWholeOrNotAtAll) {
    auto store = CreateSample();
    ReportTemplate nameless = FullTemplate();
    nameless.name.clear();
    ReportTemplate unstorable = FullTemplate();
    unstorable.columns.back().width = std::numeric_limits<float>::quiet_NaN();
    for (const ReportTemplate& bad : {nameless, unstorable}) {
        EXPECT_EQ(store.CreateReportTemplates({FullTemplate(), bad}).Error().kind, FailureKind::BadInput);
        EXPECT_TRUE(*store.ReportTemplates() == SampleContent().reportTemplates);
    }
    EXPECT_EQ(store.CreateReportTemplates({FullTemplate()})->front().id,
              std::ssize(SampleContent().reportTemplates) + 1);
}

TEST_F(ProjectStoreTest, AChangeWhileAnotherProgramWritesIsRefusedAndReadingGoesOn) {
    CreateSample();
    auto store = Open(0ms);
    Database other(path_, OpenMode::ReadWrite, 0ms);
    Transaction writing(other, Transaction::Kind::Write);
    EXPECT_EQ(store.UpdateCustomProperty({1, L"Renamed", L""}).Error().kind, FailureKind::Locked);
    EXPECT_EQ(store.DeleteCustomProperty(1).Error().kind, FailureKind::Locked);
    EXPECT_EQ(store.CreateReportTemplates({FullTemplate()}).Error().kind, FailureKind::Locked);
    EXPECT_TRUE(*store.CustomProperties() == SampleContent().customProperties);
}

// ---- files that are refused ----

TEST_F(ProjectStoreTest, RefusesWhatIsNoProject) {
    EXPECT_EQ(ProjectStore::Open(path_).Error().kind, FailureKind::NotFound);
    EXPECT_EQ(ProjectStore::Open(L"").Error().kind, FailureKind::NotFound);
    EXPECT_EQ(ProjectStore::Open(folder_.File(L"none\\x")).Error().kind, FailureKind::NotFound);
    EXPECT_EQ(ProjectStore::Open(folder_.Path().wstring()).Error().kind, FailureKind::NotAProject);
    EXPECT_EQ(ProjectStore::Create(folder_.File(L"none\\x"), {}).Error().kind, FailureKind::NotFound);
    for (const std::string& bytes : {std::string(), std::string("text"), std::string(5000, 'x')}) {
        WriteBytes(path_, bytes);
        ExpectRefused(FailureKind::NotAProject);
    }
    DeleteFileW(path_.c_str());
    Database(path_, OpenMode::Create, 0ms).Execute("CREATE TABLE project(name)");
    ExpectRefused(FailureKind::NotAProject);
}

TEST_F(ProjectStoreTest, RefusesADamagedFile) {
    CreateSample();
    const std::string whole = BytesOf(path_);
    constexpr size_t kPage = 4096;
    for (size_t page = 1; page < whole.size() / kPage; page += 5) {
        SCOPED_TRACE(page);
        WriteBytes(path_, std::string(whole).replace(page * kPage, kPage, kPage, '\xA5'));
        ExpectRefused(FailureKind::Damaged);
        WriteBytes(path_, whole.substr(0, page * kPage));
        ExpectRefused(FailureKind::Damaged);
    }
}

TEST_F(ProjectStoreTest, RefusesAFileWithoutItsTables) {
    CreateSample();
    Execute(
        "DROP TABLE custom_property; UPDATE property SET type = 77 WHERE id = 3;"
        "UPDATE report_template SET part_groups = '1|x' WHERE id = 2");
    auto store = Open();
    EXPECT_EQ(store.CustomProperties().Error().kind, FailureKind::Damaged);
    EXPECT_EQ(store.CreateCustomProperty({0, L"Name", L""}).Error().kind, FailureKind::Damaged);
    EXPECT_EQ(store.Properties().Error().kind, FailureKind::Damaged);
    EXPECT_EQ(store.ReportTemplates().Error().kind, FailureKind::Damaged);
    EXPECT_EQ(store.Content().Error().kind, FailureKind::Damaged);
    EXPECT_EQ(store.Rooms()->size(), SampleContent().rooms.size()) << "what is whole is still read";
}

TEST_F(ProjectStoreTest, RefusesANewerReadOnlyOrLockedFile) {
    CreateSample();
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY);
    ExpectRefused(FailureKind::ReadOnly);
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);

    const HANDLE exclusive = CreateFileW(path_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(ProjectStore::Open(path_, 0ms).Error().kind, FailureKind::Locked);
    CloseHandle(exclusive);
    {
        Database other(path_, OpenMode::ReadWrite, 0ms);
        other.Execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; COMMIT");
        EXPECT_EQ(ProjectStore::Open(path_, 0ms).Error().kind, FailureKind::Locked);
    }
    Open();

    Execute("PRAGMA user_version = 4");
    ExpectRefused(FailureKind::Newer);
}

/// What the versions before this one lacked, first the last.
constexpr char kWithoutSelections[] =
    "DROP TABLE project_lock; DROP TABLE selection; DROP TABLE placed_object; DROP TABLE fitting_series;"
    "DROP TABLE left_out_drawing; DROP TABLE drawing_area; PRAGMA user_version = 2";
constexpr char kWithoutTemplates[] = "DROP TABLE report_column; DROP TABLE report_template; PRAGMA user_version = 1";

TEST_F(ProjectStoreTest, AFileOfAnEarlierVersionGetsWhatItLacksWhenItIsOpened) {
    ProjectContent of2 = SampleContent();
    of2.areas.clear();
    of2.fittingSeries.clear();
    of2.objects.clear();
    ProjectContent of1 = of2;
    of1.reportTemplates.clear();
    const std::pair<std::string, const ProjectContent*> cases[] = {
        {kWithoutSelections,                                        &of2},
        {std::string(kWithoutSelections) + ";" + kWithoutTemplates, &of1},
    };
    for (const auto& [sql, expected] : cases) {
        CreateSample();
        Execute(sql.c_str());
        {
            Database other(path_, OpenMode::ReadWrite, 0ms);
            Transaction writing(other, Transaction::Kind::Write);
            ExpectRefused(FailureKind::Locked);
        }
        {
            auto store = Open();
            EXPECT_TRUE(*store.Content() == *expected);
            EXPECT_TRUE(store.CreateReportTemplates({FullTemplate()}));
            EXPECT_EQ(store.CreateSelection({0, 1, L"First", L"<x/>"})->id, 1);
            EXPECT_TRUE(store.SetModelDrawing(1, false));
            EXPECT_TRUE(store.Lock());
        }
        EXPECT_EQ(Open().Selections()->size(), 1u) << "upgraded once";
        DeleteFileW(path_.c_str());
    }
}

// ---- selections ----

TEST_F(ProjectStoreTest, SelectionsAreCreatedUpdatedAndDeletedDurably) {
    const StoredSelection named{0, 2, L"Valaisimet ÄÖ", L"<ObjectSelection a=\"€\"/>"};
    const StoredSelection last{0, 1, L"", L""};
    {
        auto store = CreateSample();
        EXPECT_EQ(store.CreateSelection(named)->id, 1);
        EXPECT_EQ(store.CreateSelection(last)->id, 2);
        ASSERT_TRUE(store.UpdateSelection({1, 2, L"Renamed", named.data}));
    }
    auto store = Open();
    EXPECT_TRUE(*store.Selections() == (std::vector<StoredSelection>{
                                           {1, 2, L"Renamed", named.data},
                                           {2, 1, L"",        L""       }
    }));
    ASSERT_TRUE(store.DeleteSelection(2));
    EXPECT_EQ(store.CreateSelection(named)->id, 3) << "an id is not used again";
    EXPECT_EQ(store.DeleteSelection(2).Error().kind, FailureKind::NotFound);
    EXPECT_EQ(store.UpdateSelection({2, 1, L"Gone", L""}).Error().kind, FailureKind::NotFound);
    EXPECT_EQ(store.Selections()->size(), 2u);
}

TEST_F(ProjectStoreTest, ADrawingIsAModelDrawingUntilItIsLeftOut) {
    auto store = CreateSample();
    for (int round = 0; round < 2; ++round)
        EXPECT_TRUE(store.SetModelDrawing(7, false));
    EXPECT_EQ(*store.LeftOutDrawings(), (std::vector<LeftOutDrawing>{{7}}));
    EXPECT_EQ(store.SetModelDrawing(999, false).Error().kind, FailureKind::BadInput);
    EXPECT_TRUE(store.SetModelDrawing(7, true));
    EXPECT_TRUE(store.LeftOutDrawings()->empty());
}

// ---- the lock ----

std::int64_t HoldersIn(const std::wstring& path) {
    return Database(path, OpenMode::ReadWrite, 0ms).IntegerOf("SELECT count(*) FROM project_lock");
}

TEST_F(ProjectStoreTest, OneStoreAtATimeHoldsTheLockAndTheOtherIsToldWho) {
    auto store = ProjectStore::Create(path_, SampleContent());
    auto other = ProjectStore::Open(path_);
    ASSERT_TRUE(store && other);
    {
        const auto lock = store->Lock();
        ASSERT_TRUE(lock);
        EXPECT_FALSE(lock->TakenOverFrom());
        for (ProjectStore* refused : {&*other, &*store}) {
            const auto second = refused->Lock();
            ASSERT_FALSE(second);
            EXPECT_EQ(second.Error().kind, FailureKind::Locked);
            const std::wstring process = L"process " + std::to_wstring(GetCurrentProcessId());
            EXPECT_NE(second.Error().message.find(process), std::wstring::npos) << second.Error().message;
            EXPECT_NE(second.Error().message.find(path_), std::wstring::npos);
        }
        EXPECT_TRUE(other->CreateCustomProperty({0, L"Mine", L""})) << "the lock does not keep others from storing";
    }
    EXPECT_EQ(HoldersIn(path_), 0);
    const auto next = other->Lock();
    ASSERT_TRUE(next);
    EXPECT_FALSE(next->TakenOverFrom());
}

TEST(ProjectLockChild, DISABLED_HoldsTheLock) {
    auto store = ProjectStore::Open(KilledChild::Argument());
    ASSERT_TRUE(store);
    const auto lock = store->Lock();
    ASSERT_TRUE(lock);
    KilledChild::Report(static_cast<long>(GetCurrentProcessId()));
    Sleep(INFINITE);
}

TEST_F(ProjectStoreTest, TheLockOfAProgramThatHasEndedIsTakenOver) {
    auto store = CreateSample();
    KilledChild child(L"ProjectLockChild.DISABLED_HoldsTheLock", path_);
    ASSERT_TRUE(child.HasReported(1));
    const auto refused = store.Lock();
    ASSERT_FALSE(refused);
    const std::wstring process = std::to_wstring(child.Reported());
    EXPECT_NE(refused.Error().message.find(L"process " + process), std::wstring::npos);

    child.Kill();
    EXPECT_EQ(HoldersIn(path_), 1) << "what it left behind";
    const auto lock = store.Lock();
    ASSERT_TRUE(lock);
    ASSERT_TRUE(lock->TakenOverFrom());
    EXPECT_EQ(std::to_wstring(lock->TakenOverFrom()->process), process);
}

// ---- interrupted generation ----

TEST_F(ProjectStoreTest, AFailedCreationLeavesNothing) {
    ProjectContent bad = SampleContent();
    bad.reportTemplates.push_back(bad.reportTemplates.front());  // stored at the end
    EXPECT_EQ(ProjectStore::Create(path_, bad).Error().kind, FailureKind::BadInput);
    bad = SampleContent();
    bad.rooms.back().zone = 9999;
    EXPECT_EQ(ProjectStore::Create(path_, bad).Error().kind, FailureKind::BadInput);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(ProjectStoreTest, WhatAnInterruptedRunLeftIsNotUsed) {
    const std::string earlierLog = [&] {
        auto store = CreateSample();
        EXPECT_TRUE(store.CreateCustomProperty({0, L"Earlier", L""}));
        return BytesOf(path_ + L"-wal");
    }();
    ASSERT_FALSE(earlierLog.empty());
    DeleteFileW(path_.c_str());
    WriteBytes(path_ + L"-wal", earlierLog);
    WriteBytes(path_ + L".new", "half");
    WriteBytes(path_ + L".new-journal", "half");

    auto store = CreateSample();
    EXPECT_TRUE(*store.Content() == SampleContent());
    EXPECT_FALSE(std::filesystem::exists(path_ + L".new"));
    EXPECT_FALSE(std::filesystem::exists(path_ + L".new-journal"));
}

/// Ends this process as soon as the file holds some of the rows that are being written.
void EndWhenWriting(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    while (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) || data.nFileSizeLow < 4096) {
        std::this_thread::yield();
    }
    TerminateProcess(GetCurrentProcess(), 42);
}

TEST_F(ProjectStoreTest, AKilledGenerationDoesNotAppearUnderItsName) {
    const auto generate = [&] {
        const auto content = GenerateProject(20);
        std::thread(EndWhenWriting, path_ + L".new").detach();
        const bool created = static_cast<bool>(ProjectStore::Create(path_, *content));
        _exit(created ? 0 : 1);
    };
    EXPECT_EXIT(generate(), testing::ExitedWithCode(42), "");
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_TRUE(OpenOrGenerateProject(path_, 1));
}

TEST_F(ProjectStoreTest, AKilledImportLeavesNoTemplate) {
    CreateSample();
    const auto import = [&] {
        auto store = Open();
        // More than SQLite keeps in memory: some of the rows go to the file before the import is done.
        ReportTemplate large = FullTemplate();
        large.columns.resize(200, large.columns.front());
        std::thread(EndWhenWriting, path_ + L"-wal").detach();
        const auto created = store.CreateReportTemplates(std::vector(2'000, large));
        _exit(created ? 0 : 1);
    };
    EXPECT_EXIT(import(), testing::ExitedWithCode(42), "");
    auto store = Open();
    EXPECT_TRUE(*store.ReportTemplates() == SampleContent().reportTemplates);
}

}  // namespace
}  // namespace ochost
