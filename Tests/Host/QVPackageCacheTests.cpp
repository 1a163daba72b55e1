#include "Host/QVPackageCache.h"

#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSXMLParser.h"
#include "Quorvane/Completions/QVCompletion.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Host/FolderFixture.h"
#include "Tests/Support/Corpus.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> filesIn(const fs::path &folder) {
    std::vector<fs::path> files;
    if (fs::exists(folder))
        files.assign(fs::directory_iterator(folder), {});
    std::sort(files.begin(), files.end());
    return files;
}

void overwrite(const fs::path &file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

/// A package in a folder of its own, and a cache beside it.
class CachedPackage : public testing::Test {
protected:
    void SetUp() override {
        folder.write("package/package.json", smallManifest);
        folder.write("package/Syntaxes/small.xml", syntaxText("small", scopesText(matchText("word", "a+"))));
        folder.write("package/Completions/small.xml",
                     R"(<completions><set name="words"><completion string="while"/></set>)"
                     R"(<provider name="typed"><set>words</set></provider></completions>)");
    }

    /// Reads the package as a new start would; counts the documents that it parsed.
    std::shared_ptr<QVPackageFolder> start(const char *identity = "engine") {
        const QVPackageCache cache(folder.url("cache"), identity);
        const std::size_t before = NSXMLParser::parsedDocumentCount();
        errors.clear();
        auto package = QVPackageFolder::initWithContentsOfURL(folder.url("package"), &cache, &errors);
        parsed = NSXMLParser::parsedDocumentCount() - before;
        EXPECT_TRUE(package);
        return package;
    }
    std::vector<fs::path> entries() const { return filesIn(folder.path() / "cache"); }

    TemporaryFolder folder;
    QVPackageFolder::Errors errors;
    std::size_t parsed = 0;
};

} // namespace

TEST(QVPackageCache, FindsWhatWasStoredForTheSameBytes) {
    const TemporaryFolder folder;
    const QVPackageCache cache(folder.url("a/b"), "engine");
    const NSData contents("contents");
    EXPECT_FALSE(cache.archiveForContents(contents, QVPackageCache::Syntax));
    EXPECT_TRUE(cache.setArchive(NSData("archive"), contents, QVPackageCache::Syntax));
    EXPECT_EQ(cache.archiveForContents(contents, QVPackageCache::Syntax), NSData("archive"));
    EXPECT_EQ(
        QVPackageCache(folder.url("a/b"), "engine").archiveForContents(contents, QVPackageCache::Syntax),
        NSData("archive"));
    EXPECT_TRUE(cache.setArchive(NSData("newer"), contents, QVPackageCache::Syntax));
    EXPECT_EQ(cache.archiveForContents(contents, QVPackageCache::Syntax), NSData("newer"));
    EXPECT_THAT(filesIn(folder.path() / "a/b"), SizeIs(1));
}

TEST(QVPackageCache, OtherBytesKindsAndEnginesHaveEntriesOfTheirOwn) {
    const TemporaryFolder folder;
    const QVPackageCache cache(folder.url(), "engine");
    cache.setArchive(NSData("archive"), NSData("contents"), QVPackageCache::Syntax);
    EXPECT_FALSE(cache.archiveForContents(NSData("content"), QVPackageCache::Syntax));
    EXPECT_FALSE(cache.archiveForContents(NSData("contents"), QVPackageCache::Completions));
    EXPECT_FALSE(QVPackageCache(folder.url(), "newer engine")
                     .archiveForContents(NSData("contents"), QVPackageCache::Syntax));
    // The end of one must not pass for the beginning of the other.
    EXPECT_FALSE(QVPackageCache(folder.url(), "enginec")
                     .archiveForContents(NSData("ontents"), QVPackageCache::Syntax));
}

TEST(QVPackageCache, EmptyArchivesAndContentsAreKeptToo) {
    const TemporaryFolder folder;
    const QVPackageCache cache(folder.url(), "engine");
    EXPECT_TRUE(cache.setArchive(NSData(""), NSData(""), QVPackageCache::Syntax));
    EXPECT_EQ(cache.archiveForContents(NSData(""), QVPackageCache::Syntax), NSData(""));
    EXPECT_FALSE(cache.setArchive(NSData(), NSData(""), QVPackageCache::Syntax));
}

