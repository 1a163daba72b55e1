#pragma once

#include "Platform/CoreText/CTFont.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Quorvane/Text/QVTextStorage.h"

namespace quorvane {

class NSParagraphStyle;
class QVBackingStorageView;
class QVLineRunArray;
class QVPackage;
template <typename Value> class QVMutableRLEArray;
struct QVStyling;
struct QVStylingDefaults;

/// Posted on the main thread, with the storage as object, when the parse tree matches the text in the ranges.
inline constexpr const char16_t *QVTextStorageDidUpdateParseNotification =
    u"QVTextStorageDidUpdateParseNotification";
/// Likewise when the highlighting of a range has changed.
inline constexpr const char16_t *QVTextStorageDidUpdateSyntaxHighlightingNotification =
    u"QVTextStorageDidUpdateSyntaxHighlightingNotification";
/// The key of both under which a `std::vector<NSRange>` stands.
inline constexpr const char16_t *QVTextStorageUpdatedRangesKey = u"QVUpdatedRanges";

/// The document: it owns the characters, their attributes and highlighting, the language of each character,
/// the table of lines and the parse. An edit changes all of these at once, on the main thread, at a cost that
/// does not grow with the document; the parse follows behind on its queue, and its results are cut around
/// what was typed meanwhile and applied. At most one reparse is in flight; edits that arrive while it runs
/// are gathered into one for the next round.
///
/// Properties can be observed by their names: `parse`, `syntax`, `parsingEnabled`, `parseDelegate`,
/// `defaultTextAttributes`, `lineEndings`, `indentationStyle`, `tabWidth`.
///
/// Main thread, the parse's own tasks excepted, which touch nothing of the storage. Packages may come and go
/// on any thread; then the storage follows with the next tasks of the main queue.
class QV_EXPORT QVConcreteTextStorage final : public QVTextStorage, public NSSecureCoding {
public:
    // Text that comes without a font or a colour gets the default ones, as inserted text does.

    static std::shared_ptr<QVConcreteTextStorage> init();
    static std::shared_ptr<QVConcreteTextStorage> initWithString(std::u16string_view string,
                                                                 const NSAttributes &attributes = {});
    static std::shared_ptr<QVConcreteTextStorage>
    initWithAttributedString(const NSAttributedString &attributedString);
    /// Takes the string over without copying it; nobody else may change it any more.
    static std::shared_ptr<QVConcreteTextStorage>
    initWithOwnedMutableAttributedString(std::shared_ptr<NSMutableAttributedString> contents);
    ~QVConcreteTextStorage() override;

    /// A document of its own with the same text, syntax and settings.
    std::shared_ptr<QVConcreteTextStorage> copy() const;

    // Text and attributes

    NSUInteger length() const override;
    QVTextReader string() const override;
    using QVTextStorage::attributesAtIndex;
    /// The default attributes for an index at or past the end, with an empty range there.
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override;
    /// New text looks like the character before it, or else like the first one, until the parse has answered.
    void replaceCharactersInRange(NSRange range, std::u16string_view withString) override;
    /// The text keeps its attributes; what lacks a font or a colour gets the default one.
    void replaceCharactersInRange(NSRange range, const NSAttributedString &withAttributedString) override;
    void setAttributes(const NSAttributes &attributes, NSRange range) override;
    void addAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range) override;
    void addAttributes(const NSAttributes &attributes, NSRange range) override;
    void removeAttribute(NSAttributeKey key, NSRange range) override;
    void beginEditing() override;
    void endEditing() override;
    void processEditing() override;

    // Fixing attributes: tabulators as wide as the font and the tab width say, and the default tracking

    bool fixesAttributesLazily() const override { return true; }
    void fixAttributesInRange(NSRange range) override;
    bool isEnsuringAttributes() const override { return _ensuringAttributesCount != 0; }

    // Parsing

    bool isParsingEnabled() const override { return _parsingEnabled; }
    void setParsingEnabled(bool parsingEnabled) override;
    /// Takes all text away, and the parse with it: the next one comes when the syntax is set anew.
    void clearContents() override;
    std::shared_ptr<QVSyntax> syntax() const override { return _syntax; }
    void setSyntax(std::shared_ptr<QVSyntax> syntax) override;
    std::shared_ptr<QVSyntax> syntaxAtLocation(NSUInteger location) const override;
    std::shared_ptr<QVParse> parse() const override { return _parse; }
    std::shared_ptr<QVParseDelegate> parseDelegate() const override { return _parseDelegate.lock(); }
    void setParseDelegate(const std::shared_ptr<QVParseDelegate> &parseDelegate) override;
    /// Whether a reparse is on its way or its results have not come back yet. Stays true when somebody else
    /// cancels the parse that is at work: no further round starts then until the syntax is set anew.
    bool isParseUpdating() const { return _parseUpdating; }
    /// Colours a range again without parsing.
    void invalidateStylingInRange(NSRange range);

    // Settings of the document

