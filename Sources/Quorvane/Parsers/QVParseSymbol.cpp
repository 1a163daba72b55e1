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

void QVParseSymbol::makeNameGrams() const {
    // Several readers may be the first.
    static auto *const mutex = new std::mutex;
    const std::lock_guard lock(*mutex);
    if (!_nameGramsAreDue.load(std::memory_order_relaxed))
        return;
    _nameGrams = qv_grams(_name);
    _nameGramsAreDue.store(false, std::memory_order_release);
}

NSRange QVParseSymbol::fullRange() const {
    const NSRange endRange = this->endRange();
    return endRange.location == NSNotFound ? range() : NSUnionRange(range(), endRange);
}

NSRange QVParseSymbol::endByOther() const {
    if (_nextContextGroupSymbol != nullptr)
        return {_nextContextGroupSymbol->range().location, 0};
    switch (symbolOptions()->contextUnclosedBehavior()) {
    case QVSymbolContextUnclosedBehaviorExtendDocument:
        return {*_textLength, 0};
    case QVSymbolContextUnclosedBehaviorExtendParent:
        if (_endContext == nullptr)
            return {*_textLength, 0};
        if (const NSRange end = _endContext->endRange(); end.location != NSNotFound)
            return {end.location, 0};
        return {NSMaxRange(_endContext->range()), 0};
    default:
        return NSNotFoundRange;
    }
}

void QVParseSymbol::placeWithMatch(NSRange range) {
    if (!_moves)
        _endRange = stored(_endRange);
    _moves = true;
    _range = stored(range);
}

void QVParseSymbol::setMatch(QVScopeMatch *match) {
    const NSRange range = this->range();
    const NSRange endRange = this->endRange();
    const NSRange nameRange = *this->nameRange();
    _moves = false;
    setRange(range);
    setEndRange(endRange);
    setNameRange(nameRange);
    _match = match;
}

void QVParseSymbol::forgetMatch() {
    if (_match && _match->linkedSymbol() == this)
        _match->setSymbol(nullptr);
    setMatch(nullptr);
    _parentContextSymbol = nullptr;
    // Neighbours that stay would point to nothing.
    if (_previousContextGroupSymbol != nullptr &&
        _previousContextGroupSymbol->_nextContextGroupSymbol == this)
        _previousContextGroupSymbol->_nextContextGroupSymbol = nullptr;
    if (_nextContextGroupSymbol != nullptr && _nextContextGroupSymbol->_previousContextGroupSymbol == this)
        _nextContextGroupSymbol->_previousContextGroupSymbol = nullptr;
    _previousContextGroupSymbol = nullptr;
    _nextContextGroupSymbol = nullptr;
    _endContext = nullptr;
    _textLength = nullptr;
    for (const auto &argument : _arguments)
        argument->forgetMatch();
}

NSString QVParseSymbol::description() const {
    return NSString::stringWithFormat(
        u"<%@: %p : name=%@, type=%@, scope=%@, fullRange=%@>", className(), static_cast<const void *>(this),
        _name, QVSymbolTypeToString(_symbolType), QVSymbolScopeToString(_symbolScope), fullRange());
}

} // namespace quorvane
