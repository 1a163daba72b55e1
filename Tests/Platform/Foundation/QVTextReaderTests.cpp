#include "Platform/Foundation/QVTextReader.h"

#include "Tests/Support/TextGaps.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::withEveryGap;

TEST(QVTextReader, ReadsTheSameWhereverTheTextIsCut) {
    // CR LF, a pair of surrogates and a cluster.
    const std::u16string_view whole = u"a\r\n\U0001F600e\u0301z";
    withEveryGap(whole, [&](QVTextReader text) {
        ASSERT_EQ(text.length(), whole.size());
        for (NSUInteger index = 0; index < whole.size(); ++index)
            EXPECT_EQ(text.characterAtIndex(index), whole[index]);
        for (NSUInteger start = 0; start <= whole.size(); ++start) {
            for (NSUInteger length = 0; length <= whole.size() - start; ++length) {
                EXPECT_EQ(text.substringWithRange({start, length}), whole.substr(start, length));
                // The unit behind the copy stays as it was.
                std::u16string buffer(length + 1, u'#');
                text.getCharacters(buffer.data(), {start, length});
                EXPECT_EQ(buffer, std::u16string(whole.substr(start, length)) + u"#");
            }
        }
    });
}

TEST(QVTextReader, PiecesReachFromAPositionToTheCutAndFromThereToTheEnd) {
    const std::u16string_view whole = u"abcdef";
    withEveryGap(whole, [&](QVTextReader text) {
        for (NSUInteger start = 0; start < whole.size(); ++start) {
            std::u16string collected;
            int pieces = 0;
            for (NSUInteger index = start; index < text.length(); ++pieces) {
                ASSERT_FALSE(text.pieceAtIndex(index).empty());
                collected += text.pieceAtIndex(index);
                index += text.pieceAtIndex(index).size();
            }
            EXPECT_EQ(collected, whole.substr(start));
            EXPECT_LE(pieces, 2);
        }
    });
}

TEST(QVTextReader, IsContiguousWhenOnePieceIsEmpty) {
    EXPECT_TRUE(QVTextReader(u"abc").isContiguous());
    EXPECT_EQ(QVTextReader(u"abc", u"").contiguousView(), u"abc");
    EXPECT_EQ(QVTextReader(u"", u"abc").contiguousView(), u"abc");
    EXPECT_FALSE(QVTextReader(u"a", u"bc").isContiguous());
    EXPECT_TRUE(QVTextReader().isContiguous());
    EXPECT_EQ(QVTextReader().length(), 0u);
    EXPECT_EQ(QVTextReader(NSString(u"abc")).contiguousView(), u"abc");
    EXPECT_EQ(QVTextReader(NSString()).length(), 0u);
}
