#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/Text/QVBackingStorageView.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVLineRunArray.h"
#include "Quorvane/Text/QVMutableRLEArray.h"

namespace quorvane {

// MARK: - Characters

NSAttributes QVConcreteTextStorage::attributesForTypingAtLocation(NSUInteger location) {
    const NSUInteger count = length();
    if (count == 0)
        return _defaultTextAttributes;
    // Not fixed: what highlighting sets is not touched by fixing.
    const NSAttributes neighbour = _contents->attributesAtIndex(location > 0 ? location - 1 : 0);
    if (!_typing.defaults.isIdenticalTo(_defaultTextAttributes) || _typing.neighbour != neighbour) {
        NSMutableAttributes attributes(_defaultTextAttributes);
        for (const NSAttributeKey key : QVParse::attributesAffectedBySyntaxHighlighting())
            if (const NSAttributeValue *const value = neighbour.valueForKey(key))
                attributes.set(key, *value);
        _typing = {neighbour, _defaultTextAttributes, attributes.attributes()};
        // The very object, for what goes on looking like the character before it is compared with it all
        // along.
        if (_typing.attributes == neighbour)
            _typing.attributes = neighbour;
    } else if (!_typing.neighbour.isIdenticalTo(neighbour)) {
        // Each round gives what it colours other objects, most of them with the same contents.
        if (_typing.attributes.isIdenticalTo(_typing.neighbour))
            _typing.attributes = neighbour;
        _typing.neighbour = neighbour;
    }
    return _typing.attributes;
}

namespace {

/// A few characters of one look, without an object of their own on the heap: what a key puts in. A copy, for
/// what is put in may be a piece of the text that it goes to.
class TypedString final : public NSAttributedString {
public:
    static constexpr std::size_t mostUnits = 16;

    TypedString(std::u16string_view string, NSAttributes attributes)
        : _length(string.copy(_units.data(), mostUnits)), _attributes(std::move(attributes)) {}

    NSUInteger length() const override { return _length; }
    QVTextReader string() const override { return view(); }
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
        checkIndex(index);
        if (effectiveRange != nullptr)
            *effectiveRange = {0, _length};
        return _attributes;
    }

    std::u16string_view view() const { return {_units.data(), _length}; }
    const NSAttributes &attributes() const { return _attributes; }

private:
    std::array<char16_t, mostUnits> _units;
    const NSUInteger _length;
    const NSAttributes _attributes;
};

} // namespace

void QVConcreteTextStorage::replaceCharactersInRange(NSRange range, std::u16string_view withString) {
    checkRange(range);
    if (withString.size() > TypedString::mostUnits) {
        replaceCharacters(range, *NSAttributedString::initWithString(
                                     withString, attributesForTypingAtLocation(range.location)));
        return;
    }
    const TypedString typed(withString, attributesForTypingAtLocation(range.location));
    replaceCharacters(range, typed, [&] {
        _contents->replaceCharactersInRangeWithAttributes(range, typed.view(), typed.attributes());
    });
}

void QVConcreteTextStorage::replaceCharactersInRange(NSRange range,
                                                     const NSAttributedString &withAttributedString) {
    checkRange(range);
    const auto replacement = NSMutableAttributedString::initWithAttributedString(withAttributedString);
    completeAttributes(*replacement);
    replaceCharacters(range, *replacement);
}

void QVConcreteTextStorage::replaceCharacters(NSRange range, const NSAttributedString &replacement) {
    replaceCharacters(range, replacement, [&] { _contents->replaceCharactersInRange(range, replacement); });
}

void QVConcreteTextStorage::completeAttributes(NSMutableAttributedString &attributedString) const {
    attributedString.changeAttributesInRange(
        {0, attributedString.length()}, [this](const NSAttributes &attributes) {
            const bool hasFont = attributes.containsKey(NSFontAttributeName);
            if (hasFont && attributes.containsKey(NSForegroundColorAttributeName))
                return attributes;
            NSMutableAttributes completed(attributes);
            for (const NSAttributeKey key : {NSFontAttributeName.key(), NSForegroundColorAttributeName.key()})
                if (const NSAttributeValue *const value = _defaultTextAttributes.valueForKey(key);
                    value != nullptr && !completed.containsKey(key))
                    completed.set(key, *value);
            return completed.attributes();
        });
}

void QVConcreteTextStorage::replaceCharacters(NSRange range, const NSAttributedString &replacement,
                                              QVBlock<void()> changeContents) {
    performBlockWithFoldingTextStorages([&](QVBackingStorageView &view) {
        view.backingStorageWillReplaceCharactersInRange(range, replacement);
    });
    willChange(NSTextStorageEditedAttributes | NSTextStorageEditedCharacters, range, &replacement);

    const NSUInteger count = replacement.length();
    changeContents();
    _syntaxHighlightingAttributes->replaceObjectsInRange(range, NSAttributes(), count);
    _extendedAttributes->replaceObjectsInRange(range, NSAttributes(), count);
    const std::shared_ptr<QVSyntax> syntax =
        range.location < _syntaxes->count() ? _syntaxes->objectAtIndex(range.location) : _syntax;
    _syntaxes->replaceObjectsInRange(range, syntax, count);

    performBlockWithFoldingTextStorages([&](QVBackingStorageView &view) {
        view.backingStorageDidReplaceCharactersInRange(range, replacement);
    });
    edited(NSTextStorageEditedAttributes | NSTextStorageEditedCharacters, range,
           static_cast<NSInteger>(count) - static_cast<NSInteger>(range.length));
}

