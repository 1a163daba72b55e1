#pragma once

#include "Platform/AppKit/NSTextStorage.h"
#include "Platform/Foundation/NSKeyValueObserving.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

namespace quorvane {

class NSUndoManager;
class QVParse;
class QVParseDelegate;
class QVSyntax;
class QVTextStorage;

/// What hears of a storage's edits, on the thread of the edit. Layouts, annotations and hosts are observers.
class QV_EXPORT QVTextStorageChangeObserver {
public:
    virtual ~QVTextStorageChangeObserver() = default;
    /// Before a change of characters (mask 3) or of attributes (mask 1, and a null text).
    virtual void textStorageWillChange(QVTextStorage & /*textStorage*/, NSTextStorageEditActions /*mask*/,
                                       NSRange /*range*/, const NSAttributedString * /*replacementText*/) {}
    /// Once for each bracket of edits, with the range as the text is now. The observer must not edit.
    virtual void textStorageDidProcessChanges(QVTextStorage & /*textStorage*/,
                                              NSTextStorageEditActions /*mask*/, NSRange /*range*/,
                                              NSInteger /*changeInLength*/) {}
};

/// Which changes `formatAttributedStringForInsertion` makes; a bit mask.
enum QVTextFormattingOptions : std::uint64_t {
    /// Moves the lines as a block to the indentation of where they go.
    QVTextFormattingReindent = 1,
    /// Writes each stretch of indentation in the document's own form.
    QVTextFormattingRewriteIndentation = 2,
};

/// What a change of pasted text is about.
enum QVTextFormattingKind : std::uint64_t {
    QVTextFormattingLineIndentation = 1,
    QVTextFormattingInnerIndentation = 2,
    QVTextFormattingLineEnding = 3,
};

/// A document's text as editors work with it: beside characters and attributes it has a syntax and a parse,
/// lines, highlighting and further attributes for each character, and observers who hear of edits before and
/// after they happen. `QVConcreteTextStorage` is the document itself, `QVFoldingTextStorage` a view on one in
/// which ranges are folded away; both are used through this class.
///
/// The operations of the first groups are primitives: here they throw `NSInvalidArgumentException`. What
/// follows them is derived. Positions are UTF-16 code units of this storage's own text; lines count from 0.
/// Main thread.
class QV_EXPORT QVTextStorage : public NSTextStorage, public NSKeyValueObserving {
public:
    using Observer = QVTextStorageChangeObserver;
    using LineBlock = QVBlock<void(NSRange range, NSUInteger lineNumber, bool &stop)>;
    /// Answers whether to make the change. The range is that of the pasted text as it is so far.
    using FormattingBlock =
        QVBlock<bool(QVTextFormattingKind kind, NSRange range, NSInteger changeInLength, bool &stop)>;

    /// An empty document, a `QVConcreteTextStorage`; likewise the others.
    static std::shared_ptr<QVTextStorage> init();
    static std::shared_ptr<QVTextStorage> initWithString(std::u16string_view string);
    static std::shared_ptr<QVTextStorage> initWithString(std::u16string_view string,
                                                         const NSAttributes &attributes);
    static std::shared_ptr<QVTextStorage>
    initWithAttributedString(const NSAttributedString &attributedString);

    // Parsing

    virtual bool isParsingEnabled() const;
    virtual void setParsingEnabled(bool parsingEnabled);
    /// Throws in every storage: a parse is cancelled by its owner alone.
    virtual void cancelParsing();
    virtual void clearContents();
    /// Null for plain text.
    virtual std::shared_ptr<QVSyntax> syntax() const;
    virtual void setSyntax(std::shared_ptr<QVSyntax> syntax);
    /// The language of one character; the document's for `NSNotFound`.
    virtual std::shared_ptr<QVSyntax> syntaxAtLocation(NSUInteger location) const;
    /// Null while parsing is off or there is no syntax.
    virtual std::shared_ptr<QVParse> parse() const;
    virtual std::shared_ptr<QVParseDelegate> parseDelegate() const;
    /// Not owned.
    virtual void setParseDelegate(const std::shared_ptr<QVParseDelegate> &parseDelegate);

    // Settings of the document

    /// Of text without attributes of its own; a font and a foreground colour are always there.
    virtual NSAttributes defaultTextAttributes() const;
    virtual void setDefaultTextAttributes(const NSAttributes &defaultTextAttributes);
    virtual QVLineEndings lineEndings() const;
    virtual void setLineEndings(QVLineEndings lineEndings);
    virtual QVIndentationStyle indentationStyle() const;
    virtual void setIndentationStyle(QVIndentationStyle indentationStyle);
    /// In columns.
    virtual NSUInteger tabWidth() const;
    virtual void setTabWidth(NSUInteger tabWidth);
    /// Both throw in every storage: undo steps hold a manager of their own.
    virtual std::shared_ptr<NSUndoManager> undoManager() const;
    virtual void setUndoManager(std::shared_ptr<NSUndoManager> undoManager);

