// The arguments of a call, told apart: options, their values, and files.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Options.h"

namespace qztools {

// Of an option whose value may be missing. It has none but behind a =.
inline constexpr int s_optionalArgument = 2;

// An option by its letter, its long name, or both. argument is null where there is none.
struct OptionRow {
    char letter;        // 0 where there is none
    const char* name;   // null where there is none
    int takesArgument;  // true, false or s_optionalArgument
    void (*apply)(Options& options, const char* argument);
};

// Takes the arguments in their order and applies the options among them. A long name may be
// shortened as long as it stays unambiguous; an argument @FILE stands for those in FILE; behind --
// everything is a file. Nothing here depends on the environment, as getopt does.
class Arguments {
public:
    Arguments(std::span<const OptionRow> rows, Options& options)
        : m_rows(rows), m_options(options) {}

    // Throws UsageError, and Fault for a file of arguments. What stands behind --help or
    // --version is not looked at.
    void Take(const std::string& argument);

    // All arguments have been taken. Throws UsageError.
    void End() const;

    const std::vector<std::string>& Files() const { return m_files; }

private:
    bool IsOver() const;
    void TakeFile(const std::string& argument);
    void TakeArgumentsIn(const std::string& path);
    void TakeLong(const std::string& argument);
    void TakeShort(const std::string& argument);
    const OptionRow& FindLong(std::string_view name, const std::string& argument) const;

    std::span<const OptionRow> m_rows;
    Options& m_options;
    std::vector<std::string> m_files;
    const OptionRow* m_waiting = nullptr;  // an option whose value comes next
    std::string m_waitingName;             // as it was written
    bool m_onlyFiles = false;              // behind --
    int m_argumentFiles = 0;               // that have been read
};

}  // namespace qztools
