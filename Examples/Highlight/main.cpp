// quorvane-highlight: parses files with language packages and shows what the engine makes of them.

#include "Arguments.h"
#include "Colouring.h"
#include "Inspection.h"
#include "Languages.h"
#include "Output.h"
#include "Progress.h"
#include "Symbols.h"

#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Styles/QVThemeController.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>
#include <time.h>

using namespace quorvane;
using namespace highlight;

namespace {

using Clock = std::chrono::steady_clock;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

std::string readStandardInput() {
    std::string bytes;
    char buffer[65536];
    for (std::size_t count; (count = std::fread(buffer, 1, sizeof buffer, stdin)) != 0;)
        bytes.append(buffer, count);
    return bytes;
}

NSString readText(const std::string &file) {
    if (file == "-")
        return NSString::stringWithUTF8String(readStandardInput());
    std::shared_ptr<NSError> error;
    const NSData data =
        NSData::dataWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(file)), &error);
    if (!data)
        throw Failure{error->localizedDescription().UTF8String(), 1};
    return NSString::stringWithUTF8String(data.view());
}

std::size_t countNodes(const QVScopeMatch &match) {
    std::size_t count = 1;
    for (const QVScopeMatch *const submatch : match.submatches())
        count += countNodes(*submatch);
    return count;
}

/// CR, LF and CR LF end a line; text behind the last one is a line too.
std::size_t countLines(std::u16string_view text) {
    std::size_t count = 0;
    for (std::size_t index = 0; index < text.size(); ++index)
        count += text[index] == u'\n' ||
                 (text[index] == u'\r' && (index + 1 == text.size() || text[index + 1] != u'\n'));
    const bool endsInLine = !text.empty() && text.back() != u'\n' && text.back() != u'\r';
    return count + (endsInLine ? 1 : 0);
}

