#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Tests/Support/TextGaps.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::withEveryGap;

TEST(QVEncodings, AttachmentsDontCountWhenATextIsToBeWritten) {
    withEveryGap(u"\uFFFCab\uFFFC\uFFFCc\u00E9\uFFFC", [](QVTextReader text) {
        EXPECT_TRUE(qv_canBeConvertedToEncodingIgnoringAttachments(text, NSISOLatin1StringEncoding));
        EXPECT_FALSE(qv_canBeConvertedToEncodingIgnoringAttachments(text, NSASCIIStringEncoding));
        EXPECT_FALSE(QVCanBeConvertedToEncoding(text, NSISOLatin1StringEncoding));
    });
    EXPECT_TRUE(qv_canBeConvertedToEncodingIgnoringAttachments(u"", NSASCIIStringEncoding));
    EXPECT_TRUE(qv_canBeConvertedToEncodingIgnoringAttachments(u"\uFFFC", NSASCIIStringEncoding));
    EXPECT_TRUE(qv_canBeConvertedToEncodingIgnoringAttachments(u"abc", NSASCIIStringEncoding));
}

TEST(QVEncodings, AnyPieceThatCantBeWrittenDecides) {
    EXPECT_FALSE(qv_canBeConvertedToEncodingIgnoringAttachments(u"\u20AC\uFFFCa", NSASCIIStringEncoding));
    EXPECT_FALSE(qv_canBeConvertedToEncodingIgnoringAttachments(u"a\uFFFC\u20AC", NSASCIIStringEncoding));
    EXPECT_FALSE(
        qv_canBeConvertedToEncodingIgnoringAttachments(u"a\uFFFC\u20AC\uFFFCb", NSASCIIStringEncoding));
}
