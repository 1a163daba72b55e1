#pragma once

#include "Platform/Foundation/NSString.h"
#include "Quorvane/Matches/QVPositionChunk.h"
#include "Quorvane/Selectors/QVSelectable.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstdint>
#include <vector>

namespace quorvane {

class QVCaptureMatch;
class QVCaptureMatchArray;
class QVMatch;
class QVScopeMatch;

using QVMatchReference = boost::intrusive_ptr<QVMatch>;
using QVScopeMatchReference = boost::intrusive_ptr<QVScopeMatch>;
using QVScopeMatchArray = std::vector<QVScopeMatchReference>;

/// A node of the dynamic tree that says what a document holds: one for each recognised region, down to a run
/// of blanks or a line ending. The static tree's scopes say what made it.
///
/// A document has millions of these, so a node is as small as can be: it is counted inside (by the writer
/// alone, the count is not atomic), comes from the pool of its parse, and its links are plain pointers.
/// Ownership runs downward only. Match trees have no locks: who reads or writes holds the access of their
/// parse, and readers keep no pointer past it.
///
/// Places are stored less what their neighbourhood was moved by (`QVPositionChunk`), and always answered as
/// places in the text.
class QV_EXPORT QVMatch : public QVSelectable {
public:
    /// `{NSNotFound, 0}` after construction, and for nodes without a place.
    NSRange range() const { return _positionChunk->placeOfStored(_range); }
    void setRange(NSRange range) { _range = _positionChunk->storedOfPlace(range); }
    /// A null receiver gives a zero range.
    static inline NSRange directRange(const QVMatch *match) { return match ? match->range() : NSRange{0, 0}; }
    static inline void setDirectRange(QVMatch *match, NSRange range) {
        if (match)
            match->setRange(range);
    }
    /// Where a region's end stands; `{NSNotFound, 0}` where there is none.
    NSRange endRange() const;
    /// From the start of the range to the end of the end range.
    NSRange fullRange() const;

    bool isScopeMatch() const { return _isScopeMatch; }
    /// The same object as a scope match, null for capture matches.
    inline QVScopeMatch *asScopeMatch();
    inline const QVScopeMatch *asScopeMatch() const;

    /// A start of a region that is not yet entered; the end of the enclosing region.
    bool isStart() const { return _start; }
    bool isEnd() const { return _end; }
    /// The scope's or capture's; null where it has none.
    NSString lexicalClass() const;
    /// Null unless the match can have some and has.
    const QVCaptureMatchArray *captureMatches() const;
    const QVCaptureMatchArray *endCaptureMatches() const;
    /// The scope or the capture.
    QVSelectable *matchedOn() const;
    const QVSimpleSelector *selector() const override;

    QVScopeMatch *parentMatch() const { return _parentMatch; }
    void setParentMatch(QVScopeMatch *parent) { _parentMatch = parent; }
    QVMatch *nextSibling() const { return _nextSibling; }
    void setNextSibling(QVMatch *sibling) { _nextSibling = sibling; }
    QVMatch *previousSibling() const { return _previousSibling; }
    void setPreviousSibling(QVMatch *sibling) { _previousSibling = sibling; }

    static inline QVScopeMatch *directParentMatch(const QVMatch *match) {
        return match ? match->_parentMatch : nullptr;
    }
    static inline void setDirectParentMatch(QVMatch *match, QVScopeMatch *parent) {
        if (match)
            match->_parentMatch = parent;
    }
    static inline QVMatch *directNextSibling(const QVMatch *match) {
        return match ? match->_nextSibling : nullptr;
    }
    static inline void setDirectNextSibling(QVMatch *match, QVMatch *sibling) {
        if (match)
            match->_nextSibling = sibling;
    }
    static inline QVMatch *directPreviousSibling(const QVMatch *match) {
        return match ? match->_previousSibling : nullptr;
    }
    static inline void setDirectPreviousSibling(QVMatch *match, QVMatch *sibling) {
        if (match)
            match->_previousSibling = sibling;
    }

