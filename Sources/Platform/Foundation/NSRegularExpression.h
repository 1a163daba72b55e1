#pragma once

#include "Platform/Foundation/NSCoder.h"
#include "Platform/Foundation/NSError.h"

namespace quorvane {

/// The code of the error for a pattern that can't be read.
inline constexpr NSInteger NSFormattingError = 2048;

/// Compile options; a bit mask, part of archives.
using NSRegularExpressionOptions = std::uint64_t;
inline constexpr NSRegularExpressionOptions NSRegularExpressionCaseInsensitive = 1;
inline constexpr NSRegularExpressionOptions NSRegularExpressionAllowCommentsAndWhitespace = 2;
inline constexpr NSRegularExpressionOptions NSRegularExpressionIgnoreMetacharacters = 4;
inline constexpr NSRegularExpressionOptions NSRegularExpressionDotMatchesLineSeparators = 8;
inline constexpr NSRegularExpressionOptions NSRegularExpressionAnchorsMatchLines = 16;

/// Matching options; a bit mask.
using NSMatchingOptions = std::uint64_t;
inline constexpr NSMatchingOptions NSMatchingAnchored = 4;
inline constexpr NSMatchingOptions NSMatchingWithTransparentBounds = 8;
inline constexpr NSMatchingOptions NSMatchingWithoutAnchoringBounds = 16;

/// A pattern of the platform's own expression engine, used for small patterns outside of grammars. Immutable
/// and safe to use from many threads. A search that runs longer than a fixed limit counts as "not found" and
/// is logged.
class QV_EXPORT NSRegularExpression final : public NSObject, public NSSecureCoding {
public:
    /// Null, with an error in `NSCocoaErrorDomain` of code `NSFormattingError` set, when the pattern does not
    /// compile; an empty pattern doesn't.
    static std::shared_ptr<NSRegularExpression>
    regularExpressionWithPattern(const NSString &pattern, NSRegularExpressionOptions options,
                                 std::shared_ptr<NSError> *error = nullptr);
    /// The text with every character that has a meaning in patterns escaped by a backslash; the result also
    /// stands for itself in compiled patterns of `QVRegularExpression`.
    static NSString escapedPatternForString(std::u16string_view string);

    ~NSRegularExpression() override;

    const NSString &pattern() const { return _pattern; }
    NSRegularExpressionOptions options() const { return _options; }
    NSUInteger numberOfCaptureGroups() const;

    /// The groups' ranges of one match, index 0 being the whole; a group that took no part is `{NSNotFound,
    /// 0}`.
    using Match = std::vector<NSRange>;
    /// All matches in a range of the text, in order, until the callback sets stop; an anchored search has at
    /// most one. All searches throw `NSRangeException` when the range leaves the text.
    void enumerateMatchesInString(std::u16string_view string, NSMatchingOptions options, NSRange range,
                                  QVBlock<void(const Match &match, bool &stop)> block) const;
    std::optional<Match> firstMatchInString(std::u16string_view string, NSMatchingOptions options,
                                            NSRange range) const;
    NSRange rangeOfFirstMatchInString(std::u16string_view string, NSMatchingOptions options,
                                      NSRange range) const;
    NSUInteger numberOfMatchesInString(std::u16string_view string, NSMatchingOptions options,
                                       NSRange range) const;
    /// The text with every match in the range replaced; "$1" in the template stands for a group.
    NSString stringByReplacingMatchesInString(std::u16string_view string, NSMatchingOptions options,
                                              NSRange range, std::u16string_view withTemplate) const;

    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"NSRegularExpression"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSRegularExpression();
    bool compile(const NSString &pattern, NSRegularExpressionOptions options,
                 std::shared_ptr<NSError> *error);
    struct Compiled;
    NSString _pattern;
    NSRegularExpressionOptions _options = 0;
    std::unique_ptr<Compiled> _compiled;
};

} // namespace quorvane
