#include <gtest/gtest.h>
#include <windows.h>

#include <orvatool/Lng.h>
#include <orvatool/ObjectSelection.h>
#include <orvatool/QBaseDb.h>
#include <ticpp.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/ProcessorTime.h"
#include "support/TestFolder.h"
#include "support/XmlFaults.h"

// How a failed comparison shows a text.
namespace orvaspace {
void PrintTo(const ustr& text, std::ostream* out) {
    *out << '"' << ToUtf8(text).c_str() << '"';
}
}  // namespace orvaspace

// The object selection records: what they are by default, what their rules select, and the XML that projects keep.

namespace ObjectSelection {
namespace {

using Operation = Property::Operation;

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

Property::Criterion Criterion(short operation, const wchar_t* value) {
    return {operation, value};
}

Property Rule(short operation, const wchar_t* value) {
    Property rule;
    rule.criteria = {Criterion(operation, value)};
    return rule;
}

DrawingRef Drawing(std::int32_t id, const wchar_t* path) {
    return {id, path};
}

NameListInDwg::Entry Name(std::int32_t id, const wchar_t* path, const wchar_t* name) {
    return {Drawing(id, path), name};
}

Property FullRule() {
    Property rule = Rule(Operation::Contains, L"DN \"50\" & <Ø>");
    rule.criteria.push_back(Criterion(-32768, L""));
    rule.criteria.push_back(Criterion(32767, L"\n\t blanks at the ends "));
    rule.propId = kLeast;
    rule.matchAll = true;
    rule.caseSensitive = true;
    rule.tolerance = 0.1;
    return rule;
}

NameListInDwg FullNames() {
    NameListInDwg names;
    names.all = true;
    names.entries = {Name(0, L"", L""), Name(7, L"C:\\Työ\\a.dwg", L"Layout1"),
                     Name(kMost, L"\\\\server\\b.dwg", L"Кровля")};
    return names;
}

// A member of a selection that gets a value which it does not have by default.
struct Change {
    const char* member;
    std::function<void(Data&)> make;
};

template <class T>
Change Set(const char* name, T Data::*member, const std::type_identity_t<T>& value) {
    return {name, [member, value](Data& data) { data.*member = value; }};
}

const std::vector<Change>& Changes() {
    static const std::vector<Change> changes = {
        Set("bySelectionSet", &Data::bySelectionSet, true),
        Set("currentDrawing", &Data::currentDrawing, true),
        Set("useModelDrawings", &Data::useModelDrawings, true),
        Set("modelDrawings", &Data::modelDrawings,
            {Drawing(3, L"C:\\Projekti\\1. kerros.dwg"), Drawing(0, L"loose.dwg"), Drawing(-1, L"")}),
        Set("useRooms", &Data::useRooms, true),
        Set("rooms", &Data::rooms, {kMost, 0, kLeast, 5, 5}),
        Set("useFunctionalZones", &Data::useFunctionalZones, true),
        Set("functionalZones", &Data::functionalZones, {1}),
        Set("useSystems", &Data::useSystems, true),
        Set("systems", &Data::systems, {2, 1}),
        Set("useFittingSeries", &Data::useFittingSeries, true),
        Set("fittingSeries", &Data::fittingSeries, {-3}),
        Set("usePartTypes", &Data::usePartTypes, true),
        Set("partTypes", &Data::partTypes, {4, 40}),
        Set("filterRules", &Data::filterRules, {FullRule(), Property()}),
        Set("layouts", &Data::layouts, FullNames()),
        Set("selectionAreas", &Data::selectionAreas, FullNames()),
        Set("partTypesAlt", &Data::partTypesAlt, {"pump", "", "v\xC3\xA4ntil <&>"}),
        Set("pages", &Data::pages, FullNames()),
        Set("switchboardAreas", &Data::switchboardAreas, FullNames()),
        Set("hostAreas", &Data::hostAreas, FullNames()),
    };
    return changes;
}

Data Full() {
    Data data;
    for (const Change& change : Changes())
        change.make(data);
    return data;
}

// Has every attribute that there is, few times.
Data Small() {
    Data data;
    data.bySelectionSet = true;
    data.modelDrawings = {Drawing(3, L"C:\\ä.dwg")};
    data.useRooms = true;
    data.rooms = {17, -1};
    data.filterRules = {FullRule()};
    data.layouts.entries = {Name(0, L"b.dwg", L"A4")};
    data.partTypesAlt = {"pump"};
    return data;
}

constexpr char kSmallXml[] =
    R"(<Selection Version="20261101" Format="20261101" BySelectionSet="1" CurrentDrawing="0">
    <ModelDrawings Use="0">
        <Item Id="3" Path="C:\)"
    "\xC3\xA4"
    R"(.dwg" />
    </ModelDrawings>
    <Rooms Use="1">
        <Item Id="17" />
        <Item Id="-1" />
    </Rooms>
    <FunctionalZones Use="0" />
    <Systems Use="0" />
    <FittingSeries Use="0" />
    <PartTypes Use="0" />
    <FilterRules>
        <Item PropId="-2147483648" MatchAll="1" CaseSensitive="1" Tolerance="0.1">
            <Criterion Operation="6" Value="DN &quot;50&quot; &amp; &lt;)"
    "\xC3\x98"
    R"(&gt;" />
            <Criterion Operation="-32768" Value="" />
            <Criterion Operation="32767" Value="&#x0A;&#x09; blanks at the ends " />
        </Item>
    </FilterRules>
    <Layouts All="0">
        <Item Id="0" Path="b.dwg" Name="A4" />
    </Layouts>
    <SelectionAreas All="0" />
    <PartTypesAlt>
        <Item Name="pump" />
    </PartTypesAlt>
    <Pages All="0" />
    <SwitchboardAreas All="0" />
    <HostAreas All="0" />
</Selection>
)";

// A database in which nothing is found.
const QBaseDb& NoDb() {
    static const QBaseDb db(L"");
    return db;
}

ticpp::Element ElementOf(const Data& data) {
    ticpp::Element element("Selection");
    EXPECT_TRUE(data.ToXml(element));
    return element;
}

std::string TextOf(const Data& data) {
    return ElementOf(data).AsXml();
}

std::vector<ticpp::Element*> ChildrenOf(const ticpp::Element& element) {
    std::vector<ticpp::Element*> children;
    for (auto* child = element.FirstChildElement(false); child; child = child->NextSiblingElement(false))
        children.push_back(child);
    return children;
}

/// Reads a document's element; false too when it is no document.
bool Read(const std::string& xml, Data& data) {
    ticpp::Document document;
    document.Parse(xml, false);
    const ticpp::Element* element = document.FirstChildElement(false);
    return element && data.FromXml(NoDb(), *element);
}

/// What comes back of a selection from a document.
Data Again(const Data& data) {
    Data again = Full();
    EXPECT_TRUE(Read(TextOf(data), again));
    return again;
}

// ---- Records

TEST(ObjectSelectionRecords, StartEmptyAndCopyEveryMember) {
    RecordData record;
    EXPECT_TRUE(record.key.empty() && record.name.empty());
    record.key = "CFG00017";
    record.name = std::wstring(1023, L'n');
    record.data = Full();
    RecordData copy(record);
    EXPECT_EQ(copy, record);
    copy.data.filterRules[0].criteria[0].value = L"other";
    EXPECT_NE(copy, record) << "nothing is shared";
    copy = record;
    RecordData moved(std::move(copy));
    EXPECT_EQ(moved, record);
    RecordData assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned, record);
}

