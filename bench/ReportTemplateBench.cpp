#include <benchmark/benchmark.h>
#include <occommonui/ReportTemplate.h>
#include <orvatool/ImageLib.h>
#include <orvatool/InterApp.h>
#include <orvatool/OCDialog.h>
#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <string>

#include "BareList.h"
#include "BareTree.h"
#include "PaintAndClose.h"
#include "Paired.h"
#include "report_ids.h"

// Opening, painting and closing the report template dialog with 900 part types in 60 groups, every third of them
// included, and 250 attributes, against the same template run by DialogBoxParam and filled by bare messages.

namespace {

constexpr int kGroups = 60;
constexpr int kParts = 15;  // in each
constexpr int kAttributes = 250;
constexpr int kColumns = 12;
constexpr int kIncluded = 3;  // of so many groups the first is

ReportTemplate::Context Offer() {
    ReportTemplate::Context context;
    int id = 1000;
    ustr name;
    for (int group = 0; group < kGroups; ++group) {
        name.format(L"Part group %d", group);
        context.objects.push_back(0, group + 1, Lng::Hpv, ImageLib::PropertyGroup, name);
        for (int part = 0; part < kParts; ++part) {
            name.format(L"Part type %d", ++id);
            context.objects.push_back(1, id, Lng::Hpv, ImageLib::Property, name);
        }
    }
    for (int i = 1; i <= kAttributes; ++i) {
        name.format(L"Attribute number %d", i);
        context.properties.emplace_back(name, i);
    }
    return context;
}

ReportDefinitionType Definition() {
    ReportDefinitionType definition;
    SetFixedText<&ReportDefinitionType::name>(definition, L"Bill of materials");
    SetFixedText<&ReportDefinitionType::description>(definition, L"Ducts and pipes by size");
    for (int group = 0; group < kGroups; group += kIncluded)
        definition.groups[definition.groupCount++] = group + 1;
    for (; definition.columnCount < kColumns; ++definition.columnCount) {
        oce_columntype& column = definition.columns[definition.columnCount];
        column.propId = static_cast<std::int16_t>(definition.columnCount + 1);
        column.len = 30;
        SetFixedText<&oce_columntype::hdr1>(column, L"Header");
    }
    return definition;
}

UINT StateOf(const TREE_INSERTITEM& row) {
    const std::int64_t group = row.level ? (row.value - 1001) / kParts : row.value - 1;
    return group % kIncluded ? 1 : 2;
}

void FillListsBare(HWND dlg) {
    const HWND attributes = GetDlgItem(dlg, IDC_REPORTTEMPLATE_ATTRIBUTES);
    const HWND columns = GetDlgItem(dlg, IDC_REPORTTEMPLATE_COLUMNS);
    AddColumnsBare(attributes, {200});
    AddColumnsBare(columns, {90, 90, 90});
    for (const HWND list : {attributes, columns})
        ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
    ListView_SetItemCount(attributes, kAttributes);
    ListView_SetItemCount(columns, kColumns);
}

BOOL CALLBACK LabelBare(HWND control, LPARAM) {
    wchar_t name[32];
    GetClassNameW(control, name, 32);
    if (!lstrcmpiW(name, L"Static") || !lstrcmpiW(name, L"Button") || !lstrcmpiW(name, L"Edit"))
        SetWindowTextW(control, L"&Some text");
    return TRUE;
}

HIMAGELIST checkImages = nullptr;

void FillBare(HWND dlg, const TREE_INSERTLIST& objects) {
    SetWindowTextW(dlg, L"Report Template Edit - OrvaCAD HPV");
    EnumChildWindows(dlg, LabelBare, 0);
    const HWND tree = GetDlgItem(dlg, IDC_REPORTTEMPLATE_OBJECTS);
    checkImages = CreateCheckImagesBare();
    TreeView_SetImageList(tree, ImageLib::GetImageList(), TVSIL_NORMAL);
    TreeView_SetImageList(tree, checkImages, TVSIL_STATE);
    FillTreeBareWithStates(tree, objects, StateOf);
    FillListsBare(dlg);
    for (const int id : {IDC_REPORTTEMPLATE_TOTAL_MM, IDC_REPORTTEMPLATE_COLUMNS_MM})
        ShowWindow(GetDlgItem(dlg, id), SW_SHOW);
}

// The same content: as many rows, the same images and check boxes.
INT_PTR CALLBACK BareProcedure(HWND dlg, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            FillBare(dlg, *reinterpret_cast<const TREE_INSERTLIST*>(lParam));
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDCANCEL) EndDialog(dlg, 0);
            return FALSE;
        case WM_DRAWITEM:
            return DrawRowBare(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam), L"Attribute", {0, 140, 190});
        case WM_NOTIFY: {
            auto& info = *reinterpret_cast<NMLVDISPINFOW*>(lParam);
            if (info.hdr.code == LVN_GETDISPINFOW && (info.item.mask & LVIF_TEXT))
                lstrcpynW(info.item.pszText, L"Attribute number", info.item.cchTextMax);
            return FALSE;
        }
        case WM_DESTROY:
            ImageList_Destroy(checkImages);
            return FALSE;
        default:
            return FALSE;
    }
}

class Opening {
public:
    Opening() {
        SetProductKey(L"Software\\OrvaCADBench");
        PaintAndCloseDialogs();
    }

    void Ours() {
        ReportTemplate::Edit(nullptr, Lng::Hpv, BillOfMaterials, &definition_, sizeof definition_, &context_, nullptr);
    }

    void Bare() const {
        const CommonControlsScope commonControls;
        DialogBoxParamW(GetModuleHandleW(L"occommonui.dll"), L"REPORTTEMPLATEEDITDLG", nullptr, BareProcedure,
                        reinterpret_cast<LPARAM>(&context_.objects));
    }

private:
    ReportTemplate::Context context_ = Offer();
    ReportDefinitionType definition_ = Definition();
};

void Open(benchmark::State& state) {
    Opening opening;
    RunPaired(
        state, [&] { opening.Ours(); }, [&] { opening.Bare(); });
}

BENCHMARK(Open)->Name("OpenReportTemplate")->Unit(benchmark::kMillisecond)->Iterations(100)->Repetitions(1);

}  // namespace
