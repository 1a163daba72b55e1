#pragma once

#include "Quorvane/Text/QVTextStorage.h"

#include <map>

namespace quorvane::test {

/// A storage that is nothing but its text: all that `QVTextStorage` asks of its subclasses is missing.
class BareTextStorage : public QVTextStorage {
public:
    explicit BareTextStorage(std::u16string_view text = u"")
        : _contents(NSMutableAttributedString::initWithString(text)) {}

    using QVTextStorage::attributesAtIndex;
    using QVTextStorage::replaceCharactersInRange;
    NSUInteger length() const override { return _contents->length(); }
    QVTextReader string() const override { return _contents->string(); }
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
        return _contents->attributesAtIndex(index, effectiveRange);
    }
    void replaceCharactersInRange(NSRange range, std::u16string_view withString) override {
        willChange(NSTextStorageEditedCharacters, range, nullptr);
        _contents->replaceCharactersInRange(range, withString);
        edited(NSTextStorageEditedCharacters, range,
               static_cast<NSInteger>(withString.size()) - static_cast<NSInteger>(range.length));
    }
    void setAttributes(const NSAttributes &attributes, NSRange range) override {
        _contents->setAttributes(attributes, range);
        edited(NSTextStorageEditedAttributes, range, 0);
    }

private:
    std::shared_ptr<NSMutableAttributedString> _contents;
};

/// One whose highlighting and extended attributes stand in pieces that can be equal to their neighbours, and
/// of which it counts the reads and writes.
class PiecesTextStorage : public BareTextStorage {
public:
    struct Piece {
        NSUInteger length;
        NSAttributes attributes;
    };

    explicit PiecesTextStorage(std::vector<Piece> pieces) : _pieces(std::move(pieces)) {
        NSUInteger total = 0;
        for (const Piece &piece : _pieces)
            total += piece.length;
        BareTextStorage::replaceCharactersInRange({0, 0}, std::u16string(total, u'x'));
    }

    using QVTextStorage::extendedAttributesAtIndex;
    using QVTextStorage::syntaxHighlightingAttributesAtIndex;
    NSAttributes syntaxHighlightingAttributesAtIndex(NSUInteger index,
                                                     NSRange *effectiveRange) const override {
        return read(index, effectiveRange);
    }
    NSAttributes extendedAttributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
        return read(index, effectiveRange);
    }
    /// Only whole pieces.
    void setExtendedAttributes(const NSAttributes &attributes, NSRange range) override {
        writes.push_back(range);
        NSUInteger start = 0;
        for (Piece &piece : _pieces) {
            if (start >= range.location && start + piece.length <= NSMaxRange(range))
                piece.attributes = attributes;
            start += piece.length;
        }
    }

    std::vector<NSRange> writes;

private:
    NSAttributes read(NSUInteger index, NSRange *effectiveRange) const {
        NSUInteger start = 0;
        for (const Piece &piece : _pieces) {
            if (index < start + piece.length) {
                if (effectiveRange != nullptr)
                    *effectiveRange = {start, piece.length};
                return piece.attributes;
            }
            start += piece.length;
        }
        ADD_FAILURE() << "read at " << index;
        return {};
    }

    std::vector<Piece> _pieces;
};

} // namespace quorvane::test
