#include "Platform/Foundation/NSKeyedArchiver.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/QVLimits.h"
#include "Tests/Support/ArchiveFixtures.h"
#include "Tests/Support/Recorders.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// An object whose fields the test gives as functions.
class Record final : public NSSecureCoding {
public:
    std::function<void(NSCoder &)> write;
    inline static std::function<void(NSCoder &)> read;

    static const NSCodingClass &codingClass() {
        static constexpr NSCodingClass description{
            u"Record", nullptr,
            []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<Record>(); }};
        return description;
    }
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override { write(coder); }
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override {
        read(coder);
        return self;
    }
};

NSData archive(std::function<void(NSCoder &)> write) {
    auto record = std::make_shared<Record>();
    record->write = std::move(write);
    return NSKeyedArchiver::archivedDataWithRootObject(record);
}

/// Writes fields and reads them back; the reader runs once.
void roundTrip(std::function<void(NSCoder &)> write, std::function<void(NSCoder &)> read) {
    const NSData data = archive(std::move(write));
    int calls = 0;
    Record::read = [&](NSCoder &coder) {
        ++calls;
        read(coder);
    };
    std::shared_ptr<NSError> error;
    EXPECT_NE(NSKeyedUnarchiver::unarchivedObjectOfClass<Record>(data, &error), nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(calls, 1);
    Record::read = nullptr;
}

} // namespace

TEST(NSKeyedArchiver, NumbersComeBackAsTheyWere) {
    static constexpr NSInteger least = std::numeric_limits<NSInteger>::min();
    static constexpr NSInteger most = std::numeric_limits<NSInteger>::max();
    roundTrip(
        [](NSCoder &coder) {
            coder.encodeBool(true, u"yes");
            coder.encodeBool(false, u"no");
            coder.encodeInteger(-1, u"minus one");
            coder.encodeInteger(least, u"least");
            coder.encodeInteger(most, u"most");
            coder.encodeFloat(0.1f, u"float");
            coder.encodeDouble(0.1, u"double");
            coder.encodeDouble(std::numeric_limits<double>::infinity(), u"infinity");
            coder.encodeDouble(std::numeric_limits<double>::quiet_NaN(), u"nan");
            coder.encodeNumber(-7, u"number");
        },
        [](NSCoder &coder) {
            EXPECT_TRUE(coder.decodeBool(u"yes"));
            EXPECT_TRUE(coder.containsValueForKey(u"no"));
            EXPECT_FALSE(coder.decodeBool(u"no"));
            EXPECT_EQ(coder.decodeInteger(u"minus one"), -1);
            EXPECT_EQ(coder.decodeInteger(u"least"), least);
            EXPECT_EQ(coder.decodeInteger(u"most"), most);
            EXPECT_EQ(coder.decodeFloat(u"float"), 0.1f);
            EXPECT_EQ(coder.decodeDouble(u"double"), 0.1);
            EXPECT_EQ(coder.decodeDouble(u"infinity"), std::numeric_limits<double>::infinity());
            EXPECT_TRUE(std::isnan(coder.decodeDouble(u"nan")));
            EXPECT_EQ(coder.decodeNumber(u"number"), -7);
        });
}

TEST(NSKeyedArchiver, NumbersOfAllKindsReadAsEachOther) {
    roundTrip(
        [](NSCoder &coder) {
            coder.encodeBool(true, u"bool");
            coder.encodeInteger(3, u"integer");
            coder.encodeDouble(-2.75, u"double");
        },
        [](NSCoder &coder) {
            EXPECT_EQ(coder.decodeInteger(u"bool"), 1);
            EXPECT_TRUE(coder.decodeBool(u"integer"));
            EXPECT_EQ(coder.decodeDouble(u"integer"), 3.0);
            EXPECT_EQ(coder.decodeInteger(u"double"), -2);
        });
}

