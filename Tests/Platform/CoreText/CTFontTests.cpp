#include "Platform/CoreText/CTFont.h"

#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/QVLimits.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <thread>

// The fonts of these tests are among what the build installs. The numbers are those of the tables in their
// files.

using namespace quorvane;

namespace {

constexpr CTFontSymbolicTraits boldAndItalic = kCTFontTraitBold | kCTFontTraitItalic;

CTFontRef mono(CGFloat size = 10) { return CTFontCreateWithName(u"DejaVuSansMono", size); }

CTFontRef withTraits(const CTFontRef &font, CTFontSymbolicTraits traits,
                     CTFontSymbolicTraits mask = boldAndItalic) {
    return CTFontCreateCopyWithSymbolicTraits(font, 0, traits, mask);
}

NSString nameOf(const CTFontRef &font) { return font ? CTFontCopyPostScriptName(font) : NSString(); }

} // namespace

TEST(CTFont, IsFoundByItsPostScriptName) {
    const CTFontRef font = CTFontCreateWithName(u"DejaVuSansMono-Bold", 13);
    ASSERT_TRUE(font);
    EXPECT_EQ(CTFontCopyPostScriptName(font), u"DejaVuSansMono-Bold");
    EXPECT_EQ(CTFontCopyFamilyName(font), u"DejaVu Sans Mono");
    EXPECT_EQ(CTFontGetSize(font), 13);
    EXPECT_EQ(CTFontGetSymbolicTraits(font), kCTFontTraitBold | kCTFontTraitMonoSpace);
}

TEST(CTFont, IsFoundByItsFullNameAndByItsFamily) {
    EXPECT_EQ(nameOf(CTFontCreateWithName(u"DejaVu Sans Mono Bold Oblique", 12)),
              u"DejaVuSansMono-BoldOblique");
    EXPECT_EQ(nameOf(CTFontCreateWithName(u"DejaVu Serif", 12)), u"DejaVuSerif");
}

TEST(CTFont, AMissingFontIsTheMonospacedOneAndSaidOnce) {
    const test::LogRecorder log;
    const CTFontRef font = CTFontCreateWithName(u"NoSuchFont-Regular", 11);
    ASSERT_TRUE(font);
    EXPECT_EQ(nameOf(font), nameOf(CTFontCreateMonospacedSystemFont(11)));
    EXPECT_TRUE(CTFontGetSymbolicTraits(font) & kCTFontTraitMonoSpace);
    EXPECT_EQ(CTFontGetSize(font), 11);
    EXPECT_TRUE(CTFontCreateWithName(u"NoSuchFont-Regular", 12));
    EXPECT_EQ(log.messages(),
              (std::vector<NSString>{
                  u"The font \"NoSuchFont-Regular\" is not installed; the system's monospaced font stands "
                  u"in for it"}));
}

TEST(CTFont, ANameThatIsNoNameIsNotInstalled) {
    const test::LogRecorder log;
    EXPECT_TRUE(CTFontCreateWithName(u"", 11));
    EXPECT_TRUE(CTFontCreateWithName(NSString(std::u16string(u"DejaVuSansMono\0x", 16)), 11));
    EXPECT_EQ(log.messages().size(), 2u);
    EXPECT_EQ(CTFontCreateWithName(nullptr, 11), nullptr);
}

TEST(CTFont, ASizeThatIsNoPositiveNumberIsTwelve) {
    EXPECT_EQ(CTFontGetSize(mono(0)), 12);
    EXPECT_EQ(CTFontGetSize(mono(-3)), 12);
    EXPECT_EQ(CTFontGetSize(mono(std::nan(""))), 12);
    EXPECT_EQ(CTFontGetSize(mono(std::numeric_limits<double>::infinity())), 12);
    EXPECT_EQ(CTFontGetSize(mono(0.5)), 0.5);
}

TEST(CTFont, MeasuresAreThoseOfTheFile) {
    const CTFontRef font = mono(2048);
    EXPECT_EQ(CTFontGetUnitsPerEm(font), 2048u);
    EXPECT_DOUBLE_EQ(CTFontGetAscent(font), 1901);
    EXPECT_DOUBLE_EQ(CTFontGetDescent(font), 483);
    EXPECT_DOUBLE_EQ(CTFontGetLeading(font), 0);
    EXPECT_DOUBLE_EQ(CTFontGetUnderlineThickness(font), 90);
    EXPECT_DOUBLE_EQ(CTFontGetAscent(mono(10)), 1901 * 10 / 2048.0);
    EXPECT_DOUBLE_EQ(CTFontGetUnderlinePosition(font), -40 - 90 / 2.0);
}

