#pragma once

#include "Platform/AppKit/NSColor.h"

namespace quorvane {

/// The shadow of text or of a box: where it falls, how soft it is, its colour. Set up by one thread; once it
/// is an attribute nobody changes it any more.
class QV_EXPORT NSShadow final : public NSObject, public NSSecureCoding {
public:
    NSShadow() = default;

    /// In points; zero at first.
    CGSize shadowOffset() const { return _shadowOffset; }
    void setShadowOffset(CGSize shadowOffset) { _shadowOffset = shadowOffset; }
    /// In points; zero, which is a hard edge, at first.
    CGFloat shadowBlurRadius() const { return _shadowBlurRadius; }
    void setShadowBlurRadius(CGFloat shadowBlurRadius) { _shadowBlurRadius = shadowBlurRadius; }
    /// Black with an alpha of a third at first; with null nothing is drawn.
    const std::shared_ptr<const NSColor> &shadowColor() const { return _shadowColor; }
    void setShadowColor(std::shared_ptr<const NSColor> shadowColor) { _shadowColor = std::move(shadowColor); }

    std::shared_ptr<NSShadow> copy() const;

    /// By offset, blur radius and colour.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"NSShadow"; }
    /// "<NSShadow {1.00, 2.00} blur 3.00 color <NSColor ...>>"
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    /// Numbers that are not finite read as 0.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    CGSize _shadowOffset;
    CGFloat _shadowBlurRadius = 0;
    std::shared_ptr<const NSColor> _shadowColor = NSColor::colorWithWhite(0, 1.0 / 3);
};

} // namespace quorvane
