#pragma once

#include "Arguments.h"
#include "Runs.h"

#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Styles/QVTheme.h"

#include <unordered_map>

namespace highlight {

/// A colour as screens take it.
struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend bool operator==(Colour, Colour) = default;
    friend auto operator<=>(Colour, Colour) = default;
};

/// What of a run's attributes a terminal or a page can show. What the text's defaults say counts as nothing.
struct Look {
    std::optional<Colour> foreground;
    std::optional<Colour> background;
    bool bold = false;
    bool italic = false;
    bool underlined = false;
    bool struckThrough = false;

    friend bool operator==(const Look &, const Look &) = default;
    friend auto operator<=>(const Look &, const Look &) = default;
};

/// The theme that the name or file stands for: one of the packages', else a theme file. Throws `Failure`.
std::shared_ptr<quorvane::QVTheme> themeNamed(const std::string &name);

/// The attributes of plain text under a theme.
quorvane::NSAttributes defaultAttributes(const quorvane::QVTheme &theme);

/// The runs of a range of the text. Needs read access. Runs that are needed no longer may give their memory
/// and their palette.
Runs attributeRuns(const quorvane::QVParse &parse, quorvane::NSRange range,
                   const quorvane::NSAttributes &defaults, Runs spare = {});

Look lookOfAttributes(const quorvane::NSAttributes &attributes, const quorvane::NSAttributes &defaults);

/// The looks of runs as small numbers, equal ones for equal looks. What runs share is looked at once: a text
/// has millions of runs, and a few dozen looks.
class Looks {
public:
    explicit Looks(quorvane::NSAttributes defaults) : _defaults(std::move(defaults)) {}

    std::uint32_t numberOf(const quorvane::NSAttributes &attributes);
    const Look &operator[](std::uint32_t number) const { return _looks[number]; }
    bool isPlain(std::uint32_t number) const { return _looks[number] == Look(); }

private:
    quorvane::NSAttributes _defaults;
    std::vector<Look> _looks;
    /// By the address of the first attribute; the dictionaries are kept, so that none gets another's.
    std::unordered_map<const void *, std::uint32_t> _numbers;
    std::vector<quorvane::NSAttributes> _kept;
};

/// Absent for a null colour and one that can't be shown.
std::optional<Colour> colourOf(const quorvane::NSColor *color);
/// "#rrggbb".
std::string hexadecimal(Colour colour);

} // namespace highlight
