// Attribute runs of whole texts, with styles on all scopes and captures. Figures that are worth keeping are
// ratios of one run:
//
//   to_bound    the walk that reports to one that only goes to each node of the tree
//   plain_to    resolving each match anew to the walk that remembers
//   paint_to    the attributed string, made run by run, to the walk
//   small_us    microseconds for the runs of the 200 units around a place, over places all through the text
//
// QUORVANE_BENCHMARK_FILES names files to take as well, with colons between them.
#include "Benchmarks/Support/Texts.h"
#include "Benchmarks/Support/Timing.h"
#include "Platform/Foundation/NSAttributedString.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <benchmark/benchmark.h>

#include <unordered_set>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

template <typename Node> void setStyle(Node &node) {
    node.removeAllStyles();
    auto style = std::make_shared<QVStyle>();
    style->setTextDecoration(QVStyleTextDecorationUnderline);
    style->setTextDecorationStyle(static_cast<NSInteger>(node.name().hash() % 16));
    node.addStyle(style);
}

void setStyles(const QVScope::Scopes &scopes, std::unordered_set<const QVScope *> &seen) {
    for (const auto &scope : scopes) {
        if (!seen.insert(scope.get()).second)
            continue;
        setStyle(*scope);
        for (const auto &capture : scope->captures())
            setStyle(*capture);
        for (const auto &capture : scope->endCaptures())
            setStyle(*capture);
        setStyles(scope->subscopes(), seen);
    }
}

void setStyles(const QVSyntax &syntax) {
    std::unordered_set<const QVScope *> seen;
    const auto &grammar = syntax.grammar();
    setStyles(grammar->scopes(), seen);
    setStyles(grammar->templateScopes(), seen);
    for (const auto &[name, collection] : grammar->collections())
        setStyles(collection->scopes(), seen);
}

const NSAttributes &defaultAttributes() {
    static const NSAttributes attributes{{NSToolTipAttributeName, 1}};
    return attributes;
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

std::size_t reportAll(const QVParse &parse, NSRange range) {
    std::size_t count = 0;
    parse.enumerateAttributesInRange(range, defaultAttributes(),
                                     [&](const NSAttributes &attributes, NSRange,
                                         const std::shared_ptr<QVSyntax> &, std::uint64_t, bool &) {
                                         benchmark::DoNotOptimize(&attributes);
                                         ++count;
                                     });
    return count;
}

void resolveAll(const QVParse &parse) {
    for (const QVScopeMatch *match = parse.rootMatch()->firstChild(); match;
         match = QVScopeMatch::directNextMatch(match)) {
        const QVScopeType type = match->scope()->type();
        if (type == QVScopeTypeUnknown || type == QVScopeTypeWhitespace || type == QVScopeTypeNewline)
            continue;
        NSMutableAttributes attributes;
        QVParseResolveStyleAttributesForMatch(match, attributes, defaultAttributes());
        benchmark::DoNotOptimize(attributes.attributes());
    }
}

void highlight(benchmark::State &state, const Text &text) {
    setStyles(*text.syntax);
    const auto parse = parseOf(text);
    parse->performReadingBlockAndWait([&] {
        const NSUInteger length = text.string.length();
        std::size_t nodes = 0;
        std::size_t runs = 0;
        double walking = 0;
        double reporting = 0;
        double plain = 0;
        double painting = 0;
        double small = 0;
        static constexpr std::size_t places = 500;
        for (auto _ : state) {
            walking += secondsOf([&] { nodes = walkTree(*parse); });
            const double seconds = secondsOf([&] { runs = reportAll(*parse, {0, length}); });
            state.SetIterationTime(seconds);
            reporting += seconds;
            plain += secondsOf([&] { resolveAll(*parse); });
            painting += secondsOf([&] {
                benchmark::DoNotOptimize(parse->attributedStringFromRange({0, length}, defaultAttributes()));
            });
            small += secondsOf([&] {
                for (std::size_t place = 0; place < places; ++place)
                    benchmark::DoNotOptimize(reportAll(*parse, {length / places * place, 200}));
            });
        }
        state.counters["runs/s"] = rateOf(static_cast<double>(runs));
        state.counters["MB/s"] = rateOf(static_cast<double>(text.bytes) / 1e6);
        state.counters["runs/KB"] = static_cast<double>(runs) * 1000 / static_cast<double>(text.bytes);
        state.counters["nodes/KB"] = static_cast<double>(nodes) * 1000 / static_cast<double>(text.bytes);
        state.counters["ns/node"] =
            reporting * 1e9 / static_cast<double>(nodes) / static_cast<double>(state.iterations());
        state.counters["to_bound"] = reporting / walking;
        state.counters["plain_to"] = plain / reporting;
        state.counters["paint_to"] = painting / reporting;
        state.counters["small_us"] =
            small * 1e6 / static_cast<double>(places) / static_cast<double>(state.iterations());
    });
}

void registerBenchmarks() {
    for (const std::vector<Text> &texts :
         {corpusTexts(smallTextBytes), corpusTexts(largeTextBytes), filesOfEnvironment()})
        for (const Text &text : texts)
            benchmark::RegisterBenchmark(("highlight/" + text.name).c_str(), highlight, text)
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
