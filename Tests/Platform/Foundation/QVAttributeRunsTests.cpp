#include "Platform/Foundation/QVAttributeRuns.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

NSAttributes look(int number) {
    static const NSAttributeKey key(u"look");
    return number == 0 ? NSAttributes() : NSAttributes{{key, number}};
}

/// "a:3 b:5" for three characters of the first look and five of the second.
std::string picture(const QVAttributeRuns &runs) {
    std::string text;
    for (NSUInteger index = 0; index < runs.length();) {
        NSRange run;
        const NSAttributes &attributes = runs.attributesAtIndex(index, &run);
        EXPECT_EQ(run.location, index);
        const auto *const value = attributes.valueForKey(NSAttributeKey(u"look"));
        text += (text.empty() ? "" : " ") +
                std::string(1, static_cast<char>('a' + (value ? value->integerValue() : 0))) + ":" +
                std::to_string(run.length);
        index = NSMaxRange(run);
    }
    return text;
}

std::string picture(const std::string &model) {
    std::string text;
    for (std::size_t start = 0; start < model.size();) {
        const std::size_t end = std::min(model.find_first_not_of(model[start], start), model.size());
        text += (text.empty() ? "" : " ") + model.substr(start, 1) + ":" + std::to_string(end - start);
        start = end;
    }
    return text;
}

} // namespace

TEST(QVAttributeRuns, TextOfOneLookIsOneRunWithoutMemory) {
    QVAttributeRuns runs;
    EXPECT_EQ(runs.count(), 0u);
    runs.replaceRange({0, 0}, 5, look(1));
    runs.replaceRange({2, 1}, 4, look(1));
    runs.replaceRange({0, 3}, 0, {});
    EXPECT_EQ(picture(runs), "b:5");
    EXPECT_EQ(runs.bytes(), 0u);
    runs.replaceRange({0, 5}, 0, {});
    EXPECT_EQ(runs.count(), 0u);
    EXPECT_TRUE(runs.isSound());
}

TEST(QVAttributeRuns, AReplacedTextIsOneRunAgain) {
    QVAttributeRuns runs;
    runs.replaceRange({0, 0}, 5, look(1));
    runs.replaceRange({2, 1}, 1, look(2));
    EXPECT_EQ(picture(runs), "b:2 c:1 b:2");
    runs.replaceRange({0, 5}, 2, look(3));
    EXPECT_EQ(picture(runs), "d:2");
    EXPECT_EQ(runs.bytes(), 0u);
}

TEST(QVAttributeRuns, RunsOfAnotherStringJoinTheirLike) {
    QVAttributeRuns runs, others;
    runs.replaceRange({0, 0}, 2, look(1));
    runs.replaceRange({2, 0}, 4, look(2));
    others.replaceRange({0, 0}, 1, look(1));
    others.replaceRange({1, 0}, 1, look(3));
    others.replaceRange({2, 0}, 1, look(2));
    runs.replaceRange({2, 1}, others);
    EXPECT_EQ(picture(runs), "b:3 d:1 c:4");
    runs.replaceRange({0, 8}, others);
    EXPECT_EQ(picture(runs), "b:1 d:1 c:1");
    runs.replaceRange({1, 1}, QVAttributeRuns());
    EXPECT_EQ(picture(runs), "b:1 c:1");
}

TEST(QVAttributeRuns, BehaveAsOneLookForEachCharacter) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const std::size_t perChunk = 2 + random() % 8;
        QVAttributeRuns runs(perChunk);
        std::string model;
        for (int step = 0; step < 1000; ++step) {
            const NSUInteger location = random() % (model.size() + 1);
            NSRange range{location, std::min<NSUInteger>(random() % 12, model.size() - location)};
            if (random() % 50 == 0)
                range = {0, model.size()};
            const int number = static_cast<int>(random() % 3);
            switch (random() % 4) {
            case 0:
            case 1: {
                const NSUInteger length = random() % 9;
                runs.replaceRange(range, length, look(number));
                model.replace(range.location, range.length,
                              std::string(length, static_cast<char>('a' + number)));
                break;
            }
            case 2:
                runs.changeRange(range, [&](const NSAttributes &attributes) {
                    return attributes == look(0) ? look(number) : look(0);
                });
                for (NSUInteger index = range.location; index < NSMaxRange(range); ++index)
                    model[index] = model[index] == 'a' ? static_cast<char>('a' + number) : 'a';
                break;
            default: {
                QVAttributeRuns others(perChunk);
                std::string inserted;
                for (NSUInteger count = random() % 6; count > 0; --count) {
                    const int other = static_cast<int>(random() % 3);
                    others.replaceRange({inserted.size(), 0}, 2, look(other));
                    inserted += std::string(2, static_cast<char>('a' + other));
                }
                runs.replaceRange(range, others);
                model.replace(range.location, range.length, inserted);
            }
            }
            ASSERT_TRUE(runs.isSound()) << "step " << step;
            ASSERT_EQ(runs.length(), model.size());
            ASSERT_EQ(picture(runs), picture(model)) << "step " << step;
            const QVAttributeRuns copy = runs;
            ASSERT_EQ(picture(copy), picture(model));
        }
    }
}
