#include <benchmark/benchmark.h>
#include <occommonui/CustomProperty.h>
#include <orvatool/ImageLib.h>
#include <orvatool/InterApp.h>
#include <orvatool/OCDialog.h>
#include <windows.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "customproperty_ids.h"
#include "host/driver/UiDriver.h"

// Opening, painting and closing the custom property dialog with 250 properties, against the same template run by
// DialogBoxParam and filled by bare messages.

namespace {

constexpr int kProperties = 250;
constexpr int kPerGroup = 25;
constexpr wchar_t kFormat[] = L"Size {1|mm} x {2|mm}, flow {3}, {4}";
constexpr UINT kPaintAndClose = WM_APP + 1;

TREE_INSERTLIST Properties() {
    TREE_INSERTLIST list;
    for (int i = 0; i < kProperties; ++i) {
        if (i % kPerGroup == 0) list.push_back(0, 0, Lng::Hpv, ImageLib::PropertyGroup, ustr(L"Property group"));
        ustr name;
        name.format(L"Property number %d", i);
        list.push_back(1, i + 1, Lng::Hpv, ImageLib::Property, name);
    }
    return list;
}

// The dialog that becomes active is painted at once and closed by Cancel, in the same way for both.
HWND watcher = nullptr;

LRESULT CALLBACK WatchProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kPaintAndClose) return DefWindowProcW(window, message, wParam, lParam);
    const HWND dlg = reinterpret_cast<HWND>(wParam);
    RedrawWindow(dlg, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    PostMessageW(dlg, WM_COMMAND, IDCANCEL, 0);
    return 0;
}

LRESULT CALLBACK ActivationHook(int code, WPARAM wParam, LPARAM lParam) {
    wchar_t name[32];
    if (code == HCBT_ACTIVATE && GetClassNameW(reinterpret_cast<HWND>(wParam), name, 32) &&
        !lstrcmpW(name, L"#32770")) {
        PostMessageW(watcher, kPaintAndClose, wParam, 0);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

void Watch() {
    if (watcher) return;
    SetProductKey(L"Software\\OrvaCADBench");
    watcher = CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(watcher, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(WatchProcedure));
    SetWindowsHookExW(WH_CBT, ActivationHook, nullptr, GetCurrentThreadId());
}

void Ours(benchmark::State& state) {
    Watch();
    const TREE_INSERTLIST properties = Properties();
    CustomProperty::Data data;
    data.name = L"Size and flow";
    data.format = kFormat;
    for (auto _ : state)
        CustomProperty::Dlg::Options(nullptr, Lng::Hpv, &properties, data);
}

void FillTreeBare(HWND tree, const TREE_INSERTLIST& properties) {
    SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
    HTREEITEM group = nullptr;
    for (const TREE_INSERTITEM& row : properties) {
        TVINSERTSTRUCTW insert{};
        insert.hParent = row.level ? group : TVI_ROOT;
        insert.hInsertAfter = TVI_LAST;
        insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
        insert.item.pszText = const_cast<wchar_t*>(row.text.c_str());
        insert.item.lParam = row.value;
        const HTREEITEM item = TreeView_InsertItem(tree, &insert);
        if (!row.level) group = item;
    }
    SendMessageW(tree, WM_SETREDRAW, TRUE, 0);
}

INT_PTR CALLBACK BareProcedure(HWND dlg, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dlg, 0);
    if (message != WM_INITDIALOG) return FALSE;
    SetWindowTextW(dlg, L"Custom property - OrvaCAD HPV");
    for (int id = IDC_CUSTOMPROPERTY_NAME_LBL; id <= IDC_CUSTOMPROPERTY_PREVIEW; ++id) {
        if (id != IDC_CUSTOMPROPERTY_TREE && id != IDC_CUSTOMPROPERTY_LIST) SetDlgItemTextW(dlg, id, L"&Some text");
    }
    SetDlgItemTextW(dlg, IDOK, L"OK");
    SetDlgItemTextW(dlg, IDCANCEL, L"Cancel");
    FillTreeBare(GetDlgItem(dlg, IDC_CUSTOMPROPERTY_TREE), *reinterpret_cast<const TREE_INSERTLIST*>(lParam));
    const HWND list = GetDlgItem(dlg, IDC_CUSTOMPROPERTY_LIST);
    for (int column = 0; column < 2; ++column) {
        LVCOLUMNW info{};
        info.mask = LVCF_WIDTH | LVCF_TEXT;
        info.cx = 120;
        info.pszText = const_cast<wchar_t*>(L"Column");
        ListView_InsertColumn(list, column, &info);
    }
    ListView_SetItemCount(list, 8);
    return TRUE;
}

void Bare(benchmark::State& state) {
    Watch();
    const TREE_INSERTLIST properties = Properties();
    const CommonControlsScope commonControls;
    const HMODULE library = GetModuleHandleW(L"occommonui.dll");
    for (auto _ : state) {
        DialogBoxParamW(library, L"CUSTOMPROPERTYDLG", nullptr, BareProcedure, reinterpret_cast<LPARAM>(&properties));
    }
}

// Not a time: what 500 openings leave behind.
void Handles(benchmark::State& state) {
    Watch();
    const TREE_INSERTLIST properties = Properties();
    CustomProperty::Data data;
    const auto open = [&] { CustomProperty::Dlg::Options(nullptr, Lng::Hpv, &properties, data); };
    for (int i = 0; i < 3; ++i)
        open();
    const uidriver::Handles before = uidriver::CountHandles();
    for (auto _ : state)
        open();
    const uidriver::Handles after = uidriver::CountHandles();
    state.counters["gdi"] = after.gdi - before.gdi;
    state.counters["menus"] = after.menus - before.menus;
    state.counters["windows"] = after.windows - before.windows;
}

BENCHMARK(Ours)->Name("OpenCustomProperty/ours")->Unit(benchmark::kMillisecond)->MinTime(0.3);
BENCHMARK(Bare)->Name("OpenCustomProperty/bare")->Unit(benchmark::kMillisecond)->MinTime(0.3);
BENCHMARK(Handles)->Name("HandlesAfter500Openings")->Unit(benchmark::kMillisecond)->Iterations(500)->Repetitions(1);

}  // namespace
