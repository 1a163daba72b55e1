#include "Platform/Foundation/NSStringEncoding.h"

#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"

#include "Tests/Support/TextGaps.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

using namespace quorvane;
using test::withEveryGap;

namespace {

const std::u16string loneHalf{u'a', 0xD83D};

NSData bytes(std::initializer_list<std::uint8_t> values) { return std::vector<std::uint8_t>(values); }

} // namespace

TEST(NSStringEncoding, EachEncodingTakesItsCharactersAndRoundTripsThem) {
    struct {
        NSStringEncoding encoding;
        std::u16string_view text;
        NSData bytes;
        /// Something that it can't write.
        std::u16string other;
    } const rows[] = {
        {NSASCIIStringEncoding, u"a~", bytes({0x61, 0x7E}), u"\u00E9"},
        {NSUTF8StringEncoding, u"a\u00E9\u20AC\U0001F600",
         bytes({0x61, 0xC3, 0xA9, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80}), loneHalf},
        {NSISOLatin1StringEncoding, u"\u00E9\u00FF", bytes({0xE9, 0xFF}), u"\u20AC"},
        {NSISOLatin2StringEncoding, u"\u0141", bytes({0xA3}), u"\u20AC"},
        {NSWindowsCP1252StringEncoding, u"\u20AC\u201C\u00E9", bytes({0x80, 0x93, 0xE9}), u"\u0141"},
        {NSWindowsCP1250StringEncoding, u"\u0141", bytes({0xA3}), u"\u0430"},
        {NSWindowsCP1251StringEncoding, u"\u0430", bytes({0xE0}), u"\u00E9"},
        {NSWindowsCP1253StringEncoding, u"\u03B1", bytes({0xE1}), u"\u0430"},
        {NSWindowsCP1254StringEncoding, u"\u011F", bytes({0xF0}), u"\u0430"},
        {NSMacOSRomanStringEncoding, u"\u00E9\u00A0", bytes({0x8E, 0xCA}), u"\u0430"},
        {NSShiftJISStringEncoding, u"\u3042a", bytes({0x82, 0xA0, 0x61}), u"\u0E01"},
        {NSJapaneseEUCStringEncoding, u"\u3042a", bytes({0xA4, 0xA2, 0x61}), u"\u0E01"},
        {NSISO2022JPStringEncoding, u"\u3042", bytes({0x1B, 0x24, 0x42, 0x24, 0x22, 0x1B, 0x28, 0x42}),
         u"\u0E01"},
        {NSUTF16BigEndianStringEncoding, u"a\u20AC", bytes({0x00, 0x61, 0x20, 0xAC}), u""},
        {NSUTF16LittleEndianStringEncoding, u"a\u20AC", bytes({0x61, 0x00, 0xAC, 0x20}), u""},
        {NSUTF16StringEncoding, u"a\u20AC", bytes({0xFF, 0xFE, 0x61, 0x00, 0xAC, 0x20}), u""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.encoding);
        withEveryGap(row.text, [&](QVTextReader text) {
            EXPECT_TRUE(QVCanBeConvertedToEncoding(text, row.encoding));
            EXPECT_EQ(QVDataUsingEncoding(text, row.encoding), row.bytes);
        });
        EXPECT_EQ(QVStringWithDataUsingEncoding(row.bytes, row.encoding), row.text);
        if (!row.other.empty()) {
            withEveryGap(u"ab" + row.other + u"c", [&](QVTextReader text) {
                EXPECT_FALSE(QVCanBeConvertedToEncoding(text, row.encoding));
                EXPECT_TRUE(QVDataUsingEncoding(text, row.encoding).isNull());
            });
        }
    }
}

TEST(NSStringEncoding, UTF16TakesALoneSurrogateAsItIs) {
    for (const NSStringEncoding encoding :
         {NSUTF16StringEncoding, NSUTF16BigEndianStringEncoding, NSUTF16LittleEndianStringEncoding}) {
        EXPECT_TRUE(QVCanBeConvertedToEncoding(loneHalf, encoding));
        EXPECT_EQ(QVStringWithDataUsingEncoding(QVDataUsingEncoding(loneHalf, encoding), encoding), loneHalf);
    }
}

TEST(NSStringEncoding, UTF16IsReadInTheOrderThatItsMarkTells) {
    EXPECT_EQ(QVStringWithDataUsingEncoding(bytes({0xFE, 0xFF, 0x00, 0x61}), NSUTF16StringEncoding), u"a");
    EXPECT_EQ(QVStringWithDataUsingEncoding(bytes({0xFF, 0xFE, 0x61, 0x00}), NSUTF16StringEncoding), u"a");
    EXPECT_EQ(QVStringWithDataUsingEncoding(bytes({0x00, 0x61}), NSUTF16StringEncoding), u"a");
    EXPECT_TRUE(QVStringWithDataUsingEncoding(bytes({0x00}), NSUTF16StringEncoding).isNull());
}