TEST(ObjectSelectionRecords, ANameListIsEmptyWhenItNamesNothing) {
    NameListInDwg list;
    EXPECT_TRUE(list.IsEmpty());
    list.all = true;
    EXPECT_FALSE(list.IsEmpty());
    list.all = false;
    list.entries.push_back(Name(1, L"a.dwg", L"Layout1"));
    EXPECT_FALSE(list.IsEmpty());
}

TEST(ObjectSelectionRecords, DrawingsAreTheSameByIdElseByPath) {
    struct Case {
        DrawingRef a;
        DrawingRef b;
        bool same;
    };
    const Case cases[] = {
        {Drawing(5, L"a.dwg"),         Drawing(5, L"moved.dwg"),     true },
        {Drawing(5, L"a.dwg"),         Drawing(6, L"a.dwg"),         false},
        {Drawing(5, L"C:\\Ä\\a.dwg"), Drawing(0, L"c:\\ä\\A.DWG"), true },
        {Drawing(0, L"a.dwg"),         Drawing(0, L"á.dwg"),        false},
        {Drawing(0, L""),              Drawing(0, L""),              true },
        {Drawing(0, L""),              Drawing(5, L""),              false},
        {Drawing(0, L""),              Drawing(0, L"a.dwg"),         false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.a.IsSame(c.b), c.same) << testing::PrintToString(c.a.path) << testing::PrintToString(c.b.path);
        EXPECT_EQ(c.b.IsSame(c.a), c.same);
    }
}

