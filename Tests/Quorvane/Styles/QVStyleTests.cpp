#include "Quorvane/Styles/QVStyle.h"

#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

std::shared_ptr<QVStyle> styleFor(const char16_t *selector) {
    auto style = std::make_shared<QVStyle>();
    style->setSelector(QVSimpleSelector::simpleSelectorWithString(selector));
    return style;
}

std::shared_ptr<QVStyle> archivedAndReadBack(const std::shared_ptr<QVStyle> &style) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<QVStyle>(
        NSKeyedArchiver::archivedDataWithRootObject(style));
}

const std::vector<NSString> &keyAssertion() {
    static const std::vector<NSString> messages{u"Invalid parameter not satisfying: key != nil"};
    return messages;
}

} // namespace

TEST(QVStyleAttributes, KeysAreNamedLikeTheirConstants) {
    EXPECT_EQ(QVStyleAttributeBackgroundColor.string(), u"BackgroundColor");
    EXPECT_EQ(QVStyleAttributeBackgroundGradient.string(), u"BackgroundGradient");
    EXPECT_EQ(QVStyleAttributeTextColor.string(), u"TextColor");
    EXPECT_EQ(QVStyleAttributeFontWeight.string(), u"FontWeight");
    EXPECT_EQ(QVStyleAttributeFontStyle.string(), u"FontStyle");
    EXPECT_EQ(QVStyleAttributeTextShadow.string(), u"TextShadow");
    EXPECT_EQ(QVStyleAttributeTextDecoration.string(), u"TextDecoration");
    EXPECT_EQ(QVStyleAttributeTextDecorationStyle.string(), u"TextDecorationStyle");
    EXPECT_EQ(QVStyleAttributeTextDecorationColor.string(), u"TextDecorationColor");
    EXPECT_EQ(QVStyleAttributeBorderColor.string(), u"BorderColor");
    EXPECT_EQ(QVStyleAttributeBorderGradient.string(), u"BorderGradient");
    EXPECT_EQ(QVStyleAttributeBoxShadow.string(), u"BoxShadow");
    EXPECT_EQ(QVStyleAttributeInsetShadow.string(), u"InsetShadow");
}

TEST(QVStyle, SaysNothingAtFirst) {
    const QVStyle style;
    EXPECT_TRUE(style.attributes().empty());
    EXPECT_TRUE(style.properties().empty());
    EXPECT_EQ(style.selector(), nullptr);
    EXPECT_EQ(style.fontWeight(), std::nullopt);
    EXPECT_FALSE(style.isNullForAttribute(QVStyleAttributeFontWeight));
    EXPECT_EQ(style.numberForAttribute(QVStyleAttributeFontWeight), nullptr);
    EXPECT_EQ(style.lineNumber(), std::nullopt);
    EXPECT_EQ(style.columnNumber(), std::nullopt);
    EXPECT_TRUE(style.fileURL().isNull());
}

TEST(QVStyle, NumbersAreKeptUnderTheirNames) {
    QVStyle style;
    style.setFontWeight(700);
    style.setFontStyle(QVStyleFontStyleItalic);
    style.setTextDecoration(QVStyleTextDecorationUnderline | QVStyleTextDecorationLineThrough);
    style.setTextDecorationStyle(QVStyleTextDecorationStyleSingle | QVStyleTextDecorationStylePatternDot);
    EXPECT_EQ(style.fontWeight(), 700);
    EXPECT_EQ(style.fontStyle(), 1);
    EXPECT_EQ(style.textDecoration(), 5);
    EXPECT_EQ(style.textDecorationStyle(), 257);
    const QVStyle::Attributes expected{{u"FontWeight", NSInteger(700)},
                                       {u"FontStyle", NSInteger(1)},
                                       {u"TextDecoration", NSInteger(5)},
                                       {u"TextDecorationStyle", NSInteger(257)}};
    EXPECT_TRUE(style.attributes() == expected);
}

TEST(QVStyle, SettingNoNumberRemovesTheAttribute) {
    QVStyle style;
    style.setFontWeight(700);
    style.setFontWeight(std::nullopt);
    EXPECT_TRUE(style.attributes().empty());
    style.setNumber(std::nullopt, QVStyleAttributeFontStyle);
    EXPECT_TRUE(style.attributes().empty());
}

TEST(QVStyle, TheNullMarkerReadsAsNullAndAsNoNumber) {
    QVStyle style;
    style.setFontWeight(700);
    style.setNull(true, QVStyleAttributeFontWeight);
    EXPECT_TRUE(style.isNullForAttribute(QVStyleAttributeFontWeight));
    EXPECT_EQ(style.fontWeight(), std::nullopt);
    style.setNull(false, QVStyleAttributeFontWeight);
    EXPECT_FALSE(style.isNullForAttribute(QVStyleAttributeFontWeight));
    EXPECT_TRUE(style.attributes().empty());
}

TEST(QVStyle, UnsettingTheNullMarkerRemovesAValueToo) {
    QVStyle style;
    style.setFontWeight(700);
    style.setNull(false, QVStyleAttributeFontWeight);
    EXPECT_TRUE(style.attributes().empty());
}

