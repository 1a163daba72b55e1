#pragma once

#include "Platform/Foundation/NSCharacterSet.h"
#include "Platform/Foundation/NSIndexSet.h"
#include "Platform/Foundation/NSScanner.h"

#include <optional>
#include <vector>

/// Grams and their matching in the plainest way, step by step, to compare with: no layout, no masks, no
/// tables.
namespace quorvane::test {

inline std::vector<NSString> naiveGrams(const NSString &string) {
    NSScanner scanner(string.view());
    std::vector<NSString> grams;
    while (!scanner.isAtEnd()) {
        std::u16string upper;
        std::u16string lower;
        scanner.scanCharactersFromSet(*NSCharacterSet::uppercaseLetterCharacterSet(), &upper);
        scanner.scanCharactersFromSet(*NSCharacterSet::lowercaseLetterCharacterSet(), &lower);
        if (!upper.empty()) {
            // A character beyond the first plane is two units, and one character.
            const NSRange last = NSString(upper).rangeOfComposedCharacterSequenceAtIndex(upper.size() - 1);
            if (lower.empty()) {
                grams.emplace_back(upper);
            } else if (last.location == 0) {
                grams.emplace_back(upper + lower);
            } else {
                grams.emplace_back(upper.substr(0, last.location));
                grams.emplace_back(upper.substr(last.location) + lower);
            }
        } else if (!lower.empty()) {
            grams.emplace_back(lower);
        } else {
            grams.push_back(string.substringWithRange({scanner.scanLocation(), 1}));
            scanner.setScanLocation(scanner.scanLocation() + 1);
        }
    }
    return grams;
}

struct NaiveMatch {
    NSIndexSet indexes;
    float score = 0;
};

/// A product of a 32-bit weight and a constant: taken in 64 bits, rounded right away.
inline float naiveProduct(float weight, double constant) {
    const double product = static_cast<double>(weight) * constant;
    return static_cast<float>(product);
}

inline NaiveMatch naiveMatch(const NSString &receiver, const std::vector<NSString> &G, unsigned options) {
    const auto transformed = [&](NSString text) {
        if (options & 2)
            text = text.lowercaseString();
        if (options & 4)
            text = text.stringByApplyingTransform(NSStringTransformStripDiacritics, false);
        return text;
    };
    const auto unitAt = [](const NSString &text, std::size_t index) -> std::optional<char16_t> {
        if (index < text.length())
            return text.characterAtIndex(index);
        return std::nullopt;
    };
    const auto isWhitespace = [](std::optional<char16_t> unit) {
        return unit && NSCharacterSet::whitespaceCharacterSet()->characterIsMember(*unit);
    };

    const NSString orig = receiver;
    const NSString P = transformed(receiver);
    const std::size_t n = G.size();
    if (n == 0 || P.length() == 0)
        return {};
    std::size_t i = 0;
    NSUInteger last = NSNotFound;
    NSUInteger base = 0;
    unsigned runs = 0;
    float score = 0;
    NSIndexSet result;
    for (;;) {
        std::optional<char16_t> c;
        std::optional<char16_t> co;
        const auto load = [&] {
            if (i < P.length()) {
                c = unitAt(P, i);
                co = options & 6 ? unitAt(orig, i) : c;
            }
        };
        load();
        NSUInteger g = last == NSNotFound ? 0 : last + 1;
        if (g >= n)
            return {};
        bool advanced = false;
        for (; g < n; ++g) {
            const std::size_t L = G[g].length();
            if (L == 0)
                continue;
            const NSString word = transformed(G[g]);
            const NSString raw = G[g];
            const bool adjacent = g != 0 && last != NSNotFound && g == last + 1;
            float wholeWeight = g == 0 ? 2.0F : 1.2F;
            float prefixWeight = g == 0 ? 1.5F : 1.0F;
            if (adjacent) {
                wholeWeight = naiveProduct(wholeWeight, 1.4);
                prefixWeight = naiveProduct(prefixWeight, 1.4);
            }
            bool caseExact = true;
            std::size_t runStart = 0;
            std::size_t runLen = 0;
            std::size_t k = 0;
            while (k < L) {
                bool consumed = false;
                bool matched = false;
                if (options & 8 && isWhitespace(c)) {
                    consumed = true;
                } else if (unitAt(word, k) == c) {
                    if (options & 6 && caseExact)
                        caseExact = unitAt(raw, k) == co;
                    last = g;
                    advanced = true;
                    ++runLen;
                    matched = true;
                }
                if (consumed || matched) {
                    ++i;
                    load();
                }
                const bool atEnd = i >= P.length();
                const std::size_t e = runStart + runLen;
                if (e != L && !atEnd && matched) {
                    k = e;
                    continue;
                }
                if (runLen > 0) {
                    float w = runLen == L ? wholeWeight : runStart == 0 ? prefixWeight : 0.8F;
                    if (caseExact)
                        w = naiveProduct(w, 1.2);
                    const float added = w * static_cast<float>(runLen);
                    score = score + added;
                    ++runs;
                    result.addIndexesInRange({runStart + base, runLen});
                    runStart = e;
                } else if (e < L) {
                    runStart = e + 1;
                }
                if (consumed || options & 1 || atEnd)
                    break;
                runLen = 0;
                k = runStart;
            }
            base += L;
            if (i >= P.length())
                break;
        }
        if (!advanced)
            return {};
        if (i >= P.length())
            break;
    }
    const float quotient = static_cast<float>(runs) / static_cast<float>(n);
    const double sum = static_cast<double>(score) + 0.01 * static_cast<double>(quotient);
    return {result, static_cast<float>(sum)};
}

} // namespace quorvane::test
