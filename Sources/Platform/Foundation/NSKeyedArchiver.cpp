#include "Platform/Foundation/NSKeyedArchiver.h"

#include "Platform/Foundation/NSAssertionHandler.h"
#include "Platform/Foundation/NSError.h"

#include <deque>
#include <plist/plist.h>
#include <unordered_map>

namespace quorvane {

namespace {

struct PropertyListDeleter {
    void operator()(void *list) const { plist_free(list); }
};

/// Whether the library, which keeps texts as UTF-8 that ends with a zero, gives this one back as it is.
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
    KeyedArchiver() {
        _objects.reset(plist_new_array());
        add(plist_new_string("$null"));
    }

    std::uint64_t indexOfObject(const std::shared_ptr<const NSSecureCoding> &object) {
        if (!object)
            return 0;
        // The most derived object's address is its identity, whatever base it was handed in by.
        const auto [entry, isNew] = _indexes.try_emplace(dynamic_cast<const void *>(object.get()), _count);
        if (isNew) {
            plist_t fields = plist_new_dict();
            add(fields);
            // Objects are asked for their fields one after the other, not from within each other, so that a
            // long chain takes no stack; the queue also keeps each alive, so that no address is used twice.
            _pending.push_back({object, fields});
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
            _current = next.fields;
            const std::uint64_t classIndex = indexOfClass(next.object->classForCoder());
            plist_dict_set_item(_current, "$class", plist_new_uid(classIndex));
            next.object->encodeWithCoder(*this);
        }
        if (_error)
            return {};

        const std::unique_ptr<void, PropertyListDeleter> archive(plist_new_dict());
        plist_dict_set_item(archive.get(), "$version", plist_new_uint(100000));
        plist_dict_set_item(archive.get(), "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", plist_new_uid(root));
        plist_dict_set_item(archive.get(), "$top", top);
        plist_dict_set_item(archive.get(), "$objects", _objects.release());
        char *bytes = nullptr;
        std::uint32_t length = 0;
        plist_to_bin(archive.get(), &bytes, &length);
        if (bytes == nullptr)
            return {};
        NSData data(std::vector<std::uint8_t>(bytes, bytes + length));
        plist_to_bin_free(bytes);
        return data;
    }

    void encodeBool(bool value, const NSString &key) override { set(key, plist_new_bool(value)); }
    void encodeInteger(NSInteger value, const NSString &key) override {
        set(key, plist_new_uint(static_cast<std::uint64_t>(value)));
    }
    void encodeFloat(float value, const NSString &key) override { set(key, plist_new_real(value)); }
    void encodeDouble(double value, const NSString &key) override { set(key, plist_new_real(value)); }
    void encodeString(const NSString &value, const NSString &key) override {
        if (value)
            setIndex(key, indexOfString(value));
    }
    void encodeData(const NSData &value, const NSString &key) override {
        if (value)
            setIndex(key, add(plist_new_data(value.view().data(), value.length())));
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
            indexes.push_back(add(plist_new_real(value)));
        setIndex(key, indexOfCollection(u"NSArray", indexes));
    }
    void encodeRange(const std::optional<NSRange> &value, const NSString &key) override {
        if (!value)
            return;
        plist_t boxed = plist_new_dict();
        const std::uint64_t index = add(boxed);
        const auto setNumber = [&](const char *name, NSUInteger number) {
            plist_dict_set_item(boxed, name, plist_new_uid(indexOfInteger(static_cast<NSInteger>(number))));
        };
        setNumber("NS.rangeval.location", value->location);
        setNumber("NS.rangeval.length", value->length);
        // Which of the boxed structures it is.
        plist_dict_set_item(boxed, "NS.special", plist_new_uint(4));
        plist_dict_set_item(boxed, "$class", plist_new_uid(indexOfClass(u"NSValue", {})));
        setIndex(key, index);
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
    struct PendingObject {
        std::shared_ptr<const NSSecureCoding> object;
        plist_t fields;
    };

    std::uint64_t add(plist_t value) {
        plist_array_append_item(_objects.get(), value);
        return _count++;
    }

    /// Keys with a dollar sign belong to the archive itself; objects' own get a second one.
    void set(const NSString &key, plist_t value) {
        const std::string name = key.hasPrefix(u"$") ? "$" + key.UTF8String() : key.UTF8String();
        plist_dict_set_item(_current, name.c_str(), value);
    }
    void setIndex(const NSString &key, std::uint64_t index) { set(key, plist_new_uid(index)); }

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
        plist_t classes = plist_new_array();
        const auto append = [classes](std::u16string_view className) {
            plist_array_append_item(classes, plist_new_string(NSString(className).UTF8String().c_str()));
        };
        append(name);
        for (const auto superclass : superclasses)
            append(superclass);
        append(u"NSObject");
        plist_t description = plist_new_dict();
        plist_dict_set_item(description, "$classname", plist_new_string(NSString(name).UTF8String().c_str()));
        plist_dict_set_item(description, "$classes", classes);
        return _classes[NSString(name)] = add(description);
    }

