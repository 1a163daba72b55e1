#include "Platform/Foundation/QVAttributeRuns.h"

#include <algorithm>

namespace quorvane {

std::size_t QVAttributeRuns::runAtIndex(NSUInteger index) const {
    const auto at =
        std::partition_point(_runs.begin(), _runs.end(), [&](const Run &run) { return run.end <= index; });
    return static_cast<std::size_t>(at - _runs.begin());
}

const NSAttributes &QVAttributeRuns::attributesAtIndex(NSUInteger index, NSRange *range) const {
    const std::size_t run = runAtIndex(index);
    if (range != nullptr)
        *range = {startOfRun(run), _runs[run].end - startOfRun(run)};
    return _runs[run].attributes;
}

std::size_t QVAttributeRuns::splitAt(NSUInteger location) {
    const std::size_t run = runAtIndex(location);
    if (run == _runs.size() || startOfRun(run) == location)
        return run;
    _runs.insert(_runs.begin() + static_cast<std::ptrdiff_t>(run), Run{location, _runs[run].attributes});
    return run + 1;
}

void QVAttributeRuns::joinRuns(std::size_t first, std::size_t last) {
    if (_runs.empty())
        return;
    std::size_t kept = first == 0 ? 0 : first - 1;
    last = std::min(last, _runs.size() - 1);
    for (std::size_t run = kept + 1; run <= last; ++run) {
        if (_runs[run].attributes == _runs[kept].attributes)
            _runs[kept].end = _runs[run].end;
        else if (++kept != run)
            _runs[kept] = std::move(_runs[run]);
    }
    if (kept < last)
        _runs.erase(_runs.begin() + static_cast<std::ptrdiff_t>(kept) + 1,
                    _runs.begin() + static_cast<std::ptrdiff_t>(last) + 1);
}

void QVAttributeRuns::replaceRange(NSRange range, NSUInteger length, const NSAttributes &attributes) {
    // A copy, since the attributes may be those of a run that goes.
    const NSAttributes kept = attributes;
    const std::size_t first = splitAt(range.location);
    const std::size_t last = range.length == 0 ? first : splitAt(NSMaxRange(range));
    const auto at = _runs.erase(_runs.begin() + static_cast<std::ptrdiff_t>(first),
                                _runs.begin() + static_cast<std::ptrdiff_t>(last));
    // Modulo the range of positions, so that what gets shorter shifts down.
    const NSUInteger change = length - range.length;
    if (change != 0)
        for (auto run = at; run != _runs.end(); ++run)
            run->end += change;
    if (length > 0)
        _runs.insert(at, Run{range.location + length, kept});
    joinRuns(first, first + 1);
}

void QVAttributeRuns::changeRange(NSRange range, QVBlock<NSAttributes(const NSAttributes &)> change) {
    if (range.length == 0)
        return;
    const std::size_t first = splitAt(range.location);
    const std::size_t last = splitAt(NSMaxRange(range));
    for (std::size_t run = first; run < last; ++run)
        _runs[run].attributes = change(_runs[run].attributes);
    joinRuns(first, last);
}

bool QVAttributeRuns::isSound() const {
    for (std::size_t run = 0; run < _runs.size(); ++run)
        if (_runs[run].end <= startOfRun(run) ||
            (run > 0 && _runs[run].attributes == _runs[run - 1].attributes))
            return false;
    return true;
}

} // namespace quorvane
