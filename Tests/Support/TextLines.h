#pragma once

#include "Platform/Foundation/QVTextReader.h"

#include <ostream>

namespace quorvane::test {

/// Where a line begins, where its terminator begins, and where it ends.
struct Line {
    NSUInteger start;
    NSUInteger contentsEnd;
    NSUInteger end;
    friend bool operator==(const Line &, const Line &) = default;
    friend void PrintTo(const Line &line, std::ostream *stream) {
        *stream << line.start << ".." << line.contentsEnd << ".." << line.end;
    }
};

/// The line or lines around a range, as one of the operations that tell it has it.
template <typename GetLineStart> Line lineBy(GetLineStart getLineStart, QVTextReader text, NSRange range) {
    Line line{};
    getLineStart(text, &line.start, &line.end, &line.contentsEnd, range);
    return line;
}

} // namespace quorvane::test
