// quorvane-highlight: parses files with language packages and shows what the engine makes of them.

#include "Arguments.h"
#include "Languages.h"
#include "Printing.h"

#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>

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

void printStatistics(const QVParse &parse, double loadTime, std::vector<double> parseTimes) {
    std::sort(parseTimes.begin(), parseTimes.end());
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const std::size_t units = parse.string().size();
    std::fprintf(stderr, "units: %zu\nlines: %zu\nload-ms: %.3f\nparse-ms: %.3f\nnodes: %zu\n", units,
                 countLines(parse.string()), loadTime, parseTimes[parseTimes.size() / 2],
                 countNodes(*parse.rootMatch()));
    std::fprintf(stderr, "tree-bytes-per-unit: %.2f\npeak-rss-mb: %.1f\n",
                 units == 0 ? 0.0 : static_cast<double>(parse.treeBytes()) / static_cast<double>(units),
                 static_cast<double>(usage.ru_maxrss) / 1024);
}

void highlightFile(const Arguments &arguments, const std::string &file, double loadTime) {
    const NSString text = readText(file);
    const std::shared_ptr<QVSyntax> syntax = syntaxForFile(arguments, file, text);
    std::shared_ptr<QVParse> parse;
    std::vector<double> times;
    for (std::uint64_t turn = 0; turn < arguments.repeat; ++turn) {
        parse.reset();
        const Clock::time_point start = Clock::now();
        parse = QVParse::initWithSyntax(syntax, text.length(), QVParseMainQueueConcurrencyType);
        parse->setMaximumLineLength(arguments.maximumLineLength);
        parse->setRemembersSearches(!arguments.plain);
        parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text, nullptr); });
        times.push_back(milliseconds(Clock::now() - start));
    }
    parse->performReadingBlockAndWait([&] {
        const std::string output =
            arguments.format == Arguments::Format::Tree ? QVMatchTreeText(*parse) : ansiText(*parse);
        std::fwrite(output.data(), 1, output.size(), stdout);
        if (arguments.statistics)
            printStatistics(*parse, loadTime, times);
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
        loadLanguages(*arguments);
        const double loadTime = milliseconds(Clock::now() - start);
        for (const std::string &file : arguments->files)
            highlightFile(*arguments, file, loadTime);
    } catch (const Failure &failure) {
        std::fprintf(stderr, "quorvane-highlight: %s\n", failure.message.c_str());
        return failure.exitCode;
    }
    return 0;
}
