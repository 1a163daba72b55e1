// What an editor asks about meaning: the context around a place, what defines an identifier, and where else
// it stands. Identifiers are looked up by their text along the tree, under the language's rules.

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

namespace {

bool isTypeOrFunction(const QVParseSymbol &symbol) {
    return QVSymbolTypeIsType(symbol.symbolType()) || QVSymbolTypeIsFunction(symbol.symbolType());
}

bool overlap(NSRange a, NSRange b) { return NSIntersectionRange(a, b).length != 0; }

std::shared_ptr<QVParseSymbol> held(const QVParseSymbol *symbol) {
    return symbol ? std::static_pointer_cast<QVParseSymbol>(
                        std::const_pointer_cast<NSObject>(symbol->shared_from_this()))
                  : nullptr;
}

/// An argument's symbol, which is seen in its function alone and so found by way of that.
bool isArgument(const QVParseSymbol &symbol) { return symbol.symbolType() == QVSymbolTypeArgument; }

const QVMatch *firstWithLength(const QVMatch *match) {
    while (match != nullptr && match->range().length == 0)
        match = match->nextDeepMatch();
    return match;
}

/// A place at a line's end belongs to what stands before.
const QVMatch *matchBeforeNewlines(const QVMatch *match) {
    while (match != nullptr && match->isScopeMatch() &&
           match->asScopeMatch()->scope()->type() == QVScopeTypeNewline)
        match = match->previousMatch();
    return match;
}

const QVParseSymbol *innermostContext(const QVParseSymbol *from, bool (*fits)(const QVParseSymbol &)) {
    for (const QVParseSymbol *symbol = from; symbol != nullptr; symbol = symbol->parentContextSymbol())
        if (fits(*symbol))
            return symbol;
    return from;
}

/// The search for the symbol that defines an identifier.
class DefinitionSearch {
public:
    DefinitionSearch(const QVParse &parse, const QVMatch *match, QVSymbolRedefinitionBehavior redefinition)
        : _parse(parse), _match(match), _redefinition(redefinition), _name(textOf(match->fullRange())) {}

    void run() {
        lookBackward();
        if (_found == nullptr)
            lookForward();
    }

    const QVParseSymbol *found() const { return _found; }
    const std::shared_ptr<QVParseSymbol> &context() const { return _context; }

private:
    std::u16string_view textOf(NSRange range) const {
        const std::u16string_view text = _parse.string();
        return range.location <= text.size() ? text.substr(range.location, range.length)
                                             : std::u16string_view();
    }
    bool isAround(const QVParseSymbol &symbol) const { return overlap(symbol.fullRange(), _match->range()); }
    bool isNamed(const QVParseSymbol &symbol) const { return symbol.name() == _name; }

    /// Takes a symbol if it is seen from the identifier.
    void takeIfSeen(const QVParseSymbol &symbol) {
        auto context = _parse.contextForSymbol(symbol);
        if (context && !isAround(*context))
            return;
        _found = &symbol;
        _context = std::move(context);
    }

    void take(const QVParseSymbol &symbol) {
        if (isNamed(symbol) && !isArgument(symbol)) {
            takeIfSeen(symbol);
            return;
        }
        for (const auto &argument : symbol.argumentSymbols()) {
            if (!isNamed(*argument))
                continue;
            if (isAround(symbol)) {
                _found = argument.get();
                _context = held(&symbol);
            }
            return;
        }
    }

    bool isDecided(const QVParseSymbol *symbol) const {
        if (_found == nullptr)
            return false;
        return _redefinition == QVSymbolRedefinitionBehaviorDistinct ||
               (_redefinition == QVSymbolRedefinitionBehaviorWithinConstruct && symbol != nullptr &&
                isTypeOrFunction(*symbol));
    }

    void lookBackward() {
        for (const QVMatch *visited = _match; visited != nullptr; visited = visited->previousMatch()) {
            const QVScopeMatch *const match = visited->asScopeMatch();
            if (match == nullptr)
                continue;
            if (match->scope()->definesSubsyntax())
                return;
            const QVParseSymbol *const symbol = match->symbol();
            if (symbol != nullptr)
                take(*symbol);
            if (isDecided(symbol))
                return;
            if (_boundary == nullptr && symbol != nullptr && match != _match && isTypeOrFunction(*symbol) &&
                isAround(*symbol))
                _boundary = symbol;
        }
    }

