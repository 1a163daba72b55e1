#pragma once

#include "Platform/Foundation/QVTextReader.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

namespace quorvane::test {

/// Calls a check with the text in two pieces, cut at every place there is: between CR and LF, inside pairs of
/// surrogates, inside clusters, and at both ends.
template <typename Check> void withEveryGap(std::u16string_view text, Check check) {
    for (std::size_t gap = 0; gap <= text.size(); ++gap) {
        SCOPED_TRACE(testing::Message() << "gap at " << gap);
        check(QVTextReader(text.substr(0, gap), text.substr(gap)));
    }
}

} // namespace quorvane::test
