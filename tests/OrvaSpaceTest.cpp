#include <orvaspace/ustr.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include <windows.h>

namespace {

// Character buffers are the only arrays that the tested code allocates.
long liveBuffers = 0;
bool memoryIsOut = false;

struct OutOfMemory {
    OutOfMemory() { memoryIsOut = true; }
    ~OutOfMemory() { memoryIsOut = false; }
};

}  // namespace

void* operator new[](std::size_t size) {
    void* memory = memoryIsOut ? nullptr : std::malloc(size);
    if (!memory) throw std::bad_alloc();
    ++liveBuffers;
    return memory;
}
void operator delete[](void* memory) noexcept {
    if (memory) --liveBuffers;
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    operator delete[](memory);
}

namespace {

using orvaspace::ToUtf8;
using orvaspace::ToWide;
using orvaspace::TryToWide;

static_assert(std::is_nothrow_move_constructible_v<ustr> && std::is_nothrow_move_constructible_v<ustr_pre<8>>);
static_assert(std::is_nothrow_move_assignable_v<ustr_pre<8>>);
static_assert(std::is_convertible_v<ustr_pre<8>&, ustr&> && std::is_convertible_v<ustr_pre<8>, std::wstring_view>);
static_assert(!std::is_convertible_v<astr, ustr> && !std::is_convertible_v<ustr, const wchar_t*>);

std::wstring Letters(std::size_t count) {
    std::wstring text(count, L'\0');
    for (std::size_t i = 0; i < count; ++i)
        text[i] = static_cast<wchar_t>(L'a' + i % 26);
    return text;
}

bool LiesInside(const void* object, std::size_t size, const ustr& text) {
    const auto* start = static_cast<const std::byte*>(object);
    const auto* at = reinterpret_cast<const std::byte*>(text.data());
    return !std::less<>()(at, start) && std::less<>()(at, start + size);
}

class OrvaSpace : public ::testing::Test {
protected:
    void SetUp() override { before_ = liveBuffers; }
    void TearDown() override { EXPECT_EQ(liveBuffers, before_) << "leaked or doubly freed buffers"; }

private:
    long before_ = 0;
};

TEST_F(OrvaSpace, HoldsWhatItIsMadeFrom) {
    wchar_t buffer[] = L"abcd";
    EXPECT_EQ(ustr(), L"");
    EXPECT_EQ(ustr(nullptr), L"");
    EXPECT_EQ(ustr(nullptr, 3), L"");
    EXPECT_EQ(ustr(buffer, 2U), L"ab");
    buffer[0] = L'x';
    EXPECT_EQ(ustr_pre<2>(std::wstring(L"std")), L"std");
    EXPECT_EQ(astr("narrow"), "narrow");

    ustr text = L"old";
    text = static_cast<const wchar_t*>(nullptr);
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.c_str()[0], L'\0');
    EXPECT_EQ(L"<" + ustr_pre<4>(L"pre") + L"," + ustr(L"u") + std::wstring_view(L">"), L"<pre,u>");
}

TEST_F(OrvaSpace, UsesTheHeapOnlyBeyondItsOwnRoom) {
    constexpr std::size_t kRoom = 8;
    for (std::size_t size : {kRoom - 1, kRoom, kRoom + 1}) {
        const std::wstring letters = Letters(size);
        ustr_pre<kRoom> assigned(letters);
        ustr_pre<kRoom> grown;
        for (wchar_t letter : letters)
            grown += letter;
        for (const auto* text : {&assigned, &grown}) {
            EXPECT_EQ(LiesInside(text, sizeof *text, *text), size <= kRoom) << size;
            EXPECT_EQ(*text, letters);
            EXPECT_EQ(text->c_str()[size], L'\0');
        }
        grown = ustr();
        EXPECT_TRUE(LiesInside(&grown, sizeof grown, grown)) << "emptied";
    }
}

template <class To, class From>
void ExpectMoveKeepsBuffer() {
    From from(Letters(40));
    const void* buffer = from.data();
    To made = std::move(from);
    EXPECT_EQ(made.data(), buffer);
    EXPECT_EQ(from, L"");
    To assigned = L"something that goes";
    assigned = std::move(made);
    EXPECT_EQ(assigned.data(), buffer);
    EXPECT_EQ(assigned, Letters(40));
    EXPECT_EQ(made, L"");
    made += L"again";
    from = L"again";
    EXPECT_EQ(made, from);
}

