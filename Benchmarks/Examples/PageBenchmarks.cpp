// A whole file to a coloured page, as quorvane-highlight makes it: parse, runs under a theme, page. Figures
// that are worth keeping are ratios of one run:
//
//   to_parse    all of it to the parse alone
//   to_bound    writing the page to writing the same text with nothing but its signs escaped
//
// `runs` and `page` are the parts of these two steps in the whole. QUORVANE_BENCHMARK_FILES names files to
// take as well, with colons between them.
#include "Benchmarks/Support/Texts.h"
#include "Benchmarks/Support/Timing.h"
#include "Examples/Highlight/Languages.h"
#include "Examples/Highlight/Output.h"
#include "Quorvane/Styles/QVThemeController.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <benchmark/benchmark.h>

#include <cstdio>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

/// The lower bound of writing a page: UTF-8, with the signs of markup escaped.
std::string escapedText(std::u16string_view text) {
    std::string result;
    for (const char character : std::string(NSString(text).UTF8String()))
        if (character == '&')
            result += "&amp;";
        else if (character == '<')
            result += "&lt;";
        else if (character == '>')
            result += "&gt;";
        else if (character == '"')
            result += "&quot;";
        else
            result += character;
    return result;
}

void writePage(benchmark::State &state, const Text &text) {
    const auto theme = highlight::themeNamed("Dusk");
    QVThemeController::sharedController()->setCurrentTheme(theme);
    const NSAttributes defaults = highlight::defaultAttributes(*theme);
    double parsing = 0;
    double colouring = 0;
    double writing = 0;
    double escaping = 0;
    std::size_t pageBytes = 0;
    for (auto _ : state) {
        const auto parse =
            QVParse::initWithSyntax(text.syntax, text.string.length(), QVParseMainQueueConcurrencyType);
        parse->setMaximumLineLength(10000);
        const double parseSeconds = secondsOf([&] {
            parse->performWritingBlockAndWait([&] {
                parse->replaceCharactersInRange({0, 0}, text.string, nullptr);
            });
        });
        parse->performReadingBlockAndWait([&] {
            std::vector<highlight::PageTheme> themes;
            themes.push_back({theme, defaults, {}});
            const double colourSeconds = secondsOf([&] {
                themes[0].runs = highlight::attributeRuns(*parse, {0, text.string.length()}, defaults);
            });
            std::string page;
            const double writeSeconds =
                secondsOf([&] { page = highlight::pageText(parse->string(), text.name, themes); });
            pageBytes = page.size();
            state.SetIterationTime(parseSeconds + colourSeconds + writeSeconds);
            parsing += parseSeconds;
            colouring += colourSeconds;
            writing += writeSeconds;
            escaping += secondsOf([&] { benchmark::DoNotOptimize(escapedText(parse->string())); });
        });
    }
    const double whole = parsing + colouring + writing;
    state.counters["MB/s"] = rateOf(static_cast<double>(text.bytes) / 1e6);
    state.counters["page_MB"] = static_cast<double>(pageBytes) / 1e6;
    state.counters["to_parse"] = whole / parsing;
    state.counters["runs"] = colouring / whole;
    state.counters["page"] = writing / whole;
    state.counters["to_bound"] = writing / escaping;
    QVThemeController::sharedController()->setCurrentTheme(nullptr);
}

void registerBenchmarks() {
    for (const std::vector<Text> &texts :
         {corpusTexts(smallTextBytes), corpusTexts(largeTextBytes), filesOfEnvironment()})
        for (const Text &text : texts)
            benchmark::RegisterBenchmark(("page/" + text.name).c_str(), writePage, text)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    try {
        registerBenchmarks();
    } catch (const highlight::Failure &failure) {
        std::fprintf(stderr, "%s\n", failure.message.c_str());
        return 1;
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
