#include "Quorvane/Formatters/QVFormatter.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Selectors/QVSimpleSelector.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVFormatter> formatterOf(std::string_view components) {
    return QVFormatter::formatterWithXMLElement(
        *elementOf("<display-name>" + std::string(components) + "</display-name>"));
}

std::shared_ptr<QVFormatterComponent> componentOf(std::string_view xml) {
    const auto formatter = formatterOf(xml);
    EXPECT_EQ(formatter->components().size(), 1u);
    return formatter->components().at(0);
}

} // namespace

TEST(QVFormatter, ComponentsStandInDocumentOrderAndOtherElementsArePassedOver) {
    const auto formatter = formatterOf("text<component value='a'/><other/><component variable='name'/>"
                                       "<component selector='x.y'/>");
    ASSERT_EQ(formatter->components().size(), 3u);
    EXPECT_EQ(formatter->components()[0]->type(), QVFormatterComponentTypeLiteral);
    EXPECT_EQ(formatter->components()[0]->value(), u"a");
    EXPECT_EQ(formatter->components()[1]->type(), QVFormatterComponentTypeVariable);
    EXPECT_EQ(formatter->components()[1]->variable(), u"name");
    EXPECT_EQ(formatter->components()[2]->type(), QVFormatterComponentTypeSelector);
    EXPECT_EQ(formatter->components()[2]->selector(), QVSimpleSelector::simpleSelectorWithString(u"x.y"));
}

TEST(QVFormatter, AnEmptyElementGivesAFormatterWithoutComponents) {
    EXPECT_TRUE(formatterOf("")->components().empty());
}

TEST(QVFormatter, AComponentWithValueAndSelectorIsALiteral) {
    const auto component = componentOf("<component value='a' variable='name' selector='x'/>");
    EXPECT_EQ(component->type(), QVFormatterComponentTypeLiteral);
    EXPECT_EQ(component->value(), u"a");
    EXPECT_TRUE(component->variable().isNull());
    EXPECT_EQ(component->selector(), nullptr);
}

TEST(QVFormatter, AnEmptyValueIsPresent) {
    const auto component = componentOf("<component value='' selector='x'/>");
    EXPECT_EQ(component->type(), QVFormatterComponentTypeLiteral);
    EXPECT_EQ(component->value(), u"");
}

TEST(QVFormatter, AComponentWithVariableAndSelectorIsAVariable) {
    const auto component = componentOf("<component selector='x' variable='other'/>");
    EXPECT_EQ(component->type(), QVFormatterComponentTypeVariable);
    EXPECT_EQ(component->variable(), u"other");
    EXPECT_EQ(component->selector(), nullptr);
}

TEST(QVFormatter, AComponentWithNeitherIsALiteralWithoutText) {
    const auto component = componentOf("<component prepend='a'/>");
    EXPECT_EQ(component->type(), QVFormatterComponentTypeLiteral);
    EXPECT_TRUE(component->value().isNull());
    EXPECT_EQ(component->prependExpression(), u"a");
}

TEST(QVFormatter, ReadsWhatStandsAroundAPieceAndWhatIsRewritten) {
    const auto component =
        componentOf("<component value='v' prepend='(' append=')' replace='a+' replace-with='$0'/>");
    EXPECT_EQ(component->prependExpression(), u"(");
    EXPECT_EQ(component->appendExpression(), u")");
    ASSERT_NE(component->replaceExpression(), nullptr);
    EXPECT_EQ(component->replaceExpression()->pattern(), u"a+");
    // Lines count, and the pattern is compiled to machine code.
    EXPECT_EQ(component->replaceExpression()->options(), 80u);
    EXPECT_EQ(component->replaceWithExpression(), u"$0");
}

TEST(QVFormatter, AnEmptyPatternIsNotCompiled) {
    const LogRecorder log;
    EXPECT_EQ(componentOf("<component value='v' replace='' replace-with='x'/>")->replaceExpression(),
              nullptr);
    EXPECT_TRUE(log.messages().empty());
}

TEST(QVFormatter, ABadPatternIsLoggedOnceAndTheRestApplies) {
    const LogRecorder log;
    const auto component = componentOf("<component value='v' replace='(' replace-with='x' append='a'/>");
    EXPECT_EQ(log.messages(),
              std::vector<NSString>{u"Invalid regular expression for formatter component: ("});
    EXPECT_EQ(component->replaceExpression(), nullptr);
    EXPECT_EQ(component->value(), u"v");
    EXPECT_EQ(component->replaceWithExpression(), u"x");
    EXPECT_EQ(component->appendExpression(), u"a");
}

TEST(QVFormatter, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*formatterOf("")), std::vector<std::string>{"components: array"});
    QVFormatterComponent component;
    EXPECT_EQ(archivedKeys(component), std::vector<std::string>{"type: integer"});
    component.setValue(u"");
    component.setVariable(u"");
    component.setSelector(QVSimpleSelector::simpleSelectorWithString(u"a"));
    component.setPrependExpression(u"");
    component.setAppendExpression(u"");
    component.setReplaceExpression(QVRegularExpression::regularExpressionWithPattern(u"a", 0));
    component.setReplaceWithExpression(u"");
    EXPECT_EQ(archivedKeys(component),
              (std::vector<std::string>{"appendExpression: string", "prependExpression: string",
                                        "replaceExpression: QVRegularExpression",
                                        "replaceWithExpression: string", "selector: QVSimpleSelector",
                                        "type: integer", "value: string", "variable: string"}));
}

TEST(QVFormatter, SurvivesATripThroughAnArchive) {
    const auto copy = throughArchive(
        formatterOf("<component value='' prepend='(' append=')' replace='a+' replace-with='$0'/>"
                    "<component variable='name'/><component selector='x.y'/>"));
    ASSERT_NE(copy, nullptr);
    ASSERT_EQ(copy->components().size(), 3u);
    const auto &literal = copy->components()[0];
    EXPECT_EQ(literal->type(), QVFormatterComponentTypeLiteral);
    EXPECT_EQ(literal->value(), u"");
    EXPECT_EQ(literal->prependExpression(), u"(");
    EXPECT_EQ(literal->appendExpression(), u")");
    ASSERT_NE(literal->replaceExpression(), nullptr);
    EXPECT_EQ(literal->replaceExpression()->pattern(), u"a+");
    EXPECT_EQ(literal->replaceExpression()->options(), 80u);
    EXPECT_EQ(literal->replaceWithExpression(), u"$0");
    EXPECT_EQ(copy->components()[1]->type(), QVFormatterComponentTypeVariable);
    EXPECT_EQ(copy->components()[1]->variable(), u"name");
    EXPECT_TRUE(copy->components()[1]->value().isNull());
    EXPECT_EQ(copy->components()[2]->type(), QVFormatterComponentTypeSelector);
    EXPECT_EQ(copy->components()[2]->selector(), QVSimpleSelector::simpleSelectorWithString(u"x.y"));
}

TEST(QVFormatter, ACopyHasComponentsOfItsOwn) {
    const auto original = formatterOf("<component value='a' replace='b'/>");
    const auto copy = original->copy();
    ASSERT_EQ(copy->components().size(), 1u);
    EXPECT_NE(copy->components()[0], original->components()[0]);
    EXPECT_EQ(copy->components()[0]->value(), u"a");
    EXPECT_EQ(copy->components()[0]->replaceExpression(), original->components()[0]->replaceExpression());
}
