#pragma once

#include "Quorvane/Text/QVLayoutManager.h"

/// The least that attachments, undo steps and the like need for a document and its layout.
namespace quorvane::test {

/// A storage that keeps its text in a plain attributed string and is not a `QVTextStorage`.
class PlainTextStorage final : public NSTextStorage {
public:
    using NSTextStorage::attributesAtIndex;
    using NSTextStorage::replaceCharactersInRange;

    explicit PlainTextStorage(std::u16string_view text = {}, const NSAttributes &attributes = {})
        : _contents(NSMutableAttributedString::initWithString(text, attributes)) {}

    NSUInteger length() const override { return _contents->length(); }
    QVTextReader string() const override { return _contents->string(); }
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
        return _contents->attributesAtIndex(index, effectiveRange);
    }
    void replaceCharactersInRange(NSRange range, std::u16string_view withString) override {
        _contents->replaceCharactersInRange(range, withString);
        edited(NSTextStorageEditedAttributes | NSTextStorageEditedCharacters, range,
               static_cast<NSInteger>(withString.size()) - static_cast<NSInteger>(range.length));
    }
    void setAttributes(const NSAttributes &attributes, NSRange range) override {
        _contents->setAttributes(attributes, range);
        edited(NSTextStorageEditedAttributes, range, 0);
    }

private:
    std::shared_ptr<NSMutableAttributedString> _contents;
};

/// A layout manager that knows its storage and lays out nothing.
class StorageLayoutManager final : public QVLayoutManager {
public:
    explicit StorageLayoutManager(std::shared_ptr<NSTextStorage> storage) : _storage(std::move(storage)) {}
    std::shared_ptr<NSTextStorage> textStorage() const override { return _storage; }

private:
    std::shared_ptr<NSTextStorage> _storage;
};

} // namespace quorvane::test
