// How symbols relate to each other: which context holds which symbol, what closes it, and what becomes of
// contexts that nothing closes.

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSLog.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseSymbol.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Parsers/QVWhitespaceContext.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

namespace {

/// The contexts that are open on the way through the list, the innermost last.
class OpenContexts {
public:
    QVParseSymbol *innermost() const { return _contexts.empty() ? nullptr : _contexts.back(); }
    void push(QVParseSymbol *context) { _contexts.push_back(context); }

    /// Those whose end is known and reached. One that waits for its end holds all that it is in.
    void leaveBefore(NSUInteger location) {
        while (!_contexts.empty() && _contexts.back()->endRange().location != NSNotFound &&
               location >= NSMaxRange(_contexts.back()->endRange()))
            _contexts.pop_back();
    }

    /// The innermost context of the symbol's group ends where the symbol begins, and with it all inside.
    void closeBy(QVParseSymbol &symbol) {
        const NSString &group = symbol.symbolContextGroupIdentifier();
        for (std::size_t index = _contexts.size(); index-- > 0;) {
            QVParseSymbol &context = *_contexts[index];
            if (!canBeClosed(context) || (group && context.symbolContextGroupIdentifier() != group))
                continue;
            symbol.setPreviousContextGroupSymbol(&context);
            context.setUnclosed(false);
            context.setNextContextGroupSymbol(&symbol);
            context.setEndRange({symbol.range().location, 0});
            _contexts.resize(index);
            return;
        }
    }

    /// Contexts of a lower priority don't hold one of a higher; they stay without an end of their own.
    void leaveBelowPriority(NSUInteger priority) {
        std::size_t lowest = _contexts.size();
        for (std::size_t index = _contexts.size(); index-- > 0;) {
            if (!canBeClosed(*_contexts[index]))
                continue;
            if (_contexts[index]->symbolOptions()->contextCapturePriority() >= priority)
                break;
            lowest = index;
        }
        _contexts.resize(lowest);
    }

private:
    static bool canBeClosed(const QVParseSymbol &context) {
        return context.contextBehavior() == QVSymbolContextBehaviorStart ||
               context.contextBehavior() == QVSymbolContextBehaviorNext;
    }

    std::vector<QVParseSymbol *> _contexts;
};

void enterSubtree(QVParseSymbol &symbol, const QVScopeMatch &match) {
    const NSRange end = match.endRange();
    symbol.setEndRange(
        end.location != NSNotFound ? end : NSRange{NSMaxRange(match.deepestLastChild()->fullRange()), 0});
}

/// What a parse left as it was: symbols all of whose matches stand in front of what was parsed, or behind it.
/// Their names need no search, and contexts of indented lines no look at the text: the places move with the
/// match.
class Untouched {
public:
    /// Null where all may have changed.
    Untouched(const NSRange *parsedRange, std::u16string_view text) {
        if (parsedRange == nullptr)
            return;
        _start = parsedRange->location;
        _end = NSMaxRange(*parsedRange);
        _endsWithLine = _end == 0 || text[_end - 1] == u'\n' ||
                        (text[_end - 1] == u'\r' && (_end == text.size() || text[_end] != u'\n'));
    }

    /// Whether the symbol was there before, and nothing of its match is new.
    bool contains(const QVParseSymbol &symbol, const QVScopeMatch &match) const {
        if (symbol.range().location == NSNotFound)
            return false;
        if (match.range().location >= _end)
            return true;
        const bool isOpen = match.endRange().location == NSNotFound && match.firstChild() != nullptr;
        return !isOpen && NSMaxRange(match.fullRange()) < _start;
    }
    /// Whether a range is in no text that is new; a capture may reach out of its match. It is given as it
    /// was, and with what its match was moved by.
    bool containsRange(NSRange range, NSUInteger difference) const {
        return NSMaxRange(range) < _start ? difference == 0 : range.location + difference >= _end;
    }
    /// Whether the lines from a symbol's on, up to an old place, are as they were.
    bool containsLines(const QVScopeMatch &match, NSUInteger lookedAtEnd) const {
        return match.range().location >= _end ? _endsWithLine : lookedAtEnd < _start;
    }

private:
    NSUInteger _start = 0;
    NSUInteger _end = NSNotFound;
    bool _endsWithLine = false;
};

NSRange moved(NSRange range, NSUInteger difference) {
    return range.location == NSNotFound ? range : NSRange{range.location + difference, range.length};
}

} // namespace

