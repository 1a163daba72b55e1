#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/QVLimits.h"
#include "Platform/Foundation/QVPropertyListCheck.h"

#include <cmath>
#include <cstdlib>
#include <plist/plist.h>
#include <unordered_map>
#include <unordered_set>

namespace quorvane {

namespace {

constexpr NSInteger corruptArchiveError = 4864;

struct PropertyListDeleter {
    void operator()(void *list) const { plist_free(list); }
};

struct IteratorDeleter {
    void operator()(void *iterator) const { std::free(iterator); }
};

template <typename Visit> void forEachInArray(plist_t array, Visit visit) {
    plist_array_iter raw = nullptr;
    plist_array_new_iter(array, &raw);
    const std::unique_ptr<void, IteratorDeleter> iterator(raw);
    plist_t item = nullptr;
    for (plist_array_next_item(array, raw, &item); item != nullptr; plist_array_next_item(array, raw, &item))
        if (!visit(item))
            return;
}

std::string_view text(plist_t string) {
    std::uint64_t length = 0;
    const char *characters = plist_get_string_ptr(string, &length);
    return characters ? std::string_view(characters, length) : std::string_view();
}

plist_t fieldOfType(plist_t dictionary, const char *key, plist_type type) {
    plist_t field = plist_dict_get_item(dictionary, key);
    return field != nullptr && plist_get_node_type(field) == type ? field : nullptr;
}

/// A number as an integer or with its fraction, an empty optional for anything else.
using Number = std::variant<NSInteger, double>;
std::optional<Number> numberOf(plist_t node) {
    if (node == nullptr)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return NSInteger(value != 0);
    }
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return static_cast<NSInteger>(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    default:
        return std::nullopt;
    }
}

std::optional<NSInteger> integerOf(plist_t node) {
    const auto number = numberOf(node);
    if (!number)
        return std::nullopt;
    if (const auto *integer = std::get_if<NSInteger>(&*number))
        return *integer;
    const double value = std::trunc(std::get<double>(*number));
    // The largest integer is no double; the next double above it is the bound.
    if (!(value >= -0x1p63 && value < 0x1p63))
        return std::nullopt;
    return static_cast<NSInteger>(value);
}

std::optional<double> doubleOf(plist_t node) {
    const auto number = numberOf(node);
    if (!number)
        return std::nullopt;
    return std::visit([](auto value) { return static_cast<double>(value); }, *number);
}

class KeyedUnarchiver final : public NSCoder {
public:
    explicit KeyedUnarchiver(const NSData &data) {
        if (const char16_t *problem = load(data))
            fail(problem);
    }

    std::shared_ptr<NSSecureCoding> rootObject(const NSCodingClass &accepted) {
        auto object = _error ? nullptr : objectAt(_root, accepted);
        if (_error)
            return nullptr;
        if (!object)
            fail(u"its root can't be read");
        return object;
    }

    std::optional<std::vector<std::shared_ptr<NSSecureCoding>>> rootArray(const NSCodingClass &accepted) {
        auto objects = _error ? std::nullopt : objectsAt(_root, accepted);
        if (_error)
            return std::nullopt;
        if (!objects)
            fail(u"its root can't be read");
        return objects;
    }

