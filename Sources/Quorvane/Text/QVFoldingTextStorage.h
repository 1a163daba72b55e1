#pragma once

#include "Quorvane/Text/QVBackingStorageView.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"

namespace quorvane {

class QVFoldMap;
class QVTextFoldAttachment;
class QVTextTransform;

/// A view on a document in which chosen ranges are folded away, each behind one attachment character
/// (`QVTextFoldAttachment`). Layouts stand on views. The document stays whole in its `QVConcreteTextStorage`,
/// which is the only place where text is edited: what is edited through a view goes there and comes back. A
/// document can have several views.
///
/// Positions in a view are its own; those of the document behind it are called backing positions. Syntax,
/// parse, lines, highlighting and extended attributes are the document's, with positions converted; lines
/// keep their numbers when others are folded away. Folds nest to any depth: a fold that is folded with the
/// text around it is one of the new fold's subfolds.
///
/// While a view has no fold it shows the document's own text, and so an edit a moment before it is told of
/// it; its copy, which has the attachments, is made with the first fold and goes with the last. Main thread.
class QV_EXPORT QVFoldingTextStorage final : public QVTextStorage,
                                             public QVBackingStorageView,
                                             public NSSecureCoding {
public:
    /// Is told of backing ranges with the depth of the fold that hides them, 0 for visible text.
    using DiscreteRangeBlock = QVBlock<void(NSRange backingRange, NSUInteger foldDepth, bool &stop)>;
    using RangeBlock = QVBlock<void(NSRange range, bool &stop)>;
    /// Answers whether the transform belongs to the result.
    using TransformBlock = QVBlock<bool(QVTextTransform &transform, bool &stop)>;

    /// Of a view, a view on the document behind it; for null a new document. Throws
    /// `NSInvalidArgumentException` for any other storage.
    static std::shared_ptr<QVFoldingTextStorage>
    initWithBackingStorage(const std::shared_ptr<QVTextStorage> &backingStorage);
    // With a new document.
    static std::shared_ptr<QVFoldingTextStorage> init();
    static std::shared_ptr<QVFoldingTextStorage> initWithString(std::u16string_view string,
                                                                const NSAttributes &attributes = {});
    static std::shared_ptr<QVFoldingTextStorage>
    initWithAttributedString(const NSAttributedString &attributedString);
    ~QVFoldingTextStorage() override;

    const std::shared_ptr<QVConcreteTextStorage> &backingStorage() const { return _backingStorage; }

    // Folding. Ranges and positions are the view's, if nothing else is said.

    /// Hides the text and answers where its character stands; a range of less than two characters comes back
    /// as it is.
    NSRange foldRange(NSRange range);
    /// Shows the text of a fold again. Folds inside of it that lie deeper than `depth` levels stay folded: 1
    /// keeps those directly inside, 2 opens them and keeps theirs; 0, and more than there are, opens all. It
    /// is asserted that there is a fold.
    void unfoldAtPosition(NSUInteger position, NSUInteger depth);
    /// Opens all folds in the range, with all that is in them; answers its backing range.
    NSRange unfoldAllInRange(NSRange range);
    NSRange unfoldAllInRange(NSRange range, NSUInteger depth);
    /// Whether one fold hides all of a backing range.
    bool isRangeFolded(NSRange backingRange) const;
    /// One range `{0, 0}` for each stretch of text that is not folded, and none for the folds: users of it
    /// count.
    std::vector<NSRange> foldedRanges() const;

    // Converting: at once where nothing is folded, else in logarithmic time

    NSUInteger convertPositionFromBacking(NSUInteger position) const {
        return convertPositionFromBacking(position, 0);
    }
    /// A position inside of a fold becomes that of its character with affinity 0, else the one behind.
    NSUInteger convertPositionFromBacking(NSUInteger position, NSUInteger affinity) const;
    /// All of a fold is where its text begins.
    NSUInteger convertPositionToBacking(NSUInteger position) const;
    /// A range inside of a fold becomes empty; one that ends in a fold ends before its character. Ranges that
    /// reach past the text are cut, and a location of `NSNotFound` stays.
    NSRange convertRangeFromBacking(NSRange range) const;
    /// Characters of folds stand for all of their text.
    NSRange convertRangeToBacking(NSRange range) const;

    /// Calls back for the backing text of a range, fold by fold, for operations on text whether it is hidden
    /// or not. Text before each fold is counted from the start of the range: the one before a second fold
    /// covers the first one again.
    void enumerateDiscreteBackingRangesInRange(NSRange range, DiscreteRangeBlock usingBlock) const;
    /// Calls back for the ranges of the view in which a backing range is visible.
    void enumerateBackingStorageRangeWithoutFolds(NSRange backingRange, RangeBlock usingBlock);

    // Transforms: changes of text that may be folded

    /// One for each stretch of visible text in the range, and for each line of hidden text; answers those
    /// that the block wants. The stop flag ends the walk through hidden text alone.
    std::vector<std::shared_ptr<QVTextTransform>>
    prepareTextTransformsInRange(NSRange range, TransformBlock usingBlock) const;
    /// Makes the changes, from the last to the first. Throws `NSInvalidArgumentException` at one whose
    /// replacement range is none, or not a part of its range; what was made before stays.
    void applyTextTransforms(const std::vector<std::shared_ptr<QVTextTransform>> &textTransforms);

    // Text and attributes of the view

    NSUInteger length() const override { return contents().length(); }
    QVTextReader string() const override { return contents().string(); }
    using QVTextStorage::attributesAtIndex;
    /// The default attributes for an index at or past the end.
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override;

    // Changes go to the document, and come back.

    void replaceCharactersInRange(NSRange range, std::u16string_view withString) override;
    void replaceCharactersInRange(NSRange range, const NSAttributedString &withAttributedString) override;
    void setAttributes(const NSAttributes &attributes, NSRange range) override;
    void addAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) override;
    void addAttributes(const NSAttributes &attributes, NSRange range) override;
    void removeAttribute(NSAttributeKey key, NSRange range) override;
    void clearContents() override;
    /// The document and all of its views make one bracket.
    void beginEditing() override;
    void endEditing() override;

