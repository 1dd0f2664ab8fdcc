#include <functional>
#include <memory>

#include "qzMacroExpander/Mpfw.h"
#include "qzUtils/StringExt.h"

namespace vorn {

namespace {

// Whether the byte at pos is one of s. The position may belong to any buffer or none.
bool StringContainsPos(const xstring& s, const xchar* pos) {
    const std::less<const xchar*> before;
    return !before(pos, s.data()) && before(pos, s.data_end());
}

}  // namespace

MpfwSourceFile::~MpfwSourceFile() = default;

bool MpfwSourceFile::GetFilenameAndLineNumber(const xchar* pos, xstring& localPath,
                                              ssize_t& lineNumber) const {
    const ssize_t line = GetLineNumber(m_buffer, pos);
    if (line == -1)
        return false;
    localPath = m_localPath;
    lineNumber = line;
    return true;
}

void MpfwSourceFile::AdjustErrorPosition(LexScannerException& e) {
    m_pieces.AdjustErrorPosition(e, m_expanded);
}

void MpfwSourceFileList::AddSrcFile(MpfwSourceFile* srcFile) {
    std::unique_ptr<MpfwSourceFile> owner(srcFile);
    push_back(srcFile);
    owner.release();
}

MpfwSourceFile* MpfwSourceFileList::FindSourceFile(const xstring& localPath) const {
    for (MpfwSourceFile* file : *this) {
        if (CaseInsensitiveCompare(file->m_localPath, localPath))
            return file;
    }
    return nullptr;
}

ssize_t MpfwSourceFileList::GetSrcFileIndexContainingPosition(const xchar* pos) const {
    for (ssize_t i = 0; i < size(); ++i) {
        if (StringContainsPos((*this)[i]->m_buffer, pos))
            return i;
    }
    return -1;
}

bool MpfwSourceFileList::GetFilenameAndLineNumber(const xchar* pos, xstring& localPath,
                                                  ssize_t& lineNumber) const {
    if (pos == nullptr)
        return false;
    for (const MpfwSourceFile* file : *this) {
        if (file->GetFilenameAndLineNumber(pos, localPath, lineNumber))
            return true;
    }
    return false;
}

void MpfwSourceFileList::WriteLexScannerError(xostream& os, const LexScannerException& e) const {
    xstring path;
    ssize_t line = -1;
    os << '\n';
    if (GetFilenameAndLineNumber(e.m_pos, path, line))
        os << path << '(' << line << ") : ";
    os << e.m_description << '\n';
}

}  // namespace vorn
