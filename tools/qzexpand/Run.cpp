#include "Run.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>

#include "Definitions.h"
#include "Diagnostics.h"
#include "Expressions.h"
#include "Fault.h"
#include "Files.h"
#include "Guard.h"
#include "Views.h"
#include "Visible.h"
#include "qzMacroExpander/MacroExpand.h"

namespace qzexpand {

using namespace vorn;

namespace {

constexpr int s_statusError = 1;

// ---- the result --------------------------------------------------------------------------------

// The memory has run out; the position is the last one in a text that was written before.
struct OutOfMemory {
    const char* pos;
};

// The start of the last piece that stands for a place in a text; null if there is none.
const char* LastPosition(const OutputPieces& pieces) {
    const auto last =
        std::find_if(std::reverse_iterator(pieces.m_pieces.end()),
                     std::reverse_iterator(pieces.m_pieces.begin()),
                     [](const OutputPiece& piece) { return piece.in.m_p1 != nullptr; });
    return last.base() == pieces.m_pieces.begin() ? nullptr : last->in.m_p1;
}

// Appends to a string.
class StringSink final : public IOutputStream {
public:
    explicit StringSink(xstring& text) : m_text(text) {}
    void WriteStream(const void* p, ssize_t n) override {
        const auto* bytes = static_cast<const char*>(p);
        m_text.append(bytes, bytes + n);
    }
    void FlushStream() override {}

private:
    xstring& m_text;
};

xstring Expand(Session& session, const SourceText& source) {
    session.texts.SetCurrent(source);
    xstring result;
    StringSink sink(result);
    xostream os(sink);
    ExpandedOutput output(os);
    try {
        MacroExpand(nullptr, &session.frame, source.text, 0, 0, output);
    } catch (const std::bad_alloc&) {
        throw OutOfMemory{LastPosition(output.m_pieces)};
    }
    return result;
}

const SourceText& ReadInput(Session& session) {
    const std::string& path = session.options.input;
    xstring text;
    FileId id;
    if (const int error = ReadFile(path, text, id))
        ThrowSystemFault(path == "-" ? "standard input" : path, error);
    return session.texts.Add(path == "-" ? "<stdin>" : path, std::move(text));
}

xstring Evaluate(Session& session) {
    const std::string& text = session.options.expression;
    const SourceText& source = session.texts.Add("<--eval>", xstring(ToSubString(text)));
    session.texts.SetCurrent(source);
    xstring result = EvaluateAsText(session.frame, source);
    result += '\n';
    return result;
}

// What the text has printed on its way counts as output: its loss is a failure.
void CheckPrinted() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Fault("standard output: write error");
}

void Produce(Session& session) {
    for (const Definition& definition : session.options.definitions)
        Define(session, definition);
    const xstring result = session.options.action == Options::Action::Evaluate
                               ? Evaluate(session)
                               : Expand(session, ReadInput(session));
    CheckPrinted();
    WriteFile(session.options.output, result);
}

// ---- its failure -------------------------------------------------------------------------------

void ReportOutOfMemory(const SourceTexts& texts, const char* pos) {
    WriteError(FormatError(texts, LexScannerException("the memory ran out", pos))
               + "qzexpand: --memory-limit=MIB gives it more\n");
}

// Returns the exit status.
int ProduceOrReport(Session& session) {
    try {
        Produce(session);
        return 0;
    } catch (const LexScannerException& e) {
        WriteError(FormatError(session.texts, e));
    } catch (const OutOfMemory& e) {
        ReportOutOfMemory(session.texts, e.pos);
    } catch (const Fault& e) {
        ReportFault(e.what());
    } catch (const std::bad_alloc&) {
        ReportFault("the memory ran out");
    }
    return s_statusError;
}

}  // namespace

void ReportFault(const std::string& message) {
    WriteError("qzexpand: " + VisibleName(message) + '\n');
}

int Run(const Options& options) {
    Session session{options};
    try {
        return RunWithinLimits(session, [&session] { return ProduceOrReport(session); });
    } catch (const Fault& e) {
        ReportFault(e.what());
        return s_statusError;
    }
}

int Show(const std::string& text) {
    try {
        WriteFile("-", ToSubString(text));
        return 0;
    } catch (const Fault& e) {
        ReportFault(e.what());
        return s_statusError;
    }
}

}  // namespace qzexpand
