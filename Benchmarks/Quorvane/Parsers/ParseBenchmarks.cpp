// Whole-text parses: how fast, beside what the patterns alone cost, and how much memory the trees take.
// Figures that are worth keeping are ratios of one run:
//
//   to_bound    the parse to a loop that searches each line once for each pattern of the grammar's top
//   plain_to    the parse that searches afresh behind each region to the one that remembers
//   growth      time for each unit of a long line to that of the shortest one: 1 is linear
//
// Sizes are those of the UTF-8 source; memory is told for each UTF-16 unit. QUORVANE_BENCHMARK_FILES names
// files to parse as well, with colons between them.
#include "Benchmarks/Support/Texts.h"
#include "Benchmarks/Support/Timing.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <malloc.h>
#include <unordered_set>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

constexpr NSUInteger usualLineLength = 10000;

std::shared_ptr<QVParse> newParse(const Text &text, bool remembers, NSUInteger maximumLineLength) {
    const auto parse =
        QVParse::initWithSyntax(text.syntax, text.string.length(), QVParseMainQueueConcurrencyType);
    parse->setRemembersSearches(remembers);
    parse->setMaximumLineLength(maximumLineLength);
    return parse;
}

std::shared_ptr<QVParse> parseOf(const Text &text, bool remembers = true,
                                 NSUInteger maximumLineLength = usualLineLength) {
    const auto parse = newParse(text, remembers, maximumLineLength);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, text.string, nullptr); });
    return parse;
}

/// Making and parsing, without the freeing of the tree.
double secondsOfParse(const Text &text, bool remembers = true,
                      NSUInteger maximumLineLength = usualLineLength) {
    std::shared_ptr<QVParse> parse;
    return secondsOf([&] { parse = parseOf(text, remembers, maximumLineLength); });
}

std::size_t countOfNodes(const QVScopeMatch &match) {
    std::size_t count = 1;
    for (const QVScopeMatch *const submatch : match.submatches())
        count += countOfNodes(*submatch);
    return count;
}

std::size_t heapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// The lower bound: each line is searched once for each pattern that can match at the top.
class Bound {
public:
    explicit Bound(const Text &text) : _string(text.string) {
        std::unordered_set<const QVRegularExpression *> known;
        for (const auto &scope : topScopes(*text.syntax))
            if (known.insert(scope->regularExpression().get()).second)
                _expressions.push_back(scope->regularExpression());
    }

    void run() {
        const std::u16string_view view = _string.view();
        for (std::size_t start = 0; start < view.size();) {
            const std::size_t end = std::min(view.find(u'\n', start), view.size());
            for (const auto &expression : _expressions)
                benchmark::DoNotOptimize(expression->directSearchInCharacters(
                    view.data(), view.size(), {start, end - start}, _context, false));
            start = end + 1;
        }
    }

private:
    NSString _string;
    std::vector<std::shared_ptr<const QVRegularExpression>> _expressions;
    QVRegularExpressionMatchContext _context;
};

void parseText(benchmark::State &state, const Text &text) {
    const auto units = static_cast<double>(text.string.length());
    std::shared_ptr<QVParse> parse;
    double heap = 0;
    for (auto _ : state) {
        parse.reset();
        const std::size_t before = heapBytes();
        state.SetIterationTime(secondsOf([&] { parse = parseOf(text); }));
        heap = static_cast<double>(heapBytes()) - static_cast<double>(before);
    }
    const double textBytes = static_cast<double>(parse->stringCapacity()) * sizeof(char16_t);
    const auto treeBytes = static_cast<double>(parse->treeBytes());
    const auto nodes = static_cast<double>(countOfNodes(*parse->rootMatch()));
    const auto kilobytes = static_cast<double>(text.bytes) / 1000;
    state.counters["MB/s"] = rateOf(kilobytes / 1000);
    state.counters["nodes/s"] = rateOf(nodes);
    state.counters["nodes/KB"] = nodes / kilobytes;
    state.counters["text_B/unit"] = textBytes / units;
    state.counters["tree_B/unit"] = treeBytes / units;
    // The lists of children, and what the parse keeps of patterns and scopes.
    state.counters["rest_B/unit"] = (heap - textBytes - treeBytes) / units;
}

