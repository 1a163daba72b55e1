// Edits: what a keystroke costs the parse, beside what moving the text itself costs in the same run. Figures
// that are worth keeping are ratios of one run:
//
//   to_bound    the edit with its reparse to the same edit of the text alone
//   to_fresh    the edit to a parse of the whole text, which it replaces
//
// Edits are spread over the text. QUORVANE_BENCHMARK_FILES names files to edit as well, with colons between
// them.
#include "Benchmarks/Support/Texts.h"
#include "Benchmarks/Support/Timing.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>

using namespace quorvane;
using namespace quorvane::benchmarks;

namespace {

constexpr std::size_t hugeTextBytes = 9'000'000;

/// A text that is edited in both places: in a parse, and alone.
class EditedText {
public:
    explicit EditedText(const Text &text)
        : _parse(QVParse::initWithSyntax(text.syntax, text.string.length() + 1000,
                                         QVParseMainQueueConcurrencyType)),
          _text(text.string.length() + 1000) {
        _parse->setMaximumLineLength(10000);
        _freshSeconds = secondsOf([&] { edit({0, 0}, text.string); });
        _text.replaceCharactersInRange({0, 0}, text.string);
    }

    NSUInteger length() const { return _text.length(); }
    double freshSeconds() const { return _freshSeconds; }
    double secondsOfEdit(NSRange range, std::u16string_view with) {
        return secondsOf([&] { edit(range, with); });
    }
    double secondsOfText(NSRange range, std::u16string_view with) {
        return secondsOf([&] { _text.replaceCharactersInRange(range, with); });
    }

private:
    void edit(NSRange range, std::u16string_view with) {
        _parse->performWritingBlockAndWait(
            [&] { benchmark::DoNotOptimize(_parse->replaceCharactersInRange(range, with, nullptr)); });
    }

    std::shared_ptr<QVParse> _parse;
    QVParseText _text;
    double _freshSeconds = 0;
};

double quantile(std::vector<double> &seconds, double of) {
    const auto place =
        seconds.begin() + static_cast<std::ptrdiff_t>(static_cast<double>(seconds.size() - 1) * of);
    std::nth_element(seconds.begin(), place, seconds.end());
    return *place;
}

/// One letter in, the same letter out again, at places that follow each other in no order.
void typeLetters(benchmark::State &state, const Text &text) {
    EditedText edited(text);
    std::vector<double> edits;
    std::vector<double> moves;
    NSUInteger location = 0;
    for (auto _ : state) {
        location = (location + edited.length() / 3 + 7919) % edited.length();
        double seconds = 0;
        for (const auto &[range, with] : {std::pair{NSRange{location, 0}, std::u16string_view(u"x")},
                                          std::pair{NSRange{location, 1}, std::u16string_view()}}) {
            edits.push_back(edited.secondsOfEdit(range, with));
            moves.push_back(edited.secondsOfText(range, with));
            seconds += edits.back();
        }
        state.SetIterationTime(seconds / 2);
    }
    state.counters["median_us"] = quantile(edits, 0.5) * 1e6;
    state.counters["p99_us"] = quantile(edits, 0.99) * 1e6;
    state.counters["text_us"] = quantile(moves, 0.5) * 1e6;
    state.counters["to_bound"] = quantile(edits, 0.5) / quantile(moves, 0.5);
    state.counters["to_fresh"] = quantile(edits, 0.5) / edited.freshSeconds();
}

/// The edit that changes most: each line behind it becomes part of a comment, up to the end of one.
void openComment(benchmark::State &state, const Text &text) {
    double opening = 0;
    double closing = 0;
    double moving = 0;
    double fresh = 0;
    for (auto _ : state) {
        EditedText edited(text);
        fresh += edited.freshSeconds();
        moving += edited.secondsOfText({0, 0}, u"/*");
        const double seconds = edited.secondsOfEdit({0, 0}, u"/*");
        state.SetIterationTime(seconds);
        opening += seconds;
        closing += edited.secondsOfEdit({0, 2}, u"");
    }
    state.counters["to_bound"] = opening / moving;
    state.counters["to_fresh"] = opening / fresh;
    state.counters["closing_to_fresh"] = closing / fresh;
}

void registerComment(const Text &text) {
    benchmark::RegisterBenchmark(("comment/" + text.name).c_str(), openComment, text)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

void registerText(const Text &text) {
    benchmark::RegisterBenchmark(("letter/" + text.name).c_str(), typeLetters, text)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

void registerBenchmarks() {
    for (const std::vector<Text> &texts :
         {corpusTexts(smallTextBytes), corpusTexts(hugeTextBytes), filesOfEnvironment()})
        for (const Text &text : texts) {
            registerText(text);
            const NSString &language = text.syntax->name();
            if (language == u"c" || language == u"javascript" || language == u"css")
                registerComment(text);
        }
    for (const std::size_t lines : {10'000u, 200'000u})
        registerComment(openScript(lines));
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
