#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Text/QVFoldMap.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"

namespace quorvane {

// MARK: - The view's own

NSAttributes QVFoldingTextStorage::attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const {
    if (index >= length()) {
        if (effectiveRange != nullptr)
            *effectiveRange = {index, 0};
        return defaultTextAttributes();
    }
    prepareToReadAttributesInRange({index, 1});
    return contents().attributesAtIndex(index, effectiveRange);
}

void QVFoldingTextStorage::ensureAttributesAreFixedInRange(NSRange range) {
    range = NSIntersectionRange(range, {0, length()});
    QVTextStorage::ensureAttributesAreFixedInRange(range);
    const NSUInteger end = NSMaxRange(range);
    NSUInteger location = range.location;
    for (NSUInteger index = _folds->firstFoldAtOrBehind(location); location < end; ++index) {
        const NSUInteger next =
            index < _folds->numberOfFolds() ? std::min(_folds->viewLocation(index), end) : end;
        if (next > location)
            _backingStorage->ensureAttributesAreFixedInRange(
                convertRangeToBacking({location, next - location}));
        location = next + 1;
    }
}

void QVFoldingTextStorage::fixAttributesInRange(NSRange range) {
    // The document's own text is fixed by itself.
    if (!_contents)
        return;
    struct Raising {
        bool &flag;
        const bool outer;
        explicit Raising(bool &raised) : flag(raised), outer(std::exchange(raised, true)) {}
        ~Raising() { flag = outer; }
    } const raising(_fixingAttributes);
    QVTextStorage::fixAttributesInRange(range);
}

// MARK: - Changes go to the document

void QVFoldingTextStorage::beginEditing() { _backingStorage->beginEditingWithFoldingTextStorage(this); }
void QVFoldingTextStorage::endEditing() { _backingStorage->endEditingWithFoldingTextStorage(this); }

void QVFoldingTextStorage::replaceCharactersInRange(NSRange range, std::u16string_view withString) {
    checkRange(range);
    _backingStorage->replaceCharactersInRange(convertRangeToBacking(range), withString);
}

void QVFoldingTextStorage::replaceCharactersInRange(NSRange range,
                                                    const NSAttributedString &withAttributedString) {
    checkRange(range);
    _backingStorage->replaceCharactersInRange(convertRangeToBacking(range), withAttributedString);
}

void QVFoldingTextStorage::setAttributes(const NSAttributes &attributes, NSRange range) {
    checkRange(range);
    if (_fixingAttributes)
        _contents->setAttributes(attributes, range);
    else
        _backingStorage->setAttributes(attributes, convertRangeToBacking(range));
}

void QVFoldingTextStorage::addAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) {
    checkRange(range);
    if (_fixingAttributes)
        _contents->addAttribute(key, std::move(value), range);
    else
        _backingStorage->addAttribute(key, std::move(value), convertRangeToBacking(range));
}

void QVFoldingTextStorage::addAttributes(const NSAttributes &attributes, NSRange range) {
    checkRange(range);
    if (_fixingAttributes)
        _contents->addAttributes(attributes, range);
    else
        _backingStorage->addAttributes(attributes, convertRangeToBacking(range));
}

void QVFoldingTextStorage::removeAttribute(NSAttributeKey key, NSRange range) {
    checkRange(range);
    if (_fixingAttributes)
        _contents->removeAttribute(key, range);
    else
        _backingStorage->removeAttribute(key, convertRangeToBacking(range));
}

// MARK: - What the document tells

void QVFoldingTextStorage::backingStorageDidBeginEditing() {
    ++_backingBrackets;
    QVTextStorage::beginEditing();
}

void QVFoldingTextStorage::backingStorageDidEndEditing() {
    // A view that was made inside of a bracket hears of its end alone.
    if (_backingBrackets == 0)
        return;
    --_backingBrackets;
    QVTextStorage::endEditing();
}

