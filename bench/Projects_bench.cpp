// What projects cost: many files that import one another, look-up among many macros and many
// imported frames, and the way back from expanded text to its source.
//
// Each runs at a tenth of its size, at the size itself and at three times the size, so that a cost
// that is not linear shows in the rate.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

#include "qzMacroExpander/Mpfw.h"
#include "qzUtils/StringStream.h"

namespace {

using namespace vorn;

constexpr long s_macrosPerFile = 10;

SubString View(const std::string& text) {
    return SubString(text.data(), text.data() + text.size());
}

std::string MacroName(long i) {
    return "macro_name_" + std::to_string(i);
}

// ---- files -------------------------------------------------------------------------------------

// A folder with a file that imports count others in turn, each with ten macros, and then uses
// every macro once.
class ManyFiles {
public:
    explicit ManyFiles(long count) {
        std::string name = (std::filesystem::temp_directory_path() / "qz_bench_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr)
            std::abort();
        m_folder = name;
        std::ofstream root(m_folder / "root.txt");
        for (long i = 0; i < count; ++i) {
            root << "@import \"" << i << ".txt\"\n";
            std::ofstream file(m_folder / (std::to_string(i) + ".txt"));
            for (long j = 0; j < s_macrosPerFile; ++j)
                file << "@def " << MacroName(i * s_macrosPerFile + j) << " = value " << j << "\n";
        }
        for (long i = 0; i < count * s_macrosPerFile; ++i)
            root << "use = " << MacroName(i) << ";\n";
    }
    ~ManyFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    ManyFiles(const ManyFiles&) = delete;
    ManyFiles& operator=(const ManyFiles&) = delete;

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }

private:
    std::filesystem::path m_folder;
};

// Takes every path as one in a folder. The expanded text is not parsed.
class Importer : public MpfwParser {
public:
    Importer(MpfwFrame& frame, const ManyFiles& folder) : MpfwParser(frame), m_folder(folder) {}

