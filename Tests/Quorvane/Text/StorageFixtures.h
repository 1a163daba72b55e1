#pragma once

#include "Platform/Dispatch/MainQueue.h"
#include "Quorvane/Text/QVBackingStorageView.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Tests/Quorvane/Parsers/AccessFixtures.h"
#include "Tests/Quorvane/Parsers/HighlightingFixtures.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

#include <map>

/// What tests of text storages share: documents in a small language, and recorders of all who hear of them.
namespace quorvane::test {

inline std::string drawn(NSRange range) {
    return range.location == NSNotFound ? "none"
                                        : std::to_string(range.location) + "+" + std::to_string(range.length);
}

inline std::string drawn(const std::vector<NSRange> &ranges) {
    std::string text;
    for (const NSRange &range : ranges)
        text += (text.empty() ? "" : " ") + drawn(range);
    return text;
}

inline std::string textOf(const NSAttributedString &string) {
    return NSString(string.string().substringWithRange({0, string.length()})).UTF8String();
}

/// A language of words: "k1" is a keyword (style 1), numbers have style 2, what stands in (* *) style 3 over
/// all lines, and "b" a bold font.
inline std::shared_ptr<QVSyntax> smallLanguage() {
    auto syntax = syntaxWithScopes(region("comment", "\\(\\*", "\\*\\)") + single("keyword", "k\\w*") +
                                   single("number", "\\d+") + single("bold", "\\bb\\b"));
    setStyles(syntax, {{u"comment", 3}, {u"keyword", 1}, {u"number", 2}});
    setBold(syntax, u"bold");
    return syntax;
}

/// For each character the number of its style, "." for none.
inline std::string drawnHighlighting(const QVTextStorage &storage) {
    std::string text;
    for (NSUInteger index = 0; index < storage.length(); ++index) {
        const NSAttributes attributes = storage.syntaxHighlightingAttributesAtIndex(index, nullptr);
        const NSAttributeValue *const value = attributes.valueForKey(NSUnderlineStyleAttributeName);
        text += value == nullptr ? "." : std::to_string(value->integerValue());
    }
    return text;
}

inline bool isBold(const NSAttributes &attributes) {
    const NSAttributeValue *const value = attributes.valueForKey(NSFontAttributeName);
    const auto *const object = value ? std::get_if<NSAttributeValue::Object>(value) : nullptr;
    const auto font = object ? std::dynamic_pointer_cast<const CTFont>(*object) : nullptr;
    return font && (CTFontGetSymbolicTraits(font) & kCTFontTraitBold) != 0;
}

/// For each character "b" where its font is bold, "-" where it has no font, else ".".
inline std::string drawnFonts(const QVConcreteTextStorage &storage) {
    std::string text;
    for (NSUInteger index = 0; index < storage.length(); ++index) {
        const NSAttributes attributes = storage.contents().attributesAtIndex(index);
        text += !attributes.containsKey(NSFontAttributeName) ? "-" : isBold(attributes) ? "b" : ".";
    }
    return text;
}

/// Lets the parse do all that was submitted to it, and takes its results in: one round.
inline void finishRound(QVConcreteTextStorage &storage) {
    if (const auto parse = storage.parse())
        waitForQueue(*parse);
    MainQueue::drain();
}

/// Until nothing is on its way any more.
inline void finishAllRounds(QVConcreteTextStorage &storage) {
    do
        finishRound(storage);
    while (storage.isParseUpdating());
    // A styling may have followed.
    finishRound(storage);
}

inline std::shared_ptr<QVConcreteTextStorage> documentWithText(std::u16string_view text,
                                                               const std::shared_ptr<QVSyntax> &syntax) {
    auto storage = QVConcreteTextStorage::initWithString(text);
    storage->setSyntax(syntax);
    finishAllRounds(*storage);
    return storage;
}

/// Keeps the notifications of one storage: "parse 0+3 5+1", "styles 0+3".
class StorageNotifications {
public:
    explicit StorageNotifications(const QVConcreteTextStorage &storage)
        : _parses(observe(storage, QVTextStorageDidUpdateParseNotification, "parse ")),
          _styles(observe(storage, QVTextStorageDidUpdateSyntaxHighlightingNotification, "styles ")) {}

