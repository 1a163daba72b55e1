#pragma once

#include "Platform/Foundation/NSRange.h"
#include "Quorvane/Matches/QVPositionChunk.h"

#include <memory>
#include <vector>

namespace quorvane {

class QVMatch;
class QVScopeMatch;

/// The places of one tree's matches, so kept that all that stand behind a match are moved at a cost that
/// hardly depends on how many they are. Private to the trees and the parse.
///
/// The tree's places in document order (each match's start with its captures, each region's end with its end
/// captures, behind those of its children) are cut into chunks of neighbours, the chunks into groups. A place
/// is stored less what its chunk and group were moved by. Accessors of matches undo that; reading writes
/// nothing. Matches outside of a tree with positions are absolute: they come into chunks as they are
/// inserted, and leave them as they are removed. The root has no place in the order.
class QVMatchPositions {
public:
    /// Places of a chunk that is made anew, and chunks of a group: twice as many are cut in two, neighbours
    /// that have no more together are joined.
#if defined(QUORVANE_VERIFY)
    // Small, so that short texts have many.
    static constexpr std::uint32_t usualChunkSize = 6;
    static constexpr std::uint32_t usualGroupSize = 4;
#else
    static constexpr std::uint32_t usualChunkSize = 64;
    static constexpr std::uint32_t usualGroupSize = 256;
#endif

    explicit QVMatchPositions(std::uint32_t chunkSize = usualChunkSize,
                              std::uint32_t groupSize = usualGroupSize);
    ~QVMatchPositions();
    QVMatchPositions(const QVMatchPositions &) = delete;
    QVMatchPositions &operator=(const QVMatchPositions &) = delete;

    /// Takes in a tree that has no positions. One at a time.
    void setRoot(QVScopeMatch *root);
    /// Lets the tree go, which is empty but for its root: what comes into it is absolute until it is taken in
    /// again.
    void releaseRoot();
    bool hasRoot() const { return _root != nullptr; }
    /// The positions of a match's tree; null where its place is absolute.
    static QVMatchPositions *positionsOf(const QVMatch *match);

    /// Moves all places behind a match and its descendants by a difference, as by a walk over them; what is
    /// marked `skipForBumping` stays. The match is one of the tree, other than the root.
    void shiftBehindMatch(const QVScopeMatch *match, NSInteger delta);

    // The tree's own upkeep

    /// Siblings that were just linked into the tree, or are about to be taken out of it.
    void attach(QVScopeMatch *first, QVScopeMatch *last);
    void detach(QVScopeMatch *first, QVScopeMatch *last);
    /// A match that outlives the tree around it.
    static void detachSurvivor(QVScopeMatch *match);
    /// A place of a match that is being destroyed.
    static void forgetPlace(QVPositionChunk *chunk);
    void noteMark(QVScopeMatch *match, bool skipForBumping);

    std::size_t chunkCount() const;
    std::size_t groupCount() const { return _groups.size(); }
    /// What is wrong with the order, the counts and the sizes; null where nothing is. Walks the whole tree.
    const char *problem() const;

private:
    struct Group;
    struct Item;
    struct Cursor;

    Group *groupOf(const QVPositionChunk *chunk) const;
    QVPositionChunk *newFirstChunk();
    QVPositionChunk *newChunkBehind(QVPositionChunk *chunk, NSUInteger offset);
    void remove(QVPositionChunk *chunk);
    void splitIfLarge(Group *group);
    void joinGroups(std::size_t first);
    void numberChunks(Group *group, std::size_t from);
    void numberGroups(std::size_t from);
    void cutBefore(Item item);
    void joinIfSmall(Item before, Item behind);
    static Item nextItem(Item item);
    static Item previousItem(Item item);
    static Item lastItem(QVScopeMatch *match);
    static QVPositionChunk *chunkOf(Item item);
    static void move(Item item, QVPositionChunk *chunk, NSUInteger difference);
    void verify() const;
    void detachItems(QVScopeMatch *first, QVScopeMatch *last);

    const std::uint32_t _chunkSize;
    const std::uint32_t _groupSize;
    QVScopeMatch *_root = nullptr;
    std::vector<std::unique_ptr<Group>> _groups;
    std::vector<QVScopeMatch *> _marked;
    /// The root's: in front of all and behind all.
    QVPositionGroup _edgeGroup;
    QVPositionChunk _edge;
};

} // namespace quorvane
