// qzexpand: expands the macro language in a file or in standard input.

#include <csignal>
#include <cstdio>
#include <new>

#include <unistd.h>

#include "Definitions.h"
#include "Diagnostics.h"
#include "Fault.h"
#include "Files.h"
#include "Options.h"
#include "Visible.h"
#include "qzMacroExpander/MacroExpand.h"

namespace {

using namespace qzexpand;

constexpr int s_statusError = 1;
constexpr int s_statusUsage = 2;

std::string NameOfInput(const std::string& path) {
    return path == "-" ? "<stdin>" : path;
}

const SourceText& ReadInput(SourceTexts& texts, const std::string& path) {
    vorn::xstring text;
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

void ExpandFile(const Options& options, SourceTexts& texts) {
    vorn::FileScopeVarFrame frame;
    for (const Definition& definition : options.definitions)
        Define(frame, texts, definition);
    const SourceText& source = ReadInput(texts, options.input);
    vorn::xstring result;
    vorn::MacroExpand(nullptr, &frame, source.text, 0, 0, result);
    CheckPrinted();
    WriteFile(options.output, result);
}

int Run(const Options& options) {
    SourceTexts texts;
    try {
        ExpandFile(options, texts);
        return 0;
    } catch (const vorn::LexScannerException& e) {
        WriteError(FormatError(texts, NameOfInput(options.input), e));
    } catch (const Fault& e) {
        WriteError("qzexpand: " + VisibleName(e.what()) + '\n');
    } catch (const std::bad_alloc&) {
        WriteError("qzexpand: out of memory\n");
    }
    return s_statusError;
}

int Show(const std::string& text) {
    try {
        WriteFile("-", vorn::SubString(text.data(), text.data() + text.size()));
        return 0;
    } catch (const Fault& e) {
        WriteError("qzexpand: " + VisibleName(e.what()) + '\n');
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
            return Run(options);
        }
    } catch (const UsageError& e) {
        WriteError("qzexpand: " + VisibleName(e.what()) + '\n' + s_usage);
    }
    return s_statusUsage;
}
