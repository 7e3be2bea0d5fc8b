#include <gtest/gtest.h>
#include <occommonui/ReportFilter.h>
#include <ticpp.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "support/FullReport.h"

// The report records: what they are by default, their tables of names, and the XML that is kept in users' files.

namespace {

constexpr char kFullDefinitionXml[] =
    R"(<ReportDefinitionType Version="20211229" Format="20211229" id="-7" wcSeparator="65535" )"
    R"(name="Pumput &amp; &apos;venttiilit&apos;" description=")"
    "\xE4\xB8\xAD\xE6\x96\x87"
    R"(">
    <Groups>
        <Group id="2147483647" />
        <Group id="-2147483648" />
    </Groups>
    <Columns>
        <Column propId="-32768" len="12.7" align="200" nSubRow="255" hdr1="M)"
    "\xC3\xA4\xC3\xA4r\xC3\xA4"
    R"( &quot;1&quot;" hdr2="&lt;&amp;&gt; )"
    "\xF0\x9F\x98\x80"
    R"(&#x09;" showUnits="1" />
        <Column propId="32767" len="12.7" align="200" nSubRow="255" hdr1="M)"
    "\xC3\xA4\xC3\xA4r\xC3\xA4"
    R"( &quot;1&quot;" hdr2="&lt;&amp;&gt; )"
    "\xF0\x9F\x98\x80"
    R"(&#x09;" showUnits="0" />
    </Columns>
</ReportDefinitionType>
)";

constexpr char kDefaultFilterXml[] =
    R"(<ReportFilterType Version="20160101" Format="20160101" AppID="0" ReportType="0" ReportOutputType="0" )"
    R"(ReportOutputFile="" Scale="1" SymbolScale="1" Alignment="0" Textstyle="STANDARD" TextHeight="3.5" )"
    R"(Blocklayername="0" OnlyProductsFromProject="0">
    <ReportDefinitionType Version="20211229" Format="20211229" id="0" wcSeparator="0" name="" description="">
        <Groups />
        <Columns />
    </ReportDefinitionType>
    <Options Version="20151101" Format="20151101" CheckDuplicates="0" dxMin="5" dyMin="5" dzMin="5" />
</ReportFilterType>
)";

constexpr char kFullFilterXml[] =
    R"(<ReportFilterType Version="20160101" Format="20160101" AppID="6" ReportType="3" ReportOutputType="5" )"
    R"(ReportOutputFile="C:\Ty)"
    "\xC3\xB6t\\\xF0\x9F\x98\x80"
    R"(.txt" Scale="0.1" SymbolScale="0.1" Alignment="8" Textstyle="ISO &amp; )"
    "\xC3\xA4"
    R"(" TextHeight="1e-20" Blocklayername="" OnlyProductsFromProject="1">
    <ReportDefinitionType Version="20211229" Format="20211229" id="0" wcSeparator="0" name="" description="">
        <Groups />
        <Columns />
    </ReportDefinitionType>
    <Options Version="20151101" Format="20151101" CheckDuplicates="1" dxMin="0.25" dyMin="-1" dzMin="3e+10" />
</ReportFilterType>
)";

constexpr char kNoXml[] = "<ReportFilterType Version=";

/// The XML of a record as elements, to be changed.
template <class Record>
ticpp::Element ElementOf(const Record& record) {
    ticpp::Element element;
    EXPECT_TRUE(record.ToXml(element));
    return element;
}

ReportDefinitionType Read(const ticpp::Element& element) {
    ReportDefinitionType definition = FullDefinition();
    definition.FromXml(element);
    return definition;
}

ticpp::Element DefinitionOfFormat(int format) {
    ticpp::Element element = ElementOf(FullDefinition());
    element.SetAttribute("Format", format);
    return element;
}

std::vector<std::string> AttributesOf(const ticpp::Element& element) {
    std::vector<std::string> names;
    for (const auto* attribute = element.FirstAttribute(); attribute; attribute = attribute->Next(false))
        names.push_back(attribute->Name());
    return names;
}

