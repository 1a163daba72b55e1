#pragma once

#include "Platform/Foundation/NSAttributes.h"

#include <optional>

namespace quorvane {

/// How attributes are walked; a bit mask.
using NSAttributedStringEnumerationOptions = std::uint64_t;
inline constexpr NSAttributedStringEnumerationOptions NSAttributedStringEnumerationReverse = 1 << 1;
/// Neighbouring runs that are equal may be reported one by one.
inline constexpr NSAttributedStringEnumerationOptions
    NSAttributedStringEnumerationLongestEffectiveRangeNotRequired = 1 << 20;

/// Text with attributes for each of its characters. This is the reading side: three primitives (`length`,
/// `string` and `attributesAtIndex` with its effective range), which classes with storages of their own
/// override, and everything that follows from them. The factories make plain strings that never change.
///
/// All positions are UTF-16 code units. An index at or beyond the length, or a range that leaves the string,
/// throws `NSRangeException`. Plain strings may be read by any thread.
class QV_EXPORT NSAttributedString : public NSObject {
public:
    using AttributesBlock = QVBlock<void(const NSAttributes &attributes, NSRange range, bool &stop)>;
    /// Gets null where the attribute is not set.
    using AttributeBlock = QVBlock<void(const NSAttributeValue *value, NSRange range, bool &stop)>;

    static std::shared_ptr<NSAttributedString> initWithString(std::u16string_view string,
                                                              const NSAttributes &attributes = {});
    static std::shared_ptr<NSAttributedString>
    initWithAttributedString(const NSAttributedString &attributedString);

    // Primitives

    virtual NSUInteger length() const = 0;
    /// Good until the string changes.
    virtual QVTextReader string() const = 0;
    /// The attributes of a character; the optional range is a stretch around it in which they are the same,
    /// which may go on beyond.
    virtual NSAttributes attributesAtIndex(NSUInteger index, NSRange *effectiveRange) const = 0;

    // Reads

    NSAttributes attributesAtIndex(NSUInteger index) const { return attributesAtIndex(index, nullptr); }
    /// As above; the optional range is the longest there is inside of the limit.
    NSAttributes attributesAtIndex(NSUInteger index, NSRange *longestEffectiveRange, NSRange inRange) const;
    /// The value of one attribute, nothing where it is not set.
    std::optional<NSAttributeValue> attribute(NSAttributeKey key, NSUInteger atIndex,
                                              NSRange *effectiveRange = nullptr) const;
    std::optional<NSAttributeValue> attribute(NSAttributeKey key, NSUInteger atIndex,
                                              NSRange *longestEffectiveRange, NSRange inRange) const;

    /// Calls back for each stretch of equal attributes. The block may change attributes inside of the stretch
    /// it was called for.
    void enumerateAttributesInRange(NSRange range, NSAttributedStringEnumerationOptions options,
                                    AttributesBlock usingBlock) const;
    /// Likewise for one attribute, also where it is not set.
    void enumerateAttribute(NSAttributeKey key, NSRange inRange, NSAttributedStringEnumerationOptions options,
                            AttributeBlock usingBlock) const;

    std::shared_ptr<NSAttributedString> attributedSubstringFromRange(NSRange range) const;

    /// Equal text with equal attributes on each character, however they are cut into runs.
    bool isEqualToAttributedString(const NSAttributedString &other) const;
    bool isEqual(const NSObject *other) const override;
    std::size_t hash() const override;
    std::u16string_view className() const override { return u"NSAttributedString"; }
    /// The text with each run's attributes behind it.
    NSString description() const override;

protected:
    /// Called before the attributes of a whole range are read, for strings that put them in order lazily.
    virtual void prepareToReadAttributesInRange(NSRange /*range*/) const {}
    /// Throw where a place is not in the string.
    void checkIndex(NSUInteger index) const;
    void checkRange(NSRange range) const;

private:
    template <typename SameValue>
    NSRange longestRange(NSUInteger index, NSRange effectiveRange, NSRange inRange, SameValue same) const;
};

/// An attributed string that can change. Two more primitives, `replaceCharactersInRange` with a string and
/// `setAttributes`, carry all of its changes; classes with storages of their own override these, and the two
/// brackets around changes that belong together. One thread at a time.
class QV_EXPORT NSMutableAttributedString : public NSAttributedString {
public:
    static std::shared_ptr<NSMutableAttributedString> initWithString(std::u16string_view string,
                                                                     const NSAttributes &attributes = {});
    static std::shared_ptr<NSMutableAttributedString>
    initWithAttributedString(const NSAttributedString &attributedString);

    // Primitives

    /// The new characters take the attributes of the first one that goes, else of the one before, else of the
    /// one behind.
    virtual void replaceCharactersInRange(NSRange range, std::u16string_view withString) = 0;
    virtual void setAttributes(const NSAttributes &attributes, NSRange range) = 0;
    virtual void beginEditing() {}
    virtual void endEditing() {}

    // Changes

    virtual void addAttribute(NSAttributeKey key, NSAttributeValue value, NSRange range);
    /// Replaces the values of the same keys and keeps the others.
    virtual void addAttributes(const NSAttributes &attributes, NSRange range);
    virtual void removeAttribute(NSAttributeKey key, NSRange range);
    /// Gives each run in the range the attributes that are made of its present ones.
    virtual void changeAttributesInRange(NSRange range,
                                         QVBlock<NSAttributes(const NSAttributes &attributes)> usingBlock);

    /// The new characters bring their own attributes.
    virtual void replaceCharactersInRange(NSRange range, const NSAttributedString &withAttributedString);
    /// All new characters get these attributes.
    virtual void replaceCharactersInRangeWithAttributes(NSRange range, std::u16string_view withString,
                                                        const NSAttributes &attributes);
    void insertAttributedString(const NSAttributedString &attributedString, NSUInteger atIndex);
    void appendAttributedString(const NSAttributedString &attributedString);
    void deleteCharactersInRange(NSRange range) { replaceCharactersInRange(range, std::u16string_view()); }
    void setAttributedString(const NSAttributedString &attributedString);

    std::u16string_view className() const override { return u"NSMutableAttributedString"; }
};

} // namespace quorvane
