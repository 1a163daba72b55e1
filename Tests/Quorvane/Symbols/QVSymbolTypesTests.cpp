#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quorvane;

namespace {

struct Row {
    NSUInteger symbolType;
    const char16_t *word;
};

constexpr Row table[] = {
    // Types
    {1, u"type"},
    {2, u"class"},
    {3, u"category"},
    {4, u"interface"},
    {5, u"enum"},
    {6, u"union"},
    {7, u"struct"},
    // Functions
    {10, u"function"},
    {11, u"method"},
    {12, u"closure"},
    {13, u"constructor"},
    {14, u"getter"},
    {15, u"setter"},
    {16, u"destructor"},
    {17, u"static-method"},
    // Values
    {20, u"variable"},
    {21, u"constant"},
    {22, u"property"},
    {23, u"argument"},
    {24, u"color"},
    {25, u"enum-member"},
    {26, u"static-property"},
    // Blocks
    {30, u"expression"},
    {31, u"statement"},
    {32, u"block"},
    // Text
    {34, u"heading"},
    {35, u"comment"},
    {36, u"package"},
    {37, u"file"},
    {38, u"reference"},
    {39, u"keyword"},
    {40, u"bookmark"},
    {41, u"separator"},
    {42, u"todo"},
    // Style sheets
    {50, u"style-ruleset"},
    {51, u"style-directive"},
    {52, u"style-id"},
    {53, u"style-class"},
    {54, u"style-pseudoclass"},
    {55, u"style-pseudoelement"},
    // Tags
    {60, u"tag"},
    {61, u"tag-head"},
    {62, u"tag-title"},
    {63, u"tag-meta"},
    {64, u"tag-link"},
    {65, u"tag-body"},
    {66, u"tag-script"},
    {67, u"tag-style"},
    {68, u"tag-heading"},
    {69, u"tag-section"},
    {70, u"tag-container"},
    {71, u"tag-ul"},
    {72, u"tag-ol"},
    {73, u"tag-li"},
    {74, u"tag-anchor"},
    {75, u"tag-image"},
    {76, u"tag-media"},
    {77, u"tag-form"},
    {78, u"tag-form-field"},
    {79, u"tag-framework"},
};

/// The numbers up to 100 for which a predicate holds, as "first-last" stretches.
std::string stretches(bool (*predicate)(NSUInteger)) {
    std::string text;
    for (NSUInteger number = 0; number <= 100; ++number) {
        if (predicate(number) && (number == 0 || !predicate(number - 1)))
            text += (text.empty() ? "" : " ") + std::to_string(number) + "-";
        if (predicate(number) && !predicate(number + 1))
            text += std::to_string(number);
    }
    return text;
}

} // namespace

TEST(QVSymbolTypes, EveryWordHasItsNumberAndIsWrittenBack) {
    static_assert(std::size(table) == 60);
    for (const Row &row : table) {
        EXPECT_EQ(QVSymbolTypeFromString(row.word), row.symbolType);
        EXPECT_EQ(QVSymbolTypeToString(row.symbolType), row.word) << row.symbolType;
    }
}

TEST(QVSymbolTypes, NumbersInTheGapsHaveNoWord) {
    std::set<NSUInteger> known;
    for (const Row &row : table)
        known.insert(row.symbolType);
    for (NSUInteger number = 0; number <= 100; ++number) {
        if (!known.contains(number)) {
            EXPECT_TRUE(QVSymbolTypeToString(number).isNull()) << number;
        }
    }
    EXPECT_TRUE(QVSymbolTypeToString(NSNotFound).isNull());
    EXPECT_TRUE(QVSymbolTypeToString(~NSUInteger(0)).isNull());
}

TEST(QVSymbolTypes, UnknownAndMissingWordsAreNoSymbol) {
    EXPECT_EQ(QVSymbolTypeFromString(u"gadget"), 0u);
    EXPECT_EQ(QVSymbolTypeFromString(u""), 0u);
    EXPECT_EQ(QVSymbolTypeFromString(nullptr), 0u);
}

TEST(QVSymbolTypes, WordsAreComparedWithRegardToCase) {
    EXPECT_EQ(QVSymbolTypeFromString(u"Function"), 0u);
    EXPECT_EQ(QVSymbolTypeFromString(u"function "), 0u);
}

TEST(QVSymbolTypes, PredicatesTestRangesOfTheNumbering) {
    EXPECT_EQ(stretches(QVSymbolTypeIsType), "1-9");
    EXPECT_EQ(stretches(QVSymbolTypeIsFunction), "10-19");
    EXPECT_EQ(stretches(QVSymbolTypeIsValue), "20-29");
}

TEST(QVSymbolTypes, AFrameworksTagIsNoTagOnPurpose) {
    EXPECT_EQ(stretches(QVSymbolTypeIsTag), "60-78");
    EXPECT_FALSE(QVSymbolTypeIsTag(QVSymbolTypeTagFramework));
}

TEST(QVSymbolTypes, AnyThreadMayBeTheFirstToAsk) {
    std::vector<NSUInteger> answers(4, 0);
    std::vector<std::thread> threads;
    for (NSUInteger &answer : answers)
        threads.emplace_back([&answer] { answer = QVSymbolTypeFromString(u"tag-li"); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(answers, std::vector<NSUInteger>(4, 73));
}