std::wstring Times(const std::wstring& text, int count) {
    std::wstring all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(ReportDefinition, IsWrittenAndReadBackAsAWhole) {
    EXPECT_EQ(TextOf(FullDefinition()), kFullDefinitionXml);
    std::wstring wide;
    EXPECT_TRUE(FullDefinition().ToXml(wide));
    EXPECT_EQ(wide, orvaspace::ToWide(kFullDefinitionXml));

    ReportDefinitionType fromNarrow;
    ReportDefinitionType fromWide;
    EXPECT_FALSE(fromNarrow.FromXml(kFullDefinitionXml)) << "true is for formats up to 20151101";
    EXPECT_FALSE(fromWide.FromXml(wide.c_str()));
    EXPECT_TRUE(Same(fromNarrow, FullDefinition()));
    EXPECT_TRUE(Same(fromWide, FullDefinition()));
}

TEST(ReportDefinition, FormatsHaveWhatTheyBrought) {
    const struct {
        int format;
        bool result;
        bool description;
        bool units;
    } cases[] = {
        {-1,       true,  false, false},
        {20151101, true,  false, false},
        {20151102, false, false, false},
        {20210809, false, false, false},
        {20210810, false, true,  false},
        {20211228, false, true,  false},
        {20211229, false, true,  true },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.format);
        ReportDefinitionType expected = FullDefinition();
        if (!c.description) SetFixedText<&ReportDefinitionType::description>(expected, L"");
        expected.columns[0].showUnits = c.units;
        ReportDefinitionType definition;
        ticpp::Element element = DefinitionOfFormat(c.format);
        EXPECT_EQ(definition.FromXml(element), c.result);
        EXPECT_TRUE(Same(definition, expected));

        element.RemoveAttribute("description");
        EXPECT_EQ(Same(Read(element), ReportDefinitionType()), c.description) << "required since it was brought";
    }
    EXPECT_TRUE(Same(Read(DefinitionOfFormat(20211230)), ReportDefinitionType())) << "a newer format";
}

TEST(ReportDefinition, EveryAttributeIsRequired) {
    const auto eachIsRequired = [](const char* parent, const char* item) {
        const auto find = [&](ticpp::Element& element) -> ticpp::Element& {
            return *parent ? *element.FirstChildElement(parent)->FirstChildElement(item) : element;
        };
        ticpp::Element whole = ElementOf(FullDefinition());
        for (const std::string& name : AttributesOf(find(whole))) {
            SCOPED_TRACE(name);
            ticpp::Element element = ElementOf(FullDefinition());
            find(element).RemoveAttribute(name);
            EXPECT_TRUE(Same(Read(element), ReportDefinitionType()));
        }
    };
    eachIsRequired("", "");
    eachIsRequired("Groups", "Group");
    eachIsRequired("Columns", "Column");
}

TEST(ReportDefinition, ListsAreOptionalAndItemsOfOtherNamesPassedOver) {
    ticpp::Element element = ElementOf(FullDefinition());
    element.RemoveChild(element.FirstChildElement("Groups"));
    element.FirstChildElement("Columns")->InsertEndChild(ticpp::Element("Row"));
    ReportDefinitionType expected = FullDefinition();
    expected.groupCount = 0;
    std::memset(expected.groups, 0, sizeof expected.groups);
    EXPECT_TRUE(Same(Read(element), expected));
}

// The plus signs copy a number of a packed record, which no reference may be made to.
TEST(ReportDefinition, KeepsAsManyGroupsAndColumnsAsThereIsRoomFor) {
    ticpp::Element element = ElementOf(FullDefinition());
    ticpp::Element group("Group");
    ticpp::Element column(*element.FirstChildElement("Columns")->LastChild()->ToElement());
    for (int i = 2; i < 200; ++i) {
        group.SetAttribute("id", 1000 + i);
        element.FirstChildElement("Groups")->InsertEndChild(group);
        column.SetAttribute("propId", i);
        element.FirstChildElement("Columns")->InsertEndChild(column);
    }
    const ReportDefinitionType full = Read(element);
    EXPECT_EQ(+full.groupCount, 200);
    EXPECT_EQ(+full.columnCount, 200);
    EXPECT_EQ(+full.groups[199], 1199);
    EXPECT_EQ(+full.columns[199].propId, 199);

    element.FirstChildElement("Groups")->InsertEndChild(ticpp::Element("Group"));
    element.FirstChildElement("Columns")->InsertEndChild(ticpp::Element("Column"));
    EXPECT_TRUE(Same(Read(element), full)) << "what is surplus is not looked at";
    EXPECT_EQ(TextOf(full), TextOf(Read(ElementOf(full))));
}

