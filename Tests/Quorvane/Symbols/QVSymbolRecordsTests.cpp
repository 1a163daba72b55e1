#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/Symbols/QVSymbolAvailability.h"
#include "Quorvane/Symbols/QVSymbolDescriptor.h"
#include "Quorvane/Symbols/QVSymbolFetchRequest.h"
#include "Quorvane/Symbols/QVSymbolFetchResultItem.h"
#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

template <typename T> std::shared_ptr<T> archivedAndReadBack(const std::shared_ptr<T> &object) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<T>(NSKeyedArchiver::archivedDataWithRootObject(object));
}

std::shared_ptr<QVSymbolAvailability> someAvailability() {
    auto availability = std::make_shared<QVSymbolAvailability>();
    availability->setType(7);
    availability->setAvailableVersion(u"10.4");
    availability->setDeprecatedVersion(u"12.0");
    availability->setDescriptiveText(u"Use the other one.");
    return availability;
}

void expectSame(const std::shared_ptr<QVSymbolAvailability> &a,
                const std::shared_ptr<QVSymbolAvailability> &b) {
    ASSERT_TRUE(a);
    EXPECT_NE(a, b);
    EXPECT_EQ(a->type(), b->type());
    EXPECT_EQ(a->availableVersion(), b->availableVersion());
    EXPECT_EQ(a->deprecatedVersion(), b->deprecatedVersion());
    EXPECT_EQ(a->descriptiveText(), b->descriptiveText());
}

void expectSame(const std::shared_ptr<QVSymbolDescriptor> &a, const std::shared_ptr<QVSymbolDescriptor> &b) {
    ASSERT_TRUE(a);
    EXPECT_NE(a, b);
    EXPECT_EQ(a->syntaxName(), b->syntaxName());
    EXPECT_EQ(a->types(), b->types());
    EXPECT_EQ(a->includeSubsyntaxes(), b->includeSubsyntaxes());
}

/// A symbol that knows what every symbol must.
class PlainSymbol : public QVSymbol {
public:
    NSUInteger symbolType() const override { return 11; }
    NSRange range() const override { return {4, 9}; }
    NSString name() const override { return u"draw"; }
};

} // namespace

TEST(QVSymbolAvailability, SurvivesAnArchive) {
    const auto availability = someAvailability();
    expectSame(archivedAndReadBack(availability), availability);
}

TEST(QVSymbolAvailability, MissingTextsStayMissingInAnArchive) {
    const auto availability = std::make_shared<QVSymbolAvailability>();
    availability->setDescriptiveText(u"");
    const auto read = archivedAndReadBack(availability);
    expectSame(read, availability);
    EXPECT_TRUE(read->availableVersion().isNull());
    EXPECT_FALSE(read->descriptiveText().isNull());
}

TEST(QVSymbolAvailability, ACopyHasAllFour) {
    const auto availability = someAvailability();
    const auto copy = availability->copy();
    expectSame(copy, availability);
    copy->setType(8);
    EXPECT_EQ(availability->type(), 7u);
}

TEST(QVSymbolDescriptor, IsMadeWithoutEmbeddedLanguages) {
    const auto descriptor =
        QVSymbolDescriptor::symbolDescriptorForSyntaxName(u"c", std::set<NSUInteger>{2, 10});
    EXPECT_EQ(descriptor->syntaxName(), u"c");
    EXPECT_EQ(descriptor->types(), (std::set<NSUInteger>{2, 10}));
    EXPECT_FALSE(descriptor->includeSubsyntaxes());
}

TEST(QVSymbolDescriptor, SurvivesAnArchive) {
    const auto descriptor =
        QVSymbolDescriptor::symbolDescriptorForSyntaxName(u"c", std::set<NSUInteger>{2, 10});
    descriptor->setIncludeSubsyntaxes(true);
    expectSame(archivedAndReadBack(descriptor), descriptor);
}

TEST(QVSymbolDescriptor, NoTypesAndAnEmptySetOfTypesDifferInAnArchive) {
    const auto unsaid = QVSymbolDescriptor::symbolDescriptorForSyntaxName(nullptr, std::nullopt);
    const auto none = QVSymbolDescriptor::symbolDescriptorForSyntaxName(nullptr, std::set<NSUInteger>());
    EXPECT_EQ(archivedAndReadBack(unsaid)->types(), std::nullopt);
    EXPECT_EQ(archivedAndReadBack(none)->types(), std::set<NSUInteger>());
}

TEST(QVSymbolDescriptor, ACopyHasAllThree) {
    const auto descriptor = QVSymbolDescriptor::symbolDescriptorForSyntaxName(u"c", std::set<NSUInteger>{2});
    descriptor->setIncludeSubsyntaxes(true);
    expectSame(descriptor->copy(), descriptor);
}

TEST(QVSymbolFetchRequest, ACopyHasDescriptorsOfItsOwnAndIsNotCancelled) {
    const auto descriptor = QVSymbolDescriptor::symbolDescriptorForSyntaxName(u"c", std::set<NSUInteger>{2});
    const auto request = std::make_shared<QVSymbolFetchRequest>();
    request->setPattern(u"dr");
    request->setMatchingOptions(6);
    request->setSymbolDescriptors({descriptor});
    request->setUserInfo({{u"project", descriptor}});
    EXPECT_FALSE(request->isCancelled());
    request->cancel();
    EXPECT_TRUE(request->isCancelled());

    const auto copy = request->copy();
    EXPECT_EQ(copy->pattern(), u"dr");
    EXPECT_EQ(copy->matchingOptions(), 6u);
    ASSERT_EQ(copy->symbolDescriptors().size(), 1u);
    expectSame(copy->symbolDescriptors()[0], descriptor);
    EXPECT_EQ(copy->userInfo(), request->userInfo());
    EXPECT_FALSE(copy->isCancelled());
}

TEST(QVSymbolFetchResultItem, KeepsWhatASourceFound) {
    QVSymbolFetchResultItem item;
    const auto symbol = std::make_shared<PlainSymbol>();
    item.setSymbol(symbol);
    item.setMatchingIndexes({0, 1});
    item.setScore(0.5f);
    item.setFileURL(NSURL::fileURLWithPath(u"/a.c"));
    EXPECT_EQ(item.symbol(), symbol);
    EXPECT_TRUE(item.matchingIndexes() == (NSIndexSet{0, 1}));
    EXPECT_EQ(item.score(), 0.5f);
    EXPECT_EQ(item.fileURL().path(), u"/a.c");
}

TEST(QVSymbol, WhatASourceDoesNotKnowIsNull) {
    const PlainSymbol symbol;
    EXPECT_EQ(symbol.symbolScope(), std::nullopt);
    EXPECT_EQ(symbol.nameRange(), std::nullopt);
    EXPECT_EQ(symbol.arguments(), std::nullopt);
    EXPECT_EQ(symbol.availabilities(), std::nullopt);
    EXPECT_EQ(symbol.parent(), nullptr);
    for (const NSString &text :
         {symbol.type(), symbol.defaultValue(), symbol.comment(), symbol.displayName(), symbol.syntaxName()})
        EXPECT_TRUE(text.isNull());
}
