#include "Quorvane/Completions/QVSymbolCompletion.h"

#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVSymbolCompletion> completionOf(std::string_view xml) {
    return QVSymbolCompletion::completionWithXMLElement(*elementOf(xml));
}

using Types = std::set<NSUInteger>;

} // namespace

TEST(QVSymbolCompletion, TypesAreAListOfWordsOfWhichUnknownOnesAreDropped) {
    EXPECT_EQ(completionOf("<symbols type='class, function\t,magic,Struct,,variable'/>")->symbolTypes(),
              (Types{2, 10, 20}));
}

TEST(QVSymbolCompletion, AListWithoutKnownWordsIsEmptyAndAMissingOneIsNone) {
    EXPECT_EQ(completionOf("<symbols type='magic'/>")->symbolTypes(), Types());
    EXPECT_EQ(completionOf("<symbols type=''/>")->symbolTypes(), Types());
    EXPECT_EQ(completionOf("<symbols/>")->symbolTypes(), std::nullopt);
}

TEST(QVSymbolCompletion, AnEmptySyntaxNameCountsAsMissing) {
    EXPECT_EQ(completionOf("<symbols syntax='c'/>")->syntaxName(), u"c");
    EXPECT_TRUE(completionOf("<symbols syntax=''/>")->syntaxName().isNull());
}

TEST(QVSymbolCompletion, ReadsItsBehaviorsInOrder) {
    const auto completion =
        completionOf("<symbols><behavior symbol='class'/><other/><behavior symbol='method'/></symbols>");
    ASSERT_EQ(completion->behaviors().size(), 2u);
    EXPECT_EQ(completion->behaviors()[0]->symbolType(), 2u);
    EXPECT_EQ(completion->behaviors()[1]->symbolType(), 11u);
}

TEST(QVSymbolCompletion, ArchivesItsFieldsUnderTheirNames) {
    EXPECT_EQ(archivedKeys(*completionOf("<symbols type='class' syntax='c'/>")),
              (std::vector<std::string>{"behaviors: array", "symbolSyntaxName: string",
                                        "symbolTypes: number set"}));
    // No set stands for all types and must not come back as an empty one.
    EXPECT_EQ(archivedKeys(*completionOf("<symbols/>")), std::vector<std::string>{"behaviors: array"});
}

TEST(QVSymbolCompletion, SurvivesATripThroughAnArchive) {
    const auto copy = throughArchive(
        completionOf("<symbols type='class,method' syntax='c'><behavior symbol='class'/></symbols>"));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->symbolTypes(), (Types{2, 11}));
    EXPECT_EQ(copy->syntaxName(), u"c");
    ASSERT_EQ(copy->behaviors().size(), 1u);
    EXPECT_EQ(copy->behaviors()[0]->symbolType(), 2u);
    EXPECT_EQ(throughArchive(completionOf("<symbols/>"))->symbolTypes(), std::nullopt);
    EXPECT_EQ(throughArchive(completionOf("<symbols type=''/>"))->symbolTypes(), Types());
}

TEST(QVSymbolCompletion, ACopyHasBehaviorsOfItsOwn) {
    const auto original =
        completionOf("<symbols type='class' syntax='c'><behavior symbol='class'/></symbols>");
    const auto copy = original->copy();
    EXPECT_EQ(copy->symbolTypes(), Types{2});
    EXPECT_EQ(copy->syntaxName(), u"c");
    ASSERT_EQ(copy->behaviors().size(), 1u);
    EXPECT_NE(copy->behaviors()[0], original->behaviors()[0]);
    EXPECT_EQ(copy->behaviors()[0]->symbolType(), 2u);
}
