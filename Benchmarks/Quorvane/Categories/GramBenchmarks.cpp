// What one keystroke costs when it goes over a hundred thousand names of completions and symbols.
// `ns/candidate` is the time for one candidate; `ns/scored` for one that matches. `to_subsequence` is the
// ratio to the least that could tell anything: whether the pattern's letters, lowered before, come in this
// order in the lowered name, yes or no. `to_plain` is the ratio to the rules written down step by step, over
// texts.
#include "Benchmarks/Support/Timing.h"
#include "Quorvane/Categories/QVGramPattern.h"
#include "Tests/Quorvane/Categories/NaiveGrams.h"

#include <benchmark/benchmark.h>

#include <random>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

constexpr std::size_t candidateCount = 100000;

struct Candidates {
    std::vector<QVGrams> grams;
    std::vector<std::vector<NSString>> texts;
    std::vector<std::u16string> lowered;

    /// Names as programs have them: two to four words, in camel case, with capitals or with underscores.
    Candidates() {
        const char16_t *const words[] = {
            u"get",    u"set",    u"is",     u"text",   u"storage", u"range",  u"line",   u"view",
            u"layout", u"glyph",  u"string", u"index",  u"count",   u"buffer", u"parse",  u"scope",
            u"match",  u"symbol", u"style",  u"color",  u"font",    u"width",  u"height", u"origin",
            u"frame",  u"draw",   u"update", u"handle", u"request", u"result", u"error",  u"file",
            u"path",   u"name",   u"value",  u"key",    u"table",   u"node",   u"tree",   u"parent",
            u"child",  u"insert", u"remove", u"find",   u"replace", u"cursor", u"select", u"offset",
            u"start",  u"end",    u"format", u"cache",  u"load",    u"save",   u"queue",  u"thread",
            u"lock",   u"event",  u"signal", u"url",    u"http",    u"json",   u"xml",
        };
        std::mt19937 random(1);
        grams.reserve(candidateCount);
        for (std::size_t index = 0; index < candidateCount; ++index) {
            const auto style = random() % 4;
            std::u16string name;
            for (std::size_t count = 2 + random() % 3, word = 0; word < count; ++word) {
                std::u16string next = words[random() % std::size(words)];
                if (style == 3 && word > 0)
                    name += u'_';
                if (style == 2 || (style < 2 && word > 0))
                    next[0] = static_cast<char16_t>(next[0] - 32);
                name += next;
            }
            grams.push_back(qv_grams(name));
            texts.push_back(grams.back().strings());
            lowered.emplace_back(NSString(name).lowercaseString().view());
        }
    }
};

const Candidates &candidates() {
    static const auto *const instance = new Candidates;
    return *instance;
}

bool isSubsequence(std::u16string_view pattern, std::u16string_view name) {
    auto next = pattern.begin();
    for (const char16_t unit : name)
        if (unit == *next && ++next == pattern.end())
            return true;
    return false;
}

void matchGrams(benchmark::State &state, const char16_t *query, bool wantsIndexes) {
    const Candidates &all = candidates();
    // It is so slow that a part of them tells enough.
    const double plain =
        50 * secondsOf([&] {
            for (std::size_t index = 0; index < candidateCount; index += 50)
                benchmark::DoNotOptimize(
                    test::naiveMatch(query, all.texts[index], QVGramMatchingIgnoreCase).score);
        });

    double matching = 0;
    double bound = 0;
    std::size_t found = 0;
    std::size_t foundByBound = 0;
    for (auto _ : state) {
        found = foundByBound = 0;
        const double seconds = secondsOf([&] {
            const QVGramPattern pattern(query, QVGramMatchingIgnoreCase);
            NSIndexSet indexes;
            for (const QVGrams &grams : all.grams) {
                float score = 0;
                found += pattern.matches(grams, &score, wantsIndexes ? &indexes : nullptr);
                benchmark::DoNotOptimize(score);
            }
        });
        state.SetIterationTime(seconds);
        matching += seconds;
        bound += secondsOf([&] {
            const NSString lowered = NSString(query).lowercaseString();
            for (const std::u16string &name : all.lowered)
                foundByBound += isSubsequence(lowered, name);
        });
    }
    if (found != foundByBound)
        state.SkipWithError("the two found other candidates");
    const auto each = [&](double seconds, std::size_t count) {
        return seconds * 1e9 / static_cast<double>(count) / static_cast<double>(state.iterations());
    };
    state.counters["ns/candidate"] = each(matching, candidateCount);
    state.counters["ns/scored"] = each(matching, std::max<std::size_t>(found, 1));
    state.counters["found"] = static_cast<double>(found);
    state.counters["to_subsequence"] = matching / bound;
    state.counters["to_plain"] = matching / static_cast<double>(state.iterations()) / plain;
}

/// The mask alone, which is all that most candidates cost.
void rejectByMask(benchmark::State &state) {
    const Candidates &all = candidates();
    const QVGramPattern pattern(u"zq", QVGramMatchingIgnoreCase);
    double matching = 0;
    for (auto _ : state) {
        const double seconds = secondsOf([&] {
            for (const QVGrams &grams : all.grams)
                benchmark::DoNotOptimize(pattern.matches(grams));
        });
        state.SetIterationTime(seconds);
        matching += seconds;
    }
    state.counters["ns/candidate"] =
        matching * 1e9 / candidateCount / static_cast<double>(state.iterations());
}

void splitNames(benchmark::State &state) {
    const Candidates &all = candidates();
    double splitting = 0;
    double plain = 0;
    for (auto _ : state) {
        std::size_t count = 0;
        const double seconds = secondsOf([&] {
            // More names than are remembered, so each is split anew.
            for (const QVGrams &grams : all.grams)
                count += qv_grams(NSString(grams.text())).count();
        });
        state.SetIterationTime(seconds);
        splitting += seconds;
        plain += secondsOf([&] {
            for (const QVGrams &grams : all.grams)
                count -= test::naiveGrams(NSString(grams.text())).size();
        });
        if (count != 0)
            state.SkipWithError("the two split otherwise");
    }
    state.counters["ns/name"] = splitting * 1e9 / candidateCount / static_cast<double>(state.iterations());
    state.counters["to_plain"] = splitting / plain;
}

BENCHMARK_CAPTURE(matchGrams, one_letter, u"t", false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchGrams, initials, u"gtr", false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchGrams, words, u"textRange", false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchGrams, scattered, u"sltrn", false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchGrams, initials_with_indexes, u"gtr", true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(rejectByMask)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(splitNames)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
