#include "Quorvane/Text/QVTextSelectionArray.h"

namespace quorvane {

namespace {

/// One value for each range from a list of none, one for all, or as many.
template <typename T> T valueAtIndex(std::span<const T> values, std::size_t index, T fallback) {
    if (values.size() == 1)
        return values[0];
    return index < values.size() ? values[index] : fallback;
}

} // namespace

std::shared_ptr<QVTextSelectionArray> QVTextSelectionArray::init() { return initWithRange({0, 0}); }

std::shared_ptr<QVTextSelectionArray>
QVTextSelectionArray::initWithRange(NSRange range, NSSelectionAffinity affinity,
                                    QVTextSelectionAdvancement advancement) {
    return initWithItems(std::vector{QVTextSelectionItem{range, affinity, advancement}}, 0);
}

std::shared_ptr<QVTextSelectionArray> QVTextSelectionArray::initWithRange(NSRange range) {
    return initWithItems(std::vector{QVTextSelectionItem{range}}, 0);
}

std::shared_ptr<QVTextSelectionArray>
QVTextSelectionArray::initWithRanges(const std::optional<std::vector<NSRange>> &ranges) {
    return initWithRanges(ranges, {}, {}, ranges && !ranges->empty() ? 0 : NSNotFound);
}

std::shared_ptr<QVTextSelectionArray> QVTextSelectionArray::initWithRanges(
    const std::optional<std::vector<NSRange>> &ranges, std::span<const NSSelectionAffinity> affinities,
    std::span<const QVTextSelectionAdvancement> advancements, NSUInteger indexOfPrimaryRange) {
    QVParameterAssert(ranges.has_value(), "ranges != nil");
    const std::size_t count = ranges ? ranges->size() : 0;
    QVParameterAssert(affinities.size() == 0 || affinities.size() == 1 || affinities.size() == count,
                      "affinities.count == 0 || affinities.count == 1 || affinities.count == ranges.count");
    QVParameterAssert(
        advancements.size() == 0 || advancements.size() == 1 || advancements.size() == count,
        "advancements.count == 0 || advancements.count == 1 || advancements.count == ranges.count");
    std::vector<QVTextSelectionItem> items;
    items.reserve(count);
    for (std::size_t index = 0; index < count; ++index)
        items.push_back({(*ranges)[index], valueAtIndex(affinities, index, NSSelectionAffinityDownstream),
                         valueAtIndex(advancements, index, QVTextSelectionAdvancementNone)});
    return initWithItems(std::move(items), indexOfPrimaryRange);
}

std::shared_ptr<QVTextSelectionArray>
QVTextSelectionArray::initWithItems(std::optional<std::vector<QVTextSelectionItem>> items,
                                    NSUInteger indexOfPrimaryRange) {
    QVParameterAssert(items.has_value(), "items != nil");
    auto given = std::move(items).value_or(std::vector<QVTextSelectionItem>());
    QVParameterAssert(
        (given.empty() && indexOfPrimaryRange == NSNotFound) || indexOfPrimaryRange < given.size(),
        "(items.count == 0 && indexOfPrimaryRange == NSNotFound) || indexOfPrimaryRange < items.count");
    if (given.empty())
        given.emplace_back();
    const std::size_t primaryGiven = indexOfPrimaryRange < given.size() ? indexOfPrimaryRange : 0;

    std::vector<std::size_t> order(given.size());
    for (std::size_t index = 0; index < order.size(); ++index)
        order[index] = index;
    std::ranges::stable_sort(order, {}, [&given](std::size_t index) { return given[index].range.location; });

    std::vector<QVTextSelectionItem> sorted;
    sorted.reserve(given.size());
    std::size_t primary = 0;
    for (const std::size_t index : order) {
        if (!sorted.empty() && QVShouldMergeSortedRanges(sorted.back().range, given[index].range))
            sorted.back().range = NSUnionRange(sorted.back().range, given[index].range);
        else
            sorted.push_back(given[index]);
        if (index == primaryGiven)
            primary = sorted.size() - 1;
    }
    return std::shared_ptr<QVTextSelectionArray>(new QVTextSelectionArray(std::move(sorted), primary));
}

bool QVTextSelectionArray::containsRange(NSRange range) const {
    return std::ranges::any_of(_items, [range](const QVTextSelectionItem &item) {
        if (range.length != 0)
            return NSIntersectionRange(item.range, range) == range;
        return range.location >= item.range.location && range.location <= NSMaxRange(item.range);
    });
}

std::vector<NSRange> QVTextSelectionArray::ranges() const {
    std::vector<NSRange> ranges;
    for (const QVTextSelectionItem &item : _items)
        ranges.push_back(item.range);
    return ranges;
}

std::vector<NSSelectionAffinity> QVTextSelectionArray::affinities() const {
    std::vector<NSSelectionAffinity> affinities;
    for (const QVTextSelectionItem &item : _items)
        affinities.push_back(item.affinity);
    return affinities;
}

std::vector<QVTextSelectionAdvancement> QVTextSelectionArray::advancements() const {
    std::vector<QVTextSelectionAdvancement> advancements;
    for (const QVTextSelectionItem &item : _items)
        advancements.push_back(item.advancement);
    return advancements;
}

void QVTextSelectionArray::enumerateRangesWithOptions(NSEnumerationOptions options,
                                                      RangeBlock usingBlock) const {
    enumerateRangesAtIndexes(NSIndexSet::indexSetWithIndexesInRange({0, count()}), options, usingBlock);
}

void QVTextSelectionArray::enumerateRangesAtIndexes(const NSIndexSet &indexes, NSEnumerationOptions options,
                                                    RangeBlock usingBlock) const {
    QVParameterAssert(usingBlock, "block != nil");
    if (!usingBlock || indexes.isEmpty())
        return;
    QVCheckListRange({indexes.lastIndex(), 1}, count());
    bool stop = false;
    const auto call = [&](NSUInteger index) {
        const QVTextSelectionItem &item = _items[index];
        usingBlock(item.range, item.affinity, item.advancement, index, stop);
    };
    if (options & NSEnumerationReverse)
        for (NSUInteger index = indexes.lastIndex(); index != NSNotFound && !stop;
             index = indexes.indexLessThanIndex(index))
            call(index);
    else
        for (NSUInteger index = indexes.firstIndex(); index != NSNotFound && !stop;
             index = indexes.indexGreaterThanIndex(index))
            call(index);
}

std::shared_ptr<QVTextSelectionArray>
QVTextSelectionArray::arrayByTransformingWithBlock(TransformBlock block) const {
    QVParameterAssert(block, "block != nil");
    std::vector<QVTextSelectionItem> items;
    items.reserve(_items.size());
    bool stop = false;
    for (NSUInteger index = 0; index < count() && !stop; ++index) {
        QVTextSelectionItem item = _items[index];
        if (block)
            block(item.range, item.affinity, item.advancement, stop, index);
        items.push_back(item);
    }
    return initWithItems(std::move(items), _indexOfPrimaryRange);
}

} // namespace quorvane
