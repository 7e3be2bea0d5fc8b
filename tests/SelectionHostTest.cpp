#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <occommonui/ObjectSelection.h>
#include <occommonui/UpdateDwgData.h>
#include <orvatool/Gw.h>
#include <orvatool/QBaseDb.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/selection/DrawingRecords.h"
#include "host/selection/Evaluation.h"
#include "host/selection/ObjectValues.h"
#include "host/selection/SampleSelections.h"
#include "host/selection/SelectionCallback.h"
#include "host/selection/SelectionTrees.h"
#include "support/HostFixture.h"
#include "support/ProcessorTime.h"

namespace ochost {
namespace {

namespace fs = std::filesystem;
namespace Dlg = ObjectSelection::Dlg;
using ObjectSelection::Data;
using ObjectSelection::DrawingRef;
using ObjectSelection::NameListInDwg;
using ObjectSelection::RecordData;
using Rule = ObjectSelection::Property;

class LogLines : public Reporter {
public:
    void Before(const std::wstring&) override {}
    void After(const std::wstring&) override {}
    void Log(const std::wstring& line) override { lines_ += line + L"\n"; }
    bool Has(const std::wstring& text) const { return lines_.find(text) != std::wstring::npos; }

private:
    std::wstring lines_;
};

class SelectionHost : public HostFixture {
protected:
    SelectionHost() {
        project_.emplace(*OpenSampleProject(file_, 1));
        Use(Lng::Hpv);
    }

    void Use(Lng::AppID app) {
        callback_ = std::make_unique<SelectionCallback>(*project_, app, log_);
        ask_ = callback_->Get();
    }
    const ProjectIndex& Project() const { return callback_->Project(); }
    const ProjectContent& Content() const { return callback_->Project().content; }

    std::int64_t Ask(Dlg::CbMsgId message, std::uint64_t wParam = 0, std::int64_t lParam = 0) const {
        return ask_(message, wParam, lParam);
    }
    static std::uint64_t W(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }
    static std::int64_t L(const void* pointer) { return static_cast<std::int64_t>(W(pointer)); }

    /// What the host fills in for a message that takes a target in lParam.
    template <class Target>
    Target Filled(Dlg::CbMsgId message, std::uint64_t wParam = 0) const {
        Target target;
        Ask(message, wParam, L(&target));
        return target;
    }
    std::vector<ObjectSelection::PresetEntry> Configurations() const {
        std::vector<ObjectSelection::PresetEntry> entries;
        Ask(Dlg::GetConfigurations, W(&entries));
        return entries;
    }
    static std::set<std::int64_t> Values(const TREE_INSERTLIST& tree) {
        std::set<std::int64_t> values;
        for (const TREE_INSERTITEM& row : tree) {
            EXPECT_TRUE(row.value == 0 || values.insert(row.value).second) << "twice: " << row.value;
        }
        return values;
    }
    template <class R>
    static std::set<std::int64_t> Ids(const std::vector<R>& records, std::function<bool(const R&)> wanted = {}) {
        std::set<std::int64_t> ids;
        for (const R& record : records) {
            if (!wanted || wanted(record)) ids.insert(record.id);
        }
        return ids;
    }
    std::wstring DisciplineOf(Id discipline) const { return Project().disciplines[discipline]->code; }
    const Property& PropertyCalled(const wchar_t* name) const {
        return *std::find_if(Content().properties.begin(), Content().properties.end(),
                             [&](const Property& property) { return property.name == name; });
    }

    /// Asks, and has the user click that text in the tree of the dialog which then opens, and answer it.
    std::int64_t ChooseInTree(Dlg::CbMsgId message, std::uint64_t wParam, const std::wstring& text, int answer) {
        Step([=](HWND dlg) { ClickInTree(FindWindowExW(dlg, nullptr, WC_TREEVIEWW, nullptr), text); });
        Press(answer);
        return RunSteps([&] { return Ask(message, wParam); });
    }