    std::vector<std::string> take() { return std::exchange(_lines, {}); }

private:
    NSNotificationToken observe(const QVConcreteTextStorage &storage, const char16_t *name,
                                std::string prefix) {
        return NSNotificationCenter::defaultCenter().addObserver(
            name, &storage, [this, prefix](const NSNotification &notification) {
                EXPECT_TRUE(MainQueue::isMainThread());
                EXPECT_EQ(notification.userInfo.size(), 1u);
                _lines.push_back(prefix + drawn(std::any_cast<const std::vector<NSRange> &>(
                                              notification.userInfo.at(QVTextStorageUpdatedRangesKey))));
            });
    }

    std::vector<std::string> _lines;
    NSNotificationToken _parses;
    NSNotificationToken _styles;
};

/// Writes down what an observer hears: "will 3 0+1 abc", "did 3 0+3 +2".
class StorageObserver : public QVTextStorageChangeObserver {
public:
    explicit StorageObserver(std::vector<std::string> &lines) : _lines(lines) {}

    void textStorageWillChange(QVTextStorage &, NSTextStorageEditActions mask, NSRange range,
                               const NSAttributedString *replacementText) override {
        _lines.push_back("will " + std::to_string(mask) + " " + drawn(range) + " " +
                         (replacementText ? "'" + textOf(*replacementText) + "'" : "null"));
    }
    void textStorageDidProcessChanges(QVTextStorage &, NSTextStorageEditActions mask, NSRange range,
                                      NSInteger changeInLength) override {
        _lines.push_back("did " + std::to_string(mask) + " " + drawn(range) + " " +
                         (changeInLength < 0 ? "" : "+") + std::to_string(changeInLength));
    }

private:
    std::vector<std::string> &_lines;
};

/// Writes down what a view hears.
class StorageView final : public QVBackingStorageView {
public:
    StorageView(QVConcreteTextStorage &storage, std::vector<std::string> &lines)
        : _storage(storage), _lines(lines) {
        _storage.addFoldingTextStorage(this);
    }
    ~StorageView() { _storage.removeFoldingTextStorage(this); }
    StorageView(const StorageView &) = delete;
    StorageView &operator=(const StorageView &) = delete;

    void backingStorageDidBeginEditing() override { _lines.push_back("view begins"); }
    void backingStorageDidEndEditing() override { _lines.push_back("view ends"); }
    void backingStorageDidAddAttribute(NSAttributeKey key, const NSAttributeValue &, NSRange range) override {
        note("adds " + key.string().UTF8String(), range);
    }
    void backingStorageDidAddAttributes(const NSAttributes &attributes, NSRange range) override {
        note("adds " + attributes.description().UTF8String(), range);
    }
    void backingStorageDidRemoveAttribute(NSAttributeKey key, NSRange range) override {
        note("removes " + key.string().UTF8String(), range);
    }
    void backingStorageDidSetAttributes(const NSAttributes &attributes, NSRange range) override {
        note("sets " + attributes.description().UTF8String(), range);
    }
    void backingStorageDidInvalidateAttributesInRange(NSRange range) override { note("invalidates", range); }
    void backingStorageWillReplaceCharactersInRange(NSRange range,
                                                    const NSAttributedString &withString) override {
        note("will replace '" + textOf(withString) + "' in '" + textOf(_storage) + "'", range);
    }
    void backingStorageDidReplaceCharactersInRange(NSRange range,
                                                   const NSAttributedString &withString) override {
        note("did replace '" + textOf(withString) + "' in '" + textOf(_storage) + "'", range);
    }
    void backingStorageDidClearContents() override { _lines.push_back("view clears"); }

private:
    void note(const std::string &what, NSRange range) {
        _lines.push_back("view " + what + " " + drawn(range) +
                         (_storage.isEnsuringAttributes() ? " ensuring" : ""));
    }

    QVConcreteTextStorage &_storage;
    std::vector<std::string> &_lines;
};

/// An attribute that nothing else uses.
inline NSAttributes mark(NSInteger number) { return {{NSToolTipAttributeName, number}}; }

} // namespace quorvane::test