TEST(NSKeyedArchiver, ANumberThatDoesNotFitReadsAsNothing) {
    roundTrip(
        [](NSCoder &coder) {
            coder.encodeDouble(0x1p63, u"one too many");
            coder.encodeDouble(-0x1p63, u"least");
            coder.encodeDouble(std::numeric_limits<double>::quiet_NaN(), u"nan");
            coder.encodeDouble(1e300, u"double");
        },
        [](NSCoder &coder) {
            EXPECT_EQ(coder.decodeInteger(u"one too many"), 0);
            EXPECT_EQ(coder.decodeInteger(u"least"), std::numeric_limits<NSInteger>::min());
            EXPECT_EQ(coder.decodeInteger(u"nan"), 0);
            EXPECT_EQ(coder.decodeFloat(u"double"), 0.0f);
        });
}

TEST(NSKeyedArchiver, TextsAndBytesComeBackAsTheyWere) {
    const NSString zero(std::u16string{u'a', 0, u'b'});
    const NSString loneHigh(std::u16string{u'x', 0xD83D});
    const NSString loneLow(std::u16string{0xDE00, u'x'});
    const NSString swapped(std::u16string{0xDE00, 0xD83D});
    const NSData bytes(std::vector<std::uint8_t>{0, 255, 7});
    roundTrip(
        [&](NSCoder &coder) {
            coder.encodeString(u"", u"empty");
            coder.encodeString(u"plain", u"plain");
            coder.encodeString(u"h\u00E9llo \u4E2D \U0001F600", u"wide");
            coder.encodeString(u"$null", u"dollar null");
            coder.encodeString(zero, u"zero");
            coder.encodeString(loneHigh, u"lone high");
            coder.encodeString(loneLow, u"lone low");
            coder.encodeString(swapped, u"swapped");
            coder.encodeData(bytes, u"bytes");
            coder.encodeData(NSData(std::string_view()), u"no bytes");
        },
        [&](NSCoder &coder) {
            EXPECT_EQ(coder.decodeString(u"empty"), u"");
            EXPECT_EQ(coder.decodeString(u"plain"), u"plain");
            EXPECT_EQ(coder.decodeString(u"wide"), u"h\u00E9llo \u4E2D \U0001F600");
            EXPECT_EQ(coder.decodeString(u"dollar null"), u"$null");
            EXPECT_EQ(coder.decodeString(u"zero"), zero);
            EXPECT_EQ(coder.decodeString(u"lone high"), loneHigh);
            EXPECT_EQ(coder.decodeString(u"lone low"), loneLow);
            EXPECT_EQ(coder.decodeString(u"swapped"), swapped);
            EXPECT_EQ(coder.decodeData(u"bytes"), bytes);
            EXPECT_FALSE(coder.decodeData(u"no bytes").isNull());
            EXPECT_EQ(coder.decodeData(u"no bytes").length(), 0u);
        });
}

TEST(NSKeyedArchiver, CollectionsComeBackAsTheyWere) {
    const std::vector<NSString> strings{u"b", u"a", u"b", u""};
    const std::set<NSString> stringSet{u"x", u"y"};
    const std::set<NSUInteger> numbers{0, 5, std::numeric_limits<NSUInteger>::max()};
    const std::map<NSString, NSString> dictionary{{u"k", u"v"}, {u"", u""}};
    const std::vector<double> doubles{0.5, -1, 0};
    roundTrip(
        [&](NSCoder &coder) {
            coder.encodeStrings(strings, u"strings");
            coder.encodeStrings(std::vector<NSString>(), u"no strings");
            coder.encodeStringSet(stringSet, u"string set");
            coder.encodeNumberSet(numbers, u"numbers");
            coder.encodeStringDictionary(dictionary, u"dictionary");
            coder.encodeDoubles(doubles, u"doubles");
            coder.encodeRange(NSRange{3, 4}, u"range");
            coder.encodeRange(NSNotFoundRange, u"nowhere");
        },
        [&](NSCoder &coder) {
            EXPECT_EQ(coder.decodeStrings(u"strings"), strings);
            EXPECT_EQ(coder.decodeStrings(u"no strings"), std::vector<NSString>());
            EXPECT_EQ(coder.decodeStringSet(u"string set"), stringSet);
            EXPECT_EQ(coder.decodeNumberSet(u"numbers"), numbers);
            EXPECT_EQ(coder.decodeStringDictionary(u"dictionary"), dictionary);
            EXPECT_EQ(coder.decodeDoubles(u"doubles"), doubles);
            EXPECT_EQ(coder.decodeRange(u"range"), (NSRange{3, 4}));
            EXPECT_EQ(coder.decodeRange(u"nowhere"), NSNotFoundRange);
        });
}