// Callers ask for the marker first; that this getter hands it out is meant.
TEST(QVStyle, ANumberIsWhateverIsStoredTheMarkerIncluded) {
    QVStyle style;
    style.setNumber(3, u"Mine");
    ASSERT_TRUE(style.numberForAttribute(u"Mine"));
    EXPECT_TRUE(*style.numberForAttribute(u"Mine") == QVStyleValue(NSInteger(3)));
    style.setNull(true, u"Mine");
    ASSERT_TRUE(style.numberForAttribute(u"Mine"));
    EXPECT_TRUE(*style.numberForAttribute(u"Mine") == QVStyleValue(QVStyleNull()));
}

TEST(QVStyle, ANullKeyIsAProgrammingError) {
    QVStyle style;
    {
        const test::AssertionRecorder assertions;
        EXPECT_EQ(style.numberForAttribute(nullptr), nullptr);
        EXPECT_EQ(assertions.messages(), keyAssertion());
    }
    {
        const test::AssertionRecorder assertions;
        style.setNumber(1, nullptr);
        EXPECT_EQ(assertions.messages(), keyAssertion());
    }
    {
        const test::AssertionRecorder assertions;
        EXPECT_FALSE(style.isNullForAttribute(nullptr));
        EXPECT_EQ(assertions.messages(), keyAssertion());
    }
    {
        const test::AssertionRecorder assertions;
        style.setNull(true, nullptr);
        EXPECT_EQ(assertions.messages(), keyAssertion());
    }
    EXPECT_TRUE(style.attributes().empty());
}

TEST(QVStyle, OrdersBySpecificityOfTheSelector) {
    EXPECT_EQ(styleFor(u"a")->compare(*styleFor(u"b.c")), NSOrderedAscending);
    EXPECT_EQ(styleFor(u"b.c")->compare(*styleFor(u"a")), NSOrderedDescending);
    EXPECT_EQ(styleFor(u"a.b")->compare(*styleFor(u"c.d")), NSOrderedSame);
}

TEST(QVStyle, WithoutASelectorItOrdersLikeTheUniversalOne) {
    const QVStyle merged;
    EXPECT_EQ(merged.compare(QVStyle()), NSOrderedSame);
    EXPECT_EQ(merged.compare(*styleFor(u"*")), NSOrderedSame);
    EXPECT_EQ(merged.compare(*styleFor(u"a")), NSOrderedAscending);
    EXPECT_EQ(styleFor(u"a")->compare(merged), NSOrderedDescending);
}

TEST(QVStyle, MergingLetsLaterAttributesReplaceEarlierOnes) {
    const auto first = styleFor(u"a");
    first->setProperties({{u"font-weight", u"bold"}});
    first->setFontWeight(700);
    first->setFontStyle(1);
    const auto second = styleFor(u"b");
    second->setFontWeight(400);
    second->setTextDecoration(1);

    const auto merged = QVStyle::styleByResolvingStyles({first, second});
    EXPECT_EQ(merged->fontWeight(), 400);
    EXPECT_EQ(merged->fontStyle(), 1);
    EXPECT_EQ(merged->textDecoration(), 1);
    EXPECT_EQ(merged->selector(), nullptr);
    EXPECT_TRUE(merged->properties().empty());
    EXPECT_EQ(first->fontWeight(), 700);
    EXPECT_EQ(QVStyle::styleByResolvingStyles({second, first})->fontWeight(), 700);
}

TEST(QVStyle, MergingKeepsALaterNullMarkerOverAnEarlierValue) {
    const auto first = styleFor(u"a");
    first->setFontWeight(700);
    const auto second = styleFor(u"b");
    second->setNull(true, QVStyleAttributeFontWeight);
    const auto merged = QVStyle::styleByResolvingStyles({first, second});
    EXPECT_TRUE(merged->isNullForAttribute(QVStyleAttributeFontWeight));
    EXPECT_EQ(merged->fontWeight(), std::nullopt);
    EXPECT_EQ(QVStyle::styleByResolvingStyles({second, first})->fontWeight(), 700);
}

TEST(QVStyle, MergingNothingGivesAStyleThatSaysNothing) {
    const auto merged = QVStyle::styleByResolvingStyles({});
    ASSERT_TRUE(merged);
    EXPECT_TRUE(merged->attributes().empty());
}

TEST(QVStyle, ACopyHasSelectorPropertiesAndAttributesAlone) {
    const auto style = styleFor(u"a");
    style->setProperties({{u"font-weight", u"bold"}});
    style->setFontWeight(700);
    style->setFileURL(NSURL::fileURLWithPath(u"/theme"));
    style->setLineNumber(3);
    style->setColumnNumber(4);

    const auto copy = style->copy();
    EXPECT_EQ(copy->selector(), style->selector());
    EXPECT_EQ(copy->properties(), style->properties());
    EXPECT_TRUE(copy->attributes() == style->attributes());
    EXPECT_TRUE(copy->fileURL().isNull());
    EXPECT_EQ(copy->lineNumber(), std::nullopt);
    EXPECT_EQ(copy->columnNumber(), std::nullopt);
    copy->setFontWeight(100);
    EXPECT_EQ(style->fontWeight(), 700);
}

