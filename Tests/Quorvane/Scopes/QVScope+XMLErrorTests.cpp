#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

// Columns are where an element's start tag ends: that is where the XML library stands when it reports it.

namespace {

struct Outcome {
    std::shared_ptr<QVScope> scope;
    std::shared_ptr<NSError> error;
    NSString message;
};

/// Reads the element in the second line of a file, so that lines are told from columns.
Outcome read(std::string_view xml) {
    Outcome outcome;
    const auto root = elementOf("<root>\n" + std::string(xml) + "</root>");
    for (const auto &child : root->children())
        if (const auto element = std::dynamic_pointer_cast<QVXMLElement>(child))
            outcome.scope = QVScope::scopeWithXMLElement(*element, nullptr, &outcome.error);
    if (outcome.error) {
        outcome.message = outcome.error->localizedDescription();
        EXPECT_EQ(outcome.error->domain(), NSString(QVQuorvaneErrorDomain));
        EXPECT_EQ(outcome.error->code(), 1);
    }
    return outcome;
}

/// A file's text that has no scope, and why.
NSString failure(std::string_view xml) {
    const Outcome outcome = read(xml);
    EXPECT_EQ(outcome.scope, nullptr);
    return outcome.message;
}

void expectCompileError(const std::shared_ptr<NSError> &error) {
    ASSERT_NE(error->underlyingError(), nullptr);
    EXPECT_EQ(error->underlyingError()->domain(), NSString(QVQuorvaneErrorDomain));
    EXPECT_EQ(error->underlyingError()->code(), 1001);
}

} // namespace

TEST(QVScopeXMLErrors, AnUnknownElement) {
    EXPECT_EQ(failure("<region/>"), u"Unknown scope type: region {2, 8}");
}

TEST(QVScopeXMLErrors, AMissingStartPattern) {
    EXPECT_EQ(failure("<scope name='a.b'>\n <starts-with/><ends-with/></scope>"),
              u"Missing start expression pattern for scope a.b, {3, 14}");
    EXPECT_EQ(failure("<scope>\n <starts-with><template>x</template></starts-with><ends-with/></scope>"),
              u"Missing start expression pattern for scope unknown, {3, 14}");
}

TEST(QVScopeXMLErrors, StringsWithoutWordsAtAStart) {
    EXPECT_EQ(failure("<scope name='a'>\n <starts-with><strings><string/></strings></starts-with>"
                      "<ends-with/></scope>"),
              u"Invalid strings for expression in scope a, {3, 14}");
}

TEST(QVScopeXMLErrors, StringsWithoutWordsInASingleMatch) {
    const Outcome outcome = read("<scope name='a'>\n <strings/></scope>");
    EXPECT_EQ(outcome.scope, nullptr);
    EXPECT_EQ(outcome.message, u"Invalid strings for expression in scope a, {2, 16}");
    EXPECT_EQ(outcome.error->underlyingError(), nullptr);
}

TEST(QVScopeXMLErrors, StringsWithoutWordsAtAnEndFailTheScope) {
    EXPECT_EQ(failure("<scope name='a'><starts-with><expression>x</expression></starts-with>\n"
                      "<ends-with><strings><string></string></strings></ends-with></scope>"),
              u"Invalid strings for end expression in scope a, {3, 11}");
}

TEST(QVScopeXMLErrors, ABadStartPatternFailsTheScope) {
    const Outcome outcome = read("<scope name='a'>\n <starts-with>\n<expression>(</expression></starts-with>"
                                 "<ends-with/></scope>");
    EXPECT_EQ(outcome.scope, nullptr);
    EXPECT_EQ(outcome.message, u"Invalid regular expression for scope a, {3, 14}");
    expectCompileError(outcome.error);
}

TEST(QVScopeXMLErrors, ABadPatternOfASingleMatchIsReportedBesideTheScope) {
    const Outcome outcome = read("<scope name='a' optional='true' lookup='index'><expression>(</expression>"
                                 "<capture number='none'/><symbol type='class'/></scope>");
    // Meant so: a single match has no end to take the place from.
    EXPECT_EQ(outcome.message, u"Invalid regular expression for scope a, {0, 0}");
    expectCompileError(outcome.error);
    ASSERT_NE(outcome.scope, nullptr);
    EXPECT_EQ(outcome.scope->type(), QVScopeTypeMatch);
    EXPECT_EQ(outcome.scope->name(), u"a");
    EXPECT_EQ(outcome.scope->regularExpression(), nullptr);
    EXPECT_TRUE(outcome.scope->captures().empty());
    EXPECT_TRUE(outcome.scope->isOptional());
    EXPECT_EQ(outcome.scope->symbolLookupBehavior(), 2u);
    EXPECT_NE(outcome.scope->symbolOptions(), nullptr);
}