double medianOf(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

/// What one run of the program is about: a file, its parse, and what it looks like.
struct Document {
    NSString text;
    std::shared_ptr<QVParse> parse;
    std::vector<double> parseTimes;
    /// What colours don't wait for, where it was asked for.
    std::vector<double> symbolsTimes;
    std::vector<PageTheme> themes;
    std::vector<double> attributesTimes;
    /// What an explanation, a definition or occurrences are asked of.
    std::optional<NSUInteger> place;
};

void printStatistics(const Document &document, double loadTime) {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const QVParse &parse = *document.parse;
    const std::size_t units = parse.string().size();
    std::fprintf(stderr,
                 "units: %zu\nlines: %zu\nload-ms: %.3f\nparse-ms: %.3f\nsymbols-ms: %.3f\nnodes: %zu\n",
                 units, countLines(parse.string()), loadTime, medianOf(document.parseTimes),
                 medianOf(document.symbolsTimes), countNodes(*parse.rootMatch()));
    if (!document.attributesTimes.empty())
        std::fprintf(stderr, "attributes-ms: %.3f\nruns: %zu\n", medianOf(document.attributesTimes),
                     document.themes.front().runs.size());
    std::fprintf(stderr, "tree-bytes-per-unit: %.2f\npeak-rss-mb: %.1f\n",
                 units == 0 ? 0.0 : static_cast<double>(parse.treeBytes()) / static_cast<double>(units),
                 static_cast<double>(usage.ru_maxrss) / 1024);
}

/// The processor time that this thread has taken, in microseconds: edits take the one thread, and what else
/// the machine does must not matter.
double threadMicroseconds() {
    struct timespec time {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) * 1e-3;
}

/// Times letters at places spread over a text of some length, each put in by one body and taken out again by
/// the other; says the median and the 99th percentile under a name.
template <typename Insert, typename Erase>
std::string timesOfLetters(const char *name, std::size_t length, std::uint64_t count, Insert insert,
                           Erase erase) {
    std::vector<double> times;
    for (std::uint64_t turn = 0; turn < count; ++turn) {
        // Steps by the golden section meet all parts of the text, whatever their number.
        const double part = static_cast<double>(turn) * 0.6180339887498949;
        const auto place = static_cast<NSUInteger>(
            (part - static_cast<double>(static_cast<std::uint64_t>(part))) * static_cast<double>(length));
        const double start = threadMicroseconds();
        insert(place);
        times.push_back(threadMicroseconds() - start);
        erase(place);
    }
    std::sort(times.begin(), times.end());
    char figures[100];
    std::snprintf(figures, sizeof figures, "%s-us-median: %.1f\n%s-us-p99: %.1f\n", name,
                  times[times.size() / 2], name, times[times.size() * 99 / 100]);
    return figures;
}

/// Times letters from the edit to their runs, beside what moving a plain string of the same text costs.
std::string editBenchmark(const Document &document, std::uint64_t count) {
    QVParse &parse = *document.parse;
    std::u16string bare(parse.string());
    bare.reserve(bare.size() + 1);
    parse.finishDeferredWork();
    Runs runs;
    return timesOfLetters(
               "edit", bare.size(), count,
               [&](NSUInteger place) {
                   const NSRange changed = parse.replaceCharactersInRange({place, 0}, u"x", nullptr);
                   runs = attributeRuns(parse, changed, document.themes.front().defaults, std::move(runs));
               },
               [&](NSUInteger place) {
                   parse.replaceCharactersInRange({place, 1}, u"", nullptr);
               }) +
           timesOfLetters(
               "move", bare.size(), count, [&](NSUInteger place) { bare.insert(place, 1, u'x'); },
               [&](NSUInteger place) { bare.erase(place, 1); });
}

std::string nameOfFile(const std::string &file) { return file == "-" ? "standard input" : file; }

std::vector<std::string> themeNames(const Arguments &arguments) {
    if (!arguments.theme.empty())
        return {arguments.theme};
    return arguments.format == Arguments::Format::Html && !arguments.explain
               ? std::vector<std::string>{"Daylight", "Dusk"}
               : std::vector<std::string>{"Dusk"};
}

bool isColouredOutput(const Arguments &arguments) {
    if (arguments.definition || arguments.occurrences)
        return false;
    return arguments.explain ||
           (arguments.format != Arguments::Format::Tree && arguments.format != Arguments::Format::Symbols);
}

std::string outputOfDocument(const Arguments &arguments, const std::string &file, const Document &document,
                             ScopePlaces &places) {
    const PageTheme *const theme = document.themes.empty() ? nullptr : &document.themes.front();
    const std::u16string_view text = document.parse->string();
    if (arguments.explain)
        return explanationText(*document.parse, *document.place, nameOfFile(file), theme->runs,
                               theme->defaults, places);
    if (arguments.definition)
        return definitionText(*document.parse, *document.place, nameOfFile(file));
    if (arguments.occurrences)
        return occurrencesText(*document.parse, *document.place, nameOfFile(file));
    switch (arguments.format) {
    case Arguments::Format::Tree:
        return QVMatchTreeText(*document.parse);
    case Arguments::Format::Attributes:
        return attributesText(theme->runs, theme->defaults);
    case Arguments::Format::Symbols:
        return arguments.json ? outlineJSON(*document.parse) : outlineText(*document.parse);
    case Arguments::Format::Html:
        return pageText(text, nameOfFile(file), document.themes);
    case Arguments::Format::Ansi:
        break;
    }
    return theme ? ansiText(text, theme->runs, theme->defaults, arguments.depth)
                 : NSString(text).UTF8String();
}

void highlightFile(const Arguments &arguments, const std::string &file, const SyntaxFiles &syntaxFiles,
                   double loadTime) {
    Document document;
    document.text = readText(file);
    for (const auto &place : {arguments.explain, arguments.definition, arguments.occurrences})
        if (place)
            document.place = TextPlaces(document.text).locationOfPlace(*place, nameOfFile(file));
    const std::shared_ptr<QVSyntax> syntax = syntaxForFile(arguments, file, document.text);
    const auto controller = QVThemeController::sharedController();
    // Tree and symbols have no colours; all else needs a theme, before the text is parsed and its languages
    // come up.
    const bool isColoured = isColouredOutput(arguments) || arguments.editBenchmark != 0;
    if (isColoured)
        for (const std::string &name : themeNames(arguments)) {
            const auto theme = themeNamed(name);
            document.themes.push_back({theme, defaultAttributes(*theme), {}});
        }
    if (isColoured)
        controller->setCurrentTheme(document.themes.front().theme);
    std::optional<Progress> progress(std::in_place, nameOfFile(file), "parsing");
    for (std::uint64_t turn = 0; turn < arguments.repeat; ++turn) {
        document.parse.reset();
        const Clock::time_point start = Clock::now();
        document.parse =
            QVParse::initWithSyntax(syntax, document.text.length(), QVParseMainQueueConcurrencyType);
        QVParse &parse = *document.parse;
        parse.setMaximumLineLength(arguments.maximumLineLength);
        parse.setRemembersSearches(!arguments.plain);
        parse.setPerformanceCollectionEnabled(arguments.trace);
        parse.performWritingBlockAndWait([&] {
            parse.replaceCharactersInRange({0, 0}, document.text, nullptr);
        });
        document.parseTimes.push_back(milliseconds(Clock::now() - start));
        if (arguments.statistics) {
            const Clock::time_point parsed = Clock::now();
            parse.performWritingBlockAndWait([&] { parse.finishDeferredWork(); });
            document.symbolsTimes.push_back(milliseconds(Clock::now() - parsed));
        }
    }
    document.parse->performReadingBlockAndWait([&] {
        progress->setStep("colouring");
        const NSRange all{0, document.text.length()};
        for (std::size_t index = 0; index < document.themes.size(); ++index) {
            PageTheme &theme = document.themes[index];
            if (index != 0)
                controller->setCurrentTheme(theme.theme);
            for (std::uint64_t turn = 0; turn < (index == 0 ? arguments.repeat : 1); ++turn) {
                const Clock::time_point start = Clock::now();
                theme.runs = attributeRuns(*document.parse, all, theme.defaults, std::move(theme.runs));
                if (index == 0)
                    document.attributesTimes.push_back(milliseconds(Clock::now() - start));
            }
        }
        ScopePlaces places(syntaxFiles);
        const std::string output = outputOfDocument(arguments, file, document, places);
        progress.reset();
        std::fwrite(output.data(), 1, output.size(), stdout);
        if (arguments.statistics)
            printStatistics(document, loadTime);
        if (arguments.trace)
            std::fputs(traceText(*document.parse, places).c_str(), stderr);
    });
    if (arguments.editBenchmark != 0)
        document.parse->performWritingBlockAndWait([&] {
            progress.emplace(nameOfFile(file), "timing edits");
            const std::string figures = editBenchmark(document, arguments.editBenchmark);
            progress.reset();
            std::fputs(figures.c_str(), stderr);
        });
}

} // namespace

int main(int argc, char **argv) {
    std::string message;
    const std::optional<Arguments> arguments = parseArguments(argc, argv, message);
    if (!arguments) {
        std::fprintf(stderr, "quorvane-highlight: %s (try --help)\n", message.c_str());
        return 2;
    }
    if (arguments->help) {
        std::fputs(usage, stdout);
        return 0;
    }
    try {
        const Clock::time_point start = Clock::now();
        const SyntaxFiles syntaxFiles = loadLanguages(*arguments);
        const double loadTime = milliseconds(Clock::now() - start);
        if (arguments->list)
            std::fputs(listText(syntaxFiles).c_str(), stdout);
        for (const std::string &file : arguments->files)
            highlightFile(*arguments, file, syntaxFiles, loadTime);
    } catch (const Failure &failure) {
        std::fprintf(stderr, "quorvane-highlight: %s\n", failure.message.c_str());
        return failure.exitCode;
    }
    return 0;
}
