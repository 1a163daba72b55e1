#include "Platform/AppKit/NSTextAttachment.h"

#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Picture.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

class PlainCell final : public NSCell {
public:
    PlainCell() = default;
};

} // namespace

TEST(NSTextAttachment, HoldsContentsOfAType) {
    const auto attachment = NSTextAttachment::initWithData(std::vector<std::uint8_t>{1, 2}, u"public.data");
    EXPECT_EQ(attachment->contents(), NSData(std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(attachment->fileType(), u"public.data");
    EXPECT_EQ(attachment->attachmentCell(), nullptr);
    EXPECT_EQ(attachment->attachmentBoundsForTextContainer(nullptr, CGRectMake(0, 0, 90, 20), {1, 2}, 3),
              CGRectZero);
}

TEST(NSTextAttachment, HasTheCellThatItIsGiven) {
    const auto attachment = NSTextAttachment::initWithData(nullptr, nullptr);
    const auto cell = std::make_shared<PlainCell>();
    attachment->setAttachmentCell(cell);
    EXPECT_EQ(attachment->attachmentCell(), cell);
    EXPECT_TRUE(attachment->contents().isNull());
    EXPECT_TRUE(attachment->fileType().isNull());
}

TEST(NSTextAttachment, ComesBackFromAnArchiveWithItsContents) {
    const auto back =
        test::throughArchive(NSTextAttachment::initWithData(std::vector<std::uint8_t>{1, 2}, u"public.data"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->contents(), NSData(std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(back->fileType(), u"public.data");
    const auto empty = test::throughArchive(NSTextAttachment::initWithData(nullptr, nullptr));
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->contents().isNull());
}

TEST(NSCell, DrawsNothingAndFollowsNothing) {
    PlainCell cell;
    const test::Picture picture(2, 2);
    cell.drawWithFrame(CGRectMake(0, 0, 2, 2), nullptr);
    cell.highlight(true, CGRectMake(0, 0, 2, 2), nullptr);
    EXPECT_EQ(picture.drawing({}), "..\n..\n");
    EXPECT_EQ(cell.cellSize(), CGSizeZero);
    EXPECT_FALSE(cell.trackMouse(nullptr, CGRectZero, nullptr, true));
}
