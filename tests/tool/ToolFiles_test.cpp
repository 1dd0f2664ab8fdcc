// Files and streams that cannot be read or written, and what becomes of an old output.

#include "ToolRunner.h"

#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using tool_test::Process;
using tool_test::Redirect;
using tool_test::Result;
using tool_test::ToolTest;

using Names = std::vector<std::string>;

class ToolFiles : public ToolTest {
protected:
    static Result Failure(const std::string& message) {
        return Result{1, "", "qzexpand: " + message + "\n"};
    }

    mode_t ModeOf(const std::string& name) const {
        struct stat status {};
        ::stat(PathOf(name).c_str(), &status);
        return status.st_mode & 07777;
    }
};

// ---- reading -----------------------------------------------------------------------------------

TEST_F(ToolFiles, ReportsAFileThatIsNotThere) {
    EXPECT_EQ(Run({"nosuch.qz"}), Failure("nosuch.qz: No such file or directory"));
    EXPECT_EQ(Run({""}), Failure(": No such file or directory"));
}

TEST_F(ToolFiles, ReportsAFolderInPlaceOfAFile) {
    EXPECT_EQ(Run({"."}), Failure(".: Is a directory"));
}

TEST_F(ToolFiles, ReportsAFileThatCannotBeReadToItsEnd) {
    EXPECT_EQ(Run({"/proc/self/mem"}), Failure("/proc/self/mem: Input/output error"));
}

TEST_F(ToolFiles, ReportsAClosedStandardInput) {
    EXPECT_EQ(Run({}, "", [] { ::close(0); }), Failure("standard input: Bad file descriptor"));
}

TEST_F(ToolFiles, ReadsAPipe) {
    EXPECT_EQ(Run({"/dev/fd/0"}, "text"), (Result{0, "text", ""}));
}

// ---- standard output ---------------------------------------------------------------------------

TEST_F(ToolFiles, ReportsAFullDiskBehindStandardOutput) {
    EXPECT_EQ(Run({}, "a", Redirect(1, "/dev/full")),
              Failure("standard output: No space left on device"));
}

TEST_F(ToolFiles, ReportsAClosedStandardOutput) {
    EXPECT_EQ(Run({}, "a", [] { ::close(1); }), Failure("standard output: Bad file descriptor"));
}

// A pipe whose reader has gone.
void BreakStandardOutput() {
    int ends[2];
    if (::pipe(ends) == 0) {
        ::dup2(ends[1], 1);
        ::close(ends[0]);
        ::close(ends[1]);
    }
}

TEST_F(ToolFiles, EndsQuietlyByTheSignalWhereTheReaderHasGone) {
    EXPECT_EQ(Run({}, "a", BreakStandardOutput), (Result{-SIGPIPE, "", ""}));
}

TEST_F(ToolFiles, ReportsAReaderThatHasGoneWhereTheSignalIsIgnored) {
    const auto setUp = [] {
        ::signal(SIGPIPE, SIG_IGN);
        BreakStandardOutput();
    };
    EXPECT_EQ(Run({}, "a", setUp), Failure("standard output: Broken pipe"));
}

// ---- the output file ---------------------------------------------------------------------------

TEST_F(ToolFiles, MakesANewFileAsTheUmaskSays) {
    const auto setUp = [] {
        ::umask(027);
    };
    EXPECT_EQ(Run({"-o", "out"}, "text", setUp), (Result{0, "", ""}));
    EXPECT_EQ(Read("out"), "text");
    EXPECT_EQ(ModeOf("out"), 0640u);
    EXPECT_EQ(FileNames(), Names{"out"});
}

TEST_F(ToolFiles, ReplacesAnOldFileAndKeepsItsPermissions) {
    Write("out", "a longer old text");
    ::chmod(PathOf("out").c_str(), 0604);
    EXPECT_EQ(Run({"-o", "out"}, "new", [] { ::umask(077); }), (Result{0, "", ""}));
    EXPECT_EQ(Read("out"), "new");
    EXPECT_EQ(ModeOf("out"), 0604u);
    EXPECT_EQ(FileNames(), Names{"out"});
}

TEST_F(ToolFiles, WritesAnEmptyOutputFile) {
    Write("out", "old");
    EXPECT_EQ(Run({"-o", "out"}, "@def a = b\n"), (Result{0, "", ""}));
    EXPECT_EQ(Read("out"), "");
}

TEST_F(ToolFiles, WritesToStandardOutputForADash) {
    EXPECT_EQ(Run({"-o", "-"}, "text"), (Result{0, "text", ""}));
    EXPECT_EQ(FileNames(), Names{});
}

TEST_F(ToolFiles, LeavesTheOldFileAloneWhenTheExpansionFails) {
    Write("out", "old");
    const Result result = Run({"-o", "out"}, "@fail(\"stop\")");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(FileNames(), Names{"out"});
}

TEST_F(ToolFiles, MakesNoFileWhenTheExpansionFails) {
    EXPECT_EQ(Run({"-o", "out"}, "@fail(\"stop\")").status, 1);
    EXPECT_EQ(FileNames(), Names{});
}