TEST(QVPackageCache, NoByteOfAnEntryCanChangeUnseen) {
    const TemporaryFolder folder;
    const QVPackageCache cache(folder.url(), "engine");
    const NSData contents("contents");
    cache.setArchive(NSData("some archive"), contents, QVPackageCache::Syntax);
    const fs::path entry = filesIn(folder.path()).at(0);
    const std::string good = contentsOfFile(entry);
    for (std::size_t at = 0; at < good.size(); ++at) {
        std::string damaged = good;
        damaged[at] ^= 0x10;
        overwrite(entry, damaged);
        EXPECT_FALSE(cache.archiveForContents(contents, QVPackageCache::Syntax)) << at;
        overwrite(entry, good.substr(0, at));
        EXPECT_FALSE(cache.archiveForContents(contents, QVPackageCache::Syntax)) << at;
    }
    overwrite(entry, good + "x");
    EXPECT_FALSE(cache.archiveForContents(contents, QVPackageCache::Syntax));
    overwrite(entry, good);
    EXPECT_TRUE(cache.archiveForContents(contents, QVPackageCache::Syntax));
}

TEST(QVPackageCache, AnEntryUnderAnotherOnesNameIsNone) {
    const TemporaryFolder folder;
    const QVPackageCache cache(folder.url(), "engine");
    cache.setArchive(NSData("first"), NSData("1"), QVPackageCache::Syntax);
    const fs::path first = filesIn(folder.path()).at(0);
    const std::string bytes = contentsOfFile(first);
    fs::remove(first);
    cache.setArchive(NSData("second"), NSData("2"), QVPackageCache::Syntax);
    overwrite(filesIn(folder.path()).at(0), bytes);
    EXPECT_FALSE(cache.archiveForContents(NSData("2"), QVPackageCache::Syntax));
}

TEST(QVPackageCache, AFolderThatCanNotBeWrittenKeepsNothing) {
    const TemporaryFolder folder;
    folder.write("file", "");
    const NSData contents("contents");
    for (const NSURL &url : {folder.url("file"), folder.url("file/below"), NSURL()}) {
        const QVPackageCache cache(url, "engine");
        EXPECT_FALSE(cache.setArchive(NSData("archive"), contents, QVPackageCache::Syntax));
        EXPECT_FALSE(cache.archiveForContents(contents, QVPackageCache::Syntax));
    }
    // A folder where the entry would stand.
    const QVPackageCache cache(folder.url("cache"), "engine");
    cache.setArchive(NSData("archive"), contents, QVPackageCache::Syntax);
    const fs::path entry = filesIn(folder.path() / "cache").at(0);
    fs::remove(entry);
    fs::create_directory(entry);
    EXPECT_FALSE(cache.setArchive(NSData("archive"), contents, QVPackageCache::Syntax));
    EXPECT_FALSE(cache.archiveForContents(contents, QVPackageCache::Syntax));
    EXPECT_THAT(filesIn(folder.path() / "cache"), ElementsAre(entry)) << "what was begun is gone";
}

TEST(QVPackageCache, DropsWhatWasNotUsedForLongestBeyondItsSize) {
    const TemporaryFolder folder;
    // Room for three entries of a thousand bytes with their heads; each one more makes two old ones go.
    const QVPackageCache cache(folder.url(), "engine", 3 * 1056);
    const std::string archive(1000, 'x');
    folder.write("not ours.archive", archive + archive + archive);
    folder.write("0123456789abcdef0123456789abcdef.archive.txt", archive + archive + archive);
    const auto store = [&](const char *contents) {
        const auto before = filesIn(folder.path());
        cache.setArchive(NSData(archive), NSData(contents), QVPackageCache::Syntax);
        // The clock of a file system can stand still between two files; entries get an age each.
        for (const fs::path &file : before)
            if (fs::exists(file))
                fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
    };
    const auto has = [&](const char *contents) {
        return static_cast<bool>(cache.archiveForContents(NSData(contents), QVPackageCache::Syntax));
    };
    store("1");
    store("2");
    store("3");
    EXPECT_TRUE(has("1") && has("2") && has("3"));
    store("4");
    EXPECT_FALSE(has("1") || has("2"));
    EXPECT_TRUE(has("3") && has("4"));
    EXPECT_TRUE(fs::exists(folder.path() / "not ours.archive"));
    EXPECT_TRUE(fs::exists(folder.path() / "0123456789abcdef0123456789abcdef.archive.txt"));
}

TEST(QVPackageCache, WhatIsUsedStaysYoung) {
    const TemporaryFolder folder;
    const QVPackageCache cache(folder.url(), "engine");
    cache.setArchive(NSData("archive"), NSData("contents"), QVPackageCache::Syntax);
    const fs::path entry = filesIn(folder.path()).at(0);
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(48);
    fs::last_write_time(entry, old);
    cache.archiveForContents(NSData("contents"), QVPackageCache::Syntax);
    EXPECT_GT(fs::last_write_time(entry), old + std::chrono::hours(47));
}

