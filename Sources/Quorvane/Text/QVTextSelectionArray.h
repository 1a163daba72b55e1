#pragma once

#include "Platform/Foundation/NSIndexSet.h"
#include "Quorvane/Categories/NSArray+QuorvaneAdditions.h"
#include "Quorvane/Text/QVTextSelectionAdvancement.h"

#include <optional>

namespace quorvane {

/// Which line a cursor at a soft line break belongs to.
using NSSelectionAffinity = NSUInteger;
/// The line before.
inline constexpr NSSelectionAffinity NSSelectionAffinityUpstream = 0;
/// The line behind.
inline constexpr NSSelectionAffinity NSSelectionAffinityDownstream = 1;

/// One selected range with what a view remembers of it.
struct QVTextSelectionItem {
    NSRange range;
    NSSelectionAffinity affinity = NSSelectionAffinityDownstream;
    QVTextSelectionAdvancement advancement = QVTextSelectionAdvancementNone;
    /// Whether it only shows where a selection would be.
    bool isShadow = false;

    friend bool operator==(const QVTextSelectionItem &, const QVTextSelectionItem &) = default;
};

/// A selection of several ranges as one value: sorted, without two that overlap or touch, never empty, one of
/// them being the primary one, which a view scrolls to and which stays when the others go. A range without
/// length is a cursor. However it is made, its ranges are merged by the rule of `qv_sortedRangesForRanges`.
/// Immutable, for any thread.
class QV_EXPORT QVTextSelectionArray final : public NSObject {
public:
    using RangeBlock = QVBlock<void(NSRange range, NSSelectionAffinity affinity,
                                    QVTextSelectionAdvancement advancement, NSUInteger index, bool &stop)>;
    /// May change the three values.
    using TransformBlock =
        QVBlock<void(NSRange &range, NSSelectionAffinity &affinity, QVTextSelectionAdvancement &advancement,
                     bool &stop, NSUInteger index)>;

    /// One cursor at the start of the text.
    static std::shared_ptr<QVTextSelectionArray> init();
    static std::shared_ptr<QVTextSelectionArray> initWithRange(NSRange range, NSSelectionAffinity affinity,
                                                               QVTextSelectionAdvancement advancement);
    static std::shared_ptr<QVTextSelectionArray> initWithRange(NSRange range);
    /// The first of the ranges given, in whatever order they come, is the primary one. No ranges are one
    /// cursor at the start; it is asserted that they are not null, here and below.
    static std::shared_ptr<QVTextSelectionArray>
    initWithRanges(const std::optional<std::vector<NSRange>> &ranges);
    /// Affinities and advancements are none, which gives the defaults, or one for all of the ranges, or one
    /// for each; other numbers are asserted.
    static std::shared_ptr<QVTextSelectionArray>
    initWithRanges(const std::optional<std::vector<NSRange>> &ranges,
                   std::span<const NSSelectionAffinity> affinities,
                   std::span<const QVTextSelectionAdvancement> advancements, NSUInteger indexOfPrimaryRange);
    /// The index is the primary item's in the list as given, and `NSNotFound` for an empty list; others are
    /// asserted, and the first item is the primary one where the handler returns. Where two items merge, the
    /// new one has the affinity, the advancement and the shadow of the first.
    static std::shared_ptr<QVTextSelectionArray>
    initWithItems(std::optional<std::vector<QVTextSelectionItem>> items, NSUInteger indexOfPrimaryRange);

    const std::vector<QVTextSelectionItem> &items() const { return _items; }
    /// At least 1.
    NSUInteger count() const { return _items.size(); }
    NSUInteger indexOfPrimaryRange() const { return _indexOfPrimaryRange; }

    /// Whether one of the ranges holds all of this one. A place without length is also held at a range's end,
    /// and by a cursor at its location.
    bool containsRange(NSRange range) const;

    std::vector<NSRange> ranges() const;
    std::vector<NSSelectionAffinity> affinities() const;
    std::vector<QVTextSelectionAdvancement> advancements() const;

    NSRange primaryRange() const { return primaryItem().range; }
    NSSelectionAffinity primaryAffinity() const { return primaryItem().affinity; }
    QVTextSelectionAdvancement primaryAdvancement() const { return primaryItem().advancement; }

    // It is asserted that blocks are not null; without one nothing is called.

    void enumerateRangesUsingBlock(RangeBlock block) const { enumerateRangesWithOptions(0, block); }
    void enumerateRangesWithOptions(NSEnumerationOptions options, RangeBlock usingBlock) const;
    /// Throws `NSRangeException` when an index is not below the count.
    void enumerateRangesAtIndexes(const NSIndexSet &indexes, NSEnumerationOptions options,
                                  RangeBlock usingBlock) const;

    /// The selection with each range, affinity and advancement as the block leaves them, merged anew. Ranges
    /// behind the one at which the block stops are left out, and it is asserted that the primary one isn't
    /// among them.
    std::shared_ptr<QVTextSelectionArray> arrayByTransformingWithBlock(TransformBlock block) const;

    std::u16string_view className() const override { return u"QVTextSelectionArray"; }

private:
    QVTextSelectionArray(std::vector<QVTextSelectionItem> items, NSUInteger indexOfPrimaryRange)
        : _items(std::move(items)), _indexOfPrimaryRange(indexOfPrimaryRange) {}
    const QVTextSelectionItem &primaryItem() const { return _items[_indexOfPrimaryRange]; }

    std::vector<QVTextSelectionItem> _items;
    NSUInteger _indexOfPrimaryRange;
};

} // namespace quorvane