// ---- Rules

TEST(ObjectSelectionRules, EveryOperationHasANameOfItsOwn) {
    Lng::SetLanguage(L"en");
    std::set<ustr> names;
    for (short operation = Operation::Equal; operation <= Operation::IsNotEmpty; ++operation)
        names.insert(Property::GetOperationTypeName(operation));
    EXPECT_EQ(names.size(), 12u);
    EXPECT_FALSE(names.count(L""));
    EXPECT_EQ(Property::GetOperationTypeName(Operation::LessOrEqual), L"Less than or equal to");
    for (const short unknown : std::initializer_list<short>{-1, 12, 32767, -32768})
        EXPECT_EQ(Property::GetOperationTypeName(unknown), L"") << unknown;

    Lng::SetLanguage(Lng::kPseudoLanguage);
    EXPECT_NE(Property::GetOperationTypeName(Operation::Equal), L"Equal to") << "the user's language";
    Lng::SetLanguage(L"en");
}

bool Selects(short operation, const wchar_t* wanted, const wchar_t* value, double tolerance = 0,
             bool caseSensitive = false) {
    Property rule = Rule(operation, wanted);
    rule.tolerance = tolerance;
    rule.caseSensitive = caseSensitive;
    return rule.Matches(value);
}

/// The operations of equality and order that hold, such as "= <= >=".
std::string Order(const wchar_t* value, const wchar_t* wanted, double tolerance = 0, bool caseSensitive = false) {
    constexpr std::pair<Operation, const char*> kSigns[] = {
        {Operation::Equal,          "= " },
        {Operation::NotEqual,       "!= "},
        {Operation::Less,           "< " },
        {Operation::LessOrEqual,    "<= "},
        {Operation::Greater,        "> " },
        {Operation::GreaterOrEqual, ">= "},
    };
    std::string order;
    for (const auto& [operation, sign] : kSigns) {
        if (Selects(operation, wanted, value, tolerance, caseSensitive)) order += sign;
    }
    return order;
}

constexpr char kEqual[] = "= <= >= ";
constexpr char kLess[] = "!= < <= ";
constexpr char kGreater[] = "!= > >= ";

TEST(ObjectSelectionRules, NumbersAreComparedByValue) {
    EXPECT_EQ(Order(L"2", L"10"), kLess);
    EXPECT_EQ(Order(L"10", L"2"), kGreater);
    EXPECT_EQ(Order(L"-1.5", L"-1.25"), kLess);
    EXPECT_EQ(Order(L"100", L"1e2"), kEqual);
    EXPECT_EQ(Order(L" 2.50 ", L"\t2.5"), kEqual) << "blanks around";
    EXPECT_EQ(Order(L"0", L"-0"), kEqual);
    EXPECT_EQ(Order(L"0.30000000000000004", L"0.3"), kEqual) << "computed as 0.1 + 0.2";
    EXPECT_EQ(Order(L"0.3000000000001", L"0.3"), kGreater);
    EXPECT_EQ(Order(L"1e308", L"-1e308"), kGreater);
    EXPECT_EQ(Order(L"1e-308", L"0"), kGreater);
}

