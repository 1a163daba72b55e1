#include "Tests/Laws/ReparseLaw.h"

#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Laws/SymbolLaw.h"

#include <cstdio>
#include <unordered_set>

namespace quorvane::test {

// Comparing

namespace {

class Comparer {
public:
    std::string compare(const QVScopeMatch &edited, const QVScopeMatch &fresh) {
        match(edited, fresh);
        return std::move(_difference);
    }

private:
    void fail(const QVMatch &edited, const QVMatch &fresh, const char *what) {
        if (_difference.empty())
            _difference = std::string(what) + "\nedited: " + edited.description().UTF8String() +
                          "\nfresh:  " + fresh.description().UTF8String();
    }

    void captures(const QVScopeMatch &edited, const QVScopeMatch &fresh, const QVCaptureMatchArray *a,
                  const QVCaptureMatchArray *b) {
        const std::size_t count = a ? a->size() : 0;
        if (count != (b ? b->size() : 0))
            return fail(edited, fresh, "another number of captures");
        for (std::size_t index = 0; index < count; ++index) {
            const QVCaptureMatch &capture = *(*a)[index];
            const QVCaptureMatch &other = *(*b)[index];
            if (capture.capture() != other.capture() || capture.range() != other.range())
                return fail(capture, other, "another capture");
            if (capture.parentMatch() != &edited ||
                capture.previousSibling() != (index > 0 ? (*a)[index - 1].get() : nullptr) ||
                capture.nextSibling() != (index + 1 < count ? (*a)[index + 1].get() : nullptr))
                return fail(capture, other, "a capture is linked to the wrong ones");
        }
    }

    void match(const QVScopeMatch &edited, const QVScopeMatch &fresh) {
        // Each parse has a root scope and scopes for blanks of its own.
        const bool sameScope =
            edited.scope() == fresh.scope() ||
            (edited.scope()->type() == fresh.scope()->type() && edited.scope()->type() <= QVScopeTypeNewline);
        if (!sameScope || edited.range() != fresh.range() || edited.endRange() != fresh.endRange())
            return fail(edited, fresh, "another match");
        if (edited.isStart() != fresh.isStart() || edited.isEnd() != fresh.isEnd() ||
            edited.anchoredMatchIdx() != fresh.anchoredMatchIdx())
            return fail(edited, fresh, "a match of another kind");
        if (edited.isInserted() || edited.skipForBumping())
            return fail(edited, fresh, "a mark was left");
        if (edited.subsyntax() != fresh.subsyntax() ||
            (edited.textCheckingResult() == nullptr) != (fresh.textCheckingResult() == nullptr))
            return fail(edited, fresh, "another syntax or start");
        captures(edited, fresh, edited.captureMatches(), fresh.captureMatches());
        captures(edited, fresh, edited.endCaptureMatches(), fresh.endCaptureMatches());
        children(edited, fresh);
    }

    void children(const QVScopeMatch &edited, const QVScopeMatch &fresh) {
        const QVSubmatches a = edited.submatches();
        const QVSubmatches b = fresh.submatches();
        const QVMatch *previous = nullptr;
        for (NSUInteger index = 0; index < a.count() && index < b.count() && _difference.empty(); ++index) {
            const QVScopeMatch &child = *a[index];
            match(child, *b[index]);
            if (child.parentMatch() != &edited || child.previousSibling() != previous ||
                (previous != nullptr && previous->nextSibling() != &child))
                fail(child, *b[index], "a match is linked to the wrong ones");
            previous = &child;
        }
        if (_difference.empty() && a.count() != b.count())
            fail(edited, fresh, "another number of children");
        if (edited.firstChild() != (a.isEmpty() ? nullptr : a[0]) || edited.lastChild() != previous ||
            (previous != nullptr && previous->nextSibling() != nullptr))
            fail(edited, fresh, "the first or last child is another one");
    }

    std::string _difference;
};

std::uint64_t mixed(std::uint64_t number, std::uint64_t with) {
    number ^= with + 0x9E3779B97F4A7C15 + (number << 6) + (number >> 2);
    return number * 0xBF58476D1CE4E5B9;
}

class Painter {
public:
    explicit Painter(std::size_t length) : _units(length) {}