TEST(CTFont, GlyphsHaveTheWidthsOfTheFile) {
    const CTFontRef font = mono(2048);
    std::vector<CGGlyph> glyphs(3);
    EXPECT_TRUE(CTFontGetGlyphsForCharacters(font, u"i W", glyphs));
    EXPECT_NE(glyphs[0], glyphs[2]);
    std::vector<CGFloat> advances(3);
    EXPECT_DOUBLE_EQ(CTFontGetAdvancesForGlyphs(font, glyphs, advances), 3 * 1233);
    EXPECT_EQ(advances, (std::vector<CGFloat>{1233, 1233, 1233}));
    EXPECT_DOUBLE_EQ(CTFontGetAdvancesForGlyphs(mono(12), std::span(glyphs).first(1)), 1233 * 12 / 2048.0);
    EXPECT_EQ(CTFontGetAdvancesForGlyphs(font, {}), 0);
    const std::vector<CGGlyph> missing{0xFFFF};
    EXPECT_EQ(CTFontGetAdvancesForGlyphs(font, missing), 0);
}

TEST(CTFont, ACharacterThatIsMissingHasGlyphZero) {
    std::vector<CGGlyph> glyphs(2, 7);
    EXPECT_FALSE(CTFontGetGlyphsForCharacters(mono(), u"a\u3042", glyphs));
    EXPECT_NE(glyphs[0], 0);
    EXPECT_EQ(glyphs[1], 0);
}

TEST(CTFont, APairOfSurrogatesHasItsGlyphFirstAndZeroBehind) {
    const CTFontRef font = CTFontCreateWithName(u"DejaVuSans", 12);
    std::vector<CGGlyph> glyphs(4, 7);
    // Mathematical double-struck A, which is in the file.
    EXPECT_TRUE(CTFontGetGlyphsForCharacters(font, u"a\U0001D538b", glyphs));
    EXPECT_NE(glyphs[1], 0);
    EXPECT_EQ(glyphs[2], 0);
    EXPECT_NE(glyphs[3], 0);
    const char16_t lone[] = {0xD835, u'b'};
    EXPECT_FALSE(CTFontGetGlyphsForCharacters(font, {lone, 2}, std::span(glyphs).first(2)));
    EXPECT_EQ(glyphs[0], 0);
    EXPECT_NE(glyphs[1], 0);
}

TEST(CTFont, TraitsAreTakenFromTheSameFamily) {
    EXPECT_EQ(nameOf(withTraits(mono(), kCTFontTraitBold)), u"DejaVuSansMono-Bold");
    EXPECT_EQ(nameOf(withTraits(mono(), kCTFontTraitItalic)), u"DejaVuSansMono-Oblique");
    EXPECT_EQ(nameOf(withTraits(mono(), boldAndItalic)), u"DejaVuSansMono-BoldOblique");
    const CTFontRef bold = withTraits(mono(10), kCTFontTraitBold);
    EXPECT_EQ(CTFontGetSize(bold), 10);
    EXPECT_EQ(CTFontGetSize(CTFontCreateCopyWithSymbolicTraits(mono(10), 20, 0, boldAndItalic)), 20);
}

TEST(CTFont, TraitsOutsideOfTheMaskStay) {
    const CTFontRef bold = CTFontCreateWithName(u"DejaVuSerif-Bold", 12);
    EXPECT_EQ(nameOf(withTraits(bold, kCTFontTraitItalic, kCTFontTraitItalic)), u"DejaVuSerif-BoldItalic");
    EXPECT_EQ(nameOf(withTraits(bold, 0, kCTFontTraitItalic)), u"DejaVuSerif-Bold");
    EXPECT_EQ(nameOf(withTraits(bold, 0, kCTFontTraitBold)), u"DejaVuSerif");
}

TEST(CTFont, AFaceWithOtherTraitsKeepsItsWidth) {
    const CTFontRef condensed = CTFontCreateWithName(u"DejaVuSansCondensed", 12);
    EXPECT_EQ(nameOf(withTraits(condensed, kCTFontTraitBold)), u"DejaVuSansCondensed-Bold");
}