TEST(ReportDefinition, TextsAreCutBetweenCharacters) {
    const struct {
        const char* what;
        std::wstring fill;
        std::wstring kept;  // at the limit of 40
    } cases[] = {
        {"as long as can be", Times(L"x",          40),                   Times(L"x",          40)                },
        {"one too long",      Times(L"\u00e4",     41),                   Times(L"\u00e4",     40)                },
        {"a pair fits",       Times(L"x",          38) + L"\U0001F600yz", Times(L"x",          38) + L"\U0001F600"},
        {"a pair is parted",  Times(L"x",          39) + L"\U0001F600",   Times(L"x",          39)                },
        {"a half at the end", Times(L"x",          39) + L"\xD83Dz",      Times(L"x",          39) + L"\xD83D"    },
        {"pairs only",        Times(L"\U0001F600", 21),                   Times(L"\U0001F600", 20)                },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ticpp::Element element = ElementOf(FullDefinition());
        element.SetAttribute("name", orvaspace::ToUtf8(c.fill));
        const ReportDefinitionType definition = Read(element);
        EXPECT_EQ(FixedText<&ReportDefinitionType::name>(definition), std::wstring_view(c.kept));
        EXPECT_TRUE(Same(Read(ElementOf(definition)), definition));
    }
}

TEST(ReportDefinition, EveryTextHasItsOwnLimit) {
    ticpp::Element element = ElementOf(FullDefinition());
    const std::string tooLong(1000, 'x');
    element.SetAttribute("description", tooLong);
    ticpp::Element* column = element.FirstChildElement("Columns")->FirstChildElement();
    column->SetAttribute("hdr1", tooLong);
    column->SetAttribute("hdr2", tooLong + "y");
    const ReportDefinitionType definition = Read(element);
    EXPECT_EQ(FixedText<&ReportDefinitionType::description>(definition), std::wstring(256, L'x'));
    EXPECT_EQ(FixedText<&oce_columntype::hdr1>(definition.columns[0]), std::wstring(28, L'x'));
    EXPECT_EQ(FixedText<&oce_columntype::hdr2>(definition.columns[0]), std::wstring(28, L'x'));
    EXPECT_EQ(definition.columns[0].showUnits, true) << "what follows is whole";
}

TEST(ReportDefinition, UnitsAreShownForAOneOnly) {
    for (const auto& [text, shown] : {
             std::pair{"1",  true },
             std::pair{"0",  false},
             std::pair{"2",  false},
             std::pair{"-1", false}
    }) {
        ticpp::Element element = ElementOf(FullDefinition());
        element.FirstChildElement("Columns")->FirstChildElement()->SetAttribute("showUnits", text);
        EXPECT_EQ(Read(element).columns[0].showUnits, shown) << text;
    }
}

