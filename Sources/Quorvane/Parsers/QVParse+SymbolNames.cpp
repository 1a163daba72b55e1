// What symbols are called: where a name stands, which comments are bookmarks, and names for people.

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSLog.h"
#include "Quorvane/Categories/NSCharacterSet+QuorvaneAdditions.h"
#include "Quorvane/Formatters/QVFormatter.h"
#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"

namespace quorvane {

namespace {

const NSCharacterSet &blanksAndNewlines() {
    static const auto &set = *new auto(NSCharacterSet::whitespaceAndNewlineCharacterSet());
    return *set;
}

bool isBlank(char16_t unit) {
    // What names are made of.
    const bool isPrintableASCII = unit > u' ' && unit < u'\x7F';
    return !isPrintableASCII && blanksAndNewlines().characterIsMember(unit);
}

/// The words of a text with a blank between each two, in `buffer` where they don't stand so in the text.
std::u16string_view cleanedName(std::u16string_view text, std::u16string &buffer) {
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    bool isClean = true;
    for (std::size_t index = 0; index < text.size() && isClean; ++index)
        isClean = !isBlank(text[index]) || (text[index] == u' ' && !isBlank(text[index + 1]));
    if (isClean)
        return text;
    buffer.clear();
    for (const char16_t unit : text) {
        if (!isBlank(unit))
            buffer.push_back(unit);
        else if (buffer.back() != u' ')
            buffer.push_back(u' ');
    }
    return buffer;
}

/// Whether what a formatter makes of a symbol depends on more than the symbol's name.
bool readsTheText(const QVFormatter &formatter) {
    return std::any_of(
        formatter.components().begin(), formatter.components().end(),
        [](const auto &component) { return component->type() == QVFormatterComponentTypeSelector; });
}

bool isSymbol(const QVScopeMatch *match) {
    const auto &options = match->scope()->symbolOptions();
    return options && options->symbolType() != QVSymbolTypeNone;
}

/// The descendants of a match that belong to no symbol inside it, in document order, until `visit` answers
/// false.
template <typename Visit> void forEachOwnMatch(const QVScopeMatch *match, Visit visit) {
    const QVMatch *const end = match->nextShallowMatch();
    const QVMatch *next = match->nextMatch();
    while (next != end) {
        const QVScopeMatch *const own = next->asScopeMatch();
        const bool isOther = isSymbol(own);
        if (!isOther && !visit(own))
            return;
        next = isOther ? next->nextShallowMatch() : next->nextMatch();
    }
}

template <typename Fits> const QVMatch *firstThatFits(const QVCaptureMatchArray *captures, Fits fits) {
    if (captures != nullptr)
        for (const auto &capture : *captures)
            if (fits(capture.get()))
                return capture.get();
    return nullptr;
}

bool isContent(const QVMatch *capture) {
    static const auto &content = *new NSString(u"content");
    const QVSimpleSelector *const selector = capture->selector();
    return selector != nullptr && selector->classes().contains(content);
}

/// What a comment says, between its marks; `{NSNotFound, 0}` where the grammar doesn't tell.
NSRange contentOfComment(const QVScopeMatch *match) {
    const NSRange start = match->range();
    const NSRange end = match->endRange();
    if (match->scope()->type() == QVScopeTypeStartEnd && end.location != NSNotFound)
        return {NSMaxRange(start), end.location - NSMaxRange(start)};
    NSRange content = NSNotFoundRange;
    if (const QVCaptureMatchArray *const captures = match->captureMatches();
        captures != nullptr && match->scope()->type() == QVScopeTypeMatch)
        for (const auto &capture : *captures)
            if (isContent(capture.get()))
                content = content.location == NSNotFound ? capture->range()
                                                         : NSUnionRange(content, capture->range());
    return content;
}

} // namespace

NSString QVParse::trimAndCleanUpSymbolName(std::u16string_view name) {
    std::u16string buffer;
    const std::u16string_view cleaned = cleanedName(name, buffer);
    return cleaned.empty() ? NSString() : NSString(cleaned);
}

void QVParse::associateNameForSymbol(QVParseSymbol &symbol, const QVScopeSymbolOptions *options) const {
    if (options == nullptr)
        options = symbol.symbolOptions();
    const QVScopeMatch *const match = symbol.match();
    if (options == nullptr || match == nullptr)
        return;
    symbol.stopName(0);
    if (options->isAnonymous()) {
        symbol.setName(nullptr);
        symbol.setNameGrams(nullptr);
        symbol.setNameRange(NSNotFoundRange);
        return;
    }
    const NSUInteger type = symbol.symbolType();
    if (type == QVSymbolTypeComment)
        return;
    NSRange range = NSNotFoundRange;
    if (options->nameSelector())
        range = rangeWithinSymbol(symbol, nullptr, options->nameSelector().get());
    if (range.location == NSNotFound) {
        // These have a name only where the grammar points at one.
        if (type == QVSymbolTypeExpression || type == QVSymbolTypeStatement || type == QVSymbolTypeBlock)
            return;
        range = rangeWithinSymbol(symbol, QVLexicalClassName, nullptr);
    }
    if (range.location == NSNotFound) {
        range = match->range();
        if (range.length == 0)
            range = match->fullRange();
    }
    const std::u16string_view text = _text->view();
    if (range.location > text.size() || range.length > text.size() - range.location) {
        NSLog(u"Parse symbol name range exceeds bounds of the string storage: %@, %ld",
              NSStringFromRange(range), text.size());
        return;
    }
    std::u16string buffer;
    const std::u16string_view name = cleanedName(text.substr(range.location, range.length), buffer);
    // Names are looked up anew with every edit, and few of them change.
    const bool isOther = name.empty() ? !symbol._name.isNull() : symbol._name != name;
    if (isOther)
        symbol.setNameAndGrams(name.empty() ? NSString() : NSString(name));
    symbol.setMovingNameRange(range);
    if (options->displayNameFormatter() &&
        (isOther || symbol._displayName.isNull() || readsTheText(*options->displayNameFormatter())))
        symbol.setDisplayName(stringForFormatter(*options->displayNameFormatter(), symbol));
}

NSRange QVParse::rangeWithinSymbol(const QVParseSymbol &symbol, const NSString &lexicalClass,
                                   const QVSimpleSelector *selector) {
    const auto fits = [&](const QVMatch *match) {
        return (lexicalClass && match->lexicalClass() == lexicalClass) ||
               (selector != nullptr && selector->matchesSelector(match->selector()));
    };
    const QVScopeMatch *const symbolMatch = symbol.match();
    if (symbolMatch == nullptr)
        return NSNotFoundRange;
    for (const QVCaptureMatchArray *captures :
         {symbolMatch->captureMatches(), symbolMatch->endCaptureMatches()})
        if (const QVMatch *const capture = firstThatFits(captures, fits))
            return capture->fullRange();
    NSRange range = NSNotFoundRange;
    forEachOwnMatch(symbolMatch, [&](const QVScopeMatch *match) {
        if (fits(match)) {
            range = match->fullRange();
            return false;
        }
        // Of several captures the last one is the name: what stands in front qualifies it.
        if (const QVCaptureMatchArray *const captures = match->captureMatches())
            for (const auto &capture : *captures)
                if (fits(capture.get()))
                    range = capture->fullRange();
        if (const QVMatch *const capture = firstThatFits(match->endCaptureMatches(), fits))
            range = capture->fullRange();
        return range.location == NSNotFound;
    });
    return range;
}

// Bookmarks

NSRange QVParse::bookmarkRangeForMatch(const QVScopeMatch *match, NSRange *nameRange) const {
    static const auto &newlines = *new auto(qv_newlineCharacterSet());
    if (nameRange != nullptr)
        *nameRange = NSNotFoundRange;
    const NSRange content = match ? contentOfComment(match) : NSNotFoundRange;
    const std::u16string_view text = _text->view();
    if (content.location > text.size() || content.length > text.size() - content.location)
        return NSNotFoundRange;
    const NSUInteger end = NSMaxRange(content);
    NSRange bookmark = NSNotFoundRange;
    for (NSUInteger location = content.location; location < end; ++location) {
        const char16_t unit = text[location];
        if (unit == u'!') {
            bookmark = {location, end - location};
        } else if (unit != u' ' && unit != u'\t') {
            NSUInteger nameEnd = location;
            while (nameEnd < end && !newlines->characterIsMember(text[nameEnd]))
                ++nameEnd;
            if (nameRange != nullptr && bookmark.location != NSNotFound)
                *nameRange = {location, nameEnd - location};
            break;
        }
    }
    return bookmark;
}

/// Name and place of a bookmark; false where the comment is none any more, and nothing changes.
bool QVParse::updateBookmark(QVParseSymbol &symbol) const {
    NSRange nameRange;
    const NSRange range = bookmarkRangeForMatch(symbol.match(), &nameRange);
    symbol.stopName(0);
    if (range.location == NSNotFound)
        return false;
    symbol.setMovingNameRange(nameRange.location == NSNotFound ? range : nameRange);
    symbol.setName(textInRange(*symbol.nameRange()));
    return true;
}

// Names for people

namespace {

/// The matches inside a symbol that a formatter's selectors aim at: for each selector the first one.
class FormatterMatches {
public:
    explicit FormatterMatches(const QVFormatter &formatter) {
        for (const auto &component : formatter.components())
            if (component->type() == QVFormatterComponentTypeSelector && component->selector())
                _pending.push_back(component->selector().get());
    }

