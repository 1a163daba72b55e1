#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"

#include "Platform/Foundation/NSException.h"

namespace quorvane {

QVRegularExpressionResult::QVRegularExpressionResult() : _ranges{NSNotFoundRange} {}

QVRegularExpressionResult::QVRegularExpressionResult(
    std::shared_ptr<const QVRegularExpression> regularExpression, std::vector<NSRange> ranges)
    : _regularExpression(std::move(regularExpression)), _ranges(std::move(ranges)) {
    if (_ranges.empty())
        _ranges.push_back(NSNotFoundRange);
}

std::shared_ptr<QVRegularExpressionResult> QVRegularExpressionResult::initWithRegularExpression(
    std::shared_ptr<const QVRegularExpression> regularExpression, QVPCRE2MatchData *matchData,
    NSUInteger offset) {
    std::vector<NSRange> ranges;
    const NSUInteger count = regularExpression->numberOfCaptureGroups() + 1;
    ranges.reserve(count);
    for (NSUInteger index = 0; index < count; ++index)
        ranges.push_back(QVPCRE2MatchDataRangeAtIndex(matchData, index, offset));
    return initWithRegularExpression(std::move(regularExpression), std::move(ranges));
}

std::shared_ptr<QVRegularExpressionResult> QVRegularExpressionResult::initWithRegularExpression(
    std::shared_ptr<const QVRegularExpression> regularExpression, std::vector<NSRange> ranges) {
    return std::make_shared<QVRegularExpressionResult>(std::move(regularExpression), std::move(ranges));
}

NSRange QVRegularExpressionResult::rangeAtIndex(NSUInteger index) const {
    if (index >= _ranges.size())
        throw NSException(NSInvalidArgumentException,
                          u"Range index exceeds the number of ranges in the match");
    return _ranges[index];
}

NSRange QVRegularExpressionResult::rangeWithName(const NSString &name) const {
    const NSUInteger number =
        _regularExpression ? _regularExpression->captureNumberForName(name) : NSNotFound;
    return number < _ranges.size() ? _ranges[number] : NSNotFoundRange;
}

std::shared_ptr<QVRegularExpressionResult>
QVRegularExpressionResult::resultByAdjustingRangesWithOffset(NSInteger offset) const {
    std::vector<NSRange> ranges = _ranges;
    for (NSRange &range : ranges)
        if (range.location != NSNotFound)
            range.location += static_cast<NSUInteger>(offset);
    return initWithRegularExpression(_regularExpression, std::move(ranges));
}

std::shared_ptr<QVRegularExpressionResult> QVRegularExpressionResult::copy() const {
    return std::const_pointer_cast<QVRegularExpressionResult>(
        std::static_pointer_cast<const QVRegularExpressionResult>(shared_from_this()));
}

} // namespace quorvane
