#include <orvatool/Lng.h>

#include <windows.h>

#include <orvatool/InterApp.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "LngCatalogue.h"
#include "Registry.h"
#include "Release.h"

namespace {

struct AppRow {
    Lng::AppID app;
    const wchar_t* name;
    const wchar_t* shortName;
    const wchar_t* tag;
};
constexpr AppRow kApps[] = {
    {Lng::Hpv,        L"OrvaCAD HPV",        L"HPV",        L"OCH"},
    {Lng::Electrical, L"OrvaCAD Electrical", L"Electrical", L"OCE"},
    {Lng::Common,     L"OrvaCAD",            L"OrvaCAD",    L"OC" },
    {Lng::Building,   L"OrvaCAD Building",   L"Building",   L"OCB"},
    {Lng::Schematics, L"OrvaCAD Schematics", L"Schematics", L"OCS"},
    {Lng::Automation, L"OrvaCAD Automation", L"Automation", L"OCA"},
};

constexpr wchar_t kEnglish[] = L"en";
constexpr wchar_t kLanguageValue[] = L"Language";

// The accented letter that stands for each letter in the pseudo-language.
constexpr wchar_t kPlainLetters[] = L"AaCcDdEeGgHhIiJjKkLlNnOoRrSsTtUuWwYyZz";
constexpr wchar_t kAccentedLetters[] = L"ÁáÇçĎďÉéĜĝĤĥÍíĴĵĶķĹĺÑñÓóŘřŠšŤťÚúŴŵÝýŽž";
static_assert(std::size(kPlainLetters) == std::size(kAccentedLetters));

const AppRow* FindApp(Lng::AppID app) {
    const auto row = std::find_if(std::begin(kApps), std::end(kApps), [app](const AppRow& r) { return r.app == app; });
    return row == std::end(kApps) ? nullptr : row;
}

// One conversion of a printf format, as far as it decides on the arguments.
struct Conversion {
    std::wstring_view size;
    wchar_t letter = 0;
    int stars = 0;  // widths and precisions that are arguments

    bool operator==(const Conversion&) const = default;
};

// Reads the conversion whose "%" is at `percent` and returns where it ends.
const wchar_t* ReadConversion(const wchar_t* percent, Conversion& conversion) {
    const wchar_t* at = percent + 1;
    for (; *at && std::wcschr(L"-+ #0123456789.*'", *at); ++at)
        conversion.stars += *at == L'*';
    const wchar_t* size = at;
    while (*at && std::wcschr(L"hlLqjztwI", *at))
        ++at;
    if (at != size && at[-1] == L'I' && (std::wcsncmp(at, L"64", 2) == 0 || std::wcsncmp(at, L"32", 2) == 0)) at += 2;
    conversion.size = std::wstring_view(size, static_cast<std::size_t>(at - size));
    conversion.letter = *at == L'i' ? L'd' : *at;
    return *at ? at + 1 : at;
}

// Moves `format` behind its next conversion other than "%%"; a conversion without a letter stands for the end.
Conversion NextConversion(const wchar_t*& format) {
    while ((format = std::wcschr(format, L'%'))) {
        Conversion conversion;
        format = ReadConversion(format, conversion);
        if (conversion.letter != L'%') return conversion;
    }
    format = L"";
    return {};
}

wchar_t Accented(wchar_t letter) {
    const wchar_t* place = std::wcschr(kPlainLetters, letter);
    return place && letter ? kAccentedLetters[place - kPlainLetters] : letter;
}

// The text in the pseudo-language: conversions and mnemonics stay. The filler has blanks, so that long texts can wrap.
ustr Pseudo(const wchar_t* text) {
    if (!*text || *text == L'#') return text;
    constexpr std::wstring_view kFiller = L"~~~~~~~ ";
    ustr pseudo(L"[");
    for (const wchar_t* at = text; *at;) {
        Conversion conversion;
        const wchar_t* kept = at;
        if (*at == L'%') kept = ReadConversion(at, conversion);
        if (*at == L'&' && at[1]) kept = at + 2;
        if (kept == at) {
            pseudo.append(Accented(*at++));
        } else {
            pseudo.append(std::wstring_view(at, static_cast<std::size_t>(kept - at)));
            at = kept;
        }
    }
    const std::size_t fill = (std::wcslen(text) + 2) / 3;
    for (std::size_t i = 0; i < fill; ++i)
        pseudo.append(kFiller[i % kFiller.size()]);
    return pseudo.append(L']');
}

bool SameTag(std::wstring_view a, std::wstring_view b) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

// The language on offer that serves `wanted` best: itself ("pt-BR"), else its main language ("pt"); empty for none.
ustr BestLanguage(const ustr& wanted) {
    if (SameTag(wanted, Lng::kPseudoLanguage)) return Lng::kPseudoLanguage;
    const std::wstring_view whole(wanted);
    const std::vector<ustr> languages = Lng::GetLanguages();
    for (const std::wstring_view tag : {whole, whole.substr(0, whole.find(L'-'))}) {
        for (const ustr& language : languages) {
            if (SameTag(language, tag)) return language;
        }
    }
    return {};
}

// The user's own setting, else the language of the system, as far as it is on offer.
ustr UsersLanguage() {
    wchar_t tag[LOCALE_NAME_MAX_LENGTH];
    if (registry::ReadText(HKEY_CURRENT_USER, GetProductKey(), kLanguageValue, tag)) {
        if (ustr language = BestLanguage(tag); !language.empty()) return language;
    }
    if (LCIDToLocaleName(MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT), tag, LOCALE_NAME_MAX_LENGTH, 0) == 0) {
        return {};
    }
    return BestLanguage(tag);
}

