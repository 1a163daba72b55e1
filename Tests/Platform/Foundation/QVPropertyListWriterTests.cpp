#include "Platform/Foundation/QVPropertyListWriter.h"

#include "Platform/Foundation/QVPropertyListCheck.h"
#include "Tests/Support/PropertyLists.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

using Entry = QVPropertyListWriter::Entry;
using Value = QVPropertyListWriter::Value;

namespace {

/// What the writer must make of these objects, in this order, with one-byte offsets.
std::string fileOf(std::vector<std::string> objects, std::uint64_t top) {
    return RawPropertyList{std::move(objects), top, 1, 1}.file();
}

} // namespace

TEST(QVPropertyListWriter, ValuesOfEveryKindAreWrittenInTheirShortestForm) {
    QVPropertyListWriter writer;
    const Value values[] = {
        writer.addBool(false),   writer.addBool(true),        writer.addInteger(255),
        writer.addInteger(256),  writer.addInteger(-1),       writer.addReal(1.0),
        writer.addString(u"ab"), writer.addString(u"\u4E2D"), writer.addData(NSData(std::string_view("xy"))),
        writer.addUID(300),
    };
    const Value top = writer.addArray(values);
    EXPECT_EQ(
        writer.dataWithTop(top).view(),
        fileOf({"\x08", "\x09", "\x10\xFF", std::string("\x11\x01\0", 3), "\x13" + std::string(8, '\xFF'),
                std::string("\x23\x3F\xF0\0\0\0\0\0\0", 9),
                "\x52"
                "ab",
                "\x61\x4E\x2D", "\x42xy", "\x81\x01\x2C", std::string("\xAA\0\1\2\3\4\5\6\7\x08\x09", 11)},
               10));
}

TEST(QVPropertyListWriter, ADictionaryListsItsKeysBeforeItsValues) {
    QVPropertyListWriter writer;
    const Entry entries[] = {{writer.addString(u"a"), writer.addBool(true)},
                             {writer.addString(u"b"), writer.addUID(0)}};
    const Value top = writer.addDictionary(entries);
    EXPECT_EQ(writer.dataWithTop(top).view(),
              fileOf({"\x51"
                      "a",
                      "\x09",
                      "\x51"
                      "b",
                      std::string("\x80\0", 2), std::string("\xD2\0\2\1\3", 5)},
                     4));
}

TEST(QVPropertyListWriter, EqualNumbersAndTextsAreWrittenOnce) {
    QVPropertyListWriter writer;
    EXPECT_EQ(writer.addString(u"a"), writer.addString(u"a"));
    EXPECT_EQ(writer.addInteger(1), writer.addInteger(1));
    EXPECT_EQ(writer.addUID(1), writer.addUID(1));
    // A number and a reference of the same value are not equal.
    EXPECT_NE(writer.addInteger(1), writer.addUID(1));
}

TEST(QVPropertyListWriter, LengthsFromFifteenOnStandInANumberOfTheirOwn) {
    QVPropertyListWriter writer;
    const Value top = writer.addString(std::u16string(15, u'x'));
    EXPECT_EQ(writer.dataWithTop(top).view(), fileOf({"\x5F\x10\x0F" + std::string(15, 'x')}, 0));
    QVPropertyListWriter shorter;
    EXPECT_EQ(shorter.dataWithTop(shorter.addString(std::u16string(14, u'x'))).view(),
              fileOf({"\x5E" + std::string(14, 'x')}, 0));
}

TEST(QVPropertyListWriter, ReferencesGrowWithTheNumberOfValues) {
    for (const std::size_t count : {255u, 256u, 70000u}) {
        QVPropertyListWriter writer;
        std::vector<Value> values;
        for (std::size_t index = 0; index < count; ++index)
            values.push_back(writer.addInteger(static_cast<NSInteger>(index)));
        const NSData data = writer.dataWithTop(writer.addArray(values));
        // With the array itself there are `count` + 1 values, numbered from 0.
        EXPECT_EQ(data.bytes()[data.length() - 25], count < 256 ? 1 : count < 65536 ? 2 : 4) << count;
        EXPECT_EQ(QVProblemOfBinaryPropertyList(data.bytes()), nullptr);
    }
}
