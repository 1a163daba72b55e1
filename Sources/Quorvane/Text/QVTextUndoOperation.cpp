#include "Quorvane/Text/QVTextUndoOperation.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"

namespace quorvane {

QVTextUndoOperation::QVTextUndoOperation() = default;
QVTextUndoOperation::~QVTextUndoOperation() = default;

std::shared_ptr<QVTextUndoOperation> QVTextUndoOperation::initWithAffectedRanges(
    std::vector<NSRange> affectedRanges, const std::shared_ptr<NSTextStorage> &textStorage,
    const std::shared_ptr<QVTextView> &textView, const std::optional<std::vector<NSRange>> &selectedRanges,
    const std::shared_ptr<NSUndoManager> &undoManager) {
    QVParameterAssert(!affectedRanges.empty(), "affectedRanges.count > 0");
    const std::shared_ptr<QVTextUndoOperation> operation(new QVTextUndoOperation);
    operation->initialize(std::move(affectedRanges), textStorage, textView, selectedRanges, undoManager);
    return operation;
}

void QVTextUndoOperation::initialize(std::vector<NSRange> affectedRanges,
                                     const std::shared_ptr<NSTextStorage> &textStorage,
                                     const std::shared_ptr<QVTextView> &textView,
                                     const std::optional<std::vector<NSRange>> &selectedRanges,
                                     const std::shared_ptr<NSUndoManager> &undoManager) {
    QVParameterAssert(textStorage != nullptr, "textStorage != nil");
    QVParameterAssert(undoManager != nullptr, "undoManager != nil");
    _affectedRanges = std::move(affectedRanges);
    _textStorage = textStorage;
    _textView = textView;
    if (selectedRanges)
        _selectedRanges = backingRanges(*selectedRanges, textView.get());
    _undoManager = undoManager;
}

std::vector<NSRange> QVTextUndoOperation::backingRanges(const std::vector<NSRange> &displayRanges,
                                                        const QVTextView *textView) {
    auto converted = textView ? textView->convertDisplayRangesToBackingRanges(displayRanges) : std::nullopt;
    return std::move(converted).value_or(displayRanges);
}

void QVTextUndoOperation::undoRedo(NSTextStorage & /*textStorage*/) {
    throw NSException(NSInvalidArgumentException, u"Must be overridden by subclasses");
}

void qv_undoRedoOperation(NSTextStorage &textStorage, QVTextUndoOperation &operation) {
    operation.undoRedo(textStorage);
}

void QVRegisterUndoOperation(const std::shared_ptr<QVTextUndoOperation> &operation,
                             const std::shared_ptr<NSTextStorage> &onTextStorage,
                             NSUndoManager &undoManager) {
    undoManager.prepareWithInvocationTarget(onTextStorage, [operation](NSTextStorage &textStorage) {
        qv_undoRedoOperation(textStorage, *operation);
    });
}

} // namespace quorvane