    void paint(const QVScopeMatch &match) {
        const auto scope = match.scope()->type() <= QVScopeTypeNewline
                               ? static_cast<std::uint64_t>(match.scope()->type())
                               : reinterpret_cast<std::uint64_t>(match.scope());
        if (match.range().location != NSNotFound && match.scope()->type() != QVScopeTypeRoot) {
            stroke(match.range(), mixed(scope, 1));
            captures(match.captureMatches());
            const NSUInteger start = NSMaxRange(match.range());
            const NSRange end = match.endRange();
            if (end.location != NSNotFound) {
                if (end.location > start)
                    stroke({start, end.location - start}, mixed(scope, 2));
                stroke(end, mixed(scope, 3));
                captures(match.endCaptureMatches());
            }
        }
        for (const QVScopeMatch *const submatch : match.submatches())
            paint(*submatch);
    }

    std::vector<std::uint64_t> takeUnits() { return std::move(_units); }

private:
    void captures(const QVCaptureMatchArray *captures) {
        if (captures != nullptr)
            for (const auto &capture : *captures)
                stroke(capture->range(), mixed(reinterpret_cast<std::uint64_t>(capture->capture()), 4));
    }
    void stroke(NSRange range, std::uint64_t colour) {
        for (NSUInteger unit = range.location; unit < NSMaxRange(range) && unit < _units.size(); ++unit)
            _units[unit] = mixed(_units[unit], mixed(colour, unit == range.location));
    }

