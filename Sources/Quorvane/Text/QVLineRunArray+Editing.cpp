#include "Quorvane/Text/QVLineRunArray.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

namespace quorvane {

namespace {

bool isNewline(char16_t unit) { return unit == u'\n' || unit == u'\r'; }

/// The first newline unit at or behind an offset, the length where there is none.
NSUInteger newlineFrom(QVTextReader text, NSUInteger offset) {
    constexpr std::size_t block = 16;
    while (offset < text.length()) {
        const std::u16string_view piece = text.pieceAtIndex(offset);
        std::size_t index = 0;
        // Without a way out inside, so that it is done for all units of a block at once.
        for (; index + block <= piece.size(); index += block) {
            unsigned found = 0;
            for (std::size_t i = 0; i < block; ++i)
                found |= unsigned(piece[index + i] == u'\n') | unsigned(piece[index + i] == u'\r');
            if (found != 0)
                break;
        }
        for (; index < piece.size(); ++index)
            if (isNewline(piece[index]))
                return offset + index;
        offset += piece.size();
    }
    return offset;
}

/// At least as many as there are terminators.
NSUInteger countOfNewlines(QVTextReader text) {
    NSUInteger count = 0;
    for (NSUInteger offset = 0; offset < text.length();) {
        const std::u16string_view piece = text.pieceAtIndex(offset);
        for (const char16_t unit : piece)
            count += unit == u'\n' || unit == u'\r';
        offset += piece.size();
    }
    return count;
}

/// The first terminator at or behind the start of a segment; empty, at the end of the text, where there is
/// none.
NSRange terminatorFrom(QVTextReader text, NSUInteger offset) {
    const NSUInteger location = newlineFrom(text, offset);
    return location < text.length() ? qv_rangeOfNewlineAtLocation(text, location) : NSRange{location, 0};
}

std::uint8_t flagsOf(QVTextReader text, NSRange terminator) {
    if (terminator.length == 0)
        return 0;
    if (terminator.length == 2)
        return QVLineRunEndsInCR | QVLineRunEndsInLF;
    return text.characterAtIndex(terminator.location) == u'\r' ? QVLineRunEndsInCR : QVLineRunEndsInLF;
}

constexpr std::uint8_t pair = QVLineRunEndsInCR | QVLineRunEndsInLF;

} // namespace

/// One edit on its way. Until its last step, all runs stand where they stood before it.
struct QVLineRunArray::Splice {
    NSUInteger location;
    NSUInteger end;
    QVTextReader text;
    /// The number of the line that the edit starts in.
    NSUInteger first = 0;

