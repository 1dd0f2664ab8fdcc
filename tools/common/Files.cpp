#include "common/Files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/Descriptor.h"
#include "common/Fault.h"
#include "common/Temporary.h"

namespace qztools {

using vorn::SubString;
using vorn::xstring;

[[noreturn]] void ThrowSystemFault(const std::string& name, int error) {
    throw Fault(name + ": " + std::strerror(error));
}

// ---- reading -----------------------------------------------------------------------------------

int ReadToEnd(int fd, xstring& text) {
    std::array<char, 65536> part;
    while (true) {
        const ssize_t n = ::read(fd, part.data(), part.size());
        if (n == 0)
            return 0;
        if (n > 0)
            text.append(part.data(), part.data() + n);
        else if (errno != EINTR)
            return errno;
    }
}

int ReadDescriptor(int fd, xstring& text, FileId& id) {
    struct stat status {};
    if (::fstat(fd, &status) != 0)
        return errno;
    id = FileId{status.st_dev, status.st_ino};
    if (S_ISREG(status.st_mode))
        text.reserve(status.st_size);
    return ReadToEnd(fd, text);
}

int ReadFile(const std::string& path, xstring& text, FileId& id) {
    if (path.find('\0') != std::string::npos)
        return ENOENT;
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file.Get() < 0 ? errno : ReadDescriptor(file.Get(), text, id);
}

int ReadStandardInput(xstring& text, FileId& id) {
    return ReadDescriptor(STDIN_FILENO, text, id);
}

namespace {

// Whether what can be read is the bytes, to the last one.
bool ReadsAs(int fd, SubString bytes) {
    std::array<char, 65536> part;
    while (true) {
        const ssize_t n = ::read(fd, part.data(), part.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return n == 0 && bytes.empty();
        if (n > bytes.size() || !std::equal(part.data(), part.data() + n, bytes.m_p1))
            return false;
        bytes += n;
    }
}

}  // namespace

bool HoldsAlready(const std::string& path, SubString bytes) {
    struct stat status {};
    if (path == "-" || ::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)
        || status.st_size != bytes.size())
        return false;
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file.Get() >= 0 && ReadsAs(file.Get(), bytes);
}

// ---- writing -----------------------------------------------------------------------------------

int WriteAll(int fd, SubString bytes) {
    while (bytes) {
        const ssize_t n = ::write(fd, bytes.m_p1, static_cast<std::size_t>(bytes.size()));
        if (n >= 0)
            bytes += n;
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

namespace {

// The path behind all symbolic links, whether a file is there or not.
std::string FollowLinks(const std::string& path) {
    constexpr int s_mostLinks = 40;
    std::filesystem::path target(path);
    std::error_code error;
    for (int i = 0; i < s_mostLinks && std::filesystem::is_symlink(target, error); ++i)
        target = target.parent_path() / std::filesystem::read_symlink(target, error);
    return target.string();
}

std::string MakeTemporaryName(const std::string& path) {
    unsigned long long number = 0;
    if (::getrandom(&number, sizeof number, 0) != static_cast<ssize_t>(sizeof number))
        number = static_cast<unsigned long long>(::getpid());
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", number);
    const std::string name = std::string(".qz.") + digits.data() + ".tmp";
    return (std::filesystem::path(path).parent_path() / name).string();
}

// Makes the new file look like the old one to everybody. Whose file it is can be kept only by
// those who may give files away.
int TakeOver(int fd, const struct stat& old) {
    if ((old.st_uid != ::geteuid() || old.st_gid != ::getegid())
        && ::fchown(fd, old.st_uid, old.st_gid) != 0 && errno != EPERM)
        return errno;
    return ::fchmod(fd, old.st_mode & 0777) == 0 ? 0 : errno;
}

// old is null where no file is there yet; then the umask decides who may read the new one.
void ReplaceFile(const std::string& path, const struct stat* old, SubString bytes) {
    Temporary temporary(MakeTemporaryName(path));
    const mode_t mode = old != nullptr ? 0600 : 0666;
    Descriptor file(
        ::open(temporary.Path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    int error = file.Get() < 0 ? errno : 0;
    temporary.OnMade();
    if (error == 0 && old != nullptr)
        error = TakeOver(file.Get(), *old);
    if (error == 0)
        error = WriteAll(file.Get(), bytes);
    if (error == 0)
        error = file.Close();
    if (error == 0)
        error = temporary.MoveTo(path);
    if (error != 0)
        ThrowSystemFault(path, error);
}

void WriteInPlace(const std::string& path, SubString bytes) {
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    int error = file.Get() < 0 ? errno : WriteAll(file.Get(), bytes);
    if (error == 0)
        error = file.Close();
    if (error != 0)
        ThrowSystemFault(path, error);
}

}  // namespace

void WriteFile(const std::string& path, SubString bytes) {
    if (path == "-") {
        if (const int error = WriteAll(STDOUT_FILENO, bytes))
            ThrowSystemFault("standard output", error);
        return;
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        if (errno != ENOENT)
            ThrowSystemFault(path, errno);
        return ReplaceFile(FollowLinks(path), nullptr, bytes);
    }
    if (!S_ISREG(status.st_mode))
        return WriteInPlace(path, bytes);
    if (::access(path.c_str(), W_OK) != 0)
        ThrowSystemFault(path, errno);
    ReplaceFile(FollowLinks(path), &status, bytes);
}

}  // namespace qztools
