#pragma once

#include "Platform/Foundation/NSIndexSet.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Symbols/QVSymbol.h"

namespace quorvane {

/// One answer of a source of symbols to a request.
class QV_EXPORT QVSymbolFetchResultItem final : public NSObject {
public:
    QVSymbolFetchResultItem() = default;

    const std::shared_ptr<QVSymbol> &symbol() const { return _symbol; }
    void setSymbol(std::shared_ptr<QVSymbol> symbol) { _symbol = std::move(symbol); }
    /// The units of the name that the pattern matched.
    const NSIndexSet &matchingIndexes() const { return _matchingIndexes; }
    void setMatchingIndexes(NSIndexSet matchingIndexes) { _matchingIndexes = std::move(matchingIndexes); }
    /// How well it matched; higher is better.
    float score() const { return _score; }
    void setScore(float score) { _score = score; }
    /// The file that the symbol stands in, null where there is none.
    const NSURL &fileURL() const { return _fileURL; }
    void setFileURL(NSURL fileURL) { _fileURL = std::move(fileURL); }

    std::u16string_view className() const override { return u"QVSymbolFetchResultItem"; }

private:
    std::shared_ptr<QVSymbol> _symbol;
    NSIndexSet _matchingIndexes;
    float _score = 0;
    NSURL _fileURL;
};

} // namespace quorvane
