#pragma once

#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/SyntaxText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// Grammars with symbols, and symbols as text.
namespace quorvane::test {

/// What makes a scope's matches symbols; attributes such as "scope='local'".
inline std::string symbolText(std::string_view type, std::string_view attributes = "",
                              std::string_view content = "") {
    return element("symbol", "type='" + std::string(type) + "' " + std::string(attributes), content);
}

inline std::string contextText(std::string_view attributes) { return element("context", attributes, ""); }

/// A symbol that opens, goes on with or closes a context; more attributes such as "group='g'".
inline std::string contextSymbol(std::string_view type, std::string_view behavior,
                                 std::string_view attributes = "") {
    return symbolText(type, "",
                      contextText("behavior='" + std::string(behavior) + "' " + std::string(attributes)));
}

inline std::string drawnRange(NSRange range) {
    return range.location == NSNotFound ? "none"
                                        : std::to_string(range.location) + "+" + std::to_string(range.length);
}

/// "class C 0+7 to 20+1" with "in D" for the context around it: type, name, range and end range.
inline std::string drawnSymbol(const QVParseSymbol &symbol) {
    const NSString type = QVSymbolTypeToString(symbol.symbolType());
    std::string text = type ? type.UTF8String() : std::to_string(symbol.symbolType());
    text += " " + (symbol.name() ? symbol.name().UTF8String() : std::string("-"));
    text += " " + drawnRange(symbol.range());
    if (symbol.endRange().location != NSNotFound)
        text += " to " + drawnRange(symbol.endRange());
    if (const QVParseSymbol *const parent = symbol.parentContextSymbol())
        text += " in " + (parent->name() ? parent->name().UTF8String() : std::string("-"));
    return text;
}

/// A symbol on each line, in the order of the list.
inline std::string drawnSymbols(const std::vector<std::shared_ptr<QVParseSymbol>> &symbols) {
    std::string text;
    for (const auto &symbol : symbols)
        text += drawnSymbol(*symbol) + "\n";
    return text;
}

/// A parse on the main queue, edited step by step.
class SymbolTest : public testing::Test {
protected:
    void start(const std::string &scopes, std::u16string_view text, const std::string &others = "") {
        startWithSyntax(syntaxWithElements(scopesText(scopes) + others), text);
    }
    void startWithSyntax(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text) {
        parse = QVParse::initWithSyntax(syntax, 0, QVParseMainQueueConcurrencyType);
        edit({0, 0}, text);
    }
    NSRange edit(NSRange range, std::u16string_view text) {
        NSRange answer{};
        parse->performWritingBlockAndWait(
            [&] { answer = parse->replaceCharactersInRange(range, text, nullptr); });
        return answer;
    }
    std::string drawn() const { return drawnSymbols(parse->symbols()); }
    const std::shared_ptr<QVParseSymbol> &symbol(std::size_t index) const {
        return parse->symbols().at(index);
    }

    std::shared_ptr<QVParse> parse;
};

} // namespace quorvane::test
