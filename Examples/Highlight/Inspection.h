#pragma once

#include "Colouring.h"
#include "Places.h"

namespace highlight {

/// The syntaxes and themes that can be named, and the file of each.
std::string listText(const SyntaxFiles &files);

/// Why the unit at a location looks as it does: the scopes around it from the outside in with their patterns,
/// the styles that reach it with what becomes of each of their properties, and what it looks like in the end,
/// which is what the text's runs say. Needs read access.
std::string explanationText(const quorvane::QVParse &parse, quorvane::NSUInteger location,
                            const std::string &file, const Runs &runs, const quorvane::NSAttributes &defaults,
                            ScopePlaces &places);

/// One line for each scope that was tried: milliseconds, hits, misses, its name and where it stands; those
/// that took longest first. Needs a parse that collected them.
std::string traceText(const quorvane::QVParse &parse, ScopePlaces &places);

} // namespace highlight
