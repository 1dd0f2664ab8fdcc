#include "Root.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "common/Fault.h"

namespace qztools {

using vorn::xstring;

namespace {

// The elements between the slashes. Where there is nothing between them, that is a dot, so that a
// slash at the end asks for a folder.
std::vector<std::string> Split(std::string_view path) {
    std::vector<std::string> names;
    while (true) {
        const std::size_t slash = path.find('/');
        const std::string_view name = path.substr(0, slash);
        names.emplace_back(name.empty() ? "." : name);
        if (slash == std::string_view::npos)
            return names;
        path.remove_prefix(slash + 1);
    }
}

// Of a path without links, dots and slashes too many.
std::vector<std::string> SplitReal(const std::string& path) {
    std::vector<std::string> names = Split(path);
    std::erase(names, ".");
    return names;
}

std::string RealPath(const std::string& folder) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(folder, error);
    if (error)
        ThrowSystemFault(folder, error.value());
    return real.string();
}

// Under its real path, so that it is the folder of that path.
Descriptor OpenFolder(const std::string& folder, const std::string& real) {
    const int fd = ::open(real.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        ThrowSystemFault(folder, errno);
    return Descriptor(fd);
}

bool StartsWith(const std::vector<std::string>& path, const std::vector<std::string>& start) {
    return path.size() >= start.size() && std::equal(start.begin(), start.end(), path.begin());
}

}  // namespace

// ---- following a path --------------------------------------------------------------------------

// The way from / along a path, with links followed. It holds the folders of the way that lie in the
// root, so that nothing can be put in their place.
class Root::Walk {
public:
    Walk(const Root& root, const std::string& path) : m_root(root) { PutAhead(path); }

    // Opens the file at the end of the path. Returns why that can't be done, or nothing.
    std::string Open(Descriptor& file) {
        while (!m_ahead.empty()) {
            const std::string name = std::move(m_ahead.back());
            m_ahead.pop_back();
            if (name == "..")
                Leave();
            else if (name != ".") {
                const std::string reason = IsInside() ? Step(name, file) : StepOutside(name);
                if (!reason.empty() || file.Get() >= 0)
                    return reason;
            }
        }
        return IsInside() ? std::strerror(EISDIR) : Outside();
    }

private:
    void PutAhead(const std::string& path) {
        if (path.starts_with('/')) {
            m_at.clear();
            m_folders.clear();
        }
        const Names names = Split(path);
        m_ahead.insert(m_ahead.end(), names.rbegin(), names.rend());
    }

    bool IsInside() const { return StartsWith(m_at, m_root.m_path); }

    std::string Outside() const { return "lies outside the root " + m_root.m_name; }

    // Outside the root there are only the ways to what is known to be there.
    std::string StepOutside(const std::string& name) {
        m_at.push_back(name);
        return m_root.IsKnown(m_at) ? "" : Outside();
    }

    void Leave() {
        if (!m_at.empty())
            m_at.pop_back();
        if (!m_folders.empty())
            m_folders.pop_back();
    }

    // ---- inside

    int Folder() const {
        return m_folders.empty() ? m_root.m_folder.Get() : m_folders.back().Get();
    }

    std::string Step(const std::string& name, Descriptor& file) {
        struct stat status {};
        if (::fstatat(Folder(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return std::strerror(errno);
        if (S_ISLNK(status.st_mode))
            return FollowLink(name);
        if (S_ISDIR(status.st_mode))
            return Enter(name);
        if (!m_ahead.empty())
            return std::strerror(ENOTDIR);
        return S_ISREG(status.st_mode) ? OpenFile(name, file) : NoRegularFile();
    }

    std::string FollowLink(const std::string& name) {
        constexpr int s_mostLinks = 40;
        std::array<char, PATH_MAX> target;
        const ssize_t size = ::readlinkat(Folder(), name.c_str(), target.data(), target.size());
        if (size < 0 || ++m_links > s_mostLinks)
            return std::strerror(size < 0 ? errno : ELOOP);
        PutAhead(std::string(target.data(), static_cast<std::size_t>(size)));
        return {};
    }

    std::string Enter(const std::string& name) {
        const int flags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
        Descriptor folder(::openat(Folder(), name.c_str(), flags));
        if (folder.Get() < 0)
            return std::strerror(errno);
        m_folders.push_back(std::move(folder));
        m_at.push_back(name);
        return {};
    }

    // It may have become something else meanwhile, which must not be waited for.
    std::string OpenFile(const std::string& name, Descriptor& file) {
        const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        Descriptor opened(::openat(Folder(), name.c_str(), flags));
        struct stat status {};
        if (opened.Get() < 0 || ::fstat(opened.Get(), &status) != 0)
            return std::strerror(errno);
        if (!S_ISREG(status.st_mode))
            return NoRegularFile();
        file.Swap(opened);
        return {};
    }

    static std::string NoRegularFile() { return "Not a regular file"; }

    const Root& m_root;
    Names m_at;                         // where the walk stands: a real path
    std::vector<Descriptor> m_folders;  // the part of it that lies in the root
    Names m_ahead;                      // what is left of the path, the next name last
    int m_links = 0;                    // that have been followed
};

// ---- the root ----------------------------------------------------------------------------------

Root::Root(const std::string& folder, const std::vector<std::string>& named)
    : m_name(folder),
      m_real(RealPath(folder)),
      m_path(SplitReal(m_real)),
      m_folder(OpenFolder(folder, m_real)),
      m_known{m_path} {
    AddNamed(".", "");
    for (const std::string& name : named)
        AddNamed(name, name.ends_with('/') ? name : name + '/');
}

// A folder that is not there is no start of anything.
void Root::AddNamed(const std::string& folder, const std::string& start) {
    std::error_code error;
    const std::string real = std::filesystem::canonical(folder, error).string();
    if (error)
        return;
    m_named.push_back({start, real});
    m_known.push_back(SplitReal(real));
}

// The path with its start replaced by the real path of the named folder; the longest start counts.
std::string Root::RealStart(const std::string& path) const {
    const NamedFolder* best = nullptr;
    for (const NamedFolder& named : m_named)
        if (path.starts_with(named.start) && !(named.start.empty() && path.starts_with('/'))
            && (best == nullptr || named.start.size() > best->start.size()))
            best = &named;
    return best == nullptr ? "/" + path : best->real + '/' + path.substr(best->start.size());
}

bool Root::IsKnown(const Names& path) const {
    return std::any_of(m_known.begin(), m_known.end(),
                       [&path](const Names& known) { return StartsWith(known, path); });
}

std::string Root::Read(const std::string& path, xstring& text, FileId& id) const {
    if (path.find('\0') != std::string::npos)
        return std::strerror(ENOENT);
    Descriptor file(-1);
    std::string reason = Walk(*this, RealStart(path)).Open(file);
    if (reason.empty())
        if (const int error = ReadDescriptor(file.Get(), text, id))
            reason = std::strerror(error);
    return reason;
}

}  // namespace qztools
