#include <benchmark/benchmark.h>
#include <orvatool/ListFilterCtrl.h>
#include <orvatool/OCDialog.h>
#include <orvatool/TreeInsertList.h>
#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>
#include <vector>

#include "BareTree.h"

namespace {

constexpr int kPerGroup = 20;

struct DestroyWindowFn {
    void operator()(HWND window) const { DestroyWindow(window); }
};
using Window = std::unique_ptr<HWND__, DestroyWindowFn>;

Window Parent() {
    return Window(CreateWindowExW(0, L"Static", L"Bench", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 500, 500, nullptr,
                                  nullptr, nullptr, nullptr));
}

HWND Child(const Window& parent, const wchar_t* name, DWORD style, int id) {
    const CommonControlsScope commonControls;
    return CreateWindowExW(0, name, L"", WS_CHILD | WS_VISIBLE | style, 0, id == 1 ? 0 : 30, 450, 400, parent.get(),
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

TREE_INSERTLIST Rows(std::int64_t count) {
    TREE_INSERTLIST list;
    for (std::int64_t i = 0; i < count; ++i) {
        ustr text;
        text.format(L"Circular duct %d", static_cast<int>(i));
        list.push_back(i % kPerGroup ? 1 : 0, i, Lng::Hpv, -1, text);
    }
    list.finalize();
    return list;
}

// Every round fills a tree that is empty and new; making and destroying it is not counted.
template <class Fill>
void FillTrees(benchmark::State& state, Fill fill) {
    const TREE_INSERTLIST rows = Rows(state.range(0));
    const Window parent = Parent();
    for (auto _ : state) {
        state.PauseTiming();
        const HWND tree = Child(parent, WC_TREEVIEWW, TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT, 2);
        state.ResumeTiming();
        fill(tree, rows);
        state.PauseTiming();
        DestroyWindow(tree);
        state.ResumeTiming();
    }
}

void FillOurs(benchmark::State& state) {
    FillTrees(state, [](HWND tree, const TREE_INSERTLIST& rows) { FillTree(tree, rows); });
}

void FillBare(benchmark::State& state) {
    FillTrees(state, FillTreeBare);
}

void FillEntries(void* context, std::vector<ListFilterCtrl::Entry>& entries) {
    const auto count = *static_cast<const std::int64_t*>(context);
    const wchar_t* kinds[] = {L"Circular duct", L"Kanalväli", L"Supply air terminal", L"Gate valve", L"Radiator"};
    for (std::int64_t i = 0; i < count; ++i) {
        ustr text;
        text.format(L"%s %d", kinds[i % 5], static_cast<int>(i));
        entries.push_back({text, i});
    }
}

// Types a search one character at a time, each followed by the paint, and takes it back again.
void Keystroke(benchmark::State& state) {
    const Window parent = Parent();
    const HWND edit = Child(parent, L"Edit", ES_AUTOHSCROLL, 1);
    Child(parent, WC_LISTVIEWW, LVS_REPORT | LVS_OWNERDATA | LVS_NOCOLUMNHEADER, 2);
    std::int64_t count = state.range(0);
    ListFilterCtrl filter;
    filter.Attach(parent.get(), 1, 2, FillEntries, nullptr, &count);
    filter.Fill();
    const std::wstring typed = L"duct 315";
    std::size_t length = 0;
    bool growing = true;
    for (auto _ : state) {
        length = growing ? length + 1 : length - 1;
        if (length == typed.size()) growing = false;
        if (length == 0) growing = true;
        SetWindowTextW(edit, typed.substr(0, length).c_str());
        filter.OnCommand(MAKEWPARAM(1, EN_CHANGE), reinterpret_cast<LPARAM>(edit));
        UpdateWindow(filter.ListWindow());
    }
}

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(1'000)->Arg(10'000)->Arg(50'000)->Unit(benchmark::kMillisecond)->MinTime(0.2);
}

BENCHMARK(FillOurs)->Name("FillTree/ours")->Apply(Sizes);
BENCHMARK(FillBare)->Name("FillTree/bare")->Apply(Sizes);
BENCHMARK(Keystroke)->Name("FilterKeystroke")->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond)->MinTime(0.2);

}  // namespace
