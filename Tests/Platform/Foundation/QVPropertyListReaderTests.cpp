#include "Platform/Foundation/QVPropertyListReader.h"

#include "Platform/Foundation/QVPropertyListCheck.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/PropertyLists.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

using namespace std::string_literals;

using Kind = QVPropertyListReader::Kind;

namespace {

/// A file with its reader. The files are good; the reader relies on it.
class File {
public:
    explicit File(RawPropertyList list) : _data(list.data()), _reader(_data.bytes()) {
        EXPECT_EQ(QVProblemOfBinaryPropertyList(_data.bytes()), nullptr);
    }
    const QVPropertyListReader *operator->() const { return &_reader; }

private:
    NSData _data;
    QVPropertyListReader _reader;
};

/// The reader's answer for the one value of a file.
File fileOf(std::string object) { return File(RawPropertyList{{std::move(object)}}); }

std::string textOf(std::span<const std::uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

} // namespace

TEST(QVPropertyListReader, BooleansAndNumbersAreReadInAllTheirSizes) {
    const auto integerOf = [](std::string object) {
        const File file = fileOf(std::move(object));
        EXPECT_EQ(file->kindOf(file->top()), Kind::Integer);
        return file->integerOf(file->top());
    };
    EXPECT_EQ(integerOf("\x10\xFF"), 255u);
    EXPECT_EQ(integerOf("\x11\xFF\xFE"), 65534u);
    EXPECT_EQ(integerOf("\x12" + bigEndian(0x12345678, 4)), 0x12345678u);
    EXPECT_EQ(static_cast<NSInteger>(integerOf("\x13" + std::string(8, '\xFF'))), -1);
    EXPECT_EQ(integerOf("\x14" + bigEndian(0, 8) + bigEndian(7, 8)), 7u);

    const File no = fileOf("\x08");
    const File yes = fileOf("\x09");
    EXPECT_EQ(no->kindOf(no->top()), Kind::Boolean);
    EXPECT_EQ(no->integerOf(no->top()), 0u);
    EXPECT_EQ(yes->integerOf(yes->top()), 1u);

    // 1.5 is 0x3FC00000 as a float and 0x3FF8... as a double.
    const File single = fileOf("\x22" + bigEndian(0x3FC00000, 4));
    const File full = fileOf("\x23" + bigEndian(0x3FF8000000000000, 8));
    EXPECT_EQ(single->kindOf(single->top()), Kind::Real);
    EXPECT_EQ(single->realOf(single->top()), 1.5);
    EXPECT_EQ(full->realOf(full->top()), 1.5);
    const File date = fileOf("\x33" + bigEndian(0, 8));
    EXPECT_EQ(date->kindOf(date->top()), Kind::Date);
}

TEST(QVPropertyListReader, ReferencesAreReadInAllTheirSizes) {
    for (const std::size_t size : {1u, 2u, 4u, 8u}) {
        const File file = fileOf(static_cast<char>(0x80 + size - 1) + bigEndian(200, size));
        EXPECT_EQ(file->kindOf(file->top()), Kind::UID);
        EXPECT_EQ(file->integerOf(file->top()), 200u);
    }
}

TEST(QVPropertyListReader, StringsAreReadAndComparedInBothEncodings) {
    const File narrow = fileOf(marker(5, 4) + "name");
    EXPECT_EQ(narrow->kindOf(narrow->top()), Kind::String);
    EXPECT_EQ(narrow->stringOf(narrow->top()), u"name");
    EXPECT_TRUE(narrow->isString(narrow->top(), u"name"));
    EXPECT_FALSE(narrow->isString(narrow->top(), u"names"));
    EXPECT_FALSE(narrow->isString(narrow->top(), u"nama"));
    // U+4E2D, and a character of two units.
    const File wide = fileOf(marker(6, 3) + "\x4E\x2D\xD8\x3D\xDE\x00"s);
    EXPECT_EQ(wide->kindOf(wide->top()), Kind::String);
    EXPECT_EQ(wide->stringOf(wide->top()), u"\u4E2D\U0001F600");
    EXPECT_TRUE(wide->isString(wide->top(), u"\u4E2D\U0001F600"));
    EXPECT_FALSE(wide->isString(wide->top(), u"\u4E2D\U0001F601"));
    EXPECT_FALSE(wide->isString(wide->top(), u"\u4E2D"));
    // UTF-8 where ASCII is told.
    const File mixed = fileOf(marker(5, 2) + "\xC3\xA9");
    EXPECT_EQ(mixed->stringOf(mixed->top()), u"\u00E9");
    const File empty = fileOf("\x50");
    EXPECT_EQ(empty->stringOf(empty->top()), u"");
    EXPECT_FALSE(empty->stringOf(empty->top()).isNull());
    const File number = fileOf("\x10\x01");
    EXPECT_FALSE(number->isString(number->top(), u"\x01"));
    EXPECT_FALSE(number->isString(0, u""));
}

TEST(QVPropertyListReader, DataIsReadWhereItStands) {
    const File data = fileOf(marker(4, 3) + "a\0b"s);
    EXPECT_EQ(data->kindOf(data->top()), Kind::Data);
    EXPECT_EQ(textOf(data->dataOf(data->top())), "a\0b"s);
}

TEST(QVPropertyListReader, LengthsOfFifteenAndMoreStandBehindTheMarker) {
    const std::string fifteen(15, 'x');
    const File file = fileOf("\x5F\x10\x0F" + fifteen);
    EXPECT_EQ(file->stringOf(file->top()), NSString::stringWithUTF8String(fifteen));
    const File bytes = fileOf("\x4F\x11\x01\x00"s + std::string(256, 'y'));
    EXPECT_EQ(textOf(bytes->dataOf(bytes->top())), std::string(256, 'y'));
}

TEST(QVPropertyListReader, ItemsAndEntriesComeInTheirOrder) {
    for (const std::size_t size : {1u, 2u, 8u}) {
        const std::string references = bigEndian(1, size) + bigEndian(2, size);
        RawPropertyList array{{"\xA2" + references, "\x10\x05", "\x51z"}};
        array.referenceSize = size;
        array.offsetSize = size;
        const File file(array);
        EXPECT_EQ(file->kindOf(file->top()), Kind::Array);
        ASSERT_EQ(file->countOf(file->top()), 2u);
        EXPECT_EQ(file->integerOf(file->itemOf(file->top(), 0)), 5u);
        EXPECT_EQ(file->stringOf(file->itemOf(file->top(), 1)), u"z");
    }
    const File dictionary(
        RawPropertyList{{"\xD2\x01\x02\x03\x04", "\x51k", "\x61\x4E\x2D", "\x10\x05", "\x09"}});
    EXPECT_EQ(dictionary->kindOf(dictionary->top()), Kind::Dictionary);
    ASSERT_EQ(dictionary->countOf(dictionary->top()), 2u);
    EXPECT_EQ(dictionary->integerOf(dictionary->entryOf(dictionary->top(), 0)), 5u);
    EXPECT_EQ(dictionary->kindOf(dictionary->entryOf(dictionary->top(), 1)), Kind::Boolean);
    EXPECT_EQ(dictionary->integerOf(dictionary->valueForKey(dictionary->top(), u"k")), 5u);
    EXPECT_EQ(dictionary->kindOf(dictionary->valueForKey(dictionary->top(), u"\u4E2D")), Kind::Boolean);
    EXPECT_EQ(dictionary->valueForKey(dictionary->top(), u"l"), 0u);
    EXPECT_EQ(dictionary->valueForKey(dictionary->top(), u"k", Kind::String), 0u);
    EXPECT_NE(dictionary->valueForKey(dictionary->top(), u"k", Kind::Integer), 0u);
}

TEST(QVPropertyListReader, OfTwoEntriesOfOneKeyTheFirstCounts) {
    const File file(RawPropertyList{{"\xD2\x01\x01\x02\x03", "\x51k", "\x10\x05", "\x10\x06"}});
    EXPECT_EQ(file->integerOf(file->valueForKey(file->top(), u"k")), 5u);
}

TEST(QVPropertyListReader, WhatIsNoDictionaryHasNoKeys) {
    const File file = fileOf("\x51k");
    EXPECT_EQ(file->valueForKey(file->top(), u"k"), 0u);
    EXPECT_EQ(file->valueForKey(0, u"k"), 0u);
    EXPECT_EQ(file->kindOf(0), Kind::None);
}

TEST(QVPropertyListReader, TheTopIsWhereTheFileSays) {
    const File file(RawPropertyList{{"\x10\x01", "\x10\x02"}, 1});
    EXPECT_EQ(file->integerOf(file->top()), 2u);
}
