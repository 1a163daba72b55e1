#pragma once

#include "Platform/Foundation/NSAttributes.h"

namespace quorvane {

/// The key of a typed attribute of a style, as a constant that costs nothing before its first use. It stands
/// wherever a string is taken.
class QV_EXPORT QVStyleAttributeKey {
public:
    constexpr explicit QVStyleAttributeKey(std::size_t index) : _index(index) {}

    const NSString &string() const;
    operator const NSString &() const { return string(); }

private:
    std::size_t _index;
};

inline constexpr QVStyleAttributeKey QVStyleAttributeBackgroundColor{0};
inline constexpr QVStyleAttributeKey QVStyleAttributeBackgroundGradient{1};
inline constexpr QVStyleAttributeKey QVStyleAttributeTextColor{2};
/// A number as style sheets count it: 400 is normal, 700 bold.
inline constexpr QVStyleAttributeKey QVStyleAttributeFontWeight{3};
/// A `QVStyleFontStyle`.
inline constexpr QVStyleAttributeKey QVStyleAttributeFontStyle{4};
inline constexpr QVStyleAttributeKey QVStyleAttributeTextShadow{5};
/// A mask of `QVStyleTextDecoration…` bits.
inline constexpr QVStyleAttributeKey QVStyleAttributeTextDecoration{6};
/// A mask of underline style and pattern.
inline constexpr QVStyleAttributeKey QVStyleAttributeTextDecorationStyle{7};
inline constexpr QVStyleAttributeKey QVStyleAttributeTextDecorationColor{8};
inline constexpr QVStyleAttributeKey QVStyleAttributeBorderColor{9};
inline constexpr QVStyleAttributeKey QVStyleAttributeBorderGradient{10};
inline constexpr QVStyleAttributeKey QVStyleAttributeBoxShadow{11};
inline constexpr QVStyleAttributeKey QVStyleAttributeInsetShadow{12};

enum QVStyleFontStyle : std::int64_t { QVStyleFontStyleItalic = 1, QVStyleFontStyleNormal = 2 };

inline constexpr NSInteger QVStyleTextDecorationUnderline = 1;
inline constexpr NSInteger QVStyleTextDecorationOverline = 2;
inline constexpr NSInteger QVStyleTextDecorationLineThrough = 4;

/// The platform's numbers of underline styles and patterns.
inline constexpr NSInteger QVStyleTextDecorationStyleSingle = 0x01;
inline constexpr NSInteger QVStyleTextDecorationStylePatternDot = 0x100;
inline constexpr NSInteger QVStyleTextDecorationStylePatternDash = 0x200;

/// The null marker: the style says "none", which switches an attribute off even where a less specific style
/// has set it. An absent attribute says nothing.
using QVStyleNull = NSNull;

/// What an attribute can hold: "none", a number, a string, or a shared object (a colour, a gradient, a
/// shadow) that nobody changes any more.
using QVStyleValue = NSAttributeValue;

} // namespace quorvane
