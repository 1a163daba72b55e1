#include "Platform/Foundation/NSAssertionHandler.h"
#include "Quorvane/Categories/NSRange+QuorvaneAdditions.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVLineRunArray.h"
#include "Quorvane/Text/QVTextStorageStyling.h"

namespace quorvane {

namespace {

/// No pattern runs on longer lines: what stands there was written by programs, and would hold up the parse.
constexpr NSUInteger longestParsedLine = 10000;

} // namespace

// MARK: - Edits that the parse has not seen

void QVConcreteTextStorage::Edit::coalesceWithEdit(NSRange editedRange, NSInteger change) {
    QVRangeCoalesceWithEdit(&range, &changeInLength, editedRange, change);
}

QVConcreteTextStorage::Edit QVConcreteTextStorage::unprocessedEdit() const {
    if (_processing || (editedMask() & NSTextStorageEditedCharacters) == 0 ||
        editedRange().location == NSNotFound)
        return {};
    return {editedRange(), changeInLength()};
}

// MARK: - Rounds

void QVConcreteTextStorage::reparseRange(NSRange range, NSInteger changeInLength) {
    if (!_parse)
        return;
    _parseUpdating = true;
    const NSRange replaced{range.location, range.length - static_cast<NSUInteger>(changeInLength)};
    _parse->performWritingBlock([parse = _parse, link = _link, replaced,
                                 text = _contents->string().substringWithRange(range),
                                 defaults = stylingDefaults()] {
        const NSRange parsed = parse->replaceCharactersInRange(replaced, text, nullptr);
        // With a parse that is cancelled but still the storage's own, this ends all rounds: `parseUpdating`
        // stays set until the syntax is set anew.
        if (parsed.location == NSNotFound || parse->isCancelled() ||
            link->parse.load(std::memory_order_relaxed) != parse.get())
            return;
        const auto styling = QVStylingForRange(*parse, parsed, defaults);
        dispatch_async(dispatch_get_main_queue(), [parse, link, parsed, styling] {
            const auto storage = link->lockedStorage();
            if (!storage || storage->_parse != parse)
                return;
            storage->didFinishStylingRange(parsed, styling.get(), storage->_pendingEdit);
            // Who was told of it may have put another parse in its place.
            if (storage->_parse == parse)
                storage->didFinishReparsing(parsed);
        });
        // The colours are on their way.
        parse->finishDeferredWork();
    });
}

void QVConcreteTextStorage::didFinishReparsing(NSRange range) {
    _parseUpdating = false;
    if (!_pendingEdit.isNone()) {
        _reparseRangesToInvalidate.addIndexesInRange(range);
        // In an editing bracket the text is ahead of what is pending; its end starts the round.
        if (unprocessedEdit().isNone())
            reparsePendingEdit();
        else
            _parseUpdating = _reparsesPendingEdit = true;
        return;
    }
    std::vector<NSRange> ranges{range};
    if (!_reparseRangesToInvalidate.isEmpty()) {
        _reparseRangesToInvalidate.addIndexesInRange(range);
        ranges = _reparseRangesToInvalidate.ranges();
        _reparseRangesToInvalidate.removeAllIndexes();
    }
    for (const NSRange &parsed : ranges)
        QVAssert(NSMaxRange(parsed) <= _lines->length(),
                 u"Parsed range exceeds the bounds of the text storage after all edits have been handled");
    restyleCutRanges();
    postNotification(QVTextStorageDidUpdateParseNotification, std::move(ranges));
}

void QVConcreteTextStorage::reparsePendingEdit() {
    const Edit edit = std::exchange(_pendingEdit, Edit());
    _reparseRangesToInvalidate.shiftIndexesStartingAtIndex(edit.oldEnd(), edit.changeInLength);
    reparseRange(edit.range, edit.changeInLength);
}

void QVConcreteTextStorage::forgetRounds() {
    _parseUpdating = false;
    _reparsesPendingEdit = false;
    _reparsesWholeText = false;
    _pendingEdit = {};
    _reparseRangesToInvalidate.removeAllIndexes();
    _rangesToRestyle.removeAllIndexes();
}

// MARK: - Parsing on and off

void QVConcreteTextStorage::setParse(std::shared_ptr<QVParse> parse) {
    willChangeValueForKey(u"parse");
    _parse = std::move(parse);
    _link->parse.store(_parse.get(), std::memory_order_relaxed);
    didChangeValueForKey(u"parse");
}

void QVConcreteTextStorage::didEnableParsing() {
    if (!_parsingEnabled || !_syntax)
        return;
    const auto parse = QVParse::initWithSyntax(_syntax, length(), QVParsePrivateQueueConcurrencyType);
    parse->setTabWidth(_tabWidth);
    parse->setMaximumLineLength(longestParsedLine);
    parse->setDelegate(_parseDelegate.lock());
    setParse(parse);
    fillSyntaxes();
    // In the middle of an editing bracket its end starts the round: the text as it stands now holds edits
    // that are still to be reported.
    if (unprocessedEdit().isNone())
        reparseRange({0, length()}, static_cast<NSInteger>(length()));
    else
        _reparsesWholeText = true;
}

void QVConcreteTextStorage::didDisableParsing() {
    if (_parse)
        _parse->cancelParsing();
    setParse(nullptr);
    forgetRounds();
    fillSyntaxes();
    const NSRange range{0, length()};
    resetStylingAttributesInRange(range);
    postNotification(QVTextStorageDidUpdateSyntaxHighlightingNotification, {range});
}

void QVConcreteTextStorage::postNotification(const char16_t *name, std::vector<NSRange> ranges) {
    NSNotificationCenter::defaultCenter().postNotification(
        {name, this, {{QVTextStorageUpdatedRangesKey, std::move(ranges)}}});
}

} // namespace quorvane