    void find(const QVScopeMatch *symbolMatch) {
        take(symbolMatch->captureMatches());
        take(symbolMatch->endCaptureMatches());
        if (_pending.empty())
            return;
        forEachOwnMatch(symbolMatch, [&](const QVScopeMatch *match) {
            take(match);
            take(match->captureMatches());
            take(match->endCaptureMatches());
            return !_pending.empty();
        });
    }

    const QVMatch *matchForSelector(const QVSimpleSelector *selector) const {
        for (const auto &[found, match] : _found)
            if (found == selector)
                return match;
        return nullptr;
    }

private:
    void take(const QVMatch *match) {
        std::erase_if(_pending, [&](const QVSimpleSelector *selector) {
            if (!selector->matchesSelector(match->selector()))
                return false;
            _found.emplace_back(selector, match);
            return true;
        });
    }
    void take(const QVCaptureMatchArray *captures) {
        for (std::size_t index = 0; captures != nullptr && index < captures->size() && !_pending.empty();
             ++index)
            take((*captures)[index].get());
    }

    std::vector<const QVSimpleSelector *> _pending;
    std::vector<std::pair<const QVSimpleSelector *, const QVMatch *>> _found;
};

/// A component's text with its pattern's matches rewritten, from the last one on, so that places stay good.
NSString rewrittenText(const NSString &text, const QVFormatterComponent &component) {
    const auto &expression = component.replaceExpression();
    if (!expression || !component.replaceWithExpression())
        return text;
    const auto results = expression->matchesInString(text, 0, {0, text.length()});
    if (results.empty())
        return text;
    std::u16string rewritten(text.view());
    for (auto result = results.rbegin(); result != results.rend(); ++result) {
        const NSString replacement =
            expression->replacementStringForResult(**result, text, 0, component.replaceWithExpression());
        if (replacement)
            rewritten.replace((*result)->range().location, (*result)->range().length, replacement.view());
    }
    return rewritten;
}

} // namespace

NSString QVParse::stringForFormatter(const QVFormatter &formatter, const QVParseSymbol &withinSymbol) const {
    FormatterMatches matches(formatter);
    if (withinSymbol.match() != nullptr)
        matches.find(withinSymbol.match());
    std::u16string result;
    for (const auto &component : formatter.components()) {
        NSString text;
        if (component->type() == QVFormatterComponentTypeLiteral)
            text = component->value();
        else if (component->type() == QVFormatterComponentTypeVariable && component->variable() == u"name")
            text = withinSymbol.name();
        else if (component->type() == QVFormatterComponentTypeSelector)
            if (const QVMatch *const match = matches.matchForSelector(component->selector().get()))
                text = textInRange(match->fullRange());
        if (!text)
            continue;
        result += component->prependExpression().view();
        result += rewrittenText(text, *component).view();
        result += component->appendExpression().view();
    }
    return result;
}

} // namespace quorvane
