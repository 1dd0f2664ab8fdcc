// How far a run with several inputs has come.
#pragma once

#include <cstddef>
#include <string>

namespace qztools {

// A line on standard error where that is a terminal, "[12/40] a.cpp", and nothing otherwise. It is
// erased before anything else is written there.
class Progress {
public:
    explicit Progress(std::size_t all);
    ~Progress() { Erase(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::size_t done, const std::string& name);
    void Erase();

private:
    std::size_t m_all;
    bool m_hasTerminal;
    bool m_isShown = false;
};

}  // namespace qztools
