#include <orvatool/FileDlgUtil.h>

#include <windows.h>

#include <objbase.h>
#include <shlobj.h>
#include <shobjidl.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <orvatool/Lng.h>

#include "Win32.h"

namespace {

// COM for this thread in a scope. A host that runs the thread in another mode is left alone.
class ComScope {
public:
    ComScope() : entered_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}
    ~ComScope() {
        if (entered_) CoUninitialize();
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

private:
    bool entered_;
};

win32::Com<IFileDialog> MakeDialog(FileDlgUtil::Mode mode) {
    const CLSID& id = mode == FileDlgUtil::Mode::Save ? CLSID_FileSaveDialog : CLSID_FileOpenDialog;
    win32::Com<IFileDialog> dialog;
    const HRESULT made =
        CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IFileDialog, reinterpret_cast<void**>(dialog.put()));
    return SUCCEEDED(made) ? std::move(dialog) : win32::Com<IFileDialog>();
}

void SetOptions(IFileDialog& dialog, FileDlgUtil::Mode mode) {
    FILEOPENDIALOGOPTIONS options = 0;
    dialog.GetOptions(&options);
    options |= FOS_FORCEFILESYSTEM | FOS_NOCHANGEDIR | FOS_PATHMUSTEXIST;
    options |= mode == FileDlgUtil::Mode::Save ? FOS_OVERWRITEPROMPT | FOS_NOREADONLYRETURN : FOS_FILEMUSTEXIST;
    dialog.SetOptions(options);
}

void SetTypes(IFileDialog& dialog, const FileDlgUtil::CFilterSpecList& types) {
    std::vector<COMDLG_FILTERSPEC> specs;
    for (const auto& [label, pattern] : types)
        specs.push_back({label.c_str(), pattern.c_str()});
    if (!specs.empty()) dialog.SetFileTypes(static_cast<UINT>(specs.size()), specs.data());
    std::wstring_view extension(types.GetDefaultExt());
    extension.remove_prefix(std::min(extension.find_first_not_of(L"*."), extension.size()));
    if (!extension.empty()) dialog.SetDefaultExtension(ustr(extension).c_str());
}

// The folder and the name of the file that `path` proposes.
void SetProposal(IFileDialog& dialog, std::wstring_view path) {
    const std::size_t slash = path.find_last_of(L"\\/");
    const std::size_t nameStart = slash == std::wstring_view::npos ? 0 : slash + 1;
    dialog.SetFileName(ustr(path.substr(nameStart)).c_str());
    if (nameStart == 0) return;
    win32::Com<IShellItem> folder;
    const HRESULT found = SHCreateItemFromParsingName(ustr(path.substr(0, nameStart)).c_str(), nullptr, IID_IShellItem,
                                                      reinterpret_cast<void**>(folder.put()));
    if (SUCCEEDED(found) && folder) dialog.SetFolder(folder.get());
}

win32::CoMemory<wchar_t> PathOf(IFileDialog& dialog) {
    win32::Com<IShellItem> item;
    win32::CoMemory<wchar_t> path;
    if (FAILED(dialog.GetResult(item.put())) || !item) return {};
    return SUCCEEDED(item.get()->GetDisplayName(SIGDN_FILESYSPATH, path.put())) ? std::move(path)
                                                                                : win32::CoMemory<wchar_t>();
}

}  // namespace

namespace FileDlgUtil {

void CFilterSpecList::Add(const ustr& label, const ustr& pattern) {
    entries_.emplace_back(label, pattern);
}

void CFilterSpecList::Finalize(bool allFiles) {
    const auto isAllFiles = [](const Entry& entry) { return entry.second == L"*.*"; };
    if (!allFiles || std::any_of(begin(), end(), isAllFiles)) return;
    Add(Lng::text(kSharedTexts, 90007, L"All files (*.*)"), L"*.*");
}

void CFilterSpecList::SetDefaultExt(const wchar_t* extension) {
    defaultExt_ = extension;
}

bool SelectFile(HWND parent, Mode mode, const wchar_t* title, const CFilterSpecList& types, ustr_pre<260>& path) {
    const ComScope com;
    const win32::Com<IFileDialog> dialog = MakeDialog(mode);
    if (!dialog) return false;
    SetOptions(*dialog.get(), mode);
    SetTypes(*dialog.get(), types);
    SetProposal(*dialog.get(), path);
    if (title) dialog.get()->SetTitle(title);
    if (FAILED(dialog.get()->Show(parent))) return false;
    const win32::CoMemory<wchar_t> chosen = PathOf(*dialog.get());
    if (!chosen) return false;
    path = chosen.get();
    return true;
}

}  // namespace FileDlgUtil