    LogLines log_;
    std::unique_ptr<SelectionCallback> callback_;
    Dlg::Callback ask_;
};

// ---- what the callback answers ----

TEST_F(SelectionHost, DrawingsHaveTheirFoldersAndTheNamesInThem) {
    const auto forChoice = Filled<std::vector<Dlg::DrawingEntry>>(Dlg::GetDrawings, 1);
    const auto entries = Filled<std::vector<Dlg::DrawingEntry>>(Dlg::GetDrawings, 0);
    ASSERT_EQ(entries.size(), Content().drawings.size());
    ASSERT_EQ(forChoice.size(), entries.size());
    std::size_t areas = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const Dlg::DrawingEntry& entry = entries[i];
        EXPECT_TRUE(forChoice[i].layouts.empty());
        EXPECT_EQ(forChoice[i].drawing, entry.drawing);
        EXPECT_EQ(entry.drawing.id, Content().drawings[i].id);
        EXPECT_EQ(fs::path(entry.drawing.path.c_str()).filename(), Content().drawings[i].fileName);
        EXPECT_EQ(entry.layouts.front(), kModelSpace);
        EXPECT_GT(entry.layouts.size(), 1u);
        areas +=
            entry.selectionAreas.size() + entry.pages.size() + entry.switchboardAreas.size() + entry.hostAreas.size();
    }
    EXPECT_EQ(areas, Content().areas.size());
    EXPECT_EQ(fs::path(entries.front().drawing.path.c_str()).parent_path(),
              folder_.Path() / L"Building A" / L"Ventilation" / L"Floor plans");
    EXPECT_EQ(entries.front().title, L"V-A0K Ventilation, Basement");
}

TEST_F(SelectionHost, EachApplicationWorksOnADrawingOfItsOwn) {
    const std::pair<Lng::AppID, const wchar_t*> cases[] = {
        {Lng::Hpv,        L"V-A04.dwg"  },
        {Lng::Electrical, L"E-A04.dwg"  },
        {Lng::Schematics, L"V-A-AHU.dwg"},
        {Lng::Automation, L"V-A-AHU.dwg"},
    };
    for (const auto& [app, file] : cases) {
        Use(app);
        const auto path = Filled<ustr_pre<260>>(Dlg::GetCurrentDrawing);
        EXPECT_EQ(fs::path(path.c_str()).filename(), file);
        const auto entries = Filled<std::vector<Dlg::DrawingEntry>>(Dlg::GetDrawings, 1);
        EXPECT_TRUE(std::any_of(entries.begin(), entries.end(), [&](const auto& entry) {
            return entry.drawing.path == path;
        })) << "as the list has it";
    }
}

TEST_F(SelectionHost, RoomsAndZonesAreThoseOfTheFloorsInQuestion) {
    EXPECT_EQ(Ask(Dlg::HasRooms), 1);
    EXPECT_EQ(Values(Filled<TREE_INSERTLIST>(Dlg::GetRooms, 0)), Ids(Content().rooms));
    EXPECT_EQ(Values(Filled<TREE_INSERTLIST>(Dlg::GetFunctionalZones, 0)), Ids(Content().zones));

    const Id floor = callback_->CurrentDrawing().floor;
    EXPECT_EQ(Values(Filled<TREE_INSERTLIST>(Dlg::GetRooms, 1)),
              Ids<Room>(Content().rooms, [&](const Room& room) { return room.floor == floor; }));
    EXPECT_EQ(Values(Filled<TREE_INSERTLIST>(Dlg::GetFunctionalZones, 1)),
              Ids<Zone>(Content().zones, [&](const Zone& zone) { return zone.floor == floor; }));
    Use(Lng::Schematics);
    EXPECT_TRUE(Filled<TREE_INSERTLIST>(Dlg::GetRooms, 1).empty()) << "a diagram shows no floor";

    const TREE_INSERTLIST rooms = Filled<TREE_INSERTLIST>(Dlg::GetRooms, 0);
    EXPECT_EQ(rooms[0].text, L"Basement");
    EXPECT_EQ(rooms[0].value, 0);
    EXPECT_EQ(rooms[1].level, 1);
}

TEST_F(SelectionHost, BuildingsAreHeadingsWhenThereAreSeveral) {
    const std::wstring path = folder_.File(L"three.ocproject");
    const auto three = OpenSampleProject(path, 3);
    ASSERT_TRUE(three);
    const ProjectIndex index(*three);
    const TREE_INSERTLIST rooms = RoomTree(index);
    EXPECT_EQ(Values(rooms), Ids(index.content.rooms));
    std::vector<ustr> roots;
    for (const TREE_INSERTITEM& row : rooms) {
        if (row.level == 0) roots.push_back(row.text);
    }
    EXPECT_EQ(roots, (std::vector<ustr>{L"A", L"B", L"C"}));
}

TEST_F(SelectionHost, SystemsSeriesAndPartTypesAreTheApplications) {
    for (const Lng::AppID app : {Lng::Hpv, Lng::Electrical, Lng::Automation}) {
        Use(app);
        const auto isOurs = [&](const auto& record) {
            const bool electrical = DisciplineOf(record.discipline) == L"E";
            return app == Lng::Automation || electrical == (app == Lng::Electrical);
        };
        EXPECT_EQ(Values(Filled<TREE_INSERTLIST>(Dlg::GetSystems)), Ids<System>(Content().systems, isOurs));
        EXPECT_EQ(Values(Filled<TREE_INSERTLIST>(Dlg::GetFittingSeries)),
                  Ids<FittingSeries>(Content().fittingSeries, isOurs));
        const TREE_INSERTLIST parts = Filled<TREE_INSERTLIST>(Dlg::GetPartTypes);
        EXPECT_EQ(Values(parts), Ids<PartType>(Content().partTypes, isOurs));
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const bool hasBelow = i + 1 < parts.size() && parts[i + 1].level > parts[i].level;
            EXPECT_EQ(parts[i].value == 0, hasBelow) << "no group without a part type";
        }
    }
}

TEST_F(SelectionHost, AreasAndPagesAreThereUntilTheProjectHasNone) {
    constexpr Dlg::CbMsgId kQueries[] = {Dlg::HasSelectionAreas, Dlg::HasPages, Dlg::HasSwitchboardAreas,
                                         Dlg::HasHostAreas};
    for (const Dlg::CbMsgId query : kQueries)
        EXPECT_EQ(Ask(query), 1) << query;
    ProjectContent bare = Content();
    bare.areas.clear();
    bare.objects.clear();
    bare.rooms.clear();
    auto store = ProjectStore::Create(folder_.File(L"bare.ocproject"), bare);
    ASSERT_TRUE(store);
    SelectionCallback callback(*store, Lng::Electrical, log_);
    for (const Dlg::CbMsgId query : kQueries)
        EXPECT_EQ(callback.Get()(query, 0, 0), 0) << query;
    EXPECT_EQ(callback.Get()(Dlg::HasRooms, 0, 0), 0);
}

