#include <gtest/gtest.h>
#include <occommonui/ReportFilter.h>
#include <ticpp.h>

#include <optional>
#include <string>
#include <vector>

#include "support/FullReport.h"
#include "support/XmlFaults.h"

// Report records come from users' files. Whatever a text holds, reading it ends, stays within the record and has one of
// the outcomes that callers are told of.

namespace {

constexpr int kDefinitionFormat = 20211229;
constexpr int kFilterFormat = 20160101;
constexpr int kLastTrueFormat = 20151101;

// Small, so that random changes hit everything.
ReportDefinitionType SmallDefinition() {
    return FullDefinition(1);
}

ReportFilter SmallFilter() {
    ReportFilter filter = FullFilter();
    filter.ReportDefinitionType = SmallDefinition();
    return filter;
}

/// What the document's element says about its format; nothing when there is no document or no such number.
std::optional<int> FormatOf(const std::string& xml) {
    ticpp::Document document;
    document.Parse(xml.c_str(), false);
    const ticpp::Element* element = document.FirstChildElement(false);
    int format = 0;
    try {
        if (element && element->GetAttribute("Format", &format, false)) return format;
    } catch (const ticpp::Exception&) {
        return {};
    }
    return {};
}

bool CountsAreSound(const ReportDefinitionType& definition) {
    return definition.groupCount >= 0 && definition.groupCount <= 200 && definition.columnCount >= 0 &&
           definition.columnCount <= 200;
}

/// Reads the text as a definition; false when that is no allowed outcome.
bool DefinitionIsSound(const std::string& xml) {
    static const ReportDefinitionType zero;
    ReportDefinitionType definition = FullDefinition();
    const bool result = definition.FromXml(xml.c_str());
    const std::optional<int> format = FormatOf(xml);
    if (Same(definition, zero)) return !result || (format && *format <= kLastTrueFormat);
    if (!format || *format > kDefinitionFormat || result != (*format <= kLastTrueFormat)) return false;
    ReportDefinitionType again;
    again.FromXml(TextOf(definition).c_str());
    return CountsAreSound(definition) && Same(again, definition);
}

/// Likewise as a filter.
bool FilterIsSound(const std::string& xml) {
    static const ReportFilter before = FullFilter();
    static const ReportFilter reset = Reset();
    ReportFilter filter = before;
    const bool result = filter.FromXml(xml.c_str());
    const std::optional<int> format = FormatOf(xml);
    const bool newer = format && *format > kFilterFormat;
    if (!result) return Same(filter, reset) || (newer && Same(filter, before));
    if (!format || newer) return false;
    ReportFilter again;
    return CountsAreSound(filter.ReportDefinitionType) && again.FromXml(TextOf(filter).c_str()) &&
           SameStored(again, filter);
}

/// With the formats at which reading changes, and texts about as long as a field holds.
XmlMutator Mutator(unsigned seed) {
    const std::string emoji = "\xF0\x9F\x98\x80";
    return XmlMutator(seed,
                      {"20151101", "20151102", "20160102", "20210809", "20211228", "20211230", std::string(300, 'x'),
                       std::string(85, '\xE4'), std::string(254, 'x') + emoji, std::string(27, 'x') + emoji});
}

TEST(ReportXmlFaults, ADocumentIsReadOnlyWhenItIsComplete) {
    for (const std::string& xml : Truncated(TextOf(SmallDefinition()))) {
        ReportDefinitionType read = FullDefinition();
        EXPECT_FALSE(read.FromXml(xml.c_str()));
        ASSERT_TRUE(Same(read, ReportDefinitionType())) << xml;
    }
    for (const std::string& xml : Truncated(TextOf(SmallFilter()))) {
        ReportFilter read = FullFilter();
        EXPECT_FALSE(read.FromXml(xml.c_str()));
        ASSERT_TRUE(Same(read, Reset())) << xml;
    }
}

void ExpectSoundWhenChanged(const std::string& sound, unsigned seed, bool (*isSound)(const std::string& xml)) {
    XmlMutator mutate = Mutator(seed);
    for (int round = 0; round < 100'000; ++round) {
        const std::string xml = mutate(sound);
        ASSERT_TRUE(isSound(xml)) << round << "\n" << xml;
    }
}

TEST(ReportXmlFaults, RandomChangesHaveAnAllowedOutcome) {
    ExpectSoundWhenChanged(TextOf(SmallDefinition()), 20211229, DefinitionIsSound);
    ExpectSoundWhenChanged(TextOf(SmallFilter()), 20160101, FilterIsSound);
}

TEST(ReportXmlFaults, DepthIsNoDanger) {
    const std::string deep = Nested("Columns", 100'000);
    std::string definition = TextOf(SmallDefinition());
    definition.insert(definition.find("<Columns>"), deep);
    std::string filter = TextOf(SmallFilter());
    filter.insert(filter.find("<Options"), deep);
    for (const std::string& xml : {deep, definition, filter}) {
        EXPECT_TRUE(DefinitionIsSound(xml));
        EXPECT_TRUE(FilterIsSound(xml));
        EXPECT_EQ(FormatOf(xml), std::nullopt);
    }
}

TEST(ReportXmlFaults, ValuesMayBeHuge) {
    std::string huge;
    huge.resize(10'000'000, 'x');
    ticpp::Element element;
    EXPECT_TRUE(FullFilter().ToXml(element));
    for (const char* name : {"Textstyle", "Blocklayername", "ReportOutputFile"})
        element.SetAttribute(name, huge);
    ticpp::Element* definition = element.FirstChildElement("ReportDefinitionType");
    definition->SetAttribute("name", huge);
    definition->FirstChildElement("Columns")->FirstChildElement()->SetAttribute("hdr1", huge);
    ReportFilter filter;
    EXPECT_TRUE(filter.FromXml(element.AsXml().c_str()));
    EXPECT_EQ(FixedText<&ReportFilter::Textstyle>(filter).size(), 255u);
    EXPECT_EQ(filter.ReportOutputFile.size(), huge.size());
    EXPECT_EQ(FixedText<&ReportDefinitionType::name>(filter.ReportDefinitionType).size(), 40u);
    EXPECT_EQ(+filter.ReportDefinitionType.columnCount, 2);

    ticpp::Element other;
    EXPECT_TRUE(FullFilter().ToXml(other));
    other.SetAttribute("Scale", huge);
    EXPECT_TRUE(FilterIsSound(other.AsXml())) << "a huge number is none";
}

TEST(ReportXmlFaults, TextOfOtherEncodingsIsReadAsFarAsItGoes) {
    const auto nameOf = [](const std::string& bytes) {
        std::string xml = TextOf(SmallDefinition());
        const std::size_t at = xml.find("name=\"") + 6;
        xml.replace(at, xml.find('"', at) - at, bytes);
        EXPECT_TRUE(DefinitionIsSound(xml));
        ReportDefinitionType definition;
        definition.FromXml(xml.c_str());
        return FixedText<&ReportDefinitionType::name>(definition);
    };
    EXPECT_EQ(nameOf("P\xC3\xA4\xC3\xA4"), L"P\u00e4\u00e4");
    EXPECT_EQ(nameOf("P\xE4\xE4ovi"), L"P\uFFFD\uFFFDovi") << "Latin-1";
    EXPECT_EQ(nameOf("a\xFF\xC0\xAF\xF8z"), L"a\uFFFD\uFFFD\uFFFD\uFFFDz");
    EXPECT_EQ(nameOf("\xED\xA0\xBD"), L"\xD83D") << "half a pair, as the record may hold one";
    EXPECT_EQ(nameOf("&#x1F600;"), L"\U0001F600");

    const ustr wide = orvaspace::ToWide("\xEF\xBB\xBF" + TextOf(SmallDefinition()));
    const std::string utf16(reinterpret_cast<const char*>(wide.c_str()), wide.size() * sizeof(wchar_t));
    EXPECT_TRUE(DefinitionIsSound(utf16)) << "ends at its first zero";
    EXPECT_TRUE(FilterIsSound(utf16));
    ReportDefinitionType definition;
    definition.FromXml(wide.c_str());
    EXPECT_TRUE(Same(definition, SmallDefinition())) << "a byte order mark is passed over";
}

TEST(ReportXmlFaults, AnAttributeStandsOnce) {
    std::string definition = TextOf(SmallDefinition());
    definition.insert(definition.find(" name="), " id=\"1\"");
    ReportDefinitionType read = FullDefinition();
    EXPECT_FALSE(read.FromXml(definition.c_str()));
    EXPECT_TRUE(Same(read, ReportDefinitionType()));
    std::string filter = TextOf(SmallFilter());
    filter.insert(filter.find(" Scale="), " Scale=\"1\"");
    ReportFilter readFilter;
    EXPECT_FALSE(readFilter.FromXml(filter.c_str()));
    EXPECT_TRUE(FilterIsSound(filter));
}

struct Range {
    const char* parent;  // of the first element that has the attribute; empty: the record's own element
    const char* name;
    std::vector<const char*> fit;
    std::vector<const char*> unfit;
};

template <class Record>
void CheckRanges(const Record& record, const Record& failed, const std::vector<Range>& ranges) {
    const auto read = [&](const Range& range, const char* value) {
        ticpp::Element element;
        EXPECT_TRUE(record.ToXml(element));
        ticpp::Element* owner = *range.parent ? element.FirstChildElement(range.parent)->FirstChildElement() : &element;
        owner->SetAttribute(range.name, value);
        Record result = record;
        result.FromXml(element);
        return Same(result, failed);
    };
    for (const Range& range : ranges) {
        for (const char* value : range.fit)
            EXPECT_FALSE(read(range, value)) << range.name << " " << value;
        for (const char* value : range.unfit)
            EXPECT_TRUE(read(range, value)) << range.name << " " << value;
        for (const char* value : {"", " ", "x", "1x", "1,5", "0x1", "nan", "inf", "99999999999999999999999999e999"})
            EXPECT_TRUE(read(range, value)) << range.name << " " << value;
    }
}

TEST(ReportXmlFaults, ANumberThatItsFieldCannotHoldIsUnreadable) {
    const std::vector<const char*> int32Fit = {"2147483647", "-2147483648", " 7\t", "+7"};
    const std::vector<const char*> int32Unfit = {"2147483648", "-2147483649", "1.0", "1e3"};
    const std::vector<const char*> byteFit = {"0", "255"};
    const std::vector<const char*> byteUnfit = {"256", "-1", "1.0"};
    const std::vector<const char*> floatFit = {"3.4e38", "-0.0", "1e-40", "7"};
    const std::vector<const char*> floatUnfit = {"3.5e38", "-1e39"};
    CheckRanges(SmallDefinition(), ReportDefinitionType(),
                {
                    {"",        "Version",     int32Fit,            int32Unfit                  },
                    {"",        "id",          int32Fit,            int32Unfit                  },
                    {"",        "wcSeparator", {"0", "65535"},      {"65536", "-1", ";"}        },
                    {"Groups",  "id",          int32Fit,            int32Unfit                  },
                    {"Columns", "propId",      {"32767", "-32768"}, {"32768", "-32769", "65536"}},
                    {"Columns", "len",         floatFit,            floatUnfit                  },
                    {"Columns", "align",       byteFit,             byteUnfit                   },
                    {"Columns", "nSubRow",     byteFit,             byteUnfit                   },
                    {"Columns", "showUnits",   int32Fit,            int32Unfit                  },
    });
    CheckRanges(FullFilter(), Reset(),
                {
                    {"", "Version",                 int32Fit,             int32Unfit},
                    {"", "AppID",                   int32Fit,             int32Unfit},
                    {"", "ReportType",              int32Fit,             int32Unfit},
                    {"", "ReportOutputType",        int32Fit,             int32Unfit},
                    {"", "Scale",                   floatFit,             floatUnfit},
                    {"", "SymbolScale",             {"1e300", "-1e-300"}, {"1e309"} },
                    {"", "Alignment",               int32Fit,             int32Unfit},
                    {"", "TextHeight",              floatFit,             floatUnfit},
                    {"", "OnlyProductsFromProject", int32Fit,             int32Unfit},
    });
    CheckRanges(FullFilter().Options, ReportOptions(),
                {
                    {"", "Version",         int32Fit,     int32Unfit  },
                    {"", "Format",          {"20151101"}, {"20151102"}},
                    {"", "CheckDuplicates", int32Fit,     int32Unfit  },
                    {"", "dxMin",           floatFit,     floatUnfit  },
                    {"", "dyMin",           floatFit,     floatUnfit  },
                    {"", "dzMin",           floatFit,     floatUnfit  },
    });
}

}  // namespace
