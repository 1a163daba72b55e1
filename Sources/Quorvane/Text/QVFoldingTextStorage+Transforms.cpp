#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSException.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"
#include "Quorvane/Text/QVTextTransform.h"

namespace quorvane {

namespace {

/// The line in which a stretch of text begins, up to the one in which its last character stands.
NSRange linesOfPiece(QVTextReader text, NSRange piece) {
    const NSRange first = qv_lineRangeForRange(text, {piece.location, 0});
    if (piece.length == 0)
        return first;
    return NSUnionRange(first, qv_lineRangeForRange(text, {NSMaxRange(piece) - 1, 0}));
}

std::shared_ptr<QVTextTransform> transformOfPiece(NSRange piece, NSRange lines, NSUInteger foldDepth) {
    const auto transform = QVTextTransform::init();
    transform->setRange(piece);
    transform->setReplacementRange(piece);
    transform->setFoldDepth(foldDepth);
    transform->setAnchoredToStartOfLine(piece.location == lines.location);
    transform->setAnchoredToEndOfLine(NSMaxRange(piece) == NSMaxRange(lines));
    return transform;
}

} // namespace

std::vector<std::shared_ptr<QVTextTransform>>
QVFoldingTextStorage::prepareTextTransformsInRange(NSRange range, TransformBlock usingBlock) const {
    QVParameterAssert(static_cast<bool>(usingBlock), "block != nil");
    std::vector<std::shared_ptr<QVTextTransform>> transforms;
    if (!usingBlock)
        return transforms;
    const auto offer = [&](const std::shared_ptr<QVTextTransform> &transform, bool &stop) {
        if (usingBlock(*transform, stop))
            transforms.push_back(transform);
    };
    enumerateDiscreteBackingRangesInRange(range, [&](NSRange piece, NSUInteger foldDepth, bool &stop) {
        const QVTextReader text = _backingStorage->string();
        if (foldDepth == 0) {
            bool ignored = false;
            offer(transformOfPiece(piece, linesOfPiece(text, piece), foldDepth), ignored);
            return;
        }
        for (NSUInteger location = piece.location; location < NSMaxRange(piece) && !stop;) {
            const NSRange line = qv_lineRangeForRange(text, {location, 0});
            const NSRange part = NSIntersectionRange(line, piece);
            offer(transformOfPiece(part, line, foldDepth), stop);
            location = NSMaxRange(part);
        }
    });
    return transforms;
}

void QVFoldingTextStorage::applyTextTransforms(
    const std::vector<std::shared_ptr<QVTextTransform>> &textTransforms) {
    beginEditing();
    try {
        for (auto at = textTransforms.rbegin(); at != textTransforms.rend(); ++at) {
            if (!*at)
                continue;
            const QVTextTransform &transform = **at;
            const auto &attributedString = transform.replacementAttributedString();
            if (!attributedString && transform.replacementString().isNull())
                continue;
            const NSRange replaced = transform.replacementRange();
            if (replaced.location == NSNotFound)
                throw NSException(NSInvalidArgumentException,
                                  u"Text transform replacement range must be a valid range");
            const NSRange range = transform.range();
            if (replaced.location < range.location || NSMaxRange(replaced) > NSMaxRange(range))
                throw NSException(
                    NSInvalidArgumentException,
                    u"Text transform replacement range must be a subrange of the transform's range");
            if (attributedString)
                _backingStorage->replaceCharactersInRange(replaced, *attributedString);
            else
                _backingStorage->replaceCharactersInRange(replaced, transform.replacementString().view());
        }
    } catch (...) {
        endEditing();
        throw;
    }
    endEditing();
}

} // namespace quorvane
