// Where a reparse may stop, and what it leaves of the old tree.

#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Quorvane/Parsers/ReparseFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;

/// The region ended where line four begins, two lines behind "b". What stood in front of that place was
/// parsed again, the place itself not, so its end there proves nothing.
TEST_F(Reparse, AnEmptyEndRightBehindTheStretchIsLookedForAgain) {
    start(region("r", "\\(", "(?&lt;=b\\nc\\n)") + words, u"(\na\nb\nc\nd\ne\n");
    ASSERT_EQ(child(0)->endRange(), (NSRange{8, 0}));
    EXPECT_EQ(edit({4, 1}, u"x"), (NSRange{2, 10}));
    EXPECT_EQ(child(0)->endRange(), (NSRange{12, 0}));
    EXPECT_EQ(tree(), freshTree());
}

/// "[" opens a region in a sequence whose next lines are shorter than what came in. While it is open the
/// sequence ends where the text was parsed to, at the last line's "]" too.
TEST_F(Reparse, ASequenceAroundARegionThatWasOpenedEndsNoEarlierThanThatRegion) {
    start(sequence(single("a", "a", repeating) + region("i", "\\[", "\\]")), u"(\na\na\na\n]");
    ASSERT_EQ(child(0)->endRange(), (NSRange{8, 0}));
    edit({4, 0}, u"[long long\n");
    EXPECT_EQ(child(0)->endRange(), (NSRange{20, 0}));
    EXPECT_EQ(tree(), freshTree());
}

/// "}" closes the block two lines early. The comment behind it reaches over the stretch, so what is parsed
/// next goes on to the comment's end at once; there both trees are in the root, and it stops.
TEST_F(Reparse, OldMatchesBehindAnEarlyEndCountForHowFarToGo) {
    start(region("block", "\\{", "\\}", holding(comment + words)) + comment + words,
          u"{\na\nb\nc /* d\ne\n*/ }\nf\ng\nh\n");
    EXPECT_EQ(edit({4, 0}, u"}"), (NSRange{2, 19}));
    EXPECT_EQ(tree(), freshTree());
}

/// The inner region closes early, and all of the rest of the outer one is new. Behind that comes the outer
/// region itself, which began before the text that was parsed again.
TEST_F(Reparse, ARegionAroundThatBeganEarlierStays) {
    start(region("outer", "\\{", "\\}", holding(region("inner", "\\(", "\\)") + words)) + words,
          u"q\n{(\na\nb\nc)}\nd\n");
    const QVScopeMatch *const outer = child(2);
    ASSERT_EQ(outer->endRange(), (NSRange{11, 1}));
    edit({8, 0}, u")");
    EXPECT_EQ(child(2), outer);
    EXPECT_EQ(tree(), freshTree());
}

// Trees that are broken: told, and thrown away for that of the whole text

TEST_F(Reparse, AnOldMatchThatEndsBehindTheTextIsTold) {
    start(comment + words, u"a\n/*b*/\nc\nd\n");
    child(2)->setEndRange({1000, 2});
    const AssertionRecorder assertions;
    EXPECT_EQ(edit({4, 1}, u"x"), (NSRange{0, 12}));
    EXPECT_THAT(assertions.messages(), testing::Contains(u"Extended parse range is invalid"));
    EXPECT_FALSE(parse->isParsing());
    EXPECT_EQ(tree(), freshTree());
}

TEST_F(Reparse, AMatchThatItsParentDoesNotKnowIsTold) {
    start(comment + words, u"a\nb\nc\n/**/\n");
    // The edit of "c" begins with the line of "b", so behind the first line's end.
    child(1)->setParentMatch(child(6));
    const AssertionRecorder assertions;
    EXPECT_EQ(edit({4, 1}, u"x"), (NSRange{0, 11}));
    EXPECT_THAT(assertions.messages(), testing::Contains(u"Invalid insertion index"));
    EXPECT_EQ(tree(), freshTree());
}

/// "b" matches only above "cc", so nothing is found in the stretch, and how far the sequence goes is told by
/// the line's end in front.
TEST_F(Reparse, ASequenceThatGoesOnBehindTheTextIsTold) {
    start(sequence(single("a", "a") + single("b", "b(?=\\ncc)") + single("c", "cc")) + words,
          u"(a\nb\ncc\nd\n");
    QVScopeMatch *const lineEnd = child(0)->submatches()[1];
    ASSERT_EQ(lineEnd->range(), (NSRange{2, 1}));
    lineEnd->setRange({2, 1000});
    const AssertionRecorder assertions;
    EXPECT_EQ(edit({5, 1}, u"x"), (NSRange{0, 10}));
    EXPECT_THAT(assertions.messages(),
                testing::Contains(u"Successful parse range is invalid: {3, 999} for string length 10"));
    EXPECT_EQ(tree(), freshTree());
}
