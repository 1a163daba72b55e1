#pragma once

#include "Platform/Foundation/NSAttributedString.h"

namespace quorvane {

/// A change to be made to a piece of text that may be folded away. Whoever indents or comments a block asks
/// for the pieces of a range, one for each stretch of visible text and one for each line of hidden text, says
/// what to put in their places, and has all of it applied at once. Ranges are those of the document behind
/// the view. Main thread.
class QV_EXPORT QVTextTransform final : public NSObject {
public:
    /// Without a range: its location is `NSNotFound`.
    static std::shared_ptr<QVTextTransform> init() { return std::make_shared<QVTextTransform>(); }

    /// The piece.
    NSRange range() const { return _range; }
    void setRange(NSRange range) { _range = range; }
    /// What is to be replaced, inside of the piece.
    NSRange replacementRange() const { return _replacementRange; }
    void setReplacementRange(NSRange range) { _replacementRange = range; }

    /// 0 for visible text, else how deep the fold is that holds the piece.
    NSUInteger foldDepth() const { return _foldDepth; }
    void setFoldDepth(NSUInteger foldDepth) { _foldDepth = foldDepth; }
    /// Whether the piece begins where its line begins.
    bool anchoredToStartOfLine() const { return _anchoredToStartOfLine; }
    void setAnchoredToStartOfLine(bool anchored) { _anchoredToStartOfLine = anchored; }
    /// Whether the piece ends where its line ends.
    bool anchoredToEndOfLine() const { return _anchoredToEndOfLine; }
    void setAnchoredToEndOfLine(bool anchored) { _anchoredToEndOfLine = anchored; }

    // Where both are null nothing changes; a string counts only without an attributed one.

    const std::shared_ptr<const NSAttributedString> &replacementAttributedString() const {
        return _replacementAttributedString;
    }
    void setReplacementAttributedString(std::shared_ptr<const NSAttributedString> string) {
        _replacementAttributedString = std::move(string);
    }
    const NSString &replacementString() const { return _replacementString; }
    void setReplacementString(NSString string) { _replacementString = std::move(string); }

    std::u16string_view className() const override { return u"QVTextTransform"; }

private:
    NSRange _range = NSNotFoundRange;
    NSRange _replacementRange = NSNotFoundRange;
    NSUInteger _foldDepth = 0;
    bool _anchoredToStartOfLine = false;
    bool _anchoredToEndOfLine = false;
    std::shared_ptr<const NSAttributedString> _replacementAttributedString;
    NSString _replacementString;
};

} // namespace quorvane
