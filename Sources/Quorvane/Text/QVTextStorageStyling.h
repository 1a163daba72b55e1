#pragma once

#include "Platform/CoreText/CTFont.h"
#include "Platform/Foundation/NSAttributes.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/Text/QVConcreteTextStorage.h"
#include "Quorvane/Text/QVMutableRLEArray.h"

#include <atomic>

namespace quorvane {

/// What highlighting makes of a range of text: run arrays with one slot for each of its characters. Built on
/// a parse's queue, applied by the storage on the main thread, which keeps the arrays of a whole text.
struct QVStyling {
    /// The default highlighting, no font and the document's syntax everywhere.
    QVStyling(NSUInteger length, const NSAttributes &defaultAttributes,
              const std::shared_ptr<QVSyntax> &syntax);

    std::shared_ptr<QVMutableRLEArray<NSAttributes>> attributes;
    /// Null where highlighting asks for none.
    QVMutableRLEArray<CTFontRef> fonts;
    std::shared_ptr<QVMutableRLEArray<std::shared_ptr<QVSyntax>>> syntaxes;
};

/// What a reparse and a styling take along to the parse's queue, so that they don't look at the storage.
struct QVStylingDefaults {
    /// Of the document's plain text.
    NSAttributes textAttributes;
    /// What highlighting starts from.
    NSAttributes highlightingAttributes;
};

/// Builds the styling of a range from the tree of a parse. Read access.
std::shared_ptr<QVStyling> QVStylingForRange(const QVParse &parse, NSRange range,
                                             const QVStylingDefaults &defaults);

/// What outlives the storage: tasks on other queues hold it, and find out whether they are still wanted.
struct QVConcreteTextStorage::Link {
    /// The storage's parse, null when it has none or is gone. Only ever compared. Any thread.
    std::atomic<const QVParse *> parse = nullptr;
    /// To be locked on the main thread alone, so that a storage is never destroyed on another one.
    std::weak_ptr<NSObject> storage;

    /// Main thread; null when the storage is gone.
    std::shared_ptr<QVConcreteTextStorage> lockedStorage() const {
        return std::static_pointer_cast<QVConcreteTextStorage>(storage.lock());
    }
};

} // namespace quorvane
