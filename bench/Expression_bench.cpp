// What expressions cost: many small ones, one long one, and one that nests deeply. Each runs at a
// tenth, at one and at three times its size, so that a cost that is not linear shows in the rate.

#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#include "qzMacroExpander/ExpressionParser.h"

namespace {

vorn::int64 Evaluate(const std::string& text) {
    vorn::ExpressionParser parser;
    parser.Init(vorn::SubString(text.data(), text.data() + text.size()));
    return parser.ParseInt64(false);
}

std::string Repeat(const char* part, std::int64_t count) {
    std::string text;
    for (std::int64_t i = 0; i < count; ++i)
        text += part;
    return text;
}

// The most memory that the process has held since the last call.
double PeakBytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word && word != "VmHWM:") {
    }
    status >> kilobytes;
    std::ofstream("/proc/self/clear_refs") << 5;
    return kilobytes * 1024;
}

// The items are expressions.
void PlainArithmetic(benchmark::State& state) {
    const std::string text = "(12 + 34) * 5 - 60 / 7";
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i)
            benchmark::DoNotOptimize(Evaluate(text));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(PlainArithmetic)->Arg(100'000)->Arg(1'000'000)->Arg(3'000'000);

// The items are terms. "grown" is how far the process has risen, while the sums were computed,
// above the memory that it held with the text alone.
void LongSum(benchmark::State& state) {
    const std::string text = Repeat("1+", state.range(0) - 1) + "1";
    PeakBytes();
    const double before = PeakBytes();
    for (auto _ : state) {
        if (Evaluate(text) != state.range(0))
            state.SkipWithError("wrong sum");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["grown"] = PeakBytes() - before;
}
BENCHMARK(LongSum)->Arg(100'000)->Arg(1'000'000)->Arg(3'000'000);

// The items are terms of one byte, joined to one string.
void LongJoin(benchmark::State& state) {
    const std::string text = Repeat("len(", 1) + Repeat("'a'+", state.range(0) - 1) + "'a')";
    for (auto _ : state) {
        if (Evaluate(text) != state.range(0))
            state.SkipWithError("wrong length");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(LongJoin)->Arg(10'000)->Arg(100'000)->Arg(300'000);

// The items are pairs of brackets.
void NestedBrackets(benchmark::State& state) {
    const std::string text = Repeat("(", state.range(0)) + "1" + Repeat(")", state.range(0));
    for (auto _ : state) {
        if (Evaluate(text) != 1)
            state.SkipWithError("wrong value");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(NestedBrackets)->Arg(1'000)->Arg(10'000)->Arg(30'000);

// The same with a fault in the innermost pair: the error passes through every level.
void NestedBracketsAroundFault(benchmark::State& state) {
    const std::string text = Repeat("(", state.range(0)) + "1/0" + Repeat(")", state.range(0));
    for (auto _ : state) {
        try {
            Evaluate(text);
            state.SkipWithError("no error");
        } catch (const vorn::LexScannerException& e) {
            benchmark::DoNotOptimize(e.m_pos);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(NestedBracketsAroundFault)->Arg(1'000)->Arg(10'000)->Arg(30'000);

}  // namespace

BENCHMARK_MAIN();
