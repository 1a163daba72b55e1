// Which comments document a symbol, and what they say.

#include "Platform/Foundation/QVTextSearching.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVSymbolDocumentationBehavior.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

namespace {

bool anyFits(const QVSymbolDocumentationBehavior::Selectors &selectors, const QVSimpleSelector *selector) {
    for (const auto &candidate : selectors)
        if (candidate->matchesSelector(selector))
            return true;
    return false;
}

/// A walk from match to match under one behaviour.
class CommentSearch {
public:
    CommentSearch(const QVSymbolDocumentationBehavior &behavior, std::vector<const QVScopeMatch *> &result)
        : _behavior(behavior), _result(result) {}

    void walk(const QVScopeMatch *symbolMatch) {
        switch (_behavior.searchMode()) {
        case QVSymbolDocumentationSearchModeBefore:
            for (const QVMatch *match = symbolMatch->previousSibling();
                 match != nullptr && goesOnBehind(match); match = match->previousSibling()) {
            }
            break;
        case QVSymbolDocumentationSearchModeAfter:
            for (const QVMatch *match = symbolMatch->nextSibling(); match != nullptr && goesOnBehind(match);
                 match = match->nextSibling()) {
            }
            break;
        case QVSymbolDocumentationSearchModeSubtree:
            if (const QVMatch *const sibling = symbolMatch->nextSibling())
                sibling->enumerateSubtreeUsingBlock(
                    [&](QVMatch *match, bool &stop, bool &) { stop = !goesOnBehind(match); });
            break;
        default:
            break;
        }
    }

    /// What ends the whole search has been found.
    bool hasFound() const { return _hasFound; }

private:
    bool goesOnBehind(const QVMatch *visited) {
        const QVScopeMatch *const match = visited->asScopeMatch();
        const QVScopeType type = match->scope()->type();
        if (type == QVScopeTypeNewline || type == QVScopeTypeWhitespace)
            return true;
        const QVSimpleSelector *const selector = match->selector();
        if (anyFits(_behavior.matchSelectors(), selector)) {
            _result.push_back(match);
            _hasFound = true;
            return false;
        }
        if (anyFits(_behavior.matchMultipleSelectors(), selector)) {
            _result.push_back(match);
            return true;
        }
        return anyFits(_behavior.skipSelectors(), selector);
    }

    const QVSymbolDocumentationBehavior &_behavior;
    std::vector<const QVScopeMatch *> &_result;
    bool _hasFound = false;
};

bool isContent(const QVSimpleSelector *selector) {
    static const auto &content = *new NSString(u"content");
    return selector != nullptr && selector->classes().contains(content);
}

const QVMatch *contentCapture(const QVCaptureMatchArray *captures) {
    if (captures != nullptr)
        for (const auto &capture : *captures)
            if (isContent(capture->selector()))
                return capture.get();
    return nullptr;
}

/// The text without blank lines around it and without the indentation that all lines share. Blank lines
/// between the others count as not indented.
NSString cleanedComment(std::u16string_view text, NSUInteger tabWidth) {
    static const auto &blanks = *new auto(NSCharacterSet::whitespaceAndNewlineCharacterSet());
    struct Line {
        std::u16string_view text;
        NSUInteger level = 0;
    };
    std::vector<Line> lines;
    for (NSRange line{0, 0}; NSMaxRange(line) < text.size();) {
        line = QVPlatformLineRangeForRange(text, {NSMaxRange(line), 0});
        const std::u16string_view whole = text.substr(line.location, line.length);
        std::size_t contents = 0;
        while (contents < whole.size() && blanks->characterIsMember(whole[contents]))
            ++contents;
        if (contents < whole.size())
            lines.push_back({whole.substr(contents),
                             qv_indentationLevelWithTabWidth(whole.substr(0, contents), tabWidth)});
        else if (!lines.empty())
            lines.push_back({});
    }
    while (!lines.empty() && lines.back().text.empty())
        lines.pop_back();
    NSUInteger lowest = NSNotFound;
    for (const Line &line : lines)
        lowest = std::min(lowest, line.level);
    std::u16string result;
    for (const Line &line : lines) {
        result +=
            qv_stringWithIndentationLevel(line.level - lowest, QVIndentationStyleSpaces, tabWidth).view();
        result += line.text;
    }
    return result;
}

} // namespace

std::vector<const QVScopeMatch *>
QVParse::documentationCommentMatchesForSymbolMatch(const QVScopeMatch *match, NSUInteger type) const {
    std::vector<const QVScopeMatch *> result;
    if (match == nullptr)
        return result;
    const std::shared_ptr<QVSyntax> syntax = syntaxForMatch(match, NSNotFound);
    const auto &declared = syntax->symbolDocumentationBehaviors();
    const auto behaviors = declared && !declared->empty()
                               ? *declared
                               : QVSymbolDocumentationBehavior::defaultBehaviorsForSymbolType(type);
    for (const auto &behavior : behaviors) {
        if (behavior->matchSelectors().empty() && behavior->matchMultipleSelectors().empty())
            continue;
        CommentSearch search(*behavior, result);
        search.walk(match);
        if (search.hasFound())
            break;
    }
    return result;
}

NSString QVParse::documentationCommentFromMatch(const QVScopeMatch *match) const {
    NSString text;
    if (match == nullptr)
        return text;
    for (const QVCaptureMatchArray *captures : {match->captureMatches(), match->endCaptureMatches()})
        if (const QVMatch *const capture = text.length() == 0 ? contentCapture(captures) : nullptr)
            text = textInRange(capture->range());
    if (text.length() == 0 && isContent(match->selector()))
        if (const QVMatch *const child = match->firstChild())
            text = textInRange(child->range());
    if (!text) {
        const NSRange start = match->range();
        const NSRange end = match->endRange();
        const bool isRegion = match->scope()->type() == QVScopeTypeStartEnd && end.location != NSNotFound;
        text = textInRange(isRegion ? NSRange{NSMaxRange(start), end.location - NSMaxRange(start)} : start);
    }
    return cleanedComment(text, tabWidth());
}

NSString QVParse::documentationCommentForSymbolMatch(const QVScopeMatch *match, NSUInteger type) const {
    const auto matches = documentationCommentMatchesForSymbolMatch(match, type);
    if (matches.empty())
        return nullptr;
    if (matches.size() == 1)
        return documentationCommentFromMatch(matches.front());
    std::u16string text;
    for (const QVScopeMatch *const comment : matches) {
        text += documentationCommentFromMatch(comment).view();
        text += u'\n';
    }
    return text;
}

} // namespace quorvane
