#include "Run.h"

#include <new>
#include <optional>
#include <string>

#include <unistd.h>

#include "CheckRun.h"
#include "Definitions.h"
#include "Depfile.h"
#include "Expressions.h"
#include "FilesWritten.h"
#include "Guard.h"
#include "Limits.h"
#include "LineMarkers.h"
#include "MapFile.h"
#include "Newlines.h"
#include "Printing.h"
#include "Project.h"
#include "PythonRun.h"
#include "Report.h"
#include "Status.h"
#include "common/Fault.h"
#include "common/Files.h"
#include "common/Views.h"

namespace qztools {

using namespace vorn;

namespace {

Expansion Evaluate(Session& session) {
    const std::string& text = session.options.expression;
    const SourceText& source = session.texts.Add("<--eval>", xstring(ToSubString(text)));
    session.texts.SetCurrent(source);
    Expansion result;
    result.text = EvaluateAsText(session.frame, source);
    result.text += '\n';
    result.pieces.push_back({source.text, result.text.size()});
    return result;
}

Expansion MakeResult(Session& session) {
    const PythonRun python(session.options.allowPython);
    for (const Definition& definition : session.options.definitions)
        Define(session, definition);
    if (session.options.action == Options::Action::Evaluate)
        return Evaluate(session);
    return Project(session).Expand();
}

// What a run makes.
struct Products {
    xstring output;
    std::optional<std::string> map;
};

Products Trace(const Session& session, Written written) {
    const Options& options = session.options;
    const MapSources sources(session.texts);
    MappedText mapped = MapPieces(std::move(written), sources);
    if (options.lineMarkers)
        mapped = InsertLineMarkers(mapped, sources);
    std::optional<std::string> map;
    if (options.map)
        map = FormatMapFile(options, mapped, sources);
    return {std::move(mapped.text), std::move(map)};
}

Products MakeProducts(Session& session) {
    const bool isTraced = session.options.map || session.options.lineMarkers;
    if (isTraced)
        session.frame.m_textOrigins = &session.origins;
    const Printing printing(session.options);
    Expansion result = MakeResult(session);
    printing.Check();
    const LineEnds lineEnds = ChooseLineEnds(*session.texts.Current(), session.options.newlines);
    if (!isTraced)
        return {WriteLineEnds(std::move(result), session.texts, lineEnds, false).bytes, {}};
    Expansion followed = FollowOrigins(std::move(result), session.origins);
    return Trace(session, WriteLineEnds(std::move(followed), session.texts, lineEnds, true));
}

// A file of the run. What stays the same keeps its time, so that nothing is made again from it.
void Put(const Options& options, const std::string& path, SubString bytes) {
    if (options.alwaysWrite || !HoldsAlready(path, bytes))
        WriteFile(path, bytes);
}

// The output comes last: a build engine that finds it new finds all that belongs to it as well.
void WriteFiles(const Session& session, const Products& products) {
    const Options& options = session.options;
    if (options.depfile)
        Put(options, *options.depfile,
            ToSubString(FormatDepfile(options.depfileTarget.value_or(options.output), options.input,
                                      session.filesRead)));
    if (options.map)
        Put(options, *options.map, ToSubString(*products.map));
    Put(options, options.output, products.output);
}

// Returns the exit status.
int Produce(Session& session) {
    const Products products = MakeProducts(session);
    if (IsTooLong(session.options, products.output.size()))
        throw OutputIsFull(session.options, nullptr);
    if (session.options.check)
        return CheckFile(session.options.output, products.output) ? 0 : s_statusDiffers;
    RefuseLosses(session.options, session.filesRead);
    WriteFiles(session, products);
    return 0;
}

// ---- its failure -------------------------------------------------------------------------------

// Returns the exit status. Throws std::bad_alloc where not even the report can be made.
int ProduceOrReport(Session& session) {
    try {
        return Produce(session);
    } catch (const LexScannerException& e) {
        if (IsMemoryError(e)) {
            ReportLimit(session.texts, e, MemoryRanOut(e.m_pos).advice);
            return s_statusLimit;
        }
        ReportError(session.texts, e);
    } catch (const LimitReached& e) {
        ReportLimit(session.texts, LexScannerException(e.message, e.pos), e.advice);
        return s_statusLimit;
    } catch (const Fault& e) {
        ReportFault(e.what());
    }
    return s_statusError;
}

int ProduceInMemory(Session& session) {
    try {
        return ProduceOrReport(session);
    } catch (const std::bad_alloc&) {
        ReportWithoutMemory("the memory ran out", "--limit-memory=MIB gives it more");
        return s_statusLimit;
    }
}

}  // namespace

int Run(const Options& options) {
    Session session{options};
    try {
        return RunWithinLimits(session, [&session] { return ProduceInMemory(session); });
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

}  // namespace qztools
