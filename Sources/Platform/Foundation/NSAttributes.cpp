#include "Platform/Foundation/NSAttributes.h"

#include <cmath>
#include <shared_mutex>
#include <unordered_map>

namespace quorvane {

namespace {

struct KeyTable {
    std::shared_mutex lock;
    /// The views are of the names that they lead to.
    std::unordered_map<std::u16string_view, std::unique_ptr<const NSString>> names;
};

KeyTable &keyTable() {
    // Keys are used by tasks that run while the process ends.
    static auto *const table = new KeyTable;
    return *table;
}

std::size_t combineHashes(std::size_t a, std::size_t b) {
    return a ^ (b + 0x9e3779b97f4a7c15u + (a << 6) + (a >> 2));
}

} // namespace

const NSString *NSAttributeKey::intern(std::u16string_view name) {
    KeyTable &table = keyTable();
    {
        const std::shared_lock guard(table.lock);
        if (const auto found = table.names.find(name); found != table.names.end())
            return found->second.get();
    }
    auto interned = std::make_unique<const NSString>(name);
    const std::unique_lock guard(table.lock);
    const std::u16string_view view = interned->view();
    return table.names.try_emplace(view, std::move(interned)).first->second.get();
}

NSInteger NSAttributeValue::integerValue() const {
    if (const auto *const integer = std::get_if<NSInteger>(this))
        return *integer;
    const auto *const number = std::get_if<double>(this);
    if (number == nullptr || std::isnan(*number))
        return 0;
    constexpr double bound = 0x1p63;
    if (*number >= bound)
        return std::numeric_limits<NSInteger>::max();
    return *number < -bound ? std::numeric_limits<NSInteger>::min() : static_cast<NSInteger>(*number);
}

double NSAttributeValue::doubleValue() const {
    if (const auto *const number = std::get_if<double>(this))
        return *number;
    const auto *const integer = std::get_if<NSInteger>(this);
    return integer ? static_cast<double>(*integer) : 0;
}

NSString NSAttributeValue::stringValue() const {
    const auto *const string = std::get_if<NSString>(this);
    return string ? *string : NSString();
}

std::size_t NSAttributeValue::hash() const {
    if (const auto *const integer = std::get_if<NSInteger>(this))
        return std::hash<double>()(static_cast<double>(*integer));
    if (const auto *const number = std::get_if<double>(this))
        return std::hash<double>()(*number);
    if (const auto *const string = std::get_if<NSString>(this))
        return string->hash();
    const NSObject *const held = object();
    return held ? held->hash() : 1;
}

NSString NSAttributeValue::description() const {
    if (const auto *const integer = std::get_if<NSInteger>(this))
        return NSString::stringWithFormat(u"%ld", *integer);
    if (const auto *const number = std::get_if<double>(this))
        return NSString::stringWithFormat(u"%f", *number);
    if (const auto *const string = std::get_if<NSString>(this))
        return *string;
    const NSObject *const held = object();
    return held ? held->description() : NSString(u"<null>");
}

bool operator==(const NSAttributeValue &a, const NSAttributeValue &b) {
    if (const NSObject *const object = a.object()) {
        const NSObject *const other = b.object();
        return object == other || (other != nullptr && object->isEqual(other));
    }
    using Base = NSAttributeValue::Base;
    return static_cast<const Base &>(a) == static_cast<const Base &>(b);
}

NSAttributes::NSAttributes(std::vector<NSAttribute> attributes) {
    if (attributes.empty())
        return;
    auto storage = std::make_unique<Storage>();
    for (const NSAttribute &attribute : attributes)
        storage->hash =
            combineHashes(storage->hash, combineHashes(attribute.key.hash(), attribute.value.hash()));
    storage->attributes = std::move(attributes);
    _storage = storage.release();
}

NSAttributes::NSAttributes(std::initializer_list<NSAttribute> attributes) {
    NSMutableAttributes building;
    for (const NSAttribute &attribute : attributes)
        building.set(attribute.key, attribute.value);
    *this = building.attributes();
}

NSAttributes NSAttributes::attributesByAddingAttributes(const NSAttributes &attributes) const {
    if (attributes.empty() || attributes.isIdenticalTo(*this))
        return *this;
    if (empty())
        return attributes;
    NSMutableAttributes building(*this);
    building.add(attributes);
    return building.attributes();
}

NSAttributes NSAttributes::attributesBySettingValue(NSAttributeValue value, NSAttributeKey forKey) const {
    if (const NSAttributeValue *const present = valueForKey(forKey); present && *present == value)
        return *this;
    NSMutableAttributes building(*this);
    building.set(forKey, std::move(value));
    return building.attributes();
}

NSAttributes NSAttributes::attributesByRemovingKeys(std::span<const NSAttributeKey> keys) const {
    if (std::none_of(keys.begin(), keys.end(), [&](NSAttributeKey key) { return containsKey(key); }))
        return *this;
    NSMutableAttributes building(*this);
    for (const NSAttributeKey key : keys)
        building.remove(key);
    return building.attributes();
}

NSString NSAttributes::description() const {
    std::u16string text = u"{";
    for (const NSAttribute &attribute : *this) {
        if (text.size() > 1)
            text += u"; ";
        text.append(attribute.key.string().view()).append(u" = ");
        text.append(attribute.value.description().view());
    }
    return NSString(std::move(text) + u"}");
}

bool NSAttributes::haveEqualContents(const NSAttributes &a, const NSAttributes &b) {
    return a._storage && b._storage && a._storage->hash == b._storage->hash &&
           a._storage->attributes == b._storage->attributes;
}

const NSAttributeValue *NSMutableAttributes::valueForKey(NSAttributeKey key) const {
    for (const NSAttribute &attribute : _attributes)
        if (attribute.key == key)
            return &attribute.value;
    return nullptr;
}

void NSMutableAttributes::set(NSAttributeKey key, NSAttributeValue value) {
    const auto at = std::lower_bound(_attributes.begin(), _attributes.end(), key,
                                     [](const NSAttribute &a, NSAttributeKey b) { return a.key < b; });
    if (at != _attributes.end() && at->key == key)
        at->value = std::move(value);
    else
        _attributes.insert(at, NSAttribute{key, std::move(value)});
}

void NSMutableAttributes::add(const NSAttributes &attributes) {
    for (const NSAttribute &attribute : attributes)
        set(attribute.key, attribute.value);
}

void NSMutableAttributes::remove(NSAttributeKey key) {
    const auto at = std::find_if(_attributes.begin(), _attributes.end(),
                                 [&](const NSAttribute &attribute) { return attribute.key == key; });
    if (at != _attributes.end())
        _attributes.erase(at);
}

NSAttributes NSMutableAttributes::attributes() const {
    return NSAttributes(std::vector<NSAttribute>(_attributes.begin(), _attributes.end()));
}

} // namespace quorvane
