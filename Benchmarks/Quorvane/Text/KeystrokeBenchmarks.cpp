// Keystrokes: what typing into a document costs the main thread, with a theme, an observer, lines and, where
// the name says so, a folding view; beside what the same letters cost the text with its attributes alone.
//
//   median_us, p99_us   the main thread's time for one of 2000 letters that are typed in one place
//   to_text             the median to that of the text alone
//   wake_us             handing the parse an empty task, the bound of a keystroke that starts a reparse
//   colours_us          from the keystroke until its colours are applied, with the parse's work; median
//   colours_p99_us      the same, 99th percentile
//   apply_us            the main thread's part of taking the colours in
//
// "Idle" waits for the colours of each letter, so that each keystroke starts a reparse; "Burst" types on
// while one runs. QUORVANE_BENCHMARK_HUGE=1 takes a text of 100 MB as well. Times are those of the clock, not
// of the thread, for waking up the parse is part of it: run it on a quiet machine.
#include "Benchmarks/Support/Texts.h"
#include "Benchmarks/Support/Timing.h"
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

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace quorvane;
using namespace quorvane::benchmarks;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int keystrokes = 2000;
constexpr std::size_t hugeTextBytes = 9'000'000;
constexpr std::size_t giganticTextBytes = 100'000'000;

double microsecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double quantile(std::vector<double> &times, double of) {
    if (times.empty())
        return 0;
    const auto place =
        times.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(times.size() - 1) * of);
    std::nth_element(times.begin(), place, times.end());
    return *place;
}

bool waitForColours(QVConcreteTextStorage &storage) {
    return MainQueue::runUntil([&] { return !storage.isParseUpdating(); },
                               Clock::now() + std::chrono::minutes(10));
}

class Observer : public QVTextStorageChangeObserver {
public:
    void textStorageDidProcessChanges(QVTextStorage &, NSTextStorageEditActions, NSRange,
                                      NSInteger) override {
        ++_calls;
    }

private:
    std::size_t _calls = 0;
};

enum class Pace { Idle, Burst };

struct Case {
    Text text;
    const char *placeName;
    double place;
    Pace pace;
    bool hasView;
};

/// Of the same letters in the text alone.
double medianOfText(const Text &text, double place) {
    const auto string = NSMutableAttributedString::initWithString(text.string);
    auto location = static_cast<NSUInteger>(static_cast<double>(string->length()) * place);
    std::vector<double> times;
    for (int count = 0; count < keystrokes; ++count) {
        times.push_back(1e6 * secondsOf([&] { string->replaceCharactersInRange({location++, 0}, u"x"); }));
    }
    return quantile(times, 0.5);
}

void typeLetters(benchmark::State &state, const Case &typed) {
    const auto storage = QVConcreteTextStorage::initWithString(typed.text.string);
    const auto observer = std::make_shared<Observer>();
    storage->addChangeObserver(observer);
    storage->setSyntax(typed.text.syntax);
    if (!waitForColours(*storage)) {
        state.SkipWithError("the parse did not come to its end");
        return;
    }
    const auto view = typed.hasView ? QVFoldingTextStorage::initWithBackingStorage(storage) : nullptr;
    if (view)
        view->addChangeObserver(observer);

    std::vector<double> costs;
    std::vector<double> colours;
    std::vector<double> applied;
    std::vector<double> wakes;
    for (auto _ : state) {
        auto location = static_cast<NSUInteger>(static_cast<double>(storage->length()) * typed.place);
        for (int count = 0; count < keystrokes; ++count) {
            const auto start = Clock::now();
            costs.push_back(1e6 * secondsOf([&] {
                                storage->replaceCharactersInRange({location++, 0}, u"x");
                            }));
            if (typed.pace == Pace::Burst)
                continue;
            storage->parse()->performReadingBlockAndWait([] {});
            applied.push_back(1e6 * secondsOf([&] { waitForColours(*storage); }));
            colours.push_back(microsecondsSince(start));
            wakes.push_back(1e6 * secondsOf([&] { storage->parse()->performWritingBlock([] {}); }));
            storage->parse()->performReadingBlockAndWait([] {});
        }
        waitForColours(*storage);
    }
    const double median = quantile(costs, 0.5);
    state.counters["median_us"] = median;
    state.counters["p99_us"] = quantile(costs, 0.99);
    state.counters["to_text"] = median / medianOfText(typed.text, typed.place);
    if (typed.pace == Pace::Idle) {
        state.counters["colours_us"] = quantile(colours, 0.5);
        state.counters["colours_p99_us"] = quantile(colours, 0.99);
        state.counters["wake_us"] = quantile(wakes, 0.5);
        state.counters["apply_us"] = quantile(applied, 0.5);
    }
}

/// From the first look at a document until all of it has its colours, and what the main thread pays for it.
void openDocument(benchmark::State &state, const Text &text) {
    std::vector<double> made;
    std::vector<double> applied;
    for (auto _ : state) {
        std::shared_ptr<QVConcreteTextStorage> storage;
        made.push_back(1e3 * secondsOf([&] {
                           storage = QVConcreteTextStorage::initWithString(text.string);
                           storage->setSyntax(text.syntax);
                       }));
        storage->parse()->performReadingBlockAndWait([] {});
        applied.push_back(1e3 * secondsOf([&] { waitForColours(*storage); }));
    }
    state.counters["made_ms"] = quantile(made, 0.5);
    state.counters["apply_ms"] = quantile(applied, 0.5);
}

Text textOfSize(std::size_t bytes) {
    Text text;
    text.name = "javascript/" + nameOfSize(bytes);
    text.syntax = QVSyntax::syntaxForName(u"javascript");
    const std::string utf8 = test::repeatedSamples("javascript", bytes);
    text.string = NSString::stringWithUTF8String(utf8);
    text.bytes = utf8.size();
    return text;
}

void registerText(const Text &text) {
    for (const Pace pace : {Pace::Idle, Pace::Burst})
        for (const bool hasView : {false, true})
            for (const auto &[placeName, place] :
                 {std::pair{"front", 0.0}, std::pair{"middle", 0.5}, std::pair{"end", 1.0}}) {
                const std::string name = text.name + "/" + placeName +
                                         (pace == Pace::Idle ? "/idle" : "/burst") +
                                         (hasView ? "/folding" : "");
                benchmark::RegisterBenchmark(("Keystroke/" + name).c_str(),
                                             [typed = Case{text, placeName, place, pace, hasView}](
                                                 benchmark::State &state) { typeLetters(state, typed); })
                    ->Iterations(1)
                    ->Unit(benchmark::kMillisecond);
            }
    benchmark::RegisterBenchmark(("Open/" + text.name).c_str(),
                                 [text](benchmark::State &state) { openDocument(state, text); })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

const bool registered = [] {
    try {
        test::loadBundledSyntaxes();
        QVThemeController::sharedController()->setCurrentTheme(QVTheme::themeWithContentsOfURL(
            NSURL::fileURLWithPath(u"" QUORVANE_SOURCE_DIR "/Packages/Themes/Themes/Dusk.css")));
        registerText(textOfSize(smallTextBytes));
        registerText(textOfSize(hugeTextBytes));
        for (const Text &text : filesOfEnvironment())
            registerText(text);
        if (std::getenv("QUORVANE_BENCHMARK_HUGE") != nullptr)
            registerText(textOfSize(giganticTextBytes));
    } catch (const std::exception &exception) {
        std::fprintf(stderr, "%s\n", exception.what());
    }
    return true;
}();

} // namespace
