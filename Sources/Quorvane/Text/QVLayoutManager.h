#pragma once

#include "Platform/AppKit/NSTextStorage.h"

namespace quorvane {

/// What lays out a storage's text, as far as attachments need it while they measure and draw themselves: the
/// storage, whose attributes tell their font. An interface; lines are laid out by who derives from it. Main
/// thread.
class QV_EXPORT QVLayoutManager : public NSObject {
public:
    /// May be null.
    virtual std::shared_ptr<NSTextStorage> textStorage() const = 0;

    std::u16string_view className() const override { return u"QVLayoutManager"; }

protected:
    QVLayoutManager();
    ~QVLayoutManager() override;
};

} // namespace quorvane
