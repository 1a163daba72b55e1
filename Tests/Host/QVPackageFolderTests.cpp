#include "Host/QVPackageFolder.h"

#include "Host/QVPackageError.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Completions/QVCompletion.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Host/FolderFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

struct Read {
    std::shared_ptr<QVPackageFolder> package;
    std::vector<std::string> errors;
};

Read read(const TemporaryFolder &folder) {
    QVPackageFolder::Errors errors;
    auto package = QVPackageFolder::initWithContentsOfURL(folder.url(), nullptr, &errors);
    return {std::move(package), textsOf(errors, folder)};
}

const std::string words = R"(<completions>
<set name="words"><completion string="while"/></set>
<provider name="typed"><expression>\w+$</expression><set>words</set><syntax>small</syntax></provider>
</completions>)";

} // namespace

TEST(QVPackageFolder, ReadsAWholePackage) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    folder.write("Syntaxes/small.xml", syntaxText("small", scopesText(matchText("word", "a"))));
    folder.write("Syntaxes/tiny.xml", syntaxText("tiny", ""));
    folder.write("Completions/small.xml", words);
    const auto [package, errors] = read(folder);
    EXPECT_THAT(errors, IsEmpty());
    ASSERT_TRUE(package);
    EXPECT_EQ(package->identifier(), u"test.small");
    EXPECT_EQ(package->name(), u"Small");
    EXPECT_EQ(package->version(), u"1.2");
    EXPECT_EQ(package->url(), folder.url());
    EXPECT_THAT(keysOf(package->syntaxes()), ElementsAre("small", "tiny"));
    EXPECT_EQ(package->urlOfSyntax(u"tiny"), folder.url("Syntaxes/tiny.xml"));
    EXPECT_FALSE(package->urlOfSyntax(u"other"));
    EXPECT_THAT(keysOf(package->completionSets()), ElementsAre("words"));
    EXPECT_THAT(*package->completionSets().at(u"words")->completions(), SizeIs(1));
    ASSERT_THAT(package->completionProviders(), SizeIs(1));
    EXPECT_EQ(package->completionProviders()[0]->name(), u"typed");
}

TEST(QVPackageFolder, LoadsIntoTheEngine) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    folder.write("Syntaxes/small.xml", syntaxText("small", scopesText(matchText("word", "a"))));
    folder.write("Completions/small.xml", words);
    const auto package = read(folder).package;
    ASSERT_TRUE(package);
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    const auto syntax = QVSyntax::syntaxForName(u"small");
    ASSERT_TRUE(syntax);
    EXPECT_EQ(syntax->completionProviders(), package->completionProviders());
    EXPECT_TRUE(QVCompletionSet::completionSetForName(u"words"));
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
    EXPECT_FALSE(QVSyntax::syntaxForName(u"small"));
    EXPECT_FALSE(QVCompletionSet::completionSetForName(u"words"));
}

TEST(QVPackageFolder, ThemesComeInTheOrderOfTheirNamesAndBrokenOnesAreTold) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    folder.write("Themes/b.css", "comment { color: #808080; }");
    folder.write("Themes/c.css", "comment { color: #808080; }\nkeyword {\n  color }");
    folder.write("Themes/a.css", "keyword { color: #800000; }");
    ASSERT_EQ(mkfifo((folder.path() / "Themes/d.css").c_str(), 0600), 0);
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    ASSERT_THAT(package->themes(), SizeIs(2));
    EXPECT_EQ(package->themes()[0]->name(), u"a");
    EXPECT_EQ(package->themes()[1]->name(), u"b");
    ASSERT_THAT(errors, SizeIs(2));
    EXPECT_THAT(errors[0], testing::MatchesRegex("Themes/c.css: \\{3, [0-9]+\\}: .+"));
    EXPECT_EQ(errors[1], "Themes/d.css: Is no file");
}

TEST(QVPackageFolder, APackageMayHoldNothing) {
    const TemporaryFolder folder;
    folder.write("package.json", R"({"identifier": "empty"})");
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_THAT(errors, IsEmpty());
    EXPECT_EQ(package->name(), u"empty");
    EXPECT_THAT(package->syntaxes(), IsEmpty());
}

TEST(QVPackageFolder, WithoutAGoodManifestThereIsNoPackage) {
    const TemporaryFolder folder;
    folder.write("Syntaxes/small.xml", syntaxText("small", ""));
    {
        const auto [package, errors] = read(folder);
        EXPECT_FALSE(package);
        EXPECT_THAT(errors, ElementsAre("package.json: No such file or directory"));
    }
    folder.write("package.json", "{\n\"identifier\": 3}");
    const auto [package, errors] = read(folder);
    EXPECT_FALSE(package);
    EXPECT_THAT(errors, ElementsAre("package.json: {2, 15}: \"identifier\" must be a string, not a number"));
}