    bool containsValueForKey(const NSString &key) const override { return field(key) != nullptr; }
    bool decodeBool(const NSString &key) override { return doubleOf(field(key)).value_or(0) != 0; }
    NSInteger decodeInteger(const NSString &key) override { return integerOf(field(key)).value_or(0); }
    float decodeFloat(const NSString &key) override {
        const double value = doubleOf(field(key)).value_or(0);
        if (std::isfinite(value) && std::abs(value) > std::numeric_limits<float>::max())
            return 0;
        return static_cast<float>(value);
    }
    double decodeDouble(const NSString &key) override { return doubleOf(field(key)).value_or(0); }
    NSString decodeString(const NSString &key) override { return stringAt(indexForKey(key)); }
    NSData decodeData(const NSString &key) override {
        plist_t inlined = field(key);
        return inlined != nullptr && plist_get_node_type(inlined) == PLIST_DATA ? dataOf(inlined)
                                                                                : dataAt(indexForKey(key));
    }
    std::optional<NSInteger> decodeNumber(const NSString &key) override {
        return integerOf(_objects[indexForKey(key)]);
    }
    std::optional<std::vector<NSString>> decodeStrings(const NSString &key) override {
        std::vector<NSString> strings;
        const bool isGood = forEachEntry(indexForKey(key), arrayClasses, [&](std::uint64_t index) {
            return strings.emplace_back(stringAt(index)) != NSString();
        });
        return isGood ? std::optional(std::move(strings)) : std::nullopt;
    }
    std::optional<std::set<NSString>> decodeStringSet(const NSString &key) override {
        std::set<NSString> strings;
        const bool isGood = forEachEntry(indexForKey(key), setClasses, [&](std::uint64_t index) {
            NSString string = stringAt(index);
            return string && (strings.insert(std::move(string)), true);
        });
        return isGood ? std::optional(std::move(strings)) : std::nullopt;
    }
    std::optional<std::set<NSUInteger>> decodeNumberSet(const NSString &key) override {
        std::set<NSUInteger> numbers;
        const bool isGood = forEachEntry(indexForKey(key), setClasses, [&](std::uint64_t index) {
            const auto number = integerOf(_objects[index]);
            return number && (numbers.insert(static_cast<NSUInteger>(*number)), true);
        });
        return isGood ? std::optional(std::move(numbers)) : std::nullopt;
    }
    std::optional<std::map<NSString, NSString>> decodeStringDictionary(const NSString &key) override {
        return dictionaryAt<NSString>(indexForKey(key), [this](std::uint64_t index) {
            NSString string = stringAt(index);
            return string ? std::optional(string) : std::nullopt;
        });
    }
    std::optional<std::vector<double>> decodeDoubles(const NSString &key) override {
        std::vector<double> numbers;
        const bool isGood = forEachEntry(indexForKey(key), arrayClasses, [&](std::uint64_t index) {
            const auto number = doubleOf(_objects[index]);
            return number && (numbers.push_back(*number), true);
        });
        return isGood ? std::optional(std::move(numbers)) : std::nullopt;
    }
    std::optional<NSRange> decodeRange(const NSString &key) override {
        const std::uint64_t index = indexForKey(key);
        if (!isOfClass(index, valueClasses))
            return std::nullopt;
        const auto location = integerOf(referredObject(_objects[index], "NS.rangeval.location"));
        const auto length = integerOf(referredObject(_objects[index], "NS.rangeval.length"));
        if (!location || !length || *location < 0 || *length < 0)
            return std::nullopt;
        return NSMakeRange(static_cast<NSUInteger>(*location), static_cast<NSUInteger>(*length));
    }
    std::optional<std::map<NSString, NSCodingValue>>
    decodeValueDictionary(const NSString &key, std::span<const NSCodingClass *const> accepted) override {
        return dictionaryAt<NSCodingValue>(indexForKey(key),
                                           [&](std::uint64_t index) { return valueAt(index, accepted); });
    }
    std::shared_ptr<NSSecureCoding> decodeObject(const NSString &key,
                                                 const NSCodingClass &accepted) override {
        return objectAt(indexForKey(key), accepted);
    }
    std::optional<std::vector<std::shared_ptr<NSSecureCoding>>>
    decodeObjectArray(const NSString &key, const NSCodingClass &accepted) override {
        return objectsAt(indexForKey(key), accepted);
    }
    std::optional<std::map<NSString, std::shared_ptr<NSSecureCoding>>>
    decodeObjectDictionary(const NSString &key, const NSCodingClass &accepted) override {
        using Object = std::shared_ptr<NSSecureCoding>;
        return dictionaryAt<Object>(indexForKey(key), [&](std::uint64_t index) {
            Object object = objectAt(index, accepted);
            return object ? std::optional(std::move(object)) : std::nullopt;
        });
    }