    NSUInteger change() const { return text.length() - (end - location); }
};

void QVLineRunArray::replaceCharactersInRange(NSRange range, QVTextReader withString) {
    if (range.location > _length || range.length > _length - range.location)
        throw NSException(NSInvalidArgumentException, u"Index is beyond of the bounds of the line run array");
    Splice splice{range.location, NSMaxRange(range), withString};
    const Position at = positionForCharacterIndex(range.location);
    if (!_runs.isValid(at))
        return;
    ++_changes;
    splice.first = _runs.indexOfPosition(at);
    if (editInsideOfLine(splice, at))
        return;
    if (splice.first + 1 != _runs.count() || splice.location != _length)
        removeText(splice);
    if (splice.first >= _runs.count()) {
        NSAssertionHandler::handleFailure(u"QVLineRunArray", u"Run index should not be out of bounds");
        return;
    }
    finish(splice, insertText(splice));
}

/// What typing does, without the two steps of breaking the line and joining it again: the line's length
/// changes and nothing else.
bool QVLineRunArray::editInsideOfLine(const Splice &splice, Position at) {
    const NSRange range = rangeAt(at);
    Entry &line = _runs.entry(at);
    const NSUInteger contentsEnd = NSMaxRange(range) - (line.flags == pair ? 1 : 0);
    if (storesStrings() || splice.location <= range.location || splice.end >= contentsEnd ||
        newlineFrom(splice.text, 0) < splice.text.length())
        return false;
    line.length = (range.length + splice.change());
    _length += splice.change();
    nameLineBefore(splice.first + 1);
    _runs.shift(_runs.next(at), splice.change());
    return true;
}

// MARK: - The links between lines

/// Makes a line name another one as the one before it.
void QVLineRunArray::nameBefore(NSUInteger lineNumber, NSUInteger named) {
    if (lineNumber >= _runs.count())
        return;
    std::unique_ptr<Details> &target = _runs.entry(_runs.positionOfIndex(named)).details;
    if (!target)
        target = std::make_unique<Details>();
    if (target->identity == 0) {
        target->identity = ++_lastIdentity;
        _identities.insert(target->identity);
    }
    std::unique_ptr<Details> &details = _runs.entry(_runs.positionOfIndex(lineNumber)).details;
    if (!details)
        details = std::make_unique<Details>();
    details->namedBefore = target->identity;
}

/// Makes a line, if it exists, name the one that stands before it.
void QVLineRunArray::nameLineBefore(NSUInteger lineNumber) {
    if (_identities.empty() || lineNumber >= _runs.count())
        return;
    if (const auto &details = _runs.entry(_runs.positionOfIndex(lineNumber)).details)
        details->namedBefore = 0;
}

/// A line leaves the array.
void QVLineRunArray::forget(Entry &entry) {
    if (entry.details && entry.details->identity != 0)
        _identities.erase(entry.details->identity);
}

void QVLineRunArray::removeRuns(NSUInteger lineNumber, NSUInteger count) {
    const Position first = _runs.positionOfIndex(lineNumber);
    if (!_identities.empty()) {
        Position at = first;
        for (NSUInteger i = 0; i < count; ++i, at = _runs.next(at))
            forget(_runs.entry(at));
    }
    _runs.remove(first, count);
}

// MARK: - Removing text

void QVLineRunArray::removeText(Splice &splice) {
    NSUInteger number = splice.first;
    while (number < _runs.count()) {
        const Position at = _runs.positionOfIndex(number);
        const NSRange range = rangeAt(at);
        const NSUInteger end = NSMaxRange(range);
        if (splice.end <= range.location)
            return;
        if (splice.location < range.location && end <= splice.end) {
            NSUInteger count = 0;
            for (Position inside = at; _runs.isValid(inside); inside = _runs.next(inside)) {
                const NSRange next = rangeAt(inside);
                if (splice.end <= next.location || splice.location >= next.location ||
                    NSMaxRange(next) > splice.end)
                    break;
                ++count;
            }
            removeRuns(number, count);
            nameLineBefore(number);
            continue;
        }
        if (end > splice.end)
            return splice.location > range.location ? splitLine(splice, number) : cutHead(splice, number);
        cutTail(splice, number);
        ++number;
    }
}

/// The edit lies inside the line: it breaks in two, which are joined again where nothing comes between them.
void QVLineRunArray::splitLine(Splice &splice, NSUInteger lineNumber) {
    const Position at = _runs.positionOfIndex(lineNumber);
    const NSRange range = rangeAt(at);
    const NSUInteger end = NSMaxRange(range);
    const NSUInteger head = splice.location - range.location;
    Entry &line = _runs.entry(at);
    const std::uint8_t flags = line.flags;
    Entry rest = makeEntry(end - splice.end, flags, u"");
    if (storesStrings()) {
        // The rest takes its string from where the edit starts, not from where it ends: what is deleted stays
        // at its head. Users of stored strings see the text as it was handed in.
        QVLineRunString &string = line.details->string;
        const std::u16string_view units = string.string();
        rest.details->string.replaceCharactersInRange(
            {0, 0}, QVTextReader(units.substr(std::min<NSUInteger>(head, units.size()))));
        string.replaceCharactersInRange({head, units.size()}, QVTextReader());
    }
    const bool keepsCR = flags == pair && splice.location == end - 1;
    line.flags = keepsCR ? QVLineRunEndsInCR : 0;
    if (flags == pair && splice.end == end - 1)
        rest.flags = QVLineRunEndsInLF;
    line.length = head;
    _runs.insert(_runs.next(at), splice.end, std::move(rest));
    // The line behind both goes on to name the first part as the one before it; only an edit that reaches it
    // puts that right.
    nameBefore(lineNumber + 2, lineNumber);
}

/// The edit takes the start of a line.
void QVLineRunArray::cutHead(Splice &splice, NSUInteger lineNumber) {
    Position at = _runs.positionOfIndex(lineNumber);
    const NSRange range = rangeAt(at);
    const NSUInteger end = NSMaxRange(range);
    const NSUInteger length = end - splice.end;
    // An LF that loses its CR stays in the text as a character like others. At the end of a line that is cut
    // in two it would count as a terminator; this difference is meant.
    if (length == 1 && _runs.entry(at).flags == pair)
        _runs.entry(at).flags = 0;
    if (lineNumber == splice.first) {
        _runs.insert(at, range.location, makeEntry(0, 0, u""));
        nameLineBefore(lineNumber + 1);
        at = _runs.positionOfIndex(lineNumber + 1);
    }
    Entry &line = _runs.entry(at);
    line.length = length;
    if (storesStrings())
        line.details->string.replaceCharactersInRange({0, range.length - length}, QVTextReader());
    _runs.setLocation(at, splice.end);
}

/// The edit takes the end of a line.
void QVLineRunArray::cutTail(Splice &splice, NSUInteger lineNumber) {
    const Position at = _runs.positionOfIndex(lineNumber);
    const NSRange range = rangeAt(at);
    Entry &line = _runs.entry(at);
    const NSUInteger head = splice.location - range.location;
    const bool keepsCR = line.flags == pair && splice.location == NSMaxRange(range) - 1;
    line.flags = keepsCR ? QVLineRunEndsInCR : 0;
    line.length = head;
    if (storesStrings()) {
        QVLineRunString &string = line.details->string;
        string.replaceCharactersInRange({head, string.string().size()}, QVTextReader());
    }
}

// MARK: - Inserting text

/// Answers the number of the last line that the insertion touched.
NSUInteger QVLineRunArray::insertText(Splice &splice) {
    const QVTextReader text = splice.text;
    NSUInteger number = splice.first;
    if (text.length() == 0)
        return number;
    Position at = _runs.positionOfIndex(number);
    const NSRange range = rangeAt(at);
    Entry &line = _runs.entry(at);
    NSUInteger offset = 0;
    const auto append = [&](NSUInteger end) {
        if (storesStrings())
            line.details->string.replaceCharactersInRange(
                {line.details->string.string().size(), 0},
                QVTextReader(text.substringWithRange({offset, end - offset})));
        line.length = (line.length + (end - offset));
        offset = end;
    };
    // A CR takes an LF as its own wherever in the line the text comes in. Where that is the line's start, the
    // runs no longer say where the LF stands in the text; it keeps edits cheap and hurts nobody in practice.
    if (line.flags == QVLineRunEndsInCR && text.characterAtIndex(0) == u'\n') {
        append(1);
        line.flags = pair;
    }
    bool goesBefore = false;
    if (line.flags != 0 || (splice.location == range.location && range.length != 0)) {
        goesBefore = splice.location == range.location;
    } else {
        const NSRange terminator = terminatorFrom(text, 0);
        append(NSMaxRange(terminator));
        line.flags = flagsOf(text, terminator);
    }
    if (offset == text.length())
        return number;
    if (goesBefore && offset != 0)
        _isContiguous = false;
    std::vector<Item> items;
    items.reserve(countOfNewlines(text) + 1);
    while (offset < text.length()) {
        const NSRange terminator = terminatorFrom(text, offset);
        const NSUInteger length = NSMaxRange(terminator) - offset;
        std::u16string string;
        if (storesStrings())
            string = text.substringWithRange({offset, length});
        items.push_back({splice.location + offset, makeEntry(length, flagsOf(text, terminator), string)});
        offset += length;
    }
    if (!goesBefore)
        at = _runs.next(at);
    const NSUInteger added = items.size();
    _runs.replace(at, 0, items, 0);
    if (!goesBefore)
        return number + added;
    nameLineBefore(number + added);
    return number + added - 1;
}

/// Joins or links the last line touched and the one behind, and moves all that follow.
void QVLineRunArray::finish(Splice &splice, NSUInteger lineNumber) {
    const NSUInteger behind = lineNumber + 1;
    if (behind < _runs.count()) {
        const Position at = _runs.positionOfIndex(lineNumber);
        const Position next = _runs.next(at);
        Entry &line = _runs.entry(at);
        Entry &other = _runs.entry(next);
        const bool makesPair =
            line.flags == QVLineRunEndsInCR && other.flags == QVLineRunEndsInLF && other.length == 1;
        if (line.flags == 0 || makesPair) {
            if (storesStrings())
                line.details->string.replaceCharactersInRange({line.details->string.string().size(), 0},
                                                              QVTextReader(other.details->string.string()));
            line.length = (line.length + other.length);
            line.flags = (line.flags | other.flags) & pair;
            removeRuns(behind, 1);
        }
        nameLineBefore(behind);
        _runs.shift(_runs.positionOfIndex(behind), splice.change());
    }
    const Position last = _runs.last();
    if (_runs.entry(last).flags != 0 && _runs.entry(last).length != 0)
        _runs.insert(_runs.end(), NSMaxRange(rangeAt(last)), makeEntry(0, 0, u""));
    _length += splice.change();
    if (_runs.count() == 1)
        _isContiguous = rangeAt(_runs.begin()) == NSRange{0, _length};
}

} // namespace quorvane
