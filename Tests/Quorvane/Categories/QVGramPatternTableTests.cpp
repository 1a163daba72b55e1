#include "Quorvane/Categories/QVGramPattern.h"

#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

#include <bit>

using namespace quorvane;

namespace {

/// A query against the grams of a candidate: the units that match, and the score in decimals.
struct Row {
    const char16_t *query;
    const char16_t *candidate;
    unsigned options;
    std::vector<NSUInteger> indexes;
    double score;
};

std::vector<NSUInteger> listed(const NSIndexSet &indexes) {
    std::vector<NSUInteger> list;
    indexes.enumerateIndexesUsingBlock([&](NSUInteger index, bool &) { list.push_back(index); });
    return list;
}

void expectRows(const std::vector<Row> &rows) {
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message()
                     << '"' << NSString(row.query).UTF8String() << "\" in \""
                     << NSString(row.candidate).UTF8String() << "\", options " << row.options);
        float score = -1;
        const NSIndexSet indexes =
            qv_indexesMatchingGrams(row.query, qv_grams(row.candidate), row.options, &score);
        EXPECT_EQ(listed(indexes), row.indexes);
        // Seven digits are what a 32-bit number holds; the last bit is looked at elsewhere.
        EXPECT_NEAR(score, row.score, 1e-6 * (1 + row.score));
        EXPECT_EQ(score == 0, row.score == 0);
    }
}

} // namespace

// What a unit of a run is worth, by the run's place:
//
//                     whole gram    beginning    middle
//   first gram        2.0           1.5          0.8
//   later gram        1.2           1.0          0.8
//   ... next to the   1.68          1.4          0.8
//   one that matched
//
// Of exact case it counts 1.2 times that: 2.4, 1.8; 1.44, 1.2; 2.016, 1.68; and 0.96. To the sum come 0.01
// times the number of runs over the number of grams.

TEST(QVGramPatternTable, OneGramOfWhichAllCaseIsExact) {
    // Without options each run is of exact case. One gram, so each run adds 0.01.
    expectRows({
        {u"f", u"foo", 0, {0}, 1.81},            // 1.8
        {u"fo", u"foo", 0, {0, 1}, 3.61},        // 2 x 1.8
        {u"foo", u"foo", 0, {0, 1, 2}, 7.21},    // the whole: 3 x 2.4
        {u"o", u"foo", 0, {1}, 0.97},            // middle: 0.96
        {u"oo", u"foo", 0, {1, 2}, 1.93},        // 2 x 0.96
        {u"f", u"f", 0, {0}, 2.41},              // a whole of one letter
        {u"ab", u"aab", 0, {0, 2}, 2.78},        // the first a is taken: 1.8, then 0.96, and 2 runs
        {u"aa", u"banana", 0, {1, 3}, 1.94},     // two runs in the middle
        {u"ana", u"banana", 0, {1, 2, 3}, 2.89}, // one run in the middle: 3 x 0.96
        {u"bn", u"banana", 0, {0, 2}, 2.78},     // 1.8 + 0.96 + 0.02
        {u"bna", u"banana", 0, {0, 2, 3}, 3.74}, // 1.8 + 2 x 0.96 + 0.02
        {u"bnn", u"banana", 0, {0, 2, 4}, 3.75}, // 1.8 + 2 x 0.96 + 0.03
    });
}

TEST(QVGramPatternTable, WhatIsNotFoundHasNeitherIndexesNorScore) {
    expectRows({
        {u"", u"foo", 0, {}, 0},
        {u"foo", u"", 0, {}, 0},
        {u"", u"", 0, {}, 0},
        {u"x", u"foo", 0, {}, 0},
        {u"F", u"foo", 0, {}, 0},    // case counts
        {u"fooo", u"foo", 0, {}, 0}, // more than there is
        {u"of", u"foo", 0, {}, 0},   // only forwards
        {u"xy", u"fooBar", 0, {}, 0},
        {u"xy", u"fooBar", 2, {}, 0},
        {u"fb", u"fooBar", 0, {}, 0},
        {u"fooBarx", u"fooBar", 0, {}, 0},
        {u"Barf", u"fooBar", 2, {}, 0},
    });
}

