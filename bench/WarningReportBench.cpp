#include <benchmark/benchmark.h>
#include <occommonui/WarningReport.h>
#include <orvatool/InterApp.h>
#include <orvatool/OCDialog.h>
#include <windows.h>

#include <commctrl.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include "BareList.h"
#include "PaintAndClose.h"
#include "Paired.h"
#include "toolkit/orvatool/resources/orvatool_ids.h"

// Collecting warnings against filling a plain vector with the same records, and showing them, which makes the rows and
// opens, paints and closes the window, against the same template with a list of as many rows run by DialogBoxParam.

namespace {

constexpr int kCategories = 20;
constexpr wchar_t kText[] = L"The object has no size and is left out.";

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

ObjPosInDwg Place() {
    ObjPosInDwg pos;
    pos.drawing = L"C:\\Projects\\Office\\Ventilation 1.dwg";
    pos.handle = 0x1A2B;
    return pos;
}

void Collect(std::int64_t count) {
    std::vector<unsigned __int64> categories;
    for (int i = 0; i < kCategories; ++i) {
        ustr name;
        name.format(L"Category %d", i);
        categories.push_back(WarningReport::AddCategory(Lng::Hpv, name));
    }
    const ustr text(kText);
    const ObjPosInDwg pos = Place();
    for (std::int64_t i = 0; i < count; ++i)
        WarningReport::Add(Lng::Hpv, categories[static_cast<std::size_t>(i * 7 % kCategories)], text, pos);
}

void CollectOurs(benchmark::State& state) {
    for (auto _ : state) {
        Collect(state.range(0));
        WarningReport::Clear(Lng::Hpv);
    }
}

void CollectBare(benchmark::State& state) {
    struct Record {
        Lng::AppID app;
        std::uint64_t category;
        ustr_pre<256> text;
        ObjPosInDwg pos;
    };
    const ustr text(kText);
    const ObjPosInDwg pos = Place();
    for (auto _ : state) {
        std::vector<Record> records;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            records.push_back({Lng::Hpv, static_cast<std::uint64_t>(i * 7 % kCategories), text, pos});
        benchmark::DoNotOptimize(records.data());
    }
}

// When the dialog's window is made.
Clock::time_point created;

LRESULT CALLBACK CreationHook(int code, WPARAM wParam, LPARAM lParam) {
    wchar_t name[32] = L"";
    if (code == HCBT_CREATEWND && GetClassNameW(reinterpret_cast<HWND>(wParam), name, 32) &&
        !lstrcmpW(name, L"#32770")) {
        created = Clock::now();
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

void Watch() {
    static const HHOOK hook = SetWindowsHookExW(WH_CBT, CreationHook, nullptr, GetCurrentThreadId());
    benchmark::DoNotOptimize(hook);
    SetProductKey(L"Software\\OrvaCADBench");
    PaintAndCloseDialogs();
}

INT_PTR CALLBACK BareProcedure(HWND dlg, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dlg, 0);
    if (message == WM_DRAWITEM) return DrawRowBare(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam), kText, {0, 200});
    if (message != WM_INITDIALOG) return FALSE;
    SetWindowTextW(dlg, L"Warnings - OrvaCAD HPV");
    for (const int id : {IDC_SIMPLEREPORT_SEARCH_LBL, IDC_SIMPLEREPORT_COUNT, IDC_SIMPLEREPORT_ZOOM,
                         IDC_SIMPLEREPORT_COPY, IDC_SIMPLEREPORT_SAVE, IDCANCEL})
        SetDlgItemTextW(dlg, id, L"&Some text");
    const HWND list = GetDlgItem(dlg, IDC_SIMPLEREPORT_LIST);
    AddColumnsBare(list, {200, 600});
    ListView_SetItemCount(list, static_cast<int>(lParam));
    return TRUE;
}

void ShowBare(std::int64_t count) {
    const CommonControlsScope commonControls;
    DialogBoxParamW(GetModuleHandleW(L"orvatool.dll"), L"SIMPLEREPORTDLG", nullptr, BareProcedure, count);
}

// Within ours_ms: rows_ms until the window is created, painted_ms until the user sees the warnings.
void Show(benchmark::State& state) {
    Watch();
    Collect(state.range(0));
    std::vector<double> rows;
    std::vector<double> seen;
    const auto ours = [&] {
        const auto start = Clock::now();
        WhenPainted([&](HWND) { seen.push_back(Milliseconds(Clock::now() - start)); });
        WarningReport::ShowReport(nullptr, Lng::Hpv);
        rows.push_back(Milliseconds(created - start));
    };
    RunPaired(state, ours, [&] { ShowBare(state.range(0)); });
    state.counters["rows_ms"] = Median(rows);
    state.counters["painted_ms"] = Median(seen);
    WarningReport::Clear(Lng::Hpv);
}

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(10'000)->Arg(50'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(CollectOurs)->Name("CollectWarnings/ours")->Apply(Sizes);
BENCHMARK(CollectBare)->Name("CollectWarnings/bare")->Apply(Sizes);
BENCHMARK(Show)->Name("ShowWarnings")->Apply(Sizes)->Iterations(30)->Repetitions(1);

}  // namespace
