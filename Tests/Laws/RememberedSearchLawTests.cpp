// The law of the parser's fast way: remembering searches changes neither the tree, to the last node, nor what
// is reported, whatever the grammar and the text.

#include "Host/QVMatchTreeText.h"
#include "Tests/Laws/RandomGrammars.h"
#include "Tests/Laws/ReparseLaw.h"
#include "Tests/Support/MatchTreeChecks.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

using namespace quorvane;
using namespace quorvane::test;

namespace {

constexpr std::uint32_t firstSeed = 1;
constexpr std::uint32_t seedCount = 3000;
constexpr int textsForEachGrammar = 12;

struct Result {
    std::string tree;
    std::string diagnostics;
    std::string problem;
};

Result resultOfText(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text, bool remembers,
                    NSUInteger maximumLineLength) {
    const auto recorder = std::make_shared<DiagnosticRecorder>();
    const auto parse = QVParse::initWithSyntax(syntax, 0, QVParsePrivateQueueConcurrencyType);
    parse->setRemembersSearches(remembers);
    parse->setMaximumLineLength(maximumLineLength);
    parse->setDelegate(recorder);
    Result result;
    parse->performWritingBlockAndWait([&] {
        parse->replaceCharactersInRange({0, 0}, text, nullptr);
        result.tree = QVMatchTreeText(*parse);
        result.problem = problemInMatchTree(*parse);
    });
    // In no order: all includes of a list are looked up before the first of its patterns is searched for.
    // What the matcher gave up on is not there where it was never asked.
    std::multiset<std::string> messages;
    for (const auto &diagnostic : recorder->diagnostics)
        if (!diagnostic.message.view().starts_with(u"Error matching scope"))
            messages.insert(std::to_string(diagnostic.level) + " " + diagnostic.message.UTF8String() + "\n");
    for (const std::string &message : messages)
        result.diagnostics += message;
    return result;
}

bool hasSurrogates(std::u16string_view text) {
    return std::any_of(text.begin(), text.end(), [](char16_t unit) { return (unit & 0xF800) == 0xD800; });
}

} // namespace

TEST(RememberedSearchLaw, RandomGrammarsGiveTheSameTreesAndReportsBothWays) {
    // For those who look into a failure, or have a night to spare.
    const char *const from = std::getenv("QUORVANE_LAW_FIRST_SEED");
    const char *const count = std::getenv("QUORVANE_LAW_SEEDS");
    const auto first = from ? static_cast<std::uint32_t>(std::atol(from)) : firstSeed;
    const auto last = first + (count ? static_cast<std::uint32_t>(std::atol(count)) : seedCount);
    const LogRecorder log;
    std::size_t nodes = 0;
    for (std::uint32_t seed = first; seed < last; ++seed) {
        RandomGrammars grammars(seed);
        for (int round = 0; round < textsForEachGrammar; ++round) {
            const std::u16string text = grammars.nextText();
            const NSUInteger maximumLineLength = round % 4 == 3 ? 12 : 0;
            const Result plain = resultOfText(grammars.syntax(), text, false, maximumLineLength);
            const Result remembering = resultOfText(grammars.syntax(), text, true, maximumLineLength);
            nodes += static_cast<std::size_t>(std::count(plain.tree.begin(), plain.tree.end(), '\n'));
            // From within a pair a pattern that needs text can be given an empty hit, which the plain way
            // reports wherever it stands and the other where it is in the way.
            const bool sameReports = plain.diagnostics == remembering.diagnostics || hasSurrogates(text);
            if (plain.tree == remembering.tree && sameReports && plain.problem.empty() &&
                remembering.problem.empty())
                continue;
            EXPECT_EQ(plain.tree, remembering.tree);
            EXPECT_TRUE(sameReports) << plain.diagnostics << "\n" << remembering.diagnostics;
            EXPECT_EQ(plain.problem, "");
            EXPECT_EQ(remembering.problem, "");
            FAIL() << "seed " << seed << ", text " << unitsOfText(text) << "\nlines up to "
                   << maximumLineLength << "\n"
                   << grammars.files()[0] << "\n"
                   << grammars.files()[1] << "\n"
                   << grammars.files()[2];
        }
    }
    // The grammars must have something to say about the texts.
    EXPECT_GT(nodes, (last - first) * textsForEachGrammar * 10);
}
