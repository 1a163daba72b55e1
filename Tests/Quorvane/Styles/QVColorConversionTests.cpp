#include "Quorvane/Styles/QVColor.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace quorvane;

namespace {

using Conversion = void (*)(double *, double *, double *, double, double, double);

struct Row {
    double in[3];
    double out[3];
};

void expectRows(Conversion convert, std::initializer_list<Row> rows) {
    for (const Row &row : rows) {
        double a = 7, b = 7, c = 7;
        convert(&a, &b, &c, row.in[0], row.in[1], row.in[2]);
        EXPECT_NEAR(a, row.out[0], 1e-12) << row.in[0] << " " << row.in[1] << " " << row.in[2];
        EXPECT_NEAR(b, row.out[1], 1e-12) << row.in[0] << " " << row.in[1] << " " << row.in[2];
        EXPECT_NEAR(c, row.out[2], 1e-12) << row.in[0] << " " << row.in[1] << " " << row.in[2];
    }
}

} // namespace

TEST(QVColorConvertHSBToRGB, WalksTheSixSectorsOfTheCircle) {
    expectRows(QVColorConvertHSBToRGB, {
                                           {{0, 1, 1}, {1, 0, 0}},
                                           {{1.0 / 12, 1, 1}, {1, 0.5, 0}},
                                           {{3.0 / 12, 1, 1}, {0.5, 1, 0}},
                                           {{5.0 / 12, 1, 1}, {0, 1, 0.5}},
                                           {{7.0 / 12, 1, 1}, {0, 0.5, 1}},
                                           {{9.0 / 12, 1, 1}, {0.5, 0, 1}},
                                           {{11.0 / 12, 1, 1}, {1, 0, 0.5}},
                                           {{0.1, 0.5, 0.8}, {0.8, 0.64, 0.4}},
                                       });
}

TEST(QVColorConvertHSBToRGB, WithoutSaturationAllAreTheBrightness) {
    expectRows(QVColorConvertHSBToRGB, {{{0.3, 0, 0.7}, {0.7, 0.7, 0.7}}, {{5, 0, 0}, {0, 0, 0}}});
}

// Meant: the hue 1 starts a seventh sector, which is read like the sixth and begins with magenta, not with
// red.
TEST(QVColorConvertHSBToRGB, TheHueOneIsMagenta) {
    expectRows(QVColorConvertHSBToRGB, {{{1, 1, 1}, {1, 0, 1}}, {{1, 0.5, 0.5}, {0.5, 0.25, 0.5}}});
}

TEST(QVColorConvertHSBToRGB, AHueThatIsNoNumberIsReadLikeTheLastSector) {
    double red = 0, green = 0, blue = 0;
    QVColorConvertHSBToRGB(&red, &green, &blue, std::numeric_limits<double>::quiet_NaN(), 0.5, 0.5);
    EXPECT_EQ(red, 0.5);
    EXPECT_EQ(green, 0.25);
    EXPECT_TRUE(std::isnan(blue));
    QVColorConvertHSBToRGB(&red, &green, &blue, 1e300, 0.5, 0.5);
    EXPECT_EQ(red, 0.5);
    EXPECT_EQ(green, 0.25);
}

TEST(QVColorConvertHSLToRGB, WalksTheCircle) {
    expectRows(QVColorConvertHSLToRGB, {
                                           {{0, 1, 0.5}, {1, 0, 0}},
                                           {{1, 1, 0.5}, {1, 0, 0}},
                                           {{1.0 / 12, 1, 0.5}, {1, 0.5, 0}},
                                           {{3.0 / 12, 1, 0.5}, {0.5, 1, 0}},
                                           {{5.0 / 12, 1, 0.5}, {0, 1, 0.5}},
                                           {{7.0 / 12, 1, 0.5}, {0, 0.5, 1}},
                                           {{9.0 / 12, 1, 0.5}, {0.5, 0, 1}},
                                           {{11.0 / 12, 1, 0.5}, {1, 0, 0.5}},
                                           {{0.1, 0.5, 0.4}, {0.6, 0.44, 0.2}},
                                           {{0.1, 0.5, 0.75}, {0.875, 0.775, 0.625}},
                                       });
}

TEST(QVColorConvertHSLToRGB, WithoutSaturationAllAreTheLuminance) {
    expectRows(QVColorConvertHSLToRGB, {{{0.3, 0, 0.7}, {0.7, 0.7, 0.7}}});
}

TEST(QVColorConvertHSLToRGB, ClampsWhatIsOutOfRange) {
    expectRows(QVColorConvertHSLToRGB, {
                                           {{-4, 1, 0.5}, {1, 0, 0}},
                                           {{0, 4, 0.5}, {1, 0, 0}},
                                           {{0.3, 1, 4}, {1, 1, 1}},
                                           {{0.3, 1, -4}, {0, 0, 0}},
                                           {{0.3, -1, 0.5}, {0.5, 0.5, 0.5}},
                                       });
}