TEST_F(OrvaSpace, MovesHandTheHeapBufferOver) {
    ExpectMoveKeepsBuffer<ustr, ustr>();
    ExpectMoveKeepsBuffer<ustr, ustr_pre<4>>();
    ExpectMoveKeepsBuffer<ustr_pre<4>, ustr>();
    ExpectMoveKeepsBuffer<ustr_pre<4>, ustr_pre<16>>();
    ExpectMoveKeepsBuffer<ustr_pre<64>, ustr>();

    std::vector<ustr> texts{ustr(Letters(40))};
    const void* buffer = texts[0].data();
    texts.reserve(texts.capacity() + 1);
    EXPECT_EQ(texts[0].data(), buffer);
}

TEST_F(OrvaSpace, MovesCopyWhatLiesInside) {
    ustr_pre<16> from = L"0123456789";
    const ustr_pre<4> moved = std::move(from);
    EXPECT_EQ(moved, L"0123456789");
    EXPECT_EQ(from, L"");
    EXPECT_EQ(from.capacity(), 16U);

    ustr_pre<16> text = ustr(L"x");  // a heap buffer shorter than its own room
    from = L"of one size";
    {
        const OutOfMemory out;
        text = std::move(from);
    }
    EXPECT_EQ(text, L"of one size");
}

TEST_F(OrvaSpace, TakesPartsOfItself) {
    for (std::size_t room : {0U, 64U}) {
        ustr text = L"abcdef";
        text.reserve(room);
        text.append(std::wstring_view(text).substr(2));
        EXPECT_EQ(text, L"abcdefcdef");
        text.append(text.c_str() + 8).append(text[0]);
        EXPECT_EQ(text, L"abcdefcdefefa");
        text = std::wstring_view(text).substr(3, 4);
        EXPECT_EQ(text, L"defc");
        text = text.c_str() + 1;
        EXPECT_EQ(text, L"efc");
        text.format(L"<%s|%s>", text.c_str(), text.c_str() + 1);
        EXPECT_EQ(text, L"<efc|fc>");
        text.formatCat(L"%s", text.c_str());
        EXPECT_EQ(text, L"<efc|fc><efc|fc>");
        ustr& self = text;
        text = std::move(self);
        EXPECT_EQ(text, L"<efc|fc><efc|fc>");
    }
}

TEST_F(OrvaSpace, IsUnchangedWhenMemoryIsOut) {
    const std::wstring longer = Letters(30), veryLong = Letters(400);
    const ustr other(longer);
    const std::pair<const char*, std::function<void(ustr&)>> kGrowing[] = {
        {"append a text",      [&](ustr& text) { text.append(longer); }                 },
        {"append a character", [&](ustr& text) { text += L'x'; }                        },
        {"append itself",      [&](ustr& text) { text += text; }                        },
        {"assign a view",      [&](ustr& text) { text = std::wstring_view(longer); }    },
        {"assign a copy",      [&](ustr& text) { text = other; }                        },
        {"reserve",            [&](ustr& text) { text.reserve(5); }                     },
        {"resize",             [&](ustr& text) { text.resize(5); }                      },
        {"format",             [&](ustr& text) { text.format(L"%s", longer.c_str()); }  },
        {"format at length",   [&](ustr& text) { text.format(L"%s", veryLong.c_str()); }},
        {"formatCat",          [&](ustr& text) { text.formatCat(L"%d", 1); }            },
        {"convert",            [&](ustr& text) { TryToWide("a narrow text", text); }    },
        {"operator+",          [&](ustr& text) { text = text + L"x"; }                  },
    };
    for (const auto& [name, grow] : kGrowing) {
        ustr plain = L"abcd";
        ustr_pre<4> pre = L"abcd";
        for (ustr* text : {&plain, static_cast<ustr*>(&pre)}) {
            const void* buffer = text->data();
            {
                const OutOfMemory out;
                EXPECT_THROW(grow(*text), std::bad_alloc) << name;
            }
            EXPECT_EQ(text->data(), buffer) << name;
            EXPECT_EQ(*text, L"abcd") << name;
            EXPECT_NO_THROW(grow(*text)) << name;
        }
    }
    ustr_pre<16> from = L"0123456789";
    ustr_pre<4> to = L"abcd";
    {
        const OutOfMemory out;
        EXPECT_THROW(to = std::move(from), std::bad_alloc);
    }
    EXPECT_EQ(to, L"abcd");
    EXPECT_EQ(from, L"0123456789");
    EXPECT_THROW(to.reserve(ustr::max_size() + 1), std::length_error);
    EXPECT_THROW(to.resize(ustr::npos), std::length_error);
    EXPECT_EQ(to, L"abcd");
}

