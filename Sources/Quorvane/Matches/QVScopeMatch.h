#pragma once

#include "Quorvane/Matches/QVCaptureMatchArray.h"
#include "Quorvane/Matches/QVSubmatches.h"

namespace quorvane {

class QVParseSymbol;
class QVScope;

/// The record of what only some matches need, behind the match in its piece of memory. Three sizes, chosen
/// once when a match is made: captures alone; a region's fields too; a symbol too. A plain match has none.
struct QVScopeMatchStorage {
    std::unique_ptr<QVCaptureMatchArray> captureMatches;
};
struct QVScopeMatchRegionStorage : QVScopeMatchStorage {
    /// As stored in its own chunk, for an end stands far from its start.
    NSRange endRange = NSNotFoundRange;
    QVPositionChunk *endChunk = &QVPositionChunk::absolute;
    QVSubmatchStore submatches;
    QVScopeMatch *firstChild = nullptr;
    QVScopeMatch *lastChild = nullptr;
    std::unique_ptr<QVCaptureMatchArray> endCaptureMatches;
};
struct QVScopeMatchSymbolStorage : QVScopeMatchRegionStorage {
    QVParseSymbol *symbol = nullptr;
};

/// A match of a scope: a leaf, or a region with children between its start and its end. The scope must
/// outlive it.
class QV_EXPORT QVScopeMatch final : public QVMatch {
public:
    static QVScopeMatchReference initWithScope(const QVScope *scope,
                                               QVMatchPool &pool = QVMatchPool::sharedPool());
    /// With its place, as the parser makes them.
    static QVScopeMatchReference matchWithScope(const QVScope *scope, NSRange range, QVMatchPool &pool);
    /// Of a scope that is no container's and has neither captures nor a symbol, as most matches are.
    static QVScopeMatchReference plainWithScope(const QVScope *scope, NSRange range, QVMatchPool &pool);
    /// The end of a region of the scope, or of one around it: never a container, for it hands its place and
    /// captures to the region.
    static QVScopeMatchReference endWithScope(const QVScope *scope, NSRange range, QVMatchPool &pool);
    /// Throws: a match has a scope.
    [[noreturn]] static QVScopeMatchReference init();

    const QVScope *scope() const { return _scope; }

    /// Whether it can hold capture matches, be a container, point to a symbol.
    bool hasCaptures() const { return _hasCaptures; }
    bool hasSubmatches() const { return _hasSubmatches; }
    bool hasSymbol() const { return _hasSymbol; }

    /// `{NSNotFound, 0}` where there is none, always so for matches that are no containers.
    static inline NSRange directEndRange(const QVScopeMatch *match) {
        if (match == nullptr || !match->_hasSubmatches)
            return NSNotFoundRange;
        const QVScopeMatchRegionStorage *const storage = match->regionStorage();
        return storage->endChunk->placeOfStored(storage->endRange);
    }
    NSRange endRange() const { return directEndRange(this); }
    /// Asserts that the match is a container and that the end does not lie before the range's end.
    static void setDirectEndRange(QVScopeMatch *match, NSRange endRange);
    void setEndRange(NSRange endRange) { setDirectEndRange(this, endRange); }

    void setStart(bool start) { _start = start; }
    void setEnd(bool end) { _end = end; }
    bool skipForBumping() const { return _skipForBumping; }
    void setSkipForBumping(bool skip);
    bool isInserted() const { return _inserted; }
    void setInserted(bool inserted) { _inserted = inserted; }
    /// The place in the enclosing anchored sequence at which this match was made, else `NSNotFound`.
    NSUInteger anchoredMatchIdx() const {
        return _anchoredMatchIdx == noAnchoredMatchIdx ? NSNotFound : _anchoredMatchIdx;
    }
    void setAnchoredMatchIdx(NSUInteger index) {
        _anchoredMatchIdx = index >= noAnchoredMatchIdx
                                ? noAnchoredMatchIdx
                                : static_cast<std::uint32_t>(index) & noAnchoredMatchIdx;
    }

    /// Null where there are none. Setting asserts that the match can hold them, unless nothing is set.
    const QVCaptureMatchArray *captureMatches() const {
        return hasStorage() ? storage()->captureMatches.get() : nullptr;
    }
    void setCaptureMatches(std::unique_ptr<QVCaptureMatchArray> captureMatches);
    const QVCaptureMatchArray *endCaptureMatches() const {
        return _hasSubmatches ? regionStorage()->endCaptureMatches.get() : nullptr;
    }
    void setEndCaptureMatches(std::unique_ptr<QVCaptureMatchArray> captureMatches);
    /// Takes the captures away without releasing them, for handing them to another match.
    std::unique_ptr<QVCaptureMatchArray> takeCaptureMatches();

    /// Null where there is none. The first question after a whole text was parsed has its symbols made.
    QVParseSymbol *symbol() const;
    /// As it stands, without having any made: for those who make symbols and take them away.
    QVParseSymbol *linkedSymbol() const { return _hasSymbol ? symbolStorage()->symbol : nullptr; }
    void setSymbol(QVParseSymbol *symbol);

