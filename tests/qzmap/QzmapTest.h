// What tests of qzmap share: a folder with an output, its sources and its map, made piece by piece.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/Map.h"
#include "tests/tool/ToolRunner.h"

namespace qzmap_test {

using tool_test::Result;

// An output that is put together from sources. A part of a source is named by its text, of which
// the first occurrence counts.
class Composition {
public:
    explicit Composition(std::string name) { m_map.outputName = std::move(name); }

    // A source that is a file, and one that has its text in the map.
    void AddFile(const std::string& name, const std::string& bytes) {
        m_map.sources.push_back({name, std::ssize(bytes), qztools::HashOf(bytes), std::nullopt});
        m_bytes.push_back(bytes);
    }
    void AddText(const std::string& name, const std::string& bytes) {
        m_map.sources.push_back({name, std::ssize(bytes), qztools::HashOf(bytes), bytes});
        m_bytes.push_back(bytes);
    }

    void Copy(std::size_t source, std::string_view part) {
        Add(qztools::MapPiece::Kind::Copied, part, static_cast<std::int64_t>(source),
            Find(source, part), std::ssize(part));
    }
    void Calculate(std::size_t source, std::string_view part, std::string_view result) {
        Add(qztools::MapPiece::Kind::Calculated, result, static_cast<std::int64_t>(source),
            Find(source, part), std::ssize(part));
    }
    void Indent(std::size_t size) {
        Add(qztools::MapPiece::Kind::Indentation, std::string(size, ' '), -1, 0, 0);
    }
    void Insert(std::string_view text) { Add(qztools::MapPiece::Kind::Inserted, text, -1, 0, 0); }

    const std::string& Output() const { return m_output; }
    const std::vector<std::string>& SourceBytes() const { return m_bytes; }

    // The map, which can be changed further.
    qztools::Map Map() const {
        qztools::Map map = m_map;
        map.outputSize = std::ssize(m_output);
        map.outputHash = qztools::HashOf(m_output);
        return map;
    }

private:
    std::int64_t Find(std::size_t source, std::string_view part) const {
        const std::size_t at = m_bytes.at(source).find(part);
        EXPECT_NE(at, std::string::npos) << part;
        return static_cast<std::int64_t>(at);
    }

    void Add(qztools::MapPiece::Kind kind, std::string_view bytes, std::int64_t source,
             std::int64_t offset, std::int64_t length) {
        m_map.pieces.push_back({kind, std::ssize(bytes), source, offset, length});
        m_output += bytes;
    }

    qztools::Map m_map;
    std::vector<std::string> m_bytes;
    std::string m_output;
};

class QzmapTest : public tool_test::ToolTest {
protected:
    // Writes the output and the sources of a composition, and its map as OUTPUT.map.
    void WriteFiles(const Composition& composition) const {
        const qztools::Map map = composition.Map();
        for (std::size_t i = 0; i < map.sources.size(); ++i)
            if (!map.sources[i].text)
                Write(map.sources[i].name, composition.SourceBytes()[i]);
        if (map.outputName != "-")
            Write(map.outputName, composition.Output());
        WriteMap(map);
    }

    void WriteMap(const qztools::Map& map) const {
        Write((map.outputName == "-" ? "out" : map.outputName) + ".map", qztools::FormatMap(map));
    }

    Result Qzmap(const std::vector<std::string>& arguments, const std::string& input = "") const {
        return RunProgram(QZMAP, arguments, input);
    }

    // Messages as remap rewrites them.
    std::string Remapped(const std::string& messages, const std::string& map = "a.cpp.map") const {
        const Result result = Qzmap({"remap", map}, messages);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }
};

// What an output looks like that has a piece of every kind:
//
//   1  #include <cstdio>
//   2  int main() {
//   3      return 3 + five(5);
//   4  }
//   5  // made
inline Composition EveryKind() {
    Composition a("a.cpp");
    a.AddFile("a.cpp.qz", "@import \"lib.qz\"\n#include <cstdio>\nint main() {\n  body\n}\n");
    a.AddFile("lib.qz", "@def body = return @(1 + 2) + five(n);\n");
    a.AddText("<-D n>", "5");
    a.Copy(0, "#include <cstdio>\nint main() {\n");
    a.Indent(4);
    a.Copy(1, "return ");
    a.Calculate(1, "@(1 + 2)", "3");
    a.Copy(1, " + five(");
    a.Copy(2, "5");
    a.Copy(1, ");");
    a.Copy(0, "\n}\n");
    a.Insert("// made\n");
    return a;
}

}  // namespace qzmap_test
