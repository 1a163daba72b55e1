// The loop of a reparse: a stretch of text is parsed, put in beside what stood there, and compared with it.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVReparse.h"

namespace quorvane {

QVReparse::Step QVReparse::runPass() {
    QVAssert(_parent != nullptr, u"Reparsing parent match is nil");
    QVAssert(_plannedLength != 0, u"Reparse range is empty");
    if (_parent == nullptr || _plannedLength == 0)
        return Step::Break;
    if (!parseStretch())
        return Step::Cancel;
    takeEndMatch();
    findLastNewMatch();
    _successEnd = endOfStretch();
    // No match goes on behind its line, so no tree does behind its stretch.
    const bool isInside = _successEnd <= std::min(_string.size(), _start + _plannedLength);
    QVAssert(isInside, u"Successful parse range is invalid: %@ for string length %ld",
             NSRange{_start, _successEnd - _start}, _string.size());
    if (!isInside || !measureExtension())
        return Step::Break;
    if (_parse.isCancelled())
        return Step::Cancel;
    const QVScopeMatch *const oldParent = lastOldParent(oldPosition(_start + _plannedLength) - 1);
    insertTree();
    const bool restStands = restCanStand();
    if (decide(restStands, oldParent))
        return Step::Finish;
    return goOn();
}

bool QVReparse::parseStretch() {
    _tree.clear();
    _endMatch = nullptr;
    enterAncestors();
    // What came to nothing in a shorter stretch may come to something in this one.
    _parse._pass->emptyRegions.clear();
    _parse.parseRecursivelyStartingWithinMatch(_parent, _tree, {_start, _plannedLength}, _insertionIndex);
    leaveAncestors();
    return !_parse.isCancelled();
}

/// The parser is brought to where it would be had it come here from the text's start. The parent itself it
/// enters on its own.
void QVReparse::enterAncestors() {
    QVParsePass &pass = *_parse._pass;
    for (QVScopeMatch *match = _parent->parentMatch(); match != nullptr; match = match->parentMatch()) {
        const QVScope &scope = *match->scope();
        pass.parseStackMatches.push_back(match);
        if (scope.definesSubsyntax())
            pass.subsyntaxAncestors.emplace_back(match);
        if (scope.isTemplateScope())
            pass.isInTemplateScope = true;
    }
    // In the parent's contents template scopes are not tried either.
    if (_parent->scope()->isTemplateScope())
        pass.isInTemplateScope = true;
    std::reverse(pass.parseStackMatches.begin(), pass.parseStackMatches.end());
    std::reverse(pass.subsyntaxAncestors.begin(), pass.subsyntaxAncestors.end());
}

void QVReparse::leaveAncestors() {
    QVParsePass &pass = *_parse._pass;
    pass.parseStackMatches.clear();
    pass.subsyntaxAncestors.clear();
    pass.isInTemplateScope = false;
}

/// An end match at the end of the stretch closes the parent, whose end then stands in the new text already.
void QVReparse::takeEndMatch() {
    if (_tree.empty() || !_tree.back()->isEnd())
        return;
    _endMatch = _tree.back();
    _tree.pop_back();
    _parent->setEndRange(_endMatch->range());
    std::unique_ptr<QVCaptureMatchArray> captures = _endMatch->takeCaptureMatches();
    if (captures)
        for (const auto &capture : *captures)
            capture->setParentMatch(_parent);
    _parent->setEndCaptureMatches(std::move(captures));
    _parent->setSkipForBumping(true);
    _skipped.push_back(_parent);
}

void QVReparse::findLastNewMatch() {
    QVScopeMatch *match = nullptr;
    if (!_tree.empty())
        match = _tree.back().get();
    else if (_endMatch)
        match = _parent;
    while (match != nullptr && match->isStart() && match->endRange().location == NSNotFound &&
           match->lastChild() != nullptr)
        match = match->lastChild();
    _lastNewMatch = match;
}

/// How far the tree of this stretch is good.
NSUInteger QVReparse::endOfStretch() const {
    if (_endMatch)
        return NSMaxRange(_endMatch->range());
    const NSUInteger plannedEnd = _start + _plannedLength;
    const QVScopeMatch *const last = _lastNewMatch;
    if (_parent->scope()->usesAnchoredSubscopeMatching()) {
        NSRange range = last ? last->fullRange() : _parent->range();
        if (last == nullptr && _insertionIndex > 0)
            range = _parent->submatches()[_insertionIndex - 1]->fullRange();
        // The line ending without a place behind a line that is too long, with which the text ends.
        if (range.location == NSNotFound)
            return plannedEnd;
        return std::max(_start, NSMaxRange(range));
    }
    if (last == nullptr)
        return plannedEnd;
    const NSRange range = last->isStart() ? last->endRange() : last->range();
    return range.location == NSNotFound ? plannedEnd : NSMaxRange(range);
}

void QVReparse::markInserted(QVScopeMatch *match) {
    match->setInserted(true);
    _inserted.push_back(match);
    for (QVScopeMatch *const submatch : match->submatches())
        markInserted(submatch);
}

void QVReparse::insertTree() {
    if (_tree.empty())
        return;
    _parent->insertSubmatches(_tree, NSIndexSet::indexSetWithIndexesInRange({_insertionIndex, _tree.size()}));
    for (const QVScopeMatchReference &match : _tree)
        markInserted(match.get());
    if (Level *const level = _parent->isInserted() ? nullptr : levelOfParent(_parent))
        level->end = _insertionIndex + _tree.size();
}

QVScopeMatch *QVReparse::lastNewParent() const {
    const QVMatch *const deepest = _lastNewMatch ? _lastNewMatch->deepestLastChild() : nullptr;
    return deepest ? deepest->parentMatch() : nullptr;
}

/// Whether an end range stands in text that was parsed anew without finding it.
bool QVReparse::isStale(const QVScopeMatch *match) const {
    const NSRange range = match->endRange();
    if (range.location == NSNotFound)
        return false;
    const auto location = static_cast<NSInteger>(range.location);
    const NSInteger oldSuccessEnd = static_cast<NSInteger>(_successEnd) - _delta;
    return location < oldSuccessEnd || (range.length == 0 && location == oldSuccessEnd);
}

void QVReparse::endHere(QVScopeMatch *match) {
    match->setEndRange({_successEnd, 0});
    match->setEndCaptureMatches(nullptr);
    match->setSkipForBumping(true);
    _skipped.push_back(match);
}

bool QVReparse::restCanStand() {
    if (_parent->scope()->usesAnchoredSubscopeMatching() && !_endMatch) {
        // Its sequence stopped here; nothing of the rest is known to fit behind it.
        endHere(_parent);
        return false;
    }
    return !isStale(_parent);
}

/// Whether the reparse is at its end.
bool QVReparse::decide(bool restStands, const QVScopeMatch *lastOldParent) {
    if (_successEnd == _string.size()) {
        reopenAncestors();
        return true;
    }
    const bool stops =
        restStands && lastOldParent == lastNewParent() && _successEnd == _start + _plannedLength;
#ifdef QUORVANE_VERIFY
    // A parent that closed did so before its line ended, and an old match that reaches behind the stretch is
    // a region, in which the old tree would be there.
    QVAssert(!stops || (!_endMatch && _extension == 0), u"The rest of the old tree does not fit at %ld",
             _successEnd);
#endif
    return stops;
}

/// At the text's end, which all regions around it share: where one of them ended before does not count, not
/// even where the old tree was in the same region there, for that may have been its very end. Nor does it
/// count where a sequence ended because nothing more was known to fit: what it holds went on. Only the end
/// that was just found stays.
void QVReparse::reopenAncestors() {
    for (QVScopeMatch *match = _endMatch ? _parent->parentMatch() : _parent; match != _parse.rootMatch();
         match = match->parentMatch()) {
        match->setEndRange(NSNotFoundRange);
        match->setEndCaptureMatches(nullptr);
    }
}

NSUInteger QVReparse::lineEndAt(NSUInteger location) const {
    NSUInteger end = NSNotFound;
    qv_getLineStart(_string, nullptr, &end, nullptr, {location, 0});
    return end == NSNotFound ? _string.size() : end;
}

QVReparse::Step QVReparse::goOn() {
    NSUInteger plannedEnd = _start + _plannedLength;
    const QVScopeMatch *left = nullptr;
    QVScopeMatch *parent = nullptr;
    if (_successEnd < plannedEnd) {
        // The region ended before the stretch did: what is left of it belongs to the region around.
        left = _parent;
        parent = left->parentMatch();
        QVAssert(parent != nullptr, u"Last match's parent match is nil");
        plannedEnd = std::max(plannedEnd, _successEnd + _extension);
    } else {
        left = _lastNewMatch;
        parent = left ? left->parentMatch() : nullptr;
        QVAssert(parent != nullptr, u"Last new match's parent match is nil");
        plannedEnd = lineEndAt(_successEnd + _extension);
    }
    if (parent == nullptr)
        return Step::Break;
    const NSUInteger index = indexBehind(left, parent);
    QVAssert(index != NSNotFound, u"Invalid insertion index");
    if (index == NSNotFound)
        return Step::Break;
    _parent = parent;
    _insertionIndex = index;
    _start = _successEnd;
    _plannedLength = plannedEnd - _successEnd;
    return Step::Continue;
}

/// Where old children stand beside new ones, no search by location would find it.
NSUInteger QVReparse::indexBehind(const QVScopeMatch *match, QVScopeMatch *inParent) {
    if (inParent->lastChild() == match)
        return inParent->submatches().count();
    if (!inParent->isInserted()) {
        const Level *const level = levelOfParent(inParent);
        if (level != nullptr) {
            const NSUInteger index = match->isInserted() ? level->end : level->begin;
            if (index > 0 && inParent->submatches()[index - 1] == match)
                return index;
        }
    }
    const NSUInteger index = inParent->indexOfSubmatch(match);
    return index == NSNotFound ? NSNotFound : index + 1;
}

} // namespace quorvane
