#include "Quorvane/Matches/QVCaptureMatch.h"

#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"

namespace quorvane {

boost::intrusive_ptr<QVCaptureMatch> QVCaptureMatch::initWithCapture(const QVCapture *capture,
                                                                     QVMatchPool &pool) {
    return boost::intrusive_ptr<QVCaptureMatch>(new (pool.allocate(sizeof(QVCaptureMatch)))
                                                    QVCaptureMatch(capture));
}

std::unique_ptr<QVCaptureMatchArray> QVCaptureMatch::captureMatchesWithCaptures(
    const QVScope::Captures &captures, const QVRegularExpression &regularExpression,
    ::pcre2_real_match_data_16 *matchData, NSUInteger offset, std::u16string_view, NSRange,
    QVScopeMatch *parentMatch, QVMatchPool &pool) {
    std::unique_ptr<QVCaptureMatchArray> matches;
    for (const auto &capture : captures) {
        if (capture->number() > regularExpression.numberOfCaptureGroups())
            continue;
        const NSRange range = QVPCRE2MatchDataRangeAtIndex(matchData, capture->number(), offset);
        if (range.location == NSNotFound)
            continue;
        if (!matches) {
            matches = std::make_unique<QVCaptureMatchArray>();
            matches->reserve(captures.size());
        }
        auto match = initWithCapture(capture.get(), pool);
        match->setRange(range);
        match->setParentMatch(parentMatch);
        if (!matches->empty()) {
            match->setPreviousSibling(matches->back().get());
            matches->back()->setNextSibling(match.get());
        }
        matches->push_back(std::move(match));
    }
    return matches;
}

} // namespace quorvane
