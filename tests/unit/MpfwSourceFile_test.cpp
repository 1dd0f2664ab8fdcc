#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "qzMacroExpander/Mpfw.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace vorn {
namespace {

using vorn_test::Address;
using vorn_test::HeapText;
using vorn_test::Str;

// A file that a list has taken, not yet expanded.
MpfwSourceFile& Add(MpfwSourceFileList& files, const char* path, const char* text) {
    auto* file = new MpfwSourceFile;
    file->m_localPath = path;
    file->m_buffer = text;
    files.AddSrcFile(file);
    return *file;
}

// Expands the text of a file, in a frame of its own, with each line of the output indented.
void Expand(MpfwSourceFile& file, ssize_t indent) {
    FileScopeVarFrame frame;
    MacroExpand(nullptr, &frame, file.m_buffer, 0, indent, file.m_expanded, file.m_pieces);
}

std::string Report(const MpfwSourceFileList& files, const LexScannerException& e) {
    StringStream os(4096);
    files.WriteLexScannerError(os, e);
    return Str(os.GetString());
}

// ---- one file ----------------------------------------------------------------------------------

TEST(MpfwSourceFile, KnowsTheLineOfEveryByteAndOfItsEnd) {
    MpfwSourceFile file;
    file.m_localPath = "a.txt";
    file.m_buffer = "one\n\nthree\n";
    struct {
        ssize_t offset;
        ssize_t line;
    } const rows[] = {
        {0,  1},
        {3,  1},
        {4,  2},
        {5,  3},
        {10, 3},
        {11, 4},
    };
    for (const auto& row : rows) {
        xstring path;
        ssize_t line = 0;
        EXPECT_TRUE(file.GetFilenameAndLineNumber(file.m_buffer.data() + row.offset, path, line));
        EXPECT_EQ(Str(path), "a.txt") << row.offset;
        EXPECT_EQ(line, row.line) << row.offset;
    }
}

TEST(MpfwSourceFile, LeavesTheAnswerAloneForAPositionElsewhere) {
    const HeapText other("other");
    MpfwSourceFile file;
    file.m_localPath = "a.txt";
    file.m_buffer = "one\ntwo\nthree";
    const xchar* const positions[] = {nullptr, other.begin(), Address(file.m_buffer.data(), -1),
                                      Address(file.m_buffer.data_end(), 1)};
    for (const xchar* pos : positions) {
        xstring path("before");
        ssize_t line = 77;
        EXPECT_FALSE(file.GetFilenameAndLineNumber(pos, path, line));
        EXPECT_EQ(Str(path), "before");
        EXPECT_EQ(line, 77);
    }
}

TEST(MpfwSourceFile, MayAnswerIntoItsOwnPath) {
    MpfwSourceFile file;
    file.m_localPath = "a.txt";
    file.m_buffer = "one\ntwo";
    ssize_t line = 0;
    EXPECT_TRUE(file.GetFilenameAndLineNumber(file.m_buffer.data() + 4, file.m_localPath, line));
    EXPECT_EQ(Str(file.m_localPath), "a.txt");
    EXPECT_EQ(line, 2);
}

TEST(MpfwSourceFile, MovesAnErrorFromTheExpandedTextToTheSource) {
    MpfwSourceFile file;
    file.m_buffer = "@def m = 12\nx m\n  y";
    Expand(file, 4);
    ASSERT_EQ(Str(file.m_expanded), "    x 12\n      y");
    const HeapText other("other");
    const xchar* source = file.m_buffer.data();
    const xchar* expanded = file.m_expanded.data();
    struct {
        const char* what;
        const xchar* pos;
        const xchar* adjusted;
    } const rows[] = {
        {"indentation",           expanded + 2,               nullptr                   },
        {"a verbatim byte",       expanded + 4,               source + 12               },
        {"a macro's body",        expanded + 6,               source + 9                },
        {"further in the body",   expanded + 7,               source + 10               },
        {"behind the macro",      expanded + 15,              source + 18               },
        {"the end of the text",   file.m_expanded.data_end(), file.m_expanded.data_end()},
        {"a source address",      source + 3,                 source + 3                },
        {"an address in no text", other.begin(),              other.begin()             },
        {"no position",           nullptr,                    nullptr                   },
    };
    for (const auto& row : rows) {
        LexScannerException e("text", row.pos);
        e.m_path = "p";
        e.m_lineNumber = 5;
        file.AdjustErrorPosition(e);
        EXPECT_EQ(e.m_pos, row.adjusted) << row.what;
        EXPECT_EQ(Str(e.m_description), "text") << row.what;
        EXPECT_EQ(Str(e.m_path), "p") << row.what;
        EXPECT_EQ(e.m_lineNumber, 5) << row.what;
    }
}

// ---- the list ----------------------------------------------------------------------------------

class CountedFile : public MpfwSourceFile {
public:
    explicit CountedFile(int& count) : m_count(count) { ++m_count; }
    ~CountedFile() override { --m_count; }

private:
    int& m_count;
};

TEST(MpfwSourceFileList, OwnsItsFilesAndKeepsTheirOrder) {
    int count = 0;
    {
        MpfwSourceFileList files;
        auto* first = new CountedFile(count);
        auto* second = new CountedFile(count);
        files.AddSrcFile(first);
        files.AddSrcFile(second);
        ASSERT_EQ(files.size(), 2);
        EXPECT_EQ(files[0], first);
        EXPECT_EQ(files[1], second);
        EXPECT_EQ(count, 2);
    }
    EXPECT_EQ(count, 0);
}

TEST(MpfwSourceFileList, FindsAFileByItsPathWhateverTheCaseOfItsLetters) {
    MpfwSourceFileList files;
    const MpfwSourceFile& a = Add(files, "a/b.txt", "");
    const MpfwSourceFile& other = Add(files, "a/c.txt", "");
    Add(files, "A/b.TXT", "");  // the earlier file of a path is the one found
    EXPECT_EQ(files.FindSourceFile("a/b.txt"), &a);
    EXPECT_EQ(files.FindSourceFile("A/B.txt"), &a);
    EXPECT_EQ(files.FindSourceFile("A/b.TXT"), &a);
    EXPECT_EQ(files.FindSourceFile("a/c.TXT"), &other);
    EXPECT_EQ(files.FindSourceFile("a/b.tx"), nullptr);
    EXPECT_EQ(files.FindSourceFile("a/b.txt2"), nullptr);
    EXPECT_EQ(files.FindSourceFile("a\\b.txt"), nullptr);
    EXPECT_EQ(files.FindSourceFile(""), nullptr);
}

TEST(MpfwSourceFileList, FindsTheFileWhoseTextHoldsAByte) {
    MpfwSourceFileList files;
    const MpfwSourceFile& first = Add(files, "a", "one");
    Add(files, "b", "");
    const MpfwSourceFile& last = Add(files, "c", "three");
    const HeapText other("other");
    struct {
        const char* what;
        const xchar* pos;
        ssize_t index;
    } const rows[] = {
        {"first byte",           first.m_buffer.data(),         0 },
        {"last byte",            first.m_buffer.data_end() - 1, 0 },
        {"one past the last",    first.m_buffer.data_end(),     -1},
        {"last file",            last.m_buffer.data() + 2,      2 },
        {"end of the last file", last.m_buffer.data_end(),      -1},
        {"in no file",           other.begin(),                 -1},
        {"no position",          nullptr,                       -1},
    };
    for (const auto& row : rows)
        EXPECT_EQ(files.GetSrcFileIndexContainingPosition(row.pos), row.index) << row.what;
}

TEST(MpfwSourceFileList, NamesFileAndLineOfAPosition) {
    MpfwSourceFileList files;
    Add(files, "a", "one\ntwo");
    const MpfwSourceFile& second = Add(files, "b", "three\nfour\n");
    const HeapText other("other");
    xstring path("before");
    ssize_t line = 77;
    EXPECT_FALSE(files.GetFilenameAndLineNumber(nullptr, path, line));
    EXPECT_FALSE(files.GetFilenameAndLineNumber(other.begin(), path, line));
    EXPECT_EQ(Str(path), "before");
    EXPECT_EQ(line, 77);
    EXPECT_TRUE(files.GetFilenameAndLineNumber(second.m_buffer.data() + 6, path, line));
    EXPECT_EQ(Str(path), "b");
    EXPECT_EQ(line, 2);
    EXPECT_TRUE(files.GetFilenameAndLineNumber(second.m_buffer.data_end(), path, line));
    EXPECT_EQ(Str(path), "b");
    EXPECT_EQ(line, 3);
}

TEST(MpfwSourceFileList, AnswersForNoFilesAtAll) {
    const MpfwSourceFileList files;
    const HeapText other("other");
    xstring path;
    ssize_t line = 77;
    EXPECT_EQ(files.FindSourceFile("a"), nullptr);
    EXPECT_EQ(files.GetSrcFileIndexContainingPosition(other.begin()), -1);
    EXPECT_FALSE(files.GetFilenameAndLineNumber(other.begin(), path, line));
    EXPECT_EQ(Report(files, LexScannerException("text", other.begin())), "\ntext\n");
}

TEST(MpfwSourceFileList, ReportsAnErrorAsPathLineAndDescription) {
    MpfwSourceFileList files;
    Add(files, "dir/a.txt", "one\ntwo");
    MpfwSourceFile& second = Add(files, "dir/b.txt", "three\nfour\n");
    Expand(second, 0);
    const HeapText other("other");
    struct {
        const char* what;
        const xchar* pos;
        const char* report;
    } const rows[] = {
        {"first file",         files[0]->m_buffer.data(),     "\ndir/a.txt(1) : text\n"},
        {"end of first file",  files[0]->m_buffer.data_end(), "\ndir/a.txt(2) : text\n"},
        {"second file",        second.m_buffer.data() + 8,    "\ndir/b.txt(2) : text\n"},
        {"end of second file", second.m_buffer.data_end(),    "\ndir/b.txt(3) : text\n"},
        {"expanded text",      second.m_expanded.data(),      "\ntext\n"               },
        {"in no file",         other.begin(),                 "\ntext\n"               },
        {"no position",        nullptr,                       "\ntext\n"               },
    };
    for (const auto& row : rows)
        EXPECT_EQ(Report(files, LexScannerException("text", row.pos)), row.report) << row.what;
}

TEST(MpfwSourceFileList, TakesNoPathOrLineFromTheErrorItself) {
    MpfwSourceFileList files;
    const MpfwSourceFile& file = Add(files, "a.txt", "one");
    LexScannerException e("line one\n    line two", file.m_buffer.data());
    e.m_path = "other.txt";
    e.m_lineNumber = 99;
    EXPECT_EQ(Report(files, e), "\na.txt(1) : line one\n    line two\n");
    e.m_pos = nullptr;
    EXPECT_EQ(Report(files, e), "\nline one\n    line two\n");
}

// ---- the frame ---------------------------------------------------------------------------------

TEST(MpfwFrame, StartsEmptyOnItsList) {
    MpfwSourceFileList files;
    MpfwFrame frame(files);
    EXPECT_EQ(&frame.m_srcFileList, &files);
    EXPECT_EQ(frame.m_vf.m_localVariables.m_first, nullptr);
    EXPECT_EQ(frame.m_vf.GetFileScopeVarFrame(), &frame.m_vf);
    EXPECT_TRUE(frame.m_vf.m_dollarMacrosMap.empty());
    EXPECT_TRUE(frame.m_importPaths.empty());
}

}  // namespace
}  // namespace vorn
