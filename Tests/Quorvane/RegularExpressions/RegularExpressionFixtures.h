#pragma once

#include "Platform/Foundation/NSError.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace quorvane::test {

using Ranges = std::vector<NSRange>;

/// An expression that must compile.
inline std::shared_ptr<QVRegularExpression> expressionFor(const NSString &pattern,
                                                          QVRegularExpressionOptions options = 0) {
    std::shared_ptr<NSError> error;
    auto expression = QVRegularExpression::regularExpressionWithPattern(pattern, options, &error);
    if (!expression)
        throw std::runtime_error(pattern.UTF8String() + ": " +
                                 error->localizedRecoverySuggestion().UTF8String());
    return expression;
}

/// Pieces of text in a row.
inline std::u16string joined(std::initializer_list<std::u16string_view> pieces) {
    std::u16string result;
    for (const std::u16string_view piece : pieces)
        result.append(piece);
    return result;
}

/// Text between the two units that a matcher may touch.
class GuardedText {
public:
    explicit GuardedText(std::u16string_view text) {
        // No spare room, so that address checks see every unit that is read too far.
        _units.reserve(text.size() + 2);
        _units.push_back(u'\0');
        _units.insert(_units.end(), text.begin(), text.end());
        _units.push_back(u'\0');
    }
    const char16_t *characters() const { return _units.data() + 1; }
    NSUInteger length() const { return _units.size() - 2; }
    NSRange range() const { return {0, length()}; }

private:
    std::vector<char16_t> _units;
};

/// The whole matches that an enumeration reports.
inline Ranges matchRanges(const QVRegularExpression &expression, const NSString &text,
                          QVMatchingOptions options, NSRange range) {
    Ranges ranges;
    for (const auto &result : expression.matchesInString(text, options, range))
        ranges.push_back(result->range());
    return ranges;
}

inline Ranges matchRanges(const QVRegularExpression &expression, const NSString &text,
                          QVMatchingOptions options = 0) {
    return matchRanges(expression, text, options, {0, text.length()});
}

/// The same through the lowest level, in a context of the caller's.
inline Ranges matchRanges(const QVRegularExpression &expression, const GuardedText &text,
                          QVMatchingOptions options, NSRange range, QVRegularExpressionMatchContext *context,
                          QVMatchingOutcome *outcome = nullptr) {
    Ranges ranges;
    const auto collect = [&](QVPCRE2MatchData *data, NSUInteger baseOffset, bool &) {
        ranges.push_back(QVPCRE2MatchDataRangeAtIndex(data, 0, baseOffset));
    };
    const QVMatchingOutcome result = expression.enumerateMatchesInCharacters(
        text.characters(), text.length(), options, range, context, collect);
    if (outcome != nullptr)
        *outcome = result;
    return ranges;
}

/// What every pattern of a grammar is compiled with, blanks counting as themselves.
inline constexpr QVRegularExpressionOptions grammarOptions =
    QVRegularExpressionMultiline | QVRegularExpressionUseJIT;

} // namespace quorvane::test
