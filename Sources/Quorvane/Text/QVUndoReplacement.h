#pragma once

#include "Quorvane/Text/QVTextUndoOperation.h"

namespace quorvane {

/// What `QVUndoReplaceCharacters` and `QVUndoTyping` have in common: for each affected range its old text,
/// and where the new text stands now.
class QV_EXPORT QVUndoReplacement : public QVTextUndoOperation {
public:
    ~QVUndoReplacement() override;

    /// Where the new text stands, in the text behind the step; one for each affected range.
    const std::vector<NSRange> &replacementRanges() const { return _replacementRanges; }
    /// The old text of each range, with its attributes.
    const std::vector<std::shared_ptr<const NSAttributedString>> &attributedStrings() const {
        return _attributedStrings;
    }

    /// In a group of the manager's: asks the view, registers the way back, which is always a
    /// `QVUndoReplaceCharacters`, replaces the text in one bracket of edits, and selects what was selected.
    /// Where the view refuses, nothing is changed, and a step that does nothing is registered, so that
    /// undoing and redoing stay in step.
    void undoRedo(NSTextStorage &textStorage) override;

protected:
    QVUndoReplacement();
    [[noreturn]] static void refuseInitialization();
    /// Takes the old text, so that it must be called before it changes.
    void initializeReplacement(std::vector<NSRange> affectedRanges, std::vector<NSRange> replacementRanges,
                               const std::shared_ptr<NSTextStorage> &textStorage,
                               const std::shared_ptr<QVTextView> &textView,
                               const std::optional<std::vector<NSRange>> &selectedRanges,
                               const std::shared_ptr<NSUndoManager> &undoManager);

    std::vector<NSRange> _replacementRanges;
    std::vector<std::shared_ptr<const NSAttributedString>> _attributedStrings;

private:
    /// Without a manager there is no way back to register.
    void perform(NSTextStorage &textStorage, const std::shared_ptr<NSUndoManager> &manager);
    void replaceText(NSTextStorage &textStorage) const;
    void restoreSelection(QVTextView &textView) const;
};

} // namespace quorvane