TEST(QVPackageFolder, AManifestMayBeAsLongAsTheLimitAndNoLonger) {
    const TemporaryFolder folder;
    std::string manifest = smallManifest;
    manifest.resize(limits::packageManifestBytes, ' ');
    folder.write("package.json", manifest);
    EXPECT_TRUE(read(folder).package);
    folder.write("package.json", manifest + " ");
    const auto [package, errors] = read(folder);
    EXPECT_FALSE(package);
    EXPECT_THAT(errors, ElementsAre("package.json: Has more than 1048576 bytes"));
}

TEST(QVPackageFolder, BrokenFilesAreToldInOrderAndTheRestIsRead) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    folder.write("Syntaxes/a-good.xml", syntaxText("good", ""));
    folder.write("Syntaxes/b-cut-off.xml", "<syntax name=\"b\">\n<scopes>");
    folder.write("Syntaxes/c-definition.xml",
                 "<syntax name=\"c\">\n<scopes>\n<scope name=\"it\">\n</scope>\n</scopes>\n</syntax>");
    folder.write("Syntaxes/d-nameless.xml", "<!-- x -->\n<syntax></syntax>");
    folder.write("Syntaxes/e-other.xml", "<completions/>");
    folder.write("Syntaxes/f-empty.xml", "");
    folder.write("Syntaxes/g-good.xml", syntaxText("also-good", ""));
    folder.write("Completions/a.xml",
                 "<completions>\n<provider name=\"p\"><expression>(</expression></provider>"
                 "</completions>");
    folder.write("Completions/b.xml", words);
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_THAT(keysOf(package->syntaxes()), ElementsAre("also-good", "good"));
    EXPECT_THAT(keysOf(package->completionSets()), ElementsAre("words"));
    EXPECT_THAT(package->completionProviders(), SizeIs(1));
    ASSERT_THAT(errors, SizeIs(6));
    EXPECT_THAT(errors[0], StartsWith("Syntaxes/b-cut-off.xml: {2, "));
    EXPECT_THAT(
        errors[1],
        testing::MatchesRegex("Syntaxes/c-definition.xml: \\{3, [0-9]+\\}: Missing expression for scope it"));
    EXPECT_THAT(errors[2],
                testing::MatchesRegex("Syntaxes/d-nameless.xml: \\{2, [0-9]+\\}: The syntax has no name"));
    EXPECT_THAT(errors[3], testing::MatchesRegex("Syntaxes/e-other.xml: \\{1, [0-9]+\\}: Is no syntax"));
    EXPECT_THAT(errors[4], StartsWith("Syntaxes/f-empty.xml: {"));
    EXPECT_THAT(errors[5], StartsWith("Completions/a.xml: {2, "));
    EXPECT_THAT(errors[5], testing::HasSubstr("Invalid regular expression for completion provider p"));
}

TEST(QVPackageFolder, AScopeWhosePatternIsBadIsToldAndItsSyntaxComesAllTheSame) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    folder.write("Syntaxes/a.xml", syntaxText("a", "\n" + scopesText("\n" + matchText("broken", "("))));
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_THAT(keysOf(package->syntaxes()), ElementsAre("a"));
    ASSERT_THAT(errors, SizeIs(1));
    EXPECT_THAT(errors[0], StartsWith("Syntaxes/a.xml: {3, "));
    EXPECT_THAT(errors[0], testing::HasSubstr("Invalid regular expression for scope broken: "));
}

TEST(QVPackageFolder, ABadPatternHasNoPlaceWhereSeveralScopesHaveItsName) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    folder.write("Syntaxes/a.xml",
                 syntaxText("a", scopesText(matchText("twin", "x") + matchText("twin", "("))));
    EXPECT_THAT(read(folder).errors,
                ElementsAre(StartsWith("Syntaxes/a.xml: Invalid regular expression for scope twin: ")));
}

TEST(QVPackageFolder, TheFirstFileOfAPackageKeepsAName) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    folder.write("Syntaxes/a.xml", syntaxText("twin", ""));
    folder.write("Syntaxes/b.xml", syntaxText("twin", ""));
    folder.write("Completions/a.xml", words);
    folder.write("Completions/b.xml", words);
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_EQ(package->urlOfSyntax(u"twin"), folder.url("Syntaxes/a.xml"));
    EXPECT_THAT(errors,
                ElementsAre("Syntaxes/b.xml: The syntax \"twin\" is already defined in a.xml",
                            "Completions/b.xml: The completion set \"words\" is already defined in a.xml"));
}

TEST(QVPackageFolder, WhatIsHiddenOrEndsOtherwiseIsPassedOver) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    for (const char *const name : {".hidden.xml", "notes.txt", "backup.xml~", "UPPER.XML", ".xml", "xml"})
        folder.write("Syntaxes/" + std::string(name), "not for us");
    folder.write("syntaxes/lower.xml", "not for us");
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_THAT(errors, IsEmpty());
    EXPECT_THAT(package->syntaxes(), IsEmpty());
}

