#include "host/TourPage.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "host/DialogCatalog.h"
#include "host/Utf.h"

namespace ochost {
namespace {

namespace fs = std::filesystem;

constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>OCCommonUi: the dialogs</title>
<style>
:root { color-scheme: light; --ink: #1f2933; --quiet: #627282; --line: #d9e0e6; --ground: #f4f6f8; --accent: #1b5e9b; }
body { margin: 0; font: 15px/1.5 "Segoe UI", system-ui, sans-serif; color: var(--ink); background: var(--ground); }
header { position: sticky; top: 0; z-index: 1; background: #fff; border-bottom: 1px solid var(--line); padding: 14px 28px; }
h1 { font-size: 20px; margin: 0 0 8px; }
h2 { font-size: 18px; margin: 0; }
fieldset { display: inline-flex; flex-wrap: wrap; gap: 14px; border: 0; padding: 0; margin: 0 32px 0 0; }
legend { float: left; color: var(--quiet); padding: 0; margin-right: 14px; }
main { padding: 8px 28px 40px; }
section { margin-top: 28px; padding: 20px 24px; background: #fff; border: 1px solid var(--line); border-radius: 8px; }
section > p { margin: 2px 0 14px; color: var(--quiet); }
.family { color: var(--accent); font-size: 13px; }
.pictures { display: flex; flex-wrap: wrap; gap: 24px; align-items: flex-start; }
figure { margin: 0; max-width: 100%; }
figure img { display: block; max-width: 100%; height: auto; box-shadow: 0 1px 6px rgb(0 0 0 / 25%); }
figcaption { margin-top: 6px; font-size: 13px; color: var(--quiet); }
</style>
</head>
<body>
<header>
<h1>OCCommonUi: the dialogs</h1>
)";

// Without the script all pictures show.
constexpr char kTail[] = R"(</main>
<script>
const show = () => {
  const chosen = name => document.querySelector(`input[name=${name}]:checked`).value;
  for (const figure of document.querySelectorAll('figure'))
    figure.hidden = ['language', 'dpi'].some(name => chosen(name) && figure.dataset[name] !== chosen(name));
};
for (const input of document.querySelectorAll('input')) input.addEventListener('change', show);
</script>
</body>
</html>
)";

struct Picture {
    std::string file;
    std::string part;
    std::string language;
    unsigned dpi = 96;
    std::uint32_t width = 0;  // pixels
    std::uint32_t height = 0;
};

using PicturesByDialog = std::map<std::string, std::vector<Picture>>;

std::string Escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

// English, the language of the defaults, comes first.
bool LanguageOrder(const std::string& a, const std::string& b) {
    return std::pair(a != "en", a) < std::pair(b != "en", b);
}

bool DisplayOrder(const Picture& a, const Picture& b) {
    if (a.language != b.language) return LanguageOrder(a.language, b.language);
    return std::tie(a.part, a.dpi) < std::tie(b.part, b.dpi);
}

/// Width and height stand in the file's first chunk. False for a file that is no PNG.
bool ReadSize(const fs::path& file, Picture& picture) {
    constexpr unsigned char kStart[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    unsigned char head[24] = {};
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(reinterpret_cast<char*>(head), sizeof(head)) || !std::equal(kStart, std::end(kStart), head)) {
        return false;
    }
    const auto number = [&](int at) {
        return static_cast<std::uint32_t>(head[at]) << 24 | static_cast<std::uint32_t>(head[at + 1]) << 16 |
               static_cast<std::uint32_t>(head[at + 2]) << 8 | head[at + 3];
    };
    picture.width = number(16);
    picture.height = number(20);
    return true;
}

std::vector<std::string> SplitAtDots(const std::string& name) {
    std::vector<std::string> parts(1);
    for (const char c : name) {
        if (c == '.') parts.emplace_back();
        if (c != '.') parts.back() += c;
    }
    return parts;
}

/// Adds a file that PictureName named; any other file is passed over.
void AddPicture(const fs::path& file, PicturesByDialog& pictures) {
    Picture picture;
    picture.file = ToUtf8(file.filename().wstring());
    const std::vector<std::string> parts = SplitAtDots(picture.file);
    if (parts.size() < 4 || parts.size() > 5 || parts.back() != "png" || !ReadSize(file, picture)) return;
    const bool hasPart = parts.size() == 5;
    if (hasPart) picture.part = parts[1];
    picture.language = parts[hasPart ? 2 : 1];
    picture.dpi = static_cast<unsigned>(std::strtoul(parts[hasPart ? 3 : 2].c_str(), nullptr, 10));
    if (picture.dpi > 0) pictures[parts[0]].push_back(picture);
}

std::string Figure(const Picture& picture) {
    const auto cssPixels = [&](std::uint32_t pixels) { return std::to_string(pixels * 96 / picture.dpi); };
    const std::string dpi = std::to_string(picture.dpi);
    const std::string language = Escaped(picture.language);
    std::string caption = language + ", " + dpi + " DPI";
    if (!picture.part.empty()) caption += ", " + Escaped(picture.part);
    return "<figure data-language=\"" + language + "\" data-dpi=\"" + dpi + "\"><img loading=\"lazy\" src=\"" +
           Escaped(picture.file) + "\" width=\"" + cssPixels(picture.width) + "\" height=\"" +
           cssPixels(picture.height) + "\" alt=\"" + caption + "\"><figcaption>" + caption + "</figcaption></figure>\n";
}

std::string Section(const std::string& family, const std::string& title, const std::string& shows,
                    std::vector<Picture> pictures) {
    if (pictures.empty()) return {};
    std::sort(pictures.begin(), pictures.end(), DisplayOrder);
    std::string html = "<section>\n<span class=\"family\">" + Escaped(family) + "</span>\n<h2>" + Escaped(title) +
                       "</h2>\n<p>" + Escaped(shows) + "</p>\n<div class=\"pictures\">\n";
    for (const Picture& picture : pictures)
        html += Figure(picture);
    return html + "</div>\n</section>\n";
}

std::string Choice(const std::string& legend, const std::string& name, const std::vector<std::string>& values) {
    std::string html = "<fieldset><legend>" + legend + "</legend>";
    html += "<label><input type=\"radio\" name=\"" + name + "\" value=\"\" checked> all</label>";
    for (const std::string& value : values) {
        html += "<label><input type=\"radio\" name=\"" + name + "\" value=\"" + Escaped(value) + "\"> " +
                Escaped(value) + "</label>";
    }
    return html + "</fieldset>\n";
}

std::string Choices(const PicturesByDialog& pictures) {
    std::set<std::string, decltype(&LanguageOrder)> languages(LanguageOrder);
    std::set<unsigned> resolutions;
    for (const auto& [dialog, ofDialog] : pictures) {
        for (const Picture& picture : ofDialog) {
            languages.insert(picture.language);
            resolutions.insert(picture.dpi);
        }
    }
    std::vector<std::string> dpis;
    dpis.reserve(resolutions.size());
    for (const unsigned dpi : resolutions)
        dpis.push_back(std::to_string(dpi));
    return Choice("Language", "language", {languages.begin(), languages.end()}) + Choice("DPI", "dpi", dpis);
}

std::string Page(PicturesByDialog pictures) {
    std::string html = kHead + Choices(pictures) + "</header>\n<main>\n";
    html += Section("Sample host", "The sample host", "Lists the dialogs and shows the record each works on.",
                    pictures[ToUtf8(kHostPicture)]);
    for (const DialogEntry& dialog : AllDialogs()) {
        html +=
            Section(ToUtf8(dialog.family), ToUtf8(dialog.title), ToUtf8(dialog.shows), pictures[ToUtf8(dialog.name)]);
    }
    return html + kTail;
}

Failure CannotWrite(const fs::path& file) {
    return {FailureKind::System, L"Cannot write " + file.wstring()};
}

}  // namespace

std::wstring PictureName(const std::wstring& dialog, const std::wstring& part, const std::wstring& language,
                         unsigned dpi) {
    return dialog + (part.empty() ? L"" : L"." + part) + L"." + language + L"." + std::to_wstring(dpi) + L".png";
}

Status WriteTourPage(const std::wstring& folder) {
    PicturesByDialog pictures;
    std::error_code error;
    for (const fs::directory_entry& file : fs::directory_iterator(folder, error))
        AddPicture(file.path(), pictures);

    const fs::path page = fs::path(folder) / L"index.html";
    const fs::path draft = fs::path(page).concat(L".new");
    std::ofstream stream(draft, std::ios::binary);
    stream << Page(std::move(pictures));
    stream.close();
    if (!stream) return CannotWrite(draft);
    fs::rename(draft, page, error);
    if (error) return CannotWrite(page);
    return Done{};
}

}  // namespace ochost
