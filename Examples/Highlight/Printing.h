#pragma once

#include "Quorvane/Parsers/QVParse.h"

#include <string>

namespace highlight {

/// The text with colours for a terminal, one for each lexical class.
std::string ansiText(const quorvane::QVParse &parse);

/// The match tree, one node a line, depth first, two spaces for each level:
/// "Type name [location,length]", then " end[location,length]" where a region has an end. A node's captures come before its
/// children as "@NUMBER name [location,length]", its end captures behind them as "@end NUMBER name [location,length]", each
/// one level deeper than the node. No location prints as "-". Tools read this format.
std::string treeText(const quorvane::QVParse &parse);

} // namespace highlight
