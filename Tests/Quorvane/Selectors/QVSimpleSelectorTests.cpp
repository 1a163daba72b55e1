#include "Quorvane/Selectors/QVSimpleSelector.h"

#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Selectors/QVClassText.h"
#include "Tests/Quorvane/Selectors/FakeSelectable.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<const QVSimpleSelector> selector(const char16_t *text) {
    return QVSimpleSelector::simpleSelectorWithString(text);
}

std::string walked(QVSelectable *from, const char16_t *selectors, const char *stopAt = "") {
    std::vector<QVSelectable *> nodes;
    QVSimpleSelector::walkTreeStartingAtSelectable(
        from, QVSimpleSelector::simpleSelectorsJoinedByString(selectors),
        [&](QVSelectable *node, bool &stop) {
            EXPECT_FALSE(stop);
            nodes.push_back(node);
            stop = static_cast<FakeSelectable *>(node)->name == stopAt;
        });
    return namesOf(nodes);
}

/// An archive of a selector, interned or not, with this text and these classes.
NSData archiveOf(const NSString &text, const std::vector<NSString> &classes) {
    return NSKeyedArchiver::archivedDataWithRootObject(QVSimpleSelector::initWithString(text, classes));
}

std::shared_ptr<const QVSimpleSelector> unarchived(const NSData &data) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<QVSimpleSelector>(data);
}

} // namespace

TEST(QVSimpleSelector, ATextGivesItsClasses) {
    const auto quoted = selector(u"string.quoted");
    EXPECT_EQ(quoted->string(), u"string.quoted");
    EXPECT_EQ(quoted->classes(), (std::set<NSString>{u"quoted", u"string"}));
    EXPECT_EQ(quoted->specificity(), 2u);
}

TEST(QVSimpleSelector, TheOrderOfClassesMakesNoDifferenceAndTheFirstTextStays) {
    const auto first = selector(u"order-b.order-a");
    EXPECT_EQ(selector(u"order-a.order-b"), first);
    EXPECT_EQ(first->string(), u"order-b.order-a");
}

TEST(QVSimpleSelector, ClassesAreSortedWithoutRegardToCaseButKeepTheirCase) {
    EXPECT_EQ(selector(u"Zulu-class.alpha-class"), selector(u"alpha-class.Zulu-class"));
    EXPECT_NE(selector(u"Cased"), selector(u"cased"));
    EXPECT_FALSE(selector(u"Cased")->matchesSelector(selector(u"cased").get()));
}

TEST(QVSimpleSelector, CharactersOfNoClassNameAreDropped) {
    EXPECT_EQ(selector(u" dro<pp>ed/ . 'str\ting' ")->string(), u"dropped.string");
    EXPECT_EQ(selector(u"a_b-c.9*")->string(), u"a_b-c.9*");
}

TEST(QVSimpleSelector, WordCharactersOfAllScriptsStay) {
    // Letters, a combining mark, an Arabic digit, an undertie, a letter beyond the first plane, a joiner.
    const char16_t *text = u"\u00E9e\u0301.\u0663\u203F.\U00010400\u200D";
    EXPECT_EQ(NSString(QVCleanedClassText(text)), text);
    // A currency sign, a face, a fraction, a lone surrogate.
    EXPECT_EQ(
        NSString(QVCleanedClassText(std::u16string(u"a\u20AC\U0001F600\u00BD") + char16_t(0xD800) + u"b")),
        u"ab");
}

TEST(QVSimpleSelector, CleaningDropsExactlyWhatThePlatformsExpressionDoes) {
    const auto expression =
        NSRegularExpression::regularExpressionWithPattern(u"[^\\*\\w0-9\\.-]", 0, nullptr);
    ASSERT_TRUE(expression);
    for (char32_t block = 0; block < 0x30000; block += 0x100) {
        std::u16string text;
        for (char32_t character = block; character < block + 0x100; ++character) {
            if (character >= 0xD800 && character < 0xE000)
                continue;
            if (character >= 0x10000)
                text += {static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)),
                         static_cast<char16_t>(0xDC00 + (character & 0x3FF))};
            else
                text.push_back(static_cast<char16_t>(character));
        }
        EXPECT_EQ(NSString(QVCleanedClassText(text)),
                  expression->stringByReplacingMatchesInString(text, 0, {0, text.size()}, u""))
            << "block " << std::uint32_t(block);
    }
}

