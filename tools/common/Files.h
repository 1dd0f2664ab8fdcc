// Reading and writing files.
#pragma once

#include <string>

#include <sys/types.h>

#include "qzUtils/SubString.h"

namespace qztools {

// What makes two paths the same file.
struct FileId {
    dev_t device = 0;
    ino_t inode = 0;

    bool operator==(const FileId&) const = default;
};

// Reads the exact bytes of a file, whatever it is: a pipe, a device. Returns 0 or the errno of
// the call that failed.
int ReadFile(const std::string& path, vorn::xstring& text, FileId& id);
int ReadStandardInput(vorn::xstring& text, FileId& id);
int ReadDescriptor(int fd, vorn::xstring& text, FileId& id);

// Reads what a file descriptor still has. Returns 0 or an errno.
int ReadToEnd(int fd, vorn::xstring& text);

// Writes a file, all of it or nothing; "-" stands for standard output. The bytes go to a temporary
// file beside it, which takes its place once everything has been written. A symbolic link is
// followed, and an old file hands on its permissions. What is no regular file (a pipe, a device) is
// written to directly. Throws Fault.
void WriteFile(const std::string& path, vorn::SubString bytes);

// Whether there is a regular file with exactly these bytes; never for "-".
bool HoldsAlready(const std::string& path, vorn::SubString bytes);

// Writes to a file descriptor until everything is out. Returns 0 or an errno.
int WriteAll(int fd, vorn::SubString bytes);

}  // namespace qztools
