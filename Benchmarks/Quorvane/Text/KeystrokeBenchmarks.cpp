// Keystrokes: what typing into a document costs the main thread, with a theme, an observer, lines and, where
// the name says so, a folding view; beside what the same letters cost the text with its attributes alone.
//
//   median_us, p99_us       the main thread's time for a letter, of 2000 that are typed in one place
//   to_text                 the median to that of the text alone, typed at the same pace
//   sleeper_us, _p99_us     waking a thread that sleeps, and no more: what a keystroke that starts a reparse
//                           would pay beside its own work if the parse's worker slept
//   to_sleeper, _p99        median and 99th percentile to these
//   submit_us               handing the parse an empty task
//   colours_us, _p99_us     from the keystroke until its colours are applied, by the clock
//   apply_us                the main thread's part of taking the colours in
//
// "Idle" waits for the colours of each letter, so that each keystroke starts a reparse; "Burst" types on
// while one runs. "Paced" is a person who types: a letter every 20 ms, and between them the main thread waits
// in an event loop of its own and drains the main queue when it is woken, as a host's does. Its colours come
// later than those of "Idle", where the main thread waits for the parse: then no worker naps.
//
// Times of the main thread are its processor time. QUORVANE_BENCHMARK_HUGE=1 takes a text of 100 MB as well,
// which wants 8 GB of memory.
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
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

using namespace quorvane;
using namespace quorvane::benchmarks;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int keystrokes = 2000;
constexpr int pacedKeystrokes = 300;
constexpr std::chrono::milliseconds pause(20);
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

/// A thread that sleeps until it is woken, does nothing, and sleeps again.
class Sleeper {
public:
    ~Sleeper() {
        _thread.request_stop();
        wake();
    }
    void wake() {
        {
            const std::lock_guard guard(_mutex);
            _isWoken = true;
        }
        _woken.notify_one();
    }

private:
    std::mutex _mutex;
    std::condition_variable _woken;
    bool _isWoken = false;
    std::jthread _thread{[this](const std::stop_token &stop) {
        std::unique_lock lock(_mutex);
        while (!stop.stop_requested()) {
            _woken.wait(lock, [this] { return _isWoken; });
            _isWoken = false;
        }
    }};
};

/// A host's event loop: it waits by its own means, and drains the main queue when it was woken.
class EventLoop {
public:
    EventLoop() {
        MainQueue::setWakeUpHandler([this] {
            const std::lock_guard guard(_mutex);
            _isWoken = true;
            _woken.notify_one();
        });
    }
    ~EventLoop() { MainQueue::setWakeUpHandler({}); }
    EventLoop(const EventLoop &) = delete;
    EventLoop &operator=(const EventLoop &) = delete;

    template <typename AfterDrain> void runUntil(Clock::time_point until, AfterDrain afterDrain) {
        std::unique_lock lock(_mutex);
        while (_woken.wait_until(lock, until, [this] { return _isWoken; })) {
            _isWoken = false;
            lock.unlock();
            MainQueue::drain();
            afterDrain();
            lock.lock();
        }
    }

private:
    std::mutex _mutex;
    std::condition_variable _woken;
    bool _isWoken = false;
};

enum class Pace { Idle, Paced, Burst };

struct Case {
    Text text;
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

    Sleeper sleeper;
    std::vector<double> costs;
    std::vector<double> colours;
    std::vector<double> applied;
    std::vector<double> submissions;
    std::vector<double> wakes;
    std::vector<double> bareCosts;
    auto location = static_cast<NSUInteger>(static_cast<double>(storage->length()) * typed.place);
    const auto typeLetter = [&] {
        costs.push_back(1e6 * secondsOf([&] { storage->replaceCharactersInRange({location++, 0}, u"x"); }));
    };
    for (auto _ : state) {
        switch (typed.pace) {
        case Pace::Idle:
            for (int count = 0; count < keystrokes; ++count) {
                const auto start = Clock::now();
                typeLetter();
                storage->parse()->performReadingBlockAndWait([] {});
                applied.push_back(1e6 * secondsOf([&] { waitForColours(*storage); }));
                colours.push_back(microsecondsSince(start));
                submissions.push_back(1e6 * secondsOf([&] { storage->parse()->performWritingBlock([] {}); }));
                storage->parse()->performReadingBlockAndWait([] {});
                wakes.push_back(1e6 * secondsOf([&] { sleeper.wake(); }));
            }
            break;
        case Pace::Paced: {
            const auto bare = NSMutableAttributedString::initWithString(typed.text.string);
            EventLoop loop;
            for (int count = 0; count < pacedKeystrokes; ++count) {
                const auto start = Clock::now();
                bool isColoured = false;
                typeLetter();
                const auto noteColours = [&] {
                    if (!isColoured && !storage->isParseUpdating()) {
                        colours.push_back(microsecondsSince(start));
                        isColoured = true;
                    }
                };
                loop.runUntil(start + pause / 2, noteColours);
                // In a pause of its own, so that neither finds in the caches what the other left there.
                bareCosts.push_back(1e6 * secondsOf([&] {
                                        bare->replaceCharactersInRange({location - 1, 0}, u"x");
                                    }));
                loop.runUntil(start + pause, noteColours);
                wakes.push_back(1e6 * secondsOf([&] { sleeper.wake(); }));
            }
            break;
        }
        case Pace::Burst:
            for (int count = 0; count < keystrokes; ++count)
                typeLetter();
        }
        waitForColours(*storage);
    }
    const double textMedian =
        bareCosts.empty() ? medianOfText(typed.text, typed.place) : quantile(bareCosts, 0.5);
    const double median = quantile(costs, 0.5);
    const double p99 = quantile(costs, 0.99);
    state.counters["median_us"] = median;
    state.counters["p99_us"] = p99;
    state.counters["to_text"] = median / textMedian;
    if (typed.pace == Pace::Burst)
        return;
    const double wakeMedian = quantile(wakes, 0.5);
    const double wakeP99 = quantile(wakes, 0.99);
    state.counters["sleeper_us"] = wakeMedian;
    state.counters["sleeper_p99_us"] = wakeP99;
    state.counters["to_sleeper"] = median / wakeMedian;
    state.counters["to_sleeper_p99"] = p99 / wakeP99;
    state.counters["colours_us"] = quantile(colours, 0.5);
    state.counters["colours_p99_us"] = quantile(colours, 0.99);
    if (typed.pace == Pace::Idle) {
        state.counters["submit_us"] = quantile(submissions, 0.5);
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
    for (const auto &[pace, paceName] :
         {std::pair{Pace::Idle, "/idle"}, std::pair{Pace::Paced, "/paced"}, std::pair{Pace::Burst, "/burst"}})
        for (const bool hasView : {false, true})
            for (const auto &[placeName, place] :
                 {std::pair{"front", 0.0}, std::pair{"middle", 0.5}, std::pair{"end", 1.0}}) {
                const std::string name = text.name + "/" + placeName + paceName + (hasView ? "/folding" : "");
                benchmark::RegisterBenchmark(("Keystroke/" + name).c_str(),
                                             [typed = Case{text, place, pace, hasView}](
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