TEST(QVSimpleSelector, AStarIsTheUniversalSelector) {
    const auto universal = QVSimpleSelector::universalSelector();
    EXPECT_EQ(selector(u"*"), universal);
    EXPECT_EQ(selector(u" * "), universal);
    EXPECT_EQ(universal->specificity(), 0u);
    EXPECT_EQ(universal->string(), u"");
    EXPECT_TRUE(universal->matchesSelector(selector(u"anything").get()));
    EXPECT_TRUE(universal->matchesSelector(nullptr));
    EXPECT_TRUE(universal->matchesClasses({}));
    EXPECT_TRUE(universal->matchesClass(u"anything"));
}

TEST(QVSimpleSelector, AStarAmongClassesMatchesEverythingAndCounts) {
    const auto starred = selector(u"a.*");
    EXPECT_EQ(starred->specificity(), 2u);
    EXPECT_TRUE(starred->matchesSelector(selector(u"b").get()));
    EXPECT_TRUE(starred->matchesClasses({}));
    EXPECT_TRUE(starred->matchesClass(u"b"));
    // As a node it has a class of that name like any other.
    EXPECT_TRUE(selector(u"a")->matchesSelector(starred.get()));
    EXPECT_FALSE(selector(u"b")->matchesSelector(starred.get()));
}

TEST(QVSimpleSelector, AnEmptyTextIsOneEmptyClassAndNotTheUniversalSelector) {
    const auto empty = selector(u"");
    EXPECT_NE(empty, QVSimpleSelector::universalSelector());
    EXPECT_EQ(empty->classes(), std::set<NSString>{u""});
    EXPECT_EQ(empty->specificity(), 1u);
    EXPECT_FALSE(empty->matchesSelector(selector(u"a").get()));
    EXPECT_TRUE(empty->matchesSelector(selector(u"a..b").get()));
    EXPECT_EQ(selector(u"!?"), empty);
}

TEST(QVSimpleSelector, AMissingTextGivesNoSelector) {
    EXPECT_EQ(QVSimpleSelector::simpleSelectorWithString(nullptr), nullptr);
    EXPECT_TRUE(QVSimpleSelector::simpleSelectorsJoinedByString(nullptr).empty());
}

TEST(QVSimpleSelector, AListGivesASelectorForEachPiece) {
    const auto selectors = QVSimpleSelector::simpleSelectorsJoinedByString(u"a.b ,\tc,, d e");
    ASSERT_EQ(selectors.size(), 4u);
    EXPECT_EQ(selectors[0], selector(u"a.b"));
    EXPECT_EQ(selectors[1], selector(u"c"));
    EXPECT_EQ(selectors[2], selector(u""));
    EXPECT_EQ(selectors[3], selector(u"de"));
}

TEST(QVSimpleSelector, APatternMatchesNodesThatHaveAllOfItsClasses) {
    const auto pattern = selector(u"string.quoted");
    EXPECT_TRUE(pattern->matchesSelector(selector(u"string.quoted").get()));
    EXPECT_TRUE(pattern->matchesSelector(selector(u"double.quoted.string").get()));
    EXPECT_FALSE(pattern->matchesSelector(selector(u"string").get()));
    EXPECT_FALSE(pattern->matchesSelector(nullptr));
    EXPECT_TRUE(pattern->matchesClasses({u"a", u"quoted", u"string"}));
    EXPECT_FALSE(pattern->matchesClasses({u"quoted"}));
    EXPECT_TRUE(pattern->matchesClass(u"quoted"));
    EXPECT_FALSE(pattern->matchesClass(u"string.quoted"));
}

