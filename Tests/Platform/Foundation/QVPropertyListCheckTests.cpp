#include "Platform/Foundation/QVPropertyListCheck.h"

#include "Platform/Foundation/QVLimits.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/PropertyLists.h"

#include <gtest/gtest.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

constexpr const char16_t *damagedValue = u"one of its values is damaged";
constexpr const char16_t *damagedTable = u"its object table is damaged";
constexpr const char16_t *unknownReference = u"it refers to a value that it doesn't hold";

NSString problemOf(const std::string &file) {
    const char16_t *problem =
        QVProblemOfBinaryPropertyList({reinterpret_cast<const std::uint8_t *>(file.data()), file.size()});
    return problem ? NSString(problem) : NSString();
}

NSString problemOfObjects(std::vector<std::string> objects) {
    return problemOf(RawPropertyList{std::move(objects)}.file());
}

/// Containers inside one another, as many as the depth says.
NSString problemOfNested(std::size_t depth) {
    std::vector<std::string> objects;
    for (std::size_t level = 1; level < depth; ++level)
        objects.push_back(std::string("\xA1") + static_cast<char>(level));
    objects.push_back("\xA0");
    return problemOfObjects(objects);
}

} // namespace

TEST(QVPropertyListCheck, EveryKindOfValueThatAnArchiveHoldsIsGood) {
    EXPECT_EQ(
        problemOfObjects({"\xAC\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C", "\x08", "\x09", "\x10\xFF",
                          "\x13" + bigEndian(1, 8), "\x14" + bigEndian(0, 8) + bigEndian(1, 8),
                          "\x22" + bigEndian(0, 4), "\x23" + bigEndian(0, 8), "\x33" + bigEndian(0, 8),
                          "\x42xy", "\x52xy", std::string("\x61\0x", 3), "\x80\x07"}),
        NSString());
    EXPECT_EQ(problemOfObjects({"\xD1\x01\x02", "\x51k", "\x5F\x10\x0F" + std::string(15, 'v')}), NSString());
    EXPECT_EQ(problemOfObjects({"\xA0"}), NSString());
}

TEST(QVPropertyListCheck, OtherFilesAreNoPropertyLists) {
    constexpr const char16_t *none = u"it is not a binary property list";
    EXPECT_EQ(problemOf(""), none);
    EXPECT_EQ(problemOf("<?xml version='1.0'?><plist><dict/></plist>           "), none);
    EXPECT_EQ(problemOf("bplist00"), none);
    EXPECT_EQ(problemOf("bplist01" + std::string(64, '\0')), none);
}

TEST(QVPropertyListCheck, ADamagedTrailerIsFound) {
    EXPECT_EQ(problemOf("bplist00" + std::string(32, '\0')), damagedTable);
    const RawPropertyList good{{"\xA0"}};
    RawPropertyList list = good;
    list.top = 1;
    EXPECT_EQ(problemOf(list.file()), damagedTable);
    list = good;
    list.offsetSize = 9;
    EXPECT_EQ(problemOf(list.file()), damagedTable);
    list = good;
    list.referenceSize = 0;
    EXPECT_EQ(problemOf(list.file()), damagedTable);
    // A count far beyond the table, and a table that starts in the header or behind the file.
    const std::string file = good.file();
    const std::size_t trailer = file.size() - 32;
    EXPECT_EQ(problemOf(std::string(file).replace(trailer + 8, 8, 8, '\xFF')), damagedTable);
    EXPECT_EQ(problemOf(std::string(file).replace(trailer + 24, 8, bigEndian(4, 8))), damagedTable);
    EXPECT_EQ(problemOf(std::string(file).replace(trailer + 24, 8, bigEndian(trailer + 1, 8))), damagedTable);
}

TEST(QVPropertyListCheck, OffsetsOutsideOfTheValuesAreDamage) {
    RawPropertyList list{{"\xA0"}};
    std::string file = list.file();
    const std::size_t table = file.size() - 32 - 4;
    EXPECT_EQ(problemOf(std::string(file).replace(table, 4, bigEndian(7, 4))), damagedValue);
    EXPECT_EQ(problemOf(std::string(file).replace(table, 4, bigEndian(table, 4))), damagedValue);
}

