#pragma once

#include "Quorvane/RegularExpressions/QVRegularExpression.h"

namespace quorvane {

/// A copy of one match's ranges that outlives the match. Immutable.
class QV_EXPORT QVRegularExpressionResult final : public NSObject {
public:
    /// One range, `{NSNotFound, 0}`, and no expression.
    QVRegularExpressionResult();
    QVRegularExpressionResult(std::shared_ptr<const QVRegularExpression> regularExpression,
                              std::vector<NSRange> ranges);

    /// Copies the groups of a match, each set one moved by `offset`.
    static std::shared_ptr<QVRegularExpressionResult>
    initWithRegularExpression(std::shared_ptr<const QVRegularExpression> regularExpression,
                              QVPCRE2MatchData *matchData, NSUInteger offset);
    static std::shared_ptr<QVRegularExpressionResult>
    initWithRegularExpression(std::shared_ptr<const QVRegularExpression> regularExpression,
                              std::vector<NSRange> ranges);

    const std::shared_ptr<const QVRegularExpression> &regularExpression() const { return _regularExpression; }
    /// The whole match.
    NSRange range() const { return _ranges.front(); }
    /// The groups and the whole match.
    NSUInteger numberOfRanges() const { return _ranges.size(); }
    /// `{NSNotFound, 0}` for a group that took no part. An index that is too high throws
    /// `NSInvalidArgumentException`.
    NSRange rangeAtIndex(NSUInteger index) const;
    /// `{NSNotFound, 0}` for an unknown name too.
    NSRange rangeWithName(const NSString &name) const;

    /// A new result whose ranges, those that exist, are moved.
    std::shared_ptr<QVRegularExpressionResult> resultByAdjustingRangesWithOffset(NSInteger offset) const;

    /// The same object.
    std::shared_ptr<QVRegularExpressionResult> copy() const;
    std::u16string_view className() const override { return u"QVRegularExpressionResult"; }

private:
    std::shared_ptr<const QVRegularExpression> _regularExpression;
    std::vector<NSRange> _ranges;
};

} // namespace quorvane
