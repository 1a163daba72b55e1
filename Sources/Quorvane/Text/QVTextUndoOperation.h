#pragma once

#include "Platform/AppKit/NSTextStorage.h"
#include "Platform/Foundation/NSUndoManager.h"
#include "Quorvane/Text/QVTextView.h"

#include <optional>

namespace quorvane {

/// One step that an undo manager can take back: which ranges of a document it changed, and what was selected
/// before. Subclasses know what stood there, and put it back. A step keeps neither the storage nor the view
/// nor the manager alive. Ranges are those of the document behind the view. Main thread.
class QV_EXPORT QVTextUndoOperation : public NSObject {
public:
    ~QVTextUndoOperation() override;

    /// To be made before the text is changed. It is asserted that there are ranges, a storage and a manager;
    /// the view may be null. The selection, which may be null, is given as the view shows it.
    static std::shared_ptr<QVTextUndoOperation>
    initWithAffectedRanges(std::vector<NSRange> affectedRanges,
                           const std::shared_ptr<NSTextStorage> &textStorage,
                           const std::shared_ptr<QVTextView> &textView,
                           const std::optional<std::vector<NSRange>> &selectedRanges,
                           const std::shared_ptr<NSUndoManager> &undoManager);

    /// Where the old text stood, in the text before the step.
    const std::vector<NSRange> &affectedRanges() const { return _affectedRanges; }
    /// What to select again; nothing stands for the affected ranges.
    const std::optional<std::vector<NSRange>> &selectedRanges() const { return _selectedRanges; }

    // Null once they are gone.

    std::shared_ptr<NSTextStorage> textStorage() const { return _textStorage.lock(); }
    std::shared_ptr<QVTextView> textView() const { return _textView.lock(); }
    std::shared_ptr<NSUndoManager> undoManager() const { return _undoManager.lock(); }

    /// Puts the old text back, and registers the step that undoes this. Throws `NSInvalidArgumentException`
    /// here.
    virtual void undoRedo(NSTextStorage &textStorage);

    std::u16string_view className() const override { return u"QVTextUndoOperation"; }

protected:
    QVTextUndoOperation();
    void initialize(std::vector<NSRange> affectedRanges, const std::shared_ptr<NSTextStorage> &textStorage,
                    const std::shared_ptr<QVTextView> &textView,
                    const std::optional<std::vector<NSRange>> &selectedRanges,
                    const std::shared_ptr<NSUndoManager> &undoManager);
    /// Ranges as a view shows them, as those of the document.
    static std::vector<NSRange> backingRanges(const std::vector<NSRange> &displayRanges,
                                              const QVTextView *textView);

    std::vector<NSRange> _affectedRanges;

private:
    std::weak_ptr<NSTextStorage> _textStorage;
    std::weak_ptr<QVTextView> _textView;
    std::optional<std::vector<NSRange>> _selectedRanges;
    std::weak_ptr<NSUndoManager> _undoManager;
};

/// What an undo manager is to call on the storage to take the step back.
QV_EXPORT void qv_undoRedoOperation(NSTextStorage &textStorage, QVTextUndoOperation &operation);
/// Registers that call; it keeps the step.
QV_EXPORT void QVRegisterUndoOperation(const std::shared_ptr<QVTextUndoOperation> &operation,
                                       const std::shared_ptr<NSTextStorage> &onTextStorage,
                                       NSUndoManager &undoManager);

} // namespace quorvane
