#include "Platform/AppKit/NSTextStorage.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/QVLimits.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

using namespace quorvane;

namespace {

const NSAttributeKey markKey(u"mark");

struct Told {
    NSTextStorageEditActions mask;
    NSRange range;
    NSInteger changeInLength;
    friend bool operator==(const Told &, const Told &) = default;
    friend std::ostream &operator<<(std::ostream &stream, const Told &round) {
        return stream << round.mask << " {" << round.range.location << ", " << round.range.length << "} "
                      << round.changeInLength;
    }
};

/// Keeps its text in a plain attributed string and writes down what it is told to do.
class Storage : public NSTextStorage {
public:
    explicit Storage(std::u16string_view text = u"", bool lazy = true)
        : _contents(NSMutableAttributedString::initWithString(text)), _lazy(lazy) {}

    using NSTextStorage::attributesAtIndex;
    using NSTextStorage::replaceCharactersInRange;

    NSUInteger length() const override { return _contents->length(); }
    QVTextReader string() const override { return _contents->string(); }
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const override {
        prepareToReadAttributesInRange({index, 1});
        return _contents->attributesAtIndex(index, effectiveRange);
    }
    void replaceCharactersInRange(NSRange range, std::u16string_view withString) override {
        _contents->replaceCharactersInRange(range, withString);
        _contents->setAttributes({}, {range.location, withString.size()});
        edited(NSTextStorageEditedAttributes | NSTextStorageEditedCharacters, range,
               static_cast<NSInteger>(withString.size()) - static_cast<NSInteger>(range.length));
    }
    void setAttributes(const NSAttributes &attributes, NSRange range) override {
        _contents->setAttributes(attributes, range);
        edited(NSTextStorageEditedAttributes, range, 0);
    }
    bool fixesAttributesLazily() const override { return _lazy; }

    void processEditing() override {
        if (beforeBase)
            std::exchange(beforeBase, nullptr)();
        NSTextStorage::processEditing();
        rounds.push_back({editedMask(), editedRange(), changeInLength()});
        if (behindBase)
            std::exchange(behindBase, nullptr)();
    }
    void fixAttributesInRange(NSRange range) override {
        fixed.push_back(range);
        if (whileFixing)
            whileFixing();
        NSTextStorage::fixAttributesInRange(range);
    }

    /// Past all reading and telling.
    NSMutableAttributedString &contents() { return *_contents; }
    std::vector<NSRange> takeFixed() { return std::exchange(fixed, {}); }
    std::vector<Told> takeRounds() { return std::exchange(rounds, {}); }

    std::vector<Told> rounds;
    std::vector<NSRange> fixed;
    std::function<void()> beforeBase, behindBase, whileFixing;

private:
    std::shared_ptr<NSMutableAttributedString> _contents;
    bool _lazy;
};

void read(const Storage &storage) {
    for (NSUInteger index = 0; index < storage.length(); ++index)
        (void)storage.attributesAtIndex(index);
}

/// The style of each character as a letter, "-" for none.
std::string styles(const Storage &storage) {
    std::string picture;
    for (NSUInteger index = 0; index < storage.length(); ++index) {
        const auto style = storage.attribute(NSParagraphStyleAttributeName, index);
        picture += style ? style->stringValue().UTF8String() : "-";
    }
    return picture;
}

void setStyle(Storage &storage, NSUInteger index, const char16_t *style) {
    storage.contents().addAttribute(NSParagraphStyleAttributeName, style, {index, 1});
    storage.invalidateAttributesInRange({index, storage.length()});
}

using Ranges = std::vector<NSRange>;
using Rounds = std::vector<Told>;

} // namespace

// MARK: - The edit bracket

