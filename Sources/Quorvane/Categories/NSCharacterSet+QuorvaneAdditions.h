#pragma once

#include "Platform/Foundation/NSCharacterSet.h"

namespace quorvane {

// The character sets that the engine itself means by line, indentation and identifier. Each is made once, on
// first use; any thread.

/// CR and LF: nothing else ends a line in the engine.
QV_EXPORT std::shared_ptr<const NSCharacterSet> qv_newlineCharacterSet();

/// The space and the tab.
QV_EXPORT std::shared_ptr<const NSCharacterSet> qv_indentationCharacterSet();

/// The platform's alphanumeric characters and "_": identifiers of a language that says nothing of them.
QV_EXPORT std::shared_ptr<const NSCharacterSet> qv_defaultIdentifierCharacterSet();

} // namespace quorvane
