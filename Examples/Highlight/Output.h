#pragma once

#include "Colouring.h"

namespace highlight {

/// Escapes for a terminal that knows so many colours, around the text as it is.
std::string ansiText(std::u16string_view text, const Runs &runs, const quorvane::NSAttributes &defaults,
                     ColourDepth depth);

/// What a look adds to plain text, in words: "color=#rrggbb background=#rrggbb bold ..."; empty for nothing.
std::string textOfLook(const Look &look);

/// One line for each run: its place and length, and what it looks like.
std::string attributesText(const Runs &runs, const quorvane::NSAttributes &defaults);

/// How a page shows the text under one theme.
struct PageTheme {
    std::shared_ptr<quorvane::QVTheme> theme;
    quorvane::NSAttributes defaults;
    Runs runs;
};

/// A page that needs nothing but itself, with line numbers. Of two themes the first is for light screens and
/// paper, the second for dark screens.
std::string pageText(std::u16string_view text, const std::string &title,
                     const std::vector<PageTheme> &themes);

} // namespace highlight