TEST(QVSimpleSelector, MatchingByNumbersIsMatchingByNames) {
    // Enough names that several share a bit of the mask.
    std::mt19937 random(7);
    const auto someClasses = [&] {
        std::u16string text;
        for (unsigned count = 1 + random() % 4; count > 0; --count) {
            text += text.empty() ? u"n" : u".n";
            text.push_back(static_cast<char16_t>(0x4E00 + random() % 200));
        }
        return QVSimpleSelector::simpleSelectorWithString(text);
    };
    int matches = 0;
    for (int round = 0; round < 20000; ++round) {
        const auto pattern = someClasses();
        auto node = someClasses();
        if (round % 2 == 0)
            node = QVSimpleSelector::simpleSelectorWithString(
                NSString::stringWithFormat(u"%@.%@", node->string(), pattern->string()));
        ASSERT_EQ(pattern->matchesSelector(node.get()), pattern->matchesClasses(node->classes()))
            << pattern->string().UTF8String() << " against " << node->string().UTF8String();
        matches += pattern->matchesSelector(node.get());
    }
    EXPECT_GE(matches, 10000);
}

TEST(QVSimpleSelector, OrdersBySpecificityAlone) {
    EXPECT_EQ(selector(u"a")->compare(selector(u"b.c").get()), NSOrderedAscending);
    EXPECT_EQ(selector(u"b.c")->compare(selector(u"a").get()), NSOrderedDescending);
    EXPECT_EQ(selector(u"a.b")->compare(selector(u"c.d").get()), NSOrderedSame);
    EXPECT_EQ(selector(u"*")->compare(nullptr), NSOrderedSame);
    EXPECT_EQ(selector(u"a")->compare(nullptr), NSOrderedDescending);
}

TEST(QVSimpleSelector, EqualityAndHashDependOnTheTextAlone) {
    const auto a = QVSimpleSelector::initWithString(u"same", {u"x"});
    const auto b = QVSimpleSelector::initWithString(u"same", {u"y", u"z"});
    EXPECT_TRUE(a->isEqual(b.get()));
    EXPECT_EQ(a->hash(), b->hash());
    EXPECT_FALSE(a->isEqual(QVSimpleSelector::initWithString(u"other", {u"x"}).get()));
    EXPECT_FALSE(a->isEqual(nullptr));
}

TEST(QVSimpleSelector, ACopyIsTheSameInstance) {
    EXPECT_EQ(selector(u"copied.once")->copy(), selector(u"copied.once"));
}

TEST(QVSimpleSelector, DescribesItsClasses) {
    const auto described = selector(u"b.a");
    EXPECT_EQ(described->description(),
              NSString::stringWithFormat(u"<QVSimpleSelector: %p : classes=(a, b)>", described.get()));
}

