#pragma once

#include "Platform/Foundation/NSAttributes.h"

#include <array>
#include <cstdint>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace highlight {

/// What painting comes to: the looks that stretches of a text get, as small numbers, equal ones for equal
/// attributes. A text has a few dozen. What came of painting over a look is remembered, so whoever paints the
/// text again does best to keep its palette.
class Palette {
public:
    /// The look of a text that nothing was painted over.
    static constexpr std::uint32_t plainLook = 0;

    explicit Palette(quorvane::NSAttributes defaults) : _defaults(defaults), _looks{std::move(defaults)} {}

    const quorvane::NSAttributes &defaults() const { return _defaults; }
    const quorvane::NSAttributes &operator[](std::uint32_t look) const { return _looks[look]; }

    /// The look of a stretch that had one before, painted over as the parse's flags say.
    std::uint32_t lookOver(std::uint32_t before, const quorvane::NSAttributes &attributes,
                           std::uint64_t flags) {
        const quorvane::NSAttribute *const key = attributes.begin();
        Painted &recent =
            _recent[(reinterpret_cast<std::uintptr_t>(key) / alignof(quorvane::NSAttribute) + before) %
                    _recent.size()];
        if (recent.before != before || recent.attributes != key || recent.flags != flags)
            recent = {before, key, flags, newLookOver(before, attributes, flags)};
        return recent.after;
    }

private:
    struct Painted {
        std::uint32_t before = 0;
        const quorvane::NSAttribute *attributes = nullptr;
        std::uint64_t flags = ~std::uint64_t{0};
        std::uint32_t after = 0;
    };

    std::uint32_t newLookOver(std::uint32_t before, const quorvane::NSAttributes &attributes,
                              std::uint64_t flags);

    quorvane::NSAttributes _defaults;
    std::vector<quorvane::NSAttributes> _looks;
    std::array<Painted, 64> _recent;
    std::map<std::tuple<std::uint32_t, const quorvane::NSAttribute *, std::uint64_t>, std::uint32_t> _known;
    /// Keeps what the tables know by its address.
    std::vector<quorvane::NSAttributes> _kept;
};

} // namespace highlight
