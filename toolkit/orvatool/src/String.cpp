#include <orvatool/String.h>

#include <windows.h>

#include <algorithm>
#include <array>
#include <compare>
#include <cwctype>
#include <iterator>
#include <string>
#include <utility>

namespace {

// What searching makes of the characters below this one; those beyond stay as they are.
constexpr wchar_t kFoldedEnd = 0x2000;

// Up to two characters, 0 for none.
struct Folded {
    wchar_t first = 0;
    wchar_t second = 0;
};
using FoldTable = std::array<Folded, kFoldedEnd>;

// Letters that no decomposition takes apart, in lower case.
struct LetterRow {
    wchar_t letter;
    Folded folded;
};
constexpr LetterRow kLetters[] = {
    {0x00DF, {L's', L's'}},
    {0x00E6, {L'a', L'e'}},
    {0x00F0, {L'd'}      },
    {0x00F8, {L'o'}      },
    {0x00FE, {L't', L'h'}},
    {0x0111, {L'd'}      },
    {0x0127, {L'h'}      },
    {0x0131, {L'i'}      },
    {0x0142, {L'l'}      },
    {0x0153, {L'o', L'e'}},
    {0x0167, {L't'}      },
    {0x03C2, {0x03C3}    }, // final sigma
};

bool IsAccent(wchar_t c) {
    return c >= 0x0300 && c <= 0x036F;
}

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

std::wstring Lower(const std::wstring& text) {
    std::wstring lower(text.size(), L'\0');
    const int size = static_cast<int>(text.size());
    const int written = LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_LOWERCASE, text.data(), size, lower.data(), size,
                                      nullptr, nullptr, 0);
    return written == size ? lower : text;
}

std::wstring Decomposed(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    std::wstring parts(static_cast<std::size_t>(size) * 8, L'\0');
    const int written =
        NormalizeString(NormalizationKD, text.data(), size, parts.data(), static_cast<int>(parts.size()));
    if (written <= 0) return text;
    parts.resize(static_cast<std::size_t>(written));
    return parts;
}

// The folded form of `whole`, of which `parts` is the decomposition in lower case: at most two characters remain when
// the accents are dropped, or the character stays whole.
Folded FoldedOf(wchar_t whole, std::wstring_view parts) {
    if (IsAccent(whole)) return {};
    std::wstring kept(parts);
    std::erase_if(kept, IsAccent);
    if (kept.empty() || kept.size() > 2) return {whole};
    if (kept.size() == 2) return {kept[0], kept[1]};
    const auto isLetter = [&kept](const LetterRow& row) { return row.letter == kept[0]; };
    const auto row = std::find_if(std::begin(kLetters), std::end(kLetters), isLetter);
    return row == std::end(kLetters) ? Folded{kept[0]} : row->folded;
}

// The system is asked once, for all characters together, parted by a control character.
FoldTable MakeFoldTable() {
    constexpr wchar_t kParting = 1;
    std::wstring all;
    for (wchar_t c = kParting + 1; c < kFoldedEnd; ++c)
        all.append({c, kParting});
    const std::wstring parts = Lower(Decomposed(all));
    FoldTable table{};
    table[kParting] = {kParting};
    std::size_t begin = 0;
    for (wchar_t c = kParting + 1; c < kFoldedEnd; ++c) {
        const std::size_t end = parts.find(kParting, begin);
        if (end == std::wstring::npos) break;
        table[c] = FoldedOf(c, std::wstring_view(parts).substr(begin, end - begin));
        begin = end + 1;
    }
    return table;
}

const FoldTable& Table() {
    static const FoldTable table = MakeFoldTable();
    return table;
}

// Takes the longest start of `text` that is all digits or all others.
std::wstring_view TakeRun(std::wstring_view& text) {
    std::size_t size = 1;
    while (size < text.size() && IsDigit(text[size]) == IsDigit(text[0]))
        ++size;
    const std::wstring_view run = text.substr(0, size);
    text.remove_prefix(size);
    return run;
}

int Sign(std::strong_ordering order) {
    return std::is_lt(order) ? -1 : std::is_gt(order);
}

int CompareNumbers(std::wstring_view a, std::wstring_view b) {
    a.remove_prefix(std::min(a.find_first_not_of(L'0'), a.size()));
    b.remove_prefix(std::min(b.find_first_not_of(L'0'), b.size()));
    return a.size() != b.size() ? Sign(a.size() <=> b.size()) : Sign(a <=> b);
}

int CompareTexts(std::wstring_view a, std::wstring_view b) {
    const int result =
        CompareStringEx(LOCALE_NAME_USER_DEFAULT, LINGUISTIC_IGNORECASE, a.data(), static_cast<int>(a.size()), b.data(),
                        static_cast<int>(b.size()), nullptr, nullptr, 0);
    return result ? result - CSTR_EQUAL : Sign(a <=> b);
}

