#include "Benchmarks/Support/Timing.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"
#include "Quorvane/Text/QVTextFoldAttachment.h"

#include <random>

/// Positions converted between a document and a view with none to a hundred thousand folds, beside a search
/// by halves in a sorted list of ranges, which is as little as can be done; and what one keystroke costs the
/// document, its lines and the view together.
using namespace quorvane;

namespace {

constexpr NSUInteger documentLength = 9'000'000;
constexpr NSUInteger foldLength = 40;

struct FoldedText {
    /// Folds stand in equal distances.
    FoldedText(NSUInteger length, NSUInteger folds) {
        std::u16string text(length, u'a');
        for (std::size_t index = 79; index < text.size(); index += 80)
            text[index] = u'\n';
        document = QVConcreteTextStorage::initWithString(text);
        view = QVFoldingTextStorage::initWithBackingStorage(document);
        // All in one bracket, from the last to the first: those behind stay where they are.
        view->beginEditing();
        for (NSUInteger index = folds; index > 0; --index) {
            const NSRange range{(index - 1) * (length / folds) + 1, foldLength};
            view->foldRange(range);
            ranges.push_back(range);
        }
        view->endEditing();
        std::reverse(ranges.begin(), ranges.end());
    }

    std::shared_ptr<QVConcreteTextStorage> document;
    std::shared_ptr<QVFoldingTextStorage> view;
    std::vector<NSRange> ranges;
};

std::vector<NSUInteger> positionsBelow(NSUInteger length) {
    std::mt19937_64 random(1);
    std::vector<NSUInteger> positions(4096);
    for (NSUInteger &position : positions)
        position = random() % (length + 1);
    return positions;
}

template <typename Convert> void convertAll(benchmark::State &state, NSUInteger length, Convert convert) {
    const auto positions = positionsBelow(length);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(convert(positions[next]));
        next = (next + 1) % positions.size();
    }
}

void convertFromBacking(benchmark::State &state) {
    const FoldedText text(documentLength, static_cast<NSUInteger>(state.range(0)));
    convertAll(state, documentLength,
               [&](NSUInteger position) { return text.view->convertPositionFromBacking(position); });
}

void convertToBacking(benchmark::State &state) {
    const FoldedText text(documentLength, static_cast<NSUInteger>(state.range(0)));
    convertAll(state, text.view->length(),
               [&](NSUInteger position) { return text.view->convertPositionToBacking(position); });
}

/// The bound: which of the ranges a position is behind.
void searchBySortedRanges(benchmark::State &state) {
    const FoldedText text(documentLength, static_cast<NSUInteger>(state.range(0)));
    convertAll(state, documentLength, [&](NSUInteger position) {
        const auto at =
            std::upper_bound(text.ranges.begin(), text.ranges.end(), position,
                             [](NSUInteger value, const NSRange &range) { return value < range.location; });
        return at - text.ranges.begin();
    });
}

/// One iteration types a character and takes it away again: two keystrokes.
void type(benchmark::State &state) {
    const auto length = static_cast<NSUInteger>(state.range(0));
    const FoldedText text(length, static_cast<NSUInteger>(state.range(1)));
    const NSUInteger place = length * static_cast<NSUInteger>(state.range(2)) / 2;
    text.document->replaceCharactersInRange({place, 0}, u"x");
    for (auto _ : state) {
        text.document->replaceCharactersInRange({place, 0}, u"x");
        text.document->replaceCharactersInRange({place, 1}, u"");
    }
}

/// The document alone, as the bound of the same chain.
void typeWithoutAView(benchmark::State &state) {
    FoldedText text(static_cast<NSUInteger>(state.range(0)), 0);
    text.view.reset();
    const NSUInteger place = text.document->length() * static_cast<NSUInteger>(state.range(1)) / 2;
    text.document->replaceCharactersInRange({place, 0}, u"x");
    for (auto _ : state) {
        text.document->replaceCharactersInRange({place, 0}, u"x");
        text.document->replaceCharactersInRange({place, 1}, u"");
    }
}

void foldAndUnfold(benchmark::State &state) {
    const FoldedText text(documentLength, static_cast<NSUInteger>(state.range(0)));
    const NSUInteger place = text.view->length() / 2 / 80 * 80 + 60;
    for (auto _ : state) {
        const NSRange folded = text.view->foldRange({place, 10});
        text.view->unfoldAtPosition(folded.location, 0);
    }
}

void foldCounts(benchmark::internal::Benchmark *benchmark) {
    benchmark->ArgName("folds");
    for (const std::int64_t folds : {0, 1, 1000, 100'000})
        benchmark->Arg(folds);
}

BENCHMARK(convertFromBacking)->Apply(foldCounts);
BENCHMARK(convertToBacking)->Apply(foldCounts);
BENCHMARK(searchBySortedRanges)->Apply(foldCounts);
BENCHMARK(foldAndUnfold)->ArgName("folds")->Arg(1)->Arg(1000)->Arg(100'000);
BENCHMARK(type)
    ->ArgNames({"length", "folds", "place"})
    ->ArgsProduct({{280'000, 9'000'000, 100'000'000}, {0, 1, 1000}, {0, 1, 2}})
    ->ArgsProduct({{9'000'000, 100'000'000}, {100'000}, {0, 1, 2}});
BENCHMARK(typeWithoutAView)
    ->ArgNames({"length", "place"})
    ->ArgsProduct({{280'000, 9'000'000, 100'000'000}, {0, 1, 2}});

} // namespace