void QVFoldingTextStorage::enumerateBackingStorageRangeWithoutFolds(NSRange backingRange,
                                                                    RangeBlock usingBlock) {
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    const NSRange range = convertRangeFromBacking(backingRange);
    if (!usingBlock || range.length == 0)
        return;
    // Of the document's own attributes it has told; here are this view's.
    QVTextStorage::ensureAttributesAreFixedInRange(range);
    contents().enumerateAttribute(NSAttachmentAttributeName, NSIntersectionRange(range, {0, length()}), 0,
                                  [&](const NSAttributeValue *attachment, NSRange stretch, bool &stop) {
                                      if (attachment == nullptr ||
                                          attachment->object<QVTextFoldAttachment>() == nullptr)
                                          usingBlock(stretch, stop);
                                  });
}

template <typename Change> void QVFoldingTextStorage::changeVisibleAttributes(NSRange range, Change change) {
    const bool isEdit = !_backingStorage->isEnsuringAttributes();
    if (!_contents) {
        // The document's own text has changed already.
        if (const NSRange visible = convertRangeFromBacking(range); isEdit && visible.length > 0)
            edited(NSTextStorageEditedAttributes, visible, 0);
        return;
    }
    enumerateBackingStorageRangeWithoutFolds(range, [&](NSRange stretch, bool &) {
        change(stretch);
        if (isEdit)
            edited(NSTextStorageEditedAttributes, stretch, 0);
    });
}

void QVFoldingTextStorage::backingStorageDidAddAttribute(NSAttributeKey key, const NSAttributeValue &value,
                                                         NSRange range) {
    changeVisibleAttributes(range, [&](NSRange stretch) { _contents->addAttribute(key, value, stretch); });
}

void QVFoldingTextStorage::backingStorageDidAddAttributes(const NSAttributes &attributes, NSRange range) {
    changeVisibleAttributes(range, [&](NSRange stretch) { _contents->addAttributes(attributes, stretch); });
}

void QVFoldingTextStorage::backingStorageDidRemoveAttribute(NSAttributeKey key, NSRange range) {
    changeVisibleAttributes(range, [&](NSRange stretch) { _contents->removeAttribute(key, stretch); });
}

void QVFoldingTextStorage::backingStorageDidSetAttributes(const NSAttributes &attributes, NSRange range) {
    changeVisibleAttributes(range, [&](NSRange stretch) { _contents->setAttributes(attributes, stretch); });
}

void QVFoldingTextStorage::backingStorageDidInvalidateAttributesInRange(NSRange range) {
    invalidateAttributesInRange(convertRangeFromBacking(range));
    edited(NSTextStorageEditedAttributes, range, 0);
}

// MARK: - The document's syntax, highlighting and extended attributes

std::shared_ptr<QVSyntax> QVFoldingTextStorage::syntaxAtLocation(NSUInteger location) const {
    return _backingStorage->syntaxAtLocation(location == NSNotFound ? NSNotFound
                                                                    : convertPositionToBacking(location));
}

namespace {

/// Reads with a range of the document's and hands back the view's.
template <typename Read> auto readConverting(const QVFoldingTextStorage &view, NSRange *range, Read read) {
    auto result = read();
    if (range != nullptr)
        *range = view.convertRangeFromBacking(*range);
    return result;
}

} // namespace

NSAttributes QVFoldingTextStorage::syntaxHighlightingAttributesAtIndex(NSUInteger index,
                                                                       NSRange *effectiveRange) const {
    return readConverting(*this, effectiveRange, [&] {
        return _backingStorage->syntaxHighlightingAttributesAtIndex(convertPositionToBacking(index),
                                                                    effectiveRange);
    });
}

NSAttributes QVFoldingTextStorage::syntaxHighlightingAttributesAtIndex(NSUInteger index,
                                                                       NSRange *longestEffectiveRange,
                                                                       NSRange inRange) const {
    checkRange(inRange);
    return readConverting(*this, longestEffectiveRange, [&] {
        return _backingStorage->syntaxHighlightingAttributesAtIndex(
            convertPositionToBacking(index), longestEffectiveRange, convertRangeToBacking(inRange));
    });
}

std::optional<NSAttributeValue>
QVFoldingTextStorage::syntaxHighlightingAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                  NSRange *longestEffectiveRange, NSRange inRange) const {
    checkRange(inRange);
    return readConverting(*this, longestEffectiveRange, [&] {
        return _backingStorage->syntaxHighlightingAttribute(
            key, convertPositionToBacking(atIndex), longestEffectiveRange, convertRangeToBacking(inRange));
    });
}

