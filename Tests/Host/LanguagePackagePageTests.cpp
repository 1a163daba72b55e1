// The page that leads through a first package: what it builds step by step loads, and does what it shows.
#include "Host/QVMatchTreeText.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Tests/Host/FolderFixture.h"
#include "Tests/Support/Examples.h"
#include "Tests/Support/ParseFixture.h"

#include <gmock/gmock.h>

#include <cstring>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr const char *page = "WriteALanguagePackage.md";

std::string treeOf(const std::shared_ptr<QVSyntax> &syntax, const std::string &text) {
    const auto parse = parseOfText(syntax, NSString::stringWithUTF8String(text));
    std::string tree;
    parse->performReadingBlockAndWait([&] { tree = QVMatchTreeText(*parse); });
    return tree;
}

/// The syntax of the files so far.
std::shared_ptr<QVSyntax> syntaxOf(const TemporaryFolder &folder) {
    QVPackageFolder::Errors errors;
    const auto package = QVPackageFolder::initWithContentsOfURL(folder.url("Todo"), nullptr, &errors);
    EXPECT_THAT(textsOf(errors, folder), IsEmpty());
    if (!package || !package->syntaxes().contains(u"todo")) {
        ADD_FAILURE() << "no syntax";
        return nullptr;
    }
    return package->syntaxes().at(u"todo");
}

} // namespace

TEST(LanguagePackagePage, EachStepLoadsAndMakesTheTreeThatItShows) {
    const TemporaryFolder folder;
    const std::string syntaxFile = "Todo/Syntaxes/todo.xml";
    std::string language;
    std::string text;
    std::string whole;
    std::size_t trees = 0;
    for (const PageExample &example : examplesOfPage(page)) {
        SCOPED_TRACE(example.text);
        if (example.lead.starts_with("`Todo/")) {
            const std::string name = example.lead.substr(1, example.lead.find('`', 1) - 1);
            folder.write(name, example.text);
            if (name == syntaxFile)
                language = example.text;
        } else if (example.lead.find("<summary>") != std::string::npos) {
            whole = example.text;
        } else if (example.kind == "xml") {
            // Behind the scopes that are there.
            language.insert(language.rfind("    </scopes>"), example.text);
            folder.write(syntaxFile, language);
        } else if (example.kind == "text") {
            text = example.text;
        } else if (example.kind == "tree") {
            const auto syntax = syntaxOf(folder);
            ASSERT_TRUE(syntax);
            const RegisteredSyntax registered(syntax);
            EXPECT_EQ(treeOf(syntax, text), example.text);
            ++trees;
        }
    }
    EXPECT_EQ(trees, 4u);
    EXPECT_EQ(language, whole);
}

TEST(LanguagePackagePage, ThePackageInTheEndHasALanguageASymbolAndCompletions) {
    const TemporaryFolder folder;
    for (const PageExample &example : examplesOfPage(page))
        if (example.lead.starts_with("`Todo/"))
            folder.write(example.lead.substr(1, example.lead.find('`', 1) - 1), example.text);
        else if (example.lead.find("<summary>") != std::string::npos)
            folder.write("Todo/Syntaxes/todo.xml", example.text);
    QVPackageFolder::Errors errors;
    const auto package = QVPackageFolder::initWithContentsOfURL(folder.url("Todo"), nullptr, &errors);
    EXPECT_THAT(textsOf(errors, folder), IsEmpty());
    ASSERT_TRUE(package);
    EXPECT_EQ(package->name(), u"To-do lists");
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto syntax = QVSyntax::suggestedSyntaxForString(u"", u"food.todo");
    ASSERT_TRUE(syntax);
    EXPECT_EQ(syntax->name(), u"todo");
    EXPECT_EQ(syntax->singleLineCommentPrefix(), u"#");
    const auto &heading = syntax->grammar()->scopes().at(4);
    EXPECT_EQ(heading->symbolOptions()->symbolType(), QVSymbolTypeHeading);
    ASSERT_THAT(syntax->completionProviders(), SizeIs(1));
    EXPECT_THAT(keysOf(package->completionSets()), ElementsAre("todo.words"));

    // The list that the page begins with holds no text that nothing knows but its words.
    const std::string list = examplesOfPage(page).front().text;
    const auto parse = parseOfText(syntax, NSString::stringWithUTF8String(list));
    std::string unknown;
    parse->performReadingBlockAndWait([&] {
        parse->rootMatch()->enumerateSubtreeUsingBlock([&](QVMatch *match, bool &, bool &) {
            const QVScopeMatch *const scopeMatch = match->asScopeMatch();
            if (scopeMatch && scopeMatch->scope()->type() == QVScopeTypeUnknown &&
                match->parentMatch()->scope()->name() == u"list.item")
                unknown += NSString(parse->string().substr(match->range().location, match->range().length))
                               .UTF8String() +
                           " ";
        });
    });
    EXPECT_EQ(unknown, "kg apples, bread, ");

    // Words are offered in items, but neither in their strings nor in their comments.
    const auto provider = syntax->completionProviders().front();
    ASSERT_TRUE(provider->selectors().has_value());
    const auto &selectors = *provider->selectors();
    ASSERT_THAT(selectors, SizeIs(1));
    parse->performReadingBlockAndWait([&] {
        const auto isOfferedBehind = [&](const char *word) {
            const NSUInteger location = list.find(word) + std::strlen(word);
            const auto head = selectors.front();
            std::vector<QVSelectable *> path;
            for (QVMatch *match = parse->matchPrecedingLocation(location, true, nullptr); match;
                 match = match->parentMatch())
                path.push_back(match);
            const auto selected = head->evaluateWithArray(path, false);
            return std::find(selected.begin(), selected.end(), path.front()) != selected.end();
        };
        EXPECT_TRUE(isOfferedBehind("kg"));
        EXPECT_FALSE(isOfferedBehind("Golden"));
        EXPECT_FALSE(isOfferedBehind("yellow"));
    });
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
}