TEST_F(OrvaSpace, GrowsByAFactor) {
    ustr text;
    int moves = 0;
    for (int i = 0; i < 100000; ++i) {
        moves += text.size() == text.capacity();
        text += L'x';
    }
    EXPECT_LT(moves, 40);
}

TEST_F(OrvaSpace, SlicesAndErasesHalfOpenRanges) {
    const ustr text = L"abcdef";
    EXPECT_EQ(text.slice(1, 3), L"bc");
    EXPECT_EQ(text.slice(4), L"ef");
    EXPECT_EQ(text.slice(4, 99), L"ef");
    EXPECT_EQ(text.slice(3, 3), L"");
    EXPECT_EQ(text.slice(4, 2), L"");
    EXPECT_EQ(text.slice(99, ustr::npos), L"");

    auto erased = [&text](std::size_t from, std::size_t to) {
        ustr copy = text;
        copy.erase(from, to);
        return copy;
    };
    EXPECT_EQ(erased(1, 3), L"adef");
    EXPECT_EQ(erased(0, ustr::npos), L"");
    EXPECT_EQ(erased(4, 99), L"abcd");
    EXPECT_EQ(erased(4, 2), L"abcdef");
    EXPECT_EQ(erased(99, 100), L"abcdef");
}

TEST_F(OrvaSpace, TruncatesBetweenCharacters) {
    const wchar_t kWide[] =
        L"a\xD83D\xDE00"
        L"b\xDC00\xD800"
        L"c";
    const std::size_t kKeptUnits[] = {0, 1, 1, 3, 4, 5, 6, 7, 7};
    for (std::size_t size = 0; size < std::size(kKeptUnits); ++size) {
        ustr text = kWide;
        text.truncate(size);
        EXPECT_EQ(text, std::wstring_view(kWide, kKeptUnits[size])) << size;
    }
    // One, two, three and four bytes, then bytes that are no character and are cut anywhere.
    const char kNarrow[] = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\x80\x80\xE2\x82";
    const std::size_t kKeptBytes[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 12, 13, 14, 14};
    for (std::size_t size = 0; size < std::size(kKeptBytes); ++size) {
        astr text = kNarrow;
        text.truncate(size);
        EXPECT_EQ(text, std::string_view(kNarrow, kKeptBytes[size])) << size;
    }
}

TEST_F(OrvaSpace, ComparesByCodeUnit) {
    const ustr a = L"a", umlaut = L"\xE4", last = L"\xFFFF";
    const ustr_pre<4> a4 = L"a";
    const ustr_pre<8> ab8 = L"ab";
    const std::wstring standard = L"a";
    EXPECT_TRUE(a == a4 && a4 == a && a == L"a" && L"a" == a4 && a4 == standard && standard == a);
    EXPECT_TRUE(a4 != ab8 && a4 < ab8 && a < L"b" && L"A" < a4 && standard < ab8 && std::wstring_view(L"b") > ab8);
    EXPECT_TRUE(umlaut < last && ustr() < a);
    EXPECT_TRUE(ustr() == static_cast<const wchar_t*>(nullptr));
    EXPECT_LT(astr("z"), astr("\xC3\xA4")) << "bytes are unsigned";
}

TEST_F(OrvaSpace, IsAKeyThatViewsFind) {
    std::map<ustr, int, std::less<>> ordered{
        {L"b", 2},
        {L"a", 1}
    };
    std::unordered_map<ustr_pre<4>, int, std::hash<ustr_pre<4>>, std::equal_to<>> hashed{
        {L"longer than 4", 1}
    };
    EXPECT_EQ(ordered.begin()->first, L"a");
    EXPECT_EQ(ordered.find(std::wstring_view(L"b"))->second, 2);
    EXPECT_EQ(hashed.find(std::wstring_view(L"longer than 4"))->second, 1);
    EXPECT_EQ(std::hash<ustr>()(L"x"), std::hash<ustr_pre<4>>()(ustr_pre<4>(L"x")));
}

