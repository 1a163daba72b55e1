#pragma once

#include "Platform/Foundation/NSString.h"

#include <optional>

namespace quorvane {

class QVSymbolAvailability;

/// A named place in a document's structure, whether a parse found it or a host's index or documentation
/// brings it. All ranges are UTF-16 code units of the symbol's document. What a source doesn't know is null.
class QV_EXPORT QVSymbol {
public:
    virtual ~QVSymbol() = default;

    /// A `QVSymbolType`.
    virtual NSUInteger symbolType() const = 0;
    virtual NSRange range() const = 0;
    /// Null for a symbol without one.
    virtual NSString name() const = 0;

    /// A `QVSymbolScope`.
    virtual std::optional<NSUInteger> symbolScope() const { return std::nullopt; }
    virtual std::optional<NSRange> nameRange() const { return std::nullopt; }
    /// A function's arguments, in order.
    virtual std::optional<std::vector<std::shared_ptr<QVSymbol>>> arguments() const { return std::nullopt; }
    virtual NSString type() const { return nullptr; }
    virtual NSString defaultValue() const { return nullptr; }
    /// The text of the documentation comment.
    virtual NSString comment() const { return nullptr; }
    virtual std::optional<std::vector<std::shared_ptr<QVSymbolAvailability>>> availabilities() const {
        return std::nullopt;
    }
    /// The symbol whose context holds this one.
    virtual std::shared_ptr<QVSymbol> parent() const { return nullptr; }
    /// The name as people read it.
    virtual NSString displayName() const { return nullptr; }
    virtual NSString syntaxName() const { return nullptr; }

protected:
    QVSymbol() = default;
    QVSymbol(const QVSymbol &) = default;
    QVSymbol &operator=(const QVSymbol &) = default;
};

} // namespace quorvane
