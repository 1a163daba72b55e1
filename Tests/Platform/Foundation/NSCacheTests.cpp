#include "Platform/Foundation/NSCache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace quorvane;

TEST(NSCache, KeepsWhatWasSetForAKey) {
    NSCache<std::string, int> cache;
    EXPECT_EQ(cache.objectForKey("a"), std::nullopt);
    cache.setObject(1, "a");
    cache.setObject(2, "b");
    EXPECT_EQ(cache.objectForKey("a"), 1);
    EXPECT_EQ(cache.objectForKey("b"), 2);
    cache.setObject(3, "a");
    EXPECT_EQ(cache.objectForKey("a"), 3);
}

TEST(NSCache, ForgetsOneOrAll) {
    NSCache<std::string, int> cache;
    cache.setObject(1, "a");
    cache.setObject(2, "b");
    cache.removeObjectForKey("a");
    cache.removeObjectForKey("none");
    EXPECT_EQ(cache.objectForKey("a"), std::nullopt);
    EXPECT_EQ(cache.objectForKey("b"), 2);
    cache.removeAllObjects();
    EXPECT_EQ(cache.objectForKey("b"), std::nullopt);
}

TEST(NSCache, WhatWasNotUsedForTheLongestTimeGoesFirst) {
    NSCache<int, int> cache(2);
    cache.setObject(1, 1);
    cache.setObject(2, 2);
    EXPECT_EQ(cache.objectForKey(1), 1);
    cache.setObject(3, 3);
    EXPECT_EQ(cache.objectForKey(1), 1);
    EXPECT_EQ(cache.objectForKey(2), std::nullopt);
    EXPECT_EQ(cache.objectForKey(3), 3);
}

TEST(NSCache, SettingAKeyAgainPushesNothingOut) {
    NSCache<int, int> cache(2);
    cache.setObject(1, 1);
    cache.setObject(2, 2);
    cache.setObject(5, 2);
    EXPECT_EQ(cache.objectForKey(1), 1);
    EXPECT_EQ(cache.objectForKey(2), 5);
}

TEST(NSCache, KeepsAsManyAsItsLimit) {
    NSCache<std::size_t, std::size_t> cache;
    EXPECT_EQ(cache.countLimit(), limits::cachedObjects);
    for (std::size_t key = 0; key < limits::cachedObjects; ++key)
        cache.setObject(key, key);
    EXPECT_EQ(cache.objectForKey(0), 0u);
    cache.setObject(7, limits::cachedObjects);
    EXPECT_EQ(cache.objectForKey(0), 0u);
    EXPECT_EQ(cache.objectForKey(1), std::nullopt);
    EXPECT_EQ(cache.objectForKey(limits::cachedObjects), 7u);
}

TEST(NSCache, WithALimitOfZeroItKeepsNothing) {
    NSCache<int, int> cache(0);
    cache.setObject(1, 1);
    EXPECT_EQ(cache.objectForKey(1), std::nullopt);
}

TEST(NSCache, WhatGoesMayAskTheCache) {
    using Cache = NSCache<int, std::shared_ptr<void>>;
    Cache cache(1);
    int asked = 0;
    const auto asking = [&] {
        return std::shared_ptr<void>(nullptr, [&](void *) {
            cache.objectForKey(0);
            ++asked;
        });
    };
    cache.setObject(asking(), 1);
    cache.setObject(asking(), 2);
    cache.setObject(asking(), 2);
    cache.removeObjectForKey(2);
    cache.setObject(asking(), 3);
    cache.removeAllObjects();
    EXPECT_EQ(asked, 4);
}

TEST(NSCacheConcurrency, ThreadsShareIt) {
    NSCache<int, int> cache(8);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int round = 0; round < 2000; ++round) {
                const int key = (round * 7 + thread) % 16;
                if (const auto value = cache.objectForKey(key); value && *value != key * 10)
                    ++wrong;
                cache.setObject(key * 10, key);
                if (round % 500 == 0)
                    cache.removeAllObjects();
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}
