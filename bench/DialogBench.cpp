#include <benchmark/benchmark.h>
#include <occommonui/CustomProperty.h>
#include <orvatool/ImageLib.h>
#include <orvatool/InterApp.h>
#include <orvatool/OCDialog.h>
#include <windows.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "BareList.h"
#include "BareTree.h"
#include "PaintAndClose.h"
#include "Paired.h"
#include "customproperty_ids.h"
#include "host/driver/UiDriver.h"

// Opening, painting and closing the custom property dialog with 250 properties, against the same template run by
// DialogBoxParam and filled by bare messages.

namespace {

constexpr int kProperties = 250;
constexpr int kPerGroup = 25;
constexpr wchar_t kFormat[] = L"Size {1|mm} x {2|mm}, flow {3}, {4}";
constexpr int kItems = 8;  // of this format

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

INT_PTR DrawBare(const DRAWITEMSTRUCT& item) {
    const INT_PTR drawn = DrawRowBare(item, L"Property", {20, 140});
    ImageList_Draw(ImageLib::GetImageList(), ImageLib::GetImage(ImageLib::Property), item.hDC, item.rcItem.left,
                   item.rcItem.top, ILD_TRANSPARENT);
    return drawn;
}

// The same content: as many rows, the same images.
INT_PTR CALLBACK BareProcedure(HWND dlg, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dlg, 0);
    if (message == WM_DRAWITEM) return DrawBare(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    if (message != WM_INITDIALOG) return FALSE;
    SetWindowTextW(dlg, L"Custom property - OrvaCAD HPV");
    for (int id = IDC_CUSTOMPROPERTY_NAME_LBL; id <= IDC_CUSTOMPROPERTY_PREVIEW; ++id) {
        if (id != IDC_CUSTOMPROPERTY_TREE && id != IDC_CUSTOMPROPERTY_LIST) SetDlgItemTextW(dlg, id, L"&Some text");
    }
    SetDlgItemTextW(dlg, IDOK, L"OK");
    SetDlgItemTextW(dlg, IDCANCEL, L"Cancel");
    const HWND tree = GetDlgItem(dlg, IDC_CUSTOMPROPERTY_TREE);
    TreeView_SetImageList(tree, ImageLib::GetImageList(), TVSIL_NORMAL);
    FillTreeBare(tree, *reinterpret_cast<const TREE_INSERTLIST*>(lParam));
    const HWND list = GetDlgItem(dlg, IDC_CUSTOMPROPERTY_LIST);
    AddColumnsBare(list, {120, 120});
    ListView_SetItemCount(list, kItems);
    return TRUE;
}

class Opening {
public:
    Opening() {
        SetProductKey(L"Software\\OrvaCADBench");
        PaintAndCloseDialogs();
        data_.name = L"Size and flow";
        data_.format = kFormat;
    }

    void Ours() { CustomProperty::Dlg::Options(nullptr, Lng::Hpv, &properties_, data_); }

    void Bare() const {
        const CommonControlsScope commonControls;
        DialogBoxParamW(GetModuleHandleW(L"occommonui.dll"), L"CUSTOMPROPERTYDLG", nullptr, BareProcedure,
                        reinterpret_cast<LPARAM>(&properties_));
    }

private:
    const TREE_INSERTLIST properties_ = Properties();
    CustomProperty::Data data_;
};

void Open(benchmark::State& state) {
    Opening opening;
    RunPaired(
        state, [&] { opening.Ours(); }, [&] { opening.Bare(); });
}

// Not a time: by how much the handles in use grow over 500 openings, after what is made once and kept.
void Handles(benchmark::State& state) {
    Opening opening;
    for (int i = 0; i < 50; ++i)
        opening.Ours();
    const uidriver::Handles before = uidriver::CountHandles();
    for (auto _ : state)
        opening.Ours();
    const uidriver::Handles after = uidriver::CountHandles();
    state.counters["gdi"] = after.gdi - before.gdi;
    state.counters["menus"] = after.menus - before.menus;
    state.counters["windows"] = after.windows - before.windows;
}

BENCHMARK(Open)->Name("OpenCustomProperty")->Unit(benchmark::kMillisecond)->Iterations(150)->Repetitions(1);
BENCHMARK(Handles)->Name("HandlesAfter500Openings")->Unit(benchmark::kMillisecond)->Iterations(500)->Repetitions(1);

}  // namespace