TEST(ObjectSelectionRules, TheToleranceIsForBothSides) {
    for (const wchar_t* value : {L"9.9", L"10", L"10.1"})
        EXPECT_EQ(Order(value, L"10", 0.1), kEqual) << testing::PrintToString(ustr(value));
    EXPECT_EQ(Order(L"9.89", L"10", 0.1), kLess);
    EXPECT_EQ(Order(L"10.11", L"10", 0.1), kGreater);
    EXPECT_EQ(Order(L"1.1", L"1.0", 0.1), kEqual) << "as written, not as computed";
    for (const double none : {-5.0, std::nan(""), -std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(Order(L"10", L"10", none), kEqual) << none;
        EXPECT_EQ(Order(L"11", L"10", none), kGreater) << none;
    }
    EXPECT_EQ(Order(L"-1e308", L"1e308", std::numeric_limits<double>::infinity()), kEqual);
    EXPECT_EQ(Order(L"DN10", L"DN11", 5), kLess) << "texts have none";
}

TEST(ObjectSelectionRules, WhatIsNoNumberIsComparedAsText) {
    for (const wchar_t* text : {L"1,5", L"1.5 mm", L"0x10", L"1.5.", L"inf", L"nan", L"1 5", L"--1", L"１"})
        EXPECT_EQ(Order(text, text), kEqual) << testing::PrintToString(ustr(text));
    EXPECT_EQ(Order(L"1,5", L"1.5").substr(0, 2), "!=") << "the point is the same in every locale";
    EXPECT_EQ(Order(L"DN9", L"DN10"), kLess) << "as lists are sorted";
    EXPECT_EQ(Order(L"A01", L"A1").substr(0, 2), "!=");
    EXPECT_EQ(Order(L"pump", L"PUMP"), kEqual);
    EXPECT_EQ(Order(L"ÄYRÄS", L"äyräs"), kEqual);
    EXPECT_EQ(Order(L"КРОВЛЯ Ω", L"кровля ω"), kEqual);
    EXPECT_EQ(Order(L"café", L"cafe"), kGreater) << "accents count";
    EXPECT_EQ(Order(L"pump", L"PUMP", 0, true).substr(0, 2), "!=");
    EXPECT_EQ(Order(L"Pump", L"Pump", 0, true), kEqual);
    EXPECT_EQ(Order(L"apple", L"Banana", 0, true), kLess);
}

TEST(ObjectSelectionRules, AnEmptyValueHasNoPlaceInTheOrder) {
    EXPECT_EQ(Order(L"", L"100"), "!= ");
    EXPECT_EQ(Order(L"  ", L"a"), "!= ");
    EXPECT_EQ(Order(L"", L""), "= ");
    EXPECT_EQ(Order(L"a", L""), kGreater);
    Property rule = Rule(Operation::Equal, L"");
    EXPECT_TRUE(rule.Matches({})) << "no text at all";
    rule.criteria[0] = Criterion(Operation::Contains, L"a");
    EXPECT_FALSE(rule.Matches({}));
}

TEST(ObjectSelectionRules, TextsAreSearchedAsTheyAreWritten) {
    struct Case {
        const wchar_t* value;
        const wchar_t* wanted;
        bool contains;
        bool begins;
        bool ends;
    };
    const Case cases[] = {
        {L"Supply air duct", L"AIR",             true,  false, false},
        {L"Supply air duct", L"supply",          true,  true,  false},
        {L"Supply air duct", L"Duct",            true,  false, true },
        {L"Supply air duct", L"supply AIR duct", true,  true,  true },
        {L"Supply air duct", L"air  duct",       false, false, false},
        {L"air",             L"supply air",      false, false, false},
        {L"anything",        L"",                true,  true,  true },
        {L"",                L"",                true,  true,  true },
        {L"",                L"x",               false, false, false},
        {L"1050",            L"5",               true,  false, false},
        {L"10.0",            L"10.",             true,  true,  false},
        {L"Öljy",           L"ö",              true,  true,  false},
        {L"Öljy",           L"o",               false, false, false},
        {L"aab",             L"ab",              true,  false, true },
    };
    for (const Case& c : cases) {
        const std::string what = testing::PrintToString(ustr(c.value)) + " " + testing::PrintToString(ustr(c.wanted));
        EXPECT_EQ(Selects(Operation::Contains, c.wanted, c.value), c.contains) << what;
        EXPECT_EQ(Selects(Operation::NotContains, c.wanted, c.value), !c.contains) << what;
        EXPECT_EQ(Selects(Operation::BeginsWith, c.wanted, c.value), c.begins) << what;
        EXPECT_EQ(Selects(Operation::EndsWith, c.wanted, c.value), c.ends) << what;
    }
    for (const Operation operation : {Operation::Contains, Operation::BeginsWith, Operation::EndsWith}) {
        EXPECT_FALSE(Selects(operation, L"Duct", L"duct", 0, true));
        EXPECT_TRUE(Selects(operation, L"Duct", L"Duct", 0, true));
    }
}

TEST(ObjectSelectionRules, BlanksAloneAreEmpty) {
    for (const wchar_t* wanted : {L"", L"x", L"1"}) {
        for (const wchar_t* value : {L"", L" \t\u00a0"}) {
            EXPECT_TRUE(Selects(Operation::IsEmpty, wanted, value));
            EXPECT_FALSE(Selects(Operation::IsNotEmpty, wanted, value));
        }
        EXPECT_FALSE(Selects(Operation::IsEmpty, wanted, L" x"));
        EXPECT_TRUE(Selects(Operation::IsNotEmpty, wanted, L"0"));
    }
}

TEST(ObjectSelectionRules, AnyOrAllCriteriaMustHold) {
    Property rule = Rule(Operation::Greater, L"10");
    rule.criteria.push_back(Criterion(Operation::Less, L"20"));
    for (const bool all : {false, true}) {
        rule.matchAll = all;
        EXPECT_TRUE(rule.Matches(L"15"));
        EXPECT_EQ(rule.Matches(L"5"), !all);
        EXPECT_EQ(rule.Matches(L"25"), !all);
        EXPECT_FALSE(rule.Matches(L""));
    }
    rule.criteria.push_back(Criterion(99, L"15"));
    rule.matchAll = false;
    EXPECT_TRUE(rule.Matches(L"15"));
    rule.matchAll = true;
    EXPECT_FALSE(rule.Matches(L"15")) << "what is not known never holds";
    for (const bool all : {false, true}) {
        Property none;
        none.matchAll = all;
        EXPECT_TRUE(none.Matches(L"") && none.Matches(L"x"));
    }
}

// ---- XML

TEST(ObjectSelectionXml, IsWhatProjectsKeep) {
    EXPECT_EQ(TextOf(Small()), kSmallXml);
    EXPECT_EQ(Again(Data()), Data());
}

/// Whether what the member holds stands where its name says.
bool IsInItsPlace(const ticpp::Element& element, std::string member) {
    member[0] = static_cast<char>(member[0] - 'a' + 'A');
    if (element.HasAttribute(member)) return element.GetAttribute(member) == "1";
    if (!member.starts_with("Use")) return !ChildrenOf(*element.FirstChildElement(member)).empty();
    return element.FirstChildElement(member.substr(3))->GetAttribute("Use") == "1";
}

TEST(ObjectSelectionXml, EveryMemberComesBack) {
    for (const Change& change : Changes()) {
        Data data;
        change.make(data);
        EXPECT_TRUE(IsInItsPlace(ElementOf(data), change.member)) << change.member;
        EXPECT_FALSE(IsInItsPlace(ElementOf(Data()), change.member)) << "empty by default: " << change.member;
        EXPECT_EQ(Again(data), data) << change.member;
    }
    EXPECT_EQ(Again(Full()), Full());
}

TEST(ObjectSelectionXml, TheElementKeepsItsNameAndNothingElse) {
    ticpp::Element element("ObjectSelection");
    element.SetAttribute("Format", "old");
    element.SetAttribute("Other", 1);
    element.InsertEndChild(ticpp::Element("Rooms"));
    element.InsertEndChild(ticpp::Text("text"));
    ASSERT_TRUE(Small().ToXml(element));
    EXPECT_EQ(element.Value(), "ObjectSelection");
    element.SetValue("Selection");
    EXPECT_EQ(element.AsXml(), kSmallXml);
}

TEST(ObjectSelectionXml, TextsComeBackWhateverTheyHold) {
    const std::wstring_view texts[] = {std::wstring_view(L"a\0b", 3),
                                       L"\xD83D",
                                       L"x\xDE00y",
                                       L"\xDE00\xD83D",
                                       L"\U0001F600",
                                       L"\x1\x1F\x7F\x85",
                                       L"\r\n \t",
                                       L" ",
                                       L"]]>&amp;<!--\"'",
                                       L"\xFFFE\xFFFF",
                                       L"&#x41;"};
    for (const std::wstring_view text : texts) {
        Data data;
        data.modelDrawings.resize(1);
        data.modelDrawings[0].path = text;
        data.layouts.entries.resize(1);
        data.layouts.entries[0].name = text;
        data.filterRules = {Rule(Operation::Equal, L"")};
        data.filterRules[0].criteria[0].value = text;
        data.partTypesAlt = {orvaspace::ToUtf8(text)};
        EXPECT_EQ(Again(data), data) << testing::PrintToString(ustr(text));
    }
    Data data;
    data.partTypesAlt = {"\xE4\xFF\x80", "v\xC3\xA4"};
    EXPECT_EQ(Again(data), data) << "bytes that are no UTF-8";
}

TEST(ObjectSelectionXml, NumbersComeBackToTheLastBit) {
    for (const double tolerance : {0.1, 1e-300, 5e-324, 1.7976931348623157e308, -2.5, 1.0 / 3}) {
        Data data;
        data.filterRules.resize(1);
        data.filterRules[0].tolerance = tolerance;
        EXPECT_EQ(Again(data), data) << tolerance;
    }
    for (const double none : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        Data data;
        data.filterRules.resize(1);
        data.filterRules[0].tolerance = none;
        ticpp::Element element;
        EXPECT_FALSE(data.ToXml(element)) << none;
    }
}

TEST(ObjectSelectionXml, AMissingCategoryIsEmpty) {
    std::vector<std::string> names;
    const ticpp::Element full = ElementOf(Full());
    for (const ticpp::Element* category : ChildrenOf(full))
        names.push_back(category->Value());
    EXPECT_EQ(names.size(), 13u);
    for (const std::string& name : names) {
        ticpp::Element element = ElementOf(Full());
        element.RemoveChild(element.FirstChildElement(name));
        Data data;
        EXPECT_TRUE(data.FromXml(NoDb(), element)) << name;
        EXPECT_NE(data, Full()) << name;
        EXPECT_TRUE(ChildrenOf(*ElementOf(data).FirstChildElement(name)).empty()) << name;
    }
    const auto bare = [](const char* attributes) { return std::string("<S ") + attributes + "/>"; };
    Data data = Full();
    EXPECT_TRUE(Read(bare("Version='1' Format='20261101' BySelectionSet='1' CurrentDrawing='true'"), data));
    EXPECT_TRUE(data.bySelectionSet && data.currentDrawing && data.rooms.empty());
}

TEST(ObjectSelectionXml, WhatIsNotKnownIsPassedOver) {
    ticpp::Element element = ElementOf(Small());
    element.SetAttribute("Later", "x");
    element.InsertEndChild(ticpp::Element("LaterCategory"));
    ticpp::Element* rooms = element.FirstChildElement("Rooms");
    rooms->InsertBeforeChild(rooms->FirstChild(), ticpp::Comment("comment"));
    rooms->InsertBeforeChild(rooms->FirstChild(), ticpp::Element("Other"));
    rooms->InsertEndChild(ticpp::Text("text"));
    element.InsertEndChild(ticpp::Element("Rooms"));  // a second one
    Data data;
    EXPECT_TRUE(data.FromXml(NoDb(), element));
    EXPECT_EQ(data, Small());
}

TEST(ObjectSelectionXml, ANewerFormatIsRefused) {
    const std::pair<int, bool> formats[] = {
        {1,        true },
        {20261101, true },
        {20261102, false},
        {kMost,    false}
    };
    for (const auto& [format, result] : formats) {
        ticpp::Element element = ElementOf(Small());
        element.SetAttribute("Format", format);
        Data data = Full();
        EXPECT_EQ(data.FromXml(NoDb(), element), result) << format;
        EXPECT_EQ(data, result ? Small() : Data()) << format;
    }
}

// ---- Drawings

class ObjectSelectionDrawings : public testing::Test {
protected:
    std::wstring File() const { return folder_.File(L"project.db"); }

    static void Put(QBaseDb& db, const char* type, const char* id, int field, const wchar_t* text) {
        QBaseDb::Rec* rec = db.createRec(type, id);
        ASSERT_TRUE(rec);
        EXPECT_TRUE(db.insertWsz(rec, field, text));
        EXPECT_EQ(db.saveRec(rec), 0);
        db.releaseRec(rec);
    }

    const TestFolder folder_;
};

TEST_F(ObjectSelectionDrawings, GetThePathThatTheyHaveInTheProjectNow) {
    QBaseDb db(File().c_str());
    Put(db, "DW", "000003", 1501, L"D:\\moved\\ä.dwg");
    Put(db, "DW", "1234567", 1501, L"D:\\moved\\large id.dwg");
    Put(db, "DW", "000004", 1500, L"no path");
    Put(db, "DW", "000005", 1501, L"");
    Put(db, "UP", "000006", 1501, L"no drawing");
    Put(db, "DW", "000000", 1501, L"has no id");
    Put(db, "DW", "-00001", 1501, L"is no id");

    Data data;
    data.modelDrawings = {Drawing(3, L"old.dwg"), Drawing(1234567, L""),  Drawing(4, L"4.dwg"),
                          Drawing(5, L"5.dwg"),   Drawing(6, L"6.dwg"),   Drawing(0, L"0.dwg"),
                          Drawing(-1, L"-.dwg"),  Drawing(99, L"99.dwg"), Drawing(3, L"again")};
    const auto lists = {&Data::layouts, &Data::selectionAreas, &Data::pages, &Data::switchboardAreas, &Data::hostAreas};
    for (const auto list : lists)
        (data.*list).entries = {Name(3, L"old.dwg", L"x"), Name(99, L"99.dwg", L"y")};

    Data expected = data;
    expected.modelDrawings[0].path = expected.modelDrawings[8].path = L"D:\\moved\\ä.dwg";
    expected.modelDrawings[1].path = L"D:\\moved\\large id.dwg";
    for (const auto list : lists)
        (expected.*list).entries[0].drawing.path = L"D:\\moved\\ä.dwg";

    Data read;
    EXPECT_TRUE(read.FromXml(db, ElementOf(data)));
    EXPECT_EQ(read, expected);
    EXPECT_TRUE(read.FromXml(QBaseDb(folder_.Path().c_str()), ElementOf(data)));
    EXPECT_EQ(read, data) << "no database";
}

TEST_F(ObjectSelectionDrawings, AreLookedUpWithinTheCallersScope) {
    QBaseDb db(File().c_str());
    QBaseDb::QuickMode scope(db, 1, 1);
    Put(db, "DW", "000003", 1501, L"new.dwg");
    Data read;
    EXPECT_TRUE(read.FromXml(db, ElementOf(Small())));
    EXPECT_EQ(read.modelDrawings[0].path, L"new.dwg");
    EXPECT_TRUE(scope.End());
}

// ---- Faults: selections come from projects of other people. Whatever a document holds, reading it gives a selection
// or a new one.

/// The element and all elements within it.
std::vector<ticpp::Element*> ElementsOf(ticpp::Element& root) {
    std::vector<ticpp::Element*> all = {&root};
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::vector<ticpp::Element*> children = ChildrenOf(*all[i]);
        all.insert(all.end(), children.begin(), children.end());
    }
    return all;
}

