// qzexpand: expands the macro language in a file or in standard input.

#include <csignal>
#include <cstdio>
#include <new>

#include <unistd.h>

#include "Definitions.h"
#include "Diagnostics.h"
#include "Expressions.h"
#include "Fault.h"
#include "Files.h"
#include "Options.h"
#include "Visible.h"
#include "qzMacroExpander/MacroExpand.h"

namespace {

using namespace qzexpand;
using vorn::xstring;

constexpr int s_statusError = 1;
constexpr int s_statusUsage = 2;

std::string NameOfInput(const std::string& path) {
    return path == "-" ? "<stdin>" : path;
}

const SourceText& ReadInput(SourceTexts& texts, const std::string& path) {
    xstring text;
    FileId id;
    if (const int error = ReadFile(path, text, id))
        ThrowSystemFault(path == "-" ? "standard input" : path, error);
    return texts.Add(NameOfInput(path), std::move(text));
}

// What the text has printed on its way counts as output: its loss is a failure.
void CheckPrinted() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Fault("standard output: write error");
}

xstring ExpandInput(const Options& options, SourceTexts& texts, vorn::FileScopeVarFrame& frame) {
    const SourceText& source = ReadInput(texts, options.input);
    texts.SetCurrent(source);
    xstring result;
    vorn::MacroExpand(nullptr, &frame, source.text, 0, 0, result);
    return result;
}

xstring EvaluateExpression(const Options& options, SourceTexts& texts,
                           vorn::FileScopeVarFrame& frame) {
    const std::string& text = options.expression;
    const SourceText& source =
        texts.Add("<--eval>", xstring(text.data(), text.data() + text.size()));
    texts.SetCurrent(source);
    xstring result = EvaluateAsText(frame, source);
    result += '\n';
    return result;
}

void Produce(const Options& options, SourceTexts& texts) {
    vorn::FileScopeVarFrame frame;
    for (const Definition& definition : options.definitions)
        Define(frame, texts, definition);
    const xstring result = options.action == Options::Action::Evaluate
                               ? EvaluateExpression(options, texts, frame)
                               : ExpandInput(options, texts, frame);
    CheckPrinted();
    WriteFile(options.output, result);
}

void ReportFault(const std::string& message) {
    WriteError("qzexpand: " + VisibleName(message) + '\n');
}

int Run(const Options& options) {
    SourceTexts texts;
    try {
        Produce(options, texts);
        return 0;
    } catch (const vorn::LexScannerException& e) {
        WriteError(FormatError(texts, e));
    } catch (const Fault& e) {
        ReportFault(e.what());
    } catch (const std::bad_alloc&) {
        ReportFault("out of memory");
    }
    return s_statusError;
}

int Show(const std::string& text) {
    try {
        WriteFile("-", vorn::SubString(text.data(), text.data() + text.size()));
        return 0;
    } catch (const Fault& e) {
        ReportFault(e.what());
        return s_statusError;
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow is an error like a full disk
    try {
        const Options options = ParseCommandLine(argc, argv);
        switch (options.action) {
        case Options::Action::Help:
            return Show(s_help);
        case Options::Action::Version:
            return Show("qzexpand " QZEXPAND_VERSION "\n");
        case Options::Action::Expand:
        case Options::Action::Evaluate:
            return Run(options);
        }
    } catch (const UsageError& e) {
        ReportFault(e.what());
        WriteError(s_usage);
    }
    return s_statusUsage;
}