TEST(QVScopeXMLErrors, ASingleMatchWithAnEndTakesThePlaceFromIt) {
    EXPECT_EQ(read("<scope name='a'>\n<ends-with/><expression>(</expression></scope>").message,
              u"Invalid regular expression for scope a, {3, 11}");
}

TEST(QVScopeXMLErrors, ABadEndPatternIsReportedBesideTheScope) {
    const Outcome outcome =
        read("<scope name='a'><starts-with><expression>x</expression></starts-with>\n"
             "<ends-with><expression>(</expression><capture number='none'/></ends-with></scope>");
    EXPECT_EQ(outcome.message, u"Invalid end regular expression for scope a, {3, 11}");
    expectCompileError(outcome.error);
    ASSERT_NE(outcome.scope, nullptr);
    EXPECT_EQ(outcome.scope->type(), QVScopeTypeStartEnd);
    EXPECT_EQ(outcome.scope->endRegularExpression(), nullptr);
    EXPECT_TRUE(outcome.scope->endCaptures().empty());
}

TEST(QVScopeXMLErrors, AMissingPatternOfASingleMatch) {
    EXPECT_EQ(failure("<scope name='a'/>"), u"Missing expression for scope a, {2, 16}");
    EXPECT_EQ(failure("<scope>\n<starts-with><expression>a</expression></starts-with></scope>"),
              u"Missing expression for scope unknown, {2, 7}");
}

TEST(QVScopeXMLErrors, ABadCutoffPatternIsReportedBesideTheScope) {
    const Outcome outcome = read("<cut-off name='a'><expression>(</expression>"
                                 "<capture number='40' name='x'/></cut-off>");
    EXPECT_EQ(outcome.message, u"Invalid regular expression for cut-off scope, {2, 18}");
    expectCompileError(outcome.error);
    ASSERT_NE(outcome.scope, nullptr);
    EXPECT_EQ(outcome.scope->type(), QVScopeTypeCutoff);
    EXPECT_EQ(outcome.scope->regularExpression(), nullptr);
    EXPECT_TRUE(outcome.scope->isOptional());
    // Read without an expression to count the groups of.
    ASSERT_EQ(outcome.scope->captures().size(), 1u);
    EXPECT_EQ(outcome.scope->captures()[0]->number(), 40u);
}

TEST(QVScopeXMLErrors, ACaptureNeedsANumber) {
    const auto message = [](std::string_view capture) {
        return failure("<scope><expression>(a)</expression>\n" + std::string(capture) + "</scope>");
    };
    EXPECT_EQ(message("<capture name='x'/>"), u"Invalid capture number: (null) {3, 18}");
    EXPECT_EQ(message("<capture number=''/>"), u"Invalid capture number:  {3, 19}");
    EXPECT_EQ(message("<capture number='one'/>"), u"Invalid capture number: one {3, 22}");
    EXPECT_EQ(message("<capture number='1x'/>"), u"Invalid capture number: 1x {3, 21}");
    EXPECT_EQ(message("<capture number='1.5'/>"), u"Invalid capture number: 1.5 {3, 22}");
    EXPECT_EQ(message("<capture number='-'/>"), u"Invalid capture number: - {3, 20}");
}

TEST(QVScopeXMLErrors, ACaptureMustNotExceedTheGroups) {
    const auto element = elementOf("<scope>\n<capture number='2' name='x.y'/></scope>");
    const auto expression = QVRegularExpression::regularExpressionWithPattern(u"(a)", 0);
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVScope::capturesForElements(element->elementsForName(u"capture"), expression, &error),
              std::nullopt);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(
        error->localizedDescription(),
        NSString::stringWithFormat(u"Capture number is greater than the number of captures in the regex: "
                                   u"2, x.y, %@, {2, 31}",
                                   expression));
    EXPECT_TRUE(error->localizedDescription().containsString(u"pattern=(a)"));
}

TEST(QVScopeXMLErrors, ANegativeCaptureExceedsTheGroups) {
    EXPECT_TRUE(failure("<scope><expression>(a)</expression><capture number='-1'/></scope>")
                    .hasPrefix(u"Capture number is greater than the number of captures in the regex: -1, "
                               u"unknown, "));
}

