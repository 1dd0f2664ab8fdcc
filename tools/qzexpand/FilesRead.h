// The files that a run has read.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace qztools {

// The paths under which files were read, each once, in the order of their first reading. Two
// paths that lead to one file count as two.
class FilesRead {
public:
    void Add(const std::string& path) {
        if (m_known.insert(path).second)
            m_inOrder.push_back(path);
    }

    const std::vector<std::string>& InOrder() const { return m_inOrder; }

private:
    std::unordered_set<std::string> m_known;
    std::vector<std::string> m_inOrder;
};

}  // namespace qztools
