// How symbols relate to each other: which context holds which symbol, what closes it, and what becomes of
// contexts that nothing closes.

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

} // namespace

void QVParse::updateSymbolRanges() {
    OpenContexts contexts;
    for (const auto &reference : _symbols) {
        QVParseSymbol &symbol = *reference;
        const QVScopeMatch &match = *symbol.match();
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
            symbol.setEndRange(
                {QVEndOfWhitespaceContext(
                     _text->view(), symbol.range(),
                     symbol.syntax() ? symbol.syntax()->singleLineCommentPrefix() : NSString(), tabWidth()),
                 0});
            contexts.push(&symbol);
            break;
        default:
            updateSymbol(symbol, contexts.innermost());
        }
        renewNameOfSymbol(symbol);
    }
    endUnclosedSymbols();
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
