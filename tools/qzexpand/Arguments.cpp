#include "Arguments.h"

#include <algorithm>

#include "ResponseFile.h"
#include "common/Fault.h"

namespace qztools {

namespace {

// So many files of arguments are read at most: one that names itself has no end.
constexpr int s_mostArgumentFiles = 1000;

[[noreturn]] void ThrowUnknown(const std::string& argument) {
    throw UsageError("unknown option " + argument);
}

}  // namespace

void Arguments::Take(const std::string& argument) {
    if (IsOver())
        return;
    if (m_waiting != nullptr) {
        const OptionRow* row = m_waiting;
        m_waiting = nullptr;
        row->apply(m_options, argument.c_str());
    } else if (m_onlyFiles || argument == "-" || !argument.starts_with('-'))
        TakeFile(argument);
    else if (argument == "--")
        m_onlyFiles = true;
    else if (argument.starts_with("--"))
        TakeLong(argument);
    else
        TakeShort(argument);
}

void Arguments::End() const {
    if (m_waiting != nullptr)
        throw UsageError(m_waitingName + " needs an argument");
}

bool Arguments::IsOver() const {
    return m_options.action == Options::Action::Help
           || m_options.action == Options::Action::Version;
}

void Arguments::TakeFile(const std::string& argument) {
    if (!m_onlyFiles && argument.size() > 1 && argument.front() == '@')
        TakeArgumentsIn(argument.substr(1));
    else
        m_files.push_back(argument);
}

void Arguments::TakeArgumentsIn(const std::string& path) {
    if (++m_argumentFiles > s_mostArgumentFiles)
        throw Fault(path + ": more than " + std::to_string(s_mostArgumentFiles)
                    + " files of arguments");
    for (const std::string& argument : ReadArguments(path))
        Take(argument);
}

const OptionRow& Arguments::FindLong(std::string_view name, const std::string& argument) const {
    const OptionRow* found = nullptr;
    for (const OptionRow& row : m_rows) {
        if (row.name == nullptr || !std::string_view(row.name).starts_with(name))
            continue;
        if (row.name == name)
            return row;
        if (found != nullptr)
            throw UsageError("ambiguous option " + argument);
        found = &row;
    }
    if (found == nullptr)
        ThrowUnknown(argument);
    return *found;
}

void Arguments::TakeLong(const std::string& argument) {
    const std::size_t equal = std::min(argument.find('='), argument.size());
    const OptionRow& row = FindLong(std::string_view(argument).substr(2, equal - 2), argument);
    const bool hasValue = equal != argument.size();
    if (hasValue && row.takesArgument == false)
        ThrowUnknown(argument);
    if (hasValue || row.takesArgument != true) {
        row.apply(m_options, hasValue ? argument.c_str() + equal + 1 : nullptr);
    } else {
        m_waiting = &row;
        m_waitingName = argument;
    }
}

// Letters of options without a value may stand together. A value may stand behind its letter.
void Arguments::TakeShort(const std::string& argument) {
    for (std::size_t i = 1; i < argument.size(); ++i) {
        const std::string name = {'-', argument[i]};
        const auto row = std::find_if(m_rows.begin(), m_rows.end(), [&name](const OptionRow& r) {
            return r.letter == name.back();
        });
        if (row == m_rows.end() || name.back() == 0)
            ThrowUnknown(name);
        if (row->takesArgument != true) {
            row->apply(m_options, nullptr);
            continue;
        }
        if (i + 1 < argument.size())
            return row->apply(m_options, argument.c_str() + i + 1);
        m_waiting = &*row;
        m_waitingName = name;
    }
}

}  // namespace qztools