TEST(NSTextStorage, AnEditOutsideOfABracketIsProcessedAtOnce) {
    Storage storage(u"abc");
    storage.replaceCharactersInRange({1, 1}, u"xyz");
    EXPECT_EQ(storage.takeRounds(), (Rounds{{3, {1, 3}, 2}}));
    storage.addAttribute(markKey, 1, {0, 2});
    EXPECT_EQ(storage.takeRounds(), (Rounds{{1, {0, 2}, 0}}));
}

TEST(NSTextStorage, ABracketIsProcessedOnceWhenTheOutermostOneEnds) {
    Storage storage(u"0123456789");
    storage.beginEditing();
    storage.replaceCharactersInRange({2, 1}, u"ab");
    storage.beginEditing();
    storage.replaceCharactersInRange({8, 2}, u"");
    storage.endEditing();
    EXPECT_TRUE(storage.rounds.empty());
    EXPECT_EQ(storage.editedRange(), (NSRange{2, 6}));
    storage.endEditing();
    EXPECT_EQ(storage.takeRounds(), (Rounds{{3, {2, 6}, -1}}));
}

TEST(NSTextStorage, ABracketWithoutEditsIsNotProcessed) {
    Storage storage(u"abc");
    storage.beginEditing();
    storage.endEditing();
    storage.edited(0, {0, 1}, 0);
    EXPECT_TRUE(storage.rounds.empty());
}

TEST(NSTextStorage, MasksOfAllEditsAreGathered) {
    Storage storage(u"abc");
    storage.beginEditing();
    storage.edited(NSTextStorageEditedAttributes, {0, 1}, 0);
    EXPECT_EQ(storage.editedMask(), 1u);
    storage.edited(NSTextStorageEditedCharacters, {2, 1}, 0);
    EXPECT_EQ(storage.editedMask(), 3u);
    storage.endEditing();
    EXPECT_EQ(storage.takeRounds(), (Rounds{{3, {0, 3}, 0}}));
}

TEST(NSTextStorage, WhatWasEditedIsForgottenWhenProcessingIsOver) {
    Storage storage(u"abc");
    storage.behindBase = [&] { EXPECT_EQ(storage.editedRange(), (NSRange{0, 1})); };
    storage.replaceCharactersInRange({0, 0}, u"x");
    EXPECT_FALSE(storage.behindBase);
    EXPECT_EQ(storage.editedMask(), 0u);
    EXPECT_EQ(storage.editedRange(), NSNotFoundRange);
    EXPECT_EQ(storage.changeInLength(), 0);
}

TEST(NSTextStorage, TheEditedRangeIsWhatLiesBetweenTheUntouchedFrontAndTheUntouchedEnd) {
    for (std::uint32_t seed = 1; seed <= 50; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Storage storage(std::u16string(40, u'a'));
        const NSUInteger oldLength = storage.length();
        NSUInteger front = oldLength;
        NSUInteger end = oldLength;
        storage.beginEditing();
        for (NSUInteger edits = 1 + random() % 6; edits > 0; --edits) {
            const NSUInteger location = random() % (storage.length() + 1);
            const NSUInteger length = random() % std::min<NSUInteger>(5, storage.length() - location + 1);
            front = std::min(front, location);
            end = std::min(end, storage.length() - location - length);
            storage.replaceCharactersInRange({location, length}, std::u16string(random() % 5, u'b'));
        }
        storage.endEditing();
        ASSERT_EQ(storage.rounds.size(), 1u);
        EXPECT_EQ(storage.rounds[0].range, (NSRange{front, storage.length() - front - end}));
        EXPECT_EQ(storage.rounds[0].changeInLength,
                  static_cast<NSInteger>(storage.length()) - static_cast<NSInteger>(oldLength));
    }
}

TEST(NSTextStorage, WhatAnOverrideChangesBeforeTheBaseIsPartOfTheEdit) {
    Storage storage(u"abcdef");
    storage.beforeBase = [&] { storage.addAttribute(markKey, 1, {4, 1}); };
    storage.replaceCharactersInRange({0, 1}, u"");
    EXPECT_EQ(storage.takeRounds(), (Rounds{{3, {0, 5}, -1}}));
}

