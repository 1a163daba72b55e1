#pragma once

#include "Platform/Foundation/NSObject.h"

#include <atomic>
#include <boost/container/small_vector.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <compare>
#include <initializer_list>
#include <span>
#include <variant>
#include <vector>

/// Attribute dictionaries of text: what a stretch of it looks like, as an immutable shared value. Runs, lines
/// and consumers of highlighting keep them by the million, so one is as big as a pointer, copying it counts a
/// reference, and two that are the same object compare by one pointer. Dictionaries are put together in an
/// `NSMutableAttributes`.
namespace quorvane {

/// The name of an attribute, interned for the life of the process: as big as a pointer, and compared by it.
/// Programs have a fixed set of names, so the table only grows. Any thread.
class QV_EXPORT NSAttributeKey {
public:
    explicit NSAttributeKey(std::u16string_view name) : _name(intern(name)) {}

    const NSString &string() const { return *_name; }
    const NSString &description() const { return *_name; }
    std::size_t hash() const { return std::hash<const void *>()(_name); }

    friend bool operator==(NSAttributeKey, NSAttributeKey) = default;
    /// By name, so that lists of attributes come in the same order in every process.
    friend std::strong_ordering operator<=>(NSAttributeKey a, NSAttributeKey b) {
        return a._name == b._name ? std::strong_ordering::equal : *a._name <=> *b._name;
    }

private:
    friend class NSAttributeName;
    explicit NSAttributeKey(const NSString *name) : _name(name) {}
    static const NSString *intern(std::u16string_view name);

    const NSString *_name;
};

/// An attribute's name as a constant: it costs nothing before its first use, which interns it, and stands
/// wherever a key is taken.
class NSAttributeName {
public:
    constexpr explicit NSAttributeName(const char16_t *name) : _name(name) {}

    NSAttributeKey key() const {
        const NSString *interned = _interned.load(std::memory_order_acquire);
        if (interned == nullptr) [[unlikely]] {
            interned = NSAttributeKey::intern(_name);
            _interned.store(interned, std::memory_order_release);
        }
        return NSAttributeKey(interned);
    }
    operator NSAttributeKey() const { return key(); }
    const NSString &string() const { return key().string(); }
    const NSString &description() const { return key().string(); }

private:
    const char16_t *_name;
    mutable std::atomic<const NSString *> _interned = nullptr;
};

/// A font.
inline constinit const NSAttributeName NSFontAttributeName{u"NSFont"};
/// Colours; text without one is black on nothing.
inline constinit const NSAttributeName NSForegroundColorAttributeName{u"NSColor"};
inline constinit const NSAttributeName NSBackgroundColorAttributeName{u"NSBackgroundColor"};
/// Masks of underline style and pattern, as integers; lines without a colour take the text's.
inline constinit const NSAttributeName NSUnderlineStyleAttributeName{u"NSUnderline"};
inline constinit const NSAttributeName NSUnderlineColorAttributeName{u"NSUnderlineColor"};
inline constinit const NSAttributeName NSStrikethroughStyleAttributeName{u"NSStrikethrough"};
inline constinit const NSAttributeName NSStrikethroughColorAttributeName{u"NSStrikethroughColor"};
inline constinit const NSAttributeName NSShadowAttributeName{u"NSShadow"};
inline constinit const NSAttributeName NSParagraphStyleAttributeName{u"NSParagraphStyle"};
inline constinit const NSAttributeName NSAttachmentAttributeName{u"NSAttachment"};
/// A URL as a string.
inline constinit const NSAttributeName NSLinkAttributeName{u"NSLink"};
/// Points by which glyphs stand further apart.
inline constinit const NSAttributeName NSKernAttributeName{u"NSKern"};
/// An integer: 0 for no ligatures, 1 for the font's usual ones.
inline constinit const NSAttributeName NSLigatureAttributeName{u"NSLigature"};
/// Points above the base line.
inline constinit const NSAttributeName NSBaselineOffsetAttributeName{u"NSBaselineOffset"};
/// The pointer's shape over the text.
inline constinit const NSAttributeName NSCursorAttributeName{u"NSCursor"};
inline constinit const NSAttributeName NSToolTipAttributeName{u"NSToolTip"};

/// "None, on purpose", where a collection needs a value for it.
struct NSNull {
    friend constexpr bool operator==(NSNull, NSNull) = default;
};

/// What an attribute can hold: the null marker, a number, a string, or a shared object (a font, a colour)
/// that nobody changes any more. Two objects are equal when they say so.
class QV_EXPORT NSAttributeValue
    : public std::variant<NSNull, NSInteger, double, NSString, std::shared_ptr<const NSObject>> {
public:
    using Object = std::shared_ptr<const NSObject>;
    using Base = std::variant<NSNull, NSInteger, double, NSString, Object>;

    /// The null marker.
    NSAttributeValue() = default;
    NSAttributeValue(NSNull) {}
    template <std::integral T> NSAttributeValue(T number) : Base(static_cast<NSInteger>(number)) {}
    template <std::floating_point T> NSAttributeValue(T number) : Base(static_cast<double>(number)) {}
    NSAttributeValue(NSString string) : Base(std::move(string)) {}
    NSAttributeValue(const char16_t *string) : Base(NSString(string)) {}
    template <typename T>
    requires std::convertible_to<T *, const NSObject *> NSAttributeValue(std::shared_ptr<T> object)
        : Base(Object(std::move(object))) {}

    bool isNull() const { return std::holds_alternative<NSNull>(*this); }
    /// The number, 0 for what is none; fractions are cut off, and numbers beyond the range clamped.
    NSInteger integerValue() const;
    double doubleValue() const;
    /// The string, the null string for what is none.
    NSString stringValue() const;
    /// The object if it is of this class, else null; good as long as the value.
    template <typename T = NSObject> const T *object() const {
        const Object *const held = std::get_if<Object>(static_cast<const Base *>(this));
        if constexpr (std::is_same_v<T, NSObject>)
            return held ? held->get() : nullptr;
        else
            return held ? dynamic_cast<const T *>(held->get()) : nullptr;
    }

    std::size_t hash() const;
    NSString description() const;

    friend QV_EXPORT bool operator==(const NSAttributeValue &a, const NSAttributeValue &b);
};

/// A key with its value.
struct NSAttribute {
    NSAttributeKey key;
    NSAttributeValue value;

