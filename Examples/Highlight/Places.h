#pragma once

#include "Languages.h"

#include "Quorvane/Text/QVLineRunArray.h"

namespace quorvane {
class QVScope;
class QVXMLElement;
} // namespace quorvane

namespace highlight {

/// "LINE:COLUMN".
std::string textOfPlace(Place place);

/// Where the units of a text stand in its lines.
class TextPlaces {
public:
    explicit TextPlaces(std::u16string_view text);

    /// The end of the text has a place too.
    Place placeOfLocation(quorvane::NSUInteger location) const;
    /// The unit at a place; line endings belong to their lines. Throws `Failure`, which begins with the
    /// file's name, where there is none.
    quorvane::NSUInteger locationOfPlace(Place place, const std::string &file) const;

private:
    quorvane::QVLineRunArray _lines;
};

/// Where the scopes of grammars stand in their files. Scopes don't know that themselves, so a file is read
/// once more when the first of its scopes is asked for.
class ScopePlaces {
public:
    explicit ScopePlaces(const SyntaxFiles &files) : _files(files) {}

    /// "FILE:LINE"; empty for a scope that stands in no file, or whose file has changed since.
    std::string placeOfScope(const quorvane::QVScope &scope);

private:
    using Scopes = std::vector<std::shared_ptr<quorvane::QVScope>>;
    using Elements = std::vector<std::shared_ptr<quorvane::QVXMLElement>>;
    void readFileOfSyntax(quorvane::QVSyntax &syntax);
    void noteScopes(const Scopes &scopes, const Elements &elements, const std::string &file);

    const SyntaxFiles &_files;
    /// Syntaxes that were read, by their names.
    std::map<quorvane::NSString, bool> _read;
    std::map<const quorvane::QVScope *, std::string> _places;
};

} // namespace highlight
