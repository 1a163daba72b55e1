// Where the brackets of each depth of nesting stand: a table of the whole document, made anew behind each
// reparse by a walk of the tree. So brackets in strings and comments don't count, and embedded languages
// count their own kinds.

#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <boost/container/small_vector.hpp>

#include <array>
#include <unordered_map>

namespace quorvane {

namespace {

/// How many of each opening character are open. A language has a handful of kinds.
class OpenBrackets {
public:
    NSUInteger &countOf(char16_t open) {
        for (auto &[character, count] : _counts)
            if (character == open)
                return count;
        return _counts.emplace_back(open, 0).second;
    }

private:
    boost::container::small_vector<std::pair<char16_t, NSUInteger>, 4> _counts;
};

/// What each code unit is to a syntax. Pairs of longer texts are no brackets.
class BracketCharacters {
public:
    explicit BracketCharacters(const QVSyntax *syntax) {
        if (syntax == nullptr)
            return;
        // Opens last, since a character that both opens and closes counts as one that opens.
        for (const auto &[open, close] : syntax->bracketPairs())
            if (open.length() == 1 && close.length() == 1)
                set(close.characterAtIndex(0), {Kind::Close, open.characterAtIndex(0)});
        for (const auto &[open, close] : syntax->bracketPairs())
            if (open.length() == 1)
                set(open.characterAtIndex(0), {Kind::Open, open.characterAtIndex(0)});
    }

    enum class Kind : std::uint8_t { None, Open, Close };
    struct Character {
        Kind kind = Kind::None;
        char16_t open = 0;
    };
    Character at(char16_t unit) const {
        if (unit < _first.size())
            return _first[unit];
        for (const auto &[character, value] : _others)
            if (character == unit)
                return value;
        return {};
    }
    bool isEmpty() const { return _isEmpty; }

private:
    void set(char16_t unit, Character value) {
        _isEmpty = false;
        if (unit < _first.size()) {
            _first[unit] = value;
            return;
        }
        for (auto &[character, present] : _others)
            if (character == unit) {
                present = value;
                return;
            }
        _others.emplace_back(unit, value);
    }

    bool _isEmpty = true;
    std::array<Character, 128> _first{};
    std::vector<std::pair<char16_t, Character>> _others;
};

/// One making of the table.
class BracketWalk {
public:
    BracketWalk(const char16_t *characters, NSUInteger length, std::vector<NSIndexSet> &locations)
        : _characters(characters), _length(length), _locations(locations) {}

    void parseMatch(const QVScopeMatch *parent, const QVSyntax *syntax, OpenBrackets *existing);

private:
    void scan(NSRange range, const BracketCharacters &brackets, OpenBrackets &open);
    const BracketCharacters &charactersOf(const QVSyntax *syntax) {
        return _charactersOfSyntaxes.try_emplace(syntax, syntax).first->second;
    }

    const char16_t *const _characters;
    const NSUInteger _length;
    std::vector<NSIndexSet> &_locations;
    std::unordered_map<const QVSyntax *, BracketCharacters> _charactersOfSyntaxes;
};

void BracketWalk::scan(NSRange range, const BracketCharacters &brackets, OpenBrackets &open) {
    if (range.location >= _length || brackets.isEmpty())
        return;
    const NSUInteger end = range.location + std::min(range.length, _length - range.location);
    for (NSUInteger location = range.location; location < end; ++location) {
        const BracketCharacters::Character character = brackets.at(_characters[location]);
        if (character.kind == BracketCharacters::Kind::None) [[likely]]
            continue;
        NSUInteger &count = open.countOf(character.open);
        if (character.kind == BracketCharacters::Kind::Open) {
            if (count >= _locations.size())
                _locations.resize(count + 1);
            _locations[count++].addIndex(location);
        } else if (count > 0) {
            --count;
            if (count < _locations.size())
                _locations[count].addIndex(location);
        }
    }
}

void BracketWalk::parseMatch(const QVScopeMatch *parent, const QVSyntax *syntax, OpenBrackets *existing) {
    const BracketCharacters &brackets = charactersOf(syntax);
    OpenBrackets own;
    OpenBrackets &open = existing ? *existing : own;
    // The pieces of one embedded language between here and the end of the region share their depths.
    std::unordered_map<NSString, OpenBrackets> noncontiguous;
    const NSString &string = QVLexicalClassString;
    const NSString &comment = QVLexicalClassComment;
    const QVScopeMatch *match = QVScopeMatch::directFirstChild(parent);
    while (match != nullptr) {
        const QVScope *const scope = match->scope();
        const NSString &lexicalClass = scope->lexicalClass();
        if (!(lexicalClass && (lexicalClass == string || lexicalClass == comment))) {
            scan(match->range(), brackets, open);
            if (scope->definesSubsyntax()) {
                const std::shared_ptr<QVSyntax> subsyntax = match->subsyntax();
                const auto &options = scope->subsyntaxOptions();
                OpenBrackets *shared = nullptr;
                if (options->isNoncontiguous()) {
                    const NSString name = subsyntax ? subsyntax->name() : NSString();
                    shared =
                        &noncontiguous[options->collection()
                                           ? NSString::stringWithFormat(u"%@:%@", name, options->collection())
                                           : name];
                }
                parseMatch(match, subsyntax.get(), shared);
                scan(match->endRange(), brackets, open);
            } else if (const QVScopeMatch *const child = QVScopeMatch::directFirstChild(match)) {
                match = child;
                continue;
            } else {
                scan(match->endRange(), brackets, open);
            }
        }
        // A region's end comes behind its content.
        const QVMatch *next = match->nextSibling();
        while (next == nullptr) {
            match = match->parentMatch();
            if (match == nullptr || match == parent)
                return;
            scan(match->endRange(), brackets, open);
            next = match->nextSibling();
        }
        match = next->asScopeMatch();
    }
}

} // namespace

void QVParse::setShouldCalculateBracketDepths(bool calculate) {
    if (_shouldCalculateBracketDepths == calculate)
        return;
    _shouldCalculateBracketDepths = calculate;
    updateBracketDepths();
}

void QVParse::setBracketLocationsByDepth(std::optional<std::vector<NSIndexSet>> locations) {
    _bracketLocationsByDepth = std::move(locations);
}

void QVParse::updateBracketDepths() {
    if (!_shouldCalculateBracketDepths) {
        setBracketLocationsByDepth(std::nullopt);
        return;
    }
    std::vector<NSIndexSet> locations;
    BracketWalk(_text->characters(), _text->length(), locations)
        .parseMatch(_rootMatch.get(), _syntax.get(), nullptr);
    setBracketLocationsByDepth(std::move(locations));
}

} // namespace quorvane
