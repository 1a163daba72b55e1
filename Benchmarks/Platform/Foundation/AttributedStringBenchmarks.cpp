#include "Benchmarks/Support/Timing.h"
#include "Platform/Foundation/NSAttributedString.h"

#include <string>

/// What typing costs in an attributed string, at the beginning, the middle and the end of texts of three
/// sizes, with one look and with many runs. The peer is a string in one piece without any attributes. One
/// iteration types a character and takes it away again: two keystrokes.
using namespace quorvane;

namespace {

/// In characters: a large source file, one of nine megabytes, and one of a hundred.
constexpr std::int64_t sizes[] = {280'000, 9'000'000, 100'000'000};
constexpr NSUInteger manyRuns = 100'000;

NSUInteger placeIn(NSUInteger length, std::int64_t place) {
    return length * static_cast<NSUInteger>(place) / 2;
}

std::shared_ptr<NSMutableAttributedString> textWithRuns(NSUInteger length, NSUInteger runs) {
    const auto text = NSMutableAttributedString::initWithString(std::u16string(length, u'a'));
    const NSAttributes look{{NSAttributeKey(u"look"), 1}};
    for (NSUInteger run = 1; run < runs; run += 2)
        text->setAttributes(look, {length / runs * run, length / runs});
    return text;
}

void type(benchmark::State &state, NSUInteger runs) {
    const auto text = textWithRuns(static_cast<NSUInteger>(state.range(0)), runs);
    const NSUInteger place = placeIn(text->length(), state.range(1));
    // The first edit moves the gap to its place; typing goes on from there.
    text->replaceCharactersInRange({place, 0}, u"x");
    for (auto _ : state) {
        text->replaceCharactersInRange({place, 0}, u"x");
        text->deleteCharactersInRange({place, 1});
    }
}

void typeIntoOneLook(benchmark::State &state) { type(state, 1); }
void typeIntoManyRuns(benchmark::State &state) { type(state, manyRuns); }

void typeIntoAPlainString(benchmark::State &state) {
    std::u16string text(static_cast<std::size_t>(state.range(0)), u'a');
    const NSUInteger place = placeIn(text.size(), state.range(1));
    text.insert(place, 1, u'x');
    for (auto _ : state) {
        text.insert(place, 1, u'x');
        text.erase(place, 1);
        benchmark::ClobberMemory();
    }
}

/// The first keystroke somewhere else, between the beginning and the end in turn.
void jump(benchmark::State &state) {
    const auto text = textWithRuns(static_cast<NSUInteger>(state.range(0)), manyRuns);
    const NSUInteger length = text->length();
    for (auto _ : state) {
        text->replaceCharactersInRange({0, 0}, u"x");
        text->deleteCharactersInRange({length, 1});
    }
}

void copyManyRuns(benchmark::State &state) {
    const auto text = textWithRuns(static_cast<NSUInteger>(state.range(0)), manyRuns);
    for (auto _ : state)
        benchmark::DoNotOptimize(NSMutableAttributedString::initWithAttributedString(*text));
}

void paintManyRuns(benchmark::State &state) {
    const auto text = textWithRuns(static_cast<NSUInteger>(state.range(0)), manyRuns);
    NSInteger value = 0;
    for (auto _ : state)
        text->addAttribute(NSAttributeKey(u"paint"), ++value, {0, text->length()});
}

void atThreePlaces(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgNames({"length", "place"});
    for (const std::int64_t size : sizes)
        for (const std::int64_t place : {0, 1, 2})
            benchmark->Args({size, place});
}

void ofThreeSizes(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgName("length")->Unit(benchmark::kMicrosecond);
    for (const std::int64_t size : sizes)
        benchmark->Arg(size);
}

BENCHMARK(typeIntoOneLook)->Apply(atThreePlaces);
BENCHMARK(typeIntoManyRuns)->Apply(atThreePlaces);
BENCHMARK(typeIntoAPlainString)->Apply(atThreePlaces);
BENCHMARK(jump)->Apply(ofThreeSizes);
BENCHMARK(copyManyRuns)->Apply(ofThreeSizes);
BENCHMARK(paintManyRuns)->Apply(ofThreeSizes);

} // namespace
