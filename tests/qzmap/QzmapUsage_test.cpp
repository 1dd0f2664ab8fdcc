// Wrong calls, --help and --version.

#include "QzmapTest.h"

namespace {

using qzmap_test::Result;

class QzmapUsage : public qzmap_test::QzmapTest {
protected:
    void ExpectWrongCall(const std::vector<std::string>& arguments,
                         const std::string& message) const {
        const Result result = Qzmap(arguments);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_EQ(result.out, "") << message;
        EXPECT_EQ(result.err,
                  "qzmap: " + message
                      + "\n"
                        "usage: qzmap lookup [OPTION]... MAP LINE[:COLUMN]\n"
                        "       qzmap lookup [OPTION]... MAP --source FILE:LINE[:COLUMN]\n"
                        "       qzmap remap [OPTION]... MAP...\n"
                        "       qzmap check [OPTION]... MAP...\n"
                        "       qzmap html [OPTION]... MAP [-o PAGE]\n"
                        "Try 'qzmap --help' for more.\n");
    }
};

TEST_F(QzmapUsage, RefusesACallWithoutItsOperands) {
    ExpectWrongCall({}, "no command");
    ExpectWrongCall({"find", "a.map"}, "no command: find");
    ExpectWrongCall({"lookup"}, "no map");
    ExpectWrongCall({"lookup", "a.map"}, "no line");
    ExpectWrongCall({"remap"}, "no map");
    ExpectWrongCall({"check"}, "no map");
    ExpectWrongCall({"html"}, "no map");
}

TEST_F(QzmapUsage, RefusesOperandsThatAreTooMany) {
    ExpectWrongCall({"lookup", "a.map", "1", "2"}, "too many arguments: 2");
    ExpectWrongCall({"lookup", "a.map", "--source", "a:1", "2"}, "too many arguments: 2");
    ExpectWrongCall({"html", "a.map", "b.map"}, "too many arguments: b.map");
    ExpectWrongCall({"remap", "--output", "a", "a.map", "b.map"}, "--output goes with one map");
    ExpectWrongCall({"remap", "a.map", "-"},
                    "standard input holds the messages, so no map can be -");
}

TEST_F(QzmapUsage, RefusesPlacesThatAreNone) {
    for (const char* place :
         {"0", "-1", "x", "1:", "1:0", "1:2:3", "1 ", "", ":1", "99999999999999999999", "1:x"})
        ExpectWrongCall({"lookup", "--", "a.map", place},
                        std::string("no line, and no line and column: ") + place);
    for (const char* place : {"", "a", "a:", "a:0", ":1", "a:1:", "a:1:x"})
        ExpectWrongCall({"lookup", "a.map", "--source", place},
                        std::string("--source needs FILE:LINE or FILE:LINE:COLUMN: ") + place);
}

TEST_F(QzmapUsage, RefusesOptionsThatAreUnknownOrOfAnotherCommand) {
    ExpectWrongCall({"check", "-q"}, "unknown option -q");
    ExpectWrongCall({"check", "--quiet"}, "unknown option --quiet");
    ExpectWrongCall({"html", "a.map", "-o"}, "-o needs an argument");
    ExpectWrongCall({"check", "--base"}, "--base needs an argument");
    ExpectWrongCall({"check", "a.map", "-o", "b"}, "-o is no option of this command");
    ExpectWrongCall({"check", "a.map", "--source", "b:1"}, "--source is no option of this command");
    ExpectWrongCall({"check", "-C", "b"}, "-C is no option of this command");
    ExpectWrongCall({"check", "--columns=bytes"}, "--columns is no option of this command");
    ExpectWrongCall({"remap", "--columns=inches"}, "--columns is bytes or display: inches");
}

TEST_F(QzmapUsage, ShowsTheVersionOfTheProject) {
    EXPECT_EQ(Qzmap({"--version"}), (Result{0, "qzmap " QZMAP_VERSION "\n", ""}));
    EXPECT_EQ(Qzmap({"check", "--version"}), (Result{0, "qzmap " QZMAP_VERSION "\n", ""}));
}

TEST_F(QzmapUsage, ShowsHelpOnStandardOutput) {
    const Result result = Qzmap({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.rfind("usage: qzmap lookup [OPTION]... MAP LINE[:COLUMN]\n", 0), 0u);
    EXPECT_EQ(result.out.substr(result.out.size() - 22), "2 after a wrong call.\n");
    EXPECT_EQ(Qzmap({"lookup", "--help"}), result);
}

}  // namespace
