#pragma once

#include "Platform/Foundation/NSAttributedString.h"

namespace quorvane {

/// What an edit touched; a bit mask.
using NSTextStorageEditActions = std::uint64_t;
inline constexpr NSTextStorageEditActions NSTextStorageEditedAttributes = 1;
inline constexpr NSTextStorageEditActions NSTextStorageEditedCharacters = 2;

/// The base of what holds a document's text: an attributed string that gathers the edits between
/// `beginEditing` and `endEditing` into one, reports it once in `processEditing`, and fixes attributes only
/// where somebody reads them. Subclasses keep the text, and call `edited` behind each change.
///
/// Fixing makes attributes consistent. The base gives each paragraph the paragraph style of its first
/// character and takes attachments off characters other than U+FFFC. It substitutes no fonts: what a font
/// lacks is found when lines are laid out.
///
/// Main thread.
class QV_EXPORT NSTextStorage : public NSMutableAttributedString {
public:
    // The edit bracket

    /// Brackets nest; `processEditing` runs when the outermost ends, if anything was edited.
    void beginEditing() override;
    void endEditing() override;

    /// To be called behind each change, by who changes the text: what it touched, the range in the text as it
    /// was before, and by how much its length changed. Outside of a bracket `processEditing` runs at once.
    void edited(NSTextStorageEditActions mask, NSRange range, NSInteger changeInLength);

    // What was edited since the bracket began; meaningful in `processEditing`.

    NSTextStorageEditActions editedMask() const { return _editedMask; }
    /// Covers all edits, in the text as it is now; `{NSNotFound, 0}` when nothing was edited.
    NSRange editedRange() const { return _editedRange; }
    NSInteger changeInLength() const { return _changeInLength; }

    /// Marks the edited range's attributes as not fixed, or fixes them at once in storages that aren't lazy.
    /// What was edited is forgotten when the outermost override returns.
    virtual void processEditing();

    // Fixing attributes

    /// False: attributes are fixed in `processEditing`.
    virtual bool fixesAttributesLazily() const { return false; }
    /// Makes the attributes of a range consistent.
    virtual void fixAttributesInRange(NSRange range);
    /// Fixes what isn't yet in the range. Storages that are not lazy have nothing to do.
    virtual void ensureAttributesAreFixedInRange(NSRange range);
    /// The range's attributes are fixed again before they are read.
    virtual void invalidateAttributesInRange(NSRange range);

    std::u16string_view className() const override { return u"NSTextStorage"; }

protected:
    NSTextStorage();
    ~NSTextStorage() override;

    // The steps of `fixAttributesInRange`.

    /// Does nothing: the base substitutes no fonts.
    virtual void fixFontAttributeInRange(NSRange range);
    virtual void fixParagraphStyleAttributeInRange(NSRange range);
    virtual void fixAttachmentAttributeInRange(NSRange range);

private:
    void noteEdit(NSRange range, NSInteger changeInLength);

    NSTextStorageEditActions _editedMask = 0;
    NSRange _editedRange = {NSNotFound, 0};
    NSInteger _changeInLength = 0;
    NSUInteger _editingDepth = 0;
    /// Where attributes are not fixed: sorted, apart from each other, moved along with each edit.
    std::vector<NSRange> _unfixedRanges;
};

} // namespace quorvane
