// Expansion of large texts, beside what the same text costs to scan.
//
// Every benchmark runs at a tenth of the size, at the size itself and at three times the size:
// time and memory must grow in proportion.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>

#include "Allocations.h"
#include "Texts.h"
#include "qzMacroExpander/MacroExpand.h"

namespace {

using namespace vorn;

SubString View(const std::string& text) {
    return SubString(text.data(), text.data() + text.size());
}

const std::string& Cached(const std::string& kind, long size, std::string (*make)(long)) {
    static std::map<std::pair<std::string, long>, std::string> s_texts;
    std::string& text = s_texts[{kind, size}];
    if (text.empty())
        text = make(size);
    return text;
}

const std::string& VerbatimText(long tenths) {
    return Cached("verbatim", texts::s_verbatimBytes / 10 * tenths, texts::Verbatim);
}
const std::string& UsesText(long tenths) {
    return Cached("uses", texts::s_uses / 10 * tenths,
                  [](long n) { return texts::Uses(texts::s_qz, n); });
}
const std::string& CallsText(long tenths) {
    return Cached("calls", texts::s_calls / 10 * tenths,
                  [](long n) { return texts::Calls(texts::s_qz, n); });
}

long CountTokens(SubString s) {
    long tokens = 0;
    while (LsScanToken(s, true) != TOKEN_END)
        ++tokens;
    return tokens;
}

// Reports per token, or per use or call where units are given.
void Report(benchmark::State& state, const std::string& text, const char* unit, long units) {
    const allocations::Count count = allocations::Get();
    const auto runs = static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    state.counters[std::string("per_") + unit] =
        benchmark::Counter(runs * static_cast<double>(units),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters[std::string("allocs_per_") + unit] =
        static_cast<double>(count.calls) / runs / static_cast<double>(units);
    state.counters["peak_per_byte"] =
        static_cast<double>(count.peak) / static_cast<double>(text.size());
}

void Scan(benchmark::State& state, const std::string& text) {
    long tokens = 1;
    allocations::Reset();
    for (auto _ : state)
        benchmark::DoNotOptimize(tokens = CountTokens(View(text)));
    Report(state, text, "token", tokens);
}

// The scan and a record of 24 bytes a token, as the pieces of an output are.
void ScanAndRecord(benchmark::State& state, const std::string& text) {
    const long tokens = CountTokens(View(text));
    allocations::Reset();
    for (auto _ : state) {
        xvector<OutputPiece> records;
        SubString s = View(text);
        for (LSToken token = LsScanToken(s, true); token != TOKEN_END; token = LsScanToken(s, true))
            records.push_back(OutputPiece{token.m_str, 0});
        benchmark::DoNotOptimize(records.data());
    }
    Report(state, text, "token", tokens);
}

void Expand(benchmark::State& state, const std::string& text, const char* unit, long units) {
    allocations::Reset();
    for (auto _ : state) {
        FileScopeVarFrame frame;
        xstring result;
        OutputPieces pieces;
        MacroExpand(nullptr, &frame, View(text), 0, 0, result, pieces);
        benchmark::DoNotOptimize(result.data());
    }
    Report(state, text, unit, units);
}

void BM_Verbatim_Scan(benchmark::State& state) {
    Scan(state, VerbatimText(state.range(0)));
}
void BM_Verbatim_ScanAndRecord(benchmark::State& state) {
    ScanAndRecord(state, VerbatimText(state.range(0)));
}
void BM_Verbatim_Expand(benchmark::State& state) {
    const std::string& text = VerbatimText(state.range(0));
    Expand(state, text, "token", CountTokens(View(text)));
}

void BM_Uses_Scan(benchmark::State& state) {
    Scan(state, UsesText(state.range(0)));
}
void BM_Uses_ScanAndRecord(benchmark::State& state) {
    ScanAndRecord(state, UsesText(state.range(0)));
}
void BM_Uses_Expand(benchmark::State& state) {
    Expand(state, UsesText(state.range(0)), "use", texts::s_uses / 10 * state.range(0));
}

void BM_Calls_Scan(benchmark::State& state) {
    Scan(state, CallsText(state.range(0)));
}
void BM_Calls_ScanAndRecord(benchmark::State& state) {
    ScanAndRecord(state, CallsText(state.range(0)));
}
void BM_Calls_Expand(benchmark::State& state) {
    Expand(state, CallsText(state.range(0)), "call", texts::s_calls / 10 * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("tenths")->Arg(1)->Arg(10)->Arg(30)->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_Verbatim_Scan)->Apply(Sizes);
BENCHMARK(BM_Verbatim_ScanAndRecord)->Apply(Sizes);
BENCHMARK(BM_Verbatim_Expand)->Apply(Sizes);
BENCHMARK(BM_Uses_Scan)->Apply(Sizes);
BENCHMARK(BM_Uses_ScanAndRecord)->Apply(Sizes);
BENCHMARK(BM_Uses_Expand)->Apply(Sizes);
BENCHMARK(BM_Calls_Scan)->Apply(Sizes);
BENCHMARK(BM_Calls_ScanAndRecord)->Apply(Sizes);
BENCHMARK(BM_Calls_Expand)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
