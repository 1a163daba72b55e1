// The shift of all that lies behind an edit.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Matches/QVMatchPositions.h"
#include "Quorvane/Parsers/QVParse.h"

namespace quorvane {

namespace {

NSRange moved(NSRange range, NSInteger delta) {
    // What has no place has none afterwards.
    if (range.location != NSNotFound)
        range.location += static_cast<NSUInteger>(delta);
    return range;
}

void bumpCaptures(const QVCaptureMatchArray *captures, NSInteger delta) {
    if (captures == nullptr)
        return;
    for (const auto &capture : *captures)
        capture->setRange(moved(capture->range(), delta));
}

void bumpEnd(QVScopeMatch *match, NSInteger delta) {
    const NSRange endRange = match->endRange();
    if (endRange.location != NSNotFound)
        match->setEndRange(moved(endRange, delta));
    bumpCaptures(match->endCaptureMatches(), delta);
}

void bumpMatch(QVScopeMatch *match, NSInteger delta) {
    const bool isValid = delta >= 0 || match->range().location >= static_cast<NSUInteger>(-delta);
    QVAssert(isValid, u"Attempt to bump a range to an invalid state");
    if (!isValid)
        return;
    // The end must never stand before the start's end, not even on the way.
    if (delta > 0)
        bumpEnd(match, delta);
    match->setRange(moved(match->range(), delta));
    if (delta < 0)
        bumpEnd(match, delta);
    bumpCaptures(match->captureMatches(), delta);
}

/// Places follow each other, so the first that is to move is the lowest.
bool canMoveAllFrom(const QVScopeMatch *match, NSInteger delta) {
    while (match != nullptr && match->skipForBumping())
        match = QVScopeMatch::directNextMatch(match);
    return match == nullptr || delta >= 0 || match->range().location >= static_cast<NSUInteger>(-delta);
}

} // namespace

void QVParse::bumpRangesBy(NSInteger delta, QVScopeMatch *afterMatch) {
    if (delta == 0 || afterMatch == nullptr)
        return;
    QVMatch *const behind = afterMatch->nextShallowMatch();
    QVMatchPositions *const positions = QVMatchPositions::positionsOf(afterMatch);
    if (positions != nullptr && canMoveAllFrom(behind ? behind->asScopeMatch() : nullptr, delta)) {
        positions->shiftBehindMatch(afterMatch, delta);
        return;
    }
    // The plain walk: for trees without positions, and for telling each place that can't be moved.
    // The regions around it end behind it.
    for (QVScopeMatch *ancestor = afterMatch->parentMatch();
         ancestor != nullptr && ancestor->parentMatch() != nullptr; ancestor = ancestor->parentMatch())
        if (!ancestor->skipForBumping())
            bumpEnd(ancestor, delta);
    for (QVScopeMatch *match = behind ? behind->asScopeMatch() : nullptr; match != nullptr;
         match = QVScopeMatch::directNextMatch(match))
        if (!match->skipForBumping())
            bumpMatch(match, delta);
}

} // namespace quorvane
