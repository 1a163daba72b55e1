// The reference of the completions file, and the files of the packages: what they show is what is read.
#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSRegularExpression.h"
#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"
#include "Quorvane/Categories/QVGramPattern.h"
#include "Quorvane/Completions/QVCompletion.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Completions/QVSymbolCompletion.h"
#include "Quorvane/Selectors/QVSelectorCombinator.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Tests/Quorvane/Completions/SymbolFixture.h"
#include "Tests/Support/Corpus.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/XMLFixtures.h"

#include <filesystem>

using namespace quorvane;
using namespace quorvane::test;

namespace {

struct File {
    QVCompletionSet::Sets sets;
    std::vector<std::shared_ptr<QVCompletionProvider>> providers;
    std::shared_ptr<NSError> error;
    bool isRead = false;
};

File fileOf(const std::string &text) {
    File file;
    const auto document = QVXMLDocument::initWithData(NSData(text), &file.error);
    if (!document)
        return file;
    auto sets = QVCompletionSet::completionSetsWithDocument(*document, &file.providers, &file.error);
    file.isRead = sets.has_value();
    file.sets = std::move(sets).value_or(QVCompletionSet::Sets());
    return file;
}

std::string reference() { return contentsOfFile(QUORVANE_SOURCE_DIR "/Documentation/CompletionsFile.md"); }

/// All examples of the reference.
std::vector<File> examples() {
    std::vector<File> files;
    const std::string page = reference();
    constexpr std::string_view opening = "```xml\n";
    for (std::size_t at = page.find(opening); at != std::string::npos; at = page.find(opening, at)) {
        at += opening.size();
        const std::size_t end = page.find("```", at);
        files.push_back(fileOf(page.substr(at, end - at)));
        at = end;
    }
    return files;
}

/// The set of an example.
std::shared_ptr<QVCompletionSet> exampleSet(const NSString &name) {
    for (const File &file : examples())
        if (const auto found = file.sets.find(name); found != file.sets.end())
            return found->second;
    ADD_FAILURE() << "no example has the set " << name.UTF8String();
    return std::make_shared<QVCompletionSet>();
}

std::shared_ptr<QVCompletionProvider> exampleProvider(const NSString &name) {
    for (const File &file : examples())
        for (const auto &provider : file.providers)
            if (provider->name() == name)
                return provider;
    ADD_FAILURE() << "no example has the provider " << name.UTF8String();
    return std::make_shared<QVCompletionProvider>();
}

using Texts = std::vector<NSString>;

/// The completions files of all packages, by package.
std::map<std::string, std::vector<std::string>> packageFiles() {
    std::map<std::string, std::vector<std::string>> files;
    for (const auto &package : std::filesystem::directory_iterator(QUORVANE_SOURCE_DIR "/Packages")) {
        const auto folder = package.path() / "Completions";
        if (!std::filesystem::is_directory(folder))
            continue;
        for (const auto &file : std::filesystem::directory_iterator(folder))
            if (file.path().extension() == ".xml")
                files[package.path().filename()].push_back(file.path());
    }
    return files;
}

} // namespace

// MARK: - The reference

TEST(CompletionsFileReference, EachExampleIsRead) {
    const auto files = examples();
    EXPECT_EQ(files.size(), 6u);
    for (const File &file : files) {
        EXPECT_TRUE(file.isRead) << (file.error ? file.error->localizedDescription().UTF8String() : "");
        EXPECT_FALSE(file.sets.empty() && file.providers.empty());
    }
}

TEST(CompletionsFileReference, TheExampleOfASetInsertsWhatItSays) {
    const auto items = exampleSet(u"tiny.functions")->completions();
    ASSERT_EQ(items->size(), 3u);
    const auto inserted = [](const QVCompletion &item) {
        return item.behaviors().at(0)->completionStringWithText(item.string(), nullptr);
    };
    EXPECT_EQ(inserted(*(*items)[0]), u"print($[arguments])");
    EXPECT_EQ(inserted(*(*items)[1]), u"exit()");
    EXPECT_EQ(inserted(*(*items)[2]), u"version");
    EXPECT_EQ((*items)[0]->symbolType(), QVSymbolTypeFunction);
    EXPECT_EQ((*items)[2]->symbolType(), QVSymbolTypeConstant);
}

