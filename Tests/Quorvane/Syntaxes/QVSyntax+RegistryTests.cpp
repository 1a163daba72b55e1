#include "Quorvane/Detectors/QVDetector.h"
#include "Tests/Quorvane/Syntaxes/SyntaxFixtures.h"
#include "Tests/Support/Recorders.h"

#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVSyntax> named(std::string_view name, std::string_view children = "",
                                std::string_view attributes = "") {
    return syntaxOf(children, "name='" + std::string(name) + "' " + std::string(attributes));
}

} // namespace

TEST(QVSyntaxRegistry, KeepsSyntaxesByName) {
    const auto a = named("a");
    const RegistryGuard registry({a, named("b", "", "subsyntax='true'")});
    EXPECT_EQ(QVSyntax::syntaxForName(u"a"), a);
    EXPECT_EQ(QVSyntax::syntaxForName(u"A"), nullptr);
    EXPECT_EQ(QVSyntax::allSyntaxes().size(), 2u);
    EXPECT_EQ(QVSyntax::topLevelSyntaxes().size(), 1u);
    EXPECT_EQ(QVSyntax::topLevelSyntaxes().at(u"a"), a);
}

TEST(QVSyntaxRegistry, ASecondOneTakesThePlaceAndNoneRemovesTheEntry) {
    const auto first = named("a");
    const auto second = named("a");
    QVSyntax::setSyntax(first, u"a");
    QVSyntax::setSyntax(second, u"a");
    EXPECT_EQ(QVSyntax::syntaxForName(u"a"), second);
    QVSyntax::setSyntax(nullptr, u"a");
    EXPECT_EQ(QVSyntax::syntaxForName(u"a"), nullptr);
    QVSyntax::setSyntax(nullptr, u"a");
    EXPECT_TRUE(QVSyntax::allSyntaxes().empty());
}

TEST(QVSyntaxRegistry, TheKeyNeedNotBeTheName) {
    const auto syntax = named("a");
    QVSyntax::setSyntax(syntax, u"alias");
    EXPECT_EQ(QVSyntax::syntaxForName(u"alias"), syntax);
    EXPECT_EQ(QVSyntax::syntaxForName(u"a"), nullptr);
    QVSyntax::setSyntax(nullptr, u"alias");
}

TEST(QVSyntaxRegistry, ASnapshotDoesNotChange) {
    const auto before = QVSyntax::allSyntaxes();
    const RegistryGuard registry({named("a")});
    EXPECT_TRUE(before.empty());
}

TEST(QVSyntaxRegistry, ANullNameIsAsserted) {
    const AssertionRecorder assertions;
    EXPECT_EQ(QVSyntax::syntaxForName(nullptr), nullptr);
    QVSyntax::setSyntax(nullptr, nullptr);
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{u"Invalid parameter not satisfying: name != nil",
                                     u"Invalid parameter not satisfying: name != nil"}));
}

TEST(QVSyntaxRegistry, ManyThreadsMayUseIt) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([number] {
            const NSString name = NSString::stringWithFormat(u"thread-%d", number);
            const auto syntax = std::make_shared<QVSyntax>();
            syntax->setName(name);
            for (int round = 0; round < 200; ++round) {
                QVSyntax::setSyntax(syntax, name);
                EXPECT_EQ(QVSyntax::syntaxForName(name), syntax);
                QVSyntax::allSyntaxes();
                QVSyntax::suggestedSyntaxForString(u"x", u"x.y");
                QVSyntax::setSyntax(nullptr, name);
            }
        });
    for (auto &thread : threads)
        thread.join();
    EXPECT_TRUE(QVSyntax::allSyntaxes().empty());
}

// Confidence

TEST(QVSyntaxDetection, WithoutDetectorsNothingFits) {
    EXPECT_EQ(named("a")->confidenceForString(u"x", u"x.a"), 0.0f);
}

TEST(QVSyntaxDetection, TheBestAnswerWeighedByPriorityCounts) {
    const auto syntax = named("a", "<detectors><extension priority='0.5'>a</extension>"
                                   "<match-content priority='0.75'>mark</match-content>"
                                   "<filename priority='0.25'>x.a</filename></detectors>");
    EXPECT_EQ(syntax->confidenceForString(u"", u"y.a"), 0.5f);
    EXPECT_EQ(syntax->confidenceForString(u"mark", u"x.a"), 0.75f);
    EXPECT_EQ(syntax->confidenceForString(u"", u"x.b.a"), 0.25f);
    EXPECT_EQ(syntax->confidenceForString(u"", u"y.b"), 0.0f);
    // A half for the extension's last part, weighed by a half.
    EXPECT_EQ(syntax->confidenceForString(nullptr, u"z.b.a"), 0.25f);
}

