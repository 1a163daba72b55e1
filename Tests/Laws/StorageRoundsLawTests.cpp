#include "Tests/Laws/ReparseLaw.h"
#include "Tests/Laws/SymbolLaw.h"
#include "Tests/Quorvane/Parsers/SymbolFixtures.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

#include <random>

namespace quorvane {
namespace {

using namespace test;

// The law of a document's rounds: whatever was typed while reparses and stylings were on their way, once all
// of them are back the document is the same as a fresh one with its text. The parse's queue is held back but
// for single steps, and the main queue is drained in steps of its own, so that every interleaving has a seed
// and comes out the same each time.

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr std::uint32_t seeds = 150;
#else
constexpr std::uint32_t seeds = 1500;
#endif

/// One language inside of another one's brackets, with symbols of all sorts: contexts that hold others and
/// such as go on from one to the next, names far behind a symbol's start, blocks that are named only where
/// there is a note. A comment with "!" is a bookmark.
std::shared_ptr<QVSyntax> languageAround(const std::shared_ptr<QVSyntax> &inner) {
    const std::string comments = region("comment", "\\(\\*", "\\*\\)", holding(single("note", "k")));
    const std::string others =
        regionText("group", "\\[", "\\]",
                   holding("<include syntax='self'/>") +
                       symbolText("block", "name-selector='comment'", contextText("behavior='subtree'"))) +
        matchText("keyword", "k\\w*", contextSymbol("class", "start", "unclosed='extend-document'")) +
        matchText("number", "\\d+", contextSymbol("class", "end")) +
        matchText("bold", "\\bb\\b", symbolText("variable", "scope='local'"));
    auto syntax = syntaxWithScopes(
        comments + others +
        regionText("embedded", "<", ">",
                   "<subsyntax name='" + inner->name().UTF8String() + "'/>" +
                       symbolText("method", "name-selector='word'", contextText("behavior='subtree'"))));
    setStyles(syntax, {{u"comment", 3}, {u"note", 4}, {u"keyword", 1}, {u"number", 2}, {u"embedded", 5}});
    setBold(syntax, u"bold");
    return syntax;
}

class StorageRounds {
public:
    StorageRounds(std::uint32_t seed, std::shared_ptr<QVSyntax> syntax)
        : _random(seed), _syntax(std::move(syntax)), _text(randomText(below(40))),
          _storage(QVConcreteTextStorage::initWithString(_text)) {
        _storage->setSyntax(_syntax);
        hold();
    }

    /// How many symbols were compared.
    std::size_t symbolCount() const { return _symbolCount; }
    /// What was done, for messages.
    const std::string &script() const { return _script; }

    void run(int steps) {
        while (steps-- > 0)
            step();
        _busy.reset();
        finishAllRounds(*_storage);
    }

    /// Empty where the document is that of its text.
    std::string problem() {
        if (textOf(*_storage) != NSString(std::u16string(_text)).UTF8String())
            return "the text is another one";
        const auto fresh = documentWithText(_text, _syntax);
        if (std::string difference = differenceOfLines(*fresh); !difference.empty())
            return difference;
        std::string trees;
        const QVParse &edited = *_storage->parse();
        const QVParse &parsed = *fresh->parse();
        _storage->parse()->performReadingBlockAndWait([&] {
            fresh->parse()->performReadingBlockAndWait([&] {
                if (edited.string() != _text)
                    trees = "the parse's text is another one";
                else if (trees = differenceOfTrees(edited, parsed); trees.empty())
                    trees = differenceOfSymbols(edited, parsed);
                _symbolCount += edited.symbols().size();
            });
        });
        if (!trees.empty())
            return trees;
        // What lies under a region that is reported again at its end counts from where the range began; so
        // only colours that a match brings itself are the same by now.
        if (drawnHighlighting(*_storage) != drawnHighlighting(*fresh))
            return "colours are " + drawnHighlighting(*_storage) + ", not " + drawnHighlighting(*fresh) +
                   ", of " + unitsOfText(_text);
        _storage->invalidateStylingInRange({0, _storage->length()});
        finishAllRounds(*_storage);
        if (std::string difference = differenceOfLooks(*fresh); !difference.empty())
            return "coloured again, " + difference;
        return "";
    }

private:
    std::uint32_t below(std::uint64_t bound) { return static_cast<std::uint32_t>(_random() % bound); }

    void hold() { _busy = std::make_unique<BusyQueue>(*_storage->parse()); }

    /// Lets the parse do all that waits.
    void letTheParseWork() {
        _busy.reset();
        hold();
    }

    std::u16string randomText(std::uint32_t count) {
        static const char16_t *const pieces[] = {u"k1", u"22",         u"(*", u"*)", u"\n", u"b",
                                                 u" ",  u"x",          u"<",  u">",  u"\n", u"k",
                                                 u" ",  u"\U0001F600", u"!",  u"[",  u"]"};
        std::u16string text;
        while (count-- > 0)
            text += pieces[below(std::size(pieces))];
        return text;
    }

