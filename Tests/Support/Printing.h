#pragma once

#include "Platform/Foundation/NSRange.h"
#include "Platform/Foundation/NSString.h"

#include <ostream>

/// How values look in a failed test.
namespace quorvane {

inline void PrintTo(const NSString &string, std::ostream *stream) {
    if (string)
        *stream << '"' << string.UTF8String() << '"';
    else
        *stream << "(null)";
}

inline void PrintTo(NSRange range, std::ostream *stream) {
    if (range.location == NSNotFound)
        *stream << "{NSNotFound, " << range.length << '}';
    else
        *stream << '{' << range.location << ", " << range.length << '}';
}

} // namespace quorvane
