#include "qzUtils/FilePath.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include <sys/stat.h>

namespace vorn {

namespace {

bool IsSlash(char c) {
    return c == '/' || c == '\\';
}

bool IsAbsolute(SubString path) {
    return path && IsSlash(*path);
}

// Goes on from where names lead, by one element of a path. Nothing lies above the root.
void Step(xvector<SubString>& names, SubString element, bool absolute) {
    if (element.empty() || element == ".")
        return;
    const bool up = element == "..";
    if (up && !names.empty() && *(names.end() - 1) != "..")
        names.erase(names.end() - 1);
    else if (!up || !absolute)
        names.push_back(element);
}

// The names that are left of a path in its normal form: views of the path.
xvector<SubString> NormalNames(SubString path) {
    const bool absolute = IsAbsolute(path);
    xvector<SubString> names;
    while (path) {
        const char* end = std::find_if(path.begin(), path.end(), IsSlash);
        Step(names, SubString(path.begin(), end), absolute);
        path.setbegin(end == path.end() ? end : end + 1);
    }
    return names;
}

xstring Join(bool absolute, const xvector<SubString>& names) {
    xstring path(absolute ? "/" : "");
    for (const SubString& name : names) {
        if (&name != names.begin())
            path += '/';
        path += name;
    }
    if (path.empty())
        path += '.';
    return path;
}

}  // namespace

void NormalisePath(xstring& path) {
    if (!path.empty())
        path = Join(IsAbsolute(path), NormalNames(path));
}

void CalcRelativePath(SubString a, SubString b, xstring& result) {
    const xvector<SubString> from = NormalNames(a);
    const xvector<SubString> to = NormalNames(b);
    const auto [restOfFrom, restOfTo] =
        std::mismatch(from.begin(), from.end(), to.begin(), to.end());
    // The name of a directory that a leaves by ".." is not known, so nothing leads back into it.
    if (IsAbsolute(a) != IsAbsolute(b) || (restOfFrom != from.end() && *restOfFrom == "..")) {
        result.assign(b);
        NormalisePath(result);
        return;
    }
    xvector<SubString> names;
    for (auto it = restOfFrom; it != from.end(); ++it)
        names.push_back("..");
    names.push_back(restOfTo, to.end());
    result = Join(false, names);
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