TEST_F(SelectionHost, TheLabelsInUseAreGivenOnceAndNothingForAnUnknownMessage) {
    LabelManager::Labels labels;
    Ask(Dlg::GetLabels, W(&labels));
    EXPECT_EQ(labels.ToString(), L"commissioning, prefabricated, to be checked");
    for (const int unknown : {30, -1})
        EXPECT_EQ(Ask(static_cast<Dlg::CbMsgId>(unknown)), 0);
}

TEST_F(SelectionHost, PropertiesHaveNamesKindsAndTexts) {
    const auto entries = Filled<std::vector<Dlg::PropertyEntry>>(Dlg::GetProperties);
    ASSERT_EQ(entries.size(), Content().properties.size());
    std::map<std::int64_t, int> kinds;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(Filled<ustr>(Dlg::GetPropertyName, static_cast<std::uint64_t>(entries[i].id)), entries[i].name);
        EXPECT_FALSE(entries[i].group.empty());
        ++kinds[Ask(Dlg::GetPropertyKind, i)];
    }
    EXPECT_TRUE(kinds[Dlg::TextValue] > 50 && kinds[Dlg::NumberValue] > 50 && kinds[Dlg::ChoiceValue] > 20);
    EXPECT_EQ(Ask(Dlg::GetPropertyKind, entries.size()), Dlg::TextValue);
    EXPECT_TRUE(Filled<ustr>(Dlg::GetPropertyName, 99'999).empty());

    const auto textOf = [&](const wchar_t* property, const wchar_t* value) {
        Dlg::ValueText text{value, value};
        Ask(Dlg::GetValueText, static_cast<std::uint64_t>(PropertyCalled(property).id), L(&text));
        return text.text;
    };
    EXPECT_EQ(textOf(L"Air flow", L"45"), L"45 l/s");
    EXPECT_EQ(textOf(L"Rotation", L"90"), L"90°");
    EXPECT_EQ(textOf(L"Number of lamps", L"2"), L"2");
    EXPECT_EQ(textOf(L"Balanced", L"1"), L"Yes");
    EXPECT_EQ(textOf(L"Material", L"Copper"), L"Copper");
}

TEST_F(SelectionHost, APropertyOffersTheValuesThatItCanHave) {
    const auto valuesOf = [&](const wchar_t* property) {
        std::vector<std::wstring> values;
        const auto id = static_cast<std::uint64_t>(PropertyCalled(property).id);
        for (const Dlg::ValueEntry& entry : Filled<std::vector<Dlg::ValueEntry>>(Dlg::GetPropertyValues, id))
            values.emplace_back((std::wstring(entry.value.c_str()) + L"/" + entry.text.c_str()));
        return values;
    };
    EXPECT_EQ(valuesOf(L"Protection class"), (std::vector<std::wstring>{L"I/", L"II/", L"III/"}));
    EXPECT_EQ(valuesOf(L"Balanced"), (std::vector<std::wstring>{L"1/Yes", L"0/No"}));
    EXPECT_TRUE(valuesOf(L"Air flow").empty());
    EXPECT_EQ(valuesOf(L"Floor code"),
              (std::vector<std::wstring>{L"1/", L"2/", L"3/", L"4/", L"5/", L"6/", L"7/", L"8/", L"K/"}));
}

TEST_F(SelectionHost, TheEditorIsSetUpForCountsAndCodes) {
    const auto setUp = [&](const wchar_t* property) {
        Dlg::EditorSetup setup;
        setup.offerTolerance = setup.offerCaseSensitive = true;
        Rule rule;
        rule.propId = PropertyCalled(property).id;
        Ask(Dlg::SetUpEditor, W(&setup), L(&rule));
        return setup;
    };
    EXPECT_TRUE(setUp(L"Air flow").offerTolerance);
    EXPECT_FALSE(setUp(L"Number of lamps").offerTolerance);
    EXPECT_TRUE(setUp(L"Room name").offerCaseSensitive);
    EXPECT_FALSE(setUp(L"System code").offerCaseSensitive);
}

TEST_F(SelectionHost, OnlyARoomIsChosenWithTheHostsOwnDialog) {
    Dlg::ValueChoice other{PropertyCalled(L"Room name").id, L"Hall"};
    EXPECT_EQ(Ask(Dlg::ChooseValue, W(&other)), 0);
    EXPECT_EQ(other.value, L"Hall");

    const Room& room = Content().rooms[200];
    Dlg::ValueChoice choice{PropertyCalled(L"Room number").id, L"none"};
    for (const int answer : {IDCANCEL, IDOK}) {
        EXPECT_EQ(ChooseInTree(Dlg::ChooseValue, W(&choice), room.number + L" " + room.name, answer), 1);
        EXPECT_EQ(choice.value, answer == IDOK ? ustr(room.number) : ustr(L"none"));
    }
}

// ---- part types by name ----

class PartTypeTreeTest : public SelectionHost {
protected:
    PartTypeTreeTest()
        : tree_(CreateWindowExW(0, WC_TREEVIEWW, L"", WS_POPUP | TVS_HASLINES, 0, 0, 200, 300, nullptr, nullptr,
                                nullptr, nullptr)) {}
    ~PartTypeTreeTest() override { DestroyWindow(tree_); }

    std::int64_t Fill(const Data& data) const {
        const Dlg::PartTypeFill fill{&data, 0};
        return Ask(Dlg::FillPartTypes, W(tree_), L(&fill));
    }
    HWND tree_;
};

TEST_F(PartTypeTreeTest, SchematicsFillsAndReadsTheTreeItself) {
    Use(Lng::Schematics);
    Data data;
    data.partTypesAlt = {"CDR-125", "not there", "DFN-125"};
    ASSERT_EQ(Fill(data), 1);
    EXPECT_EQ(TreeView_GetCount(tree_), static_cast<UINT>(PartTypeTree(Project(), Lng::Schematics).size() + 2))
        << "with what is gone, below its heading";
    Data read;
    read.partTypesAlt = {"before"};
    ASSERT_EQ(Ask(Dlg::ReadPartTypes, W(tree_), L(&read)), 1);
    EXPECT_EQ(std::set(read.partTypesAlt.begin(), read.partTypesAlt.end()),
              (std::set<astr>{"CDR-125", "DFN-125", "not there"}));

    ASSERT_EQ(Fill({}), 1);
    ASSERT_EQ(Ask(Dlg::ReadPartTypes, W(tree_), L(&read)), 1);
    EXPECT_TRUE(read.partTypesAlt.empty());
}

TEST_F(PartTypeTreeTest, TheOtherApplicationsLeaveThatToTheLibrary) {
    for (const Lng::AppID app : {Lng::Hpv, Lng::Electrical, Lng::Automation}) {
        Use(app);
        Data data;
        data.partTypesAlt = {"kept"};
        EXPECT_EQ(Fill(data), 0);
        EXPECT_EQ(Ask(Dlg::ReadPartTypes, W(tree_), L(&data)), 0);
        EXPECT_EQ(data.partTypesAlt.size(), 1u);
        EXPECT_EQ(TreeView_GetCount(tree_), 0u);
    }
}

// ---- configurations ----

/// With texts of several scripts and a drawing that is not the project's.
Data ManyCriteria() {
    Data data;
    data.bySelectionSet = data.useModelDrawings = data.useRooms = data.usePartTypes = true;
    data.rooms = {3, 1};
    data.partTypesAlt = {"ÄÖ-1"};
    data.modelDrawings.resize(1);
    data.modelDrawings[0].path = L"C:\\elsewhere\\Ä.dwg";
    Rule& rule = data.filterRules.emplace_back();
    rule.propId = 99;
    rule.criteria = {
        {Rule::NotEqual, L"€"}
    };
    return data;
}

TEST_F(SelectionHost, AConfigurationIsStoredLoadedRenamedAndDeleted) {
    const auto before = Configurations();
    RecordData record;
    record.name = L"Mine Å";
    record.data = ManyCriteria();
    Ask(Dlg::SaveConfiguration, W(&record));
    ASSERT_FALSE(record.key.empty());
    ASSERT_EQ(Configurations().size(), before.size() + 1);
    EXPECT_EQ(Configurations().back().key, record.key);
    EXPECT_EQ(Configurations().back().name, L"Mine Å");

    RecordData loaded;
    loaded.key = record.key;
    Ask(Dlg::LoadConfiguration, W(&loaded));
    EXPECT_EQ(loaded, record);

    record.data.rooms = {4};
    Ask(Dlg::SaveConfiguration, W(&record));
    Ask(Dlg::RenameConfiguration, W(record.key.c_str()), L(L"Yours"));
    record.name = L"Yours";
    Ask(Dlg::LoadConfiguration, W(&loaded));
    EXPECT_EQ(loaded, record) << "stored in place, and renamed";
    EXPECT_EQ(Configurations().size(), before.size() + 1);

    Use(Lng::Electrical);
    const auto others = Configurations();
    EXPECT_TRUE(std::none_of(others.begin(), others.end(), [&](const auto& entry) { return entry.key == record.key; }))
        << "another application has its own";
    EXPECT_THROW(Ask(Dlg::DeleteConfiguration, W(record.key.c_str())), Failure);

    Use(Lng::Hpv);
    EXPECT_EQ(Ask(Dlg::DeleteConfiguration, W(record.key.c_str())), 0);
    EXPECT_EQ(Configurations().size(), before.size());
    EXPECT_THROW(Ask(Dlg::LoadConfiguration, W(&loaded)), Failure);
    EXPECT_TRUE(log_.Has(L"was removed in the meantime"));
}

TEST_F(SelectionHost, TheCriteriaUsedLastAreKeptByApplication) {
    EXPECT_TRUE(callback_->Store().Last().currentDrawing);
    const auto configurations = Configurations().size();
    callback_->Store().SetLast(ManyCriteria());
    Data changed = ManyCriteria();
    changed.rooms.clear();
    callback_->Store().SetLast(changed);
    Use(Lng::Electrical);
    EXPECT_FALSE(callback_->Store().Last() == changed);
    Use(Lng::Hpv);
    EXPECT_EQ(callback_->Store().Last(), changed);
    EXPECT_EQ(Configurations().size(), configurations) << "they are no configuration";
}

TEST_F(SelectionHost, ASelectionThatCannotBeReadIsRefusedAndSaysSo) {
    for (const wchar_t* data : {L"", L"<ObjectSelection", L"<ObjectSelection Format=\"99999999\"/>"}) {
        const auto stored = project_->CreateSelection({0, Lng::Hpv, L"Broken", data});
        RecordData record;
        record.key = std::string_view(std::to_string(stored->id));
        EXPECT_THROW(Ask(Dlg::LoadConfiguration, W(&record)), Failure) << stored->id;
        EXPECT_TRUE(record.name.empty());
    }
    EXPECT_TRUE(log_.Has(L"cannot be read"));
}

TEST_F(SelectionHost, WithoutReadableCriteriaADialogBeginsWithTheDefault) {
    ASSERT_TRUE(project_->CreateSelection({0, Lng::Hpv, L"", L"<ObjectSelection"}));
    EXPECT_THROW(callback_->Store().Last(), Failure);
    EXPECT_EQ(callback_->Last(), SelectionStore::Default());
    EXPECT_TRUE(log_.Has(L"cannot be read"));
    callback_->Store().SetLast(ManyCriteria());
    EXPECT_EQ(callback_->Last(), ManyCriteria()) << "what the user confirms replaces them";
}

// ---- the lock and the drawing manager ----

TEST_F(SelectionHost, TheLockIsTakenReleasedAndRefusedToASecondHost) {
    auto second = ProjectStore::Open(file_);
    ASSERT_TRUE(second);
    SelectionCallback other(*second, Lng::Electrical, log_);
    {
        Dlg::PrjLock lock(nullptr, ask_);
        ASSERT_TRUE(lock.IsLocked());
        Step([](HWND box) {
            const std::wstring told = TextsOf(box);
            EXPECT_NE(told.find(L"is being edited by"), std::wstring::npos) << told;
            EXPECT_NE(told.find(std::to_wstring(GetCurrentProcessId())), std::wstring::npos) << told;
            uidriver::Key(VK_RETURN);
        });
        EXPECT_FALSE(RunSteps([&] { return Dlg::PrjLock(nullptr, other.Get()).IsLocked(); }));
    }
    Dlg::PrjLock free(nullptr, other.Get());
    EXPECT_TRUE(free.IsLocked());
    EXPECT_EQ(Ask(Dlg::UnlockProject), 0) << "nothing to release";
    EXPECT_FALSE(project_->Lock()) << "still the other's";
}

TEST_F(SelectionHost, TheDrawingManagerHoldsTheLock) {
    auto second = ProjectStore::Open(file_);
    ASSERT_TRUE(second);
    SelectionCallback other(*second, Lng::Electrical, log_);
    const std::size_t before = project_->LeftOutDrawings()->size();
    {
        Dlg::PrjLock lock(nullptr, other.Get());
        Step([](HWND box) {
            const std::wstring told = TextsOf(box);
            EXPECT_NE(told.find(L"is being edited by"), std::wstring::npos) << told;
            uidriver::Key(VK_RETURN);
        });
        EXPECT_EQ(RunSteps([&] { return Ask(Dlg::ManageDrawings); }), 0);
        EXPECT_EQ(project_->LeftOutDrawings()->size(), before);
    }
    Step([&](HWND) {
        EXPECT_FALSE(second->Lock()) << "held while the dialog is open";
        uidriver::Key(VK_ESCAPE);
    });
    RunSteps([&] { return Ask(Dlg::ManageDrawings); });
    EXPECT_TRUE(second->Lock()) << "and then released";
}

TEST_F(SelectionHost, TheDrawingManagerRemovesAndAddsAModelDrawing) {
    const auto offered = [&] {
        std::set<std::wstring> files;
        for (const Dlg::DrawingEntry& entry : Filled<std::vector<Dlg::DrawingEntry>>(Dlg::GetDrawings, 1))
            files.insert(fs::path(entry.drawing.path.c_str()).filename().wstring());
        return files;
    };
    const std::set<std::wstring> all = offered();
    const auto manage = [&](int answer) { ChooseInTree(Dlg::ManageDrawings, 0, L"H-A02.dwg", answer); };
    manage(IDCANCEL);
    EXPECT_EQ(offered(), all);
    manage(IDOK);
    std::set<std::wstring> fewer = all;
    fewer.erase(L"H-A02.dwg");
    EXPECT_EQ(offered(), fewer);
    manage(IDOK);
    EXPECT_EQ(offered(), all);
    EXPECT_TRUE(log_.Has(L"added model drawing H-A02.dwg"));
}

// ---- evaluation ----

class Evaluation : public SelectionHost {
protected:
    using Test = std::function<bool(const PlacedObject&)>;

    static Data BySet() {
        Data data;
        data.bySelectionSet = true;
        return data;
    }
    DrawingRef RefTo(const wchar_t* file, bool byPath = false) const {
        const auto& drawings = Content().drawings;
        const auto found = std::find_if(drawings.begin(), drawings.end(),
                                        [&](const Drawing& drawing) { return drawing.fileName == file; });
        DrawingRef ref = RefOf(Project(), *found);
        if (byPath) ref.id = 0;
        return ref;
    }
    static std::vector<Id> IdsOf(const std::vector<const PlacedObject*>& objects) {
        std::vector<Id> ids;
        for (const PlacedObject* object : objects)
            ids.push_back(object->id);
        return ids;
    }
    std::vector<Id> Selected(const Data& data) const {
        return IdsOf(SelectedObjects(Project(), data, callback_->CurrentDrawing().id));
    }
    /// The selection is what a plain look at every object finds, which is neither nothing nor everything.
    void ExpectSelected(const Data& data, const Test& expected) const {
        std::vector<Id> plain;
        for (const PlacedObject& object : Content().objects) {
            if (expected(object)) plain.push_back(object.id);
        }
        EXPECT_TRUE(!plain.empty() && plain.size() < Content().objects.size()) << plain.size();
        EXPECT_EQ(Selected(data), plain);
    }
    std::wstring Value(const PlacedObject& object, const wchar_t* property) const {
        return ValueOf(Project(), object, PropertyCalled(property));
    }
    Rule RuleOn(const wchar_t* property, std::vector<Rule::Criterion> criteria) const {
        Rule rule;
        rule.propId = PropertyCalled(property).id;
        rule.criteria = std::move(criteria);
        return rule;
    }
};

TEST_F(Evaluation, ByDrawing) {
    Data data = BySet();
    data.currentDrawing = true;
    data.useModelDrawings = true;  // what does not count then
    data.modelDrawings = {RefTo(L"E-A01.dwg")};
    const Id current = callback_->CurrentDrawing().id;
    ExpectSelected(data, [&](const PlacedObject& object) { return object.drawing == current; });

    data.currentDrawing = false;
    DrawingRef gone = RefTo(L"E-A01.dwg");
    gone.id = 999;
    data.modelDrawings = {RefTo(L"E-A01.dwg"), RefTo(L"W-A03.dwg", true), gone};
    CharUpperBuffW(data.modelDrawings[1].path.data(), static_cast<DWORD>(data.modelDrawings[1].path.size()));
    const Id first = RefTo(L"E-A01.dwg").id;
    const Id second = RefTo(L"W-A03.dwg").id;
    ExpectSelected(data,
                   [&](const PlacedObject& object) { return object.drawing == first || object.drawing == second; });
    data.modelDrawings = {gone};
    EXPECT_TRUE(Selected(data).empty()) << "only what is gone";
}

TEST_F(Evaluation, ADrawingThatIsNoModelDrawingIsSelectedFromAsTheCurrentOneOnly) {
    const Data all = BySet();
    Data named = all;
    named.useModelDrawings = true;
    named.modelDrawings = {RefOf(Project(), callback_->CurrentDrawing())};
    Data asCurrent = all;
    asCurrent.currentDrawing = true;
    const Id object = Selected(asCurrent).front();
    const auto isSelected = [&](const Data& data) {
        const auto ids = Selected(data);
        return std::find(ids.begin(), ids.end(), object) != ids.end();
    };
    EXPECT_TRUE(isSelected(all) && isSelected(named));
    ASSERT_TRUE(project_->SetModelDrawing(callback_->CurrentDrawing().id, false));
    Use(Lng::Hpv);
    EXPECT_FALSE(isSelected(all) || isSelected(named));
    EXPECT_TRUE(isSelected(asCurrent));
}

TEST_F(Evaluation, ByRoomsZonesSystemsSeriesAndPartTypesTogether) {
    Data data = BySet();
    data.useFunctionalZones = data.useRooms = data.useSystems = true;
    for (const Zone& zone : Content().zones) {
        if (zone.name == L"Offices north") data.functionalZones.push_back(static_cast<std::int32_t>(zone.id));
    }
    for (const Room& room : Content().rooms) {
        if (room.name == L"Office room") data.rooms.push_back(static_cast<std::int32_t>(room.id));
    }
    for (const System& system : Content().systems) {
        if (system.medium == L"Air") data.systems.push_back(static_cast<std::int32_t>(system.id));
    }
    const auto isWanted = [&](const PlacedObject& object) {
        return Value(object, L"Zone name") == L"Offices north" && Value(object, L"Room name") == L"Office room" &&
               Value(object, L"Medium") == L"Air";
    };
    ExpectSelected(data, isWanted);

    data.useFittingSeries = true;
    data.fittingSeries = {1};
    ExpectSelected(data, [&](const PlacedObject& object) { return isWanted(object) && object.fittingSeries == 1; });

    data = BySet();
    data.usePartTypes = true;
    data.partTypes = {static_cast<std::int32_t>(Content().objects[5].partType)};
    data.partTypesAlt = {"RTV-DN10", "RTV-DN15", "gone"};
    ExpectSelected(data, [&](const PlacedObject& object) {
        const std::wstring code = Value(object, L"Type code");
        return object.partType == data.partTypes.front() || code == L"RTV-DN10" || code == L"RTV-DN15";
    });
}

TEST_F(Evaluation, ByLayoutsAndAreasInDrawings) {
    Data data = BySet();
    const DrawingRef byPath = RefTo(L"H-A04.dwg", true);
    data.layouts.entries = {
        {RefTo(L"V-A04.dwg"), L"A1 1:50"  },
        {byPath,              kModelSpace },
        {RefTo(L"H-A03.dwg"), L"no layout"}
    };
    ExpectSelected(data, [&](const PlacedObject& object) {
        const std::wstring drawing = Value(object, L"Drawing");
        return (drawing == L"V-A04.dwg" && Value(object, L"Layout") == L"A1 1:50") ||
               (drawing == L"H-A04.dwg" && object.layout == 0);
    });
    data.layouts.all = true;
    EXPECT_EQ(Selected(data).size(), Content().objects.size());

    const struct {
        NameListInDwg Data::*list;
        Id PlacedObject::*area;
        const wchar_t* drawing;
        const wchar_t* name;
        const wchar_t* property;
    } cases[] = {
        {&Data::selectionAreas,   &PlacedObject::selectionArea,   L"W-A02.dwg",   L"South",                 L"Selection area"  },
        {&Data::pages,            &PlacedObject::page,            L"V-A-AHU.dwg", L"3",                     L"Page"            },
        {&Data::switchboardAreas, &PlacedObject::switchboardArea, L"E-A02.dwg",   L"SB-A02.E",              L"Switchboard area"},
        {&Data::hostAreas,        &PlacedObject::hostArea,        L"V-A06.dwg",   L"Ceiling void 06 north", L"Host area"       },
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.property);
        data = BySet();
        (data.*row.list).entries = {
            {RefTo(row.drawing), row.name}
        };
        ExpectSelected(data, [&](const PlacedObject& object) {
            return Value(object, L"Drawing") == row.drawing && Value(object, row.property) == row.name;
        });
        (data.*row.list).all = true;
        ExpectSelected(data, [&](const PlacedObject& object) { return object.*row.area != 0; });
    }
}

