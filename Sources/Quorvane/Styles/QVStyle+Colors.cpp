#include "Platform/Foundation/NSNumberFormatter.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Styles/QVStyle.h"

#include <boost/unordered/unordered_flat_map.hpp>

namespace quorvane {

namespace {

using Color = std::shared_ptr<const QVColor>;

struct NamedColor {
    const char16_t *name;
    std::uint32_t value;
};

// The names of the style sheet standard, but for "cyan", "magenta" and "slategrey": themes write the twins
// "aqua", "fuchsia" and "slategray".
constexpr NamedColor namedColors[] = {{u"aliceblue", 0xf0f8ff},
                                      {u"antiquewhite", 0xfaebd7},
                                      {u"aqua", 0x00ffff},
                                      {u"aquamarine", 0x7fffd4},
                                      {u"azure", 0xf0ffff},
                                      {u"beige", 0xf5f5dc},
                                      {u"bisque", 0xffe4c4},
                                      {u"black", 0x000000},
                                      {u"blanchedalmond", 0xffebcd},
                                      {u"blue", 0x0000ff},
                                      {u"blueviolet", 0x8a2be2},
                                      {u"brown", 0xa52a2a},
                                      {u"burlywood", 0xdeb887},
                                      {u"cadetblue", 0x5f9ea0},
                                      {u"chartreuse", 0x7fff00},
                                      {u"chocolate", 0xd2691e},
                                      {u"coral", 0xff7f50},
                                      {u"cornflowerblue", 0x6495ed},
                                      {u"cornsilk", 0xfff8dc},
                                      {u"crimson", 0xdc143c},
                                      {u"darkblue", 0x00008b},
                                      {u"darkcyan", 0x008b8b},
                                      {u"darkgoldenrod", 0xb8860b},
                                      {u"darkgray", 0xa9a9a9},
                                      {u"darkgreen", 0x006400},
                                      {u"darkgrey", 0xa9a9a9},
                                      {u"darkkhaki", 0xbdb76b},
                                      {u"darkmagenta", 0x8b008b},
                                      {u"darkolivegreen", 0x556b2f},
                                      {u"darkorange", 0xff8c00},
                                      {u"darkorchid", 0x9932cc},
                                      {u"darkred", 0x8b0000},
                                      {u"darksalmon", 0xe9967a},
                                      {u"darkseagreen", 0x8fbc8f},
                                      {u"darkslateblue", 0x483d8b},
                                      {u"darkslategray", 0x2f4f4f},
                                      {u"darkslategrey", 0x2f4f4f},
                                      {u"darkturquoise", 0x00ced1},
                                      {u"darkviolet", 0x9400d3},
                                      {u"deeppink", 0xff1493},
                                      {u"deepskyblue", 0x00bfff},
                                      {u"dimgray", 0x696969},
                                      {u"dimgrey", 0x696969},
                                      {u"dodgerblue", 0x1e90ff},
                                      {u"firebrick", 0xb22222},
                                      {u"floralwhite", 0xfffaf0},
                                      {u"forestgreen", 0x228b22},
                                      {u"fuchsia", 0xff00ff},
                                      {u"gainsboro", 0xdcdcdc},
                                      {u"ghostwhite", 0xf8f8ff},
                                      {u"gold", 0xffd700},
                                      {u"goldenrod", 0xdaa520},
                                      {u"gray", 0x808080},
                                      {u"green", 0x008000},
                                      {u"greenyellow", 0xadff2f},
                                      {u"grey", 0x808080},
                                      {u"honeydew", 0xf0fff0},
                                      {u"hotpink", 0xff69b4},
                                      {u"indianred", 0xcd5c5c},
                                      {u"indigo", 0x4b0082},
                                      {u"ivory", 0xfffff0},
                                      {u"khaki", 0xf0e68c},
                                      {u"lavender", 0xe6e6fa},
                                      {u"lavenderblush", 0xfff0f5},
                                      {u"lawngreen", 0x7cfc00},
                                      {u"lemonchiffon", 0xfffacd},
                                      {u"lightblue", 0xadd8e6},
                                      {u"lightcoral", 0xf08080},
                                      {u"lightcyan", 0xe0ffff},
                                      {u"lightgoldenrodyellow", 0xfafad2},
                                      {u"lightgray", 0xd3d3d3},
                                      {u"lightgreen", 0x90ee90},
                                      {u"lightgrey", 0xd3d3d3},
                                      {u"lightpink", 0xffb6c1},
                                      {u"lightsalmon", 0xffa07a},
                                      {u"lightseagreen", 0x20b2aa},
                                      {u"lightskyblue", 0x87cefa},
                                      {u"lightslategray", 0x778899},
                                      {u"lightslategrey", 0x778899},
                                      {u"lightsteelblue", 0xb0c4de},
                                      {u"lightyellow", 0xffffe0},
                                      {u"lime", 0x00ff00},
                                      {u"limegreen", 0x32cd32},
                                      {u"linen", 0xfaf0e6},
                                      {u"maroon", 0x800000},
                                      {u"mediumaquamarine", 0x66cdaa},
                                      {u"mediumblue", 0x0000cd},
                                      {u"mediumorchid", 0xba55d3},
                                      {u"mediumpurple", 0x9370db},
                                      {u"mediumseagreen", 0x3cb371},
                                      {u"mediumslateblue", 0x7b68ee},
                                      {u"mediumspringgreen", 0x00fa9a},
                                      {u"mediumturquoise", 0x48d1cc},
                                      {u"mediumvioletred", 0xc71585},
                                      {u"midnightblue", 0x191970},
                                      {u"mintcream", 0xf5fffa},
                                      {u"mistyrose", 0xffe4e1},
                                      {u"moccasin", 0xffe4b5},
                                      {u"navajowhite", 0xffdead},
                                      {u"navy", 0x000080},
                                      {u"oldlace", 0xfdf5e6},
                                      {u"olive", 0x808000},
                                      {u"olivedrab", 0x6b8e23},
                                      {u"orange", 0xffa500},
                                      {u"orangered", 0xff4500},
                                      {u"orchid", 0xda70d6},
                                      {u"palegoldenrod", 0xeee8aa},
                                      {u"palegreen", 0x98fb98},
                                      {u"paleturquoise", 0xafeeee},
                                      {u"palevioletred", 0xdb7093},
                                      {u"papayawhip", 0xffefd5},
                                      {u"peachpuff", 0xffdab9},
                                      {u"peru", 0xcd853f},
                                      {u"pink", 0xffc0cb},
                                      {u"plum", 0xdda0dd},
                                      {u"powderblue", 0xb0e0e6},
                                      {u"purple", 0x800080},
                                      {u"rebeccapurple", 0x663399},
                                      {u"red", 0xff0000},
                                      {u"rosybrown", 0xbc8f8f},
                                      {u"royalblue", 0x4169e1},
                                      {u"saddlebrown", 0x8b4513},
                                      {u"salmon", 0xfa8072},
                                      {u"sandybrown", 0xf4a460},
                                      {u"seagreen", 0x2e8b57},
                                      {u"seashell", 0xfff5ee},
                                      {u"sienna", 0xa0522d},
                                      {u"silver", 0xc0c0c0},
                                      {u"skyblue", 0x87ceeb},
                                      {u"slateblue", 0x6a5acd},
                                      {u"slategray", 0x708090},
                                      {u"snow", 0xfffafa},
                                      {u"springgreen", 0x00ff7f},
                                      {u"steelblue", 0x4682b4},
                                      {u"tan", 0xd2b48c},
                                      {u"teal", 0x008080},
                                      {u"thistle", 0xd8bfd8},
                                      {u"tomato", 0xff6347},
                                      {u"turquoise", 0x40e0d0},
                                      {u"violet", 0xee82ee},
                                      {u"wheat", 0xf5deb3},
                                      {u"white", 0xffffff},
                                      {u"whitesmoke", 0xf5f5f5},
                                      {u"yellow", 0xffff00},
                                      {u"yellowgreen", 0x9acd32}};

Color colorWithHexadecimalValue(std::uint32_t value) {
    return QVColor::colorWithRed((value >> 16 & 0xff) / 255.0, (value >> 8 & 0xff) / 255.0,
                                 (value & 0xff) / 255.0, 1);
}

/// The numbers that a pattern's groups hold; nothing for a group that took no part.
using Numbers = std::vector<std::optional<double>>;

double alphaOr1(const Numbers &numbers) { return numbers[3].value_or(1); }

Color colorOfBytes(const Numbers &n) {
    return QVColor::colorWithRed(*n[0] / 255, *n[1] / 255, *n[2] / 255, n.size() > 3 ? *n[3] : 1);
}
Color colorOfBrightness(const Numbers &n) {
    return QVColor::colorWithHueSaturationBrightness(*n[0] / 360, *n[1] / 100, *n[2] / 100,
                                                     n.size() > 3 ? *n[3] : 1);
}
Color colorOfLuminance(const Numbers &n) {
    return QVColor::colorWithHueSaturationLuminance(*n[0] / 360, *n[1] / 100, *n[2] / 100,
                                                    n.size() > 3 ? *n[3] : 1);
}
Color colorOfDisplayP3(const Numbers &n) {
    return QVColor::colorWithDisplayP3Red(*n[0], *n[1], *n[2], alphaOr1(n));
}
Color colorOfSRGB(const Numbers &n) { return QVColor::colorWithRed(*n[0], *n[1], *n[2], alphaOr1(n)); }

/// A way to write a color down; without a function its groups are hexadecimal digits.
struct Notation {
    const char16_t *pattern;
    Color (*color)(const Numbers &numbers);
};

// The first that matches decides. Each unit can be read in one way alone: what is no colour would otherwise
// take the square of its length, and values come from files.
constexpr Notation notations[] = {
    {uR"(^#\s*(?:([a-fA-F0-9]{3})|([a-fA-F0-9]{6}))\s*$)", nullptr},
    {uR"(^rgb\(\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+)\s*\)$)", colorOfBytes},
    {uR"(^rgba\(\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+(?:\.\d*)?)\s*\)$)", colorOfBytes},
    {uR"(^hsb\(\s*(\d+)\s*,\s*(\d+)%\s*,\s*(\d+)%\s*\)$)", colorOfBrightness},
    {uR"(^hsba\(\s*(\d+)\s*,\s*(\d+)%\s*,\s*(\d+)%\s*,\s*(\d+(?:\.\d*)?)\s*\)$)", colorOfBrightness},
    {uR"(^hsl\(\s*(\d+)\s*,\s*(\d+)%\s*,\s*(\d+)%\s*\)$)", colorOfLuminance},
    {uR"(^hsla\(\s*(\d+)\s*,\s*(\d+)%\s*,\s*(\d+)%\s*,\s*(\d+(?:\.\d*)?)\s*\)$)", colorOfLuminance},
    {uR"(^color\(\s*display-p3\s+(\d+(?:\.\d*)?)\s+(\d+(?:\.\d*)?)\s+(\d+(?:\.\d*)?))"
     uR"((?:\s+/\s*(\d+(?:\.\d*)?))?\s*\)$)",
     colorOfDisplayP3},
    {uR"(^color\(\s*srgb\s+(\d+(?:\.\d*)?)\s+(\d+(?:\.\d*)?)\s+(\d+(?:\.\d*)?))"
     uR"((?:\s+/\s*(\d+(?:\.\d*)?))?\s*\)$)",
     colorOfSRGB},
};

/// The notations' patterns, compiled once.
const std::vector<std::shared_ptr<NSRegularExpression>> &compiledNotations() {
    static const auto &compiled = *[] {
        auto *patterns = new std::vector<std::shared_ptr<NSRegularExpression>>;
        for (const Notation &notation : notations)
            patterns->push_back(NSRegularExpression::regularExpressionWithPattern(notation.pattern, 0));
        return patterns;
    }();
    return compiled;
}

/// Three digits, each of which stands for two, or six.
Color colorWithDigits(std::u16string_view digits) {
    std::uint32_t value = 0;
    for (const char16_t digit : digits) {
        const auto number =
            static_cast<std::uint32_t>(digit <= u'9' ? digit - u'0' : (digit | 0x20) - u'a' + 10);
        value = digits.size() == 3 ? value << 8 | number * 0x11 : value << 4 | number;
    }
    return colorWithHexadecimalValue(value);
}

} // namespace

Color QVStyle::colorWithCSSName(const NSString &name) {
    using Table = boost::unordered_flat_map<std::u16string_view, Color>;
    static const auto &table = *[] {
        auto *colors = new Table;
        for (const NamedColor &named : namedColors)
            colors->emplace(named.name, colorWithHexadecimalValue(named.value));
        colors->emplace(u"transparent", QVColor::clearColor());
        return colors;
    }();
    const auto entry = table.find(name.view());
    return entry == table.end() ? nullptr : entry->second;
}

Color QVStyle::colorWithCSSValue(const NSString &value) {
    if (!value || value == u"none" || value == u"default" || value == u"inherit")
        return nullptr;
    if (Color named = colorWithCSSName(value))
        return named;
    for (std::size_t index = 0; index < std::size(notations); ++index) {
        const auto match =
            compiledNotations()[index]->firstMatchInString(value, 0, NSMakeRange(0, value.length()));
        if (!match)
            continue;
        Numbers numbers;
        for (std::size_t group = 1; group < match->size(); ++group) {
            const NSRange range = (*match)[group];
            if (range.location == NSNotFound)
                numbers.emplace_back();
            else if (!notations[index].color)
                return colorWithDigits(value.view().substr(range.location, range.length));
            else
                numbers.push_back(QVNumberFromDecimalString(value.substringWithRange(range)));
        }
        return notations[index].color(numbers);
    }
    return nullptr;
}

} // namespace quorvane
