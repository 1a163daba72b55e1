#include "Quorvane/Categories/NSRange+QuorvaneAdditions.h"

#include "Platform/Foundation/NSAssertionHandler.h"

namespace quorvane {

namespace {

void fail(const NSString &message) {
    NSAssertionHandler::handleFailure(u"NSRange+QuorvaneAdditions", message);
}

void checkBounds(NSRange range, const char16_t *tag) {
    if (NSMaxRange(range) < range.location)
        fail(NSString::stringWithFormat(
            u"%@: Range after coalescence exceeds the bounds of representable text ranges.", tag));
}

} // namespace

extern "C" void QVRangeCoalesceWithEdit(NSRange *pendingRange, NSInteger *pendingChangeInLength,
                                        NSRange editedRange, NSInteger changeInLength) {
    // Positions are unsigned and wrap; a signed change is added as what it is modulo their range.
    const auto change = static_cast<NSUInteger>(changeInLength);
    const NSRange pending = *pendingRange;
    const NSUInteger pendingEnd = NSMaxRange(pending);
    const NSUInteger location = editedRange.location;
    const NSUInteger oldLength = editedRange.length - change;
    const NSUInteger oldEnd = location + oldLength;
    NSUInteger newChange =
        (pendingChangeInLength != nullptr ? static_cast<NSUInteger>(*pendingChangeInLength) : 0) + change;
    NSRange result = pending;

    // The order decides where several hold: an edit that replaced exactly the pending range lay inside of it.
    if (pending.location == NSNotFound) {
        result = editedRange;
        newChange = change;
        checkBounds(editedRange, u"SR0");
    } else if (pending.location <= location && oldEnd <= pendingEnd) {
        result = NSUnionRange(pending, {location, oldLength});
        result.length += change;
        checkBounds(result, u"SR1");
    } else if (pending.location >= location && pendingEnd <= oldEnd) {
        result = editedRange;
        checkBounds(editedRange, u"SR2");
    } else if (oldEnd <= pending.location) {
        result = NSUnionRange({pending.location + change, pending.length}, editedRange);
        checkBounds(result, u"SR3");
    } else if (pendingEnd <= location) {
        result = NSUnionRange(pending, editedRange);
        checkBounds(result, u"SR4");
    } else if (pending.location > location) {
        result = {location, editedRange.length + (pendingEnd - oldEnd)};
        checkBounds(result, u"SR5");
    } else if (pendingEnd < oldEnd) {
        result = {pending.location, editedRange.length + (location - pending.location)};
        checkBounds(result, u"SR6");
    } else {
        fail(u"should never make it here.");
    }

    *pendingRange = result;
    if (pendingChangeInLength != nullptr)
        *pendingChangeInLength = static_cast<NSInteger>(newChange);
}

} // namespace quorvane
