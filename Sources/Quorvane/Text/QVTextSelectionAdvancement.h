#pragma once

#include "Platform/Foundation/NSValue.h"

namespace quorvane {

/// Where a cursor that moves up and down wants to be: the x positions to keep, in points, for the leading and
/// the trailing edge. A plain record that comes along with each range of a selection.
struct QVTextSelectionAdvancement {
    double leading;
    double trailing;

    friend constexpr bool operator==(const QVTextSelectionAdvancement &,
                                     const QVTextSelectionAdvancement &) = default;
};

/// The x position that stands for none.
inline constexpr double QVTextSelectionAdvancementNoValue = -1.0;
/// No position on either edge.
inline constexpr QVTextSelectionAdvancement QVTextSelectionAdvancementNone{QVTextSelectionAdvancementNoValue,
                                                                           QVTextSelectionAdvancementNoValue};

constexpr QVTextSelectionAdvancement QVTextSelectionAdvancementMake(double leading, double trailing) {
    return {leading, trailing};
}

/// The record as an object, of the type "{QVTextSelectionAdvancement=dd}".
QV_EXPORT std::shared_ptr<const NSValue>
valueWithQVTextSelectionAdvancement(QVTextSelectionAdvancement advancement);
/// The record that such an object holds; `QVTextSelectionAdvancementNone` for null and for any other type.
QV_EXPORT QVTextSelectionAdvancement QVTextSelectionAdvancementValue(const NSValue *value);

} // namespace quorvane