void QVConcreteTextStorage::clearContents() {
    if (_parse)
        _parse->cancelParsing();
    setParse(nullptr);
    forgetRounds();
    const NSRange range{0, length()};
    beginEditing();
    _contents->deleteCharactersInRange(range);
    performBlockWithFoldingTextStorages(
        [](QVBackingStorageView &view) { view.backingStorageDidClearContents(); });
    for (Attributes *const attributes : {_extendedAttributes.get(), _syntaxHighlightingAttributes.get()})
        attributes->deleteObjectsInRange(range);
    _syntaxes->deleteObjectsInRange(range);
    edited(NSTextStorageEditedAttributes | NSTextStorageEditedCharacters, range,
           -static_cast<NSInteger>(range.length));
    endEditing();
}

// MARK: - Attributes

template <typename Change, typename Tell>
void QVConcreteTextStorage::changeAttributes(NSRange range, Change change, Tell tell) {
    checkRange(range);
    // What fixing puts right, nobody has seen otherwise: it is no edit.
    const bool isEdit = !isEnsuringAttributes();
    if (isEdit)
        willChange(NSTextStorageEditedAttributes, range, nullptr);
    change();
    performBlockWithFoldingTextStorages(tell);
    if (isEdit)
        edited(NSTextStorageEditedAttributes, range, 0);
}

void QVConcreteTextStorage::setAttributes(const NSAttributes &attributes, NSRange range) {
    // Copies, here and below: the caller's may be those of a run that goes.
    changeAttributes(
        range, [&, attributes] { _contents->setAttributes(attributes, range); },
        [&, attributes](QVBackingStorageView &view) {
            view.backingStorageDidSetAttributes(attributes, range);
        });
}

void QVConcreteTextStorage::addAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) {
    changeAttributes(
        range, [&] { _contents->addAttribute(key, value, range); },
        [&](QVBackingStorageView &view) { view.backingStorageDidAddAttribute(key, value, range); });
}

void QVConcreteTextStorage::addAttributes(const NSAttributes &attributes, NSRange range) {
    changeAttributes(
        range, [&, attributes] { _contents->addAttributes(attributes, range); },
        [&, attributes](QVBackingStorageView &view) {
            view.backingStorageDidAddAttributes(attributes, range);
        });
}

void QVConcreteTextStorage::removeAttribute(NSAttributeKey key, NSRange range) {
    changeAttributes(
        range, [&] { _contents->removeAttribute(key, range); },
        [&](QVBackingStorageView &view) { view.backingStorageDidRemoveAttribute(key, range); });
}

// MARK: - The edit bracket

void QVConcreteTextStorage::beginEditing() {
    performBlockWithFoldingTextStorages(
        [](QVBackingStorageView &view) { view.backingStorageDidBeginEditing(); });
    QVTextStorage::beginEditing();
    _contents->beginEditing();
}

void QVConcreteTextStorage::endEditing() {
    _contents->endEditing();
    QVTextStorage::endEditing();
    performBlockWithFoldingTextStorages(
        [](QVBackingStorageView &view) { view.backingStorageDidEndEditing(); });
}

namespace {

/// The part of a text, without copying it.
QVTextReader partOfText(QVTextReader text, NSRange range) {
    if (range.length == 0)
        return {};
    const std::u16string_view first = text.pieceAtIndex(range.location).substr(0, range.length);
    if (first.size() == range.length)
        return first;
    return {first, text.pieceAtIndex(range.location + first.size()).substr(0, range.length - first.size())};
}

} // namespace

void QVConcreteTextStorage::processEditing() {
    struct Processing {
        bool &flag;
        ~Processing() { flag = false; }
    } const processing{_processing};
    if (const Edit edit = unprocessedEdit(); !edit.isNone()) {
        // From here on the lines and the rounds know of it.
        _processing = true;
        _lines->replaceCharactersInRange({edit.range.location, edit.oldLength()},
                                         partOfText(string(), edit.range));
        if (!_rangesToRestyle.isEmpty())
            _rangesToRestyle.shiftIndexesStartingAtIndex(edit.oldEnd(), edit.changeInLength);
        for (const std::shared_ptr<Edit> &unseen : _editsSinceStyling)
            unseen->coalesceWithEdit(edit.range, edit.changeInLength);
        if (isParsingEnabled()) {
            if (std::exchange(_reparsesWholeText, false))
                reparseRange({0, length()}, static_cast<NSInteger>(length()));
            else if (isParseUpdating())
                _pendingEdit.coalesceWithEdit(edit.range, edit.changeInLength);
            else
                reparseRange(edit.range, edit.changeInLength);
            if (std::exchange(_reparsesPendingEdit, false))
                reparsePendingEdit();
        }
    }
    QVTextStorage::processEditing();
}

} // namespace quorvane
