#include "Platform/Foundation/QVAttributeRuns.h"

namespace quorvane {

QVAttributeRuns &QVAttributeRuns::operator=(const QVAttributeRuns &other) {
    if (this == &other)
        return *this;
    _runs.reset();
    _runsPerChunk = other._runsPerChunk;
    if (other._runs) {
        _runs = std::make_unique<Sequence>(_runsPerChunk);
        _runs->assign(*other._runs);
    }
    _length = other._length;
    _attributes = other._attributes;
    return *this;
}

const NSAttributes &QVAttributeRuns::attributesAtIndex(NSUInteger index, NSRange *range) const {
    if (!_runs) {
        if (range != nullptr)
            *range = {0, _length};
        return _attributes;
    }
    const Position at = _runs->positionOfLocation(index);
    if (range != nullptr) {
        const NSUInteger location = _runs->location(at);
        *range = {location, _runs->nextLocation(at, _length) - location};
    }
    return _runs->entry(at);
}

void QVAttributeRuns::replaceRange(NSRange range, NSUInteger length, const NSAttributes &attributes) {
    if (!_runs && (length == 0 || range.length == _length || _attributes == attributes)) {
        // Still one run.
        if (length != 0 && !_attributes.isIdenticalTo(attributes))
            _attributes = NSAttributes(attributes);
        _length += length - range.length;
        if (_length == 0)
            _attributes = NSAttributes();
        return;
    }
    if (_runs && range.length == 0 && length != 0 && range.location > 0) {
        // What is typed looks like the character before it, most of the time.
        const Position before = _runs->positionOfLocation(range.location - 1);
        if (_runs->entry(before) == attributes) {
            _runs->shift(_runs->next(before), length);
            _length += length;
            return;
        }
    }
    std::vector<Run> runs;
    if (length != 0)
        runs.push_back({range.location, attributes});
    splice(range, length, std::move(runs));
}

void QVAttributeRuns::replaceRange(NSRange range, const QVAttributeRuns &other) {
    if (!other._runs) {
        replaceRange(range, other._length, other._attributes);
        return;
    }
    std::vector<Run> runs;
    runs.reserve(other.count());
    for (Position at = other._runs->begin(); other._runs->isValid(at); at = other._runs->next(at))
        runs.push_back({range.location + other._runs->location(at), other._runs->entry(at)});
    splice(range, other._length, std::move(runs));
}

void QVAttributeRuns::splice(NSRange range, NSUInteger length, std::vector<Run> runs) {
    const NSUInteger end = NSMaxRange(range);
    const NSUInteger change = length - range.length;
    if (range.length == _length) {
        _runs.reset();
        _attributes = runs.size() == 1 ? std::move(runs[0].entry) : NSAttributes();
        if (runs.size() > 1) {
            _runs = std::make_unique<Sequence>(_runsPerChunk);
            _runs->replace(_runs->end(), 0, runs, 0);
        }
        _length = length;
        return;
    }
    if (!_runs) {
        _runs = std::make_unique<Sequence>(_runsPerChunk);
        _runs->insert(_runs->end(), 0, std::exchange(_attributes, NSAttributes()));
    }
    const auto firstBehind = [&](NSUInteger location) {
        return location == 0 ? _runs->begin() : _runs->next(_runs->positionOfLocation(location - 1));
    };
    const Position first = firstBehind(range.location);
    const NSAttributes *before = nullptr;
    if (range.location > 0)
        before = &_runs->entry(_runs->positionOfLocation(range.location - 1));
    if (before != nullptr && !runs.empty() && runs.front().entry == *before)
        runs.erase(runs.begin());
    Position behind = firstBehind(end);
    NSUInteger removed = _runs->indexOfPosition(behind) - _runs->indexOfPosition(first);
    if (end < _length) {
        const NSAttributes *const last = runs.empty() ? before : &runs.back().entry;
        const Position next = _runs->positionOfLocation(end);
        const bool isJoined = last != nullptr && *last == _runs->entry(next);
        const bool startsHere = _runs->location(next) == end;
        if (isJoined && startsHere)
            ++removed;
        else if (!isJoined && !startsHere)
            runs.push_back({range.location + length, _runs->entry(next)});
    }
    _runs->replace(first, removed, runs, change);
    _length += change;
}

void QVAttributeRuns::changeRange(NSRange range, QVBlock<NSAttributes(const NSAttributes &)> change) {
    if (range.length == 0)
        return;
    std::vector<Run> runs;
    bool isChanged = false;
    NSUInteger location = range.location;
    while (location < NSMaxRange(range)) {
        NSRange run;
        const NSAttributes &present = attributesAtIndex(location, &run);
        NSAttributes changed = change(present);
        isChanged = isChanged || changed != present;
        if (runs.empty() || runs.back().entry != changed)
            runs.push_back({location, std::move(changed)});
        location = NSMaxRange(run);
    }
    if (isChanged)
        splice(range, range.length, std::move(runs));
}

bool QVAttributeRuns::isSound() const {
    if (!_runs)
        return _length > 0 || _attributes.empty();
    if (_runs->isEmpty() || !_runs->isConsistent() || _runs->location(_runs->begin()) != 0)
        return false;
    for (Position at = _runs->begin(); _runs->isValid(at); at = _runs->next(at)) {
        if (_runs->nextLocation(at, _length) <= _runs->location(at))
            return false;
        if (!_runs->isFirst(at) && _runs->entry(_runs->previous(at)) == _runs->entry(at))
            return false;
    }
    return true;
}

} // namespace quorvane