TEST(NSKeyedArchiver, AMixedDictionaryKeepsTheTypesOfItsValues) {
    const auto leaf = Node::make(u"leaf");
    const std::map<NSString, NSCodingValue> values{
        {u"null", nullptr}, {u"bool", true},      {u"integer", NSInteger(4)},
        {u"double", 0.5},   {u"string", u"text"}, {u"object", leaf},
    };
    roundTrip([&](NSCoder &coder) { coder.encodeValueDictionary(values, u"values"); },
              [&](NSCoder &coder) {
                  const NSCodingClass *accepted[] = {&Record::codingClass(), &Node::codingClass()};
                  const auto decoded = coder.decodeValueDictionary(u"values", accepted);
                  ASSERT_TRUE(decoded);
                  ASSERT_EQ(decoded->size(), 6u);
                  EXPECT_TRUE(std::holds_alternative<std::nullptr_t>(decoded->at(u"null")));
                  EXPECT_EQ(decoded->at(u"bool"), NSCodingValue(true));
                  EXPECT_EQ(decoded->at(u"integer"), NSCodingValue(NSInteger(4)));
                  EXPECT_EQ(decoded->at(u"double"), NSCodingValue(0.5));
                  EXPECT_EQ(decoded->at(u"string"), NSCodingValue(NSString(u"text")));
                  const auto object = std::dynamic_pointer_cast<Node>(
                      std::get<std::shared_ptr<NSSecureCoding>>(decoded->at(u"object")));
                  ASSERT_NE(object, nullptr);
                  EXPECT_EQ(object->name, u"leaf");
                  // An object of another class spoils the whole dictionary.
                  const NSCodingClass *others[] = {&Record::codingClass()};
                  EXPECT_FALSE(coder.decodeValueDictionary(u"values", others));
              });
}

TEST(NSKeyedArchiver, NothingIsWrittenForNullAndReadsAsNothing) {
    roundTrip(
        [](NSCoder &coder) {
            coder.encodeString(nullptr, u"string");
            coder.encodeData(nullptr, u"data");
            coder.encodeObject(nullptr, u"object");
            coder.encodeNumber(std::nullopt, u"number");
            coder.encodeStrings(std::nullopt, u"strings");
            coder.encodeStringSet(std::nullopt, u"string set");
            coder.encodeNumberSet(std::nullopt, u"number set");
            coder.encodeStringDictionary(std::nullopt, u"dictionary");
            coder.encodeDoubles(std::nullopt, u"doubles");
            coder.encodeRange(std::nullopt, u"range");
            coder.encodeValueDictionary(std::nullopt, u"values");
            coder.encodeObjectArray(std::nullopt, u"objects");
            coder.encodeObjectDictionary(std::nullopt, u"object dictionary");
        },
        [](NSCoder &coder) {
            for (const char16_t *key :
                 {u"string", u"data", u"object", u"number", u"strings", u"string set", u"number set",
                  u"dictionary", u"doubles", u"range", u"values", u"objects", u"object dictionary"})
                EXPECT_FALSE(coder.containsValueForKey(key));
            EXPECT_FALSE(coder.decodeBool(u"-"));
            EXPECT_EQ(coder.decodeInteger(u"-"), 0);
            EXPECT_EQ(coder.decodeFloat(u"-"), 0);
            EXPECT_EQ(coder.decodeDouble(u"-"), 0);
            EXPECT_EQ(coder.decodeString(u"string"), NSString());
            EXPECT_TRUE(coder.decodeData(u"data").isNull());
            EXPECT_FALSE(coder.decodeNumber(u"number"));
            EXPECT_FALSE(coder.decodeStrings(u"strings"));
            EXPECT_FALSE(coder.decodeStringSet(u"string set"));
            EXPECT_FALSE(coder.decodeNumberSet(u"number set"));
            EXPECT_FALSE(coder.decodeStringDictionary(u"dictionary"));
            EXPECT_FALSE(coder.decodeDoubles(u"doubles"));
            EXPECT_FALSE(coder.decodeRange(u"range"));
            EXPECT_FALSE(coder.decodeValueDictionary(u"values", {}));
            EXPECT_EQ(coder.decodeObjectOfClass<Node>(u"object"), nullptr);
            EXPECT_FALSE(coder.decodeArrayOfClass<Node>(u"objects"));
            EXPECT_FALSE(coder.decodeDictionaryOfClass<Node>(u"object dictionary"));
        });
}