TEST(QVPackageFolder, LinksAreFollowedAndThoseThatLeadNowhereAreTold) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    const auto elsewhere = folder.write("elsewhere", syntaxText("linked", ""));
    fs::create_directory(folder.path() / "Syntaxes");
    fs::create_symlink(elsewhere, folder.path() / "Syntaxes/a.xml");
    fs::create_symlink("nowhere", folder.path() / "Syntaxes/b.xml");
    fs::create_symlink("c.xml", folder.path() / "Syntaxes/c.xml");
    fs::create_symlink("nowhere", folder.path() / "Completions");
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_THAT(keysOf(package->syntaxes()), ElementsAre("linked"));
    EXPECT_THAT(errors, ElementsAre("Syntaxes/b.xml: No such file or directory",
                                    "Syntaxes/c.xml: Too many levels of symbolic links",
                                    "Completions: No such file or directory"));
}

TEST(QVPackageFolder, WhatIsNoFileIsToldAndNotWaitedFor) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    fs::create_directories(folder.path() / "Syntaxes/a.xml");
    ASSERT_EQ(mkfifo((folder.path() / "Syntaxes/b.xml").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", folder.path() / "Syntaxes/c.xml");
    folder.write("Completions", "a file");
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_THAT(errors, ElementsAre("Syntaxes/a.xml: Is no file", "Syntaxes/b.xml: Is no file",
                                    "Syntaxes/c.xml: Is no file", "Completions: Not a directory"));
}

TEST(QVPackageFolder, AFileThatCannotBeOpenedIsToldAndTheOthersAreRead) {
    const TemporaryFolder folder;
    folder.write("package.json", smallManifest);
    fs::create_directories(folder.path() / "Syntaxes");
    // Links that fail for whoever runs this; the administrator may open even what nobody may read.
    fs::create_symlink(std::string(300, 'x'), folder.path() / "Syntaxes/a.xml");
    folder.write("Syntaxes/b.xml", syntaxText("b", ""));
    fs::create_symlink("b.xml/within", folder.path() / "Syntaxes/c.xml");
    const auto [package, errors] = read(folder);
    ASSERT_TRUE(package);
    EXPECT_THAT(keysOf(package->syntaxes()), ElementsAre("b"));
    EXPECT_THAT(errors, ElementsAre("Syntaxes/a.xml: File name too long", "Syntaxes/c.xml: Not a directory"));
}

TEST(QVPackageFolder, SearchFoldersAreReadInOrderAndTheirPackagesByName) {
    const TemporaryFolder folder;
    const auto package = [&](const std::string &name) {
        folder.write(name + "/package.json", R"({"identifier": ")" + name + R"("})");
    };
    package("second/b");
    package("second/a");
    package("first/z");
    package("first/.hidden");
    folder.write("first/a file", "passed over");
    fs::create_directory(folder.path() / "first/something else");
    folder.write("first/forgotten/Syntaxes/x.xml", syntaxText("x", ""));
    package("elsewhere/linked");
    fs::create_directory_symlink(folder.path() / "elsewhere/linked", folder.path() / "first/m-link");
    fs::create_directory_symlink("nowhere", folder.path() / "first/n-link");
    QVPackageFolder::Errors errors;
    const auto packages = QVPackageFolder::packagesInFolders(
        {folder.url("first"), folder.url("missing"), folder.url("second")}, nullptr, &errors);
    std::vector<std::string> identifiers;
    for (const auto &each : packages)
        identifiers.push_back(each->identifier().UTF8String());
    EXPECT_THAT(identifiers, ElementsAre("elsewhere/linked", "first/z", "second/a", "second/b"));
    EXPECT_THAT(textsOf(errors, folder),
                ElementsAre("first/forgotten/package.json: No such file or directory",
                            "first/n-link: No such file or directory", "missing: No such file or directory"));
}

TEST(QVPackageFolder, ErrorsNeedNotBeAskedFor) {
    const TemporaryFolder folder;
    folder.write("search/Broken/package.json", "");
    fs::create_symlink("nowhere", folder.path() / "search/link");
    EXPECT_THAT(QVPackageFolder::packagesInFolders({folder.url("search"), folder.url("missing")}), IsEmpty());
    EXPECT_FALSE(QVPackageFolder::initWithContentsOfURL(folder.url()));
}

TEST(QVPackageFolder, TheBundledPackagesAreWhole) {
    QVPackageFolder::Errors errors;
    const auto packages = QVPackageFolder::packagesInFolders(
        {NSURL::fileURLWithPath(NSString::stringWithUTF8String(QUORVANE_SOURCE_PACKAGES))}, nullptr, &errors);
    EXPECT_THAT(errors, IsEmpty());
    std::size_t folders = 0;
    for (const auto &entry : fs::directory_iterator(QUORVANE_SOURCE_PACKAGES))
        folders += entry.is_directory();
    EXPECT_THAT(packages, SizeIs(folders));
    const LogRecorder log;
    QVLoadable::loadPackagesIntoSyntaxEngine({packages.begin(), packages.end()});
    // No two of them claim one name.
    EXPECT_THAT(log.messages(), IsEmpty());
    for (const auto &package : packages)
        EXPECT_FALSE(package->version().isNull());
    QVLoadable::unloadPackagesFromSyntaxEngine({packages.begin(), packages.end()});
}
