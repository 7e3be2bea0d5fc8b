#include "host/HostWindow.h"

#include <windows.h>

#include <commctrl.h>
#include <orvatool/Gw.h>
#include <orvatool/ImageLib.h>
#include <orvatool/InterApp.h>

#include <array>
#include <filesystem>

#include "host/Zoom.h"
#include "host/host_ids.h"

namespace ochost {
namespace {

constexpr wchar_t kTemplate[] = L"HOSTWINDOW";
constexpr wchar_t kPositionKey[] = L"Window/SampleHost";

/// The application that the host calls the library for.
constexpr Lng::AppID kCaller = Lng::Hpv;

/// A label, with a mnemonic of its own, since the language may change while the window is open.
struct TextRow {
    int ctrlId;
    Lng::AppID app;
    int textId;
    const wchar_t* text;
};

constexpr TextRow kTexts[] = {
    {IDC_HOST_SEARCH_LBL,   kSharedTexts, 95002, L"&Search"       },
    {IDC_HOST_DIALOGS_LBL,  kSharedTexts, 95003, L"&Dialogs"      },
    {IDOK,                  kSharedTexts, 95004, L"Open dialog"   },
    {IDC_HOST_LANGUAGE_LBL, kSharedTexts, 95005, L"&Language"     },
    {IDC_HOST_BEFORE_LBL,   kSharedTexts, 95006, L"Record &before"},
    {IDC_HOST_AFTER_LBL,    kSharedTexts, 95007, L"Record &after" },
    {IDC_HOST_LOG_LBL,      kSharedTexts, 95008, L"Lo&g"          },
};

struct AnchorRow {
    int ctrlId;
    double left;
    double top;
    double right;
    double bottom;
};

// The list keeps its width; the records share what grows in width, records and log what grows in height.
constexpr AnchorRow kAnchors[] = {
    {IDC_HOST_DIALOGS,      0.0, 0.0, 0.0, 1.0},
    {IDOK,                  0.0, 1.0, 0.0, 1.0},
    {IDC_HOST_SHOWS,        0.0, 0.0, 1.0, 0.0},
    {IDC_HOST_LANGUAGE_LBL, 1.0, 0.0, 1.0, 0.0},
    {IDC_HOST_LANGUAGE,     1.0, 0.0, 1.0, 0.0},
    {IDC_HOST_BEFORE,       0.0, 0.0, 0.5, 0.5},
    {IDC_HOST_AFTER_LBL,    0.5, 0.0, 1.0, 0.0},
    {IDC_HOST_AFTER,        0.5, 0.0, 1.0, 0.5},
    {IDC_HOST_LOG_LBL,      0.0, 0.5, 1.0, 0.5},
    {IDC_HOST_LOG,          0.0, 0.5, 1.0, 1.0},
    {IDC_HOST_STATUS,       0.0, 1.0, 1.0, 1.0},
};

std::wstring LanguageName(const std::wstring& tag) {
    if (tag == Lng::kPseudoLanguage) return L"Pseudo";
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
    const int length =
        GetLocaleInfoEx(tag.c_str(), LOCALE_SNATIVELANGUAGENAME, name.data(), static_cast<int>(name.size()));
    return length > 0 ? name.data() : tag;
}

int TextWidth(HWND window, const ustr& text) {
    const HDC dc = GetDC(window);
    const HGDIOBJ font = reinterpret_cast<HGDIOBJ>(SendMessageW(window, WM_GETFONT, 0, 0));
    const HGDIOBJ previous = font ? SelectObject(dc, font) : nullptr;
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    if (previous) SelectObject(dc, previous);
    ReleaseDC(window, dc);
    return size.cx;
}

bool MouseIsOnItem(HWND tree) {
    const DWORD position = GetMessagePos();
    TVHITTESTINFO hit{};
    hit.pt = {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
    ScreenToClient(tree, &hit.pt);
    TreeView_HitTest(tree, &hit);
    return (hit.flags & TVHT_ONITEM) != 0;
}

template <class List>
int Count(const Result<List>& list) {
    return list ? static_cast<int>(list->size()) : 0;
}

}  // namespace

HostWindow::HostWindow(ProjectStore& project)
    : OCDialog(GetModuleHandleW(nullptr), nullptr), project_(project), size_{Count(project.Drawings()),
                                                                             Count(project.Rooms()),
                                                                             Count(project.Systems()),
                                                                             Count(project.PartTypes()),
                                                                             Count(project.Properties()),
                                                                             0} {
    LogZooms(this);
}

HostWindow::~HostWindow() {
    LogZooms(nullptr);
}

bool HostWindow::Open() {
    if (!Create(kTemplate, nullptr)) return false;
    ShowWindow(SW_SHOWNORMAL);
    return true;
}

void HostWindow::RunUntilClosed() {
    MSG message;
    while (IsWindow(hWnd()) && GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

Outcome HostWindow::Run(const DialogEntry& dialog) {
    Select(dialog);
    Before(L"");
    DialogContext context{hWnd(), kCaller, project_, *this};
    const Outcome outcome = RunDialog(dialog, context);
    ShowStatus();
    return outcome;
}

void HostWindow::SetAnchoring() {
    OCDialog::SetAnchoring();
    for (const AnchorRow& row : kAnchors)
        addCtrlAnchor(row.ctrlId, row.left, row.top, row.right, row.bottom);
}

bool HostWindow::OnCommand(unsigned __int64 wParam, __int64 lParam) {
    if (wParam == MAKEWPARAM(IDC_HOST_SEARCH, EN_CHANGE)) {
        search_.Filter(gwdlgtomemo(hWnd(), IDC_HOST_SEARCH));
        ShowSelected();
        return true;
    }
    if (wParam == MAKEWPARAM(IDC_HOST_LANGUAGE, CBN_SELCHANGE)) {
        SwitchLanguage();
        return true;
    }
    return OCDialog::OnCommand(wParam, lParam);
}

bool HostWindow::OnNotify(unsigned __int64 wParam, __int64 lParam) {
    const auto* header = reinterpret_cast<const NMHDR*>(lParam);
    if (header->idFrom == IDC_HOST_DIALOGS && header->code == TVN_SELCHANGEDW) ShowSelected();
    if (header->idFrom == IDC_HOST_DIALOGS && header->code == NM_DBLCLK && Selected() &&
        MouseIsOnItem(header->hwndFrom)) {
        // The tree is done with the click before the dialog opens.
        PostMessageW(hWnd(), WM_COMMAND, IDOK, 0);
        return true;
    }
    return OCDialog::OnNotify(wParam, lParam);
}

bool HostWindow::OnInitDialog() {
    OCDialog::OnInitDialog();
    SetKeys({VK_ESCAPE});
    FillDialogs();
    FillLanguages();
    SendDlgItemMessageW(hWnd(), IDC_HOST_LOG, EM_SETLIMITTEXT, 0, 0);
    Log(L"project " + project_.Path());
    const auto icon = reinterpret_cast<LPARAM>(ImageLib::GetIcon(ImageLib::Product, GetDpi()));
    SendMessageW(hWnd(), WM_SETICON, ICON_SMALL, icon);
    return true;
}

bool HostWindow::OnKeyDown(int virtualKey) {
    if (virtualKey != VK_ESCAPE) return OCDialog::OnKeyDown(virtualKey);
    // The main window is not closed by a key that is easily hit once too often.
    SetDlgItemTextW(hWnd(), IDC_HOST_SEARCH, L"");
    return true;
}

void HostWindow::OnOk() {
    if (const DialogEntry* dialog = Selected()) Run(*dialog);
}

void HostWindow::SetLanguage() {
    OCDialog::SetLanguage();
    setHeader(kSharedTexts, 95001, L"Sample host", kSharedTexts);
    for (const TextRow& row : kTexts)
        setItemText(row.app, row.ctrlId, row.textId, row.text);
    const ustr cue = Lng::text(kSharedTexts, 95010, L"Part of a name");
    SendDlgItemMessageW(hWnd(), IDC_HOST_SEARCH, EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(cue.c_str()));
    ShowStatus();
}

void HostWindow::SetPosition() {
    InterApp::HPV::Reg_GetWindowPos_(nullptr, kPositionKey, hWnd(), nullptr, nullptr, true);
}

void HostWindow::SavePosition() {
    InterApp::HPV::Reg_SetWindowPos_(nullptr, kPositionKey, hWnd());
}

ustr HostWindow::GetPositionRegistryKey() const {
    return kPositionKey;
}

void HostWindow::Before(const std::wstring& record) {
    SetDlgItemTextW(hWnd(), IDC_HOST_BEFORE, record.c_str());
}

void HostWindow::After(const std::wstring& record) {
    SetDlgItemTextW(hWnd(), IDC_HOST_AFTER, record.c_str());
}

void HostWindow::Log(const std::wstring& line) {
    PrintOut(line);
    const HWND log = GetDlgItem(IDC_HOST_LOG);
    const int end = GetWindowTextLengthW(log);
    SendMessageW(log, EM_SETSEL, static_cast<WPARAM>(end), end);
    SendMessageW(log, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>((line + L"\r\n").c_str()));
}

void HostWindow::FillDialogs() {
    std::wstring family;
    std::int64_t number = 0;
    for (const DialogEntry& dialog : AllDialogs()) {
        if (family != dialog.family) {
            family = dialog.family;
            dialogs_.push_back(0, 0, Lng::NoApp, ImageLib::NoImage, family.c_str());
        }
        dialogs_.push_back(1, ++number, Lng::NoApp, ImageLib::NoImage, dialog.title);
    }
    dialogs_.finalize();
    const HWND tree = GetDlgItem(IDC_HOST_DIALOGS);
    search_.Attach(tree, &dialogs_, GetDlgItem(IDC_HOST_SEARCH));
    for (HTREEITEM item = TreeView_GetRoot(tree); item; item = TreeView_GetNextSibling(tree, item)) {
        TreeView_Expand(tree, item, TVE_EXPAND);
    }
    Select(AllDialogs().front());
}

void HostWindow::FillLanguages() {
    for (const ustr& tag : Lng::GetLanguages())
        languages_.emplace_back(std::wstring_view(tag));
    languages_.emplace_back(Lng::kPseudoLanguage);
    ValueList choices;
    std::int64_t used = 0;
    for (const std::wstring& tag : languages_) {
        if (Lng::GetLanguage() == tag) used = static_cast<std::int64_t>(choices.size());
        choices.emplace_back(LanguageName(tag), static_cast<std::int64_t>(choices.size()));
    }
    gwfillcombo(hWnd(), IDC_HOST_LANGUAGE, choices, used);
}

void HostWindow::SwitchLanguage() {
    std::int64_t chosen = 0;
    if (!gwcombovalue(hWnd(), IDC_HOST_LANGUAGE, chosen)) return;
    const std::wstring& tag = languages_[static_cast<std::size_t>(chosen)];
    if (!Lng::SetUserLanguage(tag.c_str())) Log(L"the language could not be stored: " + tag);
    SetLanguage();
}

void HostWindow::ShowSelected() {
    const DialogEntry* dialog = Selected();
    SetDlgItemTextW(hWnd(), IDC_HOST_SHOWS, dialog ? dialog->shows : L"");
    EnableCtrl(IDOK, dialog != nullptr);
}

void HostWindow::ShowStatus() {
    const HWND status = GetDlgItem(IDC_HOST_STATUS);
    // The one of them that the dialogs change; when it cannot be read, as it was.
    if (const auto custom = project_.CustomProperties()) size_.customProperties = Count(custom);
    ustr counts;
    counts.format(Lng::text(kSharedTexts, 95009,
                            L"%d drawings, %d rooms, %d systems, %d part types, %d properties, %d custom properties")
                      .c_str(),
                  size_.drawings, size_.rooms, size_.systems, size_.partTypes, size_.properties,
                  size_.customProperties);
    const int edges[] = {TextWidth(status, counts) + Scale(16), -1};
    SendMessageW(status, SB_SETPARTS, std::size(edges), reinterpret_cast<LPARAM>(edges));
    SendMessageW(status, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(counts.c_str()));
    const std::wstring file = std::filesystem::path(project_.Path()).filename().wstring();
    SendMessageW(status, SB_SETTEXTW, 1, reinterpret_cast<LPARAM>(file.c_str()));
}

void HostWindow::Select(const DialogEntry& dialog) {
    search_.Select(&dialog - AllDialogs().data() + 1);
}

const DialogEntry* HostWindow::Selected() const {
    const HWND tree = GetDlgItem(IDC_HOST_DIALOGS);
    const TREE_INSERTITEM* row = search_.Row(TreeView_GetSelection(tree));
    return row && row->value > 0 ? &AllDialogs()[static_cast<std::size_t>(row->value - 1)] : nullptr;
}

}  // namespace ochost
