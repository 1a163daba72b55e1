// Which match lies at or before a location, and which syntax is in force there.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSCharacterSet.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

namespace {

bool isEmptyAt(NSRange range, NSUInteger location) { return range.length == 0 && range.location == location; }

bool isInOrEmptyAt(NSRange range, NSUInteger location) {
    return NSLocationInRange(location, range) || isEmptyAt(range, location);
}

/// What a match says of a location: it is mine, it is in my children, it is further right or left.
enum class Verdict { Mine, LastChild, Children, Right, Left };

Verdict verdict(const QVScopeMatch *match, NSUInteger location) {
    const NSRange range = match->range();
    const NSRange endRange = match->endRange();
    const bool hasChildren = !match->submatches().isEmpty();
    const bool hasEnd = endRange.location != NSNotFound;
    const Verdict aside = range.location <= location ? Verdict::Right : Verdict::Left;
    if (isInOrEmptyAt(range, location))
        return Verdict::Mine;
    if (!hasChildren)
        return hasEnd && isInOrEmptyAt(endRange, location) ? Verdict::Mine : aside;
    if (!hasEnd)
        return Verdict::Children;
    const bool emptyAtEnd = isEmptyAt(endRange, location);
    if (!emptyAtEnd && !NSLocationInRange(location, NSUnionRange(range, endRange)))
        return aside;
    if (emptyAtEnd)
        return Verdict::LastChild;
    return NSLocationInRange(location, endRange) ? Verdict::Mine : Verdict::Children;
}

const QVMatch *firstThatHolds(const QVCaptureMatchArray *captures, NSUInteger location, bool orEndsThere) {
    if (captures == nullptr)
        return nullptr;
    for (const auto &capture : *captures)
        if (isInOrEmptyAt(capture->range(), location) ||
            (orEndsThere && NSMaxRange(capture->range()) == location))
            return capture.get();
    return nullptr;
}

/// The capture of a match that holds the location, else the match itself.
QVMatch *captureOrMatch(QVMatch *match, NSUInteger location, bool orEndsThere) {
    if (match == nullptr || !match->isScopeMatch())
        return match;
    for (const QVCaptureMatchArray *captures : {match->captureMatches(), match->endCaptureMatches()})
        if (const QVMatch *const capture = firstThatHolds(captures, location, orEndsThere))
            return const_cast<QVMatch *>(capture);
    return match;
}

} // namespace

QVScopeMatch *QVParse::fastMatchAtLocation(NSUInteger location, QVSubmatches withMatches) {
    while (!withMatches.isEmpty()) {
        NSUInteger low = 0;
        NSUInteger high = withMatches.count() - 1;
        bool descends = false;
        while (!descends) {
            const NSUInteger middle = (low + high) / 2;
            QVScopeMatch *const match = withMatches[middle];
            Verdict found = verdict(match, location);
            if (found == Verdict::LastChild) {
                QVScopeMatch *const child = match->lastChild();
                const NSRange childRange = child->range();
                if (NSLocationInRange(location, childRange) || childRange.location == location)
                    return child;
                found = Verdict::Right;
            }
            switch (found) {
            case Verdict::Mine:
                return match;
            case Verdict::Children:
                withMatches = match->submatches();
                descends = true;
                break;
            case Verdict::Right:
                low = middle + 1;
                if (low > high)
                    return nullptr;
                break;
            default:
                if (high == 0 || middle == 0)
                    return nullptr;
                high = middle - 1;
                if (low > high)
                    return nullptr;
            }
        }
    }
    return nullptr;
}

QVMatch *QVParse::matchAtLocation(NSUInteger location, bool includeCaptures,
                                  std::shared_ptr<QVSyntax> *syntax) const {
    QVMatch *match = fastMatchAtLocation(location, _rootMatch->submatches());
    if (match == nullptr)
        match = _rootMatch.get();
    if (includeCaptures)
        match = captureOrMatch(match, location, false);
    if (syntax != nullptr)
        *syntax = syntaxForMatch(match, location);
    return match;
}

