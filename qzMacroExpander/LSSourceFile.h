// A named buffer, for a client that has a single text and wants to report errors in it.
//
// It owns its text. Tokens, macros and the positions of errors point into m_buffer, so it stays
// as it is and where it is while any of these is used; note that c_str() may move it.
#pragma once

#include "qzUtils/xstring.h"

namespace vorn {

struct LSSourceFile {
    xstring m_name;
    xstring m_buffer;

    // Where pos lies in the buffer, one past its last byte included: sets filename to the name
    // and lineNumber to the line, counted from 1. False, with both as they were, where pos lies
    // elsewhere or is null. Takes time in proportion to the text in front of pos.
    bool GetFilenameAndLineNumber(const xchar* pos, xstring& filename, ssize_t& lineNumber) const;
};

}  // namespace vorn
