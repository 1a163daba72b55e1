#pragma once

#include "Quorvane/Symbols/QVSymbol.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"

#include <memory>
#include <optional>
#include <vector>

namespace quorvane::test {

/// A symbol as an index may bring it: with arguments, an empty list of them, or without any idea of them.
class FunctionSymbol final : public QVSymbol {
public:
    explicit FunctionSymbol(NSString name) : _name(std::move(name)) {}
    FunctionSymbol(NSString name, const std::vector<NSString> &arguments) : _name(std::move(name)) {
        _arguments.emplace();
        for (const NSString &argument : arguments)
            _arguments->push_back(std::make_shared<FunctionSymbol>(argument));
    }
    NSUInteger symbolType() const override { return QVSymbolTypeFunction; }
    NSRange range() const override { return {0, 0}; }
    NSString name() const override { return _name; }
    std::optional<std::vector<std::shared_ptr<QVSymbol>>> arguments() const override { return _arguments; }

private:
    NSString _name;
    std::optional<std::vector<std::shared_ptr<QVSymbol>>> _arguments;
};

} // namespace quorvane::test
