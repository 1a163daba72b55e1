#pragma once

#include "Platform/CoreGraphics/CGContext.h"

namespace quorvane {

/// The state behind a context: what Cairo keeps in its own states, and the colours and flags that it does not
/// know beside it.
class CGContextObject final : public NSObject {
public:
    /// Takes over the reference.
    explicit CGContextObject(struct _cairo *owned) : cairo(owned) {}
    ~CGContextObject() override;
    CGContextObject(const CGContextObject &) = delete;
    CGContextObject &operator=(const CGContextObject &) = delete;

    struct State {
        CGColorRef fillColor;
        CGColorRef strokeColor;
        CGFloat alpha = 1;
        /// A map has flattened the plane or left all numbers behind.
        bool collapsed = false;
    };

    State &state() { return states.back(); }
    std::u16string_view className() const override { return u"CGContext"; }

    struct _cairo *cairo;
    std::vector<State> states{State()};
    CGAffineTransform textMatrix;
    /// In pixels, so that it keeps its place when the map changes.
    CGMutablePathRef path = CGPathCreateMutable();
};

} // namespace quorvane
