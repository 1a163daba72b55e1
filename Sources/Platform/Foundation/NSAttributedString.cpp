#include "Platform/Foundation/NSAttributedString.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"

namespace quorvane {

void NSAttributedString::checkIndex(NSUInteger index) const {
    if (index >= length())
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(
                              u"Index %lu is beyond the bounds of a string of length %lu", index, length()));
}

void NSAttributedString::checkRange(NSRange range) const {
    if (range.location > length() || range.length > length() - range.location)
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(
                              u"Range %@ is beyond the bounds of a string of length %lu", range, length()));
}

template <typename SameValue>
NSRange NSAttributedString::longestRange(NSUInteger index, NSRange effectiveRange, NSRange inRange,
                                         SameValue same) const {
    const NSUInteger limit = NSMaxRange(inRange);
    NSRange neighbour;
    while (NSMaxRange(effectiveRange) < limit &&
           same(attributesAtIndex(NSMaxRange(effectiveRange), &neighbour)))
        effectiveRange = NSUnionRange(effectiveRange, neighbour);
    while (effectiveRange.location > inRange.location &&
           same(attributesAtIndex(effectiveRange.location - 1, &neighbour)))
        effectiveRange = NSUnionRange(effectiveRange, neighbour);
    const NSRange longest = NSIntersectionRange(effectiveRange, inRange);
    return longest.length > 0 ? longest : NSRange{index, 0};
}

NSAttributes NSAttributedString::attributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                                   NSRange inRange) const {
    checkRange(inRange);
    prepareToReadAttributesInRange(inRange);
    NSRange effectiveRange;
    NSAttributes attributes = attributesAtIndex(index, &effectiveRange);
    if (longestEffectiveRange != nullptr)
        *longestEffectiveRange =
            longestRange(index, effectiveRange, inRange,
                         [&](const NSAttributes &neighbour) { return neighbour == attributes; });
    return attributes;
}

namespace {

std::optional<NSAttributeValue> optionalValue(const NSAttributeValue *value) {
    return value ? std::optional(*value) : std::nullopt;
}

bool isSame(const NSAttributeValue *value, const std::optional<NSAttributeValue> &other) {
    return value ? other.has_value() && *value == *other : !other.has_value();
}

} // namespace

std::optional<NSAttributeValue> NSAttributedString::attribute(NSAttributeKey key, NSUInteger atIndex,
                                                              NSRange *effectiveRange) const {
    return optionalValue(attributesAtIndex(atIndex, effectiveRange).valueForKey(key));
}

std::optional<NSAttributeValue> NSAttributedString::attribute(NSAttributeKey key, NSUInteger atIndex,
                                                              NSRange *longestEffectiveRange,
                                                              NSRange inRange) const {
    checkRange(inRange);
    prepareToReadAttributesInRange(inRange);
    NSRange effectiveRange;
    auto value = attribute(key, atIndex, &effectiveRange);
    if (longestEffectiveRange != nullptr)
        *longestEffectiveRange =
            longestRange(atIndex, effectiveRange, inRange, [&](const NSAttributes &neighbour) {
                return isSame(neighbour.valueForKey(key), value);
            });
    return value;
}

namespace {

/// Walks a range from one end to the other. `read` gets a place and the rest of the range, and answers the
/// stretch around the place that it has reported.
template <typename Read> void walk(const NSAttributedString &string, NSRange range, bool reverse, Read read) {
    bool stop = false;
    while (range.length > 0 && !stop) {
        const NSUInteger index = reverse ? NSMaxRange(range) - 1 : range.location;
        // The block may have shortened the string.
        if (index >= string.length())
            return;
        const NSRange done = read(index, range, stop);
        if (reverse)
            range.length = done.location > range.location ? done.location - range.location : 0;
        else
            range = {NSMaxRange(done), NSMaxRange(range) - std::min(NSMaxRange(done), NSMaxRange(range))};
    }
}

} // namespace

void NSAttributedString::enumerateAttributesInRange(NSRange range,
                                                    NSAttributedStringEnumerationOptions options,
                                                    AttributesBlock usingBlock) const {
    checkRange(range);
    prepareToReadAttributesInRange(range);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    const bool longest = (options & NSAttributedStringEnumerationLongestEffectiveRangeNotRequired) == 0;
    walk(*this, range, (options & NSAttributedStringEnumerationReverse) != 0,
         [&](NSUInteger index, NSRange rest, bool &stop) {
             NSRange effectiveRange;
             const NSAttributes attributes =
                 longest ? attributesAtIndex(index, &effectiveRange, NSIntersectionRange(rest, {0, length()}))
                         : attributesAtIndex(index, &effectiveRange);
             effectiveRange = NSIntersectionRange(effectiveRange, rest);
             usingBlock(attributes, effectiveRange, stop);
             return effectiveRange;
         });
}

void NSAttributedString::enumerateAttribute(NSAttributeKey key, NSRange inRange,
                                            NSAttributedStringEnumerationOptions options,
                                            AttributeBlock usingBlock) const {
    checkRange(inRange);
    prepareToReadAttributesInRange(inRange);
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    const bool longest = (options & NSAttributedStringEnumerationLongestEffectiveRangeNotRequired) == 0;
    walk(*this, inRange, (options & NSAttributedStringEnumerationReverse) != 0,
         [&](NSUInteger index, NSRange rest, bool &stop) {
             NSRange effectiveRange;
             const auto value =
                 longest ? attribute(key, index, &effectiveRange, NSIntersectionRange(rest, {0, length()}))
                         : attribute(key, index, &effectiveRange);
             effectiveRange = NSIntersectionRange(effectiveRange, rest);
             usingBlock(value ? &*value : nullptr, effectiveRange, stop);
             return effectiveRange;
         });
}

std::shared_ptr<NSAttributedString> NSAttributedString::attributedSubstringFromRange(NSRange range) const {
    checkRange(range);
    const auto substring = NSMutableAttributedString::initWithString(string().substringWithRange(range));
    enumerateAttributesInRange(
        range, NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
        [&](const NSAttributes &attributes, NSRange stretch, bool &) {
            substring->setAttributes(attributes, {stretch.location - range.location, stretch.length});
        });
    return substring;
}

bool NSAttributedString::isEqualToAttributedString(const NSAttributedString &other) const {
    if (this == &other)
        return true;
    const NSUInteger count = length();
    if (count != other.length() ||
        string().substringWithRange({0, count}) != other.string().substringWithRange({0, count}))
        return false;
    NSUInteger index = 0;
    while (index < count) {
        NSRange mine;
        NSRange others;
        if (attributesAtIndex(index, &mine) != other.attributesAtIndex(index, &others))
            return false;
        index = std::min(NSMaxRange(mine), NSMaxRange(others));
    }
    return true;
}

bool NSAttributedString::isEqual(const NSObject *other) const {
    const auto *const attributed = dynamic_cast<const NSAttributedString *>(other);
    return attributed != nullptr && isEqualToAttributedString(*attributed);
}

std::size_t NSAttributedString::hash() const {
    return std::hash<std::u16string>()(string().substringWithRange({0, length()}));
}

NSString NSAttributedString::description() const {
    std::u16string text;
    enumerateAttributesInRange({0, length()}, 0, [&](const NSAttributes &attributes, NSRange range, bool &) {
        text.append(string().substringWithRange(range)).append(attributes.description().view());
    });
    return NSString(std::move(text));
}

} // namespace quorvane
