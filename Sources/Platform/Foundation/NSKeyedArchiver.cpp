#include "Platform/Foundation/NSKeyedArchiver.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/QVPropertyListWriter.h"

#include <deque>
#include <unordered_map>

namespace quorvane {

namespace {

/// Whether the library that reads property lists, which keeps texts as UTF-8 that ends with a zero, gives
/// this one back as it is.
bool survivesAsUTF8(std::u16string_view text) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char16_t unit = text[index];
        if (unit == 0)
            return false;
        if ((unit & 0xF800) != 0xD800)
            continue;
        if (unit >= 0xDC00 || index + 1 == text.size() || (text[index + 1] & 0xFC00) != 0xDC00)
            return false;
        ++index;
    }
    return true;
}

class KeyedArchiver final : public NSCoder {
public:
    KeyedArchiver() { add(_writer.addString(u"$null")); }

    std::uint64_t indexOfObject(const std::shared_ptr<const NSSecureCoding> &object) {
        if (!object)
            return 0;
        // The most derived object's address is its identity, whatever base it was handed in by.
        const auto [entry, isNew] =
            _indexes.try_emplace(dynamic_cast<const void *>(object.get()), _objects.size());
        if (isNew) {
            // Its place in the list; what stands there is known when it has written its fields.
            add(0);
            // Objects are asked for their fields one after the other, not from within each other, so that a
            // long chain takes no stack; the queue also keeps each alive, so that no address is used twice.
            _pending.push_back({object, entry->second});
        }
        return entry->second;
    }

    template <typename Values> std::uint64_t indexOfObjects(const Values &values) {
        std::vector<std::uint64_t> indexes;
        for (const auto &value : values) {
            QVParameterAssert(value != nullptr, "object != nil");
            if (value)
                indexes.push_back(indexOfObject(value));
        }
        return indexOfCollection(u"NSArray", indexes);
    }

    NSData archiveWithRoot(std::uint64_t root) {
        for (std::size_t index = 0; index < _pending.size(); ++index) {
            // Stays in its place while the queue grows behind it.
            const PendingObject &next = _pending[index];
            _fields.clear();
            setField(u"$class", _writer.addUID(indexOfClass(next.object->classForCoder())));
            next.object->encodeWithCoder(*this);
            _objects[next.index] = _writer.addDictionary(_fields);
        }
        if (_error)
            return {};

        const Entry top{_writer.addString(u"root"), _writer.addUID(root)};
        const Entry archive[] = {
            {_writer.addString(u"$version"), _writer.addInteger(100000)},
            {_writer.addString(u"$archiver"), _writer.addString(u"NSKeyedArchiver")},
            {_writer.addString(u"$top"), _writer.addDictionary(std::span(&top, 1))},
            {_writer.addString(u"$objects"), _writer.addArray(_objects)},
        };
        return _writer.dataWithTop(_writer.addDictionary(archive));
    }

