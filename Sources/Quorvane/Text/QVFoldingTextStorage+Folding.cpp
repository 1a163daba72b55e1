#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Text/QVFoldMap.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"

#include <limits>

namespace quorvane {

namespace {

constexpr NSUInteger unlimitedDepth = std::numeric_limits<NSUInteger>::max();
constexpr NSTextStorageEditActions editedText = NSTextStorageEditedAttributes | NSTextStorageEditedCharacters;

std::shared_ptr<NSAttributedString> stringWithFold(const std::shared_ptr<QVTextFoldAttachment> &fold) {
    return NSAttributedString::initWithString(std::u16string_view(&NSAttachmentCharacter, 1),
                                              {{NSAttachmentAttributeName, fold}});
}

} // namespace

bool QVFoldingTextStorage::hasNoFolds() const { return _folds->count() == _backingLength; }

std::vector<QVFoldingTextStorage::Fold> QVFoldingTextStorage::foldsInRange(NSRange range) const {
    std::vector<Fold> folds;
    const NSUInteger end = _folds->firstFoldAtOrBehind(NSMaxRange(range));
    for (NSUInteger index = _folds->firstFoldAtOrBehind(range.location); index < end; ++index)
        folds.push_back(_folds->fold(index));
    return folds;
}

NSRange QVFoldingTextStorage::foldRange(NSRange range) {
    if (range.length < 2)
        return range;
    checkRange(range);
    const NSRange backingRange = convertRangeToBacking(range);
    const auto fold = QVTextFoldAttachment::initWithRange(backingRange, foldsInRange(range));
    makeContents();
    replaceContents(range, *stringWithFold(fold));
    _folds->replace(range, 1, {{fold, range.location, backingRange}});
    edited(editedText, range, 1 - static_cast<NSInteger>(range.length));
    return {range.location, 1};
}

void QVFoldingTextStorage::addSubfoldsForUnfolding(NSUInteger toDepth, NSUInteger currentDepth,
                                                   const std::vector<Fold> &fromArray,
                                                   std::vector<Fold> &toArray) {
    if (currentDepth > toDepth)
        return;
    // Level by level, which keeps the order of the text and takes no stack.
    std::vector<Fold> level = fromArray;
    for (; currentDepth < toDepth && !level.empty(); ++currentDepth) {
        std::vector<Fold> next;
        for (const Fold &fold : level)
            next.insert(next.end(), fold->subfolds().begin(), fold->subfolds().end());
        level = std::move(next);
    }
    toArray.insert(toArray.end(), level.begin(), level.end());
}

void QVFoldingTextStorage::unfoldAtPosition(NSUInteger position, NSUInteger depth) {
    const auto index = _folds->foldAt(position);
    QVAssert(index.has_value(), u"There is no fold at the provided position.");
    if (!index)
        return;
    const Fold opened = _folds->fold(*index);
    const NSRange range = _folds->range(*index);
    std::vector<Fold> kept;
    addSubfoldsForUnfolding(depth, 1, opened->subfolds(), kept);

    // As it is: what isn't fixed will be when somebody reads it.
    const auto text = NSMutableAttributedString::initWithAttributedString(
        *_backingStorage->contents().attributedSubstringFromRange(range));
    std::vector<QVFoldMap::Item> items;
    NSUInteger end = 0;
    NSUInteger shift = 0;
    for (const Fold &fold : kept) {
        const NSRange hidden = fold->range();
        // One that missed an edit, next to another that went, may not fit in any more.
        if (hidden.length == 0 || hidden.location < range.location + end ||
            NSMaxRange(hidden) > NSMaxRange(range))
            continue;
        end = NSMaxRange(hidden) - range.location;
        const NSUInteger location = hidden.location - range.location + shift;
        text->replaceCharactersInRange({location, hidden.length}, *stringWithFold(fold));
        items.push_back({fold, position + location, hidden});
        shift += 1 - hidden.length;
    }
    const NSUInteger length = text->length();
    _folds->replace({position, 1}, length, items);
    replaceContents({position, 1}, *text);
    dropContentsWithoutFolds();
    edited(editedText, {position, 1}, static_cast<NSInteger>(length) - 1);
}

NSRange QVFoldingTextStorage::unfoldAllInRange(NSRange range) {
    return unfoldAllInRange(range, unlimitedDepth);
}

NSRange QVFoldingTextStorage::unfoldAllInRange(NSRange range, NSUInteger depth) {
    const NSRange backingRange = convertRangeToBacking(range);
    std::vector<NSUInteger> positions;
    const NSUInteger end = _folds->firstFoldAtOrBehind(NSMaxRange(range));
    for (NSUInteger index = _folds->firstFoldAtOrBehind(range.location); index < end; ++index)
        positions.push_back(_folds->viewLocation(index));
    // From the last one, so that those before stay where they are.
    for (auto position = positions.rbegin(); position != positions.rend(); ++position)
        unfoldAtPosition(*position, depth);
    return backingRange;
}

bool QVFoldingTextStorage::isRangeFolded(NSRange backingRange) const {
    const auto position = _folds->viewLocationForPosition(backingRange.location, false);
    if (!position)
        return false;
    // An empty range at the end of a fold is still in it.
    for (const NSUInteger at : {*position, *position - 1})
        if (const auto index = _folds->foldAt(at))
            if (const NSRange hidden = _folds->range(*index);
                backingRange.location >= hidden.location && NSMaxRange(backingRange) <= NSMaxRange(hidden))
                return true;
    return false;
}

std::vector<NSRange> QVFoldingTextStorage::foldedRanges() const {
    std::vector<NSRange> ranges;
    NSUInteger location = 0;
    for (NSUInteger index = 0; index <= _folds->numberOfFolds(); ++index) {
        const bool isEnd = index == _folds->numberOfFolds();
        const NSUInteger next = isEnd ? _folds->count() : _folds->viewLocation(index);
        if (next > location)
            ranges.push_back({0, 0});
        location = next + 1;
    }
    return ranges;
}

// MARK: - What the document does to folds

void QVFoldingTextStorage::backingStorageWillReplaceCharactersInRange(NSRange range,
                                                                      const NSAttributedString &) {
    // Insertions open nothing.
    if (range.length == 0 || _folds->numberOfFolds() == 0)
        return;
    const NSUInteger first = _folds->firstFoldAtOrBehind(convertPositionFromBacking(range.location));
    NSUInteger index = _folds->firstFoldAtOrBehind(convertPositionFromBacking(NSMaxRange(range), 1));
    while (index > first) {
        const NSRange hidden = _folds->range(--index);
        const bool isInside = NSUnionRange(range, hidden) == hidden;
        if (range == hidden || (!isInside && NSIntersectionRange(range, hidden).length > 0))
            unfoldAtPosition(_folds->viewLocation(index), unlimitedDepth);
    }
}

void QVFoldingTextStorage::backingStorageDidReplaceCharactersInRange(
    NSRange range, const NSAttributedString &withAttributedString) {
    const NSUInteger newLength = withAttributedString.length();
    const auto change = static_cast<NSInteger>(newLength) - static_cast<NSInteger>(range.length);
    const NSRange viewRange = convertRangeFromBacking(range);
    if (const auto index = _folds->foldAt(viewRange.location)) {
        const NSRange hidden = _folds->range(*index);
        const bool hides = range.length > 0
                               ? NSUnionRange(range, hidden) == hidden
                               : range.location > hidden.location && range.location < NSMaxRange(hidden);
        if (hides) {
            _folds->changeTextOfFold(*index, range, change);
            _backingLength += static_cast<NSUInteger>(change);
            return;
        }
    }
    _folds->moveFoldsFrom(_folds->firstFoldAtOrBehind(NSMaxRange(viewRange)), change);
    _backingLength += static_cast<NSUInteger>(change);
    replaceContents(viewRange, withAttributedString);
    _folds->replace(viewRange, newLength, {});
    edited(editedText, viewRange,
           static_cast<NSInteger>(newLength) - static_cast<NSInteger>(viewRange.length));
}

void QVFoldingTextStorage::backingStorageDidClearContents() {
    const NSUInteger length = _folds->count();
    _folds->replace({0, length}, 0, {});
    if (_contents)
        _contents->deleteCharactersInRange({0, _contents->length()});
    dropContentsWithoutFolds();
    edited(editedText, {0, length}, -static_cast<NSInteger>(length));
}

} // namespace quorvane