    bool fixesAttributesLazily() const override { return true; }
    /// Hidden text is left as it is.
    void ensureAttributesAreFixedInRange(NSRange range) override;
    void fixAttributesInRange(NSRange range) override;

    // Forwarded to the document

    bool isParsingEnabled() const override { return _backingStorage->isParsingEnabled(); }
    void setParsingEnabled(bool parsingEnabled) override;
    std::shared_ptr<QVSyntax> syntax() const override { return _backingStorage->syntax(); }
    void setSyntax(std::shared_ptr<QVSyntax> syntax) override;
    std::shared_ptr<QVSyntax> syntaxAtLocation(NSUInteger location) const override;
    std::shared_ptr<QVParse> parse() const override { return _backingStorage->parse(); }
    std::shared_ptr<QVParseDelegate> parseDelegate() const override;
    void setParseDelegate(const std::shared_ptr<QVParseDelegate> &parseDelegate) override;
    NSAttributes defaultTextAttributes() const override { return _backingStorage->defaultTextAttributes(); }
    void setDefaultTextAttributes(const NSAttributes &defaultTextAttributes) override;
    QVLineEndings lineEndings() const override { return _backingStorage->lineEndings(); }
    void setLineEndings(QVLineEndings lineEndings) override;
    QVIndentationStyle indentationStyle() const override { return _backingStorage->indentationStyle(); }
    void setIndentationStyle(QVIndentationStyle indentationStyle) override;
    NSUInteger tabWidth() const override { return _backingStorage->tabWidth(); }
    void setTabWidth(NSUInteger tabWidth) override;

    NSUInteger numberOfLines() const override { return _backingStorage->numberOfLines(); }
    NSRange characterRangeForLineNumber(NSUInteger lineNumber) const override;
    NSRange characterRangeForLineNumbersInRange(NSRange range) const override;
    void enumerateLinesInRange(NSRange range, LineBlock usingBlock) const override;
    NSUInteger lineNumberForCharacterIndex(NSUInteger index,
                                           NSRange *actualCharacterRange = nullptr) const override;
    NSRange rangeOfLineNumbersForCharacterRange(NSRange range,
                                                NSRange *actualCharacterRange = nullptr) const override;
    void enumerateLinesForCharacterRange(NSRange range, LineBlock usingBlock) const override;

    // Walks go through the hidden text too: what stands in a fold is told with an empty range.

