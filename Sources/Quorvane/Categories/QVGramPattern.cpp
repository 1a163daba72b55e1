#include "Quorvane/Categories/QVGramPattern.h"

#include "Platform/Foundation/NSCharacterSet.h"

#include <boost/container/small_vector.hpp>

namespace quorvane {

namespace {

/// Where a gram stands in the order of the words.
enum Position : std::uint8_t { First, Later, Adjacent };
/// What a run covers of its gram.
enum Coverage : std::uint8_t { Whole, Beginning, Middle };

/// Weights are 32-bit numbers whose products are taken in 64 bits and rounded at once: rankings that were
/// tuned by hand hang on the last bit where two scores are all but equal.
constexpr float scaled(float weight, double factor) {
    return static_cast<float>(static_cast<double>(weight) * factor);
}

constexpr float weight(Position position, Coverage coverage, bool isCaseExact) {
    float weight = 0.8F;
    if (coverage != Middle) {
        weight = coverage == Whole ? (position == First ? 2.0F : 1.2F) : (position == First ? 1.5F : 1.0F);
        if (position == Adjacent)
            weight = scaled(weight, 1.4);
    }
    return isCaseExact ? scaled(weight, 1.2) : weight;
}

struct Weights {
    float values[3][3][2] = {};
    constexpr Weights() {
        for (const Position position : {First, Later, Adjacent})
            for (const Coverage coverage : {Whole, Beginning, Middle})
                for (const bool isCaseExact : {false, true})
                    values[position][coverage][isCaseExact] = weight(position, coverage, isCaseExact);
    }
};
constexpr Weights weights;

/// The usual case: under the options all words are as long as they were.
class RegularWords {
public:
    RegularWords(const char16_t *units, const char16_t *raw) : _next(units), _nextRaw(raw) {}
    /// Takes the next gram of a pass.
    void take(NSUInteger, NSUInteger length) {
        _word = _next;
        _raw = _nextRaw;
        _next += length;
        _nextRaw += length;
    }
    std::int32_t unit(NSUInteger index) const { return _word[index]; }
    std::int32_t raw(NSUInteger index) const { return _raw[index]; }

private:
    const char16_t *_next;
    const char16_t *_nextRaw;
    const char16_t *_word = nullptr;
    const char16_t *_raw = nullptr;
};

/// Words that options make shorter or longer. Places are those of the unchanged word all the same, so what
/// sticks out is not looked at, and where nothing is left nothing matches.
class IrregularWords {
public:
    IrregularWords(const QVGrams &grams, QVGramMatchingOptions options) : _raws(grams.strings()) {
        for (const NSString &raw : _raws)
            _words.push_back(QVGrams::transformedText(raw, options));
    }
    void take(NSUInteger gram, NSUInteger) { _gram = gram; }
    std::int32_t unit(NSUInteger index) const {
        return index < _words[_gram].length() ? _words[_gram].characterAtIndex(index) : -1;
    }
    std::int32_t raw(NSUInteger index) const { return _raws[_gram].characterAtIndex(index); }

private:
    std::vector<NSString> _raws;
    std::vector<NSString> _words;
    NSUInteger _gram = 0;
};

} // namespace

QVGramPattern::QVGramPattern(const NSString &pattern, QVGramMatchingOptions options) : _options(options) {
    const bool isTransformed = options & (QVGramMatchingIgnoreCase | QVGramMatchingIgnoreDiacritics);
    const NSString transformed = QVGrams::transformedText(pattern, options);
    const auto blanks = NSCharacterSet::whitespaceCharacterSet();
    _units.reserve(transformed.length());
    for (NSUInteger index = 0; index < transformed.length(); ++index) {
        Unit unit{transformed.characterAtIndex(index), -1, false};
        if (!isTransformed)
            unit.typed = unit.unit;
        else if (index < pattern.length())
            unit.typed = pattern.characterAtIndex(index);
        unit.endsGram = options & QVGramMatchingWhitespaceEndsGram && blanks->characterIsMember(unit.unit);
        if (unit.endsGram)
            _hasGramEnds = true;
        else
            _letterMask |= QVGrams::letterBit(unit.unit);
        _units.push_back(unit);
    }
}

bool QVGramPattern::matches(const QVGrams &grams, float *score, NSIndexSet *matchingIndexes) const {
    if (score)
        *score = 0;
    if (matchingIndexes)
        matchingIndexes->removeAllIndexes();
    if (grams._count == 0 || _units.empty() || !mayMatch(grams))
        return false;
    // Without white space that ends grams each unit takes one of a word.
    if (!_hasGramEnds && _units.size() > grams._length)
        return false;
    if (const char16_t *units = grams.units(_options))
        return matches(grams, RegularWords(units, grams.units(0)), score, matchingIndexes);
    return matches(grams, IrregularWords(grams, _options), score, matchingIndexes);
}

template <typename Words>
bool QVGramPattern::matches(const QVGrams &grams, const Words &words, float *score,
                            NSIndexSet *indexes) const {
    if (_options & QVGramMatchingPrefixOfGramOnly)
        return _hasGramEnds ? matches<true, true>(grams, words, score, indexes)
                            : matches<true, false>(grams, words, score, indexes);
    return _hasGramEnds ? matches<false, true>(grams, words, score, indexes)
                        : matches<false, false>(grams, words, score, indexes);
}

template <bool prefixOnly, bool whitespaceEndsGram, typename Words>
bool QVGramPattern::matches(const QVGrams &grams, const Words &words, float *score,
                            NSIndexSet *indexes) const {
    boost::container::small_vector<NSRange, 16> ranges;
    const NSUInteger count = grams._count;
    const Unit *const end = _units.data() + _units.size();
    const Unit *next = _units.data();
    NSUInteger last = NSNotFound;
    NSUInteger base = 0;
    NSUInteger runs = 0;
    float total = 0;
    for (bool isFirstPass = true;; isFirstPass = false) {
        NSUInteger gram = last == NSNotFound ? 0 : last + 1;
        if (gram >= count)
            return false;
        Words pass = words;
        if (!isFirstPass)
            for (NSUInteger before = 0; before < gram; ++before)
                pass.take(before, grams.lengthOfGram(before));
        bool advanced = false;
        for (; gram < count; ++gram) {
            const NSUInteger length = grams.lengthOfGram(gram);
            pass.take(gram, length);
            const Position position = gram == 0                                ? First
                                      : last != NSNotFound && gram == last + 1 ? Adjacent
                                                                               : Later;
            bool isCaseExact = true;
            bool isConsumed = false;
            for (NSUInteger runStart = 0; runStart < length && !isConsumed;) {
                NSUInteger place = runStart;
                do {
                    if (whitespaceEndsGram && next->endsGram) {
                        ++next;
                        isConsumed = true;
                        break;
                    }
                    if (pass.unit(place) != next->unit)
                        break;
                    // Once a unit of the gram had another case, none of its later runs counts as exact.
                    isCaseExact = isCaseExact && pass.raw(place) == next->typed;
                    ++next;
                    ++place;
                } while (place != length && next != end);
                if (const NSUInteger runLength = place - runStart; runLength != 0) {
                    const Coverage coverage = runLength == length ? Whole
                                              : runStart == 0     ? Beginning
                                                                  : Middle;
                    total += scaled(weights.values[position][coverage][isCaseExact],
                                    static_cast<double>(runLength));
                    ++runs;
                    if (indexes)
                        ranges.push_back({runStart + base, runLength});
                    last = gram;
                    advanced = true;
                    runStart = place;
                } else {
                    ++runStart;
                }
                if (prefixOnly || next == end)
                    break;
            }
            base += length;
            if (next == end)
                break;
        }
        if (!advanced)
            return false;
        if (next == end)
            break;
        // Only white space can have kept a gram from being looked at: else it would fail once more.
        if (!whitespaceEndsGram)
            return false;
    }
    if (score) {
        const float density = static_cast<float>(runs) / static_cast<float>(count);
        *score = static_cast<float>(static_cast<double>(total) + 0.01 * static_cast<double>(density));
    }
    if (indexes)
        for (const NSRange range : ranges)
            indexes->addIndexesInRange(range);
    return true;
}

NSIndexSet qv_indexesMatchingGrams(const NSString &pattern, const QVGrams &grams,
                                   QVGramMatchingOptions options, float *score) {
    NSIndexSet indexes;
    QVGramPattern(pattern, options).matches(grams, score, &indexes);
    return indexes;
}

} // namespace quorvane
