#pragma once

#include "Quorvane/Symbols/QVSymbol.h"

namespace quorvane {

/// A symbol that a parse found in its document. The parse owns it; its match points to it.
class QV_EXPORT QVParseSymbol : public QVSymbol {};

} // namespace quorvane
