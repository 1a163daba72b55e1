#pragma once

#include "Platform/Foundation/NSString.h"

namespace quorvane {

/// Where a context ends that is made of the lines that are indented more deeply than the one it begins on.
/// Blank lines and comments that trail it stand outside, those between its lines belong to it. The range is
/// that of what begins the context; a null or empty prefix means that no line is a comment. Nothing behind
/// `lookedAtEnd` has a part in the answer. Private to the parse.
NSUInteger QVEndOfWhitespaceContext(std::u16string_view text, NSRange range, const NSString &commentPrefix,
                                    NSUInteger tabWidth, NSUInteger *lookedAtEnd);

} // namespace quorvane
