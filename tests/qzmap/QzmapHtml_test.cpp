// qzmap html: the page as a file. What it does in a browser is tested by page_test.py.

#include "QzmapTest.h"

namespace {

using qzmap_test::Composition;
using qzmap_test::EveryKind;
using qzmap_test::Result;

class QzmapHtml : public qzmap_test::QzmapTest {
protected:
    std::string Page() const {
        const Result result = Qzmap({"html", "a.cpp.map"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }
};

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

// What stands between two texts.
std::string Between(const std::string& text, const std::string& before, const std::string& behind) {
    const std::size_t first = text.find(before) + before.size();
    return text.substr(first, text.find(behind, first) - first);
}

TEST_F(QzmapHtml, WritesThePageToAFileOrToStandardOutput) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Qzmap({"html", "a.cpp.map", "-o", "page.html"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("page.html"), Page());
    EXPECT_EQ(FileNames(),
              (std::vector<std::string>{"a.cpp", "a.cpp.map", "a.cpp.qz", "lib.qz", "page.html"}));
}

TEST_F(QzmapHtml, LeavesAnOldPageWhereTheMapIsFaulty) {
    WriteFiles(EveryKind());
    Write("page.html", "old");
    qztools::Map map = EveryKind().Map();
    map.pieces[2].offset += 1;
    WriteMap(map);
    EXPECT_EQ(
        Qzmap({"html", "a.cpp.map", "-o", "page.html"}),
        (Result{1, "", "qzmap: a.cpp.map: a.cpp:3:5: this was not copied from lib.qz:1:14\n"}));
    EXPECT_EQ(Read("page.html"), "old");
}

TEST_F(QzmapHtml, FailsWhereThePageCannotBeWritten) {
    WriteFiles(EveryKind());
    EXPECT_EQ(Qzmap({"html", "a.cpp.map", "-o", "nosuch/page.html"}),
              (Result{1, "", "qzmap: nosuch/page.html: No such file or directory\n"}));
}

TEST_F(QzmapHtml, NeedsNothingFromAnywhere) {
    WriteFiles(EveryKind());
    const std::string page = Page();
    EXPECT_EQ(page.find("://"), page.npos);
    EXPECT_EQ(page.find(" src="), page.npos);
    EXPECT_EQ(page.find("@import"), page.npos);
    EXPECT_EQ(page.find("url("), page.npos);
    EXPECT_EQ(page.find("{{"), page.npos);
    EXPECT_NE(page.find("default-src 'none'"), page.npos);
}

TEST_F(QzmapHtml, HoldsTheDataInAFormThatCannotEndItsElement) {
    Composition a("a.cpp");
    a.AddFile("<script>\"&'.qz", "</script><!--<script>\n");
    a.Copy(0, "</script><!--<script>\n");
    a.Insert("</script>");
    WriteFiles(a);
    const std::string page = Page();
    EXPECT_EQ(Count(page, "<script"), 2u);
    EXPECT_EQ(Count(page, "</script>"), 2u);
    EXPECT_EQ(Between(page, "id=\"data\">", "</script>"),
              R"({"output":"a.cpp","size":31,"count":2,"sources":[{"name":)"
              R"("\u003cscript>\"&'.qz","bytes":"PC9zY3JpcHQ+PCEtLTxzY3JpcHQ+Cg=="}],)"
              R"("pieces":"WAAAJw==","rest":"PC9zY3JpcHQ+"})");
}

TEST_F(QzmapHtml, MakesTheNameInItsTitleSafe) {
    Composition a("<b>&\"'.cpp");
    a.AddFile("a.qz", "x\n");
    a.Copy(0, "x\n");
    WriteFiles(a);
    const Result result = Qzmap({"html", "<b>&\"'.cpp.map"});
    EXPECT_EQ(Between(result.out, "<title>", "</title>"),
              "&#60;b&#62;&#38;&#34;&#39;.cpp and its sources");
}

}  // namespace
