#pragma once

#include "Quorvane/Parsers/QVAttributeCache.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Support/ParseFixture.h"

#include <string>

/// Styles by hand, and reports as text. A style is a number: it underlines text with that pattern.
namespace quorvane::test {

inline std::shared_ptr<QVStyle> styleWithNumber(NSInteger number) {
    auto style = std::make_shared<QVStyle>();
    style->setTextDecoration(QVStyleTextDecorationUnderline);
    style->setTextDecorationStyle(number);
    return style;
}

/// Calls back for each scope and capture of a syntax.
template <typename ForScope, typename ForCapture>
void forEachNode(const QVScope::Scopes &scopes, ForScope forScope, ForCapture forCapture) {
    for (const auto &scope : scopes) {
        forScope(*scope);
        for (const auto &capture : scope->captures())
            forCapture(*capture);
        for (const auto &capture : scope->endCaptures())
            forCapture(*capture);
        forEachNode(scope->subscopes(), forScope, forCapture);
    }
}

/// Gives each scope and capture with a name its number.
inline void setStyles(const std::shared_ptr<QVSyntax> &syntax, const std::map<std::u16string, int> &numbers) {
    const auto apply = [&](auto &node) {
        node.removeAllStyles();
        if (const auto found = numbers.find(std::u16string(node.name().view())); found != numbers.end())
            node.addStyle(styleWithNumber(found->second));
    };
    forEachNode(syntax->grammar()->scopes(), apply, apply);
}

/// Gives the scopes of a name a bold font.
inline void setBold(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view name) {
    const auto style = std::make_shared<QVStyle>();
    style->setFontWeight(700);
    forEachNode(
        syntax->grammar()->scopes(),
        [&](QVScope &scope) {
            if (scope.name() == name)
                scope.addStyle(style);
        },
        [](QVCapture &) {});
}

/// "3 keyword": the style's number, the lexical class; "d7" for what default attributes are made of in tests.
inline std::string drawnAttributes(const NSAttributes &attributes) {
    std::string text;
    for (const NSAttribute &attribute : attributes) {
        text += text.empty() ? "" : " ";
        if (attribute.key == NSToolTipAttributeName)
            text += "d";
        text += attribute.value.description().UTF8String();
    }
    return text.empty() ? "-" : text;
}

inline NSAttributes defaults(NSInteger number) { return {{NSToolTipAttributeName, number}}; }

/// "1+3 2 keyword" for a report, with "default" or "reset" in front where its flag says so, and with
/// "@name" behind for a syntax other than the parse's.
inline std::string drawnReport(const QVParse &parse, const NSAttributes &attributes, NSRange range,
                               const std::shared_ptr<QVSyntax> &syntax, std::uint64_t flags) {
    std::string text = flags == 0 ? "" : flags == 1 ? "default " : flags == 2 ? "reset " : "? ";
    text += std::to_string(range.location) + "+" + std::to_string(range.length) + " " +
            drawnAttributes(attributes);
    if (syntax != parse.syntax())
        text += "@" + (syntax ? syntax->name().UTF8String() : std::string("none"));
    return text + "\n";
}

/// All reports for a range, one a line. `stopAfter` ends the walk with this report, counted from 1.
inline std::string reportsOf(const QVParse &parse, NSRange range, const NSAttributes &defaultAttributes = {},
                             int stopAfter = 0) {
    std::string text;
    int count = 0;
    parse.enumerateAttributesInRange(range, defaultAttributes,
                                     [&](const NSAttributes &attributes, NSRange piece,
                                         const std::shared_ptr<QVSyntax> &syntax, std::uint64_t flags,
                                         bool &stop) {
                                         text += drawnReport(parse, attributes, piece, syntax, flags);
                                         stop = ++count == stopAfter;
                                     });
    return text;
}

/// All reports for a whole text.
inline std::string reportsOf(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text,
                             const NSAttributes &defaultAttributes = {}) {
    const auto parse = parseOfText(syntax, text);
    std::string reports;
    parse->performReadingBlockAndWait([&] {
        reports = reportsOf(*parse, {0, text.size()}, defaultAttributes);
    });
    return reports;
}

} // namespace quorvane::test
