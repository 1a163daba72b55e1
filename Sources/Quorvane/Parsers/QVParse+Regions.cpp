// Regions and lines: how a region is entered and finished, and how the text is cut into lines.

#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParsePass.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <bit>

namespace quorvane {

namespace {

/// Whether patterns, which know more line endings than documents do, may see a line's start behind the unit.
bool isLineBreak(char16_t unit) {
    return (unit >= u'\n' && unit <= u'\r') || unit == u'\x85' || unit == u'\x2028' || unit == u'\x2029';
}

/// The bit of each ASCII unit in a line's mask of units, which has two words for these.
using ASCIIBits = std::uint64_t __attribute__((vector_size(16)));
alignas(ASCIIBits) constexpr auto wordsOfASCII = [] {
    std::array<std::array<std::uint64_t, 2>, 128> bits{};
    for (std::size_t unit = 0; unit < bits.size(); ++unit)
        bits[unit][unit / 64] = std::uint64_t{1} << (unit % 64);
    return bits;
}();
ASCIIBits bitOfASCII(std::uint64_t unit) { return std::bit_cast<ASCIIBits>(wordsOfASCII[unit]); }

/// What has gathered, in an array of its size; the room stays for the next region, but where it is large.
QVScopeMatchArray takeGrownTree(QVScopeMatchArray &tree) {
    if (tree.size() > QVSubmatchChunks::fewSubmatches)
        return std::exchange(tree, {});
    QVScopeMatchArray taken(std::make_move_iterator(tree.begin()), std::make_move_iterator(tree.end()));
    tree.clear();
    return taken;
}

/// The smallest range that holds both; a match without a place adds nothing.
NSRange unionOfPlaces(NSRange a, NSRange b) {
    if (a.location == NSNotFound)
        return b;
    return b.location == NSNotFound ? a : NSUnionRange(a, b);
}

/// What a region without an end range covers: its start, and down along the last children as far as they
/// reach.
NSRange coveredRange(const QVScopeMatch *match) {
    NSRange covered = match->range();
    while ((match = QVScopeMatch::directLastChild(match)) != nullptr) {
        const NSRange endRange = QVScopeMatch::directEndRange(match);
        if (endRange.location != NSNotFound)
            return unionOfPlaces(covered, endRange);
        covered = unionOfPlaces(covered, match->range());
    }
    return covered;
}

} // namespace

QVScopeMatchReference QVParse::newMatch(const QVScope *scope, NSRange range) const {
    return QVScopeMatch::matchWithScope(scope, range, *_matchPool);
}

const std::vector<std::shared_ptr<QVScope>> &QVParse::scopeListForMatch(QVScopeMatch *match) {
    const QVScope &scope = *match->scope();
    if (!scope.definesSubsyntax())
        return scope.subscopes();
    const QVScopeSubsyntaxOptions &options = *scope.subsyntaxOptions();
    std::shared_ptr<QVSyntax> syntax;
    if (options.name()) {
        syntax = QVSyntax::syntaxForName(options.name());
    } else if (options.captureNumber()) {
        const auto result = match->textCheckingResult();
        const auto number = static_cast<NSUInteger>(*options.captureNumber());
        if (result && result->numberOfRanges() > number) {
            NSRange group = result->rangeAtIndex(number);
            const bool tookPart = group.location != NSNotFound;
            // The text stands where the match stands now; of what a pattern saw ahead the text may have lost
            // a part since. A group that took no part names no syntax.
            group.location += match->range().location - result->range().location;
            if (tookPart && group.location <= _text->length()) {
                const NSString text(std::u16string(_text->view().substr(group.location, group.length)));
                syntax = QVSyntax::syntaxForName(text);
                const auto alias = options.aliases().find(text);
                if (!syntax && alias != options.aliases().end())
                    syntax = QVSyntax::syntaxForName(alias->second);
            }
        }
    }
    if (!syntax)
        return scope.subscopes();
    const std::shared_ptr<QVGrammar> grammar = syntax->grammar();
    pinGrammar(grammar);
    match->setSubsyntax(syntax);
    std::shared_ptr<QVCollection> collection = grammar;
    if (grammar && options.collection())
        collection = grammar->collectionWithName(options.collection());
    return collection && !collection->scopes().empty() ? collection->scopes() : scope.subscopes();
}

void QVParse::parseRecursivelyStartingWithinMatch(QVScopeMatch *match, QVScopeMatchArray &intoTree,
                                                  NSRange range, NSUInteger insertionIndex) {
    const QVScope &scope = *match->scope();
    const Scopes &scopes = scopeListForMatch(match);
    const std::size_t ancestorCount = _pass->subsyntaxAncestors.size();
    if (scope.definesSubsyntax())
        _pass->subsyntaxAncestors.emplace_back(match);
    const std::size_t depth = _pass->parseStackMatches.size();
    if (depth >= limits::parseNestingDepth) {
        // The enclosing level takes the ancestor off again.
        intoTree.push_back(QVScopeMatch::endWithScope(&scope, {range.location, 0}, *_matchPool));
        return;
    }
    _pass->parseStackMatches.push_back(match);
    if (scope.usesAnchoredSubscopeMatching())
        parseAnchoredStartingWithinMatch(match, intoTree, scopes, range, insertionIndex);
    else
        parseUnanchoredStartingWithinMatch(match, intoTree, scopes, range);
    _pass->parseStackMatches.resize(depth);
    _pass->subsyntaxAncestors.resize(ancestorCount);
}

NSRange QVParse::parseRecursivelyIntoStartMatch(QVScopeMatch *startMatch, NSRange parseRange) {
    const NSUInteger end = NSMaxRange(parseRange);
    const NSUInteger contentsStart = NSMaxRange(startMatch->range());
    const QVScope &scope = *startMatch->scope();
    const bool entersTemplate = !_pass->isInTemplateScope && scope.isTemplateScope();
    if (entersTemplate)
        _pass->isInTemplateScope = true;
    // Children gather where there is room from earlier regions, and then get an array of their size.
    const std::size_t depth = _pass->parseStackMatches.size();
    while (_pass->growingTrees.size() <= depth)
        _pass->growingTrees.push_back(std::make_unique<QVScopeMatchArray>());
    QVScopeMatchArray &tree = *_pass->growingTrees[depth];
    tree.clear();
    parseRecursivelyStartingWithinMatch(startMatch, tree, {contentsStart, end - contentsStart}, 0);
    if (entersTemplate)
        _pass->isInTemplateScope = false;

    // An end marker never stays in the tree: it gives its place and its captures to the region.
    const QVScopeMatchReference last = tree.empty() ? nullptr : tree.back();
    const bool closed = last && last->isEnd();
    if (closed)
        tree.pop_back();
    startMatch->adoptSubmatches(takeGrownTree(tree));
    if (closed) {
        startMatch->setEndRange(last->range());
        std::unique_ptr<QVCaptureMatchArray> captures = last->takeCaptureMatches();
        if (captures)
            for (const auto &capture : *captures)
                capture->setParentMatch(startMatch);
        startMatch->setEndCaptureMatches(std::move(captures));
    } else if (!scope.usesAnchoredSubscopeMatching() && end == _text->length()) {
        startMatch->setEndRange({end, 0});
        startMatch->setEndCaptureMatches(nullptr);
    }

    // The result is taken before an anchored region gets its end, which may lie further on.
    const NSRange result =
        startMatch->endRange().location != NSNotFound ? startMatch->fullRange() : coveredRange(startMatch);
    if (!closed && startMatch->endRange().location == NSNotFound && scope.usesAnchoredSubscopeMatching()) {
        if (NSMaxRange(result) < end) {
            const bool lastHasPlace = last && last->range().location != NSNotFound;
            startMatch->setEndRange({NSMaxRange(lastHasPlace ? last->fullRange() : startMatch->range()), 0});
            startMatch->setEndCaptureMatches(nullptr);
        } else if (end == _text->length()) {
            startMatch->setEndRange({end, 0});
            startMatch->setEndCaptureMatches(nullptr);
        }
    }
    return result;
}

QVParseLine QVParse::lineAtLocation(NSUInteger location, NSUInteger end) {
    // Each region that ends on a line asks for the rest of it again.
    QVParseLine &known = _pass->line;
    if (_pass->lineGeneration == _pass->generation && _pass->lineRangeEnd == end && location >= known.start &&
        location <= known.contentsEnd && !(location == known.contentsEnd && !known.hasNewline())) {
        QVParseLine line = known;
        line.startsLine &= location == known.start;
        line.start = location;
        return line;
    }
    QVParseLine line;
    line.start = location;
    const char16_t *const characters = _text->characters();
    line.startsLine = location == 0 || isLineBreak(characters[location - 1]);
    NSUInteger position = location;
    // In registers, and with few steps: this looks at every unit of the text.
    ASCIIBits units{0, 0};
    const auto note = [&](char16_t unit) {
        if (unit < 128) [[likely]] {
            units |= bitOfASCII(unit);
        } else {
            line.units[unit < 255 ? unit >> 6 : 3] |= std::uint64_t(1) << (unit < 255 ? unit & 63 : 63);
            line.hasSurrogates |= (unit & 0xF800) == 0xD800;
        }
    };
    for (; position < end; ++position) {
        // Four at a time while all of them are ASCII and none can end a line.
        for (std::uint64_t four; end - position > 4; position += 4) {
            std::memcpy(&four, characters + position, sizeof four);
            if ((four & 0xFF80FF80FF80FF80) != 0 || ((four - 0x000E000E000E000E) & 0x8000800080008000) != 0)
                break;
            units |= bitOfASCII(four & 0x7F) | bitOfASCII(four >> 16 & 0x7F) | bitOfASCII(four >> 32 & 0x7F) |
                     bitOfASCII(four >> 48);
        }
        const char16_t unit = characters[position];
        note(unit);
        if (unit > u'\r' || (unit != u'\n' && unit != u'\r'))
            continue;
        line.newline = qv_rangeOfNewlineAtLocation(_text->view(), position);
        // Text that begins between CR and LF has only the LF.
        if (line.newline.location < location)
            line.newline = {location, NSMaxRange(line.newline) - location};
        break;
    }
    line.contentsEnd = line.hasNewline() ? line.newline.location : end;
    // A match may be tried at the contents' very end, where a pattern sees the unit behind the range.
    if (line.contentsEnd < _text->length())
        note(characters[line.contentsEnd]);
    line.units[0] |= units[0];
    line.units[1] |= units[1];
    constexpr std::uint64_t verticalTabAndFormFeed = std::uint64_t(3) << u'\v';
    constexpr std::uint64_t nextLine = std::uint64_t(1) << (u'\x85' & 63);
    line.holdsLineStarts =
        (line.units[0] & verticalTabAndFormFeed) != 0 || (line.units[2] & nextLine) != 0 || !line.isPlain();
    _pass->lineGeneration = _pass->generation;
    _pass->lineRangeEnd = end;
    known = line;
    return line;
}

} // namespace quorvane
