#include "Quorvane/Text/QVUndoReplaceCharacters.h"

namespace quorvane {

QVUndoReplaceCharacters::QVUndoReplaceCharacters() = default;
QVUndoReplaceCharacters::~QVUndoReplaceCharacters() = default;

std::shared_ptr<QVUndoReplaceCharacters> QVUndoReplaceCharacters::initWithAffectedRanges(
    const std::vector<NSRange> & /*affectedRanges*/, const std::shared_ptr<NSTextStorage> & /*textStorage*/,
    const std::shared_ptr<QVTextView> & /*textView*/,
    const std::optional<std::vector<NSRange>> & /*selectedRanges*/,
    const std::shared_ptr<NSUndoManager> & /*undoManager*/) {
    refuseInitialization();
}

std::shared_ptr<QVUndoReplaceCharacters> QVUndoReplaceCharacters::initWithAffectedRanges(
    std::vector<NSRange> affectedRanges, std::vector<NSRange> replacementRanges,
    const std::shared_ptr<NSTextStorage> &textStorage, const std::shared_ptr<QVTextView> &textView,
    const std::optional<std::vector<NSRange>> &selectedRanges,
    const std::shared_ptr<NSUndoManager> &undoManager) {
    const std::shared_ptr<QVUndoReplaceCharacters> operation(new QVUndoReplaceCharacters);
    operation->initializeReplacement(std::move(affectedRanges), std::move(replacementRanges), textStorage,
                                     textView, selectedRanges, undoManager);
    return operation;
}

} // namespace quorvane