    void failWithError(std::shared_ptr<NSError> error) override {
        if (!_error)
            _error = std::move(error);
    }
    std::shared_ptr<NSError> error() const override { return _error; }

private:
    using ClassNames = std::span<const std::string_view>;
    static constexpr std::string_view arrayClasses[] = {"NSArray", "NSMutableArray"};
    static constexpr std::string_view setClasses[] = {"NSSet", "NSMutableSet"};
    static constexpr std::string_view dictionaryClasses[] = {"NSDictionary", "NSMutableDictionary"};
    static constexpr std::string_view stringClasses[] = {"NSString", "NSMutableString"};
    static constexpr std::string_view dataClasses[] = {"NSData", "NSMutableData"};
    static constexpr std::string_view valueClasses[] = {"NSValue"};
    static constexpr std::string_view nullClasses[] = {"NSNull"};

    /// What an entry of the object list became.
    struct Made {
        const NSCodingClass *codingClass;
        std::shared_ptr<NSSecureCoding> object;
    };
    using Family = std::unordered_map<NSString, const NSCodingClass *>;

    void fail(std::u16string_view problem) {
        failWithError(NSError::errorWithDomain(
            NSCocoaErrorDomain, corruptArchiveError,
            {{NSLocalizedDescriptionKey,
              NSString::stringWithFormat(u"The archive can’t be read: %@.", problem)}}));
    }

    /// Reads the archive's frame and checks that every reference in it leads to one of its objects, so that
    /// nothing after this needs to. Answers what is wrong, null when it is good.
    const char16_t *load(const NSData &data) {
        constexpr const char16_t *noArchive = u"it is no keyed archive";
        // Index 0 is always there and always null, so that "nothing" is an index like any other.
        _objects.push_back(nullptr);
        if (const char16_t *problem = QVProblemOfBinaryPropertyList(data.bytes()))
            return problem;
        plist_t list = nullptr;
        plist_from_bin(data.view().data(), static_cast<std::uint32_t>(data.length()), &list);
        _list.reset(list);
        if (list == nullptr || plist_get_node_type(list) != PLIST_DICT)
            return noArchive;
        plist_t archiver = fieldOfType(list, "$archiver", PLIST_STRING);
        if (archiver == nullptr || text(archiver) != "NSKeyedArchiver")
            return noArchive;
        if (integerOf(fieldOfType(list, "$version", PLIST_UINT)) != 100000)
            return u"it is of another version";
        plist_t top = fieldOfType(list, "$top", PLIST_DICT);
        plist_t root = top != nullptr ? fieldOfType(top, "root", PLIST_UID) : nullptr;
        plist_t objects = fieldOfType(list, "$objects", PLIST_ARRAY);
        if (root == nullptr || objects == nullptr)
            return noArchive;

        _objects.clear();
        forEachInArray(objects, [this](plist_t object) { return _objects.push_back(object), true; });
        if (_objects.empty() || plist_get_node_type(_objects[0]) != PLIST_STRING ||
            text(_objects[0]) != "$null")
            return noArchive;
        _objects[0] = nullptr;
        if (!isInBounds(root))
            return u"it refers to an object that it doesn't hold";
        _root = indexOf(root);
        for (std::size_t index = 1; index < _objects.size(); ++index) {
            const plist_type type = plist_get_node_type(_objects[index]);
            if (type == PLIST_ARRAY || type == PLIST_UID)
                return u"one of its objects has no class";
            if (!isInBounds(_objects[index]))
                return u"it refers to an object that it doesn't hold";
        }
        _remainingEntries = limits::archiveReferences;
        return nullptr;
    }

