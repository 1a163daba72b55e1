#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVLineRunArray.h"

namespace quorvane {

namespace {

/// Joins the lines that an enumeration reports; the numbers and their characters.
struct LinesUnion {
    NSRange numbers = NSNotFoundRange;
    NSRange characters = NSNotFoundRange;

    void add(const QVLineRun &run, NSUInteger lineNumber) {
        const NSRange range = run.range();
        if (numbers.location == NSNotFound) {
            numbers = {lineNumber, 1};
            characters = range;
        } else {
            numbers = NSUnionRange(numbers, {lineNumber, 1});
            characters = NSUnionRange(characters, range);
        }
    }
};

} // namespace

NSUInteger QVConcreteTextStorage::numberOfLines() const { return _lines->numberOfLines(); }

NSRange QVConcreteTextStorage::characterRangeForLineNumber(NSUInteger lineNumber) const {
    if (lineNumber >= _lines->numberOfLines())
        return NSNotFoundRange;
    return _lines->lineForLineNumber(lineNumber).range();
}

NSRange QVConcreteTextStorage::characterRangeForLineNumbersInRange(NSRange range) const {
    if (range.location >= _lines->numberOfLines())
        return NSNotFoundRange;
    const NSRange first = _lines->lineForLineNumber(range.location).range();
    if (range.length == 0)
        return {first.location, 0};
    const NSUInteger last =
        range.location + std::min(range.length, _lines->numberOfLines() - range.location) - 1;
    return NSUnionRange(first, _lines->lineForLineNumber(last).range());
}

void QVConcreteTextStorage::enumerateLinesInRange(NSRange range, LineBlock usingBlock) const {
    _lines->enumerateLinesForLineNumberRange(range,
                                             [&](const QVLineRun &run, NSUInteger lineNumber, bool &stop) {
                                                 usingBlock(run.range(), lineNumber, stop);
                                             });
}

NSUInteger QVConcreteTextStorage::lineNumberForCharacterIndex(NSUInteger index,
                                                              NSRange *actualCharacterRange) const {
    NSUInteger lineNumber = NSNotFound;
    const QVLineRun run = _lines->lineForCharacterIndex(index, &lineNumber);
    if (actualCharacterRange != nullptr)
        *actualCharacterRange = lineNumber == NSNotFound ? NSNotFoundRange : run.range();
    return lineNumber;
}

NSRange QVConcreteTextStorage::rangeOfLineNumbersForCharacterRange(NSRange range,
                                                                   NSRange *actualCharacterRange) const {
    LinesUnion lines;
    const auto add = [&](const QVLineRun &run, NSUInteger lineNumber, bool &stop) {
        lines.add(run, lineNumber);
        stop = true;
    };
    // The first and the last line; those in between need no look.
    _lines->enumerateLinesForCharacterRange(range, add);
    const NSUInteger end = std::min(NSMaxRange(range), _lines->length());
    if (end > range.location)
        _lines->enumerateLinesForCharacterRange({end - 1, 1}, add);
    if (actualCharacterRange != nullptr)
        *actualCharacterRange = lines.characters;
    return lines.numbers;
}

void QVConcreteTextStorage::enumerateLinesForCharacterRange(NSRange range, LineBlock usingBlock) const {
    _lines->enumerateLinesForCharacterRange(range,
                                            [&](const QVLineRun &run, NSUInteger lineNumber, bool &stop) {
                                                usingBlock(run.range(), lineNumber, stop);
                                            });
}

} // namespace quorvane
