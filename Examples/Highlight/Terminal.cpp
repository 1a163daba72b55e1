#include "Output.h"

#include "Platform/AppKit/NSColor.h"
#include "Quorvane/Symbols/QVLexicalClass.h"

#include <limits>

using namespace quorvane;

namespace highlight {

namespace {

int distance(Colour a, Colour b) {
    const auto square = [](int difference) { return difference * difference; };
    return square(a.red - b.red) + square(a.green - b.green) + square(a.blue - b.blue);
}

/// The palette of 256: a cube of six steps a channel from 16 on, and the greys behind it.
Colour colourOfPalette(int index) {
    constexpr std::uint8_t steps[] = {0, 95, 135, 175, 215, 255};
    if (index >= 232) {
        const auto grey = static_cast<std::uint8_t>(8 + 10 * (index - 232));
        return {grey, grey, grey};
    }
    index -= 16;
    return {steps[index / 36], steps[index / 6 % 6], steps[index % 6]};
}

/// The sixteen of every terminal, as most of them show these.
constexpr Colour sixteen[] = {{0, 0, 0},     {170, 0, 0},    {0, 170, 0},    {170, 85, 0},
                              {0, 0, 170},   {170, 0, 170},  {0, 170, 170},  {170, 170, 170},
                              {85, 85, 85},  {255, 85, 85},  {85, 255, 85},  {255, 255, 85},
                              {85, 85, 255}, {255, 85, 255}, {85, 255, 255}, {255, 255, 255}};

template <typename ColourOf> int nearest(Colour colour, int first, int behind, ColourOf colourOfIndex) {
    int best = first;
    int bestDistance = std::numeric_limits<int>::max();
    for (int index = first; index < behind; ++index)
        if (const int found = distance(colour, colourOfIndex(index)); found < bestDistance) {
            bestDistance = found;
            best = index;
        }
    return best;
}

std::string codeOfColour(Colour colour, bool isBackground, ColourDepth depth) {
    const std::string lead = isBackground ? "48" : "38";
    if (depth == ColourDepth::True)
        return lead + ";2;" + std::to_string(colour.red) + ";" + std::to_string(colour.green) + ";" +
               std::to_string(colour.blue);
    if (depth == ColourDepth::Palette)
        return lead + ";5;" + std::to_string(nearest(colour, 16, 256, colourOfPalette));
    const int index = nearest(colour, 0, 16, [](int number) { return sixteen[number]; });
    return std::to_string((isBackground ? 40 : 30) + (index < 8 ? index : index - 8 + 60));
}

std::string codesOfLook(const Look &look, ColourDepth depth) {
    std::string codes;
    const auto add = [&codes](const std::string &code) { codes += (codes.empty() ? "" : ";") + code; };
    if (look.bold)
        add("1");
    if (look.italic)
        add("3");
    if (look.underlined)
        add("4");
    if (look.struckThrough)
        add("9");
    if (look.foreground)
        add(codeOfColour(*look.foreground, false, depth));
    if (look.background)
        add(codeOfColour(*look.background, true, depth));
    return codes;
}

} // namespace

std::string ansiText(std::u16string_view text, const Runs &runs, const NSAttributes &defaults,
                     ColourDepth depth) {
    if (depth == ColourDepth::None)
        return NSString(text).UTF8String();
    std::string output;
    Looks looks(defaults);
    for (std::size_t first = 0; first < runs.size();) {
        const std::uint32_t look = looks.numberOf(runs[first].attributes);
        std::size_t behind = first + 1;
        while (behind < runs.size() && looks.numberOf(runs[behind].attributes) == look)
            ++behind;
        const NSUInteger start = runs[first].range.location;
        const std::u16string_view piece = text.substr(start, NSMaxRange(runs[behind - 1].range) - start);
        const std::string codes = codesOfLook(looks[look], depth);
        // Each line by itself: pagers show lines, and a background must not run on to the edge.
        for (std::size_t place = 0; place < piece.size();) {
            const std::size_t end = std::min(piece.find_first_of(u"\r\n", place), piece.size());
            const std::size_t next = std::min(piece.find_first_not_of(u"\r\n", end), piece.size());
            if (end > place && !codes.empty())
                output += "\x1b[" + codes + "m" + NSString(piece.substr(place, end - place)).UTF8String() +
                          "\x1b[0m";
            else
                output += NSString(piece.substr(place, end - place)).UTF8String();
            output += NSString(piece.substr(end, next - end)).UTF8String();
            place = next;
        }
        first = behind;
    }
    return output;
}

std::string textOfLook(const Look &look) {
    std::string output;
    const auto add = [&output](const std::string &word) { output += (output.empty() ? "" : " ") + word; };
    if (look.foreground)
        add("color=" + hexadecimal(*look.foreground));
    if (look.background)
        add("background=" + hexadecimal(*look.background));
    for (const auto &[isSet, word] :
         {std::pair(look.bold, "bold"), std::pair(look.italic, "italic"),
          std::pair(look.underlined, "underline"), std::pair(look.struckThrough, "line-through")})
        if (isSet)
            add(word);
    return output;
}

std::string attributesText(const Runs &runs, const NSAttributes &defaults) {
    std::string output;
    Looks looks(defaults);
    for (const Run run : runs) {
        output += std::to_string(run.range.location) + " " + std::to_string(run.range.length);
        const std::string look = textOfLook(looks[looks.numberOf(run.attributes)]);
        output += (look.empty() ? "" : " ") + look;
        if (const NSAttributeValue *const lexicalClass =
                run.attributes.valueForKey(QVLexicalClassAttributeName))
            output += " class=" + lexicalClass->stringValue().UTF8String();
        output += '\n';
    }
    return output;
}

} // namespace highlight
