#pragma once

#include <string>

namespace quorvane {

class QVParse;

/// The match tree as text, for tools, tests and grammar authors: one node a line, depth first, two spaces for
/// each level, the root at level 0: "Type name [location,length]", then " end[location,length]" where a
/// region has an end. A node's captures come before its children as "@NUMBER name [location,length]", its end
/// captures behind them as
/// "@end NUMBER name [location,length]", each one level deeper than the node. No location prints as "-".
/// Tools read this format; it stays as it is. With read access.
std::string QVMatchTreeText(const QVParse &parse);

} // namespace quorvane
