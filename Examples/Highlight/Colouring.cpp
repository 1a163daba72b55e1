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

using namespace quorvane;

namespace highlight {

namespace {

/// Text whose look is painted over stretch by stretch. It is kept as pieces that look the same all over, with
/// their looks as numbers, so that painting compares and stores no more than those. What is painted comes
/// nearly in the order of the text: so the pieces up to the present place stand in front of a gap, all others
/// behind it, and each is moved over it about once.
class Canvas {
public:
    Canvas(NSRange range, const NSAttributes &defaults, Runs spare)
        // Room that is not used costs nothing, and pieces that must move cost more than those that are
        // painted.
        : _room(spare.takeRoom(range.length / 4 + 2)), _pieces(_room.starts.get()), _behind(_room.size - 1),
          _end(NSMaxRange(range)), _palette(spare.takePalette(defaults)) {
        _pieces[0] = {range.location, Palette::plainLook};
        // Ends the last piece.
        _pieces[_behind] = {_end, Palette::plainLook};
    }

    void paint(NSRange range, const NSAttributes &attributes, std::uint64_t flags) {
        if (range.length == 0)
            return;
        // Each end of the range may cut a piece.
        if (_behind - _front < 2)
            widenGap();
        goToPieceAt(range.location);
        Runs::Start *piece = &_pieces[_front - 1];
        if (piece->location < range.location) {
            _pieces[_front++] = {range.location, piece->look};
            ++piece;
        }
        const NSUInteger end = NSMaxRange(range);
        while (true) {
            const NSUInteger endOfPiece = _pieces[_behind].location;
            if (endOfPiece > end)
                _pieces[--_behind] = {end, piece->look};
            piece->look = _palette->lookOver(static_cast<std::uint32_t>(piece->look), attributes, flags);
            if (endOfPiece >= end)
                return;
            goToNextPiece();
            ++piece;
        }
    }

    /// Takes the pieces out of the canvas.
    Runs takeRuns() {
        while (_behind + 1 < _room.size)
            goToNextPiece();
        std::size_t kept = 0;
        for (std::size_t index = 0; index < _front; ++index) {
            const Runs::Start piece = _pieces[index];
            if (piece.location < _end && (kept == 0 || _pieces[kept - 1].look != piece.look))
                _pieces[kept++] = piece;
        }
        return Runs(std::move(_room), kept, _end, std::move(_palette));
    }

private:
    void goToNextPiece() { _pieces[_front++] = _pieces[_behind++]; }
    /// The piece at a place is the last one in front of the gap.
    void goToPieceAt(NSUInteger location) {
        while (_pieces[_front - 1].location > location)
            _pieces[--_behind] = _pieces[--_front];
        while (_pieces[_behind].location <= location)
            goToNextPiece();
    }
    void widenGap() {
        Runs::Room wider(2 * _room.size + 2);
        std::copy_n(_pieces, _front, wider.starts.get());
        std::copy_backward(_pieces + _behind, _pieces + _room.size, wider.starts.get() + wider.size);
        _behind += wider.size - _room.size;
        _room = std::move(wider);
        _pieces = _room.starts.get();
    }

    /// In order in front of the gap and behind it.
    Runs::Room _room;
    Runs::Start *_pieces;
    std::size_t _front = 1;
    std::size_t _behind;
    NSUInteger _end;
    std::unique_ptr<Palette> _palette;
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

Runs attributeRuns(const QVParse &parse, NSRange range, const NSAttributes &defaults, Runs spare) {
    Canvas canvas(range, defaults, std::move(spare));
    parse.enumerateAttributesInRange(range, defaults,
                                     [&](const NSAttributes &attributes, NSRange stretch,
                                         const std::shared_ptr<QVSyntax> &, std::uint64_t flags,
                                         bool &) { canvas.paint(stretch, attributes, flags); });
    return canvas.takeRuns();
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
