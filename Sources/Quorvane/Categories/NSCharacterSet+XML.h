#pragma once

#include "Platform/Foundation/NSCharacterSet.h"

namespace quorvane {

class QVXMLElement;

/// The union of the sets that an element's children name: "alphanumeric", "alpha", "lower-alpha",
/// "upper-alpha", "decimal", "punctuation", "symbols", "whitespace", and the characters of a "string".
/// Unknown children and text between them add nothing. Never null.
QV_EXPORT std::shared_ptr<const NSCharacterSet> qv_characterSetWithXMLElement(const QVXMLElement &element);

} // namespace quorvane
