#include "Quorvane/Categories/NSCharacterSet+QuorvaneAdditions.h"

namespace quorvane {

std::shared_ptr<const NSCharacterSet> qv_newlineCharacterSet() {
    static const auto set = NSCharacterSet::characterSetWithCharactersInString(u"\r\n");
    return set;
}

std::shared_ptr<const NSCharacterSet> qv_indentationCharacterSet() {
    static const auto set = NSCharacterSet::characterSetWithCharactersInString(u" \t");
    return set;
}

std::shared_ptr<const NSCharacterSet> qv_defaultIdentifierCharacterSet() {
    static const auto set = NSCharacterSet::alphanumericCharacterSet()->characterSetByFormingUnion(
        *NSCharacterSet::characterSetWithCharactersInString(u"_"));
    return set;
}

} // namespace quorvane