TEST(QVScopeXMLErrors, TwoCapturesMustNotShareANumber) {
    const auto element =
        elementOf("<scope><capture number='1' name='x'/>\n<capture number='1' name='y'/></scope>");
    const auto expression = QVRegularExpression::regularExpressionWithPattern(u"(a)", 0);
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVScope::capturesForElements(element->elementsForName(u"capture"), expression, &error),
              std::nullopt);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->localizedDescription(),
              NSString::stringWithFormat(u"Capture number is the same as another capture number: 1, y, %@, "
                                         u"{2, 29}",
                                         expression));
    EXPECT_TRUE(
        failure("<scope><expression>(a)</expression><capture number='1'/><capture number='1'/></scope>")
            .hasPrefix(u"Capture number is the same as another capture number: 1, unknown, "));
}

TEST(QVScopeXMLErrors, WithoutAnExpressionOnlyRepeatedNumbersFail) {
    const auto element =
        elementOf("<x><capture number='7'/><capture number='8'/>\n<capture number='7'/></x>");
    const auto captures = element->elementsForName(u"capture");
    EXPECT_EQ(QVScope::capturesForElements({captures[0], captures[1]}, nullptr)->size(), 2u);
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVScope::capturesForElements(captures, nullptr, &error), std::nullopt);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->localizedDescription(),
              u"Capture number is the same as another capture number: 7, unknown, (null), {2, 20}");
}

TEST(QVScopeXMLErrors, WithoutElementsThereAreNoCaptures) {
    const auto captures = QVScope::capturesForElements({}, nullptr);
    ASSERT_TRUE(captures.has_value());
    EXPECT_TRUE(captures->empty());
}

TEST(QVScopeXMLErrors, ABadEndCaptureFailsTheScope) {
    EXPECT_EQ(failure("<scope><starts-with><expression>a</expression></starts-with><ends-with><template>b"
                      "</template>\n<capture number='x'/></ends-with></scope>"),
              u"Invalid capture number: x {3, 20}");
}

TEST(QVScopeXMLErrors, AFailedChildFailsItsParent) {
    const std::string start =
        "<scope name='a'><starts-with><expression>x</expression></starts-with><ends-with/>";
    EXPECT_EQ(failure(start + "<subscopes>\n<scope name='b'/></subscopes></scope>"),
              u"Missing expression for scope b, {3, 16}");
    EXPECT_EQ(failure(start + "<subsyntax><cut-off><expression>a</expression>\n<capture number=''/></cut-off>"
                              "</subsyntax></scope>"),
              u"Invalid capture number:  {3, 19}");
}

TEST(QVScopeXMLErrors, ACutoffWithoutAnExpressionFailsItsParentWithoutAnError) {
    const std::string start =
        "<scope name='a'><starts-with><expression>x</expression></starts-with><ends-with/>";
    EXPECT_TRUE(failure(start + "<subscopes><cut-off/></subscopes></scope>").isNull());
    EXPECT_TRUE(failure(start + "<subsyntax><cut-off/></subsyntax></scope>").isNull());
}

TEST(QVScopeXMLErrors, OfSeveralErrorsTheFirstOneMetIsTold) {
    // The child is made in spite of its pattern; the one behind it fails.
    EXPECT_EQ(
        failure("<scope><starts-with><expression>x</expression></starts-with><ends-with/><subscopes>"
                "<scope name='b'><expression>(</expression></scope><scope name='c'/></subscopes></scope>"),
        u"Invalid regular expression for scope b, {0, 0}");
    // The end's pattern is met before the end's captures and before the children.
    EXPECT_EQ(
        failure("<scope name='a'><starts-with><expression>x</expression></starts-with>\n"
                "<ends-with><expression>(</expression></ends-with><subscopes><scope/></subscopes></scope>"),
        u"Invalid end regular expression for scope a, {3, 11}");
    // The start's captures are read after the end's pattern is compiled.
    EXPECT_EQ(failure("<scope name='a'><starts-with><expression>x</expression><capture/></starts-with>\n"
                      "<ends-with><expression>(</expression></ends-with></scope>"),
              u"Invalid end regular expression for scope a, {3, 11}");
}

TEST(QVScopeXMLErrors, NobodyNeedsToAskForTheError) {
    EXPECT_EQ(QVScope::scopeWithXMLElement(*elementOf("<region/>"), nullptr), nullptr);
    EXPECT_EQ(QVCapture::captureWithXMLElement(*elementOf("<capture/>")), nullptr);
}

TEST(QVCaptureXML, ReadsNumberAndName) {
    const auto capture =
        QVCapture::captureWithXMLElement(*elementOf("<capture number=' 3 ' name='string.x'/>"));
    ASSERT_NE(capture, nullptr);
    EXPECT_EQ(capture->number(), 3u);
    EXPECT_EQ(capture->name(), u"string.x");
    EXPECT_EQ(capture->lexicalClass(), u"string");
    EXPECT_EQ(QVCapture::captureWithXMLElement(*elementOf("<capture number='1' name=''/>"))->name(),
              u"unknown");
}
