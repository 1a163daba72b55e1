#include "Quorvane/Parsers/QVWhitespaceContext.h"

#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

namespace quorvane {

namespace {

/// The end of the blanks that a line begins with; where all of it is blank, its end.
NSUInteger endOfLeadingBlanks(std::u16string_view text, NSRange line) {
    static const auto &blanks = *new auto(NSCharacterSet::whitespaceAndNewlineCharacterSet());
    NSUInteger location = line.location;
    while (location < NSMaxRange(line) && blanks->characterIsMember(text[location]))
        ++location;
    return location;
}

} // namespace

NSUInteger QVEndOfWhitespaceContext(std::u16string_view text, NSRange range, const NSString &commentPrefix,
                                    NSUInteger tabWidth, NSUInteger *lookedAtEnd) {
    const auto levelOfBlanks = [&](NSRange line, NSUInteger blanksEnd) {
        return qv_indentationLevelWithTabWidth(text.substr(line.location, blanksEnd - line.location),
                                               tabWidth);
    };
    NSRange line = qv_lineRangeForRange(text, range);
    const NSUInteger baseLevel = levelOfBlanks(line, endOfLeadingBlanks(text, line));
    NSUInteger end = NSMaxRange(range);
    // The lines that belong to the context only if one of its own follows.
    NSRange pending{0, 0};
    while (NSMaxRange(line) < text.size()) {
        line = qv_lineRangeForRange(text, {NSMaxRange(line), 0});
        const NSUInteger contents = endOfLeadingBlanks(text, line);
        const bool isBlank = contents == NSMaxRange(line);
        const bool isComment =
            !isBlank && commentPrefix.length() != 0 &&
            text.substr(contents, NSMaxRange(line) - contents).starts_with(commentPrefix.view());
        if (!isBlank && !isComment && levelOfBlanks(line, contents) <= baseLevel)
            break;
        if (isBlank || isComment)
            pending = pending.length == 0 ? line : NSUnionRange(pending, line);
        else
            pending = {0, 0};
        end = NSMaxRange(line);
    }
    *lookedAtEnd = NSMaxRange(line);
    return pending.length == 0 ? end : pending.location;
}

} // namespace quorvane
