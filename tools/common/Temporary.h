// The temporary file that an output is written to.
#pragma once

#include <string>

namespace qztools {

// A file to be: whatever stands at its path is removed again, at the end of the scope or by a
// signal that ends the process, unless it has been moved to its destination. There is one at a
// time. REQUIRES: nothing of another owner stands at the path.
class Temporary {
public:
    explicit Temporary(std::string path);
    ~Temporary();
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    const std::string& Path() const { return m_path; }

    // To be called once the file may have come into being.
    void OnMade() const;

    // Gives the file its final name, in place of a file that has it. Returns 0 or an errno.
    int MoveTo(const std::string& destination);

private:
    std::string m_path;
};

// Removes the temporary file if there is one, at the end of the process: one that another thread
// makes at the same time goes as well. May be called from a signal handler.
void RemoveTemporaryForGood();

}  // namespace qztools
