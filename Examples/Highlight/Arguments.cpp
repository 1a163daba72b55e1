#include "Arguments.h"

#include <charconv>
#include <string_view>

namespace highlight {

const char *const usage =
    "usage: quorvane-highlight [OPTION]... FILE...\n"
    "Parses files with language packages and prints them; \"-\" reads the standard input.\n"
    "\n"
    "  --packages DIR      take the language packages in the folders of DIR\n"
    "  --no-cache          read them afresh; else what was read is kept in the user's cache folder\n"
    "  --syntax-file FILE  take this syntax too; may be repeated\n"
    "  --syntax NAME       the language of all files; without it names and contents tell\n"
    "  --format FORMAT     ansi: colours for a terminal (the default); tree: the match tree\n"
    "  --max-line N        run no pattern on lines of more than N units; 0: no limit (default 10000)\n"
    "  --stats             print figures to the standard error stream\n"
    "  --repeat N          parse N times afresh; figures are medians\n"
    "  --plain             search afresh each time instead of remembering; the tree is the same\n"
    "  --help              print this\n";

std::optional<Arguments> parseArguments(int count, char **values, std::string &message) {
    Arguments arguments;
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
        if (argument == "--stats" || argument == "--plain") {
            (argument == "--stats" ? arguments.statistics : arguments.plain) = true;
            continue;
        }
        if (argument == "--no-cache") {
            arguments.withoutCache = true;
            continue;
        }
        std::string_view name = argument;
        std::string_view value;
        if (const auto equals = argument.find('='); equals != argument.npos) {
            name = argument.substr(0, equals);
            value = argument.substr(equals + 1);
        } else if (index + 1 < count) {
            value = values[++index];
        } else if (name == "--packages" || name == "--syntax-file" || name == "--syntax" ||
                   name == "--format" || name == "--max-line" || name == "--repeat") {
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
            if (value != "ansi" && value != "tree")
                return fail("unknown format: " + std::string(value));
            arguments.format = value == "tree" ? Arguments::Format::Tree : Arguments::Format::Ansi;
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
    if (arguments.files.empty())
        return fail("no file given");
    return arguments;
}

} // namespace highlight
