// Loops: what they cost for each turn, at the top of a text and inside ten nested macro calls; and
// recursion, for each level.
//
// Every benchmark runs at a tenth of the size, at the size itself and at three times the size:
// time and memory must grow in proportion, so that the cost of a turn stays the same.

#include <benchmark/benchmark.h>

#include <initializer_list>
#include <string>
#include <string_view>

#include "Allocations.h"
#include "qzMacroExpander/MacroExpand.h"

namespace {

using namespace vorn;

constexpr long s_rows = 1000;
constexpr long s_columns = 300;
constexpr long s_turns = 100'000;
constexpr long s_records = 300;
constexpr long s_fields = 20;
constexpr int s_levels = 10;
constexpr long s_depth = 1500;

std::string Join(std::initializer_list<std::string_view> parts) {
    std::string result;
    for (const std::string_view part : parts)
        result += part;
    return result;
}

std::string Number(long n) {
    return std::to_string(n);
}

// [0, 1, 2, ..., ]
std::string Numbers(long n) {
    std::string result = "[";
    for (long i = 0; i < n; ++i)
        result += Join({Number(i), ", "});
    return result + "]";
}

// A loop and the macros that it uses.
struct Text {
    std::string macros;
    std::string loop;
};

Text Table(long rows) {
    return {Join({"@def rows = ", Numbers(rows), "\n@def columns = ", Numbers(s_columns), "\n"}),
            "@for (row in rows) {\n"
            "    {@for (column in columns) {@if (row == column) {1} @else {0}, }},\n"
            "}\n"};
}

Text Count(long turns) {
    return {"@let int i = 0\n", Join({"@while (i < ", Number(turns),
                                      ") {\n"
                                      "    table[i] = f(i);\n"
                                      "@let i = i + 1\n"
                                      "}\n"})};
}

// Records as an author lists them.
std::string RecordList(long records) {
    static constexpr const char* s_types[] = {"int", "double", "std::string", "std::vector<int>"};
    std::string list = "@def records = {[";
    for (long i = 0; i < records; ++i) {
        list += Join({"\n    (Record", Number(i), ", ["});
        for (long j = 0; j < s_fields; ++j)
            list += Join({"(", s_types[j % 4], ", field", Number(j), "), "});
        list += "]),";
    }
    return list + "\n]}\n";
}

// A class with the usual members for each record.
Text Records(long records) {
    return {RecordList(records) + R"(
@def quoted(text) = @str(text)
@def member(type, name) = type m_@@name;
@def accessors(type, name) =
    {
        // The field name of this record.
        const type& Get_@@name() const { return m_@@name; }
        void Set_@@name(const type& value) { m_@@name = value; }

    }
@def write(name) =
    {
        if (!Write(os, quoted(name), m_@@name))
            return false;

    }
@def read(type, name) =
    {
        if (!ReadName(is, quoted(name)) || !Read<type>(is, m_@@name))
            return Fail(quoted(name), __LINE__);

    }
@def class_of(record, fields) =
    {
        class record {
        public:
            @for ((type, name) in fields)
            {
                member(type, name)

            }
            @for ((type, name) in fields)
            {
                accessors(type, name)

            }
            bool WriteTo(Stream& os) const {
                @for ((type, name) in fields)
                {
                    write(name)

                }
                return true;
            }
            bool ReadFrom(Stream& is) {
                @for ((type, name) in fields)
                {
                    read(type, name)

                }
                return true;
            }
        };

    }
)",
            "@for ((record, fields) in records) {class_of(record, fields)\n}\n"};
}

std::string AtTheTop(const Text& text) {
    return text.macros + text.loop;
}

// The loop as the body of the last of ten macros that call each other.
std::string InNestedCalls(const Text& text) {
    std::string result = text.macros;
    for (int level = 1; level < s_levels; ++level)
        result += Join({"@def level", Number(level), "(a) = level", Number(level + 1), "(a)\n"});
    result += Join({"@def level", Number(s_levels), "(a) = {\n", text.loop, "}\n"});
    return result + "level1(x)\n";
}

// Reports per unit and, of the memory, per byte of output.
void Expand(benchmark::State& state, const std::string& text, const char* unit, long units) {
    ssize_t outputBytes = 0;
    allocations::Reset();
    for (auto _ : state) {
        FileScopeVarFrame frame;
        xstring result;
        OutputPieces pieces;
        MacroExpand(nullptr, &frame, SubString(text.data(), text.data() + text.size()), 0, 0,
                    result, pieces);
        outputBytes = result.size();
    }
    const allocations::Count count = allocations::Get();
    const auto runs = static_cast<double>(state.iterations());
    state.counters[std::string("per_") + unit] =
        benchmark::Counter(runs * static_cast<double>(units),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters[std::string("allocs_per_") + unit] =
        static_cast<double>(count.calls) / runs / static_cast<double>(units);
    state.counters["output_bytes"] = static_cast<double>(outputBytes);
    state.counters["peak_per_byte"] =
        static_cast<double>(count.peak) / static_cast<double>(outputBytes);
}

using Place = std::string (*)(const Text& text);

void BM_Table(benchmark::State& state, Place place) {
    const long rows = s_rows / 10 * state.range(0);
    Expand(state, place(Table(rows)), "cell", rows * s_columns);
}

void BM_Count(benchmark::State& state, Place place) {
    const long turns = s_turns / 10 * state.range(0);
    Expand(state, place(Count(turns)), "turn", turns);
}

void BM_Records(benchmark::State& state, Place place) {
    const long records = s_records / 10 * state.range(0);
    Expand(state, place(Records(records)), "field", records * s_fields);
}

// Each level uses names of the file, its own, and a last one: of the file as well, or of the
// outermost call, for which all calls between are asked.
void BM_Recursion(benchmark::State& state, std::string_view lastName) {
    const long depth = s_depth / 10 * state.range(0);
    const std::string text =
        Join({"@def file = x\n@def f(int n) = @if (n > 0) {", lastName,
              ", f(n - 1)}\n@def start(outermost) = f(", Number(depth), ")\nstart(x)\n"});
    Expand(state, text, "level", depth);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("tenths")->Arg(1)->Arg(10)->Arg(30)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(BM_Table, AtTheTop, AtTheTop)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Table, InNestedCalls, InNestedCalls)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Count, AtTheTop, AtTheTop)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Count, InNestedCalls, InNestedCalls)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Records, AtTheTop, AtTheTop)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Records, InNestedCalls, InNestedCalls)->Apply(Sizes);

BENCHMARK_CAPTURE(BM_Recursion, NameOfTheFile, "file")->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Recursion, NameOfTheOutermostCall, "outermost")->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
