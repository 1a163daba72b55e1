#pragma once

#include "Platform/CoreText/CTFont.h"
#include "Platform/Foundation/NSAttributes.h"

namespace quorvane {

class QVStyle;

// How a style changes what text looks like. Any thread.

/// Puts what the style says into the attributes that are being built: font, colours, shadow and lines. "None"
/// takes an attribute out, and what the style does not speak of stays. The font is derived from the one of
/// the base attributes, those of the document's plain text; where that has no such face the attributes keep
/// theirs.
///
/// A weight below bold changes no font, and any font style, "normal" too, asks for italic: themes are written
/// with that in mind.
QV_EXPORT void QVStyleApplyTextAttributes(const QVStyle &style, NSMutableAttributes &attributes,
                                          const NSAttributes &baseAttributes);

/// The base font with the bold and italic traits of the attributes added to its own; null where its family
/// has no such face. Fonts are kept for the process's life, so that the same traits of one face cost two
/// look-ups. A null font is asserted; where the handler returns the answer is null.
QV_EXPORT CTFontRef QVStyleGetCachedFontForAttributes(const CTFontAttributes &attributes,
                                                      const CTFontRef &baseFont);

} // namespace quorvane
