#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"

namespace quorvane {

namespace {

/// Group 1 is a numbered reference, group 2 a named one, group 3 an escape. The runs of blanks are layout.
const QVRegularExpression &referenceExpression() {
    static const std::shared_ptr<QVRegularExpression> expression =
        QVRegularExpression::regularExpressionWithPattern(
            u"                                (?:(?:\\\\|\\$)(\\d+))"
            u"                                |(?:(?:\\\\|\\$)\\{([a-zA-Z0-9_]+)\\})"
            u"                                |(\\\\(?:\\\\|\\$))                                ",
            QVRegularExpressionExtended);
    return *expression;
}

} // namespace

NSString QVRegularExpression::replacementStringForResult(const QVRegularExpressionResult &result,
                                                         const NSString &inString, NSInteger offset,
                                                         const NSString &templateString) const {
    return replacementStringForResult(result, inString, offset, templateString, nullptr);
}

NSString QVRegularExpression::replacementStringForResult(const QVRegularExpressionResult &result,
                                                         const NSString &inString, NSInteger offset,
                                                         const NSString &templateString,
                                                         ReplaceHandler replaceHandler) const {
    std::u16string text(templateString.view());
    NSInteger delta = 0;
    // A group as it stands in the string now; false where there is no such text.
    const auto read = [&](NSRange range, NSString &value, NSRange &sourceRange) {
        if (range.location == NSNotFound)
            return false;
        sourceRange = {range.location + static_cast<NSUInteger>(offset), range.length};
        value = inString.substringWithRange(sourceRange);
        return true;
    };
    for (const auto &reference :
         referenceExpression().matchesInString(templateString, 0, {0, templateString.length()})) {
        NSString value;
        NSRange sourceRange = NSNotFoundRange;
        if (const NSRange digits = reference->rangeAtIndex(1); digits.location != NSNotFound) {
            const NSInteger number = templateString.substringWithRange(digits).integerValue();
            if (static_cast<NSUInteger>(number) >= result.numberOfRanges() ||
                !read(result.rangeAtIndex(static_cast<NSUInteger>(number)), value, sourceRange))
                continue;
        } else if (const NSRange name = reference->rangeAtIndex(2); name.location != NSNotFound) {
            if (!read(result.rangeWithName(templateString.substringWithRange(name)), value, sourceRange))
                continue;
        } else {
            const NSRange escape = reference->rangeAtIndex(3);
            value = templateString.substringWithRange({escape.location + 1, 1});
        }
        bool stop = false;
        if (replaceHandler)
            value = replaceHandler(value, sourceRange, stop);
        const NSRange whole = reference->range();
        text.replace(whole.location + static_cast<NSUInteger>(delta), whole.length, value.view());
        if (stop)
            break;
        delta += static_cast<NSInteger>(value.length()) - static_cast<NSInteger>(whole.length);
    }
    return text;
}

} // namespace quorvane
