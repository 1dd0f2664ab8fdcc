#include "CheckRun.h"

#include <cerrno>

#include "common/Fault.h"
#include "common/Files.h"
#include "common/UnifiedDiff.h"
#include "common/Views.h"

namespace qztools {

bool CheckFile(const std::string& path, vorn::SubString bytes) {
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
