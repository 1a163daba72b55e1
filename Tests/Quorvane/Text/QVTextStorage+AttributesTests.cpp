#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include "Tests/Quorvane/Text/BareTextStorage.h"

#include <gmock/gmock.h>

namespace quorvane {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

/// Every test is done with highlighting and with extended attributes, which read alike.
struct Family {
    const char *name;
    NSAttributes (*read)(const QVTextStorage &, NSUInteger, NSRange *);
    NSAttributes (*readLongest)(const QVTextStorage &, NSUInteger, NSRange *, NSRange);
    std::optional<NSAttributeValue> (*readKey)(const QVTextStorage &, NSAttributeKey, NSUInteger, NSRange *);
    std::optional<NSAttributeValue> (*readKeyLongest)(const QVTextStorage &, NSAttributeKey, NSUInteger,
                                                      NSRange *, NSRange);
    void (*walk)(const QVTextStorage &, NSRange, NSAttributedStringEnumerationOptions,
                 NSAttributedString::AttributesBlock);
    void (*walkKey)(const QVTextStorage &, NSAttributeKey, NSRange, NSAttributedStringEnumerationOptions,
                    NSAttributedString::AttributeBlock);
};

const Family highlighting{
    "highlighting",
    [](const QVTextStorage &storage, NSUInteger index, NSRange *range) {
        return storage.syntaxHighlightingAttributesAtIndex(index, range);
    },
    [](const QVTextStorage &storage, NSUInteger index, NSRange *range, NSRange limit) {
        return storage.syntaxHighlightingAttributesAtIndex(index, range, limit);
    },
    [](const QVTextStorage &storage, NSAttributeKey key, NSUInteger index, NSRange *range) {
        return storage.syntaxHighlightingAttribute(key, index, range);
    },
    [](const QVTextStorage &storage, NSAttributeKey key, NSUInteger index, NSRange *range, NSRange limit) {
        return storage.syntaxHighlightingAttribute(key, index, range, limit);
    },
    [](const QVTextStorage &storage, NSRange range, NSAttributedStringEnumerationOptions options,
       NSAttributedString::AttributesBlock block) {
        storage.enumerateSyntaxHighlightingAttributesInRange(range, options, block);
    },
    [](const QVTextStorage &storage, NSAttributeKey key, NSRange range,
       NSAttributedStringEnumerationOptions options, NSAttributedString::AttributeBlock block) {
        storage.enumerateSyntaxHighlightingAttribute(key, range, options, block);
    }};

const Family extended{
    "extended",
    [](const QVTextStorage &storage, NSUInteger index, NSRange *range) {
        return storage.extendedAttributesAtIndex(index, range);
    },
    [](const QVTextStorage &storage, NSUInteger index, NSRange *range, NSRange limit) {
        return storage.extendedAttributesAtIndex(index, range, limit);
    },
    [](const QVTextStorage &storage, NSAttributeKey key, NSUInteger index, NSRange *range) {
        return storage.extendedAttribute(key, index, range);
    },
    [](const QVTextStorage &storage, NSAttributeKey key, NSUInteger index, NSRange *range, NSRange limit) {
        return storage.extendedAttribute(key, index, range, limit);
    },
    [](const QVTextStorage &storage, NSRange range, NSAttributedStringEnumerationOptions options,
       NSAttributedString::AttributesBlock block) {
        storage.enumerateExtendedAttributesInRange(range, options, block);
    },
    [](const QVTextStorage &storage, NSAttributeKey key, NSRange range,
       NSAttributedStringEnumerationOptions options, NSAttributedString::AttributeBlock block) {
        storage.enumerateExtendedAttribute(key, range, options, block);
    }};

class QVTextStorageAttributes : public testing::TestWithParam<const Family *> {
protected:
    const Family &family() const { return *GetParam(); }

