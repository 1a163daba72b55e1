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

/// Walks a range stretch by stretch and tells each value with its stretch. `read` answers the value at a
/// place and its stretch, and, given a limit too, the longest stretch of equal ones in there.
template <typename Read, typename Tell>
void walk(const NSAttributedString &storage, NSRange range, NSAttributedStringEnumerationOptions options,
          Read read, Tell tell) {
    const bool longest = (options & NSAttributedStringEnumerationLongestEffectiveRangeNotRequired) == 0;
    const NSUInteger end = NSMaxRange(range);
    NSUInteger location = range.location;
    // The block may have shortened the text.
    while (location < end && location < storage.length()) {
        NSRange effectiveRange;
        const auto value =
            longest ? read(location, &effectiveRange, NSIntersectionRange(range, {0, storage.length()}))
                    : read(location, &effectiveRange);
        effectiveRange = NSIntersectionRange(effectiveRange, range);
        bool stop = false;
        tell(value, effectiveRange, stop);
        location = NSMaxRange(effectiveRange);
        if (stop)
            return;
    }
}

/// Tells a value that may be missing as a pointer.
auto tellingPointers(QVTextStorage::AttributeBlock block) {
    return [block](const std::optional<NSAttributeValue> &value, NSRange run, bool &stop) {
        block(value ? &*value : nullptr, run, stop);
    };
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
                       [this](auto... place) { return syntaxHighlightingAttributesAtIndex(place...); });
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
                       [this, key](auto... place) { return syntaxHighlightingAttribute(key, place...); });
}

void QVTextStorage::enumerateSyntaxHighlightingAttributesInRange(NSRange range,
                                                                 NSAttributedStringEnumerationOptions options,
                                                                 AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        walk(
            *this, range, options,
            [this](auto... place) { return syntaxHighlightingAttributesAtIndex(place...); }, usingBlock);
}

void QVTextStorage::enumerateSyntaxHighlightingAttribute(NSAttributeKey key, NSRange inRange,
                                                         NSAttributedStringEnumerationOptions options,
                                                         AttributeBlock usingBlock) const {
    checkRange(inRange);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        walk(
            *this, inRange, options,
            [this, key](auto... place) { return syntaxHighlightingAttribute(key, place...); },
            tellingPointers(usingBlock));
}

// MARK: - Extended attributes

NSAttributes QVTextStorage::extendedAttributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                                      NSRange inRange) const {
    checkRange(inRange);
    return readLongest(length(), index, longestEffectiveRange, inRange,
                       [this](auto... place) { return extendedAttributesAtIndex(place...); });
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
                       [this, key](auto... place) { return extendedAttribute(key, place...); });
}

void QVTextStorage::enumerateExtendedAttributesInRange(NSRange range,
                                                       NSAttributedStringEnumerationOptions options,
                                                       AttributesBlock usingBlock) const {
    checkRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        walk(
            *this, range, options, [this](auto... place) { return extendedAttributesAtIndex(place...); },
            usingBlock);
}

void QVTextStorage::enumerateExtendedAttribute(NSAttributeKey key, NSRange inRange,
                                               NSAttributedStringEnumerationOptions options,
                                               AttributeBlock usingBlock) const {
    checkRange(inRange);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (usingBlock)
        walk(
            *this, inRange, options, [this, key](auto... place) { return extendedAttribute(key, place...); },
            tellingPointers(usingBlock));
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