TEST(NSKeyedArchiver, AWronglyTypedEntryReadsAsNothingAndSpoilsNothingElse) {
    roundTrip(
        [](NSCoder &coder) {
            coder.encodeString(u"text", u"string");
            coder.encodeInteger(4, u"integer");
            coder.encodeStrings(std::vector<NSString>{u"a"}, u"array");
            coder.encodeStringSet(std::set<NSString>{u"a"}, u"set");
            coder.encodeObject(Node::make(u"node"), u"object");
        },
        [](NSCoder &coder) {
            EXPECT_EQ(coder.decodeInteger(u"string"), 0);
            EXPECT_FALSE(coder.decodeBool(u"string"));
            EXPECT_EQ(coder.decodeString(u"integer"), NSString());
            EXPECT_EQ(coder.decodeString(u"object"), NSString());
            EXPECT_TRUE(coder.decodeData(u"string").isNull());
            EXPECT_FALSE(coder.decodeNumber(u"string"));
            EXPECT_FALSE(coder.decodeStrings(u"set"));
            EXPECT_FALSE(coder.decodeStringSet(u"array"));
            EXPECT_FALSE(coder.decodeNumberSet(u"set"));
            EXPECT_FALSE(coder.decodeDoubles(u"array"));
            EXPECT_FALSE(coder.decodeStringDictionary(u"array"));
            EXPECT_FALSE(coder.decodeRange(u"object"));
            EXPECT_EQ(coder.decodeObjectOfClass<Record>(u"object"), nullptr);
            EXPECT_EQ(coder.decodeObjectOfClass<Node>(u"string"), nullptr);
            EXPECT_FALSE(coder.decodeArrayOfClass<Node>(u"array"));
            EXPECT_EQ(coder.decodeString(u"string"), u"text");
            EXPECT_EQ(coder.error(), nullptr);
        });
}

TEST(NSKeyedArchiver, ASecondValueForAKeyTakesTheFirstOnesPlace) {
    roundTrip(
        [](NSCoder &coder) {
            coder.encodeRange(NSRange{1, 2}, u"range");
            coder.encodeStrings(std::vector<NSString>{u"a"}, u"range");
        },
        [](NSCoder &coder) {
            EXPECT_FALSE(coder.decodeRange(u"range"));
            EXPECT_EQ(coder.decodeStrings(u"range"), std::vector<NSString>{u"a"});
        });
}

TEST(NSKeyedArchiver, KeysWithADollarSignAreKeptApartFromTheArchivesOwn) {
    roundTrip([](NSCoder &coder) { coder.encodeString(u"mine", u"$class"); },
              [](NSCoder &coder) {
                  EXPECT_EQ(coder.decodeString(u"$class"), u"mine");
                  EXPECT_FALSE(coder.containsValueForKey(u"class"));
              });
}

TEST(NSKeyedArchiver, ASharedObjectStaysShared) {
    const auto shared = Node::make(u"shared");
    const auto root = Node::make(u"root", {shared, Node::make(u"between", {shared}), shared});
    const auto copy =
        NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(NSKeyedArchiver::archivedDataWithRootObject(root));
    ASSERT_NE(copy, nullptr);
    ASSERT_EQ(copy->children.size(), 3u);
    EXPECT_EQ(copy->children[0]->name, u"shared");
    EXPECT_EQ(copy->children[0], copy->children[2]);
    EXPECT_EQ(copy->children[1]->children.at(0), copy->children[0]);
    EXPECT_EQ(copy->drawing(), u"root(shared between(shared) shared)");
}

