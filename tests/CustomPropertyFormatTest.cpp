#include <gtest/gtest.h>
#include <occommonui/CustomProperty.h>

#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/ProcessorTime.h"

namespace CustomProperty::Format {

bool operator==(const Item& a, const Item& b) {
    return a.id == b.id && a.text == b.text;
}

void PrintTo(const Item& item, std::ostream* out) {
    const std::wstring text(item.text.c_str());
    *out << "(" << item.id << ", " << std::string(text.begin(), text.end()) << ")";
}

}  // namespace CustomProperty::Format

namespace {

using CustomProperty::Data;
using CustomProperty::Format::Build;
using CustomProperty::Format::Item;
using CustomProperty::Format::Parse;

Data Record(long id, const wchar_t* name, const wchar_t* format) {
    Data data;
    data.id = id;
    data.name = name;
    data.format = format;
    return data;
}

TEST(Format, ParsesWellFormedAndMalformedStrings) {
    const struct {
        const wchar_t* input;
        std::vector<Item> items;
        const wchar_t* built;
    } cases[] = {
        {L"",                      {},                                               L""                     },
        {L"abc",                   {{0, L"abc"}},                                    L"abc"                  },
        {L"Length: {12|mm} total", {{0, L"Length: "}, {12, L"|mm"}, {0, L" total"}}, L"Length: {12|mm} total"},
        {L"{12}",                  {{12, L""}},                                      L"{12}"                 },
        {L"abc}def{5}",            {},                                               L""                     },
        {L"{1}abc}def{5}",         {{1, L""}},                                       L"{1}"                  },
        {L"ab{12",                 {{0, L"ab"}},                                     L"ab"                   },
        {L"{x}abc",                {},                                               L""                     },
        {L"{x}abc}{5}z",           {{5, L""}, {0, L"z"}},                            L"{5}z"                 },
        {L"{0|x}",                 {{0, L"|x"}},                                     L"|x"                   },
        {L"{-3|y}",                {{-3, L"|y"}},                                    L"|y"                   },
        {L"{ 7|a}",                {{7, L"|a"}},                                     L"{7|a}"                },
        {L"{+7|a}",                {{7, L"|a"}},                                     L"{7|a}"                },
        {L"{7abc|a}",              {{7, L"|a"}},                                     L"{7|a}"                },
        {L"{1}{2}",                {{1, L""}, {2, L""}},                             L"{1}{2}"               },
        {L"{5||a|}",               {{5, L"||a|"}},                                   L"{5||a|}"              },
        {L"{}abc{4}",              {{4, L""}},                                       L"{4}"                  },
        {L"{|5}abc{4}",            {{4, L""}},                                       L"{4}"                  },
        {L"a{lost{3}b",            {{0, L"a"}, {3, L""}, {0, L"b"}},                 L"a{3}b"                },
        {L"a|b",                   {{0, L"a|b"}},                                    L"a|b"                  },
        {L"{99999999999}",         {{2147483647, L""}},                              L"{2147483647}"         },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        EXPECT_EQ(Parse(c.input), c.items);
        EXPECT_EQ(Build(Parse(c.input)), c.built);
    }
}

TEST(Format, BuildsAndReadsBackEveryProperList) {
    std::mt19937 random(20160101);
    for (int round = 0; round < 2000; ++round) {
        std::vector<Item> items;
        for (unsigned n = random() % 8; n > 0; --n) {
            const bool textAllowed = items.empty() || !items.back().IsText();
            std::wstring text(random() % 40, L'x');
            for (wchar_t& c : text)
                c = L"ab |.\u00e4\u4e2d\xd83d"[random() % 8];
            if (textAllowed && random() % 2) {
                items.emplace_back(0, ustr(L"t" + text));
            } else {
                items.emplace_back(1 + static_cast<long>(random() % 0x7fffffff),
                                   text.empty() ? ustr() : ustr(L"|" + text));
            }
        }
        ASSERT_EQ(Parse(Build(items)), items);
    }
}

// Whatever the string, reading ends, and what was read is stable: it builds a string that reads as the same items but
// for texts that an id of 0 or less turned into literals, which merge with their neighbours.
TEST(Format, SurvivesRandomStrings) {
    std::mt19937 random(20161101);
    for (int round = 0; round < 100'000; ++round) {
        std::wstring input(random() % 30, L' ');
        for (wchar_t& c : input)
            c = L"{}|0123456789-+ ax\0\n"[random() % 20];
        const ustr built = Build(Parse(ustr(input)));
        ASSERT_EQ(Build(Parse(built)), built) << round;
    }
}

TEST(Format, TakesTimeInProportionToTheLength) {
    const std::wstring input = L"{x" + std::wstring(2'000'000, L'}');
    const double start = ProcessorTime();
    EXPECT_TRUE(Parse(ustr(input)).empty());
    // Reading the pending reference again at each of the braces would take hours.
    EXPECT_LT(ProcessorTime() - start, 5000);
}

TEST(CustomPropertyData, HasPropertyIdsOfItsOwn) {
    EXPECT_EQ(Record(0, L"", L"").PropId(), -100);
    EXPECT_EQ(Record(5, L"", L"").PropId(), -105);
    EXPECT_TRUE(CustomProperty::IsMyProperty(-100));
    EXPECT_TRUE(CustomProperty::IsMyProperty(-105));
    EXPECT_FALSE(CustomProperty::IsMyProperty(-99));
    EXPECT_FALSE(CustomProperty::IsMyProperty(100));
}

TEST(CustomPropertyData, IsFoundByName) {
    const std::vector<Data> records = {Record(1, L"Size", L"{1}"), Record(2, L"", L"{1}"), Record(3, L"SIZE", L"{2}"),
                                       Record(4, L"Sizé", L"{3}"), Record(5, L"Flow", L"{4}")};
    const auto ids = [](const std::vector<const Data*>& found) {
        std::vector<long> result;
        for (const Data* data : found)
            result.push_back(data->id);
        return result;
    };
    EXPECT_EQ(ids(CustomProperty::Find(records, L"size")), (std::vector<long>{1, 3, 4}));
    EXPECT_EQ(ids(CustomProperty::Find(records)), (std::vector<long>{1, 3, 4, 5}));
    EXPECT_TRUE(CustomProperty::Find(records, L"None").empty());
    EXPECT_EQ(CustomProperty::Find(records, L"flow").at(0), &records[4]);
}

TEST(CustomPropertyData, BestMatchPrefersContentThenOwnIdThenOrder) {
    using Pair = std::pair<std::int32_t, int>;
    const Data wanted = Record(7, L"Size", L"{1}x{2}");
    const Data folded = Record(1, L"SIZE", L"{9}");
    const Data named = Record(2, L"Size", L"{9}");
    const Data composed = Record(3, L"Dimension", L"{1}x{2}");
    const Data same = Record(4, L"Size", L"{1}x{2}");
    const Data sameWithId = Record(7, L"Size", L"{1}x{2}");
    const Data other = Record(7, L"Flow", L"{3}");
    EXPECT_EQ(FindBestMatch(wanted, {other}), Pair(0, CustomProperty::kNoMatch));
    EXPECT_EQ(FindBestMatch(wanted, {other, folded}), Pair(1, CustomProperty::kSameNameFolded));
    EXPECT_EQ(FindBestMatch(wanted, {folded, named}), Pair(2, CustomProperty::kSameName));
    EXPECT_EQ(FindBestMatch(wanted, {composed, named}), Pair(3, CustomProperty::kSameFormat));
    EXPECT_EQ(FindBestMatch(wanted, {composed, same, sameWithId}), Pair(7, CustomProperty::kSame));
    EXPECT_EQ(FindBestMatch(wanted, {sameWithId, same}), Pair(7, CustomProperty::kSame));
    EXPECT_EQ(FindBestMatch(Record(7, L"", L"{3}"), {other}), Pair(0, CustomProperty::kNoMatch));
}

}  // namespace
