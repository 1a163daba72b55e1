#pragma once

#include "Quorvane/RegularExpressions/QVRegularExpression.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvane {
class QVSyntax;
}

/// Small grammars out of bytes, which can be built in two ways: of scopes, and through a syntax file. Both
/// ways give the same grammar, so they must give the same trees.
namespace quorvane::fuzz {

/// Bytes that are used up one by one; behind the last one come zeros.
class Bytes {
public:
    Bytes(const std::uint8_t *data, std::size_t size) : _data(data), _end(data + size) {}
    std::uint8_t next() { return _data == _end ? 0 : *_data++; }
    std::size_t below(std::size_t count) { return next() % count; }
    bool isAtEnd() const { return _data == _end; }

private:
    const std::uint8_t *_data;
    const std::uint8_t *_end;
};

enum class ScopeKind : std::uint8_t { Match, Region, Include, Cutoff };

/// What a scope will be. Patterns and names are numbers of fixed lists, so that no pattern takes for ever.
struct ScopePlan {
    ScopeKind kind = ScopeKind::Match;
    std::size_t name = 0;
    std::size_t pattern = 0;
    std::vector<std::size_t> captures;

    bool isOptional = false;
    bool isRepeating = false;

    // Regions.
    bool hasEnd = true;
    bool isEndTemplate = false;
    std::size_t endPattern = 0;
    std::vector<std::size_t> endCaptures;
    bool isAtomic = false;
    bool isAnchored = false;
    std::size_t whitespaceSkipBehavior = 0;
    std::vector<ScopePlan> subscopes;

    bool hasSubsyntax = false;
    /// A number of the syntax names, or the group that names the syntax.
    bool isSubsyntaxNamedByCapture = false;
    std::size_t subsyntax = 0;
    std::size_t subsyntaxCollection = 0;
    std::vector<ScopePlan> cutoffs;

    // Includes.
    std::size_t includedSyntax = 0;
    std::size_t includedCollection = 0;
};

struct CollectionPlan {
    bool overrides = false;
    std::vector<ScopePlan> scopes;
};

struct SyntaxPlan {
    std::size_t name = 0;
    std::vector<ScopePlan> scopes;
    std::vector<ScopePlan> templateScopes;
    /// Named by their numbers.
    std::array<CollectionPlan, 2> collections;
};

/// The names that planned syntaxes have; the third one belongs to none.
extern const std::array<const char16_t *, 3> syntaxNames;

/// Reads a plan; `allowsSlowPatterns` for short texts alone.
SyntaxPlan planOfBytes(Bytes &bytes, std::size_t name, bool allowsSlowPatterns);

std::shared_ptr<QVSyntax> syntaxOfScopes(const SyntaxPlan &plan);
/// The syntax file.
std::string fileOfPlan(const SyntaxPlan &plan);
std::shared_ptr<QVSyntax> syntaxOfFile(const std::string &file);

} // namespace quorvane::fuzz