TEST(NSKeyedArchiver, ACycleComesBackAsACycle) {
    const auto root = Node::make(u"root", {Node::make(u"child")});
    root->children[0]->back = root;
    const auto copy =
        NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(NSKeyedArchiver::archivedDataWithRootObject(root));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->children.at(0)->back.lock(), copy);
}

TEST(NSKeyedArchiver, EveryReaderGetsTheObjectThatTookAnOthersPlace) {
    const auto a = Interned::named(u"a");
    const auto root = Node::make(u"root");
    root->attachments = {a, Interned::named(u"b"), a};
    const auto copy =
        NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(NSKeyedArchiver::archivedDataWithRootObject(root));
    ASSERT_NE(copy, nullptr);
    ASSERT_EQ(copy->attachments.size(), 3u);
    EXPECT_EQ(copy->attachments[0], a);
    EXPECT_EQ(copy->attachments[1], Interned::named(u"b"));
    EXPECT_EQ(copy->attachments[2], a);
}

TEST(NSKeyedArchiver, AnObjectThatAnswersNullReadsAsNothing) {
    const auto root = Node::make(u"root");
    root->attachments = {Interned::named(u"")};
    root->single = Interned::named(u"");
    const auto copy =
        NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(NSKeyedArchiver::archivedDataWithRootObject(root));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->single, nullptr);
    // One bad entry takes the whole list with it.
    EXPECT_FALSE(copy->hadAttachments);
}

TEST(NSKeyedArchiver, ASubclassStandsForItsBaseOnlyWhereTheBaseNamesIt) {
    const auto special = std::make_shared<SpecialNode>();
    special->name = u"special";
    special->extra = 7;
    const NSData data = NSKeyedArchiver::archivedDataWithRootObject(special);
    const auto copy = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(data);
    ASSERT_NE(std::dynamic_pointer_cast<SpecialNode>(copy), nullptr);
    EXPECT_EQ(std::dynamic_pointer_cast<SpecialNode>(copy)->extra, 7);
    // The other way round it does not.
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<SpecialNode>(
                  NSKeyedArchiver::archivedDataWithRootObject(Node::make(u"plain")), &error),
              nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), NSCocoaErrorDomain);
    EXPECT_EQ(error->code(), 4864);
    EXPECT_EQ(error->localizedDescription(), u"The archive can’t be read: its root can't be read.");
}

TEST(NSKeyedArchiver, AnObjectMadeForOneReaderIsNotHandedToAReaderOfAnotherClass) {
    const auto node = Node::make(u"node");
    roundTrip(
        [&](NSCoder &coder) {
            coder.encodeObject(node, u"first");
            coder.encodeObject(node, u"second");
        },
        [](NSCoder &coder) {
            const auto first = coder.decodeObjectOfClass<Node>(u"first");
            EXPECT_NE(first, nullptr);
            EXPECT_EQ(coder.decodeObjectOfClass<Interned>(u"second"), nullptr);
            EXPECT_EQ(coder.decodeObjectOfClass<Node>(u"second"), first);
        });
}

TEST(NSKeyedArchiver, AnErrorOfAnObjectIsHandedOnAsItIs) {
    const auto failing = Interned::named(u"!fail");
    const auto root = Node::make(u"root");
    root->single = failing;
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(
                  NSKeyedArchiver::archivedDataWithRootObject(root), &error),
              nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), u"InternedErrorDomain");
    EXPECT_EQ(error->code(), 12);
}

