#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Text/QVTextStorage.h"

namespace quorvane {

namespace {

bool isSame(const std::optional<NSAttributeValue> &a, const std::optional<NSAttributeValue> &b) {
    return a ? b.has_value() && *a == *b : !b.has_value();
}
bool isSame(const NSAttributes &a, const NSAttributes &b) { return a == b; }

/// The value at an index with the longest stretch of equal ones that goes on from there, inside of a limit.
/// The stretch reaches back no further than the storage says; it grows forwards alone.
template <typename Read>
auto readLongest(NSUInteger length, NSUInteger index, NSRange *longestEffectiveRange, NSRange limit,
                 Read read) {
    NSRange effectiveRange{index, 0};
    if (length == 0) {
        if (longestEffectiveRange != nullptr)
            *longestEffectiveRange = effectiveRange;
        return decltype(read(index, &effectiveRange)){};
    }
    auto value = read(index == length ? index - 1 : index, &effectiveRange);
    if (longestEffectiveRange == nullptr)
        return value;
    const NSUInteger end = NSMaxRange(limit);
    while (NSMaxRange(effectiveRange) < end) {
        NSRange next;
        if (!isSame(value, read(NSMaxRange(effectiveRange), &next)))
            break;
        effectiveRange = NSUnionRange(effectiveRange, next);
    }
    *longestEffectiveRange = NSIntersectionRange(effectiveRange, limit);
    return value;
}

/// Walks a range stretch by stretch. `read` answers the value at a place and its stretch, `tell` gets both.
template <typename Read, typename Tell>
void walk(const NSAttributedString &storage, NSRange range, Read read, Tell tell) {
    const NSUInteger end = NSMaxRange(range);
    NSUInteger location = range.location;
    // The block may have shortened the text.
    while (location < end && location < storage.length()) {
        NSRange effectiveRange;
        const auto value = read(location, &effectiveRange);
        effectiveRange = NSIntersectionRange(effectiveRange, range);
        bool stop = false;
        tell(value, effectiveRange, stop);
        location = NSMaxRange(effectiveRange);
        if (stop)
            return;
    }
}

constexpr bool wantsLongest(NSAttributedStringEnumerationOptions options) {
    return (options & NSAttributedStringEnumerationLongestEffectiveRangeNotRequired) == 0;
}

const NSAttributeValue *pointer(const std::optional<NSAttributeValue> &value) {
    return value ? &*value : nullptr;
}

std::optional<NSAttributeValue> valueOf(const NSAttributes &attributes, NSAttributeKey key) {
    const NSAttributeValue *const value = attributes.valueForKey(key);
    return value ? std::optional(*value) : std::nullopt;
}

} // namespace

// MARK: - Highlighting

NSAttributes QVTextStorage::syntaxHighlightingAttributesAtIndex(NSUInteger index,
                                                                NSRange *longestEffectiveRange,
                                                                NSRange inRange) const {
    checkRange(inRange);
    return readLongest(length(), index, longestEffectiveRange, inRange,
                       [this](NSUInteger at, NSRange *effectiveRange) {
                           return syntaxHighlightingAttributesAtIndex(at, effectiveRange);
                       });
}

std::optional<NSAttributeValue> QVTextStorage::syntaxHighlightingAttribute(NSAttributeKey key,
                                                                           NSUInteger atIndex,
                                                                           NSRange *effectiveRange) const {
    return valueOf(syntaxHighlightingAttributesAtIndex(atIndex, effectiveRange), key);
}

std::optional<NSAttributeValue> QVTextStorage::syntaxHighlightingAttribute(NSAttributeKey key,
                                                                           NSUInteger atIndex,
                                                                           NSRange *longestEffectiveRange,
                                                                           NSRange inRange) const {
    checkRange(inRange);
    return readLongest(length(), atIndex, longestEffectiveRange, inRange,
                       [this, key](NSUInteger at, NSRange *effectiveRange) {
                           return syntaxHighlightingAttribute(key, at, effectiveRange);
                       });
}

void QVTextStorage::enumerateSyntaxHighlightingAttributesInRange(NSRange range,
                                                                 NSAttributedStringEnumerationOptions options,
                                                                 AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    walk(
        *this, range,
        [&](NSUInteger at, NSRange *effectiveRange) {
            return wantsLongest(options) ? syntaxHighlightingAttributesAtIndex(
                                               at, effectiveRange, NSIntersectionRange(range, {0, length()}))
                                         : syntaxHighlightingAttributesAtIndex(at, effectiveRange);
        },
        usingBlock);
}

void QVTextStorage::enumerateSyntaxHighlightingAttribute(NSAttributeKey key, NSRange inRange,
                                                         NSAttributedStringEnumerationOptions options,
                                                         AttributeBlock usingBlock) const {
    checkRange(inRange);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    walk(
        *this, inRange,
        [&](NSUInteger at, NSRange *effectiveRange) {
            return wantsLongest(options)
                       ? syntaxHighlightingAttribute(key, at, effectiveRange,
                                                     NSIntersectionRange(inRange, {0, length()}))
                       : syntaxHighlightingAttribute(key, at, effectiveRange);
        },
        [&](const std::optional<NSAttributeValue> &value, NSRange run, bool &stop) {
            usingBlock(pointer(value), run, stop);
        });
}

// MARK: - Extended attributes

NSAttributes QVTextStorage::extendedAttributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                                      NSRange inRange) const {
    checkRange(inRange);
    return readLongest(length(), index, longestEffectiveRange, inRange,
                       [this](NSUInteger at, NSRange *effectiveRange) {
                           return extendedAttributesAtIndex(at, effectiveRange);
                       });
}

