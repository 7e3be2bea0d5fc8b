#include "LngCatalogue.h"

#include <windows.h>

#include <shlwapi.h>
#include <ticpp.h>

#include <algorithm>
#include <charconv>
#include <exception>
#include <string>
#include <utility>

#include "Module.h"
#include "Win32.h"

namespace {

constexpr wchar_t kFolder[] = L"lang\\";
constexpr wchar_t kExtension[] = L".xlf";

// The folder of the toolkit, with its last backslash.
std::wstring ToolkitFolder() {
    std::wstring path(MAX_PATH, L'\0');
    while (true) {
        const DWORD size = GetModuleFileNameW(ToolkitModule(), path.data(), static_cast<DWORD>(path.size()));
        if (size < path.size()) {
            path.resize(size);
            return path.substr(0, path.rfind(L'\\') + 1);
        }
        path.resize(path.size() * 2);
    }
}

ustr CatalogueFile(std::wstring_view language) {
    return ustr(ToolkitFolder()).append(kFolder).append(language).append(kExtension);
}

// Reads all of `text` as a number.
bool ReadNumber(std::string_view text, std::int32_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

LngCatalogue LngCatalogue::Load(const ustr& language) {
    LngCatalogue catalogue;
    try {
        catalogue.Read(CatalogueFile(language));
    } catch (const std::exception&) {
        catalogue.units_.clear();
    }
    return catalogue;
}

std::vector<ustr> LngCatalogue::Languages() {
    std::vector<ustr> languages;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(CatalogueFile(L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return languages;
    const win32::Find owner(search);
    do {
        // The system's pattern also finds longer extensions, by their short names.
        const wchar_t* extension = PathFindExtensionW(found.cFileName);
        if (_wcsicmp(extension, kExtension) != 0) continue;
        languages.emplace_back(found.cFileName, static_cast<std::size_t>(extension - found.cFileName));
    } while (FindNextFileW(search, &found));
    std::sort(languages.begin(), languages.end());
    return languages;
}

const ustr* LngCatalogue::Find(Lng::AppID app, int textId) const {
    const std::uint64_t key = Key(app, textId);
    const auto before = [](const Unit& unit, std::uint64_t wanted) { return unit.key < wanted; };
    const auto unit = std::lower_bound(units_.begin(), units_.end(), key, before);
    return unit != units_.end() && unit->key == key ? &unit->target : nullptr;
}

std::uint64_t LngCatalogue::Key(Lng::AppID app, int textId) {
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(app)) << 32 | static_cast<std::uint32_t>(textId);
}

void LngCatalogue::Read(const ustr& file) {
    ticpp::Document document;
    document.LoadFile(orvaspace::ToUtf8(file));
    const ticpp::Element* root = document.FirstChildElement("xliff");
    ticpp::Iterator<ticpp::Element> part("file");
    for (part = part.begin(root); part != part.end(); ++part) {
        ticpp::Iterator<ticpp::Element> unit("trans-unit");
        for (unit = unit.begin(part->FirstChildElement("body")); unit != unit.end(); ++unit) {
            const ticpp::Element* target = unit->FirstChildElement("target", false);
            if (target) Add(unit->GetAttribute("id"), target->GetText(false));
        }
    }
    std::stable_sort(units_.begin(), units_.end(), [](const Unit& a, const Unit& b) { return a.key < b.key; });
}

void LngCatalogue::Add(std::string_view id, std::string_view target) {
    const std::size_t colon = id.find(':');
    std::int32_t app = 0;
    std::int32_t textId = 0;
    if (colon == std::string_view::npos || target.empty()) return;
    if (!ReadNumber(id.substr(0, colon), app) || !ReadNumber(id.substr(colon + 1), textId)) return;
    units_.push_back({Key(static_cast<Lng::AppID>(app), textId), orvaspace::ToWide(target)});
}
