// What a build description says, in plain data: nothing here knows of macros or parsing.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace buildfile {

struct Target {
    enum Kind { Program, Library };

    Kind kind = Program;
    std::string name;
    std::vector<std::string> sources;
    std::vector<std::string> uses;  // names of targets described earlier
    int optimise = 0;
    std::string file;  // where it is described; empty if that is not known
    long line = 0;
};

struct Build {
    std::string compiler = "c++";
    std::string output = ".";
    std::vector<Target> targets;

    // The target of that name, or null.
    const Target* Find(const std::string& name) const;
};

void Print(std::ostream& os, const Build& build);

}  // namespace buildfile
