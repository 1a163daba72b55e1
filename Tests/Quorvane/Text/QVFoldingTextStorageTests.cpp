#include "Tests/Quorvane/Text/FoldingFixtures.h"
#include "Tests/Support/CodingFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

constexpr NSUInteger everything = std::numeric_limits<NSUInteger>::max();

/// "ab[cd[ef]gh]ij": the outer fold stands at 2, with the inner one in it.
FoldedDocument nested() {
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({4, 2});
    folded.view->foldRange({2, 5});
    folded.take();
    return folded;
}

const char16_t *textOfPiece(const QVTextStorage &storage) { return storage.string().pieceAtIndex(0).data(); }

/// A storage that is neither of the two.
class OtherStorage final : public QVTextStorage {
public:
    using QVTextStorage::attributesAtIndex;
    using QVTextStorage::replaceCharactersInRange;
    NSUInteger length() const override { return 0; }
    QVTextReader string() const override { return {}; }
    NSAttributes attributesAtIndex(NSUInteger, NSRange *) const override { return {}; }
    void replaceCharactersInRange(NSRange, std::u16string_view) override {}
    void setAttributes(const NSAttributes &, NSRange) override {}
};

} // namespace

// MARK: - Making

TEST(QVFoldingTextStorage, AViewOfAViewStandsOnTheSameDocument) {
    const auto document = QVConcreteTextStorage::initWithString(u"abc");
    const auto view = QVFoldingTextStorage::initWithBackingStorage(document);
    const auto other = QVFoldingTextStorage::initWithBackingStorage(view);
    EXPECT_EQ(other->backingStorage(), document);
    view->foldRange({0, 2});
    EXPECT_EQ(drawn(*view), "~c");
    EXPECT_EQ(drawn(*other), "abc");
}

TEST(QVFoldingTextStorage, WithoutADocumentAViewMakesOne) {
    EXPECT_EQ(QVFoldingTextStorage::initWithBackingStorage(nullptr)->backingStorage()->length(), 0u);
    EXPECT_EQ(QVFoldingTextStorage::init()->length(), 0u);
    EXPECT_EQ(textOf(*QVFoldingTextStorage::initWithString(u"ab")->backingStorage()), "ab");
    const auto marked = QVFoldingTextStorage::initWithString(u"ab", mark(3));
    EXPECT_EQ(marked->attribute(NSToolTipAttributeName, 1)->integerValue(), 3);
    const auto copied =
        QVFoldingTextStorage::initWithAttributedString(*NSAttributedString::initWithString(u"cd", mark(4)));
    EXPECT_EQ(textOf(*copied), "cd");
    EXPECT_EQ(copied->attribute(NSToolTipAttributeName, 0)->integerValue(), 4);
}

TEST(QVFoldingTextStorage, AnyOtherStorageIsRefused) {
    try {
        QVFoldingTextStorage::initWithBackingStorage(std::make_shared<OtherStorage>());
        FAIL() << "no exception";
    } catch (const NSException &exception) {
        EXPECT_EQ(exception.name(), NSInvalidArgumentException);
        EXPECT_EQ(exception.reason(), u"Backing storage must be a concrete text storage");
    }
}

TEST(QVFoldingTextStorage, ADocumentOutlivesItsViewsAndAViewKeepsItsDocument) {
    auto document = QVConcreteTextStorage::initWithString(u"abc");
    auto view = QVFoldingTextStorage::initWithBackingStorage(document);
    auto other = QVFoldingTextStorage::initWithBackingStorage(document);
    other->foldRange({0, 2});
    other.reset();
    document->replaceCharactersInRange({0, 1}, u"xy");
    document.reset();
    EXPECT_EQ(drawn(*view), "xybc");
}

TEST(QVFoldingTextStorage, AViewShowsTheDocumentsOwnTextWhileNothingIsFolded) {
    FoldedDocument folded(u"abcdef");
    EXPECT_EQ(textOfPiece(*folded.view), textOfPiece(*folded.document));
    folded.view->foldRange({1, 3});
    EXPECT_NE(textOfPiece(*folded.view), textOfPiece(*folded.document));
    folded.view->unfoldAtPosition(1, 0);
    EXPECT_EQ(textOfPiece(*folded.view), textOfPiece(*folded.document));
    // Also when the document opens the last fold, or takes all text away.
    folded.view->foldRange({1, 3});
    folded.document->replaceCharactersInRange({0, 2}, u"x");
    EXPECT_EQ(textOfPiece(*folded.view), textOfPiece(*folded.document));
    folded.view->foldRange({1, 3});
    folded.document->clearContents();
    folded.document->replaceCharactersInRange({0, 0}, u"new");
    EXPECT_EQ(textOfPiece(*folded.view), textOfPiece(*folded.document));
}

