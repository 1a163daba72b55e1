#include "Platform/Foundation/NSAttributedString+Coding.h"

#include "Platform/AppKit/NSShadow.h"
#include "Tests/Support/CodingFixtures.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

/// Has an attributed string and attributes among its fields.
class Holder final : public NSObject, public NSSecureCoding {
public:
    std::shared_ptr<const NSAttributedString> text;
    std::optional<NSAttributes> attributes;
    bool acceptsShadows = true;

    static const NSCodingClass &codingClass() {
        static const NSCodingClass codingClass{u"Holder", nullptr, +[]() -> std::shared_ptr<NSSecureCoding> {
                                                   return std::make_shared<Holder>();
                                               }};
        return codingClass;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override {
        if (text)
            qv_encodeAttributedString(coder, *text, u"text");
        if (attributes)
            qv_encodeAttributes(coder, *attributes, u"attributes");
        coder.encodeBool(acceptsShadows, u"acceptsShadows");
    }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        acceptsShadows = coder.decodeBool(u"acceptsShadows");
        const std::array shadows{&NSShadow::codingClass()};
        const std::span<const NSCodingClass *const> accepted(shadows.data(), acceptsShadows ? 1 : 0);
        text = qv_decodeAttributedString(coder, u"text", accepted);
        attributes = qv_decodeAttributes(coder, u"attributes", accepted);
        return self;
    }
};

std::shared_ptr<const NSAttributedString>
throughArchive(const std::shared_ptr<const NSAttributedString> &text, bool acceptsShadows = true) {
    const auto holder = std::make_shared<Holder>();
    holder->text = text;
    holder->acceptsShadows = acceptsShadows;
    const auto read = test::throughArchive(holder);
    return read ? read->text : nullptr;
}

/// Of a text in whose place a test writes whatever it wants.
std::shared_ptr<const NSAttributedString> readForgedText(std::function<void(NSCoder &coder)> write) {
    static const NSCodingClass stringClass{u"NSAttributedString", nullptr, nullptr};
    const auto holder = test::readForged<Holder>([&](NSCoder &coder) {
        coder.encodeObject(std::make_shared<const test::Forged>(stringClass, write), u"text");
    });
    return holder ? holder->text : nullptr;
}

std::shared_ptr<const test::Forged> forgedAttributes(NSInteger value) {
    static const NSCodingClass attributesClass{u"NSAttributes", nullptr, nullptr};
    return std::make_shared<const test::Forged>(attributesClass, [value](NSCoder &coder) {
        coder.encodeValueDictionary(std::map<NSString, NSCodingValue>{{u"a", value}}, u"NSValues");
    });
}

void encodeForged(NSCoder &coder, const NSString &text, std::vector<std::uint8_t> runs) {
    coder.encodeString(text, u"NSString");
    coder.encodeObjectArray(
        std::vector<std::shared_ptr<const NSSecureCoding>>{forgedAttributes(1), forgedAttributes(2)},
        u"NSAttributes");
    coder.encodeData(runs, u"NSAttributeInfo");
}

const NSAttributeKey keyA(u"a");

} // namespace

TEST(NSAttributedStringCoding, TextAndAttributesComeBack) {
    const auto shadow = std::make_shared<NSShadow>();
    shadow->setShadowBlurRadius(3);
    const auto text =
        NSMutableAttributedString::initWithString(std::u16string_view(u"a\r\n\xD83D\xDE00z\0y", 8));
    text->setAttributes({{keyA, NSNull()}, {NSShadowAttributeName, shadow}}, {0, 1});
    text->setAttributes({{keyA, 7}, {NSFontAttributeName, u"Sans"}}, {1, 2});
    text->setAttributes({{keyA, 0.5}}, {4, 1});
    const auto read = throughArchive(text);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isEqualToAttributedString(*text)) << read->description().UTF8String();
}

TEST(NSAttributedStringCoding, AnEmptyTextIsNotNone) {
    const auto read = throughArchive(NSAttributedString::initWithString(u""));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->length(), 0u);
    EXPECT_EQ(throughArchive(nullptr), nullptr);
}

TEST(NSAttributedStringCoding, WhatCantBeArchivedIsLeftOut) {
    class Plain final : public NSObject {};
    const auto text = NSAttributedString::initWithString(
        u"ab", {{keyA, std::make_shared<Plain>()}, {NSFontAttributeName, u"Sans"}});
    EXPECT_EQ(throughArchive(text)->description(), u"ab{NSFont = Sans}");
}

