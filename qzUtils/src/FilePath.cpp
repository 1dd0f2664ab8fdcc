#include "qzUtils/FilePath.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <sys/stat.h>

namespace vorn {

void NormalisePath(xstring& path) {
    std::string text(path.begin(), path.end());
    std::replace(text.begin(), text.end(), '\\', '/');
    std::string normal = std::filesystem::path(text).lexically_normal().string();
    if (normal.size() > 1 && normal.back() == '/')
        normal.pop_back();
    path.assign(normal.data(), normal.data() + normal.size());
}

void CalcRelativePath(SubString a, SubString b, xstring& result) {
    const std::filesystem::path from(std::string(a.begin(), a.end()));
    const std::filesystem::path to(std::string(b.begin(), b.end()));
    const auto [restOfFrom, restOfTo] =
        std::mismatch(from.begin(), from.end(), to.begin(), to.end());
    // The name of a directory that a leaves by ".." is not known, so nothing leads back into it.
    const bool unreachable =
        from.is_absolute() != to.is_absolute() || (restOfFrom != from.end() && *restOfFrom == "..");
    std::filesystem::path relative = ".";
    for (auto it = restOfFrom; it != from.end(); ++it)
        relative /= *it == "." ? "." : "..";
    for (auto it = restOfTo; it != to.end(); ++it)
        relative /= *it;
    const std::string text = unreachable ? to.string() : relative.string();
    result.assign(text.data(), text.data() + text.size());
    NormalisePath(result);
}

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// A guess that saves moving the bytes while they are read; the file may still turn out otherwise.
// Files of the system claim sizes that no memory holds, so the guess has a bound.
ssize_t GuessFileSize(std::FILE* file) {
    constexpr ssize_t s_most = ssize_t{1} << 28;
    struct stat status {};
    if (::fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    return std::min<ssize_t>(status.st_size, s_most);
}

bool ReadToEnd(std::FILE* file, xstring& s) {
    s.reserve(GuessFileSize(file));
    char part[65536];
    std::size_t n = 0;
    while ((n = std::fread(part, 1, sizeof part, file)) > 0)
        s.append(part, part + n);
    return std::ferror(file) == 0;
}

}  // namespace

bool ReadStringFromFile(xstring& s, const xstring& path, bool) {
    if (path.find('\0') != xstring::npos)
        return false;
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
    xstring text;
    if (file == nullptr || !ReadToEnd(file.get(), text))
        return false;
    s.swap(text);
    return true;
}

}  // namespace vorn
