#include "Quorvane/Text/NSAttributedString+QVTextAttachment.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

using Attachments = std::vector<NSTextAttachmentRef>;

std::shared_ptr<NSTextAttachment> attachment() { return NSTextAttachment::initWithData(nullptr, nullptr); }

/// An attachment that equals others of its number.
class Numbered final : public NSTextAttachment {
public:
    explicit Numbered(int number) : _number(number) {}
    bool isEqual(const NSObject *other) const override {
        const auto *numbered = dynamic_cast<const Numbered *>(other);
        return numbered && numbered->_number == _number;
    }
    std::size_t hash() const override { return static_cast<std::size_t>(_number); }

private:
    int _number;
};

/// "ab*cd*e*": attachments at 2, 5 and 7, of which that at 5 is something else.
struct NSAttributedStringAttachments : testing::Test {
    std::shared_ptr<NSTextAttachment> first = attachment(), last = attachment();
    std::shared_ptr<NSMutableAttributedString> string =
        NSMutableAttributedString::initWithString(u"ab\uFFFCcd\uFFFCe\uFFFC");

    NSAttributedStringAttachments() {
        string->addAttribute(NSAttachmentAttributeName, first, {2, 1});
        string->addAttribute(NSAttachmentAttributeName, u"no attachment", {5, 1});
        string->addAttribute(NSAttachmentAttributeName, last, {7, 1});
    }
};

} // namespace

TEST_F(NSAttributedStringAttachments, AreListedInOrder) {
    EXPECT_EQ(qv_textAttachments(*string), (Attachments{first, last}));
    EXPECT_EQ(qv_textAttachmentsInRange(*string, {0, 8}), (Attachments{first, last}));
    EXPECT_EQ(qv_textAttachmentsInRange(*string, {2, 5}), (Attachments{first}));
    EXPECT_EQ(qv_textAttachmentsInRange(*string, {3, 4}), (Attachments{}));
    EXPECT_EQ(qv_textAttachmentsInRange(*string, {2, 0}), (Attachments{}));
    EXPECT_EQ(qv_textAttachments(*NSAttributedString::initWithString(u"")), (Attachments{}));
}

TEST_F(NSAttributedStringAttachments, AreToldWithTheirRanges) {
    std::vector<std::pair<NSTextAttachmentRef, NSUInteger>> told;
    const auto note = [&](const NSTextAttachmentRef &value, NSRange range, bool &) {
        EXPECT_EQ(range.length, 1u);
        told.emplace_back(value, range.location);
    };
    qv_enumerateTextAttachmentsUsingBlock(*string, note);
    EXPECT_EQ(told, (decltype(told){{first, 2}, {last, 7}}));
    told.clear();
    qv_enumerateTextAttachmentsInRange(*string, {0, 8}, NSAttributedStringEnumerationReverse, note);
    EXPECT_EQ(told, (decltype(told){{last, 7}, {first, 2}}));
}

TEST_F(NSAttributedStringAttachments, EndWhereTheBlockStops) {
    int count = 0;
    qv_enumerateTextAttachmentsUsingBlock(*string, [&](const NSTextAttachmentRef &, NSRange, bool &stop) {
        ++count;
        stop = true;
    });
    EXPECT_EQ(count, 1);
}

TEST_F(NSAttributedStringAttachments, NeedABlockToBeTold) {
    const test::AssertionRecorder assertions;
    qv_enumerateTextAttachmentsUsingBlock(*string, nullptr);
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{u"Invalid parameter not satisfying: block != nil"}));
}

TEST_F(NSAttributedStringAttachments, TheFirstInARangeIsFound) {
    NSRange range{1, 1};
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {0, 8}, &range), first);
    EXPECT_EQ(range, (NSRange{2, 1}));
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {3, 5}, &range), last);
    EXPECT_EQ(range, (NSRange{7, 1}));
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {0, 8}, NSAttributedStringEnumerationReverse, &range),
              last);
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {0, 8}, nullptr), first);
}

TEST_F(NSAttributedStringAttachments, TheFirstOnesRangeEndsWhereOtherAttributesChange) {
    string->addAttribute(NSAttachmentAttributeName, first, {2, 2});
    string->addAttribute(NSToolTipAttributeName, 1, {3, 1});
    NSRange range{1, 1};
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {0, 8}, &range), first);
    EXPECT_EQ(range, (NSRange{2, 1}));
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, first.get()), (NSRange{2, 2}));
}

TEST_F(NSAttributedStringAttachments, ARangeWithoutAnyHasNoFirst) {
    NSRange range{1, 1};
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {3, 4}, &range), nullptr);
    EXPECT_EQ(range, NSNotFoundRange);
    range = {1, 1};
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {3, 4}, NSAttributedStringEnumerationReverse, &range),
              nullptr);
    EXPECT_EQ(range, NSNotFoundRange);
    EXPECT_EQ(qv_firstTextAttachmentInRange(*string, {3, 4}, nullptr), nullptr);
}

TEST_F(NSAttributedStringAttachments, OneIsFoundAgain) {
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, last.get()), (NSRange{7, 1}));
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, last.get(), {3, 5}), (NSRange{7, 1}));
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, first.get(), {3, 5}), NSNotFoundRange);
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, attachment().get()), NSNotFoundRange);
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, nullptr), NSNotFoundRange);
}

TEST_F(NSAttributedStringAttachments, OneThatEqualsAnotherIsFoundInItsPlace) {
    string->addAttribute(NSAttachmentAttributeName, std::make_shared<Numbered>(1), {2, 1});
    string->addAttribute(NSAttachmentAttributeName, std::make_shared<Numbered>(2), {7, 1});
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, std::make_shared<Numbered>(2).get()), (NSRange{7, 1}));
    EXPECT_EQ(qv_rangeOfTextAttachment(*string, std::make_shared<Numbered>(3).get()), NSNotFoundRange);
}

TEST_F(NSAttributedStringAttachments, ARangeThatLeavesTheTextThrows) {
    EXPECT_THROW(qv_textAttachmentsInRange(*string, {5, 4}), NSException);
}