TEST(NSTextStorage, WhatIsEditedWhileOthersAreToldMakesARoundOfItsOwn) {
    Storage storage(u"abcdef");
    storage.behindBase = [&] {
        storage.beginEditing();
        storage.replaceCharactersInRange({3, 0}, u"yz");
        storage.replaceCharactersInRange({1, 1}, u"");
        storage.endEditing();
        EXPECT_EQ(storage.editedRange(), (NSRange{0, 1}));
        EXPECT_EQ(storage.rounds.size(), 1u);
    };
    storage.replaceCharactersInRange({0, 0}, u"x");
    EXPECT_EQ(storage.takeRounds(), (Rounds{{3, {0, 1}, 1}, {3, {1, 3}, 1}}));
    EXPECT_EQ(storage.editedMask(), 0u);
}

TEST(NSTextStorage, EndingABracketThatNeverBeganIsAsserted) {
    const test::AssertionRecorder assertions;
    Storage storage(u"abc");
    storage.endEditing();
    EXPECT_EQ(assertions.messages(), (std::vector<NSString>{u"endEditing was called without beginEditing"}));
    storage.replaceCharactersInRange({0, 1}, u"");
    EXPECT_EQ(storage.rounds.size(), 1u);
}

TEST(NSTextStorage, AnExceptionOutOfProcessingLeavesTheStorageReady) {
    Storage storage(u"abc");
    storage.behindBase = [] { throw NSException(NSInvalidArgumentException, u"no"); };
    EXPECT_THROW(storage.replaceCharactersInRange({0, 1}, u""), NSException);
    EXPECT_EQ(storage.editedMask(), 0u);
    storage.takeRounds();
    storage.replaceCharactersInRange({1, 0}, u"x");
    EXPECT_EQ(storage.takeRounds(), (Rounds{{3, {1, 1}, 1}}));
}

// MARK: - When attributes are fixed

TEST(NSTextStorage, AttributesAreFixedWhenSomebodyReadsThem) {
    Storage storage(u"ab\ncd");
    storage.replaceCharactersInRange({5, 0}, u"x\ny");
    EXPECT_TRUE(storage.fixed.empty());
    (void)storage.attributesAtIndex(0);
    EXPECT_TRUE(storage.fixed.empty());
    (void)storage.attributesAtIndex(6);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{5, 3}}));
    read(storage);
    EXPECT_TRUE(storage.fixed.empty());
}

TEST(NSTextStorage, WalksFixTheirWholeRangeFirst) {
    Storage storage(u"ab\ncd");
    storage.invalidateAttributesInRange({0, 5});
    storage.enumerateAttributesInRange({3, 2}, 0, [&](const NSAttributes &, NSRange, bool &) {
        EXPECT_EQ(storage.takeFixed(), (Ranges{{0, 5}}));
    });
    storage.invalidateAttributesInRange({0, 5});
    storage.enumerateAttribute(markKey, {3, 2}, 0, [&](const NSAttributeValue *, NSRange, bool &) {
        EXPECT_EQ(storage.takeFixed(), (Ranges{{0, 5}}));
    });
}

TEST(NSTextStorage, WhatIsReadIsFixedTogetherWithItsNeighbourhoodOf4096Characters) {
    Storage storage(std::u16string(10000, u'\n'));
    storage.invalidateAttributesInRange({0, 10000});
    (void)storage.attributesAtIndex(5000);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{4096, 4096}}));
    storage.ensureAttributesAreFixedInRange({4090, 5000});
    EXPECT_EQ(storage.takeFixed(), (Ranges{{0, 4096}, {8192, 1808}}));
}

TEST(NSTextStorage, TypingInALineLeavesOnlyTheTypedCharacterToFix) {
    Storage storage(u"one two\nthree");
    storage.replaceCharactersInRange({3, 0}, u"x");
    read(storage);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{3, 1}}));
}

