#include "qzMacroExpander/LSSourceFile.h"

#include "qzUtils/StringExt.h"

namespace vorn {

bool LSSourceFile::GetFilenameAndLineNumber(const xchar* pos, xstring& filename,
                                            ssize_t& lineNumber) const {
    const ssize_t line = GetLineNumber(m_buffer, pos);
    if (line == -1)
        return false;
    filename = m_name;
    lineNumber = line;
    return true;
}

}  // namespace vorn
