#include "Quorvane/Symbols/QVSymbolBehaviors.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

struct Row {
    NSUInteger value;
    const char16_t *word;
};

void expectBothWays(const std::vector<Row> &table, NSUInteger (*fromString)(const NSString &),
                    NSString (*toString)(NSUInteger)) {
    for (const Row &row : table) {
        EXPECT_EQ(fromString(row.word), row.value);
        EXPECT_EQ(toString(row.value), row.word);
    }
    EXPECT_EQ(fromString(u"gadget"), 0u);
    EXPECT_EQ(fromString(NSString(table.back().word).uppercaseString()), 0u);
    EXPECT_EQ(fromString(nullptr), 0u);
}

} // namespace

TEST(QVSymbolBehaviors, ScopesFallBackToGlobal) {
    expectBothWays({{0, u"global"}, {1, u"local"}, {2, u"private"}, {3, u"external"}},
                   QVSymbolScopeFromString, QVSymbolScopeToString);
    EXPECT_EQ(QVSymbolScopeToString(4), u"global");
}

TEST(QVSymbolBehaviors, ContextBehaviorsFallBackToNone) {
    expectBothWays({{1, u"subtree"}, {2, u"start"}, {3, u"end"}, {4, u"next"}, {10, u"whitespace"}},
                   QVSymbolContextBehaviorFromString, QVSymbolContextBehaviorToString);
    EXPECT_EQ(QVSymbolContextBehaviorToString(5), u"global");
    EXPECT_EQ(QVSymbolContextBehaviorToString(11), u"global");
}

// The odd word for "none" is meant: it comes back as 0 because no behaviour has it.
TEST(QVSymbolBehaviors, NoContextIsWrittenAsGlobalAndReadBackAsNone) {
    EXPECT_EQ(QVSymbolContextBehaviorToString(0), u"global");
    EXPECT_EQ(QVSymbolContextBehaviorFromString(u"global"), 0u);
}

TEST(QVSymbolBehaviors, UnclosedBehaviorsFallBackToTheParent) {
    expectBothWays({{0, u"extend-parent"}, {1, u"extend-document"}, {2, u"truncate"}},
                   QVSymbolContextUnclosedBehaviorFromString, QVSymbolContextUnclosedBehaviorToString);
    EXPECT_EQ(QVSymbolContextUnclosedBehaviorToString(3), u"extend-parent");
}

TEST(QVSymbolBehaviors, IndentationBehaviorsFallBackToNone) {
    expectBothWays({{0, u"none"}, {1, u"auto"}}, QVSymbolContextIndentationBehaviorFromString,
                   QVSymbolContextIndentationBehaviorToString);
    EXPECT_EQ(QVSymbolContextIndentationBehaviorToString(2), u"none");
}

TEST(QVSymbolBehaviors, LookupBehaviorsFallBackToNone) {
    expectBothWays({{0, u"none"}, {1, u"inherit"}, {2, u"index"}, {3, u"documentation"}, {4, u"dictionary"}},
                   QVSymbolLookupBehaviorFromString, QVSymbolLookupBehaviorToString);
    EXPECT_EQ(QVSymbolLookupBehaviorToString(5), u"none");
}