TEST_F(OrvaSpace, FormatsAsTheMicrosoftRuntime) {
    ustr text;
    EXPECT_EQ(text.format(L"{%d%s}", 12, L"|mm"), L"{12|mm}");
    EXPECT_EQ(text.format(L"%ls %hs %S", L"wide", "narrow", "narrow"), L"wide narrow narrow");
    EXPECT_EQ(text.format(L"%lld %I64d %llu", INT64_MIN, INT64_MAX, UINT64_MAX),
              L"-9223372036854775808 9223372036854775807 18446744073709551615");
    EXPECT_EQ(text.format(L"%5.1f|%-4d|%04X|%.2s|%%", 2.25 + 0.5, 7, 0xAB, L"xyz"), L"  2.8|7   |00AB|xy|%");
    EXPECT_EQ(text.format(L"%s", L"\x20AC\xD83D\xDE00").formatCat(L"%c", L'\xE4'), L"\x20AC\xD83D\xDE00\xE4");
    EXPECT_EQ(text.format(L"%c%c", 0, L'z'), std::wstring_view(L"\0z", 2));
    for (std::size_t size : {254U, 255U, 256U, 70000U}) {
        const std::wstring letters = Letters(size);
        ustr any;
        EXPECT_EQ(any.format(L"%s", letters.c_str()), letters);
        EXPECT_EQ(any.formatCat(L"%s.", letters.c_str()), letters + letters + L".");
    }
    text = L"kept";
    const wchar_t* const none = nullptr;
    EXPECT_EQ(text.format(none).formatCat(none).formatCat(L""), L"kept");
    EXPECT_EQ(text.format(L""), L"");

    astr narrow;
    EXPECT_EQ(narrow.format("%s=%lld", "\xC3\xA4", static_cast<long long>(INT64_MIN)).formatCat("%s", "!"),
              "\xC3\xA4=-9223372036854775808!");
}

TEST_F(OrvaSpace, FormatsNumbersTheSameInEveryLocale) {
    auto expectPoint = [] {
        ustr wide;
        astr narrow;
        EXPECT_EQ(wide.format(L"%.0f %.1f %g", 2.0, 0.5, 1234567.25), L"2 0.5 1.23457e+006");
        EXPECT_EQ(narrow.format("%.0f %.1f %g", 2.0, 0.5, 0.25), "2 0.5 0.25");
    };
    expectPoint();
    const std::string former = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "German_Germany.1252"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    expectPoint();
    std::setlocale(LC_ALL, former.c_str());
}

// What one random step works on: a text and another (or the same), each with the standard's string as its model.
struct Step {
    ustr &text, &from;
    std::wstring &model, &fromModel;
    std::size_t start, count;  // a range of `from`
    wchar_t letter;

    std::wstring_view View() const { return std::wstring_view(from).substr(start, count); }
    std::wstring Part() const { return fromModel.substr(start, count); }
    std::size_t StartInText() const { return std::min(start, model.size()); }
};
using Operation = void (*)(const Step&);
constexpr Operation kOperations[] = {
    [](const Step& s) { s.model = s.Part(), s.text = s.View(); },
    [](const Step& s) { s.model += s.Part(), s.text.append(s.View()); },
    [](const Step& s) { s.model += s.letter, s.text += s.letter; },
    [](const Step& s) { s.model.erase(s.StartInText(), s.count), s.text.erase(s.start, s.start + s.count); },
    [](const Step& s) { s.model.resize(s.count, s.letter), s.text.resize(s.count, s.letter); },
    [](const Step& s) { s.model.resize(s.StartInText()), s.text.truncate(s.start); },
    [](const Step& s) { s.model = s.fromModel, s.text = s.from; },
    [](const Step& s) { s.model = s.fromModel, s.text = ustr(s.from); },
    [](const Step& s) { s.model = s.fromModel, s.text = ustr_pre<8>(s.from); },
    [](const Step& s) { s.model = s.Part(), s.text = s.from.slice(s.start, s.start + s.count); },
    [](const Step& s) { s.text.reserve(s.count); },
    [](const Step& s) {
        if (&s.model != &s.fromModel) s.model = std::exchange(s.fromModel, std::wstring());
        s.text = std::move(s.from);
    },
};

TEST_F(OrvaSpace, BehavesAsTheStandardString) {
    std::mt19937 random(20260101);
    auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    ustr plain, plain2;
    ustr_pre<4> pre4;
    ustr_pre<16> pre16, pre16b;
    ustr* const texts[] = {&plain, &plain2, &pre4, &pre16, &pre16b};
    std::wstring models[std::size(texts)];

    for (int step = 0; step < 40000; ++step) {
        const std::size_t to = below(std::size(texts)), from = below(std::size(texts));
        const std::size_t start = below(models[from].size() + 1), count = below(40);
        const wchar_t letter = L"\0abc"[below(4)];
        const Operation operation = kOperations[below(std::size(kOperations))];
        operation({*texts[to], *texts[from], models[to], models[from], start, count, letter});
        if (models[to].size() > 200) texts[to]->clear(), models[to].clear();
        for (std::size_t i = 0; i < std::size(texts); ++i) {
            ASSERT_EQ(*texts[i], models[i]) << "step " << step;
            ASSERT_EQ(texts[i]->c_str()[texts[i]->size()], L'\0') << "step " << step;
            ASSERT_GE(texts[i]->capacity(), texts[i]->size()) << "step " << step;
        }
    }
}