std::vector<std::string> AttributesOf(const ticpp::Element& element) {
    std::vector<std::string> names;
    for (const auto* attribute = element.FirstAttribute(false); attribute; attribute = attribute->Next(false))
        names.push_back(attribute->Name());
    return names;
}

/// What a selection is after reading the element; a new one when it cannot be read.
Data Outcome(const ticpp::Element& element) {
    Data data = Full();
    const bool read = data.FromXml(NoDb(), element);
    EXPECT_EQ(data == Data(), !read) << element;
    return data;
}

/// Values that the attribute cannot have; none for a text.
std::vector<std::string> UnfitValues(const std::string& name) {
    if (name == "Path" || name == "Name" || name == "Value") return {};
    std::vector<std::string> unfit = {"", " ", "x", "1x", "1,5", "0x1", "nan", "inf", "9e999", "\xE4"};
    const auto add = [&unfit](std::initializer_list<const char*> more) {
        unfit.insert(unfit.end(), more.begin(), more.end());
    };
    if (name == "Operation") {
        add({"32768", "-32769", "6.0"});
    } else if (name == "Version" || name == "Format" || name.ends_with("Id")) {
        add({"2147483648", "-2147483649", "1.0", "99999999999999999999"});
    } else if (name != "Tolerance") {
        add({"2", "-1", "yes"});
    }
    return unfit;
}

