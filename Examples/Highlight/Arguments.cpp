#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace highlight {

const char *const usage =
    "usage: quorvane-highlight [OPTION]... FILE...\n"
    "Parses files with language packages and prints them; \"-\" reads the standard input.\n"
    "\n"
    "  --packages DIR      take the language packages in the folders of DIR\n"
    "  --no-cache          read them afresh; else what was read is kept in the user's cache folder\n"
    "  --syntax-file FILE  take this syntax too; may be repeated\n"
    "  --syntax NAME       the language of all files; without it names and contents tell\n"
    "  --theme NAME|FILE   the theme; else Dusk, and in pages Daylight and Dusk by the reader's wish\n"
    "  --color WHEN        auto (the default): colours as the terminal tells, none elsewhere or with "
    "NO_COLOR set;\n"
    "                      never; always: as the terminal tells; 16, 256, truecolor: so many, wherever it "
    "goes\n"
    "  --format FORMAT     ansi: colours for a terminal (the default); html: a page; tree: the match tree;\n"
    "                      attributes: the runs of one look; symbols: the outline\n"
    "  --json              print the outline as an array of objects, for programs\n"
    "  --list              print the syntaxes and themes that can be named, and their files\n"
    "  --explain LINE:COLUMN\n"
    "                      print why the character there looks as it does: scopes, patterns, styles;\n"
    "                      both count from 1, columns in units of UTF-16\n"
    "  --definition LINE:COLUMN\n"
    "                      print where the identifier there is defined\n"
    "  --occurrences LINE:COLUMN\n"
    "                      print where else it stands, as far as its definition is seen\n"
    "  --max-line N        run no pattern on lines of more than N units; 0: no limit (default 10000)\n"
    "  --stats             print figures to the standard error stream\n"
    "  --trace             print what each scope cost to the standard error stream: time, hits and misses,\n"
    "                      all patterns searched for one by one\n"
    "  --repeat N          parse N times afresh; figures are medians\n"
    "  --edit-benchmark N  time N insertions of one letter, from the edit to its runs, spread over the file\n"
    "  --plain             search afresh each time instead of remembering; the tree is the same\n"
    "  --help              print this\n";

namespace {

ColourDepth depthOfTerminal() {
    const auto variable = [](const char *name) {
        const char *const value = std::getenv(name);
        return std::string_view(value ? value : "");
    };
    const std::string_view color = variable("COLORTERM");
    if (color == "truecolor" || color == "24bit")
        return ColourDepth::True;
    const std::string_view terminal = variable("TERM");
    if (terminal == "dumb")
        return ColourDepth::None;
    const bool isRich =
        terminal.find("256color") != terminal.npos || terminal.find("direct") != terminal.npos;
    return isRich ? ColourDepth::Palette : ColourDepth::Sixteen;
}

std::optional<ColourDepth> depthOfWord(std::string_view word) {
    if (word == "auto") {
        const char *const noColor = std::getenv("NO_COLOR");
        const bool isOff = (noColor && noColor[0] != '\0') || isatty(STDOUT_FILENO) == 0;
        return isOff ? ColourDepth::None : depthOfTerminal();
    }
    if (word == "never")
        return ColourDepth::None;
    if (word == "always") {
        const ColourDepth depth = depthOfTerminal();
        return depth == ColourDepth::None ? ColourDepth::Sixteen : depth;
    }
    if (word == "16")
        return ColourDepth::Sixteen;
    if (word == "256")
        return ColourDepth::Palette;
    return word == "truecolor" ? std::optional(ColourDepth::True) : std::nullopt;
}

std::optional<Arguments::Format> formatOfWord(std::string_view word) {
    for (const auto &[name, format] :
         {std::pair("ansi", Arguments::Format::Ansi), std::pair("html", Arguments::Format::Html),
          std::pair("tree", Arguments::Format::Tree), std::pair("attributes", Arguments::Format::Attributes),
          std::pair("symbols", Arguments::Format::Symbols)})
        if (word == name)
            return format;
    return std::nullopt;
}

/// "LINE:COLUMN", both above 0.
std::optional<Place> placeOfWord(std::string_view word) {
    const auto colon = word.find(':');
    if (colon == word.npos)
        return std::nullopt;
    const auto number = [](std::string_view digits) -> std::uint64_t {
        std::uint64_t value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        return error == std::errc() && end == digits.data() + digits.size() ? value : 0;
    };
    const Place place{number(word.substr(0, colon)), number(word.substr(colon + 1))};
    return place.line != 0 && place.column != 0 ? std::optional(place) : std::nullopt;
}

constexpr std::string_view optionsWithValue[] = {
    "--packages", "--syntax-file", "--syntax",         "--format",  "--theme",      "--color",
    "--max-line", "--repeat",      "--edit-benchmark", "--explain", "--definition", "--occurrences"};

} // namespace

