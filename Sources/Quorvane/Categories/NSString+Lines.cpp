#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/QVTextSearching.h"

namespace quorvane {

namespace {

bool isNewline(char16_t unit) { return unit == u'\n' || unit == u'\r'; }

void checkLocation(QVTextReader string, NSUInteger location) {
    if (location > string.length())
        throw NSException(NSRangeException, u"Search range is out of bounds");
}

/// The first newline unit at or behind a location, the length where there is none.
NSUInteger newlineFrom(QVTextReader string, NSUInteger location) {
    while (location < string.length()) {
        const std::u16string_view piece = string.pieceAtIndex(location);
        for (std::size_t index = 0; index < piece.size(); ++index)
            if (isNewline(piece[index]))
                return location + index;
        location += piece.size();
    }
    return location;
}

/// The position behind the last newline unit before a location, 0 where there is none.
NSUInteger behindNewlineBefore(QVTextReader string, NSUInteger location) {
    while (location > 0 && !isNewline(string.characterAtIndex(location - 1)))
        --location;
    return location;
}

} // namespace

NSRange qv_rangeOfCharactersFromSet(QVTextReader string, const NSCharacterSet &set,
                                    NSStringCompareOptions options, NSRange range) {
    checkLocation(string, range.location);
    if (range.length > string.length() - range.location)
        throw NSException(NSRangeException, u"Search range is out of bounds");
    if (range.length == 0)
        return NSNotFoundRange;
    NSRange run = QVRangeOfCharacterFromSet(string, set, options, range);
    if (run.location == NSNotFound)
        return run;
    const NSUInteger end = NSMaxRange(range);
    for (;;) {
        const NSRange rest = options & NSBackwardsSearch
                                 ? NSRange{range.location, run.location - range.location}
                                 : NSRange{NSMaxRange(run), end - NSMaxRange(run)};
        if (rest.length == 0)
            return run;
        const NSRange hit = QVRangeOfCharacterFromSet(string, set, options | NSAnchoredSearch, rest);
        if (hit.location == NSNotFound)
            return run;
        run = NSUnionRange(run, hit);
    }
}

NSRange qv_rangeOfNewlineAtLocation(QVTextReader string, NSUInteger location) {
    if (location >= string.length())
        throw NSException(NSRangeException,
                          NSString::stringWithFormat(u"The index %lu is invalid", location));
    const char16_t unit = string.characterAtIndex(location);
    if (unit == u'\r') {
        const bool pair = location + 1 < string.length() && string.characterAtIndex(location + 1) == u'\n';
        return {location, pair ? NSUInteger(2) : NSUInteger(1)};
    }
    if (unit == u'\n') {
        if (location > 0 && string.characterAtIndex(location - 1) == u'\r')
            return {location - 1, 2};
        return {location, 1};
    }
    return NSNotFoundRange;
}

NSRange qv_lineRangeForRange(QVTextReader string, NSRange range) {
    NSUInteger start = 0;
    NSUInteger end = 0;
    qv_getLineStart(string, &start, &end, nullptr, range);
    return {start, end - start};
}

void qv_getLineStart(QVTextReader string, NSUInteger *start, NSUInteger *end, NSUInteger *contentsEnd,
                     NSRange range) {
    if (start != nullptr) {
        checkLocation(string, range.location);
        NSUInteger found = behindNewlineBefore(string, range.location);
        if (found > 0) {
            const NSRange terminator = qv_rangeOfNewlineAtLocation(string, found - 1);
            // Between CR and LF the line is the one that both end.
            if (NSMaxRange(terminator) > range.location)
                found = behindNewlineBefore(string, terminator.location);
        }
        *start = found;
    }
    if (end == nullptr && contentsEnd == nullptr)
        return;
    checkLocation(string, range.location);
    if (range.length > string.length() - range.location)
        throw NSException(NSRangeException, u"Search range is out of bounds");
    const NSUInteger newline = newlineFrom(string, NSMaxRange(range));
    NSRange terminator{newline, 0};
    if (newline < string.length())
        terminator = qv_rangeOfNewlineAtLocation(string, newline);
    if (end != nullptr)
        *end = NSMaxRange(terminator);
    if (contentsEnd != nullptr)
        *contentsEnd = terminator.location;
}

} // namespace quorvane
