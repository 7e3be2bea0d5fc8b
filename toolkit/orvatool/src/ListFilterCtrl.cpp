#include <orvatool/ListFilterCtrl.h>

#include <commctrl.h>

#include <orvatool/Gw.h>
#include <orvatool/String.h>

#include <algorithm>
#include <numeric>
#include <unordered_set>
#include <utility>

#include "SearchEdit.h"
#include "VirtualList.h"

namespace {

constexpr UINT_PTR kListSubclass = 2;

// True when every text that holds all of `words` holds all of `former`, too.
bool Narrows(const std::vector<ustr>& words, const std::vector<ustr>& former) {
    return std::all_of(former.begin(), former.end(), [&](const ustr& old) {
        return std::any_of(words.begin(), words.end(), [&](const ustr& word) {
            return std::wstring_view(word).find(old) != std::wstring_view::npos;
        });
    });
}

// The one column is as wide as the list.
void FitColumn(HWND list) {
    RECT client{};
    GetClientRect(list, &client);
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 0, client.right);
}

bool HasOneColumn(HWND list) {
    const auto header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    return SendMessageW(header, HDM_GETITEMCOUNT, 0, 0) == 1;
}

}  // namespace

ListFilterCtrl::~ListFilterCtrl() {
    if (list_) RemoveWindowSubclass(list_, ListProc, kListSubclass);
}

bool ListFilterCtrl::Attach(HWND dlg, int editId, int listId, FillCallback fill, MatchCallback match, void* context,
                            const wchar_t* cue) {
    const HWND edit = GetDlgItem(dlg, editId);
    const HWND list = GetDlgItem(dlg, listId);
    if (!edit || !list || !fill || !(GetWindowLongPtrW(list, GWL_STYLE) & LVS_OWNERDATA)) return false;
    if (list_) RemoveWindowSubclass(list_, ListProc, kListSubclass);
    edit_ = edit;
    list_ = list;
    editId_ = editId;
    fill_ = fill;
    match_ = match;
    context_ = context;
    AttachSearchEdit(edit, list, cue);
    SetWindowSubclass(list, ListProc, kListSubclass, reinterpret_cast<DWORD_PTR>(this));
    SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER,
                 LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
    LVCOLUMNW column{};
    const auto header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    if (SendMessageW(header, HDM_GETITEMCOUNT, 0, 0) <= 0) {
        SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    }
    return true;
}

void ListFilterCtrl::Fill() {
    if (!list_) return;
    std::vector<Entry> entries;
    fill_(context_, entries);
    std::vector<std::int64_t> selected;
    for (const Entry* const entry : Selection())
        selected.push_back(entry->value);
    folded_.Assign(entries, [](const Entry& entry) -> const ustr& { return entry.text; });
    entries_ = std::move(entries);
    shown_.resize(entries_.size());
    std::iota(shown_.begin(), shown_.end(), 0u);
    words_.clear();
    const ustr search = gwdlgtomemo(GetParent(edit_), editId_);
    std::vector<ustr> words = String::SearchWords(search);
    Show(Matches(search, words));
    words_ = std::move(words);
    SelectEntries(selected);
}

bool ListFilterCtrl::OnCommand(WPARAM wParam, LPARAM lParam) {
    if (!edit_ || reinterpret_cast<HWND>(lParam) != edit_ || HIWORD(wParam) != EN_CHANGE) return false;
    Narrow();
    return true;
}

bool ListFilterCtrl::OnNotify(const NMHDR* header, LRESULT& result) {
    if (!header || !list_ || header->hwndFrom != list_) return false;
    result = 0;
    if (header->code == LVN_GETDISPINFOW) {
        LVITEMW& item = reinterpret_cast<NMLVDISPINFOW*>(const_cast<NMHDR*>(header))->item;
        const Entry* const entry = Shown(item.iItem);
        AnswerText(item, entry && item.iSubItem == 0 ? std::wstring_view(entry->text) : std::wstring_view());
        return true;
    }
    if (header->code == LVN_ODFINDITEMW) {
        const auto textOf = [this](int row) -> const ustr& { return Shown(row)->text; };
        result = FindRow(*reinterpret_cast<const NMLVFINDITEMW*>(header), static_cast<int>(shown_.size()), textOf);
        return true;
    }
    return false;
}

