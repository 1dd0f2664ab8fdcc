// Expands a text of the macro language.
//
// MacroExpand reads a text, in which names are looked up in a frame and definitions land there,
// and writes it with every macro use, directive and evaluated expression replaced by what it
// yields. Nothing is copied from the text: it must outlive the frame and, where they are read,
// the pieces.
//
// Every fault is thrown as LexScannerException, with a position in the text, or in a text that an
// earlier definition came from, or in a temporary one, which is gone by then. What was written up
// to the fault stays written.
//
// Everything runs on the caller's thread. Different threads may expand at once into different
// outputs with different chains of frames, as long as no text uses Python.
#pragma once

#include "qzMacroExpander/ExpandedOutput.h"
#include "qzMacroExpander/LSToken.h"
#include "qzMacroExpander/LSVariable.h"

namespace vorn {

// What importing means is for the host to say. Both operations may throw LexScannerException with
// errorpos, the source position of the token behind the directive's name.
class ImportHandler {
public:
    virtual ~ImportHandler() = default;

    // Records a directory to search. False, the default: the directive is not supported.
    virtual bool HandleImportPath(const xstring& importPath, const xchar* errorpos);

    // Imports a file into vf, the frame that the directive stands in. False: it can't be done.
    virtual bool HandleImport(VarFrame* vf, const xstring& importPath, const xchar* errorpos) = 0;
};

// Expands str in the frame vf.
//
// importHandler: receives @import and @importpath; null refuses them and leaves @$ as it stands.
//     With a handler, vf must belong to a file scope.
// srcIndent: columns of white space that are taken off each line of str after the first.
// dstIndent: blanks that each line begun by str gets in the output.
void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, ExpandedOutput& output);

// The same into a string. When an exception passes, result and pieces are left as they were.
void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& result);
void MacroExpand(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                 ssize_t dstIndent, xstring& result, OutputPieces& pieces);

}  // namespace vorn