// The language in use and its texts, each found out when it is first needed.
class Texts {
public:
    static Texts& Get() {
        static Texts texts;
        return texts;
    }

    const ustr& Language() {
        if (language_.empty()) Use({});
        return language_;
    }

    // An empty language is the user's own.
    void Use(const ustr& language) {
        language_ = language.empty() ? UsersLanguage() : BestLanguage(language);
        if (language_.empty()) language_ = kEnglish;
        isPseudo_ = language_ == Lng::kPseudoLanguage;
        catalogue_.reset();
    }

    ustr Text(Lng::AppID app, int textId, const wchar_t* defaultText) {
        if (language_.empty()) Use({});
        if (isPseudo_) return Pseudo(defaultText);
        if (!catalogue_) catalogue_ = LngCatalogue::Load(language_);
        const ustr* text = catalogue_->Find(app, textId);
        return text && Lng::SameConversions(defaultText, text->c_str()) ? *text : ustr(defaultText);
    }

    void Release() { catalogue_.reset(); }

private:
    ustr language_;  // empty until it is first asked for
    bool isPseudo_ = false;
    std::optional<LngCatalogue> catalogue_;
};

ustr WindowText(HWND window) {
    ustr text;
    text.resize(static_cast<std::size_t>(GetWindowTextLengthW(window)));
    const int size = GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(size));
    return text;
}

}  // namespace

void ReleaseCatalogues() {
    Texts::Get().Release();
}

namespace Lng {

ustr text(AppID app, int textId, const wchar_t* defaultText) {
    return Texts::Get().Text(app, textId, defaultText ? defaultText : L"");
}

void setdlgheader(AppID app, HWND dlg, int textId, const wchar_t* defaultText, AppID titleApp) {
    if (dlg) SetWindowTextW(dlg, makeDlgHeader(app, textId, defaultText, titleApp).c_str());
}

ustr makeDlgHeader(AppID app, int textId, const wchar_t* defaultText, AppID titleApp) {
    ustr header = text(app, textId, defaultText);
    const ustr name = GetAppName(titleApp, false);
    if (!name.empty()) header.append(L" - ").append(name);
    return header;
}

void setdlgitemtext(AppID app, HWND dlg, int ctrlId, int textId, const wchar_t* defaultText, bool append) {
    setdlgitemtext(dlg, ctrlId, text(app, textId, defaultText), append);
}

void setdlgitemtext(HWND dlg, int ctrlId, const ustr& text, bool append) {
    const HWND control = GetDlgItem(dlg, ctrlId);
    if (!control) return;
    SetWindowTextW(control, append ? WindowText(control).append(text).c_str() : text.c_str());
}

ustr GetAppName(AppID app, bool shortName) {
    const AppRow* row = FindApp(app);
    if (!row) return {};
    return shortName ? row->shortName : row->name;
}

ustr GetAppTag(AppID app) {
    const AppRow* row = FindApp(app);
    return row ? row->tag : L"";
}

ustr GetLanguage() {
    return Texts::Get().Language();
}

void SetLanguage(const wchar_t* language) {
    Texts::Get().Use(language);
}

bool SetUserLanguage(const wchar_t* language) {
    const std::wstring_view tag(language ? language : L"");
    if (tag.size() >= LOCALE_NAME_MAX_LENGTH) return false;
    const DWORD bytes = static_cast<DWORD>((tag.size() + 1) * sizeof(wchar_t));
    const bool stored =
        tag.empty() ? registry::Remove(HKEY_CURRENT_USER, GetProductKey(), kLanguageValue)
                    : registry::Write(HKEY_CURRENT_USER, GetProductKey(), kLanguageValue, REG_SZ, tag.data(), bytes);
    if (stored) SetLanguage(language);
    return stored;
}

std::vector<ustr> GetLanguages() {
    std::vector<ustr> languages{kEnglish};
    for (ustr& language : LngCatalogue::Languages()) {
        if (!SameTag(language, kEnglish)) languages.push_back(std::move(language));
    }
    return languages;
}

bool SameConversions(const wchar_t* format, const wchar_t* other) {
    if (!format || !other) return format == other;
    while (true) {
        const Conversion conversion = NextConversion(format);
        if (conversion != NextConversion(other)) return false;
        if (!conversion.letter) return true;
    }
}

}  // namespace Lng
