// --root: imports of texts that are not trusted.

#include "ToolRunner.h"

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using tool_test::Result;
using tool_test::ToolTest;

using Names = std::vector<std::string>;

// A tree with the root "in" and much that lies outside it.
class ToolRoot : public ToolTest {
protected:
    ToolRoot() {
        for (const char* name : {"in/b.qz", "in/lib/c.qz", "out/b.qz", "inner/b.qz", "b.qz"})
            Write(name, std::string("@def m = ") + name + "\n");
        fs::create_symlink("../b.qz", PathOf("in/lib/within"));
        fs::create_symlink("lib", PathOf("in/folder"));
        fs::create_symlink(PathOf("in/b.qz"), PathOf("in/whole"));
        fs::create_symlink("../out/b.qz", PathOf("in/leaves"));
        fs::create_symlink("../out", PathOf("in/leavesWithFolder"));
        fs::create_symlink("../nothing", PathOf("in/leavesForNothing"));
        fs::create_symlink(PathOf("out/b.qz"), PathOf("in/leavesWhole"));
        fs::create_symlink("../out/../in/b.qz", PathOf("in/leavesAndReturns"));
        fs::create_symlink("leaves", PathOf("in/leavesAtLast"));
        fs::create_symlink("loop", PathOf("in/loop"));
        fs::create_symlink("in", PathOf("link"));
        ::mkfifo(PathOf("in/pipe").c_str(), 0600);
    }

    // Imports a path into a file of the root and tells what came of it.
    Result Import(const std::string& path, const Names& options = {"--root", "in"},
                  const std::string& file = "in/main.qz") const {
        Write(file, "@import \"" + path + "\"m");
        Names arguments = options;
        arguments.push_back(file);
        return Run(arguments);
    }

    static Result Refused(const std::string& path, const std::string& candidate,
                          const std::string& reason) {
        return {1, "",
                "in/main.qz(1) : Can't import file: " + path + "\n    " + candidate + ": " + reason
                    + "\n@import \"" + path + "\"m\n        ^\n"};
    }
};

TEST_F(ToolRoot, AllowsWhatLiesInIt) {
    const std::string folder = m_folder.string();
    for (const std::string path : {"b.qz", "./b.qz", "lib/../b.qz", "lib/within", "folder/within",
                                   "folder/../b.qz", "whole", "lib//..///b.qz"})
        EXPECT_EQ(Import(path), (Result{0, "in/b.qz", ""})) << path;
    EXPECT_EQ(Import("folder/c.qz"), (Result{0, "in/lib/c.qz", ""}));
    EXPECT_EQ(Import(folder + "/in/b.qz"), (Result{0, "in/b.qz", ""}));
}

// From the folder above, a path into the root is a path along it.
TEST_F(ToolRoot, AllowsPathsThatComeBackAlongItself) {
    const std::string name = m_folder.filename().string();
    EXPECT_EQ(Import("../in/b.qz"), (Result{0, "in/b.qz", ""}));
    EXPECT_EQ(Import("../../" + name + "/in/b.qz"), (Result{0, "in/b.qz", ""}));
}

TEST_F(ToolRoot, RefusesEveryWayOut) {
    for (const std::string path :
         {"../out/b.qz", "../b.qz", "../inner/b.qz", "leaves", "leavesWhole", "leavesAtLast",
          "leavesWithFolder/b.qz", "leavesAndReturns", "lib/../../out/b.qz", "folder/../../b.qz",
          "..", "../..", "leavesWithFolder/../in/b.qz"})
        EXPECT_EQ(Import(path), Refused(path, "in/" + path, "lies outside the root in")) << path;
    for (const std::string& path : {PathOf("out/b.qz").string(), std::string("/etc/passwd"),
                                    std::string("/"), std::string("/dev/stdin")})
        EXPECT_EQ(Import(path), Refused(path, path, "lies outside the root in")) << path;
}

TEST_F(ToolRoot, DoesNotTellWhatIsThereOutside) {
    for (const std::string path :
         {"../nosuch", "../out/nosuch", "../nosuch/b.qz", "../out/b.qz/x", "leavesForNothing",
          "leavesWithFolder/nosuch", "leavesForNothing/../in/b.qz", "../nosuch/../in/b.qz"})
        EXPECT_EQ(Import(path), Refused(path, "in/" + path, "lies outside the root in")) << path;
}

