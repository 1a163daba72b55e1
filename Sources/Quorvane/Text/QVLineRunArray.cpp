#include "Quorvane/Text/QVLineRunArray.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"

namespace quorvane {

namespace {

void fail(const char16_t *message) { NSAssertionHandler::handleFailure(u"QVLineRunArray", message); }

void require(bool condition, const char16_t *message) {
    if (!condition)
        fail(message);
}

[[noreturn]] void throwBeyondBounds() {
    throw NSException(NSInvalidArgumentException, u"Index is beyond of the bounds of the line run array");
}

} // namespace

QVLineRunArray::QVLineRunArray(std::uint64_t options, std::size_t runsPerChunk)
    : _options(options), _runs(runsPerChunk) {
    _runs.insert(_runs.begin(), 0, makeEntry(0, 0, u""));
}

QVLineRunArray::~QVLineRunArray() = default;

std::shared_ptr<QVLineRunArray> QVLineRunArray::initWithOptions(std::uint64_t options) {
    return std::make_shared<QVLineRunArray>(options);
}

QVLineRunArray::Entry QVLineRunArray::makeEntry(NSUInteger length, std::uint8_t flags,
                                                QVTextReader string) const {
    Entry entry;
    entry.length = length;
    entry.flags = flags;
    if (storesStrings()) {
        entry.details = std::make_unique<Details>();
        entry.details->string = QVLineRunString::initWithString(u"");
        entry.details->string.replaceCharactersInRange({0, 0}, string);
    }
    return entry;
}

// MARK: - Handles

QVLineRun QVLineRunArray::runAt(Position at, NSUInteger lineNumber) const {
    const Entry &entry = _runs.entry(at);
    QVLineRun run;
    run._array = this;
    run._lineNumber = lineNumber;
    run._range = rangeAt(at);
    run._chunk = at.chunk;
    run._slot = at.slot;
    run._changes = _changes;
    run._string = entry.details ? &entry.details->string : nullptr;
    run._flags = entry.flags;
    return run;
}

QVLineRun QVLineRunArray::runBehind(const QVLineRun &run) const {
    const NSUInteger number = run._lineNumber + 1;
    if (number >= _runs.count())
        return {};
    if (run._changes != _changes)
        return runAt(_runs.positionOfIndex(number), number);
    return runAt(_runs.next({run._chunk, run._slot}), number);
}

QVLineRun QVLineRunArray::runBefore(const QVLineRun &run) const {
    NSUInteger number = run._lineNumber;
    if (number == 0 || number >= _runs.count())
        return {};
    const Position at =
        run._changes == _changes ? Position{run._chunk, run._slot} : _runs.positionOfIndex(number);
    if (const auto &details = _runs.entry(at).details; details && details->namedBefore != 0) {
        number = numberOfLineNamedBefore(number, at);
        return runAt(_runs.positionOfIndex(number), number);
    }
    return runAt(_runs.previous(at), number - 1);
}

/// For a line that is not the first. A line that has left the array counts for nothing.
NSUInteger QVLineRunArray::numberOfLineNamedBefore(NSUInteger lineNumber, Position at) const {
    const auto &details = _runs.entry(at).details;
    if (details && details->namedBefore != 0 && _identities.count(details->namedBefore) != 0) {
        NSUInteger number = lineNumber;
        for (Position before = at; number > 0;) {
            before = _runs.previous(before);
            --number;
            const auto &candidate = _runs.entry(before).details;
            if (candidate && candidate->identity == details->namedBefore)
                return number;
        }
    }
    return lineNumber - 1;
}

// MARK: - Finding lines

QVLineRun QVLineRunArray::lineForLineNumber(NSUInteger lineNumber) const {
    if (lineNumber >= _runs.count())
        throwBeyondBounds();
    return runAt(_runs.positionOfIndex(lineNumber), lineNumber);
}

QVLineRunArray::Position QVLineRunArray::positionForCharacterIndex(NSUInteger index) const {
    if (index > _length)
        throwBeyondBounds();
    if (index == _length)
        return _runs.last();
    const Position at =
        _isContiguous ? _runs.positionOfLocation(index) : _runs.positionOfIndex(searchByProbing(index));
    if (!_runs.isValid(at) || !NSLocationInRange(index, rangeAt(at))) {
        fail(u"We should never get here, because a value should've been found by now.");
        return _runs.end();
    }
    return at;
}

QVLineRun QVLineRunArray::lineForCharacterIndex(NSUInteger index, NSUInteger *runIndex) const {
    const Position at = positionForCharacterIndex(index);
    if (!_runs.isValid(at))
        return {};
    const NSUInteger number = _runs.indexOfPosition(at);
    if (runIndex != nullptr)
        *runIndex = number;
    return runAt(at, number);
}

/// Where runs leave gaps or overlap, which one is found depends on where the search looks first.
NSUInteger QVLineRunArray::searchByProbing(NSUInteger index) const {
    NSUInteger low = 0;
    NSUInteger end = _runs.count();
    while (low < end) {
        const NSUInteger middle = (low + end - 1) >> 1;
        const NSRange range = rangeAt(_runs.positionOfIndex(middle));
        if (NSLocationInRange(index, range))
            return middle;
        if (index < range.location)
            end = middle;
        else
            low = middle + 1;
    }
    return NSNotFound;
}

// MARK: - Walking

void QVLineRunArray::enumerateLinesForLineNumberRange(NSRange range, LineBlock usingBlock) const {
    QVLineRun run = lineForLineNumber(range.location);
    const NSUInteger end =
        range.location + std::min(range.length, std::numeric_limits<NSUInteger>::max() - range.location);
    NSUInteger number = range.location;
    do {
        bool stop = false;
        usingBlock(run, number, stop);
        if (stop)
            return;
        run = run.nextRun();
    } while (++number < end && run);
}

void QVLineRunArray::enumerateLinesForCharacterRange(NSRange range, NSEnumerationOptions options,
                                                     LineBlock usingBlock) const {
    if (range.location > _length)
        throwBeyondBounds();
    range.length = std::min(range.length, std::numeric_limits<NSUInteger>::max() - range.location);
    const bool isReverse = (options & NSEnumerationReverse) != 0;
    NSUInteger number = 0;
    QVLineRun run = lineForCharacterIndex(isReverse ? NSMaxRange(range) : range.location, &number);
    if (!run)
        return;
    if (isReverse && range.length != 0 && run.range().location == NSMaxRange(range) && number > 0) {
        run = run.previousRun();
        --number;
    }
    for (;;) {
        bool stop = false;
        usingBlock(run, number, stop);
        if (stop || (isReverse && number == 0))
            return;
        run = isReverse ? run.previousRun() : run.nextRun();
        isReverse ? --number : ++number;
        if (!run || NSIntersectionRange(run.range(), range).length == 0)
            return;
    }
}

NSRange QVLineRunArray::lineRangeForCharacterRange(NSRange range) const {
    NSRange result = range;
    enumerateLinesForCharacterRange(
        range, [&](const QVLineRun &run, NSUInteger, bool &) { result = NSUnionRange(result, run.range()); });
    return result;
}

// MARK: - Checking

void QVLineRunArray::validateRunIntegrity() const {
    std::vector<RunRecord> records(_runs.count());
    NSUInteger number = 0;
    for (Position at = _runs.begin(); _runs.isValid(at); at = _runs.next(at), ++number) {
        RunRecord &record = records[number];
        record.range = rangeAt(at);
        if (number > 0) {
            records[number - 1].nextRun = &record;
            record.previousRun = &records[numberOfLineNamedBefore(number, at)];
        }
        if (const auto &details = _runs.entry(at).details; details && details->string.hasString()) {
            record.hasString = true;
            record.stringLength = details->string.string().size();
        }
    }
    validateRuns(records, storesStrings(), _length);
}

void QVLineRunArray::validateRuns(const std::vector<RunRecord> &runs, bool storesStrings, NSUInteger length) {
    if (runs.size() > 1)
        require(runs[0].range.length != 0, u"Range length is empty");
    if (!runs.empty())
        require(runs[0].previousRun == nullptr, u"Previous run is incorrect");
    for (std::size_t i = 1; i < runs.size(); ++i) {
        const RunRecord &before = runs[i - 1];
        const RunRecord &run = runs[i];
        const bool isLast = i + 1 == runs.size();
        require(run.range.location == NSMaxRange(before.range), u"Range location is not contiguous");
        require(run.range.length != 0 || isLast, u"Range length is empty");
        require(before.nextRun == &run, u"Next run is incorrect");
        require(run.previousRun == &before, u"Previous run is incorrect");
        require(run.nextRun != nullptr || isLast, u"Run is not the last object");
        if (storesStrings) {
            require(run.hasString, u"Run does not have a string set");
            require(run.stringLength == run.range.length, u"Run string length does not match range length");
        }
    }
    if (!runs.empty())
        require(runs.back().nextRun == nullptr, u"Next run is incorrect");
    require((runs.empty() ? 0 : NSMaxRange(runs.back().range)) == length,
            u"Ranges do not match array length");
}

} // namespace quorvane
