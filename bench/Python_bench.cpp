// Python in macro texts: what a use costs, and that no use leaves memory behind.
//
// Each benchmark makes a million uses. rss_before and rss_after are the process's resident bytes
// around them; they must not drift apart.

#include <benchmark/benchmark.h>

#include <fstream>

#include <unistd.h>

#include "qzMacroExpander/MacroExpand.h"

namespace {

using namespace vorn;

constexpr int64_t s_uses = 1'000'000;

double ResidentBytes() {
    double total = 0;
    double resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// Expands use, over and over, in a frame that has expanded definitions.
void Uses(benchmark::State& state, const char* definitions, const char* use) {
    VarFrame frame(nullptr);
    xstring result;
    MacroExpand(nullptr, &frame, definitions, 0, 0, result);
    for (int i = 0; i < 1000; ++i)
        MacroExpand(nullptr, &frame, use, 0, 0, result);
    const double before = ResidentBytes();
    for (auto _ : state)
        MacroExpand(nullptr, &frame, use, 0, 0, result);
    state.counters["rss_before"] = before;
    state.counters["rss_after"] = ResidentBytes();
    state.SetItemsProcessed(state.iterations());
}

void BM_PlainMacro(benchmark::State& state) {
    Uses(state, "@def m(a) = a a\n", "m(x)");
}
void BM_PythonMacro_Int(benchmark::State& state) {
    Uses(state, "@defpython p(a) = 1000 * a\n", "p(7)");
}
void BM_PythonMacro_String(benchmark::State& state) {
    Uses(state, "@defpython p(a) = 'a text of some length and ' + 'a'\n", "p(more)");
}
void BM_PythonMacro_List(benchmark::State& state) {
    Uses(state, "@defpython p(a) = [a, 1.5, ['x' + 'y']]\n", "p(7)");
}
// The value has no text form: the list is dropped on the way out of an error.
void BM_PythonMacro_NoText(benchmark::State& state) {
    Uses(state, "@defpython p(a) = [a, (a,)]\n", "@assertfails(p(7))");
}
void BM_PythonMacro_Traceback(benchmark::State& state) {
    Uses(state, "@defpython p(a) = 1 / a\n", "@assertfails(p(0))");
}
void BM_RunPython(benchmark::State& state) {
    Uses(state, "@runpython total = 0\n", "@runpython total = total % 1000 + 1");
}

BENCHMARK(BM_PlainMacro)->Iterations(s_uses);
BENCHMARK(BM_PythonMacro_Int)->Iterations(s_uses);
BENCHMARK(BM_PythonMacro_String)->Iterations(s_uses);
BENCHMARK(BM_PythonMacro_List)->Iterations(s_uses);
BENCHMARK(BM_PythonMacro_NoText)->Iterations(s_uses);
BENCHMARK(BM_PythonMacro_Traceback)->Iterations(s_uses);
BENCHMARK(BM_RunPython)->Iterations(s_uses);

}  // namespace

BENCHMARK_MAIN();
