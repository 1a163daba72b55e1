#include "Quorvane/Matches/QVMatch.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/Scopes/QVCapture.h"

namespace quorvane {

void QVMatch::destroy(QVMatch *match) {
    QVMatchPool &pool = QVMatchPool::poolOf(match);
    if (QVScopeMatch *const scopeMatch = match->asScopeMatch()) {
        const std::size_t bytes = scopeMatch->bytes();
        scopeMatch->~QVScopeMatch();
        pool.deallocate(scopeMatch, bytes);
    } else {
        auto *const captureMatch = static_cast<QVCaptureMatch *>(match);
        captureMatch->~QVCaptureMatch();
        pool.deallocate(captureMatch, sizeof(QVCaptureMatch));
    }
}

NSRange QVMatch::endRange() const {
    const QVScopeMatch *const match = asScopeMatch();
    return match ? match->endRange() : NSNotFoundRange;
}

NSRange QVMatch::fullRange() const {
    const NSRange start = range();
    const NSRange end = endRange();
    return end.location == NSNotFound ? start : NSRange{start.location, NSMaxRange(end) - start.location};
}

NSString QVMatch::lexicalClass() const {
    if (const QVScopeMatch *const match = asScopeMatch())
        return match->scope()->lexicalClass();
    return static_cast<const QVCaptureMatch *>(this)->capture()->lexicalClass();
}

const QVCaptureMatchArray *QVMatch::captureMatches() const {
    const QVScopeMatch *const match = asScopeMatch();
    return match ? match->captureMatches() : nullptr;
}

const QVCaptureMatchArray *QVMatch::endCaptureMatches() const {
    const QVScopeMatch *const match = asScopeMatch();
    return match ? match->endCaptureMatches() : nullptr;
}

QVSelectable *QVMatch::matchedOn() const {
    // Scopes and captures are never changed through the tree's links; selectables are only walked.
    if (const QVScopeMatch *const match = asScopeMatch())
        return const_cast<QVScope *>(match->scope());
    return const_cast<QVCapture *>(static_cast<const QVCaptureMatch *>(this)->capture());
}

const QVSimpleSelector *QVMatch::selector() const {
    if (const QVScopeMatch *const match = asScopeMatch())
        return match->scope()->selector();
    return static_cast<const QVCaptureMatch *>(this)->capture()->selector();
}

QVMatch *QVMatch::firstChild() const { return QVScopeMatch::directFirstChild(asScopeMatch()); }
QVMatch *QVMatch::lastChild() const { return QVScopeMatch::directLastChild(asScopeMatch()); }

QVMatch *QVMatch::deepestFirstChild() const {
    auto *match = const_cast<QVMatch *>(this);
    while (QVMatch *const child = match->firstChild())
        match = child;
    return match;
}

QVMatch *QVMatch::deepestLastChild() const {
    auto *match = const_cast<QVMatch *>(this);
    while (QVMatch *const child = match->lastChild())
        match = child;
    return match;
}

QVMatch *QVMatch::nextShallowMatch() const {
    for (const QVMatch *match = this; match != nullptr; match = match->_parentMatch)
        if (match->_nextSibling != nullptr)
            return match->_nextSibling;
    return nullptr;
}

QVMatch *QVMatch::previousShallowMatch() const {
    return _previousSibling != nullptr ? _previousSibling : static_cast<QVMatch *>(_parentMatch);
}

QVMatch *QVMatch::nextMatch() const {
    QVMatch *const child = firstChild();
    return child != nullptr ? child : nextShallowMatch();
}

QVMatch *QVMatch::previousMatch() const {
    return _previousSibling != nullptr ? _previousSibling->deepestLastChild()
                                       : static_cast<QVMatch *>(_parentMatch);
}

QVMatch *QVMatch::nextDeepMatch() const {
    const QVMatch *const next = nextMatch();
    return next != nullptr ? next->deepestFirstChild() : nullptr;
}

QVMatch *QVMatch::previousDeepMatch() const {
    const QVMatch *const previous = previousMatch();
    return previous != nullptr ? previous->deepestLastChild() : nullptr;
}

void QVMatch::enumerateSubtreeUsingBlock(QVBlock<void(QVMatch *match, bool &stop, bool &skip)> block) const {
    QVParameterAssert(static_cast<bool>(block), "block != nil");
    const QVMatch *const end = nextShallowMatch();
    bool stop = false;
    for (QVMatch *match = nextMatch(); block && match != end && !stop;) {
        bool skip = false;
        block(match, stop, skip);
        match = skip ? match->nextShallowMatch() : match->nextMatch();
    }
}

QVSelectable *QVMatch::parentSelectable() const { return _parentMatch; }
QVSelectable *QVMatch::nextSelectable() const { return nextShallowMatch(); }

void QVMatch::enumerateSelectableChildrenUsingBlock(
    QVBlock<void(QVSelectable *child, bool &stop)> block) const {
    const QVScopeMatch *const match = asScopeMatch();
    if (match == nullptr)
        return;
    bool stop = false;
    const auto enumerateCaptures = [&](const QVCaptureMatchArray *captures) {
        for (std::size_t index = 0; captures != nullptr && index < captures->size() && !stop; ++index)
            block((*captures)[index].get(), stop);
    };
    enumerateCaptures(match->captureMatches());
    for (QVScopeMatch *const submatch : match->submatches()) {
        if (stop)
            return;
        block(submatch, stop);
    }
    enumerateCaptures(match->endCaptureMatches());
}

NSString QVMatch::description() const {
    const QVScopeMatch *const match = asScopeMatch();
    const NSString name =
        match ? match->scope()->name() : static_cast<const QVCaptureMatch *>(this)->capture()->name();
    const NSString className = match ? u"QVScopeMatch" : u"QVCaptureMatch";
    const auto *const self = static_cast<const void *>(this);
    const NSString parent = _parentMatch ? _parentMatch->scope()->name() : NSString();
    if (match && match->scope()->type() == QVScopeTypeStartEnd)
        return NSString::stringWithFormat(u"<%@: %p : %@, range=%@, parent=%@, endRange=%@>", className, self,
                                          name, range(), parent, match->endRange());
    return NSString::stringWithFormat(u"<%@: %p : %@, range=%@, parent=%@>", className, self, name, range(),
                                      parent);
}

} // namespace quorvane
