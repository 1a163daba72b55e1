// Replacement templates: the first line of the text is a pattern, the second one a template, the rest is what
// the pattern is searched for in. A filled template is what a plain walk over it gives.
#include "Fuzz/FuzzTarget.h"

#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"

#include <algorithm>
#include <optional>

using namespace quorvane;

namespace {

// Patterns that take for ever are no matter of templates.
constexpr std::size_t longestPattern = 48;
constexpr std::size_t longestTemplate = 256;
constexpr std::size_t longestText = 256;

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
bool isNameUnit(char16_t unit) {
    return isDigit(unit) || (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_';
}

/// One reference of a template: its place, and what it stands for. Nothing where it stays as written.
struct Reference {
    std::size_t length = 0;
    std::optional<NSString> text;
    NSRange sourceRange = NSNotFoundRange;
};

/// The slow twin of the template filling: unit by unit, without any pattern.
class Twin {
public:
    Twin(const QVRegularExpressionResult &result, const NSString &string, NSUInteger offset)
        : _result(result), _string(string), _offset(offset) {}

    /// The filled template, with the texts and places that a handler gets; each text is put between the
    /// marks. Stops before the reference of that number.
    std::u16string fill(std::u16string_view source, std::u16string_view mark, std::size_t stopBefore) {
        std::u16string filled;
        while (!source.empty()) {
            const Reference reference = references.size() < stopBefore ? referenceAt(source) : Reference{};
            if (reference.length != 0 && reference.text) {
                references.push_back(reference);
                filled += mark;
                filled += reference.text->view();
                filled += mark;
            } else {
                filled += source.substr(0, std::max<std::size_t>(1, reference.length));
            }
            source.remove_prefix(std::max<std::size_t>(1, reference.length));
        }
        return filled;
    }

    std::vector<Reference> references;

private:
    Reference group(NSRange range, std::size_t length) const {
        if (range.location == NSNotFound)
            return {length, std::nullopt, NSNotFoundRange};
        const NSRange place{range.location + _offset, range.length};
        return {length, _string.substringWithRange(place), place};
    }

    Reference referenceAt(std::u16string_view source) const {
        if ((source[0] != u'\\' && source[0] != u'$') || source.size() < 2)
            return {};
        if (isDigit(source[1])) {
            std::size_t end = 1;
            NSUInteger number = 0;
            for (; end < source.size() && isDigit(source[end]); ++end)
                number = std::min<NSUInteger>(100'000, number * 10 + (source[end] - u'0'));
            return group(number < _result.numberOfRanges() ? _result.rangeAtIndex(number) : NSNotFoundRange,
                         end);
        }
        if (source[1] == u'{') {
            std::size_t end = 2;
            while (end < source.size() && isNameUnit(source[end]))
                ++end;
            if (end > 2 && end < source.size() && source[end] == u'}')
                return group(_result.rangeWithName(NSString(source.substr(2, end - 2))), end + 1);
        }
        if (source[0] == u'\\' && (source[1] == u'\\' || source[1] == u'$'))
            return {2, NSString(source.substr(1, 1)), NSNotFoundRange};
        return {};
    }

    const QVRegularExpressionResult &_result;
    const NSString &_string;
    const NSUInteger _offset;
};

void fillTemplate(const QVRegularExpressionResult &result, const NSString &text, const NSString &source,
                  NSUInteger offset, std::size_t stopAt) {
    const QVRegularExpression &expression = *result.regularExpression();
    // The string has moved since the match was made.
    const NSString moved = NSString(std::u16string(offset, u'$')).stringByAppendingString(text);
    fuzz::require(
        expression.replacementStringForResult(result, moved, static_cast<NSInteger>(offset), source) ==
        Twin(result, moved, offset).fill(source, u"", NSNotFound));

    Twin twin(result, moved, offset);
    const std::u16string expected = twin.fill(source, u"|", stopAt);
    std::size_t count = 0;
    const NSString filled = expression.replacementStringForResult(
        result, moved, static_cast<NSInteger>(offset), source,
        [&](const NSString &value, NSRange sourceRange, bool &stop) -> NSString {
            fuzz::require(count < twin.references.size());
            const Reference &reference = twin.references[count++];
            fuzz::require(value == *reference.text && sourceRange == reference.sourceRange);
            stop = count == stopAt;
            return NSString(u"|").stringByAppendingString(value).stringByAppendingString(u"|");
        });
    fuzz::require(count == twin.references.size());
    fuzz::require(filled == expected);
}

/// What an end pattern is built of: values that stand for themselves.
void escapeText(const NSString &text) {
    const auto expression = QVRegularExpression::regularExpressionWithPattern(
        NSRegularExpression::escapedPatternForString(text), QVRegularExpressionMultiline);
    fuzz::require(expression != nullptr);
    fuzz::require(expression->rangeOfFirstMatchInString(text, QVMatchingAnchored, {0, text.length()}) ==
                  NSRange{0, text.length()});
}

} // namespace

/// The first byte's bits are the expression's options, or else tell that the text is in UTF-16; the second
/// one moves the match and stops the handler.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 2)
        return 0;
    const std::u16string text = fuzz::textOfBytes(data + 2, size - 2, (data[0] & 0x80) != 0);
    const std::u16string_view view(text);
    const std::size_t patternEnd = std::min(view.find(u'\n'), view.size());
    const std::u16string_view behind = view.substr(std::min(patternEnd + 1, view.size()));
    const std::size_t templateEnd = std::min(behind.find(u'\n'), behind.size());
    const NSString pattern(view.substr(0, std::min(patternEnd, longestPattern)));
    const NSString source(behind.substr(0, std::min(templateEnd, longestTemplate)));
    const NSString string(behind.substr(std::min(templateEnd + 1, behind.size())).substr(0, longestText));

    // Half a character, which the length may leave at the end, is matched in ways of its own.
    const bool endsInHalf = string.length() != 0 && (string.view().back() & 0xFC00) == 0xD800;
    if ((data[0] & 0x80) == 0 && !endsInHalf)
        escapeText(string);
    const auto expression = QVRegularExpression::regularExpressionWithPattern(pattern, data[0] & 0x7F);
    if (!expression)
        return 0;
    const auto result = expression->firstMatchInString(string, 0, {0, string.length()});
    if (!result)
        return 0;
    fuzz::require(result->numberOfRanges() == expression->numberOfCaptureGroups() + 1);
    for (NSUInteger index = 0; index < result->numberOfRanges(); ++index) {
        const NSRange range = result->rangeAtIndex(index);
        fuzz::require(range.location == NSNotFound || NSMaxRange(range) <= string.length());
    }
    fillTemplate(*result, string, source, data[1] & 3, 1 + (data[1] >> 2));
    return 0;
}
