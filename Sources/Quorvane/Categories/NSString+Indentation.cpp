#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSScanner.h"
#include "Platform/Foundation/QVTextSearching.h"

namespace quorvane {

namespace {

constexpr NSUInteger defaultTabWidth = 4;

/// Walks over the spaces and tabs at a range's start, as long as the callback takes them; answers the
/// position behind them.
template <typename Take> NSUInteger walkIndentation(QVTextReader string, NSRange range, Take take) {
    NSUInteger location = range.location;
    for (NSUInteger left = range.length; left != 0; --left, ++location) {
        if (location >= string.length())
            throw NSException(NSRangeException,
                              NSString::stringWithFormat(u"Range %@ is outside of a string of length %lu",
                                                         range, string.length()));
        const char16_t unit = string.characterAtIndex(location);
        if ((unit != u' ' && unit != u'\t') || !take(unit))
            break;
    }
    return location;
}

} // namespace

NSUInteger qv_indentationLevelWithTabWidth(QVTextReader string, NSUInteger tabWidth) {
    return qv_indentationLevelInRange(string, {0, string.length()}, tabWidth);
}

NSUInteger qv_indentationLevelInRange(QVTextReader string, NSRange range, NSUInteger tabWidth,
                                      NSUInteger *numberOfTabs, NSUInteger *numberOfSpaces) {
    NSUInteger tabs = 0;
    NSUInteger spaces = 0;
    walkIndentation(string, range, [&](char16_t unit) {
        ++(unit == u'\t' ? tabs : spaces);
        return true;
    });
    if (numberOfTabs != nullptr)
        *numberOfTabs = tabs;
    if (numberOfSpaces != nullptr)
        *numberOfSpaces = spaces;
    return tabs + spaces / (tabWidth == 0 ? defaultTabWidth : tabWidth);
}

NSString qv_stringWithIndentationLevel(NSUInteger level, QVIndentationStyle style, NSUInteger tabWidth) {
    switch (style) {
    case QVIndentationStyleTabs:
        return std::u16string(level, u'\t');
    case QVIndentationStyleSpaces:
        return std::u16string(level * tabWidth, u' ');
    }
    return u"";
}

NSString qv_stringWithIndentationStyle(QVIndentationStyle style, NSUInteger numberOfSpaces,
                                       NSUInteger tabWidth) {
    QVParameterAssert(tabWidth > 0, "tabWidth > 0");
    const NSUInteger level = tabWidth == 0 ? 0 : numberOfSpaces / tabWidth;
    const std::u16string rest(numberOfSpaces - level * tabWidth, u' ');
    return qv_stringWithIndentationLevel(level, style, tabWidth).stringByAppendingString(rest);
}

bool qv_getDominantIndentationStyle(QVTextReader string, QVIndentationStyle *style, NSUInteger *tabWidth,
                                    bool *homogeneous) {
    const auto whitespace = NSCharacterSet::whitespaceCharacterSet();
    const auto newlines = NSCharacterSet::newlineCharacterSet();
    NSUInteger tabLines = 0;
    NSUInteger spaceLines = 0;
    // How often a width occurs is of no matter: one line indented by a single level tells the level.
    NSUInteger smallestWidth = NSNotFound;
    for (NSScanner scanner(string); !scanner.isAtEnd();) {
        NSUInteger width = 0;
        if (scanner.scanString(u"\t")) {
            ++tabLines;
        } else {
            while (scanner.scanString(u" "))
                ++width;
            spaceLines += width != 0;
        }
        scanner.scanCharactersFromSet(*whitespace);
        const bool hasContent = scanner.scanUpToCharactersFromSet(*newlines);
        if (hasContent && width >= 2)
            smallestWidth = std::min(smallestWidth, width);
        scanner.scanCharactersFromSet(*newlines);
    }
    if (tabLines == 0 && spaceLines == 0)
        return false;
    const bool tabsWin = tabLines >= spaceLines;
    if (style != nullptr)
        *style = tabsWin ? QVIndentationStyleTabs : QVIndentationStyleSpaces;
    if (tabWidth != nullptr && !tabsWin && smallestWidth != NSNotFound)
        *tabWidth = smallestWidth;
    if (homogeneous != nullptr)
        *homogeneous = std::min(tabLines, spaceLines) == 0;
    return true;
}

NSRange qv_rangeOfIndentationInRange(QVTextReader string, NSRange range, NSUInteger tabWidth,
                                     NSUInteger *numberOfSpaces) {
    const bool inside = range.location <= string.length() && range.length <= string.length() - range.location;
    QVParameterAssert(inside, "NSMaxRange(range) <= self.length");
    if (tabWidth == 0)
        return {range.location, 0};
    NSUInteger width = 0;
    const NSUInteger end = walkIndentation(string, range, [&](char16_t unit) {
        width += unit == u'\t' ? tabWidth : 1;
        return true;
    });
    if (numberOfSpaces != nullptr)
        *numberOfSpaces = width;
    return {range.location, end - range.location};
}

NSRange qv_rangeOfIndentationForNumberOfSpaces(QVTextReader string, NSUInteger numberOfSpaces,
                                               NSRange inRange, NSUInteger tabWidth,
                                               NSUInteger *actualNumberOfSpaces) {
    if (numberOfSpaces == 0)
        return {inRange.location, 0};
    NSUInteger width = 0;
    const NSUInteger end = walkIndentation(string, inRange, [&](char16_t unit) {
        if (width >= numberOfSpaces)
            return false;
        width += unit == u'\t' ? tabWidth : 1;
        return true;
    });
    if (actualNumberOfSpaces != nullptr)
        *actualNumberOfSpaces = width;
    return {inRange.location, end - inRange.location};
}

NSUInteger qv_greatestCommonIndentationNumberOfSpacesForAllLinesInRange(
    QVTextReader string, NSRange range, NSUInteger additionalIndentationForFirstLine, NSUInteger tabWidth) {
    NSUInteger smallest = NSNotFound;
    for (NSUInteger position = range.location; position < NSMaxRange(range) && smallest != 0;) {
        NSUInteger start = 0;
        NSUInteger end = 0;
        NSUInteger contentsEnd = 0;
        QVPlatformGetLineStart(string, &start, &end, &contentsEnd, {position, 0});
        if (contentsEnd > start) {
            NSUInteger width = 0;
            qv_rangeOfIndentationInRange(string, {start, contentsEnd - start}, tabWidth, &width);
            if (position == 0)
                width += additionalIndentationForFirstLine;
            smallest = std::min(smallest, width);
        }
        if (end <= position)
            break;
        position = end;
    }
    return smallest == NSNotFound ? 0 : smallest;
}

} // namespace quorvane
