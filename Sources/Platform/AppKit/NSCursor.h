#pragma once

#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

/// A shape of the pointer, by its name: what text and attachments ask for, and what a host shows in its own
/// toolkit's way. There is one object for each name. For any thread.
class QV_EXPORT NSCursor final : public NSObject, public NSSecureCoding {
public:
    static std::shared_ptr<const NSCursor> arrowCursor();
    static std::shared_ptr<const NSCursor> IBeamCursor();
    static std::shared_ptr<const NSCursor> pointingHandCursor();
    static std::shared_ptr<const NSCursor> openHandCursor();
    static std::shared_ptr<const NSCursor> closedHandCursor();
    static std::shared_ptr<const NSCursor> crosshairCursor();
    static std::shared_ptr<const NSCursor> resizeLeftRightCursor();
    static std::shared_ptr<const NSCursor> resizeUpDownCursor();
    static std::shared_ptr<const NSCursor> operationNotAllowedCursor();
    /// Null for a name that is none of those above.
    static std::shared_ptr<const NSCursor> cursorNamed(const NSString &name);

    /// "pointingHand" and the like.
    const NSString &name() const { return _name; }

    std::u16string_view className() const override { return u"NSCursor"; }
    /// "<NSCursor pointingHand>"
    NSString description() const override;

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    /// Answers the one object of that name; a name that nobody knows does not come back.
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

private:
    NSCursor() = default;

    NSString _name;
};

} // namespace quorvane
