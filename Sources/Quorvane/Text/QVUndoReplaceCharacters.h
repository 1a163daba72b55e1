#pragma once

#include "Quorvane/Text/QVUndoReplacement.h"

namespace quorvane {

/// The plain step: some ranges were replaced at once. Redoing any step is one of these.
class QV_EXPORT QVUndoReplaceCharacters final : public QVUndoReplacement {
public:
    ~QVUndoReplaceCharacters() override;

    /// Throws `NSInvalidArgumentException`: a step needs to know where the new text will stand.
    [[noreturn]] static std::shared_ptr<QVUndoReplaceCharacters>
    initWithAffectedRanges(const std::vector<NSRange> &affectedRanges,
                           const std::shared_ptr<NSTextStorage> &textStorage,
                           const std::shared_ptr<QVTextView> &textView,
                           const std::optional<std::vector<NSRange>> &selectedRanges,
                           const std::shared_ptr<NSUndoManager> &undoManager);
    /// As in the base; it is also asserted that there are as many replacement ranges as affected ones. To be
    /// made before the text is changed.
    static std::shared_ptr<QVUndoReplaceCharacters>
    initWithAffectedRanges(std::vector<NSRange> affectedRanges, std::vector<NSRange> replacementRanges,
                           const std::shared_ptr<NSTextStorage> &textStorage,
                           const std::shared_ptr<QVTextView> &textView,
                           const std::optional<std::vector<NSRange>> &selectedRanges,
                           const std::shared_ptr<NSUndoManager> &undoManager);

    std::u16string_view className() const override { return u"QVUndoReplaceCharacters"; }

private:
    friend class QVUndoReplacement;
    QVUndoReplaceCharacters();
};

} // namespace quorvane
