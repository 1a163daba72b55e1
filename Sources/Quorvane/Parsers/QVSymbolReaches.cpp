#include "Quorvane/Parsers/QVSymbolReaches.h"

namespace quorvane {

std::size_t QVSymbolReaches::stretchAt(std::size_t index) {
    if (_lastStretch >= _stretches.size() || index < _lastFirst) {
        _lastStretch = 0;
        _lastFirst = 0;
    }
    while (_lastStretch + 1 < _stretches.size() && index >= _lastFirst + _stretches[_lastStretch].count)
        _lastFirst += _stretches[_lastStretch++].count;
    return _lastStretch;
}

void QVSymbolReaches::replace(std::size_t index, std::size_t removed, std::size_t added) {
    if (_stretches.empty())
        _stretches.push_back({0, 0});
    const std::size_t stretch = stretchAt(index);
    std::size_t begin = index - _lastFirst;
    std::size_t emptied = stretch;
    for (std::size_t left = removed; left != 0; ++emptied) {
        const std::size_t taken = std::min(left, _stretches[emptied].count - begin);
        _stretches[emptied].count -= taken;
        left -= taken;
        begin = 0;
    }
    _stretches[stretch].count += added;
    // The first one stays, empty or not, for whoever comes next.
    const auto behind = _stretches.begin() + static_cast<std::ptrdiff_t>(stretch) + 1;
    const auto last = std::max(behind, _stretches.begin() + static_cast<std::ptrdiff_t>(emptied));
    _stretches.erase(std::remove_if(behind, last, [](const Stretch &each) { return each.count == 0; }), last);
    cutIfLarge(stretch);
}

void QVSymbolReaches::cutIfLarge(std::size_t stretch) {
    if (_stretches[stretch].count <= 2 * stretchSize)
        return;
    std::vector<Stretch> pieces;
    for (std::size_t left = _stretches[stretch].count; left != 0;) {
        const std::size_t count = std::min(left, stretchSize);
        pieces.push_back({count, _stretches[stretch].reach});
        left -= count;
    }
    _stretches[stretch] = pieces.front();
    _stretches.insert(_stretches.begin() + static_cast<std::ptrdiff_t>(stretch) + 1, pieces.begin() + 1,
                      pieces.end());
}

void QVSymbolReaches::raise(std::size_t index, NSUInteger reach) {
    Stretch &stretch = _stretches[stretchAt(index)];
    stretch.reach = std::max(stretch.reach, reach);
}

} // namespace quorvane
