#pragma once

#include <windows.h>

#include <orvaspace/ustr.h>
#include <orvatool/Export.h>
#include <orvatool/FoldedTexts.h>

#include <cstdint>
#include <string_view>
#include <vector>

/// An edit control and a list view that shows the entries which match the edit's text, as the user types. The list
/// view of the template is a report list with LVS_OWNERDATA, so its length costs nothing.
///
/// In the edit control Up, Down, Page Up and Page Down move the list's selection, and Esc empties a search before it
/// cancels the dialog; Enter is the dialog's. A list of single selection always has a selected row while a search shows
/// any, so that Enter can take the first match. The object must live as long as the windows or be destroyed before
/// them.
class ORVATOOL_API ListFilterCtrl {
public:
    ListFilterCtrl() = default;
    ~ListFilterCtrl();
    ListFilterCtrl(const ListFilterCtrl&) = delete;
    ListFilterCtrl& operator=(const ListFilterCtrl&) = delete;

    /// One entry of the list: what is shown, and the caller's value.
    struct Entry {
        ustr text;
        std::int64_t value = 0;
    };
    /// Fills `entries` with all entries, in display order.
    using FillCallback = void (*)(void* context, std::vector<Entry>& entries);
    /// Decides whether an entry is shown for a search text. Null: every word of the search occurs in the entry's text,
    /// in any case, with or without accents.
    using MatchCallback = bool (*)(void* context, const Entry& entry, std::wstring_view search);

    /// Takes over the two controls; a list without columns gets one. `cue` is the grey text of the empty edit control,
    /// null for none. False when a control is missing or the list is no LVS_OWNERDATA list. Nothing is shown before
    /// Fill.
    bool Attach(HWND dlg, int editId, int listId, FillCallback fill, MatchCallback match, void* context,
                const wchar_t* cue = nullptr);

    /// Asks for the entries and shows those that match. Selected entries stay selected, by their value, while they are
    /// shown.
    void Fill();

    /// For the dialog's OnCommand: true when it was the edit control's change and the list was narrowed.
    bool OnCommand(WPARAM wParam, LPARAM lParam);
    /// For the dialog's OnNotify: texts of the rows and type-ahead. True when done with; `result` is then the answer.
    bool OnNotify(const NMHDR* header, LRESULT& result);

    HWND ListWindow() const { return list_; }
    std::size_t ShownCount() const { return shown_.size(); }
    /// The entry in a row of the list, null for none.
    const Entry* Shown(int row) const;
    /// The selected entry, null for none.
    const Entry* Selected() const;
    std::vector<const Entry*> Selection() const;
    /// Selects the first shown entry of this value and nothing else; false when none is shown.
    bool Select(std::int64_t value);

private:
    static LRESULT CALLBACK ListProc(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                     DWORD_PTR data);

    void Narrow();
    std::vector<std::uint32_t> Matches(std::wstring_view search, const std::vector<ustr>& words) const;
    void Show(std::vector<std::uint32_t> shown);
    void SelectEntries(const std::vector<std::int64_t>& values);

    HWND edit_ = nullptr;
    HWND list_ = nullptr;
    int editId_ = 0;
    FillCallback fill_ = nullptr;
    MatchCallback match_ = nullptr;
    void* context_ = nullptr;
    std::vector<Entry> entries_;
    FoldedTexts folded_;
    std::vector<std::uint32_t> shown_;  // indices of entries, by row
    std::vector<ustr> words_;           // the search that shown_ is the answer to
};