TEST(NSTextStorage, TheRestOfALineIsFixedAgainWhereItMayHaveAnotherFirstCharacter) {
    Storage storage(u"one\ntwo\nthree");
    storage.replaceCharactersInRange({4, 0}, u"x");
    read(storage);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{4, 5}})); // "xtwo\n"
    storage.replaceCharactersInRange({3, 1}, u"");
    read(storage);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{3, 5}})); // behind "one": "xtwo\n"
    storage.replaceCharactersInRange({2, 0}, u"a\rb");
    read(storage);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{2, 9}})); // "a\rbextwo\n"
}

TEST(NSTextStorage, UnfixedPlacesMoveAlongWithTheText) {
    Storage storage(std::u16string(30, u'\n'));
    storage.invalidateAttributesInRange({10, 10});
    storage.replaceCharactersInRange({0, 2}, u"");
    storage.replaceCharactersInRange({13, 1}, u"\n\n\n");
    storage.replaceCharactersInRange({25, 0}, u"\n");
    read(storage);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{8, 12}, {25, 1}}));
    storage.invalidateAttributesInRange({4, 2});
    storage.replaceCharactersInRange({3, 4}, u"");
    read(storage);
    EXPECT_TRUE(storage.fixed.empty());
}

TEST(NSTextStorage, NothingIsReadThatIsNotFixed) {
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Storage storage(std::u16string(100, u'a'));
        const auto someRange = [&] {
            const NSUInteger location = random() % (storage.length() + 1);
            return NSRange{location, random() % std::min<NSUInteger>(20, storage.length() - location + 1)};
        };
        // Fixing leaves a mark; what isn't fixed has none.
        storage.whileFixing = [&] { storage.contents().addAttribute(markKey, 1, storage.fixed.back()); };
        storage.invalidateAttributesInRange({0, 100});
        for (int step = 0; step < 300; ++step) {
            const NSRange range = someRange();
            switch (random() % 4) {
            case 0:
                storage.replaceCharactersInRange(range,
                                                 std::u16string(random() % 9, random() % 5 ? u'b' : u'\n'));
                break;
            case 1:
                storage.contents().setAttributes({}, range);
                storage.invalidateAttributesInRange(range);
                break;
            case 2:
                storage.setAttributes({}, range);
                break;
            default:
                for (NSUInteger index = range.location; index < NSMaxRange(range); ++index)
                    ASSERT_TRUE(storage.attributesAtIndex(index).containsKey(markKey)) << "step " << step;
            }
        }
    }
}

TEST(NSTextStorage, FixingForAReaderIsNoEdit) {
    Storage storage(u"abc");
    setStyle(storage, 0, u"A");
    EXPECT_EQ(styles(storage), "AAA");
    EXPECT_TRUE(storage.rounds.empty());
    read(storage);
    EXPECT_EQ(storage.takeFixed().size(), 1u);
}

TEST(NSTextStorage, AStorageThatIsNotLazyFixesBeforeItTells) {
    Storage storage(u"abc", false);
    storage.addAttribute(NSParagraphStyleAttributeName, u"A", {0, 1});
    EXPECT_EQ(storage.takeFixed(), (Ranges{{0, 3}}));
    // What fixing changed is told with the edit.
    EXPECT_EQ(storage.takeRounds(), (Rounds{{1, {0, 3}, 0}}));
    EXPECT_EQ(styles(storage), "AAA");
    storage.replaceCharactersInRange({1, 1}, u"xy");
    EXPECT_EQ(storage.takeRounds(), (Rounds{{3, {1, 2}, 1}}));
    EXPECT_EQ(styles(storage), "AAAA");
}

