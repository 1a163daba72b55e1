#pragma once

#include "Quorvane/Parsers/QVParseSymbol.h"

#include <map>
#include <memory>
#include <string>

namespace quorvane {
class QVParse;
}

/// The law of symbols, for tests and for fuzz targets: behind every edit they are those of a fresh parse of
/// the same text, relations included, but for what the rules find out once, when a symbol is made, and leave
/// alone from then on.
namespace quorvane::test {

/// What symbols were before an edit. Holds them, so that none made by the edit is taken for one of them.
class SymbolsBefore {
public:
    explicit SymbolsBefore(const QVParse &parse);

    struct Symbol {
        std::shared_ptr<QVParseSymbol> symbol;
        NSString name;
        NSString displayName;
        NSRange nameRange;
        NSString comment;
        NSString group;
        NSRange fullRange;
    };
    /// Null for a symbol that the edit made.
    const Symbol *find(const QVParseSymbol *symbol) const;

private:
    std::map<const QVParseSymbol *, Symbol> _symbols;
};

/// What a comparison comes to: both empty where the law holds. An excuse says which of the rules lets the
/// lists differ as wholes; what single fields may keep needs none.
struct SymbolVerdict {
    std::string difference;
    std::string excuse;
};

/// Compares the symbols of an edited parse with those of a fresh one, whose trees are the same. The range is
/// the one that the edit answered.
SymbolVerdict compareSymbols(const SymbolsBefore &before, const QVParse &edited, const QVParse &fresh,
                             NSRange answer);

/// The same where nobody wrote down what the symbols were before each of several edits: empty where all
/// fields are those of the fresh parse. Comments, which are looked for when a symbol is made, are passed
/// over, and name and place of a symbol that renaming leaves alone. For grammars without filters, groups by
/// name and arguments, which leave the past behind in other fields.
std::string differenceOfSymbols(const QVParse &edited, const QVParse &fresh);

} // namespace quorvane::test
