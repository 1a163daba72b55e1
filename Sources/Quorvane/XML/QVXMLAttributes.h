#pragma once

#include "Quorvane/XML/QVXMLElement.h"

namespace quorvane {

/// Whether an attribute's text is "true" in any case; a missing attribute is not.
inline bool QVAttributeIsTrue(const NSString &value) { return value.lowercaseString() == u"true"; }

/// The attribute's text, null where it is empty: most attributes that say nothing count as missing.
inline NSString QVNonEmptyAttribute(const QVXMLElement &element, const NSString &attribute) {
    NSString value = element.valueForAttribute(attribute);
    return value.length() != 0 ? value : NSString();
}

} // namespace quorvane