void QVParse::updateSymbolRanges() { updateSymbolRanges(nullptr); }

void QVParse::updateSymbolRanges(const NSRange *parsedRange) {
    OpenContexts contexts;
    const bool sameTabWidth = std::exchange(_symbolsTabWidth, tabWidth()) == tabWidth();
    const Untouched untouched(parsedRange, _text->view());
    const auto isNameUntouched = [&](const QVParseSymbol &symbol, NSUInteger difference) {
        return symbol._nameIsFound && untouched.containsRange(symbol._nameRange, difference);
    };
    for (const auto &reference : _symbols) {
        QVParseSymbol &symbol = *reference;
        const QVScopeMatch &match = *symbol.match();
        const bool isUntouched = untouched.contains(symbol, match);
        const NSUInteger difference = match.range().location - symbol.range().location;
        const NSUInteger oldType = symbol.symbolType();
        symbol.setParentContextSymbol(nullptr);
        symbol.setPreviousContextGroupSymbol(nullptr);
        symbol.setNextContextGroupSymbol(nullptr);
        contexts.leaveBefore(match.range().location);
        const NSUInteger behavior = symbol.contextBehavior();
        symbol.setRange(behavior == QVSymbolContextBehaviorSubtree ? match.range() : match.fullRange());
        switch (behavior) {
        case QVSymbolContextBehaviorStart:
        case QVSymbolContextBehaviorEnd:
        case QVSymbolContextBehaviorNext:
            symbol.setEndRange(NSNotFoundRange);
            if (behavior != QVSymbolContextBehaviorStart)
                contexts.closeBy(symbol);
            if (behavior != QVSymbolContextBehaviorEnd)
                contexts.leaveBelowPriority(symbol.symbolOptions()->contextCapturePriority());
            updateSymbol(symbol, contexts.innermost());
            if (behavior != QVSymbolContextBehaviorEnd) {
                symbol.setUnclosed(true);
                contexts.push(&symbol);
            }
            break;
        case QVSymbolContextBehaviorSubtree:
            updateSymbol(symbol, contexts.innermost());
            enterSubtree(symbol, match);
            contexts.push(&symbol);
            break;
        case QVSymbolContextBehaviorWhitespace:
            updateSymbol(symbol, contexts.innermost());
            if (isUntouched && sameTabWidth && untouched.containsLines(match, symbol._lookedAtEnd)) {
                symbol.setEndRange(moved(symbol.endRange(), difference));
                symbol._lookedAtEnd += difference;
            } else {
                enterWhitespaceContext(symbol);
            }
            contexts.push(&symbol);
            break;
        default:
            updateSymbol(symbol, contexts.innermost());
        }
        const auto &arguments = symbol.argumentSymbols();
        if (isUntouched && symbol.symbolType() == oldType && isNameUntouched(symbol, difference) &&
            std::all_of(arguments.begin(), arguments.end(),
                        [&](const auto &argument) { return isNameUntouched(*argument, difference); }) &&
            (symbol.isAutogenerated() || !symbol.symbolOptions()->displayNameFormatter())) {
            moveNameOfSymbol(symbol, difference);
            verifyMovedSymbol(symbol);
        } else {
            renewNameOfSymbol(symbol);
        }
    }
    endUnclosedSymbols();
}

void QVParse::enterWhitespaceContext(QVParseSymbol &symbol) const {
    const NSString prefix = symbol.syntax() ? symbol.syntax()->singleLineCommentPrefix() : NSString();
    const NSUInteger end =
        QVEndOfWhitespaceContext(_text->view(), symbol.range(), prefix, tabWidth(), &symbol._lookedAtEnd);
    symbol.setEndRange({end, 0});
}

void QVParse::moveNameOfSymbol(QVParseSymbol &symbol, NSUInteger byDifference) {
    if (byDifference == 0)
        return;
    symbol.setNameRange(moved(symbol._nameRange, byDifference));
    if (!QVSymbolTypeIsFunction(symbol.symbolType()))
        return;
    for (const auto &argument : symbol.argumentSymbols()) {
        argument->setRange(argument->match()->range());
        argument->setEndRange(argument->match()->endRange());
        argument->setNameRange(moved(argument->_nameRange, byDifference));
    }
}