void QVFoldingTextStorage::enumerateSyntaxHighlightingAttributesInRange(
    NSRange range, NSAttributedStringEnumerationOptions options, AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        _backingStorage->enumerateSyntaxHighlightingAttributesInRange(
            convertRangeToBacking(range), options,
            [&](const NSAttributes &attributes, NSRange run, bool &stop) {
                usingBlock(attributes, convertRangeFromBacking(run), stop);
            });
}

void QVFoldingTextStorage::enumerateSyntaxHighlightingAttribute(NSAttributeKey key, NSRange inRange,
                                                                NSAttributedStringEnumerationOptions options,
                                                                AttributeBlock usingBlock) const {
    checkRange(inRange);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        _backingStorage->enumerateSyntaxHighlightingAttribute(
            key, convertRangeToBacking(inRange), options,
            [&](const NSAttributeValue *value, NSRange run, bool &stop) {
                usingBlock(value, convertRangeFromBacking(run), stop);
            });
}

NSAttributes QVFoldingTextStorage::extendedAttributesAtIndex(NSUInteger index,
                                                             NSRange *effectiveRange) const {
    return readConverting(*this, effectiveRange, [&] {
        return _backingStorage->extendedAttributesAtIndex(convertPositionToBacking(index), effectiveRange);
    });
}

NSAttributes QVFoldingTextStorage::extendedAttributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                                             NSRange inRange) const {
    checkRange(inRange);
    return readConverting(*this, longestEffectiveRange, [&] {
        return _backingStorage->extendedAttributesAtIndex(
            convertPositionToBacking(index), longestEffectiveRange, convertRangeToBacking(inRange));
    });
}

std::optional<NSAttributeValue> QVFoldingTextStorage::extendedAttribute(NSAttributeKey key,
                                                                        NSUInteger atIndex,
                                                                        NSRange *longestEffectiveRange,
                                                                        NSRange inRange) const {
    checkRange(inRange);
    return readConverting(*this, longestEffectiveRange, [&] {
        return _backingStorage->extendedAttribute(key, convertPositionToBacking(atIndex),
                                                  longestEffectiveRange, convertRangeToBacking(inRange));
    });
}

void QVFoldingTextStorage::setExtendedAttributes(const NSAttributes &extendedAttributes, NSRange range) {
    _backingStorage->setExtendedAttributes(extendedAttributes, convertRangeToBacking(range));
}

void QVFoldingTextStorage::enumerateExtendedAttributesInRange(NSRange range,
                                                              NSAttributedStringEnumerationOptions options,
                                                              AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        _backingStorage->enumerateExtendedAttributesInRange(
            convertRangeToBacking(range), options,
            [&](const NSAttributes &attributes, NSRange run, bool &stop) {
                usingBlock(attributes, convertRangeFromBacking(run), stop);
            });
}

void QVFoldingTextStorage::enumerateExtendedAttribute(NSAttributeKey key, NSRange inRange,
                                                      NSAttributedStringEnumerationOptions options,
                                                      AttributeBlock usingBlock) const {
    checkRange(inRange);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        _backingStorage->enumerateExtendedAttribute(
            key, convertRangeToBacking(inRange), options,
            [&](const NSAttributeValue *value, NSRange run, bool &stop) {
                usingBlock(value, convertRangeFromBacking(run), stop);
            });
}

void QVFoldingTextStorage::addExtendedAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) {
    _backingStorage->addExtendedAttribute(key, std::move(value), convertRangeToBacking(range));
}

void QVFoldingTextStorage::addExtendedAttributes(const NSAttributes &attributes, NSRange range) {
    _backingStorage->addExtendedAttributes(attributes, convertRangeToBacking(range));
}

void QVFoldingTextStorage::removeExtendedAttribute(NSAttributeKey key, NSRange range) {
    _backingStorage->removeExtendedAttribute(key, convertRangeToBacking(range));
}

} // namespace quorvane
