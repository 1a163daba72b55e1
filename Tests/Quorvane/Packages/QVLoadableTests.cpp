#include "Quorvane/Packages/QVLoadable.h"
#include "Tests/Quorvane/Packages/PackageFixture.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace quorvane;
using namespace quorvane::test;

TEST(QVLoadable, ABlockUnderThePackageLockKeepsAllOthersOut) {
    EXPECT_TRUE(anotherThreadMayRead());
    bool mayRead = true;
    QVLoadable::performBlockWithPackageLock([&] { mayRead = anotherThreadMayRead(); });
    EXPECT_FALSE(mayRead);
    EXPECT_TRUE(anotherThreadMayRead());
}

TEST(QVLoadable, ABlockMayTakeThePackageLockAgainOnItsThread) {
    bool ranInside = false;
    bool mayReadAfterTheInnerBlock = true;
    QVLoadable::performBlockWithPackageLock([&] {
        QVLoadable::performBlockWithPackageLock([&] { ranInside = true; });
        mayReadAfterTheInnerBlock = anotherThreadMayRead();
    });
    EXPECT_TRUE(ranInside);
    EXPECT_FALSE(mayReadAfterTheInnerBlock);
    EXPECT_TRUE(anotherThreadMayRead());
}

TEST(QVLoadable, AnExceptionReleasesThePackageLock) {
    EXPECT_THROW(QVLoadable::performBlockWithPackageLock([] { throw std::runtime_error("no"); }),
                 std::runtime_error);
    EXPECT_TRUE(anotherThreadMayRead());
    // The thread's mark went too: the lock is really taken again.
    bool mayRead = true;
    QVLoadable::performBlockWithPackageLock([&] { mayRead = anotherThreadMayRead(); });
    EXPECT_FALSE(mayRead);
}

TEST(QVLoadable, ANullBlockTakesNoLock) {
    QVLoadable::performBlockWithPackageLock(nullptr);
    EXPECT_TRUE(anotherThreadMayRead());
}

TEST(QVLoadable, BelongsToNoPackageAtFirst) { EXPECT_EQ(QVLoadable().package(), nullptr); }
