#include "Platform/AppKit/NSCursor.h"

#include <map>

namespace quorvane {

std::shared_ptr<const NSCursor> NSCursor::cursorNamed(const NSString &name) {
    // Never destroyed: attributes that hold cursors may outlive static objects.
    static const auto *const cursors = [] {
        auto *const made = new std::map<NSString, std::shared_ptr<const NSCursor>>;
        for (const char16_t *known :
             {u"arrow", u"IBeam", u"pointingHand", u"openHand", u"closedHand", u"crosshair",
              u"resizeLeftRight", u"resizeUpDown", u"operationNotAllowed"}) {
            const std::shared_ptr<NSCursor> cursor(new NSCursor);
            cursor->_name = known;
            made->emplace(known, cursor);
        }
        return made;
    }();
    const auto found = cursors->find(name);
    return found == cursors->end() ? nullptr : found->second;
}

std::shared_ptr<const NSCursor> NSCursor::arrowCursor() { return cursorNamed(u"arrow"); }
std::shared_ptr<const NSCursor> NSCursor::IBeamCursor() { return cursorNamed(u"IBeam"); }
std::shared_ptr<const NSCursor> NSCursor::pointingHandCursor() { return cursorNamed(u"pointingHand"); }
std::shared_ptr<const NSCursor> NSCursor::openHandCursor() { return cursorNamed(u"openHand"); }
std::shared_ptr<const NSCursor> NSCursor::closedHandCursor() { return cursorNamed(u"closedHand"); }
std::shared_ptr<const NSCursor> NSCursor::crosshairCursor() { return cursorNamed(u"crosshair"); }
std::shared_ptr<const NSCursor> NSCursor::resizeLeftRightCursor() { return cursorNamed(u"resizeLeftRight"); }
std::shared_ptr<const NSCursor> NSCursor::resizeUpDownCursor() { return cursorNamed(u"resizeUpDown"); }
std::shared_ptr<const NSCursor> NSCursor::operationNotAllowedCursor() {
    return cursorNamed(u"operationNotAllowed");
}

NSString NSCursor::description() const { return NSString::stringWithFormat(u"<NSCursor %@>", _name); }

const NSCodingClass &NSCursor::codingClass() {
    static const NSCodingClass codingClass{u"NSCursor", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<NSCursor>(new NSCursor);
                                           }};
    return codingClass;
}

void NSCursor::encodeWithCoder(NSCoder &coder) const { coder.encodeString(_name, u"NSCursorName"); }

std::shared_ptr<NSSecureCoding> NSCursor::initWithCoder(NSCoder &coder, std::shared_ptr<NSSecureCoding>) {
    return std::const_pointer_cast<NSCursor>(cursorNamed(coder.decodeString(u"NSCursorName")));
}

} // namespace quorvane
