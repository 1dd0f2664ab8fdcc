// Projects of several files: source files that stay in memory, errors reported with file and
// line, and the base of parsers for project files, which may use the whole macro language and
// import one another.
//
// A client derives from MpfwParser and says what a project file holds and where imports are
// found:
//
//   MpfwSourceFileList files;        // owns the texts, so it goes last
//   MpfwFrame frame(files);          // the macros and search paths of the project
//   MyParser parser(frame);
//   MpfwSourceFile* root = parser.AddFile("main.txt", SubString());   // expands it, with imports
//   if (root != nullptr) {           // otherwise the trace has the errors
//       try {
//           parser.Init(root->m_expanded);
//           ...                      // the client's grammar
//       } catch (LexScannerException& e) {
//           root->AdjustErrorPosition(e);
//           files.WriteLexScannerError(xcout, e);
//       }
//   }
//
// Positions are bare addresses. What names the file and line of an error is the list, by asking
// each buffer whether the address lies in it; so the list must outlive the frame and whatever
// was read from the texts, and the error must be reported while it lives.
//
// One thread at a time may work on a project.
#pragma once

#include "qzMacroExpander/ExpressionParser.h"
#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/AutoPtrExt.h"

namespace vorn {

// ---- the files of a project --------------------------------------------------------------------

// One file of a project. A client may derive from it to keep data of its own with a file.
class MpfwSourceFile {
public:
    xstring m_localPath;    // the path that it was read from; its name in all reports
    xstring m_buffer;       // the text as read; fixed, in content and place, once it is expanded
    xstring m_expanded;     // the expanded text
    OutputPieces m_pieces;  // where each stretch of m_expanded came from

    MpfwSourceFile() = default;
    virtual ~MpfwSourceFile();
    MpfwSourceFile(const MpfwSourceFile&) = delete;
    MpfwSourceFile& operator=(const MpfwSourceFile&) = delete;

    // Where pos lies in m_buffer, one past its last byte included: sets localPath to the path and
    // lineNumber to the line, counted from 1. False, with both as they were, where pos lies
    // elsewhere or is null. Takes time in proportion to the text in front of pos.
    bool GetFilenameAndLineNumber(const xchar* pos, xstring& localPath, ssize_t& lineNumber) const;

    // Where the position of e lies in m_expanded, its end not included, replaces it by the source
    // address that it came from, which may be null or lie in another file. An error raised by
    // parsing m_expanded cannot be located without this.
    void AdjustErrorPosition(LexScannerException& e);
};

// The files of a project, in the order in which they were added, the root file first. The list
// owns them. A file that was read twice stands in it twice.
class MpfwSourceFileList : public AutoCollectionOfPtr<xvector<MpfwSourceFile*>> {
public:
    // Takes ownership.
    void AddSrcFile(MpfwSourceFile* srcFile);

    // The first file of that path, whatever the case of its letters; null if there is none.
    MpfwSourceFile* FindSourceFile(const xstring& localPath) const;

    // The index of the first file whose m_buffer holds the byte at pos; -1 if none does.
    ssize_t GetSrcFileIndexContainingPosition(const xchar* pos) const;

    // Asks the files in turn, by the function of that name.
    bool GetFilenameAndLineNumber(const xchar* pos, xstring& localPath, ssize_t& lineNumber) const;

    // Writes a line feed, the place as "path(line) : " if a file has it, the description, and a
    // line feed. The path and line that e itself may carry are not looked at.
    void WriteLexScannerError(xostream& os, const LexScannerException& e) const;
};

// What the parsers of a project share.
class MpfwFrame {
public:
    MpfwSourceFileList& m_srcFileList;  // not owned
    // All files are expanded in this one frame, so whatever a file defines is there for all text
    // that is expanded after it.
    FileScopeVarFrame m_vf;
    xvector<xstring> m_importPaths;  // normalised, in the order of their @importpath

