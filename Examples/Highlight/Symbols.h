#pragma once

#include "Places.h"

#include "Quorvane/Parsers/QVParse.h"

namespace highlight {

// What the parse knows of a document's structure. All need read access.

/// The outline: a line for each symbol, indented below the one it stands in, with its kind, its name ("-"
/// where it has none), where it begins and ends, and the first line of its comment. The arguments of a
/// function follow it.
std::string outlineText(const quorvane::QVParse &parse);

/// The same for programs: an array of objects with "name", "kind", "range" (in units of UTF-16), "parent"
/// (its name, the empty string for one without a name) and "comment", which are null where there is none.
std::string outlineJSON(const quorvane::QVParse &parse);

/// Where the symbol begins that defines the identifier at a location, and what it is, on a line that editors
/// can follow. Throws `Failure` where there is no identifier, and where nothing defines it.
std::string definitionText(const quorvane::QVParse &parse, quorvane::NSUInteger location,
                           const std::string &file);

/// Where the identifier at a location stands, with the lines there, on lines that editors can follow. Throws
/// `Failure` where there is no identifier.
std::string occurrencesText(const quorvane::QVParse &parse, quorvane::NSUInteger location,
                            const std::string &file);

} // namespace highlight
