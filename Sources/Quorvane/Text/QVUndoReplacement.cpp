#include "Quorvane/Text/QVUndoReplacement.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Quorvane/Text/QVUndoReplaceCharacters.h"

namespace quorvane {

QVUndoReplacement::QVUndoReplacement() = default;
QVUndoReplacement::~QVUndoReplacement() = default;

void QVUndoReplacement::refuseInitialization() {
    throw NSException(NSInvalidArgumentException,
                      u"Must be initialized with "
                      u"-initWithAffectedRanges:replacementRanges:textStorage:textView:selectedRanges:"
                      u"undoManager:");
}

void QVUndoReplacement::initializeReplacement(std::vector<NSRange> affectedRanges,
                                              std::vector<NSRange> replacementRanges,
                                              const std::shared_ptr<NSTextStorage> &textStorage,
                                              const std::shared_ptr<QVTextView> &textView,
                                              const std::optional<std::vector<NSRange>> &selectedRanges,
                                              const std::shared_ptr<NSUndoManager> &undoManager) {
    QVParameterAssert(affectedRanges.size() == replacementRanges.size(),
                      "affectedRanges.count == replacementRanges.count");
    QVParameterAssert(!affectedRanges.empty(), "affectedRanges.count > 0");
    initialize(std::move(affectedRanges), textStorage, textView, selectedRanges, undoManager);
    _replacementRanges = std::move(replacementRanges);
    if (textStorage)
        for (const NSRange range : _affectedRanges)
            _attributedStrings.push_back(textStorage->attributedSubstringFromRange(range));
}

void QVUndoReplacement::replaceText(NSTextStorage &textStorage) const {
    textStorage.beginEditing();
    try {
        NSUInteger delta = 0;
        const std::size_t count = std::min(_replacementRanges.size(), _attributedStrings.size());
        for (std::size_t index = 0; index < count; ++index) {
            const NSRange range = _replacementRanges[index];
            const NSAttributedString &string = *_attributedStrings[index];
            static_cast<NSMutableAttributedString &>(textStorage)
                .replaceCharactersInRange({range.location + delta, range.length}, string);
            delta += string.length() - range.length;
        }
    } catch (...) {
        textStorage.endEditing();
        throw;
    }
    textStorage.endEditing();
}

void QVUndoReplacement::restoreSelection(QVTextView &textView) const {
    const std::vector<NSRange> &selected = selectedRanges() ? *selectedRanges() : _affectedRanges;
    const auto shown = textView.convertBackingRangesToDisplayRanges(selected).value_or(selected);
    textView.setSelectedRanges(shown);
    if (!shown.empty())
        textView.scrollRangeToVisible(shown.front());
}

void QVUndoReplacement::undoRedo(NSTextStorage &textStorage) {
    const auto manager = undoManager();
    if (!manager)
        return perform(textStorage, nullptr);
    manager->beginUndoGrouping();
    try {
        perform(textStorage, manager);
    } catch (...) {
        manager->endUndoGrouping();
        throw;
    }
    manager->endUndoGrouping();
}

void QVUndoReplacement::perform(NSTextStorage &textStorage, const std::shared_ptr<NSUndoManager> &manager) {
    const auto view = textView();
    std::vector<NSString> strings;
    for (const auto &string : _attributedStrings)
        strings.push_back(string->string().substringWithRange({0, string->length()}));
    const bool changes = !_replacementRanges.empty() &&
                         (!view || view->shouldChangeTextInBackingRanges(_replacementRanges, strings));

    if (manager) {
        const auto storage = std::static_pointer_cast<NSTextStorage>(textStorage.shared_from_this());
        const std::shared_ptr<QVUndoReplaceCharacters> back(new QVUndoReplaceCharacters);
        if (changes)
            back->initializeReplacement(_replacementRanges, _affectedRanges, storage, view, std::nullopt,
                                        manager);
        else
            back->initialize({}, storage, view, std::nullopt, manager);
        QVRegisterUndoOperation(back, storage, *manager);
    }
    if (!changes)
        return;
    replaceText(textStorage);
    if (view) {
        view->didChangeText();
        restoreSelection(*view);
    }
}

} // namespace quorvane
