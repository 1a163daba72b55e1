#pragma once

#include "Quorvane/Text/QVUndoReplacement.h"

namespace quorvane {

/// The step that grows as its user types on: a change that goes on where the last one ended, with as many
/// cursors, is taken into it, so that undoing once takes back the whole run of typing.
class QV_EXPORT QVUndoTyping final : public QVUndoReplacement {
public:
    ~QVUndoTyping() override;

    /// Throws `NSInvalidArgumentException`: a step needs to know where the new text will stand.
    [[noreturn]] static std::shared_ptr<QVUndoTyping>
    initWithAffectedRanges(const std::vector<NSRange> &affectedRanges,
                           const std::shared_ptr<NSTextStorage> &textStorage,
                           const std::shared_ptr<QVTextView> &textView,
                           const std::optional<std::vector<NSRange>> &selectedRanges,
                           const std::shared_ptr<NSUndoManager> &undoManager);
    /// As in the base; it is also asserted that there are as many replacement ranges as affected ones. To be
    /// made before the text is changed.
    static std::shared_ptr<QVUndoTyping>
    initWithAffectedRanges(std::vector<NSRange> affectedRanges, std::vector<NSRange> replacementRanges,
                           const std::shared_ptr<NSTextStorage> &textStorage,
                           const std::shared_ptr<QVTextView> &textView,
                           const std::optional<std::vector<NSRange>> &selectedRanges,
                           const std::shared_ptr<NSUndoManager> &undoManager);

    /// Takes another change into the step, before it is made, and answers whether it did; if not, the step
    /// is as it was, and the change is a step of its own. The affected ranges are those of the text as it is,
    /// in order and apart from each other; the replacement ranges those of the text behind the change. Each
    /// affected range has to end where the step's text ends and to hold the selection, as the view shows it.
    /// Text in front of what was typed goes into the step where it is deleted, but not where other text takes
    /// its place.
    bool coalesceAffectedRanges(const std::vector<NSRange> &affectedRanges,
                                const std::vector<NSRange> &replacementRanges,
                                const std::vector<NSRange> &selectedRanges);

    /// Ends the view's run of typing first.
    void undoRedo(NSTextStorage &textStorage) override;

    std::u16string_view className() const override { return u"QVUndoTyping"; }

private:
    QVUndoTyping();
};

} // namespace quorvane