    bool isInBounds(plist_t node) const {
        bool isGood = true;
        switch (plist_get_node_type(node)) {
        case PLIST_UID:
            return indexOf(node) < _objects.size();
        case PLIST_ARRAY:
            forEachInArray(node, [&](plist_t item) { return isGood = isInBounds(item); });
            return isGood;
        case PLIST_DICT: {
            plist_dict_iter raw = nullptr;
            plist_dict_new_iter(node, &raw);
            const std::unique_ptr<void, IteratorDeleter> iterator(raw);
            plist_t item = nullptr;
            do {
                plist_dict_next_item(node, raw, nullptr, &item);
                isGood = item == nullptr || isInBounds(item);
            } while (item != nullptr && isGood);
            return isGood;
        }
        default:
            return true;
        }
    }

    static std::uint64_t indexOf(plist_t uid) {
        std::uint64_t index = 0;
        plist_get_uid_val(uid, &index);
        return index;
    }

    plist_t field(const NSString &key) const {
        if (_current == nullptr || _error)
            return nullptr;
        const std::string name = key.hasPrefix(u"$") ? "$" + key.UTF8String() : key.UTF8String();
        return plist_dict_get_item(_current, name.c_str());
    }

    /// The index that an object's field refers to, 0 (null) where it refers to none.
    std::uint64_t indexForKey(const NSString &key) const {
        plist_t value = field(key);
        return value != nullptr && plist_get_node_type(value) == PLIST_UID ? indexOf(value) : 0;
    }

    plist_t referredObject(plist_t dictionary, const char *key) const {
        plist_t reference = fieldOfType(dictionary, key, PLIST_UID);
        return reference != nullptr ? _objects[indexOf(reference)] : nullptr;
    }

    /// The class name of an object that is written as a dictionary; empty for all others.
    std::string_view classNameAt(std::uint64_t index) const {
        plist_t object = _objects[index];
        if (object == nullptr || plist_get_node_type(object) != PLIST_DICT)
            return {};
        plist_t description = referredObject(object, "$class");
        if (description == nullptr || plist_get_node_type(description) != PLIST_DICT)
            return {};
        plist_t name = fieldOfType(description, "$classname", PLIST_STRING);
        return name != nullptr ? text(name) : std::string_view();
    }

    bool isOfClass(std::uint64_t index, ClassNames names) const {
        const std::string_view name = classNameAt(index);
        return std::find(names.begin(), names.end(), name) != names.end();
    }

    static NSData dataOf(plist_t node) {
        std::uint64_t length = 0;
        const char *bytes = plist_get_data_ptr(node, &length);
        return NSData(std::string_view(bytes ? bytes : "", bytes ? length : 0));
    }

    NSData dataAt(std::uint64_t index) {
        plist_t object = _objects[index];
        if (object == nullptr)
            return {};
        const auto known = _data.find(index);
        if (known != _data.end())
            return known->second;
        NSData data;
        if (plist_get_node_type(object) == PLIST_DATA)
            data = dataOf(object);
        else if (isOfClass(index, dataClasses))
            if (plist_t held = fieldOfType(object, "NS.data", PLIST_DATA))
                data = dataOf(held);
        return _data[index] = data;
    }

    /// Each text is made once, so that many references to a long one stay small.
    NSString stringAt(std::uint64_t index) {
        plist_t object = _objects[index];
        if (object == nullptr)
            return {};
        const auto known = _strings.find(index);
        if (known != _strings.end())
            return known->second;
        NSString string;
        if (plist_get_node_type(object) == PLIST_STRING) {
            string = NSString::stringWithUTF8String(text(object));
        } else if (isOfClass(index, stringClasses)) {
            if (plist_t held = fieldOfType(object, "NS.string", PLIST_STRING)) {
                string = NSString::stringWithUTF8String(text(held));
            } else if (plist_t units = fieldOfType(object, "NS.utf16", PLIST_DATA)) {
                const NSData bytes = dataOf(units);
                std::u16string characters;
                for (std::size_t at = 0; at + 1 < bytes.length(); at += 2)
                    characters += static_cast<char16_t>(bytes.bytes()[at] << 8 | bytes.bytes()[at + 1]);
                string = std::move(characters);
            }
        }
        return _strings[index] = string;
    }

