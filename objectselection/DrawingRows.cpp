#include "DrawingRows.h"

#include <windows.h>

#include <orvatool/String.h>

#include <algorithm>
#include <numeric>
#include <string_view>
#include <unordered_map>

using ObjectSelection::Dlg::DrawingEntry;

namespace {

constexpr wchar_t kSeparators[] = L"\\/";

// The names of the folders that a file lies in, outermost first.
using Folders = std::vector<std::wstring_view>;

std::wstring_view FolderPath(std::wstring_view path) {
    const std::size_t end = path.find_last_of(kSeparators);
    return end == path.npos ? std::wstring_view() : path.substr(0, end);
}

std::wstring_view FileName(std::wstring_view path) {
    const std::size_t end = path.find_last_of(kSeparators);
    return end == path.npos ? path : path.substr(end + 1);
}

Folders FoldersOf(std::wstring_view path) {
    Folders folders;
    std::wstring_view rest = FolderPath(path);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of(kSeparators), rest.size());
        if (end > 0) folders.push_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return folders;
}

bool SameName(std::wstring_view a, std::wstring_view b) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

// How many folders from the outermost on are the same.
std::size_t Common(const Folders& a, const Folders& b) {
    const auto differs = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), SameName);
    return static_cast<std::size_t>(differs.first - a.begin());
}

bool Before(const Folders& a, const Folders& b) {
    const std::size_t at = Common(a, b);
    if (at == a.size() || at == b.size()) return a.size() < b.size();
    return String::CompareForUser(a[at], b[at]) < 0;
}

ustr NameOf(const DrawingEntry& drawing) {
    return drawing.title.empty() ? ustr(FileName(drawing.drawing.path)) : ustr(drawing.title);
}

std::vector<std::size_t> ShownDrawings(const std::vector<DrawingEntry>& drawings, const ustr& current,
                                       const DrawingView& view) {
    std::vector<std::size_t> shown;
    const Folders here = FoldersOf(current);
    for (std::size_t i = 0; i < drawings.size(); ++i) {
        const bool wanted = !view.currentFolderOnly || current.empty();
        const Folders folders = wanted ? Folders() : FoldersOf(drawings[i].drawing.path);
        if (wanted || (folders.size() == here.size() && Common(folders, here) == here.size())) shown.push_back(i);
    }
    return shown;
}

std::vector<DrawingRow> FlatRows(const std::vector<DrawingEntry>& drawings, const std::vector<std::size_t>& shown) {
    std::unordered_map<ustr, int> uses;
    for (const std::size_t i : shown)
        ++uses[NameOf(drawings[i])];
    std::vector<DrawingRow> rows;
    for (const std::size_t i : shown) {
        ustr text = NameOf(drawings[i]);
        const std::wstring_view folder = FolderPath(drawings[i].drawing.path);
        if (uses[text] > 1 && !folder.empty()) text.append(L" (").append(folder).append(L')');
        rows.push_back({0, text, i});
    }
    return rows;
}

// The folders that all have in common are left out, but for the innermost of them.
std::size_t SkippedFolders(const std::vector<Folders>& folders, const std::vector<std::size_t>& shown) {
    if (shown.empty()) return 0;
    const Folders& first = folders[shown.front()];
    std::size_t common = first.size();
    for (const std::size_t i : shown)
        common = std::min(common, Common(first, folders[i]));
    return common == 0 ? 0 : common - 1;
}

std::vector<DrawingRow> FolderRows(const std::vector<DrawingEntry>& drawings, std::vector<std::size_t> shown) {
    std::vector<Folders> folders;
    folders.reserve(drawings.size());
    for (const DrawingEntry& drawing : drawings)
        folders.push_back(FoldersOf(drawing.drawing.path));
    std::stable_sort(shown.begin(), shown.end(),
                     [&](std::size_t a, std::size_t b) { return Before(folders[a], folders[b]); });
    const std::size_t skipped = SkippedFolders(folders, shown);
    std::vector<DrawingRow> rows;
    const Folders* open = nullptr;
    for (const std::size_t i : shown) {
        const Folders& path = folders[i];
        for (std::size_t at = std::max(skipped, open ? Common(*open, path) : 0); at < path.size(); ++at)
            rows.push_back({static_cast<int>(at - skipped), ustr(path[at]), DrawingRow::kFolder});
        const std::size_t level = path.size() < skipped ? 0 : path.size() - skipped;
        rows.push_back({static_cast<int>(level), NameOf(drawings[i]), i});
        open = &path;
    }
    return rows;
}

}  // namespace

DrawingView& SharedDrawingView() {
    static DrawingView view;
    return view;
}

std::vector<DrawingRow> ArrangeDrawings(const std::vector<DrawingEntry>& drawings, const ustr& current,
                                        const DrawingView& view) {
    std::vector<std::size_t> shown = ShownDrawings(drawings, current, view);
    return view.asFolders ? FolderRows(drawings, std::move(shown)) : FlatRows(drawings, shown);
}
