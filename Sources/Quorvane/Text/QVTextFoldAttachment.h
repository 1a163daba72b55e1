#pragma once

#include "Quorvane/Text/QVTextAttachment.h"

#include <vector>

namespace quorvane {

class QVFoldMap;

/// Leads the folds of a view to the map that may move them late; to none once the view is gone.
struct QVTextFoldKeeper {
    const QVFoldMap *map;
};

/// What stands behind the one character that shows a folded range: which text it hides, the folds that text
/// had when it was folded, and the mark that is drawn. Ranges are those of the document behind the view,
/// and follow its edits. Main thread.
class QV_EXPORT QVTextFoldAttachment final : public QVTextAttachment {
public:
    ~QVTextFoldAttachment() override;

    using Subfolds = std::vector<std::shared_ptr<QVTextFoldAttachment>>;

    /// The pointer over it is a pointing hand.
    static std::shared_ptr<QVTextFoldAttachment> initWithRange(NSRange range, Subfolds subfolds);

    NSRange range() const;
    void setRange(NSRange range) { _range = range; }
    /// The folds directly inside, in text order.
    const Subfolds &subfolds() const { return _subfolds; }
    void setSubfolds(Subfolds subfolds) { _subfolds = std::move(subfolds); }

    /// Follows an edit of the document, given with the range that it had in the text before; false where the
    /// folded text is gone, or the edit crosses one of its ends. An edit strictly inside goes to the subfolds
    /// too. A subfold that is gone is left out, and is told of the edit a second time in the place of the one
    /// behind it; so the last ones may not hear of it.
    bool textChangedInRange(NSRange range, NSInteger changeInLength);

    /// 26 points wide and at most 14 high, from the descent of the text's font.
    CGRect attachmentBoundsForLayoutManager(QVLayoutManager *layoutManager,
                                            const CGRect &proposedLineFragment, CGPoint glyphPosition,
                                            NSUInteger characterIndex) const override;
    /// Three dots in a rounded frame.
    void drawWithFrame(const CGRect &frame, NSUInteger characterIndex,
                       QVLayoutManager *layoutManager) const override;

    std::u16string_view className() const override { return u"QVTextFoldAttachment"; }
    /// "<%@: %p : range=%@, subfolds=%lu>"
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// The subfolds are written under the key of the range and take its place, so that neither comes back:
    /// archives in use are so, and reading one gives a fold of nothing.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    QVTextFoldAttachment();

    friend class QVFoldMap;

    /// What an edit is to a fold.
    enum class Effect : std::uint8_t { None, Moved, Inside, Ended };
    /// Brings the range up to date, and nothing of the subfolds.
    Effect follow(NSRange range, NSInteger changeInLength);

    NSRange _range;
    Subfolds _subfolds;
    /// Of the view that this one was made in, if any.
    std::shared_ptr<const QVTextFoldKeeper> _keeper;
};

} // namespace quorvane
