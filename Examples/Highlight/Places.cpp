#include "Places.h"

#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/XML/QVXMLDocument.h"

using namespace quorvane;

namespace highlight {

std::string textOfPlace(Place place) {
    return std::to_string(place.line) + ":" + std::to_string(place.column);
}

TextPlaces::TextPlaces(std::u16string_view text) { _lines.replaceCharactersInRange({0, 0}, text); }

Place TextPlaces::placeOfLocation(NSUInteger location) const {
    NSUInteger number = 0;
    const QVLineRun line = _lines.lineForCharacterIndex(location, &number);
    return {number + 1, location - line.range().location + 1};
}

NSUInteger TextPlaces::locationOfPlace(Place place, const std::string &file) const {
    const auto fail = [&](const std::string &reason) {
        return Failure{file + ": there is no character at " + textOfPlace(place) + ": " + reason, 2};
    };
    const auto counted = [](NSUInteger count, const char *what) {
        return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
    };
    if (place.line > _lines.numberOfLines())
        throw fail("the text has " + counted(_lines.numberOfLines(), "line"));
    const NSRange line = _lines.lineForLineNumber(place.line - 1).range();
    if (place.column > line.length)
        throw fail("the line has " + counted(line.length, "column"));
    return line.location + place.column - 1;
}

std::string ScopePlaces::placeOfScope(const QVScope &scope) {
    const auto syntax = scope.parentSyntax();
    if (syntax && _read.try_emplace(syntax->name(), true).second)
        readFileOfSyntax(*syntax);
    const auto found = _places.find(&scope);
    return found != _places.end() ? found->second : std::string();
}

void ScopePlaces::readFileOfSyntax(QVSyntax &syntax) {
    const auto file = _files.find(syntax.name());
    const auto grammar = syntax.grammar();
    if (file == _files.end() || !grammar)
        return;
    const auto document = QVXMLDocument::initWithContentsOfURL(
        NSURL::fileURLWithPath(NSString::stringWithUTF8String(file->second)));
    const auto element = document ? document->rootElement()->lastElementForName(u"syntax") : nullptr;
    if (!element)
        return;
    if (const auto scopes = element->lastElementForName(u"scopes"))
        noteScopes(grammar->scopes(), scopes->elementsForNames({u"scope", u"include"}), file->second);
    if (const auto templates = element->lastElementForName(u"template-scopes"))
        noteScopes(grammar->templateScopes(), templates->elementsForNames({u"scope", u"include"}),
                   file->second);
    if (const auto collections = element->lastElementForName(u"collections"))
        for (const auto &child : collections->elementsForName(u"collection"))
            if (const auto collection = grammar->collectionWithName(child->valueForAttribute(u"name")))
                noteScopes(collection->scopes(), child->elementsForNames({u"scope", u"include", u"cut-off"}),
                           file->second);
}

void ScopePlaces::noteScopes(const Scopes &scopes, const Elements &elements, const std::string &file) {
    // Each element made a scope. Where that isn't so the file is another one by now.
    if (scopes.size() != elements.size())
        return;
    for (std::size_t index = 0; index < scopes.size(); ++index) {
        const QVScope &scope = *scopes[index];
        const QVXMLElement &element = *elements[index];
        _places[&scope] = file + ":" + std::to_string(element.lineNumber());
        if (const auto subscopes = element.lastElementForName(u"subscopes"))
            noteScopes(scope.subscopes(), subscopes->elementsForNames({u"scope", u"include", u"cut-off"}),
                       file);
        const auto subsyntax = element.lastElementForName(u"subsyntax");
        if (subsyntax && scope.definesSubsyntax())
            noteScopes(scope.subsyntaxOptions()->cutoffScopes(), subsyntax->elementsForName(u"cut-off"),
                       file);
    }
}

} // namespace highlight
