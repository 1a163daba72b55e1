#include "Platform/AppKit/NSTextStorage.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/QVLimits.h"

namespace quorvane {

namespace {

/// Characters that are fixed together, wherever one of them is read.
constexpr NSUInteger fixedTogether = 4096;
constexpr NSUInteger reach = limits::paragraphFixingReach;
constexpr char16_t attachmentCharacter = u'\uFFFC';

bool isTerminator(char16_t unit) { return unit == u'\n' || unit == u'\r'; }

/// Whether a paragraph begins at a position up to the text's length. The LF of a CR LF begins none.
bool isParagraphStart(QVTextReader text, NSUInteger location) {
    if (location == 0)
        return true;
    const char16_t before = text.characterAtIndex(location - 1);
    return before == u'\n' ||
           (before == u'\r' && !(location < text.length() && text.characterAtIndex(location) == u'\n'));
}

/// The place behind the paragraph's terminator, or as far as the reach goes.
NSUInteger paragraphEnd(QVTextReader text, NSUInteger location) {
    const NSUInteger bound = std::min(text.length(), location + reach);
    while (location < bound) {
        const auto piece = text.pieceAtIndex(location).substr(0, bound - location);
        const auto terminator = std::ranges::find_if(piece, isTerminator);
        location += static_cast<NSUInteger>(terminator - piece.begin());
        if (terminator != piece.end() && isParagraphStart(text, ++location))
            return location;
    }
    return location;
}

/// Where the paragraph begins, `NSNotFound` where that is out of reach.
NSUInteger paragraphStart(QVTextReader text, NSUInteger location) {
    const NSUInteger bound = location - std::min(location, reach);
    while (!isParagraphStart(text, location))
        if (location-- == bound)
            return NSNotFound;
    return location;
}

/// Whether a terminator stands in a range, as far as its end is looked at.
bool hasTerminator(QVTextReader text, NSRange range) {
    const NSUInteger end = NSMaxRange(range);
    for (NSUInteger index = end; index > range.location && end - index < reach;)
        if (isTerminator(text.characterAtIndex(--index)))
            return true;
    return range.length > reach;
}

} // namespace

NSTextStorage::NSTextStorage() = default;
NSTextStorage::~NSTextStorage() = default;

// MARK: - The edit bracket

void NSTextStorage::beginEditing() { ++_editingDepth; }

void NSTextStorage::endEditing() {
    QVAssert(_editingDepth > 0, u"endEditing was called without beginEditing");
    if (_editingDepth > 0 && --_editingDepth == 0)
        processGatheredEdits();
}

void NSTextStorage::edited(NSTextStorageEditActions mask, NSRange range, NSInteger changeInLength) {
    if (mask == 0 || range.location == NSNotFound)
        return;
    const bool editsCharacters = (mask & NSTextStorageEditedCharacters) != 0;
    if (_lazyFixingDepth > 0 && !editsCharacters)
        return;
    if (editsCharacters)
        moveUnfixedRanges(range, changeInLength);
    Edit &edit = _round == Round::Telling ? _nextEdit : _edit;
    edit.mask |= mask;
    edit.range = edit.range.location == NSNotFound ? range : NSUnionRange(edit.range, range);
    // Modulo the range of positions, so that what gets shorter shrinks.
    edit.range.length += static_cast<NSUInteger>(changeInLength);
    edit.changeInLength += changeInLength;
    if (_editingDepth == 0)
        processGatheredEdits();
}

void NSTextStorage::processGatheredEdits() {
    // The rounds follow each other, whoever edits in one of them.
    while (_round == Round::None && _editingDepth == 0 && _edit.mask != 0) {
        struct Finish {
            NSTextStorage &storage;
            ~Finish() {
                storage._edit = std::exchange(storage._nextEdit, Edit());
                storage._round = Round::None;
            }
        } const finish{*this};
        _round = Round::Processing;
        processEditing();
    }
}

void NSTextStorage::processEditing() {
    const NSRange range = rangeToFixBehindEdit();
    if (range.length > 0) {
        if (fixesAttributesLazily())
            invalidateAttributesInRange(range);
        else
            fixAttributesInRange(range);
    }
    if (_round == Round::Processing)
        _round = Round::Telling;
}

/// The edited range, with the rest of its last paragraph where that may have got another first character.
NSRange NSTextStorage::rangeToFixBehindEdit() const {
    const QVTextReader text = string();
    NSRange range = NSIntersectionRange(_edit.range, {0, text.length()});
    if (_edit.range.location > text.length())
        return {0, 0};
    range.location = _edit.range.location;
    const NSUInteger end = NSMaxRange(range);
    const bool keepsOldText = (_edit.mask & NSTextStorageEditedCharacters) == 0 ||
                              static_cast<NSInteger>(_edit.range.length) == _edit.changeInLength;
    if (end == text.length())
        return range;
    const bool maySplitOrJoin =
        !keepsOldText || isParagraphStart(text, range.location) || hasTerminator(text, range);
    // A paragraph that now begins behind the edit was a paragraph's end before, and of one style as far as
    // its first character is fixed.
    if (maySplitOrJoin && (!isParagraphStart(text, end) || isUnfixed(end)))
        range.length = paragraphEnd(text, end) - range.location;
    return range;
}

// MARK: - Fixing attributes

/// While a reader waits for attributes to be fixed.
class NSTextStorage::Fixing {
public:
    explicit Fixing(NSTextStorage &storage) : _storage(storage) { ++_storage._lazyFixingDepth; }
    ~Fixing() { --_storage._lazyFixingDepth; }
    Fixing(const Fixing &) = delete;
    Fixing &operator=(const Fixing &) = delete;

private:
    NSTextStorage &_storage;
};

void NSTextStorage::fixAttributesInRange(NSRange range) {
    fixFontAttributeInRange(range);
    fixParagraphStyleAttributeInRange(range);
    fixAttachmentAttributeInRange(range);
}

void NSTextStorage::ensureAttributesAreFixedInRange(NSRange range) { fixWhatIsUnfixed(range, fixedTogether); }

void NSTextStorage::fixWhatIsUnfixed(NSRange range, NSUInteger together) {
    if (_unfixedRanges.empty() || !fixesAttributesLazily())
        return;
    // From first to last, looked up anew each time: fixing can reach out for what else isn't fixed.
    NSUInteger location = range.location;
    for (;;) {
        const auto unfixed =
            std::partition_point(_unfixedRanges.begin(), _unfixedRanges.end(),
                                 [&](const NSRange &other) { return NSMaxRange(other) <= location; });
        if (unfixed == _unfixedRanges.end() || unfixed->location >= NSMaxRange(range))
            return;
        const NSUInteger start = std::max(location, unfixed->location);
        const NSRange fixed = NSIntersectionRange(*unfixed, {start / together * together, together});
        // Taken off first, so that fixing reads what stands there.
        removeUnfixedRange(fixed);
        const NSRange present = NSIntersectionRange(fixed, {0, length()});
        if (present.length > 0) {
            try {
                const Fixing fixing(*this);
                fixAttributesInRange(present);
            } catch (...) {
                invalidateAttributesInRange(present);
                throw;
            }
        }
        location = NSMaxRange(fixed);
    }
}

void NSTextStorage::prepareToReadAttributesInRange(NSRange range) const {
    // What a reader sees is the same before and after; only then is it written down.
    const_cast<NSTextStorage *>(this)->ensureAttributesAreFixedInRange(range);
}

void NSTextStorage::invalidateAttributesInRange(NSRange range) {
    range = NSIntersectionRange(range, {0, length()});
    if (range.length == 0)
        return;
    // All that it overlaps or touches become one.
    const auto first =
        std::partition_point(_unfixedRanges.begin(), _unfixedRanges.end(),
                             [&](const NSRange &other) { return NSMaxRange(other) < range.location; });
    auto last = first;
    while (last != _unfixedRanges.end() && last->location <= NSMaxRange(range))
        range = NSUnionRange(range, *last++);
    if (first == last) {
        _unfixedRanges.insert(first, range);
    } else {
        *first = range;
        _unfixedRanges.erase(first + 1, last);
    }
}

bool NSTextStorage::isUnfixed(NSUInteger index) const {
    const auto unfixed =
        std::partition_point(_unfixedRanges.begin(), _unfixedRanges.end(),
                             [&](const NSRange &other) { return NSMaxRange(other) <= index; });
    return unfixed != _unfixedRanges.end() && unfixed->location <= index;
}

void NSTextStorage::removeUnfixedRange(NSRange range) {
    const auto first =
        std::partition_point(_unfixedRanges.begin(), _unfixedRanges.end(),
                             [&](const NSRange &other) { return NSMaxRange(other) <= range.location; });
    if (first == _unfixedRanges.end() || range.length == 0)
        return;
    const NSUInteger end = NSMaxRange(range);
    auto last = first;
    NSRange before{0, 0};
    NSRange behind{0, 0};
    for (; last != _unfixedRanges.end() && last->location < end; ++last) {
        if (last->location < range.location)
            before = {last->location, range.location - last->location};
        if (NSMaxRange(*last) > end)
            behind = {end, NSMaxRange(*last) - end};
    }
    auto at = _unfixedRanges.erase(first, last);
    if (behind.length > 0)
        at = _unfixedRanges.insert(at, behind);
    if (before.length > 0)
        _unfixedRanges.insert(at, before);
}

void NSTextStorage::moveUnfixedRanges(NSRange range, NSInteger changeInLength) {
    if (_unfixedRanges.empty())
        return;
    removeUnfixedRange(range);
    const auto first =
        std::partition_point(_unfixedRanges.begin(), _unfixedRanges.end(),
                             [&](const NSRange &other) { return NSMaxRange(other) <= range.location; });
    const auto change = static_cast<NSUInteger>(changeInLength);
    auto moved = first;
    if (moved != _unfixedRanges.end() && moved->location < range.location) {
        // Text goes in between.
        const NSRange behind{range.location + change, NSMaxRange(*moved) - range.location};
        moved->length = range.location - moved->location;
        moved = _unfixedRanges.insert(moved + 1, behind) + 1;
    }
    for (; moved != _unfixedRanges.end(); ++moved)
        moved->location += change;
}

void NSTextStorage::fixFontAttributeInRange(NSRange /*range*/) {}

void NSTextStorage::fixParagraphStyleAttributeInRange(NSRange range) {
    const NSUInteger end = NSMaxRange(range);
    NSUInteger location = range.location;
    while (location < end) {
        const QVTextReader text = string();
        const NSUInteger stop = std::min(paragraphEnd(text, location), end);
        NSUInteger start = paragraphStart(text, location);
        // Out of reach, a place follows the one before it, as far as that is known.
        if (start == NSNotFound)
            start = isUnfixed(location - 1) ? location : location - 1;
        // Of the paragraph's first character, and of no other: one would lead to the next, up to the text's
        // beginning.
        if (start < location)
            fixWhatIsUnfixed({start, 1}, 1);
        const auto style = attribute(NSParagraphStyleAttributeName, start);
        enumerateAttribute(NSParagraphStyleAttributeName, {location, stop - location},
                           NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
                           [&](const NSAttributeValue *value, NSRange run, bool &) {
                               if (style && !(value != nullptr && *value == *style))
                                   addAttribute(NSParagraphStyleAttributeName, *style, run);
                               else if (!style && value != nullptr)
                                   removeAttribute(NSParagraphStyleAttributeName, run);
                           });
        location = stop;
    }
}

void NSTextStorage::fixAttachmentAttributeInRange(NSRange range) {
    enumerateAttribute(NSAttachmentAttributeName, range,
                       NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
                       [&](const NSAttributeValue *value, NSRange run, bool &) {
                           if (value == nullptr)
                               return;
                           for (NSUInteger index = run.location; index < NSMaxRange(run); ++index)
                               if (string().characterAtIndex(index) != attachmentCharacter)
                                   removeAttribute(NSAttachmentAttributeName, {index, 1});
                       });
}

} // namespace quorvane
