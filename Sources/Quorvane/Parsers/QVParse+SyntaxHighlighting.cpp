// How a stretch of the match tree becomes text attributes.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVAttributeCache.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Symbols/QVLexicalClass.h"

#include <boost/container/small_vector.hpp>

namespace quorvane {

namespace {

/// One walk's constant things.
struct AttributeWalk {
    NSUInteger length;
    NSRange range;
    QVAttributeCache &cache;
    QVAttributesBlock block;
    /// What ends at or before the first place, or starts at or behind the other, has nothing in the range,
    /// its captures included.
    NSUInteger reachStart = 0;
    NSUInteger reachEnd = NSNotFound;

    bool isInReach(const QVMatch *match) const {
        return reachEnd >= length || match->range().location < reachEnd;
    }
    /// The first child that can have something in the range; null where none has. Children follow each other
    /// without overlaps.
    const QVScopeMatch *firstChildInReach(const QVScopeMatch *match) const {
        const QVScopeMatch *const first = QVScopeMatch::directFirstChild(match);
        if (first == nullptr || !isInReach(first))
            return nullptr;
        if (reachStart == 0 || first->range().location >= reachStart)
            return first;
        // The last one that starts at or before: all others have ended by then.
        const QVSubmatches children = match->submatches();
        NSUInteger low = 0;
        NSUInteger high = children.count();
        while (high - low > 1) {
            const NSUInteger middle = low + (high - low) / 2;
            (children[middle]->range().location <= reachStart ? low : high) = middle;
        }
        return children[low];
    }
    const QVScopeMatch *nextSiblingInReach(const QVScopeMatch *match) const {
        const QVMatch *const next = match->nextSibling();
        return next != nullptr && isInReach(next) ? next->asScopeMatch() : nullptr;
    }

    /// False when the block ends the walk.
    bool report(const NSAttributes &attributes, NSRange extent, const std::shared_ptr<QVSyntax> &syntax,
                std::uint64_t flags) const {
        const NSRange piece = NSIntersectionRange(extent, range);
        if (piece.length == 0)
            return true;
        bool stop = false;
        block(attributes, piece, syntax, flags, stop);
        return !stop;
    }

    bool reportCaptures(const QVCaptureMatchArray &captures, const std::shared_ptr<QVSyntax> &syntax) const {
        for (const auto &capture : captures)
            if (const NSAttributes *const attributes = cache.attributesForCapture(capture->capture()))
                if (!report(*attributes, capture->fullRange(), syntax, QVAttributeFlagsAdd))
                    return false;
        return true;
    }

    bool reportMatch(const QVScopeMatch *match, const QVScope *scope, bool captures,
                     const std::shared_ptr<QVSyntax> &syntax) const {
        return reportMatch(match, scope, cache.attributesForScope(scope), captures, syntax);
    }
    /// Null where the match itself has nothing to say.
    bool reportMatch(const QVScopeMatch *match, const QVScope *scope, const NSAttributes *attributes,
                     bool captures, const std::shared_ptr<QVSyntax> &syntax) const {
        if (scope->shouldResetStyleAttributes()) {
            if (!report(attributes ? *attributes : NSAttributes(), match->fullRange(), syntax,
                        QVAttributeFlagsReset))
                return false;
        } else if (attributes && !report(*attributes, match->fullRange(), syntax, QVAttributeFlagsAdd)) {
            return false;
        }
        if (captures && match->hasCaptures())
            if (const QVCaptureMatchArray *const matches = match->captureMatches())
                if (!reportCaptures(*matches, syntax))
                    return false;
        if (captures && match->hasSubmatches())
            if (const QVCaptureMatchArray *const matches = match->endCaptureMatches())
                if (!reportCaptures(*matches, syntax))
                    return false;
        if (scope->definesSubsyntax() && !cache.defaultAttributes().empty()) {
            const NSUInteger start = NSMaxRange(match->range());
            const NSUInteger endLocation = match->endRange().location;
            const NSUInteger end = endLocation == NSNotFound ? length : endLocation;
            if (end > start && !report(cache.defaultAttributes(), {start, end - start}, match->subsyntax(),
                                       QVAttributeFlagsRegionDefault))
                return false;
        }
        return true;
    }

