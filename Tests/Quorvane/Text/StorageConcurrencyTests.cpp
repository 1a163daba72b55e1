#include "Quorvane/Styles/QVThemeController.h"
#include "Tests/Quorvane/Packages/PackageFixture.h"
#include "Tests/Quorvane/Text/StorageFixtures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

namespace quorvane {
namespace {

using namespace test;

// Documents whose parses run free, for the thread checks: nothing here waits but at the end.

constexpr int rounds = 60;

std::u16string manyLines(int count) {
    std::u16string text;
    while (count-- > 0)
        text += u"k1 22 (* x *) b\n";
    return text;
}

void type(QVConcreteTextStorage &storage, std::minstd_rand &random) {
    const NSUInteger location = random() % (storage.length() + 1);
    if (random() % 3 != 0)
        storage.replaceCharactersInRange({location, 0}, random() % 2 == 0 ? u"k" : u" 7\n");
    else
        storage.deleteCharactersInRange({location, std::min<NSUInteger>(3, storage.length() - location)});
}

bool waitUntilIdle(QVConcreteTextStorage &storage) {
    return MainQueue::runUntil([&] { return !storage.isParseUpdating(); }, farAway());
}

TEST(StorageConcurrency, TypingWhileRoundsComeBack) {
    const auto storage = QVConcreteTextStorage::initWithString(manyLines(50));
    storage->setSyntax(smallLanguage());
    std::minstd_rand random(1);
    for (int round = 0; round < 4 * rounds; ++round) {
        type(*storage, random);
        if (round % 5 == 0)
            storage->invalidateStylingInRange({0, storage->length()});
        if (round % 3 == 0)
            MainQueue::drain();
    }
    ASSERT_TRUE(waitUntilIdle(*storage));
    storage->invalidateStylingInRange({0, storage->length()});
    finishRound(*storage);
    const auto fresh =
        documentWithText(storage->string().substringWithRange({0, storage->length()}), storage->syntax());
    EXPECT_EQ(drawnHighlighting(*storage), drawnHighlighting(*fresh));
}

TEST(StorageConcurrency, StoragesThatDieDuringAReparse) {
    const auto syntax = smallLanguage();
    const std::u16string text = manyLines(50);
    std::minstd_rand random(2);
    for (int round = 0; round < rounds; ++round) {
        auto storage = QVConcreteTextStorage::initWithString(text);
        storage->setSyntax(syntax);
        for (int edits = static_cast<int>(random() % 4); edits > 0; --edits)
            type(*storage, random);
        if (round % 3 == 0)
            MainQueue::drain();
        if (round % 4 == 0)
            storage->invalidateStylingInRange({0, storage->length()});
        const auto parse = storage->parse();
        storage.reset();
        if (round % 2 == 0)
            waitForQueue(*parse);
    }
    MainQueue::drain();
}

TEST(StorageConcurrency, SyntaxChangesInFlight) {
    const auto first = smallLanguage();
    const auto second = smallLanguage();
    const auto storage = QVConcreteTextStorage::initWithString(manyLines(50));
    std::minstd_rand random(3);
    for (int round = 0; round < rounds; ++round) {
        storage->setSyntax(round % 5 == 4 ? nullptr : round % 2 == 0 ? first : second);
        type(*storage, random);
        if (round % 7 == 0)
            storage->setParsingEnabled(!storage->isParsingEnabled());
        if (round % 2 == 0)
            MainQueue::drain();
    }
    storage->setParsingEnabled(true);
    storage->setSyntax(first);
    ASSERT_TRUE(waitUntilIdle(*storage));
    EXPECT_EQ(storage->parse()->syntax(), first);
}

TEST(StorageConcurrency, PackagesUnloadedInFlight) {
    const auto package = packageNamed(u"storage.concurrency");
    const auto syntax = package->addSyntax("inflight", "<scopes>" + single("keyword", "k\\w*") +
                                                           single("number", "\\d+") + "</scopes>");
    const auto storage = QVConcreteTextStorage::initWithString(manyLines(50));
    std::minstd_rand random(4);
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    storage->setSyntax(QVSyntax::syntaxForName(u"inflight"));
    for (int round = 0; round < rounds; ++round) {
        type(*storage, random);
        QVLoadable::unloadPackagesFromSyntaxEngine({package});
        EXPECT_EQ(storage->syntax(), nullptr);
        type(*storage, random);
        if (round % 2 == 0)
            MainQueue::drain();
        QVLoadable::loadPackagesIntoSyntaxEngine({package});
        EXPECT_EQ(storage->syntax(), syntax);
    }
    EXPECT_TRUE(waitUntilIdle(*storage));
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
}

TEST(StorageConcurrency, PackagesThatComeAndGoOnAnotherThread) {
    const auto package = packageNamed(u"storage.elsewhere");
    const auto syntax =
        package->addSyntax("elsewhere", "<scopes>" + single("keyword", "k\\w*") + "</scopes>");
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto storage = QVConcreteTextStorage::initWithString(manyLines(20));
    storage->setSyntax(syntax);
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        for (int round = 0; round < rounds; ++round) {
            QVLoadable::unloadPackagesFromSyntaxEngine({package});
            QVLoadable::loadPackagesIntoSyntaxEngine({package});
            QVThemeController::sharedController()->setCurrentTheme(nullptr);
        }
        isDone = true;
    });
    std::minstd_rand random(5);
    while (!isDone) {
        type(*storage, random);
        MainQueue::drain();
    }
    other.join();
    // The last to be heard of was a load.
    EXPECT_TRUE(MainQueue::runUntil([&] { return storage->syntax() == syntax; }, farAway()));
    EXPECT_TRUE(waitUntilIdle(*storage));
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_EQ(storage->syntax(), nullptr);
}

TEST(StorageConcurrency, CancellationStorms) {
    const auto syntax = smallLanguage();
    const auto storage = QVConcreteTextStorage::initWithString(manyLines(50));
    storage->setSyntax(syntax);
    std::minstd_rand random(6);
    for (int round = 0; round < rounds; ++round) {
        const auto parse = storage->parse();
        std::thread other([parse] {
            for (int count = 0; count < 5; ++count)
                parse->cancelParsing();
        });
        type(*storage, random);
        MainQueue::drain();
        type(*storage, random);
        other.join();
        if (round % 3 == 0) {
            // The way out of the state that this leaves behind.
            storage->setSyntax(nullptr);
            storage->setSyntax(syntax);
        }
    }
    storage->setSyntax(nullptr);
    storage->setSyntax(syntax);
    ASSERT_TRUE(waitUntilIdle(*storage));
    EXPECT_EQ(storage->parse()->isCancelled(), false);
}

TEST(StorageConcurrency, ReadersOfTheParseBesideTyping) {
    const auto storage = QVConcreteTextStorage::initWithString(manyLines(50));
    storage->setSyntax(smallLanguage());
    const auto parse = storage->parse();
    std::atomic<bool> isDone = false;
    std::atomic<NSUInteger> read = 0;
    std::vector<std::thread> readers;
    for (int index = 0; index < 2; ++index)
        readers.emplace_back([&] {
            while (!isDone)
                parse->performReadingBlockAndWait([&] { read += parse->string().size() + 1; });
        });
    std::minstd_rand random(7);
    for (int round = 0; round < rounds; ++round) {
        type(*storage, random);
        MainQueue::drain();
    }
    EXPECT_TRUE(waitUntilIdle(*storage));
    isDone = true;
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_GT(read, 0u);
}

} // namespace
} // namespace quorvane
