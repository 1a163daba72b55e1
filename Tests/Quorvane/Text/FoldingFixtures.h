#pragma once

#include "Platform/Foundation/NSException.h"
#include "Quorvane/Text/QVFoldingTextStorage.h"
#include "Quorvane/Text/QVTextFoldAttachment.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

namespace quorvane::test {

/// Its text with "~" for each fold.
inline std::string drawn(const QVTextStorage &storage) {
    std::u16string text = storage.string().substringWithRange({0, storage.length()});
    std::ranges::replace(text, u'\uFFFC', u'~');
    return NSString(text).UTF8String();
}

inline std::shared_ptr<QVTextFoldAttachment> foldAt(const QVTextStorage &storage, NSUInteger index) {
    const auto value = storage.attribute(NSAttachmentAttributeName, index);
    const auto *const object = value ? std::get_if<NSAttributeValue::Object>(&*value) : nullptr;
    return object ? std::const_pointer_cast<QVTextFoldAttachment>(
                        std::dynamic_pointer_cast<const QVTextFoldAttachment>(*object))
                  : nullptr;
}

/// "2+3(2+2 4+1)": a fold's range, and those of its subfolds.
inline std::string drawn(const QVTextFoldAttachment &fold) {
    std::string text = drawn(fold.range());
    if (!fold.subfolds().empty()) {
        text += "(";
        for (const auto &subfold : fold.subfolds())
            text += (text.back() == '(' ? "" : " ") + drawn(*subfold);
        text += ")";
    }
    return text;
}

/// A document with one view.
struct FoldedDocument {
    explicit FoldedDocument(std::u16string_view text)
        : document(QVConcreteTextStorage::initWithString(text)),
          view(QVFoldingTextStorage::initWithBackingStorage(document)),
          observer(std::make_shared<StorageObserver>(heard)) {
        view->addChangeObserver(observer);
    }
    std::vector<std::string> take() { return std::exchange(heard, {}); }

    std::vector<std::string> heard;
    std::shared_ptr<QVConcreteTextStorage> document;
    std::shared_ptr<QVFoldingTextStorage> view;
    std::shared_ptr<StorageObserver> observer;
};

using Strings = std::vector<std::string>;

} // namespace quorvane::test
