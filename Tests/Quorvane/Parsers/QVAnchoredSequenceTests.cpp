#include "Quorvane/Parsers/QVAnchoredSequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quorvane;

namespace {

/// A sequence written as letters: upper-case ones are required, lower-case ones optional, and "+" behind one
/// makes it repeat. Its matches are the places in the sequence, with -1 for a line ending, -2 for blanks, -3
/// for a match of a template scope and -4 for unknown text.
class AnchoredReplay : public testing::Test {
protected:
    void define(std::u16string_view letters) {
        for (const char16_t letter : letters) {
            if (letter == u'+') {
                scopes.back()->setRepeating(true);
                continue;
            }
            scopes.push_back(scope(QVScopeTypeMatch));
            scopes.back()->setOptional(letter >= u'a');
        }
    }

    /// Where the sequence stands after these matches: its index, with "+" where the scope there has come.
    std::string after(const std::vector<int> &places) {
        auto matches = std::make_unique<QVScopeMatchArray>();
        for (const int place : places) {
            const auto &of = place == -1   ? newline
                             : place == -2 ? whitespace
                             : place == -3 ? templateScope
                             : place == -4 ? unknown
                                           : scopes[static_cast<std::size_t>(place)];
            matches->push_back(QVScopeMatch::initWithScope(of.get()));
            matches->back()->setRange({matches->size(), 1});
            if (place >= 0)
                matches->back()->setAnchoredMatchIdx(static_cast<NSUInteger>(place));
        }
        const auto regionScope = scope(QVScopeTypeStartEnd);
        const auto region = QVScopeMatch::initWithScope(regionScope.get());
        region->setRange({0, 1});
        region->setSubmatches(std::move(matches));
        QVAnchoredSequence sequence(scopes);
        sequence.replay(region->submatches(), count.value_or(places.size()), newline.get(), whitespace.get());
        return std::to_string(sequence.index) + (sequence.repeated ? "+" : "");
    }

    static std::shared_ptr<QVScope> scope(QVScopeType type) {
        return QVScope::scopeWithType(type, nullptr, u"scope", nullptr, nullptr);
    }

    QVScope::Scopes scopes;
    /// How many of the matches count; all of them unless it is set.
    std::optional<NSUInteger> count;
    const std::shared_ptr<QVScope> newline = scope(QVScopeTypeNewline);
    const std::shared_ptr<QVScope> whitespace = scope(QVScopeTypeWhitespace);
    const std::shared_ptr<QVScope> unknown = scope(QVScopeTypeUnknown);
    const std::shared_ptr<QVScope> templateScope = [] {
        const auto made = scope(QVScopeTypeMatch);
        made->setTemplateScope(true);
        return made;
    }();
};

} // namespace

TEST_F(AnchoredReplay, WithoutMatchesItStandsAtTheBeginning) {
    define(u"AB");
    EXPECT_EQ(after({}), "0");
}

TEST_F(AnchoredReplay, EachMatchMovesItOn) {
    define(u"ABC");
    EXPECT_EQ(after({0}), "1");
    EXPECT_EQ(after({0, 1}), "2");
    EXPECT_EQ(after({0, 1, 2}), "3");
}

TEST_F(AnchoredReplay, OnlyTheFirstMatchesCount) {
    define(u"ABC");
    count = 1;
    EXPECT_EQ(after({0, 1, 2}), "1");
    // More than there are is no harm.
    count = 5;
    EXPECT_EQ(after({0, 1}), "2");
}

TEST_F(AnchoredReplay, PassesOverOptionalScopesThatDidNotCome) {
    define(u"AbcD");
    EXPECT_EQ(after({0, 3}), "4");
    EXPECT_EQ(after({0, 2}), "3");
}

TEST_F(AnchoredReplay, ARepeatingScopeStaysAndIsMarked) {
    define(u"A+B");
    EXPECT_EQ(after({0}), "0+");
    EXPECT_EQ(after({0, 0}), "0+");
    EXPECT_EQ(after({0, 0, 1}), "2");
}

TEST_F(AnchoredReplay, ARepeatingScopeIsLeftForAnotherOne) {
    define(u"A+b+C+");
    EXPECT_EQ(after({0, 1}), "1+");
    EXPECT_EQ(after({0, 2}), "2+");
}

TEST_F(AnchoredReplay, WhatIsNoPartOfTheSequenceDoesNotMoveIt) {
    define(u"A+B");
    EXPECT_EQ(after({-1, 0, -2, -3, -1}), "0+");
    EXPECT_EQ(after({-3, 0, -2, 1, -1}), "2");
}

TEST_F(AnchoredReplay, StopsWhereARequiredScopeDidNotCome) {
    define(u"ABC");
    EXPECT_EQ(after({1, 2}), "0");
    EXPECT_EQ(after({0, 2}), "1");
}

TEST_F(AnchoredReplay, AMatchWithoutAPlacePassesOverWhatIsOptional) {
    // Text of a line that is too long.
    define(u"A+bC");
    EXPECT_EQ(after({0, -4}), "2");
    define(u"");
    scopes.clear();
    define(u"Ab");
    EXPECT_EQ(after({0, -4}), "2");
}