// MARK: - Folding

TEST(QVFoldingTextStorage, FoldedTextIsOneCharacter) {
    FoldedDocument folded(u"abcdefg");
    EXPECT_EQ(folded.view->foldRange({2, 3}), (NSRange{2, 1}));
    EXPECT_EQ(drawn(*folded.view), "ab~fg");
    EXPECT_EQ(folded.view->length(), 5u);
    EXPECT_EQ(drawn(*foldAt(*folded.view, 2)), "2+3");
    EXPECT_EQ(folded.take(), (Strings{"did 3 2+1 -2"}));
    EXPECT_EQ(textOf(*folded.document), "abcdefg");
}

TEST(QVFoldingTextStorage, LessThanTwoCharactersAreNotFolded) {
    FoldedDocument folded(u"abc");
    EXPECT_EQ(folded.view->foldRange({1, 1}), (NSRange{1, 1}));
    EXPECT_EQ(folded.view->foldRange({3, 0}), (NSRange{3, 0}));
    folded.view->foldRange({0, 2});
    // A fold's character among them.
    EXPECT_EQ(folded.view->foldRange({0, 1}), (NSRange{0, 1}));
    EXPECT_EQ(drawn(*folded.view), "~c");
    EXPECT_THROW(folded.view->foldRange({1, 5}), NSException);
}

TEST(QVFoldingTextStorage, AllTextCanBeFolded) {
    FoldedDocument folded(u"abc");
    folded.view->foldRange({0, 3});
    EXPECT_EQ(drawn(*folded.view), "~");
    EXPECT_EQ(folded.view->convertRangeToBacking({0, 1}), (NSRange{0, 3}));
    folded.view->unfoldAllInRange({0, 1});
    EXPECT_EQ(drawn(*folded.view), "abc");
}

TEST(QVFoldingTextStorage, FoldsInFoldedTextBecomeSubfolds) {
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({6, 2});
    folded.view->foldRange({2, 2});
    folded.view->foldRange({1, 6});
    EXPECT_EQ(drawn(*folded.view), "a~j");
    EXPECT_EQ(drawn(*foldAt(*folded.view, 1)), "1+8(2+2 6+2)");
}

TEST(QVFoldingTextStorage, UnfoldingKeepsFoldsBelowItsDepth) {
    for (const auto &[depth, text] : std::vector<std::pair<NSUInteger, std::string>>{
             {1, "abcd~ghij"}, {0, "abcdefghij"}, {2, "abcdefghij"}, {everything, "abcdefghij"}}) {
        SCOPED_TRACE(depth);
        auto folded = nested();
        EXPECT_EQ(drawn(*folded.view), "ab~ij");
        folded.view->unfoldAtPosition(2, depth);
        EXPECT_EQ(drawn(*folded.view), text);
        EXPECT_EQ(folded.take(), (Strings{depth == 1 ? "did 3 2+5 +4" : "did 3 2+6 +5"}));
    }
}

TEST(QVFoldingTextStorage, DepthTwoKeepsTheSubfoldsOfSubfolds) {
    // "a[b[c[de]f][gh]i]j"
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({3, 2});
    folded.view->foldRange({2, 3});
    folded.view->foldRange({3, 2});
    folded.view->foldRange({1, 4});
    EXPECT_EQ(drawn(*foldAt(*folded.view, 1)), "1+8(2+4(3+2) 6+2)");
    folded.view->unfoldAtPosition(1, 2);
    // The other one had nothing in it.
    EXPECT_EQ(drawn(*folded.view), "abc~fghij");
    EXPECT_EQ(drawn(*foldAt(*folded.view, 3)), "3+2");
}

