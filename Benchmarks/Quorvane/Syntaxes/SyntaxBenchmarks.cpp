// What a language costs before the first text: its file is read, its patterns are compiled. `to_xml` is the
// load of a syntax to the reading of its XML alone; `to_interpreted` the compiling to machine code to the
// compiling for the interpreter; `archive` loads the same grammar from its archive, beside the load from XML
// in the same run, and `start` what of that a start pays, before the first text in that language.
#include "Benchmarks/Support/Timing.h"
#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/XML/QVXMLDocument.h"
#include "Tests/Support/Corpus.h"

#include <benchmark/benchmark.h>

#include <map>
#include <stdexcept>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

/// Each pattern of a grammar once, with its options.
using Patterns = std::map<std::pair<NSString, QVRegularExpressionOptions>, bool>;

void addPattern(const std::shared_ptr<QVRegularExpression> &expression, Patterns &patterns) {
    if (expression)
        patterns[{expression->pattern(), expression->options()}] = true;
}

void addPatterns(const QVScope::Scopes &scopes, Patterns &patterns) {
    for (const auto &scope : scopes) {
        addPattern(scope->regularExpression(), patterns);
        addPattern(scope->endRegularExpression(), patterns);
        addPatterns(scope->subscopes(), patterns);
        if (scope->definesSubsyntax())
            addPatterns(scope->subsyntaxOptions()->cutoffScopes(), patterns);
    }
}

Patterns patternsOf(const QVSyntax &syntax) {
    Patterns patterns;
    const auto grammar = syntax.grammar();
    addPatterns(grammar->scopes(), patterns);
    addPatterns(grammar->templateScopes(), patterns);
    for (const auto &[name, collection] : grammar->collections())
        addPatterns(collection->scopes(), patterns);
    return patterns;
}

/// The anchored code that some patterns get at their first use is no part of this.
void compileAll(const Patterns &patterns, bool usesJIT) {
    for (const auto &[pattern, unused] : patterns) {
        const auto options = (pattern.second & ~QVRegularExpressionUseJIT) |
                             (usesJIT ? QVRegularExpressionUseJIT : QVRegularExpressionOptions(0));
        benchmark::DoNotOptimize(
            QVRegularExpression::regularExpressionWithPattern(pattern.first, options).get());
    }
}

void compilePatterns(benchmark::State &state, const std::string &language) {
    const Patterns patterns = patternsOf(*QVSyntax::syntaxForName(NSString::stringWithUTF8String(language)));
    double compiled = 0;
    double interpreted = 0;
    for (auto _ : state) {
        const double seconds = secondsOf([&] { compileAll(patterns, true); });
        state.SetIterationTime(seconds);
        compiled += seconds;
        interpreted += secondsOf([&] { compileAll(patterns, false); });
    }
    state.counters["patterns/s"] = rateOf(static_cast<double>(patterns.size()));
    state.counters["patterns"] = static_cast<double>(patterns.size());
    state.counters["us/pattern"] =
        compiled * 1e6 / static_cast<double>(patterns.size()) / static_cast<double>(state.iterations());
    state.counters["to_interpreted"] = compiled / interpreted;
}

void loadSyntax(benchmark::State &state, const std::string &language) {
    const NSData data(test::contentsOfFile(test::bundledSyntaxPath(language)));
    double whole = 0;
    double reading = 0;
    for (auto _ : state) {
        std::shared_ptr<QVSyntax> syntax;
        const double seconds = secondsOf([&] {
            syntax = QVSyntax::initWithDocument(*QVXMLDocument::initWithData(data));
            benchmark::DoNotOptimize(syntax->grammar().get());
        });
        state.SetIterationTime(seconds);
        whole += seconds;
        reading += secondsOf([&] { benchmark::DoNotOptimize(QVXMLDocument::initWithData(data).get()); });
    }
    state.counters["KB/s"] = rateOf(static_cast<double>(data.length()) / 1000);
    state.counters["to_xml"] = whole / reading;
}

/// The archive of a language as a cache keeps it. `wholly` goes on to the connected grammar, as the first
/// text would; else only what a start reads.
void loadArchive(benchmark::State &state, const std::string &language, bool wholly) {
    const NSData data(test::contentsOfFile(test::bundledSyntaxPath(language)));
    const NSData archive = NSKeyedArchiver::archivedDataWithRootObject(
        QVSyntax::initWithDocument(*QVXMLDocument::initWithData(data)));
    double fromArchive = 0;
    double fromXML = 0;
    for (auto _ : state) {
        std::shared_ptr<QVSyntax> syntax;
        const double seconds = secondsOf([&] {
            syntax = NSKeyedUnarchiver::unarchivedObjectOfClass<QVSyntax>(archive);
            if (wholly)
                benchmark::DoNotOptimize(syntax->grammar().get());
        });
        if (!syntax || !syntax->grammar())
            return state.SkipWithError("the archive can't be read");
        state.SetIterationTime(seconds);
        fromArchive += seconds;
        fromXML += secondsOf([&] {
            syntax = QVSyntax::initWithDocument(*QVXMLDocument::initWithData(data));
            benchmark::DoNotOptimize(syntax->grammar().get());
        });
    }
    state.counters["KB"] = static_cast<double>(archive.length()) / 1000;
    state.counters["xml_KB"] = static_cast<double>(data.length()) / 1000;
    state.counters["to_xml"] = fromArchive / fromXML;
}

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    try {
        test::loadBundledSyntaxes();
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
    for (const std::string &language : test::corpusLanguages()) {
        benchmark::RegisterBenchmark(("load/" + language).c_str(), loadSyntax, language)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("archive/" + language).c_str(), loadArchive, language, true)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("start/" + language).c_str(), loadArchive, language, false)
            // So short that the peer's time would make minutes of it.
            ->Iterations(20)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(("compile/" + language).c_str(), compilePatterns, language)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
