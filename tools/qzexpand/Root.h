// The folder that imports may not leave.
//
// A path in a text leads where symbolic links and .. take it, and that may change while it is
// followed. So it is followed here, step by step: no step outside the folder asks the system for
// anything, and every step inside starts from the folder that the one before has opened. What is
// read therefore lies in the folder, and whether something lies outside cannot be found out.
#pragma once

#include <string>
#include <vector>

#include "common/Descriptor.h"
#include "common/Files.h"

namespace qztools {

class Root {
public:
    // named are further folders, as whoever calls the tool has named them. Paths that start with
    // one of them start where it really is, also outside the root; the same goes for relative ones
    // and the working directory. Throws Fault where the root is no folder.
    Root(const std::string& folder, const std::vector<std::string>& named);

    // Reads a regular file. Returns why that can't be done; nothing when it has been done.
    std::string Read(const std::string& path, vorn::xstring& text, FileId& id) const;

private:
    class Walk;

    // The elements of a path.
    using Names = std::vector<std::string>;

    struct NamedFolder {
        std::string start;  // what paths start with: the name and a slash, or nothing
        std::string real;   // its real path
    };

    void AddNamed(const std::string& folder, const std::string& start);
    std::string RealStart(const std::string& path) const;
    bool IsKnown(const Names& path) const;

    const std::string m_name;
    const std::string m_real;
    const Names m_path;  // the elements of m_real
    const Descriptor m_folder;
    std::vector<NamedFolder> m_named;
    std::vector<Names> m_known;  // the real paths of the root and of the named folders
};

}  // namespace qztools
