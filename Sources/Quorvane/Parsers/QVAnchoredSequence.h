#pragma once

#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/Scopes/QVScope.h"

namespace quorvane {

/// Where an anchored region stands in its sequence: which subscope is to come, and whether it came already
/// and may come again. Private to the parser; a small value that is copied to be able to go back.
struct QVAnchoredSequence {
    explicit QVAnchoredSequence(const QVScope::Scopes &subscopes) : scopes(&subscopes) {}

    const QVScope::Scopes *scopes;
    NSUInteger index = 0;
    bool repeated = false;

    /// Null where the sequence is used up.
    const std::shared_ptr<QVScope> &current() const {
        static const auto &none = *new std::shared_ptr<QVScope>;
        return index < scopes->size() ? (*scopes)[index] : none;
    }
    void advance() {
        ++index;
        repeated = false;
    }

    /// Brings the sequence to where the first `count` matches of a region that was parsed before have left
    /// it.
    void replay(QVSubmatches submatches, NSUInteger count, const QVScope *newlineScope,
                const QVScope *whitespaceScope) {
        for (NSUInteger element = 0; element < count && element < submatches.count(); ++element) {
            const QVScope *const scope = submatches[element]->scope();
            if (scope == newlineScope || scope == whitespaceScope || scope->isTemplateScope())
                continue;
            const NSUInteger matchedAt = submatches[element]->anchoredMatchIdx();
            if (repeated && matchedAt != index)
                advance();
            while (current() && matchedAt != index) {
                if (!current()->isOptional())
                    return;
                ++index;
            }
            if (!current())
                continue;
            if (current()->isRepeating())
                repeated = true;
            else
                ++index;
        }
    }
};

} // namespace quorvane
