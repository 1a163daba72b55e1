#pragma once

#include "Host/QVMatchTreeText.h"
#include "Quorvane/Matches/QVScopeMatch.h"
#include "Tests/Quorvane/Parsers/GrammarText.h"

#include <gtest/gtest.h>

/// A parse that is edited, for tests of what is parsed again.
namespace quorvane::test {

inline const std::string words = single("w", "\\w+");
inline const std::string comment = region("comment", "/\\*", "\\*/");

/// A parse of a text on the main queue, edited step by step.
class Reparse : public testing::Test {
protected:
    void start(const std::string &scopes, std::u16string_view text) {
        parse = QVParse::initWithSyntax(syntaxWithScopes(scopes), 0, QVParseMainQueueConcurrencyType);
        EXPECT_EQ(edit({0, 0}, text), (NSRange{0, text.size()}));
    }
    NSRange edit(NSRange range, std::u16string_view text) {
        NSRange answer{};
        parse->performWritingBlockAndWait(
            [&] { answer = parse->replaceCharactersInRange(range, text, nullptr); });
        return answer;
    }
    std::string tree() const { return QVMatchTreeText(*parse); }
    std::string freshTree() const { return QVMatchTreeText(*parseOfText(parse->syntax(), parse->string())); }
    QVScopeMatch *child(NSUInteger index) const { return parse->rootMatch()->submatches()[index]; }
    std::vector<QVScopeMatch *> children() const {
        const QVSubmatches matches = parse->rootMatch()->submatches();
        std::vector<QVScopeMatch *> result;
        for (QVScopeMatch *const match : matches)
            result.push_back(match);
        return result;
    }

    std::shared_ptr<QVParse> parse;
};

} // namespace quorvane::test
