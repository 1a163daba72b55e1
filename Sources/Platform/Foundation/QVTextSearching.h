#pragma once

#include "Platform/Foundation/NSString.h"

namespace quorvane {

/// Questions about text that may stand in two pieces, as a document's does: the platform's own searches and
/// line operations on a `QVTextReader`. `NSString`, `NSScanner` and the engine's line lookups stand on them.
/// All throw `NSRangeException` when they are asked about a place outside of the text.

/// The first character (the last with `NSBackwardsSearch`) in the range that belongs to the set; with
/// `NSAnchoredSearch` only the range's own first (last) one counts. A pair of surrogates is one character and
/// answered whole. `{NSNotFound, 0}` where there is none.
QV_EXPORT NSRange QVRangeOfCharacterFromSet(QVTextReader text, const NSCharacterSet &set,
                                            NSStringCompareOptions options, NSRange range);

/// Where the text first occurs at or behind a position, unit by unit; `NSNotFound` where it doesn't. An empty
/// text is never found.
QV_EXPORT NSUInteger QVLocationOfText(QVTextReader text, std::u16string_view searched, NSUInteger from);

/// The range of the composed character sequence (extended grapheme cluster) that holds the unit at the index.
/// The text's length is no such index.
QV_EXPORT NSRange QVRangeOfComposedCharacterSequenceAtIndex(QVTextReader text, NSUInteger index);

/// The lines that a range touches, as the platform sees them: LF, CR, CR LF, NEL, LINE SEPARATOR and
/// PARAGRAPH SEPARATOR end a line. `start` is where the line that holds the range's location begins;
/// `contentsEnd` and `end` are where the line that holds the range's last unit ends, without and with its
/// terminator (the line at the location for an empty range). A range that ends with a terminator does not
/// reach into the next line. Any out-parameter may be null.
QV_EXPORT void QVPlatformGetLineStart(QVTextReader text, NSUInteger *start, NSUInteger *end,
                                      NSUInteger *contentsEnd, NSRange range);

/// The range of these lines, terminators included.
QV_EXPORT NSRange QVPlatformLineRangeForRange(QVTextReader text, NSRange range);

} // namespace quorvane