TEST(QVFoldingTextStorage, UnfoldingWhereNothingIsFoldedIsAsserted) {
    const AssertionRecorder assertions;
    FoldedDocument folded(u"abcdef");
    folded.view->foldRange({1, 2});
    for (const NSUInteger position : {NSUInteger{0}, NSUInteger{2}, NSUInteger{5}, NSUInteger{500}})
        folded.view->unfoldAtPosition(position, 0);
    EXPECT_EQ(assertions.messages(), std::vector<NSString>(4, u"There is no fold at the provided position."));
    EXPECT_EQ(drawn(*folded.view), "a~def");
}

TEST(QVFoldingTextStorage, AllFoldsOfARangeAreOpened) {
    FoldedDocument folded(u"abcdefghijkl");
    folded.view->foldRange({9, 2});
    folded.view->foldRange({5, 3});
    folded.view->foldRange({1, 2});
    EXPECT_EQ(drawn(*folded.view), "a~de~i~l");
    EXPECT_EQ(folded.view->unfoldAllInRange({1, 4}), (NSRange{1, 7}));
    EXPECT_EQ(drawn(*folded.view), "abcdefghi~l");
    EXPECT_EQ(folded.view->unfoldAllInRange({0, 9}), (NSRange{0, 9}));
    EXPECT_EQ(drawn(*folded.view), "abcdefghi~l");
}

TEST(QVFoldingTextStorage, OpeningARangeTakesADepthToo) {
    auto folded = nested();
    EXPECT_EQ(folded.view->unfoldAllInRange({0, 5}, 1), (NSRange{0, 10}));
    EXPECT_EQ(drawn(*folded.view), "abcd~ghij");
}

TEST(QVFoldingTextStorage, ARangeIsFoldedWhenOneFoldHidesAllOfIt) {
    FoldedDocument folded(u"abcdefgh");
    EXPECT_FALSE(folded.view->isRangeFolded({0, 2}));
    folded.view->foldRange({4, 3});
    folded.view->foldRange({2, 2});
    EXPECT_EQ(drawn(*folded.view), "ab~~h");
    for (const NSRange range : {NSRange{2, 2}, NSRange{3, 1}, NSRange{3, 0}, NSRange{2, 0}, NSRange{4, 0},
                                NSRange{4, 3}, NSRange{7, 0}})
        EXPECT_TRUE(folded.view->isRangeFolded(range)) << drawn(range);
    for (const NSRange range :
         {NSRange{1, 2}, NSRange{3, 2}, NSRange{1, 0}, NSRange{6, 2}, NSRange{8, 0}, NSNotFoundRange})
        EXPECT_FALSE(folded.view->isRangeFolded(range)) << drawn(range);
}

TEST(QVFoldingTextStorage, FoldedRangesAreOneEmptyRangeForEachStretchThatIsNotFolded) {
    // Meant like that: who asks counts them.
    FoldedDocument folded(u"abcdefgh");
    const auto count = [&](std::size_t number) { return std::vector<NSRange>(number, NSRange{0, 0}); };
    EXPECT_EQ(folded.view->foldedRanges(), count(1));
    folded.view->foldRange({4, 2});
    EXPECT_EQ(folded.view->foldedRanges(), count(2));
    folded.view->foldRange({2, 2});
    EXPECT_EQ(folded.view->foldedRanges(), count(2));
    folded.view->foldRange({0, 2});
    EXPECT_EQ(folded.view->foldedRanges(), count(1));
    EXPECT_EQ(QVFoldingTextStorage::init()->foldedRanges(), count(0));
}

TEST(QVFoldingTextStorage, FoldsNestDeeply) {
    FoldedDocument folded(std::u16string(2001, u'a'));
    for (int level = 0; level < 2000; ++level)
        folded.view->foldRange({0, 2});
    EXPECT_EQ(drawn(*folded.view), "~");
    folded.document->replaceCharactersInRange({1, 0}, u"xyz");
    folded.view->unfoldAtPosition(0, 1000);
    EXPECT_EQ(drawn(*folded.view), "~" + std::string(1000, 'a'));
    folded.view->unfoldAllInRange({0, 1});
    EXPECT_EQ(folded.view->length(), 2004u);
}

