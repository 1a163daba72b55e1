#include "Platform/Foundation/NSException.h"

namespace quorvane {

NSException::NSException(NSString name, NSString reason)
    : _name(std::move(name)), _reason(std::move(reason)),
      _what(_name.UTF8String() + ": " + _reason.UTF8String()) {}

NSException::~NSException() = default;

} // namespace quorvane