TEST_F(ToolFiles, LeavesTheOldFileAloneWhenTheNewOneCannotBeWritten) {
    Write("out", "old");
    const auto setUp = [] {
        const rlimit limit{1000, 1000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    };
    EXPECT_EQ(Run({"-o", "out"}, std::string(5000, 'a'), setUp), Failure("out: File too large"));
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(FileNames(), Names{"out"});
}

TEST_F(ToolFiles, FollowsLinksToTheFileBehindThem) {
    Write("deep/target", "old");
    fs::create_symlink("deep/target", PathOf("second"));
    fs::create_symlink("second", PathOf("link"));
    EXPECT_EQ(Run({"-o", "link"}, "new"), (Result{0, "", ""}));
    EXPECT_EQ(fs::read_symlink(PathOf("link")), "second");
    EXPECT_EQ(fs::read_symlink(PathOf("second")), "deep/target");
    EXPECT_FALSE(fs::is_symlink(PathOf("deep/target")));
    EXPECT_EQ(Read("deep/target"), "new");
    EXPECT_EQ(FileNames(), (Names{"deep", "link", "second"}));
}

TEST_F(ToolFiles, MakesTheFileThatADanglingLinkNames) {
    fs::create_symlink("target", PathOf("link"));
    EXPECT_EQ(Run({"-o", "link"}, "new"), (Result{0, "", ""}));
    EXPECT_TRUE(fs::is_symlink(PathOf("link")));
    EXPECT_EQ(Read("target"), "new");
}

TEST_F(ToolFiles, ReportsALinkThatLeadsBackToItself) {
    fs::create_symlink("link", PathOf("link"));
    EXPECT_EQ(Run({"-o", "link"}, "new"), Failure("link: Too many levels of symbolic links"));
}

TEST_F(ToolFiles, WritesToADeviceInPlace) {
    EXPECT_EQ(Run({"-o", "/dev/null"}, "text"), (Result{0, "", ""}));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(Run({"-o", "/dev/stdout"}, "text"), (Result{0, "text", ""}));
}

TEST_F(ToolFiles, ReportsAFullDisk) {
    EXPECT_EQ(Run({"-o", "/dev/full"}, "text"), Failure("/dev/full: No space left on device"));
}

TEST_F(ToolFiles, ReportsAnOutputThatCannotBeMade) {
    EXPECT_EQ(Run({"-o", "nosuch/out"}, "a"), Failure("nosuch/out: No such file or directory"));
    EXPECT_EQ(Run({"-o", "."}, "a"), Failure(".: Is a directory"));
    EXPECT_EQ(Run({"-o", ""}, "a"), Failure(": No such file or directory"));
    EXPECT_EQ(FileNames(), Names{});
}

TEST_F(ToolFiles, ReadsTheInputBeforeItLooksAtTheOutput) {
    EXPECT_EQ(Run({"-o", "nosuch/out", "nosuch.qz"}),
              Failure("nosuch.qz: No such file or directory"));
}

// ---- what stays the same -----------------------------------------------------------------------

// A file that was written an hour ago.
class ToolOldFiles : public ToolFiles {
protected:
    void WriteLongAgo(const std::string& name, const std::string& content) {
        Write(name, content);
        m_then = fs::last_write_time(PathOf(name)) - std::chrono::hours(1);
        fs::last_write_time(PathOf(name), m_then);
    }

    bool IsUntouched(const std::string& name) const {
        return fs::last_write_time(PathOf(name)) == m_then;
    }

    fs::file_time_type m_then;
};

TEST_F(ToolOldFiles, StayUntouchedWhereTheirBytesStayTheSame) {
    for (const std::string& text :
         {std::string("text\n"), std::string(), std::string(200000, 'a')}) {
        WriteLongAgo("out", text);
        EXPECT_EQ(Run({"-o", "out"}, text), (Result{0, "", ""}));
        EXPECT_TRUE(IsUntouched("out"));
    }
}

TEST_F(ToolOldFiles, StayUntouchedBehindLinksAndWithoutTheRightToWrite) {
    WriteLongAgo("target", "text");
    fs::create_symlink("target", PathOf("link"));
    ::chmod(PathOf("target").c_str(), 0444);
    EXPECT_EQ(Run({"-o", "link"}, "text"), (Result{0, "", ""}));
    EXPECT_TRUE(IsUntouched("target"));
}

TEST_F(ToolOldFiles, AreWrittenWhereOneByteDiffers) {
    const std::string old(200000, 'a');
    for (const std::string& text :
         {old + 'a', old.substr(1), 'b' + old.substr(1), old.substr(1) + 'b'}) {
        WriteLongAgo("out", old);
        EXPECT_EQ(Run({"-o", "out"}, text), (Result{0, "", ""}));
        EXPECT_FALSE(IsUntouched("out"));
        EXPECT_EQ(Read("out"), text);
    }
}

TEST_F(ToolOldFiles, AreAlwaysWrittenOnRequest) {
    WriteLongAgo("out", "text");
    EXPECT_EQ(Run({"--always-write", "-o", "out"}, "text"), (Result{0, "", ""}));
    EXPECT_FALSE(IsUntouched("out"));
    WriteLongAgo("dep", "out:\n");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "out"}, "text"), (Result{0, "", ""}));
    EXPECT_TRUE(IsUntouched("dep"));
    EXPECT_EQ(Run({"--always-write", "--depfile", "dep", "-o", "out"}, "text"),
              (Result{0, "", ""}));
    EXPECT_FALSE(IsUntouched("dep"));
}

TEST_F(ToolOldFiles, AreNotTakenForStandardOutput) {
    Write("-", "text");
    EXPECT_EQ(Run({}, "text"), (Result{0, "text", ""}));
}

}  // namespace