TEST_F(Evaluation, ByRulesOfWhichAllMustHold) {
    Data data = BySet();
    data.filterRules = {
        RuleOn(L"Air flow", {{Rule::Greater, L"20"},       {Rule::Less, L"60"}        }
         ),
        RuleOn(L"Room name", {{Rule::Contains, L"meeting"}, {Rule::BeginsWith, L"conf"}}
         ),
    };
    data.filterRules[0].matchAll = true;
    ExpectSelected(data, [&](const PlacedObject& object) {
        const std::wstring flow = Value(object, L"Air flow");
        const std::wstring room = Value(object, L"Room name");
        return !flow.empty() && std::stod(flow) > 20 && std::stod(flow) < 60 &&
               (room == L"Meeting room" || room == L"Conference room");
    });
    const Rule::Criterion conditions[] = {
        {Rule::Equal,    L"none"},
        {Rule::NotEqual, L"none"},
        {Rule::Contains, L""    },
    };
    for (const Rule::Criterion& condition : conditions) {
        data = BySet();
        data.filterRules = {RuleOn(L"Room name", {condition})};
        data.filterRules.back().propId = 99'999;
        EXPECT_TRUE(Selected(data).empty())
            << "a rule on a property that the project does not have: " << condition.operation;
    }
}

TEST_F(Evaluation, ACriterionCountsWhenItIsInForceAndNamesSomething) {
    Data data = BySet();
    EXPECT_EQ(Selected(data).size(), Content().objects.size());
    data.useRooms = data.useModelDrawings = data.usePartTypes = data.useSystems = true;
    data.fittingSeries = {1};
    EXPECT_EQ(Selected(data).size(), Content().objects.size());
    data.bySelectionSet = false;
    EXPECT_TRUE(Selected(data).empty()) << "the user picks by hand";
}

