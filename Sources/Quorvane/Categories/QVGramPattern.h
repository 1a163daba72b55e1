#pragma once

#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Categories/QVGrams.h"

namespace quorvane {

/// What a user typed, prepared once and then looked for in the grams of thousands of candidates, unit by unit
/// in a single forward pass: a unit is never matched twice, a gram that gave up its run is not returned to.
/// The score tells how the matches fall on the words: the first word counts most, words in sequence more than
/// words with a gap, a whole word more than its beginning, a run in the middle least. Allocates nothing but
/// the indexes of what matched. Immutable; any thread.
class QV_EXPORT QVGramPattern {
public:
    /// Null is as good as empty, which matches nothing.
    QVGramPattern(const NSString &pattern, QVGramMatchingOptions options);

    /// False where a unit of the pattern is in no word, which is told without looking at them.
    bool mayMatch(const QVGrams &grams) const { return (_letterMask & ~grams.letterMask()) == 0; }

    /// Whether the pattern is found. The score is written in all cases, 0 where it is not; so are the
    /// indexes, which count UTF-16 units of the grams one after the other. A second pass over the grams,
    /// which white space that ends grams can lead to, counts on from where the first one ended: its indexes
    /// are further behind than what they stand for.
    bool matches(const QVGrams &grams, float *score = nullptr, NSIndexSet *matchingIndexes = nullptr) const;

private:
    template <bool prefixOnly, bool whitespaceEndsGram, typename Words>
    bool matches(const QVGrams &grams, const Words &words, float *score, NSIndexSet *indexes) const;
    template <typename Words>
    bool matches(const QVGrams &grams, const Words &words, float *score, NSIndexSet *indexes) const;

    struct Unit {
        char16_t unit;
        /// What stands at this place of the pattern as it was typed; no unit where that is shorter.
        std::int32_t typed;
        bool endsGram;
    };
    std::vector<Unit> _units;
    QVGramMatchingOptions _options;
    std::uint64_t _letterMask = 0;
    bool _hasGramEnds = false;
};

/// The units of the grams that the pattern matches, empty where it doesn't; the score, which may be null, is
/// written in all cases. Whoever goes over many lists of grams prepares a `QVGramPattern`.
QV_EXPORT NSIndexSet qv_indexesMatchingGrams(const NSString &pattern, const QVGrams &grams,
                                             QVGramMatchingOptions options, float *score = nullptr);

} // namespace quorvane