    // Children

    QVScopeMatch *firstChild() const { return directFirstChild(this); }
    QVScopeMatch *lastChild() const { return directLastChild(this); }
    static inline QVScopeMatch *directFirstChild(const QVScopeMatch *match) {
        return match && match->_hasSubmatches ? match->regionStorage()->firstChild : nullptr;
    }
    static inline QVScopeMatch *directLastChild(const QVScopeMatch *match) {
        return match && match->_hasSubmatches ? match->regionStorage()->lastChild : nullptr;
    }
    /// As `nextMatch`.
    static QVScopeMatch *directNextMatch(const QVScopeMatch *match);
    static inline NSUInteger directSubmatchesCount(const QVScopeMatch *match) {
        return match && match->_hasSubmatches ? match->regionStorage()->submatches.count() : 0;
    }
    QVSubmatches submatches() const {
        return _hasSubmatches ? QVSubmatches(regionStorage()->submatches) : QVSubmatches();
    }
    /// The child's index, `NSNotFound` where it is none. Found by its location; while old and new matches
    /// stand side by side, each in its own coordinates, among what is between the two.
    NSUInteger indexOfSubmatch(const QVScopeMatch *match) const;
    /// Replaces the children and links them; null takes them all away. The new ones must not be linked
    /// elsewhere.
    void setSubmatches(std::unique_ptr<QVScopeMatchArray> submatches);
    /// The same for an array that the match takes over.
    void adoptSubmatches(QVScopeMatchArray submatches);
    void insertSubmatch(QVScopeMatchReference submatch, NSUInteger atIndex);
    /// As many matches as indexes; they end up at these indexes.
    void insertSubmatches(const QVScopeMatchArray &submatches, const class NSIndexSet &atIndexes);
    void removeSubmatchAtIndex(NSUInteger index);
    void removeSubmatchesAtIndexes(const class NSIndexSet &indexes);

    /// First capture match, else first end capture match, else `nextMatch`.
    QVMatch *nextMatchIncludingCaptures() const;

    /// What few matches carry: the match of the region's start, kept for end patterns and for syntaxes named
    /// by the text, and the syntax that the region entered.
    std::shared_ptr<QVRegularExpressionResult> textCheckingResult() const;
    void setTextCheckingResult(std::shared_ptr<QVRegularExpressionResult> result);
    std::shared_ptr<QVSyntax> subsyntax() const;
    void setSubsyntax(std::shared_ptr<QVSyntax> syntax);

    /// The bytes that a match of this scope takes, its record included.
    static std::size_t bytesForScope(const QVScope *scope);

private:
    friend class QVMatch;
    friend class QVMatchPositions;

    static inline QVScopeMatchReference make(const QVScope *scope, NSRange range, bool hasCaptures,
                                             bool hasSubmatches, bool hasSymbol, QVMatchPool &pool);
    QVScopeMatch(const QVScope *scope, NSRange range, bool hasCaptures, bool hasSubmatches, bool hasSymbol);
    ~QVScopeMatch();
    std::size_t bytes() const {
        return sizeof(QVScopeMatch) + storageBytes(_hasCaptures, _hasSubmatches, _hasSymbol);
    }
    static std::size_t storageBytes(bool hasCaptures, bool hasSubmatches, bool hasSymbol);

    bool hasStorage() const { return _hasCaptures || _hasSubmatches || _hasSymbol; }
    QVScopeMatchStorage *storage() const {
        return reinterpret_cast<QVScopeMatchStorage *>(const_cast<QVScopeMatch *>(this) + 1);
    }
    QVScopeMatchRegionStorage *regionStorage() const {
        return static_cast<QVScopeMatchRegionStorage *>(storage());
    }
    QVScopeMatchSymbolStorage *symbolStorage() const {
        return static_cast<QVScopeMatchSymbolStorage *>(storage());
    }
    bool canChangeSubmatches() const;
    /// The positions that its children are in; null where they are absolute.
    QVMatchPositions *submatchPositions() const { return regionStorage()->endChunk->group->positions; }
    void releaseSubmatches();
    void destroyStorage();
    static void moveCaptures(const QVCaptureMatchArray *captures, QVPositionChunk *chunk);
    static void abandonCaptures(const QVCaptureMatchArray *captures);
    static void replaceCaptures(std::unique_ptr<QVCaptureMatchArray> &captures,
                                std::unique_ptr<QVCaptureMatchArray> by, QVPositionChunk *chunk);
    void insertRun(const QVScopeMatchReference *first, NSUInteger count, NSUInteger atIndex);
    void removeRuns(const std::vector<NSRange> &runs);
    void takeRun(NSRange run, QVScopeMatchArray &into);

    const QVScope *_scope;
};

inline QVScopeMatch *QVMatch::asScopeMatch() {
    return _isScopeMatch ? static_cast<QVScopeMatch *>(this) : nullptr;
}
inline const QVScopeMatch *QVMatch::asScopeMatch() const {
    return _isScopeMatch ? static_cast<const QVScopeMatch *>(this) : nullptr;
}

} // namespace quorvane
