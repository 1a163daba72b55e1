#include "Quorvane/Text/QVUndoTyping.h"

#include "Platform/Foundation/NSAssertionHandler.h"

namespace quorvane {

QVUndoTyping::QVUndoTyping() = default;
QVUndoTyping::~QVUndoTyping() = default;

std::shared_ptr<QVUndoTyping>
QVUndoTyping::initWithAffectedRanges(const std::vector<NSRange> & /*affectedRanges*/,
                                     const std::shared_ptr<NSTextStorage> & /*textStorage*/,
                                     const std::shared_ptr<QVTextView> & /*textView*/,
                                     const std::optional<std::vector<NSRange>> & /*selectedRanges*/,
                                     const std::shared_ptr<NSUndoManager> & /*undoManager*/) {
    refuseInitialization();
}

std::shared_ptr<QVUndoTyping> QVUndoTyping::initWithAffectedRanges(
    std::vector<NSRange> affectedRanges, std::vector<NSRange> replacementRanges,
    const std::shared_ptr<NSTextStorage> &textStorage, const std::shared_ptr<QVTextView> &textView,
    const std::optional<std::vector<NSRange>> &selectedRanges,
    const std::shared_ptr<NSUndoManager> &undoManager) {
    const std::shared_ptr<QVUndoTyping> operation(new QVUndoTyping);
    operation->initializeReplacement(std::move(affectedRanges), std::move(replacementRanges), textStorage,
                                     textView, selectedRanges, undoManager);
    return operation;
}

bool QVUndoTyping::coalesceAffectedRanges(const std::vector<NSRange> &affectedRanges,
                                          const std::vector<NSRange> &replacementRanges,
                                          const std::vector<NSRange> &selectedRanges) {
    QVParameterAssert(affectedRanges.size() == replacementRanges.size(),
                      "affectedRanges.count == replacementRanges.count");
    const auto storage = textStorage();
    const std::vector<NSRange> selections = backingRanges(selectedRanges, textView().get());
    const std::size_t count = affectedRanges.size();
    if (!storage || replacementRanges.size() != count || selections.size() != count ||
        _affectedRanges.size() != count)
        return false;

    auto oldRanges = _affectedRanges;
    auto newRanges = _replacementRanges;
    auto oldTexts = _attributedStrings;
    // By how much the changes at the cursors before have moved what follows; negative values wrap around.
    NSUInteger offset = 0;
    for (std::size_t index = 0; index < count; ++index) {
        const NSRange affected = affectedRanges[index], replacement = replacementRanges[index];
        const NSRange selection = selections[index], typed = newRanges[index];
        if (selection.location < affected.location || affected.location + offset != replacement.location ||
            NSMaxRange(selection) > NSMaxRange(affected) || NSMaxRange(affected) != NSMaxRange(typed))
            return false;

        NSUInteger location = typed.location + offset;
        if (affected.length > typed.length) {
            // Text from before the step. Only what is deleted can be told apart from what was typed.
            if (replacement.length != 0)
                return false;
            const NSUInteger taken = affected.length - typed.length;
            const auto text = NSMutableAttributedString::initWithAttributedString(
                *storage->attributedSubstringFromRange({affected.location, taken}));
            text->appendAttributedString(*oldTexts[index]);
            oldTexts[index] = text;
            oldRanges[index] = {oldRanges[index].location - taken, oldRanges[index].length + taken};
            location -= taken;
            newRanges[index] = {location, 0};
        } else {
            newRanges[index] = {location, typed.length - affected.length + replacement.length};
        }
        offset += replacement.length - affected.length;
    }
    _affectedRanges = std::move(oldRanges);
    _replacementRanges = std::move(newRanges);
    _attributedStrings = std::move(oldTexts);
    return true;
}

void QVUndoTyping::undoRedo(NSTextStorage &textStorage) {
    if (const auto view = textView())
        view->breakUndoCoalescing();
    QVUndoReplacement::undoRedo(textStorage);
}

} // namespace quorvane
