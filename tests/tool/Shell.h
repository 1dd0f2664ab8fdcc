// Runs other programs in the folder of a test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tool_test {

// Whether a command line of the shell, run in a folder, has ended well. Paths of folders for tests
// hold no quotes.
inline bool Shell(const std::filesystem::path& folder, const std::string& command) {
    return std::system(("cd '" + folder.string() + "' || exit\n" + command).c_str()) == 0;
}

}  // namespace tool_test
