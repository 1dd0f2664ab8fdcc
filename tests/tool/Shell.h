// Runs other programs in the folder of a test.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace tool_test {

// Whether a command line of the shell, run in a folder, has ended well. Paths of folders for tests
// hold no quotes.
inline bool Shell(const std::filesystem::path& folder, const std::string& command) {
    return std::system(("cd '" + folder.string() + "' || exit\n" + command).c_str()) == 0;
}

// What commands of the shell write to standard output and standard error.
inline std::string OutputOf(const std::string& commands) {
    std::FILE* pipe = ::popen(("exec 2>&1\n" + commands).c_str(), "r");
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        output += static_cast<char>(c);
    ::pclose(pipe);
    return output;
}

}  // namespace tool_test
