#pragma once

#include "Platform/AppKit/NSColor.h"
#include "Platform/CoreGraphics/CGColor.h"
#include "Platform/Foundation/NSCoder.h"

#include <mutex>

namespace quorvane {

/// A colour of a style: an immutable wrapper of a `CGColor`, with the ways in which themes write colours
/// down. The arithmetic is made on the components as they are, in the colour's own space. Any thread.
class QV_EXPORT QVColor final : public NSObject, public NSSecureCoding {
public:
    /// Null for null.
    static std::shared_ptr<const QVColor> initWithCGColor(const CGColorRef &color);
    /// The same.
    static std::shared_ptr<const QVColor> colorWithCGColor(const CGColorRef &color);
    /// The colour's `CGColor` of this moment, where it is one of the system's; null for null.
    static std::shared_ptr<const QVColor>
    colorWithPlatformColor(const std::shared_ptr<const NSColor> &platformColor);

    // Components are from 0 to 1; others are kept as they are.

    /// In the device gray space.
    static std::shared_ptr<const QVColor> colorWithWhite(double white, double alpha);
    /// In the sRGB space.
    static std::shared_ptr<const QVColor> colorWithRed(double red, double green, double blue, double alpha);
    static std::shared_ptr<const QVColor> colorWithDisplayP3Red(double red, double green, double blue,
                                                                double alpha);
    /// In the sRGB space, by `QVColorConvertHSBToRGB`.
    static std::shared_ptr<const QVColor> colorWithHueSaturationBrightness(double hue, double saturation,
                                                                           double brightness, double alpha);
    /// In the sRGB space, by `QVColorConvertHSLToRGB`.
    static std::shared_ptr<const QVColor> colorWithHueSaturationLuminance(double hue, double saturation,
                                                                          double luminance, double alpha);

    static std::shared_ptr<const QVColor> whiteColor();
    static std::shared_ptr<const QVColor> blackColor();
    static std::shared_ptr<const QVColor> grayColor();
    static std::shared_ptr<const QVColor> lightGrayColor();
    static std::shared_ptr<const QVColor> darkGrayColor();
    static std::shared_ptr<const QVColor> clearColor();
    static std::shared_ptr<const QVColor> redColor();
    static std::shared_ptr<const QVColor> greenColor();
    static std::shared_ptr<const QVColor> blueColor();
    static std::shared_ptr<const QVColor> cyanColor();
    static std::shared_ptr<const QVColor> magentaColor();
    static std::shared_ptr<const QVColor> yellowColor();
    static std::shared_ptr<const QVColor> orangeColor();
    static std::shared_ptr<const QVColor> brownColor();
    static std::shared_ptr<const QVColor> purpleColor();

    /// Never null.
    const CGColorRef &CGColor() const { return _CGColor; }
    double alphaComponent() const { return CGColorGetAlpha(_CGColor); }
    std::shared_ptr<const QVColor> colorWithAlphaComponent(double alpha) const;
    /// Between this colour (0) and the other (1), in this colour's space; the fraction is clamped. Null where
    /// the other colour can't be matched to that space. The other colour's components are taken as they were
    /// given even where its space differs, which is meant; where it has fewer, this colour's own are kept.
    std::shared_ptr<const QVColor> colorByInterpolatingWithColor(const std::shared_ptr<const QVColor> &color,
                                                                 double fraction) const;

    // The components, of a colour in the device RGB or device gray space alone: a colour made by
    // `colorWithRed` is in sRGB and answers false, upon which nothing is written. Each pointer may be null.

    bool getRed(double *red, double *green, double *blue, double *alpha) const;
    bool getWhite(double *white, double *alpha) const;
    /// The hue of a gray is not a number.
    bool getHueSaturationBrightness(double *hue, double *saturation, double *brightness, double *alpha) const;
    bool getHueSaturationLuminance(double *hue, double *saturation, double *luminance, double *alpha) const;

    /// Becomes the colour that the thread's current context fills and strokes with; nothing without one.
    void set() const;
    void setFill() const;
    void setStroke() const;

    /// Made on first use and kept.
    const std::shared_ptr<const NSColor> &platformColor() const;

    /// The same instance.
    std::shared_ptr<const QVColor> copy() const;

    /// By the `CGColor`, space and components.
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override { return CFHash(_CGColor); }
    std::u16string_view className() const override { return u"QVColor"; }
    /// "<%@: %p : %@>" with the `CGColor`.
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// The model and the components, so that a colour comes back in the device space of its model. What is
    /// neither gray nor RGB does not come back.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    QVColor() = default;

    CGColorRef _CGColor;
    mutable std::once_flag _platformColorOnce;
    mutable std::shared_ptr<const NSColor> _platformColor;
};

// Between ways to write a colour down; all numbers from 0 to 1. Each result pointer may be null.

QV_EXPORT void QVColorConvertHSBToRGB(double *red, double *green, double *blue, double hue, double saturation,
                                      double brightness);
/// What is out of range is clamped first.
QV_EXPORT void QVColorConvertHSLToRGB(double *red, double *green, double *blue, double hue, double saturation,
                                      double luminance);
/// The hue of a gray that is not black is not a number.
QV_EXPORT void QVColorConvertRGBToHSB(double *hue, double *saturation, double *brightness, double red,
                                      double green, double blue);
QV_EXPORT void QVColorConvertRGBToHSL(double *hue, double *saturation, double *luminance, double red,
                                      double green, double blue);

} // namespace quorvane