    // Lines

    virtual NSUInteger numberOfLines() const;
    /// With its terminator; `{NSNotFound, 0}` for a number at or past the count.
    virtual NSRange characterRangeForLineNumber(NSUInteger lineNumber) const;
    virtual NSRange characterRangeForLineNumbersInRange(NSRange range) const;
    virtual void enumerateLinesInRange(NSRange range, LineBlock usingBlock) const;
    virtual NSUInteger lineNumberForCharacterIndex(NSUInteger index,
                                                   NSRange *actualCharacterRange = nullptr) const;
    /// The numbers of the lines that a range touches; the optional range is that of their characters.
    virtual NSRange rangeOfLineNumbersForCharacterRange(NSRange range,
                                                        NSRange *actualCharacterRange = nullptr) const;
    virtual void enumerateLinesForCharacterRange(NSRange range, LineBlock usingBlock) const;

    // Highlighting: what the parse and the theme make of a character. Fonts are attributes of the text, too.

    virtual NSAttributes syntaxHighlightingAttributesAtIndex(NSUInteger index, NSRange *effectiveRange) const;

    // Extended attributes: what a host keeps for a character. They don't touch layout.

    virtual NSAttributes extendedAttributesAtIndex(NSUInteger index, NSRange *effectiveRange) const;
    virtual void setExtendedAttributes(const NSAttributes &extendedAttributes, NSRange range);

    /// Whether attributes are being fixed, so that changes must not invalidate layout. False in the base.
    virtual bool isEnsuringAttributes() const { return false; }

    // Change observers

    /// Not owned. One that is added twice is told once.
    void addChangeObserver(const std::shared_ptr<Observer> &changeObserver);
    void removeChangeObserver(const std::shared_ptr<Observer> &changeObserver);
    /// To be sent by subclasses before a change.
    void willChange(NSTextStorageEditActions mask, NSRange range, const NSAttributedString *replacementText);
    /// Tells the observers behind the platform's work.
    void processEditing() override;

    // Derived: highlighting

    virtual NSAttributes syntaxHighlightingAttributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                                             NSRange inRange) const;
    std::optional<NSAttributeValue> syntaxHighlightingAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                                NSRange *effectiveRange) const;
    virtual std::optional<NSAttributeValue> syntaxHighlightingAttribute(NSAttributeKey key,
                                                                        NSUInteger atIndex,
                                                                        NSRange *longestEffectiveRange,
                                                                        NSRange inRange) const;
    virtual void enumerateSyntaxHighlightingAttributesInRange(NSRange range,
                                                              NSAttributedStringEnumerationOptions options,
                                                              AttributesBlock usingBlock) const;
    virtual void enumerateSyntaxHighlightingAttribute(NSAttributeKey key, NSRange inRange,
                                                      NSAttributedStringEnumerationOptions options,
                                                      AttributeBlock usingBlock) const;

    // Derived: extended attributes. All of these have their effective range at a stretch of equal values;
    // "longest" grows forwards only, up to the limit.

    virtual NSAttributes extendedAttributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                                   NSRange inRange) const;
    std::optional<NSAttributeValue> extendedAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                      NSRange *effectiveRange) const;
    virtual std::optional<NSAttributeValue> extendedAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                              NSRange *longestEffectiveRange,
                                                              NSRange inRange) const;
    virtual void enumerateExtendedAttributesInRange(NSRange range,
                                                    NSAttributedStringEnumerationOptions options,
                                                    AttributesBlock usingBlock) const;
    virtual void enumerateExtendedAttribute(NSAttributeKey key, NSRange inRange,
                                            NSAttributedStringEnumerationOptions options,
                                            AttributeBlock usingBlock) const;
    virtual void addExtendedAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range);
    virtual void addExtendedAttributes(const NSAttributes &attributes, NSRange range);
    virtual void removeExtendedAttribute(NSAttributeKey key, NSRange range);

    // Text

    /// The word around an index, which must stand on one of its characters; `{NSNotFound, 0}` in keywords,
    /// strings and comments and where there is none. What a character is says its extended attribute
    /// `QVLexicalClassAttributeName`, or else that of its highlighting. The prefix is one character, such as
    /// a sigil, that the syntax counts to its identifiers.
    NSRange rangeOfIdentifierAtIndex(NSUInteger index, bool includePrefix) const;
    /// Adapts text that is about to be inserted to the document's indentation and line endings, changing it
    /// in place. Without a handler all changes are made.
    void formatAttributedStringForInsertion(NSMutableAttributedString &attributedString, NSRange inRange,
                                            std::uint64_t options, FormattingBlock changeHandler) const;

    std::u16string_view className() const override { return u"QVTextStorage"; }

protected:
    QVTextStorage();
    ~QVTextStorage() override;

private:
    template <typename Tell> void tellChangeObservers(Tell tell);

    std::vector<std::weak_ptr<Observer>> _changeObservers;
};

} // namespace quorvane
