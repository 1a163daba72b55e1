// The laws of the pass over relations: behind an edit, where it stops early, all fields of all symbols are
// what a pass over the whole list makes of them; and that pass makes what plain reading of its rules does.
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

/// The rules of the pass, told without any of its shortcuts: a list, a stack, and two walks.
class PlainRelations {
public:
    struct Symbol {
        const QVParseSymbol *symbol;
        const QVScopeSymbolOptions *options;
        Symbol *parent = nullptr;
        Symbol *previous = nullptr;
        Symbol *next = nullptr;
        NSUInteger type = 0;
        NSUInteger scope = 0;
        NSRange range = NSNotFoundRange;
        NSRange endRange = NSNotFoundRange;
        bool isUnclosed = false;

        bool isOpenable() const {
            return symbol->contextBehavior() == QVSymbolContextBehaviorStart ||
                   symbol->contextBehavior() == QVSymbolContextBehaviorNext;
        }
    };

    explicit PlainRelations(const QVParse &parse) : _text(parse.string()), _tabWidth(parse.tabWidth()) {
        _symbols.reserve(parse.symbols().size());
        for (const auto &symbol : parse.symbols())
            _symbols.push_back({symbol.get(), symbol->symbolOptions()});
        for (Symbol &symbol : _symbols)
            relate(symbol);
        for (Symbol &symbol : _symbols)
            close(symbol);
    }

    std::string drawn() const {
        std::string text;
        for (const Symbol &symbol : _symbols)
            text += drawnFields(symbol.type, symbol.scope, symbol.range, symbol.endRange,
                                symbolOf(symbol.parent), symbolOf(symbol.previous), symbolOf(symbol.next));
        return text;
    }
    static std::string drawn(const QVParse &parse) {
        std::string text;
        for (const auto &symbol : parse.symbols())
            text += drawnFields(symbol->symbolType(), *symbol->symbolScope(), symbol->range(),
                                symbol->endRange(), symbol->parentContextSymbol(),
                                symbol->previousContextGroupSymbol(), symbol->nextContextGroupSymbol());
        return text;
    }

private:
    static const QVParseSymbol *symbolOf(const Symbol *symbol) { return symbol ? symbol->symbol : nullptr; }
    static std::string drawnFields(NSUInteger type, NSUInteger scope, NSRange range, NSRange endRange,
                                   const QVParseSymbol *parent, const QVParseSymbol *previous,
                                   const QVParseSymbol *next) {
        std::string text = std::to_string(type) + "/" + std::to_string(scope) + " " + drawnRange(range) +
                           " to " + drawnRange(endRange);
        for (const QVParseSymbol *const other : {parent, previous, next})
            text += other ? " " + std::to_string(other->match()->range().location) : " -";
        return text + "\n";
    }

    void relate(Symbol &symbol) {
        const QVScopeMatch &match = *symbol.symbol->match();
        while (!_open.empty() && _open.back()->endRange.location != NSNotFound &&
               match.range().location >= NSMaxRange(_open.back()->endRange))
            _open.pop_back();
        symbol.range = match.fullRange();
        const NSUInteger behavior = symbol.symbol->contextBehavior();
        if (symbol.isOpenable() || behavior == QVSymbolContextBehaviorEnd) {
            if (behavior != QVSymbolContextBehaviorStart)
                closeInnermostOfGroup(symbol);
            if (behavior == QVSymbolContextBehaviorEnd) {
                update(symbol, innermost());
                return;
            }
            std::size_t lowest = _open.size();
            for (std::size_t index = _open.size(); index-- > 0;)
                if (_open[index]->isOpenable()) {
                    if (_open[index]->options->contextCapturePriority() >=
                        symbol.options->contextCapturePriority())
                        break;
                    lowest = index;
                }
            _open.resize(lowest);
            update(symbol, innermost());
            symbol.isUnclosed = true;
            _open.push_back(&symbol);
            return;
        }
        if (behavior == QVSymbolContextBehaviorSubtree)
            symbol.range = match.range();
        update(symbol, innermost());
        if (behavior == QVSymbolContextBehaviorSubtree)
            symbol.endRange = match.endRange().location != NSNotFound
                                  ? match.endRange()
                                  : NSRange{NSMaxRange(match.deepestLastChild()->fullRange()), 0};
        else if (behavior == QVSymbolContextBehaviorWhitespace)
            symbol.endRange = {endOfIndentedLines(symbol.range), 0};
        else
            return;
        _open.push_back(&symbol);
    }