    // srcFileList must outlive the frame.
    explicit MpfwFrame(MpfwSourceFileList& srcFileList) : m_srcFileList(srcFileList) {}
};

// ---- the parser of project files ---------------------------------------------------------------

// A file goes through two stages. AddFile expands it, and each @import in it at once, so that
// the macros of the imported file are there for the text behind the directive. Then the client
// parses m_expanded, token by token, by the operations below and those of ExpressionParser.
// Nothing of the macro language is left in that text but @import "path", and where the client's
// grammar meets it, ParseImportDirective hands the imported file to ProcessImportedFile.
//
// The state of a parser belongs to one text at a time. Inside ProcessImportedFile a second parser
// on the same MpfwFrame reads the other text; one that uses this object has to put m_token,
// m_prevToken and m_str back.
//
// What is thrown is LexScannerException, at the token that the message names unless something
// else is said. The token lies in m_expanded: MpfwSourceFile::AdjustErrorPosition maps it.
class MpfwParser : public ExpressionParser, public ImportHandler {
public:
    MpfwFrame& m_frame;  // not owned

    // frame must outlive the parser. To parse a text, call Init first.
    explicit MpfwParser(MpfwFrame& frame) : m_frame(frame) {}

    // ---- files ---------------------------------------------------------------------------------

    // Reads a file, appends extra to its text, adds it to the list and expands it in the
    // project's frame. An error of the expansion is reported to the trace, and the result is
    // null; the file stays in the list, which owns it in any case. An error in an imported file
    // is reported there and, one level up, as an import that failed.
    // Throws "Couldn't open file <localPath>" at the current token, if there is one.
    MpfwSourceFile* AddFile(const xstring& localPath, SubString extra);

    // The import handler of AddFile. Applies the dollar macros, normalises, and appends to the
    // search paths.
    bool HandleImportPath(const xstring& importPath, const xchar* errorpos) override;

    // The same: applies the dollar macros, resolves the path and adds the file, whether or not it
    // was imported before. Files that import one another without end exhaust the stack. Whatever
    // vf is, the file is expanded in the project's frame. Throws "Couldn't open file <path>" at
    // errorpos where the path does not resolve.
    bool HandleImport(VarFrame* vf, const xstring& importPath, const xchar* errorpos) override;

    // A new, empty object for a file that is being added; the caller takes ownership.
    virtual MpfwSourceFile* CreateMpfwSourceFile();

    // Turns the path of an import, with its dollar macros applied, into the path to open, as a
    // rule by a search of m_frame.m_importPaths. False where there is no such file. It is asked
    // once by the expansion and once by the parse, and is to answer alike.
    virtual bool ResolveImportPath(const xstring& importPath, xstring& localPath) = 0;

    // Called for each @import that is parsed. srcFile is null where the path resolves to a file
    // that the expansion has not added. The current token is the string of the directive.
    virtual void ProcessImportedFile(MpfwSourceFile* srcFile) = 0;

    // ---- constructs of a project file ----------------------------------------------------------
    //
    // Each starts at the current token. Where nothing else is said it reads on to the token
    // behind its construct. Strings stand in single or double quotes unless the form says "...".

    // @ import string. False if the current token is no @. Throws "Syntax error: @<token>" for
    // any other word, and "Couldn't open file <path>" at the word import.
    bool ParseImportDirective();

    // string, or ( string expression ). Applies the dollar macros.
    void ReadString(xstring& value);

    // $ name = "...". The value is the string as it stands, without the dollar macros.
    void ParseStringSetting(const xstring& name, xstring& value);

    // The same. Throws "Forward slashes must be used in <token>" and "Path can't end with a
    // trailing slash : <token>". An empty path passes.
    void ParsePathSetting(const xstring& name, xstring& value);

    // What the two share: stays at the string.
    void ParseStringSettingHelper(const xstring& name, xstring& value);

    // $ identifier = value, or $ identifier = path value, which is normalised; value as for
    // ReadString. Defines the dollar macro in the project's frame. False if the current token is
    // no $.
    bool ParseMacroDef(xstring& name, xstring& value);
    bool ParseMacroDef();

    // Replaces the dollar macros of the project in s; true if s changed.
    bool ApplyMacros(xstring& s);

    // string. Applies the dollar macros. Stays at the string: the caller reads on.
    xstring ParseQuotedString();

    // The same. Throws "Forward slashes must be used in <token>"; a trailing slash passes.
    xstring ParseFileOrDirName();
};

}  // namespace vorn
