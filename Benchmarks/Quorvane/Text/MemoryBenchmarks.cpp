// Memory: what a document with colours holds for each UTF-16 unit of its text, by who holds it. In bytes:
//
//   text       the storage without a language: text, attributes, lines
//   tree       the parse's nodes and their records
//   parse      what else the parse has: its text, lists of children, symbols, brackets, places
//   colours    what the storage has more once all is coloured: its attribute runs
//   view       a folding view without folds
//
// Taken from the general allocator before and behind each step, with one heap for all threads. What was made
// stays to the end of the program, so that no text gets memory that another has left.
#include "Benchmarks/Support/Texts.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Styles/QVThemeController.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"
#include "Tests/Support/Corpus.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <malloc.h>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

constexpr std::size_t largestTextBytes = 9'000'000;

double bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void keep(std::shared_ptr<void> object) {
    static auto *const kept = new std::vector<std::shared_ptr<void>>;
    kept->push_back(std::move(object));
}

std::shared_ptr<QVParse> parseOf(const Text &text) {
    const auto parse =
        QVParse::initWithSyntax(text.syntax, text.string.length(), QVParseMainQueueConcurrencyType);
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, text.string, nullptr);
        parse->finishDeferredWork();
    });
    return parse;
}

void holdDocument(benchmark::State &state, const Text &text) {
    const auto units = static_cast<double>(text.string.length());
    // What a language's first use leaves for good is not the document's.
    Text sample = text;
    sample.string = text.string.substringWithRange({0, std::min<NSUInteger>(text.string.length(), 20'000)});
    keep(parseOf(sample));
    for (auto _ : state) {
        double before = bytesInUse();
        const auto take = [&] {
            const double now = bytesInUse();
            return (now - std::exchange(before, now)) / units;
        };
        const auto storage = QVConcreteTextStorage::initWithString(text.string);
        state.counters["text"] = take();
        const auto parse = parseOf(text);
        const double parsed = take();
        parse->performReadingBlockAndWait([&] {
            const double tree = static_cast<double>(parse->treeBytes()) / units;
            state.counters["tree"] = tree;
            state.counters["parse"] = parsed - tree;
        });
        take();
        storage->setSyntax(text.syntax);
        MainQueue::runUntil([&] { return !storage->isParseUpdating(); },
                            std::chrono::steady_clock::now() + std::chrono::minutes(10));
        state.counters["colours"] = take() - parsed;
        const auto view = QVFoldingTextStorage::initWithBackingStorage(storage);
        state.counters["view"] = take();
        keep(storage);
        keep(parse);
        keep(view);
    }
}

void registerText(const Text &text) {
    benchmark::RegisterBenchmark(("Memory/" + text.name).c_str(), [text](benchmark::State &state) {
        holdDocument(state, text);
    })->Iterations(1);
}

const bool registered = [] {
    mallopt(M_ARENA_MAX, 1);
    try {
        test::loadBundledSyntaxes();
        QVThemeController::sharedController()->setCurrentTheme(QVTheme::themeWithContentsOfURL(
            NSURL::fileURLWithPath(u"" QUORVANE_SOURCE_DIR "/Packages/Themes/Themes/Dusk.css")));
        for (const Text &text : corpusTexts(smallTextBytes))
            registerText(text);
        Text large;
        large.name = "javascript/" + nameOfSize(largestTextBytes);
        large.syntax = QVSyntax::syntaxForName(u"javascript");
        large.string = NSString::stringWithUTF8String(test::repeatedSamples("javascript", largestTextBytes));
        registerText(large);
        for (const Text &text : filesOfEnvironment())
            registerText(text);
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
    }
    return true;
}();

} // namespace