TEST(ObjectSelectionFaults, EveryAttributeMustBeThereAndFitItsMember) {
    int count = 0;
    ticpp::Element root = ElementOf(Small());
    for (ticpp::Element* element : ElementsOf(root)) {
        for (const std::string& name : AttributesOf(*element)) {
            const std::vector<std::string> unfit = UnfitValues(name);
            const std::string sound = element->GetAttribute(name);
            element->RemoveAttribute(name);
            EXPECT_EQ(Outcome(root), Data()) << element->Value() << " " << name;
            for (const std::string& value : unfit) {
                element->SetAttribute(name, value);
                EXPECT_EQ(Outcome(root), Data()) << element->Value() << " " << name << " " << value;
            }
            element->SetAttribute(name, " " + sound + "\t");
            EXPECT_EQ(Outcome(root) == Small(), !unfit.empty()) << "blanks around count in a text: " << name;
            element->SetAttribute(name, sound);
            ++count;
        }
    }
    EXPECT_EQ(Outcome(root), Small());
    EXPECT_EQ(count, 33);
}

TEST(ObjectSelectionFaults, ADocumentIsReadOnlyWhenItIsComplete) {
    for (const std::string& xml : Truncated(TextOf(Small()))) {
        Data data;
        ASSERT_FALSE(Read(xml, data)) << xml;
    }
}

