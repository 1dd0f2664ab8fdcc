#include "EachInput.h"

#include <algorithm>
#include <cerrno>
#include <map>

#include <sys/stat.h>

#include "common/Fault.h"
#include "common/Files.h"

namespace qztools {

namespace {

std::string InFolder(const std::string& folder, const std::string& name) {
    return folder + (folder.ends_with('/') ? "" : "/") + name;
}

// The name of the output.
std::string NameFor(const std::string& input) {
    if (input == "-")
        throw UsageError("standard input cannot be one of several files");
    std::string name = input.substr(input.rfind('/') + 1);
    if (name.ends_with(".qz"))
        name.resize(name.size() - 3);
    if (name.empty() || name == "." || name == "..")
        throw UsageError("no name for the output of " + input);
    return name;
}

// Every further file of a run has its line here: the folder that its option names is given the
// file that belongs to the input.
Options OptionsOf(const Options& all, const std::string& input) {
    const std::string name = NameFor(input);
    Options options = all;
    options.inputs.clear();
    options.input = input;
    options.output = InFolder(all.output, name);
    if (all.depfile)
        options.depfile = InFolder(*all.depfile, name + ".d");
    if (all.map)
        options.map = InFolder(*all.map, name + ".map");
    return options;
}

std::vector<std::string> FilesWrittenBy(const Options& options) {
    std::vector<std::string> files = {options.output};
    if (options.depfile)
        files.push_back(*options.depfile);
    if (options.map)
        files.push_back(*options.map);
    return files;
}

void RefuseSharedFiles(const std::vector<Options>& each) {
    std::map<std::string, std::string> inputs;  // by the file that is made of them
    for (const Options& options : each)
        for (const std::string& file : FilesWrittenBy(options))
            if (const auto [other, isNew] = inputs.emplace(file, options.input); !isNew)
                throw UsageError(other->second + " and " + options.input + " would both write "
                                 + file);
}

// ---- what is there -----------------------------------------------------------------------------

void RequireFolder(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        ThrowSystemFault(path, errno);
    if (!S_ISDIR(status.st_mode))
        ThrowSystemFault(path, ENOTDIR);
}

// Not the file itself where it is missing: that is for the run to report.
bool FindFile(const std::string& path, FileId& id) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    id = {status.st_dev, status.st_ino};
    return true;
}

// An input without .qz in the folder of the outputs has the name of its output.
void KeepInputs(const std::vector<Options>& each) {
    for (const Options& options : each) {
        FileId input;
        FileId output;
        if (FindFile(options.input, input) && FindFile(options.output, output) && input == output)
            throw Fault(options.output + ": the output would replace the input");
    }
}

}  // namespace

std::vector<Options> OptionsOfEachInput(const Options& options) {
    std::vector<Options> each;
    for (const std::string& input : options.inputs)
        each.push_back(OptionsOf(options, input));
    RefuseSharedFiles(each);
    RequireFolder(options.output);
    if (options.depfile)
        RequireFolder(*options.depfile);
    if (options.map)
        RequireFolder(*options.map);
    KeepInputs(each);
    return each;
}

}  // namespace qztools
