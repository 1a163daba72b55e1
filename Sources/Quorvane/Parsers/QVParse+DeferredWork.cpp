// What the parse of a whole text leaves for later. Its colours need neither symbols nor the order of places
// that edits move by, and are shown the sooner without them.

#include "Quorvane/Matches/QVMatchPositions.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Parsers/QVParseSymbol.h"

namespace quorvane {

const std::vector<std::shared_ptr<QVParseSymbol>> &QVParse::symbols() const {
    if (QVSymbolMaker *const maker = _matchPool->symbolMaker())
        maker->makeSymbols();
    return _symbols;
}

void QVParse::finishDeferredWork() {
    symbols();
    if (!_matchPool->positions().hasRoot())
        _matchPool->positions().setRoot(_rootMatch.get());
}

void QVParse::deferWork() { _matchPool->setSymbolMaker(this); }

void QVParse::forgetDeferredWork() {
    _matchPool->setSymbolMaker(nullptr);
    if (_matchPool->positions().hasRoot())
        _matchPool->positions().releaseRoot();
}

/// The first reader makes them while others wait. Text and tree are as the parse left them, for a writer
/// finishes what was deferred before it edits.
void QVParse::makeSymbols() {
    const std::lock_guard guard(_symbolsMutex);
    // Somebody was faster, or is told something by the making itself, as a log sink may be.
    if (_matchPool->symbolMaker() == nullptr || _isMakingSymbols)
        return;
    _isMakingSymbols = true;
    try {
        symbolicateMatchesInRange({0, string().size()}, _rootMatch.get(), nullptr);
    } catch (...) {
        _isMakingSymbols = false;
        forgetSymbols();
        throw;
    }
    _isMakingSymbols = false;
    _matchPool->setSymbolMaker(nullptr);
}

} // namespace quorvane