TEST(QVPackageCache, ItsUsualPlaceIsTheUsersCacheFolder) {
    const char *const caches = std::getenv("XDG_CACHE_HOME");
    const char *const home = std::getenv("HOME");
    const auto put = [](const char *name, const char *value) {
        value ? setenv(name, value, 1) : unsetenv(name);
    };
    const std::string oldCaches = caches ? caches : "", oldHome = home ? home : "";
    put("XDG_CACHE_HOME", "/caches");
    put("HOME", "/home/me");
    EXPECT_EQ(QVPackageCache::defaultFolder().path(), u"/caches/quorvane");
    put("XDG_CACHE_HOME", "relative");
    EXPECT_EQ(QVPackageCache::defaultFolder().path(), u"/home/me/.cache/quorvane");
    put("XDG_CACHE_HOME", nullptr);
    EXPECT_EQ(QVPackageCache::defaultFolder().path(), u"/home/me/.cache/quorvane");
    put("HOME", nullptr);
    EXPECT_TRUE(QVPackageCache::defaultFolder().isNull());
    put("XDG_CACHE_HOME", caches ? oldCaches.c_str() : nullptr);
    put("HOME", home ? oldHome.c_str() : nullptr);
}

TEST_F(CachedPackage, ASecondStartParsesNoXMLAndUnpacksNothing) {
    start();
    EXPECT_EQ(parsed, 2u);
    const auto package = start();
    EXPECT_EQ(parsed, 0u);
    EXPECT_THAT(errors, IsEmpty());
    const auto syntax = package->syntaxes().at(u"small");
    EXPECT_TRUE(syntax->grammarData());
    EXPECT_FALSE(syntax->grammarResolved());
    ASSERT_THAT(package->completionProviders(), SizeIs(1));
    EXPECT_EQ(package->completionProviders()[0]->name(), u"typed");
    const auto completions = package->completionSets().at(u"words")->completions();
    ASSERT_THAT(*completions, SizeIs(1));
    EXPECT_EQ((*completions)[0]->string(), u"while");
    // The first use finds the grammar.
    EXPECT_EQ(treeOfText(syntax, u"aa"), "Match word [0,2]\n");
    EXPECT_EQ(parsed, 0u);
}

TEST_F(CachedPackage, TheFirstStartLeavesGrammarsUnconnected) {
    const auto package = start();
    const auto syntax = package->syntaxes().at(u"small");
    EXPECT_FALSE(syntax->grammarResolved());
    QVLoadable::loadPackagesIntoSyntaxEngine({package});
    EXPECT_EQ(syntax->grammar()->package(), package);
    QVLoadable::unloadPackagesFromSyntaxEngine({package});
}

TEST_F(CachedPackage, AnEditedFileIsReadAnew) {
    start();
    folder.write("package/Syntaxes/small.xml", syntaxText("small", scopesText(matchText("word", "b+"))));
    const auto package = start();
    EXPECT_EQ(parsed, 1u);
    EXPECT_EQ(treeOfText(package->syntaxes().at(u"small"), u"bb"), "Match word [0,2]\n");
    start();
    EXPECT_EQ(parsed, 0u);
}

TEST_F(CachedPackage, AMovedPackageFindsItsEntries) {
    start();
    fs::rename(folder.path() / "package", folder.path() / "moved");
    fs::create_directory_symlink("moved", folder.path() / "package");
    start();
    EXPECT_EQ(parsed, 0u);
}

TEST_F(CachedPackage, AnotherEngineReadsAnew) {
    start("engine 1");
    start("engine 2");
    EXPECT_EQ(parsed, 2u);
    start("engine 1");
    EXPECT_EQ(parsed, 0u);
}

TEST_F(CachedPackage, DamagedEntriesAreWrittenAnew) {
    start();
    std::vector<std::string> good;
    for (const fs::path &entry : entries()) {
        good.push_back(contentsOfFile(entry));
        overwrite(entry, good.back().substr(0, good.back().size() / 2));
    }
    const auto package = start();
    EXPECT_EQ(parsed, 2u);
    EXPECT_THAT(errors, IsEmpty());
    EXPECT_THAT(package->syntaxes(), SizeIs(1));
    std::vector<std::string> rewritten;
    for (const fs::path &entry : entries())
        rewritten.push_back(contentsOfFile(entry));
    EXPECT_EQ(rewritten, good);
}

