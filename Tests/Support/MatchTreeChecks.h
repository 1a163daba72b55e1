#pragma once

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParse.h"

#include <string>

/// What must hold of every match tree, whatever the grammar and the text, for tests and fuzz targets that
/// have no expected tree at hand.
namespace quorvane::test {

/// Walks a tree and keeps the first thing that is wrong.
class MatchTreeChecker {
public:
    explicit MatchTreeChecker(const QVParse &parse) : _parse(parse) {}

    /// Empty where all is well.
    std::string firstProblem() {
        const QVScopeMatch &root = *_parse.rootMatch();
        if (root.parentMatch() != nullptr)
            fail(root, "the root has a parent");
        checkChildren(root, 0, _parse.string().size(), _parse.string().size());
        return _problem;
    }

private:
    void fail(const QVMatch &match, const char *what) {
        if (_problem.empty())
            _problem = std::string(what) + ": " + match.description().UTF8String();
    }

    void checkPlace(const QVMatch &match, NSRange range) {
        if (range.location > _parse.string().size() || range.length > _parse.string().size() - range.location)
            fail(match, "a range leaves the text");
    }

    void checkCaptures(const QVScopeMatch &match, const QVCaptureMatchArray *captures) {
        if (captures == nullptr)
            return;
        if (captures->empty())
            fail(match, "a list of captures is there and empty");
        for (const auto &capture : *captures) {
            checkPlace(*capture, capture->range());
            if (capture->parentMatch() != &match)
                fail(match, "a capture belongs to another match");
        }
    }

    /// A scope's children cover its content without gaps and without overlaps. The last one may reach into
    /// the end, where it began before the end and the end reaches over it.
    void checkChildren(const QVScopeMatch &match, NSUInteger start, NSUInteger endStart, NSUInteger endEnd) {
        const QVSubmatches children = match.submatches();
        const QVMatch *previous = nullptr;
        NSUInteger position = start;
        bool isPlaceless = false;
        // In an anchored region a pattern may move its match's start, and nothing fills what it skips.
        const bool mayHaveGaps = match.scope()->usesAnchoredSubscopeMatching();
        for (QVScopeMatch *const child : children) {
            if (child->parentMatch() != &match || child->previousSibling() != previous ||
                (previous != nullptr && previous->nextSibling() != child))
                fail(*child, "a match is linked to the wrong ones");
            previous = child;
            checkMatch(*child);
            // A line that is too long for an anchored region is followed by a line ending without a place
            // where the text ends; the region then covers its start alone.
            if (child->range().location == NSNotFound) {
                isPlaceless = true;
                continue;
            }
            if (!isPlaceless && child->range().location < position)
                fail(*child, "matches overlap");
            if (!mayHaveGaps && !isPlaceless && child->range().location > position)
                fail(*child, "there is a gap");
            position = NSMaxRange(child->fullRange());
        }
        if (previous != nullptr && previous->nextSibling() != nullptr)
            fail(match, "the last child has a sibling");
        if (match.firstChild() != (children.isEmpty() ? nullptr : children[0]) ||
            match.lastChild() != (children.isEmpty() ? nullptr : children[children.count() - 1]))
            fail(match, "the first or last child is another one");
        if (!isPlaceless && ((!mayHaveGaps && position < endStart) || position > endEnd))
            fail(match, "the children do not reach from the start to the end");
    }

    void checkMatch(const QVScopeMatch &match) {
        if (match.isEnd())
            fail(match, "an end marker stayed in the tree");
        if (match.range().location == NSNotFound) {
            if (match.scope()->type() != QVScopeTypeNewline || match.range().length != 0)
                fail(match, "a match has no place");
            return;
        }
        checkPlace(match, match.range());
        checkCaptures(match, match.captureMatches());
        checkCaptures(match, match.endCaptureMatches());
        if (match.scope()->type() != QVScopeTypeStartEnd) {
            if (match.range().length == 0)
                fail(match, "a match covers nothing");
            if (match.submatches())
                fail(match, "a leaf has children");
            return;
        }
        const NSRange end = match.endRange();
        if (end.location == NSNotFound) {
            fail(match, "a region has no end");
            return;
        }
        checkPlace(match, end);
        if (end.location < NSMaxRange(match.range()))
            fail(match, "an end lies before its start");
        if (match.fullRange().length == 0)
            fail(match, "a region covers nothing");
        checkChildren(match, NSMaxRange(match.range()), end.location, NSMaxRange(end));
    }

    const QVParse &_parse;
    std::string _problem;
};

/// What is wrong with the tree, empty where nothing is. With read access, of a parse that was not cancelled.
inline std::string problemInMatchTree(const QVParse &parse) { return MatchTreeChecker(parse).firstProblem(); }

} // namespace quorvane::test
