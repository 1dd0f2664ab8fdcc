#include "Build.h"

#include <algorithm>
#include <ostream>

namespace buildfile {

const Target* Build::Find(const std::string& name) const {
    const auto target = std::find_if(targets.begin(), targets.end(),
                                     [&](const Target& t) { return t.name == name; });
    return target == targets.end() ? nullptr : &*target;
}

void Print(std::ostream& os, const Build& build) {
    os << "compiler " << build.compiler << "\noutput " << build.output << '\n';
    for (const Target& target : build.targets) {
        os << (target.kind == Target::Program ? "program " : "library ") << target.name;
        if (!target.file.empty())
            os << "  -- " << target.file << ':' << target.line;
        os << '\n';
        for (const std::string& source : target.sources)
            os << "    source " << source << '\n';
        for (const std::string& used : target.uses)
            os << "    uses " << used << '\n';
        os << "    optimise " << target.optimise << '\n';
    }
}

}  // namespace buildfile
