#pragma once

#include "Quorvane/Matches/QVCaptureMatch.h"
#include "Quorvane/Matches/QVScopeMatch.h"
#include "Quorvane/RegularExpressions/QVRegularExpression.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Scopes/QVScopeSymbolOptions.h"
#include "Tests/Support/Recorders.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::test {

inline std::shared_ptr<QVScope> scopeOfType(QVScopeType type, const NSString &name = u"plain") {
    return QVScope::scopeWithType(type, nullptr, name, nullptr, nullptr);
}

inline std::shared_ptr<QVCapture> captureOfGroup(NSUInteger number, const NSString &name = u"part") {
    auto capture = std::make_shared<QVCapture>();
    capture->setNumber(number);
    capture->setName(name);
    return capture;
}

/// A match tree for navigation, each match named by its scope:
///
///     root
///         a           with captures a1, a2 and end capture a9
///             b
///             c
///                 d
///         e
///         f
///             g
class Tree {
public:
    Tree() {
        const auto named = captureOfGroup(1, u"a1");
        const auto second = captureOfGroup(2, u"a2");
        const auto ending = captureOfGroup(9, u"a9");
        captures = {named, second, ending};
        QVScopeMatch *const a = add(root, u"a", {0, 1}, {named, second}, {ending});
        add(a, u"b", {1, 1});
        QVScopeMatch *const c = add(a, u"c", {2, 1});
        add(c, u"d", {3, 1});
        add(root, u"e", {5, 1});
        QVScopeMatch *const f = add(root, u"f", {6, 1});
        add(f, u"g", {7, 1});
    }

    QVScopeMatch *operator[](std::u16string_view name) const { return find(root.get(), name); }

    /// "-" for nothing.
    static std::string name(const QVMatch *match) {
        if (match == nullptr)
            return "-";
        if (const QVScopeMatch *const scopeMatch = match->asScopeMatch())
            return scopeMatch->scope()->name().UTF8String();
        return static_cast<const QVCaptureMatch *>(match)->capture()->name().UTF8String();
    }

    std::vector<std::shared_ptr<QVScope>> scopes{scopeOfType(QVScopeTypeRoot, u"root")};
    std::vector<std::shared_ptr<QVCapture>> captures;
    QVScopeMatchReference root = QVScopeMatch::initWithScope(scopes.front().get());

private:
    QVScopeMatch *add(QVScopeMatchReference parent, const NSString &name, NSRange range,
                      QVScope::Captures start = {}, QVScope::Captures end = {}) {
        scopes.push_back(scopeOfType(QVScopeTypeStartEnd, name));
        scopes.back()->setCaptures(start);
        scopes.back()->setEndCaptures(end);
        const QVScopeMatchReference match = QVScopeMatch::initWithScope(scopes.back().get());
        match->setRange(range);
        if (!start.empty())
            match->setCaptureMatches(matches(start, match.get()));
        if (!end.empty())
            match->setEndCaptureMatches(matches(end, match.get()));
        parent->insertSubmatch(match, parent->submatches().count());
        return match.get();
    }

    static std::unique_ptr<QVCaptureMatchArray> matches(const QVScope::Captures &list, QVScopeMatch *parent) {
        auto result = std::make_unique<QVCaptureMatchArray>();
        for (const auto &capture : list) {
            auto match = QVCaptureMatch::initWithCapture(capture.get());
            match->setParentMatch(parent);
            if (!result->empty()) {
                match->setPreviousSibling(result->back().get());
                result->back()->setNextSibling(match.get());
            }
            result->push_back(std::move(match));
        }
        return result;
    }

    static QVScopeMatch *find(QVScopeMatch *match, std::u16string_view name) {
        if (match->scope()->name() == name)
            return match;
        for (QVScopeMatch *const child : match->submatches())
            if (QVScopeMatch *const found = find(child, name))
                return found;
        return nullptr;
    }
};

} // namespace quorvane::test