    void encodeBool(bool value, const NSString &key) override { set(key, _writer.addBool(value)); }
    void encodeInteger(NSInteger value, const NSString &key) override { set(key, _writer.addInteger(value)); }
    void encodeFloat(float value, const NSString &key) override { set(key, _writer.addReal(value)); }
    void encodeDouble(double value, const NSString &key) override { set(key, _writer.addReal(value)); }
    void encodeString(const NSString &value, const NSString &key) override {
        if (value)
            setIndex(key, indexOfString(value));
    }
    void encodeData(const NSData &value, const NSString &key) override {
        if (value)
            setIndex(key, add(_writer.addData(value)));
    }
    void encodeObject(const std::shared_ptr<const NSSecureCoding> &value, const NSString &key) override {
        if (value)
            setIndex(key, indexOfObject(value));
    }
    void encodeNumber(const std::optional<NSInteger> &value, const NSString &key) override {
        if (value)
            setIndex(key, indexOfInteger(*value));
    }
    void encodeStrings(const std::optional<std::vector<NSString>> &values, const NSString &key) override {
        if (values)
            setIndex(key, indexOfCollection(u"NSArray", indexesOfStrings(*values)));
    }
    void encodeStringSet(const std::optional<std::set<NSString>> &values, const NSString &key) override {
        if (values)
            setIndex(key, indexOfCollection(u"NSSet", indexesOfStrings(*values)));
    }
    void encodeNumberSet(const std::optional<std::set<NSUInteger>> &values, const NSString &key) override {
        if (!values)
            return;
        std::vector<std::uint64_t> indexes;
        for (const NSUInteger value : *values)
            indexes.push_back(indexOfInteger(static_cast<NSInteger>(value)));
        setIndex(key, indexOfCollection(u"NSSet", indexes));
    }
    void encodeStringDictionary(const std::optional<std::map<NSString, NSString>> &values,
                                const NSString &key) override {
        encodeDictionaryWith(values, key, [this](const NSString &value) { return indexOfString(value); });
    }
    void encodeDoubles(const std::optional<std::vector<double>> &values, const NSString &key) override {
        if (!values)
            return;
        std::vector<std::uint64_t> indexes;
        for (const double value : *values)
            indexes.push_back(add(_writer.addReal(value)));
        setIndex(key, indexOfCollection(u"NSArray", indexes));
    }
    void encodeRange(const std::optional<NSRange> &value, const NSString &key) override {
        if (!value)
            return;
        const Entry boxed[] = {
            {_writer.addString(u"NS.rangeval.location"), uidOfInteger(value->location)},
            {_writer.addString(u"NS.rangeval.length"), uidOfInteger(value->length)},
            // Which of the boxed structures it is.
            {_writer.addString(u"NS.special"), _writer.addInteger(4)},
            classEntry(u"NSValue"),
        };
        setIndex(key, add(_writer.addDictionary(boxed)));
    }
    void encodeValueDictionary(const std::optional<std::map<NSString, NSCodingValue>> &values,
                               const NSString &key) override {
        encodeDictionaryWith(values, key, [this](const NSCodingValue &value) {
            return std::visit([this](const auto &held) { return indexOfValue(held); }, value);
        });
    }
    void encodeObjectArray(const std::optional<std::vector<std::shared_ptr<const NSSecureCoding>>> &values,
                           const NSString &key) override {
        if (values)
            setIndex(key, indexOfObjects(*values));
    }
    void encodeObjectDictionary(
        const std::optional<std::map<NSString, std::shared_ptr<const NSSecureCoding>>> &values,
        const NSString &key) override {
        if (!values)
            return;
        auto present = *values;
        std::erase_if(present, [](const auto &entry) {
            QVParameterAssert(entry.second != nullptr, "object != nil");
            return entry.second == nullptr;
        });
        encodeDictionaryWith(
            std::optional(std::move(present)), key,
            [this](const std::shared_ptr<const NSSecureCoding> &object) { return indexOfObject(object); });
    }

    void failWithError(std::shared_ptr<NSError> error) override {
        if (!_error)
            _error = std::move(error);
    }
    std::shared_ptr<NSError> error() const override { return _error; }

private:
    using Entry = QVPropertyListWriter::Entry;
    using Value = QVPropertyListWriter::Value;

    struct PendingObject {
        std::shared_ptr<const NSSecureCoding> object;
        std::uint64_t index;
    };

    std::uint64_t add(Value value) {
        _objects.push_back(value);
        return _objects.size() - 1;
    }

    void setField(const NSString &name, Value value) {
        const Value key = _writer.addString(name);
        for (Entry &field : _fields)
            if (field.key == key) {
                field.value = value;
                return;
            }
        _fields.push_back({key, value});
    }
    /// Keys with a dollar sign belong to the archive itself; objects' own get a second one.
    void set(const NSString &key, Value value) {
        setField(key.hasPrefix(u"$") ? NSString(u"$").stringByAppendingString(key) : key, value);
    }
    void setIndex(const NSString &key, std::uint64_t index) { set(key, _writer.addUID(index)); }

    Entry classEntry(std::u16string_view className) {
        return {_writer.addString(u"$class"), _writer.addUID(indexOfClass(className, {}))};
    }

    std::uint64_t indexOfClass(const NSCodingClass &codingClass) {
        std::vector<std::u16string_view> superclasses;
        for (const auto *superclass = codingClass.superclass; superclass; superclass = superclass->superclass)
            superclasses.push_back(superclass->name);
        return indexOfClass(codingClass.name, superclasses);
    }

    std::uint64_t indexOfClass(std::u16string_view name,
                               const std::vector<std::u16string_view> &superclasses) {
        const auto known = _classes.find(NSString(name));
        if (known != _classes.end())
            return known->second;
        std::vector<Value> names{_writer.addString(NSString(name))};
        for (const auto superclass : superclasses)
            names.push_back(_writer.addString(NSString(superclass)));
        names.push_back(_writer.addString(u"NSObject"));
        const Entry description[] = {
            {_writer.addString(u"$classname"), names.front()},
            {_writer.addString(u"$classes"), _writer.addArray(names)},
        };
        return _classes[NSString(name)] = add(_writer.addDictionary(description));
    }