TEST(QVSyntaxDetection, PrioritiesInsideOfACombinationDoNotCount) {
    const auto syntax = named("a", "<detectors><combo priority='0.5'><extension priority='0.1'>a</extension>"
                                   "</combo></detectors>");
    EXPECT_EQ(syntax->confidenceForString(nullptr, u"x.a"), 0.5f);
}

TEST(QVSyntaxDetection, TheSyntaxThatFitsBestIsSuggested) {
    const auto weak = named("weak", "<detectors><extension priority='0.5'>a</extension></detectors>");
    const auto strong = named("strong", "<detectors><extension priority='0.75'>a</extension></detectors>");
    const auto other = named("other", "<detectors><extension priority='1'>b</extension></detectors>");
    const RegistryGuard registry({weak, strong, other});
    EXPECT_EQ(QVSyntax::suggestedSyntaxForString(nullptr, u"x.a"), strong);
    EXPECT_EQ(QVSyntax::suggestedSyntaxForString(nullptr, u"x.b"), other);
    EXPECT_EQ(QVSyntax::suggestedSyntaxForString(nullptr, u"x.c"), nullptr);
    EXPECT_EQ(QVSyntax::suggestedSyntaxForString(nullptr, nullptr), nullptr);
}

TEST(QVSyntaxDetection, SyntaxesForEmbeddingAreNotSuggested) {
    const std::string_view detectors = "<detectors><extension priority='1'>a</extension></detectors>";
    const RegistryGuard registry({named("embedded", detectors, "subsyntax='true'")});
    EXPECT_EQ(QVSyntax::suggestedSyntaxForString(nullptr, u"x.a"), nullptr);
}

TEST(QVSyntaxDetection, APriorityOfZeroNeverWins) {
    const RegistryGuard registry(
        {named("a", "<detectors><extension priority='0'>a</extension></detectors>")});
    EXPECT_EQ(QVSyntax::suggestedSyntaxForString(nullptr, u"x.a"), nullptr);
}

TEST(QVSyntaxDetection, OfTwoThatFitEquallyWellOneIsSuggested) {
    const std::string_view detectors = "<detectors><extension>a</extension></detectors>";
    const auto first = named("first", detectors);
    const auto second = named("second", detectors);
    const RegistryGuard registry({first, second});
    const auto suggested = QVSyntax::suggestedSyntaxForString(nullptr, u"x.a");
    EXPECT_TRUE(suggested == first || suggested == second);
}

// Descent

TEST(QVSyntaxDescent, ASyntaxDescendsFromItselfAndItsRegisteredParents) {
    const auto child = named("child", "<meta><parent>middle</parent></meta>");
    const RegistryGuard registry({named("root"), named("middle", "<meta><parent>root</parent></meta>")});
    EXPECT_TRUE(child->isDescendantOfSyntaxName(u"child"));
    EXPECT_TRUE(child->isDescendantOfSyntaxName(u"middle"));
    EXPECT_TRUE(child->isDescendantOfSyntaxName(u"root"));
    EXPECT_FALSE(child->isDescendantOfSyntaxName(u"other"));
    EXPECT_FALSE(child->isDescendantOfSyntaxName(nullptr));
}

TEST(QVSyntaxDescent, AParentThatIsNotRegisteredDoesNotCount) {
    const auto child = named("child", "<meta><parent>missing</parent></meta>");
    EXPECT_FALSE(child->isDescendantOfSyntaxName(u"missing"));
}

TEST(QVSyntaxDescent, ALoopOfParentsEnds) {
    const auto a = named("a", "<meta><parent>b</parent></meta>");
    const RegistryGuard registry({a, named("b", "<meta><parent>a</parent></meta>")});
    EXPECT_TRUE(a->isDescendantOfSyntaxName(u"b"));
    EXPECT_FALSE(a->isDescendantOfSyntaxName(u"c"));
}

// Words

TEST(QVSyntaxType, WordsAndNumbers) {
    const Texts words{u"unknown", u"markup", u"stylesheet", u"script", u"compiled", u"structured"};
    for (NSUInteger number = 0; number < words.size(); ++number) {
        EXPECT_EQ(QVSyntaxTypeFromString(words[number]), number);
        EXPECT_EQ(QVSyntaxTypeToString(number), words[number]);
    }
    EXPECT_EQ(QVSyntaxTypeFromString(u"Script"), QVSyntaxTypeUnknown);
    EXPECT_EQ(QVSyntaxTypeFromString(nullptr), QVSyntaxTypeUnknown);
    EXPECT_EQ(QVSyntaxTypeToString(6), u"unknown");
    EXPECT_EQ(QVSyntaxTypeToString(NSNotFound), u"unknown");
}

TEST(QVSyntaxType, PlainTextHasAName) { EXPECT_EQ(NSString(QVSyntaxIdentifierPlainText), u"plain-text"); }
