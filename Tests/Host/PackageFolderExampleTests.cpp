// The page for authors of packages shows a whole package, and what it shows works.
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Host/FolderFixture.h"
#include "Tests/Support/Corpus.h"
#include "Tests/Support/ParseFixture.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// The page's files: a line that ends in "`Greetings/…`:" and the block behind it.
std::map<std::string, std::string> filesOfPage() {
    const std::string page = contentsOfFile(QUORVANE_SOURCE_DIR "/Documentation/PackageFolder.md");
    std::map<std::string, std::string> files;
    constexpr std::string_view before = "`Greetings/";
    constexpr std::string_view behind = "`:\n\n```";
    for (std::size_t at = 0; (at = page.find(before, at)) != std::string::npos; ++at) {
        const std::size_t end = page.find('`', at + 1);
        if (page.compare(end, behind.size(), behind) != 0)
            continue;
        const std::size_t start = page.find('\n', end + behind.size()) + 1;
        files[page.substr(at + 1, end - at - 1)] = page.substr(start, page.find("```", start) - start);
    }
    return files;
}

} // namespace

TEST(PackageFolderPage, ItsExampleIsAWholePackage) {
    const TemporaryFolder folder;
    const auto files = filesOfPage();
    ASSERT_THAT(files, SizeIs(4));
    for (const auto &[name, contents] : files)
        folder.write(name, contents);
    QVPackageFolder::Errors errors;
    const auto package = QVPackageFolder::initWithContentsOfURL(folder.url("Greetings"), nullptr, &errors);
    EXPECT_THAT(textsOf(errors, folder), IsEmpty());
    ASSERT_TRUE(package);
    EXPECT_EQ(package->identifier(), u"org.example.greetings");
    EXPECT_EQ(package->name(), u"Greetings");
    EXPECT_EQ(package->version(), u"1.0");
    EXPECT_THAT(keysOf(package->completionSets()), ElementsAre("greetings.words"));
    ASSERT_THAT(package->themes(), SizeIs(1));
    EXPECT_EQ(package->themes()[0]->name(), u"dawn");
    EXPECT_THAT(*package->themes()[0]->styles(), SizeIs(2));

    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto syntax = QVSyntax::suggestedSyntaxForString(u"", u"a.greet");
    ASSERT_TRUE(syntax);
    EXPECT_EQ(syntax->name(), u"greetings");
    EXPECT_THAT(syntax->completionProviders(), SizeIs(1));
    EXPECT_EQ(treeOfText(syntax, u"hello//x"), "Match keyword.greeting [0,5]\nMatch comment [5,3]\n");
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
}
