#pragma once

#include "Platform/Foundation/NSAttributedString.h"

namespace quorvane {

/// What a view on a document hears from the `QVConcreteTextStorage` behind it. Views follow each change at
/// once and in step with the document's own editing brackets, so that their text, their lines and what is
/// laid out on them never differ from it for longer than one call. Ranges are those of the document.
/// `QVFoldingTextStorage` is the one view there is.
///
/// Main thread. A view may remove itself while it is told.
class QV_EXPORT QVBackingStorageView {
public:
    /// Before the document begins to edit and behind the end of it; the calls nest.
    virtual void backingStorageDidBeginEditing() = 0;
    virtual void backingStorageDidEndEditing() = 0;

    // Behind a change of attributes. While the document `isEnsuringAttributes`, the change only puts right
    // what nobody has read yet, and must not invalidate layout.

    virtual void backingStorageDidAddAttribute(NSAttributeKey key, const NSAttributeValue &value,
                                               NSRange range) = 0;
    virtual void backingStorageDidAddAttributes(const NSAttributes &attributes, NSRange range) = 0;
    virtual void backingStorageDidRemoveAttribute(NSAttributeKey key, NSRange range) = 0;
    virtual void backingStorageDidSetAttributes(const NSAttributes &attributes, NSRange range) = 0;
    /// The attributes of a range depend on something that has changed, such as the tab width: they are to be
    /// fixed again before they are read, and laid out again.
    virtual void backingStorageDidInvalidateAttributesInRange(NSRange range) = 0;

    // Around a change of characters, with the range as it was before. What is put in is good for the call.

    /// Nothing has changed yet, and the document's observers have not been told.
    virtual void
    backingStorageWillReplaceCharactersInRange(NSRange range,
                                               const NSAttributedString &withAttributedString) = 0;
    /// The document's text, highlighting and syntaxes have changed; its lines follow at the end of editing.
    virtual void
    backingStorageDidReplaceCharactersInRange(NSRange range,
                                              const NSAttributedString &withAttributedString) = 0;
    /// All text went at once, without the calls above.
    virtual void backingStorageDidClearContents() = 0;

protected:
    ~QVBackingStorageView() = default;
};

} // namespace quorvane
