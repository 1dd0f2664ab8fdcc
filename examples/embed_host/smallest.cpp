// The smallest host: smallest FILE writes the expansion of a file to standard output.

#include "qzMacroExpander/LSSourceFile.h"
#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/FilePath.h"
#include "qzUtils/Tracer.h"

int main(int argc, char** argv) {
    vorn::LSSourceFile file;  // in front of the frame, whose definitions are views of its text
    if (argc != 2 || !vorn::ReadStringFromFile(file.m_buffer, argv[1], true))
        return 2;
    file.m_name = argv[1];
    vorn::FileScopeVarFrame frame;
    try {
        vorn::xstring result;
        vorn::MacroExpand(nullptr, &frame, file.m_buffer, 0, 0, result);
        vorn::xcout << result;
    } catch (vorn::LexScannerException& e) {
        file.GetFilenameAndLineNumber(e.m_pos, e.m_path, e.m_lineNumber);
        vorn::TracerX trace;
        e.Write(trace);
        trace << "\n";
        return 1;
    }
}