TEST(QVGramPatternTable, TwoGramsOfExactCase) {
    // Two grams, so each run adds 0.005.
    expectRows({
        {u"fB", u"fooBar", 0, {0, 3}, 3.49},                   // 1.8 + 1.68 + 0.01
        {u"fooBar", u"fooBar", 0, {0, 1, 2, 3, 4, 5}, 13.258}, // 3 x 2.4 + 3 x 2.016 + 0.01
        {u"Bar", u"fooBar", 0, {3, 4, 5}, 4.325},              // nothing before: 3 x 1.44 + 0.005
        {u"B", u"fooBar", 0, {3}, 1.205},                      // 1.2 + 0.005
        {u"ar", u"fooBar", 0, {4, 5}, 1.925},                  // 2 x 0.96 + 0.005
        {u"oB", u"fooBar", 0, {1, 3}, 2.65},                   // 0.96, then next to it 1.68, + 0.01
        {u"foBa", u"fooBar", 0, {0, 1, 3, 4}, 6.97},           // 2 x 1.8 + 2 x 1.68 + 0.01
        {u"fooB", u"fooBar", 0, {0, 1, 2, 3}, 8.89},           // 3 x 2.4 + 1.68 + 0.01
        {u"fBr", u"fooBar", 0, {0, 3, 5}, 4.455},              // 1.8 + 1.68 + 0.96 + 0.015
    });
}

TEST(QVGramPatternTable, IgnoringCaseWhatIsOfExactCaseCountsMore) {
    expectRows({
        {u"fb", u"fooBar", 2, {0, 3}, 3.21},                   // 1.8 + 1.4 + 0.01
        {u"FB", u"fooBar", 2, {0, 3}, 3.19},                   // 1.5 + 1.68 + 0.01
        {u"fB", u"fooBar", 2, {0, 3}, 3.49},                   // both exact
        {u"Fb", u"fooBar", 2, {0, 3}, 2.91},                   // neither: 1.5 + 1.4 + 0.01
        {u"fooBar", u"fooBar", 2, {0, 1, 2, 3, 4, 5}, 13.258}, // as without options
        {u"foobar", u"fooBar", 2, {0, 1, 2, 3, 4, 5}, 12.25},  // 7.2 + 3 x 1.68 + 0.01
        {u"FOOBAR", u"fooBar", 2, {0, 1, 2, 3, 4, 5}, 11.05},  // 3 x 2 + 3 x 1.68 + 0.01
        {u"bar", u"fooBar", 2, {3, 4, 5}, 3.605},              // 3 x 1.2 + 0.005
        {u"BAR", u"fooBar", 2, {3, 4, 5}, 3.605},              // an exact B alone doesn't make a run exact
        {u"Bar", u"fooBar", 2, {3, 4, 5}, 4.325},
        {u"fr", u"fooBar", 2, {0, 5}, 2.77},  // 1.8 + 0.96 + 0.01
        {u"fR", u"fooBar", 2, {0, 5}, 2.61},  // 1.8 + 0.8 + 0.01
        {u"OO", u"fooBar", 2, {1, 2}, 1.605}, // 2 x 0.8 + 0.005
        {u"oo", u"fooBar", 2, {1, 2}, 1.925}, // 2 x 0.96 + 0.005
    });
}

TEST(QVGramPatternTable, OnceAGramHadAnotherCaseItsLaterRunsCountAsNotExactEither) {
    expectRows({
        {u"br", u"fooBar", 2, {3, 5}, 1.81}, // 1.0, and the r, though exact, 0.8; + 0.01
        {u"bR", u"fooBar", 2, {3, 5}, 1.81},
        {u"Br", u"fooBar", 2, {3, 5}, 2.17},      // 1.2 + 0.96 + 0.01
        {u"BR", u"fooBar", 2, {3, 5}, 2.01},      // the first run stays exact: 1.2 + 0.8 + 0.01
        {u"Fob", u"fxoBar", 2, {0, 2, 3}, 3.715}, // 1.5 + 0.8 + 1.4 + 0.015
        {u"FoB", u"fxoBar", 2, {0, 2, 3}, 3.995}, // another gram begins anew: 1.5 + 0.8 + 1.68 + 0.015
    });
}