TEST_F(ToolRoot, TellsWhatIsWrongInside) {
    const std::pair<std::string, std::string> cases[] = {
        {"nosuch",      "No such file or directory"        },
        {"nosuch/..",   "No such file or directory"        },
        {"b.qz/..",     "Not a directory"                  },
        {"b.qz/",       "Not a directory"                  },
        {"lib",         "Is a directory"                   },
        {"lib/..",      "Is a directory"                   },
        {"folder/",     "Is a directory"                   },
        {"loop",        "Too many levels of symbolic links"},
        {"pipe",        "Not a regular file"               },
        {"lib/../pipe", "Not a regular file"               },
    };
    for (const auto& [path, reason] : cases)
        EXPECT_EQ(Import(path), Refused(path, "in/" + path, reason)) << path;
}

TEST_F(ToolRoot, RefusesDevices) {
    EXPECT_EQ(Import("/dev/null", {"--root", "/"}),
              Refused("/dev/null", "/dev/null", "Not a regular file"));
}

// ---- the root itself ---------------------------------------------------------------------------

TEST_F(ToolRoot, MayBeNamedInAnyWay) {
    for (const std::string& root : {std::string("in/"), std::string("./in"), std::string("link"),
                                    std::string("in/lib/.."), PathOf("link").string()}) {
        EXPECT_EQ(Import("lib/within", {"--root", root}), (Result{0, "in/b.qz", ""})) << root;
        EXPECT_EQ(Import("leaves", {"--root", root}),
                  Refused("leaves", "in/leaves", "lies outside the root " + root));
    }
}

TEST_F(ToolRoot, MayBeTheWholeTree) {
    EXPECT_EQ(Import("leaves", {"--root", "/"}), (Result{0, "out/b.qz", ""}));
    EXPECT_EQ(Import(PathOf("b.qz").string(), {"--root", "/"}), (Result{0, "b.qz", ""}));
    EXPECT_EQ(Import("../../../../../../../../../..", {"--root", "/"}),
              Refused("../../../../../../../../../..", "in/../../../../../../../../../..",
                      "Is a directory"));
}

TEST_F(ToolRoot, HasToBeAFolder) {
    EXPECT_EQ(Import("b.qz", {"--root", "nosuch"}),
              (Result{1, "", "qzexpand: nosuch: No such file or directory\n"}));
    EXPECT_EQ(Import("b.qz", {"--root", "b.qz"}),
              (Result{1, "", "qzexpand: b.qz: Not a directory\n"}));
}

// ---- where a file is looked for ----------------------------------------------------------------

TEST_F(ToolRoot, HoldsForTheFoldersOfTheSearchToo) {
    EXPECT_EQ(Import("c.qz", {"--root", "in", "-I", "in/lib"}), (Result{0, "in/lib/c.qz", ""}));
    EXPECT_EQ(Import("x.qz", {"--root", "in", "-I", "out"}),
              Refused("x.qz", "in/x.qz",
                      "No such file or directory\n    out/x.qz: lies outside the root in"));
    Write("in/main.qz", "@importpath \"../out\"\n@import(\"b\" + \".qz\")m");
    EXPECT_EQ(Run({"--root", "in", "in/main.qz"}).out, "\nin/b.qz");
    Write("in/main.qz", "@importpath \"lib\"\n@import \"c.qz\"m");
    EXPECT_EQ(Run({"--root", "in", "in/main.qz"}).out, "\nin/lib/c.qz");
    Write("in/main.qz", "@importpath \"../out\"\n@import \"x.qz\"m");
    EXPECT_EQ(Run({"--root", "in", "in/main.qz"}),
              (Result{1, "",
                      "in/main.qz(2) : Can't import file: x.qz\n"
                      "    in/x.qz: No such file or directory\n"
                      "    out/x.qz: lies outside the root in\n"
                      "@import \"x.qz\"m\n"
                      "        ^\n"}));
}

TEST_F(ToolRoot, GoesOnLookingBehindAPlaceOutsideIt) {
    EXPECT_EQ(Import("b.qz", {"--root", "in", "-I", "link"}, "out/main.qz"),
              (Result{0, "in/b.qz", ""}));
}

TEST_F(ToolRoot, TakesTheFoldersOfTheCallAsWhatTheyAre) {
    fs::create_symlink("../in/lib", PathOf("out/lib"));
    EXPECT_EQ(Import("c.qz", {"--root", "in", "-I", "out/lib"}), (Result{0, "in/lib/c.qz", ""}));
    EXPECT_EQ(Import("../b.qz", {"--root", "in", "-I", "out/lib/"}, "out/main.qz"),
              (Result{0, "in/b.qz", ""}));
    EXPECT_EQ(Import("b.qz", {"--root", "in"}, "link/main.qz"), (Result{0, "in/b.qz", ""}));
}