    /// A stack of the embedded languages between the top match and the present one. Trees are at most a
    /// hundred deep, but one loop is faster than calls. The region around all of a file begins or ends in
    /// many a range, so what is far from the range is passed over.
    bool reportTree(const QVScopeMatch *top, bool captures,
                    const std::shared_ptr<QVSyntax> &topSyntax) const {
        struct Embedding {
            const QVScopeMatch *match;
            std::shared_ptr<QVSyntax> syntax;
        };
        boost::container::small_vector<Embedding, 4> embeddings;
        const std::shared_ptr<QVSyntax> *syntax = &topSyntax;
        const QVScopeMatch *match = top;
        while (match != nullptr) {
            const QVScope *const scope = match->scope();
            const QVScopeType type = scope->type();
            if (type != QVScopeTypeUnknown && type != QVScopeTypeWhitespace && type != QVScopeTypeNewline) {
                if (!reportMatch(match, scope, captures, *syntax))
                    return false;
                if (const QVScopeMatch *const child = firstChildInReach(match)) {
                    if (scope->definesSubsyntax()) {
                        if (auto subsyntax = match->subsyntax()) {
                            embeddings.push_back({match, std::move(subsyntax)});
                            syntax = &embeddings.back().syntax;
                        }
                    }
                    match = child;
                    continue;
                }
            }
            const QVScopeMatch *next = nullptr;
            while (match != top && (next = nextSiblingInReach(match)) == nullptr) {
                match = match->parentMatch();
                if (!embeddings.empty() && embeddings.back().match == match) {
                    embeddings.pop_back();
                    syntax = embeddings.empty() ? &topSyntax : &embeddings.back().syntax;
                }
            }
            match = next;
        }
        return true;
    }
};

/// The range with an end that can be counted.
NSRange countableRange(NSRange range) {
    if (range.location > NSNotFound)
        return NSNotFoundRange;
    return {range.location, std::min(range.length, NSNotFound - range.location)};
}

} // namespace

bool QVParseEnumerateAttributesForMatchUsingBlock(const QVParse &parse,
                                                  const std::shared_ptr<QVSyntax> &syntax, NSRange range,
                                                  const QVScopeMatch *match, const QVScope *scope,
                                                  bool captures, QVAttributeCache &scratch,
                                                  QVAttributesBlock block) {
    const AttributeWalk walk{parse.string().size(), countableRange(range), scratch, block};
    if (match->scope() == scope)
        return walk.reportMatch(match, scope, captures, syntax);
    // The style is the match's own, whatever the scope that it is to be reported as.
    NSMutableAttributes mixed;
    if (scope->lexicalClass())
        mixed.set(QVLexicalClassAttributeName, scope->lexicalClass());
    QVParseResolveStyleAttributesForMatch(match, mixed, scratch.defaultAttributes());
    const NSAttributes attributes = mixed.attributes();
    return walk.reportMatch(match, scope, attributes.empty() ? nullptr : &attributes, captures, syntax);
}

bool QVParseEnumerateAttributesForMatchTreeUsingBlock(const QVParse &parse,
                                                      const std::shared_ptr<QVSyntax> &syntax, NSRange range,
                                                      const QVScopeMatch *match, bool captures,
                                                      QVAttributeCache &scratch, QVAttributesBlock block) {
    return AttributeWalk{parse.string().size(), countableRange(range), scratch, block}.reportTree(
        match, captures, syntax);
}

const std::set<NSAttributeKey> &QVParse::attributesAffectedBySyntaxHighlighting() {
    static const auto *const keys = new std::set<NSAttributeKey>{
        NSFontAttributeName,           NSForegroundColorAttributeName,   NSBackgroundColorAttributeName,
        NSUnderlineStyleAttributeName, NSUnderlineColorAttributeName,    NSStrikethroughStyleAttributeName,
        NSShadowAttributeName,         NSStrikethroughColorAttributeName};
    return *keys;
}

std::unique_ptr<QVAttributeCache> QVParse::takeAttributeCache(const NSAttributes &defaultAttributes) const {
    std::unique_ptr<QVAttributeCache> cache;
    {
        const std::lock_guard guard(_attributeCacheMutex);
        cache.swap(_attributeCache);
    }
    if (!cache || !cache->isCurrent() || cache->defaultAttributes() != defaultAttributes)
        cache = std::make_unique<QVAttributeCache>(defaultAttributes);
    return cache;
}

void QVParse::keepAttributeCache(std::unique_ptr<QVAttributeCache> cache) const {
    const std::lock_guard guard(_attributeCacheMutex);
    // Swapped, so that another walk's is freed outside of the lock.
    _attributeCache.swap(cache);
}

void QVParse::enumerateAttributesInRange(NSRange range, const NSAttributes &defaultAttributes,
                                         QVAttributesBlock usingBlock) const {
    enumerateAttributesStartingWithMatch(fastMatchAtLocation(range.location, _rootMatch->submatches()), range,
                                         defaultAttributes, usingBlock);
}

void QVParse::enumerateAttributesStartingWithMatch(const QVScopeMatch *match, NSRange range,
                                                   const NSAttributes &defaultAttributes,
                                                   QVAttributesBlock usingBlock) const {
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    if (!usingBlock || match == nullptr)
        return;
    range = countableRange(range);
    // Readers run side by side: the parse's cache is out while one of them has it, and others make their own.
    std::unique_ptr<QVAttributeCache> cache = takeAttributeCache(defaultAttributes);
    AttributeWalk walk{_text->length(), range, *cache, usingBlock};
    // A line ending without a place says nothing of where its siblings are.
    if (!_pass->hasMatchWithoutPlace) {
        walk.reachStart = range.location - std::min(range.location, _captureReach);
        walk.reachEnd = NSMaxRange(range) + std::min(_captureReach, NSNotFound - NSMaxRange(range));
    }

    // Regions that began before the range come first.
    boost::container::small_vector<const QVScopeMatch *, 16> ancestors;
    for (const QVScopeMatch *parent = match->parentMatch(); parent; parent = parent->parentMatch())
        ancestors.push_back(parent);
    std::shared_ptr<QVSyntax> syntax = _syntax;
    for (auto ancestor = ancestors.rbegin(); ancestor != ancestors.rend(); ++ancestor) {
        const QVScope *const scope = (*ancestor)->scope();
        if (!walk.reportMatch(*ancestor, scope, false, syntax))
            break;
        if (scope->definesSubsyntax()) {
            syntax = (*ancestor)->subsyntax();
            if (!syntax)
                syntax = _syntax;
        }
    }

    syntax = syntaxForMatch(match, NSNotFound);
    while (walk.reportTree(match, true, syntax)) {
        if (const QVMatch *const next = match->nextSibling()) {
            if (!NSLocationInRange(next->range().location, range))
                break;
            match = next->asScopeMatch();
            continue;
        }
        // A region that ends in the range is reported once more, for the captures of its end.
        match = match->parentMatch();
        if (match == nullptr)
            break;
        const NSUInteger end = match->endRange().location;
        if (!NSLocationInRange(end, range) && end != range.location)
            break;
        syntax = syntaxForMatch(match, NSNotFound);
    }
    keepAttributeCache(std::move(cache));
}

} // namespace quorvane