// Numbers go by their value. Against a text each stands where "0" stands, so that all of them lie together.
int CompareRuns(std::wstring_view a, std::wstring_view b) {
    if (IsDigit(a[0]) && IsDigit(b[0])) return CompareNumbers(a, b);
    if (!IsDigit(a[0]) && !IsDigit(b[0])) return CompareTexts(a, b);
    return IsDigit(a[0]) ? (CompareTexts(L"0", b) > 0 ? 1 : -1) : (CompareTexts(a, L"0") < 0 ? -1 : 1);
}

// Ends with a 0, which occurs nowhere else in it.
void AppendTextKey(std::string& key, std::wstring_view run) {
    constexpr DWORD kFlags = LCMAP_SORTKEY | LINGUISTIC_IGNORECASE;
    const int size = static_cast<int>(run.size());
    const std::size_t start = key.size();
    const auto make = [&](std::size_t room) {
        key.resize(start + room);
        auto* const bytes = room ? reinterpret_cast<wchar_t*>(key.data() + start) : nullptr;
        return LCMapStringEx(LOCALE_NAME_USER_DEFAULT, kFlags, run.data(), size, bytes, static_cast<int>(room), nullptr,
                             nullptr, 0);
    };
    int written = make(run.size() * 12 + 16);  // enough for all but odd texts
    if (written <= 0) written = make(static_cast<std::size_t>(std::max(make(0), 0)));
    key.resize(start + static_cast<std::size_t>(std::max(written, 0)));
    if (written <= 0) key.push_back('\0');
}

// A number has the key of "0", as it lies there among texts, and behind that its length and digits.
void AppendRunKey(std::string& key, std::wstring_view run) {
    static const std::string zero = [] {
        std::string text;
        AppendTextKey(text, L"0");
        return text + '\0';
    }();
    if (!IsDigit(run[0])) {
        AppendTextKey(key, run);
        key.push_back('\1');
        return;
    }
    run.remove_prefix(std::min(run.find_first_not_of(L'0'), run.size()));
    key += zero;
    for (int shift = 24; shift >= 0; shift -= 8)
        key.push_back(static_cast<char>(run.size() >> static_cast<unsigned>(shift)));
    for (const wchar_t digit : run)
        key.push_back(static_cast<char>(digit));
}

}  // namespace

void String::ArrayFromString(const ustr& text, std::vector<ustr>& parts, wchar_t separator) {
    std::vector<ustr> result;
    std::wstring_view rest(text);
    while (!text.empty()) {
        const std::size_t end = rest.find(separator);
        result.emplace_back(rest.substr(0, end));
        if (end == std::wstring_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    parts = std::move(result);
}

ustr String::ArrayToString(const std::vector<ustr>& parts, const wchar_t* separator) {
    ustr text;
    for (const ustr& part : parts) {
        if (&part != parts.data()) text.append(separator);
        text.append(part);
    }
    return text;
}

ustr String::Fold(std::wstring_view text) {
    const FoldTable& table = Table();
    ustr folded;
    folded.reserve(text.size());
    for (const wchar_t c : text) {
        if (c < 0x80) {
            folded.append(c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c);
        } else if (c >= kFoldedEnd) {
            folded.append(c);
        } else {
            if (table[c].first) folded.append(table[c].first);
            if (table[c].second) folded.append(table[c].second);
        }
    }
    return folded;
}

std::vector<ustr> String::SearchWords(std::wstring_view text) {
    const ustr folded = Fold(text);
    std::vector<ustr> words;
    std::wstring_view rest(folded);
    while (true) {
        while (!rest.empty() && std::iswspace(rest.front()))
            rest.remove_prefix(1);
        if (rest.empty()) return words;
        std::size_t size = 0;
        while (size < rest.size() && !std::iswspace(rest[size]))
            ++size;
        words.emplace_back(rest.substr(0, size));
        rest.remove_prefix(size);
    }
}

bool String::MatchesFolded(std::wstring_view foldedText, const std::vector<ustr>& words) {
    for (const ustr& word : words) {
        if (foldedText.find(std::wstring_view(word)) == std::wstring_view::npos) return false;
    }
    return true;
}

int String::CompareForUser(std::wstring_view a, std::wstring_view b) {
    while (!a.empty() && !b.empty()) {
        const std::wstring_view runA = TakeRun(a);
        const std::wstring_view runB = TakeRun(b);
        if (const int order = CompareRuns(runA, runB)) return order;
    }
    return Sign(!a.empty() <=> !b.empty());
}

std::string String::SortKeyForUser(std::wstring_view text) {
    std::string key;
    while (!text.empty())
        AppendRunKey(key, TakeRun(text));
    return key;
}