    /// "1 0+5 | 2 5+2" for what a walk reports.
    std::string walked(const QVTextStorage &storage, NSRange range,
                       NSAttributedStringEnumerationOptions options, int stopAfter = 0) const {
        std::string text;
        family().walk(storage, range, options, [&](const NSAttributes &attributes, NSRange run, bool &stop) {
            EXPECT_FALSE(stop);
            note(text, attributes.valueForKey(NSToolTipAttributeName), run);
            stop = --stopAfter == 0;
        });
        return text;
    }
    std::string walkedKey(const QVTextStorage &storage, NSAttributeKey key, NSRange range,
                          NSAttributedStringEnumerationOptions options, int stopAfter = 0) const {
        std::string text;
        family().walkKey(storage, key, range, options,
                         [&](const NSAttributeValue *value, NSRange run, bool &stop) {
                             EXPECT_FALSE(stop);
                             note(text, value, run);
                             stop = --stopAfter == 0;
                         });
        return text;
    }

private:
    static void note(std::string &text, const NSAttributeValue *value, NSRange run) {
        text += (text.empty() ? "" : " | ") + (value ? std::to_string(value->integerValue()) : "-") + " " +
                std::to_string(run.location) + "+" + std::to_string(run.length);
    }
};

INSTANTIATE_TEST_SUITE_P(Families, QVTextStorageAttributes, testing::Values(&highlighting, &extended),
                         [](const auto &parameter) { return std::string(parameter.param->name); });

NSAttributes tip(NSInteger number) { return {{NSToolTipAttributeName, number}}; }
NSAttributes tipAndLink(NSInteger number, NSInteger link) {
    return {{NSToolTipAttributeName, number}, {NSLinkAttributeName, link}};
}
constexpr auto perRun = NSAttributedStringEnumerationLongestEffectiveRangeNotRequired;

/// 3 of tip 1, 3 of tip 1 again, 4 of tip 2.
PiecesTextStorage pieces() { return PiecesTextStorage({{3, tip(1)}, {3, tip(1)}, {4, tip(2)}}); }

TEST_P(QVTextStorageAttributes, TheValueOfAKeyIsThatOfTheDictionary) {
    const auto storage = pieces();
    NSRange range;
    EXPECT_EQ(family().readKey(storage, NSToolTipAttributeName, 4, &range), NSAttributeValue(1));
    EXPECT_EQ(range, NSMakeRange(3, 3));
    EXPECT_EQ(family().readKey(storage, NSLinkAttributeName, 4, nullptr), std::nullopt);
}

TEST_P(QVTextStorageAttributes, TheLongestRangeJoinsEqualNeighbours) {
    const auto storage = pieces();
    NSRange range;
    EXPECT_EQ(family().readLongest(storage, 0, &range, {0, 10}), tip(1));
    EXPECT_EQ(range, NSMakeRange(0, 6));
    EXPECT_EQ(family().readKeyLongest(storage, NSToolTipAttributeName, 0, &range, {0, 10}),
              NSAttributeValue(1));
    EXPECT_EQ(range, NSMakeRange(0, 6));
}

TEST_P(QVTextStorageAttributes, TheLongestRangeGrowsForwardsOnly) {
    const auto storage = pieces();
    NSRange range;
    family().readLongest(storage, 4, &range, {0, 10});
    EXPECT_EQ(range, NSMakeRange(3, 3));
    family().readKeyLongest(storage, NSToolTipAttributeName, 4, &range, {0, 10});
    EXPECT_EQ(range, NSMakeRange(3, 3));
}

TEST_P(QVTextStorageAttributes, TheLongestRangeStaysInItsLimit) {
    const auto storage = pieces();
    NSRange range;
    family().readLongest(storage, 1, &range, {1, 3});
    EXPECT_EQ(range, NSMakeRange(1, 3));
    family().readKeyLongest(storage, NSToolTipAttributeName, 1, &range, {1, 4});
    EXPECT_EQ(range, NSMakeRange(1, 4));
}

TEST_P(QVTextStorageAttributes, OneKeyGoesOnWhereOthersChange) {
    const PiecesTextStorage storage({{2, tip(1)}, {2, tipAndLink(1, 1)}, {2, tipAndLink(2, 1)}});
    NSRange range;
    family().readLongest(storage, 0, &range, {0, 6});
    EXPECT_EQ(range, NSMakeRange(0, 2));
    family().readKeyLongest(storage, NSToolTipAttributeName, 0, &range, {0, 6});
    EXPECT_EQ(range, NSMakeRange(0, 4));
    EXPECT_EQ(family().readKeyLongest(storage, NSCursorAttributeName, 0, &range, {0, 6}), std::nullopt);
    EXPECT_EQ(range, NSMakeRange(0, 6));
}

TEST_P(QVTextStorageAttributes, AtTheEndTheLastCharacterIsRead) {
    const auto storage = pieces();
    NSRange range;
    EXPECT_EQ(family().readLongest(storage, 10, &range, {0, 10}), tip(2));
    EXPECT_EQ(range, NSMakeRange(6, 4));
    EXPECT_EQ(family().readKeyLongest(storage, NSToolTipAttributeName, 10, nullptr, {0, 10}),
              NSAttributeValue(2));
}

TEST_P(QVTextStorageAttributes, AnEmptyStorageHasNone) {
    const PiecesTextStorage storage({});
    NSRange range{7, 7};
    EXPECT_TRUE(family().readLongest(storage, 0, &range, {0, 0}).empty());
    EXPECT_EQ(range, NSMakeRange(0, 0));
    range = {7, 7};
    EXPECT_EQ(family().readKeyLongest(storage, NSToolTipAttributeName, 0, &range, {0, 0}), std::nullopt);
    EXPECT_EQ(range, NSMakeRange(0, 0));
}

TEST_P(QVTextStorageAttributes, WalksReportLongestRangesOrEachRun) {
    const auto storage = pieces();
    EXPECT_EQ(walked(storage, {0, 10}, 0), "1 0+6 | 2 6+4");
    EXPECT_EQ(walked(storage, {0, 10}, perRun), "1 0+3 | 1 3+3 | 2 6+4");
    EXPECT_EQ(walkedKey(storage, NSToolTipAttributeName, {0, 10}, 0), "1 0+6 | 2 6+4");
    EXPECT_EQ(walkedKey(storage, NSToolTipAttributeName, {0, 10}, perRun), "1 0+3 | 1 3+3 | 2 6+4");
    EXPECT_EQ(walkedKey(storage, NSLinkAttributeName, {0, 10}, 0), "- 0+10");
}

TEST_P(QVTextStorageAttributes, WalksStayInTheirRangeAndStop) {
    const auto storage = pieces();
    EXPECT_EQ(walked(storage, {1, 7}, 0), "1 1+5 | 2 6+2");
    EXPECT_EQ(walked(storage, {1, 7}, perRun), "1 1+2 | 1 3+3 | 2 6+2");
    EXPECT_EQ(walked(storage, {1, 7}, perRun, 2), "1 1+2 | 1 3+3");
    EXPECT_EQ(walkedKey(storage, NSToolTipAttributeName, {1, 7}, perRun, 1), "1 1+2");
    EXPECT_EQ(walked(storage, {4, 0}, 0), "");
}

TEST_P(QVTextStorageAttributes, RangesBeyondTheTextThrow) {
    const auto storage = pieces();
    NSRange range;
    EXPECT_THROW(family().readLongest(storage, 0, &range, {0, 11}), NSException);
    EXPECT_THROW(family().readKeyLongest(storage, NSToolTipAttributeName, 0, &range, {11, 0}), NSException);
    EXPECT_THROW(walked(storage, {5, 6}, 0), NSException);
    EXPECT_THROW(walkedKey(storage, NSToolTipAttributeName, {5, 6}, 0), NSException);
}

TEST_P(QVTextStorageAttributes, AWalkWithoutABlockIsABug) {
    const auto storage = pieces();
    const AssertionRecorder assertions;
    family().walk(storage, {0, 10}, 0, nullptr);
    family().walkKey(storage, NSToolTipAttributeName, {0, 10}, 0, nullptr);
    EXPECT_THAT(assertions.messages(), ElementsAre(u"Invalid parameter not satisfying: block != nil",
                                                   u"Invalid parameter not satisfying: block != nil"));
}

// MARK: Writing extended attributes

TEST(QVTextStorageExtendedAttributes, AddingSkipsRunsThatHaveTheValue) {
    auto storage = PiecesTextStorage({{3, tip(1)}, {3, tipAndLink(2, 5)}, {4, tip(3)}});
    storage.addExtendedAttribute(NSLinkAttributeName, 5, {0, 10});
    EXPECT_THAT(storage.writes, ElementsAre(NSRange{0, 3}, NSRange{6, 4}));
    EXPECT_EQ(storage.extendedAttributesAtIndex(0, nullptr), tipAndLink(1, 5));
    EXPECT_EQ(storage.extendedAttributesAtIndex(9, nullptr), tipAndLink(3, 5));
}

TEST(QVTextStorageExtendedAttributes, AddingSeveralKeepsTheOthers) {
    auto storage = PiecesTextStorage({{3, tip(1)}, {3, tipAndLink(2, 5)}});
    storage.addExtendedAttributes({{NSLinkAttributeName, 5}, {NSToolTipAttributeName, 2}}, {0, 6});
    EXPECT_THAT(storage.writes, ElementsAre(NSRange{0, 3}));
    EXPECT_EQ(storage.extendedAttributesAtIndex(0, nullptr), tipAndLink(2, 5));
}

TEST(QVTextStorageExtendedAttributes, RemovingTouchesRunsThatHaveTheKey) {
    auto storage = PiecesTextStorage({{3, tip(1)}, {3, tipAndLink(2, 5)}});
    storage.removeExtendedAttribute(NSLinkAttributeName, {0, 6});
    EXPECT_THAT(storage.writes, ElementsAre(NSRange{3, 3}));
    EXPECT_EQ(storage.extendedAttributesAtIndex(4, nullptr), tip(2));
    storage.writes.clear();
    storage.removeExtendedAttribute(NSCursorAttributeName, {0, 6});
    EXPECT_THAT(storage.writes, IsEmpty());
}

TEST(QVTextStorageExtendedAttributes, OnlyThePartInTheRangeIsWritten) {
    auto storage = PiecesTextStorage({{3, tip(1)}, {3, tip(2)}});
    storage.addExtendedAttribute(NSLinkAttributeName, 5, {1, 4});
    EXPECT_THAT(storage.writes, ElementsAre(NSRange{1, 2}, NSRange{3, 2}));
}

} // namespace
} // namespace quorvane