TEST_F(CachedPackage, EntriesThatHoldSomethingElseAreWrittenAnew) {
    const LogRecorder log;
    const QVPackageCache cache(folder.url("cache"), "engine");
    const NSData syntax(contentsOfFile(folder.path() / "package/Syntaxes/small.xml"));
    const NSData completions(contentsOfFile(folder.path() / "package/Completions/small.xml"));
    cache.setArchive(NSData("no archive"), syntax, QVPackageCache::Syntax);
    cache.setArchive(NSData(""), completions, QVPackageCache::Completions);
    EXPECT_THAT(start()->syntaxes(), SizeIs(1));
    EXPECT_EQ(parsed, 2u);
    // Whole archives, each in the other one's place.
    const NSData syntaxArchive = cache.archiveForContents(syntax, QVPackageCache::Syntax);
    const NSData completionsArchive = cache.archiveForContents(completions, QVPackageCache::Completions);
    cache.setArchive(completionsArchive, syntax, QVPackageCache::Syntax);
    cache.setArchive(syntaxArchive, completions, QVPackageCache::Completions);
    EXPECT_THAT(start()->completionSets(), SizeIs(1));
    EXPECT_EQ(parsed, 2u);
    EXPECT_EQ(cache.archiveForContents(syntax, QVPackageCache::Syntax), syntaxArchive);
    start();
    EXPECT_EQ(parsed, 0u);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(CachedPackage, WhatHasAFaultIsToldAtEveryStart) {
    folder.write("package/Syntaxes/small.xml", syntaxText("small", scopesText(matchText("word", "("))));
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(start()->syntaxes(), SizeIs(1));
        EXPECT_THAT(errors, SizeIs(1));
    }
}

TEST_F(CachedPackage, AFolderThatCanNotBeWrittenIsNoReasonToFail) {
    folder.write("cache", "a file");
    for (int round = 0; round < 2; ++round) {
        EXPECT_THAT(start()->syntaxes(), SizeIs(1));
        EXPECT_EQ(parsed, 2u);
        EXPECT_THAT(errors, IsEmpty());
    }
}

TEST_F(CachedPackage, ThreadsCanShareAFolder) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([this] {
            for (int round = 0; round < 10; ++round) {
                const QVPackageCache cache(folder.url("cache"), "engine " + std::to_string(round));
                QVPackageFolder::Errors told;
                const auto package =
                    QVPackageFolder::initWithContentsOfURL(folder.url("package"), &cache, &told);
                EXPECT_THAT(told, IsEmpty());
                EXPECT_NE(package->syntaxes().at(u"small")->grammar(), nullptr);
            }
        });
    for (auto &thread : threads)
        thread.join();
    // Two entries of each engine, and nothing half done.
    EXPECT_THAT(entries(), SizeIs(20));
}

TEST(QVPackageCache, BundledLanguagesParseAlikeFromTheirArchives) {
    const TemporaryFolder folder;
    const QVPackageCache cache(folder.url(), "engine");
    const std::vector<NSURL> search{
        NSURL::fileURLWithPath(NSString::stringWithUTF8String(QUORVANE_SOURCE_PACKAGES))};
    /// The trees of all samples, with the packages as they come.
    const auto trees = [&](std::size_t &parsed) {
        const std::size_t before = NSXMLParser::parsedDocumentCount();
        const auto packages = QVPackageFolder::packagesInFolders(search, &cache);
        parsed = NSXMLParser::parsedDocumentCount() - before;
        QVLoadable::loadPackagesIntoSyntaxEngine({packages.begin(), packages.end()});
        std::vector<std::string> result;
        for (const CorpusCase &each : corpusCases()) {
            const auto syntax = QVSyntax::syntaxForName(NSString::stringWithUTF8String(each.language));
            if (!syntax) {
                ADD_FAILURE() << "no syntax for " << each.language;
                continue;
            }
            const auto parse = parseOfText(syntax, each.text());
            parse->performReadingBlockAndWait([&] { result.push_back(QVMatchTreeText(*parse)); });
        }
        QVLoadable::unloadPackagesFromSyntaxEngine({packages.begin(), packages.end()});
        return result;
    };
    std::size_t first = 0;
    std::size_t second = 0;
    const auto fromXML = trees(first);
    const auto fromArchives = trees(second);
    EXPECT_GT(first, 0u);
    EXPECT_EQ(second, 0u);
    ASSERT_EQ(fromXML.size(), fromArchives.size());
    for (std::size_t index = 0; index < fromXML.size(); ++index)
        EXPECT_EQ(fromXML[index], fromArchives[index])
            << corpusCases()[index].language << "/" << corpusCases()[index].name;
}
