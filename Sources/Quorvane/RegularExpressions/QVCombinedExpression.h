#pragma once

#include "Quorvane/RegularExpressions/QVRegularExpression.h"

#include <span>

namespace quorvane {

/// Several patterns compiled into one, which is tried at one place of a text: of those that match there the
/// first in order answers. A grammar has dozens of patterns that can begin with the same character; asking
/// them one after the other costs a call each, together they cost one. Stands between expressions and the
/// parser, which asks at each place of a line. Immutable; any thread, each with its own match data.
class QVCombinedExpression {
public:
    using Expressions = std::span<const std::shared_ptr<const QVRegularExpression>>;

    /// Whether a pattern keeps its meaning beside others: it runs as machine code, refers to no group, and
    /// depends on nothing but the text around the place where it is tried.
    static bool canCombine(const QVRegularExpression &expression);
    /// Whether at least `firstAtLocation` can be asked for it: its match may begin elsewhere.
    static bool canCombineByIndex(const QVRegularExpression &expression);

    /// One object for the same expressions in the same order, kept for as long as the first of them lives:
    /// the next document in a language finds it ready. Each must pass one of the two. Null where the machine
    /// code can't be made.
    static std::shared_ptr<const QVCombinedExpression>
    combinedExpressionForExpressions(Expressions expressions);
    ~QVCombinedExpression();
    QVCombinedExpression(const QVCombinedExpression &) = delete;
    QVCombinedExpression &operator=(const QVCombinedExpression &) = delete;

    static constexpr std::int32_t noExpression = -1;
    /// The matcher gave up, so the expressions must be asked one by one.
    static constexpr std::int32_t unknownExpression = -2;

    struct Answer {
        /// Which of the expressions matches, or one of the two constants.
        std::int32_t index = noExpression;
        /// Where its match ends; it begins at the place.
        NSUInteger end = 0;
        /// Groups of the match data that belong to the expressions before it.
        NSUInteger groupsBefore = 0;
    };
    /// Tries the expressions at a place that is no half of a character. The text is the whole buffer: what a
    /// match may look at and reach is not limited. Overwrites the context's match data.
    /// For those that pass `canCombine`.
    Answer matchAtLocation(NSUInteger location, std::u16string_view text,
                           QVRegularExpressionMatchContext &context) const;
    /// Which of the expressions matches, or one of the two constants. Those before it don't match at the
    /// place.
    std::int32_t firstAtLocation(NSUInteger location, std::u16string_view text,
                                 QVRegularExpressionMatchContext &context) const;

private:
    QVCombinedExpression(::pcre2_real_code_16 *code, Expressions expressions);
    bool isOf(Expressions others) const;
    /// Whether some of the expressions are gone.
    bool isForsaken() const;
    static ::pcre2_real_code_16 *compile(Expressions expressions);

    ::pcre2_real_code_16 *_code;
    /// Not owned: the first one owns this.
    std::vector<std::weak_ptr<const QVRegularExpression>> _expressions;
    /// How many groups the expressions before each have, and all of them.
    std::vector<NSUInteger> _groupsBefore;
    NSUInteger _groupCount = 0;
};

} // namespace quorvane