TEST_F(OrvaSpace, ConvertsEveryCharacterAsTheSystemDoes) {
    std::wstring all;
    for (char32_t value = 0; value <= 0x10FFFF; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF) continue;
        if (value >= 0x10000) all += static_cast<wchar_t>(0xD800 + ((value - 0x10000) >> 10));
        all += static_cast<wchar_t>(value >= 0x10000 ? 0xDC00 + (value & 0x3FF) : value);
    }
    const int units = static_cast<int>(all.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, all.data(), units, nullptr, 0, nullptr, nullptr);
    std::string system(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, all.data(), units, system.data(), bytes, nullptr, nullptr);

    const astr utf8 = ToUtf8(all);
    EXPECT_TRUE(utf8 == system);
    EXPECT_EQ(utf8.capacity(), utf8.size());
    ustr wide;
    EXPECT_TRUE(TryToWide(system, wide));
    EXPECT_TRUE(wide == all);
    // What the system replaces is kept.
    EXPECT_EQ(ToUtf8(L"\xD800"), "\xED\xA0\x80");
    EXPECT_EQ(ToUtf8(L"\xDFFF"), "\xED\xBF\xBF");
}

TEST_F(OrvaSpace, ReplacesWhatIsNotUtf8) {
    const std::pair<std::string_view, const wchar_t*> kMalformed[] = {
        {"\x80",                                 L"\xFFFD"                                              },
        {"a\xC3",                                L"a\xFFFD"                                             },
        {"\xC3\xC3\xA4",                         L"\xFFFD\xE4"                                          },
        {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", L"\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\xFFFD\x41"},
        {"\xC1\xBF",                             L"\xFFFD\xFFFD"                                        },
        {"\xE2\x82",                             L"\xFFFD"                                              },
        {"\xE2\x82\x41",                         L"\xFFFD\x41"                                          },
        {"\xF0\x9F\x98",                         L"\xFFFD"                                              },
        {"\xF4\x90\x80\x80",                     L"\xFFFD\xFFFD\xFFFD\xFFFD"                            },
        {"\xF5\x80\xFF",                         L"\xFFFD\xFFFD\xFFFD"                                  },
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", L"\xFFFD\xFFFD\xFFFD\xFFFD\x41"                        },
        {"\xED\xA0\x80\xED\xB0\x80",             L"\xD800\xFFFD\xFFFD\xFFFD"                            },
    };
    for (const auto& [utf8, wide] : kMalformed) {
        ustr out = L"kept";
        EXPECT_EQ(ToWide(utf8), wide);
        EXPECT_FALSE(TryToWide(utf8, out));
        EXPECT_EQ(out, L"kept");
    }
}

TEST_F(OrvaSpace, NeitherLosesNorInventsWhenConverting) {
    std::mt19937 random(7);
    const wchar_t kUnits[] = {0,      L'a',   0x7F,   0x80,   0x7FF,  0x800, 0xD7FF,
                              0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFFFD, 0xFFFF};
    const unsigned char kBytes[] = {0,    'a',  0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC1, 0xC2,
                                    0xE0, 0xE1, 0xED, 0xEF, 0xF0, 0xF1, 0xF4, 0xF5, 0x80, 0xBF, 0xED};
    int wellFormed = 0;
    for (int round = 0; round < 50000; ++round) {
        std::wstring units;
        std::string bytes;
        for (unsigned i = random() % 8; i > 0; --i) {
            units += kUnits[random() % std::size(kUnits)];
            bytes += static_cast<char>(kBytes[random() % std::size(kBytes)]);
        }
        ustr wide;
        ASSERT_TRUE(TryToWide(ToUtf8(units), wide));
        ASSERT_EQ(wide, units);
        if (TryToWide(bytes, wide)) {
            ++wellFormed;
            ASSERT_EQ(ToUtf8(wide), bytes);
            ASSERT_EQ(ToWide(bytes), wide);
        } else {
            ASSERT_NE(std::wstring_view(ToWide(bytes)).find(L'\xFFFD'), std::wstring_view::npos);
        }
    }
    EXPECT_GT(wellFormed, 5000);
}

}  // namespace
