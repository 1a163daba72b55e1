#include "Quorvane/Matches/QVCaptureMatch.h"

#include "Quorvane/RegularExpressions/QVRegularExpressionMatchContext.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Quorvane/Symbols/QVLexicalClass.h"
#include "Tests/Quorvane/Matches/MatchFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

class CaptureMatches : public testing::Test {
protected:
    std::unique_ptr<QVCaptureMatchArray> make(const QVScope::Captures &captures, NSUInteger offset = 0) {
        std::unique_ptr<QVCaptureMatchArray> result;
        const NSString text = u"ab";
        expression->enumerateMatchesInCharacters(
            text.view().data(), 2, 0, {0, 2}, &context, [&](QVPCRE2MatchData *data, NSUInteger, bool &) {
                result = QVCaptureMatch::captureMatchesWithCaptures(captures, *expression, data, offset, text,
                                                                    {0, 2}, parent.get());
            });
        return result;
    }

    const std::shared_ptr<QVRegularExpression> expression =
        QVRegularExpression::regularExpressionWithPattern(u"(a)(x)?(b)", 0);
    const std::shared_ptr<QVScope> scope = scopeOfType(QVScopeTypeMatch);
    const QVScopeMatchReference parent = QVScopeMatch::initWithScope(scope.get());
    QVRegularExpressionMatchContext context;
};

} // namespace

TEST_F(CaptureMatches, StandInTheOrderOfTheCapturesNotOfTheGroups) {
    const QVScope::Captures captures{captureOfGroup(3, u"third"), captureOfGroup(0, u"whole"),
                                     captureOfGroup(1, u"first")};
    const auto matches = make(captures, 10);
    ASSERT_NE(matches, nullptr);
    ASSERT_EQ(matches->size(), 3u);
    EXPECT_EQ((*matches)[0]->capture(), captures[0].get());
    EXPECT_EQ((*matches)[0]->range(), (NSRange{11, 1}));
    EXPECT_EQ((*matches)[1]->range(), (NSRange{10, 2}));
    EXPECT_EQ((*matches)[2]->range(), (NSRange{10, 1}));
}

TEST_F(CaptureMatches, AreLinkedToEachOtherAndToTheirParent) {
    const auto matches = make({captureOfGroup(1), captureOfGroup(2), captureOfGroup(3)});
    ASSERT_EQ(matches->size(), 2u);
    QVCaptureMatch *const first = (*matches)[0].get();
    QVCaptureMatch *const second = (*matches)[1].get();
    EXPECT_EQ(first->parentMatch(), parent.get());
    EXPECT_EQ(second->parentMatch(), parent.get());
    EXPECT_EQ(first->previousSibling(), nullptr);
    EXPECT_EQ(first->nextSibling(), second);
    EXPECT_EQ(second->previousSibling(), first);
    EXPECT_EQ(second->nextSibling(), nullptr);
}

TEST_F(CaptureMatches, GroupsThatDoNotExistOrTookNoPartMakeNone) {
    // Group 5 of an expression with three groups is no error.
    EXPECT_EQ(make({captureOfGroup(5), captureOfGroup(2)}), nullptr);
    const auto matches = make({captureOfGroup(5), captureOfGroup(3)});
    ASSERT_EQ(matches->size(), 1u);
    EXPECT_EQ(matches->front()->previousSibling(), nullptr);
    EXPECT_EQ(make({}), nullptr);
}

TEST(QVCaptureMatch, AnswersForItsCapture) {
    const auto capture = captureOfGroup(1, u"string.quoted");
    const auto match = QVCaptureMatch::initWithCapture(capture.get());
    EXPECT_EQ(match->capture(), capture.get());
    EXPECT_EQ(match->matchedOn(), capture.get());
    EXPECT_EQ(match->selector(), QVSimpleSelector::simpleSelectorWithString(u"string.quoted").get());
    EXPECT_EQ(match->lexicalClass(), QVLexicalClassString.string());
    EXPECT_FALSE(match->isScopeMatch());
    EXPECT_EQ(match->asScopeMatch(), nullptr);
}

TEST(QVCaptureMatch, IsNeverAContainer) {
    const auto capture = captureOfGroup(1);
    const auto match = QVCaptureMatch::initWithCapture(capture.get());
    match->setRange({2, 3});
    EXPECT_EQ(match->endRange(), NSNotFoundRange);
    EXPECT_EQ(match->fullRange(), (NSRange{2, 3}));
    EXPECT_EQ(match->firstChild(), nullptr);
    EXPECT_EQ(match->lastChild(), nullptr);
    EXPECT_EQ(match->captureMatches(), nullptr);
    EXPECT_EQ(match->endCaptureMatches(), nullptr);
    EXPECT_FALSE(match->isStart());
    EXPECT_FALSE(match->isEnd());
    EXPECT_EQ(match->deepestFirstChild(), match.get());
}