// Each level took a frame of the stack when an edit, an enumeration or the end came to it.
TEST(QVFoldingTextStorage, FoldsNestAsDeepAsAHostFolds) {
    constexpr NSUInteger depth = 100'000;
    FoldedDocument folded(std::u16string(depth + 1, u'a'));
    auto fold = QVTextFoldAttachment::initWithRange({0, 2}, {});
    for (NSUInteger level = 1; level < depth; ++level)
        fold = QVTextFoldAttachment::initWithRange({0, level + 2}, {fold});
    folded.view->foldRange({0, depth + 1});
    foldAt(*folded.view, 0)->setSubfolds({fold});
    fold = nullptr;
    folded.document->replaceCharactersInRange({1, 0}, u"xyz");
    NSUInteger count = 0;
    NSUInteger deepest = 0;
    folded.view->enumerateDiscreteBackingRangesInRange({0, 1}, [&](NSRange, NSUInteger at, bool &) {
        ++count;
        deepest = std::max(deepest, at);
    });
    // The innermost one and what is left behind a fold in each one around it; the outermost two are alike.
    EXPECT_EQ(count, depth);
    EXPECT_EQ(deepest, depth + 1);
    EXPECT_TRUE(throughArchive(folded.view));
    folded.view->unfoldAtPosition(0, depth / 2);
    EXPECT_EQ(folded.view->length(), depth / 2);
    folded.view->unfoldAllInRange({0, 1});
    EXPECT_EQ(folded.view->length(), depth + 4);
}

// MARK: - Archiving

TEST(QVFoldingTextStorage, ComesBackFromAnArchiveWithItsTextAndWithoutItsFolds) {
    FoldedDocument folded(u"abcdefg");
    folded.view->foldRange({1, 3});
    folded.document->setTabWidth(7);
    const auto view = throughArchive(folded.view);
    ASSERT_TRUE(view);
    EXPECT_EQ(drawn(*view), "a~efg");
    EXPECT_TRUE(foldAt(*view, 1));
    EXPECT_EQ(textOf(*view->backingStorage()), "abcdefg");
    EXPECT_EQ(view->tabWidth(), 7u);
    // The map of folds is that of a view on the document's whole text.
    EXPECT_EQ(view->foldedRanges(), (std::vector<NSRange>{{0, 0}}));
    EXPECT_EQ(view->convertPositionToBacking(3), 3u);
    const AssertionRecorder assertions;
    view->unfoldAtPosition(1, 0);
    EXPECT_EQ(assertions.messages().size(), 1u);
}

TEST(QVFoldingTextStorage, AViewWithoutFoldsComesBackAsItWas) {
    FoldedDocument folded(u"abc");
    folded.document->addAttribute(NSToolTipAttributeName, 5, {1, 1});
    const auto view = throughArchive(folded.view);
    ASSERT_TRUE(view);
    // The document's archive has no attributes, the view's has.
    EXPECT_FALSE(view->backingStorage()->attribute(NSToolTipAttributeName, 1));
    EXPECT_EQ(view->attribute(NSToolTipAttributeName, 1)->integerValue(), 5);
    view->foldRange({0, 2});
    view->unfoldAtPosition(0, 0);
    EXPECT_EQ(textOf(*view), "abc");
    view->backingStorage()->replaceCharactersInRange({1, 1}, u"xy");
    EXPECT_EQ(textOf(*view), "axyc");
}

TEST(QVFoldingTextStorage, ForgedArchivesGiveViewsThatCanBeUsed) {
    const auto empty = readForged<QVFoldingTextStorage>([](NSCoder &) {});
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->length(), 0u);
    empty->replaceCharactersInRange({0, 0}, u"ab");
    EXPECT_EQ(textOf(*empty), "ab");

    const auto document = QVConcreteTextStorage::initWithString(u"a long document");
    const auto shorter = readForged<QVFoldingTextStorage>([&](NSCoder &coder) {
        coder.encodeObject(document, u"backingStorage");
        coder.encodeInteger(3, u"contents");
    });
    ASSERT_TRUE(shorter);
    EXPECT_EQ(textOf(*shorter), "a long document");
}

TEST(QVFoldingTextStorage, AnArchivedTextShorterThanItsDocumentFollowsAsFarAsItGoes) {
    FoldedDocument folded(u"abcdefghij");
    folded.view->foldRange({1, 8});
    const auto view = throughArchive(folded.view);
    ASSERT_TRUE(view);
    EXPECT_EQ(drawn(*view), "a~j");
    const auto document = view->backingStorage();
    document->replaceCharactersInRange({8, 1}, u"x");
    document->replaceCharactersInRange({0, 1}, u"y");
    EXPECT_EQ(drawn(*view), "y~jx");
    EXPECT_EQ(textOf(*document), "ybcdefghxj");
}
