#include "Symbols.h"

#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"

#include <cstdio>

using namespace quorvane;

namespace highlight {

namespace {

std::string kindOfSymbol(const QVParseSymbol &symbol) {
    const NSString word = QVSymbolTypeToString(symbol.symbolType());
    return word ? word.UTF8String() : std::to_string(symbol.symbolType());
}

std::string nameOfSymbol(const QVParseSymbol &symbol) {
    return symbol.name().length() != 0 ? symbol.name().UTF8String() : "-";
}

std::string firstLine(const NSString &text) {
    return NSString(text.view().substr(0, text.view().find_first_of(u"\r\n"))).UTF8String();
}

/// Calls back for all symbols in order, each function's arguments behind it, with what they stand in. What
/// only closes something else is no entry of an outline.
template <typename Visit> void forEachSymbol(const QVParse &parse, Visit visit) {
    for (const auto &symbol : parse.symbols()) {
        if (symbol->contextBehavior() == QVSymbolContextBehaviorEnd)
            continue;
        visit(*symbol, symbol->parentContextSymbol());
        for (const auto &argument : symbol->argumentSymbols())
            visit(*argument, symbol.get());
    }
}

std::string jsonText(const NSString &text) {
    if (!text)
        return "null";
    std::string result = "\"";
    for (const char character : text.UTF8String()) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            result += '\\';
            result += character;
        } else if (code < 0x20 || code == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", code);
            result += escape;
        } else {
            result += character;
        }
    }
    return result + "\"";
}

/// "FILE:LINE:COLUMN: ", as compilers begin their messages.
std::string lineStart(const TextPlaces &places, NSUInteger location, const std::string &file) {
    return file + ":" + textOfPlace(places.placeOfLocation(location)) + ": ";
}

Failure noIdentifier(const TextPlaces &places, NSUInteger location, const std::string &file) {
    return {file + ": there is no identifier at " + textOfPlace(places.placeOfLocation(location)), 1};
}

} // namespace

std::string outlineText(const QVParse &parse) {
    const TextPlaces places(parse.string());
    std::string text;
    forEachSymbol(parse, [&](const QVParseSymbol &symbol, const QVParseSymbol *parent) {
        for (const QVParseSymbol *outer = parent; outer != nullptr; outer = outer->parentContextSymbol())
            text += "  ";
        const NSRange range = symbol.fullRange();
        text += kindOfSymbol(symbol) + " " + nameOfSymbol(symbol) + " " +
                textOfPlace(places.placeOfLocation(range.location)) + " to " +
                textOfPlace(places.placeOfLocation(NSMaxRange(range)));
        if (parent != nullptr)
            text += " in " + nameOfSymbol(*parent);
        if (symbol.comment().length() != 0)
            text += ": " + firstLine(symbol.comment());
        text += "\n";
    });
    return text;
}

std::string outlineJSON(const QVParse &parse) {
    std::string text;
    forEachSymbol(parse, [&](const QVParseSymbol &symbol, const QVParseSymbol *parent) {
        const NSRange range = symbol.fullRange();
        text += text.empty() ? "" : ",\n ";
        text += "{\"name\": " + jsonText(symbol.name()) + ", \"kind\": \"" + kindOfSymbol(symbol) +
                "\", \"range\": {\"location\": " + std::to_string(range.location) +
                ", \"length\": " + std::to_string(range.length) + "}, \"parent\": " +
                (parent == nullptr ? "null"
                 : parent->name()  ? jsonText(parent->name())
                                   : "\"\"") +
                ", \"comment\": " + jsonText(symbol.comment()) + "}";
    });
    return "[" + text + "]\n";
}

std::string definitionText(const QVParse &parse, NSUInteger location, const std::string &file) {
    const TextPlaces places(parse.string());
    NSRange identifier;
    std::shared_ptr<QVParseSymbol> context;
    const auto symbol = parse.symbolDefiningIdentifierAtLocation(location, &identifier, &context);
    if (identifier.location == NSNotFound)
        throw noIdentifier(places, location, file);
    if (!symbol)
        throw Failure{file + ": nothing defines the identifier at " +
                          textOfPlace(places.placeOfLocation(identifier.location)),
                      1};
    const NSRange name = *symbol->nameRange();
    return lineStart(places, name.location != NSNotFound ? name.location : symbol->range().location, file) +
           kindOfSymbol(*symbol) + " " + nameOfSymbol(*symbol) +
           (context ? " in " + nameOfSymbol(*context) : "") + "\n";
}

std::string occurrencesText(const QVParse &parse, NSUInteger location, const std::string &file) {
    const TextPlaces places(parse.string());
    const std::u16string_view source = parse.string();
    NSRange identifier;
    const auto ranges = parse.rangesForOccurrancesOfIdentifierAtLocation(location, 0, &identifier);
    if (identifier.location == NSNotFound)
        throw noIdentifier(places, location, file);
    std::string text;
    for (const NSRange &range : ranges) {
        NSUInteger start = 0;
        NSUInteger end = 0;
        qv_getLineStart(source, &start, nullptr, &end, {range.location, 0});
        text += lineStart(places, range.location, file) +
                NSString(source.substr(start, end - start)).UTF8String() + "\n";
    }
    return text;
}

} // namespace highlight
