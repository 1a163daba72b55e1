#include "Quorvane/Parsers/QVSymbolRelations.h"

#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseText.h"
#include "Quorvane/Parsers/QVSymbolReaches.h"
#include "Quorvane/Parsers/QVWhitespaceContext.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <algorithm>

namespace quorvane {

namespace {

bool canBeClosed(const QVParseSymbol &context) {
    return context.contextBehavior() == QVSymbolContextBehaviorStart ||
           context.contextBehavior() == QVSymbolContextBehaviorNext;
}

bool isContext(const QVParseSymbol &symbol) {
    return canBeClosed(symbol) || symbol.contextBehavior() == QVSymbolContextBehaviorSubtree ||
           symbol.contextBehavior() == QVSymbolContextBehaviorWhitespace;
}

} // namespace

// MARK: - The stack

void QVSymbolRelations::push(QVParseSymbol &context, bool isChanged) {
    _contexts.push_back({&context, isChanged});
    _changedContexts += isChanged;
}

void QVSymbolRelations::shorten(std::size_t count) {
    for (; _contexts.size() > count; _contexts.pop_back())
        _changedContexts -= _contexts.back().isChanged;
}

/// Contexts whose end is known and reached. One that waits for its end holds all that it is in.
void QVSymbolRelations::leaveBefore(NSUInteger location) {
    while (!_contexts.empty() && !canBeClosed(*innermost()) &&
           location >= NSMaxRange(innermost()->endRange()))
        shorten(_contexts.size() - 1);
}

/// The innermost context of the symbol's group ends where the symbol begins, and with it all inside.
void QVSymbolRelations::closeBy(QVParseSymbol &symbol) {
    const NSString &group = symbol.symbolContextGroupIdentifier();
    for (std::size_t index = _contexts.size(); index-- > 0;) {
        QVParseSymbol &context = *_contexts[index].symbol;
        if (!canBeClosed(context) || (group && context.symbolContextGroupIdentifier() != group))
            continue;
        noteClosing(context);
        symbol.setPreviousContextGroupSymbol(&context);
        context.setUnclosed(false);
        context.setNextContextGroupSymbol(&symbol);
        shorten(index);
        return;
    }
}

/// Contexts of a lower priority don't hold one of a higher; they stay without an end of their own.
void QVSymbolRelations::leaveBelowPriority(NSUInteger priority) {
    std::size_t lowest = _contexts.size();
    for (std::size_t index = _contexts.size(); index-- > 0;) {
        const QVParseSymbol &context = *_contexts[index].symbol;
        if (!canBeClosed(context))
            continue;
        if (context.symbolOptions()->contextCapturePriority() >= priority)
            break;
        lowest = index;
    }
    shorten(lowest);
}

/// What is open in front of a symbol is what the one before it is in, and that one itself.
void QVSymbolRelations::takeUpContextsBefore(std::size_t index) {
    if (index == 0)
        return;
    QVParseSymbol *context = _parse._symbols[index - 1].get();
    if (!isContext(*context))
        context = context->parentContextSymbol();
    std::vector<QVParseSymbol *> contexts;
    for (; context != nullptr; context = context->parentContextSymbol())
        contexts.push_back(context);
    for (auto each = contexts.rbegin(); each != contexts.rend(); ++each)
        push(**each, std::find(_changedEnds.begin(), _changedEnds.end(), *each) != _changedEnds.end());
}

// MARK: - One symbol

/// Whether behind it the stack is what it was.
bool QVSymbolRelations::relate(std::size_t index) {
    QVParseSymbol &symbol = *_parse._symbols[index];
    const QVScopeMatch &match = *symbol.match();
    const NSUInteger location = match.range().location;
    const bool isNew = !symbol._moves;
    const QVParseSymbol *const oldParent = symbol.parentContextSymbol();
    const NSUInteger oldType = symbol.symbolType();
    if (QVParseSymbol *const closed = symbol.previousContextGroupSymbol()) {
        if (closed->nextContextGroupSymbol() == &symbol) {
            noteClosing(*closed);
            closed->setNextContextGroupSymbol(nullptr);
        }
        symbol.setPreviousContextGroupSymbol(nullptr);
    }
    // Behind an edit what closes it may stand where nothing changes; if it does not, it says so itself.
    if (_edit == nullptr)
        symbol.setNextContextGroupSymbol(nullptr);
    leaveBefore(location);
    const NSUInteger behavior = symbol.contextBehavior();
    symbol._textLength = &_parse._symbolsTextLength;
    symbol.placeWithMatch(behavior == QVSymbolContextBehaviorSubtree ? match.range() : match.fullRange());
    bool isChanged = isNew;
    switch (behavior) {
    case QVSymbolContextBehaviorStart:
    case QVSymbolContextBehaviorEnd:
    case QVSymbolContextBehaviorNext:
        symbol.setEndRange(NSNotFoundRange);
        symbol._endsWithOther = behavior != QVSymbolContextBehaviorEnd;
        if (behavior != QVSymbolContextBehaviorStart)
            closeBy(symbol);
        if (behavior != QVSymbolContextBehaviorEnd) {
            leaveBelowPriority(symbol.symbolOptions()->contextCapturePriority());
            symbol.setUnclosed(true);
        }
        break;
    case QVSymbolContextBehaviorSubtree:
        enterSubtree(symbol);
        break;
    case QVSymbolContextBehaviorWhitespace:
        if (_edit == nullptr || isNew || (location >= _parsed.location && location < _touchedEnd))
            isChanged |= enterIndentedContext(symbol);
        _parse._symbolReaches->raise(index, location + symbol._lookedAhead);
        break;
    default:
        break;
    }
    QVParse::updateSymbol(symbol, innermost());
    isChanged |= symbol.parentContextSymbol() != oldParent;
    if (isContext(symbol))
        push(symbol, isChanged);
    if (_edit == nullptr || isNew || symbol.symbolType() != oldType ||
        (location >= _parsed.location && location < _touchedEnd))
        renewName(symbol);
    return !isChanged && _changedContexts == 0;
}

/// Where a region ended before and where it ends now both lie in what was parsed, or else it ends where it
/// did: nothing behind sees the difference.
void QVSymbolRelations::enterSubtree(QVParseSymbol &symbol) {
    const QVScopeMatch &match = *symbol.match();
    const NSRange end = match.endRange();
    symbol.setEndRange(
        end.location != NSNotFound ? end : NSRange{NSMaxRange(match.deepestLastChild()->fullRange()), 0});
}

/// Whether the end is another one.
bool QVSymbolRelations::enterIndentedContext(QVParseSymbol &symbol) {
    const NSUInteger before = symbol.endRange().location;
    const NSUInteger location = symbol.match()->range().location;
    NSUInteger lookedAtEnd = 0;
    const NSString prefix = symbol.syntax() ? symbol.syntax()->singleLineCommentPrefix() : NSString();
    const NSUInteger end = QVEndOfWhitespaceContext(_parse._text->view(), symbol.range(), prefix,
                                                    _parse.tabWidth(), &lookedAtEnd);
    symbol.setEndRange({end, 0});
    symbol._lookedAhead = lookedAtEnd - location;
    // A context in front of what was parsed had its end at a place of the old text.
    if (_edit == nullptr || location >= _parsed.location || before < _parsed.location)
        return end != before;
    return before < NSMaxRange(_parsed) - _edit->distance || end != before + _edit->distance;
}

NSUInteger QVSymbolRelations::distanceOf(const QVParseSymbol &symbol) const {
    return _edit != nullptr && symbol.match()->range().location >= NSMaxRange(_parsed) ? _edit->distance : 0;
}

/// A name that the rules leave alone stays where it stood in the text before the edit.
void QVSymbolRelations::renewName(QVParseSymbol &symbol) const {
    symbol.stopName(distanceOf(symbol));
    for (const auto &argument : symbol.argumentSymbols())
        if (QVSymbolTypeIsFunction(symbol.symbolType()))
            argument->stopName(distanceOf(*argument));
    _parse.renewNameOfSymbol(symbol);
}

// MARK: - The pass

/// Behind an edit, whether a context was closed before that changes.
void QVSymbolRelations::noteClosing(QVParseSymbol &context) {
    if (_edit == nullptr || context._closingIsNoted)
        return;
    context._closingIsNoted = true;
    context._wasClosed = context.nextContextGroupSymbol() != nullptr;
    _edit->opened.push_back(&context);
}

void QVSymbolRelations::updateAll() {
    _parse._symbolsTextLength = _parse._text->length();
    _parse._symbolsTabWidth = _parse.tabWidth();
    const std::size_t count = _parse._symbols.size();
    _parse._symbolReaches->clear();
    _parse._symbolReaches->replace(0, 0, count);
    for (std::size_t index = 0; index < count; ++index)
        relate(index);
    endOpenContexts(0, count);
}

void QVSymbolRelations::updateBehindEdit(NSRange parsedRange, QVSymbolEdit &edit) {
    _edit = &edit;
    _parsed = parsedRange;
    _touchedEnd = endOfTouched();
    _parse._symbolsTextLength = _parse._text->length();
    for (QVParseSymbol *const context : edit.opened)
        context->_closingIsNoted = context->_wasClosed = true;
    for (QVParseSymbol *const symbol : edit.touched) {
        if (symbol->match() == nullptr)
            continue;
        const bool isSubtree = symbol->contextBehavior() == QVSymbolContextBehaviorSubtree;
        symbol->placeWithMatch(isSubtree ? symbol->match()->range() : symbol->match()->fullRange());
        if (isSubtree)
            enterSubtree(*symbol);
    }
    const std::size_t begin = updateIndentedContexts(edit.begin);
    takeUpContextsBefore(begin);
    const auto &symbols = _parse._symbols;
    std::size_t index = begin;
    for (bool isSame = false; index < symbols.size() && !isSame; ++index)
        isSame =
            relate(index) && index >= edit.end && symbols[index]->match()->range().location >= _touchedEnd;
    std::size_t beginOfOpen = begin;
    for (QVParseSymbol *const context : edit.opened) {
        context->_closingIsNoted = false;
        if (context->match() != nullptr &&
            (context->nextContextGroupSymbol() != nullptr) != context->_wasClosed)
            beginOfOpen = std::min(beginOfOpen, _parse.indexOfSymbol(*context));
    }
    endOpenContexts(beginOfOpen, index);
    for (QVParseSymbol *const symbol : edit.touched)
        if (symbol->match() != nullptr)
            renewName(*symbol);
}

/// Lines are looked at as wholes, and captures reach out of their matches.
std::size_t QVSymbolRelations::endOfTouched() const {
    const std::u16string_view text = _parse._text->view();
    const NSUInteger end = NSMaxRange(_parsed);
    const bool endsLine = end == 0 || text[end - 1] == u'\n' ||
                          (text[end - 1] == u'\r' && (end == text.size() || text[end] != u'\n'));
    const NSUInteger lineEnd = endsLine ? end : NSMaxRange(qv_lineRangeForRange(text, {end - 1, 0}));
    return std::max(lineEnd, end + _parse._captureReach);
}

/// Looks anew for the ends of contexts of indented lines in front of what was parsed that depend on it.
/// Answers from where on relations can be others.
std::size_t QVSymbolRelations::updateIndentedContexts(std::size_t begin) {
    const std::size_t beginOfChanged = begin;
    _parse._symbolReaches->update(
        _parsed.location, _edit->distance, beginOfChanged, [&](std::size_t first, std::size_t end) {
            NSUInteger furthest = 0;
            for (std::size_t index = first; index < end; ++index) {
                QVParseSymbol &symbol = *_parse._symbols[index];
                if (symbol.contextBehavior() != QVSymbolContextBehaviorWhitespace || !symbol._moves)
                    continue;
                const NSUInteger location = symbol.match()->range().location;
                if (location < _parsed.location && location + symbol._lookedAhead >= _parsed.location) {
                    const NSUInteger before = symbol.endRange().location;
                    if (enterIndentedContext(symbol)) {
                        _changedEnds.push_back(&symbol);
                        // Marks in comments may stand between the context's lines and what ends it.
                        begin = std::min(
                            begin, _parse.indexOfSymbolsAt(std::min(before, symbol.endRange().location)));
                    }
                }
                furthest = std::max(furthest, location + symbol._lookedAhead);
            }
            return furthest;
        });
    return begin;
}

/// Contexts that nothing closed end as their grammar wants it. Outer ones come first, so it is known what
/// becomes of them.
void QVSymbolRelations::endOpenContexts(std::size_t begin, std::size_t end) const {
    const auto endsWithParent = [](const QVParseSymbol &context) {
        return context._endsWithOther && context.nextContextGroupSymbol() == nullptr &&
               context.symbolOptions()->contextUnclosedBehavior() ==
                   QVSymbolContextUnclosedBehaviorExtendParent;
    };
    for (std::size_t index = begin; index < end; ++index) {
        QVParseSymbol &symbol = *_parse._symbols[index];
        const QVParseSymbol *parent = symbol.parentContextSymbol();
        symbol.setUnclosed(false);
        if (symbol._endsWithOther)
            symbol._endContext = parent != nullptr && endsWithParent(*parent) ? parent->_endContext : parent;
        // A start that still waits stands behind its child in the list, which then is not inside of it.
        while (parent != nullptr && parent->isUnclosed() &&
               parent->contextBehavior() == QVSymbolContextBehaviorStart) {
            QVParse::updateSymbol(symbol, parent->parentContextSymbol());
            parent = symbol.parentContextSymbol();
        }
    }
}

} // namespace quorvane
