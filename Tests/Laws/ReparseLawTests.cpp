// The law of the incremental reparse: behind every edit the tree is the one that a fresh parse of the same
// text gives, and the answered range covers all that changed.

#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Laws/RandomGrammars.h"
#include "Tests/Laws/ReparseLaw.h"
#include "Tests/Support/Corpus.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// For those who look into a failure, or have a night to spare.
std::uint32_t fromEnvironment(const char *name, std::uint32_t otherwise) {
    const char *const text = std::getenv(name);
    return text ? static_cast<std::uint32_t>(std::atol(text)) : otherwise;
}

const std::vector<std::u16string> typedPieces = {
    u"{",    u"}",   u"(",  u")",  u"\"",        u"'",        u"/*", u"*/", u"//", u"<",
    u">",    u"`",   u"${", u"=",  u"\\",        u";",        u",",  u"#",  u":",  u"/",
    u"<!--", u"-->", u"if", u"</", u"</script>", u"<script>", u"[",  u"]"};

class CorpusReparseLaw : public testing::TestWithParam<CorpusCase> {
protected:
    void SetUp() override { loadBundledSyntaxes(); }
};

} // namespace

TEST_P(CorpusReparseLaw, AnEditedTreeIsTheTreeOfAFreshParse) {
    const LogRecorder log;
    const std::uint32_t first = fromEnvironment("QUORVANE_LAW_FIRST_SEED", 1);
    const std::uint32_t last = first + fromEnvironment("QUORVANE_LAW_SEEDS", 4);
    const std::u16string text(GetParam().text().view());
    const auto syntax = QVSyntax::syntaxForName(NSString::stringWithUTF8String(GetParam().language));
    ASSERT_TRUE(syntax);
    for (std::uint32_t seed = first; seed < last; ++seed) {
        ReparseLaw law(syntax, text);
        RandomEdits edits(seed, typedPieces);
        for (int count = 0; count < 60; ++count) {
            const std::u16string before = law.text();
            const Edit edit = edits.next(law.parse());
            const std::string problem = law.problemOfEdit(edit);
            ASSERT_EQ(problem, "") << "seed " << seed << ", edit " << count << " of {" << edit.range.location
                                   << ", " << edit.range.length << "} with " << unitsOfText(edit.text)
                                   << "\naround "
                                   << unitsOfText(std::u16string_view(before).substr(
                                          edit.range.location -
                                              std::min<NSUInteger>(edit.range.location, 100),
                                          200 + edit.range.length));
        }
    }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusReparseLaw);
INSTANTIATE_TEST_SUITE_P(, CorpusReparseLaw, testing::ValuesIn(corpusCases()), [](const auto &parameter) {
    std::string name = parameter.param.language + "_" + parameter.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(ReparseLaw, RandomGrammarsKeepIt) {
    const LogRecorder log;
    const std::uint32_t first = fromEnvironment("QUORVANE_LAW_FIRST_SEED", 1);
    const std::uint32_t last = first + fromEnvironment("QUORVANE_LAW_SEEDS", 1000);
    int excusedCount = 0;
    int excusedSymbolsCount = 0;
    std::size_t symbolCount = 0;
    for (std::uint32_t seed = first; seed < last; ++seed) {
        RandomGrammars grammars(seed);
        ReparseLaw law(grammars.syntax(), grammars.nextText(), seed % 4 == 3 ? 12 : 0);
        RandomEdits edits(seed, {u"b", u"c", u"d", u"(", u")", u"{", u"}", u"\"", u"<", u";", u"abc", u"!"});
        for (int count = 0; count < 20; ++count) {
            const std::u16string before = law.text();
            const Edit edit = edits.next(law.parse());
            const std::string problem = law.problemOfEdit(edit);
            symbolCount += law.parse().symbols().size();
            ASSERT_EQ(problem, "") << "seed " << seed << ", edit " << count << " of {" << edit.range.location
                                   << ", " << edit.range.length << "} with " << unitsOfText(edit.text)
                                   << "\nin " << unitsOfText(before) << "\n"
                                   << grammars.files()[0] << "\n"
                                   << grammars.files()[1] << "\n"
                                   << grammars.files()[2];
        }
        excusedCount += law.excusedCount();
        excusedSymbolsCount += law.excusedSymbolsCount();
    }
    // An excuse that came often would hide something.
    EXPECT_LE(excusedCount, 2 + static_cast<int>(last - first) / 200);
    // Of twenty edits for each seed.
    EXPECT_LE(excusedSymbolsCount, 2 + static_cast<int>(last - first) / 50);
    // So many are looked at that the law of symbols says something.
    EXPECT_GE(symbolCount, 10u * (last - first));
}

TEST(ReparseLaw, SymbolsFarFromAnEditKeepIt) {
    const LogRecorder log;
    // A pattern of the third seed tries all ways to cut a long text.
    const std::uint32_t first = fromEnvironment("QUORVANE_LAW_FIRST_SEED", 4);
    const std::uint32_t last = first + fromEnvironment("QUORVANE_LAW_SEEDS", 120);
    const std::uint32_t pieceCount = fromEnvironment("QUORVANE_LAW_PIECES", 8);
    int excusedCount = 0;
    int excusedSymbolsCount = 0;
    std::size_t symbolCount = 0;
    for (std::uint32_t seed = first; seed < last; ++seed) {
        RandomGrammars grammars(seed);
        // So many lines that an edit parses but a part of them again.
        std::u16string text;
        for (std::uint32_t count = 0; count < pieceCount; ++count)
            text += grammars.nextText() + u"\n";
        ReparseLaw law(grammars.syntax(), text);
        RandomEdits edits(seed, {u"b", u"(", u")", u"{", u"}", u";", u"abc", u"!"});
        for (int count = 0; count < 20; ++count) {
            const std::u16string before = law.text();
            const Edit edit = edits.next(law.parse());
            const std::string problem = law.problemOfEdit(edit);
            symbolCount += law.parse().symbols().size();
            ASSERT_EQ(problem, "") << "seed " << seed << ", edit " << count << " of {" << edit.range.location
                                   << ", " << edit.range.length << "} with " << unitsOfText(edit.text)
                                   << "\nin " << unitsOfText(before) << "\n"
                                   << grammars.files()[0] << "\n"
                                   << grammars.files()[1] << "\n"
                                   << grammars.files()[2];
        }
        excusedCount += law.excusedCount();
        excusedSymbolsCount += law.excusedSymbolsCount();
    }
    EXPECT_LE(excusedCount, 2 + static_cast<int>(last - first) / 20);
    EXPECT_LE(excusedSymbolsCount, 2 + static_cast<int>(last - first) / 20);
    EXPECT_GE(symbolCount, 50u * (last - first));
}
