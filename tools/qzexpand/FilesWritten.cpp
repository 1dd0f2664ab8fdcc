#include "FilesWritten.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "common/Fault.h"

namespace qztools {

namespace fs = std::filesystem;

namespace {

// Whether there is, or would be, a regular file.
bool IsForAFile(const std::string& path) {
    std::error_code error;
    return path != "-" && (!fs::exists(path, error) || fs::is_regular_file(path, error));
}

// The file itself, behind all links, as far as it is there.
fs::path RealPath(const std::string& path) {
    std::error_code error;
    return fs::weakly_canonical(fs::absolute(path, error), error);
}

// What has been read is there, so that a file to come is another one.
bool IsSameFile(const std::string& path, const std::string& read) {
    std::error_code error;
    return fs::equivalent(path, read, error);
}

bool WillBeOneFile(const std::string& a, const std::string& b) {
    return IsSameFile(a, b) || RealPath(a) == RealPath(b);
}

std::vector<std::string> FilesToWrite(const Options& options) {
    std::vector<std::string> files;
    for (const std::optional<std::string>& file :
         {std::optional(options.output), options.map, options.depfile})
        if (file && IsForAFile(*file))
            files.push_back(*file);
    return files;
}

}  // namespace

void RefuseLosses(const Options& options, const FilesRead& filesRead) {
    const std::vector<std::string> files = FilesToWrite(options);
    for (auto file = files.begin(); file != files.end(); ++file) {
        for (const std::string& read : filesRead.InOrder())
            if (IsSameFile(*file, read))
                throw Fault(*file + ": this would replace " + read + ", which has been read");
        for (auto other = files.begin(); other != file; ++other)
            if (WillBeOneFile(*file, *other))
                throw Fault(*file + ": this and " + *other + " are one file");
    }
}

}  // namespace qztools
