#include "Platform/Foundation/NSAttributedString.h"
#include "Platform/Foundation/NSException.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace quorvane;

namespace {

const NSAttributeKey keyA(u"a");
const NSAttributeKey keyB(u"b");
const NSAttributeKey keyC(u"c");

std::shared_ptr<NSMutableAttributedString> abc() {
    auto string = NSMutableAttributedString::initWithString(u"abc");
    string->setAttributes({{keyA, 1}}, {0, 1});
    string->setAttributes({{keyB, 1}}, {1, 1});
    string->setAttributes({{keyC, 1}}, {2, 1});
    return string;
}

/// One dictionary for each character.
struct Model {
    std::u16string text;
    std::vector<NSAttributes> attributes;

    void replace(NSRange range, std::u16string_view with) {
        NSAttributes inherited;
        if (range.length > 0)
            inherited = attributes[range.location];
        else if (range.location > 0)
            inherited = attributes[range.location - 1];
        else if (!attributes.empty())
            inherited = attributes[0];
        text.replace(range.location, range.length, with);
        const auto at = attributes.begin() + static_cast<std::ptrdiff_t>(range.location);
        const auto next = attributes.erase(at, at + static_cast<std::ptrdiff_t>(range.length));
        attributes.insert(next, with.size(), inherited);
    }
    template <typename Change> void change(NSRange range, Change change) {
        for (NSUInteger index = range.location; index < NSMaxRange(range); ++index)
            attributes[index] = change(attributes[index]);
    }
};

void expectSame(const NSMutableAttributedString &string, const Model &model) {
    ASSERT_EQ(string.string().substringWithRange({0, string.length()}), model.text);
    NSUInteger index = 0;
    while (index < model.text.size()) {
        NSRange range;
        const NSAttributes attributes = string.attributesAtIndex(index, &range);
        // Each run is maximal.
        NSUInteger end = index;
        while (end < model.text.size() && model.attributes[end] == attributes)
            ++end;
        ASSERT_EQ(range, NSMakeRange(index, end - index));
        index = end;
    }
}

/// Counts the brackets, and changes its attributes through the primitives alone.
class Storage final : public NSMutableAttributedString {
public:
    using NSMutableAttributedString::attributesAtIndex;
    using NSMutableAttributedString::replaceCharactersInRange;
    NSUInteger length() const override { return _contents->length(); }
    QVTextReader string() const override { return _contents->string(); }
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *range) const override {
        return _contents->attributesAtIndex(index, range);
    }
    void replaceCharactersInRange(NSRange range, std::u16string_view withString) override {
        _contents->replaceCharactersInRange(range, withString);
    }
    void setAttributes(const NSAttributes &attributes, NSRange range) override {
        ++sets;
        _contents->setAttributes(attributes, range);
    }
    void beginEditing() override { ++depth; }
    void endEditing() override {
        --depth;
        ++brackets;
    }

    int sets = 0;
    int depth = 0;
    int brackets = 0;

private:
    std::shared_ptr<NSMutableAttributedString> _contents = abc();
};

} // namespace

TEST(NSMutableAttributedString, NewCharactersTakeTheAttributesOfTheFirstReplacedOne) {
    const auto string = abc();
    string->replaceCharactersInRange({1, 2}, u"XYZ");
    EXPECT_EQ(string->description(), u"a{a = 1}XYZ{b = 1}");
}

TEST(NSMutableAttributedString, InsertedCharactersTakeTheAttributesOfTheOneBefore) {
    const auto string = abc();
    string->replaceCharactersInRange({1, 0}, u"X");
    string->replaceCharactersInRange({4, 0}, u"Y");
    EXPECT_EQ(string->description(), u"aX{a = 1}b{b = 1}cY{c = 1}");
}

TEST(NSMutableAttributedString, CharactersInsertedAtTheFrontTakeTheAttributesOfTheOneBehind) {
    const auto string = abc();
    string->replaceCharactersInRange({0, 0}, u"X");
    EXPECT_EQ(string->description(), u"Xa{a = 1}b{b = 1}c{c = 1}");
}

TEST(NSMutableAttributedString, CharactersInAnEmptyStringHaveNoAttributes) {
    const auto string = abc();
    string->deleteCharactersInRange({0, 3});
    EXPECT_EQ(string->length(), 0u);
    string->replaceCharactersInRange({0, 0}, u"X");
    EXPECT_EQ(string->description(), u"X{}");
}

TEST(NSMutableAttributedString, DeletingJoinsEqualNeighbours) {
    const auto string = NSMutableAttributedString::initWithString(u"abc", {{keyA, 1}});
    string->setAttributes({}, {1, 1});
    string->deleteCharactersInRange({1, 1});
    NSRange range;
    string->attributesAtIndex(0, &range);
    EXPECT_EQ(range, NSMakeRange(0, 2));
}