TEST(NSTextStorage, AttributesStayUnfixedWhenFixingThrows) {
    Storage storage(u"abc");
    storage.invalidateAttributesInRange({0, 3});
    storage.whileFixing = [] { throw NSException(NSInvalidArgumentException, u"no"); };
    EXPECT_THROW((void)storage.attributesAtIndex(1), NSException);
    storage.whileFixing = nullptr;
    storage.takeFixed();
    (void)storage.attributesAtIndex(1);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{0, 3}}));
    // And changes are edits again.
    storage.addAttribute(markKey, 1, {0, 1});
    EXPECT_EQ(storage.rounds.size(), 1u);
}

TEST(NSTextStorage, InvalidatingBeyondTheTextIsCut) {
    Storage storage(u"abc");
    storage.invalidateAttributesInRange({2, 100});
    storage.invalidateAttributesInRange({50, 1});
    read(storage);
    EXPECT_EQ(storage.takeFixed(), (Ranges{{2, 1}}));
    storage.edited(NSTextStorageEditedAttributes, {50, 4}, 0);
    storage.edited(NSTextStorageEditedCharacters, NSNotFoundRange, 0);
    EXPECT_EQ(storage.rounds.size(), 1u);
}

// MARK: - What fixing does

TEST(NSTextStorage, AParagraphTakesTheStyleOfItsFirstCharacter) {
    Storage storage(u"ab\ncd\r\nef\rg");
    storage.invalidateAttributesInRange({0, 11});
    setStyle(storage, 0, u"A");
    setStyle(storage, 1, u"B");
    setStyle(storage, 6, u"C");
    setStyle(storage, 7, u"D");
    EXPECT_EQ(styles(storage), "AAA----DDD-");
}

TEST(NSTextStorage, JoinedParagraphsTakeTheStyleOfTheFirstOne) {
    Storage storage(u"ab\ncd");
    setStyle(storage, 0, u"A");
    setStyle(storage, 3, u"B");
    EXPECT_EQ(styles(storage), "AAABB");
    storage.replaceCharactersInRange({2, 1}, u"");
    EXPECT_EQ(styles(storage), "AAAA");
}

TEST(NSTextStorage, TextTypedInFrontOfAParagraphGivesItItsStyle) {
    Storage storage(u"ab\ncd");
    setStyle(storage, 3, u"B");
    EXPECT_EQ(styles(storage), "---BB");
    storage.replaceCharactersInRange({3, 0}, u"x");
    EXPECT_EQ(styles(storage), "------");
}

TEST(NSTextStorage, TheRestOfASplitParagraphFollowsItsFirstCharacterThoughThatWasNotFixedYet) {
    Storage storage(u"abcd");
    storage.contents().addAttribute(NSParagraphStyleAttributeName, u"A", {2, 1});
    storage.edited(NSTextStorageEditedAttributes, {2, 1}, 0);
    storage.replaceCharactersInRange({2, 0}, u"\n");
    EXPECT_EQ(styles(storage), "---AA");
}

TEST(NSTextStorage, ParagraphsAlwaysHaveTheirFirstCharactersStyle) {
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Storage storage;
        std::u16string text;
        std::string model;
        const char16_t *const names[] = {u"A", u"B", u"C"};
        const std::u16string_view units = u"abc\n\r\n";
        for (int step = 0; step < 200; ++step) {
            const NSUInteger location = random() % (text.size() + 1);
            NSRange range{location, random() % std::min<NSUInteger>(6, text.size() - location + 1)};
            if (random() % 3 != 0) {
                std::u16string inserted;
                for (NSUInteger count = random() % 5; count > 0; --count)
                    inserted += units[random() % units.size()];
                storage.replaceCharactersInRange(range, inserted);
                text.replace(range.location, range.length, inserted);
                model.replace(range.location, range.length, std::string(inserted.size(), '-'));
            } else {
                const NSUInteger style = random() % 3;
                storage.contents().addAttribute(NSParagraphStyleAttributeName, names[style], range);
                storage.edited(NSTextStorageEditedAttributes, range, 0);
                model.replace(range.location, range.length, std::string(range.length, "ABC"[style]));
            }
            if (random() % 3 == 0) {
                for (std::size_t index = 1; index < text.size(); ++index)
                    if (text[index - 1] != u'\n' && !(text[index - 1] == u'\r' && text[index] != u'\n'))
                        model[index] = model[index - 1];
                ASSERT_EQ(styles(storage), model) << "step " << step;
            }
        }
    }
}