// Callers pass bytes, of any origin and at any address.
TEST(ReportDefinition, IsSafeWithAnyBytes) {
    std::vector<unsigned char> bytes(sizeof(ReportDefinitionType) + 1, 0xFF);
    auto* definition = reinterpret_cast<ReportDefinitionType*>(bytes.data() + 1);
    *definition = FullDefinition();
    EXPECT_EQ(TextOf(*definition), kFullDefinitionXml);
    EXPECT_FALSE(definition->FromXml(kFullDefinitionXml));
    EXPECT_TRUE(Same(*definition, FullDefinition()));

    for (const short count : {short{201}, short{32767}, short{-1}, short{-32768}}) {
        SCOPED_TRACE(count);
        definition->columnCount = count;
        definition->groupCount = count;
        const ReportDefinitionType read = Read(ElementOf(*definition));
        EXPECT_EQ(+read.columnCount, count < 0 ? 0 : 200);
        EXPECT_EQ(+read.groupCount, count < 0 ? 0 : 200);
        EXPECT_EQ(definition->hasPropId(32767), count > 0);
        EXPECT_FALSE(definition->hasPropId(5));
    }

    std::fill(bytes.begin(), bytes.end(), static_cast<unsigned char>(0x78));
    definition->columnCount = 1;
    definition->groupCount = 1;
    const ReportDefinitionType read = Read(ElementOf(*definition));
    EXPECT_EQ(FixedText<&ReportDefinitionType::name>(read), std::wstring_view(Times(L"\x7878", 40)));
    EXPECT_EQ(read.columns[0].showUnits, true) << "any byte but zero";
}

TEST(ReportDefinition, KnowsThePropertiesOfColumnsInUse) {
    ReportDefinitionType definition = FullDefinition();
    EXPECT_TRUE(definition.hasPropId(-32768));
    EXPECT_TRUE(definition.hasPropId(32767));
    EXPECT_FALSE(definition.hasPropId(0)) << "the columns that are not in use";
    definition.columnCount = 1;
    EXPECT_FALSE(definition.hasPropId(32767));
}

TEST(ReportDefinition, ANumberThatIsNoneCannotBeWritten) {
    for (const float len : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        ReportFilter filter;
        filter.ReportDefinitionType = FullDefinition();
        filter.ReportDefinitionType.columns[1].len = len;
        const auto expectRefused = [](const auto& record) {
            ticpp::Element element;
            std::string narrow = "kept";
            std::wstring wide = L"kept";
            EXPECT_FALSE(record.ToXml(element) || record.ToXml(narrow) || record.ToXml(wide));
            EXPECT_TRUE(narrow == "kept" && wide == L"kept");
        };
        expectRefused(filter.ReportDefinitionType);
        expectRefused(filter);
    }
}

TEST(ReportDefinition, TakesThePlaceOfWhatAnElementHeld) {
    ReportFilter full = FullFilter();
    ticpp::Element element = ElementOf(full);
    element.InsertEndChild(*element.FirstChildElement("Options"));
    element.SetAttribute("other", "stays");
    const ReportFilter other;
    EXPECT_TRUE(other.ToXml(element));
    EXPECT_EQ(element.GetAttribute("other"), "stays");
    element.RemoveAttribute("other");
    EXPECT_EQ(element.AsXml(), kDefaultFilterXml);

    ticpp::Element definition = ElementOf(full.ReportDefinitionType);
    EXPECT_TRUE(FullDefinition().ToXml(definition));
    EXPECT_EQ(definition.AsXml(), kFullDefinitionXml);
}

TEST(ReportOptions, AreReadAsAWholeOrAreTheDefaults) {
    const ReportOptions full = FullFilter().Options;
    ReportOptions options;
    EXPECT_TRUE(options.FromXml(ElementOf(full)));
    EXPECT_TRUE(Same(options, full));

    for (const std::string& name : AttributesOf(ElementOf(full))) {
        SCOPED_TRACE(name);
        ticpp::Element element = ElementOf(full);
        element.RemoveAttribute(name);
        options = full;
        EXPECT_FALSE(options.FromXml(element));
        EXPECT_TRUE(Same(options, ReportOptions()));
    }

    ticpp::Element element = ElementOf(full);
    element.SetAttribute("CheckDuplicates", -2);
    EXPECT_TRUE(options.FromXml(element));
    EXPECT_TRUE(options.CheckDuplicates) << "any number but zero";
    element.SetAttribute("Format", 20151102);
    EXPECT_FALSE(options.FromXml(element));
    EXPECT_TRUE(Same(options, ReportOptions())) << "a newer format";
}

