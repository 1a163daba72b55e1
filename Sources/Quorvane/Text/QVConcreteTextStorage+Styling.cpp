#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Text/QVBackingStorageView.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVTextStorageStyling.h"

namespace quorvane {

QVStylingDefaults QVConcreteTextStorage::stylingDefaults() const {
    return {_defaultTextAttributes, _defaultSyntaxHighlightingAttributes};
}

// MARK: - Asking for colours

void QVConcreteTextStorage::invalidateStylingInRange(NSRange range) { updateStylingInRange(range); }

NSRange QVConcreteTextStorage::rangeBeforeEdit(NSRange range, const Edit &edit) {
    if (edit.isNone())
        return range;
    const auto change = static_cast<NSUInteger>(edit.changeInLength);
    const NSUInteger start = range.location <= edit.range.location ? range.location
                             : range.location >= edit.end()        ? range.location - change
                                                                   : edit.range.location;
    const NSUInteger rangeEnd = NSMaxRange(range);
    const NSUInteger end = rangeEnd >= edit.end()            ? rangeEnd - change
                           : rangeEnd <= edit.range.location ? rangeEnd
                                                             : edit.oldEnd();
    return {start, end - start};
}

void QVConcreteTextStorage::updateStylingInRange(NSRange range) {
    if (!_parse) {
        didFinishStylingRange(range, nullptr, Edit());
        return;
    }
    // The parse knows the text without what is pending.
    const NSRange known = rangeBeforeEdit(rangeBeforeEdit(range, unprocessedEdit()), _pendingEdit);
    const auto unseen = std::make_shared<Edit>(_pendingEdit);
    _editsSinceStyling.push_back(unseen);
    _parse->performReadingBlock([parse = _parse, link = _link, known, unseen, defaults = stylingDefaults()] {
        const auto styling = QVStylingForRange(*parse, known, defaults);
        dispatch_async(dispatch_get_main_queue(), [parse, link, known, unseen, styling] {
            const auto storage = link->lockedStorage();
            if (!storage)
                return;
            std::erase(storage->_editsSinceStyling, unseen);
            if (storage->_parse == parse)
                storage->didFinishStylingRange(known, styling.get(), *unseen);
        });
    });
}

void QVConcreteTextStorage::resolvedStylesDidChange() { invalidateStylingInRange({0, length()}); }

void QVConcreteTextStorage::restyleCutRanges() {
    const NSIndexSet indexes = std::exchange(_rangesToRestyle, NSIndexSet());
    for (const NSRange &range : indexes.ranges())
        updateStylingInRange(range);
}

// MARK: - Taking them in

void QVConcreteTextStorage::didFinishStylingRange(NSRange range, QVStyling *styling, const Edit &unseenEdit) {
    Edit edit = unseenEdit;
    if (const Edit inBracket = unprocessedEdit(); !inBracket.isNone())
        edit.coalesceWithEdit(inBracket.range, inBracket.changeInLength);
    if (edit.isNone()) {
        applyStylingAttributesToRange(range, styling, 0);
        return;
    }
    const auto location = static_cast<NSInteger>(range.location);
    const auto movedLocation = location + edit.changeInLength;
    const auto movedEnd = static_cast<NSInteger>(NSMaxRange(range)) + edit.changeInLength;
    const auto editEnd = static_cast<NSInteger>(edit.end());
    if (editEnd <= movedLocation) {
        applyStylingAttributesToRange({static_cast<NSUInteger>(movedLocation), range.length}, styling, 0);
    } else if (edit.range.location < NSMaxRange(range)) {
        const NSUInteger first =
            edit.range.location > range.location ? edit.range.location - range.location : 0;
        if (first > 0)
            applyStylingAttributesToRange({range.location, first}, styling, 0);
        if (movedEnd > editEnd) {
            const NSRange second{edit.end(), static_cast<NSUInteger>(movedEnd - editEnd)};
            applyStylingAttributesToRange(second, styling, first);
            // Where text went away, the slots behind it are taken from too far in front; the reparse of the
            // edit need not reach as far as they do.
            if (edit.oldLength() > 0)
                restyleRangeOnceParsed(second);
        }
    } else {
        applyStylingAttributesToRange(range, styling, 0);
    }
}

void QVConcreteTextStorage::restyleRangeOnceParsed(NSRange range) {
    const NSRange present = NSIntersectionRange(range, {0, length()});
    if (present.length == 0)
        return;
    if (_parseUpdating || !unprocessedEdit().isNone())
        _rangesToRestyle.addIndexesInRange(present);
    else
        updateStylingInRange(present);
}

void QVConcreteTextStorage::applyStylingAttributesToRange(NSRange range, QVStyling *styling,
                                                          NSUInteger fromIndex) {
    range = NSIntersectionRange(range, {0, length()});
    if (range.length == 0)
        return;
    beginEditing();
    const NSRange from{fromIndex, range.length};
    if (styling != nullptr && range.length == length() && styling->attributes->count() == length()) {
        // A large document's colours are not worth a copy.
        std::swap(_syntaxHighlightingAttributes, styling->attributes);
        std::swap(_syntaxes, styling->syntaxes);
        resetFontsInRange(range);
    } else {
        resetStylingAttributesInRange(range);
        if (styling != nullptr) {
            _syntaxHighlightingAttributes->replaceObjectsInRange(range, *styling->attributes, from);
            _syntaxes->replaceObjectsInRange(range, *styling->syntaxes, from);
        }
    }
    if (styling != nullptr) {
        bool changesFonts = false;
        styling->fonts.enumerateObjectsInRange(from, [&](const CTFontRef &font, NSRange run, bool &) {
            if (!font)
                return;
            setFont(font, {range.location + run.location - fromIndex, run.length});
            changesFonts = true;
        });
        if (changesFonts)
            edited(NSTextStorageEditedAttributes, range, 0);
    }
    endEditing();
    postNotification(QVTextStorageDidUpdateSyntaxHighlightingNotification, {range});
}

void QVConcreteTextStorage::setFont(const NSAttributeValue &font, NSRange range) {
    _contents->addAttribute(NSFontAttributeName, font, range);
    performBlockWithFoldingTextStorages([&](QVBackingStorageView &view) {
        view.backingStorageDidAddAttribute(NSFontAttributeName, font, range);
    });
}

void QVConcreteTextStorage::fillSyntaxes() {
    _syntaxes->replaceObjectsInRange({0, _syntaxes->count()}, _syntax, _syntaxes->count());
}

void QVConcreteTextStorage::resetStylingAttributesInRange(NSRange range) {
    _syntaxHighlightingAttributes->replaceObjectsInRange(range, _defaultSyntaxHighlightingAttributes,
                                                         range.length);
    _syntaxes->replaceObjectsInRange(range, _syntax, range.length);
    resetFontsInRange(range);
}

void QVConcreteTextStorage::resetFontsInRange(NSRange range) {
    // A copy, which keeps the font while views are told.
    const NSAttributes defaults = _defaultTextAttributes;
    const NSAttributeValue *const defaultFont = defaults.valueForKey(NSFontAttributeName);
    if (defaultFont == nullptr)
        return;
    beginEditing();
    bool changesFonts = false;
    _contents->enumerateAttribute(NSFontAttributeName, range,
                                  NSAttributedStringEnumerationLongestEffectiveRangeNotRequired,
                                  [&](const NSAttributeValue *font, NSRange run, bool &) {
                                      if (font != nullptr && *font == *defaultFont)
                                          return;
                                      setFont(*defaultFont, run);
                                      changesFonts = true;
                                  });
    if (changesFonts)
        edited(NSTextStorageEditedAttributes, range, 0);
    endEditing();
}

} // namespace quorvane
