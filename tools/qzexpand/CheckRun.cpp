#include "CheckRun.h"

#include <cerrno>
#include <filesystem>

#include "common/Fault.h"
#include "common/Files.h"
#include "common/UnifiedDiff.h"
#include "common/Views.h"

namespace qztools {

// What is no regular file keeps nothing that could be compared, and might never end.
bool CheckFile(const std::string& path, vorn::SubString bytes) {
    std::error_code status;
    if (std::filesystem::exists(path, status) && !std::filesystem::is_regular_file(path, status)
        && !std::filesystem::is_directory(path, status))
        throw Fault(path + ": no regular file, which --check could compare");
    vorn::xstring old;
    FileId id;
    const int error = ReadFile(path, old, id);
    const bool isThere = error == 0;
    if (!isThere && error != ENOENT)
        ThrowSystemFault(path, error);
    if (isThere && ToView(old) == ToView(bytes))
        return true;
    WriteFile("-", ToSubString(FormatDiffHeader(path, isThere)
                               + FormatHunks(ToView(old), ToView(bytes))));
    return false;
}

}  // namespace qztools