    NSRange randomRange() {
        const NSUInteger location = below(_text.size() + 1);
        const NSUInteger rest = _text.size() - location;
        // Mostly a few characters, sometimes many.
        const NSUInteger length =
            below(4) == 0 ? below(rest + 1) : std::min<NSUInteger>(rest, below(4) == 0 ? below(6) : below(2));
        return {location, length};
    }

    void edit() {
        const NSRange range = randomRange();
        const std::u16string text = below(3) == 0 ? u"" : randomText(below(8) == 0 ? 12 : 1 + below(2));
        _text.replace(range.location, range.length, text);
        _storage->replaceCharactersInRange(range, text);
        note("edit " + drawn(range) + " by " + std::to_string(text.size()));
    }

    void step() {
        switch (below(16)) {
        case 0:
        case 1:
        case 2:
            note("parse");
            letTheParseWork();
            break;
        case 3:
        case 4:
        case 5:
            note("drain");
            MainQueue::drain();
            break;
        case 6: {
            const NSRange range = randomRange();
            note("style " + drawn(range));
            _storage->invalidateStylingInRange(range);
            break;
        }
        case 7: {
            note("bracket");
            _storage->beginEditing();
            for (auto count = below(4); count > 0; --count) {
                edit();
                if (below(4) == 0) {
                    note("drain in it");
                    MainQueue::drain();
                }
                if (below(6) == 0) {
                    note("style in it");
                    _storage->invalidateStylingInRange({0, _storage->length()});
                }
            }
            _storage->endEditing();
            break;
        }
        case 8:
            if (below(8) == 0) {
                note("syntax");
                _storage->setSyntax(nullptr);
                _busy.reset();
                _storage->setSyntax(_syntax);
                hold();
            }
            break;
        case 9:
            if (below(8) == 0) {
                const bool inBracket = below(2) == 0;
                note(inBracket ? "syntax in a bracket" : "off and on");
                if (inBracket) {
                    _storage->beginEditing();
                    edit();
                    _storage->setSyntax(nullptr);
                    edit();
                    _storage->setSyntax(_syntax);
                    edit();
                    _storage->endEditing();
                } else {
                    _storage->setParsingEnabled(false);
                    edit();
                    _storage->setParsingEnabled(true);
                }
                _busy.reset();
                hold();
            }
            break;
        default:
            edit();
        }
    }

    void note(const std::string &what) { _script += what + "; "; }

    std::string differenceOfLines(const QVTextStorage &fresh) const {
        if (_storage->numberOfLines() != fresh.numberOfLines())
            return "the number of lines is another one";
        for (NSUInteger line = 0; line < fresh.numberOfLines(); ++line)
            if (_storage->characterRangeForLineNumber(line) != fresh.characterRangeForLineNumber(line))
                return "line " + std::to_string(line) + " is another one";
        return "";
    }

    std::string differenceOfLooks(const QVConcreteTextStorage &fresh) const {
        for (NSUInteger index = 0; index < fresh.length(); ++index)
            if (_storage->syntaxAtLocation(index) != fresh.syntaxAtLocation(index))
                return "the syntax differs at " + std::to_string(index);
        for (NSUInteger index = 0; index < fresh.length(); ++index)
            if (_storage->syntaxHighlightingAttributesAtIndex(index, nullptr) !=
                fresh.syntaxHighlightingAttributesAtIndex(index, nullptr))
                return "colours differ at " + std::to_string(index) + ": " + drawnHighlighting(*_storage) +
                       " is not " + drawnHighlighting(fresh);
        if (drawnFonts(*_storage) != drawnFonts(fresh))
            return "fonts differ: " + drawnFonts(*_storage) + " is not " + drawnFonts(fresh);
        return "";
    }

    std::minstd_rand _random;
    std::shared_ptr<QVSyntax> _syntax;
    std::u16string _text;
    std::shared_ptr<QVConcreteTextStorage> _storage;
    std::unique_ptr<BusyQueue> _busy;
    std::string _script;
    std::size_t _symbolCount = 0;
};

TEST(StorageRoundsLaw, OnceAllIsBackADocumentIsTheSameAsAFreshOne) {
    const auto innerSyntax = syntaxFromXML("<syntax name='inner'><scopes>" + single("number", "\\d+") +
                                           single("word", "x") + "</scopes></syntax>");
    setStyles(innerSyntax, {{u"number", 7}, {u"word", 8}});
    const RegisteredSyntax inner(innerSyntax);
    const auto syntax = languageAround(innerSyntax);
    std::size_t symbolCount = 0;
    for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
        StorageRounds rounds(seed, syntax);
        rounds.run(40);
        const std::string problem = rounds.problem();
        ASSERT_EQ(problem, "") << "seed " << seed << ": " << rounds.script();
        symbolCount += rounds.symbolCount();
    }
    // So many are looked at that it says something.
    EXPECT_GE(symbolCount, 3u * seeds);
}

} // namespace
} // namespace quorvane
