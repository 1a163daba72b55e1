#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace highlight {

/// How many colours a terminal shows.
enum class ColourDepth { None, Sixteen, Palette, True };

/// A place as people name it: line and column, counted from 1. Columns are UTF-16 code units.
struct Place {
    std::uint64_t line = 0;
    std::uint64_t column = 0;
};

/// What the command line asks for.
struct Arguments {
    enum class Format { Ansi, Html, Tree, Attributes, Symbols };

    std::string packages;
    bool withoutCache = false;
    std::vector<std::string> syntaxFiles;
    std::string syntax;
    /// A name or a file; empty where none is given.
    std::string theme;
    ColourDepth depth = ColourDepth::None;
    Format format = Format::Ansi;
    std::uint64_t maximumLineLength = 10000;
    bool statistics = false;
    std::uint64_t repeat = 1;
    std::uint64_t editBenchmark = 0;
    bool plain = false;
    bool list = false;
    std::optional<Place> explain;
    std::optional<Place> definition;
    std::optional<Place> occurrences;
    bool json = false;
    bool trace = false;
    bool help = false;
    std::vector<std::string> files;
};

extern const char *const usage;

/// The arguments, or nothing with a message of one line.
std::optional<Arguments> parseArguments(int count, char **values, std::string &message);

} // namespace highlight