TEST_F(Evaluation, TheReportSaysWhereEachObjectIs) {
    Data data = BySet();
    data.currentDrawing = true;
    const auto objects = SelectedObjects(Project(), data, callback_->CurrentDrawing().id);
    const SimpleReport report = ReportOf(Project(), objects, Lng::Hpv);
    ASSERT_EQ(report.RowCount(), std::ssize(objects));
    std::set<std::uint64_t> handles;
    for (int row = 0; row < report.RowCount(); ++row) {
        const PlacedObject& object = *objects[static_cast<std::size_t>(row)];
        EXPECT_TRUE(handles.insert(report.Pos(row).handle).second);
        EXPECT_EQ(report.Pos(row).x, object.x);
        EXPECT_EQ(report.Pos(row).drawing, RefTo(L"V-A04.dwg").path);
        EXPECT_TRUE(std::wstring(report.Text(row, 0).c_str()).starts_with(Value(object, L"Type code")));
        EXPECT_EQ(report.Text(row, 3), L"V-A04.dwg");
    }
}

TEST_F(Evaluation, AskingForManyDrawingsAndRoomsTakesNoLongerThanForFew) {
    const auto large = OpenSampleProject(folder_.File(L"large.ocproject"), 10);
    ASSERT_TRUE(large);
    const ProjectIndex index(*large);
    Data few = BySet();
    few.useModelDrawings = few.useRooms = true;
    few.modelDrawings = {RefOf(index, index.content.drawings.back())};
    few.rooms = {1};
    Data many = few;
    for (const Drawing& drawing : index.content.drawings)
        many.modelDrawings.push_back(RefOf(index, drawing));
    for (const Room& room : index.content.rooms)
        many.rooms.push_back(static_cast<std::int32_t>(room.id));
    const auto milliseconds = [&](const Data& data) {
        double shortest = 1e9;
        for (int time = 0; time < 3; ++time) {
            const double start = ProcessorTime();
            SelectedObjects(index, data, 1);
            shortest = std::min(shortest, ProcessorTime() - start);
        }
        return shortest;
    };
    const double forFew = milliseconds(few);
    EXPECT_LT(milliseconds(many), 20 * forFew + 50) << forFew;
}

