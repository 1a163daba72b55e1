#include "Tests/Support/RLEArrayLaw.h"

#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

void holdToTheLaw(std::size_t runsPerChunk, unsigned seed, int steps) {
    SCOPED_TRACE(testing::Message() << runsPerChunk << " runs in a chunk, seed " << seed);
    const AssertionRecorder assertions;
    std::mt19937 random(seed);
    RLEArrayLaw law(runsPerChunk, [&](NSUInteger bound) { return NSUInteger(random() % bound); });
    for (int i = 0; i < steps; ++i) {
        ASSERT_EQ(law.step(), "") << "at step " << i;
        ASSERT_THAT(assertions.messages(), testing::IsEmpty()) << "at step " << i;
    }
}

} // namespace

TEST(RLEArrayLaw, RandomEditsEqualThoseOfTheObviousTwin) {
    for (unsigned seed = 1; seed <= 40; ++seed)
        holdToTheLaw(256, seed, 400);
}

TEST(RLEArrayLaw, RandomEditsSplitAndMergeTinyChunks) {
    for (const std::size_t runsPerChunk : {2, 3, 4, 8, 13})
        for (unsigned seed = 1; seed <= 40; ++seed)
            holdToTheLaw(runsPerChunk, seed, 400);
}
