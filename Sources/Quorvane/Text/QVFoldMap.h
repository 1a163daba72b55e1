#pragma once

#include "Platform/Foundation/QVRunSequence.h"
#include "Quorvane/Text/QVTextFoldAttachment.h"

#include <optional>

namespace quorvane {

/// Where the outermost folds of a view stand: for each the place of its one character in the view, and the
/// range of the document that it hides. Both kinds of places stand in sequences that are shifted late, so
/// that converting between them takes two searches, and typing costs the same in front of all folds as behind
/// them.
///
/// The folds themselves are told of what moved them when somebody asks one for its range.
class QVFoldMap {
public:
    using Fold = std::shared_ptr<QVTextFoldAttachment>;

    /// A fold on its way into the map.
    struct Item {
        Fold fold;
        NSUInteger viewLocation;
        NSRange range;
    };

    /// For a view of that many characters without folds. Tests make chunks tiny, so that they split and
    /// merge.
    explicit QVFoldMap(NSUInteger count = 0,
                       std::size_t foldsPerChunk = QVRunSequence<Fold>::defaultChunkCapacity);
    ~QVFoldMap();
    QVFoldMap(const QVFoldMap &) = delete;
    QVFoldMap &operator=(const QVFoldMap &) = delete;

    /// The characters of the view.
    NSUInteger count() const { return _count; }
    void setCount(NSUInteger count) { _count = count; }
    NSUInteger numberOfFolds() const { return _folds.count(); }

    // One fold, by its number in the order of the text

    NSUInteger viewLocation(NSUInteger index) const { return _folds.location(_folds.positionOfIndex(index)); }
    NSRange range(NSUInteger index) const;
    /// It knows its range.
    const Fold &fold(NSUInteger index) const;

    /// The number of the first fold at or behind a place of the view; the number of folds if there is none.
    NSUInteger firstFoldAtOrBehind(NSUInteger viewLocation) const;
    std::optional<NSUInteger> foldAt(NSUInteger viewLocation) const;

    // Converting. No fold leads nowhere; nothing is known of the document's length.

    /// Nothing where the place is in no fold and between none, which the text of a view never has.
    std::optional<NSUInteger> viewLocationForPosition(NSUInteger position, bool isBehindFolds) const;
    NSUInteger positionForViewLocation(NSUInteger viewLocation) const;

    // Changes

    /// A stretch of the view is replaced by `length` characters, some of which are folds. Folds in the
    /// stretch leave.
    void replace(NSRange viewRange, NSUInteger length, const std::vector<Item> &folds);
    /// The document's text before a fold changed, and so it stands elsewhere, with all behind it.
    void moveFoldsFrom(NSUInteger index, NSInteger changeInLength);
    /// The text inside of a fold changed.
    void changeTextOfFold(NSUInteger index, NSRange range, NSInteger changeInLength);

    /// Tells all folds where they stand.
    void settle() const;
    /// Whether all of it fits together; for tests.
    bool isSound() const;

private:
    void settle(NSUInteger index) const;

    NSUInteger _count;
    /// By their places in the view.
    QVRunSequence<Fold> _folds;
    /// How much text each hides, by its place in the document.
    QVRunSequence<NSUInteger> _lengths;
    /// Whether a fold may not know its range.
    mutable bool _isUnsettled = false;
    std::shared_ptr<QVTextFoldKeeper> _keeper;
};

} // namespace quorvane
