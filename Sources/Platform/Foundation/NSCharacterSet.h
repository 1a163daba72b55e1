#pragma once

#include "Platform/Foundation/NSCoder.h"

#include <array>

namespace quorvane {

/// An immutable set of Unicode characters. Membership of a UTF-16 unit is one read of a bit table; the
/// classes follow the Unicode general categories. Surrogate units belong to no set unless it was made of
/// them or inverts one that was not.
class QV_EXPORT NSCharacterSet final : public NSObject, public NSSecureCoding {
public:
    /// Letters, marks and numbers (L*, M*, N*).
    static std::shared_ptr<const NSCharacterSet> alphanumericCharacterSet();
    /// Letters and marks (L*, M*).
    static std::shared_ptr<const NSCharacterSet> letterCharacterSet();
    static std::shared_ptr<const NSCharacterSet> lowercaseLetterCharacterSet();
    /// Upper case and title case letters (Lu, Lt).
    static std::shared_ptr<const NSCharacterSet> uppercaseLetterCharacterSet();
    static std::shared_ptr<const NSCharacterSet> decimalDigitCharacterSet();
    static std::shared_ptr<const NSCharacterSet> punctuationCharacterSet();
    static std::shared_ptr<const NSCharacterSet> symbolCharacterSet();
    /// Blanks (Zs) and the tab.
    static std::shared_ptr<const NSCharacterSet> whitespaceCharacterSet();
    /// U+000A to U+000D, U+0085, U+2028 and U+2029.
    static std::shared_ptr<const NSCharacterSet> newlineCharacterSet();
    static std::shared_ptr<const NSCharacterSet> whitespaceAndNewlineCharacterSet();

    /// Composed pairs of surrogates count as one character.
    static std::shared_ptr<const NSCharacterSet>
    characterSetWithCharactersInString(std::u16string_view characters);
    static std::shared_ptr<const NSCharacterSet> emptyCharacterSet();
    std::shared_ptr<const NSCharacterSet> characterSetByFormingUnion(const NSCharacterSet &other) const;
    std::shared_ptr<const NSCharacterSet> invertedSet() const;

    ~NSCharacterSet() override;

    bool characterIsMember(char16_t unit) const { return (_bits[unit >> 6] >> (unit & 63)) & 1; }
    bool longCharacterIsMember(char32_t character) const;

    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"NSCharacterSet"; }

    static const NSCodingClass &codingClass();
    const NSCodingClass &classForCoder() const override { return codingClass(); }
    void encodeWithCoder(NSCoder &coder) const override;
    std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                  std::shared_ptr<NSSecureCoding> self) override;

    struct Ranges;

private:
    NSCharacterSet();
    friend struct NSCharacterSetFactory;

    std::array<std::uint64_t, 1024> _bits{};
    /// Characters beyond the first plane, as sorted ranges; null where there are none.
    std::unique_ptr<Ranges> _supplementary;
};

} // namespace quorvane