    std::vector<std::uint64_t> _units;
};

} // namespace

std::string differenceOfTrees(const QVParse &edited, const QVParse &fresh) {
    return Comparer().compare(*edited.rootMatch(), *fresh.rootMatch());
}

std::vector<std::uint64_t> paintedTree(const QVParse &parse) {
    Painter painter(parse.string().size());
    painter.paint(*parse.rootMatch());
    return painter.takeUnits();
}

NSUInteger firstUncoveredDifference(const std::vector<std::uint64_t> &before,
                                    const std::vector<std::uint64_t> &after, const Edit &edit,
                                    NSRange answer) {
    const std::size_t newEnd = edit.range.location + edit.text.size();
    for (std::size_t unit = 0; unit < after.size(); ++unit) {
        if (NSLocationInRange(unit, answer))
            continue;
        if (unit >= edit.range.location && unit < newEnd)
            return unit;
        const std::size_t old = unit < newEnd ? unit : unit - newEnd + NSMaxRange(edit.range);
        if (old >= before.size() || before[old] != after[unit])
            return unit;
    }
    return NSNotFound;
}

// Excuses

namespace {

/// The scopes that a region's matches were made of.
const QVScope::Scopes &scopesIn(const QVScopeMatch &match) {
    const auto syntax = match.subsyntax();
    if (!syntax || !syntax->grammar())
        return match.scope()->subscopes();
    const NSString &name = match.scope()->subsyntaxOptions()->collection();
    const std::shared_ptr<QVCollection> collection = syntax->grammar()->collectionWithName(name);
    if (name && collection)
        return collection->scopes();
    return name ? match.scope()->subscopes() : syntax->grammar()->scopes();
}

/// Whether one of the scopes, or one that they include, is such a one.
using ScopeTest = bool (*)(const QVScope &);
bool holdsScope(const QVScope::Scopes &scopes, ScopeTest isMeant,
                std::unordered_set<const QVScope *> &known) {
    for (const std::shared_ptr<QVScope> &scope : scopes) {
        if (!known.insert(scope.get()).second)
            continue;
        if (isMeant(*scope))
            return true;
        if (scope->type() != QVScopeTypeInclude)
            continue;
        // Which syntax an include means can depend on where it stands: all are looked at.
        for (const auto &[name, syntax] : QVSyntax::allSyntaxes()) {
            const std::shared_ptr<QVGrammar> grammar = syntax->grammar();
            if (!grammar)
                continue;
            if (holdsScope(grammar->scopes(), isMeant, known))
                return true;
            const auto collection = grammar->collectionWithName(scope->includeCollectionName());
            if (collection && holdsScope(collection->scopes(), isMeant, known))
                return true;
        }
    }
    return false;
}

bool holdsScope(const QVScope::Scopes &scopes, ScopeTest isMeant) {
    std::unordered_set<const QVScope *> known;
    return holdsScope(scopes, isMeant, known);
}

/// A region that can come to nothing, which takes an empty start.
bool canBeLost(const QVScope &scope) {
    return scope.type() == QVScopeTypeStartEnd && scope.regularExpression() &&
           scope.regularExpression()->canMatchEmptyText();
}

bool canBeLostAndEmbeds(const QVScope &scope) { return canBeLost(scope) && scope.definesSubsyntax(); }

/// As deep as regions nest, one that embeds a language was refused, or can have been without a trace.
bool refusesEmbeddingRegion(const QVScopeMatch &match, const QVScope::Scopes &templateScopes) {
    for (const QVScopeMatch *const child : match.submatches())
        if (child->isStart() && child->scope()->definesSubsyntax())
            return true;
    return holdsScope(scopesIn(match), canBeLostAndEmbeds) || holdsScope(templateScopes, canBeLostAndEmbeds);
}

/// The regions that go on over a place, by their starts, from the outside in.
std::vector<std::pair<NSUInteger, const QVScope *>> regionsOver(const QVParse &parse, NSUInteger location) {
    std::vector<std::pair<NSUInteger, const QVScope *>> regions;
    const QVScopeMatch *match = parse.rootMatch();
    while (match != nullptr) {
        const QVScopeMatch *inside = nullptr;
        for (const QVScopeMatch *const child : match->submatches())
            if (child->range().location < location && child->endRange().location != NSNotFound &&
                NSMaxRange(child->endRange()) > location)
                inside = child;
        if (inside != nullptr)
            regions.emplace_back(inside->range().location, inside->scope());
        match = inside;
    }
    return regions;
}

bool hasSeveralLines(const QVScopeMatch &match) {
    for (const QVScopeMatch *const child : match.submatches())
        if (child->scope()->type() == QVScopeTypeNewline || hasSeveralLines(*child))
            return true;
    return false;
}

/// A line that is too long stands in a sequence as unknown text that is none of its steps.
bool hasLineThatWasTooLong(const QVScopeMatch &match) {
    for (const QVScopeMatch *const child : match.submatches())
        if (child->scope()->type() == QVScopeTypeUnknown)
            return true;
    return false;
}

std::string excuseOfMatch(const QVScopeMatch &match, const QVScope::Scopes &templateScopes,
                          std::size_t depth) {
    if (match.scope()->usesAnchoredSubscopeMatching() && hasLineThatWasTooLong(match))
        return "the replay of a sequence passes its steps over at a line that is too long";
    if (match.scope()->usesAnchoredSubscopeMatching() && hasSeveralLines(match) &&
        holdsScope(scopesIn(match), canBeLost))
        return "a region of a sequence can have come to nothing";
    if (depth + 1 == limits::parseNestingDepth && hasSeveralLines(match) &&
        refusesEmbeddingRegion(match, templateScopes))
        return "cut-offs of a region that was refused hold on";
    for (const QVScopeMatch *const child : match.submatches()) {
        if (std::string excuse = excuseOfMatch(*child, templateScopes, depth + 1); !excuse.empty())
            return excuse;
    }
    return "";
}

} // namespace

std::string excuseOfTree(const QVParse &fresh) {
    const auto grammar = fresh.syntax()->grammar();
    return excuseOfMatch(*fresh.rootMatch(), grammar ? grammar->templateScopes() : QVScope::Scopes(), 0);
}

// Editing

RandomEdits::RandomEdits(std::uint32_t seed, std::vector<std::u16string> pieces)
    : _state(seed * 2654435761u + 97u), _pieces(std::move(pieces)) {
    const std::u16string_view usual[] = {u"a",  u"x",  u"1",    u" ",  u"\t",
                                         u"\n", u"\n", u"\r\n", u"\r", u"\U0001F600"};
    for (const std::u16string_view piece : usual)
        _pieces.emplace_back(piece);
    _pieces.emplace_back(1, char16_t(0xD83D));
    _pieces.emplace_back(1, char16_t(0xDE00));
}

std::uint32_t RandomEdits::below(std::uint64_t bound) {
    _state ^= _state << 13;
    _state ^= _state >> 17;
    _state ^= _state << 5;
    return static_cast<std::uint32_t>((_state >> 3) % bound);
}

const QVScopeMatch *RandomEdits::anyMatch(const QVParse &parse) {
    // Down to where chance stops, so that regions of all sizes come.
    const QVScopeMatch *match = parse.rootMatch();
    while (!match->submatches().isEmpty()) {
        const QVSubmatches children = match->submatches();
        match = children[below(children.count())];
        if (oneIn(3))
            break;
    }
    return match;
}

NSUInteger RandomEdits::place(const QVParse &parse) {
    const std::u16string_view string = parse.string();
    const auto clamped = [&](NSUInteger location) { return std::min<NSUInteger>(location, string.size()); };
    switch (below(12)) {
    case 0:
        return 0;
    case 1:
        return string.size();
    case 2:
    case 3:
        return clamped(anyMatch(parse)->range().location);
    case 4:
        return clamped(NSMaxRange(anyMatch(parse)->range()));
    case 5: {
        const NSRange end = anyMatch(parse)->endRange();
        return end.location == NSNotFound ? below(string.size() + 1)
                                          : clamped(end.location + below(2) * end.length);
    }
    case 6:
    case 7: {
        // A line's end, or its middle where that has two units.
        const std::size_t newline = string.find_first_of(u"\r\n", below(string.size() + 1));
        return newline == std::u16string_view::npos ? string.size()
                                                    : newline + below(3) % (string.size() - newline + 1);
    }
    default:
        return below(string.size() + 1);
    }
}

NSRange RandomEdits::stretch(const QVParse &parse) {
    const std::u16string_view string = parse.string();
    if (oneIn(3)) {
        const NSRange range = anyMatch(parse)->fullRange();
        if (range.location <= string.size())
            return {range.location, std::min<NSUInteger>(range.length, string.size() - range.location)};
    }
    const NSUInteger from = place(parse);
    if (oneIn(6)) {
        const NSUInteger to = place(parse);
        return {std::min(from, to), std::max(from, to) - std::min(from, to)};
    }
    return {from, std::min<NSUInteger>(below(oneIn(4) ? 60 : 4), string.size() - from)};
}

std::u16string RandomEdits::text(const QVParse &parse) {
    const std::u16string_view string = parse.string();
    if (oneIn(4)) {
        const NSRange range = stretch(parse);
        return std::u16string(string.substr(range.location, std::min<NSUInteger>(range.length, 3000)));
    }
    std::u16string result;
    for (std::uint32_t count = 1 + (oneIn(4) ? below(4) : 0); count > 0; --count)
        result += _pieces[below(_pieces.size())];
    return result;
}

Edit RandomEdits::next(const QVParse &parse) {
    switch (below(5)) {
    case 0:
    case 1:
        return {{place(parse), 0}, text(parse)};
    case 2: {
        const NSRange range = stretch(parse);
        // Else the text would be gone soon.
        return {{range.location, range.length > 300 && !oneIn(10) ? 1 : range.length}, u""};
    }
    case 3:
        return {{std::min<NSUInteger>(place(parse), parse.string().size() - (parse.string().empty() ? 0 : 1)),
                 parse.string().empty() ? NSUInteger(0) : NSUInteger(1)},
                text(parse)};
    default: {
        const NSRange range = stretch(parse);
        return {{range.location, range.length > 300 ? 1 : range.length}, text(parse)};
    }
    }
}

// The law

ReparseLaw::ReparseLaw(std::shared_ptr<QVSyntax> syntax, std::u16string text, NSUInteger maximumLineLength)
    : _syntax(std::move(syntax)), _text(std::move(text)), _texts{_text},
      _maximumLineLength(maximumLineLength) {
    _parse = freshParse();
}

std::shared_ptr<QVParse> ReparseLaw::freshParse() const {
    auto parse = QVParse::initWithSyntax(_syntax, _text.size(), QVParseMainQueueConcurrencyType);
    parse->setMaximumLineLength(_maximumLineLength);
    parse->performWritingBlockAndWait([&] { parse->replaceCharactersInRange({0, 0}, _text, nullptr); });
    return parse;
}

std::shared_ptr<QVParse> ReparseLaw::freshParseWithKnownIncludes() const {
    auto parse = QVParse::initWithSyntax(_syntax, _text.size(), QVParseMainQueueConcurrencyType);
    parse->setMaximumLineLength(_maximumLineLength);
    for (const std::u16string &text : _texts)
        parse->performWritingBlockAndWait([&] {
            parse->replaceCharactersInRange({0, parse->string().size()}, text, nullptr);
        });
    return parse;
}

std::string ReparseLaw::problemOfTree(const QVParse &fresh) const {
    if (_parse->string() != _text)
        return "the text is another one";
    if (_answer.location > _text.size() || _answer.length > _text.size() - _answer.location)
        return "the answered range leaves the text";
    if (const std::string difference = differenceOfTrees(*_parse, fresh); !difference.empty()) {
        std::string trees = QVMatchTreeText(*_parse) + "fresh tree:\n" + QVMatchTreeText(fresh);
        return difference + "\nanswered " + std::to_string(_answer.location) + "," +
               std::to_string(_answer.length) + "\nedited tree:\n" + (_text.size() < 2000 ? trees : "");
    }
    if (_parse->bracketLocationsByDepth() != fresh.bracketLocationsByDepth())
        return "another bracket table";
    return "";
}

/// Parsing starts at the line before the edited ones.
NSUInteger ReparseLaw::firstLocation(const Edit &edit) const {
    const NSRange lines = qv_lineRangeForRange(_text, {edit.range.location, edit.text.size()});
    return lines.location == 0 ? 0 : qv_lineRangeForRange(_text, {lines.location - 1, 1}).location;
}

std::string ReparseLaw::problemOfEdit(const Edit &edit) {
    const std::vector<std::uint64_t> before = paintedTree(*_parse);
    const SymbolsBefore symbolsBefore(*_parse);
    const bool wasEmpty = _parse->rootMatch()->submatches().isEmpty();
    std::string excuse = excuseOfTree(*_parse);
    _text.replace(edit.range.location, edit.range.length, edit.text);
    _texts.push_back(_text);
    const auto regionsBefore = regionsOver(*_parse, firstLocation(edit));
    std::string problem;
    try {
        _parse->performWritingBlockAndWait(
            [&] { _answer = _parse->replaceCharactersInRange(edit.range, edit.text, nullptr); });
    } catch (const NSException &exception) {
        return exception.reason().UTF8String();
    }
    if (wasEmpty && _answer != NSRange{0, _text.size()})
        return "the first parse answers another range than the whole text";
    const auto fresh = freshParse();
    // Some trees are always parsed as a whole.
    const bool isWhole = _answer == NSRange{0, _text.size()};
    if (!isWhole && _answer.location != firstLocation(edit))
        return "the answered range does not start at the line before the edit";
    problem = problemOfTree(*fresh);
    const NSUInteger uncovered = firstUncoveredDifference(before, paintedTree(*_parse), edit, _answer);
    if (problem.empty() && uncovered != NSNotFound)
        problem = "the answered range " + std::to_string(_answer.location) + "," +
                  std::to_string(_answer.length) + " does not cover the change at " +
                  std::to_string(uncovered);
    if (excuse.empty())
        excuse = excuseOfTree(*fresh);
    // Neither a unit before the first location nor one of the line behind it has changed. A region that ends
    // between the two, without a length, is not asked again either.
    if (const std::vector<std::uint64_t> after = paintedTree(*fresh);
        excuse.empty() && !isWhole &&
        (!std::equal(after.begin(), after.begin() + static_cast<std::ptrdiff_t>(_answer.location),
                     before.begin()) ||
         regionsOver(*fresh, _answer.location) != regionsBefore))
        excuse = "a pattern looks over lines";
    if (!problem.empty() && excuse.empty() &&
        differenceOfTrees(*_parse, *freshParseWithKnownIncludes()).empty())
        excuse = "an include stays what its first use made of it";
    if (!problem.empty() && excuse.empty())
        return problem;
    if (problem.empty()) {
        const SymbolVerdict verdict = compareSymbols(symbolsBefore, *_parse, *fresh, _answer);
        if (!verdict.difference.empty())
            return verdict.difference + "\nanswered " + std::to_string(_answer.location) + "," +
                   std::to_string(_answer.length);
        if (verdict.excuse.empty())
            return "";
        ++_excusedSymbolsCount;
    } else {
        ++_excusedCount;
    }
    _parse = fresh;
    _texts = {_text};
    return "";
}

std::string unitsOfText(std::u16string_view text) {
    std::string result;
    for (const char16_t unit : text) {
        char digits[8];
        std::snprintf(digits, sizeof digits, unit >= 0x20 && unit < 0x7F ? "%c" : "\\x%04X", unit);
        result += digits;
    }
    return result;
}

} // namespace quorvane::test
