#include "Tests/Support/LineRunLaw.h"

#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace quorvane;
using namespace quorvane::test;

namespace {

enum class Places { All, AwayFromTerminators };

void holdToTheLaw(std::uint64_t options, std::size_t runsPerChunk, unsigned seed, int steps, Places places) {
    SCOPED_TRACE(testing::Message() << runsPerChunk << " runs in a chunk, options " << options << ", seed "
                                    << seed);
    const AssertionRecorder assertions;
    std::mt19937 random(seed);
    LineRunLaw law(options, runsPerChunk, [&](NSUInteger bound) { return NSUInteger(random() % bound); });
    if (places == Places::AwayFromTerminators)
        law.avoidTerminators();
    for (int i = 0; i < steps; ++i) {
        ASSERT_EQ(law.step(), "") << "at step " << i;
        ASSERT_THAT(assertions.messages(), testing::IsEmpty()) << "at step " << i;
    }
    // The law must not hold because nothing happens.
    EXPECT_LT(law.refused(), steps / 10);
    EXPECT_GT(law.wrongLinks(), 0);
}

} // namespace

TEST(LineRunLaw, RandomEditsEqualThoseOfTheObviousTwin) {
    for (unsigned seed = 1; seed <= 60; ++seed)
        holdToTheLaw(seed % 2 ? QVLineRunArrayStoresStrings : 0, 256, seed, 300, Places::All);
}

TEST(LineRunLaw, RandomEditsSplitAndMergeTinyChunks) {
    for (const std::size_t runsPerChunk : {2, 3, 4, 8, 13})
        for (unsigned seed = 1; seed <= 60; ++seed)
            holdToTheLaw(seed % 2 ? QVLineRunArrayStoresStrings : 0, runsPerChunk, seed, 300, Places::All);
}

TEST(LineRunLaw, AwayFromTerminatorsTheLinesAreThoseOfAFreshLookAtTheText) {
    for (const std::size_t runsPerChunk : {2, 5, 256})
        for (unsigned seed = 1; seed <= 60; ++seed)
            holdToTheLaw(0, runsPerChunk, seed, 400, Places::AwayFromTerminators);
}