TEST(QVColorConvertRGBToHSB, FindsTheHueByTheGreatestComponent) {
    expectRows(QVColorConvertRGBToHSB, {
                                           {{1, 0, 0}, {0, 1, 1}},
                                           {{0, 1, 0}, {1.0 / 3, 1, 1}},
                                           {{0, 0, 1}, {2.0 / 3, 1, 1}},
                                           {{1, 1, 0}, {1.0 / 6, 1, 1}},
                                           {{0, 1, 1}, {3.0 / 6, 1, 1}},
                                           {{1, 0, 1}, {5.0 / 6, 1, 1}},
                                           {{0.8, 0.64, 0.4}, {0.1, 0.5, 0.8}},
                                           {{0, 0, 0}, {0, 0, 0}},
                                       });
}

// Meant: no distance between the components leaves nothing to divide by.
TEST(QVColorConvertRGBToHSB, TheHueOfAGrayIsNoNumber) {
    for (const double white : {0.5, 1.0}) {
        double hue = 0, saturation = 7, brightness = 7;
        QVColorConvertRGBToHSB(&hue, &saturation, &brightness, white, white, white);
        EXPECT_TRUE(std::isnan(hue));
        EXPECT_EQ(saturation, 0);
        EXPECT_EQ(brightness, white);
    }
}

TEST(QVColorConvertRGBToHSL, FindsTheHueByGreatestAndLeastComponent) {
    expectRows(QVColorConvertRGBToHSL, {
                                           {{0.6, 0.44, 0.2}, {0.1, 0.5, 0.4}},
                                           {{0.6, 0.2, 0.4}, {5.5 / 6, 0.5, 0.4}},
                                           {{0.2, 0.6, 0.4}, {2.5 / 6, 0.5, 0.4}},
                                           {{0.4, 0.6, 0.2}, {1.5 / 6, 0.5, 0.4}},
                                           {{0.4, 0.2, 0.6}, {4.5 / 6, 0.5, 0.4}},
                                           {{0.2, 0.4, 0.6}, {3.5 / 6, 0.5, 0.4}},
                                           {{0.9, 0.5, 0.5}, {1, 2.0 / 3, 0.7}},
                                       });
}

// Meant: with green at the least, red is reached from behind, by way of magenta.
TEST(QVColorConvertRGBToHSL, TheHueOfRedIsOne) {
    expectRows(QVColorConvertRGBToHSL, {{{1, 0, 0}, {1, 1, 0.5}}});
}

TEST(QVColorConvertRGBToHSL, GraysHaveNeitherHueNorSaturation) {
    expectRows(QVColorConvertRGBToHSL, {{{0, 0, 0}, {0, 0, 0}}, {{0.5, 0.5, 0.5}, {0, 0, 0.5}}});
    expectRows(QVColorConvertRGBToHSL, {{{1, 1, 1}, {0, 0, 1}}, {{-1, -0.5, 0}, {0, 0, -0.5}}});
}

TEST(QVColorConvertRGBToHSL, AThousandthCountsAsEqual) {
    // Red counts as the greatest though green is, so the hue is (1 - 0) / 6.
    expectRows(QVColorConvertRGBToHSL, {{{0.5995, 0.6, 0.2}, {1.0 / 6, 0.5, 0.4}}});
    // Green counts as the least though blue is: the low way, ((0.6 - 0.2) / 0.4 + 5) / 6.
    expectRows(QVColorConvertRGBToHSL, {{{0.6, 0.2005, 0.2}, {1, 0.5, 0.4}}});
}

TEST(QVColorConvert, EachResultMayBeUnwanted) {
    for (const Conversion convert :
         {QVColorConvertHSBToRGB, QVColorConvertHSLToRGB, QVColorConvertRGBToHSB, QVColorConvertRGBToHSL}) {
        double wanted[3], only[3];
        convert(&wanted[0], &wanted[1], &wanted[2], 0.2, 0.4, 0.6);
        convert(&only[0], nullptr, nullptr, 0.2, 0.4, 0.6);
        convert(nullptr, &only[1], nullptr, 0.2, 0.4, 0.6);
        convert(nullptr, nullptr, &only[2], 0.2, 0.4, 0.6);
        for (int index = 0; index < 3; ++index)
            EXPECT_EQ(wanted[index], only[index]);
        convert(nullptr, nullptr, nullptr, 0, 0, 0);
        convert(nullptr, nullptr, nullptr, 0.3, 0, 0.3);
    }
}

TEST(QVColorConvert, ThereAndBackIsTheColourAgain) {
    for (double red = 0.05; red < 1; red += 0.15)
        for (double green = 0.1; green < 1; green += 0.15)
            for (double blue = 0.02; blue < 1; blue += 0.15) {
                double a = 0, b = 0, c = 0;
                QVColorConvertRGBToHSB(&a, &b, &c, red, green, blue);
                QVColorConvertHSBToRGB(&a, &b, &c, a, b, c);
                EXPECT_NEAR(std::abs(a - red) + std::abs(b - green) + std::abs(c - blue), 0, 1e-9);
                QVColorConvertRGBToHSL(&a, &b, &c, red, green, blue);
                QVColorConvertHSLToRGB(&a, &b, &c, a, b, c);
                EXPECT_NEAR(std::abs(a - red) + std::abs(b - green) + std::abs(c - blue), 0, 1e-9);
            }
}