TEST(QVGramPatternTable, GramsInSequenceCountMoreThanGramsWithAGap) {
    expectRows({
        // Three grams: each run adds 0.01 / 3.
        {u"fbb", u"fooBarBaz", 2, {0, 3, 6}, 4.61},  // 1.8 + 1.4 + 1.4 + 0.01
        {u"fBB", u"fooBarBaz", 2, {0, 3, 6}, 5.17},  // 1.8 + 1.68 + 1.68 + 0.01
        {u"fz", u"fooBarBaz", 2, {0, 8}, 2.7666667}, // 1.8 + 0.96 + 0.0066667
        {u"fbz", u"fooBarBaz", 2, {0, 3, 8}, 4.17},  // 1.8 + 1.4 + 0.96 + 0.01
        {u"bb", u"fooBarBaz", 2, {3, 6}, 2.4066667}, // 1.0 + 1.4 + 0.0066667
        {u"z", u"fooBarBaz", 0, {8}, 0.9633333},     // 0.96 + 0.0033333
        {u"fB", u"foo_Bar", 0, {0, 4}, 3.0066667},   // a gap: 1.8 + 1.2 + 0.0066667
        {u"f_B", u"foo_Bar", 0, {0, 3, 4}, 5.506},   // 1.8 + 2.016 + 1.68 + 0.01
        {u"_", u"foo_Bar", 0, {3}, 1.4433333},       // a whole gram of one sign: 1.44 + 0.0033333
        {u"foo_Bar", u"foo_Bar", 0, {0, 1, 2, 3, 4, 5, 6}, 15.274}, // 7.2 + 2.016 + 6.048 + 0.01
        // Four grams: each run adds 0.0025.
        {u"ab2", u"a_b2", 0, {0, 2, 3}, 5.8635}, // 2.4 + 1.44 + 2.016 + 0.0075
        {u"ab", u"a_b2", 0, {0, 2}, 3.845},      // 2.4 + 1.44 + 0.005
        {u"2", u"a_b2", 0, {3}, 1.4425},         // 1.44 + 0.0025
    });
}

TEST(QVGramPatternTable, ALetterIsTakenByTheFirstGramThatHasIt) {
    // There would be a better place, but nothing is ever given back.
    expectRows({
        {u"baz", u"fooBarBaz", 2, {3, 4, 8}, 2.9666667},         // 2 x 1.0 + 0.96 + 0.0066667
        {u"Baz", u"fooBarBaz", 0, {3, 4, 8}, 3.3666667},         // 2 x 1.2 + 0.96 + 0.0066667
        {u"foobaz", u"fooBarBaz", 2, {0, 1, 2, 3, 4, 8}, 10.97}, // 7.2 + 2 x 1.4 + 0.96 + 0.01
    });
}

TEST(QVGramPatternTable, RunsOfCapitals) {
    // The grams are HTML and Element.
    expectRows({
        {u"he", u"HTMLElement", 2, {0, 4}, 2.91},          // 1.5 + 1.4 + 0.01
        {u"HE", u"HTMLElement", 2, {0, 4}, 3.49},          // 1.8 + 1.68 + 0.01
        {u"html", u"HTMLElement", 2, {0, 1, 2, 3}, 8.005}, // 4 x 2 + 0.005
        {u"HTML", u"HTMLElement", 2, {0, 1, 2, 3}, 9.605}, // 4 x 2.4 + 0.005
        {u"hmt", u"HTMLElement", 2, {0, 2, 10}, 3.275},    // 1.5 + 0.8 + 0.96 + 0.015
        {u"ee", u"HTMLElement", 2, {4, 6}, 1.81},          // 1.0 + 0.8 + 0.01
        {u"Ee", u"HTMLElement", 2, {4, 6}, 2.17},          // 1.2 + 0.96 + 0.01
    });
}

TEST(QVGramPatternTable, WithBeginningsOnlyAGramHasOneRunAtItsStart) {
    expectRows({
        {u"oo", u"fooBar", 1, {}, 0},
        {u"oo", u"fooBar", 3, {}, 0},
        {u"fo", u"fooBar", 1, {0, 1}, 3.605}, // 2 x 1.8 + 0.005
        {u"fB", u"fooBar", 1, {0, 3}, 3.49},
        {u"fb", u"fooBar", 3, {0, 3}, 3.21},
        {u"fBa", u"fooBar", 1, {0, 3, 4}, 5.17}, // 1.8 + 2 x 1.68 + 0.01
        {u"fBr", u"fooBar", 1, {}, 0},           // the r would be a second run
        {u"fooBar", u"fooBar", 1, {0, 1, 2, 3, 4, 5}, 13.258},
        {u"bb", u"fooBarBaz", 3, {3, 6}, 2.4066667}, // 1.0 + 1.4 + 0.0066667
        {u"fz", u"fooBarBaz", 3, {}, 0},
        {u"baz", u"fooBarBaz", 3, {}, 0}, // Bar took the b and the a
    });
}