TEST(NSKeyedArchiver, AListCanBeTheRoot) {
    const NSData data = NSKeyedArchiver::archivedDataWithRootArray({Node::make(u"a"), Node::make(u"b")});
    const auto copies = NSKeyedUnarchiver::unarchivedArray(Node::codingClass(), data);
    ASSERT_TRUE(copies);
    ASSERT_EQ(copies->size(), 2u);
    EXPECT_EQ(std::dynamic_pointer_cast<Node>(copies->at(1))->name, u"b");

    const auto none = NSKeyedUnarchiver::unarchivedArray(Node::codingClass(),
                                                         NSKeyedArchiver::archivedDataWithRootArray({}));
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->empty());

    std::shared_ptr<NSError> error;
    EXPECT_FALSE(NSKeyedUnarchiver::unarchivedArray(Record::codingClass(), data, &error));
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), 4864);
}

TEST(NSKeyedArchiver, ANullRootCanBeWrittenButIsNoObjectToRead) {
    std::shared_ptr<NSError> error;
    const NSData data = NSKeyedArchiver::archivedDataWithRootObject(nullptr);
    EXPECT_FALSE(data.isNull());
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(data, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), 4864);
}

TEST(NSKeyedArchiver, ANullEntryIsAssertedAndLeftOut) {
    const AssertionRecorder assertions;
    const auto copies = NSKeyedUnarchiver::unarchivedArray(
        Node::codingClass(), NSKeyedArchiver::archivedDataWithRootArray({nullptr, Node::make(u"a")}));
    ASSERT_TRUE(copies);
    EXPECT_EQ(copies->size(), 1u);
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>{u"Invalid parameter not satisfying: object != nil"});
}

TEST(NSKeyedArchiver, EachSideRefusesTheOthersOperations) {
    archive([](NSCoder &coder) { EXPECT_THROW(coder.decodeString(u"key"), NSException); });
    roundTrip([](NSCoder &) {},
              [](NSCoder &coder) {
                  try {
                      coder.encodeInteger(1, u"key");
                      FAIL() << "did not throw";
                  } catch (const NSException &exception) {
                      EXPECT_EQ(exception.name(), NSInvalidArgumentException);
                      EXPECT_EQ(exception.reason(), u"encodeInteger is not for this side of an archive");
                  }
              });
}

TEST(NSKeyedArchiver, AWriterThatFailsGivesNoData) {
    EXPECT_TRUE(
        archive([](NSCoder &coder) { coder.failWithError(NSError::errorWithDomain(u"Mine", 1)); }).isNull());
}

TEST(NSKeyedArchiver, AnExceptionOfAnObjectReachesTheCaller) {
    EXPECT_THROW(archive([](NSCoder &) { throw NSException(u"Mine", u"why"); }), NSException);
    const NSData data = archive([](NSCoder &) {});
    Record::read = [](NSCoder &) { throw NSException(u"Mine", u"why"); };
    EXPECT_THROW(NSKeyedUnarchiver::unarchivedObjectOfClass<Record>(data), NSException);
    Record::read = nullptr;
}

TEST(NSKeyedArchiver, ObjectsNestAsDeepAsTheLimitAndNoDeeper) {
    const auto chain = [](std::size_t length) {
        auto node = Node::make(u"end");
        for (std::size_t count = 1; count < length; ++count)
            node = Node::make(u"", {node});
        return NSKeyedArchiver::archivedDataWithRootObject(node);
    };
    std::shared_ptr<NSError> error;
    EXPECT_NE(NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(chain(limits::archiveNestingDepth), &error),
              nullptr);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(
        NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(chain(limits::archiveNestingDepth + 1), &error),
        nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->code(), 4864);
    EXPECT_EQ(error->localizedDescription(), u"The archive can’t be read: its objects nest too deep.");
}

TEST(NSKeyedArchiver, WritingALongChainTakesNoStack) {
    // Written only: it is far beyond what a reader accepts.
    std::vector<std::shared_ptr<Node>> nodes{Node::make(u"end")};
    for (int count = 0; count < 200000; ++count) {
        nodes.push_back(Node::make(u""));
        nodes.back()->back = nodes[nodes.size() - 2];
    }
    EXPECT_FALSE(NSKeyedArchiver::archivedDataWithRootObject(nodes.back()).isNull());
}