/// A symbol that only moved is what a search for its name would make of it.
void QVParse::verifyMovedSymbol(const QVParseSymbol &symbol) const {
#if defined(QUORVANE_VERIFY)
    const auto verify = [this](const QVParseSymbol &isMoved) {
        QVParseSymbol copy;
        copy.setMatch(isMoved.match());
        copy.setSymbolType(isMoved.symbolType());
        copy.setAutogenerated(isMoved.isAutogenerated());
        renewNameOfSymbol(copy);
        QVAssert(copy.nameRange() == isMoved.nameRange() && copy.name() == isMoved.name(),
                 u"A symbol that moved is called otherwise now");
    };
    verify(symbol);
    if (QVSymbolTypeIsFunction(symbol.symbolType()))
        for (const auto &argument : symbol.argumentSymbols()) {
            verify(*argument);
            QVAssert(argument->range() == argument->match()->range() &&
                         argument->endRange() == argument->match()->endRange(),
                     u"An argument stands elsewhere now");
        }
#else
    static_cast<void>(symbol);
#endif
}

void QVParse::renewNameOfSymbol(QVParseSymbol &symbol) const {
    if (symbol.isAutogenerated()) {
        updateBookmark(symbol);
        return;
    }
    associateNameForSymbol(symbol, symbol.symbolOptions());
    if (!QVSymbolTypeIsFunction(symbol.symbolType()))
        return;
    for (const auto &argument : symbol.argumentSymbols()) {
        argument->setRange(argument->match()->range());
        argument->setEndRange(argument->match()->endRange());
        associateNameForSymbol(*argument, nullptr);
    }
}

void QVParse::updateSymbol(QVParseSymbol &symbol, QVParseSymbol *forParent) {
    const QVScopeSymbolOptions *const options = symbol.symbolOptions();
    symbol.setParentContextSymbol(forParent);
    if (forParent != nullptr) {
        if (forParent->range().location > symbol.range().location)
            NSLog(u"Parse symbol parent succeeds its child: %@, %@",
                  forParent->match() ? forParent->match()->scope()->name() : NSString(),
                  symbol.match() ? symbol.match()->scope()->name() : NSString());
        const QVScopeSymbolOptions *const parentOptions = forParent->symbolOptions();
        const NSUInteger exportType = parentOptions ? parentOptions->contextLocalSymbolExportType() : 0;
        if (exportType != QVSymbolTypeNone && options != nullptr &&
            options->symbolScope() == QVSymbolScopeLocal && symbol.symbolType() != QVSymbolTypeArgument) {
            symbol.setSymbolType(exportType);
            symbol.setSymbolScope(QVSymbolScopeGlobal);
            return;
        }
    }
    if (options != nullptr) {
        symbol.setSymbolType(options->symbolType());
        symbol.setSymbolScope(options->symbolScope());
    }
}

/// Contexts that nothing closed end as their grammar wants it. Outer ones come first, so their ends are
/// known.
void QVParse::endUnclosedSymbols() {
    for (const auto &symbol : _symbols) {
        const QVParseSymbol *parent = symbol->parentContextSymbol();
        if (symbol->isUnclosed()) {
            symbol->setUnclosed(false);
            if (symbol->endRange().location != NSNotFound)
                continue;
            NSUInteger end = NSNotFound;
            switch (symbol->symbolOptions()->contextUnclosedBehavior()) {
            case QVSymbolContextUnclosedBehaviorExtendDocument:
                end = _text->length();
                break;
            case QVSymbolContextUnclosedBehaviorExtendParent:
                if (parent == nullptr)
                    end = _text->length();
                else if (parent->endRange().location != NSNotFound)
                    end = parent->endRange().location;
                else
                    end = NSMaxRange(parent->range());
                break;
            default:
                break;
            }
            symbol->setEndRange({end, 0});
        }
        // A start that still waits stands behind its child in the list, which then is not inside of it.
        while (parent != nullptr && parent->isUnclosed() &&
               parent->contextBehavior() == QVSymbolContextBehaviorStart) {
            updateSymbol(*symbol, parent->parentContextSymbol());
            parent = symbol->parentContextSymbol();
        }
    }
}

} // namespace quorvane
