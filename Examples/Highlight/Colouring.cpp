#include "Colouring.h"

#include "Languages.h"

#include "Platform/AppKit/NSColor.h"
#include "Platform/CoreGraphics/CGColorSpace.h"
#include "Platform/CoreText/CTFont.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Parsers/QVSyntaxHighlighting.h"

#include <cmath>
#include <filesystem>
#include <map>

using namespace quorvane;

namespace highlight {

namespace {

/// Text whose look is painted over stretch by stretch. It is kept as pieces that look the same all over, and
/// looks have numbers, so that painting compares and stores no more than those. What is painted comes nearly
/// in the order of the text: so the pieces are kept as those up to a place, and those behind it, the nearest
/// on top.
class Canvas {
public:
    Canvas(NSRange range, const NSAttributes &defaults)
        : _end(NSMaxRange(range)), _defaults(defaults), _looks{defaults}, _pieces{{range.location, 0}} {}

    void paint(NSRange range, const NSAttributes &attributes, std::uint64_t flags) {
        if (range.length == 0)
            return;
        goToPieceAt(range.location);
        if (_pieces.back().start < range.location)
            _pieces.push_back({range.location, _pieces.back().look});
        const NSUInteger end = NSMaxRange(range);
        while (true) {
            std::uint32_t &look = _pieces.back().look;
            const NSUInteger endOfPiece = _piecesBehind.empty() ? _end : _piecesBehind.back().start;
            if (endOfPiece > end)
                _piecesBehind.push_back({end, look});
            look = lookOver(look, attributes, flags);
            if (endOfPiece >= end)
                return;
            goToNextPiece();
        }
    }

    std::vector<Run> runs() {
        while (!_piecesBehind.empty())
            goToNextPiece();
        std::vector<Run> result;
        result.reserve(_pieces.size());
        for (std::size_t index = 0; index < _pieces.size();) {
            const Piece &piece = _pieces[index];
            while (++index < _pieces.size() && _pieces[index].look == piece.look)
                ;
            const NSUInteger end = index < _pieces.size() ? _pieces[index].start : _end;
            if (end > piece.start)
                result.push_back({{piece.start, end - piece.start}, _looks[piece.look]});
        }
        return result;
    }

private:
    /// Reaches to the next one.
    struct Piece {
        NSUInteger start;
        std::uint32_t look;
    };
    struct Repaint {
        std::uint32_t before = 0;
        const NSAttribute *attributes = nullptr;
        std::uint64_t flags = ~std::uint64_t{0};
        std::uint32_t after = 0;
    };

    void goToNextPiece() {
        _pieces.push_back(_piecesBehind.back());
        _piecesBehind.pop_back();
    }
    /// The piece at a place is the last of those up to it.
    void goToPieceAt(NSUInteger location) {
        while (_pieces.back().start > location) {
            _piecesBehind.push_back(_pieces.back());
            _pieces.pop_back();
        }
        while (!_piecesBehind.empty() && _piecesBehind.back().start <= location)
            goToNextPiece();
    }

    std::uint32_t lookOver(std::uint32_t before, const NSAttributes &attributes, std::uint64_t flags) {
        const NSAttribute *const key = attributes.begin();
        Repaint &recent =
            _recent[(reinterpret_cast<std::uintptr_t>(key) / alignof(NSAttribute) + before) % _recent.size()];
        if (recent.before != before || recent.attributes != key || recent.flags != flags)
            recent = {before, key, flags, newLookOver(before, attributes, flags)};
        return recent.after;
    }

    std::uint32_t newLookOver(std::uint32_t before, const NSAttributes &attributes, std::uint64_t flags) {
        const auto key = std::tuple(before, attributes.begin(), flags);
        if (const auto found = _known.find(key); found != _known.end())
            return found->second;
        NSMutableAttributes look(_looks[before]);
        if (flags != QVAttributeFlagsAdd) {
            for (const NSAttributeKey name : QVParse::attributesAffectedBySyntaxHighlighting())
                look.remove(name);
            look.add(_defaults);
        }
        look.add(attributes);
        const auto number = static_cast<std::uint32_t>(_looks.size());
        _looks.push_back(look.attributes());
        const auto equal = std::find(_looks.begin(), _looks.end() - 1, _looks.back());
        _kept.push_back(attributes);
        return _known[key] =
                   equal + 1 == _looks.end() ? number : static_cast<std::uint32_t>(equal - _looks.begin());
    }

