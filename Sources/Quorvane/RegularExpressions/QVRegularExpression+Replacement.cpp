#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"

namespace quorvane {

namespace {

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
bool isOfName(char16_t unit) {
    return isDigit(unit) || unit == u'_' || (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

/// What a template has instead of text: a reference by number, one by name, or an escape.
struct Reference {
    enum Kind : std::uint8_t { Number, Name, Escape };
    Kind kind;
    NSRange range;
    /// The digits, the name, or the escaped unit.
    std::u16string_view value;
};

/// The first reference at or behind a location. Templates are filled for each region whose end is one, so
/// they are read by hand.
std::optional<Reference> nextReference(std::u16string_view text, std::size_t from) {
    const auto run = [text](std::size_t start, auto isMember) {
        std::size_t end = start;
        while (end < text.size() && isMember(text[end]))
            ++end;
        return text.substr(start, end - start);
    };
    for (std::size_t at = from; at + 1 < text.size(); ++at) {
        if (text[at] != u'$' && text[at] != u'\\')
            continue;
        const char16_t next = text[at + 1];
        if (isDigit(next)) {
            const std::u16string_view digits = run(at + 1, isDigit);
            return Reference{Reference::Number, {at, 1 + digits.size()}, digits};
        }
        if (next == u'{') {
            const std::u16string_view name = run(at + 2, isOfName);
            const std::size_t end = at + 2 + name.size();
            if (!name.empty() && end < text.size() && text[end] == u'}')
                return Reference{Reference::Name, {at, end + 1 - at}, name};
        }
        if (text[at] == u'\\' && (next == u'\\' || next == u'$'))
            return Reference{Reference::Escape, {at, 2}, text.substr(at + 1, 1)};
    }
    return std::nullopt;
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
    const std::u16string_view pattern = templateString.view();
    std::u16string text;
    // A group as it stands in the string now; false where there is no such text.
    const auto read = [&](NSRange range, NSString &value, NSRange &sourceRange) {
        if (range.location == NSNotFound)
            return false;
        sourceRange = {range.location + static_cast<NSUInteger>(offset), range.length};
        value = inString.substringWithRange(sourceRange);
        return true;
    };
    std::size_t copied = 0;
    for (std::size_t from = 0; const auto reference = nextReference(pattern, from);) {
        from = NSMaxRange(reference->range);
        NSString value;
        NSRange sourceRange = NSNotFoundRange;
        if (reference->kind == Reference::Number) {
            const NSInteger number = NSString(reference->value).integerValue();
            if (static_cast<NSUInteger>(number) >= result.numberOfRanges() ||
                !read(result.rangeAtIndex(static_cast<NSUInteger>(number)), value, sourceRange))
                continue;
        } else if (reference->kind == Reference::Name) {
            if (!read(result.rangeWithName(NSString(reference->value)), value, sourceRange))
                continue;
        } else {
            value = NSString(reference->value);
        }
        bool stop = false;
        if (replaceHandler)
            value = replaceHandler(value, sourceRange, stop);
        text += pattern.substr(copied, reference->range.location - copied);
        text += value.view();
        copied = from;
        if (stop)
            break;
    }
    text += pattern.substr(copied);
    return text;
}

} // namespace quorvane