    friend bool operator==(const NSAttribute &, const NSAttribute &) = default;
};

class NSMutableAttributes;

/// An immutable attribute dictionary. Any thread.
class QV_EXPORT NSAttributes {
public:
    /// The empty dictionary, which takes no memory.
    NSAttributes() = default;
    /// Of several values for one key, the last counts.
    NSAttributes(std::initializer_list<NSAttribute> attributes);

    bool empty() const { return _storage == nullptr; }
    std::size_t count() const { return _storage ? _storage->attributes.size() : 0; }
    /// Null where the key is not there; good as long as any copy of this dictionary.
    const NSAttributeValue *valueForKey(NSAttributeKey key) const {
        for (const NSAttribute &attribute : *this)
            if (attribute.key == key)
                return &attribute.value;
        return nullptr;
    }
    bool containsKey(NSAttributeKey key) const { return valueForKey(key) != nullptr; }
    /// The key's object if it is of this class, else null.
    template <typename T> const T *objectForKey(NSAttributeKey key) const {
        const NSAttributeValue *const value = valueForKey(key);
        return value ? value->object<T>() : nullptr;
    }

    /// In the order of the keys' names.
    const NSAttribute *begin() const { return _storage ? _storage->attributes.data() : nullptr; }
    const NSAttribute *end() const { return begin() + count(); }

    /// With the other's attributes added, which replace those of the same keys.
    NSAttributes attributesByAddingAttributes(const NSAttributes &attributes) const;
    NSAttributes attributesBySettingValue(NSAttributeValue value, NSAttributeKey forKey) const;
    NSAttributes attributesByRemovingKeys(std::span<const NSAttributeKey> keys) const;
    NSAttributes attributesByRemovingKeys(std::initializer_list<NSAttributeKey> keys) const {
        return attributesByRemovingKeys(std::span(keys.begin(), keys.size()));
    }

    /// Whether both are the very same object; equal contents don't count.
    bool isIdenticalTo(const NSAttributes &other) const { return _storage == other._storage; }
    std::size_t hash() const { return _storage ? _storage->hash : 0; }
    /// "{key = value; key = value}".
    NSString description() const;

    friend bool operator==(const NSAttributes &a, const NSAttributes &b) {
        return a._storage == b._storage || haveEqualContents(a, b);
    }

private:
    friend class NSMutableAttributes;
    struct Storage {
        mutable std::atomic<std::size_t> retainCount = 0;
        std::size_t hash = 0;
        std::vector<NSAttribute> attributes;

        friend void intrusive_ptr_add_ref(const Storage *storage) {
            storage->retainCount.fetch_add(1, std::memory_order_relaxed);
        }
        friend void intrusive_ptr_release(const Storage *storage) {
            if (storage->retainCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
                delete storage;
        }
    };

    /// Sorted, each key once.
    explicit NSAttributes(std::vector<NSAttribute> attributes);
    static bool haveEqualContents(const NSAttributes &a, const NSAttributes &b);

    boost::intrusive_ptr<const Storage> _storage;
};

/// An attribute dictionary in the making: a small flat map with room for the usual number of attributes
/// inside.
class QV_EXPORT NSMutableAttributes {
public:
    NSMutableAttributes() = default;
    explicit NSMutableAttributes(const NSAttributes &attributes) { add(attributes); }

    bool empty() const { return _attributes.empty(); }
    std::size_t count() const { return _attributes.size(); }
    /// Null where the key is not there; good until the next change.
    const NSAttributeValue *valueForKey(NSAttributeKey key) const;
    bool containsKey(NSAttributeKey key) const { return valueForKey(key) != nullptr; }
    template <typename T> const T *objectForKey(NSAttributeKey key) const {
        const NSAttributeValue *const value = valueForKey(key);
        return value ? value->object<T>() : nullptr;
    }

    void set(NSAttributeKey key, NSAttributeValue value);
    /// Replaces the values of the same keys.
    void add(const NSAttributes &attributes);
    void remove(NSAttributeKey key);
    void clear() { _attributes.clear(); }

    /// The dictionary as it stands.
    NSAttributes attributes() const;

private:
    /// Sorted by key.
    boost::container::small_vector<NSAttribute, 6> _attributes;
};

} // namespace quorvane

template <> struct std::hash<quorvane::NSAttributeKey> {
    std::size_t operator()(quorvane::NSAttributeKey key) const { return key.hash(); }
};
template <> struct std::hash<quorvane::NSAttributes> {
    std::size_t operator()(const quorvane::NSAttributes &attributes) const { return attributes.hash(); }
};