TEST_F(ToolRoot, HoldsForTheImportsOfImports) {
    Write("in/lib/d.qz", "@import \"../../out/b.qz\"");
    EXPECT_EQ(Import("lib/d.qz"), (Result{1, "",
                                          "in/lib/d.qz(1) : Can't import file: ../../out/b.qz\n"
                                          "    in/lib/../../out/b.qz: lies outside the root in\n"
                                          "@import \"../../out/b.qz\"\n"
                                          "        ^\n"
                                          "in/main.qz(1) : in/lib/d.qz is imported here\n"}));
}

// The input itself, which the caller has named, may lie anywhere.
TEST_F(ToolRoot, LeavesTheInputAlone) {
    EXPECT_EQ(Import("../in/b.qz", {"--root", "in"}, "out/main.qz"), (Result{0, "in/b.qz", ""}));
    EXPECT_EQ(Run({"--root", "in"}, "@import \"in/b.qz\"m"), (Result{0, "in/b.qz", ""}));
    EXPECT_EQ(Run({"--root", "in"}, "@import \"b.qz\"m"),
              (Result{1, "",
                      "<stdin>(1) : Can't import file: b.qz\n"
                      "    b.qz: lies outside the root in\n"
                      "@import \"b.qz\"m\n"
                      "        ^\n"}));
}

TEST_F(ToolRoot, WorksFromAnyWorkingDirectory) {
    Write("in/main.qz", "@import \"lib/within\"m");
    const std::string main = PathOf("in/main.qz").string();
    const std::string root = PathOf("in").string();
    for (const std::string folder : {"in/lib", "out", "in"}) {
        const auto enter = [path = PathOf(folder)] {
            if (::chdir(path.c_str()) != 0)
                ::_exit(99);
        };
        EXPECT_EQ(Run({"--root", root, main}, "", enter), (Result{0, "in/b.qz", ""})) << folder;
    }
    const auto enter = [path = PathOf("in/lib")] {
        if (::chdir(path.c_str()) != 0)
            ::_exit(99);
    };
    EXPECT_EQ(Run({"--root", ".."}, "@import \"../b.qz\"m", enter), (Result{0, "in/b.qz", ""}));
    EXPECT_EQ(Run({"--root", "."}, "@import \"../b.qz\"m", enter).status, 1);
}

TEST_F(ToolRoot, RefusesACircleUnderAnotherName) {
    fs::create_symlink("main.qz", PathOf("in/other.qz"));
    EXPECT_EQ(Import("other.qz").err, "in/main.qz(1) : in/other.qz imports itself: in/main.qz -> "
                                      "in/other.qz\n@import \"other.qz\"m\n        ^\n");
}

TEST_F(ToolRoot, TakesANameWithAZeroByteForNoFile) {
    Write("in/main.qz", "@import \"b.qz\\0x\"m");
    EXPECT_EQ(Run({"--root", "in", "in/main.qz"}),
              (Result{1, "",
                      "in/main.qz(1) : Can't import file: b.qz\\x00x\n"
                      "    in/b.qz\\x00x: No such file or directory\n"
                      "@import \"b.qz\\0x\"m\n"
                      "        ^\n"}));
}

// While the tool runs, somebody exchanges a folder and a link that leads outside. Whatever it
// meets, it must not read what lies there.
TEST_F(ToolRoot, HoldsWhileTheTreeChanges) {
    Write("in/swap/x.qz", "@def m = inside\n");
    Write("out/x.qz", "@def m = outside\n");
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += "@import \"swap/x.qz\"m,";
    Write("in/main.qz", text);
    fs::create_symlink("../out", PathOf("in/bad"));
    const pid_t child = ::fork();
    if (child == 0)
        while (true)
            ::syscall(SYS_renameat2, AT_FDCWD, PathOf("in/swap").c_str(), AT_FDCWD,
                      PathOf("in/bad").c_str(), RENAME_EXCHANGE);
    int refused = 0;
    for (int i = 0; i < 100; ++i) {
        const Result result = Run({"--root", "in", "in/main.qz"});
        EXPECT_EQ(result.out.find("outside"), std::string::npos);
        refused += result.status;
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_GT(refused, 0);
}

}  // namespace
