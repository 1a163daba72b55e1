#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Text/QVFoldMap.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"

namespace quorvane {

NSUInteger QVFoldingTextStorage::lengthAsTold() const {
    return _contents ? _contents->length() : _folds->count();
}

NSUInteger QVFoldingTextStorage::convertPositionFromBacking(NSUInteger position, NSUInteger affinity) const {
    if (position == 0 || _folds->count() == 0)
        return position;
    if (position >= _backingLength)
        return lengthAsTold();
    if (hasNoFolds())
        return position;
    const auto converted = _folds->viewLocationForPosition(position, affinity != 0);
    QVAssert(converted.has_value(), u"Invalid effective range: No value found");
    const NSUInteger count = lengthAsTold();
    if (!converted)
        return count;
    QVAssert(*converted <= count, u"Converted folding position is invalid.");
    return *converted;
}

NSUInteger QVFoldingTextStorage::convertPositionToBacking(NSUInteger position) const {
    if (position == 0 || _folds->count() == 0)
        return position;
    if (position == lengthAsTold())
        return _backingLength;
    if (hasNoFolds())
        return position;
    return _folds->positionForViewLocation(position);
}

namespace {

NSRange rangeBetween(NSUInteger start, NSUInteger end) {
    QVAssert(start <= end, u"Start position succeeds end position");
    return {start, start <= end ? end - start : 0};
}

} // namespace

NSRange QVFoldingTextStorage::convertRangeFromBacking(NSRange range) const {
    if (range.location == NSNotFound)
        return range;
    if (range.length > 0)
        range.length =
            range.location < _backingLength ? std::min(range.length, _backingLength - range.location) : 0;
    const NSUInteger start = convertPositionFromBacking(range.location);
    return rangeBetween(start, range.length == 0 ? start : convertPositionFromBacking(NSMaxRange(range)));
}

NSRange QVFoldingTextStorage::convertRangeToBacking(NSRange range) const {
    if (range.location == NSNotFound)
        return range;
    const NSUInteger start = convertPositionToBacking(range.location);
    return rangeBetween(start, range.length == 0 ? start : convertPositionToBacking(NSMaxRange(range)));
}

// MARK: - Discrete ranges

void QVFoldingTextStorage::enumerateDiscreteBackingRangesInRange(NSRange range,
                                                                 DiscreteRangeBlock usingBlock) const {
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    bool stop = false;
    enumerateDiscreteBackingRanges(convertRangeToBacking(range), foldsInRange(range), 0, usingBlock, stop);
}

void QVFoldingTextStorage::enumerateDiscreteBackingRanges(NSRange range, const std::vector<Fold> &folds,
                                                          NSUInteger depth, DiscreteRangeBlock usingBlock,
                                                          bool &stop) {
    struct Level {
        NSRange range;
        const std::vector<Fold> &folds;
        /// Of the fold that is told next, and what the one before it hides.
        std::size_t index = 0;
        NSRange hidden{};
    };
    std::vector<Level> levels;
    levels.push_back({range, folds});
    while (!levels.empty() && !stop) {
        Level &level = levels.back();
        const NSUInteger levelDepth = depth + levels.size() - 1;
        if (level.range.length == 0 || level.folds.empty()) {
            usingBlock(level.range, levelDepth, stop);
            levels.pop_back();
            continue;
        }
        if (level.index == level.folds.size()) {
            const NSUInteger end = NSMaxRange(level.hidden);
            if (end < NSMaxRange(level.range))
                usingBlock({end, NSMaxRange(level.range) - end}, levelDepth, stop);
            levels.pop_back();
            continue;
        }
        const Fold &fold = level.folds[level.index++];
        level.hidden = fold->range();
        // From the start of the whole range each time: users of it rely on that.
        if (level.hidden.location > level.range.location)
            usingBlock({level.range.location, level.hidden.location - level.range.location}, levelDepth,
                       stop);
        if (!stop)
            levels.push_back({level.hidden, fold->subfolds()});
    }
}

// MARK: - Lines of the document

NSRange QVFoldingTextStorage::characterRangeForLineNumber(NSUInteger lineNumber) const {
    return convertRangeFromBacking(_backingStorage->characterRangeForLineNumber(lineNumber));
}

NSRange QVFoldingTextStorage::characterRangeForLineNumbersInRange(NSRange range) const {
    return convertRangeFromBacking(_backingStorage->characterRangeForLineNumbersInRange(range));
}

void QVFoldingTextStorage::enumerateLinesInRange(NSRange range, LineBlock usingBlock) const {
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        _backingStorage->enumerateLinesInRange(range, [&](NSRange line, NSUInteger lineNumber, bool &stop) {
            usingBlock(convertRangeFromBacking(line), lineNumber, stop);
        });
}

NSUInteger QVFoldingTextStorage::lineNumberForCharacterIndex(NSUInteger index,
                                                             NSRange *actualCharacterRange) const {
    const NSUInteger lineNumber =
        _backingStorage->lineNumberForCharacterIndex(convertPositionToBacking(index), actualCharacterRange);
    if (actualCharacterRange != nullptr)
        *actualCharacterRange = convertRangeFromBacking(*actualCharacterRange);
    return lineNumber;
}

NSRange QVFoldingTextStorage::rangeOfLineNumbersForCharacterRange(NSRange range,
                                                                  NSRange *actualCharacterRange) const {
    const NSRange lineNumbers = _backingStorage->rangeOfLineNumbersForCharacterRange(
        convertRangeToBacking(range), actualCharacterRange);
    if (actualCharacterRange != nullptr)
        *actualCharacterRange = convertRangeFromBacking(*actualCharacterRange);
    return lineNumbers;
}

void QVFoldingTextStorage::enumerateLinesForCharacterRange(NSRange range, LineBlock usingBlock) const {
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        _backingStorage->enumerateLinesForCharacterRange(
            convertRangeToBacking(range), [&](NSRange line, NSUInteger lineNumber, bool &stop) {
                usingBlock(convertRangeFromBacking(line), lineNumber, stop);
            });
}

} // namespace quorvane