    NSAttributes defaultTextAttributes() const override { return _defaultTextAttributes; }
    void setDefaultTextAttributes(const NSAttributes &defaultTextAttributes) override;
    QVLineEndings lineEndings() const override { return _lineEndings; }
    void setLineEndings(QVLineEndings lineEndings) override;
    QVIndentationStyle indentationStyle() const override { return _indentationStyle; }
    void setIndentationStyle(QVIndentationStyle indentationStyle) override;
    NSUInteger tabWidth() const override { return _tabWidth; }
    void setTabWidth(NSUInteger tabWidth) override;

    // Lines. In the middle of an editing bracket they are still those from before it.

    NSUInteger numberOfLines() const override;
    NSRange characterRangeForLineNumber(NSUInteger lineNumber) const override;
    NSRange characterRangeForLineNumbersInRange(NSRange range) const override;
    void enumerateLinesInRange(NSRange range, LineBlock usingBlock) const override;
    NSUInteger lineNumberForCharacterIndex(NSUInteger index,
                                           NSRange *actualCharacterRange = nullptr) const override;
    NSRange rangeOfLineNumbersForCharacterRange(NSRange range,
                                                NSRange *actualCharacterRange = nullptr) const override;
    void enumerateLinesForCharacterRange(NSRange range, LineBlock usingBlock) const override;

    // Highlighting and extended attributes

    using QVTextStorage::extendedAttributesAtIndex;
    using QVTextStorage::syntaxHighlightingAttributesAtIndex;
    /// An index at the end reads the last character.
    NSAttributes syntaxHighlightingAttributesAtIndex(NSUInteger index,
                                                     NSRange *effectiveRange) const override;
    void enumerateSyntaxHighlightingAttributesInRange(NSRange range,
                                                      NSAttributedStringEnumerationOptions options,
                                                      AttributesBlock usingBlock) const override;
    NSAttributes extendedAttributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override;
    void setExtendedAttributes(const NSAttributes &extendedAttributes, NSRange range) override;
    void enumerateExtendedAttributesInRange(NSRange range, NSAttributedStringEnumerationOptions options,
                                            AttributesBlock usingBlock) const override;

    // Views that fold the text. They register themselves, and remove themselves when they go; none is owned.

    void addFoldingTextStorage(QVBackingStorageView *foldingTextStorage);
    void removeFoldingTextStorage(QVBackingStorageView *foldingTextStorage);
    void beginEditingWithFoldingTextStorage(QVBackingStorageView *foldingTextStorage);
    void endEditingWithFoldingTextStorage(QVBackingStorageView *foldingTextStorage);
    void performBlockWithFoldingTextStorages(QVBlock<void(QVBackingStorageView &foldingTextStorage)> block);
    /// The text with its own attributes as they are, not fixed, for views that show it whole.
    const NSMutableAttributedString &contents() const { return *_contents; }

    // Observing

    std::any valueForKey(const NSString &key) const override;