TEST(NSMutableAttributedString, AddsAndRemovesAttributesOverSeveralRuns) {
    const auto string = abc();
    string->addAttribute(keyA, 5, {0, 2});
    EXPECT_EQ(string->description(), u"a{a = 5}b{a = 5; b = 1}c{c = 1}");
    string->removeAttribute(keyB, {0, 3});
    EXPECT_EQ(string->description(), u"ab{a = 5}c{c = 1}");
    string->addAttributes({{keyA, 5}, {keyC, 1}}, {0, 3});
    EXPECT_EQ(string->description(), u"abc{a = 5; c = 1}");
    string->setAttributes({}, {0, 3});
    EXPECT_EQ(string->description(), u"abc{}");
}

TEST(NSMutableAttributedString, ChangingAnEmptyRangeChangesNothing) {
    const auto string = abc();
    const auto before = NSAttributedString::initWithAttributedString(*string);
    string->addAttribute(keyA, 5, {1, 0});
    string->setAttributes({}, {3, 0});
    string->removeAttribute(keyA, {0, 0});
    EXPECT_TRUE(string->isEqualToAttributedString(*before));
}

TEST(NSMutableAttributedString, InsertedAttributedTextBringsItsOwnAttributes) {
    const auto string = abc();
    string->insertAttributedString(*NSAttributedString::initWithString(u"X"), 1);
    string->appendAttributedString(*NSAttributedString::initWithString(u"Y", {{keyB, 2}}));
    EXPECT_EQ(string->description(), u"a{a = 1}X{}b{b = 1}c{c = 1}Y{b = 2}");
    string->replaceCharactersInRange({0, 4}, *NSAttributedString::initWithString(u""));
    EXPECT_EQ(string->description(), u"Y{b = 2}");
    string->setAttributedString(*abc());
    EXPECT_TRUE(string->isEqualToAttributedString(*abc()));
}

TEST(NSMutableAttributedString, NewCharactersGetTheGivenAttributes) {
    const auto string = abc();
    Storage storage;
    for (NSMutableAttributedString *const each :
         {string.get(), static_cast<NSMutableAttributedString *>(&storage)}) {
        each->replaceCharactersInRangeWithAttributes({1, 0}, u"XY", {{keyA, 1}});
        EXPECT_EQ(each->description(), u"aXY{a = 1}b{b = 1}c{c = 1}");
        each->replaceCharactersInRangeWithAttributes({2, 3}, u"Z", {{keyC, 2}});
        EXPECT_EQ(each->description(), u"aX{a = 1}Z{c = 2}");
        each->replaceCharactersInRangeWithAttributes({3, 0}, u"", {{keyB, 5}});
        each->replaceCharactersInRangeWithAttributes({0, 2}, u"", {{keyB, 5}});
        EXPECT_EQ(each->description(), u"Z{c = 2}");
        each->replaceCharactersInRangeWithAttributes({0, 0}, u"Q", {});
        EXPECT_EQ(each->description(), u"Q{}Z{c = 2}");
    }
}

TEST(NSMutableAttributedString, CanBePutIntoItself) {
    const auto string = abc();
    string->insertAttributedString(*string, 1);
    EXPECT_EQ(string->description(), u"aa{a = 1}b{b = 1}c{c = 1}b{b = 1}c{c = 1}");
}

TEST(NSMutableAttributedString, ReplacesTextByAPieceOfItself) {
    const auto string = NSMutableAttributedString::initWithString(u"abcdef");
    string->replaceCharactersInRange({0, 1}, string->string().contiguousView().substr(1, 4));
    EXPECT_EQ(string->string().substringWithRange({0, 9}), u"bcdebcdef");
}

TEST(NSMutableAttributedString, CanBePutIntoItselfWhereverItWasEditedLast) {
    for (NSUInteger edited = 0; edited <= 3; ++edited) {
        SCOPED_TRACE(edited);
        const auto string = abc();
        string->replaceCharactersInRange({edited, 0}, u"X");
        string->deleteCharactersInRange({edited, 1});
        string->replaceCharactersInRange({1, 1}, *string);
        EXPECT_EQ(string->description(), u"aa{a = 1}b{b = 1}cc{c = 1}");
    }
}

TEST(NSMutableAttributedString, StandsInTwoPiecesBehindAnEditAndReadsAsOne) {
    // Between CR and LF, inside a pair of surrogates, and between a letter and its accent.
    const std::u16string_view text = u"a\r\n\xD83D\xDE00"
                                     u"e\u0301z";
    for (NSUInteger gap = 0; gap <= text.size(); ++gap) {
        SCOPED_TRACE(gap);
        const auto string = NSMutableAttributedString::initWithString(text);
        string->replaceCharactersInRange({gap, 0}, u"X");
        string->deleteCharactersInRange({gap, 1});
        EXPECT_EQ(string->string().isContiguous(), gap == 0 || gap == text.size());
        EXPECT_EQ(string->string().substringWithRange({0, text.size()}), text);
        for (NSUInteger index = 0; index < text.size(); ++index)
            EXPECT_EQ(string->string().characterAtIndex(index), text[index]);
        EXPECT_TRUE(string->isEqualToAttributedString(*NSAttributedString::initWithString(text)));
        EXPECT_EQ(string->hash(), NSAttributedString::initWithString(text)->hash());
        const auto copy = NSMutableAttributedString::initWithAttributedString(*string);
        EXPECT_EQ(copy->string().substringWithRange({0, text.size()}), text);
        EXPECT_EQ(string->attributedSubstringFromRange({1, 5})->string().substringWithRange({0, 5}),
                  text.substr(1, 5));
    }
}