TEST_F(Evaluation, AnObjectsValuesAreTheSameEveryTime) {
    const PlacedObject& object = Content().objects[100];
    const ProjectIndex again(*project_);
    for (const Property& property : Content().properties) {
        const std::wstring value = ValueOf(Project(), object, property);
        EXPECT_EQ(value, ValueOf(again, again.content.objects[100], property)) << property.id;
        const bool isChoice = property.type == ValueType::Choice && !value.empty();
        EXPECT_TRUE(!isChoice || std::count(property.choices.begin(), property.choices.end(), value) == 1);
    }
}

// ---- what the sample project is made with ----

TEST_F(SelectionHost, TheSampleConfigurationsSelectSomething) {
    std::size_t checked = 0;
    for (const Lng::AppID app : {Lng::Hpv, Lng::Electrical, Lng::Schematics, Lng::Automation}) {
        Use(app);
        for (const ObjectSelection::PresetEntry& entry : Configurations()) {
            const RecordData record = callback_->Store().Load(entry.key);
            const auto selected = SelectedObjects(Project(), record.data, callback_->CurrentDrawing().id);
            EXPECT_TRUE(selected.size() > 5 && selected.size() < Content().objects.size() / 2)
                << entry.name.c_str() << " " << selected.size();
            EXPECT_EQ(app == Lng::Schematics, !record.data.partTypesAlt.empty());
            ++checked;
        }
    }
    EXPECT_GE(checked, 12u);
}