TEST(ReportFilter, IsResetWhenNew) {
    const ReportFilter filter;
    EXPECT_EQ(filter.RecordVersion, 20160401);
    EXPECT_EQ(filter.RecordStamp, 28068);
    EXPECT_EQ(TextOf(filter), kDefaultFilterXml);

    ReportFilter expected;
    expected.First = FullFilter().First;
    expected.Second = FullFilter().Second;
    EXPECT_TRUE(Same(Reset(), expected)) << "two values stay";
    ReportFilter reset = FullFilter();
    reset.reset(true);
    expected.Second = expected.First;
    EXPECT_TRUE(Same(reset, expected));
}

TEST(ReportFilter, IsWrittenAndReadBackAsAWhole) {
    ReportFilter full = FullFilter();
    full.ReportDefinitionType = ReportDefinitionType();
    EXPECT_EQ(TextOf(full), kFullFilterXml);
    std::wstring wide;
    EXPECT_TRUE(full.ToXml(wide));
    EXPECT_EQ(wide, orvaspace::ToWide(kFullFilterXml));

    ReportFilter fromNarrow;
    ReportFilter fromWide;
    EXPECT_TRUE(fromNarrow.FromXml(TextOf(FullFilter()).c_str()));
    EXPECT_TRUE(fromWide.FromXml(wide.c_str()));
    EXPECT_TRUE(SameStored(fromNarrow, FullFilter()));
    EXPECT_TRUE(SameStored(fromWide, full));
    EXPECT_EQ(fromNarrow.RecordVersion, ReportFilter().RecordVersion) << "what is not stored stays";
    EXPECT_EQ(fromNarrow.SecondFlag, false);
}

TEST(ReportFilter, MissesNothingThatIsRequired) {
    for (const std::string& name : AttributesOf(ElementOf(FullFilter()))) {
        SCOPED_TRACE(name);
        ticpp::Element element = ElementOf(FullFilter());
        element.RemoveAttribute(name);
        ReportFilter filter = FullFilter();
        ReportFilter expected = FullFilter();
        if (name == "ReportOutputFile") {
            expected.ReportOutputFile.clear();
        } else {
            expected.reset(false);
        }
        EXPECT_EQ(filter.FromXml(element), name == "ReportOutputFile");
        EXPECT_TRUE(Same(filter, expected));
    }
}

TEST(ReportFilter, OfANewerFormatChangesNothing) {
    ticpp::Element element = ElementOf(ReportFilter());
    ReportFilter filter = FullFilter();
    element.SetAttribute("Format", 20160102);
    EXPECT_FALSE(filter.FromXml(element));
    EXPECT_FALSE(filter.FromXml(element.AsXml().c_str()));
    EXPECT_TRUE(Same(filter, FullFilter()));
    element.SetAttribute("Format", 20160100);
    EXPECT_TRUE(filter.FromXml(element)) << "an older one is read";
    EXPECT_TRUE(SameStored(filter, ReportFilter()));
}

TEST(ReportFilter, ChildrenThatAreAbsentStayAndUnreadableOnesAreReset) {
    ticpp::Element element = ElementOf(FullFilter());
    element.FirstChildElement("Options")->RemoveAttribute("dxMin");
    element.FirstChildElement("ReportDefinitionType")->SetAttribute("id", "x");
    ReportFilter filter = FullFilter();
    EXPECT_TRUE(filter.FromXml(element)) << "no failure of the filter";
    EXPECT_TRUE(Same(filter.Options, ReportOptions()));
    EXPECT_TRUE(Same(filter.ReportDefinitionType, ReportDefinitionType()));

    element.Clear();
    filter = FullFilter();
    EXPECT_TRUE(filter.FromXml(element));
    EXPECT_TRUE(Same(filter, FullFilter()));
}

TEST(ReportFilter, TextsAreCutAndFlagsAreAnyNumber) {
    ticpp::Element element = ElementOf(FullFilter());
    element.SetAttribute("Textstyle", std::string(255, 'x') + "\xF0\x9F\x98\x80");
    element.SetAttribute("Blocklayername", std::string(254, 'x') + "\xF0\x9F\x98\x80");
    element.SetAttribute("ReportOutputFile", std::string(1000, 'x'));
    element.SetAttribute("OnlyProductsFromProject", 7);
    ReportFilter filter;
    EXPECT_TRUE(filter.FromXml(element));
    EXPECT_EQ(FixedText<&ReportFilter::Textstyle>(filter), std::wstring(255, L'x'));
    EXPECT_EQ(FixedText<&ReportFilter::Blocklayername>(filter), std::wstring(254, L'x'));
    EXPECT_EQ(filter.ReportOutputFile.size(), 1000u);
    EXPECT_TRUE(filter.OnlyProductsFromProject);
}