TEST(NSTextStorage, AParagraphIsLookedAtAsFarAsTheReachGoes) {
    const NSUInteger reach = limits::paragraphFixingReach;
    Storage storage(std::u16string(reach + 3, u'a'));
    storage.contents().addAttribute(NSParagraphStyleAttributeName, u"A", {0, 1});
    storage.invalidateAttributesInRange({reach, 1});
    EXPECT_EQ(storage.attribute(NSParagraphStyleAttributeName, reach)->stringValue(), u"A");
    // One further the first character is out of sight, and the one before counts.
    storage.contents().addAttribute(NSParagraphStyleAttributeName, u"B", {reach, 1});
    storage.invalidateAttributesInRange({reach + 1, 1});
    EXPECT_EQ(storage.attribute(NSParagraphStyleAttributeName, reach + 1)->stringValue(), u"B");
}

TEST(NSTextStorage, FarFromItsParagraphsStartAPlaceWithNothingKnownBeforeItStaysAsItIs) {
    Storage storage(std::u16string(10'000, u'a'));
    setStyle(storage, 0, u"A");
    EXPECT_FALSE(storage.attribute(NSParagraphStyleAttributeName, 5000));
    EXPECT_EQ(storage.takeFixed(), (Ranges{{4096, 4096}}));
    EXPECT_EQ(storage.attribute(NSParagraphStyleAttributeName, 100)->stringValue(), u"A");
}

TEST(NSTextStorage, ReadingInALongTextFixesNoMoreThanWhatIsAroundIt) {
    std::u16string text;
    for (int line = 0; line < 2000; ++line)
        text += std::u16string(99, u'a') + u'\n';
    Storage storage(text);
    storage.invalidateAttributesInRange({0, text.size()});
    (void)storage.attributesAtIndex(text.size() - 1);
    // That begins in the middle of a line, whose first character counts.
    EXPECT_EQ(storage.takeFixed(), (Ranges{{196608, 3392}, {196600, 1}}));
}

TEST(NSTextStorage, AnEditLeavesTheRestOfItsLineToFixAsFarAsTheReachGoes) {
    const NSUInteger reach = limits::paragraphFixingReach;
    for (const NSUInteger beyond : {NSUInteger{0}, NSUInteger{1}}) {
        Storage storage(std::u16string(reach + beyond, u'a'));
        storage.replaceCharactersInRange({0, 0}, u"x");
        read(storage);
        NSUInteger fixed = 0;
        for (const NSRange range : storage.fixed)
            fixed += range.length;
        EXPECT_EQ(fixed, reach + 1);
    }
}

TEST(NSTextStorage, AttachmentsStandOnTheirCharacterAlone) {
    Storage storage(u"a\uFFFCb\uFFFC");
    storage.contents().addAttribute(NSAttachmentAttributeName, 7, {0, 3});
    storage.contents().addAttribute(markKey, 1, {0, 4});
    storage.invalidateAttributesInRange({0, 4});
    EXPECT_EQ(storage.description(), u"a{mark = 1}\uFFFC{NSAttachment = 7; mark = 1}b\uFFFC{mark = 1}");
}

TEST(NSTextStorage, FontsStayAsTheyAre) {
    Storage storage(u"a\u4E00");
    storage.contents().addAttribute(NSFontAttributeName, u"Sans", {0, 2});
    storage.invalidateAttributesInRange({0, 2});
    EXPECT_EQ(storage.description(), u"a\u4E00{NSFont = Sans}");
}
