#include <benchmark/benchmark.h>
#include <windows.h>

// Loading and unloading the library with everything it brings.

namespace {

void Load(benchmark::State& state) {
    for (auto _ : state) {
        const HMODULE module = LoadLibraryW(L"occommonui.dll");
        if (!module) return state.SkipWithError("occommonui.dll does not load");
        FreeLibrary(module);
    }
}

BENCHMARK(Load)->Name("LoadLibrary")->Unit(benchmark::kMillisecond)->MinTime(0.2);

}  // namespace