    NSUInteger _end;
    NSAttributes _defaults;
    std::vector<NSAttributes> _looks;
    std::vector<Piece> _pieces;
    std::vector<Piece> _piecesBehind;
    std::array<Repaint, 64> _recent;
    std::map<std::tuple<std::uint32_t, const NSAttribute *, std::uint64_t>, std::uint32_t> _known;
    /// Keeps what the tables know by its address.
    std::vector<NSAttributes> _kept;
};

bool isSet(const NSAttributes &attributes, NSAttributeKey key) {
    const NSAttributeValue *const value = attributes.valueForKey(key);
    return value != nullptr && value->integerValue() != 0;
}

} // namespace

std::shared_ptr<QVTheme> themeNamed(const std::string &name) {
    if (auto theme = QVTheme::themeWithName(NSString::stringWithUTF8String(name)))
        return theme;
    const std::string bundled = bundledThemes() + "/" + name + ".css";
    std::error_code missing;
    const std::string &file = std::filesystem::is_regular_file(bundled, missing) ? bundled : name;
    if (!std::filesystem::exists(file, missing))
        throw Failure{"unknown theme: " + name, 2};
    std::shared_ptr<NSError> error;
    auto theme =
        QVTheme::themeWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(file)), &error);
    if (!theme)
        throw Failure{file + ": " + (error ? textOfError(*error) : "no theme"), 1};
    return theme;
}

NSAttributes defaultAttributes(const QVTheme &theme) {
    NSMutableAttributes attributes;
    if (const CTFontRef font = CTFontCreateMonospacedSystemFont(12))
        attributes.set(NSFontAttributeName, font);
    attributes.set(NSForegroundColorAttributeName, theme.textColor());
    return attributes.attributes();
}

std::vector<Run> attributeRuns(const QVParse &parse, NSRange range, const NSAttributes &defaults) {
    Canvas canvas(range, defaults);
    parse.enumerateAttributesInRange(range, defaults,
                                     [&](const NSAttributes &attributes, NSRange stretch,
                                         const std::shared_ptr<QVSyntax> &, std::uint64_t flags,
                                         bool &) { canvas.paint(stretch, attributes, flags); });
    return canvas.runs();
}

std::optional<Colour> colourOf(const NSColor *color) {
    const CGColorRef matched =
        color ? CGColorCreateCopyByMatchingToColorSpace(CGColorSpaceCreateWithName(kCGColorSpaceSRGB),
                                                        kCGRenderingIntentDefault, color->CGColor())
              : nullptr;
    const auto components = CGColorGetComponents(matched);
    if (components.size() != 4)
        return std::nullopt;
    const auto level = [&](std::size_t index) {
        const CGFloat value = components[index];
        return static_cast<std::uint8_t>(std::lround(255 * (value > 0 ? std::min<CGFloat>(value, 1) : 0)));
    };
    return Colour{level(0), level(1), level(2)};
}

Look lookOfAttributes(const NSAttributes &attributes, const NSAttributes &defaults) {
    Look look;
    const auto foreground = colourOf(attributes.objectForKey<NSColor>(NSForegroundColorAttributeName));
    if (foreground != colourOf(defaults.objectForKey<NSColor>(NSForegroundColorAttributeName)))
        look.foreground = foreground;
    look.background = colourOf(attributes.objectForKey<NSColor>(NSBackgroundColorAttributeName));
    if (const auto *const font = attributes.objectForKey<CTFont>(NSFontAttributeName)) {
        const CTFontRef held = std::static_pointer_cast<const CTFont>(font->shared_from_this());
        look.bold = (CTFontGetSymbolicTraits(held) & kCTFontTraitBold) != 0;
        look.italic = (CTFontGetSymbolicTraits(held) & kCTFontTraitItalic) != 0;
    }
    look.underlined = isSet(attributes, NSUnderlineStyleAttributeName);
    look.struckThrough = isSet(attributes, NSStrikethroughStyleAttributeName);
    return look;
}

std::uint32_t Looks::numberOf(const NSAttributes &attributes) {
    const auto [entry, isNew] = _numbers.try_emplace(attributes.begin(), 0);
    if (isNew) {
        _kept.push_back(attributes);
        const Look look = lookOfAttributes(attributes, _defaults);
        const auto found = std::find(_looks.begin(), _looks.end(), look);
        entry->second = static_cast<std::uint32_t>(found - _looks.begin());
        if (found == _looks.end())
            _looks.push_back(look);
    }
    return entry->second;
}

std::string hexadecimal(Colour colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.red, colour.green, colour.blue);
    return text;
}

} // namespace highlight
