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
/// lacks is found when lines are laid out. Only CR, LF and CR LF end a paragraph; in one that is longer than
/// `limits::paragraphFixingReach`, a place that is further from its start follows the character before it, as
/// far as that is fixed.
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

    NSTextStorageEditActions editedMask() const { return _edit.mask; }
    /// Covers all edits, in the text as it is now; `{NSNotFound, 0}` when nothing was edited.
    NSRange editedRange() const { return _edit.range; }
    NSInteger changeInLength() const { return _edit.changeInLength; }

    /// Marks the edited range's attributes as not fixed, or fixes them at once in storages that aren't lazy.
    /// What was edited is forgotten when the outermost override returns. What an override changes before it
    /// calls this one counts as part of the edit; what is changed behind it (by those who are told, say)
    /// makes another round of its own when this one is over.
    virtual void processEditing();

    // Fixing attributes

    /// False: attributes are fixed in `processEditing`.
    virtual bool fixesAttributesLazily() const { return false; }
    /// Makes the attributes of a range consistent. While it runs for a reader, changes of attributes are no
    /// edits: nobody has seen the text without them.
    virtual void fixAttributesInRange(NSRange range);
    /// Fixes what isn't yet in the range, and some of what lies around it, so that readers who go from
    /// character to character pay once for many. Storages that are not lazy have nothing to do.
    virtual void ensureAttributesAreFixedInRange(NSRange range);
    /// The range's attributes are fixed again before they are read.
    virtual void invalidateAttributesInRange(NSRange range);

    std::u16string_view className() const override { return u"NSTextStorage"; }

protected:
    NSTextStorage();
    ~NSTextStorage() override;

    /// Fixes what is about to be read, in lazy storages.
    void prepareToReadAttributesInRange(NSRange range) const override;

    // The steps of `fixAttributesInRange`.

    /// Does nothing: the base substitutes no fonts.
    virtual void fixFontAttributeInRange(NSRange range);
    virtual void fixParagraphStyleAttributeInRange(NSRange range);
    virtual void fixAttachmentAttributeInRange(NSRange range);

private:
    struct Edit {
        NSTextStorageEditActions mask = 0;
        NSRange range = NSNotFoundRange;
        NSInteger changeInLength = 0;
    };
    enum class Round { None, Processing, Telling };
    class Fixing;

    void processGatheredEdits();
    NSRange rangeToFixBehindEdit() const;
    void moveUnfixedRanges(NSRange range, NSInteger changeInLength);
    /// In stretches of so many characters, aligned with the text's start.
    void fixWhatIsUnfixed(NSRange range, NSUInteger together);
    bool isUnfixed(NSUInteger index) const;
    /// Takes a range off those that aren't fixed.
    void removeUnfixedRange(NSRange range);

    Edit _edit;
    /// What was edited while those who hear of `_edit` were told.
    Edit _nextEdit;
    Round _round = Round::None;
    NSUInteger _editingDepth = 0;
    NSUInteger _lazyFixingDepth = 0;
    /// Where attributes are not fixed: sorted, apart from each other, moved along with each edit.
    std::vector<NSRange> _unfixedRanges;
};

} // namespace quorvane
