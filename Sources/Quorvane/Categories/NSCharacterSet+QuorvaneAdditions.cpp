#include "Quorvane/Categories/NSCharacterSet+QuorvaneAdditions.h"

namespace quorvane {

// None of these is ever destroyed: parses ask for them on their queues while the process ends.

std::shared_ptr<const NSCharacterSet> qv_newlineCharacterSet() {
    static const auto &set = *new auto(NSCharacterSet::characterSetWithCharactersInString(u"\r\n"));
    return set;
}

std::shared_ptr<const NSCharacterSet> qv_indentationCharacterSet() {
    static const auto &set = *new auto(NSCharacterSet::characterSetWithCharactersInString(u" \t"));
    return set;
}

std::shared_ptr<const NSCharacterSet> qv_defaultIdentifierCharacterSet() {
    static const auto &set = *new auto(NSCharacterSet::alphanumericCharacterSet()->characterSetByFormingUnion(
        *NSCharacterSet::characterSetWithCharactersInString(u"_")));
    return set;
}

} // namespace quorvane
