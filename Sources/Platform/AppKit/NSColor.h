#pragma once

#include "Platform/CoreGraphics/CGColor.h"
#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

/// The platform's colour, which text attributes and drawing hold: either a fixed `CGColor`, or one of the
/// system's named colours, which answers the `CGColor` of the current appearance each time it is asked, so
/// that what was set up in a light window is right in a dark one. Immutable, for any thread.
class QV_EXPORT NSColor final : public NSObject, public NSSecureCoding {
public:
    /// Null for null.
    static std::shared_ptr<const NSColor> colorWithCGColor(CGColorRef color);
    /// In the device gray space.
    static std::shared_ptr<const NSColor> colorWithWhite(CGFloat white, CGFloat alpha);
    /// In the sRGB space.
    static std::shared_ptr<const NSColor> colorWithSRGBRed(CGFloat red, CGFloat green, CGFloat blue,
                                                           CGFloat alpha);

    static std::shared_ptr<const NSColor> blackColor();
    static std::shared_ptr<const NSColor> whiteColor();
    static std::shared_ptr<const NSColor> clearColor();

    // The system's colours, one object for each.

    static std::shared_ptr<const NSColor> windowBackgroundColor();
    static std::shared_ptr<const NSColor> separatorColor();
    static std::shared_ptr<const NSColor> controlAccentColor();
    static std::shared_ptr<const NSColor> headerTextColor();
    static std::shared_ptr<const NSColor> labelColor();
    static std::shared_ptr<const NSColor> secondaryLabelColor();
    static std::shared_ptr<const NSColor> tertiaryLabelColor();
    static std::shared_ptr<const NSColor> placeholderTextColor();
    static std::shared_ptr<const NSColor> selectedTextBackgroundColor();
    static std::shared_ptr<const NSColor> selectedContentBackgroundColor();
    static std::shared_ptr<const NSColor> unemphasizedSelectedContentBackgroundColor();

    /// The colour in the thread's current appearance, for a system colour; never null.
    CGColorRef CGColor() const;
    /// The name of a system colour, null for a fixed one.
    NSString catalogName() const;
    /// With another alpha, fixed; a system colour resolves once for it.
    std::shared_ptr<const NSColor> colorWithAlphaComponent(CGFloat alpha) const;

    /// Becomes the colour that the thread's current context fills and strokes with; nothing without one. A
    /// system colour resolves now.
    void set() const;
    void setFill() const;
    void setStroke() const;

    /// Fixed colours by their `CGColor`; a system colour equals itself alone, whatever it looks like.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"NSColor"; }
    /// "<NSColor labelColor>" or "<NSColor <CGColor ...>>".
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// A system colour is archived by its name, so that it stays one.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

    /// A look for each appearance of a system colour.
    struct Catalogued;

    explicit NSColor(const Catalogued *catalogued) : _catalogued(catalogued) {}

private:
    NSColor() = default;

    CGColorRef _color;
    const Catalogued *_catalogued = nullptr;
};

} // namespace quorvane
