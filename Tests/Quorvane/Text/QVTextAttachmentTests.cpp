#include "Quorvane/Text/QVTextAttachment.h"

#include "Quorvane/Text/QVTextAttachmentCell.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/LayoutFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

constexpr CGRect room{{1, 2}, {300, 20}};

/// Writes down what it is asked.
class Noting final : public QVTextAttachment {
public:
    static std::shared_ptr<Noting> make() {
        auto attachment = std::make_shared<Noting>();
        attachment->initializeWithData(nullptr, nullptr);
        return attachment;
    }
    Noting() = default;

    CGRect attachmentBoundsForLayoutManager(QVLayoutManager *layoutManager, const CGRect &proposed,
                                            CGPoint glyphPosition, NSUInteger characterIndex) const override {
        EXPECT_EQ(proposed, room);
        EXPECT_EQ(glyphPosition, (CGPoint{4, 5}));
        note(characterIndex, layoutManager);
        return CGRectMake(0, -1, 8, 9);
    }
    void drawWithFrame(const CGRect &frame, NSUInteger characterIndex,
                       QVLayoutManager *layoutManager) const override {
        EXPECT_EQ(frame, room);
        note(characterIndex, layoutManager);
    }

    using Call = std::pair<NSUInteger, QVLayoutManager *>;
    mutable std::vector<Call> calls;

private:
    void note(NSUInteger index, QVLayoutManager *layoutManager) const {
        calls.emplace_back(index, layoutManager);
    }
};

std::shared_ptr<QVTextAttachmentCell> cellOf(const NSTextAttachment &attachment) {
    return std::dynamic_pointer_cast<QVTextAttachmentCell>(attachment.attachmentCell());
}

} // namespace

TEST(QVTextAttachment, TakesNoRoomByItself) {
    const auto attachment = QVTextAttachment::initWithData(nullptr, nullptr);
    EXPECT_EQ(attachment->attachmentBoundsForLayoutManager(nullptr, room, {4, 5}, 6), CGRectZero);
    attachment->drawWithFrame(room, 6, nullptr);
    EXPECT_EQ(attachment->cursor(), nullptr);
}

TEST(QVTextAttachment, HasACellThatKnowsItAndDoesNotKeepItAlive) {
    auto attachment = QVTextAttachment::initWithData(std::vector<std::uint8_t>{1}, u"public.data");
    EXPECT_EQ(attachment->contents(), NSData(std::vector<std::uint8_t>{1}));
    EXPECT_EQ(attachment->fileType(), u"public.data");
    const auto cell = cellOf(*attachment);
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->attachment(), attachment);
    attachment.reset();
    EXPECT_EQ(cell->attachment(), nullptr);
    EXPECT_EQ(cell->cellFrameForTextContainer(nullptr, room, {4, 5}, 6), CGRectZero);
    cell->drawWithFrame(room, nullptr);
}

TEST(QVTextAttachment, OtherTextSystemsMeasureItWithoutALayoutManager) {
    const auto attachment = Noting::make();
    EXPECT_EQ(attachment->attachmentBoundsForTextContainer(nullptr, room, {4, 5}, 6),
              CGRectMake(0, -1, 8, 9));
    EXPECT_EQ(cellOf(*attachment)->cellFrameForTextContainer(nullptr, room, {4, 5}, 7),
              CGRectMake(0, -1, 8, 9));
    EXPECT_EQ(attachment->calls, (std::vector<Noting::Call>{{6, nullptr}, {7, nullptr}}));
}

TEST(QVTextAttachmentCell, DrawsItsAttachmentWithWhatIsKnown) {
    const auto attachment = Noting::make();
    const auto cell = cellOf(*attachment);
    test::StorageLayoutManager layoutManager(nullptr);
    cell->drawWithFrame(room, nullptr);
    cell->drawWithFrame(room, nullptr, 3);
    cell->drawWithFrame(room, nullptr, 4, &layoutManager);
    cell->highlight(true, room, nullptr);
    EXPECT_EQ(attachment->calls,
              (std::vector<Noting::Call>{
                  {NSNotFound, nullptr}, {3, nullptr}, {4, &layoutManager}, {NSNotFound, nullptr}}));
}

TEST(QVTextAttachmentCell, DrawsNothingForOtherAttachments) {
    QVTextAttachmentCell cell;
    const auto plain = NSTextAttachment::initWithData(nullptr, nullptr);
    cell.setAttachment(plain);
    EXPECT_EQ(cell.attachment(), plain);
    cell.drawWithFrame(room, nullptr, 4);
    EXPECT_EQ(cell.cellFrameForTextContainer(nullptr, room, {4, 5}, 6), CGRectZero);
}

TEST(QVTextAttachmentCell, HasNoSizeAndNoInterestInTheMouse) {
    QVTextAttachmentCell cell;
    EXPECT_EQ(cell.cellSize(), CGSizeZero);
    EXPECT_EQ(cell.cellBaselineOffset(), CGPointZero);
    EXPECT_FALSE(cell.wantsToTrackMouse());
    EXPECT_FALSE(cell.wantsToTrackMouseForEvent(nullptr, room, nullptr, 3));
    EXPECT_FALSE(cell.trackMouse(nullptr, room, nullptr, true));
    EXPECT_FALSE(cell.trackMouse(nullptr, room, nullptr, 3, true));
}

TEST(QVTextAttachment, IsArchivedWithItsCursor) {
    const auto attachment = QVTextAttachment::initWithData(nullptr, nullptr);
    EXPECT_EQ(test::archivedKeys(*attachment), (std::vector<std::string>{}));
    attachment->setCursor(NSCursor::IBeamCursor());
    EXPECT_EQ(test::archivedKeys(*attachment), (std::vector<std::string>{"cursor: NSCursor"}));
    const auto back = test::throughArchive(attachment);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->cursor(), NSCursor::IBeamCursor());
    ASSERT_TRUE(cellOf(*back));
    EXPECT_EQ(cellOf(*back)->attachment(), back);
}

TEST(QVTextAttachment, ACursorOfAnotherKindReadsAsNone) {
    const auto back =
        test::readForged<QVTextAttachment>([](NSCoder &coder) { coder.encodeString(u"IBeam", u"cursor"); });
    ASSERT_TRUE(back);
    EXPECT_EQ(back->cursor(), nullptr);
}