    // Navigation in document order; null where there is nothing.

    QVMatch *firstChild() const;
    QVMatch *lastChild() const;
    /// The match itself if it has no children.
    QVMatch *deepestFirstChild() const;
    QVMatch *deepestLastChild() const;
    /// First child, else next sibling, else the next sibling of the nearest ancestor that has one.
    QVMatch *nextMatch() const;
    /// The previous sibling's deepest last child, else the parent.
    QVMatch *previousMatch() const;
    /// `nextMatch`, then down to the bottom.
    QVMatch *nextDeepMatch() const;
    QVMatch *previousDeepMatch() const;
    /// As `nextMatch`, never a child.
    QVMatch *nextShallowMatch() const;
    /// The previous sibling, else the parent.
    QVMatch *previousShallowMatch() const;
    /// All descendants in document order; skip passes over a match's own descendants. A null block is a
    /// programming error.
    void enumerateSubtreeUsingBlock(QVBlock<void(QVMatch *match, bool &stop, bool &skip)> block) const;

    QVSelectable *parentSelectable() const override;
    /// `nextShallowMatch`.
    QVSelectable *nextSelectable() const override;
    bool offersSelectableChildren() const override { return true; }
    void enumerateSelectableChildrenUsingBlock(
        QVBlock<void(QVSelectable *child, bool &stop)> block) const override;

    bool isEqual(const QVMatch *other) const { return this == other; }
    std::size_t hash() const { return std::hash<const void *>()(this); }
    /// "<%@: %p : %@, range=%@, parent=%@>", for regions with the end range behind.
    NSString description() const;

    QVMatch(const QVMatch &) = delete;
    QVMatch &operator=(const QVMatch &) = delete;

    // For `boost::intrusive_ptr` alone.
    void retain() { ++_retainCount; }
    void release() {
        if (--_retainCount == 0)
            destroy(this);
    }

    // For the tree's positions alone: the chunk that the place is stored in, and a change of it together with
    // what is stored.
    QVPositionChunk *positionChunk() const { return _positionChunk; }
    void moveStoredPlace(QVPositionChunk *toChunk, NSUInteger byDifference) {
        if (_range.location != NSNotFound)
            _range.location += byDifference;
        _positionChunk = toChunk;
    }

protected:
    explicit QVMatch(bool isScopeMatch) : _isScopeMatch(isScopeMatch) {}
    ~QVMatch() = default;

    /// As stored: see `_positionChunk`.
    NSRange _range = NSNotFoundRange;
    /// A capture's is that of the place it belongs to.
    QVPositionChunk *_positionChunk = &QVPositionChunk::absolute;
    QVScopeMatch *_parentMatch = nullptr;
    QVMatch *_nextSibling = nullptr;
    QVMatch *_previousSibling = nullptr;
    std::uint32_t _retainCount = 0;
    // All of these share one word.
    std::uint32_t _hasCaptures : 1 = 0;
    std::uint32_t _hasSubmatches : 1 = 0;
    std::uint32_t _hasSymbol : 1 = 0;
    std::uint32_t _start : 1 = 0;
    std::uint32_t _end : 1 = 0;
    /// Marks of the incremental reparse.
    std::uint32_t _skipForBumping : 1 = 0;
    std::uint32_t _inserted : 1 = 0;
    std::uint32_t _hasAssociation : 1 = 0;
    const std::uint32_t _isScopeMatch : 1;
    std::uint32_t _anchoredMatchIdx : 23 = noAnchoredMatchIdx;
    static constexpr std::uint32_t noAnchoredMatchIdx = (1u << 23) - 1;

private:
    static void destroy(QVMatch *match);
};

inline void intrusive_ptr_add_ref(QVMatch *match) { match->retain(); }
inline void intrusive_ptr_release(QVMatch *match) { match->release(); }

} // namespace quorvane