    /// For definitions that follow their use. The last one wins.
    void lookForward() {
        const QVMatch *visited = _boundary ? _boundary->match()->nextShallowMatch() : nullptr;
        if (visited == nullptr && _redefinition == QVSymbolRedefinitionBehaviorNonDistinct)
            visited = _match->nextShallowMatch();
        while (visited != nullptr) {
            const QVScopeMatch *const match = visited->asScopeMatch();
            if (match != nullptr && match->scope()->definesSubsyntax()) {
                visited = visited->nextShallowMatch();
                continue;
            }
            const QVParseSymbol *const symbol = match ? match->symbol() : nullptr;
            if (symbol != nullptr && !isArgument(*symbol) && isNamed(*symbol) &&
                (symbol->symbolScope() == QVSymbolScopeGlobal ||
                 symbol->symbolScope() == QVSymbolScopePrivate))
                takeIfSeen(*symbol);
            visited = visited->nextMatch();
        }
    }

    const QVParse &_parse;
    const QVMatch *const _match;
    const QVSymbolRedefinitionBehavior _redefinition;
    const std::u16string_view _name;
    const QVParseSymbol *_found = nullptr;
    std::shared_ptr<QVParseSymbol> _context;
    /// The type or function around the identifier.
    const QVParseSymbol *_boundary = nullptr;
};

} // namespace

std::shared_ptr<QVParseSymbol> QVParse::deepestSymbolContextContainingLocation(NSUInteger location) const {
    std::shared_ptr<QVParseSymbol> deepest;
    for (const auto &symbol : symbols()) {
        const NSRange range = symbol->fullRange();
        if (range.location > location)
            break;
        // A symbol doesn't hold its own first position. Contexts nest, so the last one is the deepest.
        if (range.location != location && NSMaxRange(range) >= location)
            deepest = symbol;
    }
    return deepest;
}

std::shared_ptr<QVParseSymbol> QVParse::contextForSymbol(const QVParseSymbol &symbol) const {
    const QVParseSymbol *const parent = symbol.parentContextSymbol();
    const NSUInteger scope = *symbol.symbolScope();
    if (scope == QVSymbolScopeGlobal)
        return nullptr;
    if (scope == QVSymbolScopePrivate)
        return held(innermostContext(
            parent, [](const QVParseSymbol &context) { return QVSymbolTypeIsType(context.symbolType()); }));
    if (scope == QVSymbolScopeLocal && symbol.match() != nullptr &&
        syntaxForMatch(symbol.match(), NSNotFound)->symbolLocalScopeBehavior() ==
            QVSymbolLocalScopeBehaviorWithinConstruct)
        return held(innermostContext(parent, isTypeOrFunction));
    return held(parent);
}

const QVMatch *QVParse::identifierMatchAtMatch(const QVMatch *match) {
    match = firstWithLength(match);
    if (match != nullptr && match->isScopeMatch()) {
        const QVCaptureMatchArray *const captures = match->captureMatches();
        const QVMatch *const first = captures && !captures->empty() ? captures->front().get() : nullptr;
        // A capture that isn't there counts as one at the text's start, so that the document's first match
        // is no identifier without one.
        if (QVMatch::directRange(first).location == match->range().location)
            match = first;
    }
    for (; match != nullptr; match = match->parentMatch()) {
        if (const QVScopeMatch *const scopeMatch = match->asScopeMatch()) {
            if (scopeMatch->scope()->definesSubsyntax())
                return nullptr;
            const QVScopeType type = scopeMatch->scope()->type();
            if (type == QVScopeTypeWhitespace || type == QVScopeTypeNewline)
                continue;
        }
        if (match->lexicalClass() == QVLexicalClassIdentifier)
            return match;
    }
    return nullptr;
}

std::shared_ptr<QVParseSymbol>
QVParse::symbolDefiningIdentifierAtMatch(const QVMatch *match,
                                         std::shared_ptr<QVParseSymbol> *context) const {
    if (context != nullptr)
        context->reset();
    if (match == nullptr)
        return nullptr;
    DefinitionSearch search(*this, match, syntaxForMatch(match, NSNotFound)->symbolRedefinitionBehavior());
    search.run();
    if (context != nullptr)
        *context = search.context();
    return held(search.found());
}

