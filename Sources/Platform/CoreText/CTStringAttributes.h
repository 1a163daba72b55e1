#pragma once

#include "Platform/Foundation/NSAttributes.h"

namespace quorvane {

// Attributes of text that are for who typesets it; those that other code shares stand in `NSAttributes.h`.

/// Points by which all glyphs of a text stand further apart; unlike kerning it is meant for whole documents.
inline constinit const NSAttributeName kCTTrackingAttributeName{u"CTTracking"};

} // namespace quorvane