TEST(CompletionsFileReference, TheExampleOfACompletionHasAllThatAnItemCanHave) {
    const auto items = exampleSet(u"tiny.items")->completions();
    ASSERT_EQ(items->size(), 2u);
    const QVCompletion &first = *(*items)[0];
    EXPECT_EQ(first.priority(), 10u);
    EXPECT_FALSE(first.caseInsensitive());
    EXPECT_TRUE(first.shouldTokenize());
    EXPECT_EQ(first.descriptiveText(), u"Answers the value of a key.");
    EXPECT_TRUE(first.acceptChararacterSet()->characterIsMember(u'.'));
    EXPECT_TRUE(first.partialAcceptChararacterSet()->characterIsMember(u'_'));
    EXPECT_TRUE((*items)[1]->deprecated());
    EXPECT_EQ((*items)[1]->symbolType(), QVSymbolTypeMethod);
    // "fv" finds it, and better than "eal".
    float initials = 0;
    float middle = 0;
    EXPECT_TRUE(QVGramPattern(u"fv", 2).matches(first.stringGrams(), &initials));
    EXPECT_TRUE(QVGramPattern(u"eal", 2).matches(first.stringGrams(), &middle));
    EXPECT_GT(initials, middle);
}

TEST(CompletionsFileReference, TheExamplesOfBehavioursHaveTheirConditions) {
    const auto property = exampleSet(u"tiny.properties")->completions()->at(0);
    ASSERT_EQ(property->behaviors().size(), 2u);
    ASSERT_NE(property->behaviors()[0]->suffixRegularExpression(), nullptr);
    EXPECT_TRUE(property->behaviors()[0]->shouldCompleteOnConfirm());
    EXPECT_EQ(property->behaviors()[0]->append(), u": ");
    EXPECT_EQ(property->behaviors()[1]->symbolType(), QVSymbolTypeProperty);
    const auto tag = exampleSet(u"tiny.tags")->completions()->at(0);
    ASSERT_EQ(tag->behaviors().size(), 2u);
    EXPECT_TRUE(tag->behaviors()[0]->usesVariableSubstitution());
    ASSERT_NE(tag->behaviors()[0]->prefixRegularExpression(), nullptr);
    EXPECT_EQ(qv_stringByReplacingVariableBindingsUsingDictionary(
                  tag->behaviors()[0]->completionStringWithText(tag->string(), nullptr),
                  {{u"completion", tag->string()}}),
              u"p>$[content]</p>");
    EXPECT_EQ(tag->behaviors()[1]->completionStringWithText(tag->string(), nullptr), u"p>");
    // Anchored where the item begins, looking at what stands before.
    const auto &prefix = tag->behaviors()[0]->prefixRegularExpression();
    const NSMatchingOptions options = NSMatchingAnchored | NSMatchingWithTransparentBounds;
    EXPECT_TRUE(prefix->firstMatchInString(u"<p", options, {1, 1}).has_value());
    EXPECT_FALSE(prefix->firstMatchInString(u"</p", options, {2, 1}).has_value());
}

TEST(CompletionsFileReference, TheExampleOfArgumentsInsertsWhatItSays) {
    const auto provider = exampleProvider(u"tiny.symbols");
    ASSERT_EQ(provider->symbolCompletions().size(), 2u);
    const FunctionSymbol symbol(u"name", {u"a", u"b"});
    const auto inserted = [&](std::size_t index) {
        return provider->symbolCompletions()[index]->behaviors().at(0)->completionStringWithText(u"name",
                                                                                                 &symbol);
    };
    EXPECT_EQ(inserted(0), u"name($[a], $[b])");
    EXPECT_EQ(inserted(1), u"name[ <$[a]> <$[b]>]");
}

TEST(CompletionsFileReference, TheExampleOfAProviderHasAllThatOneCanHave) {
    const auto provider = exampleProvider(u"tiny.values");
    EXPECT_EQ(provider->captureNumber(), 2u);
    ASSERT_TRUE(provider->selectors().has_value());
    EXPECT_EQ(provider->selectors()->size(), 1u);
    EXPECT_EQ(provider->completionSets(), (Texts{u"tiny.values.$(1)", u"tiny.values"}));
    EXPECT_EQ(provider->syntaxNames(), (Texts{u"tiny", u"tinier"}));
    ASSERT_EQ(provider->symbolCompletions().size(), 1u);
    EXPECT_EQ(provider->symbolCompletions()[0]->symbolTypes(),
              (std::set<NSUInteger>{QVSymbolTypeVariable, QVSymbolTypeConstant}));
    EXPECT_EQ(provider->symbolCompletions()[0]->syntaxName(), u"tiny");
    ASSERT_NE(provider->regularExpression(), nullptr);
    const auto match = provider->regularExpression()->firstMatchInString(u"display: in", 0, {0, 11});
    ASSERT_TRUE(match.has_value());
    EXPECT_EQ((*match)[1], NSMakeRange(0, 7));
    EXPECT_EQ((*match)[2], NSMakeRange(9, 2));
}