TEST(ReportFilter, TakesTheElementOfADocumentWhateverItsName) {
    ticpp::Element element = ElementOf(FullFilter());
    element.SetValue("Other");
    ReportFilter filter;
    EXPECT_TRUE(filter.FromXml(("<?xml version=\"1.0\"?><!-- <a> -->" + element.AsXml()).c_str()));
    EXPECT_TRUE(SameStored(filter, FullFilter()));
}

TEST(ReportRecords, ATextThatIsNoDocumentIsRefused) {
    for (const char* text : {static_cast<const char*>(nullptr), "", "no XML", kNoXml, "<!-- nothing -->", "<a/>"}) {
        SCOPED_TRACE(text ? text : "null");
        const auto expectRefused = [text](const auto& before, const auto& after) {
            auto fromNarrow = before;
            auto fromWide = before;
            EXPECT_FALSE(fromNarrow.FromXml(text));
            EXPECT_FALSE(fromWide.FromXml(text ? orvaspace::ToWide(text).c_str() : nullptr));
            EXPECT_TRUE(Same(fromNarrow, after) && Same(fromWide, after));
        };
        expectRefused(FullFilter(), Reset());
        expectRefused(FullDefinition(), ReportDefinitionType());
    }
}

TEST(ReportFilter, NamesOutputsInOneTable) {
    const struct {
        int type;
        const wchar_t* name;
        const wchar_t* extension;
        bool isText;
    } cases[] = {
        {0,  L"Dialog",                    nullptr, false},
        {1,  L"Block in drawing",          nullptr, false},
        {2,  L"Excel file (xml)",          L".xml", true },
        {3,  L"",                          nullptr, true },
        {4,  L"Clipboard",                 nullptr, false},
        {5,  L"Text file (tab delimited)", L".txt", true },
        {6,  L"",                          nullptr, false},
        {-1, L"",                          nullptr, false},
    };
    Lng::SetLanguage(L"en");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        const auto type = static_cast<ReportFilter::OutputType>(c.type);
        EXPECT_EQ(ReportFilter::ReportOutputTypeName(type), c.name);
        EXPECT_STREQ(ReportFilter::ReportOutputTypeFileExtension(type), c.extension);
        EXPECT_EQ(ReportFilter::IsTextReportOutputType(type), c.isText);
    }

    std::vector<int> offered;
    for (const auto& [name, value] : ReportFilter::GetOutputTypeValues()) {
        EXPECT_EQ(name, ReportFilter::ReportOutputTypeName(static_cast<ReportFilter::OutputType>(value)));
        offered.push_back(static_cast<int>(value));
    }
    EXPECT_EQ(offered, (std::vector<int>{0, 1, 4, 5, 2}));
}

TEST(ReportFilter, NamesAlignmentsAndConfigurations) {
    Lng::SetLanguage(L"en");
    ReportFilter filter;
    const auto name = [&](int alignment) {
        filter.Alignment = alignment;
        return filter.AlignmentName(true) + L" " + filter.AlignmentName(false);
    };
    EXPECT_EQ(name(0), L"Top Left");
    EXPECT_EQ(name(4), L"Middle Center");
    EXPECT_EQ(name(8), L"Bottom Right");
    EXPECT_EQ(name(10), L" Center");
    EXPECT_EQ(name(-1), L"Top ");
    EXPECT_EQ(name(-4), L" ");

    const char* names[] = {nullptr, "LG-", "BM-", "EX-", "TB-", nullptr};
    for (int type = -1; type <= 4; ++type)
        EXPECT_STREQ(ReportFilter::GetReportConfBaseName(static_cast<ReportType>(type)), names[type + 1]);
}

}  // namespace