/// Side by side in each turn, so that a slow moment of the machine hits all of them.
void compareText(benchmark::State &state, const Text &text) {
    Bound bound(text);
    double remembering = 0;
    double plain = 0;
    double patterns = 0;
    for (auto _ : state) {
        const double seconds = secondsOfParse(text);
        state.SetIterationTime(seconds);
        remembering += seconds;
        plain += secondsOfParse(text, false);
        patterns += secondsOf([&] { bound.run(); });
    }
    state.counters["to_bound"] = remembering / patterns;
    state.counters["plain_to"] = plain / remembering;
}

void parseLongLine(benchmark::State &state, const std::shared_ptr<QVSyntax> &syntax) {
    static constexpr std::size_t shortest = 9900;
    const auto textOf = [&](std::size_t units) { return Text{"", syntax, NSString(longLine(units)), units}; };
    const Text first = textOf(shortest);
    const auto factor = static_cast<std::size_t>(state.range(0));
    const Text text = textOf(shortest * factor);
    double firstSeconds = 0;
    double seconds = 0;
    for (auto _ : state) {
        firstSeconds += secondsOfParse(first, true, 0);
        const double turn = secondsOfParse(text, true, 0);
        state.SetIterationTime(turn);
        seconds += turn;
    }
    state.counters["MB/s"] = rateOf(static_cast<double>(text.bytes) / 1e6);
    state.counters["growth"] = seconds / firstSeconds / static_cast<double>(factor);
}

void addPlaces(const QVScopeMatch &match, std::vector<NSUInteger> &places) {
    if (match.range().location != NSNotFound)
        places.push_back(match.range().location);
    for (const QVScopeMatch *const submatch : match.submatches())
        addPlaces(*submatch, places);
}

/// Asks for a thousand places; the bound is a binary search over the places of all nodes in one list.
void askForLocations(benchmark::State &state, const Text &text) {
    static constexpr int queries = 1000;
    const auto parse = parseOf(text);
    std::vector<NSUInteger> places;
    addPlaces(*parse->rootMatch(), places);
    // Each far from the one before, as on a jump through the text.
    NSUInteger location = 0;
    const auto next = [&] { return location = (location + 7919 * 101) % text.string.length(); };
    double asking = 0;
    double searching = 0;
    parse->performReadingBlockAndWait([&] {
        for (auto _ : state) {
            const double seconds = secondsOf([&] {
                for (int query = 0; query < queries; ++query)
                    benchmark::DoNotOptimize(parse->matchAtLocation(next(), true, nullptr));
            });
            state.SetIterationTime(seconds);
            asking += seconds;
            searching += secondsOf([&] {
                for (int query = 0; query < queries; ++query)
                    benchmark::DoNotOptimize(std::upper_bound(places.begin(), places.end(), next()));
            });
        }
    });
    state.counters["queries/s"] = rateOf(queries);
    state.counters["to_bound"] = asking / searching;
}

void registerText(const Text &text) {
    benchmark::RegisterBenchmark(("parse/" + text.name).c_str(), parseText, text)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

void registerComparison(const Text &text) {
    benchmark::RegisterBenchmark(("compare/" + text.name).c_str(), compareText, text)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

void registerBenchmarks() {
    const std::vector<Text> small = corpusTexts(smallTextBytes);
    for (const std::vector<Text> &texts : {small, corpusTexts(largeTextBytes), filesOfEnvironment()})
        for (const Text &text : texts)
            registerText(text);
    for (const Text &text : small)
        registerComparison(text);
    for (const Text &text : filesOfEnvironment())
        registerComparison(text);

    const Text many = manyPatternsText(400, smallTextBytes);
    registerText(many);
    registerComparison(many);

    for (const Text &text : small)
        benchmark::RegisterBenchmark(("location/" + text.name).c_str(), askForLocations, text)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    if (const auto script = QVSyntax::syntaxForName(u"javascript"))
        benchmark::RegisterBenchmark("long-line/javascript", parseLongLine, script)
            ->RangeMultiplier(2)
            ->Range(1, 4)
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