TEST(NSAttributedStringCoding, AttributesWithAClassThatIsNotAcceptedReadAsEmpty) {
    const auto text = NSMutableAttributedString::initWithString(u"abc", {{keyA, 1}});
    text->addAttribute(NSShadowAttributeName, std::make_shared<NSShadow>(), {1, 1});
    EXPECT_EQ(throughArchive(text, false)->description(), u"a{a = 1}b{}c{a = 1}");
}

TEST(NSAttributedStringCoding, TheTextIsThatOfTheTimeItWasEncoded) {
    class Changing final : public NSSecureCoding {
    public:
        const NSCodingClass &classForCoder() const override { return Holder::codingClass(); }
        void encodeWithCoder(NSCoder &coder) const override {
            const auto text = NSMutableAttributedString::initWithString(u"before");
            qv_encodeAttributedString(coder, *text, u"text");
            text->replaceCharactersInRange({0, 6}, u"after");
        }
        std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &, std::shared_ptr<NSSecureCoding>) override {
            return nullptr;
        }
    };
    const auto holder = NSKeyedUnarchiver::unarchivedObjectOfClass<Holder>(
        NSKeyedArchiver::archivedDataWithRootObject(std::make_shared<const Changing>()));
    ASSERT_TRUE(holder && holder->text);
    EXPECT_EQ(holder->text->description(), u"before{}");
}

TEST(NSAttributedStringCoding, RunsOfForgedArchivesAreCutToTheText) {
    const auto picture = [](std::vector<std::uint8_t> runs) {
        const auto text =
            readForgedText([&](NSCoder &coder) { encodeForged(coder, u"abcd", std::move(runs)); });
        return text ? text->description() : NSString();
    };
    EXPECT_EQ(picture({2, 0, 2, 1}), u"ab{a = 1}cd{a = 2}");
    // Too long, too short, broken off, empty ones.
    EXPECT_EQ(picture({2, 0, 100, 1, 3, 0}), u"ab{a = 1}cd{a = 2}");
    EXPECT_EQ(picture({1, 1}), u"a{a = 2}bcd{}");
    EXPECT_EQ(picture({2, 1, 2}), u"ab{a = 2}cd{a = 1}");
    EXPECT_EQ(picture({0, 0, 0, 1, 4, 1}), u"abcd{a = 2}");
    EXPECT_EQ(picture({}), u"abcd{}");
    // A dictionary that isn't there.
    EXPECT_EQ(picture({2, 2, 2, 0}), u"ab{}cd{a = 1}");
    // Numbers of more than 64 bits.
    EXPECT_EQ(picture({0x81, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01, 1, 3, 0}),
              u"a{a = 2}bcd{a = 1}");
    EXPECT_EQ(picture({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0}), u"abcd{a = 1}");
}

TEST(NSAttributedStringCoding, AForgedArchiveWithoutAnyPartOfATextIsAnEmptyText) {
    const auto text = readForgedText([](NSCoder &coder) {
        coder.encodeInteger(3, u"NSString");
        coder.encodeString(u"x", u"NSAttributes");
        coder.encodeString(u"y", u"NSAttributeInfo");
    });
    ASSERT_TRUE(text);
    EXPECT_EQ(text->length(), 0u);
}

TEST(NSAttributedStringCoding, ManyRunsOfAFewLooksComeBack) {
    std::mt19937 random(5);
    const auto text = NSMutableAttributedString::initWithString(std::u16string(50'000, u'x'));
    for (int run = 0; run < 3000; ++run) {
        const NSUInteger location = random() % text->length();
        text->setAttributes({{keyA, random() % 300}},
                            {location, std::min<NSUInteger>(random() % 500, text->length() - location)});
    }
    const auto read = throughArchive(text);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isEqualToAttributedString(*text));
}

TEST(NSAttributedStringCoding, AttributesComeBackAloneToo) {
    const auto attributes = [](std::optional<NSAttributes> written, bool acceptsShadows = true) {
        const auto holder = std::make_shared<Holder>();
        holder->attributes = std::move(written);
        holder->acceptsShadows = acceptsShadows;
        return test::throughArchive(holder)->attributes;
    };
    class Plain final : public NSObject {};
    const NSAttributes values{{keyA, NSNull()}, {NSFontAttributeName, u"Sans"}, {NSKernAttributeName, 0.5}};
    EXPECT_EQ(attributes(values), values);
    EXPECT_EQ(attributes(NSAttributes()), NSAttributes());
    EXPECT_EQ(attributes(std::nullopt), std::nullopt);
    EXPECT_EQ(attributes(NSAttributes{{keyA, std::make_shared<Plain>()}}), NSAttributes());
    const NSAttributes shadow{{NSShadowAttributeName, std::make_shared<NSShadow>()}};
    EXPECT_EQ(attributes(shadow)->count(), 1u);
    EXPECT_EQ(attributes(shadow, false), std::nullopt);
}