    using QVTextStorage::syntaxHighlightingAttribute;
    NSAttributes syntaxHighlightingAttributesAtIndex(NSUInteger index,
                                                     NSRange *effectiveRange) const override;
    NSAttributes syntaxHighlightingAttributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                                     NSRange inRange) const override;
    std::optional<NSAttributeValue> syntaxHighlightingAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                                NSRange *longestEffectiveRange,
                                                                NSRange inRange) const override;
    void enumerateSyntaxHighlightingAttributesInRange(NSRange range,
                                                      NSAttributedStringEnumerationOptions options,
                                                      AttributesBlock usingBlock) const override;
    void enumerateSyntaxHighlightingAttribute(NSAttributeKey key, NSRange inRange,
                                              NSAttributedStringEnumerationOptions options,
                                              AttributeBlock usingBlock) const override;
    using QVTextStorage::extendedAttribute;
    NSAttributes extendedAttributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override;
    NSAttributes extendedAttributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange,
                                           NSRange inRange) const override;
    std::optional<NSAttributeValue> extendedAttribute(NSAttributeKey key, NSUInteger atIndex,
                                                      NSRange *longestEffectiveRange,
                                                      NSRange inRange) const override;
    void setExtendedAttributes(const NSAttributes &extendedAttributes, NSRange range) override;
    void enumerateExtendedAttributesInRange(NSRange range, NSAttributedStringEnumerationOptions options,
                                            AttributesBlock usingBlock) const override;
    void enumerateExtendedAttribute(NSAttributeKey key, NSRange inRange,
                                    NSAttributedStringEnumerationOptions options,
                                    AttributeBlock usingBlock) const override;
    void addExtendedAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) override;
    void addExtendedAttributes(const NSAttributes &attributes, NSRange range) override;
    void removeExtendedAttribute(NSAttributeKey key, NSRange range) override;

    // Observing: the document's properties change here too, and `backingStorage` leads to it

    std::any valueForKey(const NSString &key) const override;
    NSKeyValueObserving *observableForKey(const NSString &key) const override;
    std::set<NSString> keyPathsForValuesAffectingValueForKey(const NSString &key) const override;

    // What the document tells

    void backingStorageDidBeginEditing() override;
    void backingStorageDidEndEditing() override;
    void backingStorageDidAddAttribute(NSAttributeKey key, const NSAttributeValue &value,
                                       NSRange range) override;
    void backingStorageDidAddAttributes(const NSAttributes &attributes, NSRange range) override;
    void backingStorageDidRemoveAttribute(NSAttributeKey key, NSRange range) override;
    void backingStorageDidSetAttributes(const NSAttributes &attributes, NSRange range) override;
    /// The edit is told with the document's own range.
    void backingStorageDidInvalidateAttributesInRange(NSRange range) override;
    /// Opens the folds whose text goes with all of it, and those whose edges are crossed.
    void backingStorageWillReplaceCharactersInRange(NSRange range,
                                                    const NSAttributedString &withAttributedString) override;
    void backingStorageDidReplaceCharactersInRange(NSRange range,
                                                   const NSAttributedString &withAttributedString) override;
    /// The length that this view knows of the document stays as it was; what is typed afterwards counts from
    /// there.
    void backingStorageDidClearContents() override;

    std::u16string_view className() const override { return u"QVFoldingTextStorage"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// The document and the view's text; of the folds only their characters come back.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

protected:
    // The document has done both, and its attributes come along.
    void fixFontAttributeInRange(NSRange) override {}
    void fixParagraphStyleAttributeInRange(NSRange) override {}

private:
    friend struct QVFoldingTextStorageProbe;
    using Fold = std::shared_ptr<QVTextFoldAttachment>;

    QVFoldingTextStorage();
    void attachToBackingStorage(std::shared_ptr<QVConcreteTextStorage> backingStorage);

    /// What the view shows.
    const NSMutableAttributedString &contents() const {
        return _contents ? *_contents : _backingStorage->contents();
    }
    bool hasNoFolds() const;
    /// The document's own text is longer or shorter for as long as it has not told this view why.
    NSUInteger lengthAsTold() const;
    void makeContents();
    void dropContentsWithoutFolds();
    void replaceContents(NSRange range, const NSAttributedString &withAttributedString);

    std::vector<Fold> foldsInRange(NSRange range) const;
    static void addSubfoldsForUnfolding(NSUInteger toDepth, NSUInteger currentDepth,
                                        const std::vector<Fold> &fromArray, std::vector<Fold> &toArray);
    static void enumerateDiscreteBackingRanges(NSRange forBackingRange, const std::vector<Fold> &folds,
                                               NSUInteger depth, DiscreteRangeBlock usingBlock, bool &stop);
    template <typename Change> void changeVisibleAttributes(NSRange range, Change change);

    std::shared_ptr<QVConcreteTextStorage> _backingStorage;
    /// The text with its folds collapsed; null while the document's own text serves.
    std::shared_ptr<NSMutableAttributedString> _contents;
    /// Whether text without folds is the document's. Not in views from archives, which bring their own.
    bool _sharesContents = true;
    /// Of the document's text, as far as this view was told.
    NSUInteger _backingLength = 0;
    bool _fixingAttributes = false;
    /// Brackets of the document that began while this view was there.
    NSUInteger _backingBrackets = 0;
    std::unique_ptr<QVFoldMap> _folds;
};

} // namespace quorvane
