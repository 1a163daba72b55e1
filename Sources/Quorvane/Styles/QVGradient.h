#pragma once

#include "Platform/AppKit/NSGradient.h"
#include "Platform/CoreGraphics/CGGradient.h"
#include "Quorvane/Styles/QVColor.h"

namespace quorvane {

class NSBezierPath;

/// A gradient of a style: colours with their locations, nothing being checked or sorted, and the ways in
/// which boxes and rings are painted with it. Immutable, for any thread; it draws into the thread's current
/// context, and nowhere where there is none.
class QV_EXPORT QVGradient final : public NSObject, public NSSecureCoding {
public:
    using Color = std::shared_ptr<const QVColor>;

    // In the device RGB space.

    /// Two stops, at 0 and 1. Null when a colour is.
    static std::shared_ptr<const QVGradient> gradientWithStartingColor(const Color &startingColor,
                                                                       const Color &endingColor);
    /// Evenly spaced from 0 to 1; a single colour is doubled. Null without colours.
    static std::shared_ptr<const QVGradient> gradientWithColors(std::vector<Color> colors);
    /// The list ends before its first null colour; null for fewer than two pairs.
    static std::shared_ptr<const QVGradient>
    gradientWithColorsAndLocations(std::initializer_list<std::pair<Color, double>> colorsAndLocations);

    /// The same stops in the same space; null for null and where that space can't be drawn in.
    static std::shared_ptr<const QVGradient>
    gradientWithPlatformGradient(const std::shared_ptr<const NSGradient> &platformGradient);

    /// As many locations as colours are read. No colours give null; an absent list, a null colour, no
    /// locations and no space are asserted and give null.
    static std::shared_ptr<const QVGradient> initWithColors(const std::optional<std::vector<Color>> &colors,
                                                            const double *atLocations,
                                                            const CGColorSpaceRef &colorSpace);
    /// Two black stops, both at 0, in the device RGB space.
    static std::shared_ptr<const QVGradient> init();

    /// At least one.
    NSUInteger numberOfColorStops() const { return _colors.size(); }
    /// Either pointer may be null. Throws `NSRangeException` for an index not below the number of stops.
    void getColor(Color *color, double *location, NSUInteger atIndex) const;
    /// Null for a gradient that comes from an archive.
    const CGColorSpaceRef &colorSpace() const { return _colorSpace; }
    /// A new one with the same stops; null where the space is.
    std::shared_ptr<const NSGradient> platformGradient() const;
    /// Made on first use and kept. Null where the colours can't be matched to the space.
    const CGGradientRef &CGGradient() const;

    /// Between the last stop at or before the location and the first one at or after it, in the order of the
    /// stops; where both are at one place, the colour of the former. Null where either is missing, and where
    /// the colours can't be mixed. A location outside of 0 to 1 is asserted.
    Color interpolatedColorAtLocation(double location) const;

    // The options are `NSGradientDrawsBeforeStartingLocation` or `NSGradientDrawsAfterEndingLocation`.

    /// Along one edge of the rectangle: from 0 degrees on from left to right, from 90 on in the direction of
    /// y, from 180 on from right to left, from 270 on against y.
    void drawInRect(const CGRect &rect, double angle) const;
    /// The same in the bounds of the path, clipped to it.
    void drawInBezierPath(const std::shared_ptr<const NSBezierPath> &path, double angle) const;
    /// Both options together count as the first alone, here and in the next one.
    void drawFromPoint(CGPoint startingPoint, CGPoint toPoint, NSGradientDrawingOptions options) const;
    void drawFromCenter(CGPoint startCenter, double radius, CGPoint toCenter, double endRadius,
                        NSGradientDrawingOptions options) const;
    /// Around a center, from one angle to the other (radians, from the x axis towards the y axis), as ninety
    /// wedges that overlap a little so that no seams show. An option fills half of what the sweep leaves
    /// free, before its start or behind its end; here both may be given. The overlap has a fixed width, so
    /// that without a cap it reaches beyond the end of a narrow sweep. Equal angles draw nothing.
    void drawWithCenter(CGPoint center, double innerRadius, double outerRadius, double startAngle,
                        double endAngle, NSGradientDrawingOptions options) const;

    /// The same instance.
    std::shared_ptr<const QVGradient> copy() const;

    std::u16string_view className() const override { return u"QVGradient"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// The stops without their space.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    QVGradient() = default;

    CGColorSpaceRef _colorSpace;
    std::vector<Color> _colors;
    std::vector<double> _locations;
    mutable std::once_flag _gradientOnce;
    mutable CGGradientRef _gradient;
};

} // namespace quorvane