QVMatch *QVParse::matchPrecedingLocation(NSUInteger location, bool includeCaptures,
                                         std::shared_ptr<QVSyntax> *syntax) const {
    QVMatch *match = matchAtLocation(location, includeCaptures, nullptr);
    if (location == _text->length() && match == _rootMatch.get())
        match = match->deepestLastChild();
    while (match->endRange().location != NSNotFound && match->endRange().location == location) {
        QVMatch *const deepest = match->deepestLastChild();
        if (deepest == match)
            break;
        match = deepest;
    }
    while (match != nullptr && match->range().location == location) {
        if (match->previousSibling() != nullptr) {
            match = match->previousSibling();
            continue;
        }
        QVScopeMatch *const parent = match->parentMatch();
        const QVCaptureMatchArray *const endCaptures = parent ? parent->endCaptureMatches() : nullptr;
        const bool standsAtEnd = !match->isScopeMatch() && endCaptures != nullptr && !endCaptures->empty() &&
                                 endCaptures->front().get() == match;
        match = standsAtEnd ? parent->deepestLastChild() : parent;
    }
    // A new character next to blanks belongs to the region around them.
    while (match != nullptr && match->isScopeMatch()) {
        const QVScopeType type = match->asScopeMatch()->scope()->type();
        if (type != QVScopeTypeWhitespace && type != QVScopeTypeUnknown)
            break;
        match = match->parentMatch();
    }
    if (includeCaptures)
        match = captureOrMatch(match, location, true);
    if (match == nullptr)
        match = _rootMatch.get();
    if (syntax != nullptr)
        *syntax = syntaxForMatch(match, location);
    return match;
}

void QVParse::enumerateEffectiveSyntaxesForMatch(
    const QVMatch *match, NSUInteger location,
    QVBlock<void(const std::shared_ptr<QVSyntax> &syntax, const QVMatch *match, bool &stop)> usingBlock)
    const {
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock)
        return;
    bool stop = false;
    const QVScopeMatch *const scopeMatch = match ? match->asScopeMatch() : nullptr;
    if (location != NSNotFound && scopeMatch != nullptr && scopeMatch->scope()->definesSubsyntax()) {
        const NSRange endRange = scopeMatch->endRange();
        // At the very edges, a character that comes in is the embedded language's as well.
        if (NSMaxRange(scopeMatch->range()) <= location &&
            (endRange.location == NSNotFound || endRange.location >= location))
            usingBlock(scopeMatch->subsyntax(), scopeMatch, stop);
    }
    for (const QVScopeMatch *parent = match ? match->parentMatch() : nullptr; parent != nullptr && !stop;
         parent = parent->parentMatch())
        if (parent->scope()->definesSubsyntax())
            usingBlock(parent->subsyntax(), parent, stop);
    if (!stop)
        usingBlock(_syntax, _rootMatch.get(), stop);
}

std::shared_ptr<QVSyntax> QVParse::syntaxForMatch(const QVMatch *match, NSUInteger location) const {
    std::shared_ptr<QVSyntax> syntax;
    enumerateEffectiveSyntaxesForMatch(
        match, location, [&](const std::shared_ptr<QVSyntax> &reported, const QVMatch *, bool &stop) {
            syntax = reported;
            stop = true;
        });
    return syntax ? syntax : _syntax;
}

NSRange QVParse::rangeOfUTF16CharacterFromSet(const NSCharacterSet &set, NSRange range) const {
    if (range.location >= _text->length())
        return NSNotFoundRange;
    const NSUInteger end = range.location + std::min(range.length, _text->length() - range.location);
    for (NSUInteger location = range.location; location < end; ++location)
        if (set.characterIsMember(_text->characters()[location]))
            return {location, 1};
    return NSNotFoundRange;
}

} // namespace quorvane
