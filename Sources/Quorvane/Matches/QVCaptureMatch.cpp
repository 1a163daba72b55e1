#include "Quorvane/Matches/QVCaptureMatch.h"

#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"

namespace quorvane {

void *QVCaptureMatchArray::operator new(std::size_t size) { return QVMatchPool::sharedPool().allocate(size); }

void *QVCaptureMatchArray::operator new(std::size_t size, QVMatchPool &pool) { return pool.allocate(size); }

void QVCaptureMatchArray::operator delete(void *array, std::size_t size) {
    QVMatchPool::poolOf(array).deallocate(array, size);
}

void QVCaptureMatchArray::operator delete(void *array, QVMatchPool &pool) {
    pool.deallocate(array, sizeof(QVCaptureMatchArray));
}

boost::intrusive_ptr<QVCaptureMatch> QVCaptureMatch::initWithCapture(const QVCapture *capture,
                                                                     QVMatchPool &pool) {
    return boost::intrusive_ptr<QVCaptureMatch>(new (pool.allocate(sizeof(QVCaptureMatch)))
                                                    QVCaptureMatch(capture));
}

std::unique_ptr<QVCaptureMatchArray> QVCaptureMatch::captureMatchesWithCaptures(
    const QVScope::Captures &captures, const QVRegularExpression &regularExpression,
    ::pcre2_real_match_data_16 *matchData, NSUInteger offset, std::u16string_view, NSRange,
    QVScopeMatch *parentMatch, QVMatchPool &pool) {
    auto matches = captureMatchesWithGroups(captures, regularExpression, {matchData}, parentMatch, pool);
    if (matches && offset != 0)
        for (const auto &match : *matches)
            match->setRange({match->range().location + offset, match->range().length});
    return matches;
}

std::unique_ptr<QVCaptureMatchArray> QVCaptureMatch::captureMatchesWithGroups(
    const QVScope::Captures &captures, const QVRegularExpression &regularExpression,
    const QVGroupsOfHit &groups, QVScopeMatch *parentMatch, QVMatchPool &pool) {
    std::unique_ptr<QVCaptureMatchArray> matches;
    for (const auto &capture : captures) {
        if (capture->number() > regularExpression.numberOfCaptureGroups())
            continue;
        const NSRange range = groups.rangeAtIndex(capture->number());
        if (range.location == NSNotFound)
            continue;
        if (!matches)
            matches.reset(new (pool) QVCaptureMatchArray);
        auto match = initWithCapture(capture.get(), pool);
        match->_range = range;
        match->_parentMatch = parentMatch;
        if (!matches->empty()) {
            QVCaptureMatch *const previous = matches->back().get();
            match->_previousSibling = previous;
            previous->_nextSibling = match.get();
        }
        matches->push_back(std::move(match));
    }
    return matches;
}

} // namespace quorvane
