#include "Platform/Foundation/NSCoder.h"

namespace quorvane {

NSSecureCoding::~NSSecureCoding() = default;

NSCoder::~NSCoder() = default;

} // namespace quorvane
