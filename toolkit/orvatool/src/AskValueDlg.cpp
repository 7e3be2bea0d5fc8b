#include <orvatool/AskValueDlg.h>

#include <windows.h>

#include <commctrl.h>

#include <orvatool/Gw.h>
#include <orvatool/InterApp.h>
#include <orvatool/ListFilterCtrl.h>
#include <orvatool/OCDialog.h>

#include <algorithm>
#include <climits>

#include "../resources/orvatool_ids.h"
#include "Module.h"

namespace {

constexpr std::size_t kSearchedFrom = 16;  // shorter lists are seen at a glance
constexpr wchar_t kListPosition[] = L"Window/AskValueList";
constexpr wchar_t kTreePosition[] = L"Window/AskValueTree";

struct Question {
    HWND parent;
    Lng::AppID app;
    const ustr& title;
    const ustr& prompt;
};

// What the three dialogs have in common.
class AskDlg : public OCDialog {
public:
    explicit AskDlg(const Question& question) : OCDialog(ToolkitModule(), question.parent), question_(question) {}

    void SetLanguage() override {
        OCDialog::SetLanguage();
        ustr caption = question_.title;
        const ustr name = Lng::GetAppName(question_.app, false);
        if (!name.empty()) caption.append(L" - ").append(name);
        SetWindowTextW(hWnd(), caption.c_str());
        SetDlgItemTextW(hWnd(), IDC_ASKVALUE_PROMPT, question_.prompt.c_str());
        setItemText(kSharedTexts, IDOK, 90001, L"OK");
        setItemText(kSharedTexts, IDCANCEL, 90002, L"Cancel");
    }

protected:
    const Question& question() const { return question_; }

private:
    const Question question_;
};

class AskTextDlg : public AskDlg {
public:
    AskTextDlg(const Question& question, ustr& value, int maxChars)
        : AskDlg(question), value_(value), maxChars_(maxChars) {}

    bool OnInitDialog() override {
        AskDlg::OnInitDialog();
        gwmemotodlg(hWnd(), IDC_ASKVALUE_TEXT, value_.c_str(), maxChars_, 0);
        SetFocus(IDC_ASKVALUE_TEXT);
        return false;
    }

    int GetDataFromCtrls() override {
        value_ = gwdlgtomemo(hWnd(), IDC_ASKVALUE_TEXT, maxChars_);
        return 0;
    }

    void OnOk() override {
        if (TakeData()) AskDlg::OnOk();
    }

private:
    ustr& value_;
    const int maxChars_;
};

// A choice from a control that a search field above it narrows.
class AskChoiceDlg : public AskDlg {
public:
    AskChoiceDlg(const Question& question, int choiceId, const wchar_t* positionKey, bool searched)
        : AskDlg(question), choiceId_(choiceId), positionKey_(positionKey), searched_(searched) {}

    int Chosen() const { return chosen_; }

    bool OnInitDialog() override {
        AskDlg::OnInitDialog();
        const ustr cue = Lng::text(kSharedTexts, 90005, L"Search");
        FillChoices(cue.c_str());
        SetWindowTextW(Choice(), question().prompt.c_str());  // its accessible name
        if (!searched_) GiveChoicesTheSearchFieldsRoom();
        EnableCtrl(IDOK, ChosenNow() >= 0);
        SetFocus(searched_ ? IDC_ASKVALUE_FILTER : choiceId_);
        return false;
    }

    void SetAnchoring() override {
        AskDlg::SetAnchoring();
        addCtrlAnchor(IDC_ASKVALUE_PROMPT, false, false, true, false);
        addCtrlAnchor(IDC_ASKVALUE_FILTER, false, false, true, false);
        addCtrlAnchor(choiceId_, false, false, true, true);
        addCtrlAnchor(IDOK, true, true, true, true);
        addCtrlAnchor(IDCANCEL, true, true, true, true);
    }

    void SetPosition() override {
        InterApp::HPV::Reg_GetWindowPos_(nullptr, positionKey_, hWnd(), nullptr, nullptr, true);
    }
    void SavePosition() override { InterApp::HPV::Reg_SetWindowPos_(nullptr, positionKey_, hWnd()); }

    int GetDataFromCtrls() override {
        chosen_ = ChosenNow();
        return chosen_ < 0 ? choiceId_ : 0;
    }

    void OnOk() override {
        if (TakeData()) AskDlg::OnOk();
    }

protected:
    HWND Choice() const { return GetDlgItem(static_cast<short>(choiceId_)); }
    virtual void FillChoices(const wchar_t* cue) = 0;
    /// The index of the choice that is selected, -1 for none.
    virtual int ChosenNow() const = 0;

