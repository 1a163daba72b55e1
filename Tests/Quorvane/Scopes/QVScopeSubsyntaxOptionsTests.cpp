#include "Quorvane/Scopes/QVScopeSubsyntaxOptions.h"

#include "Quorvane/Scopes/QVScope.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(QVScopeSubsyntaxOptions, SayNothingAtFirst) {
    const auto options = std::make_shared<QVScopeSubsyntaxOptions>();
    EXPECT_FALSE(options->isNoncontiguous() || options->exportsSymbols());
    EXPECT_EQ(options->name(), NSString());
    EXPECT_EQ(options->collection(), NSString());
    EXPECT_EQ(options->captureNumber(), std::nullopt);
    EXPECT_TRUE(options->aliases().empty());
    EXPECT_TRUE(options->cutoffScopes().empty());
}

TEST(QVScopeSubsyntaxOptions, ACopyHasAllValuesAndCopiesOfItsCutoffs) {
    const auto options = std::make_shared<QVScopeSubsyntaxOptions>();
    const auto cutoff = QVScope::scopeWithType(QVScopeTypeCutoff, nullptr, u"end", nullptr, nullptr);
    const std::map<NSString, NSString> aliases{{u"py", u"python"}};
    options->setNoncontiguous(true);
    options->setExportsSymbols(true);
    options->setName(u"n");
    options->setCollection(u"c");
    options->setCaptureNumber(2);
    options->setAliases(aliases);
    options->setCutoffScopes({cutoff});
    const auto copy = options->copy();
    EXPECT_NE(copy, options);
    EXPECT_TRUE(copy->isNoncontiguous() && copy->exportsSymbols());
    EXPECT_EQ(copy->name(), u"n");
    EXPECT_EQ(copy->collection(), u"c");
    EXPECT_EQ(copy->captureNumber(), 2);
    EXPECT_EQ(copy->aliases(), aliases);
    ASSERT_EQ(copy->cutoffScopes().size(), 1u);
    EXPECT_NE(copy->cutoffScopes()[0], cutoff);
    EXPECT_EQ(copy->cutoffScopes()[0]->name(), u"end");
    EXPECT_EQ(copy->cutoffScopes()[0]->type(), QVScopeTypeCutoff);
}
