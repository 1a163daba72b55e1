#include "Quorvane/Matches/QVMatchPool.h"

#include "Quorvane/RegularExpressions/QVRegularExpressionResult.h"
#include "Tests/Quorvane/Matches/MatchFixtures.h"

#include <cstring>
#include <set>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

TEST(QVMatchPool, CountsThePiecesThatAreOut) {
    const auto pool = QVMatchPool::create();
    EXPECT_EQ(pool->livePieces(), 0u);
    EXPECT_EQ(pool->reservedBytes(), 0u);
    void *const first = pool->allocate(80);
    void *const second = pool->allocate(8);
    EXPECT_EQ(pool->livePieces(), 2u);
    EXPECT_GT(pool->reservedBytes(), 0u);
    pool->deallocate(first, 80);
    EXPECT_EQ(pool->livePieces(), 1u);
    pool->deallocate(second, 8);
    EXPECT_EQ(pool->livePieces(), 0u);
}

TEST(QVMatchPool, PiecesAreDistinctAlignedAndWritable) {
    const auto pool = QVMatchPool::create();
    std::set<char *> pieces;
    std::vector<std::pair<char *, std::size_t>> all;
    for (std::size_t round = 0; round < 3000; ++round) {
        const std::size_t size = 1 + round % QVMatchPool::largestPiece;
        auto *const piece = static_cast<char *>(pool->allocate(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % 8, 0u);
        EXPECT_EQ(&QVMatchPool::poolOf(piece), pool.get());
        std::memset(piece, static_cast<int>(round & 0xFF), size);
        EXPECT_TRUE(pieces.insert(piece).second);
        all.emplace_back(piece, size);
    }
    for (std::size_t round = 0; round < all.size(); ++round) {
        EXPECT_EQ(static_cast<unsigned char>(all[round].first[0]), round & 0xFF);
        EXPECT_EQ(static_cast<unsigned char>(all[round].first[all[round].second - 1]), round & 0xFF);
        pool->deallocate(all[round].first, all[round].second);
    }
    EXPECT_EQ(pool->livePieces(), 0u);
}

TEST(QVMatchPool, PiecesThatCameBackAreHandedOutAgain) {
    const auto pool = QVMatchPool::create();
    void *const piece = pool->allocate(80);
    pool->deallocate(piece, 80);
    EXPECT_EQ(pool->allocate(80), piece);
    // A piece of another size is another piece.
    void *const small = pool->allocate(8);
    pool->deallocate(small, 8);
    void *const other = pool->allocate(16);
    EXPECT_NE(other, small);
    pool->deallocate(other, 16);
    pool->deallocate(piece, 80);
}

TEST(QVMatchPool, EditingDoesNotGrowIt) {
    const auto pool = QVMatchPool::create();
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto make = [&] {
        std::vector<QVScopeMatchReference> matches;
        for (int index = 0; index < 5000; ++index)
            matches.push_back(QVScopeMatch::initWithScope(scope.get(), *pool));
        return matches;
    };
    make();
    const std::size_t reserved = pool->reservedBytes();
    // 5000 matches of 72 bytes, and not much beside.
    EXPECT_GE(reserved, 5000u * 72u);
    EXPECT_LE(reserved, 5000u * 72u + (2u << 16));
    for (int round = 0; round < 10; ++round)
        make();
    EXPECT_EQ(pool->reservedBytes(), reserved);
    EXPECT_EQ(pool->livePieces(), 0u);
}

TEST(QVMatchPool, ATreeGivesBackAllThatItTook) {
    const auto pool = QVMatchPool::create();
    const auto capture = captureOfGroup(1);
    const auto region = scopeOfType(QVScopeTypeStartEnd, u"comment");
    region->setCaptures({capture});
    const auto plain = scopeOfType(QVScopeTypeMatch);
    {
        const auto root = QVScopeMatch::initWithScope(region.get(), *pool);
        for (NSUInteger index = 0; index < 20; ++index) {
            auto child = QVScopeMatch::initWithScope(index % 2 ? region.get() : plain.get(), *pool);
            child->setRange({index, 1});
            if (index % 2) {
                auto captures = std::make_unique<QVCaptureMatchArray>();
                captures->push_back(QVCaptureMatch::initWithCapture(capture.get(), *pool));
                child->setCaptureMatches(std::move(captures));
                child->insertSubmatch(QVScopeMatch::initWithScope(plain.get(), *pool), 0);
                child->setTextCheckingResult(std::make_shared<QVRegularExpressionResult>());
            }
            root->insertSubmatch(std::move(child), index);
        }
        // The root; for each of ten regions match, capture and child; ten plain ones.
        EXPECT_EQ(pool->livePieces(), 1u + 10u * 3u + 10u);
    }
    EXPECT_EQ(pool->livePieces(), 0u);
}

TEST(QVMatchPool, OutlivesItsOwnerUntilTheLastPieceComesBack) {
    const auto scope = scopeOfType(QVScopeTypeRoot);
    const auto plain = scopeOfType(QVScopeTypeMatch);
    QVScopeMatchReference root;
    QVScopeMatchReference detached;
    {
        const auto pool = QVMatchPool::create();
        root = QVScopeMatch::initWithScope(scope.get(), *pool);
        root->insertSubmatch(QVScopeMatch::initWithScope(plain.get(), *pool), 0);
        detached = root->firstChild();
        detached->setRange({4, 2});
    }
    EXPECT_EQ(root->firstChild(), detached.get());
    root = nullptr;
    // Address checks would tell if the pool had gone.
    EXPECT_EQ(detached->range(), (NSRange{4, 2}));
    EXPECT_EQ(QVMatchPool::poolOf(detached.get()).livePieces(), 1u);
    detached = nullptr;
}

TEST(QVMatchPool, AnAbandonedPoolStillServesWhoHoldsAMatch) {
    const auto scope = scopeOfType(QVScopeTypeMatch);
    QVScopeMatchReference kept;
    {
        const auto pool = QVMatchPool::create();
        kept = QVScopeMatch::initWithScope(scope.get(), *pool);
    }
    const auto result = std::make_shared<QVRegularExpressionResult>();
    kept->setTextCheckingResult(result);
    EXPECT_EQ(kept->textCheckingResult(), result);
    kept = nullptr;
    EXPECT_EQ(result.use_count(), 1);
}

TEST(QVMatchPool, MatchesWithoutAParseShareAPoolThatManyThreadsMayUse) {
    const std::size_t before = QVMatchPool::sharedPool().livePieces();
    const auto scope = scopeOfType(QVScopeTypeStartEnd);
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index)
        threads.emplace_back([&] {
            for (int round = 0; round < 300; ++round) {
                const auto match = QVScopeMatch::initWithScope(scope.get());
                match->setTextCheckingResult(std::make_shared<QVRegularExpressionResult>());
                EXPECT_NE(match->textCheckingResult(), nullptr);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(QVMatchPool::sharedPool().livePieces(), before);
}

TEST(QVMatchPool, RecordsBesideMatchesGoWithTheirMatches) {
    const auto pool = QVMatchPool::create();
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto result = std::make_shared<QVRegularExpressionResult>();
    auto match = QVScopeMatch::initWithScope(scope.get(), *pool);
    EXPECT_EQ(pool->existingAssociationForMatch(match.get()), nullptr);
    match->setTextCheckingResult(result);
    EXPECT_NE(pool->existingAssociationForMatch(match.get()), nullptr);
    EXPECT_EQ(result.use_count(), 2);
    const QVScopeMatch *const address = match.get();
    match = nullptr;
    EXPECT_EQ(result.use_count(), 1);
    // The next match in the same place starts without one.
    match = QVScopeMatch::initWithScope(scope.get(), *pool);
    ASSERT_EQ(match.get(), address);
    EXPECT_EQ(match->textCheckingResult(), nullptr);
    EXPECT_EQ(pool->existingAssociationForMatch(match.get()), nullptr);
}

TEST(QVMatchPool, ThatGoesLeavesItsMemoryToTheNext) {
    const auto slabOf = [](const void *piece) { return reinterpret_cast<std::uintptr_t>(piece) >> 16; };
    auto pool = QVMatchPool::create();
    void *const piece = pool->allocate(80);
    const std::uintptr_t slab = slabOf(piece);
    pool->deallocate(piece, 80);
    pool.reset();
    const auto next = QVMatchPool::create();
    void *const other = next->allocate(80);
    EXPECT_EQ(slabOf(other), slab);
    EXPECT_EQ(&QVMatchPool::poolOf(other), next.get());
    next->deallocate(other, 80);
}

TEST(QVMatchPool, HoldsTheArrayOfAMatchsCapturesToo) {
    const auto pool = QVMatchPool::create();
    const auto scope = scopeOfType(QVScopeTypeMatch);
    const auto capture = captureOfGroup(1);
    scope->setCaptures({capture});
    {
        const auto match = QVScopeMatch::initWithScope(scope.get(), *pool);
        std::unique_ptr<QVCaptureMatchArray> captures(new (*pool) QVCaptureMatchArray);
        // More than stand in the array itself.
        for (int count = 0; count < 5; ++count)
            captures->push_back(QVCaptureMatch::initWithCapture(capture.get(), *pool));
        match->setCaptureMatches(std::move(captures));
        EXPECT_EQ(pool->livePieces(), 1u + 1u + 5u);
    }
    EXPECT_EQ(pool->livePieces(), 0u);
}