TEST_F(SelectionHost, TheSampleUpdateSetsNamePropertiesOfTheProject) {
    const QBaseDb database(file_.c_str());
    std::vector<UpdateDwgData::PrjDb::OptionsRec> sets;
    UpdateDwgData::PrjDb::Read(database, sets);
    ASSERT_EQ(sets.size(), 5u);
    for (const UpdateDwgData::PrjDb::OptionsRec& set : sets) {
        EXPECT_FALSE(set.options.properties.empty());
        for (const long id : set.options.properties)
            EXPECT_TRUE(Project().properties[id]) << id;
    }
    EXPECT_EQ(sets[1].name, L"Air flows and sizes");
    EXPECT_FALSE(sets[1].options.selection.partTypes.empty());
}

TEST_F(SelectionHost, SamplesThatDoNotFitTheProjectAreRefusedWithFileAndLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"selections",  "A\tplumbing\t\t\t\t\t\t\t\t"      },
        {"selections",  "A\thpv\t\t\t\t\tXX\t\t\t"         },
        {"selections",  "A\thpv\t\t\t\t\t\t\tCars\t"       },
        {"selections",  "A\thpv\t\t\t\t\t\t\t\t99 about 20"},
        {"selections",  "A\thpv\t\t\t\t\t\t\t\t9999 less 1"},
        {"update_sets", "A\t1\tNo such selection"          },
    };
    for (const auto& bad : cases) {
        const Status added = AddSampleSelections(*project_, [&](std::string_view name) {
            return name == bad.first ? std::string_view(bad.second) : EmbeddedText(name);
        });
        ASSERT_FALSE(added) << bad.second;
        EXPECT_EQ(added.Error().kind, FailureKind::BadInput);
        EXPECT_NE(added.Error().message.find(L"line 1"), std::wstring::npos) << added.Error().message;
    }
}

