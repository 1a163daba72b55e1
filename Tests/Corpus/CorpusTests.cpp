// The languages that come with the engine, held against trees that people have reviewed. A case is a folder
// with a text and its tree; a new one needs no code. `scripts/bless` writes trees, for review.
#include "Host/QVMatchTreeText.h"
#include "Quorvane/Parsers/QVParse.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/Corpus.h"
#include "Tests/Support/MatchTreeChecks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

using namespace quorvane;
using namespace quorvane::test;

namespace {

constexpr NSUInteger maximumLineLength = 10000;

std::shared_ptr<QVSyntax> syntaxFor(const std::string &language) {
    loadBundledSyntaxes();
    return QVSyntax::syntaxForName(NSString::stringWithUTF8String(language));
}

/// The tree of a text, which holds together.
std::string checkedTree(const std::shared_ptr<QVSyntax> &syntax, const NSString &text, bool remembers) {
    const auto parse = QVParse::initWithSyntax(syntax, text.length(), QVParseMainQueueConcurrencyType);
    parse->setMaximumLineLength(maximumLineLength);
    parse->setRemembersSearches(remembers);
    std::string tree;
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, text, nullptr);
        EXPECT_EQ(problemInMatchTree(*parse), "");
        tree = QVMatchTreeText(*parse);
    });
    return tree;
}

std::vector<std::string> linesOf(const std::string &text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

/// The place where two trees part, with the lines around it; a whole tree is too long to be read.
std::string differenceOf(const std::string &expected, const std::string &actual) {
    if (expected == actual)
        return {};
    const std::vector<std::string> a = linesOf(expected);
    const std::vector<std::string> b = linesOf(actual);
    const auto parting = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
    std::string difference = "from line " + std::to_string(parting + 1) + " on\n";
    const auto add = [&](const char *mark, const std::vector<std::string> &lines) {
        const auto first = static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, parting - 2));
        const auto end = std::min(lines.size(), static_cast<std::size_t>(parting) + 4);
        for (std::size_t index = first; index < end; ++index)
            difference += mark + lines[index] + "\n";
    };
    add("expected: ", a);
    add("actual:   ", b);
    return difference;
}

void expectSameTree(const std::string &expected, const std::string &actual, const char *what) {
    const std::string difference = differenceOf(expected, actual);
    EXPECT_TRUE(difference.empty()) << what << ": " << difference;
}

void expectSameTreeBothWays(const std::shared_ptr<QVSyntax> &syntax, const NSString &text) {
    expectSameTree(checkedTree(syntax, text, false), checkedTree(syntax, text, true),
                   "with and without memory");
}

class Corpus : public testing::TestWithParam<CorpusCase> {
protected:
    void SetUp() override { ASSERT_TRUE(syntax) << "no package has the language " << GetParam().language; }

    const std::shared_ptr<QVSyntax> syntax = syntaxFor(GetParam().language);
};

class CorpusLanguage : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override { ASSERT_TRUE(syntax) << "no package has the language " << GetParam(); }

    const std::shared_ptr<QVSyntax> syntax = syntaxFor(GetParam());
};

/// Test names take letters, digits and underscores alone.
std::string testName(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

} // namespace

TEST_P(Corpus, TheTreeIsTheReviewedOne) {
    const CorpusCase &corpusCase = GetParam();
    ASSERT_TRUE(std::filesystem::exists(corpusCase.treePath))
        << "write it with scripts/bless " << corpusCase.language << "/" << corpusCase.name
        << ", then review it line by line";
    const std::string reviewed = contentsOfFile(corpusCase.treePath);
    expectSameTree(reviewed, checkedTree(syntax, corpusCase.text(), true), "reviewed and parsed");
    expectSameTree(reviewed, checkedTree(syntax, corpusCase.text(), false),
                   "reviewed and parsed without memory");
}

TEST_P(Corpus, OtherLineEndingsAndLinesWithoutAnEndHurtNothing) {
    const NSString text = GetParam().text();
    expectSameTreeBothWays(syntax, text.stringByReplacingOccurrencesOfString(u"\n", u"\r\n"));
    expectSameTreeBothWays(syntax, text.stringByReplacingOccurrencesOfString(u"\n", u"\r"));
    expectSameTreeBothWays(syntax, text.stringByReplacingOccurrencesOfString(u"\n", u" "));
    expectSameTreeBothWays(syntax, text.substringToIndex(text.length() / 2));
}

TEST_P(Corpus, NameAndContentTellTheLanguage) {
    const auto suggested = QVSyntax::suggestedSyntaxForString(
        GetParam().text(), NSString::stringWithUTF8String(GetParam().fileName));
    ASSERT_TRUE(suggested);
    EXPECT_EQ(suggested->name().UTF8String(), GetParam().language);
}

TEST_P(CorpusLanguage, LongTextsGiveTheSameTreeBothWays) {
    expectSameTreeBothWays(syntax, NSString::stringWithUTF8String(repeatedSamples(GetParam(), 64 << 10)));
}

TEST_P(CorpusLanguage, AllCasesInOneTextGiveTheSameTreeBothWays) {
    std::string text;
    for (const CorpusCase &corpusCase : corpusCases())
        if (corpusCase.language == GetParam())
            text += corpusCase.utf8;
    expectSameTreeBothWays(syntax, NSString::stringWithUTF8String(text));
}

/// Whatever the language, the text of another one is no worse than any.
TEST_P(CorpusLanguage, TextsOfOtherLanguagesGiveTheSameTreeBothWays) {
    for (const CorpusCase &corpusCase : corpusCases())
        if (corpusCase.language != GetParam()) {
            SCOPED_TRACE(corpusCase.language + "/" + corpusCase.name);
            expectSameTreeBothWays(syntax, corpusCase.text());
        }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusLanguage);
INSTANTIATE_TEST_SUITE_P(, Corpus, testing::ValuesIn(corpusCases()), [](const auto &parameter) {
    return testName(parameter.param.language + "_" + parameter.param.name);
});
INSTANTIATE_TEST_SUITE_P(, CorpusLanguage, testing::ValuesIn(corpusLanguages()),
                         [](const auto &parameter) { return testName(parameter.param); });
