#pragma once

#include "Platform/Foundation/NSIndexSet.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Quorvane/Text/QVTextStorage.h"

namespace quorvane {

class QVFoldingTextStorage;
class QVLineRunArray;
template <typename Value> class QVMutableRLEArray;

/// Posted on the main thread, with the storage as object, when the parse tree matches the text in the ranges.
QV_EXPORT extern const char16_t *const QVTextStorageDidUpdateParseNotification;
/// Likewise when the highlighting of a range has changed.
QV_EXPORT extern const char16_t *const QVTextStorageDidUpdateSyntaxHighlightingNotification;
/// The key of both under which a `std::vector<NSRange>` stands.
QV_EXPORT extern const char16_t *const QVTextStorageUpdatedRangesKey;

/// The document: it owns the characters, their attributes and highlighting, the language of each character,
/// the table of lines and the parse. An edit changes all of these at once, on the main thread, at a cost that
/// does not grow with the document; the parse follows behind on its queue, and its results are cut around
/// what was typed meanwhile and applied. At most one reparse is in flight; edits that arrive while it runs
/// are gathered into one for the next round.
///
/// Main thread, the parse's own tasks excepted, which touch nothing of the storage.
class QV_EXPORT QVConcreteTextStorage final : public QVTextStorage, public NSSecureCoding {
public:
    static std::shared_ptr<QVConcreteTextStorage> init();
    static std::shared_ptr<QVConcreteTextStorage> initWithString(std::u16string_view string,
                                                                 const NSAttributes &attributes = {});
    static std::shared_ptr<QVConcreteTextStorage>
    initWithAttributedString(const NSAttributedString &attributedString);
    /// Takes the string over as it is; nobody else may change it any more.
    static std::shared_ptr<QVConcreteTextStorage>
    initWithOwnedMutableAttributedString(std::shared_ptr<NSMutableAttributedString> contents);
    ~QVConcreteTextStorage() override;

    /// A document of its own with the same text, syntax and settings.
    std::shared_ptr<QVConcreteTextStorage> copy() const;

    // Folding views. They register themselves; none is owned.

    void addFoldingTextStorage(QVFoldingTextStorage *foldingTextStorage);
    void removeFoldingTextStorage(QVFoldingTextStorage *foldingTextStorage);
    void beginEditingWithFoldingTextStorage(QVFoldingTextStorage *foldingTextStorage);
    void endEditingWithFoldingTextStorage(QVFoldingTextStorage *foldingTextStorage);
    void performBlockWithFoldingTextStorages(QVBlock<void(QVFoldingTextStorage &)> block);
    /// The text with its own attributes, for views that show it whole.
    const NSMutableAttributedString &contents() const { return *_contents; }

    /// Whether a reparse is on its way or its results have not come back yet.
    bool isParseUpdating() const { return _parseUpdating; }
    /// Colours a range again without parsing.
    void invalidateStylingInRange(NSRange range);

    std::u16string_view className() const override { return u"QVConcreteTextStorage"; }

private:
    std::shared_ptr<NSMutableAttributedString> _contents;
    bool _parseUpdating = false;
};

} // namespace quorvane