TEST(QVGramPatternTable, LettersWithoutTheirDiacriticsAreNotExact) {
    // The grams are éclair and Noir.
    expectRows({
        {u"eN", u"éclairNoir", 0, {}, 0},
        {u"eN", u"éclairNoir", 4, {0, 6}, 3.19},                   // 1.5 + 1.68 + 0.01
        {u"éN", u"éclairNoir", 4, {0, 6}, 3.49},                   // as it was typed: 1.8 + 1.68 + 0.01
        {u"en", u"éclairNoir", 4, {}, 0},                          // case counts
        {u"en", u"éclairNoir", 6, {0, 6}, 2.91},                   // 1.5 + 1.4 + 0.01
        {u"éclair", u"eclair", 4, {0, 1, 2, 3, 4, 5}, 12.01},      // 6 x 2 + 0.01
        {u"ECLAIR", u"éclairNoir", 6, {0, 1, 2, 3, 4, 5}, 12.005}, // 6 x 2 + 0.005
        // A mark that stands by itself is stripped from the pattern, and what was typed is then compared one
        // place off: the N with the mark.
        {u"e\u0301N", u"éclairNoir", 4, {0, 6}, 2.91}, // 1.5 + 1.4 + 0.01
    });
}

TEST(QVGramPatternTable, WordsThatChangeTheirLengthKeepTheirPlaces) {
    expectRows({
        // Grams e, the mark, a. Of the mark nothing is left.
        {u"ea", u"e\u0301a", 4, {0, 2}, 3.8466667}, // 2.4 + 1.44 + 0.0066667
        // Lowered, the letter with the dot is two units: the x is pushed out of its word.
        {u"i", u"\u0130x", 2, {0}, 1.51},
        {u"x", u"\u0130x", 2, {}, 0},
        // The pattern is two units as well. The second has nothing that was typed beside it: 2 x 2 + 0.01.
        {u"\u0130", u"\u0130x", 2, {0, 1}, 4.01},
    });
}

TEST(QVGramPatternTable, ABlankEndsItsGram) {
    expectRows({
        {u"f b", u"fooBar", 10, {0, 3}, 3.21}, // 1.8 + 1.4 + 0.01
        {u"f\tb", u"fooBar", 10, {0, 3}, 3.21},
        {u"f\nb", u"fooBar", 10, {}, 0},           // a line end is no blank
        {u"fo b", u"fooBar", 10, {0, 1, 3}, 5.01}, // 2 x 1.8 + 1.4 + 0.01
        {u"o b", u"fooBar", 10, {1, 3}, 2.37},     // 0.96 + 1.4 + 0.01
        {u"f b", u"fooBar", 11, {0, 3}, 3.21},
        {u"f ", u"foo", 8, {0}, 1.81},
        {u" b", u"fooBar", 10, {3}, 1.005}, // the blank used the first gram up: 1.0 + 0.005
        {u" f", u"fooBar", 10, {}, 0},
        {u"a c", u"a_c", 8, {0, 2}, 3.8466667}, // the blank used the _ up: 2.4 + 1.44 + 0.0066667
        // Without the option a blank is a letter. The grams are f, the blank and b.
        {u"f b", u"f b", 0, {0, 1, 2}, 6.442}, // 2.4 + 2.016 + 2.016 + 0.01
        {u"f b", u"fooBar", 2, {}, 0},
    });
}

TEST(QVGramPatternTable, BlanksAloneMatchNothing) {
    expectRows({
        {u" ", u"foo", 8, {}, 0},
        {u"  ", u"fooBar", 8, {}, 0},
        {u" ", u" ", 8, {}, 0},
        {u" ", u"a b", 8, {}, 0},
        // A blank behind a gram that was matched to its end needs another gram to end.
        {u"foo ", u"foo", 8, {}, 0},
        {u"foo ", u"fooBar", 8, {0, 1, 2}, 7.205}, // 3 x 2.4 + 0.005
        {u"foo  ", u"fooBar", 8, {}, 0},
    });
}

