#include <orvatool/MiscUtil.h>

#include <windows.h>

#include <orvatool/FileDlgUtil.h>

void* MiscUtil::GetProcAddress(const wchar_t* module, const char* entry) {
    if (!module || !*module || !entry) return nullptr;
    const HMODULE loaded = GetModuleHandleW(module);
    return loaded ? reinterpret_cast<void*>(::GetProcAddress(loaded, entry)) : nullptr;
}

bool MiscUtil::SelectXmlFile(HWND parent, Lng::AppID app, bool save, ustr_pre<260>& path) {
    FileDlgUtil::CFilterSpecList types;
    types.Add(Lng::text(kSharedTexts, 90006, L"XML files (*.xml)"), L"*.xml");
    types.Finalize(true);
    types.SetDefaultExt(L"xml");
    const ustr title = save ? Lng::makeDlgHeader(kSharedTexts, 90012, L"Save as an XML file", app)
                            : Lng::makeDlgHeader(kSharedTexts, 90008, L"Select an XML file", app);
    const auto mode = save ? FileDlgUtil::Mode::Save : FileDlgUtil::Mode::Open;
    return FileDlgUtil::SelectFile(parent, mode, title.c_str(), types, path);
}
