#pragma once

#include "Quorvane/Parsers/QVParseSymbol.h"

#include <vector>

namespace quorvane {

class QVParse;

/// What an edit did to a parse's symbols, gathered while the reparse goes on, as far as the relations of
/// those that stay need it. Private to the parse.
struct QVSymbolEdit {
    /// By which all behind what was parsed moved; negative by wrapping around.
    NSUInteger distance = 0;
    /// Symbols in front of what was parsed whose matches reach there, or have captures that might; some may
    /// be among those that went.
    std::vector<QVParseSymbol *> touched;
    /// Those of them that have arguments and reached into what was parsed.
    std::vector<QVParseSymbol *> capturing;
    /// Symbols that went: held to the end, so that no new one is taken for one of them.
    QVParseSymbol::Symbols removed;
    /// Arguments whose matches went, by their addresses.
    std::vector<const QVParseSymbol *> goneArguments;
    /// Contexts that were closed by symbols that went, to begin with; the pass adds all whose end changes.
    std::vector<QVParseSymbol *> opened;
    /// The part of the list where symbols went, and from `insertSymbols` on, where they came.
    std::size_t begin = NSNotFound;
    std::size_t end = 0;
    /// How many that went still stand in the list, from `begin` on.
    std::size_t goneCount = 0;
};

/// One pass over a parse's symbols that works out which context holds which symbol, what closes it, and what
/// becomes of contexts that nothing closes. A value for the time of one call, private to the parse.
///
/// The pass keeps a stack of open contexts. Behind an edit it begins where something came or went, with the
/// stack that the last pass had there, which is the chain of parents in front; it stops where the stack is as
/// it was, ends included, for then the rest comes out as it did.
class QVSymbolRelations {
public:
    QVSymbolRelations(QVParse &parse) : _parse(parse) {}

    void updateAll();
    void updateBehindEdit(NSRange parsedRange, QVSymbolEdit &edit);

private:
    struct OpenContext {
        QVParseSymbol *symbol;
        /// It is none that was open here before, or ends elsewhere.
        bool isChanged;
    };

    bool relate(std::size_t index);
    void push(QVParseSymbol &context, bool isChanged);
    void shorten(std::size_t count);
    void leaveBefore(NSUInteger location);
    void closeBy(QVParseSymbol &symbol);
    void noteClosing(QVParseSymbol &context);
    void leaveBelowPriority(NSUInteger priority);
    QVParseSymbol *innermost() const { return _contexts.empty() ? nullptr : _contexts.back().symbol; }

    void takeUpContextsBefore(std::size_t index);
    std::size_t updateIndentedContexts(std::size_t begin);
    bool enterIndentedContext(QVParseSymbol &symbol);
    static void enterSubtree(QVParseSymbol &symbol);
    void endOpenContexts(std::size_t begin, std::size_t end) const;
    void renewName(QVParseSymbol &symbol) const;
    NSUInteger distanceOf(const QVParseSymbol &symbol) const;
    std::size_t endOfTouched() const;

    QVParse &_parse;
    /// Null while all is worked out anew.
    QVSymbolEdit *_edit = nullptr;
    NSRange _parsed{0, 0};
    /// Behind this place matches and all that was made of them are as they were.
    NSUInteger _touchedEnd = 0;
    std::vector<OpenContext> _contexts;
    std::size_t _changedContexts = 0;
    std::vector<QVParseSymbol *> _changedEnds;
};

} // namespace quorvane