TEST(QVGramPatternTable, ASecondPassCountsItsIndexesFromTheEndOfTheFirst) {
    // The blank behind foo uses Bar up, the last gram, and a second pass goes back to it. Its indexes are
    // further behind by the six units that the first pass went through; clients know them so.
    expectRows({
        {u"foo bar", u"fooBar", 10, {0, 1, 2, 6, 7, 8}, 12.25}, // 7.2 + 3 x 1.68 + 0.01
        {u"foo bar", u"fooBar", 11, {0, 1, 2, 6, 7, 8}, 12.25},
        {u"foo Bar", u"fooBar", 10, {0, 1, 2, 6, 7, 8}, 13.258},
        // Grams 1, a and 2. The first blank takes a, so a second pass, from 3 on, finds a; the second blank
        // takes 2, so a third pass, from 5 on, finds 2: 2.4 + 2.016 + 2.016 + 0.01.
        {u"1 a 2", u"1a2", 8, {0, 3, 5}, 6.442},
    });
}

TEST(QVGramPatternTable, ScoresAreRightToTheLastBit) {
    // Worked out in rationals. 1.2, 1.4 and 0.8 are no 32-bit numbers: 1.2 is 10066330 / 2^23, and 1.2 times
    // the constant 1.2 rounds to 12079596 / 2^23. Sums round after each run.
    struct Exact {
        const char16_t *query;
        const char16_t *candidate;
        unsigned options;
        std::uint32_t bits;
    };
    const Exact rows[] = {
        {u"fb", u"fooBar", 2,
         0x404D70A3}, // 1.8 + 1.4 + 0.01 x 2 / 2; in 64 bits all through it would be 0x404D70A4
        {u"fooBar", u"fooBar", 0,
         0x415420C6}, // 3 x 2.4 + 3 x 2.016 + 0.01 x 2 / 2; in 64 bits all through it would be 0x415420C5
        {u"Bar", u"fooBar", 0,
         0x408A6667}, // 3 x 1.44 + 0.01 x 1 / 2; in 64 bits all through it would be 0x408A6666
        {u"foobar", u"fooBar", 2, 0x41440000},    // 3 x 2.4 + 3 x 1.68 + 0.01 x 2 / 2
        {u"fBr", u"fooBar", 0, 0x408E8F5C},       // 1.8 + 1.68 + 0.96 + 0.01 x 3 / 2
        {u"fbb", u"fooBarBaz", 2, 0x4093851F},    // 1.8 + 1.4 + 1.4 + 0.01 x 3 / 3
        {u"foobaz", u"fooBarBaz", 2, 0x412F851F}, // 3 x 2.4 + 2 x 1.4 + 0.96 + 0.01 x 3 / 3
        {u"hmt", u"HTMLElement", 2, 0x4051999A},  // 1.5 + 0.8 + 0.96 + 0.01 x 3 / 2
        {u"ab2", u"a_b2", 0, 0x40BBA1CB},         // 2.4 + 1.44 + 2.016 + 0.01 x 3 / 4
        {u"foo_Bar", u"foo_Bar", 0,
         0x4174624F}, // 7.2 + 2.016 + 3 x 2.016 + 0.01 x 3 / 3; in 64 bits all through it would be 0x4174624E
        {u"aa", u"banana", 0, 0x3FF851EC}, // 0.96 + 0.96 + 0.01 x 2 / 1
        {u"z", u"fooBarBaz", 0,
         0x3F769D04}, // 0.96 + 0.01 x 1 / 3; in 64 bits all through it would be 0x3F769D03
        {u"FOOBAR", u"fooBar", 2, 0x4130CCCD}, // 3 x 2 + 3 x 1.68 + 0.01 x 2 / 2
        {u"bar", u"fooBar", 2,
         0x4066B853}, // 3 x 1.2 + 0.01 x 1 / 2; in 64 bits all through it would be 0x4066B852
    };
    for (const Exact &row : rows) {
        float score = 0;
        qv_indexesMatchingGrams(row.query, qv_grams(row.candidate), row.options, &score);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(score), row.bits) << NSString(row.query).UTF8String();
    }
}