    void ChoiceChanged() { EnableCtrl(IDOK, ChosenNow() >= 0); }

private:
    void GiveChoicesTheSearchFieldsRoom() {
        RECT filter{};
        RECT choice{};
        GetWindowRect(GetDlgItem(IDC_ASKVALUE_FILTER), &filter);
        GetWindowRect(Choice(), &choice);
        choice.top = filter.top;
        MapWindowPoints(nullptr, hWnd(), reinterpret_cast<POINT*>(&choice), 2);
        ShowCtrl(IDC_ASKVALUE_FILTER, false);
        SetWindowPos(Choice(), nullptr, static_cast<int>(choice.left), static_cast<int>(choice.top),
                     static_cast<int>(choice.right - choice.left), static_cast<int>(choice.bottom - choice.top),
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }

    const int choiceId_;
    const wchar_t* const positionKey_;
    const bool searched_;
    int chosen_ = -1;
};

class AskListDlg : public AskChoiceDlg {
public:
    AskListDlg(const Question& question, const ValueList& choices, std::int64_t proposal)
        : AskChoiceDlg(question, IDC_ASKVALUE_LIST, kListPosition, choices.size() >= kSearchedFrom),
          choices_(choices),
          proposal_(proposal) {}

    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override {
        return list_.OnCommand(wParam, lParam) || AskChoiceDlg::OnCommand(wParam, lParam);
    }

    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override {
        const auto* const header = reinterpret_cast<const NMHDR*>(lParam);
        if (header->hwndFrom == Choice() && header->code == LVN_ITEMCHANGED) ChoiceChanged();
        if (header->hwndFrom == Choice() && header->code == NM_DBLCLK && list_.Selected()) OnOk();
        LRESULT result = 0;
        if (!list_.OnNotify(header, result)) return AskChoiceDlg::OnNotify(wParam, lParam);
        SetResult(result);
        return true;
    }

protected:
    void FillChoices(const wchar_t* cue) override {
        list_.Attach(hWnd(), IDC_ASKVALUE_FILTER, IDC_ASKVALUE_LIST, Entries, nullptr, this, cue);
        list_.Fill();
        const auto proposed = [this](const ValueList::value_type& choice) { return choice.second == proposal_; };
        const auto at = std::find_if(choices_.begin(), choices_.end(), proposed);
        if (at != choices_.end()) list_.Select(at - choices_.begin());
    }

    int ChosenNow() const override {
        const ListFilterCtrl::Entry* const entry = list_.Selected();
        return entry ? static_cast<int>(entry->value) : -1;
    }

private:
    // An entry's value is the choice's index, since values may occur more than once.
    static void Entries(void* context, std::vector<ListFilterCtrl::Entry>& entries) {
        const ValueList& choices = static_cast<const AskListDlg*>(context)->choices_;
        entries.reserve(choices.size());
        for (const auto& choice : choices) {
            entries.push_back({choice.first, static_cast<std::int64_t>(entries.size())});
        }
    }

    const ValueList& choices_;
    const std::int64_t proposal_;
    ListFilterCtrl list_;
};

class AskTreeDlg : public AskChoiceDlg {
public:
    AskTreeDlg(const Question& question, const TREE_INSERTLIST& choices, std::int64_t proposal)
        : AskChoiceDlg(question, IDC_ASKVALUE_TREE, kTreePosition, choices.size() >= kSearchedFrom),
          choices_(choices),
          proposal_(proposal) {}

    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override {
        if (LOWORD(wParam) != IDC_ASKVALUE_FILTER || HIWORD(wParam) != EN_CHANGE) {
            return AskChoiceDlg::OnCommand(wParam, lParam);
        }
        search_.Filter(gwdlgtomemo(hWnd(), IDC_ASKVALUE_FILTER));
        return true;
    }

    bool OnNotify(unsigned __int64 wParam, __int64 lParam) override {
        const auto* const header = reinterpret_cast<const NMHDR*>(lParam);
        if (header->hwndFrom != Choice()) return AskChoiceDlg::OnNotify(wParam, lParam);
        if (header->code == TVN_SELCHANGEDW) ChoiceChanged();
        if (header->code == NM_DBLCLK && gwTVpressedItem(Choice()) && IsLeaf()) OnOk();
        return AskChoiceDlg::OnNotify(wParam, lParam);
    }

protected:
    void FillChoices(const wchar_t* cue) override {
        search_.Attach(Choice(), &choices_, GetDlgItem(IDC_ASKVALUE_FILTER), cue);
        search_.Select(proposal_);
    }

    int ChosenNow() const override {
        const TREE_INSERTITEM* const row = search_.Row(TreeView_GetSelection(Choice()));
        return row ? static_cast<int>(row - &choices_[0]) : -1;
    }

private:
    // A double click on a branch opens it, as in every tree.
    bool IsLeaf() const {
        const HTREEITEM item = TreeView_GetSelection(Choice());
        return item && !TreeView_GetChild(Choice(), item);
    }

    const TREE_INSERTLIST& choices_;
    const std::int64_t proposal_;
    TreeSearch search_;
};

}  // namespace

int AskValueDlg::Run(HWND parent, Lng::AppID app, const ustr& title, const ustr& prompt, ustr& value,
                     std::size_t maxChars) {
    try {
        ustr text = value;
        AskTextDlg dlg({parent, app, title, prompt}, text, static_cast<int>(std::min<std::size_t>(maxChars, INT_MAX)));
        if (dlg.StartModal(L"ASKVALUETEXTDLG") != IDOK) return -1;
        value = std::move(text);
        return 0;
    } catch (...) {
        return -1;
    }
}

int AskValueDlg::Run(HWND parent, Lng::AppID app, const ustr& title, const ustr& prompt, const ValueList& choices,
                     std::int64_t& value) {
    try {
        AskListDlg dlg({parent, app, title, prompt}, choices, value);
        if (dlg.StartModal(L"ASKVALUELISTDLG") != IDOK) return -1;
        value = choices[static_cast<std::size_t>(dlg.Chosen())].second;
        return dlg.Chosen();
    } catch (...) {
        return -1;
    }
}

int AskValueDlg::Run(HWND parent, Lng::AppID app, const ustr& title, const ustr& prompt, const TREE_INSERTLIST& choices,
                     std::int64_t& value) {
    try {
        AskTreeDlg dlg({parent, app, title, prompt}, choices, value);
        if (dlg.StartModal(L"ASKVALUETREEDLG") != IDOK) return -1;
        value = choices[static_cast<std::size_t>(dlg.Chosen())].value;
        return dlg.Chosen();
    } catch (...) {
        return -1;
    }
}
