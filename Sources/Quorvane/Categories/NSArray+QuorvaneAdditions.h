#pragma once

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSRange.h"

#include <concepts>
#include <span>
#include <vector>

namespace quorvane {

// Additions to lists: merging ranges, turning rows into columns, searching a part, and cutting off an end.
// What reaches beyond a list throws `NSRangeException`.

using NSEnumerationOptions = std::uint64_t;
/// From the last object to the first.
inline constexpr NSEnumerationOptions NSEnumerationReverse = 2;

/// Whether two ranges, the first of which does not stand behind the second, are to become one: when neither
/// is empty and they overlap or touch, when the second is empty and lies in the first or at its end, and when
/// the first is empty and both have the same location.
QV_EXPORT bool QVShouldMergeSortedRanges(NSRange first, NSRange second);
/// The ranges sorted by location, with those merged that overlap or touch. An empty range goes into one that
/// it lies in or touches the end of, and into another at its own location; an empty range elsewhere stays.
QV_EXPORT std::vector<NSRange> qv_sortedRangesForRanges(std::span<const NSRange> ranges);
inline std::vector<NSRange> qv_sortedRangesForRanges(std::initializer_list<NSRange> ranges) {
    return qv_sortedRangesForRanges(std::span<const NSRange>(ranges.begin(), ranges.size()));
}

/// Throws when a range leaves a list of that many objects.
QV_EXPORT void QVCheckListRange(NSRange range, NSUInteger count);

/// Rows of the arrays' elements: row i holds element i of each array. There are as many rows as the first
/// array has elements; it is asserted that each array has that many, and a shorter one has no element to
/// give.
template <typename T>
std::vector<std::vector<T>> qv_arrayByZippingArrays(std::span<const std::vector<T>> arrays) {
    std::vector<std::vector<T>> rows;
    if (arrays.empty())
        return rows;
    const std::size_t count = arrays[0].size();
    for (const std::vector<T> &array : arrays)
        QVAssert(array.size() == count, u"Zippable arrays must all have the same number of objects");
    rows.resize(count);
    for (const std::vector<T> &array : arrays) {
        QVCheckListRange({0, count}, array.size());
        for (std::size_t index = 0; index < count; ++index)
            rows[index].push_back(array[index]);
    }
    return rows;
}

template <typename T, std::same_as<std::vector<T>>... More>
std::vector<std::vector<T>> qv_arrayByZippingArrays(const std::vector<T> &first, const More &...more) {
    const std::vector<T> arrays[] = {first, more...};
    return qv_arrayByZippingArrays<T>(std::span<const std::vector<T>>(arrays));
}

/// The columns of rows, as many as the first row has elements: the inverse of zipping. Every row has to reach
/// as far as the first.
template <typename T>
std::vector<std::vector<T>> qv_arraysByUnzippingArray(const std::vector<std::vector<T>> &rows) {
    std::vector<std::vector<T>> columns;
    if (rows.empty())
        return columns;
    columns.resize(rows[0].size());
    for (const std::vector<T> &row : rows) {
        QVCheckListRange({0, columns.size()}, row.size());
        for (std::size_t index = 0; index < columns.size(); ++index)
            columns[index].push_back(row[index]);
    }
    return columns;
}

/// The first index in enumeration order, among those of the range, whose object equals the given one; else
/// `NSNotFound`. Shared objects are asked by `isEqual`, values by `==`.
template <typename T>
NSUInteger qv_indexOfObject(const std::vector<T> &array, const std::type_identity_t<T> &object, NSRange range,
                            NSEnumerationOptions options = 0) {
    QVCheckListRange(range, array.size());
    const auto isEqual = [&](const T &candidate) {
        if constexpr (requires { candidate->isEqual(object.get()); })
            return candidate && candidate->isEqual(object.get());
        else
            return candidate == object;
    };
    for (NSUInteger step = 0; step < range.length; ++step) {
        const NSUInteger index =
            options & NSEnumerationReverse ? NSMaxRange(range) - 1 - step : range.location + step;
        if (isEqual(array[index]))
            return index;
    }
    return NSNotFound;
}

/// Removes the objects at the index and behind it.
template <typename T> void qv_removeObjectsFromIndex(std::vector<T> &array, NSUInteger index) {
    QVCheckListRange({index, array.size() - index}, array.size());
    array.erase(array.begin() + static_cast<std::ptrdiff_t>(index), array.end());
}

/// Removes the first `index - 1` objects: one fewer than the name suggests, which callers rely on. An index
/// of 0 asks for a range whose length wraps around and is rejected.
template <typename T> void qv_removeObjectsToIndex(std::vector<T> &array, NSUInteger index) {
    QVCheckListRange({0, index - 1}, array.size());
    array.erase(array.begin(), array.begin() + static_cast<std::ptrdiff_t>(index - 1));
}

} // namespace quorvane
