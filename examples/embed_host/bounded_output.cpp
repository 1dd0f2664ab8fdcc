// A host that bounds what a text may write: bounded_output expands some texts, two of them without
// end, in one frame.
//
// What a sink throws passes through the expansion to the host. It is no LexScannerException, so
// that no directive adds to it. The frame stays usable, with all that was defined before.
//
// A sink sees what the text writes. What a directive expands for itself, a condition or the text
// of a @quote, never gets there: time and memory are for the process to bound.

#include <algorithm>

#include "qzMacroExpander/MacroExpand.h"

namespace {

using namespace vorn;

constexpr ssize_t s_limit = 60;

struct OutputLimit {};

// Hands on up to limit bytes, and throws where there are more.
class BoundedSink final : public IOutputStream {
public:
    BoundedSink(xostream& to, ssize_t limit) : m_to(to), m_left(limit) {}

    void WriteStream(const void* p, ssize_t n) override {
        const ssize_t fitting = std::min(n, m_left);
        m_to.put(static_cast<const char*>(p), fitting);
        m_left -= fitting;
        if (fitting < n)
            throw OutputLimit();
    }
    void FlushStream() override { m_to.flush(); }

private:
    xostream& m_to;
    ssize_t m_left;
};

// Expands a text, which must outlive the frame, and says how that ended.
void Expand(FileScopeVarFrame& frame, SubString text) {
    BoundedSink sink(xcout, s_limit);
    xostream os(sink);
    ExpandedOutput output(os);
    try {
        MacroExpand(nullptr, &frame, text, 0, 0, output);
    } catch (const OutputLimit&) {
        xcout << "\n[the limit of " << s_limit << " bytes]\n";
    } catch (const LexScannerException& e) {
        xcout << "[";
        e.Write(xcout);
        xcout << "]\n";
    }
}

constexpr const char* s_texts[] = {
    "@let int line = 0\n"
    "@def again(text) =\n"
    "{\n"
    "    @let line = line + 1\n"
    "    line text\n"
    "    again(text)\n"
    "}\n"
    "Some definitions.\n",
    "again(bottle)",
    "@while(line > 0) { more and }",
    "line lines were begun, and the frame is as good as before.\n",
    "@fail(\"an error is an error\")\n",
};

}  // namespace

int main() {
    ForbidPython();  // these texts are not trusted
    FileScopeVarFrame frame;
    for (const char* text : s_texts)
        Expand(frame, text);
}
