#include "Tests/Laws/RandomGrammars.h"

#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Tests/Support/SyntaxText.h"

namespace quorvane::test {

RandomGrammars::RandomGrammars(std::uint32_t seed)
    : _state(seed * 2654435761u + 12345u), _symbolState(seed * 2246822519u + 54321u) {
    for (const char *const syntaxName : {"test", "inner", "other"})
        _files.push_back(file(syntaxName));
    for (const std::string &text : _files)
        _syntaxes.push_back(std::make_unique<RegisteredSyntax>(syntaxFromXML(text)));
}

std::uint32_t RandomGrammars::below(std::uint32_t bound) {
    // One step of xorshift, which is all that is asked of it here.
    _state ^= _state << 13;
    _state ^= _state >> 17;
    _state ^= _state << 5;
    return (_state >> 3) % bound;
}

// Patterns

std::string RandomGrammars::character() {
    static const char *const choices[] = {
        "a",
        "b",
        "c",
        "d",
        "a",
        "b",
        ".",
        "\\w",
        "\\d",
        "\\s",
        "[ab]",
        "[^a]",
        "[^\\n]",
        "\\(",
        "\\)",
        "\\{",
        "\\}",
        "\"",
        ";",
        "<",
        "\\ ",
        "\\x{1F600}",
        "[^\\x{1F600}]",
        "\\p{Ll}",
        "\\W",
        "(?i:A)",
        "1",
    };
    return oneOf(choices);
}

std::string RandomGrammars::piece(int depth) {
    if (depth == 0)
        return character();
    switch (below(16)) {
    case 0:
        return "(" + pattern(depth - 1) + ")";
    case 1:
        return "(?:" + pattern(depth - 1) + "|" + pattern(depth - 1) + ")";
    case 2:
        return "(?=" + pattern(depth - 1) + ")";
    case 3:
        return "(?!" + pattern(depth - 1) + ")";
    case 4:
        return "(?<=" + character() + ")";
    case 5:
        return "(?<!" + character() + ")";
    case 6: {
        static const char *const places[] = {"^", "$", "\\b", "\\B", "^", "$", "\\A", "\\z"};
        return oneOf(places);
    }
    case 7: {
        if (!oneIn(3))
            return character();
        static const char *const rare[] = {
            "\\G",      "\\K",  "\\K",       "\\K", "\\K",    "(*SKIP)", "(*COMMIT)",
            "(*PRUNE)", "(*F)", "(*ACCEPT)", "\\n", "\\R",    "(?=\\n)", "(?<=\\n)",
            "[^;]*\\n", ".*",   "(?s:.*)",   ".*?", "(?>a+)", "(a)\\1",  "(*THEN)"};
        // A group of its own keeps the numbers of the others.
        const std::string choice = oneOf(rare);
        return choice == "(a)\\1" ? "(?:aa)" : choice;
    }
    default:
        return quantified(depth);
    }
}

std::string RandomGrammars::quantified(int depth) {
    static const char *const quantifiers[] = {"", "", "", "", "?", "*", "+", "+?", "*?", "{1,2}", "++"};
    const std::string atom = oneIn(4) ? "(?:" + pattern(depth - 1) + ")" : character();
    return atom + oneOf(quantifiers);
}

std::string RandomGrammars::validPattern(int depth) {
    // Not everything may stand in everything, as a moved start in an assertion.
    while (true) {
        std::string text = pattern(depth);
        if (QVRegularExpression::regularExpressionWithPattern(NSString::stringWithUTF8String(text),
                                                              QVRegularExpressionMultiline))
            return text;
    }
}

std::string RandomGrammars::pattern(int depth) {
    std::string result;
    const std::uint32_t count = 1 + below(3);
    for (std::uint32_t index = 0; index < count; ++index)
        result += piece(depth);
    if (depth > 0 && oneIn(5))
        result += "|" + piece(depth - 1);
    return result;
}

int RandomGrammars::groupsOf(const std::string &pattern) {
    int count = 0;
    for (std::size_t index = 0; index < pattern.size(); ++index) {
        if (pattern[index] == '\\')
            ++index;
        else if (pattern[index] == '(' && pattern[index + 1] != '?' && pattern[index + 1] != '*')
            ++count;
    }
    return count;
}

std::string RandomGrammars::captures(const std::string &pattern) {
    std::string result;
    for (int number = 0; number <= groupsOf(pattern); ++number)
        if (oneIn(2))
            result += captureText(number, (oneInForSymbols(4)   ? "name."
                                           : oneInForSymbols(4) ? "content."
                                                                : "") +
                                              ("group" + std::to_string(number)));
    return result;
}

std::string RandomGrammars::expressionOrWords(std::string *written) {
    if (oneIn(5)) {
        static const char *const words[] = {"a", "ab", "b", "ba", "abc", "d1", "a_b", "c", "sk", "k", "s"};
        std::string strings;
        for (std::uint32_t index = 0, count = 1 + below(4); index < count; ++index)
            strings += element("string", "", oneOf(words));
        return element("strings", oneIn(3) ? "case-insensitive=\"true\"" : "", strings);
    }
    const std::string text = validPattern(2);
    if (written != nullptr)
        *written = text;
    return expressionText(text) + captures(text);
}

// Scopes

std::string RandomGrammars::name() {
    return (oneInForSymbols(8)    ? "comment."
            : oneInForSymbols(10) ? "name."
                                  : "") +
           ("n" + std::to_string(++_nameCount));
}

std::string RandomGrammars::sequenceAttributes() {
    std::string attributes;
    if (oneIn(3))
        attributes += " optional=\"true\"";
    if (oneIn(3))
        attributes += " repeat=\"true\"";
    return attributes;
}

std::string RandomGrammars::singleMatch() {
    return element("scope", named(name()) + sequenceAttributes(), expressionOrWords() + symbol(false));
}

std::string RandomGrammars::cutoff() {
    const std::string text = validPattern(1);
    return element("cut-off", named(name()), expressionText(text) + captures(text));
}

std::string RandomGrammars::include() {
    static const char *const syntaxNames[] = {"", "", "", "self", "inner", "other", "test", "missing"};
    static const char *const collectionNames[] = {"first", "second", "first", "second", "*", "", "missing"};
    return includeText(oneOf(collectionNames), oneOf(syntaxNames));
}

std::string RandomGrammars::subsyntax() {
    std::string cutoffs;
    for (std::uint32_t count = below(3); count > 0; --count)
        cutoffs += cutoff();
    if (oneIn(4))
        return element("subsyntax", "capture=\"" + std::to_string(below(3)) + "\"",
                       cutoffs + element("alias", "key=\"a\" value=\"inner\"", "") +
                           element("alias", "key=\"b\" value=\"other\"", ""));
    static const char *const syntaxNames[] = {"inner", "other", "test", "missing"};
    static const char *const collections[] = {"", "", " collection=\"first\"", " collection=\"missing\""};
    return element("subsyntax", named(oneOf(syntaxNames)) + oneOf(collections), cutoffs);
}

std::string RandomGrammars::region(int depth) {
    static const char *const pairs[][2] = {
        {"\\(", "\\)"}, {"\\{", "\\}"}, {"\"", "\""}, {"<", "$"}, {"a(?=b)", "d"}};
    const auto &pair = pairs[below(std::size(pairs))];
    std::string startText = pair[0];
    const std::string start =
        oneIn(3) ? expressionOrWords(&startText) : expressionText(startText) + captures(startText);
    std::string end = oneIn(3) ? expressionOrWords() : expressionText(pair[1]);
    if (oneIn(6)) {
        static const char *const templates[] = {"\\0", "\\1", "x?\\1;", "(\\0", "$", "^\\0|;", "\\2(;)"};
        end = element("template", "", oneOf(templates));
    } else if (oneIn(12)) {
        end.clear();
    }
    std::string attributes = named(name()) + sequenceAttributes();
    if (oneIn(5))
        attributes += oneIn(2) ? " atomic=\"true\"" : " atomic=\"false\"";
    std::string inside;
    if (oneIn(4)) {
        inside = subsyntax();
    } else if (depth > 0 && !oneIn(5)) {
        static const char *const skips[] = {"none", "lazy", "greedy"};
        inside =
            element("subscopes", oneIn(4) ? "anchored=\"true\" skip-whitespace=\"" + oneOf(skips) + "\"" : "",
                    scopes(depth - 1, true, 4));
    }
    return element("scope", attributes,
                   element("starts-with", "", start) + element("ends-with", "", end) + inside + symbol(true));
}

// Symbols

std::uint32_t RandomGrammars::belowForSymbols(std::uint32_t bound) {
    std::swap(_state, _symbolState);
    const std::uint32_t result = below(bound);
    std::swap(_state, _symbolState);
    return result;
}

std::string RandomGrammars::context() {
    static const char *const behaviors[] = {"subtree", "start", "start", "end", "next", "whitespace", "none"};
    static const char *const groups[] = {"", "", " group='g'", " group='h'", " group-by-name='true'"};
    static const char *const unclosed[] = {"", " unclosed='extend-document'", " unclosed='truncate'"};
    static const char *const others[] = {"",
                                         "",
                                         " priority='1'",
                                         " priority='2'",
                                         " export-local='property'",
                                         " export-local='block'",
                                         " arguments='true'",
                                         " arguments='false'"};
    return element("context",
                   "behavior='" + oneForSymbols(behaviors) + "'" + oneForSymbols(groups) +
                       oneForSymbols(unclosed) + oneForSymbols(others),
                   "");
}

std::string RandomGrammars::symbol(bool isRegion) {
    if (!oneInForSymbols(isRegion ? 2 : 3))
        return "";
    static const char *const types[] = {"function", "method",  "class",   "variable", "argument",  "argument",
                                        "block",    "comment", "heading", "tag",      "expression"};
    static const char *const scopes[] = {"", " scope='local'", " scope='local'", " scope='private'"};
    static const char *const names[] = {"",
                                        "",
                                        " name-selector='name'",
                                        " name-selector='group1'",
                                        " name-selector='group0'",
                                        " anonymous='true'"};
    static const char *const filters[] = {"match-start='a'", "match-end='(?=a)'", "match-end='$'",
                                          "match-start='.*b'"};
    std::string content;
    if (oneInForSymbols(10))
        content += element("filter", oneForSymbols(filters), "");
    if (oneInForSymbols(8))
        content += element("display-name", "",
                           element("component", "variable='name' replace='a' replace-with='[$0]'", "") +
                               element("component", "selector='group0' prepend=':'", ""));
    if (!oneInForSymbols(4))
        content += context();
    return element("symbol",
                   "type='" + oneForSymbols(types) + "'" + oneForSymbols(scopes) + oneForSymbols(names),
                   content);
}

std::string RandomGrammars::symbolRules() {
    static const char *const rules[] = {
        "", "<symbols><documentation match-multiple='comment' skip='name'/></symbols>",
        "<symbols><documentation mode='after' match='*'/></symbols>",
        "<symbols><documentation mode='subtree' match-multiple='*'/></symbols>"};
    return oneForSymbols(rules) + "<comments><single><expression>;</expression></single></comments>";
}

std::string RandomGrammars::scope(int depth, bool inRegion) {
    switch (below(8)) {
    case 0:
    case 1:
    case 2:
        return singleMatch();
    case 3:
        return inRegion && oneIn(2) ? cutoff() : include();
    case 4:
        return include();
    default:
        return region(depth);
    }
}

std::string RandomGrammars::scopes(int depth, bool inRegion, std::uint32_t most) {
    std::string result;
    for (std::uint32_t count = 1 + below(most); count > 0; --count)
        result += scope(depth, inRegion);
    return result;
}

std::string RandomGrammars::file(const std::string &syntaxName) {
    std::string collections;
    for (const char *const collection : {"first", "second"})
        collections += collectionText(collection, scopes(1, true, 3), oneIn(3));
    std::string templates;
    if (oneIn(4))
        templates = element("template-scopes", "",
                            region(1) + (oneIn(2) ? singleMatch() : "") + (oneIn(3) ? include() : ""));
    return syntaxText(syntaxName, collectionsText(collections) + templates + scopesText(scopes(2, false, 5)) +
                                      symbolRules());
}

// Texts

std::u16string RandomGrammars::nextText() {
    static const std::u16string_view pieces[] = {
        u"a", u"b",  u"c",  u"d",    u"ab", u"abc",    u"a_b",    u"AB", u"1",      u"d1",
        u" ", u" ",  u"\t", u"(",    u")",  u"{",      u"}",      u"\"", u"<",      u";",
        u";", u"\n", u"\n", u"\r\n", u"\r", u"\u00E9", u"\u2028", u"sk", u"\u017F", u"s\u212A",
    };
    std::u16string text;
    const std::uint32_t count = below(40);
    const bool hasOddUnits = oneIn(3);
    for (std::uint32_t index = 0; index < count; ++index) {
        if (hasOddUnits && oneIn(6)) {
            switch (below(3)) {
            case 0:
                text += u"\U0001F600";
                break;
            case 1:
                text += char16_t(0xD83D);
                break;
            default:
                text += char16_t(0xDE00);
            }
        } else {
            text += pieces[below(std::size(pieces))];
        }
    }
    return text;
}

} // namespace quorvane::test