    bool ResolveImportPath(const xstring& importPath, xstring& localPath) override {
        const std::string path = m_folder.Path(std::string(importPath.begin(), importPath.end()));
        localPath = path.c_str();
        return true;
    }
    void ProcessImportedFile(MpfwSourceFile*) override {}

private:
    const ManyFiles& m_folder;
};

// The items are files.
void ImportFiles(benchmark::State& state) {
    const ManyFiles folder(state.range(0));
    const std::string root = folder.Path("root.txt");
    for (auto _ : state) {
        MpfwSourceFileList files;
        MpfwFrame frame(files);
        Importer parser(frame, folder);
        if (parser.AddFile(root.c_str(), SubString()) == nullptr
            || files.size() != state.range(0) + 1)
            state.SkipWithError("the project was not expanded");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ImportFiles)->Arg(200)->Arg(2'000)->Arg(6'000)->Unit(benchmark::kMillisecond);

// The least that reading the files takes. The items are files.
void ReadFiles(benchmark::State& state) {
    const ManyFiles folder(state.range(0));
    for (auto _ : state) {
        for (long i = 0; i < state.range(0); ++i) {
            std::ifstream file(folder.Path(std::to_string(i) + ".txt"), std::ios::binary);
            char text[1024];
            file.read(text, sizeof text);
            benchmark::DoNotOptimize(file.gcount());
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ReadFiles)->Arg(200)->Arg(2'000)->Arg(6'000)->Unit(benchmark::kMillisecond);

// Names the file and line of an error in the last of many files. The items are files.
void LocateError(benchmark::State& state) {
    const ManyFiles folder(state.range(0));
    MpfwSourceFileList files;
    MpfwFrame frame(files);
    Importer parser(frame, folder);
    parser.AddFile(folder.Path("root.txt").c_str(), SubString());
    const xstring& text = files[files.size() - 1]->m_buffer;
    const LexScannerException e("text", text.data_end() - 1);
    StringStream os(4096);
    for (auto _ : state) {
        files.WriteLexScannerError(os, e);
        os.clear();
    }
    state.SetItemsProcessed(state.iterations() * files.size());
}
BENCHMARK(LocateError)->Arg(200)->Arg(2'000)->Arg(6'000);

// ---- look-up -----------------------------------------------------------------------------------

// Macros spread evenly over frames that one frame imports, or in that frame itself.
class ManyMacros {
public:
    ManyMacros(long macros, long frames) {
        for (long i = 0; i < frames; ++i)
            m_frame.AddImport(&m_imports.emplace_back());
        for (long i = 0; i < macros; ++i) {
            const std::string& name = m_names.emplace_back(MacroName(i));
            VarFrame* frame = &m_frame;
            if (frames > 0)
                frame = &m_imports[static_cast<std::size_t>(i % frames)];
            frame->AddVariable(
                new LSMacroVariable(LSV_MACRO, View(name), nullptr, false, false, false));
            m_misses.push_back("no_" + name);
        }
    }

    FileScopeVarFrame& Frame() { return m_frame; }
    const std::deque<std::string>& Misses() const { return m_misses; }

    // Copies of the names, in no order.
    std::vector<std::string> Names() const {
        std::vector<std::string> names(m_names.begin(), m_names.end());
        std::mt19937 random(1);
        std::shuffle(names.begin(), names.end(), random);
        return names;
    }

private:
    std::deque<std::string> m_names;  // the macros' names are views of these
    std::deque<std::string> m_misses;
    std::deque<FileScopeVarFrame> m_imports;
    FileScopeVarFrame m_frame;
};

// The items are look-ups of names that are there.
void FindNames(benchmark::State& state) {
    ManyMacros macros(state.range(0), state.range(1));
    const std::vector<std::string> names = macros.Names();
    for (auto _ : state) {
        for (const std::string& name : names) {
            if (macros.Frame().Find(View(name), nullptr) == nullptr)
                state.SkipWithError("a name was not found");
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(names.size()));
}

// The items are look-ups of names that are not there, as most words of a text are not.
void FindNoNames(benchmark::State& state) {
    ManyMacros macros(state.range(0), state.range(1));
    for (auto _ : state) {
        for (const std::string& name : macros.Misses()) {
            if (macros.Frame().Find(View(name), nullptr) != nullptr)
                state.SkipWithError("a name was found");
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(macros.Misses().size()));
}

void MacroCounts(benchmark::internal::Benchmark* b) {
    b->ArgNames({"macros", "frames"})->Unit(benchmark::kMillisecond);
    for (const long macros : {2'000, 20'000, 60'000})
        b->Args({macros, 0});
    for (const long frames : {20, 200, 600})
        b->Args({20'000, frames});
}
BENCHMARK(FindNames)->Apply(MacroCounts);
BENCHMARK(FindNoNames)->Apply(MacroCounts);

// ---- mapping -----------------------------------------------------------------------------------

// An expansion of so many bytes: ordinary text, macros with arguments, values and indentation.
class LargeExpansion {
public:
    explicit LargeExpansion(ssize_t bytes) {
        m_text = "@def pair(a, b) =\n{\n    first(a)\n    second(b)\n}\n@let int n = 6 * 7\n";
        const std::string use = "    some text, pair(one, two three) and n;\n";
        const ssize_t outputOfUse = 62;
        for (ssize_t size = 0; size < bytes; size += outputOfUse)
            m_text += use;
        MacroExpand(nullptr, &m_frame, View(m_text), 0, 0, m_expanded, m_pieces);
    }

    ssize_t Size() const { return m_expanded.size(); }
    const OutputPieces& Pieces() const { return m_pieces; }

private:
    std::string m_text;
    FileScopeVarFrame m_frame;
    xstring m_expanded;
    OutputPieces m_pieces;
};

const LargeExpansion& Expansion(ssize_t bytes) {
    static std::unique_ptr<LargeExpansion> s_expansion;
    static ssize_t s_bytes = 0;
    if (s_bytes != bytes) {
        s_expansion = std::make_unique<LargeExpansion>(bytes);
        s_bytes = bytes;
    }
    return *s_expansion;
}

// The items are bytes, every one of which is mapped.
void MapEveryPosition(benchmark::State& state) {
    const LargeExpansion& expansion = Expansion(state.range(0));
    const ssize_t size = expansion.Size();
    for (auto _ : state) {
        OutputPiecesMonotonePosMapper mapper(expansion.Pieces());
        for (ssize_t pos = 0; pos < size; ++pos)
            benchmark::DoNotOptimize(mapper.MapOutputPositionToAddress(pos));
    }
    state.SetItemsProcessed(state.iterations() * size);
    state.counters["bytes"] = static_cast<double>(size);
    state.counters["pieces"] = static_cast<double>(expansion.Pieces().m_pieces.size());
}
BENCHMARK(MapEveryPosition)
    ->Arg(500'000)
    ->Arg(5'000'000)
    ->Arg(15'000'000)
    ->Unit(benchmark::kMillisecond);

// The last position alone. The items are the pieces of one walk over all of them.
void MapLastPosition(benchmark::State& state) {
    const LargeExpansion& expansion = Expansion(state.range(0));
    const ssize_t last = expansion.Size() - 1;
    for (auto _ : state)
        benchmark::DoNotOptimize(expansion.Pieces().MapOutputPositionToAddress(last));
    state.SetItemsProcessed(state.iterations() * expansion.Pieces().m_pieces.size());
}
BENCHMARK(MapLastPosition)
    ->Arg(500'000)
    ->Arg(5'000'000)
    ->Arg(15'000'000)
    ->Unit(benchmark::kMillisecond);

// Adds up the sizes of all pieces: the walk with nothing to find. The items are pieces.
void WalkPieces(benchmark::State& state) {
    const LargeExpansion& expansion = Expansion(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(expansion.Pieces().size());
    state.SetItemsProcessed(state.iterations() * expansion.Pieces().m_pieces.size());
}
BENCHMARK(WalkPieces)->Arg(500'000)->Arg(5'000'000)->Arg(15'000'000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