std::shared_ptr<QVParseSymbol>
QVParse::symbolDefiningIdentifierAtLocation(NSUInteger location, NSRange *identifierRange,
                                            std::shared_ptr<QVParseSymbol> *context) const {
    const QVMatch *const match = matchBeforeNewlines(matchAtLocation(location, true, nullptr));
    const QVMatch *const identifier = identifierMatchAtMatch(match);
    if (identifierRange != nullptr)
        *identifierRange = identifier ? identifier->range() : NSNotFoundRange;
    if (identifier == nullptr) {
        if (context != nullptr)
            context->reset();
        return nullptr;
    }
    // Of the match that stands there, not of the identifier around it: its text is what is looked up.
    return symbolDefiningIdentifierAtMatch(match, context);
}

namespace {

/// What kinds of symbols limit a search for occurrences.
enum OccurrenceOption : NSUInteger { InnermostType = 1, InnermostTypeOrFunction = 2, InnermostSymbol = 4 };

bool limitsOccurrences(const QVParseSymbol &symbol, NSUInteger options) {
    if (options & InnermostType)
        return QVSymbolTypeIsType(symbol.symbolType());
    if (options & InnermostTypeOrFunction)
        return isTypeOrFunction(symbol);
    return (options & InnermostSymbol) != 0;
}

/// The occurrences of a name along the tree.
class OccurrenceSearch {
public:
    OccurrenceSearch(std::u16string_view text, std::u16string_view name) : _text(text), _name(name) {}

    std::vector<NSRange> run(const QVMatch *start, NSUInteger end) {
        for (const QVMatch *match = start; match != nullptr; match = match->nextMatch()) {
            if (match->range().location >= end || NSMaxRange(match->fullRange()) > _text.size())
                break;
            takeIfSame(match);
            takeFirst(match->captureMatches());
            takeFirst(match->endCaptureMatches());
        }
        return std::move(_ranges);
    }

private:
    bool takeIfSame(const QVMatch *match) {
        const NSString lexicalClass = match->lexicalClass();
        if (lexicalClass != QVLexicalClassIdentifier && lexicalClass != QVLexicalClassName)
            return false;
        const NSRange range = match->fullRange();
        if (range.location > _text.size() || _text.substr(range.location, range.length) != _name)
            return false;
        _ranges.push_back(range);
        return true;
    }
    void takeFirst(const QVCaptureMatchArray *captures) {
        for (std::size_t index = 0; captures != nullptr && index < captures->size(); ++index)
            if (takeIfSame((*captures)[index].get()))
                return;
    }

    std::u16string_view _text;
    std::u16string_view _name;
    std::vector<NSRange> _ranges;
};

} // namespace

std::vector<NSRange> QVParse::rangesForOccurrancesOfIdentifierAtLocation(NSUInteger location,
                                                                         NSUInteger options,
                                                                         NSRange *identifierRange) const {
    const std::u16string_view text = string();
    const QVMatch *const identifier = identifierMatchAtMatch(
        firstWithLength(matchBeforeNewlines(matchAtLocation(location, true, nullptr))));
    const bool isFound = identifier != nullptr && overlap(identifier->fullRange(), {0, text.size()});
    if (identifierRange != nullptr)
        *identifierRange = isFound ? identifier->range() : NSNotFoundRange;
    if (!isFound)
        return {};
    std::shared_ptr<QVParseSymbol> context;
    const std::shared_ptr<QVParseSymbol> symbol = symbolDefiningIdentifierAtMatch(identifier, &context);

    NSRange area{0, text.size()};
    const QVMatch *start = _rootMatch->firstChild();
    for (const auto &candidate : symbols())
        if (limitsOccurrences(*candidate, options) && NSLocationInRange(location, candidate->fullRange())) {
            start = candidate->match();
            area = candidate->fullRange();
        }
    NSUInteger end = NSMaxRange(area);
    // Uses before a definition that isn't seen everywhere are none of it.
    if (symbol && NSLocationInRange(symbol->range().location, area) &&
        symbol->range().location > start->range().location &&
        (context || symbol->symbolScope() != QVSymbolScopeGlobal)) {
        start = symbol->match();
        end = std::min(end, context ? NSMaxRange(context->fullRange()) : NSUInteger(text.size()));
    }
    const NSRange nameRange = identifier->fullRange();
    return OccurrenceSearch(text, text.substr(nameRange.location, nameRange.length)).run(start, end);
}

} // namespace quorvane