TEST(NSStringEncoding, MalformedBytesAreNoText) {
    EXPECT_TRUE(QVStringWithDataUsingEncoding(bytes({0x61, 0xC3}), NSUTF8StringEncoding).isNull());
    EXPECT_TRUE(QVStringWithDataUsingEncoding(bytes({0xFF, 0x61}), NSUTF8StringEncoding).isNull());
    EXPECT_TRUE(QVStringWithDataUsingEncoding(bytes({0x80}), NSASCIIStringEncoding).isNull());
    EXPECT_TRUE(QVStringWithDataUsingEncoding(NSData(), NSUTF8StringEncoding).isNull());
    EXPECT_EQ(QVStringWithDataUsingEncoding(bytes({}), NSUTF8StringEncoding), u"");
}

TEST(NSStringEncoding, AnUnknownEncodingTakesNothingButTheEmptyText) {
    EXPECT_TRUE(QVCanBeConvertedToEncoding(u"", 999));
    EXPECT_FALSE(QVCanBeConvertedToEncoding(u"a", 999));
    EXPECT_TRUE(QVDataUsingEncoding(u"a", 999).isNull());
    EXPECT_TRUE(QVStringWithDataUsingEncoding(bytes({0x61}), 999).isNull());
}

TEST(NSStringEncoding, LongTextsAreConvertedPieceByPiece) {
    std::u16string text;
    std::string expected;
    for (int count = 0; count < 5000; ++count) {
        text += u"\u00E9\U0001F600";
        expected += "\xC3\xA9\xF0\x9F\x98\x80";
    }
    const std::u16string_view view = text;
    for (const std::size_t gap : {std::size_t(0), std::size_t(2), std::size_t(7001), text.size()}) {
        const NSData data =
            QVDataUsingEncoding(QVTextReader(view.substr(0, gap), view.substr(gap)), NSUTF8StringEncoding);
        EXPECT_EQ(data.view(), expected);
        EXPECT_EQ(QVStringWithDataUsingEncoding(data, NSUTF8StringEncoding), view);
    }
}

namespace {

/// A file that goes when the test ends.
struct FileWithBytes {
    explicit FileWithBytes(std::string_view bytes) {
        std::string pattern = (std::filesystem::temp_directory_path() / "text-XXXXXX").string();
        const int file = ::mkstemp(pattern.data());
        EXPECT_EQ(::write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        ::close(file);
        path = pattern;
    }
    ~FileWithBytes() { std::filesystem::remove(path); }
    NSURL url() const { return NSURL::fileURLWithPath(NSString::stringWithUTF8String(path.string())); }
    std::filesystem::path path;
};

} // namespace

TEST(StringWithContentsOfURL, ReadsUTF8WithAndWithoutItsMark) {
    NSStringEncoding encoding = 0;
    EXPECT_EQ(QVStringWithContentsOfURL(FileWithBytes("gr\xC3\xBC\xC3\x9F").url(), 100, &encoding),
              u"gr\u00FC\u00DF");
    EXPECT_EQ(encoding, NSUTF8StringEncoding);
    EXPECT_EQ(QVStringWithContentsOfURL(FileWithBytes("\xEF\xBB\xBFgr").url(), 100), u"gr");
    EXPECT_EQ(QVStringWithContentsOfURL(FileWithBytes("").url(), 100), u"");
}

TEST(StringWithContentsOfURL, ReadsUTF16ByItsMark) {
    NSStringEncoding encoding = 0;
    EXPECT_EQ(QVStringWithContentsOfURL(FileWithBytes({"\xFF\xFE"
                                                       "a\0b\0",
                                                       6})
                                            .url(),
                                        100, &encoding),
              u"ab");
    EXPECT_EQ(encoding, NSUTF16StringEncoding);
    EXPECT_EQ(QVStringWithContentsOfURL(FileWithBytes({"\xFE\xFF\0a\0b", 6}).url(), 100), u"ab");
}

TEST(StringWithContentsOfURL, MalformedTextIsAnError) {
    std::shared_ptr<NSError> error;
    NSStringEncoding encoding = 77;
    const FileWithBytes file("a\xFF");
    EXPECT_EQ(QVStringWithContentsOfURL(file.url(), 100, &encoding, &error), NSString());
    EXPECT_EQ(encoding, 77u);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), NSCocoaErrorDomain);
    EXPECT_EQ(error->code(), 264);
    EXPECT_EQ(
        error->localizedDescription(),
        NSString::stringWithFormat(u"The file “%@” couldn’t be read: Its text encoding can’t be determined",
                                   file.url().path()));
}

TEST(StringWithContentsOfURL, ReadsAsManyBytesAsAllowed) {
    std::shared_ptr<NSError> error;
    const FileWithBytes file("abcd");
    EXPECT_EQ(QVStringWithContentsOfURL(file.url(), 4, nullptr, &error), u"abcd");
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(QVStringWithContentsOfURL(file.url(), 3, nullptr, &error), NSString());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), NSCocoaErrorDomain);
    EXPECT_EQ(error->code(), 263);
    EXPECT_EQ(
        error->localizedDescription(),
        NSString::stringWithFormat(u"The file “%@” couldn’t be read: It is too large", file.url().path()));
}

TEST(StringWithContentsOfURL, AFileThatIsNotThereIsAnError) {
    std::shared_ptr<NSError> error;
    EXPECT_EQ(QVStringWithContentsOfURL(NSURL::fileURLWithPath(u"/no/such/file"), 100, nullptr, &error),
              NSString());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
}
