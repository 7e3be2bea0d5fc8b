#pragma once

#include <windows.h>

#include <occommonui/ObjectSelection.h>
#include <orvatool/OcListView2.h>

#include <vector>

#include "RuleTexts.h"

/// The list of filter rules in a selection's dialog: shows them, and lets the user add, edit and remove them.
class FilterRules {
public:
    FilterRules() = default;
    ~FilterRules();
    FilterRules(const FilterRules&) = delete;
    FilterRules& operator=(const FilterRules&) = delete;

    /// Takes over the list of the dialog; without such a control nothing is shown. One without the styles of
    /// OcListView2 is replaced by one that has them. Call when the dialog is initialised, and hands the messages of
    /// owner-drawn controls on: OnMeasureItem is asked for the height of the rows.
    void Attach(OCDialog* dlg, Lng::AppID app, const ObjectSelection::Dlg::Callback& callback, int listId);

    /// Shows the rules of a selection; the user's changes are made to this copy.
    void Show(const std::vector<ObjectSelection::Property>& rules);
    const std::vector<ObjectSelection::Property>& Rules() const { return rules_; }

    /// The column titles.
    void SetLanguage();

    /// The commands, as the context menu offers them. A new rule takes the place of the selected row.
    void Add();
    void Edit();
    void Delete();
    bool CanEdit() const;
    bool CanDelete() const;

    /// For the dialog's OnNotify: true when done with; an answer is set with the dialog's SetResult. Double click,
    /// Enter and F2 edit, Insert adds, Delete removes.
    bool OnNotify(const NMHDR* header);
    /// For the messages of owner-drawn controls: true when the item is this list's.
    bool OnMeasureItem(MEASUREITEMSTRUCT* item) const;
    bool OnDrawItem(const DRAWITEMSTRUCT* item) const;

    HWND ListWindow() const { return list_.hWnd(); }

private:
    static LRESULT CALLBACK ListProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                     DWORD_PTR self);

    void Detach();
    void AddTip();
    void FollowMouse(POINT place);
    bool AnswerTip(NMHDR* header);
    bool OnKey(int virtualKey);
    int EditedRow() const;
    void ShowRows(int selected);
    ustr TextOf(int row, int column);
    ustr Sentence(int row);

    OCDialog* dlg_ = nullptr;
    Lng::AppID app_ = Lng::NoApp;
    HostCallback host_;
    HostTexts texts_;
    std::vector<ObjectSelection::Property> rules_;
    OcListView2 list_;
    HWND tip_ = nullptr;  // from the first movement of the mouse on; goes with the list
    int tipRow_ = -1;     // under the mouse
    ustr tipText_;
};
