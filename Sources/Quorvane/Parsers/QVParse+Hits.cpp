// What a pattern's hit becomes, which is the same however it was found.

#include "Platform/Foundation/NSLog.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"

namespace quorvane {

void QVParse::logEmptyMatch(const QVScope &scope) {
    logDiagnosticMessage(NSString::stringWithFormat(
                             u"Encountered a zero-length single match for scope: %@; Ignoring", scope.name()),
                         5);
}

bool QVParse::isOpenAtPlace(const QVScope &scope, NSUInteger location) const {
    // Open regions stand in the order of their places, so only those that begin right here need a look;
    // mostly none.
    const auto &open = _pass->parseStackMatches;
    for (auto match = open.rbegin(); match != open.rend() && (*match)->range().location == location; ++match)
        if ((*match)->scope() == &scope)
            return true;
    return false;
}

bool QVParse::acceptsHit(const QVScope &scope, const QVScope &parentScope, NSRange hit,
                         NSUInteger rangeStart) {
    if (scope.type() == QVScopeTypeMatch) {
        if (hit.length == 0)
            logEmptyMatch(scope);
        return hit.length != 0;
    }
    if (scope.type() != QVScopeTypeStartEnd)
        return true;
    if (isOpenAtPlace(scope, hit.location)) {
        logDiagnosticMessage(
            NSString::stringWithFormat(
                u"Encountered an infinitely-recursive depth-wise parse for scope: %@; Ignoring subscopes",
                scope.name()),
            5);
        return false;
    }
    if (hit.length == 0 && &scope == &parentScope && hit.location == rangeStart) {
        logDiagnosticMessage(
            NSString::stringWithFormat(u"Encountered an infinitely-recursive parse for scope: %@; Ignoring",
                                       scope.name()),
            5);
        return false;
    }
    return true;
}

bool QVParse::keepsStartResult(const QVScope &scope) {
    return scope.type() == QVScopeTypeStartEnd &&
           (scope.endRegularExpressionTemplate() ||
            (scope.definesSubsyntax() && scope.subsyntaxOptions()->captureNumber()));
}

/// A capture can stand outside of its match, where the pattern only looks. Whoever looks for what lies in a
/// range must know how far away such a match can be.
void QVParse::setCapturesOfHit(QVScopeMatch &match, const QVScope::Captures &captures,
                               const QVRegularExpression &expression, const QVGroupsOfHit &groups) {
    const NSRange hit = match.range();
    auto captureMatches =
        QVCaptureMatch::captureMatchesWithGroups(captures, expression, groups, &match, *_matchPool);
    if (!captureMatches)
        return;
    for (const auto &capture : *captureMatches) {
        const NSRange range = capture->range();
        if (range.location < hit.location)
            _captureReach = std::max(_captureReach, hit.location - range.location);
        if (NSMaxRange(range) > NSMaxRange(hit))
            _captureReach = std::max(_captureReach, NSMaxRange(range) - NSMaxRange(hit));
    }
    match.setCaptureMatches(std::move(captureMatches));
}

QVScopeMatchReference QVParse::matchForCutoffHit(const QVScope &scope, const QVRegularExpression &expression,
                                                 const QVGroupsOfHit &groups, NSRange hit) {
    QVScopeMatchReference match = QVScopeMatch::endWithScope(&scope, hit, *_matchPool);
    // A cut-off's own captures are not taken here, other than in anchored matching: grammars are written for
    // it.
    if (groups && scope.type() == QVScopeTypeStartEnd && !scope.endCaptures().empty())
        setCapturesOfHit(*match, scope.endCaptures(), expression, groups);
    return match;
}

QVScopeMatchReference QVParse::matchForHit(const QVScope &scope,
                                           const std::shared_ptr<const QVRegularExpression> &expression,
                                           const QVGroupsOfHit &groups, NSRange hit, bool anchored) {
    const QVScopeType type = scope.type();
    if (type != QVScopeTypeWhitespace && type != QVScopeTypeMatch && type != QVScopeTypeCutoff &&
        type != QVScopeTypeStartEnd)
        NSLog(u"Unhandled scope type.");
    QVScopeMatchReference match = newMatch(&scope, hit);
    match->setStart(type == QVScopeTypeStartEnd);
    match->setEnd(type == QVScopeTypeCutoff);
    if (groups && keepsStartResult(scope))
        match->setTextCheckingResult(
            QVRegularExpressionResult::initWithRegularExpression(expression, groups.matchData, 0));
    const bool usesEndCaptures = type == QVScopeTypeCutoff && (!anchored || !scope.endCaptures().empty());
    const QVScope::Captures &captures = usesEndCaptures ? scope.endCaptures() : scope.captures();
    if (groups && !captures.empty())
        setCapturesOfHit(*match, captures, *expression, groups);
    return match;
}

} // namespace quorvane