TEST(NSMutableAttributedString, ACopyChangesByItself) {
    const auto string = abc();
    const auto copy = NSMutableAttributedString::initWithAttributedString(*string);
    copy->replaceCharactersInRange({1, 1}, u"XY");
    copy->setAttributes({}, {0, 1});
    EXPECT_EQ(string->description(), u"a{a = 1}b{b = 1}c{c = 1}");
    EXPECT_EQ(copy->description(), u"a{}XY{b = 1}c{c = 1}");
}

TEST(NSMutableAttributedString, SettingTheAttributesOfAnotherRunOfItIsSafe) {
    const auto string = abc();
    string->setAttributes(string->attributesAtIndex(2), {0, 2});
    EXPECT_EQ(string->description(), u"abc{c = 1}");
}

TEST(NSMutableAttributedString, ChangesOutsideRaiseRangeExceptionsAndChangeNothing) {
    const auto string = abc();
    const auto expectRangeException = [&](auto change) {
        try {
            change();
            ADD_FAILURE() << "no exception";
        } catch (const NSException &exception) {
            EXPECT_EQ(exception.name(), NSRangeException);
        }
    };
    expectRangeException([&] { string->replaceCharactersInRange({2, 2}, u"x"); });
    expectRangeException([&] { string->replaceCharactersInRange({4, 0}, u"x"); });
    expectRangeException([&] { string->replaceCharactersInRangeWithAttributes({3, 1}, u"x", {}); });
    expectRangeException([&] { string->setAttributes({}, {0, 4}); });
    expectRangeException([&] { string->addAttribute(keyA, 1, {3, 1}); });
    expectRangeException([&] { string->removeAttribute(keyA, {NSNotFound, 1}); });
    expectRangeException([&] { string->replaceCharactersInRange({3, 1}, *abc()); });
    EXPECT_TRUE(string->isEqualToAttributedString(*abc()));
}

TEST(NSMutableAttributedString, AStorageOfItsOwnChangesThroughItsPrimitivesInsideOfABracket) {
    Storage storage;
    storage.addAttribute(keyA, 1, {0, 3});
    // The first run has it already.
    EXPECT_EQ(storage.sets, 2);
    EXPECT_EQ(storage.brackets, 1);
    EXPECT_EQ(storage.depth, 0);
    EXPECT_EQ(storage.description(), u"a{a = 1}b{a = 1; b = 1}c{a = 1; c = 1}");
    storage.replaceCharactersInRange({0, 1}, *NSAttributedString::initWithString(u"XY"));
    EXPECT_EQ(storage.brackets, 2);
    EXPECT_EQ(storage.description(), u"XY{}b{a = 1; b = 1}c{a = 1; c = 1}");
}

TEST(NSMutableAttributedString, BehavesAsOneDictionaryForEachCharacter) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](NSUInteger bound) { return random() % bound; };
        const NSAttributeKey keys[] = {keyA, keyB, keyC};
        const auto string = NSMutableAttributedString::initWithString(u"");
        Model model;
        for (int step = 0; step < 400; ++step) {
            NSRange range;
            range.location = below(model.text.size() + 1);
            range.length = std::min(below(6), model.text.size() - range.location);
            const NSAttributeKey key = keys[below(3)];
            const NSInteger value = static_cast<NSInteger>(below(2));
            switch (below(model.text.size() > 60 ? 6 : 4)) {
            case 0:
            case 4: {
                const std::u16string text(below(4), static_cast<char16_t>(u'a' + below(26)));
                string->replaceCharactersInRange(range, text);
                model.replace(range, text);
                break;
            }
            case 1:
                string->addAttribute(key, value, range);
                model.change(range, [&](const NSAttributes &attributes) {
                    NSMutableAttributes changed(attributes);
                    changed.set(key, value);
                    return changed.attributes();
                });
                break;
            case 2:
                string->removeAttribute(key, range);
                model.change(range, [&](const NSAttributes &attributes) {
                    NSMutableAttributes changed(attributes);
                    changed.remove(key);
                    return changed.attributes();
                });
                break;
            case 3:
                string->setAttributes({{key, value}}, range);
                model.change(range, [&](const NSAttributes &) { return NSAttributes{{key, value}}; });
                break;
            default:
                string->deleteCharactersInRange(range);
                model.replace(range, u"");
            }
            ASSERT_NO_FATAL_FAILURE(expectSame(*string, model)) << "step " << step;
        }
    }
}