std::optional<Arguments> parseArguments(int count, char **values, std::string &message) {
    Arguments arguments;
    arguments.depth = *depthOfWord("auto");
    const auto fail = [&](std::string text) {
        message = std::move(text);
        return std::nullopt;
    };
    for (int index = 1; index < count; ++index) {
        const std::string_view argument = values[index];
        if (argument == "-" || !argument.starts_with("-")) {
            arguments.files.emplace_back(argument);
            continue;
        }
        if (argument == "--") {
            arguments.files.insert(arguments.files.end(), values + index + 1, values + count);
            break;
        }
        if (argument == "--help") {
            arguments.help = true;
            return arguments;
        }
        if (argument == "--list" || argument == "--trace") {
            (argument == "--list" ? arguments.list : arguments.trace) = true;
            continue;
        }
        if (argument == "--stats" || argument == "--plain") {
            (argument == "--stats" ? arguments.statistics : arguments.plain) = true;
            continue;
        }
        if (argument == "--no-cache" || argument == "--json") {
            (argument == "--json" ? arguments.json : arguments.withoutCache) = true;
            continue;
        }
        std::string_view name = argument;
        std::string_view value;
        if (const auto equals = argument.find('='); equals != argument.npos) {
            name = argument.substr(0, equals);
            value = argument.substr(equals + 1);
        } else if (index + 1 < count) {
            value = values[++index];
        } else if (std::find(std::begin(optionsWithValue), std::end(optionsWithValue), name) !=
                   std::end(optionsWithValue)) {
            return fail(std::string(name) + " needs a value");
        }
        const auto number = [&](std::uint64_t &target) {
            const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), target);
            return error == std::errc() && end == value.data() + value.size();
        };
        if (name == "--packages") {
            arguments.packages = value;
        } else if (name == "--syntax-file") {
            arguments.syntaxFiles.emplace_back(value);
        } else if (name == "--syntax") {
            arguments.syntax = value;
        } else if (name == "--format") {
            const auto format = formatOfWord(value);
            if (!format)
                return fail("unknown format: " + std::string(value));
            arguments.format = *format;
        } else if (name == "--theme") {
            arguments.theme = value;
        } else if (name == "--color") {
            const auto depth = depthOfWord(value);
            if (!depth)
                return fail("--color takes auto, never, always, 16, 256 or truecolor, not: " +
                            std::string(value));
            arguments.depth = *depth;
        } else if (name == "--explain" || name == "--definition" || name == "--occurrences") {
            auto &place = name == "--explain"      ? arguments.explain
                          : name == "--definition" ? arguments.definition
                                                   : arguments.occurrences;
            place = placeOfWord(value);
            if (!place)
                return fail(std::string(name) +
                            " takes LINE:COLUMN, both from 1, not: " + std::string(value));
        } else if (name == "--edit-benchmark") {
            if (!number(arguments.editBenchmark) || arguments.editBenchmark == 0)
                return fail("--edit-benchmark takes a whole number above 0, not: " + std::string(value));
        } else if (name == "--max-line") {
            if (!number(arguments.maximumLineLength))
                return fail("--max-line takes a whole number, not: " + std::string(value));
        } else if (name == "--repeat") {
            if (!number(arguments.repeat) || arguments.repeat == 0)
                return fail("--repeat takes a whole number above 0, not: " + std::string(value));
        } else {
            return fail("unknown option: " + std::string(name));
        }
    }
    if (arguments.explain.has_value() + arguments.definition.has_value() + arguments.occurrences.has_value() >
        1)
        return fail("--explain, --definition and --occurrences go one at a time");
    if (arguments.json && arguments.format != Arguments::Format::Symbols)
        return fail("--json goes with --format symbols");
    if (arguments.files.empty() && !arguments.list)
        return fail("no file given");
    return arguments;
}

} // namespace highlight