TEST(ObjectSelectionFaults, RandomChangesGiveASelectionOrANewOne) {
    const std::string sound = ElementOf(Small()).AsXml({}, {});
    XmlMutator mutate(20261101, {"20261101", "20261102"});
    int readable = 0;
    for (int round = 0; round < 100'000; ++round) {
        const std::string xml = mutate(sound);
        ticpp::Document document;
        document.Parse(xml, false);
        const ticpp::Element* element = document.FirstChildElement(false);
        if (!element) continue;
        Data data = Small();
        if (!data.FromXml(NoDb(), *element)) {
            ASSERT_EQ(data, Data()) << round << "\n" << xml;
            continue;
        }
        Data again;
        ASSERT_TRUE(again.FromXml(NoDb(), ElementOf(data)) && again == data) << round << "\n" << xml;
        ++readable;
    }
    EXPECT_GT(readable, 1000) << "else nothing was tried";
}

TEST(ObjectSelectionFaults, DepthAndSizeAreNoDanger) {
    const std::string sound = TextOf(Small());
    for (const int depth : {900, 100'000}) {
        std::string deep = sound;
        deep.insert(deep.find("<Item Id=\"17\""), "<Item Id='1'>" + Nested("Item", depth) + "</Item>");
        Data data;
        EXPECT_EQ(Read(deep, data), depth == 900);
        EXPECT_EQ(data.rooms.size(), depth == 900 ? 3u : 0u);
    }

    std::wstring huge;
    huge.resize(10'000'000, L'1');
    Data data;
    data.layouts.entries.resize(1);
    data.layouts.entries[0].name = huge;
    EXPECT_EQ(Again(data), data);
    ticpp::Element element = ElementOf(Small());
    element.FirstChildElement("Rooms")->SetAttribute("Use", orvaspace::ToUtf8(huge));
    EXPECT_EQ(Outcome(element), Data());
}

TEST(ObjectSelectionFaults, AnAttributeStandsOnce) {
    std::string xml = TextOf(Small());
    xml.insert(xml.find(" Use="), " Use=\"0\"");
    Data data;
    EXPECT_FALSE(Read(xml, data));
    EXPECT_FALSE(data.FromXml(NoDb(), ticpp::Element("Selection"))) << "an element without anything";
}

// ---- Size

Data Large(int rooms, int rules) {
    Data data;
    for (int i = 0; i < rooms; ++i)
        data.rooms.push_back(i);
    data.filterRules.assign(static_cast<std::size_t>(rules), Rule(Operation::Contains, L"value"));
    return data;
}

/// The processor time in which a selection goes out and comes back, in milliseconds: the best of some rounds, as the
/// machine can make it longer, not shorter.
double TimeOf(const Data& data) {
    double best = std::numeric_limits<double>::infinity();
    for (int round = 0; round < 4; ++round) {
        const double start = ProcessorTime();
        EXPECT_EQ(Again(data), data);
        best = std::min(best, ProcessorTime() - start);
    }
    return best;
}

TEST(ObjectSelectionSize, WritingAndReadingAreLinear) {
    const double tenth = TimeOf(Large(10'000, 3'000));
    const double whole = TimeOf(Large(100'000, 30'000));
    EXPECT_LT(whole, 40 * tenth) << "quadratic would be a hundred times";
    RecordProperty("milliseconds", static_cast<int>(whole));
}

}  // namespace
}  // namespace ObjectSelection