TEST(QVSimpleSelector, ManyThreadsGetOneInstance) {
    std::vector<std::shared_ptr<const QVSimpleSelector>> made(4);
    std::vector<std::thread> threads;
    for (auto &one : made)
        threads.emplace_back([&one] {
            for (int round = 0; round < 200; ++round)
                QVSimpleSelector::simpleSelectorWithString(
                    NSString::stringWithFormat(u"threads.round%d", round));
            one = selector(u"met.by.threads");
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const auto &one : made)
        EXPECT_EQ(one, made[0]);
}

TEST(QVSimpleSelectorWalk, ReportsMatchingNodesParentsFirst) {
    FakeTree tree("a(b(a#2 c) - d(a#3))");
    EXPECT_EQ(walked(tree.root(), u"a"), "a a#2 a#3");
    EXPECT_EQ(walked(tree.root(), u"c,d"), "c d");
}

TEST(QVSimpleSelectorWalk, ReportsANodeOnceHoweverManySelectorsMatch) {
    FakeTree tree("r(a.b)");
    EXPECT_EQ(walked(tree.root(), u"a,b,*"), "r a.b");
}

TEST(QVSimpleSelectorWalk, ANodeWithoutASelectorNeverMatchesButItsChildrenDo) {
    FakeTree tree("-(a -#2(a#2))");
    EXPECT_EQ(walked(tree.root(), u"*"), "a a#2");
}

TEST(QVSimpleSelectorWalk, AStopEndsTheWholeWalkBeforeTheNodesChildren) {
    FakeTree tree("r(a(b#1) a#2(b#2) b#3)");
    EXPECT_EQ(walked(tree.root(), u"a,b", "a#2"), "a b#1 a#2");
    EXPECT_EQ(tree["b#2"]->questions, 0);
    EXPECT_EQ(tree["b#3"]->questions, 0);
    EXPECT_EQ(walked(tree.root(), u"a,b", "b#1"), "a b#1");
}

TEST(QVSimpleSelectorWalk, SaysWhetherItWasStopped) {
    FakeTree tree("a(b)");
    const auto selectors = QVSimpleSelector::simpleSelectorsJoinedByString(u"b");
    EXPECT_TRUE(QVSimpleSelector::walkTreeRecursivelyStartingAtSelectable(tree.root(), selectors,
                                                                          [](QVSelectable *, bool &) {}));
    EXPECT_FALSE(QVSimpleSelector::walkTreeRecursivelyStartingAtSelectable(
        tree.root(), selectors, [](QVSelectable *, bool &stop) { stop = true; }));
}

TEST(QVSimpleSelectorWalk, ALeafIsNotAskedForChildren) {
    FakeTree tree("a(b)");
    walked(tree.root(), u"*");
    EXPECT_EQ(tree["a"]->enumerations, 1);
    EXPECT_EQ(tree["b"]->enumerations, 0);
}

TEST(QVSimpleSelectorWalk, NoNodeAndNoSelectorsReportNothing) {
    EXPECT_EQ(walked(nullptr, u"*"), "");
    FakeTree tree("a");
    EXPECT_TRUE(QVSimpleSelector::walkTreeRecursivelyStartingAtSelectable(
        tree.root(), {}, [](QVSelectable *, bool &) { ADD_FAILURE(); }));
}

TEST(QVSimpleSelectorArchive, GivesTheInternedInstanceBack) {
    const auto interned = selector(u"archived-one");
    EXPECT_EQ(unarchived(NSKeyedArchiver::archivedDataWithRootObject(interned)), interned);
}

TEST(QVSimpleSelectorArchive, WhatIsInternedWinsOverTheArchivesClasses) {
    const auto interned = selector(u"archived-known");
    EXPECT_EQ(unarchived(archiveOf(u"archived-known", {u"something", u"else"})), interned);
    EXPECT_EQ(interned->classes(), std::set<NSString>{u"archived-known"});
}

TEST(QVSimpleSelectorArchive, AnUnknownTextIsInternedAsItStands) {
    // Not under its sorted text as a parsed one would be; that is meant.
    const NSData data = archiveOf(u"archived-z.archived-a", {u"archived-z", u"archived-a"});
    const auto read = unarchived(data);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->classes(), (std::set<NSString>{u"archived-a", u"archived-z"}));
    EXPECT_EQ(unarchived(data), read);
    const auto parsed = selector(u"archived-z.archived-a");
    EXPECT_NE(parsed, read);
    EXPECT_TRUE(read->matchesSelector(parsed.get()));
    EXPECT_TRUE(parsed->matchesSelector(read.get()));
}

TEST(QVSimpleSelectorArchive, TheStarAmongTheClassesIsFoundAgain) {
    const auto read = unarchived(archiveOf(u"archived.*", {u"archived", u"*"}));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->matchesSelector(selector(u"anything").get()));
}

TEST(QVSimpleSelectorArchive, WithoutATextThereIsNoSelector) {
    EXPECT_EQ(unarchived(archiveOf(nullptr, {u"a"})), nullptr);
}
