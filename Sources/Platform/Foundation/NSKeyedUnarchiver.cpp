#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/QVLimits.h"
#include "Platform/Foundation/QVPropertyListCheck.h"
#include "Platform/Foundation/QVPropertyListReader.h"

#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace quorvane {

namespace {

constexpr NSInteger corruptArchiveError = 4864;

using Value = QVPropertyListReader::Value;
using Kind = QVPropertyListReader::Kind;

/// A number as an integer or with its fraction, an empty optional for anything else.
using Number = std::variant<NSInteger, double>;

std::optional<NSInteger> integerOf(const std::optional<Number> &number) {
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

std::optional<double> doubleOf(const std::optional<Number> &number) {
    if (!number)
        return std::nullopt;
    return std::visit([](auto value) { return static_cast<double>(value); }, *number);
}

class KeyedUnarchiver final : public NSCoder {
public:
    explicit KeyedUnarchiver(NSData data) : _bytes(std::move(data)) {
        if (const char16_t *problem = load())
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

    bool containsValueForKey(const NSString &key) const override { return field(key) != 0; }
    bool decodeBool(const NSString &key) override { return doubleOf(numberOf(field(key))).value_or(0) != 0; }
    NSInteger decodeInteger(const NSString &key) override {
        return integerOf(numberOf(field(key))).value_or(0);
    }
    float decodeFloat(const NSString &key) override {
        const double value = doubleOf(numberOf(field(key))).value_or(0);
        if (std::isfinite(value) && std::abs(value) > std::numeric_limits<float>::max())
            return 0;
        return static_cast<float>(value);
    }
    double decodeDouble(const NSString &key) override { return doubleOf(numberOf(field(key))).value_or(0); }
    NSString decodeString(const NSString &key) override { return stringAt(indexForKey(key)); }
    NSData decodeData(const NSString &key) override {
        const Value inlined = field(key);
        return _list->kindOf(inlined) == Kind::Data ? copyOf(inlined) : dataAt(indexForKey(key));
    }
    std::optional<NSInteger> decodeNumber(const NSString &key) override {
        return integerOf(numberOf(_objects[indexForKey(key)]));
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
            const auto number = integerOf(numberOf(_objects[index]));
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
            const auto number = doubleOf(numberOf(_objects[index]));
            return number && (numbers.push_back(*number), true);
        });
        return isGood ? std::optional(std::move(numbers)) : std::nullopt;
    }
    std::optional<NSRange> decodeRange(const NSString &key) override {
        const std::uint64_t index = indexForKey(key);
        if (!isOfClass(index, valueClasses))
            return std::nullopt;
        const auto location = integerOf(numberOf(referredObject(_objects[index], u"NS.rangeval.location")));
        const auto length = integerOf(numberOf(referredObject(_objects[index], u"NS.rangeval.length")));
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
    using ClassNames = std::span<const std::u16string_view>;
    static constexpr std::u16string_view arrayClasses[] = {u"NSArray", u"NSMutableArray"};
    static constexpr std::u16string_view setClasses[] = {u"NSSet", u"NSMutableSet"};
    static constexpr std::u16string_view dictionaryClasses[] = {u"NSDictionary", u"NSMutableDictionary"};
    static constexpr std::u16string_view stringClasses[] = {u"NSString", u"NSMutableString"};
    static constexpr std::u16string_view dataClasses[] = {u"NSData", u"NSMutableData"};
    static constexpr std::u16string_view valueClasses[] = {u"NSValue"};
    static constexpr std::u16string_view nullClasses[] = {u"NSNull"};

    /// What an entry of the object list became.
    struct Made {
        /// Null where nothing was made yet.
        const NSCodingClass *codingClass = nullptr;
        std::shared_ptr<NSSecureCoding> object;
    };
    using Family = std::vector<const NSCodingClass *>;

    void fail(std::u16string_view problem) {
        failWithError(NSError::errorWithDomain(
            NSCocoaErrorDomain, corruptArchiveError,
            {{NSLocalizedDescriptionKey,
              NSString::stringWithFormat(u"The archive can’t be read: %@.", problem)}}));
    }

    /// Reads the archive's frame and checks that every reference in it leads to one of its objects, so that
    /// nothing after this needs to. Answers what is wrong, null when it is good.
    const char16_t *load() {
        constexpr const char16_t *noArchive = u"it is no keyed archive";
        // Index 0 is always there and always null, so that "nothing" is an index like any other.
        _objects.push_back(0);
        _strings.emplace_back();
        if (const char16_t *problem = QVProblemOfBinaryPropertyList(_bytes.bytes()))
            return problem;
        _list.emplace(_bytes.bytes());
        const Value list = _list->top();
        if (!_list->isString(_list->valueForKey(list, u"$archiver"), u"NSKeyedArchiver"))
            return noArchive;
        if (integerOf(numberOf(_list->valueForKey(list, u"$version", Kind::Integer))) != 100000)
            return u"it is of another version";
        const Value top = _list->valueForKey(list, u"$top", Kind::Dictionary);
        const Value root = _list->valueForKey(top, u"root", Kind::UID);
        const Value objects = _list->valueForKey(list, u"$objects", Kind::Array);
        if (root == 0 || objects == 0)
            return noArchive;

        const std::size_t count = _list->countOf(objects);
        if (count == 0 || !_list->isString(_list->itemOf(objects, 0), u"$null"))
            return noArchive;
        _objects.resize(count);
        for (std::size_t index = 1; index < count; ++index)
            _objects[index] = _list->itemOf(objects, index);
        _made.resize(count);
        _strings.resize(count);
        if (!isInBounds(root))
            return u"it refers to an object that it doesn't hold";
        _root = _list->integerOf(root);
        for (std::size_t index = 1; index < count; ++index) {
            const Kind kind = _list->kindOf(_objects[index]);
            if (kind == Kind::Array || kind == Kind::UID)
                return u"one of its objects has no class";
            if (kind == Kind::Dictionary && _list->countOf(_objects[index]) > limits::archiveFields)
                return u"one of its objects has too many fields";
            if (!isInBounds(_objects[index]))
                return u"it refers to an object that it doesn't hold";
        }
        _remainingEntries = limits::archiveReferences;
        return nullptr;
    }

    bool isInBounds(Value value) const {
        switch (_list->kindOf(value)) {
        case Kind::UID:
            return _list->integerOf(value) < _objects.size();
        case Kind::Array:
            for (std::size_t index = 0; index < _list->countOf(value); ++index)
                if (!isInBounds(_list->itemOf(value, index)))
                    return false;
            return true;
        case Kind::Dictionary:
            for (std::size_t index = 0; index < _list->countOf(value); ++index)
                if (!isInBounds(_list->entryOf(value, index)))
                    return false;
            return true;
        default:
            return true;
        }
    }

    std::optional<Number> numberOf(Value value) const {
        switch (_list ? _list->kindOf(value) : Kind::None) {
        case Kind::Boolean:
        case Kind::Integer:
            return static_cast<NSInteger>(_list->integerOf(value));
        case Kind::Real:
            return _list->realOf(value);
        default:
            return std::nullopt;
        }
    }

    /// The value of an object's field, 0 where it has none.
    Value field(const NSString &key) const {
        if (_current == 0 || _error)
            return 0;
        return key.hasPrefix(u"$") ? _list->valueForKey(_current, u"$" + std::u16string(key.view()))
                                   : _list->valueForKey(_current, key);
    }

    /// The index that an object's field refers to, 0 (null) where it refers to none.
    std::uint64_t indexForKey(const NSString &key) const {
        const Value value = field(key);
        return value != 0 && _list->kindOf(value) == Kind::UID ? _list->integerOf(value) : 0;
    }

    Value referredObject(Value dictionary, std::u16string_view key) const {
        const Value reference = _list->valueForKey(dictionary, key, Kind::UID);
        return reference != 0 ? _objects[_list->integerOf(reference)] : 0;
    }

    /// The class name of an object that is written as a dictionary; 0 for all others.
    Value classNameAt(std::uint64_t index) const {
        if (_objects[index] == 0)
            return 0;
        return _list->valueForKey(referredObject(_objects[index], u"$class"), u"$classname", Kind::String);
    }

    bool isOfClass(std::uint64_t index, ClassNames names) const {
        const Value found = classNameAt(index);
        return found != 0 && std::any_of(names.begin(), names.end(), [&](std::u16string_view name) {
                   return _list->isString(found, name);
               });
    }

    NSData copyOf(Value data) const {
        const auto bytes = _list->dataOf(data);
        return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
    }

    NSData dataAt(std::uint64_t index) {
        const Value object = _objects[index];
        if (object == 0)
            return {};
        const auto known = _data.find(index);
        if (known != _data.end())
            return known->second;
        NSData data;
        if (_list->kindOf(object) == Kind::Data)
            data = copyOf(object);
        else if (isOfClass(index, dataClasses))
            if (const Value held = _list->valueForKey(object, u"NS.data", Kind::Data))
                data = copyOf(held);
        return _data[index] = data;
    }

    /// Each text is made once, so that many references to a long one stay small.
    NSString stringAt(std::uint64_t index) {
        const Value object = _objects[index];
        if (object == 0)
            return {};
        NSString &string = _strings[index];
        if (string)
            return string;
        if (_list->kindOf(object) == Kind::String) {
            string = _list->stringOf(object);
        } else if (isOfClass(index, stringClasses)) {
            if (const Value held = _list->valueForKey(object, u"NS.string", Kind::String)) {
                string = _list->stringOf(held);
            } else if (const Value units = _list->valueForKey(object, u"NS.utf16", Kind::Data)) {
                const auto bytes = _list->dataOf(units);
                std::u16string characters;
                for (std::size_t at = 0; at + 1 < bytes.size(); at += 2)
                    characters += static_cast<char16_t>(bytes[at] << 8 | bytes[at + 1]);
                string = std::move(characters);
            }
        }
        return string;
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
        const Value entries = _list->valueForKey(_objects[index], u"NS.objects", Kind::Array);
        if (entries == 0)
            return false;
        for (std::size_t number = 0; number < _list->countOf(entries); ++number) {
            const Value entry = _list->itemOf(entries, number);
            if (!takeEntry() || _list->kindOf(entry) != Kind::UID || !visit(_list->integerOf(entry)))
                return false;
        }
        return true;
    }

    template <typename Result, typename ValueAt>
    std::optional<std::map<NSString, Result>> dictionaryAt(std::uint64_t index, ValueAt valueOf) {
        if (!isOfClass(index, dictionaryClasses))
            return std::nullopt;
        const Value keys = _list->valueForKey(_objects[index], u"NS.keys", Kind::Array);
        const Value values = _list->valueForKey(_objects[index], u"NS.objects", Kind::Array);
        if (keys == 0 || values == 0 || _list->countOf(keys) != _list->countOf(values))
            return std::nullopt;
        const std::size_t count = _list->countOf(keys);
        std::vector<NSString> names;
        for (std::size_t number = 0; number < count; ++number) {
            const Value key = _list->itemOf(keys, number);
            NSString name =
                takeEntry() && _list->kindOf(key) == Kind::UID ? stringAt(_list->integerOf(key)) : NSString();
            if (!name)
                return std::nullopt;
            names.push_back(std::move(name));
        }
        std::map<NSString, Result> result;
        for (std::size_t number = 0; number < count; ++number) {
            const Value entry = _list->itemOf(values, number);
            std::optional<Result> value;
            if (!_error && _list->kindOf(entry) == Kind::UID)
                value = valueOf(_list->integerOf(entry));
            if (!value)
                return std::nullopt;
            result.insert_or_assign(names[number], std::move(*value));
        }
        return result;
    }

    std::optional<NSCodingValue> valueAt(std::uint64_t index,
                                         std::span<const NSCodingClass *const> accepted) {
        const Value object = _objects[index];
        if (object == 0)
            return std::nullopt;
        if (_list->kindOf(object) == Kind::Boolean)
            return _list->integerOf(object) != 0;
        if (const auto number = numberOf(object))
            return std::visit([](auto value) { return NSCodingValue(value); }, *number);
        if (NSString string = stringAt(index))
            return string;
        if (isOfClass(index, nullClasses))
            return nullptr;
        for (const NSCodingClass *acceptedClass : accepted)
            if (auto made = objectAt(index, *acceptedClass))
                return made;
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

    /// The accepted class and all below it: few, so they are looked through.
    const Family &familyOf(const NSCodingClass &accepted) {
        const auto [entry, isNew] = _families.try_emplace(&accepted);
        if (isNew) {
            std::vector<const NSCodingClass *> pending{&accepted};
            std::unordered_set<const NSCodingClass *> seen{&accepted};
            while (!pending.empty()) {
                const NSCodingClass *member = pending.back();
                pending.pop_back();
                entry->second.push_back(member);
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
        if (_error || _objects[index] == 0)
            return nullptr;
        const Family &family = familyOf(accepted);
        if (const NSCodingClass *const madeClass = _made[index].codingClass)
            // Made for a reader of one class, asked for by a reader of another.
            return std::find(family.begin(), family.end(), madeClass) != family.end() ? _made[index].object
                                                                                      : nullptr;
        const Value name = classNameAt(index);
        const auto member = std::find_if(family.begin(), family.end(), [&](const NSCodingClass *candidate) {
            return _list->isString(name, candidate->name);
        });
        if (member == family.end() || (*member)->allocate == nullptr)
            return nullptr;
        if (_depth >= limits::archiveNestingDepth) {
            fail(u"its objects nest too deep");
            return nullptr;
        }
        auto object = (*member)->allocate();
        if (!object)
            return nullptr;
        _made[index] = {*member, object};
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
        Scope(KeyedUnarchiver &coder, Value fields) : _coder(coder), _outer(coder._current) {
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
        Value _outer;
    };

    const NSData _bytes;
    /// Empty for what is no property list.
    std::optional<QVPropertyListReader> _list;
    std::vector<Value> _objects;
    std::uint64_t _root = 0;
    Value _current = 0;
    std::size_t _depth = 0;
    std::size_t _remainingEntries = 0;
    /// By the indexes of objects.
    std::vector<Made> _made;
    std::vector<NSString> _strings;
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