TEST(CompletionsFileReference, EachWordForATypeIsKnown) {
    const std::string page = reference();
    std::size_t words = 0;
    std::size_t at = page.find("## Types");
    ASSERT_NE(at, std::string::npos);
    while ((at = page.find('`', at)) != std::string::npos) {
        const std::size_t end = page.find('`', at + 1);
        const std::string word = page.substr(at + 1, end - at - 1);
        EXPECT_NE(QVSymbolTypeFromString(NSString::stringWithUTF8String(word)), 0u) << word;
        ++words;
        at = end + 1;
    }
    // And none is left out.
    std::size_t known = 0;
    for (NSUInteger type = 0; type < 100; ++type)
        known += !QVSymbolTypeToString(type).isNull();
    EXPECT_EQ(words, known);
}

// MARK: - The packages

TEST(PackageCompletions, EachFileOfThePackagesIsReadWithoutError) {
    const auto packages = packageFiles();
    for (const char *const name : {"C", "CPP", "CSS", "HTML", "JSON", "JavaScript", "Markdown", "Python",
                                   "Shell", "TypeScript", "YAML"})
        EXPECT_TRUE(packages.contains(name)) << name;
    for (const auto &[package, paths] : packages)
        for (const std::string &path : paths) {
            SCOPED_TRACE(path);
            const File file = fileOf(contentsOfFile(path));
            EXPECT_TRUE(file.isRead) << (file.error ? file.error->localizedDescription().UTF8String() : "");
            EXPECT_FALSE(file.sets.empty());
        }
}

TEST(PackageCompletions, EachItemCanBeMatchedAndStandsOnceInItsSet) {
    for (const auto &[package, paths] : packageFiles())
        for (const std::string &path : paths)
            for (const auto &[name, set] : fileOf(contentsOfFile(path)).sets) {
                std::set<NSString> strings;
                EXPECT_FALSE(set->completions()->empty()) << path << ' ' << name.UTF8String();
                for (const auto &item : *set->completions()) {
                    EXPECT_TRUE(strings.insert(item->string()).second)
                        << path << ": " << item->string().UTF8String() << " stands twice in "
                        << name.UTF8String();
                    EXPECT_GT(item->stringGrams().count(), 0u) << path << ' ' << name.UTF8String();
                    EXPECT_NE(item->symbolType(), 0u) << path << ": " << item->string().UTF8String();
                }
            }
}

TEST(PackageCompletions, EachProviderAppliesSomewhereAndOffersSetsThatAreThere) {
    // Sets are found by name in all packages that are loaded: a language that embeds another offers its
    // words.
    QVCompletionSet::Sets sets;
    const auto packages = packageFiles();
    for (const auto &[package, paths] : packages)
        for (const std::string &path : paths)
            sets.merge(fileOf(contentsOfFile(path)).sets);
    for (const auto &[package, paths] : packages) {
        std::vector<std::shared_ptr<QVCompletionProvider>> providers;
        for (const std::string &path : paths) {
            const File file = fileOf(contentsOfFile(path));
            providers.insert(providers.end(), file.providers.begin(), file.providers.end());
        }
        for (const auto &provider : providers) {
            SCOPED_TRACE(provider->name().UTF8String());
            EXPECT_NE(provider->regularExpression(), nullptr);
            ASSERT_TRUE(provider->syntaxNames() && provider->completionSets());
            EXPECT_FALSE(provider->syntaxNames()->empty());
            EXPECT_FALSE(provider->completionSets()->empty());
            if (provider->regularExpression()) {
                EXPECT_LE(provider->captureNumber(), provider->regularExpression()->numberOfCaptureGroups());
            }
            for (const NSString &name : *provider->completionSets()) {
                // A name with a variable stands for all sets that begin as it does.
                const NSString start = name.componentsSeparatedByString(u"$")[0];
                EXPECT_TRUE(std::ranges::any_of(sets, [&](const auto &entry) {
                    return start == name ? entry.first == name : entry.first.hasPrefix(start);
                })) << name.UTF8String();
            }
        }
    }
}
