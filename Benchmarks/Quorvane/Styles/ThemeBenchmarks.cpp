// What a document pays when the user takes another theme: styles are put onto all grammars that are in use,
// and the text is coloured anew; its tree stays. Figures that are worth keeping are ratios of one run:
//
//   to_bound    the switch with its colours to a walk along the document's tree
//   to_fresh    the switch with its colours to a parse with its colours, which a switch does without
//   to_steady   colouring behind a switch to colouring again, when all that is resolved is known
//
// Each language at 280 KB and 9 MB. QUORVANE_BENCHMARK_FILES names files to take as well, with colons between
// them.
#include "Benchmarks/Support/Texts.h"
#include "Benchmarks/Support/Timing.h"
#include "Platform/CoreText/CTFont.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Styles/QVThemeController.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/Corpus.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <stdexcept>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

constexpr std::size_t hugeTextBytes = 9'000'000;

std::shared_ptr<QVTheme> bundledTheme(const char *name) {
    auto theme = QVTheme::themeWithContentsOfURL(
        NSURL::fileURLWithPath(NSString::stringWithUTF8String(test::bundledThemePath(name))));
    if (!theme)
        throw std::runtime_error(std::string("no theme: ") + name);
    return theme;
}

NSAttributes defaultAttributes(const QVTheme &theme) {
    return {{NSFontAttributeName, CTFontCreateMonospacedSystemFont(12)},
            {NSForegroundColorAttributeName, theme.textColor()}};
}

std::shared_ptr<QVParse> parseOf(const Text &text) {
    const auto parse =
        QVParse::initWithSyntax(text.syntax, text.string.length(), QVParseMainQueueConcurrencyType);
    parse->setMaximumLineLength(10000);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text.string, nullptr); });
    return parse;
}

/// The lower bound: to each node, and its scope's type.
std::size_t walkTree(const QVParse &parse) {
    std::size_t count = 0;
    for (const QVScopeMatch *match = parse.rootMatch()->firstChild(); match;
         match = QVScopeMatch::directNextMatch(match))
        count += match->scope()->type() != QVScopeTypeWhitespace;
    return count;
}

std::size_t colour(const QVParse &parse, const NSAttributes &defaults) {
    std::size_t count = 0;
    parse.enumerateAttributesInRange({0, parse.string().size()}, defaults,
                                     [&](const NSAttributes &attributes, NSRange,
                                         const std::shared_ptr<QVSyntax> &, std::uint64_t, bool &) {
                                         benchmark::DoNotOptimize(&attributes);
                                         ++count;
                                     });
    return count;
}

void switchTheme(benchmark::State &state, const Text &text) {
    const auto controller = QVThemeController::sharedController();
    const std::shared_ptr<QVTheme> themes[] = {bundledTheme("Daylight"), bundledTheme("Dusk")};
    const NSAttributes defaults[] = {defaultAttributes(*themes[0]), defaultAttributes(*themes[1])};
    controller->setCurrentTheme(themes[0]);
    std::shared_ptr<QVParse> parse;
    double fresh = secondsOf([&] { parse = parseOf(text); });
    parse->performReadingBlockAndWait([&] {
        fresh += secondsOf([&] { benchmark::DoNotOptimize(colour(*parse, defaults[0])); });
        double styles = 0;
        double colours = 0;
        double steady = 0;
        double walking = 0;
        std::size_t turn = 0;
        std::size_t runs = 0;
        for (auto _ : state) {
            const std::size_t taken = ++turn % 2;
            const double resolving = secondsOf([&] { controller->setCurrentTheme(themes[taken]); });
            const double colouring = secondsOf([&] { runs = colour(*parse, defaults[taken]); });
            state.SetIterationTime(resolving + colouring);
            styles += resolving;
            colours += colouring;
            steady += secondsOf([&] { benchmark::DoNotOptimize(colour(*parse, defaults[taken])); });
            walking += secondsOf([&] { benchmark::DoNotOptimize(walkTree(*parse)); });
        }
        const auto turns = static_cast<double>(state.iterations());
        state.counters["styles_ms"] = styles * 1000 / turns;
        state.counters["runs/s"] = rateOf(static_cast<double>(runs));
        state.counters["to_bound"] = (styles + colours) / walking;
        state.counters["to_fresh"] = (styles + colours) / turns / fresh;
        state.counters["to_steady"] = colours / steady;
    });
    controller->setCurrentTheme(nullptr);
}

void registerBenchmarks() {
    for (const std::vector<Text> &texts :
         {corpusTexts(smallTextBytes), corpusTexts(hugeTextBytes), filesOfEnvironment()})
        for (const Text &text : texts)
            benchmark::RegisterBenchmark(("switch/" + text.name).c_str(), switchTheme, text)
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
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