std::optional<NSAttributeValue> QVTextStorage::extendedAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                                 NSRange *effectiveRange) const {
    return valueOf(extendedAttributesAtIndex(atIndex, effectiveRange), key);
}

std::optional<NSAttributeValue> QVTextStorage::extendedAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                                 NSRange *longestEffectiveRange,
                                                                 NSRange inRange) const {
    checkRange(inRange);
    return readLongest(length(), atIndex, longestEffectiveRange, inRange,
                       [this, key](NSUInteger at, NSRange *effectiveRange) {
                           return extendedAttribute(key, at, effectiveRange);
                       });
}

void QVTextStorage::enumerateExtendedAttributesInRange(NSRange range,
                                                       NSAttributedStringEnumerationOptions options,
                                                       AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    walk(
        *this, range,
        [&](NSUInteger at, NSRange *effectiveRange) {
            return wantsLongest(options) ? extendedAttributesAtIndex(
                                               at, effectiveRange, NSIntersectionRange(range, {0, length()}))
                                         : extendedAttributesAtIndex(at, effectiveRange);
        },
        usingBlock);
}

void QVTextStorage::enumerateExtendedAttribute(NSAttributeKey key, NSRange inRange,
                                               NSAttributedStringEnumerationOptions options,
                                               AttributeBlock usingBlock) const {
    checkRange(inRange);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    walk(
        *this, inRange,
        [&](NSUInteger at, NSRange *effectiveRange) {
            return wantsLongest(options) ? extendedAttribute(key, at, effectiveRange,
                                                             NSIntersectionRange(inRange, {0, length()}))
                                         : extendedAttribute(key, at, effectiveRange);
        },
        [&](const std::optional<NSAttributeValue> &value, NSRange run, bool &stop) {
            usingBlock(pointer(value), run, stop);
        });
}

void QVTextStorage::addExtendedAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) {
    enumerateExtendedAttributesInRange(
        range, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
        [&](const NSAttributes &attributes, NSRange run, bool &) {
            const NSAttributeValue *const present = attributes.valueForKey(key);
            if (present == nullptr || *present != value)
                setExtendedAttributes(attributes.attributesBySettingValue(value, key), run);
        });
}

void QVTextStorage::addExtendedAttributes(const NSAttributes &attributes, NSRange range) {
    // A copy: the caller's may be those of a run of this very storage.
    enumerateExtendedAttributesInRange(
        range, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
        [&, added = attributes](const NSAttributes &present, NSRange run, bool &) {
            const NSAttributes all = present.attributesByAddingAttributes(added);
            if (all != present)
                setExtendedAttributes(all, run);
        });
}

void QVTextStorage::removeExtendedAttribute(NSAttributeKey key, NSRange range) {
    enumerateExtendedAttributesInRange(range, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
                                       [&](const NSAttributes &attributes, NSRange run, bool &) {
                                           if (attributes.containsKey(key))
                                               setExtendedAttributes(
                                                   attributes.attributesByRemovingKeys({key}), run);
                                       });
}

} // namespace quorvane
