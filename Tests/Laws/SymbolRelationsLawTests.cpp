// The law of the pass over relations: behind an edit, where it stops early, all fields of all symbols are
// what a pass over the whole list makes of them.
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Tests/Quorvane/Parsers/SymbolFixtures.h"

#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// Every field of a symbol that the pass writes.
struct Fields {
    const QVParseSymbol *symbol;
    const QVParseSymbol *parent;
    const QVParseSymbol *previous;
    const QVParseSymbol *next;
    NSUInteger type;
    NSUInteger scope;
    NSRange range;
    NSRange endRange;
    NSRange nameRange;
    NSString name;
    NSString displayName;
    bool isUnclosed;
    bool operator==(const Fields &) const = default;
};

std::vector<Fields> fieldsOfSymbols(const QVParse &parse) {
    std::vector<Fields> fields;
    const auto add = [&](const QVParseSymbol &symbol) {
        fields.push_back({&symbol, symbol.parentContextSymbol(), symbol.previousContextGroupSymbol(),
                          symbol.nextContextGroupSymbol(), symbol.symbolType(), *symbol.symbolScope(),
                          symbol.range(), symbol.endRange(), *symbol.nameRange(), symbol.name(),
                          symbol.displayName(), symbol.isUnclosed()});
    };
    for (const auto &symbol : parse.symbols()) {
        add(*symbol);
        for (const auto &argument : symbol->argumentSymbols())
            add(*argument);
    }
    return fields;
}

/// All kinds of contexts, with groups, priorities and ends of all kinds.
std::string allContexts() {
    const std::string name = captureText(1, "name");
    const auto heading = [](const char *pattern, const char *attributes) {
        return matchText(pattern, pattern, contextSymbol("heading", "start", attributes));
    };
    return matchText("comment", "\\#.*", symbolText("heading")) +
           matchText("def", "def\\ (\\w+)", name + contextSymbol("function", "whitespace")) +
           matchText("class", "class\\ (\\w+)",
                     name + contextSymbol("class", "start", "group='c' export-local='property'")) +
           matchText("end class", "end\\ class", contextSymbol("keyword", "end", "group='c'")) +
           matchText("if", "\\bif\\b", contextSymbol("statement", "start", "group='i'")) +
           matchText("else", "\\belse\\b", contextSymbol("statement", "next", "group='i'")) +
           matchText("fi", "\\bfi\\b", contextSymbol("keyword", "end", "group='i'")) +
           matchText("end", "\\bend\\b", contextSymbol("keyword", "end")) +
           matchText("open", "<(\\w+)>", name + contextSymbol("tag", "start", "group-by-name='true'")) +
           matchText("close", "</(\\w+)>", name + contextSymbol("tag", "end", "group-by-name='true'")) +
           heading("H1", "priority='3' unclosed='extend-document'") + heading("H2", "priority='2'") +
           heading("H3", "priority='1' unclosed='truncate'") +
           regionText("braces", "\\{", "\\}",
                      subscopesText(includeText("", "self")) + contextSymbol("block", "subtree")) +
           regionText("function", "\\w+(?=\\()", "\\)",
                      subscopesText(matchText("argument", "\\w+", symbolText("argument"))) +
                          symbolText("function", "", contextText("behavior='none' arguments='true'"))) +
           matchText("local", "\\$\\w+", symbolText("variable", "scope='local'")) +
           matchText("behind", "(?<=@)(\\w+)", symbolText("constant")) + matchText("word", "\\w+", "");
}

class RelationsLaw : public SymbolTest {
protected:
    std::uint32_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::uint32_t>(0,
                                                            static_cast<std::uint32_t>(bound) - 1)(_random);
    }

    std::u16string line() {
        static constexpr std::u16string_view pieces[] = {
            u"def a",   u"def bcd", u"class C", u"end class", u"if",        u"else",   u"fi",   u"end",
            u"<a>",     u"</a>",    u"<b>",     u"</b>",      u"H1",        u"H2",     u"H3",   u"{",
            u"}",       u"{ $x }",  u"f(a, b)", u"f(a,\n b)", u"$local",    u"@const", u"word", u"",
            u"# ! one", u"# two",   u"$a $b",   u"if $c fi",  u"<a>$d</a>", u"\tword", u"f($e"};
        std::u16string text(below(4) * (below(3) != 0), u'\t');
        text += pieces[below(std::size(pieces))];
        return text + u"\n";
    }

    void start(std::uint32_t seed, std::size_t lines) {
        _random.seed(seed);
        std::u16string text;
        for (std::size_t count = 0; count < lines; ++count)
            text += line();
        SymbolTest::start(allContexts(), text,
                          "<comments><single><expression>#</expression></single></comments>");
    }

    void editAnywhere() {
        const std::u16string_view text = parse->string();
        NSRange range{below(text.size() + 1), 0};
        std::u16string typed;
        switch (below(5)) {
        case 0:
            typed = line();
            break;
        case 1:
            typed = u"x";
            break;
        case 2: {
            const std::size_t behind = std::min(text.find(u'\n', range.location), text.size());
            range.length = behind - range.location;
            break;
        }
        case 3:
            range.length = std::min<std::size_t>(below(3), text.size() - range.location);
            typed = std::u16string(below(3), u'\t');
            break;
        default:
            // At a line's start, where its indentation is.
            range.location = text.rfind(u'\n', range.location);
            range.location = range.location == text.npos ? 0 : std::min(range.location + 1, text.size());
            typed = below(2) == 0 ? u"\t" : u"# ";
        }
        edit(range, typed);
    }

    std::mt19937 _random;
};

} // namespace

TEST_F(RelationsLaw, BehindAnEditAllFieldsAreThoseOfAWholePass) {
    const LogRecorder log;
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        start(seed, 20 + 15 * seed);
        for (int count = 0; count < 60; ++count) {
            editAnywhere();
            const std::vector<Fields> fields = fieldsOfSymbols(*parse);
            // Not behind each: what is right now must still serve the next edit.
            if (count % 3 != 2)
                continue;
            parse->updateSymbolRanges();
            ASSERT_EQ(fieldsOfSymbols(*parse), fields) << "seed " << seed << ", edit " << count;
        }
    }
}

TEST_F(RelationsLaw, ManyEditsInARowLeaveNothingBehindThatAWholePassWouldPutRight) {
    const LogRecorder log;
    start(4711, 300);
    for (int count = 0; count < 1500; ++count)
        editAnywhere();
    const std::vector<Fields> fields = fieldsOfSymbols(*parse);
    parse->updateSymbolRanges();
    EXPECT_EQ(fieldsOfSymbols(*parse), fields);
    EXPECT_GE(fields.size(), 100u);
}
