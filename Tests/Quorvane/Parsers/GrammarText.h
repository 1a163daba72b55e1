#pragma once

#include "Tests/Support/ParseFixture.h"

#include <string>

/// Pieces of grammar files, put together for tests of the parser.
namespace quorvane::test {

/// A single expression; extras are attributes such as " optional='true'".
inline std::string single(const std::string &name, const std::string &pattern,
                          const std::string &attributes = "") {
    return "<scope name='" + name + "'" + attributes + "><expression>" + pattern + "</expression></scope>";
}

/// A region; what it holds is the text of elements, and an empty end pattern means that it has none.
inline std::string region(const std::string &name, const std::string &start, const std::string &end,
                          const std::string &contents = "", const std::string &attributes = "") {
    const std::string ending = end.empty() ? "" : "<expression>" + end + "</expression>";
    return "<scope name='" + name + "'" + attributes + "><starts-with><expression>" + start +
           "</expression></starts-with><ends-with>" + ending + "</ends-with>" + contents + "</scope>";
}

/// The contents of a region whose subscopes are searched for.
inline std::string holding(const std::string &subscopes) {
    return "<subscopes>" + subscopes + "</subscopes>";
}

/// The contents of a region whose subscopes must follow each other.
inline std::string following(const std::string &subscopes, const std::string &skipWhitespace = "none") {
    return "<subscopes anchored='true' skip-whitespace='" + skipWhitespace + "'>" + subscopes +
           "</subscopes>";
}

/// A region named "r" that starts with "(" and has no end pattern, with a sequence.
inline std::string sequence(const std::string &subscopes, const std::string &skipWhitespace = "none") {
    return region("r", "\\(", "", following(subscopes, skipWhitespace));
}

inline std::string cutoff(const std::string &name, const std::string &pattern,
                          const std::string &captures = "") {
    return "<cut-off name='" + name + "'><expression>" + pattern + "</expression>" + captures + "</cut-off>";
}

/// A syntax named "test" with these top-level scopes and other elements.
inline std::shared_ptr<QVSyntax> syntaxWithScopes(const std::string &scopes, const std::string &others = "") {
    return syntaxWithElements("<scopes>" + scopes + "</scopes>" + others);
}

inline const std::string optional = " optional='true'";
inline const std::string repeating = " repeat='true'";

} // namespace quorvane::test
