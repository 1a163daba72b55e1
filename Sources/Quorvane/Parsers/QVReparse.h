#pragma once

#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVSymbolRelations.h"

namespace quorvane {

/// One edit's reparse: the new text is parsed from one line before the edit on, under the match that encloses
/// that place, and the new nodes are put in beside the old ones. For a while both stand in one tree, old
/// nodes still at the places they had before the edit. Behind each stretch old and new are compared: where
/// they meet again the rest of the tree stands as it is, else parsing goes on further along or a level
/// higher. Then the old nodes of the region go, and what lies behind it moves by the change of length.
///
/// A value for the time of one call of `replaceCharactersInRange`, private to the parse.
class QVReparse {
public:
    enum class Outcome {
        Finished,
        /// The tree is half old, half new; it is about to be thrown away.
        Cancelled,
        /// An assertion failed and its handler went on: only a whole parse helps.
        Broken,
    };

    /// The text is edited already; the tree has something in it.
    QVReparse(QVParse &parse, NSRange editRange, NSUInteger editLength);

    Outcome run();
    /// The range of the new text whose tree was rebuilt.
    NSRange result() const { return {_firstLocation, _successEnd - _firstLocation}; }

private:
    /// An ancestor that had its own children before the edit, up from the first parent: its new children
    /// stand together from `begin` to `end`, what follows is old. Above, the tree is untouched.
    struct Level {
        QVScopeMatch *parent;
        NSUInteger begin;
        NSUInteger end;
    };
    /// A match of the mixed tree.
    struct Found {
        enum Kind : std::uint8_t { Nothing, Old, Ancestor };
        QVScopeMatch *match = nullptr;
        Kind kind = Nothing;
        /// For ancestors.
        std::size_t level = 0;
    };
    /// How far old matches reach that begin before some place, remembered as that place moves on.
    struct Reach {
        bool isValid = false;
        QVScopeMatch *next = nullptr;
        NSInteger before = 0;
        NSInteger furthest = 0;
    };
    enum class Step { Continue, Finish, Cancel, Break };

    // Where to start
    bool chooseStart();
    void noteTouchedSymbols();

    // The loop
    Step runPass();
    bool parseStretch();
    void enterAncestors();
    void leaveAncestors();
    void takeEndMatch();
    void findLastNewMatch();
    NSUInteger endOfStretch() const;
    void insertTree();
    void markInserted(QVScopeMatch *match);
    QVScopeMatch *lastNewParent() const;
    bool restCanStand();
    void endHere(QVScopeMatch *match);
    bool isStale(const QVScopeMatch *match) const;
    bool decide(bool restStands, const QVScopeMatch *lastOldParent);
    void reopenAncestors();
    Step goOn();
    NSUInteger indexBehind(const QVScopeMatch *match, QVScopeMatch *inParent);
    NSUInteger lineEndAt(NSUInteger location) const;

    // The old tree beside the new one
    bool measureExtension();
    NSInteger furthestOldEnd(const Found &from, NSInteger oldEnd);
    NSInteger furthestOldEndBehindFirstMatch(NSInteger oldEnd);
    void walkOldMatches(QVScopeMatch *&match, NSInteger oldEnd, NSInteger &furthest);
    QVScopeMatch *nextOldMatch(const QVScopeMatch *match);
    QVScopeMatch *oldMatchBehindLevel(std::size_t level);
    QVScopeMatch *lastOldParent(NSInteger oldLocation);
    Level *levelAt(std::size_t index);
    Level *levelOfParent(const QVScopeMatch *parent);
    Found matchAtLocation(NSInteger location);
    Found searchFromFirstMatch(NSUInteger location);
    void checkAgainstWalk(const Found &found, NSInteger location) const;
    NSInteger oldPosition(NSUInteger position) const;
    NSInteger newPosition(NSInteger oldPosition) const;

    // Finishing
    void finish();
    QVScopeMatch *firstOldMatch();
    bool isReplaced(const QVMatch *match) const;
    void removeOldMatches();
    void noteCapturingSymbols();
    void noteSymbol(const QVScopeMatch *match, NSIndexSet &indexes);
    void removeSymbols(const NSIndexSet &indexes);
    NSUInteger indexOfOldMatch(const QVScopeMatch *match);
    void endOpenRegionsAtTextEnd();

    QVParse &_parse;
    const NSRange _editRange;
    const NSUInteger _editLength;
    const NSInteger _delta;
    const std::u16string_view _string;

    NSUInteger _firstLocation = 0;
    QVScopeMatch *_firstMatch = nullptr;
    std::vector<Level> _levels;
    /// The first match is part of the work.
    bool _replacesFirstMatch = false;

    // The stretch at work
    QVScopeMatch *_parent = nullptr;
    NSUInteger _insertionIndex = 0;
    NSUInteger _start = 0;
    NSUInteger _plannedLength = 0;
    QVScopeMatchArray _tree;
    /// The end match that closed the parent.
    QVScopeMatchReference _endMatch;
    QVScopeMatch *_lastNewMatch = nullptr;
    NSUInteger _successEnd = 0;
    NSUInteger _extension = 0;

    Reach _reach;
    int _checkedSearches = 0;
    std::vector<QVScopeMatch *> _inserted;
    std::vector<QVScopeMatch *> _skipped;
    QVSymbolEdit _symbolEdit;
};

} // namespace quorvane
