#pragma once

#include "Quorvane/Parsers/QVParse.h"

#include <string>

namespace highlight {

/// The text with colours for a terminal, one for each lexical class.
std::string ansiText(const quorvane::QVParse &parse);

} // namespace highlight