TEST(QVPropertyListCheck, AValueThatEndsBehindTheValuesIsDamage) {
    for (const std::string cut : {"\x13\1\2\3", "\x22\1", "\x33\1", "\x4Fx", "\x42x", "\x5F\x13\xFF", "\x52x",
                                  "\x61x", "\x81x", "\xA2\1", "\xD1\1", "\xAF"})
        EXPECT_EQ(problemOfObjects({cut}), damagedValue) << testing::PrintToString(cut);
    // Lengths that would overflow when doubled or multiplied.
    EXPECT_EQ(problemOfObjects({"\x6F\x13" + bigEndian(1ull << 63, 8)}), damagedValue);
    EXPECT_EQ(problemOfObjects({"\xDF\x13" + bigEndian(1ull << 63, 8)}), damagedValue);
    EXPECT_EQ(problemOfObjects({"\xAF\x13" + bigEndian(~0ull, 8)}), damagedValue);
}

TEST(QVPropertyListCheck, KindsThatNoArchiveHoldsAreDamage) {
    // Null, fill, an odd size of a real, a date of four bytes, sets, and what has no meaning.
    for (const std::string &odd : {std::string("\0", 1), std::string("\x0F"), std::string("\x21\1\1"),
                                   std::string("\x32\1\1\1\1"), std::string("\xC0"), std::string("\x70"),
                                   std::string("\x82\1\1\1"), std::string("\x15") + std::string(32, 'x')})
        EXPECT_EQ(problemOfObjects({odd}), damagedValue) << testing::PrintToString(odd);
}

TEST(QVPropertyListCheck, AReferenceToNoValueIsFound) {
    EXPECT_EQ(problemOfObjects({"\xA1\x01"}), unknownReference);
    EXPECT_EQ(problemOfObjects({"\xD1\x01\x02", "\x51k"}), unknownReference);
}

TEST(QVPropertyListCheck, AKeyMustBeAString) {
    EXPECT_EQ(problemOfObjects({"\xD1\x01\x01", "\x09"}), u"one of its keys is no string");
}

TEST(QVPropertyListCheck, AContainerThatHoldsItselfIsFound) {
    constexpr const char16_t *twice = u"one of its containers is used twice";
    EXPECT_EQ(problemOfObjects({std::string("\xA1\0", 2)}), twice);
    EXPECT_EQ(problemOfObjects({"\xA1\x01", std::string("\xD1\x02\0", 3), "\x51k"}), twice);
    // So is one that two others hold, of which a chain would double with every link.
    EXPECT_EQ(problemOfObjects({"\xA2\x01\x01", "\xA0"}), twice);
    // Texts and numbers may be used as often as one likes.
    EXPECT_EQ(problemOfObjects({"\xA2\x01\x01", "\x51x"}), NSString());
}

TEST(QVPropertyListCheck, ContainersNestAsDeepAsTheLimitAndNoDeeper) {
    EXPECT_EQ(problemOfNested(limits::propertyListNestingDepth), NSString());
    EXPECT_EQ(problemOfNested(limits::propertyListNestingDepth + 1), u"it nests too deep");
}

TEST(QVPropertyListCheck, AListHoldsAsManyValuesAsTheLimitAndNoMore) {
    const auto problemOfCount = [](std::uint64_t count) {
        return problemOfObjects({marker(10, count) + std::string(count, '\x01'), "\x09"});
    };
    EXPECT_EQ(problemOfCount(limits::archiveReferences), NSString());
    EXPECT_EQ(problemOfCount(limits::archiveReferences + 1), u"it holds too many values");
}

TEST(QVPropertyListCheck, AListIsAsLargeAsTheLimitAndNoLarger) {
    const std::size_t frame = RawPropertyList{{marker(4, 1u << 20)}}.file().size();
    const auto problemOfSize = [&](std::size_t size) {
        const std::string file =
            RawPropertyList{{marker(4, size - frame) + std::string(size - frame, 'x')}}.file();
        EXPECT_EQ(file.size(), size);
        return problemOf(file);
    };
    EXPECT_EQ(problemOfSize(limits::archiveBytes), NSString());
    EXPECT_EQ(problemOfSize(limits::archiveBytes + 1), u"it is too large");
}

TEST(QVPropertyListCheck, ALongTextCountsAsOftenAsItIsUsed) {
    constexpr std::size_t length = 8u << 20;
    constexpr std::size_t times = limits::archiveBytes / length;
    const std::string text = marker(5, length) + std::string(length, 'x');
    EXPECT_EQ(problemOfObjects({marker(10, times) + std::string(times, '\x01'), text}), NSString());
    EXPECT_EQ(problemOfObjects({marker(10, times + 1) + std::string(times + 1, '\x01'), text}),
              u"it is too large");
}