TEST(CTFont, AFamilyThatLacksAFaceGivesNone) {
    const CTFontRef regular = CTFontCreateWithName(u"DejaVuMathTeXGyre-Regular", 12);
    ASSERT_EQ(nameOf(regular), u"DejaVuMathTeXGyre-Regular");
    EXPECT_EQ(withTraits(regular, kCTFontTraitBold), nullptr);
    EXPECT_EQ(withTraits(regular, kCTFontTraitItalic), nullptr);
}

TEST(CTFont, ACopyWithAttributesTakesTheirSizeAndTraits) {
    EXPECT_EQ(CTFontGetSize(CTFontCreateCopyWithAttributes(mono(10), 20)), 20);
    EXPECT_EQ(CTFontGetSize(CTFontCreateCopyWithAttributes(mono(10), 0)), 10);
    EXPECT_EQ(CTFontGetSize(CTFontCreateCopyWithAttributes(mono(10), 20, {.kCTFontSizeAttribute = 30})), 30);
    const CTFontRef bold =
        CTFontCreateCopyWithAttributes(mono(10), 0, {.kCTFontSymbolicTrait = kCTFontTraitBold});
    EXPECT_EQ(nameOf(bold), u"DejaVuSansMono-Bold");
    EXPECT_EQ(nameOf(CTFontCreateCopyWithAttributes(bold, 0, {.kCTFontSymbolicTrait = 0})),
              u"DejaVuSansMono");
    const CTFontRef lacking = CTFontCreateWithName(u"DejaVuMathTeXGyre-Regular", 12);
    EXPECT_EQ(nameOf(CTFontCreateCopyWithAttributes(lacking, 0, {.kCTFontSymbolicTrait = kCTFontTraitBold})),
              u"DejaVuMathTeXGyre-Regular");
}

TEST(CTFont, FontsOfOneFaceAndSizeAreEqual) {
    EXPECT_TRUE(mono(10)->isEqual(CTFontCreateWithName(u"DejaVu Sans Mono", 10).get()));
    EXPECT_EQ(mono(10)->hash(), CTFontCreateWithName(u"DejaVu Sans Mono", 10)->hash());
    EXPECT_FALSE(mono(10)->isEqual(mono(11).get()));
    EXPECT_FALSE(mono(10)->isEqual(withTraits(mono(10), kCTFontTraitBold).get()));
    EXPECT_FALSE(mono(10)->isEqual(nullptr));
}

TEST(CTFont, DescribesFaceAndSize) { EXPECT_EQ(mono(10)->description(), u"<CTFont DejaVuSansMono 10.00>"); }

TEST(CTFont, SurvivesAnArchive) {
    const CTFontRef font = CTFontCreateWithName(u"DejaVuSerif-Italic", 13.5);
    const auto read =
        NSKeyedUnarchiver::unarchivedObjectOfClass<CTFont>(NSKeyedArchiver::archivedDataWithRootObject(font));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isEqual(font.get()));
}

TEST(CTFont, MoreNamesThanAreRememberedAreStillAnswered) {
    const test::LogRecorder log;
    for (std::size_t index = 0; index <= limits::rememberedFontNames; ++index)
        ASSERT_TRUE(CTFontCreateWithName(NSString::stringWithFormat(u"Missing %lu", index), 12));
    EXPECT_EQ(nameOf(CTFontCreateWithName(u"DejaVuSansCondensed-Oblique", 12)),
              u"DejaVuSansCondensed-Oblique");
    EXPECT_EQ(log.messages().size(), limits::rememberedFontNames + 1);
}

TEST(CTFontConcurrency, ThreadsShareFaces) {
    const CTFontRef font = mono(10);
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                std::vector<CGGlyph> glyphs(2);
                CTFontGetGlyphsForCharacters(font, u"ab", glyphs);
                const CTFontRef bold = withTraits(font, kCTFontTraitBold);
                if (std::abs(CTFontGetAdvancesForGlyphs(bold, glyphs) - 2 * 1233 * 10 / 2048.0) > 1e-9 ||
                    bold->sharedFace() != CTFontCreateWithName(u"DejaVuSansMono-Bold", 9)->sharedFace())
                    ++wrong;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}