    std::u16string_view className() const override { return u"QVConcreteTextStorage"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    /// The text and the settings; attributes of characters and the syntax are not archived.
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    friend struct QVConcreteTextStorageProbe;
    using Attributes = QVMutableRLEArray<NSAttributes>;
    using Syntaxes = QVMutableRLEArray<std::shared_ptr<QVSyntax>>;

    /// What tasks on other queues may know of the storage.
    struct Link;
    /// An edit, or several as one, that a parse has not seen: where its new text stands, and by how much it
    /// made the text longer.
    struct Edit {
        NSRange range = NSNotFoundRange;
        NSInteger changeInLength = 0;

        bool isNone() const { return range.location == NSNotFound; }
        NSUInteger end() const { return NSMaxRange(range); }
        /// Behind the text that it took away, as that stood before.
        NSUInteger oldEnd() const { return end() - static_cast<NSUInteger>(changeInLength); }
        NSUInteger oldLength() const { return range.length - static_cast<NSUInteger>(changeInLength); }
        void coalesceWithEdit(NSRange editedRange, NSInteger change);
    };

    QVConcreteTextStorage();
    static std::shared_ptr<QVConcreteTextStorage> allocate();
    void adoptContents(std::shared_ptr<NSMutableAttributedString> contents);

    // Editing
    NSAttributes attributesForTypingAtLocation(NSUInteger location);
    void completeAttributes(NSMutableAttributedString &attributedString) const;
    void replaceCharacters(NSRange range, const NSAttributedString &replacement);
    /// The block puts the replacement into the contents, when all have been told that it will come.
    void replaceCharacters(NSRange range, const NSAttributedString &replacement,
                           QVBlock<void()> changeContents);
    template <typename Change, typename Tell> void changeAttributes(NSRange range, Change change, Tell tell);
    /// What was edited in the bracket that is open; the lines and the rounds know nothing of it yet.
    Edit unprocessedEdit() const;

    // Rounds
    void reparseRange(NSRange range, NSInteger changeInLength);
    void didFinishReparsing(NSRange range);
    void reparsePendingEdit();
    void forgetRounds();
    void setParse(std::shared_ptr<QVParse> parse);
    void didEnableParsing();
    void didDisableParsing();
    void postNotification(const char16_t *name, std::vector<NSRange> ranges);

    // Styling
    QVStylingDefaults stylingDefaults() const;
    /// Where a range stood before an edit; it grows by what the edit took away in its midst.
    static NSRange rangeBeforeEdit(NSRange range, const Edit &edit);
    void updateStylingInRange(NSRange range);
    void resolvedStylesDidChange();
    void restyleCutRanges();
    /// Takes in what highlighting makes of a range of the text as it was before the edit, null for nothing.
    /// What is taken whole leaves the styling.
    void didFinishStylingRange(NSRange range, QVStyling *styling, const Edit &unseenEdit);
    void restyleRangeOnceParsed(NSRange range);
    void applyStylingAttributesToRange(NSRange range, QVStyling *styling, NSUInteger fromIndex);
    void setFont(const NSAttributeValue &font, NSRange range);
    void fillSyntaxes();
    void resetStylingAttributesInRange(NSRange range);
    void resetFontsInRange(NSRange range);

    // Attributes
    static NSAttributes completedTextAttributes(const NSAttributes &attributes);
    template <typename Change> void markEdited(bool marks, NSRange range, Change change);
    /// A null value removes the attribute.
    void updateAttribute(NSAttributeKey key, const NSAttributeValue *value, NSRange inRange, bool marks);
    /// Keeps the face of each run.
    void updateFontSize(CGFloat size, NSRange inRange, bool marks);
    /// Null stands for the default attributes' style.
    void updateParagraphStyle(const std::shared_ptr<const NSParagraphStyle> &style, NSRange inRange,
                              bool marks);
    std::shared_ptr<const NSParagraphStyle> defaultParagraphStyle() const;
    std::shared_ptr<const NSParagraphStyle>
    paragraphStyleWithTabs(const std::shared_ptr<const NSParagraphStyle> &style) const;
    void tabWidthDidChange(NSUInteger tabWidth);

    // Observing
    void startObserving();
    void startObservingPackages();
    void observeValueForKeyPath(const NSKeyValueChange &change);
    void packagesWillUnload(const std::vector<std::shared_ptr<QVPackage>> &packages);
    void packagesDidLoad(const std::vector<std::shared_ptr<QVPackage>> &packages);

    std::shared_ptr<QVSyntax> _syntax;
    /// The name of a syntax whose package was unloaded.
    NSString _syntaxNameForReloading;
    std::weak_ptr<QVParseDelegate> _parseDelegate;
    std::shared_ptr<NSMutableAttributedString> _contents;
    std::unique_ptr<Attributes> _extendedAttributes;
    /// Shared with walks alone: the colours of a whole text come in by exchanging the array.
    std::shared_ptr<Attributes> _syntaxHighlightingAttributes;
    /// Null stands for the document's syntax.
    std::shared_ptr<Syntaxes> _syntaxes;
    std::unique_ptr<QVLineRunArray> _lines;
    NSAttributes _defaultTextAttributes;
    NSAttributes _defaultSyntaxHighlightingAttributes;
    /// What arrived while a parse was running.
    Edit _pendingEdit;
    /// Parsed already, to be reported once the parse has caught up.
    NSIndexSet _reparseRangesToInvalidate;
    /// Coloured by a result of which an edit cut away a part in the middle, to be coloured again once the
    /// parse has caught up. In the text as it is now.
    NSIndexSet _rangesToRestyle;
    /// For each styling on its way that no reparse goes with: what the parse has not seen of the text then.
    std::vector<std::shared_ptr<Edit>> _editsSinceStyling;
    NSUInteger _ensuringAttributesCount = 0;
    std::vector<QVBackingStorageView *> _foldingTextStorages;
    bool _parsingEnabled = true;
    bool _parseUpdating = false;
    /// The lines and the rounds know of the bracket's edit; those who hear of it are being told.
    bool _processing = false;
    /// A parse was made in the middle of a bracket, and gets the text at its end.
    bool _reparsesWholeText = false;
    /// A round came to its end in the middle of a bracket; the next one starts behind it.
    bool _reparsesPendingEdit = false;
    /// The attributes of typed text as they were put together last.
    struct {
        NSAttributes neighbour;
        NSAttributes defaults;
        NSAttributes attributes;
    } _typing;
    /// The default paragraph style with tabulators as wide as font and tab width say; null when not known.
    std::shared_ptr<const NSParagraphStyle> _tabbedParagraphStyle;
    std::shared_ptr<QVParse> _parse;
    QVLineEndings _lineEndings = QVLineEndingsLF;
    QVIndentationStyle _indentationStyle = QVIndentationStyleTabs;
    NSUInteger _tabWidth = 4;
    std::shared_ptr<Link> _link;
    std::vector<NSKeyValueObservation> _observations;
    std::vector<NSNotificationToken> _notificationTokens;
};

} // namespace quorvane