    std::uint64_t indexOfString(const NSString &string) {
        const auto [entry, isNew] = _strings.try_emplace(string, _count);
        if (!isNew)
            return entry->second;
        const std::uint64_t index = entry->second;
        if (survivesAsUTF8(string)) {
            add(plist_new_string(string.UTF8String().c_str()));
            return index;
        }
        std::string units;
        for (const char16_t unit : string.view()) {
            units += static_cast<char>(unit >> 8);
            units += static_cast<char>(unit & 0xFF);
        }
        plist_t boxed = plist_new_dict();
        add(boxed);
        plist_dict_set_item(boxed, "NS.utf16", plist_new_data(units.data(), units.size()));
        plist_dict_set_item(boxed, "$class", plist_new_uid(indexOfClass(u"NSString", {})));
        return index;
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
        const auto [entry, isNew] = _integers.try_emplace(value, _count);
        if (isNew)
            add(plist_new_uint(static_cast<std::uint64_t>(value)));
        return entry->second;
    }

    std::uint64_t indexOfNull() {
        if (_nullIndex == 0) {
            plist_t null = plist_new_dict();
            _nullIndex = add(null);
            plist_dict_set_item(null, "$class", plist_new_uid(indexOfClass(u"NSNull", {})));
        }
        return _nullIndex;
    }

    std::uint64_t indexOfValue(std::nullptr_t) { return indexOfNull(); }
    std::uint64_t indexOfValue(bool value) { return add(plist_new_bool(value)); }
    std::uint64_t indexOfValue(NSInteger value) { return indexOfInteger(value); }
    std::uint64_t indexOfValue(double value) { return add(plist_new_real(value)); }
    std::uint64_t indexOfValue(const NSString &value) { return value ? indexOfString(value) : indexOfNull(); }
    std::uint64_t indexOfValue(const std::shared_ptr<NSSecureCoding> &value) {
        return value ? indexOfObject(value) : indexOfNull();
    }

    static plist_t arrayOfIndexes(const std::vector<std::uint64_t> &indexes) {
        plist_t array = plist_new_array();
        for (const std::uint64_t index : indexes)
            plist_array_append_item(array, plist_new_uid(index));
        return array;
    }

    std::uint64_t indexOfCollection(std::u16string_view className,
                                    const std::vector<std::uint64_t> &objects) {
        plist_t collection = plist_new_dict();
        const std::uint64_t index = add(collection);
        plist_dict_set_item(collection, "NS.objects", arrayOfIndexes(objects));
        plist_dict_set_item(collection, "$class", plist_new_uid(indexOfClass(className, {})));
        return index;
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
        plist_t dictionary = plist_new_dict();
        const std::uint64_t index = add(dictionary);
        plist_dict_set_item(dictionary, "NS.keys", arrayOfIndexes(keys));
        plist_dict_set_item(dictionary, "NS.objects", arrayOfIndexes(objects));
        plist_dict_set_item(dictionary, "$class", plist_new_uid(indexOfClass(u"NSDictionary", {})));
        setIndex(key, index);
    }

    std::unique_ptr<void, PropertyListDeleter> _objects;
    std::uint64_t _count = 0;
    plist_t _current = nullptr;
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