    void closeInnermostOfGroup(Symbol &symbol) {
        const NSString &group = symbol.symbol->symbolContextGroupIdentifier();
        for (std::size_t index = _open.size(); index-- > 0;) {
            Symbol &context = *_open[index];
            if (!context.isOpenable() ||
                !(group.isNull() || group == context.symbol->symbolContextGroupIdentifier()))
                continue;
            symbol.previous = &context;
            context.isUnclosed = false;
            context.next = &symbol;
            context.endRange = {symbol.range.location, 0};
            _open.resize(index);
            return;
        }
    }

    static void update(Symbol &symbol, Symbol *parent) {
        symbol.parent = parent;
        const NSUInteger exported =
            parent && parent->options ? parent->options->contextLocalSymbolExportType() : 0;
        if (exported != 0 && symbol.options && symbol.options->symbolScope() == QVSymbolScopeLocal) {
            symbol.type = exported;
            symbol.scope = QVSymbolScopeGlobal;
        } else {
            symbol.type = symbol.options ? symbol.options->symbolType() : symbol.symbol->symbolType();
            symbol.scope = symbol.options ? symbol.options->symbolScope() : 0;
        }
    }

    void close(Symbol &symbol) {
        if (symbol.isUnclosed) {
            symbol.isUnclosed = false;
            if (symbol.endRange.location != NSNotFound)
                return;
            NSUInteger end = NSNotFound;
            if (symbol.options->contextUnclosedBehavior() == QVSymbolContextUnclosedBehaviorExtendDocument)
                end = _text.size();
            else if (symbol.options->contextUnclosedBehavior() == QVSymbolContextUnclosedBehaviorExtendParent)
                end = !symbol.parent                                   ? _text.size()
                      : symbol.parent->endRange.location != NSNotFound ? symbol.parent->endRange.location
                                                                       : NSMaxRange(symbol.parent->range);
            symbol.endRange = {end, 0};
        }
        while (symbol.parent && symbol.parent->isUnclosed &&
               symbol.parent->symbol->contextBehavior() == QVSymbolContextBehaviorStart)
            update(symbol, symbol.parent->parent);
    }

    NSUInteger endOfLineAt(NSUInteger location) const {
        const std::size_t found = _text.find(u'\n', location);
        return found == _text.npos ? _text.size() : found + 1;
    }
    /// The level of a line, and where its contents begin; its end where it has none.
    NSUInteger levelOfLineAt(NSUInteger location, NSUInteger &contents) const {
        NSUInteger tabs = 0;
        NSUInteger spaces = 0;
        const NSUInteger end = endOfLineAt(location);
        for (contents = location; contents < end; ++contents) {
            if (_text[contents] != u'\t' && _text[contents] != u' ' && _text[contents] != u'\n')
                break;
            tabs += _text[contents] == u'\t';
            spaces += _text[contents] == u' ';
        }
        return tabs + spaces / _tabWidth;
    }
    NSUInteger endOfIndentedLines(NSRange range) const {
        const std::size_t before = range.location == 0 ? _text.npos : _text.rfind(u'\n', range.location - 1);
        NSUInteger contents = 0;
        const NSUInteger base = levelOfLineAt(before == _text.npos ? 0 : before + 1, contents);
        NSUInteger end = NSMaxRange(range);
        NSRange pending{0, 0};
        for (NSUInteger line = endOfLineAt(end); line < _text.size(); line = end) {
            const NSUInteger level = levelOfLineAt(line, contents);
            const NSUInteger lineEnd = endOfLineAt(line);
            const bool isBlank = contents == lineEnd;
            const bool isComment = !isBlank && _text[contents] == u'#';
            if (!isBlank && !isComment && level <= base)
                break;
            if (isBlank || isComment)
                pending = pending.length == 0 ? NSRange{line, lineEnd - line}
                                              : NSRange{pending.location, lineEnd - pending.location};
            else
                pending = {0, 0};
            end = lineEnd;
        }
        return pending.length != 0 ? pending.location : end;
    }

    Symbol *innermost() const { return _open.empty() ? nullptr : _open.back(); }

    std::u16string_view _text;
    NSUInteger _tabWidth;
    std::vector<Symbol> _symbols;
    std::vector<Symbol *> _open;
};

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

TEST_F(RelationsLaw, AWholePassMakesWhatPlainReadingOfTheRulesDoes) {
    const LogRecorder log;
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        start(seed, 5 + seed % 60);
        ASSERT_EQ(PlainRelations::drawn(*parse), PlainRelations(*parse).drawn()) << "seed " << seed;
        for (int count = 0; count < 5; ++count)
            editAnywhere();
        ASSERT_EQ(PlainRelations::drawn(*parse), PlainRelations(*parse).drawn()) << "seed " << seed;
    }
}
