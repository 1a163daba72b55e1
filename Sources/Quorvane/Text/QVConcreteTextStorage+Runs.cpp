#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVMutableRLEArray.h"

namespace quorvane {

namespace {

/// The value of a character; an index at the end means the last one.
NSAttributes readAttributes(const QVMutableRLEArray<NSAttributes> &attributes, NSUInteger index,
                            NSRange *effectiveRange) {
    const NSUInteger count = attributes.count();
    if (count == 0 && index == 0) {
        if (effectiveRange != nullptr)
            *effectiveRange = {0, 0};
        return {};
    }
    return attributes.objectAtIndex(index == count ? index - 1 : index, effectiveRange);
}

} // namespace

NSAttributes QVConcreteTextStorage::syntaxHighlightingAttributesAtIndex(NSUInteger index,
                                                                        NSRange *effectiveRange) const {
    if (index != length())
        checkIndex(index);
    return readAttributes(*_syntaxHighlightingAttributes, index, effectiveRange);
}

void QVConcreteTextStorage::enumerateSyntaxHighlightingAttributesInRange(NSRange range,
                                                                         NSAttributedStringEnumerationOptions,
                                                                         AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    // The block may let results in, which can put another array in this one's place.
    const std::shared_ptr<Attributes> walked = _syntaxHighlightingAttributes;
    walked->enumerateObjectsInRange(range, usingBlock);
}

NSAttributes QVConcreteTextStorage::extendedAttributesAtIndex(NSUInteger index,
                                                              NSRange *effectiveRange) const {
    if (index != length())
        checkIndex(index);
    return readAttributes(*_extendedAttributes, index, effectiveRange);
}

void QVConcreteTextStorage::setExtendedAttributes(const NSAttributes &extendedAttributes, NSRange range) {
    checkRange(range);
    // A copy: the caller's may be those of a run that goes.
    _extendedAttributes->replaceObjectsInRange(range, NSAttributes(extendedAttributes), range.length);
}

void QVConcreteTextStorage::enumerateExtendedAttributesInRange(NSRange range,
                                                               NSAttributedStringEnumerationOptions,
                                                               AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    _extendedAttributes->enumerateObjectsInRange(range, usingBlock);
}

} // namespace quorvane
