#include "Quorvane/Text/QVTextTransform.h"
#include "Tests/Quorvane/Text/FoldingFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// "^4+4$@1": a piece with its depth; "^" and "$" where it starts and ends with its line.
std::string drawn(const QVTextTransform &transform) {
    return (transform.anchoredToStartOfLine() ? "^" : "") + test::drawn(transform.range()) +
           (transform.anchoredToEndOfLine() ? "$" : "") + "@" + std::to_string(transform.foldDepth());
}

std::string preparedIn(const QVFoldingTextStorage &view, NSRange range) {
    std::string text;
    for (const auto &transform :
         view.prepareTextTransformsInRange(range, [](QVTextTransform &, bool &) { return true; })) {
        EXPECT_EQ(transform->replacementRange(), transform->range());
        text += (text.empty() ? "" : " ") + drawn(*transform);
    }
    return text;
}

/// "one\n[two\nthree\n]four"
FoldedDocument folded() {
    FoldedDocument folded(u"one\ntwo\nthree\nfour");
    folded.view->foldRange({4, 10});
    folded.take();
    return folded;
}

} // namespace

TEST(QVFoldingTransforms, TextWithoutFoldsIsOnePiece) {
    const FoldedDocument document(u"one\ntwo\nthree");
    EXPECT_EQ(preparedIn(*document.view, {0, 13}), "^0+13$@0");
    EXPECT_EQ(preparedIn(*document.view, {4, 4}), "^4+4$@0");
    EXPECT_EQ(preparedIn(*document.view, {5, 2}), "5+2@0");
    EXPECT_EQ(preparedIn(*document.view, {4, 2}), "^4+2@0");
    EXPECT_EQ(preparedIn(*document.view, {4, 0}), "^4+0@0");
}

TEST(QVFoldingTransforms, HiddenTextIsOnePieceForEachOfItsLines) {
    const auto document = folded();
    EXPECT_EQ(preparedIn(*document.view, {0, 9}), "^0+4$@0 ^4+4$@1 ^8+6$@1 ^14+4$@0");
    EXPECT_EQ(preparedIn(*document.view, {4, 1}), "^4+4$@1 ^8+6$@1");
}

TEST(QVFoldingTransforms, PiecesOfLinesInFoldsAreNotAnchoredWhereTheyAreCut) {
    // "o[ne\nt]wo", then "o[ne\n[t]w]o"... hidden text that begins and ends inside of lines.
    FoldedDocument document(u"one\ntwo\nthree");
    document.view->foldRange({1, 9});
    EXPECT_EQ(preparedIn(*document.view, {1, 1}), "1+3$@1 ^4+4$@1 ^8+2@1");
}

TEST(QVFoldingTransforms, OnlyThoseThatTheBlockWantsAreInTheResult) {
    const auto document = folded();
    int asked = 0;
    const auto transforms = document.view->prepareTextTransformsInRange(
        {0, 9}, [&](QVTextTransform &, bool &) { return ++asked == 3; });
    EXPECT_EQ(asked, 4);
    ASSERT_EQ(transforms.size(), 1u);
    EXPECT_EQ(drawn(*transforms[0]), "^8+6$@1");
}

TEST(QVFoldingTransforms, TheStopFlagEndsTheWalkInHiddenTextAlone) {
    // Meant like that: in visible text nobody looks at it.
    const auto document = folded();
    std::string asked;
    document.view->prepareTextTransformsInRange({0, 9}, [&](QVTextTransform &transform, bool &stop) {
        asked += drawn(transform) + " ";
        stop = true;
        return true;
    });
    EXPECT_EQ(asked, "^0+4$@0 ^4+4$@1 ");
}

TEST(QVFoldingTransforms, AMissingBlockIsAsserted) {
    const AssertionRecorder assertions;
    const auto document = folded();
    EXPECT_TRUE(document.view->prepareTextTransformsInRange({0, 1}, nullptr).empty());
    EXPECT_EQ(assertions.messages().size(), 1u);
}

TEST(QVFoldingTransforms, AreAppliedToHiddenTextWithoutOpeningIt) {
    auto document = folded();
    const auto transforms =
        document.view->prepareTextTransformsInRange({0, 9}, [](QVTextTransform &transform, bool &) {
            transform.setReplacementRange({transform.range().location, 0});
            transform.setReplacementString(u"# ");
            return true;
        });
    document.view->applyTextTransforms(transforms);
    EXPECT_EQ(textOf(*document.document), "# one\n# two\n# three\n# four");
    // The first hidden line's comes before the fold, where all that is typed at its start goes.
    EXPECT_EQ(test::drawn(*document.view), "# one\n# ~# four");
    EXPECT_EQ(test::drawn(*foldAt(*document.view, 8)), "8+12");
    // In one bracket.
    EXPECT_EQ(document.take().size(), 1u);
}

TEST(QVFoldingTransforms, AnAttributedReplacementGoesBeforeAPlainOneAndNeitherChangesNothing) {
    FoldedDocument document(u"abcdef");
    std::vector<std::shared_ptr<QVTextTransform>> transforms;
    for (NSUInteger location = 0; location < 6; location += 2) {
        transforms.push_back(QVTextTransform::init());
        transforms.back()->setRange({location, 2});
        transforms.back()->setReplacementRange({location, 2});
    }
    transforms[0]->setReplacementString(u"plain");
    transforms[0]->setReplacementAttributedString(NSAttributedString::initWithString(u"X", mark(4)));
    transforms[2]->setReplacementString(u"");
    transforms.push_back(nullptr);
    document.view->applyTextTransforms(transforms);
    EXPECT_EQ(textOf(*document.document), "Xcd");
    EXPECT_EQ(document.document->attribute(NSToolTipAttributeName, 0)->integerValue(), 4);
}

TEST(QVFoldingTransforms, ReplacementRangesThatAreNoneOrOutsideThrowAndLeaveWhatWasMade) {
    const auto reasonOf = [](NSRange range, NSRange replacementRange, std::string &text) {
        FoldedDocument document(u"abcdef");
        const auto bad = QVTextTransform::init();
        bad->setRange(range);
        bad->setReplacementRange(replacementRange);
        bad->setReplacementString(u"-");
        const auto good = QVTextTransform::init();
        good->setRange({4, 2});
        good->setReplacementRange({4, 1});
        good->setReplacementString(u"+");
        NSString reason;
        try {
            document.view->applyTextTransforms({bad, good});
        } catch (const NSException &exception) {
            EXPECT_EQ(exception.name(), NSInvalidArgumentException);
            reason = exception.reason();
        }
        text = textOf(*document.document);
        // The bracket is closed.
        document.take();
        document.document->replaceCharactersInRange({0, 0}, u"x");
        EXPECT_EQ(document.heard.size(), 1u);
        return reason;
    };
    const NSString outside = u"Text transform replacement range must be a subrange of the transform's range";
    std::string text;
    EXPECT_EQ(reasonOf({1, 2}, NSNotFoundRange, text),
              u"Text transform replacement range must be a valid range");
    EXPECT_EQ(text, "abcd+f");
    EXPECT_EQ(reasonOf({1, 2}, {0, 2}, text), outside);
    EXPECT_EQ(reasonOf({1, 2}, {2, 2}, text), outside);
    EXPECT_EQ(reasonOf(NSNotFoundRange, {2, 2}, text), outside);
    EXPECT_EQ(text, "abcd+f");
    EXPECT_TRUE(reasonOf({1, 2}, {3, 0}, text).isNull());
    EXPECT_EQ(text, "abc-d+f");
}
