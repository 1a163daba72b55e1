#pragma once

#include "Platform/CoreGraphics/CGGeometry.h"
#include "Platform/Foundation/NSCoder.h"

#include <array>
#include <vector>

namespace quorvane {

/// What happens to a line that is wider than its room.
enum NSLineBreakMode : std::uint64_t {
    NSLineBreakByWordWrapping = 0,
    NSLineBreakByCharWrapping = 1,
    NSLineBreakByClipping = 2,
    NSLineBreakByTruncatingHead = 3,
    NSLineBreakByTruncatingTail = 4,
    NSLineBreakByTruncatingMiddle = 5,
};

/// How the lines of a paragraph are set, as far as an editor sets them: tabulators, line breaks, the room
/// around lines. Immutable once it is an attribute; a copy is set up by one thread. Lengths are in points.
class QV_EXPORT NSParagraphStyle final : public NSObject, public NSSecureCoding {
public:
    NSParagraphStyle() = default;
    /// The one that text without a style has: tabulators every 28 points at the twelve first places.
    static const std::shared_ptr<const NSParagraphStyle> &defaultParagraphStyle();

    /// Where tabulators stand, ascending.
    const std::vector<CGFloat> &tabStops() const { return _tabStops; }
    void setTabStops(std::vector<CGFloat> tabStops) { _tabStops = std::move(tabStops); }
    /// How far apart tabulators are behind the last stop; 0 means that there are none.
    CGFloat defaultTabInterval() const { return _defaultTabInterval; }
    void setDefaultTabInterval(CGFloat interval) { _defaultTabInterval = interval; }
    NSLineBreakMode lineBreakMode() const { return _lineBreakMode; }
    void setLineBreakMode(NSLineBreakMode mode) { _lineBreakMode = mode; }
    /// Between lines.
    CGFloat lineSpacing() const { return _lineSpacing; }
    void setLineSpacing(CGFloat lineSpacing) { _lineSpacing = lineSpacing; }
    /// A line's own height is multiplied by it; 0 leaves it.
    CGFloat lineHeightMultiple() const { return _lineHeightMultiple; }
    void setLineHeightMultiple(CGFloat multiple) { _lineHeightMultiple = multiple; }
    /// Bounds of a line's height; 0 sets none.
    CGFloat minimumLineHeight() const { return _minimumLineHeight; }
    void setMinimumLineHeight(CGFloat height) { _minimumLineHeight = height; }
    CGFloat maximumLineHeight() const { return _maximumLineHeight; }
    void setMaximumLineHeight(CGFloat height) { _maximumLineHeight = height; }
    /// From the margin.
    CGFloat firstLineHeadIndent() const { return _firstLineHeadIndent; }
    void setFirstLineHeadIndent(CGFloat indent) { _firstLineHeadIndent = indent; }
    CGFloat headIndent() const { return _headIndent; }
    void setHeadIndent(CGFloat indent) { _headIndent = indent; }

    /// A copy that can be set up.
    std::shared_ptr<NSParagraphStyle> mutableCopy() const;

    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"NSParagraphStyle"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    /// Numbers that are not finite, and break modes that nobody knows, read as 0; tabulators are put in
    /// order.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    std::array<CGFloat, 7> lengths() const {
        return {_defaultTabInterval, _lineSpacing,         _lineHeightMultiple, _minimumLineHeight,
                _maximumLineHeight,  _firstLineHeadIndent, _headIndent};
    }

    std::vector<CGFloat> _tabStops;
    CGFloat _defaultTabInterval = 0;
    NSLineBreakMode _lineBreakMode = NSLineBreakByWordWrapping;
    CGFloat _lineSpacing = 0;
    CGFloat _lineHeightMultiple = 0;
    CGFloat _minimumLineHeight = 0;
    CGFloat _maximumLineHeight = 0;
    CGFloat _firstLineHeadIndent = 0;
    CGFloat _headIndent = 0;
};

} // namespace quorvane
