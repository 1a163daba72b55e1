#include "Quorvane/QuorvaneVersion.h"

namespace quorvane {

const char *QVQuorvaneVersion() { return QUORVANE_VERSION; }

} // namespace quorvane
