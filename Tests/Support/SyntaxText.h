#pragma once

#include <string>
#include <string_view>

namespace quorvane::test {

// The pieces of syntax files that grammars in tests are put together from. Patterns are written as they are,
// without XML's escapes; `more` is what else stands inside the element.

inline std::string escapedForXML(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character == '<')
            result += "&lt;";
        else if (character == '&')
            result += "&amp;";
        else
            result += character;
    }
    return result;
}

inline std::string element(std::string_view name, std::string_view attributes, std::string_view content) {
    return "<" + std::string(name) + (attributes.empty() ? "" : " ") + std::string(attributes) + ">" +
           std::string(content) + "</" + std::string(name) + ">";
}

inline std::string named(std::string_view name) { return "name=\"" + std::string(name) + "\""; }

inline std::string expressionText(std::string_view pattern) {
    return element("expression", "", escapedForXML(pattern));
}

/// A single match.
inline std::string matchText(std::string_view name, std::string_view pattern, std::string_view more = "") {
    return element("scope", named(name), expressionText(pattern) + std::string(more));
}

/// The subscopes of a region, to be tried anywhere on a line.
inline std::string subscopesText(std::string_view scopes) { return element("subscopes", "", scopes); }

/// A region between two patterns.
inline std::string regionText(std::string_view name, std::string_view start, std::string_view end,
                              std::string_view more = "", std::string_view attributes = "") {
    return element("scope", named(name) + " " + std::string(attributes),
                   element("starts-with", "", expressionText(start)) +
                       element("ends-with", "", expressionText(end)) + std::string(more));
}

/// A region whose end is built from its start.
inline std::string templateRegionText(std::string_view name, std::string_view start,
                                      std::string_view templateString, std::string_view more = "") {
    return element("scope", named(name),
                   element("starts-with", "", expressionText(start)) +
                       element("ends-with", "", element("template", "", escapedForXML(templateString))) +
                       std::string(more));
}

inline std::string cutoffText(std::string_view pattern) {
    return element("cut-off", named("cut"), expressionText(pattern));
}

inline std::string captureText(int number, std::string_view name) {
    return element("capture", "number=\"" + std::to_string(number) + "\" " + named(name), "");
}

/// Of the own syntax where none is named, of all its top-level scopes where no collection is.
inline std::string includeText(std::string_view collection, std::string_view syntax = "") {
    std::string attributes;
    if (!syntax.empty())
        attributes += "syntax=\"" + std::string(syntax) + "\" ";
    if (!collection.empty())
        attributes += "collection=\"" + std::string(collection) + "\"";
    return element("include", attributes, "");
}

inline std::string collectionText(std::string_view name, std::string_view scopes, bool overrides = false) {
    return element("collection", named(name) + (overrides ? " override=\"true\"" : ""), scopes);
}

inline std::string scopesText(std::string_view scopes) { return element("scopes", "", scopes); }

inline std::string collectionsText(std::string_view collections) {
    return element("collections", "", collections);
}

/// A whole syntax file.
inline std::string syntaxText(std::string_view name, std::string_view elements) {
    return element("syntax", named(name), elements);
}

} // namespace quorvane::test