const ListFilterCtrl::Entry* ListFilterCtrl::Shown(int row) const {
    const auto index = static_cast<std::size_t>(row);
    return row >= 0 && index < shown_.size() ? &entries_[shown_[index]] : nullptr;
}

const ListFilterCtrl::Entry* ListFilterCtrl::Selected() const {
    return list_ ? Shown(NextSelected(list_, -1)) : nullptr;
}

std::vector<const ListFilterCtrl::Entry*> ListFilterCtrl::Selection() const {
    std::vector<const Entry*> entries;
    for (int row = list_ ? NextSelected(list_, -1) : -1; row >= 0; row = NextSelected(list_, row)) {
        if (const Entry* const entry = Shown(row)) entries.push_back(entry);
    }
    return entries;
}

bool ListFilterCtrl::Select(std::int64_t value) {
    const auto at =
        std::find_if(shown_.begin(), shown_.end(), [&](std::uint32_t index) { return entries_[index].value == value; });
    if (at == shown_.end()) return false;
    SelectOnly(list_, static_cast<int>(at - shown_.begin()));
    return true;
}

LRESULT CALLBACK ListFilterCtrl::ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                          DWORD_PTR data) {
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(list, ListProc, id);
        auto* const self = reinterpret_cast<ListFilterCtrl*>(data);
        self->list_ = self->edit_ = nullptr;
    }
    const LRESULT result = DefSubclassProc(list, message, wParam, lParam);
    if (message == WM_SIZE && HasOneColumn(list)) FitColumn(list);
    return result;
}

void ListFilterCtrl::Narrow() {
    const ustr search = gwdlgtomemo(GetParent(edit_), editId_);
    std::vector<ustr> words = String::SearchWords(search);
    if (!match_ && words == words_) return;
    std::vector<std::int64_t> selected;
    for (const Entry* const entry : Selection())
        selected.push_back(entry->value);
    Show(Matches(search, words));
    words_ = std::move(words);
    SelectEntries(selected);
}

// Looks at all entries, or only at those shown when the search has become stricter.
std::vector<std::uint32_t> ListFilterCtrl::Matches(std::wstring_view search, const std::vector<ustr>& words) const {
    std::vector<std::uint32_t> all;
    const bool stricter = !match_ && Narrows(words, words_);
    if (!stricter) {
        all.resize(entries_.size());
        std::iota(all.begin(), all.end(), 0u);
    }
    const std::vector<std::uint32_t>& candidates = stricter ? shown_ : all;
    if (!match_ && words.empty()) return candidates;
    std::vector<std::uint32_t> matches;
    for (const std::uint32_t index : candidates) {
        const bool matched =
            match_ ? match_(context_, entries_[index], search) : String::MatchesFolded(folded_[index], words);
        if (matched) matches.push_back(index);
    }
    return matches;
}

void ListFilterCtrl::Show(std::vector<std::uint32_t> shown) {
    const gwRedrawOff quiet(list_);
    SelectOnly(list_, -1);
    shown_ = std::move(shown);
    SendMessageW(list_, LVM_SETITEMCOUNT, shown_.size(), 0);
    if (HasOneColumn(list_)) FitColumn(list_);
}

// Selects the shown entries of these values, else the first match of a search where there is always a selection.
void ListFilterCtrl::SelectEntries(const std::vector<std::int64_t>& values) {
    const std::unordered_set<std::int64_t> wanted(values.begin(), values.end());
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED;
    const bool single = (GetWindowLongPtrW(list_, GWL_STYLE) & LVS_SINGLESEL) != 0;
    int first = -1;
    for (std::size_t row = 0; !wanted.empty() && row < shown_.size(); ++row) {
        if (!wanted.count(entries_[shown_[row]].value)) continue;
        SendMessageW(list_, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
        if (first < 0) first = static_cast<int>(row);
        if (single) break;
    }
    if (first < 0 && (!single || words_.empty() || shown_.empty())) return;
    if (first < 0) return SelectOnly(list_, 0);
    item.state = item.stateMask = LVIS_FOCUSED;
    SendMessageW(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(first), reinterpret_cast<LPARAM>(&item));
    SendMessageW(list_, LVM_ENSUREVISIBLE, static_cast<WPARAM>(first), FALSE);
}