    /// Hostile lists may name one long list a thousand times; the archive as a whole has so many entries.
    bool takeEntry() {
        if (_error)
            return false;
        if (_remainingEntries == 0) {
            fail(u"it holds too many values");
            return false;
        }
        --_remainingEntries;
        return true;
    }

    /// Whether the object is a collection of one of these classes all of whose entries the visitor takes.
    template <typename Visit> bool forEachEntry(std::uint64_t index, ClassNames classes, Visit visit) {
        if (!isOfClass(index, classes))
            return false;
        plist_t entries = fieldOfType(_objects[index], "NS.objects", PLIST_ARRAY);
        if (entries == nullptr)
            return false;
        bool isGood = true;
        forEachInArray(entries, [&](plist_t entry) {
            return isGood = takeEntry() && plist_get_node_type(entry) == PLIST_UID && visit(indexOf(entry));
        });
        return isGood;
    }

    template <typename Value, typename ValueAt>
    std::optional<std::map<NSString, Value>> dictionaryAt(std::uint64_t index, ValueAt valueOf) {
        if (!isOfClass(index, dictionaryClasses))
            return std::nullopt;
        plist_t keys = fieldOfType(_objects[index], "NS.keys", PLIST_ARRAY);
        plist_t values = fieldOfType(_objects[index], "NS.objects", PLIST_ARRAY);
        if (keys == nullptr || values == nullptr ||
            plist_array_get_size(keys) != plist_array_get_size(values))
            return std::nullopt;
        std::vector<NSString> names;
        forEachInArray(keys, [&](plist_t key) {
            NSString name =
                takeEntry() && plist_get_node_type(key) == PLIST_UID ? stringAt(indexOf(key)) : NSString();
            return name && (names.push_back(std::move(name)), true);
        });
        if (names.size() != plist_array_get_size(keys))
            return std::nullopt;
        std::map<NSString, Value> result;
        bool isGood = true;
        auto name = names.begin();
        forEachInArray(values, [&](plist_t entry) {
            std::optional<Value> value;
            if (!_error && plist_get_node_type(entry) == PLIST_UID)
                value = valueOf(indexOf(entry));
            isGood = value.has_value();
            if (isGood)
                result.insert_or_assign(*name++, std::move(*value));
            return isGood;
        });
        return isGood ? std::optional(std::move(result)) : std::nullopt;
    }

    std::optional<NSCodingValue> valueAt(std::uint64_t index,
                                         std::span<const NSCodingClass *const> accepted) {
        plist_t node = _objects[index];
        if (node == nullptr)
            return std::nullopt;
        if (plist_get_node_type(node) == PLIST_BOOLEAN)
            return integerOf(node) != 0;
        if (const auto number = numberOf(node))
            return std::visit([](auto value) { return NSCodingValue(value); }, *number);
        if (NSString string = stringAt(index))
            return string;
        if (isOfClass(index, nullClasses))
            return nullptr;
        for (const NSCodingClass *acceptedClass : accepted)
            if (auto object = objectAt(index, *acceptedClass))
                return object;
        return std::nullopt;
    }

    std::optional<std::vector<std::shared_ptr<NSSecureCoding>>> objectsAt(std::uint64_t index,
                                                                          const NSCodingClass &accepted) {
        std::vector<std::shared_ptr<NSSecureCoding>> objects;
        const bool isGood = forEachEntry(index, arrayClasses, [&](std::uint64_t entry) {
            return objects.emplace_back(objectAt(entry, accepted)) != nullptr;
        });
        return isGood ? std::optional(std::move(objects)) : std::nullopt;
    }