TEST(QVStyle, SurvivesAnArchiveWithoutItsPlace) {
    const auto style = styleFor(u"style-archived");
    style->setProperties({{u"font-weight", u"bold"}, {u"-theme-name", u"\"Night\""}});
    style->setFontWeight(700);
    style->setNumber(-3, u"Negative");
    style->setNull(true, QVStyleAttributeTextColor);
    style->setFileURL(NSURL::fileURLWithPath(u"/theme"));
    style->setLineNumber(3);

    const auto read = archivedAndReadBack(style);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->selector(), style->selector());
    EXPECT_EQ(read->properties(), style->properties());
    EXPECT_EQ(read->attributes().size(), 3u);
    EXPECT_TRUE(read->attributes() == style->attributes());
    EXPECT_TRUE(read->fileURL().isNull());
    EXPECT_EQ(read->lineNumber(), std::nullopt);
}

TEST(QVStyle, ArchivesSelectorPropertiesAndAttributesUnderTheirNames) {
    /// Notes the keys of what a style writes.
    class Keys final : public NSCoder {
    public:
        std::vector<NSString> keys;
        std::map<NSString, NSCodingValue> attributes;

        void encodeObject(const std::shared_ptr<const NSSecureCoding> &value, const NSString &key) override {
            EXPECT_EQ(value->classForCoder().name, NSString(u"QVSimpleSelector"));
            keys.push_back(key);
        }
        void encodeStringDictionary(const std::optional<std::map<NSString, NSString>> &,
                                    const NSString &key) override {
            keys.push_back(key);
        }
        void encodeValueDictionary(const std::optional<std::map<NSString, NSCodingValue>> &values,
                                   const NSString &key) override {
            keys.push_back(key);
            attributes = values.value();
        }
        void failWithError(std::shared_ptr<NSError>) override {}
        std::shared_ptr<NSError> error() const override { return nullptr; }
    } coder;
    const auto style = styleFor(u"a");
    style->setFontWeight(700);
    style->setNull(true, QVStyleAttributeTextColor);
    style->encodeWithCoder(coder);
    EXPECT_EQ(coder.keys, (std::vector<NSString>{u"selector", u"properties", u"attributes"}));
    EXPECT_TRUE(coder.attributes == (std::map<NSString, NSCodingValue>{{u"FontWeight", NSInteger(700)},
                                                                       {u"TextColor", nullptr}}));
}

TEST(QVStyle, AnArchiveMayHoldStringsAndNumbersOfAllKinds) {
    const auto read = test::readForged<QVStyle>([](NSCoder &coder) {
        coder.encodeValueDictionary(
            {{{u"Text", NSString(u"x")}, {u"Real", 700.5}, {u"Flag", true}, {u"Whole", NSInteger(3)}}},
            u"attributes");
    });
    ASSERT_TRUE(read);
    const QVStyle::Attributes expected{
        {u"Text", NSString(u"x")}, {u"Real", 700.5}, {u"Flag", NSInteger(1)}, {u"Whole", NSInteger(3)}};
    EXPECT_TRUE(read->attributes() == expected);
    EXPECT_EQ(read->integerForAttribute(u"Real"), 700);
    EXPECT_EQ(read->integerForAttribute(u"Text"), std::nullopt);
    EXPECT_TRUE(read->properties().empty());
}

// What can't be trusted in one entry is not trusted in the others.
TEST(QVStyle, AnAttributeOfAnotherClassTakesAllOfThemAlong) {
    const auto read = test::readForged<QVStyle>([](NSCoder &coder) {
        coder.encodeStringDictionary({{{u"color", u"red"}}}, u"properties");
        coder.encodeValueDictionary(
            {{{u"FontWeight", NSInteger(700)}, {u"TextColor", std::make_shared<QVStyle>()}}}, u"attributes");
    });
    ASSERT_TRUE(read);
    EXPECT_EQ(read->properties(), (QVStyle::Properties{{u"color", u"red"}}));
    EXPECT_TRUE(read->attributes().empty());
}

TEST(QVStyle, AMergedStyleSurvivesAnArchive) {
    const auto read = archivedAndReadBack(QVStyle::styleByResolvingStyles({styleFor(u"a")}));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->selector(), nullptr);
    EXPECT_TRUE(read->attributes().empty());
}

TEST(QVStyle, DescribesItsSelector) {
    const auto style = styleFor(u"a");
    EXPECT_EQ(style->description(), NSString::stringWithFormat(u"<QVStyle: %p : selector=%@>", style.get(),
                                                               style->selector()->description()));
    const QVStyle merged;
    EXPECT_EQ(merged.description(), NSString::stringWithFormat(u"<QVStyle: %p : selector=(null)>", &merged));
}