TEST_F(SelectionHost, DrawingRecordsFollowTheProject) {
    const auto pathOf = [](const std::wstring& file, const char* id) {
        const QBaseDb database(file.c_str());
        ustr path;
        QBaseDb::Rec* record = database.findRec(ObjectSelection::kDrawingRecord, id);
        database.copyWsz(record, ObjectSelection::kDrawingPath, path);
        database.releaseRec(record);
        return path;
    };
    const DrawingRef first = RefOf(Project(), Content().drawings.front());
    EXPECT_EQ(pathOf(file_, "000001"), first.path);

    {
        QBaseDb database(file_.c_str());
        QBaseDb::Rec* stray = database.createRec(ObjectSelection::kDrawingRecord, "000099");
        ASSERT_EQ(database.saveRec(stray), 0);
        database.releaseRec(stray);
        ASSERT_EQ(database.deleteRec(ObjectSelection::kDrawingRecord, "000002"), 0);
    }
    ASSERT_TRUE(KeepDrawingRecords(*project_));
    const QBaseDb database(file_.c_str());
    EXPECT_FALSE(database.existRec(ObjectSelection::kDrawingRecord, "000099"));
    EXPECT_TRUE(database.existRec(ObjectSelection::kDrawingRecord, "000002"));

    const fs::path moved = folder_.Path() / L"moved";
    fs::create_directories(moved);
    const std::wstring copy = (moved / L"copy.ocproject").wstring();
    ASSERT_TRUE(ProjectStore::Create(copy, Content()));
    ASSERT_TRUE(OpenSampleProject(copy, 1));
    EXPECT_TRUE(std::wstring(pathOf(copy, "000001").c_str()).starts_with(moved.wstring()));
}

}  // namespace
}  // namespace ochost
