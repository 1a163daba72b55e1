#include "Quorvane/Parsers/QVParseSymbol.h"

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

namespace quorvane {

QVParseSymbol::QVParseSymbol() = default;
QVParseSymbol::~QVParseSymbol() = default;

const QVScopeSymbolOptions *QVParseSymbol::symbolOptions() const {
    return _match ? _match->scope()->symbolOptions().get() : nullptr;
}

std::shared_ptr<QVSymbol> QVParseSymbol::parent() const {
    return _parentContextSymbol
               ? std::static_pointer_cast<QVParseSymbol>(_parentContextSymbol->shared_from_this())
               : nullptr;
}

NSString QVParseSymbol::syntaxName() const { return _syntax ? _syntax->name() : NSString(); }

std::optional<std::vector<std::shared_ptr<QVSymbol>>> QVParseSymbol::arguments() const {
    if (_arguments.empty())
        return std::nullopt;
    return std::vector<std::shared_ptr<QVSymbol>>(_arguments.begin(), _arguments.end());
}

NSRange QVParseSymbol::fullRange() const {
    return _endRange.location == NSNotFound ? _range : NSUnionRange(_range, _endRange);
}

void QVParseSymbol::forgetMatch() {
    if (_match && _match->symbol() == this)
        _match->setSymbol(nullptr);
    _match = nullptr;
    _parentContextSymbol = nullptr;
    _previousContextGroupSymbol = nullptr;
    _nextContextGroupSymbol = nullptr;
    for (const auto &argument : _arguments)
        argument->forgetMatch();
}

NSString QVParseSymbol::description() const {
    return NSString::stringWithFormat(
        u"<%@: %p : name=%@, type=%@, scope=%@, fullRange=%@>", className(), static_cast<const void *>(this),
        _name, QVSymbolTypeToString(_symbolType), QVSymbolScopeToString(_symbolScope), fullRange());
}

} // namespace quorvane