    std::uint64_t indexOfString(const NSString &string) {
        const auto known = _strings.find(string);
        if (known != _strings.end())
            return known->second;
        if (survivesAsUTF8(string))
            return _strings[string] = add(_writer.addString(string));
        std::vector<std::uint8_t> units;
        for (const char16_t unit : string.view()) {
            units.push_back(static_cast<std::uint8_t>(unit >> 8));
            units.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        }
        const Entry boxed[] = {
            {_writer.addString(u"NS.utf16"), _writer.addData(std::move(units))},
            classEntry(u"NSString"),
        };
        return _strings[string] = add(_writer.addDictionary(boxed));
    }

    std::vector<std::uint64_t> indexesOfStrings(const auto &strings) {
        std::vector<std::uint64_t> indexes;
        for (const NSString &string : strings) {
            QVParameterAssert(!string.isNull(), "object != nil");
            if (string)
                indexes.push_back(indexOfString(string));
        }
        return indexes;
    }

    std::uint64_t indexOfInteger(NSInteger value) {
        const auto [entry, isNew] = _integers.try_emplace(value, _objects.size());
        if (isNew)
            add(_writer.addInteger(value));
        return entry->second;
    }
    Value uidOfInteger(NSUInteger value) {
        return _writer.addUID(indexOfInteger(static_cast<NSInteger>(value)));
    }

    std::uint64_t indexOfNull() {
        if (_nullIndex == 0) {
            const Entry null = classEntry(u"NSNull");
            _nullIndex = add(_writer.addDictionary(std::span(&null, 1)));
        }
        return _nullIndex;
    }

    std::uint64_t indexOfValue(std::nullptr_t) { return indexOfNull(); }
    std::uint64_t indexOfValue(bool value) { return add(_writer.addBool(value)); }
    std::uint64_t indexOfValue(NSInteger value) { return indexOfInteger(value); }
    std::uint64_t indexOfValue(double value) { return add(_writer.addReal(value)); }
    std::uint64_t indexOfValue(const NSString &value) { return value ? indexOfString(value) : indexOfNull(); }
    std::uint64_t indexOfValue(const std::shared_ptr<NSSecureCoding> &value) {
        return value ? indexOfObject(value) : indexOfNull();
    }

    Value arrayOfIndexes(const std::vector<std::uint64_t> &indexes) {
        std::vector<Value> uids;
        for (const std::uint64_t index : indexes)
            uids.push_back(_writer.addUID(index));
        return _writer.addArray(uids);
    }

    std::uint64_t indexOfCollection(std::u16string_view className,
                                    const std::vector<std::uint64_t> &objects) {
        const Entry collection[] = {
            {_writer.addString(u"NS.objects"), arrayOfIndexes(objects)},
            classEntry(className),
        };
        return add(_writer.addDictionary(collection));
    }

    template <typename Dictionary>
    void encodeDictionaryWith(const Dictionary &values, const NSString &key, auto indexOf) {
        if (!values)
            return;
        std::vector<std::uint64_t> keys;
        std::vector<std::uint64_t> objects;
        for (const auto &[name, value] : *values) {
            QVParameterAssert(!name.isNull(), "key != nil");
            if (name.isNull())
                continue;
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(value)>, NSString>) {
                QVParameterAssert(!value.isNull(), "object != nil");
                if (value.isNull())
                    continue;
            }
            keys.push_back(indexOfString(name));
            objects.push_back(indexOf(value));
        }
        const Entry dictionary[] = {
            {_writer.addString(u"NS.keys"), arrayOfIndexes(keys)},
            {_writer.addString(u"NS.objects"), arrayOfIndexes(objects)},
            classEntry(u"NSDictionary"),
        };
        setIndex(key, add(_writer.addDictionary(dictionary)));
    }

    QVPropertyListWriter _writer;
    /// The archive's list of objects.
    std::vector<Value> _objects;
    /// What the object that is being written has written so far.
    std::vector<Entry> _fields;
    std::deque<PendingObject> _pending;
    std::unordered_map<const void *, std::uint64_t> _indexes;
    std::unordered_map<NSString, std::uint64_t> _strings;
    std::unordered_map<NSInteger, std::uint64_t> _integers;
    std::map<NSString, std::uint64_t> _classes;
    std::uint64_t _nullIndex = 0;
    std::shared_ptr<NSError> _error;
};

} // namespace

NSData NSKeyedArchiver::archivedDataWithRootObject(const std::shared_ptr<const NSSecureCoding> &object) {
    KeyedArchiver archiver;
    return archiver.archiveWithRoot(archiver.indexOfObject(object));
}

NSData NSKeyedArchiver::archivedDataWithRootArray(
    const std::vector<std::shared_ptr<const NSSecureCoding>> &objects) {
    KeyedArchiver archiver;
    return archiver.archiveWithRoot(archiver.indexOfObjects(objects));
}

} // namespace quorvane