    /// The accepted class and all below it, by name.
    const Family &familyOf(const NSCodingClass &accepted) {
        const auto [entry, isNew] = _families.try_emplace(&accepted);
        if (isNew) {
            std::vector<const NSCodingClass *> pending{&accepted};
            std::unordered_set<const NSCodingClass *> seen{&accepted};
            while (!pending.empty()) {
                const NSCodingClass *member = pending.back();
                pending.pop_back();
                entry->second.emplace(NSString(member->name), member);
                if (member->subclasses == nullptr)
                    continue;
                for (const NSCodingClass *subclass : member->subclasses())
                    if (seen.insert(subclass).second)
                        pending.push_back(subclass);
            }
        }
        return entry->second;
    }

    std::shared_ptr<NSSecureCoding> objectAt(std::uint64_t index, const NSCodingClass &accepted) {
        if (_error || _objects[index] == nullptr)
            return nullptr;
        const Family &family = familyOf(accepted);
        const auto made = _made.find(index);
        if (made != _made.end()) {
            // Made for a reader of one class, asked for by a reader of another.
            const auto member = family.find(NSString(made->second.codingClass->name));
            return member != family.end() && member->second == made->second.codingClass ? made->second.object
                                                                                        : nullptr;
        }
        const std::string_view name = classNameAt(index);
        const auto member = name.empty() ? family.end() : family.find(NSString::stringWithUTF8String(name));
        if (member == family.end() || member->second->allocate == nullptr)
            return nullptr;
        if (_depth >= limits::archiveNestingDepth) {
            fail(u"its objects nest too deep");
            return nullptr;
        }
        auto object = member->second->allocate();
        if (!object)
            return nullptr;
        _made[index] = {member->second, object};
        const auto filled = [&] {
            const Scope scope(*this, _objects[index]);
            return object->initWithCoder(*this, object);
        }();
        // The object that took its place, or nothing, is what all later readers get.
        _made[index].object = _error ? nullptr : filled;
        return _made[index].object;
    }

    /// While one object reads its fields; brings back its reader's when it is done, or throws.
    class Scope {
    public:
        Scope(KeyedUnarchiver &coder, plist_t fields) : _coder(coder), _outer(coder._current) {
            coder._current = fields;
            ++coder._depth;
        }
        ~Scope() {
            _coder._current = _outer;
            --_coder._depth;
        }
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

    private:
        KeyedUnarchiver &_coder;
        plist_t _outer;
    };

    std::unique_ptr<void, PropertyListDeleter> _list;
    std::vector<plist_t> _objects;
    std::uint64_t _root = 0;
    plist_t _current = nullptr;
    std::size_t _depth = 0;
    std::size_t _remainingEntries = 0;
    std::unordered_map<std::uint64_t, Made> _made;
    std::unordered_map<std::uint64_t, NSString> _strings;
    std::unordered_map<std::uint64_t, NSData> _data;
    std::unordered_map<const NSCodingClass *, Family> _families;
    std::shared_ptr<NSError> _error;
};

} // namespace

std::shared_ptr<NSSecureCoding> NSKeyedUnarchiver::unarchivedObject(const NSCodingClass &accepted,
                                                                    const NSData &data,
                                                                    std::shared_ptr<NSError> *error) {
    KeyedUnarchiver unarchiver(data);
    auto object = unarchiver.rootObject(accepted);
    if (unarchiver.error()) {
        QVSetError(error, unarchiver.error());
        return nullptr;
    }
    return object;
}

std::optional<std::vector<std::shared_ptr<NSSecureCoding>>>
NSKeyedUnarchiver::unarchivedArray(const NSCodingClass &accepted, const NSData &data,
                                   std::shared_ptr<NSError> *error) {
    KeyedUnarchiver unarchiver(data);
    auto objects = unarchiver.rootArray(accepted);
    if (unarchiver.error()) {
        QVSetError(error, unarchiver.error());
        return std::nullopt;
    }
    return objects;
}

} // namespace quorvane
